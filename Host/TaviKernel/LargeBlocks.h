// Memory of several megabytes, cheap in page faults: aligned for huge pages, and kept for a while after its
// release.
#pragma once

#include <cstdint>

namespace tavi::host {

inline constexpr uint64_t kLargeBlockBytes = uint64_t{4} << 20;

struct LargeBlock {
  uint8_t* bytes = nullptr;
  uint64_t size = 0;    // at least what was asked for
  bool zeroed = false;  // fresh from the system; a kept block holds what its last user left
};

// Whether large blocks are in use at all. They are not under AddressSanitizer, which would lose sight of
// them.
bool UseLargeBlocks() noexcept;
// An empty block when there is no memory.
LargeBlock AcquireLargeBlock(uint64_t bytes) noexcept;
void ReleaseLargeBlock(const LargeBlock& block) noexcept;

}  // namespace tavi::host

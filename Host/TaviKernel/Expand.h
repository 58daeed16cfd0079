// Pixels of a byte as pixels of three.
#pragma once

#include <cstdint>

namespace tavi::host {

// Writes for each index the three low bytes of its place in `table` (256 entries), the lowest first.
void ExpandTo24(const uint8_t* indices, uint64_t count, const uint32_t* table, uint8_t* out) noexcept;

}  // namespace tavi::host

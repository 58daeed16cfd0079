#include "TaviKernel/LargeBlocks.h"

#if defined(__linux__)
#include <sys/mman.h>

#include <array>
#include <mutex>
#endif

namespace tavi::host {

#if defined(__linux__)

namespace {

constexpr uint64_t kHugePage = uint64_t{2} << 20;
constexpr uint64_t kMaximum = uint64_t{1} << 46;

LargeBlock MapBlock(uint64_t size) {
  // One huge page more than needed, so that an aligned stretch lies inside; what is left over goes back.
  const uint64_t mapped = size + kHugePage;
  void* const base = mmap(nullptr, mapped, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  if (base == MAP_FAILED) return {};
  const auto address = reinterpret_cast<uintptr_t>(base);
  const uint64_t head = (kHugePage - address % kHugePage) % kHugePage;
  uint8_t* const bytes = static_cast<uint8_t*>(base) + head;
  if (head != 0) munmap(base, head);
  if (head != kHugePage) munmap(bytes + size, kHugePage - head);
#if defined(MADV_HUGEPAGE)
  madvise(bytes, size, MADV_HUGEPAGE);  // advice only: plain pages serve as well
#endif
  return {bytes, size, true};
}

// The blocks released last. A load makes and frees several pictures of one size, and the next load does the
// same: their pages stay mapped in between.
class KeptBlocks {
 public:
  LargeBlock Take(uint64_t size) {
    const std::lock_guard lock(mutex_);
    for (size_t i = count_; i-- > 0;) {
      if (blocks_[i].size < size || blocks_[i].size / 2 > size) continue;
      const LargeBlock found = blocks_[i];
      Remove(i);
      return found;
    }
    return {};
  }

  // The oldest blocks go back to the system when too much would be kept.
  void Keep(LargeBlock block) {
    if (block.size > kKeptBytes) {
      munmap(block.bytes, block.size);
      return;
    }
    const std::lock_guard lock(mutex_);
    while (count_ == blocks_.size() || kept_ + block.size > kKeptBytes) {
      munmap(blocks_[0].bytes, blocks_[0].size);
      Remove(0);
    }
#if defined(MADV_FREE)
    if (kept_ + block.size > kHeldBytes) madvise(block.bytes, block.size, MADV_FREE);
#endif
    block.zeroed = false;
    blocks_[count_++] = block;
    kept_ += block.size;
  }

 private:
  static constexpr uint64_t kKeptBytes = uint64_t{256} << 20;
  // Pages of what is kept beyond are the system's when it needs them.
  static constexpr uint64_t kHeldBytes = uint64_t{64} << 20;

  void Remove(size_t index) {
    kept_ -= blocks_[index].size;
    for (size_t i = index; i + 1 < count_; ++i) blocks_[i] = blocks_[i + 1];
    --count_;
  }

  std::mutex mutex_;
  std::array<LargeBlock, 8> blocks_{};
  size_t count_ = 0;
  uint64_t kept_ = 0;
};

constinit KeptBlocks g_kept;

}  // namespace

bool UseLargeBlocks() noexcept {
#if defined(__SANITIZE_ADDRESS__)
  return false;
#else
  return true;
#endif
}

LargeBlock AcquireLargeBlock(uint64_t bytes) noexcept {
  if (bytes > kMaximum) return {};
  const uint64_t size = (bytes + kHugePage - 1) / kHugePage * kHugePage;
  const LargeBlock kept = g_kept.Take(size);
  return kept.bytes != nullptr ? kept : MapBlock(size);
}

void ReleaseLargeBlock(const LargeBlock& block) noexcept {
  if (block.bytes != nullptr) g_kept.Keep(block);
}

#else

bool UseLargeBlocks() noexcept {
  return false;
}
LargeBlock AcquireLargeBlock(uint64_t) noexcept {
  return {};
}
void ReleaseLargeBlock(const LargeBlock&) noexcept {}

#endif

}  // namespace tavi::host

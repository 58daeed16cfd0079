#include "TaviKernel/PixelMemory.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>

namespace tavi::host {
namespace {

// Smaller pictures are filled as fast as noted.
constexpr uint64_t kSmallestPutOff = uint64_t{64} << 10;
// Rows so long that a spare one to hold the pattern would be a burden are filled at once.
constexpr uint64_t kLongestPattern = uint64_t{1} << 20;

bool IsUniform(const uint8_t* bytes, uint64_t size) {
  return std::all_of(bytes + 1, bytes + size, [bytes](uint8_t byte) { return byte == bytes[0]; });
}

}  // namespace

// NOLINTBEGIN(cppcoreguidelines-no-malloc): calloc alone gives zeroed memory whose pages nobody has touched
// yet.

// Makes room to note the rows that are still to be filled. Without memory for it, filling is never put off.
void PixelMemory::AllocatePending() noexcept {
  const uint64_t words = (uint64_t{rows_} + 63) / 64;
  pending_ = static_cast<uint64_t*>(std::calloc(1, words * sizeof(uint64_t) + bytes_per_line_));
  if (pending_ != nullptr) pattern_ = reinterpret_cast<uint8_t*>(pending_ + words);
}

bool PixelMemory::Allocate(uint32_t rows, uint64_t bytes_per_line) noexcept {
  rows_ = rows;
  bytes_per_line_ = bytes_per_line;
  const uint64_t size = rows * bytes_per_line;
  bool zeroed = true;
  if (size >= kLargeBlockBytes && UseLargeBlocks()) {
    block_ = AcquireLargeBlock(size);
    bytes_ = block_.bytes;
    zeroed = block_.zeroed;
  } else {
    bytes_ = static_cast<uint8_t*>(std::calloc(size, 1));
  }
  if (bytes_ == nullptr) return false;
  if (size >= kSmallestPutOff && bytes_per_line <= kLongestPattern) AllocatePending();
  if (!zeroed) FillRows(nullptr);
  return true;
}

void PixelMemory::Free() noexcept {
  if (block_.bytes != nullptr) {
    ReleaseLargeBlock(block_);
  } else {
    std::free(bytes_);
  }
  std::free(pending_);
  FoldedRows::Free(folded_);
  *this = PixelMemory();
}

// NOLINTEND(cppcoreguidelines-no-malloc)

void PixelMemory::FillNow(const uint8_t* pattern) noexcept {
  if (pattern == nullptr || IsUniform(pattern, bytes_per_line_)) {
    std::memset(bytes_, pattern == nullptr ? 0 : pattern[0], rows_ * bytes_per_line_);
    return;
  }
  for (uint64_t row = 0; row < rows_; ++row) {
    uint8_t* const target = bytes_ + row * bytes_per_line_;
    if (target != pattern) std::memcpy(target, pattern, bytes_per_line_);
  }
}

void PixelMemory::FillRows(const uint8_t* pattern) noexcept {
  if (bytes_ == nullptr) return;
  if (folded_ != nullptr) folded_->DropAll();
  if (pending_ == nullptr) {
    FillNow(pattern);
    return;
  }
  if (pattern == nullptr) {
    std::memset(pattern_, 0, bytes_per_line_);
  } else {
    std::memcpy(pattern_, pattern, bytes_per_line_);
  }
  std::memset(pending_, 0xFF, (uint64_t{rows_} + 63) / 64 * sizeof(uint64_t));
  pending_rows_ = rows_;
}

void PixelMemory::WritePattern(uint32_t row) noexcept {
  std::memcpy(bytes_ + row * bytes_per_line_, pattern_, bytes_per_line_);
  ClearPending(row);
}

// Pictures whose filling is not put off are too small for it.
bool PixelMemory::BeginFolding(const BitExpansion& expansion, uint32_t width) noexcept {
  if (pending_ == nullptr) return false;
  if (folded_ == nullptr) folded_ = FoldedRows::Make(rows_, width, expansion);
  return folded_ != nullptr && folded_->Expands(expansion);
}

void PixelMemory::ExpandRow(uint32_t row, uint8_t* to) const noexcept {
  std::memset(to + bytes_per_line_ - 4, 0, 4);
  folded_->Expand(row, to);
}

void PixelMemory::Unfold(uint32_t row) noexcept {
  ExpandRow(row, bytes_ + row * bytes_per_line_);
  folded_->Drop(row);
}

void PixelMemory::CopyRow(uint32_t row, uint8_t* to, uint64_t bytes) noexcept {
  if (pending_rows_ != 0 && IsPending(row)) {
    std::memcpy(to, pattern_, bytes);
  } else if (folded_ != nullptr && folded_->Holds(row) && bytes == bytes_per_line_) {
    ExpandRow(row, to);
  } else {
    Settle(row);
    std::memcpy(to, bytes_ + row * bytes_per_line_, bytes);
  }
}

}  // namespace tavi::host

// The pixels that a bitmap allocates. In big bitmaps, filling is put off until a row is looked at: a picture
// that is cleared or filled and then written whole is written once.
#pragma once

#include <cstdint>

#include "TaviKernel/FoldedRows.h"
#include "TaviKernel/LargeBlocks.h"

namespace tavi::host {

class PixelMemory {
 public:
  // Zeroed rows. False without memory.
  bool Allocate(uint32_t rows, uint64_t bytes_per_line) noexcept;
  void Free() noexcept;

  uint8_t* bytes() const { return bytes_; }

  // Makes every row equal to `pattern`, which may be one of the rows, or zero when it is null.
  void FillRows(const uint8_t* pattern) noexcept;

  // Must be called before a row is read, or written in part.
  void Settle(uint32_t row) noexcept {
    if (pending_rows_ != 0 && IsPending(row)) WritePattern(row);
    if (folded_ != nullptr && folded_->Holds(row)) Unfold(row);
  }
  // Must be called before a row is written whole.
  void Discard(uint32_t row) noexcept {
    if (pending_rows_ != 0 && IsPending(row)) ClearPending(row);
    if (folded_ != nullptr) folded_->Drop(row);
  }

  // Prepares for rows that are to show `width` pixels of a bit each, expanded so. False when they must be written.
  bool BeginFolding(const BitExpansion& expansion, uint32_t width) noexcept;
  // In place of writing the row whole. Its padding is zero.
  void PutFolded(uint32_t row, const uint8_t* bits) noexcept {
    Discard(row);
    folded_->Put(row, bits);
  }

  // Copies the first bytes of a row, without settling it where that can be avoided.
  void CopyRow(uint32_t row, uint8_t* to, uint64_t bytes) noexcept;

 private:
  bool IsPending(uint32_t row) const { return (pending_[row / 64] >> (row % 64) & 1) != 0; }
  void ClearPending(uint32_t row) {
    pending_[row / 64] &= ~(uint64_t{1} << (row % 64));
    --pending_rows_;
  }
  void WritePattern(uint32_t row) noexcept;
  void Unfold(uint32_t row) noexcept;
  void ExpandRow(uint32_t row, uint8_t* to) const noexcept;
  void FillNow(const uint8_t* pattern) noexcept;
  void AllocatePending() noexcept;

  uint8_t* bytes_ = nullptr;
  LargeBlock block_;
  uint32_t rows_ = 0;
  uint64_t bytes_per_line_ = 0;
  uint64_t pending_rows_ = 0;
  uint64_t* pending_ = nullptr;  // one bit for each row that is still to be filled; null in small bitmaps
  uint8_t* pattern_ = nullptr;   // what such a row holds
  FoldedRows* folded_ = nullptr;
};

}  // namespace tavi::host

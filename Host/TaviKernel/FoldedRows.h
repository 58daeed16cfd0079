// Rows of a bitmap that are kept as the one-bit pixels which they show, and expanded when they are looked at. A page of
// many megabytes that is painted and handed over row by row is never written as a whole.
#pragma once

#include <cstdint>

#include "TaviKernel/Expand.h"
#include "TaviKernel/LargeBlocks.h"

namespace tavi::host {

class FoldedRows {
 public:
  // Null without memory: rows must then be written as they are.
  static FoldedRows* Make(uint32_t rows, uint32_t width, const BitExpansion& expansion) noexcept;
  static void Free(FoldedRows* folded) noexcept;

  bool Expands(const BitExpansion& expansion) const { return expansion_ == expansion; }
  bool Holds(uint32_t row) const { return (flags_[row / 64] >> (row % 64) & 1) != 0; }
  // Keeps the pixels from the first bit of `bits` on.
  void Put(uint32_t row, const uint8_t* bits) noexcept;
  void Drop(uint32_t row) noexcept { flags_[row / 64] &= ~(uint64_t{1} << (row % 64)); }
  void DropAll() noexcept;
  // Writes the row's pixels.
  void Expand(uint32_t row, uint8_t* to) const noexcept;

 private:
  FoldedRows() = default;
  uint64_t flag_bytes() const { return (uint64_t{rows_} + 63) / 64 * sizeof(uint64_t); }

  BitExpansion expansion_;
  uint32_t rows_ = 0;
  uint32_t width_ = 0;
  uint64_t row_bytes_ = 0;
  LargeBlock block_;           // empty when the memory is none of the large blocks
  uint64_t* flags_ = nullptr;  // one bit for each row that is kept here, then the rows
  uint8_t* bits_ = nullptr;
};

}  // namespace tavi::host

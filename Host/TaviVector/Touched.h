// Which pixels of a canvas may have been drawn on: for each row the cells of 64 columns. The frame of a large picture
// touches few of them.
#pragma once

#include <bit>
#include <cmath>
#include <cstdint>
#include <memory>

#include "TaviVector/Geometry.h"

namespace tavi::host::vec {

class TouchedRows {
 public:
  static constexpr int32_t kMostColumns = 2048;  // as many cells as a number has bits

  TouchedRows(int32_t columns, int32_t rows)
      : columns_(columns), rows_(rows), cells_(std::make_unique<uint32_t[]>(static_cast<size_t>(rows))) {}

  // Adds all pixels that the box meets.
  void Add(const Box& box) noexcept {
    const Box seen = Common(box, {{0, 0}, {static_cast<double>(columns_), static_cast<double>(rows_)}});
    if (seen.IsEmpty()) return;
    const auto first_row = static_cast<int32_t>(seen.low.y);
    const auto end_row = static_cast<int32_t>(std::ceil(seen.high.y));
    const auto first_column = static_cast<uint32_t>(seen.low.x);
    const auto end_column = static_cast<uint32_t>(std::ceil(seen.high.x));
    if (end_column <= first_column) return;
    const uint32_t first = first_column / kCell;
    const uint32_t last = (end_column - 1) / kCell;
    const uint32_t cells = (UINT32_MAX >> (31 - (last - first))) << first;
    for (int32_t row = first_row; row < end_row; ++row) cells_[static_cast<size_t>(row)] |= cells;
  }

  // Adds what a line may cover that reaches `margin` to its sides and beyond its ends.
  void AddSegment(Point from, Point to, double margin) noexcept {
    constexpr int kMostPieces = 32;
    const Point span = to - from;
    const double length = std::max(std::abs(span.x), std::abs(span.y));
    const double wanted =
        std::isfinite(length) ? std::clamp(std::ceil(length / kCell), 1.0, 1.0 * kMostPieces) : 1;
    const auto pieces = static_cast<int>(wanted);
    for (int i = 0; i < pieces; ++i) {
      Box box;
      Include(box, pieces == 1 ? from : from + (i / wanted) * span);
      Include(box, i + 1 == pieces ? to : from + ((i + 1) / wanted) * span);
      Add(Grown(box, margin));
    }
  }

  // Calls `visit(first, count)` for each run of columns of a row.
  template <class Visit>
  void ForEachRun(int32_t row, Visit visit) const {
    uint32_t cells = cells_[static_cast<size_t>(row)];
    while (cells != 0) {
      const auto first = static_cast<uint32_t>(std::countr_zero(cells));
      const auto count = static_cast<uint32_t>(std::countr_one(cells >> first));
      cells &= ~((UINT32_MAX >> (32 - count)) << first);
      const uint32_t end = std::min((first + count) * kCell, static_cast<uint32_t>(columns_));
      visit(first * kCell, end - first * kCell);
    }
  }

 private:
  static constexpr uint32_t kCell = 64;

  int32_t columns_;
  int32_t rows_;
  std::unique_ptr<uint32_t[]> cells_;  // the lowest bit is the cell at the left
};

}  // namespace tavi::host::vec

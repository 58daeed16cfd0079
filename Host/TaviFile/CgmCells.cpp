#include "TaviFile/CgmCells.h"

#include <algorithm>
#include <array>

namespace tavi::host::cgm {
namespace {

class BitReader {
 public:
  explicit BitReader(Bytes octets) : octets_(octets) {}

  uint64_t left() const { return octets_.size() * uint64_t{8} - at_; }
  uint64_t at() const { return at_; }
  // To the next multiple of so many bits, or to the end.
  void Align(uint64_t bits) { Seek((at_ + bits - 1) / bits * bits); }
  void Seek(uint64_t at) { at_ = std::min<uint64_t>(at, octets_.size() * uint64_t{8}); }
  // Callers see to it that the bits are there.
  uint32_t Take(int bits) {
    uint64_t value = 0;
    int have = 0;
    while (have < bits) {
      const auto in_octet = static_cast<int>(at_ % 8);
      const int take = std::min(bits - have, 8 - in_octet);
      const uint32_t octet = octets_[at_ / 8];
      value = value << take | (octet >> (8 - in_octet - take) & ((1U << take) - 1));
      at_ += static_cast<uint64_t>(take);
      have += take;
    }
    return static_cast<uint32_t>(value);
  }

 private:
  Bytes octets_;
  uint64_t at_ = 0;
};

struct CellReader {
  const Coding& coding;
  const ColorTable& table;
  int bits;
  bool local;  // of another depth than elsewhere

  uint64_t cell_bits() const { return static_cast<uint64_t>(bits) * components(); }
  uint64_t components() const { return coding.direct_color ? coding.colors.components() : 1; }

  uint32_t Next(BitReader& reader) const {
    if (!coding.direct_color) return table[reader.Take(bits)];
    std::array<uint32_t, 4> values{};
    for (size_t i = 0; i < components(); ++i) values[i] = reader.Take(bits);
    return local ? coding.colors.DecodeLocal(values, bits) : coding.colors.Decode(values);
  }
};

// Bits from one row to the next, or 0 when the rows do not fit. The last row needs no padding; rows without any
// padding are accepted where they alone fit.
uint64_t StrideOf(uint64_t row, uint64_t rows, uint64_t alignment, uint64_t available) {
  if (row == 0 || row > available || rows > available / row) return 0;
  const uint64_t padded = (row + alignment - 1) / alignment * alignment;
  if (padded * (rows - 1) + row <= available) return padded;
  const uint64_t octets = (row + 7) / 8 * 8;
  return octets * (rows - 1) + row <= available ? octets : 0;
}

bool ReadPacked(const CellReader& cells, BitReader reader, const CellLayout& layout,
                std::vector<uint32_t>* colors) {
  const auto columns = static_cast<uint64_t>(layout.columns);
  const auto rows = static_cast<uint64_t>(layout.rows);
  const uint64_t stride =
      StrideOf(columns * cells.cell_bits(), rows, static_cast<uint64_t>(layout.row_bits), reader.left());
  if (stride == 0) return false;
  colors->reserve(columns * rows);
  for (uint64_t y = 0; y < rows; ++y) {
    reader.Seek(y * stride);
    for (uint64_t x = 0; x < columns; ++x) colors->push_back(cells.Next(reader));
  }
  return true;
}

// The runs of a row add up to its columns; one that is too long ends with the row.
bool ReadRuns(const CellReader& cells, BitReader reader, const CellLayout& layout,
              std::vector<uint32_t>* colors) {
  const int count_bits = cells.coding.integer;
  const uint64_t run_bits = static_cast<uint64_t>(count_bits) + cells.cell_bits();
  if (static_cast<uint64_t>(layout.rows) > reader.left() / run_bits) return false;
  colors->reserve(static_cast<size_t>(layout.columns * layout.rows));
  for (int64_t y = 0; y < layout.rows; ++y) {
    reader.Align(static_cast<uint64_t>(layout.row_bits));
    int64_t filled = 0;
    while (filled < layout.columns) {
      if (reader.left() < run_bits) return false;
      const int64_t count = reader.Take(count_bits);
      if (count == 0) return false;
      const int64_t run = std::min(count, layout.columns - filled);
      colors->insert(colors->end(), static_cast<size_t>(run), cells.Next(reader));
      filled += run;
    }
  }
  return true;
}

bool IsLocalPrecision(int64_t bits) {
  constexpr std::array<int64_t, 8> kKnown = {0, 1, 2, 4, 8, 16, 24, 32};
  return std::find(kKnown.begin(), kKnown.end(), bits) != kKnown.end();
}

// corner, opposite and the end of the first row; then sides, depth, mode and the colours.
void CellArray(Interpreter& in, Parameters& p) {
  vec::CellArray cells;
  const Point corner = p.At();
  const Point opposite = p.At();
  const Point row_end = p.At();
  CellLayout layout;
  layout.columns = p.Integer();
  layout.rows = p.Integer();
  layout.bits = p.Integer();
  const int64_t mode = p.Enumerated();
  layout.packed = mode == 1;
  if (!p.ok() || mode < 0 || mode > 1 || !ReadCells(in, p, layout, &cells.colors)) return;
  cells.corner = in.Map(corner);
  cells.opposite = in.Map(opposite);
  cells.row_end = in.Map(row_end);
  cells.columns = static_cast<uint32_t>(layout.columns);
  cells.rows = static_cast<uint32_t>(layout.rows);
  if (in.now.transparent_cell) cells.transparent = in.Resolve(*in.now.transparent_cell);
  in.Draw(std::move(cells));
}

constexpr auto kHandlers = std::to_array<Handler>({
    {4, 9, "CELL ARRAY", CellArray},
});

}  // namespace

bool ReadCells(Interpreter& in, const Parameters& p, const CellLayout& layout,
               std::vector<uint32_t>* colors) {
  if (layout.columns <= 0 || layout.rows <= 0 || !IsLocalPrecision(layout.bits)) return false;
  const Coding& coding = in.coding;
  const int usual = coding.direct_color ? coding.color : coding.color_index;
  const int bits = layout.bits == 0 ? usual : static_cast<int>(layout.bits);
  const CellReader cells{coding, in.tables.colors, bits, bits != usual};
  const BitReader reader(p.Rest());
  const auto columns = static_cast<uint64_t>(layout.columns);
  const auto rows = static_cast<uint64_t>(layout.rows);
  // What the list cannot hold is an error of this element; what it could, and is too much, one of the picture.
  if (rows > reader.left() || (layout.packed && columns > reader.left())) return false;
  if (!layout.packed && rows > reader.left() / (static_cast<uint64_t>(coding.integer) + cells.cell_bits()))
    return false;
  if (layout.packed &&
      StrideOf(columns * cells.cell_bits(), rows, static_cast<uint64_t>(layout.row_bits), reader.left()) == 0)
    return false;
  in.ChargeCells(columns, rows);
  return layout.packed ? ReadPacked(cells, reader, layout, colors) : ReadRuns(cells, reader, layout, colors);
}

bool ReadBits(Interpreter& in, Bytes octets, const CellLayout& layout, const std::array<uint32_t, 2>& choice,
              std::vector<uint32_t>* colors) {
  if (layout.columns <= 0 || layout.rows <= 0) return false;
  BitReader reader(octets);
  const auto columns = static_cast<uint64_t>(layout.columns);
  const auto rows = static_cast<uint64_t>(layout.rows);
  const uint64_t stride = StrideOf(columns, rows, static_cast<uint64_t>(layout.row_bits), reader.left());
  if (stride == 0) return false;
  in.ChargeCells(columns, rows);
  colors->reserve(columns * rows);
  for (uint64_t y = 0; y < rows; ++y) {
    reader.Seek(y * stride);
    for (uint64_t x = 0; x < columns; ++x) colors->push_back(choice[reader.Take(1)]);
  }
  return true;
}

std::span<const Handler> CellHandlers() {
  return kHandlers;
}

}  // namespace tavi::host::cgm

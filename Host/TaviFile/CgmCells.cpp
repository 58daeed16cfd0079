#include "TaviFile/CgmCells.h"

#include <algorithm>
#include <array>
#include <optional>

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

uint64_t RoundedUp(uint64_t value, uint64_t step) {
  return (value + step - 1) / step * step;
}

// Where packed rows begin, in bits: the first of them, and from one to the next.
struct RowPlaces {
  uint64_t first, stride;
};

// Nothing when the rows do not fit. The last row needs no padding; rows without any padding are accepted where they
// alone fit.
std::optional<RowPlaces> PlacesOf(uint64_t row, uint64_t rows, uint64_t alignment, const BitReader& reader) {
  const uint64_t available = reader.left();
  if (row == 0 || row > available || rows > available / row) return std::nullopt;
  const uint64_t end = reader.at() + available;
  const auto fits = [&](const RowPlaces& places) {
    return places.first + places.stride * (rows - 1) + row <= end;
  };
  const RowPlaces padded{RoundedUp(reader.at(), alignment), RoundedUp(row, alignment)};
  if (fits(padded)) return padded;
  const RowPlaces octets{reader.at(), RoundedUp(row, 8)};
  return fits(octets) ? std::optional(octets) : std::nullopt;
}

bool ReadPacked(const CellReader& cells, BitReader reader, const CellLayout& layout, const RowPlaces& places,
                std::vector<uint32_t>* colors) {
  const auto columns = static_cast<uint64_t>(layout.columns);
  const auto rows = static_cast<uint64_t>(layout.rows);
  colors->reserve(columns * rows);
  for (uint64_t y = 0; y < rows; ++y) {
    reader.Seek(places.first + y * places.stride);
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
  BitReader reader(layout.from_element ? p.list() : p.Rest());
  if (layout.from_element) reader.Seek((p.list().size() - p.left()) * uint64_t{8});
  const auto columns = static_cast<uint64_t>(layout.columns);
  const auto rows = static_cast<uint64_t>(layout.rows);
  // What the list cannot hold is an error of this element; what it could, and is too much, one of the picture.
  if (rows > reader.left() || (layout.packed && columns > reader.left())) return false;
  if (!layout.packed && rows > reader.left() / (static_cast<uint64_t>(coding.integer) + cells.cell_bits()))
    return false;
  std::optional<RowPlaces> places;
  if (layout.packed) {
    places = PlacesOf(columns * cells.cell_bits(), rows, static_cast<uint64_t>(layout.row_bits), reader);
    if (!places) return false;
  }
  in.ChargeCells(columns, rows);
  return places ? ReadPacked(cells, reader, layout, *places, colors)
                : ReadRuns(cells, reader, layout, colors);
}

bool ReadBits(Interpreter& in, Bytes octets, const CellLayout& layout, const std::array<uint32_t, 2>& choice,
              std::vector<uint32_t>* colors) {
  if (layout.columns <= 0 || layout.rows <= 0) return false;
  BitReader reader(octets);
  const auto columns = static_cast<uint64_t>(layout.columns);
  const auto rows = static_cast<uint64_t>(layout.rows);
  const auto places = PlacesOf(columns, rows, static_cast<uint64_t>(layout.row_bits), reader);
  if (!places) return false;
  in.ChargeCells(columns, rows);
  colors->reserve(columns * rows);
  for (uint64_t y = 0; y < rows; ++y) {
    reader.Seek(places->first + y * places->stride);
    for (uint64_t x = 0; x < columns; ++x) colors->push_back(choice[reader.Take(1)]);
  }
  return true;
}

std::span<const Handler> CellHandlers() {
  return kHandlers;
}

}  // namespace tavi::host::cgm

#include "TaviFile/CgmTiles.h"

#include <array>
#include <cmath>

#include "TaviFile/CgmCells.h"
#include "TaviFile/CgmInterpreter.h"

namespace tavi::host::cgm {
namespace {

// Sides beyond this would overflow products of them; no raster is as large.
constexpr int64_t kLargestSide = 1 << 24;

enum Compression : int64_t { kNullBackground = 0, kNullForeground = 1, kBitmap = 5 };

constexpr std::array<Point, 4> kDirections = {{{1, 0}, {0, 1}, {-1, 0}, {0, -1}}};

void BeginTileArray(Interpreter& in, Parameters& p) {
  if (in.phase != Phase::kBody) return;
  TileArray tiles;
  tiles.position = p.At();
  const int64_t path = p.Enumerated();
  const int64_t progression = p.Enumerated();
  tiles.tiles_along = p.Integer();
  const int64_t tiles_across = p.Integer();
  tiles.columns = p.Integer();
  tiles.rows = p.Integer();
  const double size_along = p.Real();
  const double size_across = p.Real();
  tiles.offset_along = p.Integer();
  tiles.offset_across = p.Integer();
  if (!p.ok() || path < 0 || path > 3 || progression < 0 || progression > 1) return;
  for (const int64_t side : {tiles.tiles_along, tiles_across, tiles.columns, tiles.rows}) {
    if (side < 1 || side > kLargestSide) return;
  }
  tiles.tiles = tiles.tiles_along * tiles_across;
  const Point along = kDirections[static_cast<size_t>(path)];
  const Point across = kDirections[static_cast<size_t>((path + (progression == 0 ? 1 : 3)) % 4)];
  tiles.along = {along.x * size_along, along.y * size_along};
  tiles.across = {across.x * size_across, across.y * size_across};
  in.tiles = tiles;
}

void EndTileArray(Interpreter& in, Parameters&) {
  in.tiles.reset();
}

Point Cell(const TileArray& tiles, int64_t column, int64_t row) {
  const auto x = static_cast<double>(column - tiles.offset_along);
  const auto y = static_cast<double>(row - tiles.offset_across);
  return {tiles.position.x + tiles.along.x * x + tiles.across.x * y,
          tiles.position.y + tiles.along.y * x + tiles.across.y * y};
}

// A tile whose cells all have one colour is one cell.
void DrawTile(Interpreter& in, const TileArray& tiles, int64_t index, std::vector<uint32_t> colors) {
  const int64_t column = index % tiles.tiles_along * tiles.columns;
  const int64_t row = index / tiles.tiles_along * tiles.rows;
  vec::CellArray cells;
  cells.corner = in.Map(Cell(tiles, column, row));
  cells.row_end = in.Map(Cell(tiles, column + tiles.columns, row));
  cells.opposite = in.Map(Cell(tiles, column + tiles.columns, row + tiles.rows));
  const bool plain = colors.size() == 1;
  cells.columns = plain ? 1 : static_cast<uint32_t>(tiles.columns);
  cells.rows = plain ? 1 : static_cast<uint32_t>(tiles.rows);
  cells.colors = std::move(colors);
  if (in.now.transparent_cell) cells.transparent = in.Resolve(*in.now.transparent_cell);
  in.Draw(std::move(cells));
}

// The number of the next tile, while there is one. Tiles that are not drawn count as well.
std::optional<int64_t> TakeTile(Interpreter& in) {
  if (!in.tiles || in.tiles->next >= in.tiles->tiles) return std::nullopt;
  return in.tiles->next++;
}

CellLayout LayoutOf(const TileArray& tiles, int64_t padding) {
  CellLayout layout;
  layout.columns = tiles.columns;
  layout.rows = tiles.rows;
  layout.row_bits = padding > 0 && padding <= 64 ? padding : 1;
  layout.from_element = false;
  return layout;
}

void BitonalTile(Interpreter& in, Parameters& p) {
  const std::optional<int64_t> index = TakeTile(in);
  const int64_t compression = p.Index();
  const int64_t padding = p.Integer();
  const uint32_t background = in.Resolve(p.Color());
  const uint32_t foreground = in.Resolve(p.Color());
  p.String();
  if (!p.ok() || !index) return;
  std::vector<uint32_t> colors;
  if (compression == kNullBackground || compression == kNullForeground) {
    colors = {compression == kNullBackground ? background : foreground};
  } else if (compression != kBitmap ||
             !ReadBits(in, p.Rest(), LayoutOf(*in.tiles, padding), {background, foreground}, &colors)) {
    return;
  }
  DrawTile(in, *in.tiles, *index, std::move(colors));
}

void Tile(Interpreter& in, Parameters& p) {
  const std::optional<int64_t> index = TakeTile(in);
  const int64_t compression = p.Index();
  const int64_t padding = p.Integer();
  const int64_t bits = p.Integer();
  p.String();
  if (!p.ok() || !index || compression != kBitmap) return;
  CellLayout layout = LayoutOf(*in.tiles, padding);
  layout.bits = bits;
  std::vector<uint32_t> colors;
  if (ReadCells(in, p, layout, &colors)) DrawTile(in, *in.tiles, *index, std::move(colors));
}

constexpr auto kHandlers = std::to_array<Handler>({
    {0, 19, "BEGIN TILE ARRAY", BeginTileArray},
    {0, 20, "END TILE ARRAY", EndTileArray},
    {4, 28, "BITONAL TILE", BitonalTile},
    {4, 29, "TILE", Tile},
});

}  // namespace

std::span<const Handler> TileHandlers() {
  return kHandlers;
}

}  // namespace tavi::host::cgm

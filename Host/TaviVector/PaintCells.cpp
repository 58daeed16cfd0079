#include "TaviVector/PaintCells.h"

#include <array>

#include "TaviVector/Sampling.h"

namespace tavi::host::vec {

// Each pixel shows the cell that its middle falls on; the array's outer edges are smooth.
void PaintCells(const Scene& scene, const CellArray& cells) {
  if (cells.columns == 0 || cells.rows == 0 || cells.colors.size() < uint64_t{cells.columns} * cells.rows)
    return;
  const Point corner = scene.Map(cells.corner);
  const Point row_end = scene.Map(cells.row_end);
  const Point opposite = scene.Map(cells.opposite);
  const Point along = row_end - corner;
  const Point down = opposite - row_end;
  Affine to_cells;
  if (!Invert({along.x, down.x, corner.x, along.y, down.y, corner.y}, &to_cells)) return;
  const std::array<Point, 4> ring{corner, row_end, opposite, corner + down};
  const Box box = BoxOf(std::span<const Point>(ring));
  if (!scene.IsVisible(box)) return;
  AddArea(scene, {ring.begin(), ring.end()});
  const double columns = cells.columns;
  const double rows = cells.rows;
  FillSampled(scene, box, [&](Point p) -> uint32_t {
    const Point at = Tame(to_cells.Apply(p));
    const double column = std::clamp(at.x * columns, 0.0, columns - 1);
    const double row = std::clamp(at.y * rows, 0.0, rows - 1);
    const uint32_t color =
        cells.colors[static_cast<size_t>(row) * cells.columns + static_cast<size_t>(column)];
    return cells.transparent && color == *cells.transparent ? 0 : Opaque(color);
  });
}

}  // namespace tavi::host::vec

// Cell arrays and markers.
#pragma once

#include "TaviVector/PaintStrokes.h"
#include "TaviVector/Scene.h"

namespace tavi::host::vec {

void PaintCells(const Scene& scene, const CellArray& cells);
void PaintMarkers(const Scene& scene, LinePainter& lines, const Markers& markers);

}  // namespace tavi::host::vec

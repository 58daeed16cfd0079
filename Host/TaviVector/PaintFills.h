// Interiors of areas.
#pragma once

#include <vector>

#include "TaviVector/PaintStrokes.h"
#include "TaviVector/Scene.h"

namespace tavi::host::vec {

using Rings = std::vector<std::vector<Point>>;

// Fills rings in device space, one area under the even-odd rule.
void PaintInterior(const Scene& scene, LinePainter& lines, const Rings& rings, const Fill& fill);

}  // namespace tavi::host::vec

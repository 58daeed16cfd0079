// Texts.
#pragma once

#include "TaviVector/PaintStrokes.h"
#include "TaviVector/Scene.h"

namespace tavi::host::vec {

void PaintText(const Scene& scene, LinePainter& lines, const Text& text);

}  // namespace tavi::host::vec

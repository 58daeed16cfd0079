// Drawings as binary metafiles of version 1. What the profile of annotations of imagery has is written in its terms and
// order. What it lacks is written in other elements of version 1, so that nothing is lost: markers, patterns, clips,
// cell arrays, and separate lines as DISJOINT POLYLINE, which single lines could not be put together to again.
#pragma once

#include <cstdint>
#include <vector>

#include "TaviVector/Drawing.h"

namespace tavi::host::cgm {

// One unit of the drawing becomes one of the metafile, y running downward. Coordinates, sizes and widths are rounded to
// whole units; those beyond 16 bits make all that follow 32 bits wide. What version 1 cannot say is left out: ends and
// joins of lines, the kind of custom dashes, layers, hidden ones with all they hold. Curves become straight lines.
// May throw std::bad_alloc.
std::vector<uint8_t> WriteMetafile(const vec::Drawing& drawing);

}  // namespace tavi::host::cgm

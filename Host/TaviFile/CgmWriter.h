// Drawings as binary metafiles of version 1. What the profile of annotations of imagery has is written in its terms and
// order. What it lacks is written in other elements of version 1, so that nothing is lost: markers, patterns, clips,
// cell arrays, places that hatches begin at, and separate lines as DISJOINT POLYLINE, which single lines could not be put
// together to again.
#pragma once

#include <cstdint>
#include <vector>

#include "TaviVector/Drawing.h"

namespace tavi::host::cgm {

// One unit of the drawing becomes one of the metafile, y running downward. Coordinates, sizes and widths are rounded to
// whole units, which are pixels; those beyond 16 bits make all that follow 32 bits wide. Where the units are no pixels
// they are real numbers in floating point. Custom dashes, ends and joins of lines and limits of mitres, for which version
// 1 has no word, are told in the elements that version 3 has for them, and the element list names these. The version stays
// 1 all the same: its readers skip what they do not know and draw the rest, with the nearest fixed line type, while they
// may refuse a higher version outright. Characters that Latin-1 lacks are UTF-8, in a set of the character set list.
// Layers are left out, hidden ones with all they hold. Curves become straight lines. May throw std::bad_alloc.
std::vector<uint8_t> WriteMetafile(const vec::Drawing& drawing);

}  // namespace tavi::host::cgm

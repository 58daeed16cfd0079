// Drawings with whole coordinates, of every kind of object and attribute that a metafile of version 1 can say.
#pragma once

#include "TaviVector/Drawing.h"

namespace tavi::test {

// The same for the same seed. Coordinates lie within `reach` of the origin.
host::vec::Drawing RandomDrawing(uint32_t seed, int reach);

}  // namespace tavi::test

// About how many bytes shapes take: what a metafile may ask for is counted in them.
#pragma once

#include <cstdint>

#include "TaviVector/Drawing.h"

namespace tavi::host::cgm {

// As an object of a drawing. Cells are counted where they are read.
uint64_t WeightOf(const vec::Shape& shape);
// As a part of a figure, where every point becomes a curve.
uint64_t WeightInFigure(const vec::Shape& shape);

}  // namespace tavi::host::cgm

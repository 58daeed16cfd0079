// What painting a drawing may cost. A metafile of a megabyte can ask for the same million pixels a hundred thousand times.
#pragma once

#include <span>

#include "TaviVector/Drawing.h"

namespace tavi::host::vec {

// A drawing may cover the pixels of HOST_LIMIT_PAINT for nothing; of a larger canvas, so many times all of it.
inline constexpr double kFreeLayers = 16;
// And for each object, a square of 64 x 64.
inline constexpr double kPixelsOfObject = 4096;

// Whether a drawing whose objects may touch these boxes keeps within that on a canvas of which `spent` pixels were
// covered for nothing before; adds to it what this drawing covers so. Thin lines cost nothing here: the painter has a
// bound of its own for them.
bool SpendBudget(const Drawing& drawing, const Affine& to_device, std::span<const Box> boxes,
                 const Box& canvas, double& spent);

}  // namespace tavi::host::vec

// Painting a drawing over the pixels of a bitmap.
#pragma once

#include "TaviKernel/PixelView.h"
#include "TaviVector/Drawing.h"

namespace tavi::host::vec {

// Changes only the pixels that the drawing covers. Takes memory for a part of the bitmap of bounded size. Status:
// SUCCESS; ERR_NO_MEMORY, also beyond the budget of PaintBudget.h, of which `spent` is the bitmap's account.
int32_t PaintOver(const PixelView& target, const Drawing& drawing, const Affine& to_device,
                  double& spent) noexcept;

}  // namespace tavi::host::vec

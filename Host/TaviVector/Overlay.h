// Painting a drawing over the pixels of a bitmap.
#pragma once

#include "TaviKernel/PixelView.h"
#include "TaviVector/Drawing.h"
#include "TaviVector/PaintAccount.h"

namespace tavi::host::vec {

// Changes only the pixels that the drawing covers. Takes memory for a part of the bitmap of bounded size. Status:
// SUCCESS; ERR_NO_MEMORY, also beyond the budget of PaintBudget.h, of which `account` is the bitmap's.
int32_t PaintOver(const PixelView& target, const Drawing& drawing, const Affine& to_device,
                  PaintAccount& account) noexcept;

}  // namespace tavi::host::vec

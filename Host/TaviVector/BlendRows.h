// Puts premultiplied pixels over the pixels of a bitmap of any layout.
#pragma once

#include <cstdint>

#include "TaviKernel/ColorRows.h"
#include "TaviKernel/PixelView.h"

namespace tavi::host::vec {

class RowBlender {
 public:
  explicit RowBlender(const PixelView& target) noexcept;

  // Puts `count` pixels 0xAARRGGBB over the picture's row from `x` on, and leaves them all 0. Pixels without alpha, which
  // are 0 already, leave theirs as they are.
  void BlendAndClear(uint32_t picture_row, uint32_t x, uint32_t count, uint32_t* over) noexcept;

 private:
  void BlendRun(uint8_t* row, uint32_t x, uint32_t count, const uint32_t* over) noexcept;
  void BlendShallow(uint8_t* row, uint32_t x, uint32_t count, const uint32_t* over) noexcept;
  void BlendDeep(uint8_t* row, uint32_t x, uint32_t count, const uint32_t* over) noexcept;

  PixelView view_;
  RowReader reader_;
  RowWriter writer_;
};

}  // namespace tavi::host::vec

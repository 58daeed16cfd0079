#include "TaviKernel/PaletteMatcher.h"

#include <algorithm>
#include <cstring>

#include "TaviKernel/Palette.h"

namespace tavi::host {

PaletteMatcher::PaletteMatcher(const HostPaletteEntry* palette, uint32_t count, uint32_t bits) noexcept
    : is_grey_ramp_(bits == 8 && count == 256 &&
                    std::memcmp(palette, DefaultPalette(8), 256 * sizeof(HostPaletteEntry)) == 0),
      count_(std::min(count, 256u)) {
  for (uint32_t i = 0; i < count_; ++i) {
    blue_[i] = palette[i].blue;
    green_[i] = palette[i].green;
    red_[i] = palette[i].red;
  }
}

uint32_t PaletteMatcher::Search(Color8 color) const noexcept {
  const auto blue = static_cast<int32_t>(color & 0xFF);
  const auto green = static_cast<int32_t>(color >> 8 & 0xFF);
  const auto red = static_cast<int32_t>(color >> 16 & 0xFF);
  std::array<uint32_t, 256> distance{};
  uint32_t smallest = UINT32_MAX;
  // At most 65536 x 255 x 255, which 32 bits hold.
  for (uint32_t i = 0; i < count_; ++i) {
    const int32_t b = blue_[i] - blue;
    const int32_t g = green_[i] - green;
    const int32_t r = red_[i] - red;
    distance[i] = static_cast<uint32_t>(b * b) * kBlueWeight + static_cast<uint32_t>(g * g) * kGreenWeight +
                  static_cast<uint32_t>(r * r) * kRedWeight;
    smallest = std::min(smallest, distance[i]);
  }
  return static_cast<uint32_t>(std::find(distance.begin(), distance.begin() + count_, smallest) -
                               distance.begin());
}

}  // namespace tavi::host

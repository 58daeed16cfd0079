// The palette entry nearest to a colour.
#pragma once

#include <array>
#include <cstdint>

#include "TaviHost.h"
#include "TaviKernel/Color.h"

namespace tavi::host {

// Distances are weighted like luminance, so that in a grey ramp the nearest entry is the colour's grey. Among
// equally near entries the first is taken.
class PaletteMatcher {
 public:
  // `count` is 1 to 256; bits of the pixels that index the palette.
  PaletteMatcher(const HostPaletteEntry* palette, uint32_t count, uint32_t bits) noexcept;

  uint8_t Match(Color8 color) noexcept {
    if (is_grey_ramp_) return GreyLevel(color);
    Cached& cached = cache_[(color * 2654435761u) >> 22];
    if (cached.color != color) cached = {color, Search(color)};
    return static_cast<uint8_t>(cached.index);
  }

 private:
  struct Cached {
    Color8 color = 0xFFFFFFFF;  // no colour
    uint32_t index = 0;
  };

  static uint8_t GreyLevel(Color8 color) {
    const uint32_t sum =
        (color & 0xFF) * kBlueWeight + (color >> 8 & 0xFF) * kGreenWeight + (color >> 16 & 0xFF) * kRedWeight;
    return static_cast<uint8_t>((sum + 32767) >> 16);
  }

  uint32_t Search(Color8 color) const noexcept;

  bool is_grey_ramp_;
  uint32_t count_;
  std::array<int32_t, 256> blue_{};
  std::array<int32_t, 256> green_{};
  std::array<int32_t, 256> red_{};
  std::array<Cached, 1024> cache_{};
};

}  // namespace tavi::host

// The bitmap that a decoder fills, row by row from the top.
#pragma once

#include <array>
#include <cstdint>

#include "TaviFile/Codec.h"
#include "TaviKernel/PixelView.h"

namespace tavi::host {

// The depth of the samples in the bitmap.
inline uint32_t SampleBits(uint32_t precision) {
  return precision <= 8 ? 8 : 16;
}

// Bits of a pixel: three channels, or one when the picture has fewer components.
inline uint32_t PixelBits(uint32_t components, uint32_t precision) {
  return SampleBits(precision) * (components >= 3 ? 3 : 1);
}

// A count of significant bits below the depth of the samples, kept in a byte of the record that is the
// host's. 0: the samples use their full depth.
uint32_t SignificantBits(const HostBitmap& bitmap) noexcept;
void SetSignificantBits(HostBitmap* bitmap, uint32_t bits) noexcept;

// The shape of a picture to be made: `channels` is 1 or 3.
struct PictureShape {
  uint32_t width = 0;
  uint32_t height = 0;
  uint32_t channels = 0;
  uint32_t precision = 0;  // 1 to 16
};

// Makes the bitmap. A grey picture of fewer than 8 bits keeps its samples in bytes, and its palette is a ramp
// over their range.
int32_t MakePicture(const DecodeRequest& request, const PictureShape& shape, PixelView* view) noexcept;

// Where the channels of a pixel stand in the request's order: the places of red, green and blue.
std::array<uint32_t, 3> ChannelPlaces(const DecodeRequest& request) noexcept;

// The components that become red, green and blue, limited to those there are.
std::array<uint32_t, 3> ChosenBands(const DecodeRequest& request, uint32_t components) noexcept;

}  // namespace tavi::host

// A slow second statement of what pixels mean, one bit at a time.
#pragma once

#include <cstdint>

#include "HostTest.h"

namespace tavi::test {

// Sixteen bits a channel.
struct Color {
  uint32_t blue = 0;
  uint32_t green = 0;
  uint32_t red = 0;
  bool operator==(const Color&) const = default;
};

enum class Endian { kBig, kNative };

// The pixel's bits as they stand in the row, as one number: the first byte of a sample lowest, an index as it
// is. x and y count from the top left of the picture.
uint64_t RawPixel(const Bitmap& bitmap, uint32_t x, uint32_t y);

// The pixel's colour. `endian` is the byte order of 16-bit samples.
Color PixelColor(const Bitmap& bitmap, uint32_t x, uint32_t y, Endian endian);

// What RawPixel must give in a bitmap after a pixel of that colour was painted there.
uint64_t RawOfColor(const Bitmap& bitmap, const Color& color);

// 0x00BBGGRR in 16 bits a channel.
Color FromInterface(uint32_t color);

// Paints as HostPaintBitmap promises: what RawPixel must give at each place afterwards.
std::vector<uint64_t> ReferencePaint(const Bitmap& target, const Bitmap& source, const HostRect& rect,
                                     Endian endian, const uint32_t* key);

// RawPixel of all pixels, row after row from the top of the picture.
std::vector<uint64_t> RawPixels(const Bitmap& bitmap);

}  // namespace tavi::test

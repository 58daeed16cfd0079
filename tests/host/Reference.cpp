#include "Reference.h"

#include <cstddef>

namespace tavi::test {
namespace {

uint32_t StorageRow(const Bitmap& bitmap, uint32_t y) {
  return bitmap->view_perspective == 4 ? bitmap->height - 1 - y : y;
}

uint32_t ChannelCount(uint32_t bits) {
  return bits == 32 || bits == 64 ? 4 : 3;
}

Color Swapped(const Color& color) {
  return {color.red, color.green, color.blue};
}

Color Reduced(const Color& color) {
  return {color.blue >> 8, color.green >> 8, color.red >> 8};
}

uint64_t NearestIndex(const std::vector<HostPaletteEntry>& palette, const Color& color) {
  const Color wanted = Reduced(color);
  double best = 1e30;
  uint64_t index = 0;
  for (size_t i = 0; i < palette.size(); ++i) {
    const double b = static_cast<double>(palette[i].blue) - wanted.blue;
    const double g = static_cast<double>(palette[i].green) - wanted.green;
    const double r = static_cast<double>(palette[i].red) - wanted.red;
    const double distance = 7471 * b * b + 38470 * g * g + 19595 * r * r;
    if (distance < best) {
      best = distance;
      index = i;
    }
  }
  return index;
}

uint64_t Grey(const Color& color) {
  const uint64_t sum =
      uint64_t{7471} * color.blue + uint64_t{38470} * color.green + uint64_t{19595} * color.red;
  return (sum + 32768) / 65536;
}

// The source place for one destination place, or -1 outside the rectangle.
int64_t SourcePlace(int64_t place, int64_t from, int64_t to, int64_t side) {
  const bool backwards = to < from;
  const int64_t step = backwards ? from - place : place - from;
  const int64_t length = backwards ? from - to : to - from;
  if (step < 0 || step >= length) return -1;
  // The middle of the pixel, in source pixels; exact in long double, whose mantissa has 64 bits.
  const long double middle = (static_cast<long double>(step) + 0.5L) * static_cast<long double>(side);
  return static_cast<int64_t>(middle / static_cast<long double>(length));
}

}  // namespace

uint64_t RawPixel(const Bitmap& bitmap, uint32_t x, uint32_t y) {
  const std::vector<uint8_t> row = bitmap.Row(StorageRow(bitmap, y));
  const uint32_t bits = bitmap->bits;
  uint64_t value = 0;
  for (uint32_t i = 0; i < bits; ++i) {
    const size_t bit = static_cast<size_t>(bits) * x + i;
    const uint64_t byte = row[bit / 8];
    if (bits < 8) {
      value = value << 1 | (byte >> (7 - bit % 8) & 1);
    } else {
      value |= (byte >> (bit % 8) & 1) << i;
    }
  }
  return value;
}

Color PixelColor(const Bitmap& bitmap, uint32_t x, uint32_t y, Endian endian) {
  const uint64_t raw = RawPixel(bitmap, x, y);
  const uint32_t bits = bitmap->bits;
  if (bits <= 16) {
    uint64_t sample = raw;
    if (bits == 16 && endian == Endian::kBig) sample = (raw & 0xFF) << 8 | raw >> 8;
    const std::vector<HostPaletteEntry> palette = bitmap.Colors();
    if (sample < palette.size()) {
      const HostPaletteEntry& entry = palette[sample];
      return {entry.blue * 257u, entry.green * 257u, entry.red * 257u};
    }
    const auto level = static_cast<uint32_t>(bits == 12 ? sample << 4 | sample >> 8 : sample);
    return {level, level, level};
  }
  const uint32_t depth = bits / ChannelCount(bits);
  const uint64_t mask = (uint64_t{1} << depth) - 1;
  const uint32_t scale = depth == 8 ? 257 : 1;
  const Color color = {static_cast<uint32_t>(raw & mask) * scale,
                       static_cast<uint32_t>(raw >> depth & mask) * scale,
                       static_cast<uint32_t>(raw >> (2 * depth) & mask) * scale};
  return bitmap->order == 0 ? Swapped(color) : color;
}

uint64_t RawOfColor(const Bitmap& bitmap, const Color& color) {
  const uint32_t bits = bitmap->bits;
  if (bits <= 8) return NearestIndex(bitmap.Colors(), color);
  if (bits == 12) return Grey(color) >> 4;
  if (bits == 16) return Grey(color);
  const Color stored = bitmap->order == 0 ? Swapped(color) : color;
  const uint32_t depth = bits / ChannelCount(bits);
  const Color channels = depth == 8 ? Reduced(stored) : stored;
  return channels.blue | uint64_t{channels.green} << depth | uint64_t{channels.red} << (2 * depth);
}

Color FromInterface(uint32_t color) {
  return {(color >> 16 & 0xFF) * 257, (color >> 8 & 0xFF) * 257, (color & 0xFF) * 257};
}

std::vector<uint64_t> ReferencePaint(const Bitmap& target, const Bitmap& source, const HostRect& rect,
                                     Endian endian, const uint32_t* key) {
  std::vector<uint64_t> pixels = RawPixels(target);
  for (uint32_t y = 0; y < target->height; ++y) {
    for (uint32_t x = 0; x < target->width; ++x) {
      const int64_t from_x = SourcePlace(x, rect.left, rect.right, source->width);
      const int64_t from_y = SourcePlace(y, rect.top, rect.bottom, source->height);
      if (from_x < 0 || from_y < 0) continue;
      const Color color =
          PixelColor(source, static_cast<uint32_t>(from_x), static_cast<uint32_t>(from_y), endian);
      if (key != nullptr && color == FromInterface(*key)) continue;
      // Equal layouts keep their bytes, and with them the unused channel of 32 and 64 bits.
      uint64_t raw = RawOfColor(target, color);
      const bool equal = source->bits == target->bits && (source->order == 0) == (target->order == 0);
      if (equal && key == nullptr && rect.right - int64_t{rect.left} == source->width && source->bits > 16) {
        raw = RawPixel(source, static_cast<uint32_t>(from_x), static_cast<uint32_t>(from_y));
      }
      pixels[static_cast<size_t>(y) * target->width + x] = raw;
    }
  }
  return pixels;
}

std::vector<uint64_t> RawPixels(const Bitmap& bitmap) {
  std::vector<uint64_t> pixels;
  for (uint32_t y = 0; y < bitmap->height; ++y) {
    for (uint32_t x = 0; x < bitmap->width; ++x) pixels.push_back(RawPixel(bitmap, x, y));
  }
  return pixels;
}

}  // namespace tavi::test

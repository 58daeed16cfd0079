#include "CodecTest.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <random>

namespace tavi_test {

Pixels MakeScene(uint32_t width, uint32_t height, uint32_t channels, uint32_t bits) {
  Pixels pixels(width, height, channels);
  const double full = (1u << bits) - 1;
  for (uint32_t y = 0; y < height; ++y) {
    for (uint32_t x = 0; x < width; ++x) {
      for (uint32_t c = 0; c < channels; ++c) {
        const double across = (x + 0.5) / width;
        const double down = (y + 0.5) / height;
        const double wave = std::sin(7.0 * across + 3.0 * c) * std::cos(5.0 * down - c);
        const bool inside = std::hypot(across - 0.3 - 0.1 * c, down - 0.5) < 0.2;
        const double level = inside ? 0.9 - 0.3 * (c % 3) : 0.5 + 0.25 * wave + 0.2 * (down - 0.5);
        pixels.At(x, y, c) = static_cast<uint16_t>(std::lround(std::clamp(level, 0.0, 1.0) * full));
      }
    }
  }
  pixels.samples.front() = 0;
  pixels.samples.back() = static_cast<uint16_t>(full);
  return pixels;
}

Pixels MakeNoise(uint32_t width, uint32_t height, uint32_t channels, uint32_t bits, uint32_t seed) {
  Pixels pixels(width, height, channels);
  std::mt19937 random(seed);
  for (uint16_t& sample : pixels.samples) sample = static_cast<uint16_t>(random() & ((1u << bits) - 1));
  return pixels;
}

Pixels ChannelOf(const Pixels& pixels, uint32_t channel) {
  Pixels one(pixels.width, pixels.height, 1);
  for (size_t i = 0; i < one.samples.size(); ++i) {
    one.samples[i] = pixels.samples[i * pixels.channels + channel];
  }
  return one;
}

int MaxDifference(const Pixels& a, const Pixels& b) {
  if (a.width != b.width || a.height != b.height || a.channels != b.channels) return 65536;
  int most = 0;
  for (size_t i = 0; i < a.samples.size(); ++i) most = std::max(most, std::abs(a.samples[i] - b.samples[i]));
  return most;
}

Pixels Bitmap::Read() const {
  const uint32_t channels = record_.bits >= 24 ? 3 : 1;
  Pixels pixels(record_.width, record_.height, channels);
  std::vector<uint8_t> row(record_.bytes_per_line);
  const uint32_t sample_bits = record_.bits / channels;
  for (uint32_t y = 0; y < record_.height; ++y) {
    HostGetBitmapRow(&record_, row.data(), y, row.size());
    for (uint32_t x = 0; x < record_.width; ++x) {
      for (uint32_t c = 0; c < channels; ++c) {
        const size_t place = size_t{x} * channels + (record_.order != 0 ? channels - 1 - c : c);
        uint16_t value = 0;
        if (sample_bits == 1) {
          value = row[x / 8] >> (7 - x % 8) & 1;
        } else if (sample_bits == 8) {
          value = row[place];
        } else {
          std::memcpy(&value, &row[place * 2], sizeof value);
        }
        pixels.At(x, y, c) = value;
      }
    }
  }
  return pixels;
}

std::vector<HostPaletteEntry> Bitmap::Palette() const {
  std::vector<HostPaletteEntry> entries(record_.color_count);
  HostGetBitmapColors(&record_, 0, record_.color_count, entries.data());
  return entries;
}

void FillBitmap(Bitmap* bitmap, const Pixels& pixels, uint32_t bits) {
  ASSERT_EQ(HostCreateBitmap(bitmap->get(), sizeof(HostBitmap), 1, pixels.width, pixels.height,
                             bits * pixels.channels, pixels.channels == 1 ? 2 : 1, nullptr, 1, nullptr, 0),
            SUCCESS);
  std::vector<uint8_t> row((*bitmap)->bytes_per_line);
  for (uint32_t y = 0; y < pixels.height; ++y) {
    for (uint32_t x = 0; x < pixels.width; ++x) {
      for (uint32_t c = 0; c < pixels.channels; ++c) {
        const size_t place = size_t{x} * pixels.channels + pixels.channels - 1 - c;
        const uint16_t value = pixels.At(x, y, c);
        std::memcpy(&row[place * bits / 8], &value, bits / 8);
      }
    }
    HostPutBitmapRow(bitmap->get(), row.data(), y, row.size());
  }
}

int32_t Load(const Stream& stream, Bitmap* bitmap, const LoadCall& call) {
  HostLoadFlagsRecord options;
  HostLoadOptions(&options, sizeof options);
  options.flags |= call.flags;
  options.red_band = call.red;
  options.green_band = call.green;
  options.blue_band = call.blue;
  return HostLoadMemory(BytesOf(stream), bitmap->get(), sizeof(HostBitmap), call.bits, call.order,
                        stream.size(), &options, nullptr);
}

Pixels LoadPixels(const Stream& stream, const LoadCall& call) {
  Bitmap bitmap;
  EXPECT_EQ(Load(stream, &bitmap, call), SUCCESS);
  return bitmap.Read();
}

}  // namespace tavi_test

// What the tests of the decoders share: pictures as plain samples, and loading.
#ifndef TAVI_TESTS_HOST_CODECS_CODEC_TEST_H
#define TAVI_TESTS_HOST_CODECS_CODEC_TEST_H

#include <gtest/gtest.h>

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "TaviHost.h"

namespace tavi_test {

using Stream = std::vector<uint8_t>;

// Never null, even without bytes.
inline const uint8_t* BytesOf(const Stream& stream) {
  static const uint8_t kNone = 0;
  return stream.empty() ? &kNone : stream.data();
}

// Samples, channels interleaved, rows from the top.
struct Pixels {
  uint32_t width = 0;
  uint32_t height = 0;
  uint32_t channels = 1;
  std::vector<uint16_t> samples;

  Pixels() = default;
  Pixels(uint32_t w, uint32_t h, uint32_t c) : width(w), height(h), channels(c), samples(size_t{w} * h * c) {}

  uint16_t& At(uint32_t x, uint32_t y, uint32_t c = 0) {
    return samples[(size_t{y} * width + x) * channels + c];
  }
  uint16_t At(uint32_t x, uint32_t y, uint32_t c = 0) const {
    return samples[(size_t{y} * width + x) * channels + c];
  }
};

// Slopes and shapes, different in each channel, over the whole range of `bits`. The same for the same
// arguments.
Pixels MakeScene(uint32_t width, uint32_t height, uint32_t channels, uint32_t bits);
// Unrelated samples: what no codec can guess.
Pixels MakeNoise(uint32_t width, uint32_t height, uint32_t channels, uint32_t bits, uint32_t seed = 1);
// One component of a picture.
Pixels ChannelOf(const Pixels& pixels, uint32_t channel);
// The largest difference of two pictures' samples; 65536 for different shapes.
int MaxDifference(const Pixels& a, const Pixels& b);

// An owned record.
class Bitmap {
 public:
  Bitmap() { HostInitBitmap(&record_, sizeof record_, 0, 0, 0); }
  ~Bitmap() { HostFreeBitmap(&record_); }
  Bitmap(const Bitmap&) = delete;
  Bitmap& operator=(const Bitmap&) = delete;

  HostBitmap* get() { return &record_; }
  HostBitmap* operator->() { return &record_; }

  // The samples as red, green, blue or grey; of 1-bit bitmaps the bits.
  Pixels Read() const;
  std::vector<HostPaletteEntry> Palette() const;

 private:
  HostBitmap record_{};
};

// A grey or, for three channels, blue-first bitmap of 8- or 16-bit samples.
void FillBitmap(Bitmap* bitmap, const Pixels& pixels, uint32_t bits);

struct LoadCall {
  uint32_t bits = 0;
  uint32_t order = 4;
  uint32_t flags = 0;
  uint32_t red = 0;
  uint32_t green = 1;
  uint32_t blue = 2;
};

int32_t Load(const Stream& stream, Bitmap* bitmap, const LoadCall& call = {});
// Loads and expects success.
Pixels LoadPixels(const Stream& stream, const LoadCall& call = {});

inline constexpr uint32_t kAsRgb = 0x4000;
inline constexpr uint32_t kAsBands = 0x8000;

// Nothing that a test makes in the host stays alive.
class CodecTest : public ::testing::Test {
 protected:
  void SetUp() override { alive_ = HostLiveObjects(); }
  void TearDown() override { EXPECT_EQ(HostLiveObjects(), alive_); }

 private:
  uint64_t alive_ = 0;
};

}  // namespace tavi_test

#endif  // TAVI_TESTS_HOST_CODECS_CODEC_TEST_H

// Pictures of 16 bits hold big-endian samples or native ones, and only the picture can say which: these tests
// show pictures of both kinds and look at what is painted.
#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <string>

#include "HostTest.h"

namespace tavi::test {
namespace {

using SampleOrderTest = HostTest;

struct Picture {
  uint32_t width;
  uint32_t height;
  std::vector<uint16_t> samples;

  uint16_t at(uint32_t x, uint32_t y) const { return samples[size_t{y} * width + x]; }
};

Picture Make(uint32_t width, uint32_t height, const std::function<double(uint32_t, uint32_t)>& level) {
  Picture picture{width, height, {}};
  for (uint32_t y = 0; y < height; ++y) {
    for (uint32_t x = 0; x < width; ++x) {
      picture.samples.push_back(static_cast<uint16_t>(std::clamp(level(x, y), 0.0, 65535.0)));
    }
  }
  return picture;
}

// As samples of `bits` significant bits are stretched to the full 16-bit range.
Picture Stretched(const Picture& picture, uint32_t bits) {
  Picture stretched = picture;
  for (uint16_t& sample : stretched.samples) {
    const uint32_t significant = sample >> (16 - bits);
    sample = static_cast<uint16_t>(significant * 65535 / ((1u << bits) - 1));
  }
  return stretched;
}

void Put(const Picture& picture, bool big_endian, Bitmap* bitmap) {
  std::vector<uint8_t> row((*bitmap)->bytes_per_line);
  for (uint32_t y = 0; y < picture.height; ++y) {
    for (uint32_t x = 0; x < picture.width; ++x) {
      const uint16_t sample = picture.at(x, y);
      row[2 * x] = static_cast<uint8_t>(big_endian ? sample >> 8 : sample);
      row[2 * x + 1] = static_cast<uint8_t>(big_endian ? sample : sample >> 8);
    }
    bitmap->SetRow(y, row);
  }
}

// Whether the picture, put in that byte order, is painted as what it shows.
bool IsPaintedRight(const Picture& picture, bool big_endian) {
  Bitmap bitmap(picture.width, picture.height, 16, 2);
  Put(picture, big_endian, &bitmap);
  Bitmap target(picture.width, picture.height, 24);
  const Context context(target);
  const HostRect rect = {0, 0, static_cast<int32_t>(picture.width), static_cast<int32_t>(picture.height)};
  EXPECT_EQ(Paint(context, bitmap, rect), SUCCESS);
  for (uint32_t y = 0; y < picture.height; ++y) {
    const std::vector<uint8_t> row = target.Row(y);
    for (uint32_t x = 0; x < picture.width; ++x) {
      if (row[3 * x] != picture.at(x, y) >> 8 || row[3 * x + 2] != row[3 * x]) return false;
    }
  }
  return true;
}

double Smooth(uint32_t x, uint32_t y) {
  return 30000 + 20000 * std::sin(x / 17.0) + 9000 * std::cos(y / 11.0);
}

TEST_F(SampleOrderTest, SmoothPictures) {
  const Picture picture = Make(200, 150, Smooth);
  EXPECT_TRUE(IsPaintedRight(picture, true));
  for (uint32_t bits = 9; bits <= 15; ++bits)
    EXPECT_TRUE(IsPaintedRight(Stretched(picture, bits), false)) << bits;
  EXPECT_TRUE(IsPaintedRight(picture, false)) << "native without a stretch, where smoothness leaves no doubt";
}

TEST_F(SampleOrderTest, Noise) {
  class Noise noise(3);
  const Picture picture = Make(200, 150, [&](uint32_t, uint32_t) { return noise.Below(65536); });
  EXPECT_TRUE(IsPaintedRight(picture, true));
  for (uint32_t bits = 9; bits <= 15; ++bits)
    EXPECT_TRUE(IsPaintedRight(Stretched(picture, bits), false)) << bits;
}

TEST_F(SampleOrderTest, NoisyPictures) {
  class Noise noise(4);
  const Picture picture =
      Make(300, 100, [&](uint32_t x, uint32_t y) { return Smooth(x, y) + noise.Below(4000) - 2000.0; });
  EXPECT_TRUE(IsPaintedRight(picture, true));
  for (uint32_t bits = 9; bits <= 15; ++bits)
    EXPECT_TRUE(IsPaintedRight(Stretched(picture, bits), false)) << bits;
}

TEST_F(SampleOrderTest, DarkPicturesWithFewBrightPoints) {
  class Noise noise(5);
  const Picture picture = Make(256, 256, [&](uint32_t, uint32_t) {
    return noise.Below(100) == 0 ? noise.Below(65536) : noise.Below(200);
  });
  EXPECT_TRUE(IsPaintedRight(picture, true));
  const Picture brighter = Make(256, 256, [&](uint32_t, uint32_t) {
    return noise.Below(100) == 0 ? noise.Below(65536) : 1000 + noise.Below(900);
  });
  for (uint32_t bits = 10; bits <= 15; ++bits) {
    EXPECT_TRUE(IsPaintedRight(Stretched(brighter, bits), false)) << bits;
  }
}

TEST_F(SampleOrderTest, BigEndianPicturesOfEightToFifteenBits) {
  // Samples that use the lower or the upper part of their container, with nothing stretched.
  for (uint32_t bits = 8; bits <= 15; ++bits) {
    const Picture low = Make(200, 150, [&](uint32_t x, uint32_t y) {
      return std::floor(Smooth(x, y) / static_cast<double>(1u << (16 - bits)));
    });
    EXPECT_TRUE(IsPaintedRight(low, true)) << bits;
    Picture high = low;
    for (uint16_t& sample : high.samples) sample = static_cast<uint16_t>(sample << (16 - bits));
    EXPECT_TRUE(IsPaintedRight(high, true)) << bits;
  }
}

TEST_F(SampleOrderTest, PicturesWithWidePadding) {
  const auto padded = [](uint32_t x, uint32_t y) { return x < 60 && y < 40 ? Smooth(x, y) : 0.0; };
  const Picture picture = Make(400, 400, padded);
  EXPECT_TRUE(IsPaintedRight(picture, true));
  EXPECT_TRUE(IsPaintedRight(Stretched(picture, 12), false));
}

TEST_F(SampleOrderTest, SamplesThatOverflowedTheirStretch) {
  Picture picture = Stretched(Make(200, 150, Smooth), 11);
  for (size_t i = 0; i < picture.samples.size(); i += 3001) picture.samples[i] = static_cast<uint16_t>(i);
  EXPECT_TRUE(IsPaintedRight(picture, false));
}

TEST_F(SampleOrderTest, ConstantPictures) {
  for (const int level : {0, 255, 256, 0x1234, 0x4000, 0x8000, 0x0101, 0xFF00, 0xFFFF, 1000, 50000}) {
    const Picture picture = Make(20, 20, [&](uint32_t, uint32_t) { return level; });
    EXPECT_TRUE(IsPaintedRight(picture, true)) << level;
  }
  for (const int level : {1234, 2000, 3333}) {
    const Picture picture = Make(20, 20, [&](uint32_t, uint32_t) { return level * 16.0; });
    EXPECT_TRUE(IsPaintedRight(Stretched(picture, 12), false)) << level;
  }
}

TEST_F(SampleOrderTest, SmallPictures) {
  const Picture ramp = Make(8, 4, [](uint32_t x, uint32_t y) { return (x + 8 * y) * 2000 + 1234; });
  EXPECT_TRUE(IsPaintedRight(ramp, true));
  EXPECT_TRUE(IsPaintedRight(Stretched(ramp, 11), false));
  EXPECT_TRUE(IsPaintedRight(Stretched(ramp, 12), false));
  const Picture steps = Make(4, 4, [](uint32_t x, uint32_t y) { return (x + 4 * y) * 0x1000; });
  EXPECT_TRUE(IsPaintedRight(steps, true));
  const Picture digits = Make(4, 1, [](uint32_t x, uint32_t) { return 0x1234 + x * 0x4444; });
  EXPECT_TRUE(IsPaintedRight(digits, true));
  const Picture column = Make(1, 30, [](uint32_t, uint32_t y) { return y * 1999; });
  EXPECT_TRUE(IsPaintedRight(column, true));
  EXPECT_TRUE(IsPaintedRight(Stretched(column, 12), false));
}

TEST_F(SampleOrderTest, TheAnswerIsTheSameForTilesPutTogether) {
  const Picture picture = Stretched(Make(128, 128, Smooth), 12);
  Bitmap tile(128, 128, 16, 2);
  Put(picture, false, &tile);
  Bitmap whole(256, 128, 16, 2);
  ASSERT_EQ(HostCombineBitmap(whole.get(), 128, 0, 128, 128, tile.get(), 0, 0, 800), SUCCESS);
  Bitmap target(256, 128, 24);
  const Context context(target);
  ASSERT_EQ(Paint(context, whole, {0, 0, 256, 128}), SUCCESS);
  EXPECT_EQ(target.Row(5)[3 * 200], picture.at(72, 5) >> 8);
}

TEST_F(SampleOrderTest, WhatTheHostWroteIsNative) {
  // Noise of all values, painted into a 16-bit context: no test of samples could tell its order.
  class Noise noise(9);
  Bitmap source(64, 64, 48);
  FillWithNoise(&source, 1);
  Bitmap grey(64, 64, 16, 2);
  {
    const Context context(grey);
    ASSERT_EQ(Paint(context, source, {0, 0, 64, 64}), SUCCESS);
  }
  Bitmap target(64, 64, 24);
  const Context context(target);
  ASSERT_EQ(Paint(context, grey, {0, 0, 64, 64}), SUCCESS);
  for (uint32_t y = 0; y < 64; ++y) {
    const std::vector<uint8_t> samples = grey.Row(y);
    const std::vector<uint8_t> row = target.Row(y);
    for (size_t x = 0; x < 64; ++x) ASSERT_EQ(row[3 * x], samples[2 * x + 1]);
  }
}

// The host's decoders leave native samples of fewer bits than their container, and note how many in a byte of
// the record that is the host's.
TEST_F(SampleOrderTest, NotedSignificantBitsAreScaledToFullScale) {
  constexpr int kNoteByte = 0;  // of host49
  for (uint32_t bits = 9; bits <= 15; ++bits) {
    const uint32_t largest = (1u << bits) - 1;
    const Picture picture =
        Make(64, 4, [&](uint32_t x, uint32_t) { return std::min(x * largest / 62, largest); });
    Bitmap decoded(64, 4, 16, 2);
    Put(picture, false, &decoded);
    decoded->host49[kNoteByte] = static_cast<uint8_t>(bits);
    Bitmap segment(64, 4, 16, 2);
    ASSERT_EQ(HostCombineBitmap(segment.get(), 0, 0, 64, 4, decoded.get(), 0, 0, 800), SUCCESS);
    Bitmap target(64, 4, 24);
    Bitmap grey(64, 4, 16, 2);
    {
      const Context context(target);
      ASSERT_EQ(Paint(context, segment, {0, 0, 64, 4}), SUCCESS);
      const Context grey_context(grey);
      ASSERT_EQ(Paint(grey_context, segment, {0, 0, 64, 4}), SUCCESS);
    }
    const std::vector<uint8_t> row = target.Row(2);
    const std::vector<uint8_t> samples = grey.Row(2);
    for (uint32_t x = 0; x < 64; ++x) {
      const uint32_t sample = samples[2 * x] | uint32_t{samples[2 * x + 1]} << 8;
      EXPECT_NEAR(sample, picture.at(x, 2) * 65535.0 / largest, 65536.0 / largest) << bits << ' ' << x;
      EXPECT_EQ(row[3 * x], sample >> 8) << bits << ' ' << x;
    }
    EXPECT_EQ(row[3 * 63], 255);
    // Brightening leaves full-scale samples, and a row that is put is taken as it is.
    ASSERT_EQ(HostAdjustBitmap(segment.get(), 0), SUCCESS);
    EXPECT_EQ(segment.Bytes(), grey.Bytes()) << bits;
  }
}

TEST_F(SampleOrderTest, BrighteningAndCountingUseTheSameAnswer) {
  const Picture picture = Stretched(Make(100, 100, Smooth), 12);
  uint32_t brightest = 0;
  for (const uint16_t sample : picture.samples) brightest = std::max(brightest, uint32_t{sample} >> 8);
  Bitmap bitmap(100, 100, 16, 2);
  Put(picture, false, &bitmap);
  uint32_t counters[256] = {};
  ASSERT_EQ(HostHistogram(bitmap.get(), counters, 256, 0), SUCCESS);
  EXPECT_NE(counters[brightest], 0u);
  EXPECT_TRUE(std::all_of(counters + brightest + 1, counters + 256, [](uint32_t n) { return n == 0; }));
  ASSERT_EQ(HostAdjustBitmap(bitmap.get(), 100), SUCCESS);
  std::fill(std::begin(counters), std::end(counters), 0);
  ASSERT_EQ(HostHistogram(bitmap.get(), counters, 256, 0), SUCCESS);
  EXPECT_NE(counters[std::min(brightest + 25, 255u)] + counters[std::min(brightest + 26, 255u)], 0u);
}

// A radiograph of 979 x 734 samples of 16 bits in one block of 1024 x 1024, the rest of it zero.
class SampleOrderSamples : public HostTest {
 protected:
  static constexpr uint32_t kSide = 1024;

  void SetUp() override {
    HostTest::SetUp();
    const char* const folder = std::getenv("TAVI_SAMPLES");
    const std::filesystem::path path =
        std::filesystem::path(folder != nullptr ? folder : TAVI_DEFAULT_SAMPLES) / "nitf" / "headmono16.ntf";
    if (!std::filesystem::exists(path)) GTEST_SKIP() << "no sample files at " << path;
    std::ifstream in(path, std::ios::binary);
    std::vector<uint8_t> bytes(size_t{kSide} * kSide * 2);
    in.seekg(-static_cast<std::streamoff>(bytes.size()), std::ios::end);
    in.read(reinterpret_cast<char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
    ASSERT_TRUE(in);
    picture_ = {kSide, kSide, {}};
    for (size_t i = 0; i < bytes.size(); i += 2) {
      picture_.samples.push_back(static_cast<uint16_t>(bytes[i] << 8 | bytes[i + 1]));
    }
  }

  // The scan has eight bits, written twice into each sample, which reads alike in both orders. Averages of
  // four neighbours have them all.
  Picture Fine() const {
    return Make(kSide - 1, kSide - 1, [this](uint32_t x, uint32_t y) {
      return (picture_.at(x, y) + picture_.at(x + 1, y) + picture_.at(x, y + 1) +
              3 * picture_.at(x + 1, y + 1)) /
             6;
    });
  }

  Picture picture_{};
};

TEST_F(SampleOrderSamples, AFineRealPicture) {
  const Picture fine = Fine();
  EXPECT_TRUE(IsPaintedRight(fine, true));
  EXPECT_TRUE(IsPaintedRight(fine, false));
  for (uint32_t bits = 9; bits <= 15; ++bits)
    EXPECT_TRUE(IsPaintedRight(Stretched(fine, bits), false)) << bits;
}

TEST_F(SampleOrderSamples, PartsOfAFineRealPicture) {
  const Picture fine = Fine();
  for (uint32_t y = 0; y < 734; y += 29) {
    for (uint32_t x = 0; x < 979; x += 29) {
      const Picture part = Make(29, 29, [&](uint32_t i, uint32_t j) {
        return fine.at(std::min(x + i, kSide - 2), std::min(y + j, kSide - 2));
      });
      EXPECT_TRUE(IsPaintedRight(part, true)) << x << ' ' << y;
      EXPECT_TRUE(IsPaintedRight(Stretched(part, 11), false)) << x << ' ' << y;
      EXPECT_TRUE(IsPaintedRight(Stretched(part, 12), false)) << x << ' ' << y;
      EXPECT_TRUE(IsPaintedRight(Stretched(part, 14), false)) << x << ' ' << y;
    }
  }
}

TEST_F(SampleOrderSamples, ARealPictureAsTheFileHasIt) {
  EXPECT_TRUE(IsPaintedRight(picture_, true));
}

TEST_F(SampleOrderSamples, ARealPictureInNativeOrder) {
  EXPECT_TRUE(IsPaintedRight(picture_, false));
}

TEST_F(SampleOrderSamples, ARealPictureStretched) {
  for (uint32_t bits = 9; bits <= 15; ++bits)
    EXPECT_TRUE(IsPaintedRight(Stretched(picture_, bits), false)) << bits;
}

TEST_F(SampleOrderSamples, PartsOfARealPicture) {
  for (uint32_t y = 0; y < 734; y += 61) {
    for (uint32_t x = 0; x < 979; x += 61) {
      const Picture part = Make(61, 40, [&](uint32_t i, uint32_t j) {
        return picture_.at(std::min(x + i, kSide - 1), std::min(y + j, kSide - 1));
      });
      EXPECT_TRUE(IsPaintedRight(part, true)) << x << ' ' << y;
    }
  }
}

}  // namespace
}  // namespace tavi::test

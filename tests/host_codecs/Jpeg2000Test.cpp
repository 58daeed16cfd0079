// JPEG 2000: lossless streams come back exactly, lossy ones as OpenJPEG decodes them.
#include <cmath>

#include "Jpeg2000Encoder.h"

namespace tavi_test {
namespace {

class Jpeg2000Test : public CodecTest {};

TEST_F(Jpeg2000Test, GreyOfEveryDepthSignedAndNot) {
  for (uint32_t bits = 1; bits <= 16; ++bits) {
    for (const bool is_signed : {false, true}) {
      for (const bool jp2 : {false, true}) {
        const Pixels scene = MakeNoise(45, 33, 1, bits, bits);
        const J2kSettings settings{
            .bits = bits, .is_signed = is_signed, .jp2 = jp2, .color = J2kColor::kGrey, .levels = 3};
        Bitmap bitmap;
        ASSERT_EQ(Load(EncodeJpeg2000(scene, settings), &bitmap), SUCCESS) << bits;
        EXPECT_EQ(bitmap->bits, bits <= 8 ? 8u : 16u);
        EXPECT_EQ(bitmap->order, 2u);
        EXPECT_EQ(MaxDifference(bitmap.Read(), scene), 0) << bits << is_signed << jp2;
      }
    }
  }
}

TEST_F(Jpeg2000Test, ColourMixedOrNot) {
  for (const uint32_t bits : {8u, 11u, 16u}) {
    for (const bool mix : {false, true}) {
      for (const bool jp2 : {false, true}) {
        for (const uint32_t flags : {0u, kAsRgb, kAsBands}) {
          const Pixels scene = MakeScene(70, 50, 3, bits);
          const Stream stream =
              EncodeJpeg2000(scene, {.bits = bits, .jp2 = jp2, .color = J2kColor::kRgb, .mix = mix});
          Bitmap bitmap;
          ASSERT_EQ(Load(stream, &bitmap, {.flags = flags}), SUCCESS);
          EXPECT_EQ(bitmap->bits, bits == 8 ? 24u : 48u);
          EXPECT_EQ(bitmap->order, 1u);
          EXPECT_EQ(MaxDifference(bitmap.Read(), scene), 0) << bits << mix << jp2 << flags;
        }
      }
    }
  }
}

TEST_F(Jpeg2000Test, RedFirstWhenAsked) {
  const Pixels scene = MakeScene(20, 20, 3, 8);
  EXPECT_EQ(MaxDifference(LoadPixels(EncodeJpeg2000(scene, {.levels = 2}), {.order = 0}), scene), 0);
}

TEST_F(Jpeg2000Test, ColourOfFewBitsIsStretched) {
  Pixels scene = MakeNoise(20, 20, 3, 4);
  const Stream stream = EncodeJpeg2000(scene, {.bits = 4, .levels = 2});
  for (uint16_t& sample : scene.samples) sample = static_cast<uint16_t>(sample * 17);
  EXPECT_EQ(MaxDifference(LoadPixels(stream), scene), 0);
}

TEST_F(Jpeg2000Test, LossyStreamsOfTilesAndLayers) {
  for (const uint32_t channels : {1u, 3u}) {
    const Pixels scene = MakeScene(300, 200, channels, 8);
    for (const uint32_t tile : {0u, 64u, 100u}) {
      const Stream stream =
          EncodeJpeg2000(scene, {.mix = channels == 3, .ratio = 10, .tile = tile, .layers = 3});
      EXPECT_EQ(MaxDifference(LoadPixels(stream), DecodeJpeg2000(stream)), 0);
      EXPECT_LE(MaxDifference(LoadPixels(stream), scene), 60);
    }
  }
}

TEST_F(Jpeg2000Test, OffsetOnTheReferenceGrid) {
  const Pixels scene = MakeNoise(70, 50, 3, 8);
  const Stream stream = EncodeJpeg2000(scene, {.left = 13, .top = 7});
  EXPECT_EQ(MaxDifference(LoadPixels(stream), scene), 0);
}

TEST_F(Jpeg2000Test, BandsOfManyComponents) {
  for (const uint32_t channels : {2u, 4u, 5u, 8u}) {
    for (const bool jp2 : {false, true}) {
      const Pixels scene = MakeNoise(40, 30, channels, 8, channels);
      const Stream stream = EncodeJpeg2000(scene, {.jp2 = jp2, .color = J2kColor::kUnspecified, .levels = 2});
      const uint32_t last = channels - 1;
      const Pixels loaded = LoadPixels(stream, {.flags = kAsBands, .red = last, .green = 0, .blue = last});
      ASSERT_EQ(loaded.channels, 3u);
      EXPECT_EQ(ChannelOf(loaded, 0).samples, ChannelOf(scene, last).samples) << channels << jp2;
      EXPECT_EQ(ChannelOf(loaded, 1).samples, ChannelOf(scene, 0).samples);
      EXPECT_EQ(ChannelOf(loaded, 2).samples, ChannelOf(scene, last).samples);
      // Without the option: the first three, or the first of two.
      const Pixels plain = LoadPixels(stream);
      ASSERT_EQ(plain.channels, channels == 2 ? 1u : 3u);
      for (uint32_t c = 0; c < plain.channels; ++c) {
        EXPECT_EQ(ChannelOf(plain, c).samples, ChannelOf(scene, c).samples);
      }
    }
  }
}

TEST_F(Jpeg2000Test, BandsBehindTheCodestreamsTransform) {
  const Pixels scene = MakeNoise(40, 30, 5, 8);
  const Stream stream = EncodeJpeg2000(scene, {.mix = true, .levels = 2});
  const Pixels loaded = LoadPixels(stream, {.flags = kAsBands, .red = 4, .green = 1, .blue = 0});
  EXPECT_EQ(ChannelOf(loaded, 0).samples, ChannelOf(scene, 4).samples);
  EXPECT_EQ(ChannelOf(loaded, 1).samples, ChannelOf(scene, 1).samples);
  EXPECT_EQ(ChannelOf(loaded, 2).samples, ChannelOf(scene, 0).samples);
}

Pixels FromYcc(const Pixels& ycc) {
  Pixels rgb(ycc.width, ycc.height, 3);
  const auto limit = [](double value) {
    return static_cast<uint16_t>(std::lround(std::min(std::max(value, 0.0), 255.0)));
  };
  for (uint32_t y = 0; y < ycc.height; ++y) {
    for (uint32_t x = 0; x < ycc.width; ++x) {
      const double b = ycc.At(x, y, 1) - 128.0;
      const double r = ycc.At(x, y, 2) - 128.0;
      rgb.At(x, y, 0) = limit(ycc.At(x, y, 0) + 1.402 * r);
      rgb.At(x, y, 1) = limit(ycc.At(x, y, 0) - 0.344136 * b - 0.714136 * r);
      rgb.At(x, y, 2) = limit(ycc.At(x, y, 0) + 1.772 * b);
    }
  }
  return rgb;
}

TEST_F(Jpeg2000Test, DeclaredYccIsConvertedUnlessBandsAreAskedFor) {
  const Pixels scene = MakeNoise(40, 30, 3, 8);
  const Stream stream = EncodeJpeg2000(scene, {.jp2 = true, .color = J2kColor::kYcc, .levels = 2});
  EXPECT_LE(MaxDifference(LoadPixels(stream), FromYcc(scene)), 1);
  EXPECT_LE(MaxDifference(LoadPixels(stream, {.flags = kAsRgb}), FromYcc(scene)), 1);
  EXPECT_EQ(MaxDifference(LoadPixels(stream, {.flags = kAsBands}), scene), 0);
}

// Each sample of the second and third component covers `step` x `step` pixels.
Pixels Blocky(const Pixels& pixels, uint32_t step) {
  Pixels blocky = pixels;
  for (uint32_t y = 0; y < pixels.height; ++y) {
    for (uint32_t x = 0; x < pixels.width; ++x) {
      for (uint32_t c = 1; c < 3; ++c) blocky.At(x, y, c) = pixels.At(x / step * step, y / step * step, c);
    }
  }
  return blocky;
}

TEST_F(Jpeg2000Test, SmallerComponentsAreUpsampled) {
  for (const uint32_t step : {2u, 3u, 4u}) {
    const Pixels scene = MakeNoise(41, 31, 3, 8);
    const Stream bare = EncodeJpeg2000(scene, {.step = step, .levels = 2});
    EXPECT_EQ(MaxDifference(LoadPixels(bare, {.flags = kAsBands}), Blocky(scene, step)), 0) << step;
    EXPECT_EQ(MaxDifference(LoadPixels(bare, {.flags = kAsRgb}), Blocky(scene, step)), 0);
    // A bare codestream with smaller second and third components is luminance and colour differences.
    EXPECT_LE(MaxDifference(LoadPixels(bare), FromYcc(Blocky(scene, step))), 1);
    const Stream declared =
        EncodeJpeg2000(scene, {.jp2 = true, .color = J2kColor::kRgb, .step = step, .levels = 2});
    EXPECT_EQ(MaxDifference(LoadPixels(declared), Blocky(scene, step)), 0);
  }
}

TEST_F(Jpeg2000Test, APictureIsAsLargeAsItsFinestComponent) {
  const Pixels scene = MakeNoise(41, 31, 1, 8);
  const Stream stream = EncodeJpeg2000(scene, {.step_of_all = 2, .left = 5, .top = 3, .levels = 2});
  const Pixels loaded = LoadPixels(stream);
  ASSERT_EQ(loaded.width, 20u);   // 6, 8 ... 44
  ASSERT_EQ(loaded.height, 15u);  // 4, 6 ... 32
  for (uint32_t y = 0; y < 15; ++y) {
    for (uint32_t x = 0; x < 20; ++x) ASSERT_EQ(loaded.At(x, y), scene.At(1 + 2 * x, 1 + 2 * y));
  }
}

TEST_F(Jpeg2000Test, PaletteInJp2) {
  std::vector<std::vector<uint8_t>> palette;
  for (int i = 0; i < 256; ++i) {
    palette.push_back({static_cast<uint8_t>(i), static_cast<uint8_t>(255 - i), static_cast<uint8_t>(i * 7)});
  }
  const Pixels indices = MakeNoise(40, 30, 1, 8);
  const Pixels shown = LoadPixels(EncodePaletteJp2(indices, palette));
  ASSERT_EQ(shown.channels, 3u);
  for (uint32_t y = 0; y < 30; ++y) {
    for (uint32_t x = 0; x < 40; ++x) {
      for (uint32_t c = 0; c < 3; ++c) ASSERT_EQ(shown.At(x, y, c), palette[indices.At(x, y)][c]);
    }
  }
}

TEST_F(Jpeg2000Test, LargeEnoughForThreads) {
  const Pixels scene = MakeScene(700, 600, 3, 8);
  const Stream stream = EncodeJpeg2000(scene, {.mix = true, .tile = 256});
  EXPECT_EQ(MaxDifference(LoadPixels(stream), scene), 0);
}

}  // namespace
}  // namespace tavi_test

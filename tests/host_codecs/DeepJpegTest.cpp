// 12-bit JPEG and lossless JPEG of 2 to 16 bits.
#include "DeepJpegEncoder.h"

namespace tavi_test {
namespace {

class DeepJpegTest : public CodecTest {};

TEST_F(DeepJpegTest, LosslessGreyOfEveryDepthIsExact) {
  for (uint32_t bits = 2; bits <= 16; ++bits) {
    const Pixels scene = MakeNoise(37, 23, 1, bits, bits);
    Bitmap bitmap;
    ASSERT_EQ(Load(EncodeLossless(scene, {.bits = bits}), &bitmap), SUCCESS) << bits;
    EXPECT_EQ(bitmap->bits, bits <= 8 ? 8u : 16u);
    EXPECT_EQ(bitmap->order, 2u);
    EXPECT_EQ(MaxDifference(bitmap.Read(), scene), 0) << bits;
  }
}

TEST_F(DeepJpegTest, FewBitsHaveARampOverTheirRange) {
  Bitmap bitmap;
  ASSERT_EQ(Load(EncodeLossless(MakeNoise(9, 9, 1, 3), {.bits = 3}), &bitmap), SUCCESS);
  const std::vector<HostPaletteEntry> palette = bitmap.Palette();
  ASSERT_EQ(palette.size(), 256u);
  EXPECT_EQ(palette[0].green, 0);
  EXPECT_EQ(palette[3].green, 3 * 255 / 7);
  EXPECT_EQ(palette[7].green, 255);
}

TEST_F(DeepJpegTest, EveryPredictorAndPointTransform) {
  for (int predictor = 1; predictor <= 7; ++predictor) {
    for (const uint32_t bits : {8u, 12u, 16u}) {
      const Pixels scene = MakeNoise(37, 23, 1, bits, bits);
      EXPECT_EQ(
          MaxDifference(LoadPixels(EncodeLossless(scene, {.bits = bits, .predictor = predictor})), scene), 0)
          << predictor << " " << bits;
      Pixels coarse = scene;
      for (uint16_t& sample : coarse.samples) sample = static_cast<uint16_t>(sample & ~7u);
      const Stream shifted = EncodeLossless(scene, {.bits = bits, .predictor = predictor, .shift = 3});
      EXPECT_EQ(MaxDifference(LoadPixels(shifted), coarse), 0) << predictor << " " << bits;
    }
  }
}

TEST_F(DeepJpegTest, LosslessWithRestarts) {
  const Pixels scene = MakeNoise(37, 23, 1, 12);
  EXPECT_EQ(MaxDifference(LoadPixels(EncodeLossless(scene, {.bits = 12, .predictor = 4, .restart_rows = 3})),
                          scene),
            0);
}

TEST_F(DeepJpegTest, LosslessColourIsRedGreenBlue) {
  for (const uint32_t bits : {8u, 10u, 16u}) {
    const Pixels scene = MakeNoise(31, 17, 3, bits);
    for (const int adobe : {-1, 0}) {
      for (const uint32_t flags : {0u, kAsRgb, kAsBands}) {
        Bitmap bitmap;
        ASSERT_EQ(Load(EncodeLossless(scene, {.bits = bits, .adobe = adobe}), &bitmap, {.flags = flags}),
                  SUCCESS);
        EXPECT_EQ(bitmap->bits, bits == 8 ? 24u : 48u);
        EXPECT_EQ(bitmap->order, 1u);
        EXPECT_EQ(MaxDifference(bitmap.Read(), scene), 0) << bits << " " << flags;
      }
    }
  }
}

TEST_F(DeepJpegTest, ColourOfFewBitsIsStretched) {
  Pixels scene = MakeNoise(31, 17, 3, 5);
  const Stream stream = EncodeLossless(scene, {.bits = 5});
  for (uint16_t& sample : scene.samples) sample = static_cast<uint16_t>((sample * 255 + 15) / 31);
  EXPECT_EQ(MaxDifference(LoadPixels(stream), scene), 0);
}

TEST_F(DeepJpegTest, BandsOfLosslessStreams) {
  for (const uint32_t bits : {8u, 12u}) {
    const Pixels scene = MakeNoise(31, 17, 4, bits);
    const Stream stream = EncodeLossless(scene, {.bits = bits});
    const Pixels loaded = LoadPixels(stream, {.flags = kAsBands, .red = 3, .green = 3, .blue = 1});
    EXPECT_EQ(ChannelOf(loaded, 0).samples, ChannelOf(scene, 3).samples);
    EXPECT_EQ(ChannelOf(loaded, 1).samples, ChannelOf(scene, 3).samples);
    EXPECT_EQ(ChannelOf(loaded, 2).samples, ChannelOf(scene, 1).samples);
  }
  const Pixels two = MakeNoise(31, 17, 2, 12);
  EXPECT_EQ(LoadPixels(EncodeLossless(two, {.bits = 12})).samples, ChannelOf(two, 0).samples);
}

TEST_F(DeepJpegTest, DcmtksOwnLosslessStreams) {
  for (const uint32_t bits : {8u, 12u, 16u}) {
    for (const uint32_t channels : {1u, 3u}) {
      const Pixels scene = MakeScene(64, 40, channels, bits);
      EXPECT_EQ(MaxDifference(LoadPixels(EncodeLosslessByDcmtk(scene, bits, 6)), scene), 0) << bits;
    }
  }
}

TEST_F(DeepJpegTest, TwelveBitsOfEveryProcess) {
  for (const DeepProcess process :
       {DeepProcess::kSequential, DeepProcess::kSpectralSelection, DeepProcess::kProgressive}) {
    for (const uint32_t channels : {1u, 3u}) {
      const Pixels scene = MakeScene(83, 61, channels, 12);
      Bitmap bitmap;
      ASSERT_EQ(Load(EncodeJpeg12(scene, process), &bitmap), SUCCESS);
      EXPECT_EQ(bitmap->bits, channels == 1 ? 16u : 48u);
      EXPECT_LE(MaxDifference(bitmap.Read(), scene), channels == 1 ? 160 : 500);
    }
  }
}

TEST_F(DeepJpegTest, TwelveBitComponentsCanBeRedGreenBlue) {
  const Pixels scene = MakeScene(83, 61, 3, 12);
  const Stream stream = EncodeJpeg12(scene, DeepProcess::kSequential, false);
  EXPECT_LE(MaxDifference(LoadPixels(stream, {.flags = kAsRgb}), scene), 200);
  EXPECT_LE(MaxDifference(LoadPixels(stream, {.flags = kAsBands}), scene), 200);
}

// Painted on a grey canvas of 8 bits, the full scale of the samples is white, whatever their depth.
TEST_F(DeepJpegTest, SignificantBitsSurviveACopy) {
  for (const uint32_t bits : {9u, 12u, 16u}) {
    Pixels scene(4, 1, 1);
    scene.samples = {0, static_cast<uint16_t>((1u << bits) / 2), static_cast<uint16_t>((1u << bits) - 1), 0};
    Bitmap bitmap;
    ASSERT_EQ(Load(EncodeLossless(scene, {.bits = bits}), &bitmap), SUCCESS);
    Bitmap canvas;
    ASSERT_EQ(HostCreateBitmap(canvas.get(), sizeof(HostBitmap), 1, 4, 1, 24, 1, nullptr, 1, nullptr, 0),
              SUCCESS);
    ASSERT_EQ(HostCombineBitmap(canvas.get(), 0, 0, 4, 1, bitmap.get(), 0, 0, 800), SUCCESS);
    const Pixels shown = canvas.Read();
    EXPECT_EQ(shown.At(0, 0), 0);
    EXPECT_EQ(shown.At(1, 0), 128);
    EXPECT_EQ(shown.At(2, 0), 255);
  }
}

}  // namespace
}  // namespace tavi_test

// 8-bit JPEG: what the host shows is what libjpeg-turbo itself decodes, sample for sample.
#include "JpegEncoder.h"

namespace tavi_test {
namespace {

class JpegTest : public CodecTest {};

TEST_F(JpegTest, BaselineGreyIsAGreyBitmap) {
  const Stream stream = EncodeJpeg(MakeScene(61, 47, 1, 8), {.color = JpegColor::kGrey});
  Bitmap bitmap;
  ASSERT_EQ(Load(stream, &bitmap), SUCCESS);
  EXPECT_EQ(bitmap->bits, 8u);
  EXPECT_EQ(bitmap->order, 2u);
  EXPECT_EQ(bitmap->view_perspective, 1u);
  EXPECT_EQ(bitmap->flags & 1, 1);
  EXPECT_EQ(MaxDifference(bitmap.Read(), DecodeJpeg(stream)), 0);
}

TEST_F(JpegTest, ColourIsBlueFirstUnlessAskedOtherwise) {
  const Pixels scene = MakeScene(53, 31, 3, 8);
  const Stream stream = EncodeJpeg(scene, {});
  for (const uint32_t order : {0u, 1u, 2u, 4u}) {
    Bitmap bitmap;
    ASSERT_EQ(Load(stream, &bitmap, {.order = order}), SUCCESS);
    EXPECT_EQ(bitmap->bits, 24u);
    EXPECT_EQ(bitmap->order, order == 4 ? 1u : order);
    EXPECT_EQ(MaxDifference(bitmap.Read(), DecodeJpeg(stream)), 0) << order;
  }
  EXPECT_LE(MaxDifference(LoadPixels(stream), scene), 60);
}

TEST_F(JpegTest, EveryProcessAndSubsampling) {
  const Pixels scene = MakeScene(131, 77, 3, 8);
  for (const bool progressive : {false, true}) {
    for (const bool arithmetic : {false, true}) {
      for (const auto& [across, down] : {std::pair(1, 1), {2, 1}, {1, 2}, {2, 2}, {4, 1}, {4, 2}}) {
        for (const int restart : {0, 2}) {
          const Stream stream = EncodeJpeg(scene, {.across = across,
                                                   .down = down,
                                                   .progressive = progressive,
                                                   .arithmetic = arithmetic,
                                                   .restart_rows = restart});
          EXPECT_EQ(MaxDifference(LoadPixels(stream), DecodeJpeg(stream)), 0)
              << progressive << arithmetic << across << down << restart;
        }
      }
    }
  }
}

TEST_F(JpegTest, EverySizeUpToTwoBlocks) {
  for (uint32_t width = 1; width <= 17; ++width) {
    for (const uint32_t height : {1u, 2u, 7u, 8u, 9u, 16u, 17u}) {
      const Stream stream = EncodeJpeg(MakeScene(width, height, 3, 8), {.across = 2, .down = 2});
      EXPECT_EQ(MaxDifference(LoadPixels(stream), DecodeJpeg(stream)), 0) << width << "x" << height;
    }
  }
}

TEST_F(JpegTest, PaddingOfRowsStaysZero) {
  Bitmap bitmap;
  ASSERT_EQ(Load(EncodeJpeg(MakeNoise(5, 4, 3, 8), {}), &bitmap), SUCCESS);
  ASSERT_EQ(bitmap->bytes_per_line, 16u);
  for (uint32_t y = 0; y < 4; ++y) {
    uint8_t row[16];
    HostGetBitmapRow(bitmap.get(), row, y, sizeof row);
    EXPECT_EQ(row[15], 0);
  }
}

TEST_F(JpegTest, WithoutMarkersThreeComponentsAreYccByCustom) {
  const Pixels scene = MakeScene(40, 40, 3, 8);
  const Stream stream = EncodeJpeg(scene, {.quality = 98, .markers = false});
  EXPECT_EQ(MaxDifference(LoadPixels(stream), DecodeJpeg(stream)), 0);
  EXPECT_LE(MaxDifference(LoadPixels(stream), scene), 16);
}

TEST_F(JpegTest, RgbOptionTakesUnmarkedComponentsAsRedGreenBlue) {
  const Pixels scene = MakeScene(40, 40, 3, 8);
  // The encoder's own RGB streams carry component names that give them away: as unknown components they do
  // not.
  const Stream stream = EncodeJpeg(scene, {.color = JpegColor::kUnknown, .quality = 98, .markers = false});
  const Pixels components = DecodeJpeg(stream, true);
  EXPECT_EQ(MaxDifference(LoadPixels(stream, {.flags = kAsRgb}), components), 0);
  EXPECT_LE(MaxDifference(components, scene), 16);
}

TEST_F(JpegTest, RgbOptionYieldsToMarkers) {
  const Pixels scene = MakeScene(40, 40, 3, 8);
  for (const JpegSettings& settings :
       {JpegSettings{.quality = 98}, JpegSettings{.quality = 98, .markers = false, .adobe = 1},
        JpegSettings{.color = JpegColor::kRgb, .quality = 98}}) {
    const Stream stream = EncodeJpeg(scene, settings);
    EXPECT_EQ(MaxDifference(LoadPixels(stream, {.flags = kAsRgb}), DecodeJpeg(stream)), 0);
    EXPECT_LE(MaxDifference(LoadPixels(stream, {.flags = kAsRgb}), scene), 16);
  }
}

TEST_F(JpegTest, RgbStreamIsNotConverted) {
  const Stream stream = EncodeJpeg(MakeScene(40, 40, 3, 8), {.color = JpegColor::kRgb});
  EXPECT_EQ(MaxDifference(LoadPixels(stream), DecodeJpeg(stream, true)), 0);
}

TEST_F(JpegTest, BandsAreTakenAsTheyAre) {
  const Stream stream = EncodeJpeg(MakeScene(45, 33, 3, 8), {});  // marked as YCbCr
  const Pixels components = DecodeJpeg(stream, true);
  EXPECT_EQ(MaxDifference(LoadPixels(stream, {.flags = kAsBands}), components), 0);
  for (uint32_t red = 0; red < 3; ++red) {
    for (uint32_t blue = 0; blue < 3; ++blue) {
      for (const uint32_t order : {0u, 1u}) {
        const Pixels loaded = LoadPixels(
            stream, {.order = order, .flags = kAsBands | kAsRgb, .red = red, .green = 1, .blue = blue});
        EXPECT_EQ(ChannelOf(loaded, 0).samples, ChannelOf(components, red).samples);
        EXPECT_EQ(ChannelOf(loaded, 1).samples, ChannelOf(components, 1).samples);
        EXPECT_EQ(ChannelOf(loaded, 2).samples, ChannelOf(components, blue).samples);
      }
    }
  }
}

TEST_F(JpegTest, BandsOfFourComponents) {
  const Stream stream = EncodeJpeg(MakeScene(45, 33, 4, 8), {.color = JpegColor::kUnknown, .markers = false});
  const Pixels components = DecodeJpeg(stream, true);
  const Pixels loaded = LoadPixels(stream, {.flags = kAsBands, .red = 3, .green = 0, .blue = 2});
  EXPECT_EQ(ChannelOf(loaded, 0).samples, ChannelOf(components, 3).samples);
  EXPECT_EQ(ChannelOf(loaded, 1).samples, ChannelOf(components, 0).samples);
  EXPECT_EQ(ChannelOf(loaded, 2).samples, ChannelOf(components, 2).samples);
  // Without a marker, the RGB option takes the first three.
  const Pixels rgb = LoadPixels(stream, {.flags = kAsRgb});
  for (uint32_t c = 0; c < 3; ++c) EXPECT_EQ(ChannelOf(rgb, c).samples, ChannelOf(components, c).samples);
}

TEST_F(JpegTest, BandsBeyondTheLastAreTheLast) {
  const Stream two = EncodeJpeg(MakeScene(20, 20, 2, 8), {.color = JpegColor::kUnknown});
  const Pixels components = DecodeJpeg(two, true);
  const Pixels loaded = LoadPixels(two, {.flags = kAsBands, .red = 0, .green = 1, .blue = 0xFFFFFFFF});
  ASSERT_EQ(loaded.channels, 3u);
  EXPECT_EQ(ChannelOf(loaded, 0).samples, ChannelOf(components, 0).samples);
  EXPECT_EQ(ChannelOf(loaded, 2).samples, ChannelOf(components, 1).samples);
  // Without the option, the first of two is a grey picture.
  const Pixels grey = LoadPixels(two);
  ASSERT_EQ(grey.channels, 1u);
  EXPECT_EQ(grey.samples, ChannelOf(components, 0).samples);
  // One component is grey whatever bands are asked for.
  const Stream one = EncodeJpeg(MakeScene(20, 20, 1, 8), {.color = JpegColor::kGrey});
  EXPECT_EQ(
      MaxDifference(LoadPixels(one, {.flags = kAsBands, .red = 5, .green = 6, .blue = 7}), DecodeJpeg(one)),
      0);
}

// Ink of 255 in a marked stream means none.
Pixels FromInks(const Pixels& inks, bool inverted) {
  Pixels rgb(inks.width, inks.height, 3);
  for (uint32_t y = 0; y < inks.height; ++y) {
    for (uint32_t x = 0; x < inks.width; ++x) {
      const auto light = [&](uint32_t c) { return inverted ? inks.At(x, y, c) : 255.0 - inks.At(x, y, c); };
      for (uint32_t c = 0; c < 3; ++c)
        rgb.At(x, y, c) = static_cast<uint16_t>(light(c) * light(3) / 255 + 0.5);
    }
  }
  return rgb;
}

TEST_F(JpegTest, InksBecomeColours) {
  const Pixels scene = MakeScene(40, 30, 4, 8);
  for (const JpegColor color : {JpegColor::kCmyk, JpegColor::kYcck}) {
    const Stream marked = EncodeJpeg(scene, {.color = color, .across = 1});
    EXPECT_LE(MaxDifference(LoadPixels(marked), FromInks(DecodeJpeg(marked), true)), 1);
  }
  const Stream unmarked = EncodeJpeg(scene, {.color = JpegColor::kCmyk, .markers = false});
  EXPECT_LE(MaxDifference(LoadPixels(unmarked), FromInks(DecodeJpeg(unmarked), false)), 1);
}

TEST_F(JpegTest, AbbreviatedStreamsUseTheDefaultTables) {
  for (const JpegColor color : {JpegColor::kGrey, JpegColor::kYcc}) {
    const Pixels scene = MakeScene(80, 56, color == JpegColor::kGrey ? 1 : 3, 8);
    const Stream whole = EncodeJpeg(scene, {.color = color, .quality = 50});
    const Stream abbreviated = EncodeJpeg(scene, {.color = color, .tables = false});
    ASSERT_LT(abbreviated.size() + 200, whole.size());
    EXPECT_EQ(MaxDifference(LoadPixels(abbreviated), DecodeJpeg(whole)), 0);
  }
}

TEST_F(JpegTest, TablesMayStandInADatastreamOfTheirOwn) {
  const Stream whole = EncodeJpeg(MakeScene(80, 56, 1, 8), {.color = JpegColor::kGrey, .quality = 35});
  // SOI, JFIF, then the tables up to the frame header.
  size_t frame = 0;
  while (whole[frame] != 0xFF || whole[frame + 1] != 0xC0) ++frame;
  Stream split(whole.begin(), whole.begin() + static_cast<ptrdiff_t>(frame));
  split.insert(split.end(), {0xFF, 0xD9, 0xFF, 0xD8});
  split.insert(split.end(), whole.begin() + static_cast<ptrdiff_t>(frame), whole.end());
  EXPECT_EQ(MaxDifference(LoadPixels(split), DecodeJpeg(whole)), 0);
}

TEST_F(JpegTest, ASecondStartBehindTheNitfSegmentIsPassedOver) {
  for (const bool tables : {false, true}) {
    const Stream stream = EncodeJpeg(MakeScene(48, 40, 3, 8), {.quality = 50, .tables = tables});
    EXPECT_EQ(MaxDifference(LoadPixels(WithNitfHeader(stream)), LoadPixels(stream)), 0);
    EXPECT_EQ(MaxDifference(LoadPixels(WithNitfHeader(WithNitfHeader(stream))), LoadPixels(stream)), 0);
    EXPECT_EQ(MaxDifference(LoadPixels(WithNitfHeader(stream), {.flags = kAsBands, .red = 2}),
                            LoadPixels(stream, {.flags = kAsBands, .red = 2})),
              0);
  }
}

TEST_F(JpegTest, BytesBehindTheEndAreNotLookedAt) {
  Stream stream = EncodeJpeg(MakeScene(48, 40, 3, 8), {});
  const Pixels expected = LoadPixels(stream);
  stream.insert(stream.end(), 1000, 0xFF);
  EXPECT_EQ(MaxDifference(LoadPixels(stream), expected), 0);
}

TEST_F(JpegTest, ManyComponentsShowTheFirstThree) {
  const Stream stream = EncodeJpeg(MakeScene(16, 16, 4, 8), {.color = JpegColor::kUnknown, .markers = false});
  Bitmap bitmap;
  ASSERT_EQ(Load(stream, &bitmap), SUCCESS);
  EXPECT_EQ(bitmap->bits, 24u);
}

}  // namespace
}  // namespace tavi_test

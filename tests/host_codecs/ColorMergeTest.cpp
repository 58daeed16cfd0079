// HostColorMerge.
#include "CodecTest.h"
#include "DeepJpegEncoder.h"

namespace tavi_test {
namespace {

class ColorMergeTest : public CodecTest {};

// Blue, green, red, as the array has them.
int32_t Merge(Bitmap* merged, std::vector<Bitmap*> bands) {
  std::vector<HostBitmap*> array;
  for (Bitmap* const band : bands) array.push_back(band->get());
  array.push_back(nullptr);
  return HostColorMerge(merged->get(), array.data(), sizeof(HostBitmap), 0);
}

TEST_F(ColorMergeTest, TheFirstBandIsBlue) {
  const Pixels scene = MakeNoise(21, 13, 3, 8);
  Bitmap bands[3];
  for (uint32_t c = 0; c < 3; ++c) FillBitmap(&bands[2 - c], ChannelOf(scene, c), 8);
  Bitmap merged;
  ASSERT_EQ(Merge(&merged, {&bands[0], &bands[1], &bands[2]}), SUCCESS);
  EXPECT_EQ(merged->bits, 24u);
  EXPECT_EQ(merged->order, 1u);
  EXPECT_EQ(merged->view_perspective, 1u);
  EXPECT_EQ(MaxDifference(merged.Read(), scene), 0);
}

TEST_F(ColorMergeTest, MissingChannelsStayDark) {
  const Pixels scene = MakeNoise(21, 13, 2, 8);
  Bitmap bands[2];
  for (uint32_t c = 0; c < 2; ++c) FillBitmap(&bands[c], ChannelOf(scene, c), 8);
  Bitmap merged;
  ASSERT_EQ(Merge(&merged, {&bands[0], &bands[1]}), SUCCESS);
  const Pixels read = merged.Read();
  EXPECT_EQ(ChannelOf(read, 2).samples, ChannelOf(scene, 0).samples);
  EXPECT_EQ(ChannelOf(read, 1).samples, ChannelOf(scene, 1).samples);
  EXPECT_EQ(ChannelOf(read, 0).samples, std::vector<uint16_t>(21 * 13, 0));
}

TEST_F(ColorMergeTest, FurtherBandsAreNotLookedAt) {
  Bitmap bands[4];
  for (uint16_t i = 0; i < 4; ++i) {
    Pixels flat(4, 4, 1);
    flat.samples.assign(16, static_cast<uint16_t>(10 + i));
    FillBitmap(&bands[i], flat, 8);
  }
  Bitmap merged;
  ASSERT_EQ(Merge(&merged, {&bands[0], &bands[1], &bands[2], &bands[3]}), SUCCESS);
  EXPECT_EQ(merged.Read().At(0, 0, 0), 12);
  EXPECT_EQ(merged.Read().At(0, 0, 2), 10);
}

TEST_F(ColorMergeTest, UnequalSizesGiveWhatTheyHaveInCommon) {
  const Pixels wide = MakeNoise(30, 10, 1, 8, 1);
  const Pixels high = MakeNoise(20, 40, 1, 8, 2);
  Bitmap bands[3];
  FillBitmap(&bands[0], wide, 8);
  FillBitmap(&bands[1], high, 8);
  FillBitmap(&bands[2], wide, 8);
  Bitmap merged;
  ASSERT_EQ(Merge(&merged, {&bands[0], &bands[1], &bands[2]}), SUCCESS);
  ASSERT_EQ(merged->width, 20u);
  ASSERT_EQ(merged->height, 10u);
  const Pixels read = merged.Read();
  EXPECT_EQ(read.At(19, 9, 0), wide.At(19, 9));
  EXPECT_EQ(read.At(19, 9, 1), high.At(19, 9));
}

TEST_F(ColorMergeTest, DeepBandsGive48Bits) {
  const Pixels scene = MakeNoise(21, 13, 3, 12);
  Bitmap bands[3];
  for (uint32_t c = 0; c < 3; ++c) {
    ASSERT_EQ(Load(EncodeLossless(ChannelOf(scene, c), {.bits = 12}), &bands[2 - c]), SUCCESS);
  }
  Bitmap merged;
  ASSERT_EQ(Merge(&merged, {&bands[0], &bands[1], &bands[2]}), SUCCESS);
  EXPECT_EQ(merged->bits, 48u);
  EXPECT_EQ(MaxDifference(merged.Read(), scene), 0);
}

TEST_F(ColorMergeTest, ADeepBandAmongOthersStretchesThem) {
  Pixels deep(2, 1, 1);
  deep.samples = {0, 0xFFFF};
  Pixels shallow(2, 1, 1);
  shallow.samples = {0, 0xFF};
  Bitmap bands[3];
  ASSERT_EQ(Load(EncodeLossless(deep, {.bits = 16}), &bands[0]), SUCCESS);
  FillBitmap(&bands[1], shallow, 8);
  FillBitmap(&bands[2], shallow, 8);
  Bitmap merged;
  ASSERT_EQ(Merge(&merged, {&bands[0], &bands[1], &bands[2]}), SUCCESS);
  ASSERT_EQ(merged->bits, 48u);
  for (uint32_t c = 0; c < 3; ++c) {
    EXPECT_EQ(merged.Read().At(0, 0, c), 0);
    EXPECT_EQ(merged.Read().At(1, 0, c), 0xFFFF);
  }
}

TEST_F(ColorMergeTest, ABandCountsWithItsGreyLevels) {
  Pixels few(4, 1, 1);
  few.samples = {0, 1, 2, 3};
  Bitmap bands[3];
  for (Bitmap& band : bands) ASSERT_EQ(Load(EncodeLossless(few, {.bits = 2}), &band), SUCCESS);
  Bitmap merged;
  ASSERT_EQ(Merge(&merged, {&bands[0], &bands[1], &bands[2]}), SUCCESS);
  const Pixels read = merged.Read();
  for (uint32_t x = 0; x < 4; ++x) EXPECT_EQ(read.At(x, 0, 1), x * 85);
}

TEST_F(ColorMergeTest, TheDestinationsPixelsAreFreedFirst) {
  Bitmap bands[3];
  for (Bitmap& band : bands) FillBitmap(&band, MakeNoise(5, 5, 1, 8), 8);
  Bitmap merged;
  FillBitmap(&merged, MakeNoise(50, 50, 3, 8), 8);
  ASSERT_EQ(Merge(&merged, {&bands[0], &bands[1], &bands[2]}), SUCCESS);
  EXPECT_EQ(merged->width, 5u);
}

TEST_F(ColorMergeTest, ArgumentsThatAreWrong) {
  Bitmap merged;
  Bitmap full;
  FillBitmap(&full, MakeNoise(5, 5, 1, 8), 8);
  Bitmap empty;
  HostBitmap* array[4] = {full.get(), empty.get(), full.get(), nullptr};
  EXPECT_EQ(HostColorMerge(nullptr, array, 212, 0), ERR_NULL_ARGUMENT);
  EXPECT_EQ(HostColorMerge(merged.get(), nullptr, 212, 0), ERR_NULL_ARGUMENT);
  EXPECT_EQ(HostColorMerge(merged.get(), array + 3, 212, 0), ERR_NULL_ARGUMENT);
  EXPECT_EQ(HostColorMerge(merged.get(), array, 200, 0), ERR_INVALID_PARAMETER);
  EXPECT_EQ(HostColorMerge(merged.get(), array, 212, 1), ERR_NOT_SUPPORTED);
  EXPECT_EQ(HostColorMerge(merged.get(), array, 212, 0), ERR_NO_BITMAP);
  EXPECT_EQ(merged->flags & 1, 0);
}

}  // namespace
}  // namespace tavi_test

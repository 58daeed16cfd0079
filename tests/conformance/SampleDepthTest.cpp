// Samples wider than their bitmap, or with fewer significant bits than their container.
#include "ConformanceTest.h"

namespace tavi_test {
namespace {

class SampleDepth : public ConformanceTest {};

Bytes BigEndianSamples(const std::vector<uint32_t>& samples, size_t width) {
  Bytes bytes;
  for (const uint32_t sample : samples) {
    for (size_t i = width; i-- > 0;)
      bytes.push_back(i >= 4 ? uint8_t{0} : static_cast<uint8_t>(sample >> (8 * i)));
  }
  return bytes;
}

// A slope of `count` samples from 0 to `top`.
std::vector<uint32_t> Slope(uint32_t count, uint32_t top) {
  std::vector<uint32_t> samples;
  for (uint32_t i = 0; i < count; ++i)
    samples.push_back(static_cast<uint32_t>(uint64_t{top} * i / (count - 1)));
  return samples;
}

TEST_F(SampleDepth, SixteenBitsWithTwelveSignificantAreStretchedToTheFullScale) {
  const LoadedPicture picture = Load(DeepImage(16, 16, 16, 12, BigEndianSamples(Slope(256, 4095), 2)));
  EXPECT_EQ(picture.At(0, 0).red, 0);
  EXPECT_EQ(picture.At(15, 15).red, 255);
  EXPECT_NEAR(picture.At(0, 8).red, 128, 1);
  ExpectReference(DeepImage(16, 16, 16, 12, BigEndianSamples(Slope(256, 4095), 2)), 1);
}

TEST_F(SampleDepth, SampleAboveItsSignificantBitsKeepsItsLowSixteenBits) {
  // 4096 x 65535 / 4095 = 65551, of which 15 is kept: black, beside white for 4095.
  std::vector<uint32_t> samples = Slope(256, 4095);
  samples[254] = 4096;
  const LoadedPicture picture = Load(DeepImage(16, 16, 16, 12, BigEndianSamples(samples, 2)));
  EXPECT_EQ(picture.At(14, 15).red, 0);
  EXPECT_EQ(picture.At(15, 15).red, 255);
}

TEST_F(SampleDepth, EverySignificantDepthOfSixteenBitsIsStretched) {
  for (uint32_t abpp = 9; abpp <= 15; ++abpp) {
    SCOPED_TRACE(abpp);
    const uint32_t top = (1U << abpp) - 1;
    const LoadedPicture picture = Load(DeepImage(16, 16, 16, abpp, BigEndianSamples(Slope(256, top), 2)));
    for (uint32_t i = 0; i < 256; ++i)
      ASSERT_NEAR(picture.At(i % 16, i / 16).red, static_cast<int>(i), 1) << i;
  }
}

TEST_F(SampleDepth, SixteenBitsAllSignificantStayBigEndian) {
  const LoadedPicture picture = Load(DeepImage(16, 16, 16, 16, BigEndianSamples(Slope(256, 65535), 2)));
  for (uint32_t i = 0; i < 256; ++i) ASSERT_NEAR(picture.At(i % 16, i / 16).red, static_cast<int>(i), 1) << i;
}

TEST_F(SampleDepth, StretchedBlocksLookLikeAStretchedSingleBlock) {
  const Bytes pixels = BigEndianSamples(Slope(256, 2047), 2);
  ImageSpec blocks = DeepImage(1, 1, 16, 11, pixels);
  blocks.Blocks(1, 2, 16, 8);
  EXPECT_EQ(Greys(Load(blocks)), Greys(Load(DeepImage(16, 16, 16, 11, pixels))));
}

TEST_F(SampleDepth, PadJustificationTakesNoPart) {
  ImageSpec image = DeepImage(16, 16, 16, 12, BigEndianSamples(Slope(256, 4095), 2));
  const std::vector<int> right = Greys(Load(image));
  image.pjust = 'L';
  EXPECT_EQ(Greys(Load(image)), right);
}

TEST_F(SampleDepth, FewerSignificantBitsInAByteAreNotScaled) {
  EXPECT_EQ(Greys(Load(DeepImage(4, 1, 8, 5, {0, 15, 31, 255}))), (std::vector<int>{0, 15, 31, 255}));
}

TEST_F(SampleDepth, BytesWithMoreThanEightSignificantBitsAreTakenInWords) {
  // Words 0x0102 and 0x0304: (w x 255) / 4095, low byte first.
  const LoadedPicture picture = Load(DeepImage(4, 1, 8, 12, {1, 2, 3, 4}));
  EXPECT_EQ(Greys(picture), (std::vector<int>{0x0102 * 255 / 4095, 0, 0x0304 * 255 / 4095, 0}));
}

TEST_F(SampleDepth, ThirtyTwoBitsAreStretchedBetweenTheirSmallestAndLargest) {
  const LoadedPicture picture = Load(DeepImage(3, 1, 32, 24, BigEndianSamples({1000, 1100, 1200}, 4)));
  EXPECT_EQ(Greys(picture), (std::vector<int>{0, 127, 255}));
}

TEST_F(SampleDepth, NothingClampsAStretchedSample) {
  // A sample with its top bit set is negative to the scan, which finds -2 and 254, and large to the stretch:
  // (4294967294 + 2) x 255 / 256 = 4278190080, whose low byte is 0.
  const LoadedPicture picture = Load(DeepImage(3, 1, 32, 24, BigEndianSamples({0xFFFFFFFEU, 0, 254}, 4)));
  EXPECT_EQ(Greys(picture), (std::vector<int>{0, 2 * 255 / 256, 255}));
}

TEST_F(SampleDepth, ScanTakesTheMaskTableAsSamplesToo) {
  // The table's first word is IMDATOFF, 12; then 0 and two zero bytes with the gap: the minimum is 0, not
  // 512.
  ImageSpec image = DeepImage(2, 1, 32, 24, BigEndianSamples({512, 1024}, 4));
  image.ic = "NM";
  image.mask.gap = {0, 0};
  EXPECT_EQ(Greys(Load(image)), (std::vector<int>{127, 255}));
}

TEST_F(SampleDepth, EqualSamplesGiveBlack) {
  EXPECT_EQ(Greys(Load(DeepImage(2, 1, 32, 24, BigEndianSamples({77, 77}, 4)))), (std::vector<int>{0, 0}));
}

TEST_F(SampleDepth, ThirtyTwoBitBlocksWithFewerSignificantBitsAreBlack) {
  // Blocks are stretched without a scan: between 0 and 0.
  ImageSpec image = DeepImage(1, 1, 32, 24, Pattern(128));
  image.Blocks(2, 1, 4, 4);
  EXPECT_EQ(Greys(Load(image)), std::vector<int>(32, 0));
}

TEST_F(SampleDepth, RangeScanGoesOverManyChunks) {
  // 13,000 samples are more than one chunk; the largest stands in the second.
  std::vector<uint32_t> samples(13000, 100);
  samples[12999] = 355;
  const LoadedPicture picture = Load(DeepImage(130, 100, 32, 24, BigEndianSamples(samples, 4)));
  EXPECT_EQ(picture.At(0, 0).red, 0);
  EXPECT_EQ(picture.At(129, 99).red, 255);
}

TEST_F(SampleDepth, DataShorterThanOneSample) {
  // The scan of three bytes finds nothing; the row read runs on into the next segment's subheader.
  NtfBuilder file{DeepImage(1, 1, 32, 32, {200, 1, 2}), GreyImage(1, 1, {9})};
  file.images[1].At(0, 1);
  EXPECT_EQ(Greys(Load(file)), (std::vector<int>{200, 9}));
}

TEST_F(SampleDepth, NoDataAtAllIsAShortRead) {
  EXPECT_EQ(Load(DeepImage(1, 1, 32, 24, {})).status, ERR_FILE_READ);
}

TEST_F(SampleDepth, TwelveBitBlocksAreRepacked) {
  // Samples 0x123 and 0xABC in three bytes; painted over the full scale of 4095.
  ImageSpec image = DeepImage(1, 1, 12, 12, {0x12, 0x3A, 0xBC, 0xFF, 0xF0, 0x00});
  image.Blocks(2, 1, 2, 1);
  const LoadedPicture picture = Load(image);
  EXPECT_NEAR(picture.At(0, 0).red, 0x123 * 255 / 4095.0, 1);
  EXPECT_NEAR(picture.At(1, 0).red, 0xABC * 255 / 4095.0, 1);
  EXPECT_EQ(picture.At(2, 0).red, 255);
  EXPECT_EQ(picture.At(3, 0).red, 0);
}

TEST_F(SampleDepth, TwelveBitBlocksOfOddWidth) {
  ImageSpec image = DeepImage(1, 1, 12, 12, Pattern(64));
  image.Blocks(2, 2, 3, 2);
  ExpectReference(image, 1);
}

TEST_F(SampleDepth, TwelveBitsWithTenSignificantAreStretchedInWords) {
  ImageSpec image = DeepImage(1, 1, 12, 10, Pattern(64));
  image.Blocks(2, 2, 4, 2);
  ExpectReference(image, 1);
  ExpectReference(DeepImage(4, 3, 12, 10, Pattern(64)), 1);
}

TEST_F(SampleDepth, TwelveBitsWithEightSignificantStayAsTheyAre) {
  ImageSpec image = DeepImage(1, 1, 12, 8, Pattern(64));
  image.Blocks(2, 2, 4, 2);
  ExpectReference(image, 1);
}

}  // namespace
}  // namespace tavi_test

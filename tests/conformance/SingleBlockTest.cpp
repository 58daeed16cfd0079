// One or two bands in one block: rows of raw samples.
#include "ConformanceTest.h"

namespace tavi_test {
namespace {

class SingleBlock : public ConformanceTest {};

TEST_F(SingleBlock, EightBitMonoIsDrawnAsItStands) {
  EXPECT_EQ(Greys(Load(GreyImage(3, 2, {0, 1, 127, 128, 254, 255}))),
            (std::vector<int>{0, 1, 127, 128, 254, 255}));
}

TEST_F(SingleBlock, WidthsThatNeedPaddedLines) {
  for (uint32_t width = 1; width <= 9; ++width) {
    SCOPED_TRACE(width);
    ExpectReference(GreyImage(width, 4, Pattern(width * 4)));
  }
}

TEST_F(SingleBlock, EveryRepresentationIsDrawn) {
  for (const char* irep :
       {"MONO", "RGB", "RGB/LUT", "MULTI", "NODISPLY", "NVECTOR", "POLAR", "VPH", "YCbCr601", "WHAT"}) {
    SCOPED_TRACE(irep);
    ImageSpec image = GreyImage(5, 3, Pattern(15));
    image.irep = irep;
    EXPECT_EQ(Greys(Load(image)), Greys(Load(GreyImage(5, 3, Pattern(15)))));
  }
}

TEST_F(SingleBlock, WholeBlockIsShownWhenItIsLargerThanTheImage) {
  ImageSpec image = GreyImage(4, 3, Pattern(12));
  image.columns = 2;
  image.rows = 1;
  const LoadedPicture picture = Load(image);
  EXPECT_EQ(picture.width, 4U);
  EXPECT_EQ(picture.height, 3U);
  ExpectReference(image);
}

TEST_F(SingleBlock, PixelsBehindAMaskTable) {
  ImageSpec image = GreyImage(3, 1, {10, 20, 30});
  image.ic = "NM";
  image.mask.gap = {99, 98};
  EXPECT_EQ(Greys(Load(image)), (std::vector<int>{10, 20, 30}));
}

TEST_F(SingleBlock, MasksAreNotLookedAt) {
  ImageSpec image = GreyImage(3, 1, {10, 20, 30});
  image.ic = "NM";
  image.mask.block_offsets = {{kAbsentBlock}};
  image.mask.pad_offsets = {{2}};
  EXPECT_EQ(Greys(Load(image)), (std::vector<int>{10, 20, 30}));
}

TEST_F(SingleBlock, UnmaskedCodeReadsItsDataFromTheStart) {
  // With IC NC the bytes of a mask table are pixels.
  EXPECT_EQ(Greys(Load(GreyImage(4, 1, {0, 0, 0, 10}))), (std::vector<int>{0, 0, 0, 10}));
}

TEST_F(SingleBlock, DataThatEndEarlyAreAShortRead) {
  EXPECT_EQ(Load(GreyImage(4, 4)).status, SUCCESS);
  BuiltFile built = NtfBuilder{GreyImage(4, 4)}.Build();
  built.Truncate("image[0].data", 15);
  EXPECT_EQ(LoadFile(Write(built)).status, ERR_FILE_READ);
  built.Truncate("image[0].data", 0);
  EXPECT_EQ(LoadFile(Write(built)).status, ERR_FILE_READ);
}

TEST_F(SingleBlock, ReadsRunOverTheDataLengthAsLongAsTheFileGoesOn) {
  NtfBuilder file{GreyImage(4, 2, Pattern(8))};
  file.header["LI[0]"] = "0000000001";
  EXPECT_EQ(Greys(Load(file)), Greys(Load(GreyImage(4, 2, Pattern(8)))));
}

TEST_F(SingleBlock, FewerBitsThanAByte) {
  // A row has as many bytes in the file as the smaller of its pixels and its line's bytes, whatever a
  // sample's size.
  for (const uint32_t bits : {1U, 2U, 4U}) {
    SCOPED_TRACE(bits);
    ExpectReference(DeepImage(3, 3, bits, bits, Pattern(64)));
    ExpectReference(DeepImage(37, 3, bits, bits, Pattern(200)));
  }
}

TEST_F(SingleBlock, FourBitSamplesSpreadOverTheGreyRamp) {
  // Five pixels take the first five bytes of the line; the line has four.
  const LoadedPicture picture = Load(DeepImage(8, 1, 4, 4, {0x01, 0x8F, 0x7A, 0xFE}));
  EXPECT_EQ(Greys(picture), (std::vector<int>{0, 17, 136, 255, 119, 170, 255, 238}));
}

TEST_F(SingleBlock, SixteenBitMonoIsPaintedOverItsFullScale) {
  Bytes pixels;
  for (uint32_t i = 0; i < 256; ++i) {
    pixels.push_back(static_cast<uint8_t>(i));
    pixels.push_back(static_cast<uint8_t>(i));
  }
  const LoadedPicture picture = Load(DeepImage(16, 16, 16, 16, pixels));
  std::vector<int> ramp;
  for (int i = 0; i < 256; ++i) ramp.push_back(i);
  EXPECT_EQ(Greys(picture), ramp);
}

TEST_F(SingleBlock, SixteenBitsOfAnotherRepresentationReadOneByteForEachPixel) {
  // Half of each line is read, in rows of four bytes; the rest stays zero.
  ImageSpec image = DeepImage(4, 2, 16, 16, {10, 11, 20, 21, 30, 31, 40, 41});
  image.irep = "MULTI";
  ExpectReference(image, 1);
}

TEST_F(SingleBlock, ThirtyTwoBitMonoShowsTheRawBytesWhenAllBitsAreSignificant) {
  const LoadedPicture picture = Load(DeepImage(4, 2, 32, 32, Pattern(32)));
  const Bytes raw = Pattern(32);
  EXPECT_EQ(Greys(picture),
            (std::vector<int>{raw[0], raw[1], raw[2], raw[3], raw[16], raw[17], raw[18], raw[19]}));
}

TEST_F(SingleBlock, SixtyFourBitMonoShowsTheRawBytes) {
  const Bytes raw = Pattern(32);
  for (const uint32_t abpp : {64U, 12U, 40U}) {
    SCOPED_TRACE(abpp);
    const LoadedPicture picture = Load(DeepImage(2, 2, 64, abpp, raw));
    EXPECT_EQ(Greys(picture), (std::vector<int>{raw[0], raw[1], raw[16], raw[17]}));
  }
}

TEST_F(SingleBlock, TwelveBitMonoReadsOneByteForEachPixel) {
  ExpectReference(DeepImage(4, 3, 12, 12, Pattern(64)), 1);
  ExpectReference(DeepImage(9, 2, 12, 12, Pattern(64)), 1);
}

TEST_F(SingleBlock, TwoBandsFillAThirdOfEachLine) {
  // The picture has 24 bits, and a row takes one byte for each pixel: four of twelve bytes.
  ImageSpec image = GreyImage(4, 2, {1, 2, 3, 4, 5, 6, 7, 8});
  image.irep = "MULTI";
  image.Roles({"R ", "G "});
  const LoadedPicture picture = Load(image);
  EXPECT_EQ(picture.At(0, 0), (Rgb{3, 2, 1}));
  EXPECT_EQ(picture.At(1, 0), (Rgb{0, 0, 4}));
  EXPECT_EQ(picture.At(2, 0), (Rgb{0, 0, 0}));
  EXPECT_EQ(picture.At(0, 1), (Rgb{7, 6, 5}));
  EXPECT_EQ(picture.At(1, 1), (Rgb{0, 0, 8}));
}

TEST_F(SingleBlock, DepthsThatNoBitmapHasAreRefused) {
  for (const uint32_t nbpp : {9U, 10U, 13U, 20U, 31U, 33U}) {
    SCOPED_TRACE(nbpp);
    EXPECT_EQ(Load(DeepImage(2, 2, nbpp, nbpp, Pattern(64))).status, ERR_INVALID_BPP);
  }
  ImageSpec two_bands = DeepImage(2, 2, 12, 12, Pattern(64));
  two_bands.Roles({"M ", "M "});
  EXPECT_EQ(Load(two_bands).status, ERR_INVALID_BPP);
}

TEST_F(SingleBlock, BlocksWithoutASideAreRefusedByTheHost) {
  for (const char* field : {"NPPBH", "NPPBV", "NBPR", "NBPC"}) {
    SCOPED_TRACE(field);
    // A second image gives the composite its size.
    NtfBuilder file{GreyImage(2, 2), GreyImage(4, 4)};
    file.images[0].fields[field] = "0000";
    EXPECT_EQ(Load(file).status, ERR_INVALID_PARAMETER);
  }
}

}  // namespace
}  // namespace tavi_test

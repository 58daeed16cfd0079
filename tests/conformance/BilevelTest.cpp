// PVTYPE B: bits that run on across rows, in one block or several, with and without masks.
#include "ConformanceTest.h"

namespace tavi_test {
namespace {

class Bilevel : public ConformanceTest {};

constexpr int kB = 0;
constexpr int kW = 255;

// Blocks of 4 x 1 pixels: one byte each, the high half of which is drawn.
ImageSpec NibbleBlocks(uint32_t across, uint32_t down, Bytes pixels) {
  ImageSpec image = BilevelImage(1, 1, std::move(pixels));
  image.Blocks(across, down, 4, 1);
  return image;
}

TEST_F(Bilevel, OneBitIsWhiteAndZeroIsBlack) {
  EXPECT_EQ(Greys(Load(BilevelImage(8, 1, {0xA5}))), (std::vector<int>{kW, kB, kW, kB, kB, kW, kB, kW}));
}

TEST_F(Bilevel, RowsRunOnWithoutAlignment) {
  // Three rows of three pixels in nine bits: 101 100 11 | 1
  EXPECT_EQ(Greys(Load(BilevelImage(3, 3, {0xB3, 0x80}))),
            (std::vector<int>{kW, kB, kW, kW, kB, kB, kW, kW, kW}));
}

TEST_F(Bilevel, WidthsAroundByteAndWordLimits) {
  for (const uint32_t width : {1U, 7U, 8U, 9U, 31U, 32U, 33U, 65U}) {
    SCOPED_TRACE(width);
    ExpectReference(BilevelImage(width, 5, Pattern((width * 5 + 7) / 8)));
  }
}

TEST_F(Bilevel, EachBlockStartsOnAByte) {
  const LoadedPicture picture = Load(NibbleBlocks(2, 2, {0x8F, 0x4F, 0x2F, 0x1F}));
  EXPECT_EQ(Greys(picture),
            (std::vector<int>{kW, kB, kB, kB, kB, kW, kB, kB, kB, kB, kW, kB, kB, kB, kB, kW}));
}

TEST_F(Bilevel, BlocksWhoseWidthIsNoMultipleOfEight) {
  for (const uint32_t width : {1U, 3U, 5U, 11U, 17U}) {
    SCOPED_TRACE(width);
    ImageSpec image = BilevelImage(1, 1, Pattern(200));
    image.Blocks(3, 2, width, 4);
    ExpectReference(image);
  }
}

TEST_F(Bilevel, TwoEntryLookUpTableColoursTheBits) {
  ImageSpec image = BilevelImage(2, 1, {0x40});
  image.bands[0].luts = {{10, 40}, {20, 50}, {30, 60}};
  const LoadedPicture picture = Load(image);
  EXPECT_EQ(picture.At(0, 0), (Rgb{10, 20, 30}));
  EXPECT_EQ(picture.At(1, 0), (Rgb{40, 50, 60}));
}

TEST_F(Bilevel, AbsentBlockStaysAsCreatedAndLaterBlocksAreFoundByTheirOwnEntries) {
  ImageSpec image = NibbleBlocks(3, 1, {0xF0, 0x90});
  image.ic = "NM";
  image.mask.block_offsets = {{0, kAbsentBlock, 1}};
  EXPECT_EQ(Greys(Load(image)), (std::vector<int>{kW, kW, kW, kW, kB, kB, kB, kB, kW, kB, kB, kW}));
}

TEST_F(Bilevel, BlockMaskEntriesReorderBlocks) {
  ImageSpec image = NibbleBlocks(3, 1, {0x80, 0x40, 0x20});
  image.ic = "NM";
  image.mask.block_offsets = {{2, 0, 1}};
  EXPECT_EQ(Greys(Load(image)), (std::vector<int>{kB, kB, kW, kB, kW, kB, kB, kB, kB, kW, kB, kB}));
}

TEST_F(Bilevel, EntryAboveTheDataLengthCountsAsAbsent) {
  ImageSpec image = NibbleBlocks(2, 1, {0xF0, 0xF0});
  image.ic = "NM";
  image.mask.block_offsets = {{0, 5000}};
  EXPECT_EQ(Greys(Load(image)), (std::vector<int>{kW, kW, kW, kW, kB, kB, kB, kB}));
}

TEST_F(Bilevel, PadMaskEntriesAreOffsets) {
  ImageSpec image = NibbleBlocks(2, 1, {0xF0, 0x00, 0x90});
  image.ic = "NM";
  image.mask.pad_offsets = {{2, 0}};
  EXPECT_EQ(Greys(Load(image)), (std::vector<int>{kW, kB, kB, kW, kW, kW, kW, kW}));
}

TEST_F(Bilevel, PadMaskEntryOfAllOnesGoesOnWhereTheBlockBeforeEnded) {
  ImageSpec image = NibbleBlocks(4, 1, {0x10, 0x20, 0x40, 0x80});
  image.ic = "NM";
  image.mask.pad_offsets = {{kAbsentBlock, 2, kAbsentBlock, 1}};
  EXPECT_EQ(Greys(Load(image)),
            (std::vector<int>{kB, kB, kB, kW, kB, kW, kB, kB, kW, kB, kB, kB, kB, kB, kW, kB}));
}

TEST_F(Bilevel, PadMaskEntryAboveTheDataLengthIsSkipped) {
  ImageSpec image = NibbleBlocks(2, 1, {0xF0, 0xF0});
  image.ic = "NM";
  image.mask.pad_offsets = {{5000, 0}};
  EXPECT_EQ(Greys(Load(image)), (std::vector<int>{kB, kB, kB, kB, kW, kW, kW, kW}));
}

TEST_F(Bilevel, BlockMaskGoesBeforePadMask) {
  ImageSpec image = NibbleBlocks(2, 1, {0x80, 0x40});
  image.ic = "NM";
  image.mask.block_offsets = {{1, 0}};
  image.mask.pad_offsets = {{0, 1}};
  EXPECT_EQ(Greys(Load(image)), (std::vector<int>{kB, kW, kB, kB, kW, kB, kB, kB}));
}

TEST_F(Bilevel, BytesBetweenTableAndPixelsAreSteppedOver) {
  ImageSpec image = NibbleBlocks(2, 1, {0x80, 0x40});
  image.ic = "NM";
  image.mask.gap = {0xFF, 0xFF, 0xFF};
  EXPECT_EQ(Greys(Load(image)), (std::vector<int>{kW, kB, kB, kB, kB, kW, kB, kB}));
}

TEST_F(Bilevel, AllBlocksAbsentDrawsThemAsCreated) {
  ImageSpec image = NibbleBlocks(2, 1, {});
  image.ic = "NM";
  image.mask.block_offsets = {{kAbsentBlock, kAbsentBlock}};
  const LoadedPicture picture = Load(image);
  EXPECT_EQ(picture.status, SUCCESS);
  EXPECT_EQ(Greys(picture), std::vector<int>(8, kB));
}

TEST_F(Bilevel, ExhaustedDataAreAFormatError) {
  EXPECT_EQ(Load(BilevelImage(16, 2, {1, 2, 3})).status, ERR_FILE_FORMAT);
  EXPECT_EQ(Load(NibbleBlocks(2, 1, {0xF0})).status, ERR_FILE_FORMAT);
  EXPECT_EQ(Load(BilevelImage(3, 3, {0xB3})).status, ERR_FILE_FORMAT);
}

TEST_F(Bilevel, DataLengthBeyondTheFileIsAShortRead) {
  NtfBuilder file{BilevelImage(8, 1, {0xF0})};
  file.header["LI[0]"] = "0000000002";
  EXPECT_EQ(Load(file).status, ERR_FILE_READ);
}

TEST_F(Bilevel, BitsBetweenThePixelsAndTheDataLengthAreZero) {
  // Offsets count from the pixels, the length counts the table too: what lies between is read as zeros.
  ImageSpec image = NibbleBlocks(2, 1, {0xF0, 0xF0});
  image.ic = "NM";
  image.mask.block_offsets = {{0, 2}};
  EXPECT_EQ(Greys(Load(image)), (std::vector<int>{kW, kW, kW, kW, kB, kB, kB, kB}));
}

TEST_F(Bilevel, FailingBlockStopsTheImage) {
  // Table and pixels are 30 bytes. The second block starts inside this length and ends beyond it; the third
  // would fit.
  ImageSpec image = BilevelImage(1, 1, Pattern(8));
  image.Blocks(3, 1, 8, 4);
  image.ic = "NM";
  image.mask.block_offsets = {{0, 28, 4}};
  EXPECT_EQ(Load(image).status, ERR_FILE_FORMAT);
}

TEST_F(Bilevel, SamplesDeeperThanOneBitAreStillReadAsBits) {
  // Eight packed bits become one 8-bit pixel; the rest of the row stays zero.
  ImageSpec image = BilevelImage(9, 2, {0x81, 0xC3, 0x40});
  image.nbpp = image.abpp = 8;
  const LoadedPicture picture = Load(image);
  EXPECT_EQ(picture.At(0, 0).red, 0x81);
  EXPECT_EQ(picture.At(1, 0).red, 0x80);
  EXPECT_EQ(picture.At(2, 0).red, 0);
  ExpectReference(image);
}

}  // namespace
}  // namespace tavi_test

// One or two bands in several blocks: blocks in file order, found by their ordinal.
#include "ConformanceTest.h"

namespace tavi_test {
namespace {

class Blocks : public ConformanceTest {};

// Blocks of 2 x 1 pixels.
ImageSpec PairBlocks(uint32_t across, uint32_t down, Bytes pixels) {
  ImageSpec image = GreyImage(1, 1, std::move(pixels));
  image.Blocks(across, down, 2, 1);
  return image;
}

TEST_F(Blocks, StandRowByRowFromTheTopLeft) {
  EXPECT_EQ(Greys(Load(PairBlocks(2, 2, {1, 2, 3, 4, 5, 6, 7, 8}))),
            (std::vector<int>{1, 2, 3, 4, 5, 6, 7, 8}));
  ImageSpec image = GreyImage(1, 1, {1, 2, 3, 4, 5, 6, 7, 8});
  image.Blocks(2, 1, 2, 2);
  EXPECT_EQ(Greys(Load(image)), (std::vector<int>{1, 2, 5, 6, 3, 4, 7, 8}));
}

TEST_F(Blocks, GridsOfAllShapes) {
  for (uint32_t across = 1; across <= 4; ++across) {
    for (uint32_t down = 1; down <= 4; ++down) {
      SCOPED_TRACE(std::to_string(across) + " x " + std::to_string(down));
      ImageSpec image = GreyImage(1, 1, Pattern(4 * 4 * 3 * 5));
      image.Blocks(across, down, 3, 5);
      ExpectReference(image);
    }
  }
}

TEST_F(Blocks, PartialBlocksLandInFull) {
  ImageSpec image = GreyImage(1, 1, Pattern(64));
  image.Blocks(2, 2, 4, 4);
  image.columns = 5;
  image.rows = 6;
  const LoadedPicture picture = Load(image);
  EXPECT_EQ(picture.width, 8U);
  EXPECT_EQ(picture.height, 8U);
  ExpectReference(image);
}

TEST_F(Blocks, AbsentBlockStaysAsCreatedAndTakesNoRoomInTheFile) {
  ImageSpec image = PairBlocks(3, 1, {10, 11, 20, 21});
  image.ic = "NM";
  image.mask.block_offsets = {{0, kAbsentBlock, 2}};
  EXPECT_EQ(Greys(Load(image)), (std::vector<int>{10, 11, 0, 0, 20, 21}));
}

TEST_F(Blocks, MasksThatReorderBlocksDecodeInFileOrder) {
  ImageSpec image = PairBlocks(3, 1, {10, 11, 20, 21, 30, 31});
  image.ic = "NM";
  image.mask.block_offsets = {{4, 0, 2}};
  EXPECT_EQ(Greys(Load(image)), (std::vector<int>{10, 11, 20, 21, 30, 31}));
}

TEST_F(Blocks, EntryAboveTheDataLengthCountsAsAbsent) {
  ImageSpec image = PairBlocks(3, 1, {10, 11, 20, 21});
  image.ic = "NM";
  image.mask.block_offsets = {{0, 5000, 2}};
  EXPECT_EQ(Greys(Load(image)), (std::vector<int>{10, 11, 0, 0, 20, 21}));
}

TEST_F(Blocks, EntryEqualToTheDataLengthIsPresent) {
  ImageSpec image = PairBlocks(2, 1, {10, 11, 20, 21});
  image.ic = "NM";
  image.mask.block_offsets = {{0, 0}};
  const auto length = static_cast<uint32_t>(image.Data().size());
  image.mask.block_offsets = {{0, length}};
  EXPECT_EQ(Greys(Load(image)), (std::vector<int>{10, 11, 20, 21}));
  image.mask.block_offsets = {{0, length + 1}};
  EXPECT_EQ(Greys(Load(image)), (std::vector<int>{10, 11, 0, 0}));
}

TEST_F(Blocks, PadMaskIsNotLookedAt) {
  ImageSpec image = PairBlocks(2, 1, {10, 11, 20, 21});
  image.ic = "NM";
  image.mask.pad_offsets = {{kAbsentBlock, 0}};
  EXPECT_EQ(Greys(Load(image)), (std::vector<int>{10, 11, 20, 21}));
}

TEST_F(Blocks, AllBlocksAbsentSucceed) {
  ImageSpec image = PairBlocks(2, 2, {});
  image.ic = "NM";
  image.mask.block_offsets = {{kAbsentBlock, kAbsentBlock, kAbsentBlock, kAbsentBlock}};
  const LoadedPicture picture = Load(image);
  EXPECT_EQ(picture.status, SUCCESS);
  EXPECT_EQ(Greys(picture), std::vector<int>(8, 0));
}

TEST_F(Blocks, AbsentBlocksShowThePalettesFirstEntry) {
  ImageSpec image = PairBlocks(2, 1, {1, 1});
  image.ic = "NM";
  image.mask.block_offsets = {{kAbsentBlock, 0}};
  Bytes table(256, 7);
  table[0] = 99;
  image.bands[0].luts = {table};
  EXPECT_EQ(Greys(Load(image)), (std::vector<int>{99, 99, 7, 7}));
}

TEST_F(Blocks, FailingBlockEndsItsRunAndTheNextRunGoesOn) {
  // Runs have NBPC blocks. Three blocks across and two down: the runs are 0 1, 2 3 and 4 5. Only blocks 0 and
  // 1 are in the file: 2 fails, 3 is not tried, 4 fails as it keeps the ordinal.
  ImageSpec image = PairBlocks(3, 2, {1, 2, 3, 4});
  EXPECT_EQ(Load(image).status, ERR_FILE_READ);
}

TEST_F(Blocks, StatusIsThatOfTheLastBlockDecoded) {
  // Nothing but the last block tried counts. Runs of two: blocks 0 and 1, then 2 and 3. Block 1 reads beyond
  // the file; 2 and 3 are absent, so its status stays.
  ImageSpec image = PairBlocks(2, 2, {1, 2});
  image.ic = "NM";
  image.mask.block_offsets = {{0, 0, kAbsentBlock, kAbsentBlock}};
  EXPECT_EQ(Load(image).status, ERR_FILE_READ);
}

TEST_F(Blocks, EveryDepthOfOneBand) {
  for (const uint32_t bits : {1U, 2U, 3U, 4U, 5U, 6U, 7U, 8U}) {
    for (const uint32_t width : {3U, 8U, 13U}) {
      SCOPED_TRACE(std::to_string(bits) + " bits, width " + std::to_string(width));
      ImageSpec image = DeepImage(1, 1, bits, bits, Pattern(4 * 3 * 14));
      image.Blocks(2, 2, width, 3);
      ExpectReference(image);
    }
  }
}

TEST_F(Blocks, SixteenBitBlocks) {
  // A slope over the whole picture, most significant byte first.
  ImageSpec image = DeepImage(1, 1, 16, 16, {});
  image.Blocks(2, 2, 8, 8);
  for (uint32_t block = 0; block < 4; ++block) {
    for (uint32_t pixel = 0; pixel < 64; ++pixel) {
      const uint32_t x = block % 2 * 8 + pixel % 8;
      const uint32_t y = block / 2 * 8 + pixel / 8;
      const uint32_t sample = 257 * (16 * y + x);
      image.pixels.push_back(static_cast<uint8_t>(sample >> 8));
      image.pixels.push_back(static_cast<uint8_t>(sample));
    }
  }
  ExpectReference(image, 1);
  EXPECT_EQ(Load(image).At(15, 15).red, 255);
}

TEST_F(Blocks, ThirtyTwoBitMonoReadsOneByteForEachPixel) {
  ImageSpec image = DeepImage(1, 1, 32, 32, Pattern(64));
  image.Blocks(2, 1, 4, 2);
  const Bytes raw = Pattern(64);
  EXPECT_EQ(Greys(Load(image)),
            (std::vector<int>{raw[0], raw[1], raw[2], raw[3], raw[8], raw[9], raw[10], raw[11], raw[4],
                              raw[5], raw[6], raw[7], raw[12], raw[13], raw[14], raw[15]}));
}

TEST_F(Blocks, TwoBandsReadThreeBytesForEachPixel) {
  ImageSpec image = GreyImage(1, 1, {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12});
  image.irep = "MULTI";
  image.Roles({"  ", "  "}).Blocks(2, 1, 1, 2);
  const LoadedPicture picture = Load(image);
  EXPECT_EQ(picture.At(0, 0), (Rgb{3, 2, 1}));
  EXPECT_EQ(picture.At(0, 1), (Rgb{6, 5, 4}));
  EXPECT_EQ(picture.At(1, 0), (Rgb{9, 8, 7}));
  EXPECT_EQ(picture.At(1, 1), (Rgb{12, 11, 10}));
}

TEST_F(Blocks, OffsetsStartAtTheDataOffset) {
  ImageSpec image = PairBlocks(2, 1, {10, 11, 20, 21});
  image.ic = "NM";
  image.mask.gap = {1, 2, 3, 4, 5};
  EXPECT_EQ(Greys(Load(image)), (std::vector<int>{10, 11, 20, 21}));
}

TEST_F(Blocks, TablesCountTheBandsWhateverTheMode) {
  // Two bands and two blocks: four entries, of which the first two are looked at.
  ImageSpec image = GreyImage(1, 1, {1, 2, 3, 4, 5, 6});
  image.irep = "MULTI";
  image.Roles({"  ", "  "}).Blocks(2, 1, 1, 1);
  image.ic = "NM";
  image.mask.block_offsets = {{kAbsentBlock, 0, 0, 0}};
  const LoadedPicture picture = Load(image);
  EXPECT_EQ(picture.At(0, 0), (Rgb{0, 0, 0}));
  EXPECT_EQ(picture.At(1, 0), (Rgb{3, 2, 1}));
}

}  // namespace
}  // namespace tavi_test

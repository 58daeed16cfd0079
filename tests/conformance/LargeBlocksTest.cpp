// Blocks of several hundred kilobytes: however they are taken in pieces, the picture is that of one whole
// block.
#include "ConformanceTest.h"

namespace tavi_test {
namespace {

class LargeBlocks : public ConformanceTest {};

// Heights around the places where pieces of 64 or 128 kilobytes would end for lines of 2100 bytes.
const std::initializer_list<uint32_t> kHeights = {30, 31, 32, 61, 62, 63, 64, 124, 125, 126, 187};

TEST_F(LargeBlocks, OneBandInOneBlock) {
  for (const uint32_t height : kHeights) {
    SCOPED_TRACE(height);
    ExpectReference(GreyImage(2100, height, Pattern(2100 * height)));
  }
}

TEST_F(LargeBlocks, OneBandInSeveralBlocks) {
  for (const uint32_t height : kHeights) {
    SCOPED_TRACE(height);
    ImageSpec image = GreyImage(1, 1, Pattern(2 * 2099 * height));
    image.Blocks(1, 2, 2099, height);
    ExpectReference(image);
  }
}

TEST_F(LargeBlocks, ConvertedSamplesInOneBlock) {
  // 32-bit samples between their smallest and largest, in lines of 8400 bytes.
  for (const uint32_t height : {15U, 16U, 17U, 31U}) {
    SCOPED_TRACE(height);
    ExpectReference(DeepImage(2100, height, 32, 24, Pattern(4 * 2100 * height)));
  }
}

TEST_F(LargeBlocks, BilevelInSeveralBlocks) {
  for (const uint32_t height : {120U, 250U, 263U, 500U, 525U}) {
    SCOPED_TRACE(height);
    ImageSpec image = BilevelImage(1, 1, Pattern(4 * 4000 * height / 8));
    image.Blocks(2, 2, 1999, height);
    ExpectReference(image);
  }
}

class LargeBlocksOfEachOrder : public LargeBlocks, public ::testing::WithParamInterface<char> {};

INSTANTIATE_TEST_SUITE_P(Orders, LargeBlocksOfEachOrder, ::testing::Values('B', 'P', 'R', 'S'),
                         [](const auto& order) { return std::string(1, order.param); });

TEST_P(LargeBlocksOfEachOrder, ThreeBands) {
  for (const uint32_t height : kHeights) {
    SCOPED_TRACE(height);
    ImageSpec image = RgbImage(1, 1, GetParam(), Pattern(2 * 3 * 700 * height));
    image.Blocks(1, 2, 700, height);
    ExpectReference(image);
  }
}

TEST_P(LargeBlocksOfEachOrder, ManyBands) {
  for (const uint32_t height : {62U, 63U}) {
    SCOPED_TRACE(height);
    ImageSpec image = RgbImage(1, 1, GetParam(), Pattern(10 * 700 * height));
    image.irep = "MULTI";
    image.Roles({"  ", "B ", "  ", "  ", "  ", "G ", "  ", "  ", "  ", "R "}).Blocks(1, 1, 700, height);
    ExpectReference(image);
  }
}

TEST_P(LargeBlocksOfEachOrder, LastByteOfTheDataIsNeeded) {
  // In order P the block's last row is not read, but the one before it is, shifted by the last band.
  ImageSpec image = RgbImage(700, 130, GetParam(), Pattern(3 * 700 * 130));
  const size_t needed = image.pixels.size() - (GetParam() == 'P' ? 3 * 700 - 2 : 0);
  image.pixels.resize(needed);
  EXPECT_EQ(Load(image).status, SUCCESS);
  image.pixels.resize(needed - 1);
  EXPECT_EQ(Load(image).status, ERR_FILE_READ);
}

TEST_P(LargeBlocksOfEachOrder, BlockThatFailsInItsMiddleLeavesNothing) {
  if (GetParam() == 'R')
    return ExpectReference(RgbImage(700, 130, 'R', Pattern(1000)));  // its masks are not read
  // Three runs of one block. The second reads well for some rows and then beyond the file.
  ImageSpec image = RgbImage(1, 1, GetParam(), Pattern(3 * 3 * 700 * 130));
  image.Blocks(3, 1, 700, 130);
  image.ic = "NM";
  const auto late = static_cast<uint32_t>(image.pixels.size() - (GetParam() == 'P' ? 3 : 1) * 700 * 100);
  image.mask.block_offsets = {{0, late, 70}};
  const LoadedPicture picture = Load(image);
  if (GetParam() != 'S') {
    ASSERT_EQ(picture.status, SUCCESS);
    EXPECT_EQ(picture.At(700, 0), (Rgb{0, 0, 0}));
    EXPECT_EQ(picture.At(1399, 95), (Rgb{0, 0, 0}));
  }
  ExpectReference(image);
}

}  // namespace
}  // namespace tavi_test

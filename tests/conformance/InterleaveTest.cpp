// Three and more bands in the four interleave orders.
#include "ConformanceTest.h"

namespace tavi_test {
namespace {

class Interleave : public ConformanceTest {};

// The samples of a picture of `bands` bands, put in the order of `mode` for a grid of blocks: what a correct
// producer writes. Sample (band, x, y) is given by `sample`.
template <typename Sample>
Bytes Arrange(const ImageSpec& image, Sample sample) {
  const auto bands = static_cast<uint32_t>(image.bands.size());
  Bytes out;
  const auto put_row = [&](uint32_t block, uint32_t band, uint32_t row) {
    for (uint32_t x = 0; x < image.nppbh; ++x) {
      out.push_back(
          sample(band, block % image.nbpr * image.nppbh + x, block / image.nbpr * image.nppbv + row));
    }
  };
  const uint32_t outer_bands = image.imode == 'S' ? bands : 1;
  for (uint32_t outer = 0; outer < outer_bands; ++outer) {
    for (uint32_t block = 0; block < image.BlockCount(); ++block) {
      for (uint32_t band = 0; image.imode == 'B' && band < bands; ++band) {
        for (uint32_t row = 0; row < image.nppbv; ++row) put_row(block, band, row);
      }
      for (uint32_t row = 0; image.imode == 'R' && row < image.nppbv; ++row) {
        for (uint32_t band = 0; band < bands; ++band) put_row(block, band, row);
      }
      for (uint32_t row = 0; image.imode == 'S' && row < image.nppbv; ++row) put_row(block, outer, row);
      for (uint32_t i = 0; image.imode == 'P' && i < image.nppbh * image.nppbv * bands; ++i) {
        const uint32_t pixel = i / bands;
        out.push_back(sample(i % bands, block % image.nbpr * image.nppbh + pixel % image.nppbh,
                             block / image.nbpr * image.nppbv + pixel / image.nppbh));
      }
    }
  }
  return out;
}

uint8_t Sample(uint32_t band, uint32_t x, uint32_t y) {
  return static_cast<uint8_t>(60 * band + 7 * y + x);
}

ImageSpec Arranged(char mode, uint32_t bands, uint32_t across, uint32_t down, uint32_t width,
                   uint32_t height) {
  ImageSpec image = GreyImage(1, 1);
  image.irep = bands == 3 ? "RGB" : "MULTI";
  image.Roles(std::vector<std::string>(bands, "  ")).Mode(mode).Blocks(across, down, width, height);
  if (bands == 3) image.Roles({"R ", "G ", "B "});
  image.pixels = Arrange(image, Sample);
  return image;
}

// The row of samples that stands at picture row y: the last row of a block repeats the one above it in order
// P.
uint32_t ShownRow(const ImageSpec& image, uint32_t y) {
  return image.imode == 'P' && y % image.nppbv == image.nppbv - 1 ? y - 1 : y;
}

class EachOrder : public ConformanceTest, public ::testing::WithParamInterface<char> {};

INSTANTIATE_TEST_SUITE_P(Orders, EachOrder, ::testing::Values('B', 'P', 'R', 'S'),
                         [](const auto& order) { return std::string(1, order.param); });

TEST_P(EachOrder, OneBlockOfThreeBandsIsThePicture) {
  const ImageSpec image = Arranged(GetParam(), 3, 1, 1, 5, 4);
  const LoadedPicture picture = Load(image);
  ASSERT_EQ(picture.status, SUCCESS);
  for (uint32_t y = 0; y < 4; ++y) {
    for (uint32_t x = 0; x < 5; ++x) {
      const uint32_t row = ShownRow(image, y);
      EXPECT_EQ(picture.At(x, y), (Rgb{Sample(0, x, row), Sample(1, x, row), Sample(2, x, row)}))
          << x << ' ' << y;
    }
  }
}

TEST_P(EachOrder, SeveralBlocksOfThreeBandsAreThePicture) {
  // Widths that are multiples of four: rows of the tile then need no padding, on which order R counts.
  const ImageSpec image = Arranged(GetParam(), 3, 3, 2, 4, 3);
  const LoadedPicture picture = Load(image);
  ASSERT_EQ(picture.status, SUCCESS);
  for (uint32_t y = 0; y < 6; ++y) {
    for (uint32_t x = 0; x < 12; ++x) {
      const uint32_t row = ShownRow(image, y);
      EXPECT_EQ(picture.At(x, y), (Rgb{Sample(0, x, row), Sample(1, x, row), Sample(2, x, row)}))
          << x << ' ' << y;
    }
  }
}

TEST_P(EachOrder, FiveBandsShowTheFirstThreeAndStepOverTheOthers) {
  // MULTI without any role: bands 0, 1 and 2.
  const ImageSpec image = Arranged(GetParam(), 5, 2, 2, 4, 2);
  const LoadedPicture picture = Load(image);
  ASSERT_EQ(picture.status, SUCCESS);
  for (uint32_t y = 0; y < 4; ++y) {
    for (uint32_t x = 0; x < 8; ++x) {
      const uint32_t row = ShownRow(image, y);
      EXPECT_EQ(picture.At(x, y), (Rgb{Sample(0, x, row), Sample(1, x, row), Sample(2, x, row)}))
          << x << ' ' << y;
    }
  }
}

TEST_P(EachOrder, TwelveBandsAreCountedByXbands) {
  ImageSpec image = Arranged(GetParam(), 12, 1, 1, 4, 3);
  image.bands[11].irepband = "R ";
  image.bands[4].irepband = "G ";
  image.bands[7].irepband = "B ";
  const LoadedPicture picture = Load(image);
  EXPECT_EQ(picture.At(2, 1), (Rgb{Sample(11, 2, 1), Sample(4, 2, 1), Sample(7, 2, 1)}));
  ExpectReference(image);
}

TEST_P(EachOrder, XbandsForThreeBands) {
  ImageSpec image = Arranged(GetParam(), 3, 1, 1, 4, 3);
  image.use_xbands = true;
  EXPECT_EQ(Load(image).At(1, 1), (Rgb{Sample(0, 1, 1), Sample(1, 1, 1), Sample(2, 1, 1)}));
}

TEST_P(EachOrder, GridsOfAllShapesAgreeWithTheReference) {
  for (uint32_t shape = 0; shape < 54; ++shape) {
    const uint32_t across = 1 + shape % 3;
    const uint32_t down = 1 + shape / 3 % 3;
    const uint32_t bands = 3 + shape / 9 % 3;
    const char* irep = shape < 27 ? "RGB" : "MULTI";
    SCOPED_TRACE(std::string(irep) + ' ' + std::to_string(bands) + " bands " + std::to_string(across) +
                 " x " + std::to_string(down));
    ImageSpec image = GreyImage(1, 1, Pattern(6000, shape));
    image.irep = irep;
    image.Roles(std::vector<std::string>(bands, "  ")).Mode(GetParam()).Blocks(across, down, 3, 4);
    ExpectReference(image);
  }
}

TEST_P(EachOrder, MonoOfSeveralBandsIsDrawnInColour) {
  ImageSpec image = Arranged(GetParam(), 3, 2, 1, 4, 3);
  const LoadedPicture colour = Load(image);
  image.irep = "MONO";
  EXPECT_EQ(Load(image).At(5, 1), colour.At(5, 1));
}

TEST_P(EachOrder, PixelsBehindAMaskTable) {
  ImageSpec image = Arranged(GetParam(), 3, 2, 2, 4, 3);
  const LoadedPicture plain = Load(image);
  image.ic = "NM";
  image.mask.gap = Bytes(13, 200);
  ExpectReference(image);
  EXPECT_EQ(Load(image).At(7, 4), plain.At(7, 4));
}

TEST_P(EachOrder, DataThatEndEarlyAreAShortRead) {
  ImageSpec image = Arranged(GetParam(), 3, 1, 1, 4, 4);
  image.pixels.resize(30);
  EXPECT_EQ(Load(image).status, ERR_FILE_READ);
  image.pixels.clear();
  EXPECT_EQ(Load(image).status, ERR_FILE_READ);
}

TEST_P(EachOrder, LookUpTablesTakeNoPart) {
  ImageSpec image = Arranged(GetParam(), 3, 1, 1, 4, 4);
  const LoadedPicture plain = Load(image);
  for (BandSpec& band : image.bands) band.luts = {Bytes(256, 7)};
  EXPECT_EQ(Load(image).At(3, 2), plain.At(3, 2));
}

TEST_P(EachOrder, DepthsThatNoBitmapHasAreRefused) {
  for (const uint32_t nbpp : {3U, 5U, 7U, 12U, 32U, 64U}) {
    SCOPED_TRACE(nbpp);
    ImageSpec image = Arranged(GetParam(), 3, 1, 1, 4, 4);
    image.nbpp = image.abpp = nbpp;
    EXPECT_EQ(Load(image).status, ERR_INVALID_BPP);
  }
}

// ---- Block masks and pad masks ----

class MaskedOrder : public EachOrder {};

INSTANTIATE_TEST_SUITE_P(Orders, MaskedOrder, ::testing::Values('B', 'P', 'S'),
                         [](const auto& order) { return std::string(1, order.param); });

// Two blocks of 4 x 3 pixels, three bands, 36 bytes each.
ImageSpec TwoBlocks(char mode) {
  ImageSpec image = Arranged(mode, 3, 2, 1, 4, 3);
  image.irep = "MULTI";
  image.ic = "NM";
  return image;
}

uint32_t SecondBlock(char mode) {
  return mode == 'S' ? 12 : 36;
}

TEST_P(MaskedOrder, BlockMaskEntriesAreOffsets) {
  ImageSpec image = TwoBlocks(GetParam());
  image.mask.block_offsets = {{SecondBlock(GetParam()), 0}};
  const LoadedPicture picture = Load(image);
  ASSERT_EQ(picture.status, SUCCESS);
  for (uint32_t x = 0; x < 8; ++x) {
    const uint32_t from = (x + 4) % 8;
    EXPECT_EQ(picture.At(x, 1), (Rgb{Sample(0, from, 1), Sample(1, from, 1), Sample(2, from, 1)}));
  }
}

TEST_P(MaskedOrder, AbsentBlockStaysBlack) {
  ImageSpec image = TwoBlocks(GetParam());
  image.mask.block_offsets = {{kAbsentBlock, 0}};
  const LoadedPicture picture = Load(image);
  ASSERT_EQ(picture.status, SUCCESS);
  EXPECT_EQ(picture.At(2, 1), (Rgb{0, 0, 0}));
  EXPECT_EQ(picture.At(4, 0).red, Sample(0, 0, 0));
  ExpectReference(image);
}

TEST_P(MaskedOrder, EntryAboveTheDataLengthCountsAsAbsent) {
  ImageSpec image = TwoBlocks(GetParam());
  image.mask.block_offsets = {{0, 50000}};
  const LoadedPicture picture = Load(image);
  EXPECT_EQ(picture.status, SUCCESS);
  EXPECT_EQ(picture.At(4, 0), (Rgb{0, 0, 0}));
  ExpectReference(image);
}

TEST_P(MaskedOrder, AllBlocksAbsentSucceed) {
  ImageSpec image = TwoBlocks(GetParam());
  image.pixels.clear();
  image.mask.block_offsets = {{kAbsentBlock, kAbsentBlock}};
  const LoadedPicture picture = Load(image);
  EXPECT_EQ(picture.status, SUCCESS);
  EXPECT_EQ(Greys(picture), std::vector<int>(24, 0));
}

TEST_P(MaskedOrder, PadMaskEntriesAreOffsetsToo) {
  ImageSpec image = TwoBlocks(GetParam());
  image.mask.pad_offsets = {{SecondBlock(GetParam()), 0}};
  const LoadedPicture picture = Load(image);
  EXPECT_EQ(picture.At(0, 1), (Rgb{Sample(0, 4, 1), Sample(1, 4, 1), Sample(2, 4, 1)}));
  EXPECT_EQ(picture.At(4, 1), (Rgb{Sample(0, 0, 1), Sample(1, 0, 1), Sample(2, 0, 1)}));
}

TEST_P(MaskedOrder, PadMaskOfAllOnesReadsAsIfThereWereNone) {
  ImageSpec image = TwoBlocks(GetParam());
  image.mask.pad_offsets = {{kAbsentBlock, kAbsentBlock}};
  const LoadedPicture picture = Load(image);
  for (uint32_t x = 0; x < 8; ++x) {
    EXPECT_EQ(picture.At(x, 1), (Rgb{Sample(0, x, 1), Sample(1, x, 1), Sample(2, x, 1)}));
  }
}

TEST_P(MaskedOrder, PadMaskEntryAboveTheDataLengthIsSkipped) {
  ImageSpec image = TwoBlocks(GetParam());
  image.mask.pad_offsets = {{50000, SecondBlock(GetParam())}};
  const LoadedPicture picture = Load(image);
  EXPECT_EQ(picture.status, SUCCESS);
  EXPECT_EQ(picture.At(0, 0), (Rgb{0, 0, 0}));
  EXPECT_EQ(picture.At(5, 1).red, Sample(0, 5, 1));
}

TEST_P(MaskedOrder, BlockMaskGoesBeforePadMask) {
  ImageSpec image = TwoBlocks(GetParam());
  image.mask.block_offsets = {{0, kAbsentBlock}};
  image.mask.pad_offsets = {{SecondBlock(GetParam()), 0}};
  const LoadedPicture picture = Load(image);
  EXPECT_EQ(picture.At(1, 1).red, Sample(0, 1, 1));
  EXPECT_EQ(picture.At(5, 1), (Rgb{0, 0, 0}));
}

TEST_P(MaskedOrder, FailingBlockEndsItsRunAndTheNextRunGoesOn) {
  // Four blocks in a column are one run; four in a row are four runs of one. The second block begins at the
  // very end of the data and reads too far.
  for (const bool one_run : {true, false}) {
    SCOPED_TRACE(one_run);
    ImageSpec image = Arranged(GetParam(), 3, one_run ? 1 : 4, one_run ? 4 : 1, 4, 3);
    image.irep = "MULTI";
    image.ic = "NM";
    image.mask.block_offsets = {{0, 0, 0, 0}};
    const auto end = static_cast<uint32_t>(image.pixels.size());
    image.mask.block_offsets = {{0, end, 0, 0}};
    const LoadedPicture picture = Load(image);
    EXPECT_EQ(picture.status, one_run ? ERR_FILE_READ : SUCCESS);
    ExpectReference(image);
    if (one_run) continue;
    EXPECT_EQ(picture.At(4, 1), (Rgb{0, 0, 0}));
    EXPECT_NE(picture.At(8, 1), (Rgb{0, 0, 0}));
  }
}

// ---- What each order has of its own ----

TEST_F(Interleave, PixelOrderRepeatsTheRowBeforeInTheLastRowOfABlock) {
  const LoadedPicture picture = Load(RgbImage(1, 2, 'P', {1, 2, 3, 4, 5, 6}));
  EXPECT_EQ(picture.At(0, 0), (Rgb{1, 2, 3}));
  EXPECT_EQ(picture.At(0, 1), (Rgb{1, 2, 3}));
}

TEST_F(Interleave, PixelOrderInBlocksOfOneRowReadsNothing) {
  const LoadedPicture picture = Load(RgbImage(2, 1, 'P', {1, 2, 3, 4, 5, 6}));
  EXPECT_EQ(picture.status, SUCCESS);
  EXPECT_EQ(picture.At(0, 0), (Rgb{0, 0, 0}));
  EXPECT_EQ(picture.At(1, 0), (Rgb{0, 0, 0}));
  // Not even the data have to be there.
  EXPECT_EQ(Load(RgbImage(2, 1, 'P', {})).status, SUCCESS);
}

TEST_F(Interleave, PixelOrderNeedsNoByteBehindTheLastRow) {
  EXPECT_EQ(Load(RgbImage(3, 3, 'P', Pattern(27))).status, SUCCESS);
  // The row before the last is read shifted by up to two bytes; of the last row no more is needed.
  EXPECT_EQ(Load(RgbImage(3, 3, 'P', Pattern(20))).status, SUCCESS);
  EXPECT_EQ(Load(RgbImage(3, 3, 'P', Pattern(19))).status, ERR_FILE_READ);
}

TEST_F(Interleave, PixelOrderNeedsNoMoreThanItsLastChosenBand) {
  // Five bands in three rows of three: the last row read ends at byte 30, shifted by the highest band chosen.
  const std::vector<std::pair<std::vector<std::string>, size_t>> cases = {
      {{"M ", "  ", "  ", "  ", "  "}, 30},
      {{"  ", "  ", "  ", "  ", "M "}, 34},
      {{"R ", "G ", "  ", "B ", "  "}, 33}};
  for (const auto& [roles, needed] : cases) {
    SCOPED_TRACE(needed);
    ImageSpec image = RgbImage(3, 3, 'P', Pattern(needed));
    image.Roles(roles);
    EXPECT_EQ(Load(image).status, SUCCESS);
    ExpectReference(image);
    image.pixels.pop_back();
    EXPECT_EQ(Load(image).status, ERR_FILE_READ);
  }
}

TEST_F(Interleave, BlockOrderOfFourBandsCountsTheBitmapsBitsUnlessMulti) {
  ImageSpec image = Arranged('B', 4, 2, 1, 4, 2);
  const LoadedPicture multi = Load(image);
  EXPECT_EQ(multi.At(4, 0), (Rgb{Sample(0, 4, 0), Sample(1, 4, 0), Sample(2, 4, 0)}));
  // As RGB the second block is misplaced by one plane: it begins with the fourth band of the first.
  image.irep = "RGB";
  const LoadedPicture rgb = Load(image);
  EXPECT_EQ(rgb.At(0, 0), multi.At(0, 0));
  EXPECT_EQ(rgb.At(4, 0), (Rgb{Sample(3, 0, 0), Sample(0, 4, 0), Sample(1, 4, 0)}));
}

TEST_F(Interleave, BlockOrderPutsAllChannelsOnTheChosenBand) {
  ImageSpec image = Arranged('B', 3, 1, 1, 4, 2);
  image.Roles({"  ", "M ", "  "});
  EXPECT_EQ(Load(image).At(2, 1), (Rgb{Sample(1, 2, 1), Sample(1, 2, 1), Sample(1, 2, 1)}));
}

TEST_F(Interleave, RowOrderCountsThePaddedLinesOfItsTile) {
  // Three pixels take nine bytes in the file and twelve in the tile: the second block is looked for 6 bytes
  // late.
  ImageSpec image = RgbImage(1, 1, 'R', Pattern(200));
  image.Blocks(2, 1, 3, 2);
  const Bytes data = Pattern(200);
  const LoadedPicture picture = Load(image);
  EXPECT_EQ(picture.At(0, 0), (Rgb{data[0], data[3], data[6]}));
  EXPECT_EQ(picture.At(3, 0), (Rgb{data[24], data[27], data[30]}));
}

TEST_F(Interleave, RowOrderOfMultiCountsItsBands) {
  ImageSpec image = RgbImage(1, 1, 'R', Pattern(200));
  image.irep = "MULTI";
  image.Blocks(2, 1, 3, 2);
  const Bytes data = Pattern(200);
  EXPECT_EQ(Load(image).At(3, 0), (Rgb{data[18], data[21], data[24]}));
}

TEST_F(Interleave, RowOrderOfMultiLeavesOutTheDataOffsetWithoutMasks) {
  // The table of ten bytes is taken for pixels.
  ImageSpec image = RgbImage(2, 1, 'R', {1, 2, 3, 4, 5, 6});
  image.irep = "MULTI";
  image.ic = "NM";
  const LoadedPicture picture = Load(image);
  EXPECT_EQ(picture.At(0, 0), (Rgb{0, 0, 0}));
  EXPECT_EQ(picture.At(1, 0), (Rgb{0, 10, 0}));  // IMDATOFF 10 stands in the fourth byte
}

TEST_F(Interleave, RowOrderOfMultiWithAMaskCountsTheTileFromTheDataOffset) {
  ImageSpec image = RgbImage(1, 1, 'R', Pattern(200));
  image.irep = "MULTI";
  image.Blocks(2, 1, 3, 2);
  image.ic = "NM";
  image.mask.pad_offsets = {{5, 5}};
  const Bytes data = Pattern(200);
  EXPECT_EQ(Load(image).At(3, 0), (Rgb{data[24], data[27], data[30]}));
}

TEST_F(Interleave, RowOrderIgnoresItsBlockMask) {
  // Absent blocks are read from where they would have been.
  ImageSpec image = RgbImage(1, 1, 'R', Pattern(200));
  image.Blocks(2, 1, 4, 2);
  image.ic = "NM";
  image.mask.block_offsets = {{kAbsentBlock, kAbsentBlock}};
  const Bytes data = Pattern(200);
  const LoadedPicture picture = Load(image);
  EXPECT_EQ(picture.At(0, 0), (Rgb{data[0], data[4], data[8]}));
  EXPECT_EQ(picture.At(4, 0), (Rgb{data[24], data[28], data[32]}));
}

TEST_F(Interleave, RowOrderStopsAtAFailingBlock) {
  ImageSpec image = RgbImage(1, 1, 'R', Pattern(24 * 3));
  image.Blocks(4, 1, 4, 2);
  EXPECT_EQ(Load(image).status, ERR_FILE_READ);
}

TEST_F(Interleave, SequentialOrderWithAllMaskEntriesPresentStepsOverTheWholePlane) {
  ImageSpec image = Arranged('S', 3, 3, 2, 4, 3);
  image.ic = "NM";
  image.mask.block_offsets = {{0, 12, 24, 36, 48, 60}};
  const LoadedPicture picture = Load(image);
  EXPECT_EQ(picture.At(9, 4), (Rgb{Sample(0, 9, 4), Sample(1, 9, 4), Sample(2, 9, 4)}));
  ExpectReference(image);
}

TEST_F(Interleave, SequentialOrderWithPresentBlocksInOneRunCountsThatRunAlone) {
  // A column of four blocks is one run of the mask. Two are present: a band is two blocks long.
  ImageSpec image = Arranged('S', 3, 1, 2, 4, 3);
  image.Blocks(1, 4, 4, 3);
  image.ic = "NM";
  image.mask.block_offsets = {{kAbsentBlock, 0, 12, kAbsentBlock}};
  const LoadedPicture picture = Load(image);
  EXPECT_EQ(picture.At(0, 0), (Rgb{0, 0, 0}));
  for (uint32_t y = 3; y < 9; ++y) {
    EXPECT_EQ(picture.At(1, y), (Rgb{Sample(0, 1, y - 3), Sample(1, 1, y - 3), Sample(2, 1, y - 3)})) << y;
  }
}

TEST_F(Interleave, SequentialOrderCountsFromTheFirstPresentBlockToTheLast) {
  // Three across and two down: the mask is walked in runs of two. Blocks 1 (run 0, place 1) and 5 (run 2,
  // place 1) give one place and three runs: three blocks to a band.
  ImageSpec image = GreyImage(1, 1, Pattern(600));
  image.irep = "MULTI";
  image.Roles({"  ", "  ", "  "}).Mode('S').Blocks(3, 2, 4, 3);
  image.ic = "NM";
  image.mask.block_offsets = {{kAbsentBlock, 0, kAbsentBlock, kAbsentBlock, kAbsentBlock, 12}};
  const Bytes data = Pattern(600);
  EXPECT_EQ(Load(image).At(4, 0), (Rgb{data[0], data[36], data[72]}));
  ExpectReference(image);
}

TEST_F(Interleave, FourBitSamplesOverlapInTheirTile) {
  // Each pixel puts three bytes and moves on by one: the bitmap has 12 bits.
  for (const char mode : {'B', 'P'}) {
    SCOPED_TRACE(mode);
    ImageSpec image = RgbImage(1, 1, mode, Pattern(200));
    image.nbpp = image.abpp = 4;
    image.Blocks(2, 1, 4, 3);
    ExpectReference(image, 1);
  }
}

TEST_F(Interleave, SixteenBitSamplesOfSeveralBandsAreRefusedAtOnce) {
  ImageSpec image = RgbImage(1, 1, 'B', Pattern(6));
  image.nbpp = image.abpp = 16;
  EXPECT_EQ(Load(image).status, ERR_UNSUPPORTED_BPP);
}

}  // namespace
}  // namespace tavi_test

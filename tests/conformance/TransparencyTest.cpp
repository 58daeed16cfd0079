// Pixels of the pad colour are left out when an image has a pad code.
#include "ConformanceTest.h"

namespace tavi_test {
namespace {

class Transparency : public ConformanceTest {
 protected:
  // The image over a background of (1 2 3).
  LoadedPicture OnBackground(const ImageSpec& image) {
    NtfBuilder file{image};
    file.background = {1, 2, 3};
    return Load(file);
  }

  static ImageSpec Padded(ImageSpec image, Bytes code) {
    image.ic = "NM";
    image.mask.pad_code = std::move(code);
    return image;
  }
};

constexpr Rgb kBackground = {1, 2, 3};

TEST_F(Transparency, PixelsOfThePadCodeAreLeftOut) {
  const LoadedPicture picture = OnBackground(Padded(GreyImage(3, 1, {7, 200, 7}), {7}));
  EXPECT_EQ(picture.At(0, 0), kBackground);
  EXPECT_EQ(picture.At(1, 0), (Rgb{200, 200, 200}));
  EXPECT_EQ(picture.At(2, 0), kBackground);
}

TEST_F(Transparency, WithoutACodeEveryPixelIsPainted) {
  const LoadedPicture picture = OnBackground(Padded(GreyImage(2, 1, {0, 7}), {}));
  EXPECT_EQ(picture.At(0, 0), (Rgb{0, 0, 0}));
  EXPECT_EQ(picture.At(1, 0), (Rgb{7, 7, 7}));
}

TEST_F(Transparency, ColourOfTheEntryDecidesNotItsIndex) {
  // Entries 7 and 9 share a colour.
  ImageSpec image = Padded(GreyImage(3, 1, {7, 9, 8}), {7});
  Bytes table(256, 50);
  table[7] = table[9] = 120;
  image.bands[0].luts = {table};
  const LoadedPicture picture = OnBackground(image);
  EXPECT_EQ(picture.At(0, 0), kBackground);
  EXPECT_EQ(picture.At(1, 0), kBackground);
  EXPECT_EQ(picture.At(2, 0), (Rgb{50, 50, 50}));
}

TEST_F(Transparency, ColourPalette) {
  ImageSpec image = Padded(GreyImage(2, 1, {4, 5}), {5});
  Bytes red(256, 0);
  Bytes green(256, 0);
  Bytes blue(256, 0);
  red[4] = green[4] = blue[5] = 90;
  image.bands[0].luts = {red, green, blue};
  const LoadedPicture picture = OnBackground(image);
  EXPECT_EQ(picture.At(0, 0), (Rgb{90, 90, 0}));
  EXPECT_EQ(picture.At(1, 0), kBackground);
}

TEST_F(Transparency, OnlyTheFirstByteOfTheCodeCounts) {
  const LoadedPicture picture = OnBackground(Padded(GreyImage(2, 1, {7, 8}), {7, 8}));
  EXPECT_EQ(picture.At(0, 0), kBackground);
  EXPECT_EQ(picture.At(1, 0), (Rgb{8, 8, 8}));
}

TEST_F(Transparency, CodeShorterThanAByte) {
  ImageSpec image = Padded(GreyImage(2, 1, {1, 3}), {1});
  image.mask.tpxcdlnth = 1;
  const LoadedPicture picture = OnBackground(image);
  EXPECT_EQ(picture.At(0, 0), kBackground);
  EXPECT_EQ(picture.At(1, 0), (Rgb{3, 3, 3}));
}

TEST_F(Transparency, ColourImagesLeaveOutBlackWhateverTheCodeSays) {
  ImageSpec image = Padded(RgbImage(3, 1, 'S', {0, 9, 0, 0, 9, 0, 0, 9, 1}), {9});
  const LoadedPicture picture = OnBackground(image);
  EXPECT_EQ(picture.At(0, 0), kBackground);
  EXPECT_EQ(picture.At(1, 0), (Rgb{9, 9, 9}));
  EXPECT_EQ(picture.At(2, 0), (Rgb{0, 0, 1}));
}

TEST_F(Transparency, DeepGreyLeavesOutBlack) {
  // A slope: only its first sample is black.
  ImageSpec image = DeepImage(16, 16, 16, 16, {});
  for (uint32_t i = 0; i < 256; ++i) image.pixels.insert(image.pixels.end(), 2, static_cast<uint8_t>(i));
  const LoadedPicture picture = OnBackground(Padded(image, {200}));
  EXPECT_EQ(picture.At(0, 0), kBackground);
  EXPECT_EQ(picture.At(1, 0), (Rgb{1, 1, 1}));
  EXPECT_EQ(picture.At(8, 12), (Rgb{200, 200, 200}));
}

TEST_F(Transparency, BilevelPadCode) {
  const LoadedPicture picture = OnBackground(Padded(BilevelImage(2, 1, {0x80}), {1}));
  EXPECT_EQ(picture.At(0, 0), kBackground);
  EXPECT_EQ(picture.At(1, 0), (Rgb{0, 0, 0}));
}

TEST_F(Transparency, AbsentBlocksAreLeftOutWhenTheirColourIsThePadColour) {
  ImageSpec image = Padded(GreyImage(1, 1, {20, 21}), {0});
  image.Blocks(2, 1, 2, 1);
  image.mask.block_offsets = {{kAbsentBlock, 0}};
  const LoadedPicture picture = OnBackground(image);
  EXPECT_EQ(picture.At(0, 0), kBackground);
  EXPECT_EQ(picture.At(1, 0), kBackground);
  EXPECT_EQ(picture.At(2, 0), (Rgb{20, 20, 20}));
}

TEST_F(Transparency, AbsentBlocksHideWhatIsBeneathWithoutACode) {
  ImageSpec image = Padded(GreyImage(1, 1, {20, 21}), {});
  image.Blocks(2, 1, 2, 1);
  image.mask.block_offsets = {{kAbsentBlock, 0}};
  EXPECT_EQ(OnBackground(image).At(0, 0), (Rgb{0, 0, 0}));
}

TEST_F(Transparency, TheImageBeneathShowsThrough) {
  NtfBuilder file{GreyImage(2, 1, {100, 101}).Level(1), Padded(GreyImage(2, 1, {7, 200}), {7}).Level(2)};
  EXPECT_EQ(Greys(Load(file)), (std::vector<int>{100, 200}));
}

TEST_F(Transparency, PadMaskAloneMakesNothingTransparent) {
  ImageSpec image = Padded(GreyImage(2, 1, {0, 7}), {});
  image.mask.pad_offsets = {{0}};
  EXPECT_EQ(OnBackground(image).At(0, 0), (Rgb{0, 0, 0}));
}

}  // namespace
}  // namespace tavi_test

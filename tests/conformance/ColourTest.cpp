// Which bands feed which channel, look-up tables as palettes, and the bitmap that a segment becomes.
#include "ConformanceTest.h"

namespace tavi_test {
namespace {

class Colour : public ConformanceTest {
 protected:
  // The pixel of a one-pixel-wide image whose band k holds 10 x (k + 1), in the orders B and S.
  Rgb PixelOf(const std::vector<std::string>& roles, char mode = 'S', const std::string& irep = "MULTI") {
    ImageSpec image = GreyImage(1, 1);
    image.irep = irep;
    image.Roles(roles).Mode(mode);
    image.pixels.clear();
    for (size_t band = 0; band < roles.size(); ++band)
      image.pixels.push_back(static_cast<uint8_t>(10 * (band + 1)));
    return Load(image).At(0, 0);
  }
};

TEST_F(Colour, RedGreenAndBlueBandsGoToTheirChannels) {
  EXPECT_EQ(PixelOf({"R ", "G ", "B "}), (Rgb{10, 20, 30}));
  EXPECT_EQ(PixelOf({"B ", "G ", "R "}), (Rgb{30, 20, 10}));
  EXPECT_EQ(PixelOf({"  ", "G ", "  ", "B ", "R "}), (Rgb{50, 20, 40}));
}

TEST_F(Colour, TheFirstBandWithARoleCounts) {
  EXPECT_EQ(PixelOf({"R ", "R ", "G ", "G ", "B ", "B "}), (Rgb{10, 30, 50}));
}

TEST_F(Colour, OnlyTheFirstCharacterOfAColourRoleIsLookedAt) {
  EXPECT_EQ(PixelOf({"BX", "GY", "RZ"}), (Rgb{30, 20, 10}));
  EXPECT_EQ(PixelOf({" R", " G", " B"}), (Rgb{10, 20, 30}));
  EXPECT_EQ(PixelOf({"  ", "MX", "  "}), (Rgb{20, 20, 20}));
}

TEST_F(Colour, MissingBlueKeepsWhatTheOrderBeginsWith) {
  for (const char mode : {'R', 'S'}) EXPECT_EQ(PixelOf({"R ", "G ", "  "}, mode), (Rgb{10, 20, 30})) << mode;
  EXPECT_EQ(PixelOf({"R ", "G ", "  "}, 'B'), (Rgb{10, 20, 10}));
  EXPECT_EQ(PixelOf({"G ", "R ", "  "}, 'B'), (Rgb{20, 10, 10}));
}

TEST_F(Colour, OneColourRoleIsEnough) {
  EXPECT_EQ(PixelOf({"  ", "  ", "R "}, 'S'), (Rgb{30, 20, 30}));
  EXPECT_EQ(PixelOf({"  ", "  ", "R "}, 'B'), (Rgb{30, 10, 10}));
  EXPECT_EQ(PixelOf({"B ", "  ", "  "}, 'S'), (Rgb{10, 20, 10}));
}

TEST_F(Colour, LumaAndChromaGoToTheChannelsUnconverted) {
  EXPECT_EQ(PixelOf({"Y ", "Cb", "Cr"}, 'S', "YCbCr601"), (Rgb{10, 20, 30}));
  EXPECT_EQ(PixelOf({"Cr", "Y ", "Cb"}, 'S', "YCbCr601"), (Rgb{20, 30, 10}));
  EXPECT_EQ(PixelOf({"Cr", "Y ", "Cb"}, 'B', "YCbCr601"), (Rgb{20, 30, 10}));
}

TEST_F(Colour, MissingChromaIsTheLastBand) {
  EXPECT_EQ(PixelOf({"  ", "Y ", "  ", "  "}), (Rgb{20, 40, 40}));
  EXPECT_EQ(PixelOf({"Cb", "  ", "  ", "  "}), (Rgb{40, 10, 40}));
}

TEST_F(Colour, ColourRolesWinOverLuma) {
  EXPECT_EQ(PixelOf({"Y ", "  ", "  ", "R "}), (Rgb{40, 20, 30}));
  EXPECT_EQ(PixelOf({"Y ", "Cb", "Cr", "G "}), (Rgb{10, 40, 30}));
}

TEST_F(Colour, LookUpBandIsReplicatedAndTriedBeforeMono) {
  EXPECT_EQ(PixelOf({"  ", "LU", "  "}), (Rgb{20, 20, 20}));
  EXPECT_EQ(PixelOf({"M ", "LU", "  "}), (Rgb{20, 20, 20}));
  EXPECT_EQ(PixelOf({"  ", "L ", "M "}), (Rgb{30, 30, 30}));
}

TEST_F(Colour, MonoBandIsReplicated) {
  EXPECT_EQ(PixelOf({"  ", "  ", "M ", "M "}), (Rgb{30, 30, 30}));
  EXPECT_EQ(PixelOf({"M ", "  ", "  "}, 'B'), (Rgb{10, 10, 10}));
}

TEST_F(Colour, BandsWithoutAnyRoleAreTakenInOrder) {
  for (const char mode : {'B', 'R', 'S'})
    EXPECT_EQ(PixelOf({"  ", "  ", "  ", "  "}, mode), (Rgb{10, 20, 30})) << mode;
  EXPECT_EQ(PixelOf({"XX", "cb", "lu", "m "}), (Rgb{10, 20, 30}));
}

TEST_F(Colour, ChoiceIsTheSameWhenTheDocumentIsDrawnAgain) {
  ImageSpec image = GreyImage(1, 1);
  image.irep = "MULTI";
  image.Roles({"R ", "G ", "  "}).Mode('B');
  image.pixels = {10, 20, 30};
  const std::wstring path = Write(NtfBuilder{image});
  NitfHandle document = nullptr;
  ASSERT_EQ(Tavi_NITFCreate(&document, path.c_str()), SUCCESS);
  for (int i = 0; i < 3; ++i) {
    HostBitmap bitmap = {};
    ASSERT_EQ(Tavi_NtfRenderBitmap(&bitmap, document), SUCCESS);
    Bytes row(bitmap.bytes_per_line);
    HostGetBitmapRow(&bitmap, row.data(), 0, row.size());
    EXPECT_EQ(row, (Bytes{10, 20, 10, 0}));
    HostFreeBitmap(&bitmap);
  }
  EXPECT_EQ(Tavi_NITFDestroy(&document), SUCCESS);
}

// ---- Look-up tables ----

Bytes Counting(int factor, int offset) {
  Bytes table(256);
  for (int i = 0; i < 256; ++i) table[static_cast<size_t>(i)] = static_cast<uint8_t>(factor * i + offset);
  return table;
}

TEST_F(Colour, OneTableIsAGreyPalette) {
  ImageSpec image = GreyImage(3, 1, {0, 1, 255});
  image.irep = "RGB/LUT";
  image.bands[0].luts = {Counting(-1, 255)};
  EXPECT_EQ(Greys(Load(image)), (std::vector<int>{255, 254, 0}));
}

TEST_F(Colour, ThreeTablesAreRedGreenAndBlue) {
  ImageSpec image = GreyImage(2, 1, {3, 255});
  image.irep = "RGB/LUT";
  image.bands[0].luts = {Counting(1, 0), Counting(2, 0), Counting(-1, 255)};
  const LoadedPicture picture = Load(image);
  EXPECT_EQ(picture.At(0, 0), (Rgb{3, 6, 252}));
  EXPECT_EQ(picture.At(1, 0), (Rgb{255, 254, 0}));
}

TEST_F(Colour, PaletteColoursBlocksToo) {
  ImageSpec image = GreyImage(1, 1, Pattern(24));
  image.Blocks(2, 2, 3, 2);
  image.bands[0].luts = {Counting(1, 0), Counting(3, 7), Counting(-5, 1)};
  ExpectReference(image);
}

TEST_F(Colour, TheLastBandsTableWins) {
  // Two bands of two bits: a bitmap of six bits with a palette of 64 entries.
  ImageSpec image = DeepImage(4, 1, 2, 2, Pattern(16));
  image.irep = "MULTI";
  image.Roles({"LU", "LU"});
  Bytes second(64);
  for (size_t i = 0; i < second.size(); ++i) second[i] = static_cast<uint8_t>(200 - i);
  image.bands[0].luts = {Bytes(64, 1)};
  image.bands[1].luts = {second};
  const LoadedPicture picture = Load(image);
  EXPECT_EQ(picture.At(0, 0).red, 200 - (Pattern(1)[0] >> 2));
  ExpectReference(image);
}

TEST_F(Colour, TableOfALaterBandAloneGivesNoPaletteCount) {
  // The count is that of band 0, which has none: whatever the host makes of it, the picture is drawn.
  ImageSpec image = DeepImage(4, 1, 2, 2, Pattern(16));
  image.irep = "MULTI";
  image.Roles({"  ", "LU"});
  image.bands[1].luts = {Bytes(64, 9)};
  EXPECT_EQ(Load(image).status, SUCCESS);
}

TEST_F(Colour, TwoTablesAnnouncedAreThreeRead) {
  ImageSpec image = GreyImage(2, 1, {3, 255});
  image.bands[0].luts = {Counting(1, 0), Counting(2, 0), Counting(-1, 255)};
  image.fields["NLUTS[0]"] = "2";
  EXPECT_EQ(Load(image).At(0, 0), (Rgb{3, 6, 252}));
}

TEST_F(Colour, TableOnSixteenBitsIsHandedOver) {
  ImageSpec image = DeepImage(16, 16, 16, 16, {});
  for (uint32_t i = 0; i < 256; ++i) image.pixels.insert(image.pixels.end(), 2, static_cast<uint8_t>(i));
  image.bands[0].luts = {Counting(1, 0)};
  EXPECT_EQ(Load(image).status, SUCCESS);
}

TEST_F(Colour, TableOfMoreEntriesThanTheDepthHasColoursWithItsFirstOnes) {
  ImageSpec image = GreyImage(3, 1, {0, 1, 255});
  Bytes table(300, 5);
  table[1] = 60;
  table[255] = 77;
  image.bands[0].luts = {table};
  EXPECT_EQ(Greys(Load(image)), (std::vector<int>{5, 60, 77}));
}

TEST_F(Colour, ShortTableColoursWhatItHas) {
  ImageSpec image = GreyImage(3, 1, {0, 1, 2});
  image.bands[0].luts = {{50, 60, 70}};
  EXPECT_EQ(Greys(Load(image)), (std::vector<int>{50, 60, 70}));
}

TEST_F(Colour, EightBitGreyWithoutATableIsARampUpToWhite) {
  Bytes all(256);
  std::vector<int> ramp;
  for (int i = 0; i < 256; ++i) {
    all[static_cast<size_t>(i)] = static_cast<uint8_t>(i);
    ramp.push_back(i);
  }
  EXPECT_EQ(Greys(Load(GreyImage(16, 16, all))), ramp);
}

TEST_F(Colour, TwoBandsOfTwoBitsShowTheRampOfTwoBitsAndWhiteBehindIt) {
  ImageSpec image = DeepImage(4, 1, 2, 2, {0x00, 0x10, 0x83, 0x00});
  image.irep = "MULTI";
  image.Roles({"  ", "  "});
  // Six-bit pixels: 000000 000001 000010 000011.
  EXPECT_EQ(Greys(Load(image)), (std::vector<int>{0, 85, 170, 255}));
  image.pixels = {0xFF, 0x01, 0x04, 0x10};
  EXPECT_EQ(Greys(Load(image)), (std::vector<int>{255, 255, 255, 255}));
}

}  // namespace
}  // namespace tavi_test

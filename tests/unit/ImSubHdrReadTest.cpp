// Rules of reading an image subheader: codes, refusals, conditional fields, look-up tables, the data mask
// table.
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>

#include "ImageRead.h"

namespace {

using tavi::ImSubHdr;
using tavi_test::BandSpec;
using tavi_test::BuiltFile;
using tavi_test::Bytes;
using tavi_test::ImageSpec;
using tavi_test::NtfBuilder;
using tavi_test::Tre;
using namespace unit;

// ---- Codes ----

TEST_F(ImageReadTest, RepresentationIsMatchedByPrefixInOrder) {
  const std::pair<const char*, uint32_t> kCases[] = {
      {"MONO    ", 0}, {"MONOxyz ", 0}, {"RGB     ", 1}, {"RGBx    ", 1}, {"RGB/LU  ", 1}, {"RGB/LUT ", 2},
      {"MULTI   ", 3}, {"NODISPLY", 4}, {"NVECTOR ", 5}, {"POLAR   ", 6}, {"VPH     ", 7}, {"YCbCr601", 8}};
  for (const auto& [text, code] : kCases) {
    ImageRead read;
    read.record.Representation = 99;
    Read(read, With("IREP", text));
    EXPECT_EQ(read.status, SUCCESS);
    EXPECT_EQ(read.record.Representation, code) << text;
    EXPECT_STREQ(read.record.Text.IREP, text);
  }
}

TEST_F(ImageReadTest, UnknownRepresentationKeepsTheEarlierCode) {
  for (const char* text : {"        ", "mono    ", " MONO   ", "YCbCr60 ", "NODISPL ", "RG      "}) {
    ImageRead read;
    Read(read, With("IREP", text));
    EXPECT_EQ(read.status, SUCCESS);
    EXPECT_EQ(read.record.Representation, 1U) << text;
  }
}

TEST_F(ImageReadTest, CompressionIsMatchedWholeAndDecidesOnTheRate) {
  const char* const kCodes[] = {"NC", "NM", "C0", "C1", "C2", "C3", "C4", "C5", "C6", "C8",
                                "I1", "M0", "M1", "M2", "M3", "M4", "M5", "M6", "M8"};
  for (uint32_t code = 0; code < 19; ++code) {
    ImageSpec image = tavi_test::GreyImage(1, 1);
    image.ic = kCodes[code];
    image.comrat = "wxyz";
    ImageRead read;
    Read(read, image);
    EXPECT_EQ(read.status, SUCCESS) << kCodes[code];
    EXPECT_EQ(read.record.Compression, code);
    EXPECT_STREQ(read.record.Text.COMRAT, code <= 1 ? "    " : "wxyz");
    EXPECT_STREQ(read.record.Text.ILOC, "0000000000") << "what follows is in step";
  }
}

// An unknown code stays 0 and so has no COMRAT.
TEST_F(ImageReadTest, UnknownCompressionReadsAsUncompressed) {
  for (const char* text : {"C7", "xx", "nc", "  ", "N ", "I2"}) {
    ImageRead read;
    Read(read, With("IC", text));
    EXPECT_EQ(read.status, SUCCESS) << text;
    EXPECT_EQ(read.record.Compression, 0U);
    EXPECT_STREQ(read.record.Text.IC, text);
    EXPECT_STREQ(read.record.Text.ILOC, "0000000000");
  }
}

TEST_F(ImageReadTest, RateModesAreThreeTexts) {
  const std::pair<const char*, uint32_t> kCases[] = {{"1D  ", 0}, {"1Dxx", 0}, {"2DS ", 1},
                                                     {"2DSx", 1}, {"2DH ", 2}, {"2D  ", 3},
                                                     {"01.0", 3}, {" 1D ", 3}, {"1d  ", 3}};
  for (const auto& [text, mode] : kCases) {
    ImageSpec image = tavi_test::GreyImage(1, 1);
    image.ic = "C1";
    image.comrat = text;
    ImageRead read;
    Read(read, image);
    EXPECT_EQ(read.record.ComratMode, mode) << text;
  }
}

TEST_F(ImageReadTest, BandRolesLookAtOneOrTwoCharacters) {
  const std::pair<const char*, uint32_t> kCases[] = {{"LU", 1}, {"R ", 2}, {"RX", 2}, {"G ", 3}, {"GG", 3},
                                                     {"B ", 4}, {"M ", 5}, {"MM", 5}, {"Y ", 6}, {"Yx", 6},
                                                     {"Cb", 7}, {"Cr", 8}, {"  ", 0}, {"L ", 0}, {"LX", 0},
                                                     {"C ", 0}, {"CB", 0}, {" R", 0}, {"r ", 0}};
  ImageSpec image = tavi_test::GreyImage(1, 1);
  image.bands.assign(std::size(kCases), BandSpec());
  for (size_t i = 0; i < std::size(kCases); ++i) image.bands[i].irepband = kCases[i].first;
  ImageRead read;
  Read(read, image);
  ASSERT_EQ(read.status, SUCCESS);
  for (uint32_t i = 0; i < std::size(kCases); ++i) {
    EXPECT_EQ(tavi::BandRole(read.record, i), kCases[i].second) << kCases[i].first;
  }
}

TEST_F(ImageReadTest, JustificationIsLeftForLAlone) {
  for (const char c : {'L', 'R', ' ', 'l', '0'}) {
    ImageRead read;
    Read(read, With("PJUST", std::string(1, c)));
    EXPECT_EQ(read.record.RightJustified, c == 'L' ? 0U : 1U) << c;
  }
}

TEST_F(ImageReadTest, ModeIsOneOfFour) {
  for (uint32_t mode = 0; mode < 4; ++mode) {
    ImageRead read;
    Read(read, With("IMODE", {"BPRS"[mode]}));
    EXPECT_EQ(read.status, SUCCESS);
    EXPECT_EQ(read.record.Mode, mode);
  }
  for (const char c : std::string("ACbprsT |0\0", 11)) {
    EXPECT_EQ(StatusOf(With("IMODE", {c})), ERR_FILE_FORMAT) << int{c};
  }
}

// ---- Refusals ----

TEST_F(ImageReadTest, SignatureMustBeIm) {
  for (const char* text : {"im", "IN", "  ", "SY"}) {
    ImageRead read;
    Read(read, With("IM", text));
    EXPECT_EQ(read.status, ERR_FILE_FORMAT);
    EXPECT_EQ(read.record.SignatureSeen, 0U);
  }
}

TEST_F(ImageReadTest, ClassIsOneOfFive) {
  for (const char c : std::string("CRSTU")) EXPECT_EQ(StatusOf(With("ISCLAS", {c})), SUCCESS) << c;
  for (const char c : std::string("BDQVcrstu |0\x01\xD3\0", 15)) {
    EXPECT_EQ(StatusOf(With("ISCLAS", {c})), ERR_FILE_FORMAT) << int{c};
  }
}

TEST_F(ImageReadTest, PixelTypeIsDecidedByItsFirstCharacter) {
  const std::pair<const char*, uint32_t> kAccepted[] = {
      {"INT", 0}, {"I  ", 0}, {"Ixx", 0}, {"B  ", 1}, {"Bxx", 1}};
  for (const auto& [text, code] : kAccepted) {
    ImageRead read;
    Read(read, With("PVTYPE", text));
    EXPECT_EQ(read.status, SUCCESS);
    EXPECT_EQ(read.record.PixelType, code) << text;
  }
  EXPECT_TRUE(MessageTexts().empty());
}

TEST_F(ImageReadTest, OtherPixelTypesShowAMessage) {
  for (const char* text : {"SI ", "R  ", "C  ", "int", "   "}) {
    ImageRead read;
    Read(read, With("PVTYPE", text));
    EXPECT_EQ(read.status, ERR_UNSUPPORTED_PVTYPE) << text;
    EXPECT_EQ(read.record.Rows, 2) << "what was read before stays";
  }
  EXPECT_EQ(MessageTexts(), std::vector<std::string>(5, "Error: Unsupported PVTYPE"));
}

TEST_F(ImageReadTest, SixteenBitsInSeveralBandsShowAMessage) {
  const auto image = [](uint32_t bands, uint32_t bits, bool xbands) {
    ImageSpec made = tavi_test::GreyImage(1, 1);
    made.bands.assign(bands, BandSpec());
    made.nbpp = bits;
    made.use_xbands = xbands;
    return made;
  };
  EXPECT_EQ(StatusOf(image(1, 16, false)), SUCCESS);
  EXPECT_EQ(StatusOf(image(2, 8, false)), SUCCESS);
  EXPECT_EQ(StatusOf(image(2, 12, false)), SUCCESS);
  EXPECT_EQ(StatusOf(image(3, 32, false)), SUCCESS);
  EXPECT_TRUE(MessageTexts().empty());
  EXPECT_EQ(StatusOf(image(2, 16, false)), ERR_UNSUPPORTED_BPP);
  EXPECT_EQ(StatusOf(image(9, 16, false)), ERR_UNSUPPORTED_BPP);
  EXPECT_EQ(StatusOf(image(2, 16, true)), ERR_UNSUPPORTED_BPP);
  EXPECT_EQ(MessageTexts(), std::vector<std::string>(3, "Error: Unsupported BPP"));
}

TEST_F(ImageReadTest, EncryptionIsNotExamined) {
  ImageRead read;
  Read(read, With("ENCRYP", "1"));
  EXPECT_EQ(read.status, SUCCESS);
  EXPECT_STREQ(read.record.Text.ENCRYP, "1");
}

// ---- Bands ----

TEST_F(ImageReadTest, ExtraBandsStandInXbands) {
  ImageSpec image = tavi_test::GreyImage(1, 1);
  image.bands.assign(5, BandSpec());
  image.use_xbands = true;
  image.bands[4].irepband = "Cb";
  ImageRead read;
  Read(read, image);
  ASSERT_EQ(read.status, SUCCESS);
  EXPECT_EQ(read.record.BandField, 0U);
  EXPECT_EQ(read.record.BandCount, 5U);
  EXPECT_STREQ(read.record.Text.NBANDS, "0");
  EXPECT_STREQ(read.record.Text.XBANDS, "00005");
  EXPECT_EQ(tavi::EffectiveBandCount(read.record), 5U);
  EXPECT_EQ(tavi::BandRole(read.record, 4), 7U);
}

TEST_F(ImageReadTest, DigitOfBandsHasNoXbands) {
  ImageRead read;
  Read(read, tavi_test::RgbImage(1, 1, 'P', {1, 2, 3}));
  EXPECT_EQ(read.record.BandCount, 3U);
  EXPECT_STREQ(read.record.Text.XBANDS, "");
}

TEST_F(ImageReadTest, NoBandsAtAllMakeNoTables) {
  ImageSpec image = tavi_test::GreyImage(1, 1);
  image.bands.clear();
  image.use_xbands = true;
  ImageRead read;
  Read(read, image);
  ASSERT_EQ(read.status, SUCCESS);
  EXPECT_EQ(read.record.BandCount, 0U);
  EXPECT_FALSE(read.record.BandRoles.exists());
  EXPECT_FALSE(read.record.BandLutCounts.exists());
  EXPECT_EQ(read.record.BandSubcategories.size(), 0U);
}

TEST_F(ImageReadTest, BandsOf20AreOneToNine) {
  for (const char* text : {"0", " ", "x", "1", "-"}) {
    NtfBuilder builder({With("NBANDS", text)});
    builder.layout = tavi_test::Layout::kNitf20;
    ImageRead read;
    read.document.IsNitf20 = 1;
    Read(read, builder.Build());
    EXPECT_EQ(read.status, text[0] == '1' ? SUCCESS : ERR_FILE_FORMAT) << text;
  }
}

TEST_F(ImageReadTest, CountOfBandsThatTheFileCannotHoldIsAShortRead) {
  ImageSpec image = tavi_test::GreyImage(1, 1);
  image.use_xbands = true;
  for (const char* text : {"99999", "-0001", "01000"}) {
    image.fields["XBANDS"] = text;
    EXPECT_EQ(StatusOf(image), ERR_FILE_READ) << text;
  }
}

// ---- Location and magnification ----

TEST_F(ImageReadTest, LocationHalvesAreSigned) {
  struct {
    const char* text;
    int32_t row;
    int32_t column;
  } const kCases[] = {
      {"-001000020", -10, 20}, {"00010-0020", 10, -20}, {"0-01000020", 0, 20}, {"9999999999", 99999, 99999}};
  for (const auto& c : kCases) {
    ImageRead read;
    Read(read, With("ILOC", c.text));
    EXPECT_EQ(read.record.LocationRow, c.row) << c.text;
    EXPECT_EQ(read.record.LocationColumn, c.column) << c.text;
    EXPECT_STREQ(read.record.Text.ILOC, c.text) << "the text stays as read";
  }
}

TEST_F(ImageReadTest, MagnificationIsANumberOrAFraction) {
  const std::pair<const char*, double> kCases[] = {
      {"1.0 ", 1.0}, {"2.5 ", 2.5}, {".5  ", 0.5},      {"-1.5", -1.5}, {"16  ", 16},
      {"/2  ", 0.5}, {"/2.0", 0.5}, {"/64 ", 1 / 64.0}, {"abcd", 0},    {"    ", 0}};
  for (const auto& [text, value] : kCases) {
    ImageRead read;
    Read(read, With("IMAG", text));
    EXPECT_EQ(read.record.Magnification, value) << text;
  }
  for (const char* text : {"/0  ", "/xyz", "/   "}) {
    ImageRead read;
    Read(read, With("IMAG", text));
    EXPECT_EQ(read.status, SUCCESS);
    EXPECT_TRUE(std::isinf(read.record.Magnification)) << text;
  }
}

// ---- Extended data ----

TEST_F(ImageReadTest, UserDataLengthOfThreeKeepsAnEmptyBlock) {
  ImageSpec image = tavi_test::GreyImage(1, 1);
  image.udid = Bytes{};
  image.fields["UDOFL"] = "042";
  ImageRead read;
  Read(read, image);
  ASSERT_EQ(read.status, SUCCESS);
  EXPECT_STREQ(read.record.Text.UDIDL, "00003");
  EXPECT_STREQ(read.record.Text.UDOFL, "042");
  ASSERT_EQ(read.record.UserTre.size(), 1U);
  EXPECT_EQ(read.record.UserTre[0], 0);
  EXPECT_EQ(read.record.UserTreCount, 0U);
}

// The guard against three exists for this area alone.
TEST_F(ImageReadTest, ExtendedDataLengthOfThreeKeepsNoBlock) {
  ImageSpec image = tavi_test::GreyImage(1, 1);
  image.ixshd = Bytes{};
  image.fields["IXSOFL"] = "017";
  ImageRead read;
  Read(read, image);
  ASSERT_EQ(read.status, SUCCESS);
  EXPECT_STREQ(read.record.Text.IXSOFL, "017");
  EXPECT_FALSE(read.record.ExtendedTre.exists());
  EXPECT_EQ(read.record.ExtendedTreView, nullptr);
}

TEST_F(ImageReadTest, LengthOfZeroHasNoOverflowField) {
  ImageRead read;
  Read(read, tavi_test::GreyImage(1, 1));
  ASSERT_EQ(read.status, SUCCESS);
  EXPECT_STREQ(read.record.Text.UDIDL, "00000");
  EXPECT_STREQ(read.record.Text.UDOFL, "");
  EXPECT_STREQ(read.record.Text.IXSOFL, "");
  EXPECT_FALSE(read.record.UserTre.exists());
  EXPECT_FALSE(read.record.ExtendedTre.exists());
}

TEST_F(ImageReadTest, LengthBelowTheOverflowFieldIsRefused) {
  for (const char* text : {"00001", "00002", "-0003"}) {
    ImageSpec image = tavi_test::GreyImage(50, 1);
    image.udid = Bytes(20, 'x');
    image.fields["UDIDL"] = text;
    EXPECT_EQ(StatusOf(image), ERR_FILE_READ) << text;
    image = tavi_test::GreyImage(50, 1);
    image.ixshd = Bytes(20, 'x');
    image.fields["IXSHDL"] = text;
    EXPECT_EQ(StatusOf(image), ERR_FILE_READ) << text;
  }
}

// ---- Sentinels: without a streaming header each ends with ERR_INVALID_PARAMETER ----

TEST_F(ImageReadTest, SixSentinelsAndNoOthers) {
  struct {
    const char* field;
    const char* text;
    bool streams;
  } const kCases[] = {{"NROWS", "99999999", true}, {"NROWS", "99999998", false}, {"NROWS", "9999999 ", false},
                      {"NCOLS", "99999999", true}, {"NBPR", "9999", true},       {"NBPC", "9999", true},
                      {"NPPBH", "9999", true},     {"NPPBV", "9999", true},      {"NPPBV", "9998", false},
                      {"NPPBH", "999 ", false},    {"IDLVL", "999", false},      {"ABPP", "99", false},
                      {"UDOFL", "999", false},     {"IXSOFL", "999", false}};
  for (const auto& c : kCases) {
    ImageSpec image = With(c.field, c.text);
    image.udid = Tre("A", "");
    image.ixshd = Tre("B", "");
    EXPECT_EQ(StatusOf(image), c.streams ? ERR_INVALID_PARAMETER : SUCCESS) << c.field << " " << c.text;
  }
}

TEST_F(ImageReadTest, OpenFailsWithTheStreamingSearchsCode) {
  NitfFile document;
  const BuiltFile file = NtfBuilder({With("NROWS", "99999999")}).Build();
  EXPECT_EQ(tavi::OpenNitfFile(document, file.Write(directory()).c_str()), ERR_INVALID_PARAMETER);
}

}  // namespace

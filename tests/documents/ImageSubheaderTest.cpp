// What opening says of each value of an image subheader, and what of it shows in the picture.
#include "DocumentTest.h"

namespace tavi::documents {
namespace {

using tavi_test::BandSpec;
using tavi_test::BilevelImage;
using tavi_test::Bytes;
using tavi_test::DeepImage;
using tavi_test::GreyImage;
using tavi_test::ImageSpec;
using tavi_test::LoadedPicture;
using tavi_test::LoadFile;
using tavi_test::NtfBuilder;
using tavi_test::Rgb;
using tavi_test::RgbImage;
using tavi_test::Tre;

class ImageSubheader : public DocumentTest {
 protected:
  int32_t WithText(const std::string& field, const std::string& text) {
    ImageSpec image = GreyImage(3, 2);
    image.fields[field] = text;
    return OpenStatus(NtfBuilder{image});
  }

  // Opens and draws; the picture of a 2 x 1 image with the samples 40 and 50 tells that the fields stayed in
  // step.
  void ExpectInStep(ImageSpec image) {
    image.pixels = {40, 50};
    const LoadedPicture picture = LoadFile(Write(NtfBuilder{image}));
    ASSERT_EQ(picture.status, SUCCESS);
    ASSERT_EQ(picture.width, 2U);
    ASSERT_EQ(picture.height, 1U);
    EXPECT_EQ(picture.At(0, 0), (Rgb{40, 40, 40}));
    EXPECT_EQ(picture.At(1, 0), (Rgb{50, 50, 50}));
  }
};

TEST_F(ImageSubheader, TheSignatureMustBeThere) {
  EXPECT_EQ(WithText("IM", "IM"), SUCCESS);
  for (const char* text : {"SY", "im", "  ", "I "}) {
    EXPECT_EQ(WithText("IM", text), ERR_FILE_FORMAT) << text;
  }
}

TEST_F(ImageSubheader, FiveClassesAreAccepted) {
  const std::string accepted = "CRSTU";
  for (int value = 0; value < 256; ++value) {
    const std::string text(1, static_cast<char>(value));
    const bool known = accepted.find(text) != std::string::npos;
    EXPECT_EQ(WithText("ISCLAS", text), known ? SUCCESS : ERR_FILE_FORMAT) << "class " << value;
  }
}

TEST_F(ImageSubheader, PixelValueTypesAreKnownByTheirFirstLetter) {
  for (const char* text : {"INT", "B  ", "I  ", "BXX", "Int"}) {
    EXPECT_EQ(WithText("PVTYPE", text), SUCCESS) << text;
  }
  EXPECT_TRUE(NewMessages().empty());
  for (const char* text : {"SI ", "R  ", "C  ", "   ", "int", "XIN", " B "}) {
    EXPECT_EQ(WithText("PVTYPE", text), ERR_UNSUPPORTED_PVTYPE) << text;
    EXPECT_EQ(NewMessages(), std::vector<std::string>{"Error: Unsupported PVTYPE"}) << text;
  }
}

TEST_F(ImageSubheader, FourInterleaveModesAreAccepted) {
  for (const char mode : {'B', 'P', 'R', 'S'}) {
    EXPECT_EQ(WithText("IMODE", std::string(1, mode)), SUCCESS) << mode;
  }
  for (const char mode : {' ', 'b', 'A', '0', 'C', 'T', '\0', '\xFF'}) {
    EXPECT_EQ(WithText("IMODE", std::string(1, mode)), ERR_FILE_FORMAT) << mode;
  }
}

TEST_F(ImageSubheader, SixteenBitsAreForOneBandAlone) {
  EXPECT_EQ(OpenStatus(NtfBuilder{DeepImage(2, 2, 16, 16, Bytes(8))}), SUCCESS);
  EXPECT_TRUE(NewMessages().empty());
  for (const size_t bands : {size_t{2}, size_t{3}, size_t{12}}) {
    ImageSpec image = DeepImage(2, 2, 16, 16, Bytes(8 * bands));
    image.Roles(std::vector<std::string>(bands, "  "));
    EXPECT_EQ(OpenStatus(NtfBuilder{image}), ERR_UNSUPPORTED_BPP) << bands;
    EXPECT_EQ(NewMessages(), std::vector<std::string>{"Error: Unsupported BPP"});
  }
}

TEST_F(ImageSubheader, OtherDepthsOfSeveralBandsOpen) {
  for (const uint32_t bits : {1U, 8U, 12U, 15U, 17U, 32U, 64U}) {
    ImageSpec image = DeepImage(2, 2, bits, bits, Bytes(96));
    image.Roles({"R ", "G ", "B "});
    EXPECT_EQ(OpenStatus(NtfBuilder{image}), SUCCESS) << bits;
  }
}

TEST_F(ImageSubheader, SentinelSizesAskForAStreamingHeader) {
  for (const auto& [field, digits] : {std::pair<const char*, size_t>{"NROWS", 8},
                                      {"NCOLS", 8},
                                      {"NBPR", 4},
                                      {"NBPC", 4},
                                      {"NPPBH", 4},
                                      {"NPPBV", 4}}) {
    EXPECT_EQ(WithText(field, std::string(digits, '9')), ERR_INVALID_PARAMETER) << field;
    EXPECT_EQ(WithText(field, std::string(digits - 1, '9') + "8"), SUCCESS) << field;
  }
}

TEST_F(ImageSubheader, UnknownCodesKeepTheDefault) {
  ImageSpec image = GreyImage(2, 1);
  image.fields = {
      {"IREP", "WHATEVER"}, {"IREPBAND[0]", "??"}, {"ICAT", "UNKNOWN"}, {"PJUST", "?"}, {"ISYNC", "?"}};
  ExpectInStep(image);
}

// An unknown compression counts as none, so that no rate is read behind it.
TEST_F(ImageSubheader, AnUnknownCompressionCountsAsNone) {
  for (const char* text : {"XX", "nc", "C7", "  ", "M7"}) {
    ImageSpec image = GreyImage(2, 1);
    image.fields["IC"] = text;
    ExpectInStep(image);
  }
}

TEST_F(ImageSubheader, AnUnknownRateIsNoError) {
  ImageSpec image = GreyImage(2, 1);
  image.ic = "C3";
  image.comrat = "?.??";
  EXPECT_EQ(OpenStatus(NtfBuilder{image}), SUCCESS);
}

TEST_F(ImageSubheader, CornersFollowAnyCoordinateSystemButBlank) {
  for (const char* system : {"G", "U", "D", "N", "S", "?"}) {
    ImageSpec image = GreyImage(2, 1);
    image.igeolo = std::string(60, '1');
    image.fields["ICORDS"] = system;
    ExpectInStep(image);
  }
  ExpectInStep(GreyImage(2, 1));
}

TEST_F(ImageSubheader, CommentsAreSteppedOver) {
  for (size_t count = 0; count <= 9; ++count) {
    ImageSpec image = GreyImage(2, 1);
    image.comments.assign(count, "a comment");
    ExpectInStep(image);
  }
}

TEST_F(ImageSubheader, ManyBandsAreCountedInTheLongerField) {
  ImageSpec image = RgbImage(2, 1, 'B', {10, 11, 20, 21, 30, 31, 40, 41, 50, 51});
  image.Roles(std::vector<std::string>(5, "  "));
  image.irep = "MULTI";
  image.use_xbands = true;
  ASSERT_EQ(NtfBuilder{image}.Build().Text("image[0].NBANDS"), "0");
  const LoadedPicture picture = LoadFile(Write(NtfBuilder{image}));
  ASSERT_EQ(picture.status, SUCCESS);
  EXPECT_EQ(picture.At(0, 0), (Rgb{10, 20, 30}));
  EXPECT_EQ(picture.At(1, 0), (Rgb{11, 21, 31}));
}

TEST_F(ImageSubheader, NoBandAtAllOpens) {
  ImageSpec image = GreyImage(2, 1);
  image.bands.clear();
  image.use_xbands = true;
  ASSERT_EQ(NtfBuilder{image}.Build().Text("image[0].XBANDS"), "00000");
  EXPECT_EQ(Size(NtfBuilder{image}), (Extent{SUCCESS, 2, 1}));
}

TEST_F(ImageSubheader, EachBandMayHaveItsLookUpTables) {
  ImageSpec image = RgbImage(2, 1, 'B', {1, 2, 3, 4});
  image.Roles({"LU", "LU"});
  image.bands[0].luts = {Bytes(5, 1)};
  image.bands[1].luts = {Bytes(256, 2), Bytes(256, 3), Bytes(256, 4)};
  EXPECT_EQ(Size(NtfBuilder{image}), (Extent{SUCCESS, 2, 1}));
}

// One table is one, any other number is three.
TEST_F(ImageSubheader, TwoTablesAreReadAsThree) {
  ImageSpec image = GreyImage(2, 1);
  image.irep = "RGB/LUT";
  image.bands[0].irepband = "LU";
  image.bands[0].luts = {Bytes(4, 100), Bytes(4, 110), Bytes(4, 120)};
  image.pixels = {0, 3};
  for (const char* count : {"2", "3", "4", "9"}) {
    image.fields["NLUTS[0]"] = count;
    const LoadedPicture picture = LoadFile(Write(NtfBuilder{image}));
    ASSERT_EQ(picture.status, SUCCESS) << count;
    EXPECT_EQ(picture.At(0, 0), (Rgb{100, 110, 120})) << count;
    EXPECT_EQ(picture.At(1, 0), (Rgb{100, 110, 120})) << count;
  }
  image.bands[0].luts.resize(2);
  image.fields["NLUTS[0]"] = "2";
  EXPECT_EQ(OpenStatus(NtfBuilder{image}), ERR_FILE_FORMAT)
      << "the third table is taken from the fields behind";
}

TEST_F(ImageSubheader, AFourthTableIsTakenForTheFieldsBehind) {
  ImageSpec image = GreyImage(2, 1);
  image.bands[0].luts = {Bytes(4, 1), Bytes(4, 2), Bytes(4, 3), Bytes(4, 4)};
  EXPECT_EQ(OpenStatus(NtfBuilder{image}), ERR_FILE_FORMAT)
      << "its second byte stands in the place of the mode";
}

// A table count with a table size of 0 brings no table.
TEST_F(ImageSubheader, ATableOfNoEntriesIsNoTable) {
  ImageSpec image = GreyImage(2, 1);
  image.bands[0].luts = {Bytes()};
  ExpectInStep(image);
}

TEST_F(ImageSubheader, LocationHalvesTakeALeadingMinusAlone) {
  const struct {
    const char* text;
    Extent extent;
  } cases[] = {{"0000000000", {SUCCESS, 20, 30}}, {"-001000000", {SUCCESS, 20, 20}},
               {"00000-0010", {SUCCESS, 10, 30}}, {"0001200012", {SUCCESS, 32, 42}},
               {"0-00100000", {SUCCESS, 20, 30}}, {"0000000-05", {SUCCESS, 20, 30}},
               {"-  5   -5 ", {SUCCESS, 15, 30}}};
  for (const auto& [text, extent] : cases) {
    ImageSpec image = GreyImage(20, 30);
    image.fields["ILOC"] = text;
    EXPECT_EQ(Size(NtfBuilder{image}), extent) << text;
  }
}

TEST_F(ImageSubheader, AnyMagnificationOpens) {
  for (const char* text : {"1.0 ", "/2  ", "/2.0", "/0  ", "/   ", "abcd", "1e99", "-1.0", "nan ", "inf "}) {
    ImageSpec image = GreyImage(2, 1);
    image.imag = text;
    ExpectInStep(image);
  }
}

TEST_F(ImageSubheader, ExtendedLengthOfThreeIsAnEmptyBlock) {
  ImageSpec image = GreyImage(2, 1);
  image.udid = Bytes();
  image.ixshd = Bytes();
  ASSERT_EQ(NtfBuilder{image}.Build().Text("image[0].UDIDL"), "00003");
  ASSERT_EQ(NtfBuilder{image}.Build().Text("image[0].IXSHDL"), "00003");
  ExpectInStep(image);
}

TEST_F(ImageSubheader, ExtendedBlocksAreSteppedOver) {
  ImageSpec image = GreyImage(2, 1);
  image.udid = Tre("ABCDEF", "abc");
  image.ixshd = Tre("GHIJKL", "");
  ExpectInStep(image);
}

TEST_F(ImageSubheader, ExtendedLengthsBelowThreeEndTheOpen) {
  for (const char* field : {"UDIDL", "IXSHDL"}) {
    for (const char* text : {"00001", "00002", "-0001"}) {
      ImageSpec image = GreyImage(2, 1);
      image.udid = Bytes();
      image.ixshd = Bytes();
      image.fields[field] = text;
      EXPECT_EQ(OpenStatus(NtfBuilder{image}), ERR_FILE_READ) << field << " " << text;
    }
  }
}

// A file that ends with the subheader opens unless a mask table has to be read.
TEST_F(ImageSubheader, SixCompressionsBringAMaskTable) {
  const std::string with_table = "NM M0 M1 M3 M4 M5 ";
  for (const char* code : {"NC", "NM", "C0", "C1", "C2", "C3", "C4", "C5", "C6", "C8", "I1", "M0", "M1", "M2",
                           "M3", "M4", "M5", "M6", "M8"}) {
    ImageSpec image = GreyImage(2, 1);
    image.ic = code;
    tavi_test::BuiltFile file = NtfBuilder{image}.Build();
    file.Truncate("image[0].data", 0);
    const bool has_table = with_table.find(std::string(code) + " ") != std::string::npos;
    EXPECT_EQ(OpenStatus(file), has_table ? ERR_FILE_READ : SUCCESS) << code;
  }
}

TEST_F(ImageSubheader, TheWholeMaskTableIsRead) {
  ImageSpec image = GreyImage(2, 2, Bytes(16));
  image.Blocks(2, 2, 2, 2);
  image.ic = "NM";
  image.Roles({"  ", "  ", "  "});
  image.mask.block_offsets = {0, 4, 8, 12};
  image.mask.pad_offsets = {0, 4, 8, 12};
  image.mask.pad_code = {1, 2, 3};
  image.mask.tpxcdlnth = 17;  // rounds up to three bytes
  const tavi_test::BuiltFile file = NtfBuilder{image}.Build();
  const size_t table = 10 + 3 + 4 * 12 + 4 * 12;
  ASSERT_EQ(file.At("image[0].pixels").offset, file.At("image[0].data").offset + table);
  tavi_test::BuiltFile whole = file;
  EXPECT_EQ(OpenStatus(whole.Truncate("image[0].data", table)), SUCCESS);
  tavi_test::BuiltFile short_one = file;
  EXPECT_EQ(OpenStatus(short_one.Truncate("image[0].data", table - 1)), ERR_FILE_READ);
}

TEST_F(ImageSubheader, CompressionsThatAreNotDrawnAreRefusedWhenDrawing) {
  for (const char* code : {"C0", "C2", "M0", "M2"}) {
    ImageSpec image = GreyImage(2, 1);
    image.ic = code;
    const std::wstring path = Write(NtfBuilder{image});
    const Document document(path.c_str());
    EXPECT_EQ(document.open, SUCCESS) << code;
    const LoadedPicture picture = LoadFile(path);
    EXPECT_EQ(picture.status, ERR_NOT_SUPPORTED) << code;
    EXPECT_TRUE(picture.rows.empty()) << "no row is delivered";
  }
}

TEST_F(ImageSubheader, DataBeyondTheFileAreAShortReadWhenDrawing) {
  for (const char mode : {'B', 'P', 'R', 'S'}) {
    tavi_test::BuiltFile file = NtfBuilder{RgbImage(4, 4, mode, Bytes(48, 1))}.Build();
    file.Truncate("image[0].data", 20);
    const std::wstring path = Write(file);
    const Document document(path.c_str());
    EXPECT_EQ(document.open, SUCCESS);
    EXPECT_EQ(LoadFile(path).status, ERR_FILE_READ) << mode;
  }
}

TEST_F(ImageSubheader, TheSecondSubheaderIsCheckedAsWell) {
  for (const auto& [field, text, status] :
       {std::tuple<const char*, const char*, int32_t>{"IM", "XX", ERR_FILE_FORMAT},
        {"ISCLAS", "Q", ERR_FILE_FORMAT},
        {"IMODE", "Q", ERR_FILE_FORMAT},
        {"PVTYPE", "R", ERR_UNSUPPORTED_PVTYPE}}) {
    NtfBuilder file{GreyImage(2, 1), GreyImage(2, 1).Level(2)};
    file.images[1].fields[field] = text;
    EXPECT_EQ(OpenStatus(file), status) << field;
  }
}

}  // namespace
}  // namespace tavi::documents

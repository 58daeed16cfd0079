// What opening says of each value of the file header.
#include "DocumentTest.h"

namespace tavi::documents {
namespace {

using tavi_test::BuiltFile;
using tavi_test::Bytes;
using tavi_test::Digits;
using tavi_test::GreyImage;
using tavi_test::LoadFile;
using tavi_test::NtfBuilder;
using tavi_test::Rgb;
using tavi_test::Tre;

constexpr size_t kShortestHeader = 388;

class FileHeader : public DocumentTest {
 protected:
  // The status of a file without segments whose header has this text.
  int32_t WithText(const std::string& field, const std::string& text) {
    NtfBuilder file;
    file.header[field] = text;
    return OpenStatus(file);
  }
};

TEST_F(FileHeader, TheShortestFileIsAHeaderOf388Bytes) {
  const BuiltFile file = NtfBuilder().Build();
  ASSERT_EQ(file.bytes.size(), kShortestHeader);
  ASSERT_EQ(file.Text("UDHDL"), "00000");
  ASSERT_EQ(file.Text("XHDL"), "00000");
  EXPECT_EQ(OpenStatus(file), SUCCESS);
}

TEST_F(FileHeader, OneByteLessIsAShortRead) {
  BuiltFile file = NtfBuilder().Build();
  file.bytes.pop_back();
  EXPECT_EQ(OpenStatus(file), ERR_FILE_READ);
  file.bytes.clear();
  EXPECT_EQ(OpenStatus(file), ERR_FILE_READ);
}

TEST_F(FileHeader, BothProfilesAreAccepted) {
  EXPECT_EQ(WithText("FHDR", "NITF"), SUCCESS);
  EXPECT_EQ(WithText("FHDR", "NSIF"), SUCCESS);
}

TEST_F(FileHeader, OtherSignaturesAreRefused) {
  for (const char* text : {"NITG", "nitf", "NIT", "    ", "NSI0", "BM\x01\x02"}) {
    EXPECT_EQ(WithText("FHDR", text), ERR_FILE_FORMAT) << text;
  }
}

TEST_F(FileHeader, OneVersionIsAcceptedUnderEitherSignature) {
  for (const char* signature : {"NITF", "NSIF"}) {
    for (const char* version : {"02.00", "01.10", "01.00", "02.11", "2.10 ", "     ", "02,10"}) {
      NtfBuilder file;
      file.header["FHDR"] = signature;
      file.header["FVER"] = version;
      EXPECT_EQ(OpenStatus(file), ERR_NOT_NITF) << signature << version;
    }
  }
  EXPECT_TRUE(NewMessages().empty()) << "a version is refused without a message";
}

TEST_F(FileHeader, OtherComplexityLevelsAreRefusedWithAMessage) {
  for (const char* level : {"05", "01", "02", "04", "06", "07", "09", "3 ", " 3", "  ", "30"}) {
    EXPECT_EQ(WithText("CLEVEL", level), ERR_UNSUPPORTED_CLEVEL) << level;
    EXPECT_EQ(NewMessages(), std::vector<std::string>{"Error: Unsupported CLEVEL"}) << level;
  }
}

TEST_F(FileHeader, SignatureVersionAndLevelAreTestedInThatOrder) {
  NtfBuilder file;
  file.header = {{"FHDR", "XXXX"}, {"FVER", "02.00"}, {"CLEVEL", "05"}, {"FSCLAS", "Q"}};
  EXPECT_EQ(OpenStatus(file), ERR_FILE_FORMAT);
  file.header.erase("FHDR");
  EXPECT_EQ(OpenStatus(file), ERR_NOT_NITF);
  file.header.erase("FVER");
  EXPECT_EQ(OpenStatus(file), ERR_UNSUPPORTED_CLEVEL);
  file.header.erase("CLEVEL");
  EXPECT_EQ(OpenStatus(file), ERR_FILE_FORMAT);
}

TEST_F(FileHeader, FiveClassesAreAccepted) {
  const std::string accepted = "CRSTU";
  for (int value = 0; value < 256; ++value) {
    const std::string text(1, static_cast<char>(value));
    const bool known = accepted.find(text) != std::string::npos;
    EXPECT_EQ(WithText("FSCLAS", text), known ? SUCCESS : ERR_FILE_FORMAT) << "class " << value;
  }
}

TEST_F(FileHeader, ReservedSymbolCountMustBeZero) {
  EXPECT_EQ(WithText("NUMX", "000"), SUCCESS);
  for (const char* text : {"001", "   ", "0  ", "999", "00A"}) {
    EXPECT_EQ(WithText("NUMX", text), ERR_FILE_FORMAT) << text;
  }
}

TEST_F(FileHeader, TextsAreTakenAsTheyAre) {
  NtfBuilder file;
  const std::string odd = "\x01\xFF ~";
  for (const char* field : {"STYPE", "OSTAID", "FDT", "FTITLE", "FSCODE", "FSREL", "FSDCXM", "FSCLTX",
                            "FSCAUT", "FSCTLN", "FSCOP", "FSCPYS", "ONAME", "OPHONE"}) {
    file.header[field] = odd;
  }
  file.header["ENCRYP"] = "9";
  EXPECT_EQ(OpenStatus(file), SUCCESS);
}

TEST_F(FileHeader, TheFileLengthIsNotComparedWithTheFile) {
  for (const char* length : {"000000000000", "000000000001", "999999999998", "            ", "x"}) {
    EXPECT_EQ(WithText("FL", length), SUCCESS) << length;
  }
}

// Without segments nothing is read at HL, and an HL of all nines asks for no streaming header.
TEST_F(FileHeader, AHeaderLengthOfNinesIsNoSentinel) {
  EXPECT_EQ(WithText("HL", "999999"), SUCCESS);
}

TEST_F(FileHeader, AFileLengthOfNinesAsksForAStreamingHeader) {
  EXPECT_EQ(WithText("FL", "999999999999"), ERR_INVALID_PARAMETER);
}

// One segment of each kind, so that each length stands in the header.
NtfBuilder OneOfEach() {
  NtfBuilder file{GreyImage(2, 2)};
  file.graphics.resize(1);
  file.texts.resize(1);
  file.data_extensions.resize(1);
  file.reserved.resize(1);
  return file;
}

TEST_F(FileHeader, SentinelLengthsAskForAStreamingHeader) {
  ASSERT_EQ(OpenStatus(OneOfEach()), SUCCESS);
  for (const auto& [field, digits] : {std::pair<const char*, size_t>{"LISH[0]", 6},
                                      {"LI[0]", 10},
                                      {"LSSH[0]", 4},
                                      {"LTSH[0]", 4},
                                      {"LDSH[0]", 4},
                                      {"LD[0]", 9}}) {
    NtfBuilder file = OneOfEach();
    file.header[field] = std::string(digits, '9');
    EXPECT_EQ(OpenStatus(file), ERR_INVALID_PARAMETER) << field;
  }
}

// The last segment's data length moves nothing that is read at open.
TEST_F(FileHeader, OtherLengthsOfNinesAreNoSentinels) {
  for (const auto& [field, digits] : {std::pair<const char*, size_t>{"LRESH[0]", 4}, {"LRE[0]", 7}}) {
    NtfBuilder file = OneOfEach();
    file.header[field] = std::string(digits, '9');
    EXPECT_EQ(OpenStatus(file), SUCCESS) << field;
  }
  NtfBuilder graphic;
  graphic.graphics.resize(1);
  graphic.header["LS[0]"] = "999999";
  EXPECT_EQ(OpenStatus(graphic), SUCCESS);
  NtfBuilder text;
  text.texts.resize(1);
  text.header["LT[0]"] = "99999";
  EXPECT_EQ(OpenStatus(text), SUCCESS);
}

TEST_F(FileHeader, ExtendedLengthOfThreeIsAnEmptyBlock) {
  NtfBuilder file;
  file.udhd = Bytes();
  file.xhd = Bytes();
  ASSERT_EQ(file.Build().Text("UDHDL"), "00003");
  ASSERT_EQ(file.Build().bytes.size(), kShortestHeader + 6);
  EXPECT_EQ(OpenStatus(file), SUCCESS);
}

TEST_F(FileHeader, ExtendedBlocksAreSteppedOver) {
  NtfBuilder file{GreyImage(3, 2)};
  file.udhd = Tre("ABCDEF", "0123456789");
  file.xhd = Bytes(70, 0xFF);
  EXPECT_EQ(Size(file), (Extent{SUCCESS, 3, 2}));
}

// Lengths of 1 and 2 leave less than the overflow number's own three bytes.
TEST_F(FileHeader, ExtendedLengthsBelowThreeEndTheOpen) {
  for (const char* text : {"00001", "00002", "-0001", "   -5"}) {
    NtfBuilder file;
    file.udhd = Bytes();
    file.xhd = Bytes();
    file.header["UDHDL"] = text;
    EXPECT_EQ(OpenStatus(file), ERR_FILE_READ) << "UDHDL " << text;
    file.header = {{"XHDL", text}};
    EXPECT_EQ(OpenStatus(file), ERR_FILE_READ) << "XHDL " << text;
  }
}

TEST_F(FileHeader, AnExtendedBlockBeyondTheFileIsAShortRead) {
  for (const char* text : {"00005", "99999"}) {
    NtfBuilder file;
    file.xhd = Bytes(1);
    file.header["XHDL"] = text;
    EXPECT_EQ(OpenStatus(file), ERR_FILE_READ) << text;
  }
}

// White space and a sign may lead, and the first other character ends a number.
TEST_F(FileHeader, NumbersAreReadLeniently) {
  for (const char* text : {"  1", " +1", "1  ", "1x ", "01A"}) {
    NtfBuilder file{GreyImage(3, 2)};
    file.header["NUMI"] = text;
    EXPECT_EQ(Size(file), (Extent{SUCCESS, 3, 2})) << text;
  }
  for (const char* text : {"000", "   ", "abc", "-00", "x01"}) {
    NtfBuilder file;
    file.header["NUMT"] = text;
    EXPECT_EQ(OpenStatus(file), SUCCESS) << text;
  }
}

TEST_F(FileHeader, TheBackgroundFillsTheComposite) {
  NtfBuilder file{GreyImage(2, 2, {0, 0, 0, 0}).At(1, 1)};
  file.background = {10, 20, 30};
  const auto picture = LoadFile(Write(file));
  ASSERT_EQ(picture.status, SUCCESS);
  ASSERT_EQ(picture.width, 3U);
  ASSERT_EQ(picture.height, 3U);
  EXPECT_EQ(picture.At(0, 0), (Rgb{10, 20, 30}));
  EXPECT_EQ(picture.At(2, 0), (Rgb{10, 20, 30}));
  EXPECT_EQ(picture.At(1, 1), (Rgb{0, 0, 0}));
}

// The base of all positions is HL, not where the header was read to.
TEST_F(FileHeader, SegmentsAreFoundFromTheHeaderLength) {
  NtfBuilder file{GreyImage(2, 1, {7, 9})};
  const size_t header_length = file.Build().At("image[0].subheader").offset;
  file.header["HL"] = Digits(header_length + 11, 6);
  BuiltFile built = file.Build();
  EXPECT_EQ(OpenStatus(built), ERR_FILE_FORMAT) << "no image subheader stands there";
  built.bytes.insert(built.bytes.begin() + static_cast<std::ptrdiff_t>(header_length), 11, '#');
  const auto picture = LoadFile(Write(built));
  ASSERT_EQ(picture.status, SUCCESS);
  EXPECT_EQ(picture.At(0, 0), (Rgb{7, 7, 7}));
  EXPECT_EQ(picture.At(1, 0), (Rgb{9, 9, 9}));
}

// A subheader's length is not compared with its fields: the data stand behind the length.
TEST_F(FileHeader, DataAreFoundFromTheSubheaderLength) {
  NtfBuilder file{GreyImage(2, 1, {7, 9})};
  const BuiltFile plain = file.Build();
  file.header["LISH[0]"] = Digits(plain.At("image[0].subheader").length + 5, 6);
  BuiltFile built = file.Build();
  const auto data = static_cast<std::ptrdiff_t>(plain.At("image[0].data").offset);
  built.bytes.insert(built.bytes.begin() + data, 5, '#');
  const auto picture = LoadFile(Write(built));
  ASSERT_EQ(picture.status, SUCCESS);
  EXPECT_EQ(picture.At(0, 0), (Rgb{7, 7, 7}));
  EXPECT_EQ(picture.At(1, 0), (Rgb{9, 9, 9}));
}

TEST_F(FileHeader, MoreSegmentsThanTheFileHoldsAreAShortRead) {
  BuiltFile file = NtfBuilder().Build();
  for (const char* count : {"NUMI", "NUMS", "NUMT", "NUMDES", "NUMRES"}) {
    BuiltFile damaged = file;
    damaged.Patch(count, "999");
    EXPECT_EQ(OpenStatus(damaged), ERR_FILE_READ) << count;
  }
}

}  // namespace
}  // namespace tavi::documents

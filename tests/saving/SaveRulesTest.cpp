// Each rule of saving by hand: what is written otherwise than it was read, what is left out, what fails and how much
// is written by then.
#include <sys/resource.h>

#include <csignal>

#include "SavingTest.h"
#include "VqBytes.h"

namespace saving {
namespace {

using tavi_test::BuiltFile;
using tavi_test::GreyImage;
using tavi_test::ImageSpec;
using tavi_test::NtfBuilder;

class SaveRules : public SavingTest {
 protected:
  // The text of a field in the saved file, which has it where the source has it.
  std::string Field(const NtfBuilder& file, const std::string& name) const {
    const BuiltFile built = file.Build();
    const Bytes saved = Saved(built);
    const tavi_test::FieldPlace place = built.At(name);
    if (place.offset + place.length > saved.size()) return "beyond the end";
    const auto at = saved.begin() + static_cast<std::ptrdiff_t>(place.offset);
    return {at, at + static_cast<std::ptrdiff_t>(place.length)};
  }

  // A save that fails, with all of the source up to the place in the file that stays.
  void ExpectFailure(const BuiltFile& file, int32_t status, size_t kept) const {
    int32_t found = 0;
    Bytes saved = Saved(file, &found);
    EXPECT_EQ(found, status);
    ASSERT_GE(saved.size(), kept);
    saved.resize(kept);
    EXPECT_EQ(
        FirstDifference({file.bytes.begin(), file.bytes.begin() + static_cast<std::ptrdiff_t>(kept)}, saved),
        "");
  }
};

// Files grow no further than that while this lives.
class FileSizeLimit {
 public:
  explicit FileSizeLimit(rlim_t bytes) : handler_(std::signal(SIGXFSZ, SIG_IGN)) {
    getrlimit(RLIMIT_FSIZE, &before_);
    const rlimit limit = {bytes, before_.rlim_max};
    setrlimit(RLIMIT_FSIZE, &limit);
  }
  ~FileSizeLimit() {
    setrlimit(RLIMIT_FSIZE, &before_);
    std::signal(SIGXFSZ, handler_);
  }
  FileSizeLimit(const FileSizeLimit&) = delete;
  FileSizeLimit& operator=(const FileSizeLimit&) = delete;

 private:
  void (*handler_)(int);
  rlimit before_{};
};

NtfBuilder OneImage() {
  return NtfBuilder{GreyImage(3, 2, {1, 2, 3, 4, 5, 6})};
}

TEST_F(SaveRules, AnEmptyDocumentIsAHeaderAlone) {
  Document document;
  ASSERT_EQ(document.Save(OutputPath()), SUCCESS);
  const std::string blanks(167, ' ');
  const std::string expected = "NITF02.1003BF01" + std::string(10, '0') + "20050101010101" +
                               std::string(80, ' ') + "U" + blanks.substr(0, 166) + "00000" + "00000" + "0" +
                               std::string(3, '\0') + std::string(24, ' ') + std::string(18, ' ') +
                               "000000000388" + "000388" + "000" + "000" + "000" + "000" + "000" + "000" +
                               "00000" + "00000";
  EXPECT_EQ(expected.size(), 388U);
  EXPECT_EQ(FirstDifference({expected.begin(), expected.end()}, ReadFile(OutputPath())), "");
  Document again(OutputPath());
  ASSERT_EQ(again.open, SUCCESS);
  EXPECT_EQ(Tavi_NITFGetStatus(again.handle), TAVI_DOCUMENT_VALID | TAVI_DOCUMENT_EMPTY);
}

TEST_F(SaveRules, NullHandlesAndPaths) {
  EXPECT_EQ(Tavi_NITFSaveFile(nullptr, L"x"), ERR_NULL_HANDLE);
  EXPECT_EQ(Tavi_NITFSaveFile(nullptr, nullptr), ERR_NULL_HANDLE);
  Document document;
  EXPECT_EQ(Tavi_NITFSaveFile(document.handle, nullptr), ERR_FILE_WRITE);
  EXPECT_EQ(document.Save(directory() / "missing" / "file.ntf"), ERR_FILE_WRITE);
}

TEST_F(SaveRules, TheExemptionIsTheDatesFirstFour) {
  NtfBuilder file = OneImage();
  file.header = {{"FSDCDT", "20311224"}, {"FSDCXM", "X1X2"}};
  file.images[0].fields = {{"ISDCDT", "20311224"}, {"ISDCXM", "X1X2"}};
  EXPECT_EQ(Field(file, "FSDCXM"), "2031");
  EXPECT_EQ(Field(file, "FSDCDT"), "20311224");
  EXPECT_EQ(Field(file, "image[0].ISDCXM"), "X1X2");
}

TEST_F(SaveRules, ColourIsAlwaysColour) {
  NtfBuilder file;
  file.graphics.resize(1);
  file.graphics[0].fields = {{"SCOLOR", "M"}};
  EXPECT_EQ(Field(file, "graphic[0].SCOLOR"), "C");
}

TEST_F(SaveRules, MagnificationsHaveThreeCharacters) {
  const std::pair<const char*, const char*> cases[] = {{"1.0 ", "1.0 "}, {"/2  ", "0.5 "}, {"/4  ", "0.2 "},
                                                       {"10.0", "10. "}, {"0.25", "0.2 "}, {".5  ", "0.5 "},
                                                       {"/8  ", "0.1 "}, {"/2.0", "0.5 "}, {"/0  ", "inf "}};
  for (const auto& [read, written] : cases) {
    NtfBuilder file = OneImage();
    file.images[0].imag = read;
    EXPECT_EQ(Field(file, "image[0].IMAG"), written) << read;
  }
}

TEST_F(SaveRules, RatesOfOtherKindsAreNotKept) {
  const std::pair<const char*, const char*> cases[] = {{"1D  ", "1D  "}, {"2DS ", "2DS "}, {"2DH ", "2DH "},
                                                       {"02.3", "00.0"}, {"1Dxy", "1D  "}, {"00.0", "00.0"}};
  for (const auto& [read, written] : cases) {
    NtfBuilder file = OneImage();
    file.images[0].ic = "C1";
    file.images[0].comrat = read;
    EXPECT_EQ(Field(file, "image[0].COMRAT"), written) << read;
  }
}

TEST_F(SaveRules, UnknownCodesAreWrittenAsThoseOfANewImage) {
  NtfBuilder file = OneImage();
  file.images[0].irep = "1D";
  EXPECT_EQ(Field(file, "image[0].IREP"), "RGB     ");
  file.images[0].irep = "MONOCHRO";
  EXPECT_EQ(Field(file, "image[0].IREP"), "MONO    ");
  file = OneImage();
  file.images[0].bands[0].irepband = "RX";
  EXPECT_EQ(Field(file, "image[0].IREPBAND[0]"), "R ");
  file.images[0].bands[0].irepband = "Q1";
  EXPECT_EQ(Field(file, "image[0].IREPBAND[0]"), "  ");
  file = OneImage();
  file.images[0].ic = "C0";
  EXPECT_EQ(Field(file, "image[0].IC"), "NM");
  file = OneImage();
  file.images[0].pvtype = "Bxy";
  EXPECT_EQ(Field(file, "image[0].PVTYPE"), "B  ");
}

TEST_F(SaveRules, JustificationsAreRightUnlessTheyAreLeft) {
  for (const auto& [read, written] : {std::pair{' ', "R"}, {'L', "L"}, {'R', "R"}, {'x', "R"}, {'l', "R"}}) {
    NtfBuilder file = OneImage();
    file.images[0].pjust = read;
    EXPECT_EQ(Field(file, "image[0].PJUST"), written) << read;
  }
}

TEST_F(SaveRules, FileLengthsBeyondThirtyTwoBitsDoNotSurvive) {
  NtfBuilder file = OneImage();
  file.header["FL"] = "002147483648";
  EXPECT_EQ(Field(file, "FL"), "002147483647");
  file.header["FL"] = "          12";
  EXPECT_EQ(Field(file, "FL"), "000000000012");
}

TEST_F(SaveRules, ReservedExtensionsAreListedAndNotWritten) {
  NtfBuilder file = OneImage();
  file.reserved.resize(2);
  file.reserved[0] = {Bytes(5, 'r'), Bytes(12345, 's')};
  file.reserved[1] = {Bytes(6, 'r'), Bytes(7, 's')};
  const BuiltFile built = file.Build();
  const Bytes saved = Saved(built);
  EXPECT_EQ(saved.size(), built.bytes.size() - 5 - 12345 - 6 - 7);
  EXPECT_EQ(Field(file, "NUMRES"), "002");
  EXPECT_EQ(Field(file, "LRESH[0]"), "1234");
  EXPECT_EQ(Field(file, "LRE[0]"), "0012345");
  EXPECT_EQ(Field(file, "LRESH[1]"), "0007");
  EXPECT_EQ(Field(file, "FL"), tavi_test::Digits(built.bytes.size(), 12));
}

TEST_F(SaveRules, UserDefinedSubheadersAreTexts) {
  NtfBuilder file;
  file.data_extensions.resize(1);
  file.data_extensions[0].desshf = {'a', 'b', 0, 'd', 'e'};
  EXPECT_EQ(Field(file, "des[0].DESSHF"), "000ab");
  file.data_extensions[0].desshf = {0, 'b', 'c'};
  EXPECT_EQ(Field(file, "des[0].DESSHF"), "000");
}

// The thirteen characters of the comparison include a NUL: an identifier padded with blanks has the two fields.
TEST_F(SaveRules, ADataExtensionsOverflowFieldsFollowItsIdentifier) {
  NtfBuilder file;
  file.data_extensions.resize(1);
  file.data_extensions[0].data = {'d', 'a', 't', 'a'};
  EXPECT_EQ(Saved(file), file.Build().bytes);
  file.data_extensions[0].desid = std::string("TRE_OVERFLOW\0", 13);
  file.data_extensions[0].overflow_fields = false;
  Bytes expected = file.Build().bytes;
  // The identifier is cut at its NUL and moved to the right: it is another one now.
  const std::string moved = std::string(13, '0') + "TRE_OVERFLOW";
  std::copy(moved.begin(), moved.end(),
            expected.begin() + static_cast<std::ptrdiff_t>(file.Build().At("des[0].DESID").offset));
  EXPECT_EQ(FirstDifference(expected, Saved(file)), "");
}

TEST_F(SaveRules, NothingToCopyIsNoFailure) {
  NtfBuilder file = OneImage();
  file.images[0].pixels = {};
  file.graphics.resize(1);
  file.texts.resize(1);
  file.data_extensions.resize(1);
  EXPECT_EQ(FirstDifference(file.Build().bytes, Saved(file)), "");
}

TEST_F(SaveRules, BytesBehindTheLastSegmentAreDropped) {
  NtfBuilder file = OneImage();
  Bytes expected = file.Build().bytes;
  file.trailer = {'m', 'o', 'r', 'e'};
  const std::string length = tavi_test::Digits(expected.size() + 4, 12);
  BuiltFile built = file.Build();
  std::copy(length.begin(), length.end(),
            expected.begin() + static_cast<std::ptrdiff_t>(built.At("FL").offset));
  built.Patch("FL", length);
  EXPECT_EQ(FirstDifference(expected, Saved(built)), "");
}

// ---- Vector quantised data ----

ImageSpec Quantised(const std::string& ic, const Bytes& stream) {
  ImageSpec image = GreyImage(4, 4);
  image.Blocks(2, 2, 4, 4);
  image.ic = ic;
  image.comrat = "00.0";
  image.pixels = stream;
  return image;
}

const VqBytes kStream{.image_rows = 2,
                      .codes_per_row = 2,
                      .code_bits = 12,
                      .tables = 2,
                      .entries = 4,
                      .line = 2,
                      .codes = Bytes(24, 0x5A)};

TEST_F(SaveRules, QuantisedDataAreCopiedWhole) {
  const NtfBuilder file{Quantised("C4", kStream.Build())};
  EXPECT_EQ(FirstDifference(file.Build().bytes, Saved(file)), "");
}

TEST_F(SaveRules, BytesBehindTheCodesAreDroppedAndTheirLengthStays) {
  VqBytes stream = kStream;
  stream.tail = {1, 2, 3};
  const NtfBuilder file{Quantised("C4", stream.Build())};
  const BuiltFile built = file.Build();
  EXPECT_EQ(Saved(built).size(), built.bytes.size() - 3);
  EXPECT_EQ(Field(file, "LI[0]"), built.Text("LI[0]"));
}

TEST_F(SaveRules, AStreamWithoutTablesHasCodesAlone) {
  VqBytes stream = kStream;
  stream.tables = 0;
  const NtfBuilder file{Quantised("C4", stream.Build())};
  EXPECT_EQ(FirstDifference(file.Build().bytes, Saved(file)), "");
}

TEST_F(SaveRules, MaskEntriesComeOutReversedAndTheLengthIsCorrected) {
  VqBytes stream = kStream;
  stream.codes.resize(18);  // of three blocks
  stream.tail = {1, 2, 3};
  NtfBuilder file{Quantised("M4", stream.Build())};
  file.images[0].mask.block_offsets = {0x01020304, tavi_test::kAbsentBlock, 5, 6};
  const BuiltFile built = file.Build();
  Bytes expected = built.bytes;
  expected.resize(expected.size() - 3);
  const auto put = [&](const std::string& name, const Bytes& bytes) {
    std::copy(bytes.begin(), bytes.end(),
              expected.begin() + static_cast<std::ptrdiff_t>(built.At(name).offset));
  };
  put("image[0].BMR[0]", {4, 3, 2, 1});
  put("image[0].BMR[2]", {5, 0, 0, 0});
  put("image[0].BMR[3]", {6, 0, 0, 0});
  const std::string length = tavi_test::Digits(built.At("image[0].data").length - 3, 10);
  put("LI[0]", {length.begin(), length.end()});
  EXPECT_EQ(FirstDifference(expected, Saved(built)), "");
}

// Behind a masked quantised image the place of a raw copy is told from the end of the output. IMDATOFF counts a gap
// that the written mask table has not, so that the copy covers the end of the subheader by as much.
TEST_F(SaveRules, BehindAMaskedQuantisedImageAGapCoversTheSubheadersEnd) {
  VqBytes stream = kStream;
  stream.codes.resize(18);
  NtfBuilder file{Quantised("M4", stream.Build()), GreyImage(4, 2, Bytes(8, 3))};
  file.images[0].mask.block_offsets = {0, tavi_test::kAbsentBlock, 0, 0};
  file.images[1].ic = "NM";
  file.images[1].mask.pad_code = {1};
  file.images[1].mask.gap = {0xE0, 0xE1, 0xE2};
  const BuiltFile built = file.Build();
  const Bytes saved = Saved(built);
  EXPECT_EQ(saved.size(), built.bytes.size() - 3);
  const tavi_test::FieldPlace data = built.At("image[1].data");
  const Bytes copied(built.bytes.begin() + static_cast<std::ptrdiff_t>(data.offset), built.bytes.end());
  EXPECT_EQ(Bytes(saved.begin() + static_cast<std::ptrdiff_t>(data.offset - 3), saved.end()), copied);
}

TEST_F(SaveRules, StreamsWithoutRowsAreRefused) {
  for (const char* ic : {"C4", "M4"}) {
    for (const uint32_t rows : {0U, 5U, 0xFFFFFFFFU}) {  // none, and more than a block has
      VqBytes stream = kStream;
      stream.image_rows = rows;
      NtfBuilder file{Quantised(ic, stream.Build())};
      const BuiltFile built = file.Build();
      ExpectFailure(built, ERR_FILE_FORMAT, built.At("image[0].data").offset);
    }
  }
}

// Numbers that no file can hold end where the file ends.
TEST_F(SaveRules, StreamsThatPromiseTooMuchEndWithTheirFile) {
  VqBytes much = kStream;
  much.entries = 0xFFFFFFF0;
  much.line = 0;
  VqBytes wide = kStream;
  wide.codes_per_row = 0xFFFFFFFF;
  wide.code_bits = 255;
  VqBytes many = kStream;
  many.tables = 0xFFFF;
  many.entries = 0;
  Bytes cut = many.Build();
  cut.resize(40);
  for (const Bytes& stream : {much.Build(), wide.Build(), cut}) {
    const BuiltFile built = NtfBuilder{Quantised("C4", stream)}.Build();
    ExpectFailure(built, ERR_FILE_READ, built.At("image[0].data").offset);
  }
}

// Numbers of blocks that are no numbers: no product of them overflows, and no block is found.
TEST_F(SaveRules, NegativeNumbersOfBlocks) {
  VqBytes stream = kStream;
  for (const uint8_t code_bits : {uint8_t{12}, uint8_t{1}}) {
    stream.code_bits = code_bits;  // 1: a code row of no byte
    NtfBuilder file{Quantised("M4", stream.Build())};
    file.images[0].mask.pad_code = {1};
    file.images[0].fields = {{"NBPR", "-001"}, {"NBPC", "-999"}};
    const BuiltFile built = file.Build();
    const size_t codes = built.At("image[0].data").offset + built.At("image[0].data").length - 24;
    int32_t status = 0;
    const Bytes saved = Saved(built, &status);
    EXPECT_EQ(status, code_bits == 1 ? SUCCESS : ERR_FILE_READ);
    EXPECT_EQ(saved.size(), code_bits == 1 ? codes : built.bytes.size());
    Document document(SourcePath());
    EXPECT_LT(Render(document.handle).status, SUCCESS);
    // With masks the table's length itself is such a number.
    file.images[0].mask.block_offsets = {0};
    file.images[0].mask.exact_tables = true;
    WriteFile(SourcePath(), file.Build().bytes);
    Document masked(SourcePath());
    EXPECT_LT(masked.open, SUCCESS);
  }
}

// The mask table cannot be passed, as the file ends in it: what is read behind it tells.
TEST_F(SaveRules, AMaskTableThatCannotBePassed) {
  NtfBuilder file{Quantised("M4", kStream.Build())};
  file.images[0].mask.block_offsets = {0, 0, 0, 0};
  file.texts.resize(1);
  file.texts[0].data = Bytes(99999, 't');  // more than a host keeps of a file
  const BuiltFile built = file.Build();
  const size_t table = built.At("image[0].data").offset + 12;
  WriteFile(SourcePath(), built.bytes);
  Document document(SourcePath());
  ASSERT_EQ(document.open, SUCCESS);
  uint32_t size = 0;
  Bytes text(100000);
  ASSERT_EQ(Tavi_NITFGetTextSegment(document.handle, 0, text.data(), &size), SUCCESS);
  std::filesystem::resize_file(SourcePath(), table);
  EXPECT_EQ(document.Save(OutputPath()), ERR_FILE_READ);
}

// ---- Failures ----

TEST_F(SaveRules, ASourceThatEndsTooEarlyLeavesWhatStandsBeforeTheData) {
  NtfBuilder file = OneImage();
  file.graphics.resize(1);
  file.graphics[0].data = {'c', 'g', 'm'};
  file.texts.resize(1);
  file.texts[0].data = {'t', 'e', 'x', 't'};
  file.data_extensions.resize(1);
  file.data_extensions[0].data = {'d', 'a', 't', 'a'};
  BuiltFile built = file.Build();
  built.Truncate("des[0].data", 2);
  ExpectFailure(built, ERR_FILE_READ, built.At("des[0].data").offset);

  file.data_extensions.clear();
  built = file.Build();
  built.Truncate("text[0].data", 3);
  ExpectFailure(built, ERR_FILE_READ, built.At("text[0].data").offset);

  file.texts.clear();
  built = file.Build();
  built.Truncate("graphic[0].data", 1);
  ExpectFailure(built, ERR_FILE_READ, built.At("graphic[0].data").offset);

  file.graphics.clear();
  built = file.Build();
  built.Truncate("image[0].data", 5);
  ExpectFailure(built, ERR_FILE_READ, built.At("image[0].data").offset);
}

// The status is the first failure's, and a write that fails at the very end is one.
TEST_F(SaveRules, TheFirstFailureIsTold) {
  NtfBuilder file = OneImage();
  file.texts.resize(1);
  file.texts[0].data = Bytes(99999, 't');  // more than a host keeps of a file
  const BuiltFile built = file.Build();
  WriteFile(SourcePath(), built.bytes);
  Document document(SourcePath());
  ASSERT_EQ(document.open, SUCCESS);
  const auto save = [&] {
    const FileSizeLimit limit(built.At("image[0].subheader").offset + 10);
    return document.Save(OutputPath());
  };
  EXPECT_EQ(save(), ERR_FILE_WRITE);
  std::filesystem::resize_file(SourcePath(), built.At("text[0].data").offset);
  EXPECT_EQ(save(), ERR_FILE_READ);
}

// Lengths of the table are believed only as far as the file reaches.
TEST_F(SaveRules, LengthsThatTheFileCannotHoldEndTheSave) {
  NtfBuilder file = OneImage();
  file.header["LI[0]"] = "2147483647";
  BuiltFile built = file.Build();
  ExpectFailure(built, ERR_FILE_READ, built.At("image[0].data").offset);
  file = OneImage();
  file.data_extensions.resize(1);
  file.header["LD[0]"] = "999999998";
  built = file.Build();
  ExpectFailure(built, ERR_FILE_READ, built.At("des[0].data").offset);
}

TEST_F(SaveRules, AnInterruptedSaveLeavesTheDocumentAsItWas) {
  NtfBuilder file = OneImage();
  file.texts.resize(1);
  file.texts[0].data = Bytes(99999, 't');  // more than a host keeps of a file
  const BuiltFile built = file.Build();
  WriteFile(SourcePath(), built.bytes);
  Document document(SourcePath());
  std::filesystem::resize_file(SourcePath(), built.At("text[0].data").offset + 1);
  EXPECT_EQ(document.Save(OutputPath()), ERR_FILE_READ);
  WriteFile(SourcePath(), built.bytes);
  EXPECT_EQ(document.Save(OutputPath()), SUCCESS);
  EXPECT_EQ(FirstDifference(built.bytes, ReadFile(OutputPath())), "");
}

}  // namespace
}  // namespace saving

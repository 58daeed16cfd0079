// What the getter of the file header gives beside plain copies: texts that run on, fields that it leaves
// alone, and a document without a file.
#include <cstring>

#include "RecordsTest.h"

namespace tavi::records {
namespace {

using tavi_test::BuiltFile;
using tavi_test::GreyImage;
using tavi_test::NtfBuilder;

// The buffers of the security block, in order: each holds its field and blanks up to the next one. FSDWNG and
// FSDEVT are not in the file. The NUL that ends them all stands behind the five characters of FSCOP.
struct StoredField {
  const char* name;
  size_t buffer;
};
constexpr StoredField kSecurityBlock[] = {
    {"FSCLSY", 3}, {"FSCODE", 41}, {"FSCTLH", 41}, {"FSREL", 41},  {"FSDCTP", 3},  {"FSDCDT", 9},
    {"FSDCXM", 5}, {"FSDG", 2},    {"FSDGDT", 9},  {"FSCLTX", 44}, {"FSCATP", 2},  {"FSCAUT", 41},
    {"FSCRSN", 2}, {"FSSRDT", 9},  {"FSDWNG", 7},  {"FSDEVT", 41}, {"FSCTLN", 21}, {"FSCOP", 5},
};

// Everything from that field up to the end of FSCOP; without a file, blanks up to the end of FSCTLN.
std::string RunOnText(const std::string& from, const BuiltFile* file) {
  std::string text;
  bool inside = false;
  for (const StoredField& field : kSecurityBlock) {
    inside = inside || from == field.name;
    if (!inside || (file == nullptr && std::strcmp(field.name, "FSCOP") == 0)) {
      continue;
    }
    std::string stored = file != nullptr && file->places.contains(field.name) ? file->Text(field.name) : "";
    stored.resize(field.buffer, ' ');
    text += stored;
  }
  return text;
}

void ExpectRunOnTexts(const NitfHeaderInfo& record, const BuiltFile* file) {
  EXPECT_EQ(Text(record.FSCLSY), RunOnText("FSCLSY", file));
  EXPECT_EQ(Text(record.FSCODE), RunOnText("FSCODE", file));
  EXPECT_EQ(Text(record.FSCTLH), RunOnText("FSCTLH", file));
  EXPECT_EQ(Text(record.FSREL), RunOnText("FSREL", file));
  EXPECT_EQ(Text(record.FSDCTP), RunOnText("FSDCTP", file));
  EXPECT_EQ(Text(record.FSDCXM), RunOnText("FSDCXM", file));
  EXPECT_EQ(Text(record.FSDG), RunOnText("FSDG", file));
  EXPECT_EQ(Text(record.FSCLTX), RunOnText("FSCLTX", file));
  EXPECT_EQ(Text(record.FSCATP), RunOnText("FSCATP", file));
  EXPECT_EQ(Text(record.FSCAUT), RunOnText("FSCAUT", file));
  EXPECT_EQ(Text(record.FSCRSN), RunOnText("FSCRSN", file));
  EXPECT_EQ(Text(record.FSCTLN), RunOnText("FSCTLN", file));
}

class FileHeaderRecord : public RecordsTest {
 protected:
  // The record of a file that opens.
  void Fill(const NtfBuilder& file, Guarded<NitfHeaderInfo>& record) const {
    const Document document(Write(file));
    ASSERT_EQ(document.open, SUCCESS);
    ASSERT_EQ(Tavi_NITFGetNITFHeader(document.handle, record.get()), SUCCESS);
  }
};

TEST_F(FileHeaderRecord, ClassificationTextsRunOnUpToTheEndOfFscop) {
  const BuiltFile built = DistinctFile().Build();
  const Document document(Write(built));
  Guarded<NitfHeaderInfo> record;
  ASSERT_EQ(Tavi_NITFGetNITFHeader(document.handle, record.get()), SUCCESS);
  ExpectRunOnTexts(*record.get(), &built);
  EXPECT_EQ(Text(record->FSCTLN).size(), 21U + 5U);
  EXPECT_TRUE(Text(record->FSCTLN).ends_with("      00011"));
}

TEST_F(FileHeaderRecord, ClassificationTextsOfANewDocumentAreBlankUpToTheEndOfTheBlock) {
  const Document document(nullptr);
  Guarded<NitfHeaderInfo> record;
  ASSERT_EQ(Tavi_NITFGetNITFHeader(document.handle, record.get()), SUCCESS);
  ExpectRunOnTexts(*record.get(), nullptr);
  EXPECT_EQ(Text(record->FSCTLN), std::string(21, ' '));
}

// A NUL in the file ends a text that runs on, in whichever field it stands.
TEST_F(FileHeaderRecord, ANulInTheBlockEndsTheTextsBeforeIt) {
  NtfBuilder file;
  file.header["FSCAUT"] = std::string("au\0th", 5);
  Guarded<NitfHeaderInfo> record;
  Fill(file, record);
  EXPECT_EQ(Text(record->FSCAUT), "au");
  EXPECT_EQ(Text(record->FSCATP), "  au");
  EXPECT_EQ(Text(record->FSCRSN), RunOnText("FSCRSN", nullptr) + "00000");
}

TEST_F(FileHeaderRecord, ATextThatBeginsWithANulIsEmpty) {
  NtfBuilder file;
  file.header = {{"FTITLE", std::string(80, '\0')}, {"OSTAID", std::string("\0rest", 5)}};
  Guarded<NitfHeaderInfo> record;
  Fill(file, record);
  EXPECT_STREQ(record->FTITLE, "");
  EXPECT_STREQ(record->OSTAID, "");
}

TEST_F(FileHeaderRecord, FverIsTheNearestNumber) {
  Guarded<NitfHeaderInfo> record;
  Fill(NtfBuilder(), record);
  EXPECT_EQ(+record->FVER, 2.1F);
  uint32_t bits = 0;
  std::memcpy(&bits, &record.get()->FVER, sizeof bits);
  EXPECT_EQ(bits, 0x40066666U);
}

TEST_F(FileHeaderRecord, BothSignaturesComeBack) {
  NtfBuilder file;
  file.header["FHDR"] = "NSIF";
  Guarded<NitfHeaderInfo> record;
  Fill(file, record);
  EXPECT_STREQ(record->FHDR, "NSIF");
}

// A getter fills what is documented and nothing else: the rest of the record stays as its owner left it.
TEST_F(FileHeaderRecord, FieldsThatAreNotFilledStayAsTheyWere) {
  constexpr uint8_t kPoison = 0x5A;
  const Document document(Write(DistinctFile()));
  Guarded<NitfHeaderInfo> record;
  std::memset(record.get(), kPoison, sizeof(NitfHeaderInfo));
  ASSERT_EQ(Tavi_NITFGetNITFHeader(document.handle, record.get()), SUCCESS);

  const std::string untouched(64, static_cast<char>(kPoison));
#define EXPECT_UNTOUCHED(NAME)                                                                   \
  EXPECT_EQ(BytesOf(record.get(), offsetof(NitfHeaderInfo, NAME), sizeof(NitfHeaderInfo::NAME)), \
            untouched.substr(0, sizeof(NitfHeaderInfo::NAME)))                                   \
      << #NAME
  EXPECT_UNTOUCHED(NUMX);
  EXPECT_UNTOUCHED(NUMDES);
  EXPECT_UNTOUCHED(LDSH);
  EXPECT_UNTOUCHED(LD);
  EXPECT_UNTOUCHED(NUMRES);
  EXPECT_UNTOUCHED(LRESH);
  EXPECT_UNTOUCHED(LRE);
  EXPECT_UNTOUCHED(UDHDL);
  EXPECT_UNTOUCHED(UDHOFL);
  EXPECT_UNTOUCHED(UDHD);
  EXPECT_UNTOUCHED(XHDL);
  EXPECT_UNTOUCHED(XHDLOFL);
  EXPECT_UNTOUCHED(XHD);
  EXPECT_UNTOUCHED(FBKGC);
  EXPECT_UNTOUCHED(spare);
#undef EXPECT_UNTOUCHED

  // What the test left there is no memory.
  record->LDSH = record->LD = record->LRESH = record->LRE = nullptr;
  record->UDHD = record->XHD = nullptr;
}

TEST_F(FileHeaderRecord, ANewDocumentHasItsDefaults) {
  const Document document(nullptr);
  ASSERT_EQ(document.open, SUCCESS);
  Guarded<NitfHeaderInfo> record;
  ASSERT_EQ(Tavi_NITFGetNITFHeader(document.handle, record.get()), SUCCESS);
  EXPECT_STREQ(record->FHDR, "NITF");
  EXPECT_EQ(+record->CLEVEL, 3);
  EXPECT_STREQ(record->STYPE, "BF01");
  EXPECT_STREQ(record->OSTAID, "");
  EXPECT_EQ(Text(record->FTITLE), std::string(80, ' '));
  EXPECT_STREQ(record->FSCLAS, "U");
  EXPECT_EQ(Text(record->ONAME), std::string(27, ' '));
  EXPECT_EQ(Text(record->OPHONE), std::string(18, ' '));
  EXPECT_EQ(Chars(record->FDT), "20050101010101");
  EXPECT_EQ(Chars(record->FSDCDT), "        ");
  EXPECT_EQ(Chars(record->FSDGDT), "        ");
  EXPECT_EQ(Chars(record->FSSRDT), "        ");
  EXPECT_EQ(+record->FVER, 2.1F);
  for (const uint32_t number :
       {+record->FSCOP, +record->FSCPYS, +record->ENCRYP, +record->NUMI, +record->NUMS, +record->NUMT}) {
    EXPECT_EQ(number, 0U);
  }
}

TEST_F(FileHeaderRecord, ANewDocumentHasNoHeaderLengthAndTheLengthOfAnEmptyFile) {
  const Document document(nullptr);
  Guarded<NitfHeaderInfo> record;
  ASSERT_EQ(Tavi_NITFGetNITFHeader(document.handle, record.get()), SUCCESS);
  EXPECT_EQ(+record->HL, 0U);
  EXPECT_EQ(+record->FL, 388U);
}

TEST_F(FileHeaderRecord, ANewDocumentCountsNoSegments) {
  const Document document(nullptr);
  EXPECT_EQ(Tavi_NITFGetImageHeaderCount(document.handle), 0);
  EXPECT_EQ(Tavi_NITFGetGraphicHeaderCount(document.handle), 0);
  EXPECT_EQ(Tavi_NITFGetTextHeaderCount(document.handle), 0);
}

// The numbers go through a text and back into a signed number.
TEST_F(FileHeaderRecord, ALengthOfTwoGibibytesOrMoreDoesNotSurvive) {
  NtfBuilder file{GreyImage(2, 2)};
  for (const auto& [text, survives] : {std::pair("2147483647", true), std::pair("2147483648", false),
                                       std::pair("4294967295", false), std::pair("9999999998", false)}) {
    file.header["LI[0]"] = text;
    Guarded<NitfHeaderInfo> record;
    Fill(file, record);
    const bool equal = std::to_string(record->LI[0]) == text;
    EXPECT_EQ(equal, survives) << text << " came back as " << record->LI[0];
  }
}

// A negative length is one of that size.
TEST_F(FileHeaderRecord, ANegativeLengthDoesNotSurvive) {
  NtfBuilder file{GreyImage(2, 2)};
  file.header["LI[0]"] = "-000000001";
  Guarded<NitfHeaderInfo> record;
  Fill(file, record);
  EXPECT_NE(record->LI[0], 0xFFFFFFFFU);
}

// Numbers are what their text begins with.
TEST_F(FileHeaderRecord, NumbersAreWhatTheirTextsBeginWith) {
  NtfBuilder file;
  file.header = {{"FSCOP", "  12x"}, {"FSCPYS", "x0012"}, {"ENCRYP", " "}, {"FL", "000000000400"}};
  Guarded<NitfHeaderInfo> record;
  Fill(file, record);
  EXPECT_EQ(+record->FSCOP, 12U);
  EXPECT_EQ(+record->FSCPYS, 0U);
  EXPECT_EQ(+record->ENCRYP, 0U);
  EXPECT_EQ(+record->FL, 400U) << "as the file says, whatever its size";
}

}  // namespace
}  // namespace tavi::records

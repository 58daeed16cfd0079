// What the getter of image subheaders gives beside plain copies.
#include <cstring>

#include "RecordsTest.h"

namespace tavi::records {
namespace {

using tavi_test::Bytes;
using tavi_test::GreyImage;
using tavi_test::ImageSpec;
using tavi_test::NtfBuilder;

Bytes ToBytes(const std::string& text) {
  return {text.begin(), text.end()};
}

class ImageRecord : public RecordsTest {
 protected:
  // The record of a file with that image.
  void Fill(const ImageSpec& image, NitfImageHeaderInfo* record) const {
    const Document document(Write(NtfBuilder{image}));
    ASSERT_EQ(document.open, SUCCESS);
    ASSERT_EQ(Tavi_NITFGetImageHeader(document.handle, 0, record), SUCCESS);
  }
};

TEST_F(ImageRecord, NoCommentsLeaveTheListAlone) {
  Guarded<NitfImageHeaderInfo> record;
  Fill(GreyImage(2, 2), record.get());
  EXPECT_EQ(+record->NICOM, 0U);
  EXPECT_EQ(+record->ICOM, nullptr);
}

TEST_F(ImageRecord, NineCommentsComeBackInFullWidth) {
  ImageSpec image = GreyImage(2, 2);
  for (int i = 0; i < 9; ++i) {
    image.comments.push_back("comment " + std::to_string(i));
  }
  Guarded<NitfImageHeaderInfo> record;
  Fill(image, record.get());
  ASSERT_EQ(+record->NICOM, 9U);
  for (uint32_t i = 0; i < 9; ++i) {
    EXPECT_EQ(Text(record->ICOM[i]), "comment " + std::to_string(i) + std::string(71, ' '));
  }
}

TEST_F(ImageRecord, ACommentEndsAtItsFirstNul) {
  ImageSpec image = GreyImage(2, 2);
  image.comments = {std::string("cut\0here", 8), std::string(1, '\0'), std::string(80, 'w')};
  Guarded<NitfImageHeaderInfo> record;
  Fill(image, record.get());
  ASSERT_EQ(+record->NICOM, 3U);
  EXPECT_EQ(Text(record->ICOM[0]), "cut");
  EXPECT_EQ(Text(record->ICOM[1]), "");
  EXPECT_EQ(Text(record->ICOM[2]), std::string(80, 'w'));
}

// A row is stored first in the file and second in the record.
TEST_F(ImageRecord, TheFirstHalfOfTheLocationIsTheRow) {
  const struct {
    const char* text;
    int32_t row;
    int32_t column;
  } cases[] = {{"0001200034", 12, 34},    {"-0012-0034", -12, -34}, {"9999900001", 99999, 1},
               {"-9999-0001", -9999, -1}, {"0-012    5", 0, 5},     {"abcde00007", 0, 7},
               {"   12  -34", 12, -34}};
  for (const auto& [text, row, column] : cases) {
    ImageSpec image = GreyImage(2, 2);
    image.fields["ILOC"] = text;
    Guarded<NitfImageHeaderInfo> record;
    Fill(image, record.get());
    EXPECT_EQ(+record->ILOC_ROW, row) << text;
    EXPECT_EQ(+record->ILOC_COLUMN, column) << text;
  }
}

TEST_F(ImageRecord, UserDataEndAtTheirFirstNul) {
  ImageSpec image = GreyImage(2, 2);
  image.udid = ToBytes(std::string("UDITRE00009with\0zero", 20));
  Guarded<NitfImageHeaderInfo> record;
  Fill(image, record.get());
  EXPECT_EQ(+record->UDIDL, 23U);
  EXPECT_STREQ(record->UDID, "UDITRE00009with");
}

TEST_F(ImageRecord, UserDataOfNoBytesAreAnEmptyText) {
  ImageSpec image = GreyImage(2, 2);
  image.udid = Bytes();
  Guarded<NitfImageHeaderInfo> record;
  Fill(image, record.get());
  EXPECT_EQ(+record->UDIDL, 3U);
  EXPECT_STREQ(record->UDID, "");
}

// The record's copy is as long as IXSHDL says: three bytes longer than the data, and these are zero.
TEST_F(ImageRecord, ExtendedDataAreZeroFilledToTheirLength) {
  for (const size_t size : {1U, 2U, 10U, 5000U}) {
    ImageSpec image = GreyImage(2, 2);
    image.ixshd = Bytes(size, 0xEE);
    Guarded<NitfImageHeaderInfo> record;
    Fill(image, record.get());
    ASSERT_EQ(+record->IXSHDL, size + 3);
    EXPECT_EQ(BytesAt(record->IXSHD, size + 3), std::string(size, '\xEE') + std::string(3, '\0'));
  }
}

TEST_F(ImageRecord, ExtendedDataOfNoBytesAreThreeZeros) {
  ImageSpec image = GreyImage(2, 2);
  image.ixshd = Bytes();
  Guarded<NitfImageHeaderInfo> record;
  Fill(image, record.get());
  EXPECT_EQ(+record->IXSHDL, 3U);
  EXPECT_EQ(BytesAt(record->IXSHD, 3), std::string(3, '\0'));
}

// A pointer that an earlier call left is freed; the leak report would show it.
TEST_F(ImageRecord, AStalePointerToExtendedDataIsFreed) {
  ImageSpec image = GreyImage(2, 2);
  image.ixshd = ToBytes("new");
  Guarded<NitfImageHeaderInfo> record;
  auto* stale = static_cast<uint8_t*>(HostAllocMem(7, 1, __LINE__, nullptr));
  record->IXSHD = stale;
  const uint64_t alive = HostLiveObjects();
  Fill(image, record.get());
  EXPECT_EQ(BytesAt(record->IXSHD, 6), std::string("new\0\0\0", 6));
  Free(record.get());
  EXPECT_EQ(HostLiveObjects(), alive - 1) << "the stale block is gone as well";
}

TEST_F(ImageRecord, AStalePointerStaysWhereThereAreNoExtendedData) {
  Guarded<NitfImageHeaderInfo> record;
  auto* stale = static_cast<uint8_t*>(HostAllocMem(7, 1, __LINE__, nullptr));
  record->IXSHD = stale;
  Fill(GreyImage(2, 2), record.get());
  EXPECT_EQ(+record->IXSHD, stale);
}

// The length is one of bits, the copy has as many bytes.
TEST_F(ImageRecord, APadCodeIsZeroFilledToItsLength) {
  const struct {
    uint16_t bits;
    size_t stored;
  } cases[] = {{1, 1}, {8, 1}, {9, 2}, {16, 2}, {2000, 250}};
  for (const auto& [bits, stored] : cases) {
    ImageSpec image = GreyImage(2, 2);
    image.ic = "NM";
    image.mask.pad_code = Bytes(stored, 0xC5);
    image.mask.tpxcdlnth = bits;
    Guarded<NitfImageHeaderInfo> record;
    Fill(image, record.get());
    ASSERT_EQ(+record->TPXCDLNTH, bits);
    std::string expected(stored, '\xC5');
    expected.resize(bits, '\0');
    EXPECT_EQ(BytesAt(record->TPXCD, bits), expected) << bits << " bits";
  }
}

TEST_F(ImageRecord, AMaskOffsetOfTwoGibibytesOrMoreDoesNotSurvive) {
  ImageSpec image = GreyImage(2, 2);
  image.ic = "NM";
  for (const uint32_t offset : {0U, 0x7FFFFFFFU, 0x80000000U, 0xFFFFFFFFU}) {
    image.mask.imdatoff = offset;
    Guarded<NitfImageHeaderInfo> record;
    Fill(image, record.get());
    EXPECT_EQ(+record->IMDATOFF == offset, offset <= 0x7FFFFFFFU) << offset;
  }
}

// Without masks there are no numbers of one and no pad code.
TEST_F(ImageRecord, AnImageWithoutMasksHasNone) {
  Guarded<NitfImageHeaderInfo> record;
  Fill(GreyImage(2, 2), record.get());
  EXPECT_EQ(+record->IMDATOFF, 0U);
  EXPECT_EQ(+record->BMRLNTH, 0);
  EXPECT_EQ(+record->TMRLNTH, 0);
  EXPECT_EQ(+record->TPXCDLNTH, 0);
  EXPECT_EQ(+record->TPXCD, nullptr);
}

TEST_F(ImageRecord, FieldsThatTheFileLacksAreBlankOrZero) {
  Guarded<NitfImageHeaderInfo> record;
  Fill(GreyImage(2, 2), record.get());
  EXPECT_EQ(Text(record->COMRAT), std::string(4, ' '));
  EXPECT_EQ(Text(record->IGEOLO), std::string(60, ' '));
  EXPECT_EQ(+record->XBANDS, 0U);
  EXPECT_EQ(+record->UDIDL, 0U);
  EXPECT_EQ(+record->UDOFL, 0);
  EXPECT_EQ(+record->UDID, nullptr);
  EXPECT_EQ(+record->IXSHDL, 0U);
  EXPECT_EQ(+record->IXSOFL, 0);
  EXPECT_EQ(+record->IXSHD, nullptr);
}

TEST_F(ImageRecord, ManyBandsAreCountedInXbands) {
  ImageSpec image = GreyImage(1, 1, Bytes(12));
  image.Roles(std::vector<std::string>(12, "M "));
  Guarded<NitfImageHeaderInfo> record;
  Fill(image, record.get());
  EXPECT_EQ(+record->NBANDS, 0U);
  EXPECT_EQ(+record->XBANDS, 12U);
}

// The block numbers are those of the texts, not what decoding derives from them.
TEST_F(ImageRecord, BlockNumbersAreThoseOfTheirTexts) {
  ImageSpec image = GreyImage(2, 2);
  image.fields = {{"NBPR", "0003"}, {"NBPC", "0000"}, {"NPPBH", "0000"}, {"NPPBV", "8192"}, {"NBPP", "64"}};
  Guarded<NitfImageHeaderInfo> record;
  Fill(image, record.get());
  EXPECT_EQ(+record->NBPR, 3);
  EXPECT_EQ(+record->NBPC, 0U);
  EXPECT_EQ(+record->NPPBH, 0U);
  EXPECT_EQ(+record->NPPBV, 8192U);
  EXPECT_EQ(+record->NBPP, 64U);
  EXPECT_EQ(+record->NROWS, 2);
  EXPECT_EQ(+record->NCOLS, 2);
}

// Texts of the classification end at their own width here, unlike those of the file header.
TEST_F(ImageRecord, TextsEndAtTheirField) {
  Guarded<NitfImageHeaderInfo> record;
  Fill(GreyImage(2, 2), record.get());
  EXPECT_EQ(Text(record->ISCLSY).size(), 2U);
  EXPECT_EQ(Text(record->ISCODE).size(), 11U);
  EXPECT_EQ(Text(record->ISCTLH).size(), 2U);
  EXPECT_EQ(Text(record->ISREL).size(), 20U);
  EXPECT_EQ(Text(record->ISCAUT).size(), 40U);
  EXPECT_EQ(Text(record->ISCTLN).size(), 15U);
}

TEST_F(ImageRecord, NegativeNumbersKeepTheirSign) {
  ImageSpec image = GreyImage(2, 2);
  image.fields = {{"NROWS", "-0000012"}, {"NCOLS", "     -34"}, {"ABPP", "-5"}};
  Guarded<NitfImageHeaderInfo> record;
  Fill(image, record.get());
  EXPECT_EQ(+record->NROWS, -12);
  EXPECT_EQ(+record->NCOLS, -34);
  EXPECT_EQ(+record->ABPP, -5);
}

// Nothing of the record changes but what is documented: the band lists never, lists and blocks that the file
// lacks neither.
TEST_F(ImageRecord, FieldsThatAreNotFilledStayAsTheyWere) {
  constexpr uint8_t kPoison = 0x5A;
  Guarded<NitfImageHeaderInfo> record;
  std::memset(record.get(), kPoison, sizeof(NitfImageHeaderInfo));
  Fill(GreyImage(2, 2), record.get());
  const std::string untouched(8, static_cast<char>(kPoison));
#define EXPECT_UNTOUCHED(NAME) \
  EXPECT_EQ(BytesOf(record.get(), offsetof(NitfImageHeaderInfo, NAME), 8), untouched) << #NAME
  EXPECT_UNTOUCHED(IREPBAND);
  EXPECT_UNTOUCHED(ISUBCAT);
  EXPECT_UNTOUCHED(IFC);
  EXPECT_UNTOUCHED(IMFLT);
  EXPECT_UNTOUCHED(ICOM);
  EXPECT_UNTOUCHED(UDID);
  EXPECT_UNTOUCHED(IXSHD);
  EXPECT_UNTOUCHED(TPXCD);
#undef EXPECT_UNTOUCHED
  record->IREPBAND = record->ISUBCAT = record->IFC = record->IMFLT = record->ICOM = nullptr;
  record->UDID = nullptr;
  record->IXSHD = record->TPXCD = nullptr;
}

}  // namespace
}  // namespace tavi::records

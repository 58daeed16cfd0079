// The file header's record setter: it takes everything, ignores what is refused, and spoils FVER and FHDR.
#include <limits>

#include "EditingTest.h"

namespace editing {
namespace {

#define HEADER(NAME) #NAME, offsetof(NitfHeaderInfo, NAME)

const MemberCase kTexts[] = {
    {HEADER(STYPE), Kind::kText, 4, 4},    {HEADER(OSTAID), Kind::kText, 10, 10},
    {HEADER(FTITLE), Kind::kText, 80, 80}, {HEADER(FSCLAS), Kind::kText, 1, 1},
    {HEADER(FSCLSY), Kind::kText, 2, 2},   {HEADER(FSCODE), Kind::kText, 11, 40},
    {HEADER(FSCTLH), Kind::kText, 2, 40},  {HEADER(FSREL), Kind::kText, 20, 40},
    {HEADER(FSDCTP), Kind::kText, 2, 2},   {HEADER(FSDG), Kind::kText, 1, 1},
    {HEADER(FSCLTX), Kind::kText, 43, 43}, {HEADER(FSCATP), Kind::kText, 1, 1},
    {HEADER(FSCAUT), Kind::kText, 40, 40}, {HEADER(FSCRSN), Kind::kText, 1, 1},
    {HEADER(FSCTLN), Kind::kText, 15, 20}, {HEADER(ONAME), Kind::kText, 24, 27},
    {HEADER(OPHONE), Kind::kText, 18, 18},
};

const MemberCase kOthers[] = {
    {HEADER(FSCOP), Kind::kNumber, 5, 5, "", 12345},  {HEADER(FSCPYS), Kind::kNumber, 5, 5, "", 23456},
    {HEADER(ENCRYP), Kind::kNumber, 1, 1, "", 7},     {HEADER(FSSRDT), Kind::kChars, 8, 8, "20410203"},
    {HEADER(FSDGDT), Kind::kChars, 8, 8, "20420203"}, {HEADER(FDT), Kind::kChars, 14, 14, "20440203040506"},
};

class FileHeaderSetter : public EditingTest {
 protected:
  void SetUp() override {
    EditingTest::SetUp();
    NtfBuilder file = EditableFile();
    file.udhd.reset();
    file.xhd.reset();
    file.data_extensions.clear();
    built_ = file.Build();
    path_ = Write(built_);
  }
  // What a record takes along that a getter does not fill.
  static void Complete(HeaderRecord& record) {
    const uint8_t white[3] = {255, 255, 255};
    std::memcpy(record->FBKGC, white, sizeof white);
  }
  [[nodiscard]] BuiltFile Baseline() const {
    const Document document(path_);
    HeaderRecord record(document.handle, 0);
    Complete(record);
    EXPECT_EQ(Set(document.handle, 0, record.get()), SUCCESS);
    return SavedLike(document.handle, built_);
  }

  BuiltFile built_;
  std::wstring path_;
};

// The texts with run-on contents are refused in silence, so that a get and a set changes nothing but the version.
TEST_F(FileHeaderSetter, AGetAndASetSpoilsTheVersionAlone) {
  const Document untouched(path_);
  BuiltFile expected = SavedLike(untouched.handle, built_);
  EXPECT_EQ(expected.Text("FHDR"), "NITF");
  const BuiltFile baseline = Baseline();
  EXPECT_EQ(baseline.Text("FHDR"), "NI2.");
  EXPECT_EQ(baseline.Text("FVER"), "00000");
  expected.Patch("FHDR", "NI2.").Patch("FVER", "00000");
  EXPECT_EQ(baseline.bytes, expected.bytes);
  const Document again(Output().wstring());
  EXPECT_EQ(again.open, ERR_FILE_FORMAT);
}

TEST_F(FileHeaderSetter, EachFieldGoesToItsPlaceAndNowhereElse) {
  const BuiltFile baseline = Baseline();
  const auto check = [&](const MemberCase& member) {
    SCOPED_TRACE(member.name);
    const Document document(path_);
    HeaderRecord record(document.handle, 0);
    Complete(record);
    PutNew(record, member);
    ASSERT_EQ(Set(document.handle, 0, record.get()), SUCCESS);
    const HeaderRecord again(document.handle, 0);
    EXPECT_EQ(Shown(again, member).substr(0, member.limit), Shown(record, member).substr(0, member.limit));
    BuiltFile expected = baseline;
    expected.Patch(member.name, member.kind == Kind::kNumber ? tavi_test::Digits(member.number, member.width)
                                                             : Fixed(member.NewText(), member.width));
    EXPECT_EQ(Saved(document.handle), expected.bytes);
  };
  for (const MemberCase& member : kTexts) check(member);
  for (const MemberCase& member : kOthers) check(member);
}

// One text too long, or missing, changes nothing, and all others are taken.
TEST_F(FileHeaderSetter, WhatIsRefusedIsPassedOver) {
  for (const MemberCase& broken : kTexts) {
    for (const bool missing : {false, true}) {
      SCOPED_TRACE(broken.name);
      BuiltFile expected = Baseline();
      const Document document(path_);
      HeaderRecord record(document.handle, 0);
      Complete(record);
      for (const MemberCase& member : kTexts) {
        PutNew(record, member);
        if (&member != &broken) expected.Patch(member.name, Fixed(member.NewText(), member.width));
      }
      if (missing) {
        record.PutNull(broken.place);
      } else {
        record.Put(broken.place, std::string(broken.limit + 1, 'x'));
      }
      ASSERT_EQ(Set(document.handle, 0, record.get()), SUCCESS);
      EXPECT_EQ(Saved(document.handle), expected.bytes);
    }
  }
}

// The version runs on over the second half of the signature; where it is shorter, all of the signature is seen.
TEST_F(FileHeaderSetter, TheSignature) {
  struct Case {
    const char* signature;
    const char* with_version;
    const char* alone;
  };
  const Case cases[] = {{"NITF", "NI2.", "NITF"}, {"NSIF", "NS2.", "NSIF"}, {"N", "N 2.", "N   "},
                        {"", "  2.", "    "},     {"abcd", "ab2.", "abcd"}, {"NSIFx", "NI2.", "NITF"},
                        {nullptr, "NI2.", "NITF"}};
  for (const Case& one : cases) {
    SCOPED_TRACE(one.signature != nullptr ? one.signature : "none");
    for (const bool alone : {false, true}) {
      BuiltFile expected = Baseline();
      const Document document(path_);
      HeaderRecord record(document.handle, 0);
      Complete(record);
      constexpr size_t kPlace = offsetof(NitfHeaderInfo, FHDR);
      if (one.signature != nullptr) {
        record.Put(kPlace, one.signature);
      } else {
        record.PutNull(kPlace);
      }
      if (alone) record->FVER = std::numeric_limits<float>::infinity();
      ASSERT_EQ(Set(document.handle, 0, record.get()), SUCCESS);
      expected.Patch("FHDR", alone ? one.alone : one.with_version);
      if (alone) expected.Patch("FVER", "00inf");
      EXPECT_EQ(Saved(document.handle), expected.bytes);
    }
  }
}

TEST_F(FileHeaderSetter, AShortTextIsCompletedWithBlanks) {
  const Document document(path_);
  HeaderRecord record(document.handle, 0);
  record.Put(offsetof(NitfHeaderInfo, FTITLE), "short");
  record.Put(offsetof(NitfHeaderInfo, FSCODE), "");
  ASSERT_EQ(Set(document.handle, 0, record.get()), SUCCESS);
  const BuiltFile saved = SavedLike(document.handle, built_);
  EXPECT_EQ(saved.Text("FTITLE"), Fixed("short", 80));
  EXPECT_EQ(saved.Text("FSCODE"), std::string(11, ' '));
}

// The declassification exemption is stored and not written: the first characters of the date are.
TEST_F(FileHeaderSetter, TheExemptionComesFromTheDate) {
  const Document document(path_);
  HeaderRecord record(document.handle, 0);
  record.Put(offsetof(NitfHeaderInfo, FSDCXM), "Xm25");
  record.PutChars(offsetof(NitfHeaderInfo, FSDCDT), "20430203");
  ASSERT_EQ(Set(document.handle, 0, record.get()), SUCCESS);
  EXPECT_EQ(HeaderRecord(document.handle, 0).Text(offsetof(NitfHeaderInfo, FSDCXM)).substr(0, 4), "Xm25");
  const BuiltFile saved = SavedLike(document.handle, built_);
  EXPECT_EQ(saved.Text("FSDCXM"), "2043");
  EXPECT_EQ(saved.Text("FSDCDT"), "20430203");
}

TEST_F(FileHeaderSetter, ComplexityLevels) {
  for (const int32_t level : {1, 2, 3, 4, 5, 6, 7, 99}) {
    const Document document(path_);
    HeaderRecord record(document.handle, 0);
    record->CLEVEL = level;
    ASSERT_EQ(Set(document.handle, 0, record.get()), SUCCESS);
    EXPECT_EQ(+HeaderRecord(document.handle, 0)->CLEVEL, level);
    EXPECT_EQ(SavedLike(document.handle, built_).Text("CLEVEL"),
              tavi_test::Digits(static_cast<uint64_t>(level), 2));
  }
  for (const int32_t level : {0, 8, 9, 98, 100, -1, INT32_MIN, INT32_MAX}) {
    const Document document(path_);
    HeaderRecord record(document.handle, 0);
    record->CLEVEL = level;
    ASSERT_EQ(Set(document.handle, 0, record.get()), SUCCESS);
    EXPECT_EQ(+HeaderRecord(document.handle, 0)->CLEVEL, 3) << level;
  }
}

// A saved file of another level is refused once its spoiled version has been put right.
TEST_F(FileHeaderSetter, AnotherLevelIsNotOpenedAgain) {
  const Document document(path_);
  HeaderRecord record(document.handle, 0);
  record->CLEVEL = 2;
  ASSERT_EQ(Set(document.handle, 0, record.get()), SUCCESS);
  BuiltFile saved = SavedLike(document.handle, built_);
  saved.Patch("FHDR", "NITF").Patch("FVER", "02.10");
  const Document again(saved.Write(directory(), "again.ntf"));
  EXPECT_EQ(again.open, ERR_UNSUPPORTED_CLEVEL);
  ASSERT_EQ(host().messages().size(), 1U);
  EXPECT_EQ(host().messages()[0].text, "Unsupported CLEVEL");
}

// No getter shows the reserved number. A save writes it, and what is saved is not opened again.
TEST_F(FileHeaderSetter, TheReservedNumber) {
  struct Case {
    uint32_t number;
    const char* saved;
  };
  const Case cases[] = {{0, "000"}, {7, "007"}, {42, "042"}, {999, "999"}, {1234, "123"}};
  for (const Case& one : cases) {
    SCOPED_TRACE(one.number);
    BuiltFile expected = Baseline();
    const Document document(path_);
    HeaderRecord record(document.handle, 0);
    Complete(record);
    record->NUMX = one.number;
    ASSERT_EQ(Set(document.handle, 0, record.get()), SUCCESS);
    EXPECT_EQ(+HeaderRecord(document.handle, 0)->NUMX, 0U);
    expected.Patch("NUMX", one.saved);
    BuiltFile saved = SavedLike(document.handle, built_);
    EXPECT_EQ(saved.bytes, expected.bytes);
    saved.Patch("FHDR", "NITF").Patch("FVER", "02.10");
    const Document again(saved.Write(directory(), "again.ntf"));
    EXPECT_EQ(again.open, one.number == 0 ? SUCCESS : ERR_FILE_FORMAT);
  }
}

TEST_F(FileHeaderSetter, Versions) {
  struct Case {
    float version;
    const char* shown;  // FHDR and FVER, one behind the other, as the getter comes to them
  };
  const Case cases[] = {{2.1F, "NI2.100000"},
                        {0.0F, "NI0.000000"},
                        {10.5F, "N10.500000"},
                        {-2.1F, "N-2.100000"},
                        {123.25F, "123.250000"},
                        {1234.5F, "234.500000"},  // what would stand before FHDR is lost
                        {0x1p100F, "376.000000"},
                        {std::numeric_limits<float>::infinity(), "NITF"},
                        {std::numeric_limits<float>::quiet_NaN(), "NITF"}};
  for (const Case& one : cases) {
    SCOPED_TRACE(one.version);
    const Document document(path_);
    HeaderRecord record(document.handle, 0);
    record->FVER = one.version;
    ASSERT_EQ(Set(document.handle, 0, record.get()), SUCCESS);
    const HeaderRecord after(document.handle, 0);
    const std::string shown = after.Text(offsetof(NitfHeaderInfo, FHDR));
    const std::string expected = one.shown;
    EXPECT_EQ(shown, expected.size() > 10 ? expected.substr(expected.size() - 10) : expected);
  }
  const Document document(path_);
  HeaderRecord record(document.handle, 0);
  record->FVER = std::numeric_limits<float>::infinity();
  ASSERT_EQ(Set(document.handle, 0, record.get()), SUCCESS);
  EXPECT_EQ(SavedLike(document.handle, built_).Text("FVER"), "00inf");
}

TEST_F(FileHeaderSetter, LengthsOfTheFile) {
  const Document document(path_);
  HeaderRecord record(document.handle, 0);
  record->FL = 123456789;
  record->HL = record->HL + 1;
  ASSERT_EQ(Set(document.handle, 0, record.get()), SUCCESS);
  const HeaderRecord after(document.handle, 0);
  EXPECT_EQ(+after->FL, 123456789U);
  EXPECT_EQ(+after->HL, +record->HL);
}

// HL moves the seeks of the source: what is read of it is read from the wrong place.
TEST_F(FileHeaderSetter, HlMovesWhatIsReadOfTheSource) {
  const Document document(path_);
  uint8_t text[18] = {};
  HeaderRecord record(document.handle, 0);
  record->HL -= 5;  // into the block before the text, which ends in " text"
  ASSERT_EQ(Set(document.handle, 0, record.get()), SUCCESS);
  ASSERT_EQ(Tavi_NITFGetTextSegment(document.handle, 0, text, nullptr), SUCCESS);
  EXPECT_EQ(std::string(reinterpret_cast<char*>(text)), " text" + std::string(12, 't'));
}

// ---- Lists ----

TEST_F(FileHeaderSetter, ListsOfTheSegments) {
  const Document document(path_);
  HeaderRecord record(document.handle, 0);
  const uint32_t ls = record->LS[0];
  record->LISH[0] = 111111;
  record->LI[1] = 2222222;
  record->LSSH[0] = 333;
  record->LS[0] = 444;
  record->LTSH[0] = 555;
  record->LT[0] = 666;
  ASSERT_EQ(Set(document.handle, 0, record.get()), SUCCESS);
  const HeaderRecord after(document.handle, 0);
  EXPECT_EQ(after->LISH[0], 111111U);
  EXPECT_EQ(after->LISH[1], record->LISH[1]);
  EXPECT_EQ(after->LI[1], 2222222U);
  EXPECT_EQ(after->LSSH[0], 333U);
  EXPECT_EQ(after->LS[0], 444U);
  EXPECT_EQ(after->LTSH[0], 555U);
  EXPECT_EQ(after->LT[0], 666U);
  // The table is written before the data, which cannot be found any more.
  EXPECT_NE(Tavi_NITFSaveFile(document.handle, Output().wstring().c_str()), SUCCESS);
  BuiltFile saved = built_;
  saved.bytes = ReadBytes(Output());
  EXPECT_EQ(saved.Text("LISH[0]"), "111111");
  EXPECT_EQ(saved.Text("LI[1]"), "0002222222");
  EXPECT_EQ(saved.Text("LSSH[0]"), "0333");
  EXPECT_EQ(saved.Text("LS[0]"), tavi_test::Digits(ls, 6)) << "a save writes the old length";
  EXPECT_EQ(saved.Text("LTSH[0]"), "0555");
  EXPECT_EQ(saved.Text("LT[0]"), "00666");
}

TEST_F(FileHeaderSetter, CountsBeyondTheListsAreStoredAndNothingElse) {
  for (const uint32_t count : {3U, 999U, 1000000U, 0xFFFFFFFFU}) {
    SCOPED_TRACE(count);
    const Document document(path_);
    HeaderRecord record(document.handle, 0);
    std::vector<uint32_t> lengths(count < 1000 ? count : 1000, 5);
    for (const size_t place :
         {offsetof(NitfHeaderInfo, LISH), offsetof(NitfHeaderInfo, LI), offsetof(NitfHeaderInfo, LSSH),
          offsetof(NitfHeaderInfo, LS), offsetof(NitfHeaderInfo, LTSH), offsetof(NitfHeaderInfo, LT)}) {
      record.PutBlock(place, lengths.data(), lengths.size() * sizeof(uint32_t));
    }
    record->NUMI = record->NUMS = record->NUMT = count;
    ASSERT_EQ(Set(document.handle, 0, record.get()), SUCCESS);
    EXPECT_EQ(Tavi_NITFGetImageHeaderCount(document.handle), 2);
    EXPECT_EQ(Tavi_NITFGetGraphicHeaderCount(document.handle), 1);
    EXPECT_EQ(Tavi_NITFGetTextHeaderCount(document.handle), 1);
    const HeaderRecord after(document.handle, 0);
    Tavi_NITFSaveFile(document.handle, Output().wstring().c_str());
    EXPECT_LT(std::filesystem::file_size(Output()), 3000000U)
        << "a table has no more entries than five digits say";
    if (count == 0xFFFFFFFF) {
      EXPECT_EQ(+after->NUMI, 0U) << "-1 in three digits is no number";
      continue;
    }
    ASSERT_GE(+after->NUMI, 3U) << "three digits of it";
    EXPECT_EQ(after->LI[0], 5U);
    EXPECT_EQ(after->LI[1], 5U);
    EXPECT_EQ(after->LI[2], 0U) << "the list ends there";
  }
}

// A save counts the images, whatever NUMI says, and ends its table there.
TEST_F(FileHeaderSetter, ASaveCountsForItself) {
  NtfBuilder file;
  file.images = {tavi_test::GreyImage(2, 2)};
  const BuiltFile built = file.Build();
  const Document document(Write(built));
  const Bytes plain = Saved(document.handle);
  HeaderRecord record(document.handle, 0);
  const uint32_t lengths[4] = {record->LISH[0], 0, 0, 0};
  record.PutBlock(offsetof(NitfHeaderInfo, LISH), lengths, sizeof lengths);
  record->NUMI = 4;
  record.PutNull(offsetof(NitfHeaderInfo, LI));
  ASSERT_EQ(Set(document.handle, 0, record.get()), SUCCESS);
  const BuiltFile saved = SavedLike(document.handle, built);
  EXPECT_EQ(saved.Text("NUMI"), "001");
  EXPECT_EQ(saved.bytes.size(), plain.size());
}

TEST_F(FileHeaderSetter, ReservedExtensionsFollowTheNumberOfDataExtensions) {
  NtfBuilder file = EditableFile();
  file.data_extensions.resize(2);
  file.reserved.resize(3);
  for (auto& extension : file.reserved) extension.data = Bytes(9, 'r');
  const BuiltFile built = file.Build();
  const std::wstring path = Write(built);
  struct Case {
    uint32_t numdes;
    uint32_t numres;
    const char* lre[3];  // as saved
  };
  // No more entries than NUMDES, none at or beyond NUMRES.
  const Case cases[] = {{2, 3, {"0000007", "0000007", "0000009"}},
                        {1, 3, {"0000007", "0000009", "0000009"}},
                        {2, 1, {"0000007", nullptr, nullptr}},
                        {0, 3, {"0000009", "0000009", "0000009"}}};
  for (const Case& one : cases) {
    SCOPED_TRACE(std::to_string(one.numdes) + " and " + std::to_string(one.numres));
    const Document document(path);
    HeaderRecord record(document.handle, 0);
    const uint32_t sevens[4] = {7, 7, 7, 7};
    for (const size_t place : {offsetof(NitfHeaderInfo, LDSH), offsetof(NitfHeaderInfo, LD),
                               offsetof(NitfHeaderInfo, LRESH), offsetof(NitfHeaderInfo, LRE)}) {
      record.PutBlock(place, sevens, sizeof sevens);
    }
    record->NUMDES = one.numdes;
    record->NUMRES = one.numres;
    ASSERT_EQ(Set(document.handle, 0, record.get()), SUCCESS);
    Tavi_NITFSaveFile(document.handle, Output().wstring().c_str());
    const Bytes saved = ReadBytes(Output());
    // NUMDES, its entries of 4 and 9, NUMRES, its entries of 4 and 7.
    size_t at = built.At("NUMDES").offset;
    const auto take = [&](size_t width) {
      at += width;
      return std::string(saved.begin() + static_cast<std::ptrdiff_t>(at - width),
                         saved.begin() + static_cast<std::ptrdiff_t>(at));
    };
    EXPECT_EQ(take(3), tavi_test::Digits(one.numdes, 3));
    for (uint32_t i = 0; i < one.numdes; ++i) {
      EXPECT_EQ(take(4), "0007");
      EXPECT_EQ(take(9), "000000007");
    }
    EXPECT_EQ(take(3), tavi_test::Digits(one.numres, 3));
    for (uint32_t i = 0; i < one.numres; ++i) {
      take(4);
      EXPECT_EQ(take(7), one.lre[i]);
    }
  }
}

TEST_F(FileHeaderSetter, CountsOfExtensionsThatLie) {
  const Document document(path_);
  HeaderRecord record(document.handle, 0);
  const uint32_t one[1] = {1};
  for (const size_t place : {offsetof(NitfHeaderInfo, LDSH), offsetof(NitfHeaderInfo, LD),
                             offsetof(NitfHeaderInfo, LRESH), offsetof(NitfHeaderInfo, LRE)}) {
    record.PutBlock(place, one, sizeof one);
  }
  record->NUMDES = record->NUMRES = 0xFFFFFFFF;
  EXPECT_EQ(Set(document.handle, 0, record.get()), SUCCESS) << "there are no lists to write to";
  Tavi_NITFSaveFile(document.handle, Output().wstring().c_str());
  EXPECT_LT(std::filesystem::file_size(Output()), 3000000U);
}

// ---- Blocks and what the getter does not fill ----

TEST_F(FileHeaderSetter, AZeroedRecordClearsWhatTheGetterDoesNotFill) {
  const BuiltFile built = EditableFile().Build();
  const Document document(Write(built));
  HeaderRecord record(document.handle, 0);
  ASSERT_EQ(Set(document.handle, 0, record.get()), SUCCESS);
  EXPECT_EQ(Tavi_NITFSaveFile(document.handle, Output().wstring().c_str()), SUCCESS);
  BuiltFile saved = built;
  saved.bytes = ReadBytes(Output());
  EXPECT_EQ(saved.Text("FBKGC"), std::string(3, '\0'));
  EXPECT_EQ(saved.Text("NUMX"), "000");
  EXPECT_EQ(saved.Text("NUMDES"), "000");
  // No table of data extensions, no extended data: only NUMRES, UDHDL and XHDL follow.
  const size_t at = built.At("NUMDES").offset;
  EXPECT_EQ(std::string(saved.bytes.begin() + static_cast<std::ptrdiff_t>(at),
                        saved.bytes.begin() + static_cast<std::ptrdiff_t>(at + 16)),
            "0000000000000000");
}

TEST_F(FileHeaderSetter, ExtendedDataBlocks) {
  const Document document(path_);
  HeaderRecord record(document.handle, 0);
  const Bytes user(10, 'u');
  const Bytes extended(20, 'x');
  record.PutBlock(offsetof(NitfHeaderInfo, UDHD), user.data(), user.size());
  record.PutBlock(offsetof(NitfHeaderInfo, XHD), extended.data(), extended.size());
  record->UDHDL = 13;
  record->UDHOFL = 1;
  record->XHDL = 23;
  record->XHDLOFL = 2;
  ASSERT_EQ(Set(document.handle, 0, record.get()), SUCCESS);
  EXPECT_EQ(Tavi_NITFSaveFile(document.handle, Output().wstring().c_str()), SUCCESS);
  const auto tail = [&](size_t size) {
    const Bytes saved = ReadBytes(Output());
    const auto at = static_cast<std::ptrdiff_t>(built_.At("UDHDL").offset);
    return std::string(saved.begin() + at, saved.begin() + at + static_cast<std::ptrdiff_t>(size));
  };
  EXPECT_EQ(tail(8 + 10 + 8 + 20), "00013001" + std::string(10, 'u') + "00023002" + std::string(20, 'x'));

  // No pointer keeps the block, which is cut or completed as the length says.
  record.PutNull(offsetof(NitfHeaderInfo, UDHD));
  record.PutNull(offsetof(NitfHeaderInfo, XHD));
  record->UDHDL = 7;
  record->XHDL = 25;
  ASSERT_EQ(Set(document.handle, 0, record.get()), SUCCESS);
  EXPECT_EQ(Tavi_NITFSaveFile(document.handle, Output().wstring().c_str()), SUCCESS);
  EXPECT_EQ(tail(8 + 4 + 8 + 20), "00007001uuuu00025002" + std::string(20, 'x'));
}

TEST_F(FileHeaderSetter, ALengthBelowThreeDropsTheBlockInSilence) {
  for (const uint32_t length : {0U, 1U, 2U}) {
    const Document document(path_);
    HeaderRecord record(document.handle, 0);
    const uint8_t block[1] = {'b'};
    record.PutBlock(offsetof(NitfHeaderInfo, UDHD), block, 1);
    record.PutBlock(offsetof(NitfHeaderInfo, XHD), block, 1);
    record->UDHDL = record->XHDL = length;
    EXPECT_EQ(Set(document.handle, 0, record.get()), SUCCESS);
    EXPECT_EQ(Tavi_NITFSaveFile(document.handle, Output().wstring().c_str()), SUCCESS);
  }
}

TEST_F(FileHeaderSetter, BackgroundGoesToTheFileAndNotToTheCanvas) {
  NtfBuilder file;
  file.images = {tavi_test::GreyImage(2, 2).At(3, 3)};
  const BuiltFile built = file.Build();
  const Document document(Write(built));
  const auto corner = [&] {
    HostBitmap bitmap{};
    EXPECT_EQ(Tavi_NtfRenderBitmap(&bitmap, document.handle), SUCCESS);
    Bytes row(bitmap.bytes_per_line);
    HostGetBitmapRow(&bitmap, row.data(), bitmap.height - 1, row.size());
    HostFreeBitmap(&bitmap);
    return Bytes(row.begin(), row.begin() + 3);
  };
  HeaderRecord record(document.handle, 0);
  record->FBKGC[0] = 1;
  record->FBKGC[1] = 2;
  record->FBKGC[2] = 3;
  record->spare = 0x55;
  ASSERT_EQ(Set(document.handle, 0, record.get()), SUCCESS);
  EXPECT_EQ(corner(), (Bytes{255, 255, 255}));
  BuiltFile saved = SavedLike(document.handle, built);
  EXPECT_EQ(saved.Text("FBKGC"), std::string("\1\2\3"));
}

TEST_F(FileHeaderSetter, ResultsWithoutADocumentOrRecord) {
  const Document document(path_);
  NitfHeaderInfo record{};
  EXPECT_EQ(Tavi_NITFSetNITFHeader(nullptr, &record), 0);
  EXPECT_EQ(Tavi_NITFSetNITFHeader(nullptr, nullptr), 0);
  EXPECT_EQ(Tavi_NITFSetNITFHeader(document.handle, nullptr), 87);
  EXPECT_EQ(Tavi_NITFSetNITFHeader(document.handle, &record), SUCCESS) << "no text at all";
}

}  // namespace
}  // namespace editing

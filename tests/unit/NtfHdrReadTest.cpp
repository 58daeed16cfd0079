// Reading the file header, in both layouts.
#include <gtest/gtest.h>

#include "NtfHdrFacts.h"
#include "UnitTest.h"

namespace {

using tavi::Layout;
using tavi::LengthList;
using tavi_test::BuiltFile;
using tavi_test::Bytes;
using tavi_test::NtfBuilder;
using tavi_test::Tre;
using namespace unit;

constexpr int kRubbish = 0x5E;

Bytes Join(Bytes a, const Bytes& b) {
  a.insert(a.end(), b.begin(), b.end());
  return a;
}

NtfBuilder Plain(Layout layout) {
  NtfBuilder builder;
  builder.layout = layout == Layout::kNitf20 ? tavi_test::Layout::kNitf20 : tavi_test::Layout::kNitf21;
  builder.header["FVER"] = "02.10";
  return builder;
}

// Every text that may be anything gets one of its own, and two segments of each kind fill the tables.
NtfBuilder FullFile(Layout layout) {
  static const char* const kFree[] = {"STYPE",  "OSTAID", "FDT",    "FTITLE", "FSCLSY", "FSCODE", "FSCTLH",
                                      "FSREL",  "FSDCTP", "FSDCDT", "FSDCXM", "FSDG",   "FSDGDT", "FSCLTX",
                                      "FSCATP", "FSCAUT", "FSCRSN", "FSSRDT", "FSCTLN", "FSDWNG", "FSCOP",
                                      "FSCPYS", "ENCRYP", "ONAME",  "OPHONE", "UDHOFL", "XHDLOFL"};
  NtfBuilder builder = Plain(layout);
  for (const char* name : kFree) {
    for (const FieldFact& fact : kFileHeaderFacts) {
      if (std::string_view(fact.name) != name || fact.Width(layout) == kNone) continue;
      builder.header[name] = DistinctText(name, fact.Width(layout));
    }
  }
  builder.header["FSCLAS"] = "T";
  builder.background = {0x11, 0x22, 0x33};
  builder.images = {tavi_test::GreyImage(2, 2), tavi_test::GreyImage(1, 1)};
  builder.graphics.resize(2);
  if (layout == Layout::kNitf20) builder.labels.resize(2);
  builder.texts.resize(2);
  builder.data_extensions.resize(2);
  builder.reserved.resize(2);
  builder.udhd = Tre("ALPHA", "1234");
  builder.xhd = Join(Tre("BETA", ""), Tre("GAMMA", "567"));
  return builder;
}

class FileHeaderTest : public UnitTest {
 protected:
  int32_t Read(NitfFile& document, const BuiltFile& file) {
    Attach(document, file);
    tavi::StrmFHdr stream;
    return tavi::ReadFileHeader(document.Header, document, stream, 0);
  }
  // The status of a plain header in which one field's text has been replaced.
  int32_t StatusWith(const char* field, const std::string& text, Layout layout = Layout::kNitf21) {
    NitfFile document;
    document.IsNitf20 = layout == Layout::kNitf20;
    return Read(document, Plain(layout).Build().Patch(field, text));
  }
};

class FileHeaderLayoutTest : public FileHeaderTest, public testing::WithParamInterface<Layout> {
 protected:
  int32_t ReadInLayout(NitfFile& document, const BuiltFile& file) {
    document.IsNitf20 = GetParam() == Layout::kNitf20;
    return Read(document, file);
  }
};
INSTANTIATE_TEST_SUITE_P(Both, FileHeaderLayoutTest, testing::Values(Layout::kNitf21, Layout::kNitf20),
                         [](const auto& layout) {
                           return layout.param == Layout::kNitf20 ? "Nitf20" : "Nitf21";
                         });

// ---- What lands where ----

TEST_P(FileHeaderLayoutTest, EveryTextLandsInItsBufferAndTouchesNothingElse) {
  const BuiltFile file = FullFile(GetParam()).Build();
  NitfFile document;
  ASSERT_EQ(ReadInLayout(document, file), SUCCESS);
  const std::string before = DefaultTexts(kFileHeaderFacts, sizeof document.Header.Text);
  EXPECT_EQ(
      Differences(kFileHeaderFacts,
                  TextsAfterReading(before, kFileHeaderFacts, GetParam(), file, "", kTerminatedByReader),
                  BytesOf(document.Header.Text)),
      "");
}

// From rubbish it shows where the reader writes a NUL and where it writes none.
TEST_P(FileHeaderLayoutTest, NulsAreWrittenBehindSomeFieldsOnly) {
  const BuiltFile file = FullFile(GetParam()).Build();
  NitfFile document;
  std::memset(&document.Header.Text, kRubbish, sizeof document.Header.Text);
  ASSERT_EQ(ReadInLayout(document, file), SUCCESS);
  const std::string before(sizeof document.Header.Text, static_cast<char>(kRubbish));
  EXPECT_EQ(
      Differences(kFileHeaderFacts,
                  TextsAfterReading(before, kFileHeaderFacts, GetParam(), file, "", kTerminatedByReader),
                  BytesOf(document.Header.Text)),
      "");
}

TEST_P(FileHeaderLayoutTest, ReadsToItsEndAndNoFurther) {
  const BuiltFile file = FullFile(GetParam()).Build();
  NitfFile document;
  ASSERT_EQ(ReadInLayout(document, file), SUCCESS);
  EXPECT_EQ(Position(document), static_cast<int64_t>(file.At("image[0].subheader").offset));
}

TEST_P(FileHeaderLayoutTest, NumbersStandBesideTheirTexts) {
  NtfBuilder builder = FullFile(GetParam());
  builder.header["FL"] = "000000123456";
  builder.header["HL"] = "004321";
  builder.images.resize(1);
  builder.graphics.resize(3);
  if (GetParam() == Layout::kNitf20) builder.labels.resize(4);
  builder.texts.resize(5);
  builder.data_extensions.resize(6);
  builder.reserved.resize(7);
  NitfFile document;
  ASSERT_EQ(ReadInLayout(document, builder.Build()), SUCCESS);
  const tavi::NtfHdr& h = document.Header;
  EXPECT_EQ(h.Valid, 1U);
  EXPECT_EQ(h.ClevelValue, 3U);
  EXPECT_EQ(h.FlValue, 123456U);
  EXPECT_EQ(h.FlMirror, 123456U);
  EXPECT_EQ(h.HlRead, 4321U);
  EXPECT_EQ(h.HlWork, 4321U);
  EXPECT_EQ(h.NumImages, 1U);
  EXPECT_EQ(h.NumGraphics, 3U);
  EXPECT_EQ(h.NumLabels, GetParam() == Layout::kNitf20 ? 4U : 0U);
  EXPECT_EQ(h.NumTexts, 5U);
  EXPECT_EQ(h.NumDes, 6U);
  EXPECT_EQ(h.NumRes, 7U);
}

void ExpectList(const LengthList& list, std::initializer_list<uint32_t> values, const char* name) {
  ASSERT_EQ(list.size(), values.size()) << name;
  size_t i = 0;
  for (const uint32_t value : values) EXPECT_EQ(list[i++], value) << name;
}

TEST_P(FileHeaderLayoutTest, LengthTablesLandInTheirLists) {
  NtfBuilder builder = FullFile(GetParam());
  const std::pair<const char*, const char*> kLies[] = {
      {"LISH[0]", "000101"}, {"LI[0]", "0000000102"}, {"LISH[1]", "999998"}, {"LI[1]", "2147483647"},
      {"LSSH[0]", "0201"},   {"LS[0]", "000202"},     {"LSSH[1]", "9998"},   {"LS[1]", "999999"},
      {"LTSH[0]", "0301"},   {"LT[0]", "00302"},      {"LTSH[1]", "9998"},   {"LT[1]", "99999"},
      {"LDSH[0]", "0401"},   {"LD[0]", "000000402"},  {"LDSH[1]", "9998"},   {"LD[1]", "999999998"},
      {"LRESH[0]", "0501"},  {"LRE[0]", "0000502"},   {"LRESH[1]", "9999"},  {"LRE[1]", "9999999"}};
  for (const auto& [name, text] : kLies) builder.header[name] = text;
  if (GetParam() == Layout::kNitf20) {
    builder.header["LLSH[0]"] = "0601";
    builder.header["LL[0]"] = "602";
    builder.header["LLSH[1]"] = "9999";
    builder.header["LL[1]"] = "999";
  }
  NitfFile document;
  ASSERT_EQ(ReadInLayout(document, builder.Build()), SUCCESS);
  const tavi::NtfHdr& h = document.Header;
  ExpectList(h.LishRead, {101, 999998}, "LishRead");
  ExpectList(h.LishWork, {101, 999998}, "LishWork");
  ExpectList(h.LiRead, {102, 2147483647}, "LiRead");
  ExpectList(h.LiWork, {102, 2147483647}, "LiWork");
  ExpectList(h.LsshRead, {201, 9998}, "LsshRead");
  ExpectList(h.LsshWork, {201, 9998}, "LsshWork");
  ExpectList(h.LsRead, {202, 999999}, "LsRead");
  ExpectList(h.LsWork, {202, 999999}, "LsWork");
  ExpectList(h.LtshList, {301, 9998}, "LtshList");
  ExpectList(h.LtRead, {302, 99999}, "LtRead");
  ExpectList(h.LtWork, {302, 99999}, "LtWork");
  ExpectList(h.LdshList, {401, 9998}, "LdshList");
  ExpectList(h.LdList, {402, 999999998}, "LdList");
  ExpectList(h.LreshList, {501, 9999}, "LreshList");
  ExpectList(h.LreList, {502, 9999999}, "LreList");
  if (GetParam() == Layout::kNitf20) {
    ExpectList(h.LlshList, {601, 9999}, "LlshList");
    ExpectList(h.LlRead, {602, 999}, "LlRead");
    ExpectList(h.LlWork, {602, 999}, "LlWork");
  } else {
    EXPECT_FALSE(h.LlshList.exists());
  }
}

TEST_P(FileHeaderLayoutTest, CountOfZeroMakesNoList) {
  NitfFile document;
  ASSERT_EQ(ReadInLayout(document, Plain(GetParam()).Build()), SUCCESS);
  const tavi::NtfHdr& h = document.Header;
  for (const LengthList* list : {&h.LishRead, &h.LishWork, &h.LiRead, &h.LiWork, &h.LsshRead, &h.LsshWork,
                                 &h.LsRead, &h.LsWork, &h.LlshList, &h.LlRead, &h.LlWork, &h.LtshList,
                                 &h.LtRead, &h.LtWork, &h.LdshList, &h.LdList, &h.LreshList, &h.LreList}) {
    EXPECT_FALSE(list->exists());
  }
  EXPECT_FALSE(h.UDHD.exists());
  EXPECT_FALSE(h.XHD.exists());
  EXPECT_STREQ(h.Text.UDHDL, "00000");
  EXPECT_STREQ(h.Text.UDHOFL, "");
}

TEST_P(FileHeaderLayoutTest, ExtendedDataAreKeptCountedAndTerminated) {
  const NtfBuilder builder = FullFile(GetParam());
  NitfFile document;
  ASSERT_EQ(ReadInLayout(document, builder.Build()), SUCCESS);
  const tavi::NtfHdr& h = document.Header;
  const auto expect_block = [](const tavi::HostArray<uint8_t>& block, const Bytes& bytes) {
    ASSERT_EQ(block.size(), bytes.size() + 1);
    EXPECT_EQ(Bytes(block.data(), block.data() + bytes.size()), bytes);
    EXPECT_EQ(block[bytes.size()], 0);
  };
  expect_block(h.UDHD, *builder.udhd);
  expect_block(h.XHD, *builder.xhd);
  EXPECT_EQ(h.UserTreCount, 1U);
  EXPECT_EQ(h.ExtendedTreCount, 2U);
  EXPECT_EQ(h.UserTreCursor, h.UDHD.data());
  EXPECT_EQ(h.ExtendedTreCursor, h.XHD.data());
}

TEST_P(FileHeaderLayoutTest, BackgroundIsPackedFirstByteLowest) {
  NtfBuilder builder = Plain(GetParam());
  builder.background = {0xFE, 0x80, 0x01};
  NitfFile document;
  ASSERT_EQ(ReadInLayout(document, builder.Build()), SUCCESS);
  EXPECT_EQ(document.Header.BackgroundValue, GetParam() == Layout::kNitf20 ? 0U : 0x0180FEU);
}

TEST_P(FileHeaderLayoutTest, IsReadFromWhereTheFileStands) {
  BuiltFile file = Plain(GetParam()).Build();
  const size_t length = file.bytes.size();
  file.bytes.insert(file.bytes.begin(), 17, 'x');
  NitfFile document;
  document.IsNitf20 = GetParam() == Layout::kNitf20;
  Attach(document, file);
  HostFileSeek(document.File, 17, 0);
  tavi::StrmFHdr stream;
  EXPECT_EQ(tavi::ReadFileHeader(document.Header, document, stream, 0), SUCCESS);
  EXPECT_EQ(Position(document), static_cast<int64_t>(17 + length));
}

TEST_P(FileHeaderLayoutTest, FileThatEndsInsideAnyFieldIsAShortRead) {
  const BuiltFile whole = FullFile(GetParam()).Build();
  const size_t length = whole.At("image[0].subheader").offset;
  for (const std::string& name : whole.order) {
    if (whole.At(name).offset >= length) break;
    BuiltFile cut = whole;
    cut.Truncate(name, whole.At(name).length - 1);
    NitfFile document;
    ASSERT_EQ(ReadInLayout(document, cut), ERR_FILE_READ) << name;
  }
  BuiltFile exact = whole;
  exact.bytes.resize(length);
  NitfFile document;
  EXPECT_EQ(ReadInLayout(document, exact), SUCCESS);
}

// ---- The downgrading event of the 2.0 layout ----

TEST_F(FileHeaderTest, DowngradingEventIsThereForOneTextOnly) {
  for (const char* text : {"999998", "999997", "999999", "99999 ", " 99998"}) {
    NtfBuilder builder = Plain(Layout::kNitf20);
    builder.header["FSDWNG"] = text;
    const bool event = std::string(text) == "999998";
    if (event) builder.header["FSDEVT"] = DistinctText("FSDEVT", 40);
    NitfFile document;
    document.IsNitf20 = 1;
    ASSERT_EQ(Read(document, builder.Build()), SUCCESS) << text;
    EXPECT_EQ(std::string(document.Header.Text.FSDEVT, 41),
              (event ? DistinctText("FSDEVT", 40) : std::string(40, ' ')) + ' ');
    EXPECT_STREQ(document.Header.Text.XHDL, "00000") << "what follows is in step";
  }
}

TEST_F(FileHeaderTest, DowngradeFieldsDoNotExistIn21) {
  NitfFile document;
  std::memcpy(document.Header.Text.FSDWNG, "999998", 6);
  ASSERT_EQ(Read(document, Plain(Layout::kNitf21).Build()), SUCCESS);
  EXPECT_EQ(std::string(document.Header.Text.FSDEVT, 41), std::string(41, ' '));
}

// ---- What is required ----

TEST_F(FileHeaderTest, SmallestHeaderIs388BytesAndReads) {
  const BuiltFile file = Plain(Layout::kNitf21).Build();
  EXPECT_EQ(file.bytes.size(), 388U);
  NitfFile document;
  EXPECT_EQ(Read(document, file), SUCCESS);
  EXPECT_EQ(document.Header.HlRead, 388U);
  EXPECT_TRUE(MessageTexts().empty());
}

TEST_F(FileHeaderTest, NsifReadsLikeNitf) {
  EXPECT_EQ(StatusWith("FHDR", "NSIF"), SUCCESS);
  NitfFile document;
  EXPECT_EQ(Read(document, Plain(Layout::kNitf21).Build().Patch("FHDR", "NSIF").Patch("FVER", "01.00")),
            ERR_NOT_NITF);
}

TEST_F(FileHeaderTest, OtherSignatureIsRefusedBeforeAnythingElse) {
  for (const char* text : {"nitf", "NITf", "NSIT", "    ", "FITN"}) {
    NitfFile document;
    EXPECT_EQ(Read(document, Plain(Layout::kNitf21).Build().Patch("FHDR", text).Patch("FVER", "xxxxx")),
              ERR_FILE_FORMAT);
    EXPECT_EQ(document.Header.Valid, 0U);
    EXPECT_STREQ(document.Header.Text.FHDR, text);
  }
}

TEST_F(FileHeaderTest, OtherVersionIsRefusedInEitherLayout) {
  for (const char* text : {"02.00", "01.10", "02.11", "02.1 ", "02,10"}) {
    EXPECT_EQ(StatusWith("FVER", text), ERR_NOT_NITF);
    EXPECT_EQ(StatusWith("FVER", text, Layout::kNitf20), ERR_NOT_NITF);
  }
  EXPECT_TRUE(MessageTexts().empty());
}

TEST_F(FileHeaderTest, OtherComplexityLevelShowsAMessage) {
  for (const char* text : {"05", "01", "09", " 3", "3 "}) {
    NitfFile document;
    EXPECT_EQ(Read(document, Plain(Layout::kNitf21).Build().Patch("CLEVEL", text)), ERR_UNSUPPORTED_CLEVEL);
    // What was read before stays.
    EXPECT_EQ(document.Header.Valid, 1U);
    EXPECT_STREQ(document.Header.Text.FHDR, "NITF");
    EXPECT_STREQ(document.Header.Text.FVER, "02.10");
    EXPECT_STREQ(document.Header.Text.CLEVEL, text);
    EXPECT_STREQ(document.Header.Text.STYPE, "BF01") << "nothing is read after the refusal";
  }
  EXPECT_EQ(MessageTexts(), std::vector<std::string>(5, "Error: Unsupported CLEVEL"));
}

TEST_F(FileHeaderTest, ClassIsOneOfFive) {
  for (const char c : std::string("CRSTU")) EXPECT_EQ(StatusWith("FSCLAS", {c}), SUCCESS) << c;
  for (const char c : std::string("BDQVcrstu |0\x01\xD3\0", 15)) {
    EXPECT_EQ(StatusWith("FSCLAS", {c}), ERR_FILE_FORMAT) << int{c};
  }
}

TEST_F(FileHeaderTest, NumxMustBeZero) {
  for (const char* text : {"001", "100", "   ", "00 ", "-00"}) {
    EXPECT_EQ(StatusWith("NUMX", text), ERR_FILE_FORMAT) << text;
  }
  EXPECT_EQ(StatusWith("NUML", "000", Layout::kNitf20), SUCCESS);
}

// ---- Lengths and counts that lie ----

TEST_F(FileHeaderTest, DataLengthOfThreeKeepsAnEmptyBlock) {
  for (const char* field : {"UDHDL", "XHDL"}) {
    NtfBuilder builder = Plain(Layout::kNitf21);
    builder.header[field] = "00003";
    (std::string(field) == "UDHDL" ? builder.udhd : builder.xhd) = Bytes{};
    NitfFile document;
    ASSERT_EQ(Read(document, builder.Build()), SUCCESS) << field;
    const auto& block = std::string(field) == "UDHDL" ? document.Header.UDHD : document.Header.XHD;
    ASSERT_EQ(block.size(), 1U);
    EXPECT_EQ(block[0], 0);
    EXPECT_EQ(document.Header.UserTreCount, 0U);
    EXPECT_EQ(document.Header.ExtendedTreCount, 0U);
  }
}

// Lengths below the overflow field's leave a negative length for the block.
TEST_F(FileHeaderTest, DataLengthOfOneOrTwoIsRefused) {
  for (const char* field : {"UDHDL", "XHDL"}) {
    for (const char* text : {"00001", "00002", "-0001", "-9999"}) {
      NtfBuilder builder = Plain(Layout::kNitf21);
      builder.header[field] = text;
      (std::string(field) == "UDHDL" ? builder.udhd : builder.xhd) = Bytes(40, 'x');
      NitfFile document;
      EXPECT_EQ(Read(document, builder.Build()), ERR_FILE_READ) << field << " " << text;
    }
  }
}

TEST_F(FileHeaderTest, DataLengthBeyondTheFileIsAShortRead) {
  NtfBuilder builder = Plain(Layout::kNitf21);
  builder.header["XHDL"] = "99999";
  builder.xhd = Bytes(10, 'x');
  NitfFile document;
  EXPECT_EQ(Read(document, builder.Build()), ERR_FILE_READ);
}

TEST_F(FileHeaderTest, CountThatTheFileCannotHoldIsAShortRead) {
  for (const char* field : {"NUMI", "NUMS", "NUMT", "NUMDES", "NUMRES"}) {
    EXPECT_EQ(StatusWith(field, "999"), ERR_FILE_READ) << field;
    EXPECT_EQ(StatusWith(field, "-01"), ERR_FILE_READ) << field;
  }
  EXPECT_EQ(StatusWith("NUML", "999", Layout::kNitf20), ERR_FILE_READ);
}

TEST_F(FileHeaderTest, CountThatIsNoNumberIsZero) {
  NitfFile document;
  ASSERT_EQ(Read(document, Plain(Layout::kNitf21).Build().Patch("NUMI", "abc").Patch("NUMT", "   ")),
            SUCCESS);
  EXPECT_EQ(document.Header.NumImages, 0U);
  EXPECT_EQ(document.Header.NumTexts, 0U);
  EXPECT_STREQ(document.Header.Text.NUMI, "abc");
}

TEST_F(FileHeaderTest, NumbersAreConvertedAsTexts) {
  NitfFile document;
  ASSERT_EQ(Read(document, Plain(Layout::kNitf21).Build().Patch("FL", "   +77x00000").Patch("HL", " 42   ")),
            SUCCESS);
  EXPECT_EQ(document.Header.FlValue, 77U);
  EXPECT_EQ(document.Header.HlRead, 42U);
}

// ---- Sentinels: without a streaming header, one of them ends the open with ERR_INVALID_PARAMETER ----

struct Sentinel {
  const char* field;
  const char* text;
  bool streams;
  Layout layout = Layout::kNitf21;
};

TEST_F(FileHeaderTest, EightSentinelsAndNoOthers) {
  const Sentinel kCases[] = {
      {"FL", "999999999999", true},
      {"FL", "999999999998", false},
      {"FL", "99999999999 ", false},
      {"HL", "999999", false},  // five bytes are compared with four nines and a NUL
      {"HL", "9999  ", false},
      {"LISH[1]", "999999", true},
      {"LISH[1]", "099999", false},
      {"LI[0]", "9999999999", true},
      {"LI[0]", "9999999998", false},
      {"LSSH[1]", "9999", true},
      {"LS[1]", "999999", false},
      {"LTSH[0]", "9999", true},
      {"LT[0]", "99999", false},
      {"LDSH[1]", "9999", true},
      {"LD[0]", "999999999", true},
      {"LRESH[0]", "9999", false},
      {"LRE[0]", "9999999", false},
      {"LLSH[0]", "9999", false, Layout::kNitf20},
      {"LL[0]", "999", false, Layout::kNitf20},
      {"LDSH[0]", "9999", true, Layout::kNitf20},
  };
  for (const Sentinel& sentinel : kCases) {
    NtfBuilder builder = FullFile(sentinel.layout);
    builder.header[sentinel.field] = sentinel.text;
    NitfFile document;
    document.IsNitf20 = sentinel.layout == Layout::kNitf20;
    EXPECT_EQ(Read(document, builder.Build()), sentinel.streams ? ERR_INVALID_PARAMETER : SUCCESS)
        << sentinel.field << " " << sentinel.text;
    EXPECT_EQ(document.StreamLoaded, 0U);
  }
}

// A wrong field further on is found first: the search starts when the whole header has been read.
TEST_F(FileHeaderTest, SentinelIsFollowedAtTheHeadersEnd) {
  NitfFile document;
  EXPECT_EQ(Read(document, Plain(Layout::kNitf21).Build().Patch("FL", "999999999999").Patch("NUMX", "001")),
            ERR_FILE_FORMAT);
}

TEST_F(FileHeaderTest, NoFileIsAShortRead) {
  NitfFile document;
  tavi::StrmFHdr stream;
  EXPECT_EQ(tavi::ReadFileHeader(document.Header, document, stream, 0), ERR_FILE_READ);
}

}  // namespace

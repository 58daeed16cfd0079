// The label subheader, of the 2.0 layout alone: its table, a new record, and reading it.
#include "LbSubHdr.h"

#include <gtest/gtest.h>

#include <new>

#include "HeaderFacts.h"
#include "UnitTest.h"

namespace {

using tavi::Layout;
using tavi::LbSubHdr;
using tavi_test::BuiltFile;
using tavi_test::Bytes;
using tavi_test::LabelSpec;
using tavi_test::NtfBuilder;
using namespace unit;

#define F(...) FACT(LbSubHdr::Texts, __VA_ARGS__)
// One layout: both columns are the same.
constexpr FieldFact kFacts[] = {
    F(LA, 2, 2, Fill::kZero, "LA"),
    F(LID, 10, 10),
    F(LSCLAS, 1, 1, Fill::kZero, "U"),
    F(LSCODE, 40, 40, Fill::kBlank),
    F(LSCTLH, 40, 40, Fill::kBlank),
    F(LSREL, 40, 40, Fill::kBlank),
    F(LSCAUT, 20, 20, Fill::kBlank),
    F(LSCTLN, 20, 20, Fill::kBlank),
    F(LSDWNG, 6, 6, Fill::kBlank),
    F(LSDEVT, 40, 40, Fill::kBlank),
    F(ENCRYP, 1, 1),
    F(LFS, 1, 1, Fill::kBlank),
    F(LCW, 2, 2),
    F(LCH, 2, 2),
    F(LDLVL, 3, 3, Fill::kZero, "000"),
    F(LALVL, 3, 3),
    F(LLOC, 10, 10, Fill::kZero, "0000000000"),
    F(LTC, 3, 3, Fill::kZero, "\x01\x01\x01"),
    F(LBC, 3, 3, Fill::kZero, "\xFF\xFF\xFF"),
    F(LXSHDL, 5, 5),
    F(LXSOFL, 3, 3),
    FACT_WITHOUT_BUFFER("LXSHD", kByLength, kByLength),
};
#undef F

struct LabelRead {
  NitfFile document;
  LbSubHdr record{&document};
  int32_t status = 0;
};

class LbSubHdrTest : public UnitTest {
 protected:
  static BuiltFile FileOf(LabelSpec label) {
    NtfBuilder builder;
    builder.layout = tavi_test::Layout::kNitf20;
    builder.labels = {std::move(label)};
    return builder.Build();
  }
  void Read(LabelRead& read, const BuiltFile& file) {
    read.document.IsNitf20 = 1;
    Attach(read.document, file);
    MoveTo(read.document, file.At("label[0].subheader"));
    read.status = tavi::ReadLabelSubHeader(read.record, read.document);
  }
  static LabelSpec Full() {
    static const char* const kFree[] = {"LID",    "LSCODE", "LSCTLH", "LSREL", "LSCAUT",
                                        "LSCTLN", "ENCRYP", "LFS",    "LXSOFL"};
    LabelSpec label;
    for (const char* name : kFree) {
      for (const FieldFact& fact : kFacts) {
        if (std::string_view(fact.name) == name) label.fields[name] = DistinctText(name, fact.width20);
      }
    }
    label.fields["LSCLAS"] = "C";
    label.fields["LSDWNG"] = "999998";
    label.fields["LSDEVT"] = DistinctText("LSDEVT", 40);
    label.fields["LCW"] = "12";
    label.fields["LCH"] = "34";
    label.ldlvl = 567;
    label.lalvl = 890;
    label.row = -123;
    label.column = 45678;
    label.ltc = {0x12, 0x00, 0xF6};
    label.lbc = {0xA0, 0xB1, 0x0C};
    label.lxshd = tavi_test::Tre("ONE", "x");
    return label;
  }
};

TEST_F(LbSubHdrTest, FieldsStandInFileOrderWithTheirWidths) {
  EXPECT_EQ(Sequence(tavi::LabelRows(), Layout::kNitf20), Sequence(kFacts, Layout::kNitf20));
}

TEST_F(LbSubHdrTest, BuffersHoldTheirWidthAndOneByte) {
  ExpectBufferSizes(kFacts);
  ExpectNoOtherBuffers(kFacts, sizeof(LbSubHdr::Texts));
}

TEST_F(LbSubHdrTest, NewRecordHoldsTheDefaults) {
  alignas(LbSubHdr) unsigned char memory[sizeof(LbSubHdr)];
  std::memset(memory, 0x5A, sizeof memory);
  NitfFile document;
  auto* record = new (memory) LbSubHdr(&document);
  const LbSubHdr& r = *record;
  EXPECT_EQ(Differences(kFacts, DefaultTexts(kFacts, sizeof r.Text), BytesOf(r.Text)), "");
  EXPECT_EQ(r.TextColour, 0U) << "unlike the raw bytes of LTC";
  EXPECT_EQ(r.BackgroundColour, 0xFFFFFFU);
  for (const uint32_t zero :
       {r.LabelDataInMemory, r.DisplayLevel, r.AttachmentLevel, r.ExtendedTreCount, r.SegmentIndex}) {
    EXPECT_EQ(zero, 0U);
  }
  EXPECT_EQ(r.LocationRow, 0);
  EXPECT_EQ(r.LocationColumn, 0);
  EXPECT_FALSE(r.LabelDataBuffer.exists() || r.ExtendedTre.exists());
  EXPECT_EQ(r.ExtendedTreView, nullptr);
  EXPECT_EQ(r.Owner, &document);
  record->~LbSubHdr();
}

TEST_F(LbSubHdrTest, EveryTextLandsTerminatedInItsBufferAndTouchesNothingElse) {
  const BuiltFile file = FileOf(Full());
  for (const bool rubbish : {false, true}) {
    LabelRead read;
    if (rubbish) std::memset(&read.record.Text, 0x5E, sizeof read.record.Text);
    const std::string before = BytesOf(read.record.Text);
    Read(read, file);
    ASSERT_EQ(read.status, SUCCESS);
    EXPECT_EQ(Differences(kFacts, TextsAfterReading(before, kFacts, Layout::kNitf20, file, "label[0]."),
                          BytesOf(read.record.Text)),
              "");
    EXPECT_EQ(Position(read.document), static_cast<int64_t>(file.At("label[0].subheader").offset));
  }
}

TEST_F(LbSubHdrTest, NumbersStandBesideTheirTexts) {
  LabelRead read;
  Read(read, FileOf(Full()));
  const LbSubHdr& r = read.record;
  ASSERT_EQ(read.status, SUCCESS);
  EXPECT_EQ(r.SignatureSeen, 1U);
  EXPECT_EQ(r.CellWidth, 12U);
  EXPECT_EQ(r.CellHeight, 34U);
  EXPECT_EQ(r.DisplayLevel, 567U);
  EXPECT_EQ(r.AttachmentLevel, 890U);
  EXPECT_EQ(r.LocationRow, -123);
  EXPECT_EQ(r.LocationColumn, 45678);
  EXPECT_EQ(r.TextColour, 0xF60012U) << "first byte red, in the lowest place";
  EXPECT_EQ(r.BackgroundColour, 0x0CB1A0U);
  EXPECT_EQ(r.ExtendedTreCount, 1U);
  EXPECT_EQ(r.ExtendedTreView, r.ExtendedTre.data());
  EXPECT_STREQ(reinterpret_cast<const char*>(r.ExtendedTre.data()), "ONE   00001x");
}

// Other locations replace a leading sign by a zero; here each half is converted as it stands.
TEST_F(LbSubHdrTest, LocationHalvesAreConvertedPlainly) {
  struct {
    const char* text;
    int32_t row;
    int32_t column;
  } const kCases[] = {{"-0012-0034", -12, -34}, {"-    -   1", 0, 0}, {"--012+0034", 0, 34},
                      {"   -7    8", -7, 8},    {"- 12 00-12", 0, 0}, {"9999999999", 99999, 99999}};
  for (const auto& c : kCases) {
    LabelSpec label;
    label.fields["LLOC"] = c.text;
    LabelRead read;
    Read(read, FileOf(label));
    EXPECT_EQ(read.record.LocationRow, c.row) << c.text;
    EXPECT_EQ(read.record.LocationColumn, c.column) << c.text;
  }
}

TEST_F(LbSubHdrTest, FileThatEndsInsideAnyFieldIsAShortRead) {
  const BuiltFile whole = FileOf(Full());
  for (const std::string& name : whole.order) {
    if (!name.starts_with("label[0].") || name == "label[0].content") continue;
    BuiltFile cut = whole;
    cut.Truncate(name, whole.At(name).length - 1);
    LabelRead read;
    Read(read, cut);
    ASSERT_EQ(read.status, ERR_FILE_READ) << name;
  }
}

TEST_F(LbSubHdrTest, SignatureAndClassAreChecked) {
  struct {
    const char* field;
    const char* text;
    int32_t status;
  } const kCases[] = {
      {"LA", "LB", ERR_FILE_FORMAT},    {"LA", "la", ERR_FILE_FORMAT},    {"LSCLAS", "C", SUCCESS},
      {"LSCLAS", "R", SUCCESS},         {"LSCLAS", "S", SUCCESS},         {"LSCLAS", "T", SUCCESS},
      {"LSCLAS", "U", SUCCESS},         {"LSCLAS", "V", ERR_FILE_FORMAT}, {"LSCLAS", "Q", ERR_FILE_FORMAT},
      {"LSCLAS", " ", ERR_FILE_FORMAT}, {"LSCLAS", "u", ERR_FILE_FORMAT}, {"LFS", "?", SUCCESS},
      {"ENCRYP", "1", SUCCESS}};
  for (const auto& c : kCases) {
    LabelSpec label;
    label.fields[c.field] = c.text;
    LabelRead read;
    Read(read, FileOf(label));
    EXPECT_EQ(read.status, c.status) << c.field << " " << c.text;
  }
}

TEST_F(LbSubHdrTest, DowngradingEventIsThereForOneText) {
  for (const char* text : {"999998", "999997", "99999 ", "999999"}) {
    LabelSpec label;
    label.fields["LSDWNG"] = text;
    const bool event = std::string(text) == "999998";
    if (event) label.fields["LSDEVT"] = DistinctText("LSDEVT", 40);
    LabelRead read;
    Read(read, FileOf(label));
    ASSERT_EQ(read.status, SUCCESS) << text;
    EXPECT_EQ(read.record.Text.LSDEVT, event ? DistinctText("LSDEVT", 40) : std::string(40, ' '));
    EXPECT_STREQ(read.record.Text.LXSHDL, "00000") << "what follows is in step";
  }
}

TEST_F(LbSubHdrTest, ExtendedLengths) {
  LabelSpec empty;
  empty.lxshd = Bytes{};
  LabelRead read;
  Read(read, FileOf(empty));
  ASSERT_EQ(read.status, SUCCESS);
  ASSERT_EQ(read.record.ExtendedTre.size(), 1U);
  EXPECT_EQ(read.record.ExtendedTreCount, 0U);
  for (const char* length : {"00001", "00002", "99999", "-0004"}) {
    LabelSpec label;
    label.lxshd = Bytes(20, 'x');
    label.data = Bytes(20, 'y');
    label.fields["LXSHDL"] = length;
    LabelRead refused;
    Read(refused, FileOf(label));
    EXPECT_EQ(refused.status, ERR_FILE_READ) << length;
  }
}

}  // namespace

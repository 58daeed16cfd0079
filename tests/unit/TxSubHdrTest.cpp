// The text subheader: its table, a new record, its setters, and reading it in both layouts.
#include "TxSubHdr.h"

#include <gtest/gtest.h>

#include <new>

#include "HeaderFacts.h"
#include "UnitTest.h"

namespace {

using tavi::Layout;
using tavi::TxSubHdr;
using tavi_test::BuiltFile;
using tavi_test::Bytes;
using tavi_test::NtfBuilder;
using tavi_test::TextSpec;
using namespace unit;

#define F(...) FACT(TxSubHdr::Texts, __VA_ARGS__)
constexpr FieldFact kFacts[] = {
    F(TE, 2, 2, Fill::kZero, "TE", 2),
    F(TEXTID, 7, 10, Fill::kZero, "ID        ", 10),
    F(TXTALVL, 3, kNone),
    F(TXTDT, 14, 14, Fill::kBlank),
    F(TXTITL, 80, 80, Fill::kBlank, "", 80),
    F(TSCLAS, 1, 1, Fill::kZero, "U", 1),
    F(TSCLSY, 2, kNone, Fill::kBlank, "", 2),
    F(TSCODE, 11, 40, Fill::kBlank, "", 40),
    F(TSCTLH, 2, 40, Fill::kBlank, "", 40),
    F(TSREL, 20, 40, Fill::kBlank, "", 40),
    F(TSDCTP, 2, kNone, Fill::kBlank, "", 2),
    F(TSDCDT, 8, kNone, Fill::kBlank),
    F(TSDCXM, 4, kNone, Fill::kBlank, "", 4),
    F(TSDG, 1, kNone, Fill::kBlank, "", 1),
    F(TSDGDT, 8, kNone, Fill::kBlank),
    F(TSCLTX, 43, kNone, Fill::kBlank, "", 43),
    F(TSCATP, 1, kNone, Fill::kBlank, "", 1),
    F(TSCAUT, 40, 20, Fill::kBlank, "", 40),
    F(TSCRSN, 1, kNone, Fill::kBlank, "", 1),
    F(TSSRDT, 8, kNone, Fill::kBlank),
    F(TSCTLN, 15, 20, Fill::kBlank, "", 20),
    F(TSDWNG, kNone, 6),
    F(TSDEVT, kNone, 40),
    F(ENCRYP, 1, 1),
    F(TXTFMT, 3, 3, Fill::kZero, "STA", 3),
    F(TXSHDL, 5, 5),
    F(TXSOFL, 3, 3),
    FACT_WITHOUT_BUFFER("TXSHD", kByLength, kByLength),
};
#undef F

struct TextRead {
  NitfFile document;
  TxSubHdr record{&document};
  int32_t status = 0;
};

class TxSubHdrRecordTest : public UnitTest {};

TEST_F(TxSubHdrRecordTest, BuffersHoldTheLargerWidthAndOneByte) {
  ExpectBufferSizes(kFacts);
  ExpectNoOtherBuffers(kFacts, sizeof(TxSubHdr::Texts));
}

TEST_F(TxSubHdrRecordTest, SettersTakeTheWholeBufferAndNoMore) {
  TxSubHdr record(nullptr);
  ExpectSetters(kFacts, record, tavi::TextRows());
  EXPECT_EQ(PublicTexts(tavi::text::kMembers), FieldsWithASetter(kFacts));
}

TEST_F(TxSubHdrRecordTest, NewRecordHoldsTheDefaults) {
  alignas(TxSubHdr) unsigned char memory[sizeof(TxSubHdr)];
  std::memset(memory, 0x5A, sizeof memory);
  NitfFile document;
  auto* record = new (memory) TxSubHdr(&document);
  const TxSubHdr& r = *record;
  EXPECT_EQ(Differences(kFacts, DefaultTexts(kFacts, sizeof r.Text), BytesOf(r.Text)), "");
  for (const uint32_t zero :
       {r.TextDataInMemory, r.SignatureSeen, r.AttachmentLevel, r.ExtendedTreCount, r.SegmentIndex}) {
    EXPECT_EQ(zero, 0U);
  }
  EXPECT_FALSE(r.TextDataBuffer.exists() || r.ExtendedTre.exists());
  EXPECT_EQ(r.ExtendedTreView, nullptr);
  EXPECT_EQ(r.Owner, &document);
  record->~TxSubHdr();
}

class TxSubHdrTest : public UnitTest, public testing::WithParamInterface<Layout> {
 protected:
  static bool Is20() { return GetParam() == Layout::kNitf20; }
  static BuiltFile FileOf(TextSpec text) {
    NtfBuilder builder;
    builder.layout = Is20() ? tavi_test::Layout::kNitf20 : tavi_test::Layout::kNitf21;
    builder.texts = {std::move(text)};
    return builder.Build();
  }
  void Read(TextRead& read, const BuiltFile& file) {
    read.document.IsNitf20 = Is20();
    Attach(read.document, file);
    MoveTo(read.document, file.At("text[0].subheader"));
    read.status = tavi::ReadTextSubHeader(read.record, read.document);
  }
  static TextSpec Full() {
    static const char* const kFree[] = {"TEXTID", "TXTDT",  "TXTITL", "TSCLSY", "TSCODE", "TSCTLH",
                                        "TSREL",  "TSDCTP", "TSDCDT", "TSDCXM", "TSDG",   "TSDGDT",
                                        "TSCLTX", "TSCATP", "TSCAUT", "TSCRSN", "TSSRDT", "TSCTLN",
                                        "TSCLAS", "ENCRYP", "TXTFMT", "TXSOFL"};
    TextSpec text;
    for (const char* name : kFree) {
      for (const FieldFact& fact : kFacts) {
        if (std::string_view(fact.name) != name || fact.Width(GetParam()) == kNone) continue;
        text.fields[name] = DistinctText(name, fact.Width(GetParam()));
      }
    }
    if (Is20()) {
      text.fields["TSDWNG"] = "999998";
      text.fields["TSDEVT"] = DistinctText("TSDEVT", 40);
    }
    text.txtalvl = 789;
    text.txshd = tavi_test::Tre("ONE", "x");
    return text;
  }
};
INSTANTIATE_TEST_SUITE_P(Both, TxSubHdrTest, testing::Values(Layout::kNitf21, Layout::kNitf20),
                         [](const auto& layout) {
                           return layout.param == Layout::kNitf20 ? "Nitf20" : "Nitf21";
                         });

TEST_P(TxSubHdrTest, FieldsStandInFileOrderWithTheirWidths) {
  EXPECT_EQ(Sequence(tavi::TextRows(), GetParam()), Sequence(kFacts, GetParam()));
}

TEST_P(TxSubHdrTest, SubheaderIs282BytesUpToTheExtendedLength) {
  const BuiltFile file = FileOf({});
  EXPECT_EQ(file.At("text[0].subheader").length, 282U);
  TextRead read;
  Read(read, file);
  EXPECT_EQ(read.status, SUCCESS);
}

TEST_P(TxSubHdrTest, EveryTextLandsTerminatedInItsBufferAndTouchesNothingElse) {
  const BuiltFile file = FileOf(Full());
  for (const bool rubbish : {false, true}) {
    TextRead read;
    if (rubbish) std::memset(&read.record.Text, 0x5E, sizeof read.record.Text);
    const std::string before = BytesOf(read.record.Text);
    Read(read, file);
    ASSERT_EQ(read.status, SUCCESS);
    EXPECT_EQ(Differences(kFacts, TextsAfterReading(before, kFacts, GetParam(), file, "text[0]."),
                          BytesOf(read.record.Text)),
              "");
    EXPECT_EQ(Position(read.document), static_cast<int64_t>(file.At("text[0].subheader").offset));
  }
}

TEST_P(TxSubHdrTest, NumbersAndExtendedData) {
  TextRead read;
  Read(read, FileOf(Full()));
  ASSERT_EQ(read.status, SUCCESS);
  EXPECT_EQ(read.record.SignatureSeen, 1U);
  EXPECT_EQ(read.record.AttachmentLevel, Is20() ? 0U : 789U);
  EXPECT_EQ(read.record.ExtendedTreCount, 1U);
  EXPECT_EQ(read.record.ExtendedTreView, read.record.ExtendedTre.data());
  EXPECT_STREQ(reinterpret_cast<const char*>(read.record.ExtendedTre.data()), "ONE   00001x");
}

TEST_P(TxSubHdrTest, FileThatEndsInsideAnyFieldIsAShortRead) {
  const BuiltFile whole = FileOf(Full());
  for (const std::string& name : whole.order) {
    if (!name.starts_with("text[0].") || name == "text[0].content") continue;
    BuiltFile cut = whole;
    cut.Truncate(name, whole.At(name).length - 1);
    TextRead read;
    Read(read, cut);
    ASSERT_EQ(read.status, ERR_FILE_READ) << name;
  }
}

TEST_P(TxSubHdrTest, SignatureIsTheOnlyThingChecked) {
  TextSpec text;
  text.fields["TE"] = "TX";
  TextRead refused;
  Read(refused, FileOf(text));
  EXPECT_EQ(refused.status, ERR_FILE_FORMAT);
  EXPECT_EQ(refused.record.SignatureSeen, 0U);
  for (const char* field : {"TSCLAS", "TXTFMT", "ENCRYP", "TXTDT"}) {
    text = {};
    text.fields[field] = "?";
    TextRead read;
    Read(read, FileOf(text));
    EXPECT_EQ(read.status, SUCCESS) << field;
  }
}

TEST_P(TxSubHdrTest, ExtendedLengthOfThreeKeepsAnEmptyBlock) {
  TextSpec text;
  text.txshd = Bytes{};
  TextRead read;
  Read(read, FileOf(text));
  ASSERT_EQ(read.status, SUCCESS);
  ASSERT_EQ(read.record.ExtendedTre.size(), 1U);
  EXPECT_EQ(read.record.ExtendedTre[0], 0);
  EXPECT_EQ(read.record.ExtendedTreCount, 0U);
}

TEST_P(TxSubHdrTest, ExtendedLengthThatDoesNotFitIsAShortRead) {
  for (const char* length : {"00001", "00002", "99999", "-0004"}) {
    TextSpec text;
    text.txshd = Bytes(20, 'x');
    text.data = Bytes(20, 'y');
    text.fields["TXSHDL"] = length;
    TextRead read;
    Read(read, FileOf(text));
    EXPECT_EQ(read.status, ERR_FILE_READ) << length;
  }
}

TEST_P(TxSubHdrTest, DowngradingEventIsThereForOneTextIn20) {
  for (const char* downgrade : {"999998", "999997", "99999 "}) {
    TextSpec text;
    TextRead read;
    const bool event = Is20() && std::string(downgrade) == "999998";
    if (Is20()) text.fields["TSDWNG"] = downgrade;
    if (event) text.fields["TSDEVT"] = DistinctText("TSDEVT", 40);
    if (!Is20()) std::memcpy(read.record.Text.TSDWNG, "999998", 7);  // of no meaning in this layout
    std::memset(read.record.Text.TSDEVT, 0, sizeof read.record.Text.TSDEVT);
    Read(read, FileOf(text));
    ASSERT_EQ(read.status, SUCCESS);
    EXPECT_EQ(read.record.Text.TSDEVT, event ? DistinctText("TSDEVT", 40) : "");
    EXPECT_STREQ(read.record.Text.TXSHDL, "00000") << "what follows is in step";
  }
}

}  // namespace

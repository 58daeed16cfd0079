// The data extension subheader: its table, a new record, and the rules of reading it.
#include "DExSbHdr.h"

#include <gtest/gtest.h>

#include <new>

#include "HeaderFacts.h"
#include "UnitTest.h"

namespace {

using tavi::DExSbHdr;
using tavi::Layout;
using tavi_test::BuiltFile;
using tavi_test::Bytes;
using tavi_test::DataExtensionSpec;
using tavi_test::NtfBuilder;
using namespace unit;

#define F(...) FACT(DExSbHdr::Texts, __VA_ARGS__)
constexpr FieldFact kFacts[] = {
    F(DE, 2, 2),
    F(DESID, 25, 25),
    F(DESVER, 2, 2),
    F(DESCLAS, 1, 1),
    F(DESCLSY, 2, kNone),
    F(DESCODE, 11, 40),
    F(DESCTLH, 2, 40),
    F(DESREL, 20, 40),
    F(DESDCTP, 2, kNone),
    F(DESDCDT, 8, kNone),
    F(DESDCXM, 4, kNone),
    F(DESDG, 1, kNone),
    F(DESDGDT, 8, kNone),
    F(DESCLTX, 43, kNone),
    F(DESCATP, 1, kNone),
    F(DESCAUT, 40, 20),
    F(DESCRSN, 1, kNone),
    F(DESSRDT, 8, kNone),
    F(DESCTLN, 15, 20),
    F(DESDWNG, kNone, 6),
    F(DESDEVT, kNone, 40),
    F(DESOFLW, 6, 6),
    F(DESITEM, 3, 3),
    F(DESSHL, 4, 4),
    FACT_WITHOUT_BUFFER("DESSHF", kByLength, kByLength),
};
#undef F

struct ExtensionRead {
  NitfFile document;
  DExSbHdr record;
  int32_t status = 0;
};

class DExSbHdrTest : public UnitTest, public testing::WithParamInterface<Layout> {
 protected:
  static bool Is20() { return GetParam() == Layout::kNitf20; }
  static BuiltFile FileOf(DataExtensionSpec extension) {
    NtfBuilder builder;
    builder.layout = Is20() ? tavi_test::Layout::kNitf20 : tavi_test::Layout::kNitf21;
    builder.data_extensions = {std::move(extension)};
    return builder.Build();
  }
  void Read(ExtensionRead& read, const BuiltFile& file) {
    read.document.IsNitf20 = Is20();
    Attach(read.document, file);
    MoveTo(read.document, file.At("des[0].subheader"));
    read.status = tavi::ReadDataExtensionSubHeader(read.record, read.document, 0);
  }
  int32_t StatusWith(const char* field, const std::string& text) {
    DataExtensionSpec extension;
    extension.fields[field] = text;
    ExtensionRead read;
    Read(read, FileOf(extension));
    return read.status;
  }
  static DataExtensionSpec Full() {
    static const char* const kFree[] = {"DESCLSY", "DESCODE", "DESCTLH", "DESREL",  "DESDCTP",
                                        "DESDCDT", "DESDCXM", "DESDG",   "DESDGDT", "DESCLTX",
                                        "DESCATP", "DESCAUT", "DESCRSN", "DESSRDT", "DESCTLN",
                                        "DESDWNG", "DESDEVT", "DESOFLW", "DESITEM"};
    DataExtensionSpec extension;
    for (const char* name : kFree) {
      for (const FieldFact& fact : kFacts) {
        if (std::string_view(fact.name) != name || fact.Width(GetParam()) == kNone) continue;
        extension.fields[name] = DistinctText(name, fact.Width(GetParam()));
      }
    }
    extension.fields["DESVER"] = "73";
    extension.fields["DESCLAS"] = "T";
    extension.desshf = ToBytes("user part");
    return extension;
  }
};
INSTANTIATE_TEST_SUITE_P(Both, DExSbHdrTest, testing::Values(Layout::kNitf21, Layout::kNitf20),
                         [](const auto& layout) {
                           return layout.param == Layout::kNitf20 ? "Nitf20" : "Nitf21";
                         });

TEST_P(DExSbHdrTest, FieldsStandInFileOrderWithTheirWidths) {
  EXPECT_EQ(Sequence(tavi::DataExtensionRows(), GetParam()), Sequence(kFacts, GetParam()));
}

class DExSbHdrRecordTest : public UnitTest {};

TEST_F(DExSbHdrRecordTest, BuffersHoldTheLargerWidthAndOneByte) {
  ExpectBufferSizes(kFacts);
  ExpectNoOtherBuffers(kFacts, sizeof(DExSbHdr::Texts));
}

TEST_F(DExSbHdrRecordTest, NewRecordIsEmpty) {
  alignas(DExSbHdr) unsigned char memory[sizeof(DExSbHdr)];
  std::memset(memory, 0x5A, sizeof memory);
  auto* record = new (memory) DExSbHdr;
  EXPECT_EQ(BytesOf(record->Text), std::string(sizeof record->Text, '\0'));
  EXPECT_EQ(record->SignatureSeen, 0U);
  EXPECT_FALSE(record->UserSubheader.exists());
  record->~DExSbHdr();
}

TEST_P(DExSbHdrTest, EveryTextLandsTerminatedInItsBufferAndTouchesNothingElse) {
  const BuiltFile file = FileOf(Full());
  for (const bool rubbish : {false, true}) {
    ExtensionRead read;
    if (rubbish) std::memset(&read.record.Text, 0x5E, sizeof read.record.Text);
    const std::string before = BytesOf(read.record.Text);
    Read(read, file);
    ASSERT_EQ(read.status, SUCCESS);
    EXPECT_EQ(Differences(kFacts, TextsAfterReading(before, kFacts, GetParam(), file, "des[0]."),
                          BytesOf(read.record.Text)),
              "");
    EXPECT_EQ(read.record.SignatureSeen, 1U);
    EXPECT_EQ(Position(read.document), static_cast<int64_t>(file.At("des[0].subheader").offset));
  }
}

TEST_P(DExSbHdrTest, UserPartIsKeptAndTerminated) {
  ExtensionRead read;
  Read(read, FileOf(Full()));
  ASSERT_EQ(read.record.UserSubheader.size(), 10U);
  EXPECT_STREQ(reinterpret_cast<const char*>(read.record.UserSubheader.data()), "user part");
  ExtensionRead none;
  Read(none, FileOf({}));
  EXPECT_EQ(none.status, SUCCESS);
  EXPECT_FALSE(none.record.UserSubheader.exists());
}

TEST_P(DExSbHdrTest, FileThatEndsInsideAnyFieldIsAShortRead) {
  const BuiltFile whole = FileOf(Full());
  for (const std::string& name : whole.order) {
    if (!name.starts_with("des[0].") || name == "des[0].content") continue;
    BuiltFile cut = whole;
    cut.Truncate(name, whole.At(name).length - 1);
    ExtensionRead read;
    Read(read, cut);
    ASSERT_EQ(read.status, ERR_FILE_READ) << name;
  }
}

TEST_P(DExSbHdrTest, SignatureIsChecked) {
  EXPECT_EQ(StatusWith("DE", "RE"), ERR_FILE_FORMAT);
  EXPECT_EQ(StatusWith("DE", "de"), ERR_FILE_FORMAT);
}

TEST_P(DExSbHdrTest, ClassIsCheckedIn21Alone) {
  for (const char c : std::string("CRSTU")) EXPECT_EQ(StatusWith("DESCLAS", {c}), SUCCESS) << c;
  for (const char c : std::string("BDQVu |")) {
    EXPECT_EQ(StatusWith("DESCLAS", {c}), Is20() ? SUCCESS : ERR_FILE_FORMAT) << c;
  }
}

// As an unsigned number: a negative version counts as above 99.
TEST_P(DExSbHdrTest, VersionMustNotExceed99) {
  for (const char* text : {"00", "01", "99", "  ", "ab", "+7", "-0"})
    EXPECT_EQ(StatusWith("DESVER", text), SUCCESS) << text;
  for (const char* text : {"-1", "-9"}) EXPECT_EQ(StatusWith("DESVER", text), ERR_FILE_FORMAT) << text;
}

// ---- The overflow fields ----

TEST_P(DExSbHdrTest, OverflowSegmentHoldsItsFieldsAsRead) {
  DataExtensionSpec extension;
  extension.fields["DESOFLW"] = "IXSHD ";
  extension.fields["DESITEM"] = "001";
  extension.data = tavi_test::Tre("TRE", "123");
  ExtensionRead read;
  Read(read, FileOf(extension));
  ASSERT_EQ(read.status, SUCCESS);
  EXPECT_STREQ(read.record.Text.DESID, "TRE_OVERFLOW             ");
  EXPECT_STREQ(read.record.Text.DESOFLW, "IXSHD ");
  EXPECT_STREQ(read.record.Text.DESITEM, "001");
  EXPECT_STREQ(read.record.Text.DESSHL, "0000");
  EXPECT_FALSE(read.record.UserSubheader.exists());
}

// The comparison includes the NUL behind the twelve letters: only that skips the fields.
TEST_P(DExSbHdrTest, FieldsAreSkippedForANulRightBehindTheName) {
  DataExtensionSpec extension;
  extension.fields["DESID"] = std::string("TRE_OVERFLOW\0abcdefghijkl", 25);
  extension.overflow_fields = false;
  extension.desshf = ToBytes("xyz");
  ExtensionRead read;
  Read(read, FileOf(extension));
  ASSERT_EQ(read.status, SUCCESS);
  EXPECT_STREQ(read.record.Text.DESOFLW, "");
  EXPECT_STREQ(read.record.Text.DESITEM, "");
  EXPECT_STREQ(read.record.Text.DESSHL, "0003");
  EXPECT_STREQ(reinterpret_cast<const char*>(read.record.UserSubheader.data()), "xyz");
}

TEST_P(DExSbHdrTest, NamesThatDifferInOneCharacterHaveTheFields) {
  for (const std::string& name : {std::string("TRE_OVERFLOX"), std::string("TRE_OVERFLO"),
                                  std::string("tre_overflow"), std::string("TRE_OVERFLOWS")}) {
    DataExtensionSpec extension;
    extension.fields["DESID"] = name;
    extension.overflow_fields = true;
    extension.fields["DESOFLW"] = "abcdef";
    ExtensionRead read;
    Read(read, FileOf(extension));
    ASSERT_EQ(read.status, SUCCESS);
    EXPECT_STREQ(read.record.Text.DESOFLW, "abcdef") << name;
  }
}

// Another kind has no such fields: nine bytes of what is DESSHL and data are taken for them, and the next
// four for DESSHL.
TEST_P(DExSbHdrTest, OtherKindIsMisread) {
  DataExtensionSpec extension;
  extension.desid = "OTHER";
  extension.data = ToBytes("abcdefghijklm");
  ExtensionRead read;
  Read(read, FileOf(extension));
  ASSERT_EQ(read.status, SUCCESS);
  EXPECT_STREQ(read.record.Text.DESOFLW, "0000ab");
  EXPECT_STREQ(read.record.Text.DESITEM, "cde");
  EXPECT_STREQ(read.record.Text.DESSHL, "fghi");
  EXPECT_FALSE(read.record.UserSubheader.exists());
}

TEST_P(DExSbHdrTest, MisreadDigitsConsumeThatManyBytes) {
  DataExtensionSpec extension;
  extension.desid = "OTHER";
  extension.data = ToBytes("abcde0004wxyz!");
  ExtensionRead read;
  Read(read, FileOf(extension));
  ASSERT_EQ(read.status, SUCCESS);
  EXPECT_STREQ(read.record.Text.DESSHL, "0004");
  ASSERT_TRUE(read.record.UserSubheader.exists());
  EXPECT_STREQ(reinterpret_cast<const char*>(read.record.UserSubheader.data()), "wxyz");
}

TEST_P(DExSbHdrTest, FileTooShortForTheMisreadLengthIsAShortRead) {
  for (const char* data : {"abcde0005wxyz", "abcde9999", "abcde-001zzzz", "abcde000", ""}) {
    DataExtensionSpec extension;
    extension.desid = "OTHER";
    extension.data = ToBytes(data);
    ExtensionRead read;
    Read(read, FileOf(extension));
    EXPECT_EQ(read.status, ERR_FILE_READ) << data;
  }
}

// Unlike all other subheaders, the event is there whatever the downgrade text is.
TEST_P(DExSbHdrTest, DowngradingEventIsAlwaysThereIn20) {
  if (!Is20()) {
    ExtensionRead read;
    Read(read, FileOf({}));
    EXPECT_STREQ(read.record.Text.DESDEVT, "");
    return;
  }
  for (const char* text : {"999998", "999999", "      "}) {
    DataExtensionSpec extension;
    extension.fields["DESDWNG"] = text;
    extension.fields["DESDEVT"] = DistinctText("DESDEVT", 40);
    ExtensionRead read;
    Read(read, FileOf(extension));
    ASSERT_EQ(read.status, SUCCESS);
    EXPECT_STREQ(read.record.Text.DESDEVT, DistinctText("DESDEVT", 40).c_str());
    EXPECT_STREQ(read.record.Text.DESSHL, "0000") << "what follows is in step";
  }
}

// The document is refused for it, although nothing else depends on it.
TEST_F(DExSbHdrRecordTest, OneBadDataExtensionRefusesTheFile) {
  NtfBuilder builder;
  builder.data_extensions.resize(2);
  builder.data_extensions[1].fields["DESVER"] = "-1";
  NitfFile document;
  EXPECT_EQ(tavi::OpenNitfFile(document, builder.Build().Write(directory()).c_str()), ERR_FILE_FORMAT);
}

}  // namespace

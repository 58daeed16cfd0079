// The graphic subheader: its table, a new record, its setters, and reading it in both layouts.
#include "GrSubHdr.h"

#include <gtest/gtest.h>

#include <new>

#include "HeaderFacts.h"
#include "UnitTest.h"

namespace {

using tavi::GrSubHdr;
using tavi::Layout;
using tavi_test::BuiltFile;
using tavi_test::Bytes;
using tavi_test::GraphicSpec;
using tavi_test::NtfBuilder;
using namespace unit;

#define F(...) FACT(GrSubHdr::Texts, __VA_ARGS__)
constexpr FieldFact kFacts[] = {
    F(SY, 2, 2, Fill::kZero, "SY", 2),
    F(SID, 10, 10, Fill::kZero, "ID        ", 10),
    F(SNAME, 20, 20, Fill::kBlank, "", 20),
    F(SSCLAS, 1, 1, Fill::kZero, "U", 1),
    F(SSCLSY, 2, kNone, Fill::kBlank, "", 2),
    F(SSCODE, 11, 40, Fill::kBlank, "", 40),
    F(SSCTLH, 2, 40, Fill::kBlank, "", 40),
    F(SSREL, 20, 40, Fill::kBlank, "", 40),
    F(SSDCTP, 2, kNone, Fill::kBlank, "", 2),
    F(SSDCDT, 8, kNone, Fill::kBlank),
    F(SSDCXM, 4, kNone, Fill::kBlank, "", 4),
    F(SSDG, 1, kNone, Fill::kBlank, "", 1),
    F(SSDGDT, 8, kNone, Fill::kBlank),
    F(SSCLTX, 43, kNone, Fill::kBlank, "", 43),
    F(SSCATP, 1, kNone, Fill::kBlank, "", 1),
    F(SSCAUT, 40, 20, Fill::kBlank, "", 40),
    F(SSCRSN, 1, kNone, Fill::kBlank, "", 1),
    F(SSSRDT, 8, kNone, Fill::kBlank),
    F(SSCTLN, 15, 20, Fill::kBlank, "", 20),
    F(SSDWNG, kNone, 6, Fill::kBlank),
    F(SSDEVT, kNone, 40, Fill::kBlank),
    F(ENCRYP, 1, 1),
    F(SFMT, 1, 1, Fill::kZero, "C", 1),
    F(SSTRUCT, 13, kNone),
    F(NLIPS, kNone, 4),
    F(NPIXPL, kNone, 4),
    F(NWDTH, kNone, 4),
    F(NBPP, kNone, 1),
    F(SDLVL, 3, 3),
    F(SALVL, 3, 3),
    F(SLOC, 10, 10),
    F(SBND1, 10, kNone),
    F(SCOLOR, 1, kNone, Fill::kBlank, "", 1),
    F(SBND2, 10, 10),
    F(SCOLOR, kNone, 1, Fill::kBlank, "", 1),
    F(SNUM, kNone, 6),
    F(SROT, kNone, 3),
    F(NELUT, kNone, 3),
    F(SRES2, 2, kNone),
    F(SXSHDL, 5, 5),
    F(SXSOFL, 3, 3),
    FACT_WITHOUT_BUFFER("SXSHD", kByLength, kByLength),
};
#undef F

struct GraphicRead {
  NitfFile document;
  GrSubHdr record{&document};
  int32_t status = 0;
};

class GrSubHdrTest : public UnitTest, public testing::WithParamInterface<Layout> {
 protected:
  static bool Is20() { return GetParam() == Layout::kNitf20; }
  static NtfBuilder FileOf(GraphicSpec graphic) {
    NtfBuilder builder;
    builder.layout = Is20() ? tavi_test::Layout::kNitf20 : tavi_test::Layout::kNitf21;
    builder.graphics = {std::move(graphic)};
    return builder;
  }
  void Read(GraphicRead& read, const BuiltFile& file) {
    read.document.IsNitf20 = Is20();
    Attach(read.document, file);
    MoveTo(read.document, file.At("graphic[0].subheader"));
    read.status = tavi::ReadGraphicSubHeader(read.record, read.document);
  }
  int32_t StatusWith(const char* field, const std::string& text) {
    GraphicSpec graphic;
    graphic.fields[field] = text;
    GraphicRead read;
    Read(read, FileOf(graphic).Build());
    return read.status;
  }
  // Each free text differs from every other, each number too.
  static GraphicSpec Full() {
    static const char* const kFree[] = {"SID",    "SNAME",  "SSCLSY", "SSCODE", "SSCTLH",  "SSREL",  "SSDCTP",
                                        "SSDCDT", "SSDCXM", "SSDG",   "SSDGDT", "SSCLTX",  "SSCATP", "SSCAUT",
                                        "SSCRSN", "SSSRDT", "SSCTLN", "ENCRYP", "SSTRUCT", "NLIPS",  "NPIXPL",
                                        "NWDTH",  "SCOLOR", "SNUM",   "SROT",   "SRES2",   "SXSOFL"};
    GraphicSpec graphic;
    for (const char* name : kFree) {
      for (const FieldFact& fact : kFacts) {
        if (std::string_view(fact.name) != name || fact.Width(GetParam()) == kNone) continue;
        graphic.fields[name] = DistinctText(name, fact.Width(GetParam()));
      }
    }
    graphic.fields["SSCLAS"] = "R";
    if (Is20()) {
      graphic.fields["NBPP"] = "7";
      graphic.fields["SSDWNG"] = "999998";
      graphic.fields["SSDEVT"] = DistinctText("SSDEVT", 40);
    }
    graphic.sfmt = 'B';
    graphic.sdlvl = 123;
    graphic.salvl = 456;
    graphic.row = -12;
    graphic.column = 34567;
    graphic.bound1_row = 11;
    graphic.bound1_column = -22;
    graphic.bound2_row = -3333;
    graphic.bound2_column = 44444;
    graphic.sxshd = tavi_test::Tre("ONE", "x");
    return graphic;
  }
};
INSTANTIATE_TEST_SUITE_P(Both, GrSubHdrTest, testing::Values(Layout::kNitf21, Layout::kNitf20),
                         [](const auto& layout) {
                           return layout.param == Layout::kNitf20 ? "Nitf20" : "Nitf21";
                         });

TEST_P(GrSubHdrTest, FieldsStandInFileOrderWithTheirWidths) {
  EXPECT_EQ(Sequence(tavi::GraphicRows(), GetParam()), Sequence(kFacts, GetParam()));
}

class GrSubHdrRecordTest : public UnitTest {};

TEST_F(GrSubHdrRecordTest, BuffersHoldTheLargerWidthAndOneByte) {
  ExpectBufferSizes(kFacts);
  ExpectNoOtherBuffers(kFacts, sizeof(GrSubHdr::Texts));
}

TEST_F(GrSubHdrRecordTest, SettersTakeTheWholeBufferAndNoMore) {
  GrSubHdr record(nullptr);
  ExpectSetters(kFacts, record, tavi::GraphicRows());
  EXPECT_EQ(PublicTexts(tavi::graphic::kMembers), FieldsWithASetter(kFacts));
}

TEST_F(GrSubHdrRecordTest, NewRecordHoldsTheDefaults) {
  alignas(GrSubHdr) unsigned char memory[sizeof(GrSubHdr)];
  std::memset(memory, 0x5A, sizeof memory);
  NitfFile document;
  auto* record = new (memory) GrSubHdr(&document);
  const GrSubHdr& r = *record;
  EXPECT_EQ(Differences(kFacts, DefaultTexts(kFacts, sizeof r.Text), BytesOf(r.Text)), "");
  for (const uint32_t zero : {r.GraphicDataInMemory, r.SignatureSeen, r.DisplayLevel, r.SymbolBits,
                              r.AttachmentLevel, r.LutEntries, r.ExtendedTreCount, r.SegmentIndex}) {
    EXPECT_EQ(zero, 0U);
  }
  for (const int32_t zero :
       {r.LocationRow, r.LocationColumn, r.Bound1First, r.Bound1Second, r.Bound2First, r.Bound2Second}) {
    EXPECT_EQ(zero, 0);
  }
  EXPECT_FALSE(r.GraphicDataBuffer.exists() || r.ExtendedTre.exists() || r.Lut.exists());
  EXPECT_EQ(r.ExtendedTreView, nullptr);
  EXPECT_EQ(r.Owner, &document);
  record->~GrSubHdr();
}

TEST_P(GrSubHdrTest, SubheaderIs258BytesUpToTheExtendedLength) {
  EXPECT_EQ(FileOf({}).Build().At("graphic[0].subheader").length, 258U);
  GraphicRead read;
  Read(read, FileOf({}).Build());
  EXPECT_EQ(read.status, SUCCESS);
}

TEST_P(GrSubHdrTest, EveryTextLandsTerminatedInItsBufferAndTouchesNothingElse) {
  const BuiltFile file = FileOf(Full()).Build();
  for (const bool rubbish : {false, true}) {
    GraphicRead read;
    if (rubbish) std::memset(&read.record.Text, 0x5E, sizeof read.record.Text);
    const std::string before = BytesOf(read.record.Text);
    Read(read, file);
    ASSERT_EQ(read.status, SUCCESS);
    EXPECT_EQ(Differences(kFacts, TextsAfterReading(before, kFacts, GetParam(), file, "graphic[0]."),
                          BytesOf(read.record.Text)),
              "");
    EXPECT_EQ(Position(read.document), static_cast<int64_t>(file.At("graphic[0].subheader").offset));
  }
}

TEST_P(GrSubHdrTest, NumbersStandBesideTheirTexts) {
  GraphicRead read;
  Read(read, FileOf(Full()).Build());
  const GrSubHdr& r = read.record;
  ASSERT_EQ(read.status, SUCCESS);
  EXPECT_EQ(r.SignatureSeen, 1U);
  EXPECT_EQ(r.DisplayLevel, 123U);
  EXPECT_EQ(r.AttachmentLevel, 456U);
  EXPECT_EQ(r.LocationRow, -12);
  EXPECT_EQ(r.LocationColumn, 34567);
  EXPECT_EQ(r.Bound1First, Is20() ? 0 : 11);
  EXPECT_EQ(r.Bound1Second, Is20() ? 0 : -22);
  EXPECT_EQ(r.Bound2First, -3333);
  EXPECT_EQ(r.Bound2Second, 44444);
  EXPECT_EQ(r.SymbolBits, Is20() ? 7U : 0U);
  EXPECT_EQ(r.ExtendedTreCount, 1U);
  EXPECT_EQ(r.ExtendedTreView, r.ExtendedTre.data());
  EXPECT_STREQ(reinterpret_cast<const char*>(r.ExtendedTre.data()), "ONE   00001x");
}

TEST_P(GrSubHdrTest, FileThatEndsInsideAnyFieldIsAShortRead) {
  GraphicSpec graphic = Full();
  if (Is20()) graphic.lut_planes = {{1, 2}, {3, 4}, {5, 6}};
  const BuiltFile whole = FileOf(graphic).Build();
  for (const std::string& name : whole.order) {
    if (!name.starts_with("graphic[0].") || name == "graphic[0].content") continue;
    BuiltFile cut = whole;
    cut.Truncate(name, whole.At(name).length - 1);
    GraphicRead read;
    Read(read, cut);
    ASSERT_EQ(read.status, ERR_FILE_READ) << name;
  }
}

TEST_P(GrSubHdrTest, SignatureClassAndFormatAreChecked) {
  EXPECT_EQ(StatusWith("SY", "SX"), ERR_FILE_FORMAT);
  EXPECT_EQ(StatusWith("SY", "sy"), ERR_FILE_FORMAT);
  for (const char c : std::string("CRSTU")) EXPECT_EQ(StatusWith("SSCLAS", {c}), SUCCESS) << c;
  for (const char c : std::string("BDQVu |")) EXPECT_EQ(StatusWith("SSCLAS", {c}), ERR_FILE_FORMAT) << c;
  for (const char c : std::string("COB")) EXPECT_EQ(StatusWith("SFMT", {c}), SUCCESS) << c;
  for (const char c : std::string("ADPcob |")) EXPECT_EQ(StatusWith("SFMT", {c}), ERR_FILE_FORMAT) << c;
}

TEST_P(GrSubHdrTest, NothingElseIsChecked) {
  for (const char* field : {"SCOLOR", "ENCRYP", "SDLVL", "SALVL", "SLOC"}) {
    EXPECT_EQ(StatusWith(field, "?"), SUCCESS) << field;
  }
}

TEST_P(GrSubHdrTest, DigitsThatAreLettersConvertToZero) {
  GraphicSpec graphic;
  graphic.fields["SDLVL"] = "abc";
  graphic.fields["SALVL"] = "1x2";
  graphic.fields["SLOC"] = "abcde00-12";
  GraphicRead read;
  Read(read, FileOf(graphic).Build());
  EXPECT_EQ(read.record.DisplayLevel, 0U);
  EXPECT_EQ(read.record.AttachmentLevel, 1U);
  EXPECT_EQ(read.record.LocationRow, 0);
  EXPECT_EQ(read.record.LocationColumn, 0);
}

TEST_P(GrSubHdrTest, NegativeLocationsAreRead) {
  GraphicSpec graphic;
  graphic.fields["SLOC"] = "-0012-0034";
  graphic.fields["SBND2"] = "-9999-0001";
  GraphicRead read;
  Read(read, FileOf(graphic).Build());
  EXPECT_EQ(read.record.LocationRow, -12);
  EXPECT_EQ(read.record.LocationColumn, -34);
  EXPECT_EQ(read.record.Bound2First, -9999);
  EXPECT_EQ(read.record.Bound2Second, -1);
}

TEST_P(GrSubHdrTest, ExtendedLengthOfThreeKeepsAnEmptyBlock) {
  GraphicSpec graphic;
  graphic.sxshd = Bytes{};
  graphic.fields["SXSOFL"] = "042";
  GraphicRead read;
  Read(read, FileOf(graphic).Build());
  ASSERT_EQ(read.status, SUCCESS);
  EXPECT_STREQ(read.record.Text.SXSOFL, "042");
  ASSERT_EQ(read.record.ExtendedTre.size(), 1U);
  EXPECT_EQ(read.record.ExtendedTre[0], 0);
  EXPECT_EQ(read.record.ExtendedTreCount, 0U);
}

TEST_P(GrSubHdrTest, ExtendedLengthOfZeroHasNoOverflowField) {
  GraphicRead read;
  Read(read, FileOf({}).Build());
  EXPECT_STREQ(read.record.Text.SXSHDL, "00000");
  EXPECT_STREQ(read.record.Text.SXSOFL, "");
  EXPECT_FALSE(read.record.ExtendedTre.exists());
}

TEST_P(GrSubHdrTest, ExtendedLengthThatDoesNotFitIsAShortRead) {
  for (const char* text : {"00001", "00002", "99999", "-0004"}) {
    GraphicSpec graphic;
    graphic.sxshd = Bytes(20, 'x');
    graphic.data = Bytes(20, 'y');
    graphic.fields["SXSHDL"] = text;
    GraphicRead read;
    Read(read, FileOf(graphic).Build());
    EXPECT_EQ(read.status, ERR_FILE_READ) << text;
  }
}

TEST_P(GrSubHdrTest, DowngradingEventIsThereForOneTextIn20) {
  if (!Is20()) {
    GraphicRead read;
    std::memcpy(read.record.Text.SSDWNG, "999998", 7);  // of no meaning in this layout
    Read(read, FileOf({}).Build());
    EXPECT_EQ(read.status, SUCCESS);
    EXPECT_EQ(read.record.Text.SSDEVT, std::string(40, ' '));
    return;
  }
  for (const char* text : {"999998", "999997", "99999 "}) {
    GraphicSpec graphic;
    graphic.fields["SSDWNG"] = text;
    const bool event = std::string(text) == "999998";
    if (event) graphic.fields["SSDEVT"] = DistinctText("SSDEVT", 40);
    GraphicRead read;
    Read(read, FileOf(graphic).Build());
    ASSERT_EQ(read.status, SUCCESS) << text;
    EXPECT_EQ(read.record.Text.SSDEVT, event ? DistinctText("SSDEVT", 40) : std::string(40, ' '));
    EXPECT_STREQ(read.record.Text.SXSHDL, "00000") << "what follows is in step";
  }
}

// ---- The colour table of the 2.0 layout ----

class ColourTableTest : public UnitTest {
 protected:
  void Read(GraphicRead& read, const GraphicSpec& graphic) {
    NtfBuilder builder;
    builder.layout = tavi_test::Layout::kNitf20;
    builder.graphics = {graphic};
    const BuiltFile file = builder.Build();
    read.document.IsNitf20 = 1;
    Attach(read.document, file);
    MoveTo(read.document, file.At("graphic[0].subheader"));
    read.status = tavi::ReadGraphicSubHeader(read.record, read.document);
  }
};

TEST_F(ColourTableTest, SingleEntryHasOneByteForAllColours) {
  GraphicSpec graphic;
  graphic.lut_planes = {{0x7B}};
  graphic.sxshd = tavi_test::Tre("T", "");
  GraphicRead read;
  Read(read, graphic);
  ASSERT_EQ(read.status, SUCCESS);
  EXPECT_EQ(read.record.LutEntries, 1U);
  ASSERT_EQ(read.record.Lut.size(), 1U);
  EXPECT_EQ(read.record.Lut[0].blue, 0x7B);
  EXPECT_EQ(read.record.Lut[0].green, 0x7B);
  EXPECT_EQ(read.record.Lut[0].red, 0x7B);
  EXPECT_EQ(read.record.Lut[0].reserved, 0);
  EXPECT_EQ(read.record.ExtendedTreCount, 1U) << "what follows is in step";
}

TEST_F(ColourTableTest, LargerTablesHavePlanesOfRedGreenAndBlue) {
  for (const size_t entries : {size_t{2}, size_t{3}, size_t{256}, size_t{999}}) {
    GraphicSpec graphic;
    graphic.lut_planes.assign(3, Bytes(entries));
    for (size_t i = 0; i < entries; ++i) {
      for (size_t plane = 0; plane < 3; ++plane)
        graphic.lut_planes[plane][i] = static_cast<uint8_t>(i * 5 + plane * 70);
    }
    graphic.sxshd = tavi_test::Tre("T", "");
    GraphicRead read;
    Read(read, graphic);
    ASSERT_EQ(read.status, SUCCESS);
    ASSERT_EQ(read.record.Lut.size(), entries);
    for (size_t i = 0; i < entries; ++i) {
      EXPECT_EQ(read.record.Lut[i].red, graphic.lut_planes[0][i]);
      EXPECT_EQ(read.record.Lut[i].green, graphic.lut_planes[1][i]);
      EXPECT_EQ(read.record.Lut[i].blue, graphic.lut_planes[2][i]);
      EXPECT_EQ(read.record.Lut[i].reserved, 0);
    }
    EXPECT_EQ(read.record.ExtendedTreCount, 1U) << "what follows is in step";
  }
}

TEST_F(ColourTableTest, NoEntriesMakeNoTable) {
  GraphicRead read;
  Read(read, {});
  ASSERT_EQ(read.status, SUCCESS);
  EXPECT_FALSE(read.record.Lut.exists());
}

TEST_F(ColourTableTest, TableThatTheFileCannotHoldIsAShortRead) {
  for (const char* text : {"999", "-01"}) {
    GraphicSpec graphic;
    graphic.fields["NELUT"] = text;
    GraphicRead read;
    Read(read, graphic);
    EXPECT_EQ(read.status, ERR_FILE_READ) << text;
  }
}

}  // namespace

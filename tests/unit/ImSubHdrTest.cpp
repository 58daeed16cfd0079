// The image subheader's table, the state of a new record, its setters, and what lands where when it is read.
#include "ImSubHdr.h"

#include <gtest/gtest.h>

#include "ImSubHdrFacts.h"
#include "UnitTest.h"

namespace {

using tavi::ImSubHdr;
using tavi::Layout;
using tavi_test::BuiltFile;
using tavi_test::ImageSpec;
using tavi_test::NtfBuilder;
using namespace unit;

class ImSubHdrTest : public UnitTest {};

TEST_F(ImSubHdrTest, FieldsStandInFileOrderWithTheirWidths) {
  for (const Layout layout : {Layout::kNitf21, Layout::kNitf20}) {
    EXPECT_EQ(Sequence(tavi::ImageRows(), layout), Sequence(kImageFacts, layout));
  }
}

TEST_F(ImSubHdrTest, BuffersHoldTheLargerWidthAndOneByte) {
  ExpectBufferSizes(kImageFacts);
  ExpectNoOtherBuffers(kImageFacts, sizeof(ImSubHdr::Texts));
}

// Made in rubbish, so that a byte that the constructor forgets shows.
TEST_F(ImSubHdrTest, NewRecordHoldsTheDefaults) {
  alignas(ImSubHdr) unsigned char memory[sizeof(ImSubHdr)];
  std::memset(memory, 0x5A, sizeof memory);
  NitfFile document;
  auto* record = new (memory) ImSubHdr(&document);
  const ImSubHdr& r = *record;
  EXPECT_EQ(Differences(kImageFacts, DefaultTexts(kImageFacts, sizeof r.Text), BytesOf(r.Text)), "");
  EXPECT_EQ(r.Representation, 1U);
  EXPECT_EQ(r.ActualBits, 1U);
  EXPECT_EQ(r.RightJustified, 1U);
  EXPECT_EQ(r.Mode, 1U);
  EXPECT_EQ(r.SampleBits, 1U);
  EXPECT_EQ(r.DisplayLevel, 1U);
  EXPECT_EQ(r.Magnification, 1.0);
  EXPECT_EQ(r.ComratMode, 3U);
  for (const int32_t band : r.BandSelection) EXPECT_EQ(band, -1);
  for (const uint32_t zero :
       {r.SignatureSeen, r.PixelType, r.Compression, r.BandField, r.BandCount, r.CommentCount, r.BlocksPerRow,
        r.BlocksPerColumn, r.BlockWidth, r.BlockHeight, r.AttachmentLevel, r.DataOffset, r.BlockMaskLength,
        r.PadMaskLength, r.PadCodeBits, r.UserTreCount, r.ExtendedTreCount, r.HasPendingData,
        r.SegmentIndex}) {
    EXPECT_EQ(zero, 0U);
  }
  for (const int32_t zero : {r.Rows, r.Cols, r.LocationRow, r.LocationColumn}) EXPECT_EQ(zero, 0);
  EXPECT_FALSE(r.Lut.exists() || r.BandRoles.exists() || r.BandLutCounts.exists() ||
               r.BandLutEntries.exists() || r.UserTre.exists() || r.ExtendedTre.exists() ||
               r.BlockMask.exists() || r.PadMask.exists() || r.PadCode.exists() || r.PendingData.exists());
  EXPECT_EQ(r.Comments.size() + r.BandSubcategories.size() + r.BandFilterConditions.size() +
                r.BandFilterCodes.size(),
            0U);
  EXPECT_EQ(r.UserTreView, nullptr);
  EXPECT_EQ(r.ExtendedTreView, nullptr);
  EXPECT_EQ(r.Owner, &document);
  record->~ImSubHdr();
}

TEST_F(ImSubHdrTest, SettersTakeTheWholeBufferAndNoMore) {
  ImSubHdr record(nullptr);
  ExpectSetters(kImageFacts, record, tavi::ImageRows());
  std::set<std::string> fields = FieldsWithASetter(kImageFacts);
  // Those with a rule of their own, and the corners, which no setter takes.
  fields.insert({"PVTYPE", "IREP", "PJUST", "ICORDS", "IGEOLO", "IC", "COMRAT", "IMODE", "IMAG"});
  EXPECT_EQ(PublicTexts(tavi::image::kMembers), fields);
}

// The setter takes a class that the reader would refuse.
TEST_F(ImSubHdrTest, ClassSetterTakesAnyCharacter) {
  ImSubHdr record(nullptr);
  const auto* row = tavi::FindRow<ImSubHdr>(tavi::ImageRows(), "ISCLAS");
  ASSERT_NE(row, nullptr);
  EXPECT_EQ(tavi::SetText(record, *row, "?"), SUCCESS);
  EXPECT_STREQ(record.Text.ISCLAS, "?");
}

TEST_F(ImSubHdrTest, BandRoleIsNoneAtOrBeyondTheBandCount) {
  ImSubHdr record(nullptr);
  EXPECT_EQ(tavi::BandRole(record, 0), 0U);
  record.BandField = 2;
  ASSERT_TRUE(record.BandRoles.Allocate(2, {}));
  record.BandRoles[0] = tavi::kRoleGreen;
  record.BandRoles[1] = tavi::kRoleCr;
  EXPECT_EQ(tavi::BandRole(record, 0), 3U);
  EXPECT_EQ(tavi::BandRole(record, 1), 8U);
  EXPECT_EQ(tavi::BandRole(record, 2), 0U);
  EXPECT_EQ(tavi::BandRole(record, 0xFFFFFFFF), 0U);
  // More bands claimed than roles known, as a failed read leaves it.
  record.BandField = 9;
  EXPECT_EQ(tavi::BandRole(record, 5), 0U);
}

TEST_F(ImSubHdrTest, BandCountComesFromTheDigitOrElseFromXbandsText) {
  ImSubHdr record(nullptr);
  std::memcpy(record.Text.XBANDS, "00012", 6);
  EXPECT_EQ(tavi::EffectiveBandCount(record), 12U);
  record.BandField = 4;
  EXPECT_EQ(tavi::EffectiveBandCount(record), 4U);
  record.BandField = 0;
  std::memset(record.Text.XBANDS, 0, 6);
  EXPECT_EQ(tavi::EffectiveBandCount(record), 0U);
}

TEST_F(ImSubHdrTest, PadPixelCodeIsReplaced) {
  ImSubHdr record(nullptr);
  EXPECT_EQ(tavi::SetPadPixelCode(record, "\x01"), SUCCESS);
  ASSERT_EQ(record.PadCode.size(), 2U);
  EXPECT_EQ(record.PadCode[0], 1);
  EXPECT_EQ(record.PadCode[1], 0);
  EXPECT_EQ(tavi::SetPadPixelCode(record, "abc"), SUCCESS);
  EXPECT_STREQ(reinterpret_cast<const char*>(record.PadCode.data()), "abc");
  EXPECT_EQ(tavi::SetPadPixelCode(record, ""), SUCCESS);
  EXPECT_TRUE(record.PadCode.exists());
  EXPECT_EQ(record.PadCode[0], 0);
}

// ---- What lands where ----

class ImageLayoutTest : public UnitTest, public testing::WithParamInterface<Layout> {
 protected:
  // Each free text differs from every other, each number too; all conditional fields are there.
  static NtfBuilder FullFile() {
    static const char* const kFree[] = {"IID1",   "IDATIM", "TGTID",  "IID2",   "ISCLSY", "ISCODE", "ISCTLH",
                                        "ISREL",  "ISDCTP", "ISDCDT", "ISDCXM", "ISDG",   "ISDGDT", "ISCLTX",
                                        "ISCATP", "ISCAUT", "ISCRSN", "ISSRDT", "ISCTLN", "ENCRYP", "ISORCE",
                                        "ICAT",   "UDOFL",  "IXSOFL", "ISYNC"};
    ImageSpec image;
    for (const char* name : kFree) {
      for (const FieldFact& fact : kImageFacts) {
        if (std::string_view(fact.name) != name || fact.Width(GetParam()) == kNone) continue;
        image.fields[name] = DistinctText(name, fact.Width(GetParam()));
      }
    }
    if (GetParam() == Layout::kNitf20) {
      image.fields["ISDWNG"] = "999998";
      image.fields["ISDEVT"] = DistinctText("ISDEVT", 40);
    }
    image.fields["ISCLAS"] = "S";
    image.Blocks(3, 2, 5, 7);
    image.rows = 1234567;
    image.columns = 7654321;
    image.irep = "MULTI";
    image.abpp = 7;
    image.nbpp = 12;
    image.pjust = 'L';
    image.igeolo = DistinctText("IGEOLO", 60);
    image.comments = {DistinctText("ICOM0", 80), DistinctText("ICOM1", 80)};
    image.ic = "C8";
    image.comrat = "2DH ";
    image.bands.resize(2);
    for (size_t band = 0; band < 2; ++band) {
      const std::string at = std::to_string(band);
      image.bands[band] = {band == 0 ? "G " : "Cr",
                           DistinctText("ISUBCAT" + at, 6),
                           DistinctText("IFC" + at, 1),
                           DistinctText("IMFLT" + at, 3),
                           {}};
    }
    image.imode = 'R';
    image.Level(345, 678).At(-1234, 56789);
    image.imag = "/4  ";
    image.udid = tavi_test::Tre("USER", "12");
    image.ixshd = tavi_test::Tre("EXTEN", std::string("xyz"));
    NtfBuilder builder = {image};
    builder.layout = GetParam() == Layout::kNitf20 ? tavi_test::Layout::kNitf20 : tavi_test::Layout::kNitf21;
    return builder;
  }
  int32_t Read(NitfFile& document, ImSubHdr& record, const BuiltFile& file) {
    document.IsNitf20 = GetParam() == Layout::kNitf20;
    Attach(document, file);
    MoveTo(document, file.At("image[0].subheader"));
    tavi::StrmFHdr stream;
    return tavi::ReadImageSubHeader(record, document, stream, 0);
  }
};
INSTANTIATE_TEST_SUITE_P(Both, ImageLayoutTest, testing::Values(Layout::kNitf21, Layout::kNitf20),
                         [](const auto& layout) {
                           return layout.param == Layout::kNitf20 ? "Nitf20" : "Nitf21";
                         });

TEST_P(ImageLayoutTest, EveryTextLandsTerminatedInItsBufferAndTouchesNothingElse) {
  const BuiltFile file = FullFile().Build();
  for (const bool rubbish : {false, true}) {
    NitfFile document;
    ImSubHdr record(&document);
    if (rubbish) std::memset(&record.Text, 0x5E, sizeof record.Text);
    const std::string before = BytesOf(record.Text);
    ASSERT_EQ(Read(document, record, file), SUCCESS);
    EXPECT_EQ(Differences(kImageFacts, TextsAfterReading(before, kImageFacts, GetParam(), file, "image[0]."),
                          BytesOf(record.Text)),
              "");
  }
}

TEST_P(ImageLayoutTest, NumbersAndCodesStandBesideTheirTexts) {
  NitfFile document;
  ImSubHdr r(&document);
  ASSERT_EQ(Read(document, r, FullFile().Build()), SUCCESS);
  EXPECT_EQ(r.SignatureSeen, 1U);
  EXPECT_EQ(r.Rows, 1234567);
  EXPECT_EQ(r.Cols, 7654321);
  EXPECT_EQ(r.PixelType, 0U);
  EXPECT_EQ(r.Representation, 3U);
  EXPECT_EQ(r.ActualBits, 7U);
  EXPECT_EQ(r.RightJustified, 0U);
  EXPECT_EQ(r.CommentCount, 2U);
  EXPECT_EQ(r.Compression, 9U);
  EXPECT_EQ(r.ComratMode, 2U);
  EXPECT_EQ(r.BandField, 2U);
  EXPECT_EQ(r.BandCount, 2U);
  EXPECT_EQ(r.Mode, 2U);
  EXPECT_EQ(r.BlocksPerRow, 3U);
  EXPECT_EQ(r.BlocksPerColumn, 2U);
  EXPECT_EQ(r.BlockWidth, 5U);
  EXPECT_EQ(r.BlockHeight, 7U);
  EXPECT_EQ(r.SampleBits, 12U);
  EXPECT_EQ(r.DisplayLevel, 345U);
  EXPECT_EQ(r.AttachmentLevel, 678U);
  EXPECT_EQ(r.LocationRow, -1234);
  EXPECT_EQ(r.LocationColumn, 56789);
  EXPECT_EQ(r.Magnification, 0.25);
}

TEST_P(ImageLayoutTest, CommentsAndBandTextsStandInTheirSlots) {
  NitfFile document;
  ImSubHdr r(&document);
  ASSERT_EQ(Read(document, r, FullFile().Build()), SUCCESS);
  ASSERT_EQ(r.Comments.size(), 2U);
  EXPECT_EQ(r.Comments.At(0), DistinctText("ICOM0", 80));
  EXPECT_EQ(r.Comments.At(1), DistinctText("ICOM1", 80));
  ASSERT_EQ(r.BandRoles.size(), 2U);
  EXPECT_EQ(r.BandRoles[0], 3U);
  EXPECT_EQ(r.BandRoles[1], 8U);
  for (uint32_t band = 0; band < 2; ++band) {
    const std::string at = std::to_string(band);
    EXPECT_EQ(r.BandSubcategories.At(band), DistinctText("ISUBCAT" + at, 6));
    EXPECT_EQ(r.BandFilterConditions.At(band), DistinctText("IFC" + at, 1));
    EXPECT_EQ(r.BandFilterCodes.At(band), DistinctText("IMFLT" + at, 3));
    EXPECT_EQ(r.BandLutCounts[band], 0U);
  }
  EXPECT_FALSE(r.BandLutEntries.exists());
  EXPECT_FALSE(r.Lut.exists());
}

TEST_P(ImageLayoutTest, ExtendedDataAreKeptCountedAndTerminated) {
  NitfFile document;
  ImSubHdr r(&document);
  ASSERT_EQ(Read(document, r, FullFile().Build()), SUCCESS);
  ASSERT_EQ(r.UserTre.size(), 14U);
  EXPECT_STREQ(reinterpret_cast<const char*>(r.UserTre.data()), "USER  0000212");
  EXPECT_EQ(r.UserTreView, r.UserTre.data());
  EXPECT_EQ(r.UserTreCount, 1U);
  ASSERT_EQ(r.ExtendedTre.size(), 15U);
  EXPECT_STREQ(reinterpret_cast<const char*>(r.ExtendedTre.data()), "EXTEN 00003xyz");
  EXPECT_EQ(r.ExtendedTreView, r.ExtendedTre.data());
  EXPECT_EQ(r.ExtendedTreCount, 1U);
}

TEST_P(ImageLayoutTest, FilePositionIsRestored) {
  const BuiltFile file = FullFile().Build();
  NitfFile document;
  ImSubHdr record(&document);
  ASSERT_EQ(Read(document, record, file), SUCCESS);
  EXPECT_EQ(Position(document), static_cast<int64_t>(file.At("image[0].subheader").offset));
}

TEST_P(ImageLayoutTest, FileThatEndsInsideAnyFieldIsAShortRead) {
  NtfBuilder builder = FullFile();
  ImageSpec& image = builder.images[0];
  image.ic = "M5";
  image.mask.block_offsets = {{0, 1}};
  image.mask.pad_offsets = {{2}};
  image.mask.pad_code = {1, 2};
  image.bands[1].luts = {{1, 2}, {3, 4}, {5, 6}};
  const BuiltFile whole = builder.Build();
  for (const std::string& name : whole.order) {
    if (!name.starts_with("image[0].") || name == "image[0].pixels") continue;
    if (name.find("MR[") != std::string::npos && name.find("MR[11]") == std::string::npos) continue;
    BuiltFile cut = whole;
    cut.Truncate(name, whole.At(name).length - 1);
    NitfFile document;
    ImSubHdr record(&document);
    ASSERT_EQ(Read(document, record, cut), ERR_FILE_READ) << name;
  }
  NitfFile document;
  ImSubHdr record(&document);
  EXPECT_EQ(Read(document, record, whole), SUCCESS);
}

// ---- What the layouts do not share ----

TEST_P(ImageLayoutTest, DowngradingEventIsThereForOneTextIn20) {
  for (const char* text : {"999998", "999997", "99999 "}) {
    NtfBuilder builder = FullFile();
    builder.images[0].fields.erase("ISDWNG");
    builder.images[0].fields.erase("ISDEVT");
    NitfFile document;
    ImSubHdr record(&document);
    const bool nitf20 = GetParam() == Layout::kNitf20;
    const bool event = nitf20 && std::string(text) == "999998";
    if (nitf20) builder.images[0].fields["ISDWNG"] = text;
    if (event) builder.images[0].fields["ISDEVT"] = DistinctText("ISDEVT", 40);
    if (!nitf20) std::memcpy(record.Text.ISDWNG, "999998", 7);  // of no meaning in this layout
    ASSERT_EQ(Read(document, record, builder.Build()), SUCCESS);
    EXPECT_EQ(record.Text.ISDEVT, event ? DistinctText("ISDEVT", 40) : std::string(40, ' '));
    EXPECT_STREQ(record.Text.ICAT, DistinctText("ICAT", 8).c_str()) << "what follows is in step";
  }
}

TEST_P(ImageLayoutTest, CornersAreThereByTheLayoutsOwnRule) {
  for (const char c : {' ', 'N', 'G', 'U', '0'}) {
    NtfBuilder builder = FullFile();
    const bool there = c != (GetParam() == Layout::kNitf20 ? 'N' : ' ');
    if (!there) builder.images[0].igeolo.reset();
    builder.images[0].fields["ICORDS"] = std::string(1, c);
    NitfFile document;
    ImSubHdr record(&document);
    ASSERT_EQ(Read(document, record, builder.Build()), SUCCESS) << c;
    EXPECT_EQ(record.Text.IGEOLO, there ? DistinctText("IGEOLO", 60) : std::string(60, ' ')) << c;
    EXPECT_EQ(record.CommentCount, 2U);
  }
}

}  // namespace

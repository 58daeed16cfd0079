// A file in which every field has a value of its own comes back through the getters, field by field.
#include <optional>
#include <set>

#include "RecordsTest.h"

namespace tavi::records {
namespace {

using tavi_test::BuiltFile;

class DistinctFields : public RecordsTest {
 protected:
  void SetUp() override {
    RecordsTest::SetUp();
    document_.emplace(Write(built_));
    ASSERT_EQ(document_->open, SUCCESS);
  }
  void TearDown() override {
    document_.reset();
    RecordsTest::TearDown();
  }

  NitfHandle handle() const { return document_->handle; }
  const BuiltFile& built() const { return built_; }

 private:
  const BuiltFile built_ = DistinctFile().Build();
  std::optional<Document> document_;
};

// No field of a header has the text of another, so that none can stand in for it. Band records, which no
// record shows, are left out.
TEST_F(DistinctFields, TheFileItselfIsDistinct) {
  for (const std::string prefix : {"", "image[1].", "graphic[2].", "text[3]."}) {
    std::set<std::string> texts;
    for (const std::string& name : built().order) {
      const bool own = prefix.empty() ? name.find('.') == std::string::npos : name.starts_with(prefix);
      const bool band = name.find("].I") != std::string::npos && name.ends_with(']');
      if (!own || band || name.find("NLUTS") != std::string::npos || name.find("MR[") != std::string::npos) {
        continue;
      }
      EXPECT_TRUE(texts.insert(built().Text(name)).second) << name << " \"" << built().Text(name) << "\"";
    }
    EXPECT_GT(texts.size(), 25U) << prefix;
  }
}

TEST_F(DistinctFields, FileHeader) {
  Guarded<NitfHeaderInfo> record;
  ASSERT_EQ(Tavi_NITFGetNITFHeader(handle(), record.get()), SUCCESS);
  EXPECT_STREQ(record->FHDR, "NITF");
  EXPECT_EQ(+record->CLEVEL, 3);
  EXPECT_STREQ(record->STYPE, "S4ty");
  EXPECT_STREQ(record->OSTAID, "OSTAID:abc");
  EXPECT_EQ(Text(record->FTITLE), Fill("FTITLE", 80));
  EXPECT_STREQ(record->FSCLAS, "R");
  EXPECT_EQ(Text(record->ONAME), Fill("ONAME", 24) + "   ") << "to the end of the widest layout";
  EXPECT_STREQ(record->OPHONE, "OPHONE:abcdefghijk");
  EXPECT_EQ(+record->HL, built().At("image[0].subheader").offset);
  EXPECT_EQ(+record->FL, built().bytes.size());
  EXPECT_EQ(+record->FSCOP, 11U);
  EXPECT_EQ(+record->FSCPYS, 22U);
  EXPECT_EQ(+record->ENCRYP, 3U);
  EXPECT_EQ(Chars(record->FDT), "20210304050607");
  EXPECT_EQ(Chars(record->FSDCDT), "20310101");
  EXPECT_EQ(Chars(record->FSDGDT), "20310202");
  EXPECT_EQ(Chars(record->FSSRDT), "20310303");
  EXPECT_EQ(+record->FVER, 2.1F);
}

// The texts of the security block begin with their field.
TEST_F(DistinctFields, SecurityTextsOfTheFileHeaderBeginWithTheirField) {
  const Security security = SecurityTexts("FS", "2031");
  Guarded<NitfHeaderInfo> record;
  ASSERT_EQ(Tavi_NITFGetNITFHeader(handle(), record.get()), SUCCESS);
  EXPECT_EQ(Text(record->FSCLSY).substr(0, 2), security.clsy);
  EXPECT_EQ(Text(record->FSCODE).substr(0, 11), security.code);
  EXPECT_EQ(Text(record->FSCTLH).substr(0, 2), security.ctlh);
  EXPECT_EQ(Text(record->FSREL).substr(0, 20), security.rel);
  EXPECT_EQ(Text(record->FSDCTP).substr(0, 2), security.dctp);
  EXPECT_EQ(Text(record->FSDCXM).substr(0, 4), security.dcxm);
  EXPECT_EQ(Text(record->FSDG).substr(0, 1), security.dg);
  EXPECT_EQ(Text(record->FSCLTX).substr(0, 43), security.cltx);
  EXPECT_EQ(Text(record->FSCATP).substr(0, 1), security.catp);
  EXPECT_EQ(Text(record->FSCAUT).substr(0, 40), security.caut);
  EXPECT_EQ(Text(record->FSCRSN).substr(0, 1), security.crsn);
  EXPECT_EQ(Text(record->FSCTLN).substr(0, 15), security.ctln);
}

TEST_F(DistinctFields, ListsOfTheFileHeader) {
  Guarded<NitfHeaderInfo> record;
  ASSERT_EQ(Tavi_NITFGetNITFHeader(handle(), record.get()), SUCCESS);
  ASSERT_EQ(+record->NUMI, 2U);
  EXPECT_EQ(record->LISH[0], built().At("image[0].subheader").length);
  EXPECT_EQ(record->LISH[1], built().At("image[1].subheader").length);
  EXPECT_EQ(record->LI[0], built().At("image[0].data").length);
  EXPECT_EQ(record->LI[1], built().At("image[1].data").length);
  ASSERT_EQ(+record->NUMS, 3U);
  const uint32_t lssh[] = {258, 258 + 8, 258 + 3 + 28};
  const uint32_t ls[] = {51, 53, 37};
  for (size_t i = 0; i < 3; ++i) {
    EXPECT_EQ(record->LSSH[i], lssh[i]) << i;
    EXPECT_EQ(record->LS[i], ls[i]) << i;
  }
  ASSERT_EQ(+record->NUMT, 4U);
  const uint32_t ltsh[] = {282 + 3 + 61, 282 + 3 + 62, 282 + 3 + 63, 282 + 3 + 25};
  const uint32_t lt[] = {71, 72, 73, 41};
  for (size_t i = 0; i < 4; ++i) {
    EXPECT_EQ(record->LTSH[i], ltsh[i]) << i;
    EXPECT_EQ(record->LT[i], lt[i]) << i;
  }
}

TEST_F(DistinctFields, ImageTexts) {
  const Security security = SecurityTexts("IS", "2032");
  Guarded<NitfImageHeaderInfo> record;
  ASSERT_EQ(Tavi_NITFGetImageHeader(handle(), 1, record.get()), SUCCESS);
  EXPECT_STREQ(record->IM, "IM");
  EXPECT_STREQ(record->IID1, "IID1:abcde");
  EXPECT_EQ(Chars(record->IDATIM), "20220405060708");
  EXPECT_EQ(Text(record->TGTID), Fill("TGTID", 17));
  EXPECT_EQ(Text(record->IID2), Fill("IID2", 80));
  EXPECT_STREQ(record->ISCLAS, "S");
  EXPECT_EQ(Text(record->ISCLSY), security.clsy);
  EXPECT_EQ(Text(record->ISCODE), security.code);
  EXPECT_EQ(Text(record->ISCTLH), security.ctlh);
  EXPECT_EQ(Text(record->ISREL), security.rel);
  EXPECT_EQ(Text(record->ISDCTP), security.dctp);
  EXPECT_EQ(Chars(record->ISDCDT), "20320101");
  EXPECT_EQ(Text(record->ISDCXM), security.dcxm);
  EXPECT_EQ(Text(record->ISDG), security.dg);
  EXPECT_EQ(Chars(record->ISDGDT), "20320202");
  EXPECT_EQ(Text(record->ISCLTX), security.cltx);
  EXPECT_EQ(Text(record->ISCATP), security.catp);
  EXPECT_EQ(Text(record->ISCAUT), security.caut);
  EXPECT_EQ(Text(record->ISCRSN), security.crsn);
  EXPECT_EQ(Chars(record->ISSRDT), "20320303");
  EXPECT_EQ(Text(record->ISCTLN), security.ctln);
  EXPECT_EQ(Text(record->ISORCE), Fill("ISORCE", 42));
  EXPECT_STREQ(record->PVTYPE, "INT");
  EXPECT_STREQ(record->IREP, "RGB-like");
  EXPECT_STREQ(record->ICAT, "ICAT:abc");
  EXPECT_STREQ(record->PJUST, "L");
  EXPECT_STREQ(record->ICORDS, "D");
  EXPECT_EQ(Text(record->IGEOLO), Fill("IGEOLO", 60));
  EXPECT_STREQ(record->IC, "M3");
  EXPECT_STREQ(record->COMRAT, "Cmr5");
  EXPECT_STREQ(record->IMODE, "B");
  EXPECT_STREQ(record->IMAG, "/2.5");
}

TEST_F(DistinctFields, ImageNumbers) {
  Guarded<NitfImageHeaderInfo> record;
  ASSERT_EQ(Tavi_NITFGetImageHeader(handle(), 1, record.get()), SUCCESS);
  EXPECT_EQ(+record->ENCRYP, 7);
  EXPECT_EQ(+record->NROWS, 247);
  EXPECT_EQ(+record->NCOLS, 134);
  EXPECT_EQ(+record->ABPP, 9);
  EXPECT_EQ(+record->NICOM, 2U);
  EXPECT_EQ(+record->NBANDS, 3U);
  EXPECT_EQ(+record->XBANDS, 0U);
  EXPECT_EQ(+record->ISYNC, 4);
  EXPECT_EQ(+record->NBPR, 5);
  EXPECT_EQ(+record->NBPC, 6U);
  EXPECT_EQ(+record->NPPBH, 7U);
  EXPECT_EQ(+record->NPPBV, 8U);
  EXPECT_EQ(+record->NBPP, 11U);
  EXPECT_EQ(+record->IDLVL, 12U);
  EXPECT_EQ(+record->IALVL, 13U);
  EXPECT_EQ(+record->ILOC_ROW, -14);
  EXPECT_EQ(+record->ILOC_COLUMN, 15);
  EXPECT_EQ(+record->UDIDL, 3U + 11 + 15);
  EXPECT_EQ(+record->UDOFL, 16);
  EXPECT_EQ(+record->IXSHDL, 3U + 11 + 29);
  EXPECT_EQ(+record->IXSOFL, 17);
  EXPECT_EQ(+record->IMDATOFF, 0x010203U);
  EXPECT_EQ(+record->BMRLNTH, 0x0104);
  EXPECT_EQ(+record->TMRLNTH, 0x0204);
  EXPECT_EQ(+record->TPXCDLNTH, 19);
}

TEST_F(DistinctFields, ImageBlocks) {
  Guarded<NitfImageHeaderInfo> record;
  ASSERT_EQ(Tavi_NITFGetImageHeader(handle(), 1, record.get()), SUCCESS);
  ASSERT_NE(+record->ICOM, nullptr);
  EXPECT_EQ(record->ICOM[0], Fill("ICOM0", 80));
  EXPECT_EQ(record->ICOM[1], Fill("ICOM1", 80));
  EXPECT_STREQ(record->UDID, "UDITRE00015about the image");
  EXPECT_EQ(BytesAt(record->IXSHD, 43), "IXSTRE00029somewhat more about the image" + std::string(3, '\0'));
  EXPECT_EQ(BytesAt(record->TPXCD, 19), "\xC1\xC2\xC3" + std::string(16, '\0'));
}

TEST_F(DistinctFields, Graphic) {
  const Security security = SecurityTexts("SS", "2033");
  Guarded<NitfGraphicHeaderInfo> record;
  ASSERT_EQ(Tavi_NITFGetGraphicHeader(handle(), 2, record.get()), SUCCESS);
  EXPECT_STREQ(record->SY, "SY");
  EXPECT_STREQ(record->SID, "SID:abcdef");
  EXPECT_EQ(Text(record->SNAME), Fill("SNAME", 20));
  EXPECT_STREQ(record->SSCLAS, "T");
  EXPECT_EQ(Text(record->SSCLSY), security.clsy);
  EXPECT_EQ(Text(record->SSCODE), security.code);
  EXPECT_EQ(Text(record->SSCTLH), security.ctlh);
  EXPECT_EQ(Text(record->SSREL), security.rel);
  EXPECT_EQ(Text(record->SSDCTP), security.dctp);
  EXPECT_EQ(Chars(record->SSDCDT), "20330101");
  EXPECT_EQ(Text(record->SSDCXM), security.dcxm);
  EXPECT_EQ(Text(record->SSDG), security.dg);
  EXPECT_EQ(Chars(record->SSDGDT), "20330202");
  EXPECT_EQ(Text(record->SSCLTX), security.cltx);
  EXPECT_EQ(Text(record->SSCATP), security.catp);
  EXPECT_EQ(Text(record->SSCAUT), security.caut);
  EXPECT_EQ(Text(record->SSCRSN), security.crsn);
  EXPECT_EQ(Chars(record->SSSRDT), "20330303");
  EXPECT_EQ(Text(record->SSCTLN), security.ctln);
  EXPECT_EQ(+record->ENCRYP, 5U);
  EXPECT_STREQ(record->SFMT, "O");
  EXPECT_EQ(+record->SSTRUCT, 456);
  EXPECT_EQ(+record->SDLVL, 21U);
  EXPECT_EQ(+record->SALVL, 22U);
  EXPECT_EQ(static_cast<int32_t>(record->SLOC_ROW), -23);
  EXPECT_EQ(static_cast<int32_t>(record->SLOC_COLUMN), 24);
  EXPECT_EQ(static_cast<int32_t>(record->SBND1_FIRST), 25);
  EXPECT_EQ(static_cast<int32_t>(record->SBND1_SECOND), -26);
  EXPECT_STREQ(record->SCOLOR, "M");
  EXPECT_EQ(static_cast<int32_t>(record->SBND2_FIRST), -27);
  EXPECT_EQ(static_cast<int32_t>(record->SBND2_SECOND), 28);
  EXPECT_EQ(+record->SRES2, 29U);
  EXPECT_EQ(+record->SXSHDL, 3U + 28);
  EXPECT_EQ(+record->SXSOFL, 30U);
  EXPECT_EQ(BytesAt(record->SXSHD, 31), "SXSTRE00017about the graphic" + std::string(3, '\0'));
}

TEST_F(DistinctFields, Text) {
  const Security security = SecurityTexts("TS", "2034");
  Guarded<NitfTextHeaderInfo> record;
  ASSERT_EQ(Tavi_NITFGetTextHeader(handle(), 3, record.get()), SUCCESS);
  EXPECT_STREQ(record->TE, "TE");
  EXPECT_STREQ(record->TEXTID, "TEXTID:");
  EXPECT_EQ(+record->TXTALVL, 31U);
  EXPECT_EQ(Chars(record->TXTDT), "20230506070809");
  EXPECT_EQ(Text(record->TXTITL), Fill("TXTITL", 80));
  EXPECT_STREQ(record->TSCLAS, "C");
  EXPECT_EQ(Text(record->TSCLSY), security.clsy);
  EXPECT_EQ(Text(record->TSCODE), security.code);
  EXPECT_EQ(Text(record->TSCTLH), security.ctlh);
  EXPECT_EQ(Text(record->TSREL), security.rel);
  EXPECT_EQ(Text(record->TSDCTP), security.dctp);
  EXPECT_EQ(Chars(record->TSDCDT), "20340101");
  EXPECT_EQ(Text(record->TSDCXM), security.dcxm);
  EXPECT_EQ(Text(record->TSDG), security.dg);
  EXPECT_EQ(Chars(record->TSDGDT), "20340202");
  EXPECT_EQ(Text(record->TSCLTX), security.cltx);
  EXPECT_EQ(Text(record->TSCATP), security.catp);
  EXPECT_EQ(Text(record->TSCAUT), security.caut);
  EXPECT_EQ(Text(record->TSCRSN), security.crsn);
  EXPECT_EQ(Chars(record->TSSRDT), "20340303");
  EXPECT_EQ(Text(record->TSCTLN), security.ctln);
  EXPECT_EQ(+record->ENCRYP, 8U);
  EXPECT_STREQ(record->TXTFMT, "U8S");
  EXPECT_EQ(+record->TXSHDL, 3U + 25);
  EXPECT_EQ(+record->TXSOFL, 32);
  EXPECT_EQ(BytesAt(record->TXSHD, 25), "TXSTRE00014about the text");
}

TEST_F(DistinctFields, Counts) {
  EXPECT_EQ(Tavi_NITFGetImageHeaderCount(handle()), 2);
  EXPECT_EQ(Tavi_NITFGetGraphicHeaderCount(handle()), 3);
  EXPECT_EQ(Tavi_NITFGetTextHeaderCount(handle()), 4);
}

// A getter may be run again on the same document, in any order: the document itself does not change.
TEST_F(DistinctFields, GettersAreRepeatable) {
  for (int round = 0; round < 3; ++round) {
    for (const uint32_t index : {3U, 0U, 2U, 1U}) {
      Guarded<NitfTextHeaderInfo> record;
      ASSERT_EQ(Tavi_NITFGetTextHeader(handle(), index, record.get()), SUCCESS);
      EXPECT_STREQ(record->TEXTID, index == 3 ? "TEXTID:" : "text   ");
      EXPECT_EQ(+record->TXSHDL, index == 3 ? 28U : 64U + index);
    }
  }
}

}  // namespace
}  // namespace tavi::records

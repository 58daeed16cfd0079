// The records as other compilers' programs lay them out: each field stands where the sizes of those before it
// end, in the documented order.
#include <cstddef>

#include "RecordsTest.h"

namespace tavi::records {
namespace {

constexpr size_t kPointer = 8;
constexpr size_t kNumber = 4;
constexpr size_t kShort = 2;

struct Slot {
  const char* name;
  size_t size;
  size_t actual_size;
  size_t actual_offset;
};

#define SLOT(NAME, SIZE)                                      \
  Slot {                                                      \
#NAME, SIZE, sizeof(Record::NAME), offsetof(Record, NAME) \
  }

template <size_t kCount>
void ExpectPacked(const Slot (&slots)[kCount], size_t record_size) {
  size_t offset = 0;
  for (const Slot& slot : slots) {
    EXPECT_EQ(slot.actual_offset, offset) << slot.name;
    EXPECT_EQ(slot.actual_size, slot.size) << slot.name;
    offset += slot.size;
  }
  EXPECT_EQ(record_size, offset);
}

TEST(RecordLayout, FileHeader) {
  using Record = NitfHeaderInfo;
  const Slot slots[] = {
      SLOT(FHDR, kPointer),   SLOT(CLEVEL, kNumber),  SLOT(STYPE, kPointer),  SLOT(OSTAID, kPointer),
      SLOT(FTITLE, kPointer), SLOT(FSCLAS, kPointer), SLOT(FSCLSY, kPointer), SLOT(FSCODE, kPointer),
      SLOT(FSCTLH, kPointer), SLOT(FSREL, kPointer),  SLOT(FSDCTP, kPointer), SLOT(FSDCXM, kPointer),
      SLOT(FSDG, kPointer),   SLOT(FSCLTX, kPointer), SLOT(FSCATP, kPointer), SLOT(FSCAUT, kPointer),
      SLOT(FSCRSN, kPointer), SLOT(FSCTLN, kPointer), SLOT(ONAME, kPointer),  SLOT(OPHONE, kPointer),
      SLOT(HL, kNumber),      SLOT(FL, kNumber),      SLOT(FSCOP, kNumber),   SLOT(FSCPYS, kNumber),
      SLOT(ENCRYP, kNumber),  SLOT(NUMI, kNumber),    SLOT(LISH, kPointer),   SLOT(LI, kPointer),
      SLOT(NUMS, kNumber),    SLOT(LSSH, kPointer),   SLOT(LS, kPointer),     SLOT(NUMX, kNumber),
      SLOT(NUMT, kNumber),    SLOT(LTSH, kPointer),   SLOT(LT, kPointer),     SLOT(NUMDES, kNumber),
      SLOT(LDSH, kPointer),   SLOT(LD, kPointer),     SLOT(NUMRES, kNumber),  SLOT(LRESH, kPointer),
      SLOT(LRE, kPointer),    SLOT(UDHDL, kNumber),   SLOT(UDHOFL, kNumber),  SLOT(UDHD, kPointer),
      SLOT(XHDL, kNumber),    SLOT(XHDLOFL, kNumber), SLOT(XHD, kPointer),    SLOT(FBKGC, 3),
      SLOT(spare, 1),         SLOT(FSSRDT, 8),        SLOT(FSDGDT, 8),        SLOT(FSDCDT, 8),
      SLOT(FDT, 14),          SLOT(FVER, kNumber)};
  ExpectPacked(slots, sizeof(Record));
}

TEST(RecordLayout, Image) {
  using Record = NitfImageHeaderInfo;
  const Slot slots[] = {
      SLOT(IM, kPointer),      SLOT(IID1, kPointer),   SLOT(IDATIM, 14),         SLOT(TGTID, kPointer),
      SLOT(IID2, kPointer),    SLOT(ISCLAS, kPointer), SLOT(ISCLSY, kPointer),   SLOT(ISCODE, kPointer),
      SLOT(ISCTLH, kPointer),  SLOT(ISREL, kPointer),  SLOT(ISDCTP, kPointer),   SLOT(ISDCDT, 8),
      SLOT(ISDCXM, kPointer),  SLOT(ISDG, kPointer),   SLOT(ISDGDT, 8),          SLOT(ISCLTX, kPointer),
      SLOT(ISCATP, kPointer),  SLOT(ISCAUT, kPointer), SLOT(ISCRSN, kPointer),   SLOT(ISSRDT, 8),
      SLOT(ISCTLN, kPointer),  SLOT(ENCRYP, kNumber),  SLOT(ISORCE, kPointer),   SLOT(NROWS, kNumber),
      SLOT(NCOLS, kNumber),    SLOT(PVTYPE, kPointer), SLOT(IREP, kPointer),     SLOT(ICAT, kPointer),
      SLOT(ABPP, kNumber),     SLOT(PJUST, kPointer),  SLOT(ICORDS, kPointer),   SLOT(IGEOLO, kPointer),
      SLOT(NICOM, kNumber),    SLOT(ICOM, kPointer),   SLOT(IC, kPointer),       SLOT(COMRAT, kPointer),
      SLOT(NBANDS, kNumber),   SLOT(XBANDS, kNumber),  SLOT(IREPBAND, kPointer), SLOT(ISUBCAT, kPointer),
      SLOT(IFC, kPointer),     SLOT(IMFLT, kPointer),  SLOT(ISYNC, kNumber),     SLOT(IMODE, kPointer),
      SLOT(NBPR, kNumber),     SLOT(NBPC, kNumber),    SLOT(NPPBH, kNumber),     SLOT(NPPBV, kNumber),
      SLOT(NBPP, kNumber),     SLOT(IDLVL, kNumber),   SLOT(IALVL, kNumber),     SLOT(ILOC_COLUMN, kNumber),
      SLOT(ILOC_ROW, kNumber), SLOT(IMAG, kPointer),   SLOT(UDIDL, kNumber),     SLOT(UDOFL, kNumber),
      SLOT(UDID, kPointer),    SLOT(IXSHDL, kNumber),  SLOT(IXSOFL, kNumber),    SLOT(IXSHD, kPointer),
      SLOT(IMDATOFF, kNumber), SLOT(BMRLNTH, kShort),  SLOT(TMRLNTH, kShort),    SLOT(TPXCDLNTH, kShort),
      SLOT(TPXCD, kPointer)};
  ExpectPacked(slots, sizeof(Record));
}

TEST(RecordLayout, Graphic) {
  using Record = NitfGraphicHeaderInfo;
  const Slot slots[] = {SLOT(SY, kPointer),
                        SLOT(SID, kPointer),
                        SLOT(SNAME, kPointer),
                        SLOT(SSCLAS, kPointer),
                        SLOT(SSCLSY, kPointer),
                        SLOT(SSCODE, kPointer),
                        SLOT(SSCTLH, kPointer),
                        SLOT(SSREL, kPointer),
                        SLOT(SSDCTP, kPointer),
                        SLOT(SSDCDT, 8),
                        SLOT(SSDCXM, kPointer),
                        SLOT(SSDG, kPointer),
                        SLOT(SSDGDT, 8),
                        SLOT(SSCLTX, kPointer),
                        SLOT(SSCATP, kPointer),
                        SLOT(SSCAUT, kPointer),
                        SLOT(SSCRSN, kPointer),
                        SLOT(SSSRDT, 8),
                        SLOT(SSCTLN, kPointer),
                        SLOT(ENCRYP, kNumber),
                        SLOT(SFMT, kPointer),
                        SLOT(SSTRUCT, kNumber),
                        SLOT(SDLVL, kNumber),
                        SLOT(SALVL, kNumber),
                        SLOT(SLOC_COLUMN, kNumber),
                        SLOT(SLOC_ROW, kNumber),
                        SLOT(SBND1_FIRST, kNumber),
                        SLOT(SBND1_SECOND, kNumber),
                        SLOT(SCOLOR, kPointer),
                        SLOT(SBND2_FIRST, kNumber),
                        SLOT(SBND2_SECOND, kNumber),
                        SLOT(SRES2, kNumber),
                        SLOT(SXSHDL, kNumber),
                        SLOT(SXSOFL, kNumber),
                        SLOT(SXSHD, kPointer)};
  ExpectPacked(slots, sizeof(Record));
}

TEST(RecordLayout, Text) {
  using Record = NitfTextHeaderInfo;
  const Slot slots[] = {
      SLOT(TE, kPointer),     SLOT(TEXTID, kPointer), SLOT(TXTALVL, kNumber), SLOT(TXTDT, 14),
      SLOT(TXTITL, kPointer), SLOT(TSCLAS, kPointer), SLOT(TSCLSY, kPointer), SLOT(TSCODE, kPointer),
      SLOT(TSCTLH, kPointer), SLOT(TSREL, kPointer),  SLOT(TSDCTP, kPointer), SLOT(TSDCDT, 8),
      SLOT(TSDCXM, kPointer), SLOT(TSDG, kPointer),   SLOT(TSDGDT, 8),        SLOT(TSCLTX, kPointer),
      SLOT(TSCATP, kPointer), SLOT(TSCAUT, kPointer), SLOT(TSCRSN, kPointer), SLOT(TSSRDT, 8),
      SLOT(TSCTLN, kPointer), SLOT(ENCRYP, kNumber),  SLOT(TXTFMT, kPointer), SLOT(TXSHDL, kNumber),
      SLOT(TXSOFL, kNumber),  SLOT(TXSHD, kPointer)};
  ExpectPacked(slots, sizeof(Record));
}

}  // namespace
}  // namespace tavi::records

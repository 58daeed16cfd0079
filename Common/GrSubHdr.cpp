#include "GrSubHdr.h"

#include <cstring>

#include "SubHeaderReader.h"

namespace tavi {

TAVI_UNIT(L"Common/GrSubHdr")

namespace {

using R = GrSubHdr;
using Field = FieldRow<R>::Field;

bool DowngradesByEvent(const R& record, Layout) {
  return std::strcmp(record.Text.SSDWNG, kDowngradeByEvent) == 0;
}
bool HasExtendedData(const R& record, Layout) {
  return NumberOf(record.Text.SXSHDL) != 0;
}
int64_t ExtendedDataLength(const R& record) {
  return NumberOf(record.Text.SXSHDL) - kOverflowWidth;
}
bool HasColourTable(const R& record, Layout layout) {
  return layout == Layout::kNitf20 && record.LutEntries != 0;
}

int32_t MarkSignature(R& record, const Field&) {
  record.SignatureSeen = 1;
  return SUCCESS;
}

// A single entry has one byte for all three colours; larger tables have a plane each of red, green and blue.
int32_t ReadColourTable(R& record, FieldReader& reader, uint32_t) {
  const uint32_t entries = record.LutEntries;
  HostArray<uint8_t> plane;
  if (!reader.CanHoldGroup(entries, 1)) return ERR_FILE_READ;
  if (!record.Lut.Allocate(entries, Here()) || !plane.Allocate(entries, Here())) return ERR_NO_MEMORY;
  uint8_t HostPaletteEntry::*const planes[] = {&HostPaletteEntry::red, &HostPaletteEntry::green,
                                               &HostPaletteEntry::blue};
  for (int32_t p = 0; p < 3; ++p) {
    if (entries > 1 || p == 0) {
      const int32_t status = reader.Read("DLUT", -1, p, plane.data(), entries);
      if (status != SUCCESS) return status;
    }
    for (uint32_t i = 0; i < entries; ++i) record.Lut[i].*planes[p] = plane[i];
  }
  return SUCCESS;
}

constexpr FieldRow<R> kRows[] = {
    TEXT(SY, 2).Must("SY", ERR_FILE_FORMAT).Then(MarkSignature).Starts("SY").Settable(),
    TEXT(SID, 10).Starts("ID        ").Settable(),
    TEXT(SNAME, 20).Blank().Settable(),
    TEXT(SSCLAS, 1).Must(kSecurityClasses, ERR_FILE_FORMAT).Starts("U").Settable(),
    SECURITY_ROWS(SS, DowngradesByEvent),
    TEXT(ENCRYP, 1),
    TEXT(SFMT, 1).Must("C|O|B", ERR_FILE_FORMAT).Starts("C").Settable(),
    TEXT(SSTRUCT, 13, kAbsent),
    TEXT(NLIPS, kAbsent, 4),
    TEXT(NPIXPL, kAbsent, 4),
    TEXT(NWDTH, kAbsent, 4),
    TEXT(NBPP, kAbsent, 1).Number(&R::SymbolBits),
    TEXT(SDLVL, 3).Number(&R::DisplayLevel),
    TEXT(SALVL, 3).Number(&R::AttachmentLevel),
    TEXT(SLOC, 10).Pair(&R::LocationRow, &R::LocationColumn),
    TEXT(SBND1, 10, kAbsent).Pair(&R::Bound1First, &R::Bound1Second),
    TEXT(SCOLOR, 1, kAbsent).Blank().Settable(),
    TEXT(SBND2, 10).Pair(&R::Bound2First, &R::Bound2Second),
    TEXT(SCOLOR, kAbsent, 1).Blank(),
    TEXT(SNUM, kAbsent, 6),
    TEXT(SROT, kAbsent, 3),
    TEXT(NELUT, kAbsent, 3).Number(&R::LutEntries),
    FieldRow<R>::Own(ReadColourTable).When(HasColourTable),
    TEXT(SRES2, 2, kAbsent),
    TEXT(SXSHDL, 5),
    TEXT(SXSOFL, 3).When(HasExtendedData),
    FieldRow<R>::Block("SXSHD", &R::ExtendedTre, ExtendedDataLength).When(HasExtendedData),
};

}  // namespace

std::span<const FieldRow<GrSubHdr>> GraphicRows() {
  return kRows;
}

GrSubHdr::GrSubHdr(NitfFile* document) : Owner(document) {
  SetDefaults<GrSubHdr>(*this, kRows);
}

int32_t ReadGraphicSubHeader(GrSubHdr& record, NitfFile& document) {
  const int32_t status =
      ReadSubHeader<GrSubHdr>(record, kRows, document, SegmentKind::kGraphic, record.SegmentIndex);
  if (status == SUCCESS) CountExtendedTres(record);
  return status;
}

}  // namespace tavi

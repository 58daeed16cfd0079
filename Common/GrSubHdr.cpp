#include "GrSubHdr.h"

#include <algorithm>
#include <cstring>
#include <utility>

#include "SaveFields.h"
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

// Whatever was read, the 2.1 layout goes out as "colour".
const char* AlwaysColour(const R&, FieldWriter&, uint32_t) {
  return "C";
}

// The planes of red, green and blue; a single entry has the red one alone, and a table of two loses its blue
// one.
int32_t WriteColourTable(const R& record, FieldWriter& writer, uint32_t, uint32_t) {
  uint8_t HostPaletteEntry::*const planes[] = {&HostPaletteEntry::red, &HostPaletteEntry::green,
                                               &HostPaletteEntry::blue};
  const uint32_t entries = record.LutEntries;
  const uint32_t written = entries == 1 ? 1 : entries == 2 ? 2 : 3;
  int32_t status = SUCCESS;
  for (uint32_t p = 0; p < written; ++p) {
    for (uint64_t i = 0; i < std::min<uint64_t>(entries, record.Lut.size()) && status == SUCCESS; ++i) {
      status = writer.WriteBytes(&(record.Lut[i].*planes[p]), 1);
    }
  }
  return status;
}

constexpr Fill kZeros = Fill::kZero;

// Writes a number of up to five characters to the right end of half a location, whose other characters are zeros.
void PutHalf(char* half, int32_t number, bool sign_first) {
  constexpr uint32_t kHalf = 5;
  FormatNumericField(half, kHalf, number);
  if (!sign_first || number >= 0) return;
  char* sign = std::find(half, half + kHalf, '-');
  std::swap(*half, *sign);
}

int32_t SetHalves(R& record, const FieldRow<R>& row, int32_t first, int32_t second, bool sign_first) {
  record.*row.pair_first = first;
  record.*row.pair_second = second;
  char* text = row.Text(record, 0);
  PutHalf(text, first, sign_first);
  PutHalf(text + 5, second, sign_first);
  return SUCCESS;
}

int32_t SetGraphicLocation(R& record, const FieldRow<R>& row, int32_t first, int32_t second) {
  return SetHalves(record, row, first, second, true);
}
// The sign stays among the zeros, so that a negative half of a bound reads back as 0. That is kept.
int32_t SetGraphicBound(R& record, const FieldRow<R>& row, int32_t first, int32_t second) {
  return SetHalves(record, row, first, second, false);
}

constexpr FieldRow<R> kRows[] = {
    TEXT(SY, 2).Must("SY", ERR_FILE_FORMAT).Then(MarkSignature).Starts("SY"),
    TEXT(SID, 10).Starts("ID        "),
    TEXT(SNAME, 20).Blank(),
    TEXT(SSCLAS, 1).Must(kSecurityClasses, ERR_FILE_FORMAT).Starts("U").Filled(kZeros),
    SECURITY_ROWS(SS, DowngradesByEvent),
    TEXT(ENCRYP, 1).Filled(kZeros),
    TEXT(SFMT, 1).Must("C|O|B", ERR_FILE_FORMAT).Starts("C").Filled(kZeros),
    TEXT(SSTRUCT, 13, kAbsent).Filled(kZeros),
    TEXT(NLIPS, kAbsent, 4).Filled(kZeros),
    TEXT(NPIXPL, kAbsent, 4).Filled(kZeros),
    TEXT(NWDTH, kAbsent, 4).Filled(kZeros),
    TEXT(NBPP, kAbsent, 1).Number(&R::SymbolBits).WrittenFromNumber(),
    TEXT(SDLVL, 3).Number(&R::DisplayLevel).WrittenFromNumber(),
    TEXT(SALVL, 3).Number(&R::AttachmentLevel).WrittenFromNumber(),
    TEXT(SLOC, 10).SetBy(SetGraphicLocation).Pair(&R::LocationRow, &R::LocationColumn).Filled(kZeros),
    TEXT(SBND1, 10, kAbsent).SetBy(SetGraphicBound).Pair(&R::Bound1First, &R::Bound1Second).Filled(kZeros),
    TEXT(SCOLOR, 1, kAbsent).Blank().WrittenAs(AlwaysColour),
    TEXT(SBND2, 10).SetBy(SetGraphicBound).Pair(&R::Bound2First, &R::Bound2Second).Filled(kZeros),
    TEXT(SCOLOR, kAbsent, 1).Blank(),
    TEXT(SNUM, kAbsent, 6).Filled(kZeros),
    TEXT(SROT, kAbsent, 3).Filled(kZeros),
    TEXT(NELUT, kAbsent, 3).Number(&R::LutEntries).WrittenFromNumber(),
    FieldRow<R>::Own(ReadColourTable).When(HasColourTable).WrittenBy(WriteColourTable),
    TEXT(SRES2, 2, kAbsent).Filled(kZeros),
    TEXT(SXSHDL, 5).Filled(kZeros),
    TEXT(SXSOFL, 3).When(HasExtendedData).Filled(kZeros),
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

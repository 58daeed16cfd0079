#include "ImageEditing.h"

#include <charconv>
#include <cstring>

#include "HeaderReader.h"
#include "HeaderSetter.h"
#include "NitfFile.h"

namespace tavi {

TAVI_UNIT(L"Common/ImageEditing")

namespace {

const ImageRow& RowOf(const char* field) {
  return *FindRow<ImSubHdr>(ImageRows(), field);
}

// The subheader takes up that many bytes more, or less. A new image that the header does not count yet has no
// entry of its own; FL changes all the same.
void Lengthen(const ImSubHdr& record, int32_t by) {
  NtfHdr* header = record.Owner != nullptr ? GetHeader(*record.Owner) : nullptr;
  if (header == nullptr) return;
  const uint32_t index = record.SegmentIndex;
  if (index < header->NumImages && index < header->LishWork.size()) {
    header->LishWork[index] += static_cast<uint32_t>(by);
  }
  const int32_t length = WrapAdd(NumberOf(header->Text.FL), by);
  header->FlValue = header->FlMirror = static_cast<uint32_t>(length);
  FormatNumericField(header->Text.FL, sizeof header->Text.FL - 1, length);
}

void LengthenBy(const ImSubHdr& record, const char* field, bool had, bool has) {
  if (had == has) return;
  const int32_t width = RowOf(field).width.nitf21;
  Lengthen(record, has ? width : -width);
}

bool HasRate(const ImSubHdr& record) {
  return RowOf("COMRAT").present(record, Layout::kNitf21);
}

// Digits whose last stands at `last`; those that would stand before the field are lost.
void PutDigits(char* field, ptrdiff_t last, ptrdiff_t sign, int32_t number) {
  char digits[16] = {};
  const auto printed = std::to_chars(digits, digits + sizeof digits, number);
  const char* const first = digits + (number < 0 ? 1 : 0);
  ptrdiff_t at = last;
  for (const char* digit = printed.ptr; digit != first && at >= 0; --at) field[at] = *--digit;
  if (number < 0) field[sign] = '-';
}

// Tables of bands that nothing is known of.
int32_t MakeBands(ImSubHdr& r, uint32_t count) {
  constexpr uint32_t kMostBands = 99999;  // in five digits; a caller's number may be any
  r.BandRoles.Release();
  r.BandSubcategories.Release();
  r.BandFilterConditions.Release();
  r.BandFilterCodes.Release();
  r.BandLutCounts.Release();
  const bool made = count <= kMostBands && r.BandRoles.Resize(count, Here()) &&
                    r.BandSubcategories.Resize(count, Here()) &&
                    r.BandFilterConditions.Resize(count, Here()) && r.BandFilterCodes.Resize(count, Here()) &&
                    r.BandLutCounts.Resize(count, Here());
  if (!made) return ERR_NO_MEMORY;
  for (uint32_t band = 0; band < count; ++band) {
    *r.BandFilterConditions.At(band) = 'N';
    SetFixedText(r.BandFilterCodes.At(band), 3, "");
  }
  return SUCCESS;
}

}  // namespace

int32_t SetPjust(ImSubHdr& record, const ImageRow& row, const char* text) {
  if (*text != 'L' && *text != 'R') return ERR_INVALID_PARAMETER;
  record.RightJustified = *text == 'R' ? 1 : 0;
  return SetFixedText(row.Text(record, 0), row.SetterLimit(), text);
}

int32_t SetIcords(ImSubHdr& record, const ImageRow& row, const char* text) {
  const char* const field = row.Text(record, 0);
  const bool had = *field != ' ';
  const int32_t status = SetFixedText(row.Text(record, 0), row.SetterLimit(), text);
  if (status == SUCCESS) LengthenBy(record, "IGEOLO", had, *field != ' ');
  return status;
}

int32_t SetIc(ImSubHdr& record, const ImageRow& row, const char* text) {
  const auto width = static_cast<uint32_t>(strnlen(text, row.SetterLimit() + 1));
  const CodeText* found = width == row.SetterLimit() ? FindCode(row.codes, text, width) : nullptr;
  if (found == nullptr) return ERR_INVALID_PARAMETER;
  const bool had = HasRate(record);
  record.Compression = found->code;
  SetFixedText(row.Text(record, 0), row.SetterLimit(), text);
  LengthenBy(record, "COMRAT", had, HasRate(record));
  return SUCCESS;
}

int32_t SetComrat(ImSubHdr& record, const ImageRow& row, const char* text) {
  const auto width = static_cast<uint32_t>(strnlen(text, row.SetterLimit() + 1));
  if (width > row.SetterLimit()) return ERR_INVALID_PARAMETER;
  const CodeText* found = FindCode(row.codes, text, width);
  record.ComratMode = found != nullptr ? found->code : static_cast<uint32_t>(kComratOther);
  return SetFixedText(row.Text(record, 0), row.SetterLimit(), text);
}

int32_t SetImag(ImSubHdr& record, const ImageRow& row, const char* text) {
  const size_t length = std::strlen(text);
  record.Magnification = *text == '/' ? 1.0 / ParseInteger(text + 1, length - 1) : ParseReal(text, length);
  return SetFixedText(row.Text(record, 0), row.SetterLimit(), text);
}

int32_t SetBandCount(ImSubHdr& record, const ImageRow& row, uint32_t count) {
  const auto extra = static_cast<uint32_t>(std::max(NumberOf(record.Text.XBANDS), 0));
  record.BandField = count;
  record.BandCount = std::max(count, extra);
  const int32_t status = MakeBands(record, count);
  if (status != SUCCESS) return status;
  return FormatNumericField(row.Text(record, 0), row.SetterLimit(), static_cast<int32_t>(count));
}

int32_t SetIloc(ImSubHdr& record, const ImageRow& row, int32_t location_row, int32_t location_column) {
  constexpr ptrdiff_t kHalf = 5;
  record.LocationRow = location_row;
  record.LocationColumn = location_column;
  char* const text = row.Text(record, 0);
  FormatNumericField(text, row.SetterLimit(), 0);
  PutDigits(text, kHalf - 1, 0, location_row);
  PutDigits(text, 2 * kHalf - 1, kHalf, location_column);
  return SUCCESS;
}

int32_t SetBandRole(ImSubHdr& record, uint32_t band, const char* text) {
  if (band >= record.BandCount || band >= record.BandRoles.size()) return ERR_INVALID_PARAMETER;
  const CodeText* found = FindCode(BandRoleTexts(), text, static_cast<uint32_t>(strnlen(text, 2)));
  if (found == nullptr) return ERR_INVALID_PARAMETER;
  record.BandRoles[band] = found->code;
  return SUCCESS;
}

}  // namespace tavi

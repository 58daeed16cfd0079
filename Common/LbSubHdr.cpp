#include "LbSubHdr.h"

#include <cstring>

#include "SaveFields.h"
#include "SubHeaderReader.h"

namespace tavi {

namespace {

using R = LbSubHdr;
using Field = FieldRow<R>::Field;

bool DowngradesByEvent(const R& record, Layout) {
  return std::strcmp(record.Text.LSDWNG, kDowngradeByEvent) == 0;
}
bool HasExtendedData(const R& record, Layout) {
  return NumberOf(record.Text.LXSHDL) != 0;
}
int64_t ExtendedDataLength(const R& record) {
  return NumberOf(record.Text.LXSHDL) - kOverflowWidth;
}

int32_t MarkSignature(R& record, const Field&) {
  record.SignatureSeen = 1;
  return SUCCESS;
}

// Unlike other locations, each half is converted plainly.
int32_t SetLocation(R& record, const Field& field) {
  record.LocationRow = ParseInteger(field.chars, 5);
  record.LocationColumn = ParseInteger(field.chars + 5, 5);
  return SUCCESS;
}

uint32_t Colour(const char* rgb) {
  const auto byte = [&](int i) { return static_cast<uint32_t>(static_cast<uint8_t>(rgb[i])); };
  return byte(0) | byte(1) << 8 | byte(2) << 16;
}

int32_t SetTextColour(R& record, const Field& field) {
  record.TextColour = Colour(field.chars);
  return SUCCESS;
}

int32_t SetBackgroundColour(R& record, const Field& field) {
  record.BackgroundColour = Colour(field.chars);
  return SUCCESS;
}

// The numbers go out, red first; a new record's bytes differ from them.
int32_t WriteColour(uint32_t colour, FieldWriter& writer) {
  const uint8_t bytes[] = {static_cast<uint8_t>(colour), static_cast<uint8_t>(colour >> 8),
                           static_cast<uint8_t>(colour >> 16)};
  return writer.WriteBytes(bytes, sizeof bytes);
}
int32_t WriteTextColour(const R& record, FieldWriter& writer, uint32_t, uint32_t) {
  return WriteColour(record.TextColour, writer);
}
int32_t WriteBackgroundColour(const R& record, FieldWriter& writer, uint32_t, uint32_t) {
  return WriteColour(record.BackgroundColour, writer);
}

constexpr FieldRow<R> kRows[] = {
    TEXT(LA, 2).Must("LA", ERR_FILE_FORMAT).Then(MarkSignature).Starts("LA"),
    TEXT(LID, 10),
    TEXT(LSCLAS, 1).Must(kSecurityClasses, ERR_FILE_FORMAT).Starts("U"),
    TEXT(LSCODE, 40).SecurityText(),
    TEXT(LSCTLH, 40).SecurityText(),
    TEXT(LSREL, 40).SecurityText(),
    TEXT(LSCAUT, 20).SecurityText(),
    TEXT(LSCTLN, 20).SecurityText(),
    TEXT(LSDWNG, 6).SecurityText(),
    TEXT(LSDEVT, 40).SecurityText().When(DowngradesByEvent),
    TEXT(ENCRYP, 1),
    TEXT(LFS, 1).Blank(),
    TEXT(LCW, 2).Number(&R::CellWidth),
    TEXT(LCH, 2).Number(&R::CellHeight),
    TEXT(LDLVL, 3).Number(&R::DisplayLevel).Starts("000"),
    TEXT(LALVL, 3).Number(&R::AttachmentLevel),
    TEXT(LLOC, 10).Then(SetLocation).Starts("0000000000"),
    TEXT(LTC, 3).Then(SetTextColour).Starts("\1\1\1").WrittenBy(WriteTextColour),
    TEXT(LBC, 3).Then(SetBackgroundColour).Starts("\xFF\xFF\xFF").WrittenBy(WriteBackgroundColour),
    TEXT(LXSHDL, 5),
    TEXT(LXSOFL, 3).When(HasExtendedData),
    FieldRow<R>::Block("LXSHD", &R::ExtendedTre, ExtendedDataLength).When(HasExtendedData),
};

}  // namespace

std::span<const FieldRow<LbSubHdr>> LabelRows() {
  return kRows;
}

LbSubHdr::LbSubHdr(NitfFile* document) : Owner(document) {
  SetDefaults<LbSubHdr>(*this, kRows);
}

int32_t ReadLabelSubHeader(LbSubHdr& record, NitfFile& document) {
  const int32_t status =
      ReadSubHeader<LbSubHdr>(record, kRows, document, SegmentKind::kLabel, record.SegmentIndex);
  if (status == SUCCESS) CountExtendedTres(record);
  return status;
}

}  // namespace tavi

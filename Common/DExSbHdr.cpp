#include "DExSbHdr.h"

#include <cstring>

#include "SaveFields.h"
#include "SubHeaderReader.h"

namespace tavi {

namespace {

using R = DExSbHdr;
using Field = FieldRow<R>::Field;

bool Always(const R&, Layout) {
  return true;
}

// The comparison includes the terminating NUL, so a DESID padded with blanks differs and has the two overflow
// fields. So do all other kinds of data extension: there the fields take nine bytes of what the standard
// means by DESSHL and DESSHF.
bool HasOverflowFields(const R& record, Layout) {
  constexpr char kExactId[] = "TRE_OVERFLOW";
  return std::memcmp(record.Text.DESID, kExactId, sizeof kExactId) != 0;
}

bool HasUserSubheader(const R& record, Layout) {
  return NumberOf(record.Text.DESSHL) != 0;
}
int64_t UserSubheaderLength(const R& record) {
  return NumberOf(record.Text.DESSHL);
}

int32_t MarkSignature(R& record, const Field&) {
  record.SignatureSeen = 1;
  return SUCCESS;
}

int32_t CheckVersion(R&, const Field& field) {
  constexpr uint32_t kHighest = 99;
  return static_cast<uint32_t>(ParseInteger(field.chars, field.width)) > kHighest ? ERR_FILE_FORMAT : SUCCESS;
}

int32_t CheckClass(R&, const Field& field) {
  const bool accepted =
      field.layout == Layout::kNitf20 || IsOneOf(field.chars, field.width, kSecurityClasses);
  return accepted ? SUCCESS : ERR_FILE_FORMAT;
}

// Written as a text: cut at its first NUL and moved to the right end, with zeros in front.
int32_t WriteUserSubheader(const R& record, FieldWriter& writer, uint32_t, uint32_t) {
  const int32_t length = NumberOf(record.Text.DESSHL);
  if (length <= 0) return SUCCESS;
  const char* text =
      record.UserSubheader.exists() ? reinterpret_cast<const char*>(record.UserSubheader.data()) : "";
  return writer.Write(text, static_cast<uint32_t>(length), Fill::kZero);
}

constexpr FieldRow<R> kRows[] = {
    TEXT(DE, 2).Must("DE", ERR_FILE_FORMAT).Then(MarkSignature),
    TEXT(DESID, 25),
    TEXT(DESVER, 2).Then(CheckVersion),
    TEXT(DESCLAS, 1).Then(CheckClass),
    SECURITY_ROWS(DES, Always),
    TEXT(DESOFLW, 6).When(HasOverflowFields),
    TEXT(DESITEM, 3).When(HasOverflowFields),
    TEXT(DESSHL, 4),
    FieldRow<R>::Block("DESSHF", &R::UserSubheader, UserSubheaderLength)
        .When(HasUserSubheader)
        .WrittenBy(WriteUserSubheader),
};

}  // namespace

std::span<const FieldRow<DExSbHdr>> DataExtensionRows() {
  return kRows;
}

int32_t ReadDataExtensionSubHeader(DExSbHdr& record, NitfFile& document, uint32_t index) {
  return ReadSubHeader<DExSbHdr>(record, kRows, document, SegmentKind::kDataExtension, index);
}

}  // namespace tavi

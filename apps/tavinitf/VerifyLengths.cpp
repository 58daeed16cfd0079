// FL, HL and the length tables, against the headers and the file as they are.
#include <array>

#include "FieldBytes.h"
#include "Verify.h"

namespace tavinitf {
namespace {

// The end of the fields that follow one another without a gap from the first. A streamed header's replacement
// stands elsewhere, and the mask table belongs to the data.
uint64_t EndOfFields(const Segment& segment) {
  uint64_t end = segment.fields.front().offset;
  for (const Field& field : segment.fields) {
    if (field.offset != end || field.name == "IMDATOFF") break;
    end += field.size;
  }
  return end;
}

// Reading takes two fields from every data extension that only those of overflowing records have. Of any other,
// the length of the user's fields stands in their place.
uint64_t EndOfDataExtension(const Subject& subject, const Segment& segment) {
  constexpr uint64_t kLengthWidth = 4;
  const Field* misread = segment.Find("DESOFLW");
  if (misread == nullptr || segment.Text("DESID") == "TRE_OVERFLOW") return EndOfFields(segment);
  const Field length{"DESSHL", -1, -1, misread->offset, kLengthWidth, misread->bytes.substr(0, kLengthWidth)};
  const std::optional<uint64_t> digits = DigitsOf(length);
  if (!digits) subject.findings.Add(segment, length, "4 digits");
  return length.offset + kLengthWidth + digits.value_or(0);
}

void VerifySubheader(const Subject& subject, const Segment& segment) {
  const Field* length = LengthField(subject.contents, segment, false);
  if (length == nullptr || segment.fields.empty()) return;
  const bool extension = segment.kind == SegmentKind::kDataExtension;
  const uint64_t end = extension ? EndOfDataExtension(subject, segment) : EndOfFields(segment);
  const uint64_t read = end - segment.fields.front().offset;
  if (DigitsOf(*length) == read) return;
  subject.findings.Add(subject.contents.header, *length,
                       std::to_string(read) + ", the length of the subheader of " + KindName(segment.kind) +
                           " " + std::to_string(segment.index));
}

void VerifyDataEnd(const Subject& subject, const Segment& segment) {
  const Field* length = LengthField(subject.contents, segment, true);
  if (length == nullptr) return;
  const uint64_t size = subject.contents.file_size;
  if (!DigitsOf(*length)) {
    subject.findings.Add(subject.contents.header, *length, std::to_string(length->size) + " digits");
  } else if (segment.data.end() > size) {
    const uint64_t left = segment.data.offset < size ? size - segment.data.offset : 0;
    subject.findings.Add(subject.contents.header, *length,
                         "at most " + std::to_string(left) + ", the bytes from the data's place at byte " +
                             std::to_string(segment.data.offset) + " to the file's end");
  }
}

uint64_t ReservedLength(const Subject& subject) {
  const Segment& header = subject.contents.header;
  uint64_t length = 0;
  for (const Field& field : header.fields) {
    if (field.name == "LRESH" || field.name == "LRE") length += DigitsOf(field).value_or(0);
  }
  return length;
}

// What no length accounts for lies behind the last segment.
void VerifySum(const Subject& subject) {
  const NitfContents& contents = subject.contents;
  uint64_t end = contents.header.Number("HL");
  if (!contents.segments.empty()) end = contents.segments.back().data.end();
  end += ReservedLength(subject);
  if (end >= contents.file_size) return;
  const Field* last = contents.header.Find("HL");
  for (const Field& field : contents.header.fields) {
    for (const LengthTables& table : AllLengthTables()) {
      if (field.name == table.data) last = &field;
    }
    if (field.name == "LRE") last = &field;
  }
  if (last == nullptr) return;
  subject.findings.Add(contents.header, *last, last->offset, last->bytes,
                       "lengths that reach to the file's end at byte " + std::to_string(contents.file_size) +
                           ": all together end at byte " + std::to_string(end));
}

}  // namespace

void VerifyLengths(const Subject& subject) {
  const NitfContents& contents = subject.contents;
  const Segment& header = contents.header;
  if (const auto length = TakeNumber(subject, header, "FL"); length && *length != contents.file_size) {
    subject.findings.Add(header, *header.Find("FL"),
                         std::to_string(contents.file_size) + ", the file's size");
  }
  const uint64_t read = EndOfFields(header);
  if (const auto length = TakeNumber(subject, header, "HL"); length && *length != read) {
    subject.findings.Add(header, *header.Find("HL"),
                         std::to_string(read) + ", the length of the file header");
  }
  for (const char* count : {"NUMI", "NUMS", "NUMT", "NUMDES", "NUMRES"}) TakeNumber(subject, header, count);
  for (const Segment& segment : contents.segments) {
    VerifySubheader(subject, segment);
    VerifyDataEnd(subject, segment);
  }
  VerifySum(subject);
}

}  // namespace tavinitf

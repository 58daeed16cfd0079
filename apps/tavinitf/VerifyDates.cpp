// Dates: digits within their bounds, hyphens or blanks where nothing is known.
#include <array>
#include <string_view>

#include "Verify.h"

namespace tavinitf {
namespace {

struct DatePart {
  size_t start;
  size_t width;
  unsigned least;
  unsigned most;
};
// CCYYMMDDhhmmss; a leap second counts as the sixtieth.
constexpr std::array<DatePart, 6> kParts = {
    {{0, 4, 0, 9999}, {4, 2, 1, 12}, {6, 2, 1, 31}, {8, 2, 0, 23}, {10, 2, 0, 59}, {12, 2, 0, 60}}};

bool IsPlausible(const std::string& date) {
  if (date.find_first_not_of(' ') == std::string::npos) return true;
  for (const DatePart& part : kParts) {
    if (part.start >= date.size()) break;
    const std::string text = date.substr(part.start, part.width);
    if (text.find_first_not_of('-') == std::string::npos) continue;
    if (text.find_first_not_of("0123456789") != std::string::npos) return false;
    const unsigned long number = std::stoul(text);
    if (number < part.least || number > part.most) return false;
  }
  return true;
}

bool IsDate(const Field& field) {
  constexpr uint64_t kDay = 8;
  constexpr uint64_t kSecond = 14;
  const std::string_view name = field.name;
  if (name == "FDT" || name == "IDATIM" || name == "TXTDT") return field.size == kSecond;
  return field.size == kDay && (name.ends_with("DCDT") || name.ends_with("DGDT") || name.ends_with("SRDT"));
}

void VerifySegment(const Subject& subject, const Segment& segment) {
  for (const Field& field : segment.fields) {
    if (!IsDate(field) || IsPlausible(field.bytes)) continue;
    subject.findings.Add(segment, field,
                         std::string(field.size == 8 ? "CCYYMMDD" : "CCYYMMDDhhmmss") +
                             ", hyphens or blanks where it is not known");
  }
}

}  // namespace

void VerifyDates(const Subject& subject) {
  VerifySegment(subject, subject.contents.header);
  for (const Segment& segment : subject.contents.segments) VerifySegment(subject, segment);
}

}  // namespace tavinitf

// What verifying a file has to say of it: the findings, and the checks that make them.
#pragma once

#include <cstdint>
#include <fstream>
#include <limits>
#include <map>
#include <optional>
#include <string>
#include <tuple>
#include <vector>

#include "Segments.h"

namespace tavinitf {

// One field that does not agree with the rest of the file or with the format.
struct Finding {
  SegmentKind kind;
  uint32_t index;
  std::string field;  // empty when the file is none that could be read
  int32_t field_index;
  int32_t sub_index;
  uint64_t offset;       // of the field, or of the place within it
  std::string found;     // the field's bytes as they stand, numbers in decimal
  std::string expected;  // in words
};

// Keeps what a person can read and counts the rest: a damaged table can be wrong in every entry.
class Findings {
 public:
  void Add(const Segment& segment, const Field& field, const std::string& expected);
  // Of a number or a place inside the field.
  void Add(const Segment& segment, const Field& field, uint64_t offset, const std::string& found,
           const std::string& expected);
  void Add(Finding finding);

  [[nodiscard]] const std::vector<Finding>& list() const { return list_; }
  [[nodiscard]] uint64_t omitted() const { return omitted_; }

 private:
  std::vector<Finding> list_;
  uint64_t omitted_ = 0;
  std::map<std::tuple<SegmentKind, uint32_t, std::string>, uint32_t> counts_;
};

struct Subject {
  const NitfContents& contents;
  std::ifstream& file;
  Findings& findings;
};

void VerifyLengths(const Subject& subject);  // FL, HL and the tables of the file header
void VerifyImages(const Subject& subject);   // sizes, blocks, depths, coding, length of uncompressed data
void VerifyMasks(const Subject& subject);    // the mask tables at the beginning of image data
void VerifyRecords(const Subject& subject);  // extended data areas and their overflow
void VerifyLevels(const Subject& subject);   // display levels and attachments
void VerifyDates(const Subject& subject);

// ---- What the checks have in common ----

// A field's number when it holds digits only, as every number of the format does.
std::optional<uint64_t> DigitsOf(const Field& field);
// The number of a field that the segment has; a finding and nothing when it is no number.
std::optional<uint64_t> TakeNumber(const Subject& subject, const Segment& segment, const std::string& name,
                                   int32_t at = -1);
// `LISH` of image 0 in the file header, and its like.
const Field* LengthField(const NitfContents& contents, const Segment& segment, bool of_data);

// Products of header fields can exceed 64 bits: they stay at the largest number then.
constexpr uint64_t Times(uint64_t a, uint64_t b) {
  constexpr uint64_t kMost = std::numeric_limits<uint64_t>::max();
  return a != 0 && b > kMost / a ? kMost : a * b;
}
constexpr uint64_t DivideUp(uint64_t a, uint64_t b) {
  return a / b + (a % b != 0 ? 1 : 0);
}

}  // namespace tavinitf

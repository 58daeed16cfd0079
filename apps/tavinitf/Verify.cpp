#include "Verify.h"

#include "FieldBytes.h"

namespace tavinitf {
namespace {

constexpr uint32_t kMostOfOneField = 8;
constexpr size_t kMostOfAll = 1000;

}  // namespace

void Findings::Add(const Segment& segment, const Field& field, const std::string& expected) {
  constexpr size_t kShown = 80;
  Add(segment, field, field.offset, field.bytes.substr(0, kShown), expected);
}

void Findings::Add(const Segment& segment, const Field& field, uint64_t offset, const std::string& found,
                   const std::string& expected) {
  Add({segment.kind, segment.index, field.name, field.index, field.sub_index, offset, found, expected});
}

void Findings::Add(Finding finding) {
  uint32_t& count = counts_[{finding.kind, finding.index, finding.field}];
  if (++count > kMostOfOneField || list_.size() >= kMostOfAll) {
    ++omitted_;
  } else {
    list_.push_back(std::move(finding));
  }
}

std::optional<uint64_t> DigitsOf(const Field& field) {
  constexpr uint64_t kMostDigits = 18;
  if (field.size == 0 || field.size > kMostDigits || field.bytes.size() != field.size) return std::nullopt;
  if (field.bytes.find_first_not_of("0123456789") != std::string::npos) return std::nullopt;
  return std::stoull(field.bytes);
}

std::optional<uint64_t> TakeNumber(const Subject& subject, const Segment& segment, const std::string& name,
                                   int32_t at) {
  const Field* field = segment.Find(name, at);
  if (field == nullptr) return std::nullopt;
  const std::optional<uint64_t> number = DigitsOf(*field);
  if (!number) subject.findings.Add(segment, *field, std::to_string(field->size) + " digits");
  return number;
}

const Field* LengthField(const NitfContents& contents, const Segment& segment, bool of_data) {
  for (const LengthTables& table : AllLengthTables()) {
    if (table.kind != segment.kind) continue;
    return contents.header.Find(of_data ? table.data : table.subheader, static_cast<int32_t>(segment.index));
  }
  return nullptr;
}

}  // namespace tavinitf

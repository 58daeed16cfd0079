#include "TaggedRecords.h"

#include <array>

#include "FieldBytes.h"

namespace tavinitf {
namespace {

constexpr size_t kTagWidth = 6;
constexpr size_t kLengthWidth = 5;
constexpr std::array<const char*, 7> kBlocks = {"UDHD", "XHD", "UDID", "IXSHD", "SXSHD", "LXSHD", "TXSHD"};

// Digits behind blanks, up to the first other character: what the library counts records by.
uint64_t LengthIn(const std::string& field) {
  uint64_t length = 0;
  const size_t first = field.find_first_not_of(" \t\n\v\f\r");
  for (size_t i = first; i < field.size() && field[i] >= '0' && field[i] <= '9'; ++i) {
    length = length * 10 + static_cast<uint64_t>(field[i] - '0');
  }
  return length;
}

void Walk(const std::string& bytes, const char* block, uint64_t offset, std::vector<TaggedRecord>& records) {
  for (uint64_t at = 0; at < bytes.size();) {
    const std::string head = bytes.substr(at, kTagWidth + kLengthWidth);
    TaggedRecord record{head.substr(0, kTagWidth), block, offset + at, 0, false};
    if (head.size() > kTagWidth) record.length = LengthIn(head.substr(kTagWidth));
    at += kTagWidth + kLengthWidth + record.length;
    record.overruns = at > bytes.size();
    records.push_back(std::move(record));
  }
}

}  // namespace

std::vector<TaggedRecord> FindTaggedRecords(std::ifstream& file, const Segment& segment) {
  std::vector<TaggedRecord> records;
  for (const char* block : kBlocks) {
    if (const Field* field = segment.Find(block)) Walk(WholeOf(file, *field), block, field->offset, records);
  }
  return records;
}

}  // namespace tavinitf

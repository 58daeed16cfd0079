// Reads a header by walking its table.
#pragma once

#include <cstring>
#include <span>

#include "HeaderLayout.h"
#include "Inspect.h"

struct NitfFile;

namespace tavi {

// The end of the replacement data within a streaming pass; never leaves the reader.
inline constexpr int32_t kBudgetSpent = 2;

// Takes fields one after another from the file's current position.
class FieldReader {
 public:
  // What a streaming pass may still read; a normal pass has no limit.
  static constexpr uint64_t kNoLimit = UINT64_MAX;

  FieldReader(NitfFile& document, SegmentKind kind, uint32_t segment_index, uint64_t limit = kNoLimit);

  // Reads a field of `size` bytes. ERR_FILE_READ when the file ends inside it; kBudgetSpent when the
  // replacement data end before it, and then nothing is read.
  int32_t Read(const char* name, int32_t index, int32_t sub_index, void* to, uint64_t size);
  int32_t Read(const char* name, void* to, uint64_t size) { return Read(name, -1, -1, to, size); }
  // Reads a block into fresh memory with a NUL behind it. No memory is asked for that the file cannot fill.
  int32_t ReadBlock(const char* name, HostArray<uint8_t>& block, int64_t size);

  // Whether the file still holds `size` bytes.
  bool CanHold(uint64_t size) const;
  // Whether `count` entries of a repeated group can be there: room is never made for more than the file can
  // fill.
  bool CanHoldGroup(uint32_t count, uint64_t entry_size) const;
  Layout layout() const { return layout_; }
  bool is_streaming() const { return limit_ != kNoLimit; }
  uint64_t consumed() const { return consumed_; }
  bool sentinel_seen() const { return sentinel_seen_; }
  void NoteSentinel() { sentinel_seen_ = true; }

 private:
  NitfFile& document_;
  SegmentKind kind_;
  uint32_t segment_index_;
  Layout layout_;
  uint64_t limit_;
  uint64_t consumed_ = 0;
  int64_t position_;
  bool sentinel_seen_ = false;
};

// Shows the message of a refusal, when it has one, and returns its status.
int32_t Refuse(int32_t status, const char* message);
// Whether the characters are one of the texts divided by "|", whole.
bool IsOneOf(const char* chars, uint32_t width, const char* texts);
// The code of the first matching text, or null.
const CodeText* FindCode(std::span<const CodeText> table, const char* chars, uint32_t width);

// What a row computes from the text that was read.
template <class R>
int32_t TakeIn(R& record, const FieldRow<R>& row, const typename FieldRow<R>::Field& field,
               FieldReader& reader) {
  if (row.accepted != nullptr && !IsOneOf(field.chars, field.width, row.accepted)) {
    return Refuse(row.refusal, row.message);
  }
  if (row.code != nullptr) {
    if (const CodeText* found = FindCode(row.codes, field.chars, field.width)) {
      record.*row.code = found->code;
    } else if (row.code_required) {
      return Refuse(row.refusal, row.message);
    }
  }
  const auto value = [&] { return static_cast<uint32_t>(ParseInteger(field.chars, field.width)); };
  if (row.number != nullptr) record.*row.number = value();
  if (row.second_number != nullptr) record.*row.second_number = value();
  if (row.signed_number != nullptr) record.*row.signed_number = ParseInteger(field.chars, field.width);
  if (row.list != nullptr) (record.*row.list)[field.index] = value();
  if (row.second_list != nullptr) (record.*row.second_list)[field.index] = value();
  if (row.pair_first != nullptr) {
    const LocationPair pair = ParseLocationPair(field.chars);
    record.*row.pair_first = pair.first;
    record.*row.pair_second = pair.second;
  }
  if (row.sentinel != nullptr && IsOneOf(field.chars, field.width, row.sentinel)) reader.NoteSentinel();
  return row.then != nullptr ? row.then(record, field) : SUCCESS;
}

template <class R>
int32_t ReadText(R& record, const FieldRow<R>& row, FieldReader& reader, uint32_t index,
                 int32_t shown_index) {
  char scratch[16];  // fields that are kept nowhere are short
  const uint32_t width = row.width.In(reader.layout());
  char* text = row.Text(record, index);
  if (text == nullptr) text = scratch;
  const int32_t status = reader.Read(row.name, shown_index, -1, text, width);
  if (status != SUCCESS) return status;
  if (row.terminated && text != scratch) text[width] = '\0';
  return TakeIn(record, row, {text, width, index, reader.layout()}, reader);
}

// Reads the rows of a table, or of a group's entry `index`.
template <class R>
int32_t ReadRows(R& record, std::span<const FieldRow<R>> rows, FieldReader& reader, uint32_t index = 0,
                 int32_t shown_index = -1) {
  for (const FieldRow<R>& row : rows) {
    if (row.present != nullptr && !row.present(record, reader.layout())) continue;
    int32_t status = SUCCESS;
    if (row.own != nullptr) {
      status = row.own(record, reader, index);
    } else if (row.block != nullptr) {
      status = reader.ReadBlock(row.name, record.*row.block, row.block_length(record));
    } else if (row.count != nullptr) {
      status = ReadGroup(record, row, reader);
    } else if (row.width.In(reader.layout()) != kAbsent) {
      status = ReadText(record, row, reader, index, shown_index);
    }
    if (status != SUCCESS) return status;
  }
  return SUCCESS;
}

// The least bytes that one entry of a group takes in the file.
template <class R>
uint64_t LeastEntrySize(const FieldRow<R>& group, Layout layout) {
  uint64_t size = 0;
  for (const FieldRow<R>& column : group.columns) {
    if (column.present == nullptr) size += column.width.In(layout);
  }
  return size;
}

template <class R>
int32_t ReadGroup(R& record, const FieldRow<R>& group, FieldReader& reader) {
  const uint32_t count = group.count(record);
  if (count == 0) return SUCCESS;
  if (!reader.CanHoldGroup(count, LeastEntrySize(group, reader.layout()))) return ERR_FILE_READ;
  int32_t status = group.prepare(record, count);
  for (uint32_t i = 0; i < count && status == SUCCESS; ++i) {
    status = ReadRows(record, group.columns, reader, i, static_cast<int32_t>(i));
  }
  return status;
}

}  // namespace tavi

// Writes a header by walking its table: the counterpart of HeaderReader.h.
#pragma once

#include <algorithm>
#include <span>

#include "HeaderLayout.h"
#include "NitfFile.h"
#include "SaveOutput.h"

namespace tavi {

// Puts fields one after another at the output's current position.
class FieldWriter {
 public:
  FieldWriter(SaveOutput& output, const NitfFile& document)
      : output_(output), document_(document), layout_(LayoutOf(document)) {}

  // Writes a text, up to its first NUL, into a field of `width`. A longer text loses its right end.
  int32_t Write(const char* text, uint32_t width, Fill fill);
  int32_t WriteBytes(const void* bytes, uint64_t size) { return output_.Write(bytes, size); }
  // Writes `length` bytes of a block that ends in a NUL of its own; zeros stand for what it lacks.
  int32_t WriteBlock(const HostArray<uint8_t>& block, int64_t length);

  // The text of a number.
  const char* Print(int32_t number);
  // A text is not forgotten before the next one is printed or kept: a code that has no text is written as the
  // text before it.
  const char* Keep(const char* text);
  const char* kept() const { return scratch_; }

  // The mask table begins here, if it has not begun.
  void BeginMaskTable() { mask_start_ = mask_start_ < 0 ? output_.position() : mask_start_; }
  uint32_t MaskTableSize() const {
    return mask_start_ < 0 ? 0 : static_cast<uint32_t>(output_.position() - mask_start_);
  }

  const NitfFile& document() const { return document_; }
  Layout layout() const { return layout_; }

 private:
  SaveOutput& output_;
  const NitfFile& document_;
  Layout layout_;
  char scratch_[16] = {};
  int64_t mask_start_ = -1;
};

// The number in a row: the record's, or the working list's. What stands past the `known` entries counts 0.
template <class R>
int32_t NumberIn(const R& record, const FieldRow<R>& row, uint32_t index, uint32_t known) {
  const LengthList R::*list = row.second_list != nullptr ? row.second_list : row.list;
  if (list != nullptr) return index < known ? static_cast<int32_t>((record.*list).At(index)) : 0;
  if (row.signed_number != nullptr) return record.*row.signed_number;
  return static_cast<int32_t>(record.*row.number);
}

template <class R>
int32_t WriteText(R& record, const FieldRow<R>& row, FieldWriter& writer, uint32_t index, uint32_t known) {
  const char* text = nullptr;
  if (row.text_rule != nullptr) {
    text = row.text_rule(record, writer, index);
  } else if (row.from_number || row.list != nullptr) {
    text = writer.Print(NumberIn(record, row, index, known));
  } else {
    text = row.Text(record, index);
  }
  return writer.Write(text != nullptr ? text : writer.kept(), row.width.In(writer.layout()), row.fill);
}

template <class R>
int32_t WriteRow(R& record, const FieldRow<R>& row, FieldWriter& writer, uint32_t index, uint32_t known);

// Writes the entries of a repeated group.
template <class R>
int32_t WriteGroup(R& record, const FieldRow<R>& group, FieldWriter& writer) {
  // Five digits bound every count that a file can hold; an application can set one to anything.
  constexpr uint32_t kMostEntries = 99999;
  const uint32_t known = group.count(record);
  const uint32_t count = std::min(
      kMostEntries, group.written_count != nullptr ? group.written_count(record, writer.document()) : known);
  int32_t status = SUCCESS;
  for (uint32_t i = 0; i < count && status == SUCCESS; ++i) {
    for (const FieldRow<R>& column : group.columns) {
      if (status == SUCCESS) status = WriteRow(record, column, writer, i, known);
    }
  }
  return status;
}

template <class R>
int32_t WriteRow(R& record, const FieldRow<R>& row, FieldWriter& writer, uint32_t index, uint32_t known) {
  const auto present = row.written != nullptr ? row.written : row.present;
  if (present != nullptr && !present(record, writer.layout())) return SUCCESS;
  const uint32_t width = row.width.In(writer.layout());
  if (row.write != nullptr) return row.write(record, writer, index, width);
  if (row.block != nullptr) return writer.WriteBlock(record.*row.block, row.block_length(record));
  if (row.count != nullptr) return WriteGroup(record, row, writer);
  return width != kAbsent ? WriteText(record, row, writer, index, known) : SUCCESS;
}

// Writes the rows of a header's table.
template <class R>
int32_t WriteRows(R& record, std::span<const FieldRow<R>> rows, FieldWriter& writer) {
  int32_t status = SUCCESS;
  for (const FieldRow<R>& row : rows) {
    if (status == SUCCESS) status = WriteRow(record, row, writer, 0, 0);
  }
  return status;
}

// The text of a code, or null.
inline const char* TextOf(std::span<const CodeText> table, uint32_t code) {
  for (const CodeText& entry : table) {
    if (entry.code == code) return entry.text;
  }
  return nullptr;
}

}  // namespace tavi

// Sets the fields of a header, one at a time, by its table: the counterpart of HeaderReader.h.
#pragma once

#include <algorithm>
#include <cstring>
#include <span>
#include <string_view>

#include "HeaderLayout.h"
#include "HeaderReader.h"

namespace tavi {

// The row of a field, also where it is the column of a repeated group, which `group` then yields. Null for a
// name that the table does not have.
template <class R>
const FieldRow<R>* FindRow(std::span<const FieldRow<R>> rows, std::string_view field,
                           const FieldRow<R>** group = nullptr) {
  for (const FieldRow<R>& row : rows) {
    if (row.name != nullptr && field == row.name) return &row;
    for (const FieldRow<R>& column : row.columns) {
      if (column.name == nullptr || field != column.name) continue;
      if (group != nullptr) *group = &row;
      return &column;
    }
  }
  return nullptr;
}

// A text. What it stands for is taken first: a text that begins well and is too long changes that and not the
// field. ERR_INVALID_PARAMETER for a missing or overlong text, and for one outside the field's set.
template <class R>
int32_t SetText(R& record, const FieldRow<R>& row, const char* text) {
  if (text == nullptr) return ERR_INVALID_PARAMETER;
  if (row.set_text != nullptr) return row.set_text(record, row, text);
  if (row.code != nullptr) {
    constexpr size_t kLongestCompared = 8;
    const CodeText* found = FindCode(row.codes, text, static_cast<uint32_t>(strnlen(text, kLongestCompared)));
    if (found == nullptr) return ERR_INVALID_PARAMETER;
    record.*row.code = found->code;
  }
  return SetFixedText(row.Text(record, 0), row.SetterLimit(), text);
}

// A number, which is not looked at.
template <class R>
int32_t SetNumber(R& record, const FieldRow<R>& row, uint32_t value) {
  if (row.set_number != nullptr) return row.set_number(record, row, value);
  if (!row.set_digits_only) {
    if (row.number != nullptr) record.*row.number = value;
    if (row.second_number != nullptr) record.*row.second_number = value;
    if (row.signed_number != nullptr) record.*row.signed_number = static_cast<int32_t>(value);
  }
  return FormatNumericField(row.Text(record, 0), row.SetterLimit(), static_cast<int32_t>(value));
}

// The characters of a date, which are not looked at.
template <class R>
int32_t SetCharacters(R& record, const FieldRow<R>& row, const char* characters) {
  if (row.set_text != nullptr) return row.set_text(record, row, characters);
  char* text = row.Text(record, 0);
  HostMemCopy(text, characters, row.SetterLimit());
  text[row.SetterLimit()] = '\0';
  return SUCCESS;
}

// A block of bytes, as many as its length field says by now. The present block goes first, also when there is
// no memory for the new one, or its length is too small to be one.
template <class R>
int32_t SetBlock(R& record, const FieldRow<R>& row, const uint8_t* bytes) {
  if (bytes == nullptr) return ERR_NULL_ARGUMENT;
  HostArray<uint8_t>& block = record.*row.block;
  block.Release();
  const int64_t length = row.block_length(record);
  if (length < 0) return ERR_NO_MEMORY;
  HostArray<uint8_t> made;
  if (!made.Allocate(static_cast<uint64_t>(length) + 1, Place{__LINE__, L"Common/HeaderSetter"})) {
    return ERR_NO_MEMORY;
  }
  if (length != 0) HostMemCopy(made.data(), bytes, static_cast<uint64_t>(length));
  block = std::move(made);
  return SUCCESS;
}

// The lengths of a group's segments, as far as all sides have them: the caller's `count` values, the header's
// own number, the list.
template <class R>
int32_t SetLengths(R& record, const FieldRow<R>& group, const FieldRow<R>& column, const uint32_t* values,
                   uint32_t count) {
  if (values == nullptr) return ERR_NULL_ARGUMENT;
  const uint32_t known = std::min(count, group.count(record));
  const auto set = [&](LengthList R::*which) {
    if (which == nullptr) return;
    LengthList& list = record.*which;
    const uint64_t entries = std::min<uint64_t>(known, list.size());
    for (uint64_t i = 0; i < entries; ++i) {
      std::memcpy(&list[i], reinterpret_cast<const char*>(values) + i * sizeof(uint32_t), sizeof(uint32_t));
    }
  };
  set(column.list);
  if (!column.set_first_only) set(column.second_list);
  return SUCCESS;
}

}  // namespace tavi

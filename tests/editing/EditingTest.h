// What the tests of editing share: documents of built files, records whose texts are changed, and saved bytes.
#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <string>

#include "RecordsTest.h"

namespace editing {

using tavi::records::Document;
using tavi::records::Fill;
using tavi::records::Get;
using tavi_test::BuiltFile;
using tavi_test::Bytes;
using tavi_test::NtfBuilder;

inline int32_t Set(NitfHandle handle, uint32_t, NitfHeaderInfo* record) {
  return Tavi_NITFSetNITFHeader(handle, record);
}
inline int32_t Set(NitfHandle handle, uint32_t index, NitfImageHeaderInfo* record) {
  return Tavi_NITFSetImageHeader(handle, index, record);
}
inline int32_t Set(NitfHandle handle, uint32_t index, NitfGraphicHeaderInfo* record) {
  return Tavi_NITFSetGraphicHeader(handle, index, record);
}
inline int32_t Set(NitfHandle handle, uint32_t index, NitfTextHeaderInfo* record) {
  return Tavi_NITFSetTextHeader(handle, index, record);
}

// A record as its getter fills it, whose members are replaced by place: it is byte-packed.
template <class Record>
class Edited {
 public:
  Edited(NitfHandle handle, uint32_t index) { EXPECT_EQ(Get(handle, index, &record_), SUCCESS); }
  ~Edited() { tavi::records::Free(&record_); }
  Edited(const Edited&) = delete;
  Edited& operator=(const Edited&) = delete;

  Record* get() { return &record_; }
  Record* operator->() { return &record_; }
  const Record* operator->() const { return &record_; }

  std::string Text(size_t place) const {
    const char* text = Pointer<char>(place);
    return text != nullptr ? text : "null";
  }
  void Put(size_t place, const std::string& text) { PutBlock(place, text.c_str(), text.size() + 1); }
  void PutBlock(size_t place, const void* bytes, size_t size) {
    PutNull(place);
    void* copy = HostAllocMem(size, 1, __LINE__, nullptr);
    std::memcpy(copy, bytes, size);
    std::memcpy(reinterpret_cast<char*>(&record_) + place, &copy, sizeof copy);
  }
  void PutNull(size_t place) {
    if (void* old = Pointer<void>(place)) HostFreeMem(old, __LINE__, nullptr);
    std::memset(reinterpret_cast<char*>(&record_) + place, 0, sizeof(void*));
  }
  template <class Number>
  void PutNumber(size_t place, Number number) {
    std::memcpy(reinterpret_cast<char*>(&record_) + place, &number, sizeof number);
  }
  uint32_t Number(size_t place) const {
    uint32_t number = 0;
    std::memcpy(&number, reinterpret_cast<const char*>(&record_) + place, sizeof number);
    return number;
  }
  std::string Chars(size_t place, size_t count) const {
    return {reinterpret_cast<const char*>(&record_) + place, count};
  }
  void PutChars(size_t place, const std::string& text) {
    std::memcpy(reinterpret_cast<char*>(&record_) + place, text.data(), text.size());
  }

 private:
  template <class Value>
  Value* Pointer(size_t place) const {
    Value* pointer = nullptr;
    std::memcpy(&pointer, reinterpret_cast<const char*>(&record_) + place, sizeof pointer);
    return pointer;
  }
  Record record_{};
};

using HeaderRecord = Edited<NitfHeaderInfo>;
using ImageRecord = Edited<NitfImageHeaderInfo>;
using GraphicRecord = Edited<NitfGraphicHeaderInfo>;
using TextRecord = Edited<NitfTextHeaderInfo>;

// What a member is, for tables that walk a record.
enum class Kind { kText, kNumber, kChars };

// One member: its place in the record, the width of its field in a file, the longest text that is taken (or the
// digits of a number), and a new value.
struct MemberCase {
  const char* name;
  size_t place;
  Kind kind;
  size_t width;
  size_t limit;
  std::string value = {};  // empty: a text made of the name
  uint32_t number = 0;

  [[nodiscard]] std::string NewText() const { return value.empty() ? Fill(name, limit) : value; }
};

template <class Record>
void PutNew(Edited<Record>& record, const MemberCase& member) {
  if (member.kind == Kind::kText) record.Put(member.place, member.NewText());
  if (member.kind == Kind::kChars) record.PutChars(member.place, member.NewText());
  if (member.kind == Kind::kNumber) record.PutNumber(member.place, member.number);
}

// A member as the record shows it.
template <class Record>
std::string Shown(const Edited<Record>& record, const MemberCase& member) {
  if (member.kind == Kind::kText) return record.Text(member.place);
  if (member.kind == Kind::kChars) return record.Chars(member.place, member.limit);
  return std::to_string(record.Number(member.place));
}

// Completed with blanks, cut at the width.
std::string Fixed(std::string text, size_t width);

// Two images (the first with corners, comments, extended data), a graphic and a text with extended data, a data
// extension, user data in the file header.
NtfBuilder EditableFile();
// A file without segments, of that FDT.
BuiltFile DatedFile(const std::string& date);

Bytes ReadBytes(const std::filesystem::path& path);

class EditingTest : public tavi::records::RecordsTest {
 protected:
  [[nodiscard]] std::filesystem::path Output() const { return directory() / "saved.ntf"; }
  // Saves the document and returns what was written.
  Bytes Saved(NitfHandle document) const;
  // The same with the places of `like`, which has the same layout.
  [[nodiscard]] BuiltFile SavedLike(NitfHandle document, const BuiltFile& like) const;
  [[nodiscard]] static uint32_t FileLength(NitfHandle document);
};

}  // namespace editing

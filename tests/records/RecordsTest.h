// What the tests of the public header records share: documents of built files, records between guard bytes,
// and texts that tell one field from another.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <string>

#include "HostFixture.h"
#include "NtfBuilder.h"
#include "TaviNitf.h"

namespace tavi::records {

// A document that ends with its owner. `open` is the status of opening it.
class Document {
 public:
  explicit Document(const wchar_t* path) : open(Tavi_NITFCreate(&handle, path)) {}
  explicit Document(const std::wstring& path) : Document(path.c_str()) {}
  ~Document() { Close(); }
  Document(const Document&) = delete;
  Document& operator=(const Document&) = delete;

  void Close() {
    if (handle != nullptr) {
      Tavi_NITFDestroy(&handle);
    }
  }

  NitfHandle handle = nullptr;  // before `open`, whose initialisation fills it
  int32_t open;
};

// The getters and the free operations under one name.
inline int32_t Get(NitfHandle handle, uint32_t, NitfHeaderInfo* record) {
  return Tavi_NITFGetNITFHeader(handle, record);
}
inline int32_t Get(NitfHandle handle, uint32_t index, NitfImageHeaderInfo* record) {
  return Tavi_NITFGetImageHeader(handle, index, record);
}
inline int32_t Get(NitfHandle handle, uint32_t index, NitfGraphicHeaderInfo* record) {
  return Tavi_NITFGetGraphicHeader(handle, index, record);
}
inline int32_t Get(NitfHandle handle, uint32_t index, NitfTextHeaderInfo* record) {
  return Tavi_NITFGetTextHeader(handle, index, record);
}
inline int32_t Free(NitfHeaderInfo* record) {
  return Tavi_NITFFreeNITFHeader(record);
}
inline int32_t Free(NitfImageHeaderInfo* record) {
  return Tavi_NITFFreeImageHeader(record);
}
inline int32_t Free(NitfGraphicHeaderInfo* record) {
  return Tavi_NITFFreeGraphicHeader(record);
}
inline int32_t Free(NitfTextHeaderInfo* record) {
  return Tavi_NITFFreeTextHeader(record);
}

inline constexpr uint8_t kGuardByte = 0xA5;

// A zeroed record at an odd address, between guard bytes. Frees what the record owns at its end.
template <class Record>
class Guarded {
 public:
  Guarded() {
    std::memset(before_, kGuardByte, sizeof before_);
    std::memset(&record_, 0, sizeof record_);
    std::memset(after_, kGuardByte, sizeof after_);
  }
  ~Guarded() {
    Free(&record_);
    EXPECT_TRUE(Intact()) << "bytes beside the record were written";
  }
  Guarded(const Guarded&) = delete;
  Guarded& operator=(const Guarded&) = delete;

  Record* get() { return &record_; }
  Record* operator->() { return &record_; }

  // Takes no memory: it runs while allocations fail.
  bool Intact() const {
    const auto guards = [](uint8_t byte) { return byte == kGuardByte; };
    return std::all_of(std::begin(before_), std::end(before_), guards) &&
           std::all_of(std::begin(after_), std::end(after_), guards);
  }

 private:
  alignas(8) uint8_t before_[63];
  Record record_;
  uint8_t after_[65];
};

// A text of a record; the pointer stands unaligned, so it is taken by value.
inline std::string Text(const char* text) {
  return text != nullptr ? text : "null";
}

// The bytes of a part of a record.
inline std::string BytesOf(const void* record, size_t offset, size_t size) {
  return {static_cast<const char*>(record) + offset, size};
}
template <size_t kSize>
std::string Chars(const char (&date)[kSize]) {
  return {date, kSize};
}
inline std::string BytesAt(const void* block, size_t size) {
  return block != nullptr ? BytesOf(block, 0, size) : "no block";
}

// A text of that width which begins with its field's name: cut or shifted, it is another text.
std::string Fill(const std::string& name, size_t width);

// The security fields behind the class; every text of all headers differs from every other.
struct Security {
  std::string clsy, code, ctlh, rel, dctp, dcdt, dcxm, dg, dgdt, cltx, catp, caut, crsn, srdt, ctln;
};
// `prefix` is FS, IS, SS or TS; `year` the years of its dates; `letters` begins its short fields.
Security SecurityTexts(const std::string& prefix, const std::string& year);
void PutSecurity(tavi_test::FieldTexts& fields, const std::string& prefix, const Security& security);

// A file in which all fields of a header have values of their own: two images, three graphics, four texts,
// five data extensions and six reserved extensions. The last image, graphic and text carry the values.
tavi_test::NtfBuilder DistinctFile();

class RecordsTest : public tavi_test::HostTest {
 protected:
  std::wstring Write(const tavi_test::BuiltFile& file) const { return file.Write(directory()); }
  std::wstring Write(const tavi_test::NtfBuilder& file) const { return Write(file.Build()); }
};

}  // namespace tavi::records

// What the tests of documents share: open a built file through the exports and look at what came of it.
#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <string>

#include "HostFixture.h"
#include "LoadPicture.h"
#include "NtfBuilder.h"
#include "TaviNitf.h"

namespace tavi::documents {

// A document that ends with its owner. `open` is the status of opening it.
class Document {
 public:
  explicit Document(const wchar_t* path) : open(Tavi_NITFCreate(&handle, path)) {}
  ~Document() {
    if (handle != nullptr) {
      Tavi_NITFDestroy(&handle);
    }
  }
  Document(const Document&) = delete;
  Document& operator=(const Document&) = delete;

  NitfHandle handle = nullptr;  // before `open`, whose initialisation fills it
  int32_t open;
};

struct Extent {
  int32_t status = 0;
  uint32_t width = 0;
  uint32_t height = 0;
  friend bool operator==(const Extent&, const Extent&) = default;
};

void PrintTo(const Extent& extent, std::ostream* out);

class DocumentTest : public tavi_test::HostTest {
 protected:
  // Puts the bytes in the place of the test's one file and returns its path. The file is written over, never
  // emptied first: file systems bring a file that is emptied and written anew to the disk at once, and these
  // tests write many.
  std::wstring Write(const tavi_test::BuiltFile& file) const;
  std::wstring Write(const tavi_test::NtfBuilder& file) const { return Write(file.Build()); }

  // The status of opening the file; a refused one leaves no handle.
  int32_t OpenStatus(const tavi_test::BuiltFile& file) const;
  int32_t OpenStatus(const tavi_test::NtfBuilder& file) const { return OpenStatus(file.Build()); }

  // Tavi_NITFGetStatus of a file that opens.
  int32_t DocumentStatus(const tavi_test::NtfBuilder& file) const;

  Extent Size(const tavi_test::NtfBuilder& file) const;

  // The message boxes shown since the last call.
  std::vector<std::string> NewMessages();

 private:
  size_t messages_seen_ = 0;
};

}  // namespace tavi::documents

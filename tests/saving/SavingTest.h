// What the tests of saving share: files of the independent builder saved through the exports, and looked at.
#ifndef TAVI_TESTS_SAVING_SAVING_TEST_H
#define TAVI_TESTS_SAVING_SAVING_TEST_H

#include <gtest/gtest.h>

#include <cstdint>
#include <filesystem>
#include <string>

#include "HostFixture.h"
#include "NtfBuilder.h"
#include "SaveModel.h"
#include "TaviNitf.h"

namespace saving {

Bytes ReadFile(const std::filesystem::path& path);
void WriteFile(const std::filesystem::path& path, const Bytes& bytes);

// A document that ends with its owner. `open` is the status of opening it.
class Document {
 public:
  explicit Document(const std::filesystem::path& path)
      : open(Tavi_NITFCreate(&handle, path.wstring().c_str())) {}
  Document() : open(Tavi_NITFCreate(&handle, nullptr)) {}
  ~Document() {
    if (handle != nullptr) Tavi_NITFDestroy(&handle);
  }
  Document(const Document&) = delete;
  Document& operator=(const Document&) = delete;
  int32_t Save(const std::filesystem::path& path) {
    return Tavi_NITFSaveFile(handle, path.wstring().c_str());
  }

  NitfHandle handle = nullptr;  // before `open`, whose initialisation fills it
  int32_t open;
};

// A document's composite.
struct Picture {
  int32_t status = 0;
  uint32_t width = 0;
  uint32_t height = 0;
  Bytes rows;
  friend bool operator==(const Picture&, const Picture&) = default;
};
Picture Render(NitfHandle document);

class SavingTest : public tavi_test::HostTest {
 protected:
  [[nodiscard]] std::filesystem::path SourcePath() const { return directory() / "source.ntf"; }
  [[nodiscard]] std::filesystem::path OutputPath() const { return directory() / "saved.ntf"; }

  // Saves the file and returns what was written. The save's status goes to `status`, or must be SUCCESS.
  Bytes Saved(const tavi_test::BuiltFile& file, int32_t* status = nullptr) const;
  Bytes Saved(const tavi_test::NtfBuilder& file) const { return Saved(file.Build()); }

  // Saves the bytes and compares with the prediction; what was saved must open and show the same picture.
  void ExpectAsPredicted(const Bytes& source) const;
};

}  // namespace saving

#endif  // TAVI_TESTS_SAVING_SAVING_TEST_H

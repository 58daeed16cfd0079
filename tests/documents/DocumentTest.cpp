#include "DocumentTest.h"

#include <filesystem>
#include <fstream>
#include <ostream>
#include <stdexcept>

namespace tavi::documents {

void PrintTo(const Extent& extent, std::ostream* out) {
  *out << extent.width << " x " << extent.height << " (status " << extent.status << ")";
}

std::wstring DocumentTest::Write(const tavi_test::BuiltFile& file) const {
  const std::filesystem::path path = directory() / "file.ntf";
  if (!std::filesystem::exists(path)) {
    return file.Write(directory());
  }
  std::fstream out(path, std::ios::in | std::ios::out | std::ios::binary);
  out.write(reinterpret_cast<const char*>(file.bytes.data()),
            static_cast<std::streamsize>(file.bytes.size()));
  out.close();
  if (!out) {
    throw std::runtime_error("cannot write " + path.string());
  }
  if (std::filesystem::file_size(path) != file.bytes.size()) {
    std::filesystem::resize_file(path, file.bytes.size());
  }
  return path.wstring();
}

int32_t DocumentTest::OpenStatus(const tavi_test::BuiltFile& file) const {
  const Document document(Write(file).c_str());
  EXPECT_EQ(document.handle != nullptr, document.open == SUCCESS);
  return document.open;
}

int32_t DocumentTest::DocumentStatus(const tavi_test::NtfBuilder& file) const {
  const Document document(Write(file).c_str());
  EXPECT_EQ(document.open, SUCCESS);
  return Tavi_NITFGetStatus(document.handle);
}

Extent DocumentTest::Size(const tavi_test::NtfBuilder& file) const {
  const Document document(Write(file).c_str());
  EXPECT_EQ(document.open, SUCCESS);
  Extent extent;
  extent.status = GetActual_Width_Height(document.handle, &extent.width, &extent.height);
  return extent;
}

std::vector<std::string> DocumentTest::NewMessages() {
  std::vector<std::string> added;
  for (; messages_seen_ < host().messages().size(); ++messages_seen_) {
    const tavi_test::Message& message = host().messages()[messages_seen_];
    added.push_back(message.caption + ": " + message.text);
  }
  return added;
}

}  // namespace tavi::documents

// The fixture of the unit tests: files of the independent builder under a bare document, and the promise that
// every test leaves nothing alive in the host.
#ifndef TAVI_TESTS_UNIT_UNIT_TEST_H
#define TAVI_TESTS_UNIT_UNIT_TEST_H

#include <cstdint>
#include <string>
#include <vector>

#include "HostFixture.h"
#include "NitfFile.h"
#include "NtfBuilder.h"
#include "StrmFHdr.h"

namespace unit {

class UnitTest : public tavi_test::HostTest {
 protected:
  // Opens the bytes as the document's source file, without reading anything of them.
  void Attach(NitfFile& document, const tavi_test::BuiltFile& file) {
    document.File = HostFileOpen(file.Write(directory()).c_str(), 0x8000, 0x100);
    document.SourceSize = static_cast<int64_t>(file.bytes.size());
    ASSERT_NE(document.File, -1);
  }

  // As OpenNitfFile finds a document whose flag chose the 2.0 layouts.
  static int32_t Open20(NitfFile& document, const std::wstring& path) {
    document.IsNitf20 = 1;
    return tavi::OpenNitfFile(document, path.c_str());
  }

  static int64_t Position(const NitfFile& document) { return HostFileSeek(document.File, 0, 1); }
  static void MoveTo(const NitfFile& document, const tavi_test::FieldPlace& place) {
    HostFileSeek(document.File, static_cast<int64_t>(place.offset), 0);
  }

  [[nodiscard]] std::vector<std::string> MessageTexts() const {
    std::vector<std::string> texts;
    for (const tavi_test::Message& message : host().messages()) {
      texts.push_back(message.caption + ": " + message.text);
    }
    return texts;
  }
};

inline tavi_test::Bytes ToBytes(const std::string& text) {
  return {text.begin(), text.end()};
}

// A text of a field that no other field's text equals: letters that depend on the field's name.
inline std::string DistinctText(const std::string& name, size_t width) {
  uint32_t seed = 2166136261U;
  for (const char c : name) seed = (seed ^ static_cast<uint8_t>(c)) * 16777619U;
  std::string text(width, ' ');
  for (size_t i = 0; i < width; ++i) {
    seed = seed * 1664525U + 1013904223U;
    text[i] = static_cast<char>('a' + (seed >> 24) % 26);
  }
  return text;
}

}  // namespace unit

#endif  // TAVI_TESTS_UNIT_UNIT_TEST_H

// What all conformance tests share: build a file, load it, compare it with the reference or with values
// stated in the test.
#ifndef TAVI_TESTS_CONFORMANCE_CONFORMANCE_TEST_H
#define TAVI_TESTS_CONFORMANCE_CONFORMANCE_TEST_H

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "HostFixture.h"
#include "LoadPicture.h"
#include "NtfBuilder.h"
#include "ReferenceCompositor.h"
#include "ReferenceDecoder.h"
#include "TaviHost.h"
#include "TaviNitf.h"

namespace tavi_test {

class ConformanceTest : public HostTest {
 protected:
  std::wstring Write(const BuiltFile& built) { return built.Write(directory()); }
  std::wstring Write(const NtfBuilder& file) { return Write(file.Build()); }

  LoadedPicture Load(const NtfBuilder& file, uint32_t flags = 0) {
    LoadRequest request;
    request.flags = flags;
    return LoadFile(Write(file), request);
  }

  LoadedPicture Load(const ImageSpec& image) { return Load(NtfBuilder{image}); }

  // The file's picture at 24 bits is exactly the reference's, or `tolerance` away where samples are deeper
  // than 8 bits.
  void ExpectReference(const NtfBuilder& file, int tolerance = 0) {
    const BuiltFile built = file.Build();
    EXPECT_EQ(Differences(LoadFile(Write(built)), ReferenceCompose(file, built), tolerance), "");
  }

  void ExpectReference(const ImageSpec& image, int tolerance = 0) {
    ExpectReference(NtfBuilder{image}, tolerance);
  }

  // The status of opening a file as a document.
  int32_t OpenStatus(const BuiltFile& built) {
    NitfHandle handle = nullptr;
    const int32_t status = Tavi_NITFCreate(&handle, Write(built).c_str());
    EXPECT_EQ(handle != nullptr, status == SUCCESS);
    if (handle != nullptr) Tavi_NITFDestroy(&handle);
    return status;
  }
};

// The red channel of all pixels, row by row: the grey levels of a grey picture.
inline std::vector<int> Greys(const LoadedPicture& picture) {
  std::vector<int> levels;
  for (uint32_t y = 0; y < picture.height; ++y) {
    for (uint32_t x = 0; x < picture.width; ++x) levels.push_back(picture.At(x, y).red);
  }
  return levels;
}

// Bytes that differ from their neighbours at any small distance, so that a misplaced read shows.
inline Bytes Pattern(size_t count, uint32_t seed = 1) {
  Bytes bytes(count);
  uint32_t state = seed * 2654435761U + 12345U;
  for (uint8_t& byte : bytes) {
    state = state * 1664525U + 1013904223U;
    byte = static_cast<uint8_t>(state >> 24);
  }
  return bytes;
}

// Joins byte runs.
inline Bytes Join(const std::vector<Bytes>& parts) {
  Bytes joined;
  for (const Bytes& part : parts) joined.insert(joined.end(), part.begin(), part.end());
  return joined;
}

inline void PrintTo(const Rgb& colour, std::ostream* out) {
  *out << '(' << int{colour.red} << ' ' << int{colour.green} << ' ' << int{colour.blue} << ')';
}

}  // namespace tavi_test

#endif  // TAVI_TESTS_CONFORMANCE_CONFORMANCE_TEST_H

// What the tests of coded images share: files around streams, a host whose loads are recorded, and the real
// host's decoders as the filter's entries.
#ifndef TAVI_TESTS_CODED_CODED_TEST_H
#define TAVI_TESTS_CODED_CODED_TEST_H

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

#include "HostFixture.h"
#include "LoadPicture.h"
#include "NtfBuilder.h"
#include "TaviHost.h"
#include "TaviNitf.h"

namespace tavi_test {

inline constexpr uint32_t kComponentsAreRgb = 0x4000;
inline constexpr uint32_t kTakeBands = 0x8000;

// One call of the load entry: all that it was given.
struct RecordedLoad {
  Bytes bytes;
  uint64_t record_size = 0;
  uint32_t bits = 0;
  uint32_t order = 0;
  bool has_options = false;
  HostLoadFlagsRecord options = {};
  bool has_information = false;
  uint32_t given_width = 0;  // of the record before the load
  uint32_t given_bits = 0;
  bool given_pixels = false;
  std::vector<uint32_t> raw_layout;  // what the hook in force answered; empty without one
};

struct RecordedHook {
  HostLoadHook hook = nullptr;
  bool has_user = false;
};

// Stands in for a host that decodes: it records each call and gives one plain bitmap after another. One at a
// time.
class RecordingHost {
 public:
  RecordingHost();
  ~RecordingHost();
  RecordingHost(const RecordingHost&) = delete;
  RecordingHost& operator=(const RecordingHost&) = delete;

  // What a load gives: a bitmap of this size and depth, filled with level 20 + 10 x the load's number.
  uint32_t width = 8;
  uint32_t height = 8;
  uint32_t bits = 24;
  // In place of that.
  std::function<int32_t(HostBitmap*)> answer;

  std::vector<RecordedLoad> loads;
  std::vector<RecordedHook> hooks;

  [[nodiscard]] LoadRequest Request() const;
  static uint8_t LevelOf(size_t load) { return static_cast<uint8_t>(20 + 10 * load); }
  // The hook that is in force before the library comes.
  static int32_t EarlierHook(void*, void*) { return ERR_NOT_SUPPORTED; }
  static int32_t Load(const void* buffer, HostBitmap* bitmap, uint64_t record_size, uint32_t bits,
                      uint32_t order, uint64_t size, HostLoadFlagsRecord* options, HostFileInfo* information);
  static HostLoadHook SetHook(HostLoadHook hook, void* user);

 private:
  int32_t Give(HostBitmap* bitmap) const;

  HostLoadHook hook_ = EarlierHook;
  void* user_ = nullptr;
};

// An image of streams: blocks of a size, one band or R, G, B; `irep` RGB, MULTI or MONO.
ImageSpec CodedImage(const std::string& ic, const std::string& irep, uint32_t bands, uint32_t across,
                     uint32_t down, uint32_t width, uint32_t height);

Bytes Concatenate(const std::vector<Bytes>& parts);

class CodedTest : public HostTest {
 protected:
  std::wstring Write(const BuiltFile& built) { return built.Write(directory()); }
  std::wstring Write(const NtfBuilder& file) { return Write(file.Build()); }

  // Through a recording host.
  LoadedPicture Load(const NtfBuilder& file, RecordingHost& host) {
    return LoadFile(Write(file), host.Request());
  }
  LoadedPicture Load(const ImageSpec& image, RecordingHost& host) { return Load(NtfBuilder{image}, host); }
  // Through the real one.
  LoadedPicture Decode(const BuiltFile& built);
  LoadedPicture Decode(const NtfBuilder& file) { return Decode(file.Build()); }
  LoadedPicture Decode(const ImageSpec& image) { return Decode(NtfBuilder{image}); }
};

}  // namespace tavi_test

#endif  // TAVI_TESTS_CODED_CODED_TEST_H

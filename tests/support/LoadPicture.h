// Runs the filter entry points on a file and hands back what a host would see.
#ifndef TAVI_TESTS_SUPPORT_LOAD_PICTURE_H
#define TAVI_TESTS_SUPPORT_LOAD_PICTURE_H

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "NtfBuilder.h"
#include "TaviNitf.h"

namespace tavi_test {

struct Rgb {
  uint8_t red = 0;
  uint8_t green = 0;
  uint8_t blue = 0;
  friend bool operator==(const Rgb&, const Rgb&) = default;
};

struct DeliveredRow {
  Bytes pixels;  // bytes per line of the composite
  uint32_t flags = 0;
  int32_t index = 0;
  int32_t count = 0;
};

// What fltLoad returned and delivered. Rows stand in order of delivery: top to bottom.
struct LoadedPicture {
  int32_t status = 0;
  uint32_t bits = 0;
  uint32_t width = 0;       // as fltInfo gives it
  uint32_t height = 0;      // rows delivered
  uint32_t load_flags = 0;  // the flags word afterwards
  std::vector<DeliveredRow> rows;

  // The colour of a pixel of a 24-bit load (rows are blue, green, red).
  [[nodiscard]] Rgb At(uint32_t x, uint32_t y) const;
};

struct LoadRequest {
  uint32_t bits = 24;
  uint32_t flags = 0;
  // What the row callback returns, by row index; none: 1 always.
  std::function<int32_t(int32_t)> answer = nullptr;
  bool load_memory = true;  // whether the three host entries are there
  bool set_load_hook = true;
  bool third_entry = true;
  // What those entries are; null: a load that refuses, a hook that is not kept.
  HostLoadMemoryEntry load_entry = nullptr;
  HostSetLoadHookEntry hook_entry = nullptr;
};

LoadedPicture LoadFile(const std::wstring& path, const LoadRequest& request = {});

struct FileInformation {
  int32_t status = 0;
  HostFileInfo info = {};
  uint32_t load_flags = 0;
};

FileInformation Info(const std::wstring& path, uint32_t flags = 0);

}  // namespace tavi_test

#endif  // TAVI_TESTS_SUPPORT_LOAD_PICTURE_H

#include <unistd.h>

#include "Bench.h"

namespace tavi_bench {

Bytes Noise(size_t count) {
  Bytes bytes(count);
  uint64_t state = 0x9E3779B97F4A7C15U;
  for (uint8_t& byte : bytes) {
    state ^= state << 13;
    state ^= state >> 7;
    state ^= state << 17;
    byte = static_cast<uint8_t>(state >> 32);
  }
  return bytes;
}

BenchFolder::BenchFolder()
    : path_(std::filesystem::temp_directory_path() / ("tavi-bench-" + std::to_string(getpid()))) {
  std::filesystem::create_directories(path_);
}

BenchFolder::~BenchFolder() {
  std::error_code ignored;
  std::filesystem::remove_all(path_, ignored);
}

int32_t QueryInfo(const wchar_t* name, HostFileInfo& info) {
  HostLoadFlagsRecord flags{};
  FilterInfoContext context{};
  context.file_name = name;
  context.file = -1;
  context.info = &info;
  context.load_flags = &flags;
  return fltInfo(&context);
}

}  // namespace tavi_bench

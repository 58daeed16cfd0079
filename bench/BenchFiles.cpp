#include <unistd.h>

#include "Bench.h"
#include "NtfBuilder.h"

namespace tavi_bench {
namespace {

constexpr uint32_t kBlockSide = 256;
constexpr double kColorBound = 6;
constexpr double kGreyBound = 8;

std::vector<LoadCase> MakeCases() {
  std::vector<LoadCase> cases;
  for (const char mode : {'B', 'P', 'R', 'S'}) {
    for (const uint32_t side : {kSide, kBlockSide}) {
      const std::string blocks = side == kSide ? "one block" : "256 x 256 blocks";
      cases.push_back({std::string("load/24 bits ") + mode + ", " + blocks, 3, mode, side, 24, kColorBound});
    }
  }
  for (const uint32_t bits : {24U, 8U}) {
    for (const uint32_t side : {kSide, kBlockSide}) {
      const std::string blocks = side == kSide ? "one block" : "256 x 256 blocks";
      cases.push_back(
          {"load/grey to " + std::to_string(bits) + " bits, " + blocks, 1, 'B', side, bits, kGreyBound});
    }
  }
  return cases;
}

}  // namespace

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

const std::vector<LoadCase>& LoadCases() {
  static const std::vector<LoadCase> cases = MakeCases();
  return cases;
}

std::wstring WriteLoadFile(const LoadCase& load, const std::filesystem::path& folder) {
  const uint32_t across = kSide / load.block_side;
  tavi_test::ImageSpec image = tavi_test::GreyImage(1, 1);
  image.Blocks(across, across, load.block_side, load.block_side).Mode(load.imode);
  if (load.bands == 3) {
    image.Roles({"R ", "G ", "B "});
    image.irep = "RGB";
  }
  image.pixels = Noise(size_t{load.bands} * kSide * kSide);
  std::string name = load.name + ".ntf";
  for (char& c : name) {
    if (c == '/' || c == ' ' || c == ',') c = '_';
  }
  return tavi_test::NtfBuilder{image}.Build().Write(folder, name);
}

std::wstring WriteOpenFile(const std::filesystem::path& folder) {
  tavi_test::ImageSpec image = tavi_test::GreyImage(512, 512);
  image.comments = {"one comment", "and another"};
  return tavi_test::NtfBuilder{image}.Build().Write(folder, "open.ntf");
}

}  // namespace tavi_bench

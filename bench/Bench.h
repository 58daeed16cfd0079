// What is measured and against what. Every load is compared with copying its finished composite once, in the
// same run, so that the figures say the same on every machine.
#pragma once

#include <cstdint>
#include <filesystem>
#include <map>
#include <string>
#include <vector>

namespace tavi_bench {

// Files in a folder of their own, removed at the end.
class BenchFolder {
 public:
  BenchFolder();
  ~BenchFolder();
  BenchFolder(const BenchFolder&) = delete;
  BenchFolder& operator=(const BenchFolder&) = delete;
  [[nodiscard]] const std::filesystem::path& path() const { return path_; }

 private:
  std::filesystem::path path_;
};

inline constexpr uint32_t kSide = 2048;

struct LoadCase {
  std::string name;
  uint32_t bands;  // 3 or 1, of 8 bits
  char imode;
  uint32_t block_side;  // kSide: one block
  uint32_t load_bits;   // depth of the composite that is asked for
  double bound;         // times the copy of the composite
};

const std::vector<LoadCase>& LoadCases();
std::wstring WriteLoadFile(const LoadCase& load, const std::filesystem::path& folder);
std::wstring WriteOpenFile(const std::filesystem::path& folder);

std::string CopyName(uint32_t load_bits);  // "copy/24 bits"
inline constexpr const char* kOpenName = "open/one image";

void RegisterLoads(const std::filesystem::path& folder);
void RegisterOpen(const std::wstring& path);

// How many system calls opening the file takes, or -1 where a process may not watch another.
int CountOpenSystemCalls(const std::wstring& path);

// The shortest time of each benchmark, in nanoseconds.
using Times = std::map<std::string, double>;

}  // namespace tavi_bench

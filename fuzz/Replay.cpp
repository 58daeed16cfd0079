// Runs a target on files given by name, and on all files of folders, without a fuzzing engine.
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size);

namespace {

int runs;

void Run(const std::filesystem::path& path) {
  std::ifstream file(path, std::ios::binary);
  const std::vector<char> bytes{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
  // A block of exactly the input's size, so that a read beyond it is seen.
  const std::vector<uint8_t> exact(bytes.begin(), bytes.end());
  std::fprintf(stderr, "%s\n", path.c_str());  // the last line names the culprit
  LLVMFuzzerTestOneInput(exact.data(), exact.size());
  ++runs;
}

}  // namespace

int main(int argc, char** argv) {
  for (int i = 1; i < argc; ++i) {
    const std::filesystem::path path = argv[i];
    if (!std::filesystem::is_directory(path)) {
      if (std::filesystem::exists(path)) Run(path);
      continue;
    }
    for (const auto& entry : std::filesystem::recursive_directory_iterator(path)) {
      if (entry.is_regular_file()) Run(entry.path());
    }
  }
  std::printf("%d inputs\n", runs);
  return runs > 0 ? 0 : 1;
}

// Saving a file, and copying it in pieces of 1 MiB, which it is measured against. Outputs are new each time.
#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <fstream>
#include <string>

#include "Bench.h"
#include "NtfBuilder.h"
#include "TaviNitf.h"

namespace tavi_bench {
namespace {

constexpr uint32_t kSaveSide = 7240;  // one grey image of 50 MiB
constexpr size_t kPiece = size_t{1} << 20;

std::filesystem::path OutputOf(const std::filesystem::path& source) {
  return source.parent_path() / "output.ntf";
}

void Save(benchmark::State& state, const std::filesystem::path& source) {
  NitfHandle document = nullptr;
  if (Tavi_NITFCreate(&document, source.wstring().c_str()) != SUCCESS) {
    state.SkipWithError("does not open");
    return;
  }
  const std::filesystem::path output = OutputOf(source);
  for (auto _ : state) {
    const int32_t status = Tavi_NITFSaveFile(document, output.wstring().c_str());
    state.PauseTiming();
    if (status != SUCCESS || std::filesystem::file_size(output) != std::filesystem::file_size(source)) {
      state.SkipWithError("not saved");
    }
    std::filesystem::remove(output);
    state.ResumeTiming();
    if (state.error_occurred()) break;
  }
  Tavi_NITFDestroy(&document);
}

bool CopyInPieces(int from, int to, Bytes* piece) {
  for (;;) {
    const ssize_t got = read(from, piece->data(), piece->size());
    if (got <= 0) return got == 0;
    if (write(to, piece->data(), static_cast<size_t>(got)) != got) return false;
  }
}

void Copy(benchmark::State& state, const std::filesystem::path& source) {
  const std::filesystem::path output = OutputOf(source);
  Bytes piece(kPiece);
  const int from = open(source.c_str(), O_RDONLY | O_CLOEXEC);
  for (auto _ : state) {
    lseek(from, 0, SEEK_SET);
    const int to = open(output.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666);
    const bool copied = CopyInPieces(from, to, &piece);
    close(to);
    state.PauseTiming();
    std::filesystem::remove(output);
    state.ResumeTiming();
    if (!copied) {
      state.SkipWithError("not copied");
      break;
    }
  }
  close(from);
}

// A line such as "VmHWM:   1234 kB" of what the system tells about this process.
int64_t MemoryLine(const std::string& name) {
  std::ifstream status("/proc/self/status");
  for (std::string line; std::getline(status, line);) {
    if (line.rfind(name + ":", 0) == 0) return std::stoll(line.substr(name.size() + 1)) * 1024;
  }
  return -1;
}

// What saving adds to the memory of a process that has the document open.
int64_t AddedMemory(const std::filesystem::path& source) {
  NitfHandle document = nullptr;
  if (Tavi_NITFCreate(&document, source.wstring().c_str()) != SUCCESS) return -1;
  std::ofstream("/proc/self/clear_refs") << "5";  // the peak starts anew
  const int64_t before = MemoryLine("VmRSS");
  const bool saved = Tavi_NITFSaveFile(document, OutputOf(source).wstring().c_str()) == SUCCESS;
  const int64_t peak = MemoryLine("VmHWM");
  return saved && before > 0 && peak >= before ? peak - before : -1;
}

}  // namespace

std::filesystem::path WriteSaveFile(const std::filesystem::path& folder) {
  tavi_test::NtfBuilder file{
      tavi_test::GreyImage(kSaveSide, kSaveSide, Noise(size_t{kSaveSide} * kSaveSide))};
  return file.Build().Write(folder, "save.ntf");
}

void RegisterSave(const std::filesystem::path& source) {
  benchmark::RegisterBenchmark(kSaveName, Save, source)->Unit(benchmark::kMillisecond);
  benchmark::RegisterBenchmark(kFileCopyName, Copy, source)->Unit(benchmark::kMillisecond);
}

int64_t MeasureSaveMemory(const std::filesystem::path& source) {
  int ends[2];
  if (pipe(ends) != 0) return -1;
  const pid_t child = fork();
  if (child == 0) {
    const int64_t added = AddedMemory(source);
    _exit(write(ends[1], &added, sizeof added) == sizeof added ? 0 : 1);
  }
  close(ends[1]);
  int64_t added = -1;
  if (child < 0 || read(ends[0], &added, sizeof added) != sizeof added) added = -1;
  close(ends[0]);
  if (child > 0) waitpid(child, nullptr, 0);
  std::error_code ignored;
  std::filesystem::remove(OutputOf(source), ignored);
  return added;
}

}  // namespace tavi_bench

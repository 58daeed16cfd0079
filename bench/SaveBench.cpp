// Saving a file as it is and with segments appended, and copying it in pieces of 1 MiB, which it is measured against.
// Outputs are new each time.
#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <fstream>
#include <functional>
#include <string>

#include "Bench.h"
#include "NtfBuilder.h"
#include "TaviNitf.h"

namespace tavi_bench {
namespace {

constexpr uint32_t kSaveSide = 7240;  // one grey image of 50 MiB
constexpr size_t kPiece = size_t{1} << 20;

// Beside the source, or in $TAVI_BENCH_OUTPUTS: a disk that cannot keep up would be all that is measured.
std::filesystem::path OutputOf(const std::filesystem::path& source) {
  const char* const folder = std::getenv("TAVI_BENCH_OUTPUTS");
  if (folder == nullptr) return source.parent_path() / "output.ntf";
  return std::filesystem::path(folder) / ("tavi-bench-output-" + std::to_string(getpid()) + ".ntf");
}

// What a document gets before it is saved.
using Change = std::function<bool(NitfHandle)>;

void Save(benchmark::State& state, const Lazy<std::filesystem::path>& source, const Change& change) {
  NitfHandle document = nullptr;
  if (Tavi_NITFCreate(&document, source->wstring().c_str()) != SUCCESS || (change && !change(document))) {
    state.SkipWithError("no document");
    return;
  }
  const std::filesystem::path output = OutputOf(*source);
  for (auto _ : state) {
    const int32_t status = Tavi_NITFSaveFile(document, output.wstring().c_str());
    state.PauseTiming();
    state.counters["bytes"] = static_cast<double>(std::filesystem::file_size(output));
    if (status != SUCCESS || std::filesystem::file_size(output) < std::filesystem::file_size(*source)) {
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

void Copy(benchmark::State& state, const Lazy<std::filesystem::path>& made) {
  const std::filesystem::path& source = *made;
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
int64_t AddedMemory(const std::filesystem::path& source, const std::filesystem::path& output) {
  NitfHandle document = nullptr;
  if (Tavi_NITFCreate(&document, source.wstring().c_str()) != SUCCESS) return -1;
  std::ofstream("/proc/self/clear_refs") << "5";  // the peak starts anew
  const int64_t before = MemoryLine("VmRSS");
  const bool saved = Tavi_NITFSaveFile(document, output.wstring().c_str()) == SUCCESS;
  const int64_t peak = MemoryLine("VmHWM");
  return saved && before > 0 && peak >= before ? peak - before : -1;
}

}  // namespace

std::filesystem::path WriteSaveFile(const std::filesystem::path& folder) {
  std::filesystem::path path = folder / "save.ntf";
  if (std::filesystem::exists(path)) return path;
  tavi_test::NtfBuilder file{
      tavi_test::GreyImage(kSaveSide, kSaveSide, Noise(size_t{kSaveSide} * kSaveSide))};
  return file.Build().Write(folder, "save.ntf");
}

void RegisterSave(const std::filesystem::path& folder, Table* table) {
  constexpr double kBound = 1.5;  // times the copy of the file
  constexpr auto kUnit = benchmark::kMillisecond;
  const Lazy<std::filesystem::path> source([folder] { return WriteSaveFile(folder); });
  const Lazy<std::filesystem::path> grown([folder, source] {
    NitfHandle document = nullptr;
    Tavi_NITFCreate(&document, source->wstring().c_str());
    std::filesystem::path path = folder / "grown.ntf";
    AppendOfEach(document, folder);
    Tavi_NITFSaveFile(document, path.wstring().c_str());
    Tavi_NITFDestroy(&document);
    return path;
  });
  const char* const copy = "copy/file of 50 MiB in pieces of 1 MiB";
  const char* const copy_grown = "copy/file after the appends in pieces of 1 MiB";
  const char* const save = "save/one image of 50 MiB";
  const char* const save_grown = "save/after an append of each kind";
  benchmark::RegisterBenchmark(copy, Copy, source)->Unit(kUnit);
  benchmark::RegisterBenchmark(copy_grown, Copy, grown)->Unit(kUnit);
  benchmark::RegisterBenchmark(save, Save, source, Change())->Unit(kUnit);
  benchmark::RegisterBenchmark(save_grown, Save, source, Change([folder](NitfHandle document) {
                                 return AppendOfEach(document, folder);
                               }))
      ->Unit(kUnit);
  table->rows.push_back({save, copy, {{kBound, copy}}});
  table->rows.push_back({save_grown, copy_grown, {{kBound, copy_grown}}});
}

int64_t MeasureSaveMemory(const std::filesystem::path& source) {
  int ends[2];
  if (pipe(ends) != 0) return -1;
  const std::filesystem::path output = OutputOf(source);
  const pid_t child = fork();
  if (child == 0) {
    const int64_t added = AddedMemory(source, output);
    _exit(write(ends[1], &added, sizeof added) == sizeof added ? 0 : 1);
  }
  close(ends[1]);
  int64_t added = -1;
  if (child < 0 || read(ends[0], &added, sizeof added) != sizeof added) added = -1;
  close(ends[0]);
  if (child > 0) waitpid(child, nullptr, 0);
  std::error_code ignored;
  std::filesystem::remove(output, ignored);
  return added;
}

}  // namespace tavi_bench

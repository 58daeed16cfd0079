// fltLoad with a callback that drops the rows, and the copy of a composite that it is measured against.
#include <benchmark/benchmark.h>

#include <cstring>

#include "Bench.h"
#include "TaviNitf.h"

namespace tavi_bench {
namespace {

void NeverCalled() {}

int32_t DropRow(uint64_t, HostBitmap*, uint8_t* row, uint32_t, int32_t, int32_t, void* user) {
  benchmark::DoNotOptimize(row);
  ++*static_cast<uint32_t*>(user);
  return 1;
}

void Load(benchmark::State& state, const std::wstring& path, uint32_t bits, uint32_t due) {
  for (auto _ : state) {
    uint32_t rows = 0;
    HostLoadFlagsRecord flags{};
    HostBitmap bitmap{};
    HostInitBitmap(&bitmap, sizeof(bitmap), 0, 0, bits);
    FilterLoadContext context{};
    context.file_name = path.c_str();
    context.bitmap = &bitmap;
    context.row_callback = DropRow;
    context.user = &rows;
    context.load_flags = &flags;
    context.load_memory = HostLoadMemory;
    context.set_load_hook = HostSetLoadHook;
    context.third_entry = NeverCalled;
    const int32_t status = fltLoad(&context);
    if (status != SUCCESS || rows != due) {
      state.SkipWithError(("status " + std::to_string(status) + ", rows " + std::to_string(rows)).c_str());
      return;
    }
  }
}

void Copy(benchmark::State& state, size_t size) {
  const std::vector<uint8_t> from(size, 1);
  std::vector<uint8_t> to(size, 2);
  for (auto _ : state) {
    std::memcpy(to.data(), from.data(), size);
    benchmark::DoNotOptimize(to.data());
    benchmark::ClobberMemory();
  }
  state.SetBytesProcessed(static_cast<int64_t>(size) * state.iterations());
}

}  // namespace

std::string CopyName(uint32_t load_bits) {
  return "copy/" + std::to_string(load_bits) + " bits";
}

std::string PageCopyName(uint32_t load_bits) {
  return "copy/page of " + std::to_string(load_bits) + " bits";
}

void RegisterLoad(const std::string& name, const std::wstring& path, uint32_t bits, uint32_t rows) {
  benchmark::RegisterBenchmark(name.c_str(), Load, path, bits, rows)->Unit(benchmark::kMillisecond);
}

void RegisterLoads(const std::filesystem::path& folder) {
  for (const uint32_t bits : {24U, 8U}) {
    benchmark::RegisterBenchmark(CopyName(bits).c_str(), Copy, size_t{kSide} * kSide * bits / 8)
        ->Unit(benchmark::kMillisecond);
    benchmark::RegisterBenchmark(PageCopyName(bits).c_str(), Copy,
                                 size_t{kPageWidth} * kPageHeight * bits / 8)
        ->Unit(benchmark::kMillisecond);
  }
  for (const LoadCase& load : LoadCases()) {
    RegisterLoad(load.name, WriteLoadFile(load, folder), load.load_bits, kSide);
  }
}

}  // namespace tavi_bench

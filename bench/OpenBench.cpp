// Opening and closing a document with one image.
#include <benchmark/benchmark.h>

#include "Bench.h"
#include "TaviNitf.h"

namespace tavi_bench {
namespace {

void Open(benchmark::State& state, const std::wstring& path) {
  for (auto _ : state) {
    NitfHandle document = nullptr;
    if (Tavi_NITFCreate(&document, path.c_str()) != SUCCESS) {
      state.SkipWithError("does not open");
      return;
    }
    Tavi_NITFDestroy(&document);
  }
}

}  // namespace

void RegisterOpen(const std::wstring& path) {
  benchmark::RegisterBenchmark(kOpenName, Open, path)->Unit(benchmark::kMicrosecond);
}

}  // namespace tavi_bench

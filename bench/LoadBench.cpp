// fltLoad with a callback that drops the rows, and the copy of a composite that it is measured against.
#include <benchmark/benchmark.h>

#include <cstring>

#include "Bench.h"
#include "NtfBuilder.h"
#include "TaviNitf.h"

namespace tavi_bench {
namespace {

void NeverCalled() {}

int32_t DropRow(uint64_t, HostBitmap*, uint8_t* row, uint32_t, int32_t, int32_t, void* user) {
  benchmark::DoNotOptimize(row);
  ++*static_cast<uint32_t*>(user);
  return 1;
}

void Load(benchmark::State& state, const LazyPath& path, uint32_t bits, uint32_t due) {
  const wchar_t* const name = path->c_str();
  double bytes = 0;
  for (auto _ : state) {
    uint32_t rows = 0;
    HostLoadFlagsRecord flags{};
    HostBitmap bitmap{};
    HostInitBitmap(&bitmap, sizeof(bitmap), 0, 0, bits);
    FilterLoadContext context{};
    context.file_name = name;
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
  HostFileInfo info{};
  if (QueryInfo(name, info) == SUCCESS)
    bytes = (info.width * bits + 7) / 8 * static_cast<double>(info.height);
  state.counters["bytes"] = bytes;
}

void Copy(benchmark::State& state, size_t size) {
  const std::vector<uint8_t> from(size, 1);
  std::vector<uint8_t> to(size, 2);
  for (auto _ : state) {
    std::memcpy(to.data(), from.data(), size);
    benchmark::DoNotOptimize(to.data());
    benchmark::ClobberMemory();
  }
  state.counters["bytes"] = static_cast<double>(size);
}

struct LoadCase {
  std::string name;
  uint32_t bands;  // 3 or 1, of 8 bits
  char imode;
  uint32_t block_side;  // kSide: one block
  uint32_t load_bits;   // depth of the composite that is asked for
  double bound;         // times the copy of the composite
};

std::vector<LoadCase> MakeCases() {
  constexpr double kColorBound = 6;
  constexpr double kGreyBound = 8;
  std::vector<LoadCase> cases;
  for (const char mode : {'B', 'P', 'R', 'S'}) {
    for (const uint32_t side : {kSide, kTileSide}) {
      const std::string blocks = side == kSide ? "one block" : "256 x 256 blocks";
      cases.push_back({std::string("load/24 bits ") + mode + ", " + blocks, 3, mode, side, 24, kColorBound});
    }
  }
  for (const uint32_t bits : {24U, 8U}) {
    for (const uint32_t side : {kSide, kTileSide}) {
      const std::string blocks = side == kSide ? "one block" : "256 x 256 blocks";
      cases.push_back(
          {"load/grey to " + std::to_string(bits) + " bits, " + blocks, 1, 'B', side, bits, kGreyBound});
    }
  }
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

}  // namespace

std::string CopyName(uint32_t load_bits) {
  return "copy/" + std::to_string(load_bits) + " bits";
}

std::string PageCopyName(uint32_t load_bits) {
  return "copy/page of " + std::to_string(load_bits) + " bits";
}

void RegisterLoad(const std::string& name, const LazyPath& path, uint32_t bits, uint32_t rows) {
  benchmark::RegisterBenchmark(name.c_str(), Load, path, bits, rows)->Unit(benchmark::kMillisecond);
}

void RegisterCopies() {
  for (const uint32_t bits : {24U, 8U}) {
    benchmark::RegisterBenchmark(CopyName(bits).c_str(), Copy, size_t{kSide} * kSide * bits / 8)
        ->Unit(benchmark::kMillisecond);
    benchmark::RegisterBenchmark(PageCopyName(bits).c_str(), Copy,
                                 size_t{kPageWidth} * kPageHeight * bits / 8)
        ->Unit(benchmark::kMillisecond);
  }
}

void RegisterLoads(const std::filesystem::path& folder, Table* table) {
  for (const LoadCase& load : MakeCases()) {
    RegisterLoad(load.name, LazyPath([load, folder] { return WriteLoadFile(load, folder); }), load.load_bits,
                 kSide);
    table->rows.push_back({load.name, CopyName(load.load_bits), {{load.bound, CopyName(load.load_bits)}}});
  }
}

}  // namespace tavi_bench

// Opening and closing documents, and asking what a file is. The floor reads each header from its place in the file.
#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <unistd.h>

#include "Bench.h"
#include "NtfBuilder.h"

namespace tavi_bench {
namespace {

constexpr uint32_t kMany = 999;

void Open(benchmark::State& state, const LazyPath& path) {
  const wchar_t* const name = path->c_str();
  for (auto _ : state) {
    NitfHandle document = nullptr;
    if (Tavi_NITFCreate(&document, name) != SUCCESS) {
      state.SkipWithError("does not open");
      return;
    }
    Tavi_NITFDestroy(&document);
  }
}

void Info(benchmark::State& state, const LazyPath& path) {
  const wchar_t* const name = path->c_str();
  for (auto _ : state) {
    HostFileInfo info{};
    if (QueryInfo(name, info) != SUCCESS) {
      state.SkipWithError("no information");
      return;
    }
  }
}

// Where headers stand, as the file header tells.
struct Stretch {
  off_t start;
  size_t size;
};

std::vector<Stretch> FindHeaders(int file) {
  constexpr off_t kHeaderLengthAt = 354;
  constexpr off_t kImagesAt = 360;
  const auto number = [file](off_t at, size_t width) {
    char text[16] = {};
    return pread(file, text, width, at) == static_cast<ssize_t>(width) ? std::stol(text) : 0;
  };
  std::vector<Stretch> headers{{0, static_cast<size_t>(number(kHeaderLengthAt, 6))}};
  off_t at = static_cast<off_t>(headers[0].size);
  const long images = number(kImagesAt, 3);
  for (long i = 0; i < images; ++i) {
    const off_t entry = kImagesAt + 3 + 16 * i;
    headers.push_back({at, static_cast<size_t>(number(entry, 6))});
    at += number(entry, 6) + number(entry + 6, 10);
  }
  return headers;
}

void ReadHeaders(benchmark::State& state, const LazyPath& path) {
  const std::string name = std::filesystem::path(*path).string();
  const int probe = open(name.c_str(), O_RDONLY | O_CLOEXEC);
  const std::vector<Stretch> headers = FindHeaders(probe);
  close(probe);
  Bytes buffer(size_t{1} << 20);
  for (auto _ : state) {
    const int file = open(name.c_str(), O_RDONLY | O_CLOEXEC);
    bool all = true;
    for (const Stretch& header : headers) {
      all = all && pread(file, buffer.data(), header.size, header.start) == static_cast<ssize_t>(header.size);
    }
    close(file);
    if (!all) {
      state.SkipWithError("not read");
      return;
    }
    benchmark::DoNotOptimize(buffer.data());
  }
}

std::wstring WriteManyFile(const std::filesystem::path& folder) {
  constexpr uint32_t kSmall = 32;
  tavi_test::NtfBuilder file;
  for (uint32_t i = 0; i < kMany; ++i) file.images.push_back(tavi_test::GreyImage(kSmall, kSmall));
  return file.Build().Write(folder, "many.ntf");
}

}  // namespace

std::wstring WriteOpenFile(const std::filesystem::path& folder) {
  tavi_test::ImageSpec image = tavi_test::GreyImage(512, 512);
  image.comments = {"one comment", "and another"};
  return tavi_test::NtfBuilder{image}.Build().Write(folder, "open.ntf");
}

void RegisterOpen(const std::filesystem::path& folder, Table* table) {
  // 60 microseconds on a machine that copies 10 GB/s, told as a part of copying a composite.
  constexpr double kOneImage = 60e-6 * 10e9 / (3.0 * kSide * kSide);
  constexpr double kFurtherImage = kOneImage / 8;
  constexpr auto kUnit = benchmark::kMicrosecond;
  const auto add = [table](const std::string& what, const LazyPath& path, const std::vector<Term>& bound) {
    const std::string floor = "floor/reading headers, " + what;
    benchmark::RegisterBenchmark(floor.c_str(), ReadHeaders, path)->Unit(kUnit);
    benchmark::RegisterBenchmark(("open/" + what).c_str(), Open, path)->Unit(kUnit);
    benchmark::RegisterBenchmark(("info/" + what).c_str(), Info, path)->Unit(kUnit);
    table->rows.push_back({"open/" + what, floor, bound});
    table->rows.push_back({"info/" + what, floor, bound});
  };
  add("one image", LazyPath([folder] { return WriteOpenFile(folder); }), {{kOneImage, CopyName(24)}});
  add("999 images", LazyPath([folder] { return WriteManyFile(folder); }),
      {{kMany * kFurtherImage, CopyName(24)}});
}

}  // namespace tavi_bench

// Reading and painting real annotations, each at its own size, one unit to a pixel.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <fstream>
#include <iterator>

#include "Bench.h"

namespace tavi_bench {
namespace {

constexpr double kLongestSide = 8192;  // of drawings whose unit is a pixel

std::filesystem::path SampleFolder() {
  const char* const given = std::getenv("TAVI_SAMPLES");
  return given != nullptr ? given : TAVI_SAMPLES_DEFAULT;
}

std::vector<std::filesystem::path> FilesIn(const std::filesystem::path& folder,
                                           const std::string& extension) {
  std::vector<std::filesystem::path> paths;
  std::error_code ignored;
  for (const auto& entry : std::filesystem::directory_iterator(folder, ignored)) {
    if (entry.path().extension() == extension) paths.push_back(entry.path());
  }
  std::sort(paths.begin(), paths.end());
  return paths;
}

Bytes ReadFile(const std::filesystem::path& path) {
  std::ifstream in(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(in), {}};
}

// The data of all graphics of a file, found from the length tables of its header.
std::vector<Bytes> GraphicsOf(const Bytes& file) {
  constexpr size_t kHeaderLengthAt = 354;
  constexpr size_t kImagesAt = 360;
  const auto number = [&](size_t at, size_t width) -> size_t {
    if (at + width > file.size()) return 0;
    return std::strtoul(std::string(file.begin() + static_cast<std::ptrdiff_t>(at),
                                    file.begin() + static_cast<std::ptrdiff_t>(at + width))
                            .c_str(),
                        nullptr, 10);
  };
  size_t at = number(kHeaderLengthAt, 6);
  const size_t images = number(kImagesAt, 3);
  for (size_t i = 0; i < images; ++i) {
    at += number(kImagesAt + 3 + 16 * i, 6) + number(kImagesAt + 9 + 16 * i, 10);
  }
  const size_t table = kImagesAt + 3 + 16 * images;
  std::vector<Bytes> graphics;
  for (size_t i = 0; i < number(table, 3); ++i) {
    const size_t data = at + number(table + 3 + 10 * i, 4);
    at = data + number(table + 7 + 10 * i, 6);
    if (at > file.size()) break;
    graphics.emplace_back(file.begin() + static_cast<std::ptrdiff_t>(data),
                          file.begin() + static_cast<std::ptrdiff_t>(at));
  }
  return graphics;
}

class Sample {
 public:
  explicit Sample(Bytes bytes) : bytes_(std::move(bytes)) {
    HostVector vector{};
    HostVecInit(&vector);
    double low[3] = {};
    double high[3] = {};
    if (Read(&vector) && HostVecGetExtents(&vector, low, high) == SUCCESS) {
      width_ = std::ceil(high[0] - low[0]);
      height_ = std::ceil(high[1] - low[1]);
    }
    HostVecFree(&vector);
  }

  bool Read(HostVector* vector) const {
    return HostVecLoadMemory(bytes_.data(), vector, bytes_.size(), nullptr, 0) == SUCCESS;
  }
  bool HasPixelUnits() const {
    return width_ >= 1 && height_ >= 1 && width_ <= kLongestSide && height_ <= kLongestSide;
  }
  uint32_t width() const { return static_cast<uint32_t>(width_); }
  uint32_t height() const { return static_cast<uint32_t>(height_); }

 private:
  Bytes bytes_;
  double width_ = 0;
  double height_ = 0;
};

void PaintSample(benchmark::State& state, const std::shared_ptr<const Sample>& sample) {
  HostBitmap bitmap{};
  HostCreateBitmap(&bitmap, sizeof bitmap, 1, sample->width(), sample->height(), 24, 1, nullptr, 1, nullptr,
                   0);
  const HostDrawingContext context = HostCreateBitmapDC(&bitmap);
  const HostRect place{0, 0, static_cast<int32_t>(sample->width()), static_cast<int32_t>(sample->height())};
  for (auto _ : state) {
    HostVector vector{};
    HostVecInit(&vector);
    const bool painted =
        sample->Read(&vector) && HostVecPaint(context, &vector, 0, 0, 0, 0, &place, 0, 0) == SUCCESS;
    HostVecFree(&vector);
    if (!painted) {
      state.SkipWithError("not painted");
      break;
    }
  }
  state.counters["bytes"] = 3.0 * sample->width() * sample->height();
  HostDeleteBitmapDC(context);
  HostFreeBitmap(&bitmap);
}

// Annotations have a bound. Drawings of other trades, of many megapixels or in units of their own, stand for comparison.
void Register(Table* table, const std::string& name, const Bytes& bytes, bool is_annotation) {
  constexpr double kBound = 5;  // milliseconds
  constexpr int kRepetitions = 5;
  const auto sample = std::make_shared<const Sample>(bytes);
  if (!sample->HasPixelUnits()) return;
  const std::string kind = "paint/" + name;
  benchmark::RegisterBenchmark(kind.c_str(), PaintSample, sample)
      ->Unit(benchmark::kMillisecond)
      ->Repetitions(kRepetitions);
  table->rows.push_back({kind, "", {}});
  if (is_annotation) table->rows.back().bound = {{kBound, kMilliseconds}};
}

}  // namespace

void RegisterSamples(Table* table) {
  for (const std::filesystem::path& path : FilesIn(SampleFolder() / "cgm", ".cgm")) {
    const std::string name = path.stem().string();
    const bool is_annotation =
        name.starts_with("anno_") || name.starts_with("jitc_") || name.starts_with("nitf_");
    Register(table, name, ReadFile(path), is_annotation);
  }
  for (const std::filesystem::path& path : FilesIn(SampleFolder() / "nitf", ".ntf")) {
    const std::vector<Bytes> graphics = GraphicsOf(ReadFile(path));
    for (size_t i = 0; i < graphics.size(); ++i) {
      Register(table, path.stem().string() + " " + std::to_string(i), graphics[i], true);
    }
  }
}

}  // namespace tavi_bench

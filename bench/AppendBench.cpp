// Appending an image, a drawing and a text, each against what it must do at least: encode the picture, write the
// drawing as CGM, read the text's file.
#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <unistd.h>

#include <cstdio>  // jpeglib.h needs its types
#include <cstdlib>
#include <fstream>

#include <jpeglib.h>

#include "Bench.h"

namespace tavi_bench {
namespace {

constexpr int32_t kYcbcr = 10;
constexpr int32_t kQualityFactor = 52;
constexpr int kTableScale = 39;  // that the quality factor means, of the library's scales
constexpr size_t kLines = 10'000;
constexpr size_t kTextBytes = size_t{1} << 20;

// Slopes with grain, blue first, rows from the top.
const Bytes& Picture() {
  static const Bytes picture = [] {
    Bytes bytes(size_t{3} * kSide * kSide);
    const Bytes noise = Noise(bytes.size());
    for (size_t i = 0; i < bytes.size(); ++i) {
      const size_t x = i / 3 % kSide;
      const size_t y = i / 3 / kSide;
      bytes[i] = static_cast<uint8_t>(8 + (x * (i % 3 + 1) + y * 2) / 32 % 224 + noise[i] % 16);
    }
    return bytes;
  }();
  return picture;
}

class PictureBitmap {
 public:
  PictureBitmap() {
    HostCreateBitmap(&bitmap_, sizeof bitmap_, 1, kSide, kSide, 24, 1, nullptr, 1, nullptr, 0);
    for (uint32_t y = 0; y < kSide; ++y) {
      HostPutBitmapRow(&bitmap_, Picture().data() + size_t{y} * kSide * 3, y, size_t{kSide} * 3);
    }
  }
  ~PictureBitmap() { HostFreeBitmap(&bitmap_); }
  PictureBitmap(const PictureBitmap&) = delete;
  PictureBitmap& operator=(const PictureBitmap&) = delete;
  HostBitmap* get() { return &bitmap_; }

 private:
  HostBitmap bitmap_{};
};

class Lines {
 public:
  Lines() {
    HostVecInit(&vector_);
    AddLines(&vector_, kLines);
  }
  ~Lines() { HostVecFree(&vector_); }
  Lines(const Lines&) = delete;
  Lines& operator=(const Lines&) = delete;
  HostVector* get() { return &vector_; }

 private:
  HostVector vector_{};
};

constexpr HostRect kWhole{0, 0, static_cast<int32_t>(kSide), static_cast<int32_t>(kSide)};

using Append = std::function<int32_t(NitfHandle)>;

// Each append goes into a new document: one that grows would change what is measured.
void MeasureAppend(benchmark::State& state, const Append& append, double bytes) {
  for (auto _ : state) {
    state.PauseTiming();
    NitfHandle document = nullptr;
    Tavi_NITFCreate(&document, nullptr);
    state.ResumeTiming();
    const int32_t status = append(document);
    state.PauseTiming();
    Tavi_NITFDestroy(&document);
    state.ResumeTiming();
    if (status != SUCCESS) {
      state.SkipWithError("not appended");
      break;
    }
  }
  state.counters["bytes"] = bytes;
}

void AppendPicture(benchmark::State& state) {
  PictureBitmap picture;
  MeasureAppend(
      state,
      [&](NitfHandle document) {
        return Tavi_NITFAppendImageSegment(document, picture.get(), kYcbcr, 24, kQualityFactor);
      },
      static_cast<double>(Picture().size()));
}

size_t EncodeAlone() {
  jpeg_compress_struct encoder{};
  jpeg_error_mgr error{};
  unsigned char* coded = nullptr;
  unsigned long size = 0;
  encoder.err = jpeg_std_error(&error);
  jpeg_create_compress(&encoder);
  jpeg_mem_dest(&encoder, &coded, &size);
  encoder.image_width = encoder.image_height = kSide;
  encoder.input_components = 3;
  encoder.in_color_space = JCS_EXT_BGR;
  jpeg_set_defaults(&encoder);
  jpeg_set_linear_quality(&encoder, kTableScale, TRUE);
  jpeg_start_compress(&encoder, TRUE);
  while (encoder.next_scanline < kSide) {
    auto* row = const_cast<JSAMPROW>(Picture().data() + size_t{encoder.next_scanline} * kSide * 3);
    jpeg_write_scanlines(&encoder, &row, 1);
  }
  jpeg_finish_compress(&encoder);
  jpeg_destroy_compress(&encoder);
  std::free(coded);  // NOLINT(cppcoreguidelines-no-malloc): the library made it with malloc
  return size;
}

void EncodePicture(benchmark::State& state) {
  Picture();
  for (auto _ : state) benchmark::DoNotOptimize(EncodeAlone());
}

uint64_t WriteCgm(const HostVector* vector) {
  constexpr uint32_t kCgm = 62;
  HostGlobalMemory block = nullptr;
  uint64_t size = 0;
  if (HostVecSaveMemory(&block, vector, kCgm, &size, nullptr) != SUCCESS) return 0;
  HostGlobalFree(block, 0, L"");
  return size;
}

void AppendDrawing(benchmark::State& state) {
  Lines lines;
  MeasureAppend(
      state,
      [&](NitfHandle document) { return Tavi_NITFAppendGraphicSegment(document, lines.get(), &kWhole); },
      static_cast<double>(WriteCgm(lines.get())));
}

void WriteDrawing(benchmark::State& state) {
  Lines lines;
  HostVecSetViewport(lines.get(), &kWhole);
  for (auto _ : state) {
    if (WriteCgm(lines.get()) == 0) {
      state.SkipWithError("not written");
      return;
    }
  }
}

void AppendText(benchmark::State& state, const LazyPath& path) {
  const wchar_t* const name = path->c_str();
  MeasureAppend(
      state, [&](NitfHandle document) { return Tavi_NITFAppendTextSegment(document, name); }, kTextBytes);
}

// Into memory that is new each time, as a text's is.
void ReadText(benchmark::State& state, const LazyPath& path) {
  const std::string name = std::filesystem::path(*path).string();
  for (auto _ : state) {
    const std::unique_ptr<uint8_t[]> text(new uint8_t[kTextBytes]);
    const int file = open(name.c_str(), O_RDONLY | O_CLOEXEC);
    const bool done = read(file, text.get(), kTextBytes) == static_cast<ssize_t>(kTextBytes);
    close(file);
    if (!done) {
      state.SkipWithError("not read");
      return;
    }
    benchmark::DoNotOptimize(text.get());
  }
}

std::wstring WriteText(const std::filesystem::path& folder) {
  std::filesystem::path path = folder / "text.txt";
  std::ofstream out(path, std::ios::binary);
  for (size_t i = 0; i < kTextBytes; ++i) out.put(i % 80 == 79 ? '\n' : static_cast<char>('a' + i % 26));
  return path.wstring();
}

}  // namespace

bool AppendOfEach(NitfHandle document, const std::filesystem::path& folder) {
  PictureBitmap picture;
  Lines lines;
  const std::wstring text = WriteText(folder);
  return Tavi_NITFAppendImageSegment(document, picture.get(), kYcbcr, 24, kQualityFactor) == SUCCESS &&
         Tavi_NITFAppendGraphicSegment(document, lines.get(), &kWhole) == SUCCESS &&
         Tavi_NITFAppendTextSegment(document, text.c_str()) == SUCCESS;
}

void RegisterAppend(const std::filesystem::path& folder, Table* table) {
  constexpr auto kUnit = benchmark::kMillisecond;
  const char* const encode = "floor/libjpeg-turbo, encoding";
  const char* const write = "floor/CGM writer alone";
  const char* const read = "floor/reading the text";
  const LazyPath text([folder] { return WriteText(folder); });
  benchmark::RegisterBenchmark(encode, EncodePicture)->Unit(kUnit);
  benchmark::RegisterBenchmark(write, WriteDrawing)->Unit(kUnit);
  benchmark::RegisterBenchmark(read, ReadText, text)->Unit(kUnit);
  benchmark::RegisterBenchmark("append/image of 2048 x 2048, JPEG", AppendPicture)->Unit(kUnit);
  benchmark::RegisterBenchmark("append/drawing of 10,000 lines", AppendDrawing)->Unit(kUnit);
  benchmark::RegisterBenchmark("append/text of 1 MiB", AppendText, text)->Unit(kUnit);
  table->rows.push_back({"append/image of 2048 x 2048, JPEG", encode, {{1.25, encode}, {3, CopyName(24)}}});
  // An append measures the drawing before it is written.
  table->rows.push_back({"append/drawing of 10,000 lines", write, {{1.5, write}}});
  table->rows.push_back({"append/text of 1 MiB", read, {{3, read}}});
}

}  // namespace tavi_bench

// The codecs' libraries alone, each as fast as it goes into memory that is there already.
#include <benchmark/benchmark.h>
#include <openjpeg.h>
#include <tiffio.h>

#include <algorithm>
#include <cstdio>  // jpeglib.h needs its types
#include <cstring>

#include <jpeglib.h>

#include "Bench.h"

namespace tavi_bench {
namespace {

// Rows of a tile go where they stand in the picture.
void DecodeJpeg(const Bytes& stream, uint8_t* pixels) {
  jpeg_decompress_struct decoder{};
  jpeg_error_mgr error{};
  decoder.err = jpeg_std_error(&error);
  jpeg_create_decompress(&decoder);
  jpeg_mem_src(&decoder, stream.data(), static_cast<unsigned long>(stream.size()));
  jpeg_read_header(&decoder, TRUE);
  decoder.out_color_space = JCS_EXT_BGR;
  jpeg_start_decompress(&decoder);
  while (decoder.output_scanline < decoder.output_height) {
    constexpr uint32_t kRows = 4;
    JSAMPROW rows[kRows];
    for (uint32_t i = 0; i < kRows; ++i) {
      rows[i] = pixels + (size_t{decoder.output_scanline} + i) * kSide * 3;
    }
    jpeg_read_scanlines(&decoder, rows, std::min(kRows, decoder.output_height - decoder.output_scanline));
  }
  jpeg_finish_decompress(&decoder);
  jpeg_destroy_decompress(&decoder);
}

void JpegAlone(benchmark::State& state, const Lazy<std::vector<Bytes>>& made) {
  const std::vector<Bytes>& streams = *made;
  const uint32_t across = streams.size() == 1 ? 1 : kSide / kTileSide;
  std::vector<uint8_t> pixels(size_t{kSide} * kSide * 3);
  for (auto _ : state) {
    for (uint32_t i = 0; i < streams.size(); ++i) {
      DecodeJpeg(streams[i], pixels.data() + (size_t{i / across} * kSide + i % across) * kTileSide * 3);
    }
    benchmark::DoNotOptimize(pixels.data());
  }
}

struct Source {
  const Bytes* bytes;
  size_t at = 0;
};

OPJ_SIZE_T ReadSource(void* buffer, OPJ_SIZE_T size, void* user) {
  auto* const source = static_cast<Source*>(user);
  const OPJ_SIZE_T count = std::min(size, source->bytes->size() - source->at);
  if (count == 0) return static_cast<OPJ_SIZE_T>(-1);
  std::memcpy(buffer, source->bytes->data() + source->at, count);
  source->at += count;
  return count;
}

OPJ_OFF_T SkipSource(OPJ_OFF_T count, void* user) {
  static_cast<Source*>(user)->at += static_cast<size_t>(count);
  return count;
}

OPJ_BOOL SeekSource(OPJ_OFF_T to, void* user) {
  static_cast<Source*>(user)->at = static_cast<size_t>(to);
  return OPJ_TRUE;
}

// With as many threads as the host takes: all cores, up to 16.
bool DecodeJpeg2000(const Bytes& bytes) {
  Source source{&bytes};
  opj_stream_t* const stream = opj_stream_create(1 << 16, OPJ_TRUE);
  opj_stream_set_user_data(stream, &source, nullptr);
  opj_stream_set_user_data_length(stream, bytes.size());
  opj_stream_set_read_function(stream, ReadSource);
  opj_stream_set_skip_function(stream, SkipSource);
  opj_stream_set_seek_function(stream, SeekSource);
  opj_codec_t* const codec = opj_create_decompress(OPJ_CODEC_J2K);
  opj_dparameters_t parameters;
  opj_set_default_decoder_parameters(&parameters);
  opj_image_t* image = nullptr;
  constexpr int kMostThreads = 16;
  const bool done = opj_setup_decoder(codec, &parameters) &&
                    opj_codec_set_threads(codec, std::min(opj_get_num_cpus(), kMostThreads)) &&
                    opj_read_header(stream, codec, &image) && opj_decode(codec, stream, image);
  opj_image_destroy(image);
  opj_destroy_codec(codec);
  opj_stream_destroy(stream);
  return done;
}

void Jpeg2000Alone(benchmark::State& state, const Lazy<Bytes>& made) {
  const Bytes& bytes = *made;
  for (auto _ : state) {
    if (!DecodeJpeg2000(bytes)) {
      state.SkipWithError("does not decode");
      return;
    }
  }
}

void FaxAlone(benchmark::State& state, const Lazy<std::string>& made) {
  const std::string& path = *made;
  std::vector<uint8_t> page(size_t{kPageWidth + 7} / 8 * kPageHeight);
  const auto size = static_cast<tmsize_t>(page.size());
  for (auto _ : state) {
    TIFF* const tiff = TIFFOpen(path.c_str(), "r");
    const tmsize_t read = tiff == nullptr ? -1 : TIFFReadEncodedStrip(tiff, 0, page.data(), size);
    if (tiff != nullptr) TIFFClose(tiff);
    if (read != size) {
      state.SkipWithError("does not decode");
      return;
    }
    benchmark::DoNotOptimize(page.data());
  }
}

}  // namespace

void RegisterCodecs(const Lazy<Bytes>& jpeg, const Lazy<std::vector<Bytes>>& tiles,
                    const Lazy<Bytes>& jpeg2000, const Lazy<std::string>& fax) {
  constexpr auto kUnit = benchmark::kMillisecond;
  const Lazy<std::vector<Bytes>> whole([jpeg] { return std::vector<Bytes>{*jpeg}; });
  benchmark::RegisterBenchmark(kJpegFloor, JpegAlone, whole)->Unit(kUnit);
  benchmark::RegisterBenchmark(kJpegTilesFloor, JpegAlone, tiles)->Unit(kUnit);
  benchmark::RegisterBenchmark(kJpeg2000Floor, Jpeg2000Alone, jpeg2000)->Unit(kUnit);
  benchmark::RegisterBenchmark(kFaxFloor, FaxAlone, fax)->Unit(kUnit);
}

}  // namespace tavi_bench

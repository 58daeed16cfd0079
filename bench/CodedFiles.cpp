// Pictures as each code stores them.
#include <tiffio.h>

#include <algorithm>

#include "Bench.h"
#include "NtfBuilder.h"
#include "coded/Streams.h"
#include "coded/VqFile.h"
#include "host_codecs/FaxEncoder.h"
#include "host_codecs/Jpeg2000Encoder.h"
#include "host_codecs/JpegEncoder.h"

namespace tavi_bench {
namespace {

using tavi_test::ImageSpec;
using tavi_test::Pixels;

// Slopes with grain, so that it takes as many bits as a photograph does.
Pixels MakePhotograph() {
  Pixels pixels = tavi_test::MakeScene(kSide, kSide, 3, 8);
  const Bytes noise = Noise(pixels.samples.size());
  for (size_t i = 0; i < noise.size(); ++i) {
    const int value = pixels.samples[i] + noise[i] % 16 - 8;
    pixels.samples[i] = static_cast<uint16_t>(std::clamp(value, 0, 255));
  }
  return pixels;
}

Pixels Crop(const Pixels& from, uint32_t x0, uint32_t y0) {
  Pixels part(kTileSide, kTileSide, from.channels);
  for (uint32_t y = 0; y < kTileSide; ++y)
    for (uint32_t x = 0; x < kTileSide; ++x)
      for (uint32_t c = 0; c < from.channels; ++c) part.At(x, y, c) = from.At(x0 + x, y0 + y, c);
  return part;
}

// The search for the last stream looks at 1024 bytes at a time and misses a marker that two of them share.
void KeepMarkerWhole(Bytes* stream) {
  while (stream->size() % 1024 != 512) stream->push_back(0);
}

// Lines of letters out of 64 shapes, with gaps between words.
Pixels MakeTextPage() {
  constexpr uint32_t kDot = 4;
  constexpr uint32_t kCellWidth = 8 * kDot;
  constexpr uint32_t kCellHeight = 15 * kDot;
  constexpr uint32_t kMargin = 400;
  const Bytes shapes = Noise(size_t{64} * 9);
  const Bytes letters = Noise(size_t{kPageHeight / kCellHeight + 1} * (kPageWidth / kCellWidth + 1));
  Pixels page(kPageWidth, kPageHeight, 1);
  for (uint32_t y = 0; y < kPageHeight; ++y) {
    for (uint32_t x = 0; x < kPageWidth; ++x) {
      const uint32_t row = y % kCellHeight / kDot;
      const uint32_t column = x % kCellWidth / kDot;
      const uint8_t letter = letters[y / kCellHeight * (kPageWidth / kCellWidth + 1) + x / kCellWidth];
      const bool inside =
          x >= kMargin && x < kPageWidth - kMargin && y >= kMargin && y < kPageHeight - kMargin;
      const bool black = inside && letter < 200 && row < 9 && column < 7 &&
                         (shapes[letter % 64 * 9 + row] >> column & 1) != 0;
      page.At(x, y) = black ? 0 : 1;
    }
  }
  return page;
}

ImageSpec CodedImage(const std::string& ic, uint32_t bands, uint32_t across, uint32_t side) {
  ImageSpec image;
  image.Blocks(across, across, side, side);
  image.ic = ic;
  image.irep = bands == 3 ? "YCbCr601" : "MONO";
  image.Roles(bands == 3 ? std::vector<std::string>{"Y ", "Cb", "Cr"} : std::vector<std::string>{"M "});
  if (bands == 3) image.Mode('P');
  return image;
}

std::wstring Write(const ImageSpec& image, const std::filesystem::path& folder, const std::string& name) {
  return tavi_test::NtfBuilder{image}.Build().Write(folder, name + ".ntf");
}

ImageSpec Tiles(const std::string& ic, uint32_t bands, uint32_t side, const std::vector<Bytes>& streams) {
  uint32_t across = 1;
  while (across * across < streams.size()) ++across;
  ImageSpec image = CodedImage(ic, bands, across, side);
  std::vector<uint32_t> offsets;
  for (const Bytes& stream : streams) {
    offsets.push_back(static_cast<uint32_t>(image.pixels.size()));
    image.pixels.insert(image.pixels.end(), stream.begin(), stream.end());
  }
  if (image.HasMaskTable()) image.mask.block_offsets = offsets;
  return image;
}

void AddJpeg(const std::filesystem::path& folder, CodedStreams* streams, std::vector<CodedCase>* cases) {
  const Pixels picture = MakePhotograph();
  const tavi_test::JpegSettings settings{.across = 2, .down = 2};
  streams->jpeg = {tavi_test::EncodeJpeg(picture, settings)};
  for (uint32_t y = 0; y < kSide; y += kTileSide) {
    for (uint32_t x = 0; x < kSide; x += kTileSide) {
      streams->jpeg_tiles.push_back(tavi_test::EncodeJpeg(Crop(picture, x, y), settings));
      KeepMarkerWhole(&streams->jpeg_tiles.back());
    }
  }
  const auto bound = [](const char* floor) { return std::vector<Term>{{1.25, floor}, {3, CopyName(24)}}; };
  ImageSpec whole = CodedImage("C3", 3, 1, kSide);
  whole.pixels = streams->jpeg[0];
  cases->push_back(
      {"load/C3, one stream", Write(whole, folder, "jpeg"), kSide, 24, kJpegFloor, bound(kJpegFloor)});
  cases->push_back({"load/C3 by scan, 256 x 256 blocks",
                    Write(Tiles("C3", 3, kTileSide, streams->jpeg_tiles), folder, "jpeg-scan"), kSide, 24,
                    kJpegTilesFloor, bound(kJpegTilesFloor)});
  cases->push_back({"load/M3 by mask, 256 x 256 blocks",
                    Write(Tiles("M3", 3, kTileSide, streams->jpeg_tiles), folder, "jpeg-mask"), kSide, 24,
                    kJpegTilesFloor, bound(kJpegTilesFloor)});
  streams->jpeg2000 = tavi_test::EncodeJpeg2000(picture, {.mix = true});
  ImageSpec lossless = CodedImage("C8", 3, 1, kSide);
  lossless.irep = "RGB";
  lossless.Roles({"R ", "G ", "B "}).Mode('B');
  lossless.pixels = streams->jpeg2000;
  cases->push_back({"load/C8, lossless",
                    Write(lossless, folder, "jpeg2000"),
                    kSide,
                    24,
                    kJpeg2000Floor,
                    {{1.1, kJpeg2000Floor}}});
}

void AddFax(const std::filesystem::path& folder, CodedStreams* streams, std::vector<CodedCase>* cases) {
  ImageSpec image;
  image.Blocks(1, 1, kPageWidth, kPageHeight);
  image.ic = "C1";
  image.comrat = "2DS";
  image.pvtype = "B";
  image.nbpp = image.abpp = 1;
  image.pixels = tavi_test::EncodeFax(MakeTextPage(), {.kind = tavi_test::FaxKind::kG3TwoD});
  streams->fax = (folder / "fax.tif").string();
  TIFF* const tiff = TIFFOpen(streams->fax.c_str(), "w");
  TIFFSetField(tiff, TIFFTAG_IMAGEWIDTH, kPageWidth);
  TIFFSetField(tiff, TIFFTAG_IMAGELENGTH, kPageHeight);
  TIFFSetField(tiff, TIFFTAG_BITSPERSAMPLE, 1);
  TIFFSetField(tiff, TIFFTAG_SAMPLESPERPIXEL, 1);
  TIFFSetField(tiff, TIFFTAG_PHOTOMETRIC, PHOTOMETRIC_MINISWHITE);
  TIFFSetField(tiff, TIFFTAG_ROWSPERSTRIP, kPageHeight);
  TIFFSetField(tiff, TIFFTAG_COMPRESSION, COMPRESSION_CCITTFAX3);
  TIFFSetField(tiff, TIFFTAG_GROUP3OPTIONS, GROUP3OPT_2DENCODING);
  TIFFWriteRawStrip(tiff, 0, image.pixels.data(), static_cast<tmsize_t>(image.pixels.size()));
  TIFFClose(tiff);
  const std::wstring path = Write(image, folder, "fax");
  // A composite of more than a bit is many times as large as what is decoded: its copies count as well.
  for (const uint32_t bits : {1U, 8U, 24U}) {
    std::vector<Term> bound{{1.3, kFaxFloor}};
    if (bits > 1) bound.push_back({3, PageCopyName(bits)});
    cases->push_back({"load/C1 2DS to " + std::to_string(bits) + (bits == 1 ? " bit" : " bits"), path,
                      kPageHeight, bits, kFaxFloor, bound});
  }
}

// 4096 kernels of 4 x 4 and codes in no order.
void AddVq(const std::filesystem::path& folder, std::vector<CodedCase>* cases) {
  constexpr uint32_t kKernelSide = 4;
  constexpr uint32_t kEntries = 4096;
  ImageSpec image = CodedImage("C4", 1, kSide / kTileSide, kTileSide);
  tavi_test::VqStream stream;
  stream.image_rows = stream.codes_per_row = kTileSide / kKernelSide;
  stream.code_bits = 12;
  stream.entries = kEntries;
  const Bytes noise = Noise(size_t{kKernelSide} * kEntries * kKernelSide);
  constexpr auto kTable = std::ptrdiff_t{kEntries} * kKernelSide;
  for (uint32_t i = 0; i < kKernelSide; ++i) {
    stream.tables.emplace_back(noise.begin() + i * kTable, noise.begin() + (i + 1) * kTable);
  }
  const size_t codes = size_t{kSide / kKernelSide} * (kSide / kKernelSide);
  const Bytes random = Noise(codes * 2);
  for (size_t i = 0; i < codes; ++i) {
    stream.codes.push_back((uint32_t{random[2 * i]} << 8 | random[2 * i + 1]) % kEntries);
  }
  image.pixels = stream.Build();
  const std::wstring path = Write(image, folder, "vq");
  for (const uint32_t bits : {8U, 24U}) {
    cases->push_back({"load/C4 to " + std::to_string(bits) + " bits",
                      path,
                      kSide,
                      bits,
                      CopyName(bits),
                      {{8, CopyName(bits)}}});
  }
}

// Small pictures in streams of a MiB. What fills them looks like entropy-coded data: no marker, and a zero
// behind every 0xFF.
void AddScan(const std::filesystem::path& folder, std::vector<CodedCase>* cases) {
  constexpr uint32_t kStreams = 64;
  constexpr uint32_t kStreamSide = 8;
  constexpr size_t kStreamSize = size_t{1} << 20;
  Bytes filling = Noise(kStreamSize);
  for (size_t i = 1; i < filling.size(); ++i) {
    if (filling[i - 1] == 0xFF) filling[i] = 0;
  }
  std::vector<Bytes> streams;
  for (uint32_t i = 0; i < kStreams; ++i) {
    streams.push_back(tavi_test::TinyJpeg(i));
    const auto head = static_cast<std::ptrdiff_t>(streams[i].size());
    streams[i].insert(streams[i].end(), filling.begin() + head, filling.end());
    KeepMarkerWhole(&streams[i]);
  }
  const std::vector<Term> bound{{kScanBytes / 1e6, kMilliseconds}};
  constexpr uint32_t kRows = 8 * kStreamSide;
  cases->push_back(
      {kScanName, Write(Tiles("C3", 1, kStreamSide, streams), folder, "scan"), kRows, 24, "", bound});
  cases->push_back(
      {kScanMaskName, Write(Tiles("M3", 1, kStreamSide, streams), folder, "no-scan"), kRows, 24, "", bound});
}

}  // namespace

std::vector<CodedCase> WriteCodedFiles(const std::filesystem::path& folder, CodedStreams* streams) {
  std::vector<CodedCase> cases;
  AddJpeg(folder, streams, &cases);
  AddFax(folder, streams, &cases);
  AddVq(folder, &cases);
  AddScan(folder, &cases);
  return cases;
}

}  // namespace tavi_bench

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

const tavi_test::JpegSettings kHalfChroma{.across = 2, .down = 2};

std::vector<Bytes> EncodeTiles(const Pixels& picture) {
  std::vector<Bytes> tiles;
  for (uint32_t y = 0; y < kSide; y += kTileSide) {
    for (uint32_t x = 0; x < kSide; x += kTileSide) {
      tiles.push_back(tavi_test::EncodeJpeg(Crop(picture, x, y), kHalfChroma));
      KeepMarkerWhole(&tiles.back());
    }
  }
  return tiles;
}

struct JpegStreams {
  Lazy<Bytes> whole;
  Lazy<std::vector<Bytes>> tiles;
  Lazy<Bytes> jpeg2000;
};

JpegStreams MakeJpegStreams() {
  const Lazy<Pixels> picture([] { return MakePhotograph(); });
  return {Lazy<Bytes>([picture] { return tavi_test::EncodeJpeg(*picture, kHalfChroma); }),
          Lazy<std::vector<Bytes>>([picture] { return EncodeTiles(*picture); }),
          Lazy<Bytes>([picture] { return tavi_test::EncodeJpeg2000(*picture, {.mix = true}); })};
}

// One case: its file is made when it is measured.
void Add(Table* table, const Row& row, uint32_t rows, uint32_t bits, std::function<std::wstring()> make) {
  RegisterLoad(row.kind, LazyPath(std::move(make)), bits, rows);
  table->rows.push_back(row);
}

void AddJpeg(const std::filesystem::path& folder, const JpegStreams& streams, Table* table) {
  const auto row = [](const char* kind, const char* floor) {
    return Row{kind, floor, {{1.25, floor}, {3, CopyName(24)}}};
  };
  Add(table, row("load/C3, one stream", kJpegFloor), kSide, 24, [=] {
    ImageSpec whole = CodedImage("C3", 3, 1, kSide);
    whole.pixels = *streams.whole;
    return Write(whole, folder, "jpeg");
  });
  Add(table, row("load/C3 by scan, 256 x 256 blocks", kJpegTilesFloor), kSide, 24,
      [=] { return Write(Tiles("C3", 3, kTileSide, *streams.tiles), folder, "jpeg-scan"); });
  Add(table, row("load/M3 by mask, 256 x 256 blocks", kJpegTilesFloor), kSide, 24,
      [=] { return Write(Tiles("M3", 3, kTileSide, *streams.tiles), folder, "jpeg-mask"); });
  Add(table, {"load/C8, lossless", kJpeg2000Floor, {{1.1, kJpeg2000Floor}}}, kSide, 24, [=] {
    ImageSpec lossless = CodedImage("C8", 3, 1, kSide);
    lossless.irep = "RGB";
    lossless.Roles({"R ", "G ", "B "}).Mode('B');
    lossless.pixels = *streams.jpeg2000;
    return Write(lossless, folder, "jpeg2000");
  });
}

Bytes EncodePage() {
  return tavi_test::EncodeFax(MakeTextPage(), {.kind = tavi_test::FaxKind::kG3TwoD});
}

std::wstring WritePage(const Bytes& coded, const std::filesystem::path& folder) {
  ImageSpec image;
  image.Blocks(1, 1, kPageWidth, kPageHeight);
  image.ic = "C1";
  image.comrat = "2DS";
  image.pvtype = "B";
  image.nbpp = image.abpp = 1;
  image.pixels = coded;
  return Write(image, folder, "fax");
}

std::string WriteTiff(const Bytes& coded, const std::filesystem::path& folder) {
  std::string path = (folder / "fax.tif").string();
  TIFF* const tiff = TIFFOpen(path.c_str(), "w");
  TIFFSetField(tiff, TIFFTAG_IMAGEWIDTH, kPageWidth);
  TIFFSetField(tiff, TIFFTAG_IMAGELENGTH, kPageHeight);
  TIFFSetField(tiff, TIFFTAG_BITSPERSAMPLE, 1);
  TIFFSetField(tiff, TIFFTAG_SAMPLESPERPIXEL, 1);
  TIFFSetField(tiff, TIFFTAG_PHOTOMETRIC, PHOTOMETRIC_MINISWHITE);
  TIFFSetField(tiff, TIFFTAG_ROWSPERSTRIP, kPageHeight);
  TIFFSetField(tiff, TIFFTAG_COMPRESSION, COMPRESSION_CCITTFAX3);
  TIFFSetField(tiff, TIFFTAG_GROUP3OPTIONS, GROUP3OPT_2DENCODING);
  Bytes strip = coded;
  TIFFWriteRawStrip(tiff, 0, strip.data(), static_cast<tmsize_t>(strip.size()));
  TIFFClose(tiff);
  return path;
}

void AddFax(const std::filesystem::path& folder, const Lazy<Bytes>& coded, Table* table) {
  const LazyPath path([=] { return WritePage(*coded, folder); });
  for (const uint32_t bits : {1U, 8U, 24U}) {
    const std::string kind = "load/C1 2DS to " + std::to_string(bits) + (bits == 1 ? " bit" : " bits");
    Add(table, {kind, kFaxFloor, {{1.3, kFaxFloor}}}, kPageHeight, bits, [=] { return *path; });
  }
}

// 4096 kernels of 4 x 4 and codes in no order.
std::wstring WriteVq(const std::filesystem::path& folder) {
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
  return Write(image, folder, "vq");
}

void AddVq(const std::filesystem::path& folder, Table* table) {
  const LazyPath path([=] { return WriteVq(folder); });
  for (const uint32_t bits : {8U, 24U}) {
    Add(table, {"load/C4 to " + std::to_string(bits) + " bits", CopyName(bits), {{8, CopyName(bits)}}}, kSide,
        bits, [=] { return *path; });
  }
}

// Small pictures in streams of a MiB. What fills them looks like entropy-coded data: no marker, and a zero
// behind every 0xFF.
constexpr uint32_t kScanStreams = 64;
constexpr uint32_t kScanSide = 8;
constexpr size_t kScanStreamSize = size_t{1} << 20;

std::vector<Bytes> MakeScanStreams() {
  Bytes filling = Noise(kScanStreamSize);
  for (size_t i = 1; i < filling.size(); ++i) {
    if (filling[i - 1] == 0xFF) filling[i] = 0;
  }
  std::vector<Bytes> streams;
  for (uint32_t i = 0; i < kScanStreams; ++i) {
    streams.push_back(tavi_test::TinyJpeg(i));
    const auto head = static_cast<std::ptrdiff_t>(streams[i].size());
    streams[i].insert(streams[i].end(), filling.begin() + head, filling.end());
    KeepMarkerWhole(&streams[i]);
  }
  return streams;
}

// Finding the streams: 1 GB/s at least of the whole load. The same streams told by a mask stand beside it.
void AddScan(const std::filesystem::path& folder, Table* table) {
  constexpr double kLeastRate = 1e6;  // bytes in a millisecond
  constexpr uint32_t kRows = 8 * kScanSide;
  const Lazy<std::vector<Bytes>> streams([] { return MakeScanStreams(); });
  const char* const masked = "load/M3 by mask, 64 streams of 1 MiB";
  Add(table,
      {"load/C3 by scan, 64 streams of 1 MiB",
       masked,
       {{kScanStreams * kScanStreamSize / kLeastRate, kMilliseconds}}},
      kRows, 24, [=] { return Write(Tiles("C3", 1, kScanSide, *streams), folder, "scan"); });
  Add(table, {masked, "", {}}, kRows, 24,
      [=] { return Write(Tiles("M3", 1, kScanSide, *streams), folder, "no-scan"); });
}

}  // namespace

void RegisterCoded(const std::filesystem::path& folder, Table* table) {
  const JpegStreams streams = MakeJpegStreams();
  const Lazy<Bytes> page([] { return EncodePage(); });
  RegisterCodecs(streams.whole, streams.tiles, streams.jpeg2000,
                 Lazy<std::string>([=] { return WriteTiff(*page, folder); }));
  AddJpeg(folder, streams, table);
  AddFax(folder, page, table);
  AddVq(folder, table);
  AddScan(folder, table);
}

}  // namespace tavi_bench

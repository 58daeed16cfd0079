#include "CodedFiles.h"

#include "../coded/Streams.h"
#include "../coded/VqFile.h"
#include "../host_codecs/FaxEncoder.h"
#include "../host_codecs/Jpeg2000Encoder.h"
#include "../host_codecs/JpegEncoder.h"

namespace tavi::faults {
namespace {

using tavi_test::Bytes;
using tavi_test::CodedImage;
using tavi_test::Concatenate;
using tavi_test::EncodeFax;
using tavi_test::EncodeJpeg;
using tavi_test::EncodeJpeg2000;
using tavi_test::GreyImage;
using tavi_test::ImageSpec;
using tavi_test::kAbsentBlock;
using tavi_test::MakePage;
using tavi_test::MakeScene;
using tavi_test::NtfBuilder;
using tavi_test::TinyJpeg;
using tavi_test::VqStream;

constexpr uint32_t kSide = 8;

uint32_t BandsOf(const std::string& irep) {
  return irep == "MONO" ? 1 : 3;
}

Bytes ColourJpeg() {
  return EncodeJpeg(MakeScene(kSide, kSide, 3, 8), {});
}

ImageSpec SingleStream(const std::string& irep) {
  ImageSpec image = CodedImage("C3", irep, BandsOf(irep), 1, 1, kSide, kSide);
  image.pixels = irep == "MONO" ? TinyJpeg(1) : ColourJpeg();
  return image;
}

// A colour stream and what fills it up, so that the next one stands 1,100 bytes further on.
Bytes TileStream(const std::string& irep, uint32_t number) {
  constexpr size_t kSize = 1100;
  if (irep == "MONO") {
    return TinyJpeg(number, kSize);
  }
  Bytes stream = ColourJpeg();
  stream.resize(kSize);
  return stream;
}

Bytes TileStreams(const std::string& irep, uint32_t count) {
  Bytes streams;
  for (uint32_t i = 0; i < count; ++i) {
    streams = Concatenate({streams, TileStream(irep, i)});
  }
  return streams;
}

ImageSpec ScannedTiles(const std::string& irep) {
  ImageSpec image = CodedImage("C3", irep, BandsOf(irep), 2, 2, kSide, kSide);
  image.pixels = TileStreams(irep, 4);
  return image;
}

ImageSpec MaskedTiles(const std::string& irep) {
  ImageSpec image = CodedImage("M3", irep, BandsOf(irep), 2, 2, kSide, kSide);
  image.mask.block_offsets = {0, kAbsentBlock, 1100, 2200};
  image.mask.pad_code = {0};
  image.pixels = TileStreams(irep, 3);
  return image;
}

// `streams` fewer than blocks times bands let the last one stand in for those that are missing.
ImageSpec BandStreams(uint32_t bands, size_t streams) {
  ImageSpec image = CodedImage("C3", "RGB", bands, 2, 1, kSide, kSide).Mode('S');
  for (size_t i = 0; i < streams; ++i) {
    image.pixels = Concatenate({image.pixels, TinyJpeg(static_cast<uint32_t>(i), 1100 + 100 * i)});
  }
  return image;
}

// One stream serves all bands of its block. The last entry counts from the start of the data.
ImageSpec MaskedBandStreams() {
  ImageSpec image = BandStreams(3, 2);
  image.ic = "M3";
  image.Blocks(3, 1, kSide, kSide);
  image.mask.block_offsets = {0, kAbsentBlock, 0};
  const auto table = static_cast<uint32_t>(image.MaskTable().size());
  image.mask.block_offsets = {0, kAbsentBlock, 1100 + table};
  return image;
}

ImageSpec Jpeg2000(const std::string& irep) {
  ImageSpec image = CodedImage("C8", irep, BandsOf(irep), 2, 1, kSide, kSide);
  image.pixels = EncodeJpeg2000(MakeScene(2 * kSide, kSide, BandsOf(irep), 8), {.levels = 1});
  return image;
}

// With a table for its palette; M1 has a pad code as well, which the decoding changes.
ImageSpec Fax(const std::string& ic, const std::string& comrat) {
  constexpr uint32_t kWidth = 24;
  ImageSpec image = CodedImage(ic, "RGB/LUT", 1, 1, 1, kWidth, kSide);
  image.pvtype = "B";
  image.nbpp = image.abpp = 1;
  image.comrat = comrat;
  image.bands[0].irepband = "LU";
  image.bands[0].luts = {{0, 255}, {0, 128}, {0, 64}};
  const auto kind = comrat == "1D" ? tavi_test::FaxKind::kG3OneD : tavi_test::FaxKind::kG3TwoD;
  image.pixels = EncodeFax(MakePage(kWidth, kSide), {.kind = kind});
  if (ic == "M1") {
    image.mask.block_offsets = {0};
    image.mask.pad_code = {1};
  }
  return image;
}

// Codes of a byte each: bits left over would go to the next picture decoded.
ImageSpec Quantised(const std::string& ic, const std::string& irep, uint32_t bits, uint32_t tables) {
  constexpr uint32_t kKernel = 4;
  constexpr uint32_t kEntries = 5;
  ImageSpec image = CodedImage(ic, irep, BandsOf(irep), 2, 2, kSide, kSide);
  image.nbpp = image.abpp = bits;
  uint32_t blocks = image.BlockCount();
  if (ic == "M4") {
    image.mask.block_offsets = {0, kAbsentBlock, 4, 8};
    image.mask.pad_code = {0};
    --blocks;
  }
  VqStream stream{.image_rows = kSide / kKernel, .codes_per_row = kSide / kKernel, .code_bits = 8};
  stream.entries = kEntries;
  for (uint32_t table = 0; table < tables; ++table) {
    stream.tables.emplace_back(size_t{kEntries} * kKernel, static_cast<uint8_t>(40 * table + 3));
  }
  const uint32_t codes = blocks * stream.image_rows * stream.codes_per_row;
  for (uint32_t i = 0; i < codes; ++i) {
    stream.codes.push_back(i % kEntries);
  }
  image.pixels = stream.Build();
  return image;
}

}  // namespace

std::vector<NamedFile> CodedFiles() {
  return {
      {"C3", NtfBuilder{SingleStream("MONO")}},
      {"C3Rgb", NtfBuilder{SingleStream("RGB")}},
      {"C3Multi", NtfBuilder{SingleStream("MULTI")}},
      {"C3Scan", NtfBuilder{ScannedTiles("MONO")}},
      // A stream that cannot be given its header is loaded as it is: what lasts is met by the second image.
      {"C3ScanMulti", NtfBuilder{ScannedTiles("MULTI"), GreyImage(4, 3).Level(2)}},
      {"M3Mask", NtfBuilder{MaskedTiles("MONO")}},
      {"M3MaskMulti", NtfBuilder{MaskedTiles("MULTI")}},
      {"C3Bands", NtfBuilder{BandStreams(3, 6)}},
      {"C3FiveBandsOfTwoStreams", NtfBuilder{BandStreams(5, 2)}},
      {"M3Bands", NtfBuilder{MaskedBandStreams()}},
      {"C8", NtfBuilder{Jpeg2000("MONO")}},
      {"C8Rgb", NtfBuilder{Jpeg2000("RGB")}},
      {"C1", NtfBuilder{Fax("C1", "1D")}},
      {"M1", NtfBuilder{Fax("M1", "2DS")}},
      {"C4", NtfBuilder{Quantised("C4", "MONO", 8, 4)}},
      {"C4Rgb", NtfBuilder{Quantised("C4", "RGB", 8, 4)}},
      {"C4Grey12", NtfBuilder{Quantised("C4", "MONO", 12, 4)}},
      {"C4FurtherTables", NtfBuilder{Quantised("C4", "MONO", 8, 6)}},
      {"M4", NtfBuilder{Quantised("M4", "MONO", 8, 4)}},
  };
}

}  // namespace tavi::faults

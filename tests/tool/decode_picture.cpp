// Decodes a TIFF or JPEG picture to PPM or PGM on standard output, for tests that compare pixels.
//   decode_picture PICTURE
#include <cstddef>
#include <cstdio>
// Needs size_t and FILE to be declared before it.
#include <jpeglib.h>
#include <tiffio.h>

#include <cstdint>
#include <string_view>
#include <vector>

namespace {

void PutHeader(uint32_t channels, uint32_t width, uint32_t height) {
  std::printf("P%d\n%u %u\n255\n", channels == 3 ? 6 : 5, width, height);
}

int DecodeTiff(const char* path) {
  TIFF* tiff = TIFFOpen(path, "r");
  if (tiff == nullptr) return 1;
  uint32_t width = 0;
  uint32_t height = 0;
  uint16_t channels = 0;
  uint16_t bits = 0;
  TIFFGetField(tiff, TIFFTAG_IMAGEWIDTH, &width);
  TIFFGetField(tiff, TIFFTAG_IMAGELENGTH, &height);
  TIFFGetField(tiff, TIFFTAG_SAMPLESPERPIXEL, &channels);
  TIFFGetField(tiff, TIFFTAG_BITSPERSAMPLE, &bits);
  if (bits != 8 || (channels != 1 && channels != 3)) return 1;
  PutHeader(channels, width, height);
  std::vector<uint8_t> row(size_t{width} * channels);
  for (uint32_t y = 0; y < height; ++y) {
    if (TIFFReadScanline(tiff, row.data(), y, 0) != 1) return 1;
    std::fwrite(row.data(), 1, row.size(), stdout);
  }
  TIFFClose(tiff);
  return 0;
}

int DecodeJpeg(const char* path) {
  std::FILE* file = std::fopen(path, "rb");
  if (file == nullptr) return 1;
  jpeg_decompress_struct codec{};
  jpeg_error_mgr errors{};
  codec.err = jpeg_std_error(&errors);  // ends the program on an error
  jpeg_create_decompress(&codec);
  jpeg_stdio_src(&codec, file);
  jpeg_read_header(&codec, TRUE);
  jpeg_start_decompress(&codec);
  PutHeader(static_cast<uint32_t>(codec.output_components), codec.output_width, codec.output_height);
  std::vector<uint8_t> row(size_t{codec.output_width} * static_cast<size_t>(codec.output_components));
  while (codec.output_scanline < codec.output_height) {
    JSAMPROW rows[] = {row.data()};
    jpeg_read_scanlines(&codec, rows, 1);
    std::fwrite(row.data(), 1, row.size(), stdout);
  }
  jpeg_finish_decompress(&codec);
  jpeg_destroy_decompress(&codec);
  std::fclose(file);
  return 0;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) return 2;
  const std::string_view path = argv[1];
  return path.ends_with(".jpg") ? DecodeJpeg(argv[1]) : DecodeTiff(argv[1]);
}

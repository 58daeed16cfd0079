#include "JpegEncoder.h"

#include <algorithm>
#include <cstdio>  // jpeglib.h needs its types
#include <cstdlib>
#include <iterator>

#include <jpeglib.h>

namespace tavi_test {
namespace {

J_COLOR_SPACE InputOf(JpegColor color) {
  switch (color) {
    case JpegColor::kGrey:
      return JCS_GRAYSCALE;
    case JpegColor::kCmyk:
    case JpegColor::kYcck:
      return JCS_CMYK;
    case JpegColor::kUnknown:
      return JCS_UNKNOWN;
    default:
      return JCS_RGB;
  }
}

J_COLOR_SPACE CodedOf(JpegColor color) {
  switch (color) {
    case JpegColor::kYcc:
      return JCS_YCbCr;
    case JpegColor::kYcck:
      return JCS_YCCK;
    default:
      return InputOf(color);
  }
}

void Configure(jpeg_compress_struct* encoder, const Pixels& pixels, const JpegSettings& settings) {
  encoder->image_width = pixels.width;
  encoder->image_height = pixels.height;
  encoder->input_components = static_cast<int>(pixels.channels);
  encoder->in_color_space = InputOf(settings.color);
  jpeg_set_defaults(encoder);
  jpeg_set_colorspace(encoder, CodedOf(settings.color));
  jpeg_set_quality(encoder, settings.tables ? settings.quality : 50, TRUE);
  if (settings.color != JpegColor::kGrey) {
    encoder->comp_info[0].h_samp_factor = settings.across;
    encoder->comp_info[0].v_samp_factor = settings.down;
  }
  if (settings.color == JpegColor::kYcck) {
    encoder->comp_info[3].h_samp_factor = settings.across;
    encoder->comp_info[3].v_samp_factor = settings.down;
  }
  encoder->arith_code = settings.arithmetic ? TRUE : FALSE;
  encoder->restart_in_rows = settings.restart_rows;
  if (settings.progressive) jpeg_simple_progression(encoder);
  if (!settings.markers) {
    encoder->write_JFIF_header = FALSE;
    encoder->write_Adobe_marker = FALSE;
  }
}

void WriteAdobe(jpeg_compress_struct* encoder, int transform) {
  const JOCTET data[12] = {'A', 'd', 'o', 'b', 'e', 0, 100, 0, 0, 0, 0, static_cast<JOCTET>(transform)};
  jpeg_write_marker(encoder, JPEG_APP0 + 14, data, sizeof data);
}

}  // namespace

Stream EncodeJpeg(const Pixels& pixels, const JpegSettings& settings) {
  jpeg_compress_struct encoder{};
  jpeg_error_mgr error{};
  encoder.err = jpeg_std_error(&error);
  jpeg_create_compress(&encoder);
  unsigned char* bytes = nullptr;
  unsigned long size = 0;
  jpeg_mem_dest(&encoder, &bytes, &size);
  Configure(&encoder, pixels, settings);
  if (!settings.tables) jpeg_suppress_tables(&encoder, TRUE);
  jpeg_start_compress(&encoder, settings.tables ? TRUE : FALSE);
  if (settings.adobe >= 0) WriteAdobe(&encoder, settings.adobe);
  std::vector<uint8_t> row(size_t{pixels.width} * pixels.channels);
  for (uint32_t y = 0; y < pixels.height; ++y) {
    const uint16_t* const from = pixels.samples.data() + size_t{y} * row.size();
    for (size_t i = 0; i < row.size(); ++i) row[i] = static_cast<uint8_t>(from[i]);
    JSAMPROW rows[1] = {row.data()};
    jpeg_write_scanlines(&encoder, rows, 1);
  }
  jpeg_finish_compress(&encoder);
  jpeg_destroy_compress(&encoder);
  Stream stream(bytes, bytes + size);
  std::free(bytes);
  return stream;
}

Pixels DecodeJpeg(const Stream& stream, bool components) {
  jpeg_decompress_struct decoder{};
  jpeg_error_mgr error{};
  decoder.err = jpeg_std_error(&error);
  jpeg_create_decompress(&decoder);
  jpeg_mem_src(&decoder, stream.data(), static_cast<unsigned long>(stream.size()));
  jpeg_read_header(&decoder, TRUE);
  if (components) decoder.jpeg_color_space = decoder.out_color_space = JCS_UNKNOWN;
  jpeg_start_decompress(&decoder);
  Pixels pixels(decoder.output_width, decoder.output_height,
                static_cast<uint32_t>(decoder.output_components));
  std::vector<uint8_t> row(size_t{pixels.width} * pixels.channels);
  for (uint32_t y = 0; y < pixels.height; ++y) {
    JSAMPROW rows[1] = {row.data()};
    jpeg_read_scanlines(&decoder, rows, 1);
    for (size_t i = 0; i < row.size(); ++i) pixels.samples[size_t{y} * row.size() + i] = row[i];
  }
  jpeg_finish_decompress(&decoder);
  jpeg_destroy_decompress(&decoder);
  return pixels;
}

Stream WithNitfHeader(const Stream& stream) {
  static constexpr uint8_t kHeader[] = {0xFF, 0xD8, 0xFF, 0xE6, 0x00, 0x19, 'N',  'I',  'T',
                                        'F',  0x00, 0x02, 0x00, 'B',  0x00, 0x02, 0x00, 0x02,
                                        0x03, 0x08, 0x00, 0x01, 0x00, 0x03, 0x08, 0x01, 0x01};
  Stream whole(sizeof kHeader + stream.size());
  std::copy(std::begin(kHeader), std::end(kHeader), whole.begin());
  std::copy(stream.begin(), stream.end(), whole.begin() + sizeof kHeader);
  return whole;
}

}  // namespace tavi_test

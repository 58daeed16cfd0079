// Streams by libjpeg-turbo, and what it decodes them to.
#ifndef TAVI_TESTS_HOST_CODECS_JPEG_ENCODER_H
#define TAVI_TESTS_HOST_CODECS_JPEG_ENCODER_H

#include "CodecTest.h"

namespace tavi_test {

enum class JpegColor { kGrey, kYcc, kRgb, kCmyk, kYcck, kUnknown };

struct JpegSettings {
  JpegColor color = JpegColor::kYcc;  // of the components; the picture is RGB, grey, CMYK or anything
  int quality = 90;
  int across = 1;  // subsampling of the second and third component
  int down = 1;
  bool progressive = false;
  bool arithmetic = false;
  int restart_rows = 0;
  bool markers = true;  // JFIF or Adobe
  bool tables = true;   // false: an abbreviated stream that relies on the default tables, of quality 50
  int adobe = -1;       // transform of an Adobe marker of its own
};

Stream EncodeJpeg(const Pixels& pixels, const JpegSettings& settings);

// Decoded by the library itself: `components` true leaves them as they are coded.
Pixels DecodeJpeg(const Stream& stream, bool components = false);

// Puts SOI and an APP6 segment "NITF" in front of a stream.
Stream WithNitfHeader(const Stream& stream);

}  // namespace tavi_test

#endif  // TAVI_TESTS_HOST_CODECS_JPEG_ENCODER_H

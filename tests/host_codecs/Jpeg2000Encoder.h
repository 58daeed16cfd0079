// Streams by OpenJPEG, and what it decodes them to.
#ifndef TAVI_TESTS_HOST_CODECS_JPEG2000_ENCODER_H
#define TAVI_TESTS_HOST_CODECS_JPEG2000_ENCODER_H

#include "CodecTest.h"

namespace tavi_test {

enum class J2kColor { kUnspecified, kRgb, kGrey, kYcc };

struct J2kSettings {
  uint32_t bits = 8;
  bool is_signed = false;
  bool jp2 = false;
  J2kColor color = J2kColor::kUnspecified;
  bool mix = false;          // the codestream's own transform of three components
  double ratio = 0;          // 0: lossless
  uint32_t tile = 0;         // side of the tiles, 0: one tile
  uint32_t step = 1;         // subsampling of the second and third component, in both directions
  uint32_t step_of_all = 1;  // subsampling of every component
  uint32_t left = 0;         // offset of the picture on the reference grid
  uint32_t top = 0;
  int levels = 5;
  int layers = 1;
};

// Samples as unsigned; signed streams code them moved down by half their range. Subsampled components take
// the sample at the upper left.
Stream EncodeJpeg2000(const Pixels& pixels, const J2kSettings& settings);

// A JP2 with one component of indices and a palette of three 8-bit columns.
Stream EncodePaletteJp2(const Pixels& indices, const std::vector<std::vector<uint8_t>>& palette);

// Components as the library decodes them, moved up when signed. All of one size.
Pixels DecodeJpeg2000(const Stream& stream);

}  // namespace tavi_test

#endif  // TAVI_TESTS_HOST_CODECS_JPEG2000_ENCODER_H

// 12-bit streams by DCMTK's encoder; lossless ones of every depth by a small encoder of the tests' own, since
// DCMTK's writes three depths only.
#ifndef TAVI_TESTS_HOST_CODECS_DEEP_JPEG_ENCODER_H
#define TAVI_TESTS_HOST_CODECS_DEEP_JPEG_ENCODER_H

#include "CodecTest.h"

namespace tavi_test {

enum class DeepProcess { kSequential, kSpectralSelection, kProgressive };

// Grey or RGB of 12 bits; colours are coded as YCbCr or, with `ycc` false, as RGB.
Stream EncodeJpeg12(const Pixels& pixels, DeepProcess process, bool ycc = true);
// 8, 12 or 16 bits.
Stream EncodeLosslessByDcmtk(const Pixels& pixels, uint32_t bits, int predictor);

struct LosslessSettings {
  uint32_t bits = 16;
  int predictor = 1;  // 1 to 7
  int shift = 0;      // the point transform: low bits that are left out
  uint32_t restart_rows = 0;
  int adobe = -1;  // transform of an Adobe marker
};
Stream EncodeLossless(const Pixels& pixels, const LosslessSettings& settings);

}  // namespace tavi_test

#endif  // TAVI_TESTS_HOST_CODECS_DEEP_JPEG_ENCODER_H

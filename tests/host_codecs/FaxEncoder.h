// Raw fax data by libtiff, and loads that a hook describes.
#ifndef TAVI_TESTS_HOST_CODECS_FAX_ENCODER_H
#define TAVI_TESTS_HOST_CODECS_FAX_ENCODER_H

#include "CodecTest.h"

namespace tavi_test {

enum class FaxKind { kG3OneD, kG3OneDNoLineEnds, kG3OneDByteAligned, kG3TwoD, kG4 };

struct FaxSettings {
  FaxKind kind = FaxKind::kG3OneD;
  bool least_bit_first = false;
  bool fill_bits = false;  // line ends end on a byte
  bool return_to_control = true;
};

// A page of one bit: 1 is white.
Pixels MakePage(uint32_t width, uint32_t height);
Stream EncodeFax(const Pixels& page, const FaxSettings& settings);

// What the hook is to answer; also counts how often it was asked.
struct FaxDescription {
  uint32_t format = 66;
  uint32_t width = 0;
  uint32_t height = 0;
  int32_t status = SUCCESS;
  int asked = 0;
  bool found_zeros = true;
};
int32_t DescribeFax(void* information, void* user);

// Loads with the hook installed for the call.
int32_t LoadFax(const Stream& data, FaxDescription* description, Bitmap* bitmap, uint32_t order = 1);

}  // namespace tavi_test

#endif  // TAVI_TESTS_HOST_CODECS_FAX_ENCODER_H

// Vector quantised data: an encoder, and a decoder that follows the format word by word.
#ifndef TAVI_TESTS_CODED_VQ_FILE_H
#define TAVI_TESTS_CODED_VQ_FILE_H

#include <optional>
#include <vector>

#include "CodedTest.h"
#include "ReferenceDecoder.h"

namespace tavi_test {

// A segment's stream. Tables of any number and codes of any values.
struct VqStream {
  uint32_t image_rows = 1;
  uint32_t codes_per_row = 1;
  uint8_t code_bits = 8;
  std::vector<Bytes> tables = {};             // of `entries` lines each
  uint32_t entries = 0;                       // of the first look-up record
  std::vector<uint32_t> codes = {};           // of all blocks in sequence
  std::optional<uint16_t> record_count = {};  // in place of the number of tables
  Bytes tail = {};                            // behind the codes

  [[nodiscard]] Bytes Head() const;   // header and look-up records
  [[nodiscard]] Bytes Build() const;  // all of it
};

// The stream that shows an 8-bit picture exactly: its kernels, each once, and their codes. Width and height
// are those of the whole grid of the image's blocks; kernels of side x side.
VqStream EncodeExactly(const ImageSpec& image, const Bytes& picture, uint32_t side);

// What the bits left over of earlier decodes are. The library keeps its own; both see the same streams.
struct VqReservoir {
  uint32_t bits = 0;
  uint32_t count = 0;
};
VqReservoir& Reservoir();

// The bitmap that the image's data decode to; the bits left over go to the reservoir.
SegmentBitmap DecodeVq(const ImageSpec& image, const BuiltFile& built);

}  // namespace tavi_test

#endif  // TAVI_TESTS_CODED_VQ_FILE_H

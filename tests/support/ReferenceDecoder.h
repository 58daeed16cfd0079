// An independent decoder of uncompressed image segments: slow, literal, one sample at a time, written from
// the rules of the format and of this system and not from the library's code. Its oddities are the documented
// ones.
#ifndef TAVI_TESTS_SUPPORT_REFERENCE_DECODER_H
#define TAVI_TESTS_SUPPORT_REFERENCE_DECODER_H

#include <array>
#include <cstdint>
#include <optional>
#include <vector>

#include "LoadPicture.h"
#include "NtfBuilder.h"

namespace tavi_test {

// Rows of packed pixels, as the host's bitmap records hold them: rows of whole 32-bit words, the most
// significant bit first below 8 bits, 12-bit pixels low nibble first.
struct PackedRows {
  uint32_t width = 0;
  uint32_t height = 0;
  uint32_t bits = 0;
  size_t bytes_per_line = 0;
  Bytes bytes;

  PackedRows() = default;
  PackedRows(uint32_t pixel_width, uint32_t pixel_height, uint32_t pixel_bits);

  // A pixel as a number: its first byte is the lowest, except below 8 bits.
  [[nodiscard]] uint64_t Get(uint32_t x, uint32_t y) const;
  void Set(uint32_t x, uint32_t y, uint64_t value);
  // Copies as much of the row as both sides hold.
  void PutRow(uint32_t y, const Bytes& row);
};

struct SegmentBitmap {
  int32_t status = 1;
  PackedRows rows;
  bool native_words = false;  // 16-bit samples were stretched and stand in native order
  std::vector<Rgb> palette;   // 2^bits entries up to 8 bits; of a look-up table beyond

  [[nodiscard]] Rgb ColourAt(uint32_t x, uint32_t y) const;
};

// The mask table as it stands in the file, and where the pixels begin.
struct MaskTable {
  uint32_t imdatoff = 0;
  std::optional<std::vector<uint32_t>> block;
  std::optional<std::vector<uint32_t>> pad;
  Bytes pad_code;
};

// A segment's data: the file behind its first byte, and the length that the file header gives. Reads may run
// past the length as long as the file goes on.
class SegmentSource {
 public:
  SegmentSource(const Bytes& file, size_t offset, uint32_t length)
      : file_(file), offset_(offset), length_(length) {}

  [[nodiscard]] uint32_t length() const { return length_; }
  // False when the file ends first; what there was has then been stored.
  bool Read(uint64_t at, size_t count, uint8_t* out) const;

 private:
  const Bytes& file_;
  size_t offset_;
  uint32_t length_;
};

// Sample depths converted in place, as rows of one or two bands are.
void ReferenceConvert(Bytes& row, uint32_t nbpp, uint32_t abpp, size_t length, int32_t minimum,
                      int32_t maximum);

// The bands that feed red, green and blue. `start` is what the interleave order begins with.
std::array<uint32_t, 3> ReferenceBands(const std::vector<BandSpec>& bands, std::array<uint32_t, 3> start);

MaskTable ReadMaskTable(const ImageSpec& image, const SegmentSource& source);

// Decodes a segment. Throws std::logic_error for what this reference does not cover.
SegmentBitmap DecodeSegment(const ImageSpec& image, const SegmentSource& source);

}  // namespace tavi_test

#endif  // TAVI_TESTS_SUPPORT_REFERENCE_DECODER_H

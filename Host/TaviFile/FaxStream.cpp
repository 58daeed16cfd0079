#include "TaviFile/FaxStream.h"

#include <algorithm>
#include <bit>

namespace tavi::host {
namespace {

// An end of line is eleven zeros and a one, and no valid run of codes holds as many zeros.
constexpr uint32_t kLineEndZeros = 11;

uint8_t Reversed(uint8_t byte) {
  uint32_t value = byte;
  value = (value & 0xF0) >> 4 | (value & 0x0F) << 4;
  value = (value & 0xCC) >> 2 | (value & 0x33) << 2;
  value = (value & 0xAA) >> 1 | (value & 0x55) << 1;
  return static_cast<uint8_t>(value);
}

// Counts the ends of line, `most` at most.
uint64_t CountLineEnds(Bytes data, bool least_bit_first, uint64_t most) {
  uint64_t count = 0;
  uint32_t zeros = 0;
  for (const uint8_t raw : data) {
    const uint8_t byte = least_bit_first ? Reversed(raw) : raw;
    if (byte == 0) {
      zeros = std::min(zeros + 8, 64u);
      continue;
    }
    if (zeros + static_cast<uint32_t>(std::countl_zero(byte)) >= kLineEndZeros && ++count == most) break;
    zeros = static_cast<uint32_t>(std::countr_zero(byte));
  }
  return count;
}

bool BeginsWithLineEnd(Bytes data, bool least_bit_first) {
  const auto first = std::find_if(data.begin(), data.end(), [](uint8_t byte) { return byte != 0; });
  if (first == data.end() || first == data.begin()) return false;
  const uint8_t byte = least_bit_first ? Reversed(*first) : *first;
  const auto zeros = static_cast<uint64_t>(first - data.begin()) * 8;
  return zeros + static_cast<uint64_t>(std::countl_zero(byte)) >= kLineEndZeros;
}

}  // namespace

uint32_t FindFaxVariants(Bytes data, const FaxLayout& layout, FaxVariant* variants) noexcept {
  FaxVariant variant;
  if (layout.format == kFormatFaxG4) {
    variant.coding = FaxCoding::kGroup4;
    variants[0] = variant;
    variant.least_bit_first = true;
    variants[1] = variant;
    return 2;
  }
  variant.coding = layout.format == kFormatFaxG3TwoD ? FaxCoding::kTwoDimensions : FaxCoding::kOneDimension;
  for (const bool least_bit_first : {false, true}) {
    variant.least_bit_first = least_bit_first;
    variant.has_line_ends = variant.begins_with_line_end = BeginsWithLineEnd(data, least_bit_first);
    if (!variant.has_line_ends) continue;
    variants[0] = variant;
    return 1;
  }
  // The first line may do without. In the wrong bit order, and at the padding of aligned lines, chance hits
  // occur, so that the other ways are tried as well.
  const uint64_t enough = std::max<uint64_t>(layout.height / 2, 7);
  uint32_t count = 0;
  variant.has_line_ends = true;
  for (const bool least_bit_first : {false, true}) {
    variant.least_bit_first = least_bit_first;
    if (CountLineEnds(data, least_bit_first, enough) == enough) variants[count++] = variant;
  }
  variant.has_line_ends = false;
  // Two-dimensional lines need their ends, which say how the next one is coded. Without them all are coded as
  // in group 4.
  if (variant.coding == FaxCoding::kTwoDimensions) variant.coding = FaxCoding::kGroup4;
  for (const bool least_bit_first : {false, true}) {
    variant.least_bit_first = least_bit_first;
    variant.byte_aligned = false;
    variants[count++] = variant;
    if (variant.coding == FaxCoding::kGroup4) continue;
    variant.byte_aligned = true;
    variants[count++] = variant;
  }
  return count;
}

}  // namespace tavi::host

// What raw fax data are like, found out from the end-of-line codes in them.
#pragma once

#include "TaviFile/Codec.h"

namespace tavi::host {

enum class FaxCoding : uint8_t { kOneDimension, kTwoDimensions, kGroup4 };

struct FaxVariant {
  FaxCoding coding = FaxCoding::kOneDimension;
  bool least_bit_first = false;
  bool has_line_ends = false;  // EOL codes stand between the lines
  bool begins_with_line_end = false;
  bool byte_aligned = false;  // without EOL codes: lines begin on a byte
};

// The ways to read the data, the most likely first. Returns how many there are, at most six.
inline constexpr uint32_t kMostFaxVariants = 6;
uint32_t FindFaxVariants(Bytes data, const FaxLayout& layout, FaxVariant* variants) noexcept;

}  // namespace tavi::host

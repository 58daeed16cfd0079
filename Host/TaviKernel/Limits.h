// What files may ask for beyond what their bytes justify: the limits of TaviHost.h, under the host's own names.
#pragma once

#include <cstdint>
#include <limits>

#include "TaviHost.h"

namespace tavi::host {

// Whether `asked` is within the limit and what the data earn beside it. When not, the limit is noted as the thread's
// last refusal.
inline bool IsWithin(HostLimit limit, uint64_t asked, uint64_t earned = 0) noexcept {
  return HostWithinLimit(limit, asked, earned) != 0;
}

// Neither a sum nor a product wraps around: what is too large for a number is the largest.
inline constexpr uint64_t kBeyondNumbers = std::numeric_limits<uint64_t>::max();
constexpr uint64_t Plus(uint64_t a, uint64_t b) {
  return a > kBeyondNumbers - b ? kBeyondNumbers : a + b;
}
constexpr uint64_t Times(uint64_t a, uint64_t b) {
  return b != 0 && a > kBeyondNumbers / b ? kBeyondNumbers : a * b;
}

}  // namespace tavi::host

// What the data of a file earn beside the host's limits (HOST_LIMIT_STREAMS, HOST_LIMIT_IMAGES): none of these is reached
// by a file that somebody made to be looked at.
#pragma once

#include <cstdint>

#include "TaviHost.h"

namespace tavi {

// Pixels that the streams of a segment may claim for each of its own: room for tiles at the edge and streams of little
// compression.
inline constexpr uint64_t kStreamClaimOfPixel = 8;

// Pixels that the images of a file may cover for each of its bytes, eight times what one bit a pixel needs.
inline constexpr uint64_t kDrawnPixelsOfByte = 64;

// What the images of a drawing have covered of that.
class DrawBudget {
 public:
  explicit DrawBudget(uint64_t file_bytes) : earned_(file_bytes * kDrawnPixelsOfByte) {}
  // False when the image asks for more than is left.
  bool Take(uint64_t pixels) {
    const uint64_t total = pixels > UINT64_MAX - taken_ ? UINT64_MAX : taken_ + pixels;
    if (HostWithinLimit(HOST_LIMIT_IMAGES, total, earned_) == 0) return false;
    taken_ = total;
    return true;
  }

 private:
  uint64_t earned_;
  uint64_t taken_ = 0;
};

}  // namespace tavi

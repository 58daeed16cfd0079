// What a file may ask for beyond what its bytes hold. Each of these keeps a small file from costing minutes; none is
// reached by a file that somebody made to be looked at. The host has limits of its own (HostSetBitmapLimit).
#pragma once

#include <cstdint>

namespace tavi {

// The streams of one segment may claim this many pixels and bytes for nothing: one large picture more than the
// segment needs.
inline constexpr uint64_t kFreeStreamClaim = uint64_t{1} << 26;
// And for each pixel of the segment this many: room for tiles at the edge and streams of little compression.
inline constexpr uint64_t kStreamClaimOfPixel = 8;

// The images of one file may cover this many pixels for nothing, a canvas of 32,768 x 32,768: blocks that a mask leaves
// out, flat pictures.
inline constexpr uint64_t kFreeDrawnPixels = uint64_t{1} << 30;
// And this many for each byte of the file, eight times what one bit a pixel needs.
inline constexpr uint64_t kDrawnPixelsOfByte = 64;

// How much of that a drawing has left.
class DrawBudget {
 public:
  explicit DrawBudget(uint64_t file_bytes) : left_(kFreeDrawnPixels + file_bytes * kDrawnPixelsOfByte) {}
  // False when the image asks for more than is left.
  bool Take(uint64_t pixels) {
    if (pixels > left_) return false;
    left_ -= pixels;
    return true;
  }

 private:
  uint64_t left_;
};

}  // namespace tavi

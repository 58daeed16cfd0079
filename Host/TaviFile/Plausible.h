// What a stream may claim before anything is allocated for it.
#pragma once

#include <cstdint>

#include "TaviHost.h"

namespace tavi::host {

// How many samples a stream may claim: some at any rate, and more for each of its bytes. Without the bound a few
// bytes could keep a decoder busy for minutes.
struct Credit {
  uint64_t samples = 0;
  uint64_t per_byte = 0;

  bool Covers(uint64_t claimed, uint64_t bytes) const {
    return claimed <= samples || (claimed - samples) / per_byte <= bytes;
  }
};
// Each block of 64 samples takes a bit at least.
inline constexpr Credit kJpegCredit{uint64_t{1} << 25, 1024};
// Flat tiles take next to nothing.
inline constexpr Credit kJpeg2000Credit{uint64_t{1} << 26, 8192};

// SUCCESS, or why a picture of that size is refused. `sample_bytes` is what the bitmap holds for each sample.
inline int32_t CheckClaim(uint64_t width, uint64_t height, uint64_t components, uint64_t sample_bytes) {
  if (width == 0 || height == 0 || components == 0) return ERR_FILE_FORMAT;
  if (width > UINT32_MAX || height > UINT32_MAX || components > UINT16_MAX) return ERR_FILE_FORMAT;
  return width * height > HostGetBitmapLimit() / (components * sample_bytes) ? ERR_NO_MEMORY : SUCCESS;
}

}  // namespace tavi::host

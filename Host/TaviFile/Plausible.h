// What a stream may claim before anything is allocated for it.
#pragma once

#include <algorithm>
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

// How much memory a decoder may take for a stream: some at any rate, and more for each of its bytes. Of a long
// stream each byte counts for more, since strongly compressed pictures are large and small bombs are small.
struct MemoryCredit {
  uint64_t at_any_rate = 0;
  uint64_t short_stream = 0;  // bytes
  uint64_t per_byte = 0;
  uint64_t per_further_byte = 0;

  bool Covers(uint64_t claimed, uint64_t bytes) const {
    const uint64_t early = std::min(bytes, short_stream);
    const uint64_t base = at_any_rate + early * per_byte;
    return claimed <= base || (claimed - base) / per_further_byte <= bytes - early;
  }
};
// 512 MiB for a stream of a MiB.
inline constexpr MemoryCredit kJpeg2000Credit{uint64_t{224} << 20, uint64_t{1} << 20, 288, 2560};

// SUCCESS, or why a picture of that size is refused. `sample_bytes` is what the bitmap holds for each sample.
inline int32_t CheckClaim(uint64_t width, uint64_t height, uint64_t components, uint64_t sample_bytes) {
  if (width == 0 || height == 0 || components == 0) return ERR_FILE_FORMAT;
  if (width > UINT32_MAX || height > UINT32_MAX || components > UINT16_MAX) return ERR_FILE_FORMAT;
  return width * height > HostGetBitmapLimit() / (components * sample_bytes) ? ERR_NO_MEMORY : SUCCESS;
}

}  // namespace tavi::host

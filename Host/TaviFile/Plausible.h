// What a stream may claim before anything is allocated for it.
#pragma once

#include <algorithm>
#include <cstdint>

#include "TaviKernel/Limits.h"

namespace tavi::host {

// Samples of a JPEG stream for each of its bytes: each block of 64 samples takes a bit at least.
inline constexpr uint64_t kJpegSamplesPerByte = 1024;

// What the bytes of a JPEG 2000 stream earn of memory. Of a long stream each byte counts for more, since strongly
// compressed pictures are large and small bombs are small: 512 MiB in all for a stream of a MiB.
constexpr uint64_t Jpeg2000Earned(uint64_t bytes) {
  constexpr uint64_t kShortStream = uint64_t{1} << 20;
  constexpr uint64_t kPerByte = 288;
  constexpr uint64_t kPerFurtherByte = 2560;
  const uint64_t early = std::min(bytes, kShortStream);
  return early * kPerByte + (bytes - early) * kPerFurtherByte;
}

// SUCCESS, or why a picture of that size is refused. `sample_bytes` is what the bitmap holds for each sample.
inline int32_t CheckClaim(uint64_t width, uint64_t height, uint64_t components, uint64_t sample_bytes) {
  if (width == 0 || height == 0 || components == 0) return ERR_FILE_FORMAT;
  if (width > UINT32_MAX || height > UINT32_MAX || components > UINT16_MAX) return ERR_FILE_FORMAT;
  const uint64_t bytes = Times(width * height, components * sample_bytes);
  return IsWithin(HOST_LIMIT_PICTURE, bytes) ? SUCCESS : ERR_NO_MEMORY;
}

}  // namespace tavi::host

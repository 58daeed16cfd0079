// What a stream may claim before anything is allocated for it.
#pragma once

#include <algorithm>
#include <cstdint>

#include "TaviHost.h"

namespace tavi::host {

// Flat pictures compress a thousandfold; a stream of a few hundred bytes that claims more than this many
// samples is not one. Without the bound a few bytes could keep a decoder busy for minutes.
inline constexpr uint64_t kSamplesForNothing = uint64_t{1} << 25;
inline constexpr uint64_t kSamplesPerByte = 1024;

inline bool IsPlausible(uint64_t samples, uint64_t bytes) {
  return samples <= kSamplesForNothing || (samples - kSamplesForNothing) / kSamplesPerByte <= bytes;
}

// SUCCESS, or why a picture of that many samples is refused. `sample_bytes` is what the decoder holds for
// each of them at once.
inline int32_t CheckClaim(uint64_t width, uint64_t height, uint64_t components, uint64_t sample_bytes,
                          uint64_t bytes) {
  if (width == 0 || height == 0 || components == 0) return ERR_FILE_FORMAT;
  if (width > UINT32_MAX || height > UINT32_MAX || components > UINT16_MAX) return ERR_FILE_FORMAT;
  const uint64_t pixels = width * height;
  if (pixels > HostGetBitmapLimit() / (components * sample_bytes)) return ERR_NO_MEMORY;
  return IsPlausible(pixels * components, bytes) ? SUCCESS : ERR_FILE_FORMAT;
}

}  // namespace tavi::host

// What the marker segments of a JPEG stream say, read without a decoder.
#pragma once

#include "TaviFile/Codec.h"

namespace tavi::host {

enum class JpegProcess : uint8_t { kSequential, kProgressive, kLossless, kOther };

struct JpegStream {
  Bytes bytes;  // from the start marker that the decoder is to begin at
  JpegProcess process = JpegProcess::kOther;
  bool arithmetic = false;
  uint32_t precision = 0;
  uint32_t width = 0;
  uint32_t height = 0;
  uint32_t components = 0;
  uint64_t coded_samples = 0;  // of all components, whole blocks, subsampling counted
  bool has_jfif = false;
  bool has_adobe = false;
  uint8_t adobe_transform = 0;
  bool has_rgb_ids = false;  // the components are called R, G and B
};

// SUCCESS once the frame header is read; ERR_NOT_SUPPORTED when the bytes begin with no start marker,
// ERR_FILE_READ when they end before the frame header does, ERR_FILE_FORMAT when it makes no sense.
int32_t ReadJpegHeader(Bytes stream, JpegStream* jpeg) noexcept;

// The number of scans up to the end marker behind them.
uint64_t CountJpegScans(Bytes stream) noexcept;

// SUCCESS, or why a picture of such a claim is not decoded: see Plausible.h. Also counts the scans of a
// progressive picture, each of which goes over all of it.
int32_t CheckJpegClaim(const JpegStream& jpeg) noexcept;

}  // namespace tavi::host

// 8-bit JPEG out, by libjpeg-turbo.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>

#include "TaviKernel/PixelView.h"

namespace tavi::host {

// The largest side of a picture that libjpeg-turbo writes.
inline constexpr uint32_t kJpegSide = 65500;
inline constexpr int32_t kBestQuality = 2;
inline constexpr int32_t kCoarsestQuality = 255;

enum class JpegColors : uint8_t {
  kGrey,
  kYcc,  // chroma subsampled, JFIF
  kRgb   // as it is, Adobe marker
};

// The library takes and gives up its memory as C does.
struct FreeCodedBytes {
  void operator()(uint8_t* bytes) const noexcept;
};

struct CodedBytes {
  std::unique_ptr<uint8_t[], FreeCodedBytes> bytes;
  uint64_t size = 0;
  std::span<const uint8_t> View() const { return {bytes.get(), static_cast<size_t>(size)}; }
};

// `quality` from kBestQuality to kCoarsestQuality. The stream begins with the top row of the picture. Status: SUCCESS
// or ERR_NO_MEMORY.
int32_t EncodeJpeg(const PixelView& view, JpegColors colors, int32_t quality, CodedBytes* coded) noexcept;

}  // namespace tavi::host

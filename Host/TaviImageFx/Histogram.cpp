#include <algorithm>
#include <array>

#include "TaviHost.h"
#include "TaviKernel/ColorRows.h"
#include "TaviKernel/PixelView.h"

namespace tavi::host {
namespace {

constexpr uint32_t kLevels = 256;
constexpr uint32_t kChunk = 1024;

void CountIndices(const PixelView& view, uint32_t* counters) {
  std::array<uint32_t, kLevels> indices{};
  uint8_t unpacked[kChunk];
  for (uint32_t row = 0; row < view.height; ++row) {
    const uint8_t* const pixels = view.ReadRow(row);
    for (uint32_t x = 0; x < view.width; x += kChunk) {
      const uint32_t step = std::min(kChunk, view.width - x);
      UnpackIndices(pixels, view.bits, x, step, unpacked);
      for (uint32_t i = 0; i < step; ++i) ++indices[unpacked[i]];
    }
  }
  for (uint32_t i = 0; i < view.palette_count; ++i)
    counters[Luminance8(FromEntry(view.palette[i]))] += indices[i];
}

void CountColors(const PixelView& view, uint32_t* counters) {
  const RowReader reader(view);
  Color8 colors[kChunk];
  for (uint32_t row = 0; row < view.height; ++row) {
    const uint8_t* const pixels = view.ReadRow(row);
    for (uint32_t x = 0; x < view.width; x += kChunk) {
      const uint32_t step = std::min(kChunk, view.width - x);
      reader.Read8(pixels, x, step, colors);
      for (uint32_t i = 0; i < step; ++i) ++counters[Luminance8(colors[i])];
    }
  }
}

}  // namespace
}  // namespace tavi::host

using namespace tavi::host;

int32_t HostHistogram(const HostBitmap* bitmap, uint32_t* counters, uint32_t count, uint32_t flags) {
  PixelView view;
  if (!ViewOf(bitmap, &view)) return ERR_NO_BITMAP;
  if (counters == nullptr || count != kLevels || flags != 0) return ERR_INVALID_PARAMETER;
  if (view.layout == Layout::kIndexed) {
    CountIndices(view, counters);
  } else {
    CountColors(view, counters);
  }
  return SUCCESS;
}

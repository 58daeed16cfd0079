#include <algorithm>
#include <array>
#include <cstring>

#include "TaviHost.h"
#include "TaviKernel/ColorRows.h"
#include "TaviKernel/PixelView.h"

/*
 * Brightening raises the brightest level of the picture by the amount, and every other level in proportion:
 * black stays black, hues stay, and the steps between levels grow with the levels. A picture of levels 0 to
 * 19 of 255 is black to the eye; brightened by 350 thousandths it covers 0 to 108. Raising all levels alike
 * would only turn it into an even grey.
 *
 * Pictures of up to 8 bits are brightened in their palette, deeper ones in their pixels.
 */
namespace tavi::host {
namespace {

constexpr int32_t kThousandths = 1000;
constexpr uint32_t kChunk = 512;

// Levels of 16 bits a channel times `numerator` over `denominator`.
struct Gain {
  uint64_t numerator;
  uint64_t denominator;

  uint64_t Apply(uint64_t level) const {
    return std::min<uint64_t>((level * numerator + denominator / 2) / denominator, 0xFFFF);
  }
  Color16 Apply(Color16 color, int) const {
    return MakeColor16(Apply(color & 0xFFFF), Apply(color >> 16 & 0xFFFF), Apply(color >> 32 & 0xFFFF));
  }
  uint8_t Apply8(uint8_t level) const { return static_cast<uint8_t>(Apply(level * uint64_t{257}) >> 8); }
};

uint64_t Brightest(Color16 color) {
  return std::max({color & 0xFFFF, color >> 16 & 0xFFFF, color >> 32 & 0xFFFF});
}

// The gain that raises `brightest` by the amount; a black picture has nothing to be raised.
Gain MakeGain(uint64_t brightest, int32_t amount) {
  if (brightest == 0) return {1, 1};
  const int64_t raised = static_cast<int64_t>(brightest) + int64_t{amount} * 0xFFFF / kThousandths;
  return {static_cast<uint64_t>(std::max<int64_t>(raised, 0)), brightest};
}

template <typename Visit>
void ForEachChunk(const PixelView& view, Visit&& visit) {
  for (uint32_t row = 0; row < view.height; ++row) {
    for (uint32_t x = 0; x < view.width; x += kChunk) visit(row, x, std::min(kChunk, view.width - x));
  }
}

uint64_t BrightestPixel(const PixelView& view, const RowReader& reader) {
  uint64_t brightest = 0;
  Color16 colors[kChunk];
  ForEachChunk(view, [&](uint32_t row, uint32_t x, uint32_t count) {
    reader.Read16(view.ReadRow(row), x, count, colors);
    for (uint32_t i = 0; i < count; ++i) brightest = std::max(brightest, Brightest(colors[i]));
  });
  return brightest;
}

void AdjustPalette(HostBitmap* bitmap, const PixelView& view, const Gain& gain) {
  std::array<HostPaletteEntry, kPaletteEntries> entries{};
  std::copy_n(view.palette, view.palette_count, entries.begin());
  for (HostPaletteEntry& entry : entries) {
    entry.blue = gain.Apply8(entry.blue);
    entry.green = gain.Apply8(entry.green);
    entry.red = gain.Apply8(entry.red);
  }
  HostPutBitmapColors(bitmap, 0, view.palette_count, entries.data());
}

void AdjustPixels(HostBitmap* bitmap, PixelView view, const RowReader& reader, const Gain& gain) {
  view.sample_order = SampleOrder::kNative;
  view.significant_bits = 16;
  RowWriter writer(view);
  Color16 colors[kChunk];
  ForEachChunk(view, [&](uint32_t row, uint32_t x, uint32_t count) {
    uint8_t* const pixels = view.ChangeRow(row);
    reader.Read16(pixels, x, count, colors);
    for (uint32_t i = 0; i < count; ++i) colors[i] = gain.Apply(colors[i], 0);
    writer.Write16(pixels, x, count, colors, nullptr);
  });
  SetFullScale(bitmap, SampleOrder::kNative);
}

}  // namespace
}  // namespace tavi::host

using namespace tavi::host;

int32_t HostAdjustBitmap(HostBitmap* bitmap, int32_t amount) {
  PixelView view;
  if (!ViewOf(bitmap, &view)) return ERR_NO_BITMAP;
  if (amount < -kThousandths || amount > kThousandths) return ERR_INVALID_PARAMETER;
  const RowReader reader(view);
  const Gain gain = MakeGain(BrightestPixel(view, reader), amount);
  if (view.layout == Layout::kIndexed) {
    AdjustPalette(bitmap, view, gain);
  } else {
    AdjustPixels(bitmap, view, reader, gain);
  }
  return SUCCESS;
}

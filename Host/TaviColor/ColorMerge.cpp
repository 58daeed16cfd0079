#include <algorithm>
#include <memory>
#include <new>

#include "TaviFile/Picture.h"
#include "TaviHost.h"
#include "TaviKernel/ColorRows.h"
#include "TaviKernel/PixelView.h"

namespace tavi::host {
namespace {

constexpr uint32_t kChannels = 3;

struct Bands {
  PixelView views[kChannels];
  uint32_t count = 0;
  uint32_t width = UINT32_MAX;
  uint32_t height = UINT32_MAX;
  bool deep = false;         // one of them has more than 8 bits
  bool same_samples = true;  // all have samples that can be taken as they stand
  uint32_t significant_bits = 0;
};

// Bytes that stand for their own grey.
bool IsPlainByte(const PixelView& view) {
  if (view.layout != Layout::kIndexed || view.bits != 8) return false;
  for (uint32_t i = 0; i < view.palette_count; ++i) {
    const HostPaletteEntry& entry = view.palette[i];
    if (entry.blue != i || entry.green != i || entry.red != i) return false;
  }
  return true;
}

bool IsPlainWord(const PixelView& view) {
  return view.layout == Layout::kGrey16 && view.palette_count == 0 &&
         view.sample_order == SampleOrder::kNative;
}

int32_t FindBands(HostBitmap* const* array, Bands* bands) {
  for (; bands->count < kChannels && array[bands->count] != nullptr; ++bands->count) {
    const HostBitmap& bitmap = *array[bands->count];
    PixelView& view = bands->views[bands->count];
    if (!ViewOf(&bitmap, &view)) return ERR_NO_BITMAP;
    bands->width = std::min(bands->width, view.width);
    bands->height = std::min(bands->height, view.height);
    bands->deep = bands->deep || IsDeep(view.layout);
    const uint32_t significant = IsPlainWord(view) ? SignificantBits(bitmap) : 0;
    if (bands->count == 0) bands->significant_bits = significant;
    if (bands->significant_bits != significant) bands->same_samples = false;
  }
  for (uint32_t i = 0; i < bands->count; ++i) {
    const bool plain = bands->deep ? IsPlainWord(bands->views[i]) : IsPlainByte(bands->views[i]);
    bands->same_samples = bands->same_samples && plain;
  }
  return bands->count != 0 ? SUCCESS : ERR_NULL_ARGUMENT;
}

template <typename Move>
void ForRows(const PixelView& band, const PixelView& merged, Move&& move) {
  for (uint32_t y = 0; y < merged.height; ++y) move(band.ReadRow(band.StorageRow(y)), merged.ChangeRow(y));
}

template <typename Sample>
void CopyChannel(const PixelView& band, const PixelView& merged, uint32_t channel) {
  ForRows(band, merged, [&](const uint8_t* in, uint8_t* out) {
    const auto* const from = reinterpret_cast<const Sample*>(in);
    auto* const to = reinterpret_cast<Sample*>(out) + channel;
    for (uint64_t x = 0; x < merged.width; ++x) to[kChannels * x] = from[x];
  });
}

int32_t WriteLevels8(const PixelView& band, const PixelView& merged, uint32_t channel) {
  const std::unique_ptr<Color8[]> colors(new (std::nothrow) Color8[merged.width]);
  if (colors == nullptr) return ERR_NO_MEMORY;
  const RowReader reader(band);
  ForRows(band, merged, [&](const uint8_t* in, uint8_t* out) {
    reader.Read8(in, 0, merged.width, colors.get());
    for (uint64_t x = 0; x < merged.width; ++x) {
      out[kChannels * x + channel] = static_cast<uint8_t>(Luminance8(colors[x]));
    }
  });
  return SUCCESS;
}

int32_t WriteLevels16(const PixelView& band, const PixelView& merged, uint32_t channel) {
  const std::unique_ptr<Color16[]> colors(new (std::nothrow) Color16[merged.width]);
  if (colors == nullptr) return ERR_NO_MEMORY;
  const RowReader reader(band);
  ForRows(band, merged, [&](const uint8_t* in, uint8_t* out) {
    reader.Read16(in, 0, merged.width, colors.get());
    auto* const to = reinterpret_cast<uint16_t*>(out) + channel;
    for (uint64_t x = 0; x < merged.width; ++x) {
      to[kChannels * x] = static_cast<uint16_t>(Luminance16(colors[x]));
    }
  });
  return SUCCESS;
}

int32_t WriteChannel(const Bands& bands, const PixelView& merged, uint32_t channel) {
  const PixelView& band = bands.views[channel];
  if (!bands.same_samples) {
    return bands.deep ? WriteLevels16(band, merged, channel) : WriteLevels8(band, merged, channel);
  }
  if (bands.deep) {
    CopyChannel<uint16_t>(band, merged, channel);
  } else {
    CopyChannel<uint8_t>(band, merged, channel);
  }
  return SUCCESS;
}

int32_t Merge(const Bands& bands, HostBitmap* merged) {
  const uint32_t bits = kChannels * (bands.deep ? 16 : 8);
  int32_t status =
      HostCreateBitmap(merged, sizeof *merged, 1, bands.width, bands.height, bits, 1, nullptr, 1, nullptr, 0);
  if (status != SUCCESS) return status;
  PixelView view;
  status = ViewOf(merged, &view) ? SUCCESS : ERR_NO_BITMAP;
  for (uint32_t i = 0; i < bands.count && status == SUCCESS; ++i) status = WriteChannel(bands, view, i);
  if (status != SUCCESS) {
    HostFreeBitmap(merged);
  } else if (bands.deep) {
    SetSampleOrder(merged, SampleOrder::kNative);
    if (bands.same_samples) SetSignificantBits(merged, bands.significant_bits);
  }
  return status;
}

}  // namespace
}  // namespace tavi::host

using namespace tavi::host;

int32_t HostColorMerge(HostBitmap* destination, HostBitmap* const* bands, uint64_t record_size,
                       uint32_t flags) {
  HostForgetLimitHit();
  if (destination == nullptr || bands == nullptr) return ERR_NULL_ARGUMENT;
  if (record_size != sizeof *destination) return ERR_INVALID_PARAMETER;
  if (flags != 0) return ERR_NOT_SUPPORTED;
  // First of all, so that a band that is the destination itself is seen to hold nothing.
  HostFreeBitmap(destination);
  HostInitBitmap(destination, sizeof *destination, 0, 0, 0);
  Bands found;
  int32_t status = FindBands(bands, &found);
  if (status == SUCCESS) status = Merge(found, destination);
  return status;
}

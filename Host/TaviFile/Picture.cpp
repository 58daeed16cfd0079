#include "TaviFile/Picture.h"

#include <algorithm>

#include "TaviKernel/Palette.h"

namespace tavi::host {
namespace {

uint32_t OrderOf(uint32_t requested, uint32_t channels) {
  if (requested != 4) return requested;
  return channels == 1 ? 2 : 1;
}

}  // namespace

uint32_t SignificantBits(const HostBitmap& bitmap) noexcept {
  return bitmap.host49[0];
}

void SetSignificantBits(HostBitmap* bitmap, uint32_t bits) noexcept {
  bitmap->host49[0] = static_cast<uint8_t>(bits);
}

int32_t MakePicture(const DecodeRequest& request, const PictureShape& shape, PixelView* view) noexcept {
  const uint32_t depth = SampleBits(shape.precision);
  const bool narrow_grey = shape.channels == 1 && shape.precision < 8;
  const HostPaletteEntry* const palette = narrow_grey ? DefaultPalette(shape.precision) : nullptr;
  const int32_t status = HostCreateBitmap(request.bitmap, sizeof(HostBitmap), 1, shape.width, shape.height,
                                          depth * shape.channels, OrderOf(request.order, shape.channels),
                                          palette, 1, nullptr, 0);
  if (status != SUCCESS) return status;
  if (depth == 16) SetSampleOrder(request.bitmap, SampleOrder::kNative);
  if (shape.precision < depth && (depth == 16 || narrow_grey)) {
    SetSignificantBits(request.bitmap, shape.precision);
  }
  return ViewOf(request.bitmap, view) ? SUCCESS : ERR_NO_BITMAP;
}

std::array<uint32_t, 3> ChannelPlaces(const DecodeRequest& request) noexcept {
  return request.order == 0 ? std::array<uint32_t, 3>{0, 1, 2} : std::array<uint32_t, 3>{2, 1, 0};
}

std::array<uint32_t, 3> ChosenBands(const DecodeRequest& request, uint32_t components) noexcept {
  std::array<uint32_t, 3> bands = request.as_bands() ? request.bands : std::array<uint32_t, 3>{0, 1, 2};
  for (uint32_t& band : bands) band = std::min(band, components - 1);
  return bands;
}

}  // namespace tavi::host

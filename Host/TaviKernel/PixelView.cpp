#include "TaviKernel/PixelView.h"

namespace tavi::host {
namespace {

Layout LayoutOf(uint32_t bits) {
  switch (bits) {
    case 12:
      return Layout::kGrey12;
    case 16:
      return Layout::kGrey16;
    case 24:
      return Layout::kColor24;
    case 32:
      return Layout::kColor32;
    case 48:
      return Layout::kColor48;
    case 64:
      return Layout::kColor64;
    default:
      return Layout::kIndexed;
  }
}

// The byte of the record in which decoders leave the count of significant bits; 0 is the full depth.
uint32_t SignificantBitsOf(const HostBitmap& bitmap) {
  const uint32_t noted = bitmap.host49[0];
  return noted >= 9 && noted <= 15 ? noted : 16;
}

}  // namespace

bool ViewOf(const HostBitmap* bitmap, PixelView* view) noexcept {
  BitmapPart part;
  if (!RowsOf(bitmap, &part, view)) return false;
  view->width = part.width;
  view->bits = part.bits;
  view->layout = LayoutOf(part.bits);
  view->red_first = bitmap->order == 0;
  view->bottom_up = bitmap->view_perspective == kBottomUp;
  view->sample_order = part.sample_order;
  view->significant_bits = SignificantBitsOf(*bitmap);
  // Only decoders note significant bits, and they leave native samples.
  if (view->significant_bits != 16) view->sample_order = SampleOrder::kNative;
  view->palette = PaletteOf(part, &view->palette_count);
  return true;
}

bool IsVoid(const HostBitmap* bitmap) noexcept {
  BitmapPart part;
  return IsValid(bitmap, &part) && part.source == PixelSource::kAttached &&
         (part.width == 0 || part.height == 0);
}

void CopySampleForm(HostBitmap* destination, const HostBitmap& source,
                    const PixelView& source_view) noexcept {
  destination->host49[0] = source.host49[0];
  SetSampleOrder(destination, source_view.sample_order);
}

}  // namespace tavi::host

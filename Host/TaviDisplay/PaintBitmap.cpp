#include <cstring>

#include "TaviDisplay/Painter.h"
#include "TaviHost.h"
#include "TaviKernel/DrawingContext.h"
#include "TaviKernel/Palette.h"
#include "TaviKernel/PixelView.h"

using namespace tavi::host;

// A context of up to 8 bits is painted through its own palette; the palette that suits is the bitmap's, or
// the context's own when the bitmap is in full colour.
HostPalette HostCreatePaintPalette(HostDrawingContext context, const HostBitmap* bitmap) {
  PixelView target;
  PixelView source;
  if (!IsContext(context) || !ViewOf(context->bitmap, &target) || !ViewOf(bitmap, &source)) return nullptr;
  if (target.layout != Layout::kIndexed) return nullptr;
  const PixelView& suiting = source.layout == Layout::kIndexed ? source : target;
  return MakePalette(suiting.palette, suiting.palette_count);
}

int32_t HostPaintBitmap(HostDrawingContext context, const HostBitmap* bitmap, const HostRect* source,
                        const HostRect* source_clip, const HostRect* destination,
                        const HostRect* destination_clip, uint32_t operation) {
  if (source != nullptr || source_clip != nullptr || destination_clip != nullptr ||
      operation != kSourceCopy) {
    return ERR_NOT_SUPPORTED;
  }
  return Paint(context, bitmap, destination, nullptr);
}

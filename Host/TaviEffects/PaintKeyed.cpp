#include "TaviDisplay/Painter.h"
#include "TaviHost.h"

using namespace tavi::host;

int32_t HostPaintBitmapKeyed(HostDrawingContext context, const HostBitmap* bitmap, const HostRect* source,
                             const HostRect* source_clip, const HostRect* destination,
                             const HostRect* destination_clip, uint32_t opacity, uint32_t reserved1,
                             uint32_t reserved2, uint32_t reserved3, uint32_t reserved4, uint32_t reserved5,
                             uint32_t reserved6, uint32_t reserved7, uint32_t transparent, uint32_t reserved8,
                             uint32_t reserved9, uint32_t operation) {
  constexpr uint32_t kOpaque = 1000;
  const bool ones = reserved1 == 1 && reserved2 == 1 && reserved3 == 1 && reserved4 == 1 && reserved5 == 1 &&
                    reserved6 == 1 && reserved7 == 1;
  const bool plain = source == nullptr && source_clip == nullptr && destination_clip == nullptr;
  if (!plain || !ones || opacity != kOpaque || reserved8 != 0 || reserved9 != 0 || operation != kSourceCopy) {
    return ERR_NOT_SUPPORTED;
  }
  return Paint(context, bitmap, destination, &transparent);
}

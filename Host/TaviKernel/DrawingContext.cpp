#include "TaviKernel/DrawingContext.h"

#include <new>

#include "TaviKernel/BitmapRecord.h"
#include "TaviKernel/Tracking.h"

namespace tavi::host {
namespace {

constexpr uint64_t kContextMagic = 0x5458544356415421;

}  // namespace

bool IsContext(HostDrawingContext context) noexcept {
  return context != nullptr && context->magic == kContextMagic;
}

}  // namespace tavi::host

using namespace tavi::host;

HostDrawingContext HostCreateBitmapDC(HostBitmap* bitmap) {
  BitmapPart part;
  if (!IsValid(bitmap, &part) || part.pixels == nullptr) return nullptr;
  auto* const context = new (std::nothrow) HostDrawingContextObject;
  if (context == nullptr) return nullptr;
  context->magic = kContextMagic;
  context->bitmap = bitmap;
  NoteMade(LiveKind::kContext, context, {});
  return context;
}

void HostDeleteBitmapDC(HostDrawingContext context) {
  if (!IsContext(context)) return;
  NoteGone(LiveKind::kContext, context);
  context->magic = 0;
  delete context;
}

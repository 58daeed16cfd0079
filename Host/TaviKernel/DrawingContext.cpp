#include "TaviKernel/DrawingContext.h"

#include <mutex>
#include <new>

#include "TaviKernel/BitmapRecord.h"
#include "TaviKernel/Palette.h"
#include "TaviKernel/Tracking.h"

namespace tavi::host {
namespace {

// Callers have a few contexts at a time: a list serves.
std::mutex g_mutex;
HostDrawingContextObject* g_alive = nullptr;

// Where the list points to the context, or its end; the caller has the lock.
HostDrawingContextObject** FindAlive(HostDrawingContext context) noexcept {
  HostDrawingContextObject** link = &g_alive;
  while (*link != nullptr && *link != context) link = &(*link)->next;
  return link;
}

}  // namespace

bool IsContext(HostDrawingContext context) noexcept {
  const std::lock_guard lock(g_mutex);
  return context != nullptr && *FindAlive(context) != nullptr;
}

}  // namespace tavi::host

using namespace tavi::host;

HostDrawingContext HostCreateBitmapDC(HostBitmap* bitmap) {
  BitmapPart part;
  if (!IsValid(bitmap, &part) || part.pixels == nullptr) return nullptr;
  auto* const context = new (std::nothrow) HostDrawingContextObject;
  if (context == nullptr) return nullptr;
  context->bitmap = bitmap;
  {
    const std::lock_guard lock(g_mutex);
    context->next = g_alive;
    g_alive = context;
  }
  NoteMade(LiveKind::kContext, context, {});
  return context;
}

void HostDeleteBitmapDC(HostDrawingContext context) {
  {
    const std::lock_guard lock(g_mutex);
    HostDrawingContextObject** const link = FindAlive(context);
    if (*link == nullptr) return;
    *link = context->next;
  }
  NoteGone(LiveKind::kContext, context);
  ReleasePalette(context->selected);
  delete context;
}

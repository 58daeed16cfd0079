#include <utility>

#include "TaviHost.h"
#include "TaviKernel/DrawingContext.h"

using namespace tavi::host;

namespace {

constexpr int32_t kTransparent = 1;
constexpr int32_t kOpaque = 2;

}  // namespace

int32_t SaveDC(HostDrawingContext context) {
  if (!IsContext(context) || context->saved_count == kSavedStates) return 0;
  context->saved[context->saved_count++] = context->text;
  return static_cast<int32_t>(context->saved_count);
}

int32_t RestoreDC(HostDrawingContext context, int32_t state) {
  if (!IsContext(context) || state < 1 || static_cast<uint32_t>(state) > context->saved_count) return 0;
  context->saved_count = static_cast<uint32_t>(state) - 1;
  context->text = context->saved[context->saved_count];
  return 1;
}

uint32_t SetTextColor(HostDrawingContext context, uint32_t color) {
  if (!IsContext(context)) return UINT32_MAX;
  return std::exchange(context->text.color, color & 0x00FFFFFF);
}

uint32_t SetBkColor(HostDrawingContext context, uint32_t color) {
  if (!IsContext(context)) return UINT32_MAX;
  return std::exchange(context->text.box_color, color & 0x00FFFFFF);
}

// Another mode than the two changes nothing.
int32_t SetBkMode(HostDrawingContext context, int32_t mode) {
  if (!IsContext(context) || (mode != kTransparent && mode != kOpaque)) return 0;
  return std::exchange(context->text.opaque, mode == kOpaque) ? kOpaque : kTransparent;
}

#include <utility>

#include "TaviHost.h"
#include "TaviKernel/DrawingContext.h"
#include "TaviKernel/Palette.h"

using namespace tavi::host;

// Painting finds colours in the bitmap's own palette: what is selected is kept for the caller and changes
// nothing.
HostPalette SelectPalette(HostDrawingContext context, HostPalette palette, int32_t) {
  if (!IsContext(context)) return nullptr;
  if (CheckPalette(palette) == nullptr) palette = nullptr;
  HoldPalette(palette);
  return ReleasePalette(std::exchange(context->selected, palette));
}

uint32_t RealizePalette(HostDrawingContext context) {
  return IsContext(context) && context->selected != nullptr ? context->selected->count : 0;
}

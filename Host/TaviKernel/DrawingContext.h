// What a HostDrawingContext points to.
#pragma once

#include <cstdint>

#include "TaviHost.h"

struct HostDrawingContextObject {
  uint64_t magic;
  HostBitmap* bitmap;
  HostPalette selected;
  uint32_t selected_count;  // entries of the selected palette, which its owner may have deleted since
};

namespace tavi::host {

// False unless it is a context that is alive.
bool IsContext(HostDrawingContext context) noexcept;

}  // namespace tavi::host

// Painting, plain and with a colour left out.
#pragma once

#include <cstdint>

#include "TaviHost.h"

namespace tavi::host {

inline constexpr uint32_t kSourceCopy = 0xCC0020;

/*
 * Paints the whole bitmap into the rectangle of the context's bitmap. Left and top are inside, right and
 * bottom just outside, also when they run backwards: a rectangle from 9 to -1 covers 9 down to 0, mirrored.
 * Where the sizes differ each pixel shows the source pixel that its middle falls on. With `key`, pixels of
 * that colour are left out.
 */
int32_t Paint(HostDrawingContext context, const HostBitmap* bitmap, const HostRect* rectangle,
              const uint32_t* key) noexcept;

}  // namespace tavi::host

// Bitmap symbols: graphics whose data are raster bits.
#pragma once

#include <cstdint>

#include "GrSubHdr.h"

namespace tavi {

// Paints the symbol at its own size, leaving its background out unless its colour letter is "N". `data` is laid under
// the bitmap as it stands unless the symbol is bilevel; it must outlive nothing but the call.
int32_t DrawBitmapSymbol(GrSubHdr& graphic, HostArray<uint8_t>& data, HostDrawingContext dc,
                         int32_t row_offset, int32_t column_offset);

// Puts rows of bits that run on without padding into a bitmap of one bit, `line` bytes to a row. ERR_FILE_FORMAT when
// the data end early or a row is wider than a line; ERR_NO_MEMORY.
int32_t UnpackBilevelSymbol(const uint8_t* data, uint64_t size, HostBitmap* bitmap, uint64_t line);

}  // namespace tavi

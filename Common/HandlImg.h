// From an image segment's data to one bitmap, and from the bitmap to the composite.
#pragma once

#include <cstdint>

#include "NitfFile.h"
#include "TaviNitf.h"

namespace tavi {

// Decodes the segment and paints it at its place; the offsets are the sums of what it is attached to.
int32_t DrawImageSegment(FilterLoadContext* context, HostDrawingContext dc, NitfFile& document,
                         uint32_t index, int32_t row_offset, int32_t column_offset);

// Decodes the segment into an initialised bitmap, which the caller frees; after a failure it holds no pixels.
int32_t DecodeImageSegment(FilterLoadContext* context, NitfFile& document, uint32_t index,
                           HostBitmap* bitmap);

// Paints the segment's bitmap into its whole block grid, leaving out the pad pixel's colour when there is a
// pad code.
int32_t PaintSegmentBitmap(HostDrawingContext dc, HostBitmap* bitmap, const ImSubHdr& image,
                           int32_t row_offset, int32_t column_offset);

}  // namespace tavi

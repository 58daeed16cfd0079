// From a graphic segment's data to the composite: drawings, bitmap symbols and object symbols.
#pragma once

#include <cstdint>

#include "NitfFile.h"
#include "TaviNitf.h"

namespace tavi {

inline constexpr char kCgmDrawing = 'C';
inline constexpr char kBitmapSymbol = 'B';

// Draws the segment at its place; the offsets are the sums of what it is attached to. Without a drawing context a
// drawing is only loaded into the record's vector. A load or a build starts the vector afresh; after a failure the
// vector is empty, except that a drawing which only could not be painted stays.
int32_t DrawGraphicSegment(FilterLoadContext* context, HostDrawingContext dc, NitfFile& document,
                           uint32_t index, int32_t row_offset, int32_t column_offset);

// Paints the record's loaded drawing into the rectangle that its bounds give.
int32_t PaintCgmDrawing(const NitfFile& document, GrSubHdr& graphic, HostDrawingContext dc,
                        int32_t row_offset, int32_t column_offset);

// How far the segment reaches. Its data are read, and a drawing is loaded, to see that they can be: the extent itself
// comes from the subheader alone.
int32_t GraphicExtent(NitfFile& document, uint32_t index, int32_t row_offset, int32_t column_offset,
                      uint32_t& width, uint32_t& height);

}  // namespace tavi

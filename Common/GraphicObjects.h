// Object symbols: graphics that name a primitive by number.
#pragma once

#include <cstdint>

#include "GrSubHdr.h"

namespace tavi {

// Builds the primitive as one object of a layer of the record's vector, and paints it unless `paint` is 0. A number
// that names no primitive leaves the layer empty and succeeds.
int32_t DrawObjectSymbol(GrSubHdr& graphic, HostDrawingContext dc, int32_t row_offset, int32_t column_offset,
                         uint32_t paint);

// The builders. Each adds one object to the vector and tells the rectangle to paint it into, which is not the box of
// the shape. Places and sizes are those of the format, 32 bits wide. Lines, rectangles and parts of the triangle take
// them as unsigned when they become real numbers, so that a place before the origin comes out at nearly 2^32; the
// others take places as signed. Status: that of HostVecAddObject, or ERR_NO_MEMORY for the points of a polygon.
struct Placement {
  int32_t row;
  int32_t column;
};
struct SymbolSize {
  uint32_t width;
  uint32_t height;
};
struct SymbolPen {
  uint32_t width;
  uint32_t color;  // 0x00BBGGRR
};
int32_t AddLineObject(HostVector* vector, const SymbolPen& pen, const Placement& from, const Placement& to,
                      bool dashed, HostRect& rectangle);
int32_t AddSolidLineObject(HostVector* vector, const SymbolPen& pen, const Placement& from,
                           const Placement& to, HostRect& rectangle);
int32_t AddTriangleObject(HostVector* vector, const SymbolPen& pen, const Placement& at,
                          const SymbolSize& size, HostRect& rectangle);
int32_t AddRectangleObject(HostVector* vector, const SymbolPen& pen, const Placement& at,
                           const SymbolSize& size, HostRect& rectangle);
int32_t AddEllipseObject(HostVector* vector, const SymbolPen& pen, const Placement& at,
                         const SymbolSize& size, HostRect& rectangle);
int32_t AddQuadObject(HostVector* vector, const SymbolPen& pen, const Placement& at, const SymbolSize& size,
                      HostRect& rectangle);
int32_t AddDiamondObject(HostVector* vector, const SymbolPen& pen, const Placement& at,
                         const SymbolSize& size, HostRect& rectangle);
int32_t AddHexagonObject(HostVector* vector, const SymbolPen& pen, const Placement& at,
                         const SymbolSize& size, HostRect& rectangle);

}  // namespace tavi

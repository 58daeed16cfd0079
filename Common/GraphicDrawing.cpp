#include "GraphicDrawing.h"

#include "GraphicBitmap.h"
#include "GraphicObjects.h"

namespace tavi {

TAVI_UNIT(L"Common/GraphicDrawing")

namespace {

using Data = HostArray<uint8_t>;

char TypeOf(const GrSubHdr& graphic) {
  return graphic.Text.SFMT[0];
}

// The segment's data in the source file; nothing for a length of 0.
int32_t ReadGraphicData(NitfFile& document, uint32_t index, Data& data) {
  const uint32_t size = GraphicDataLength(document, index);
  if (size == 0) return SUCCESS;
  const int64_t start = GraphicDataPosition(document, index);
  if (size > document.SourceSize - start) return ERR_FILE_READ;
  if (!data.Allocate(size, Here())) return ERR_NO_MEMORY;
  SeekSource(document, start, kFromStart);
  return ReadSource(document, data.data(), size) == size ? SUCCESS : ERR_FILE_READ;
}

int32_t LoadCgm(OwnedVector& vector, const Data& data) {
  constexpr uint32_t kDrawingFlags = 0x80000001;
  HostLoadFlagsRecord options{};
  HostLoadOptions(&options, sizeof options);
  options.flags |= kDrawingFlags;
  return HostVecLoadMemory(data.data(), vector.get(), data.size(), &options, 0);
}

int32_t LoadDrawing(GrSubHdr& graphic, const Data& data) {
  const int32_t status = LoadCgm(graphic.Vector, data);
  // A host may measure the drawing now. What it finds has no say in where or how large the drawing is painted.
  HostRect bounds{};
  HostVecGetBounds(graphic.Vector.get(), 0, &bounds, 0);
  return status;
}

uint32_t Magnitude(int32_t value) {
  const auto bits = static_cast<uint32_t>(value);
  return value < 0 ? 0 - bits : bits;
}

}  // namespace

int32_t DrawGraphicSegment(FilterLoadContext*, HostDrawingContext dc, NitfFile& document, uint32_t index,
                           int32_t row_offset, int32_t column_offset) {
  GrSubHdr* graphic = SubheaderAt(document.Graphics, index, document.GraphicCount);
  if (graphic == nullptr) return ERR_INVALID_PARAMETER;
  graphic->Vector.Reset();
  int32_t status;
  {
    Data data;
    status = ReadGraphicData(document, index, data);
    if (status != SUCCESS) return status;
    switch (TypeOf(*graphic)) {
      case kCgmDrawing:
        status = LoadDrawing(*graphic, data);
        break;
      case kBitmapSymbol:
        status = DrawBitmapSymbol(*graphic, data, dc, row_offset, column_offset);
        break;
      default:
        status = DrawObjectSymbol(*graphic, dc, row_offset, column_offset, document.PaintEachObject);
    }
  }
  if (status != SUCCESS) {
    graphic->Vector.Free();
    return status;
  }
  if (TypeOf(*graphic) != kCgmDrawing || dc == nullptr) return status;
  return PaintCgmDrawing(document, *graphic, dc, row_offset, column_offset);
}

int32_t PaintCgmDrawing(const NitfFile& document, GrSubHdr& graphic, HostDrawingContext dc,
                        int32_t row_offset, int32_t column_offset) {
  const int32_t row = WrapAdd(row_offset, graphic.LocationRow);
  const int32_t column = WrapAdd(column_offset, graphic.LocationColumn);
  // The first half of each bound goes with the column and the second with the row, unlike those of the location.
  HostRect place;
  SetRect(&place, WrapAdd(column, graphic.Bound1First), WrapAdd(row, graphic.Bound1Second),
          WrapAdd(column, graphic.Bound2First), WrapAdd(row, graphic.Bound2Second));
  const int32_t width = WrapSubtract(place.right, place.left);
  const auto height = static_cast<int32_t>(Magnitude(WrapSubtract(place.bottom, place.top)));
  HostVecPrepare(graphic.Vector.get(), 1);
  HostVecSetBackColor(graphic.Vector.get(), document.Background);
  return HostVecPaint(dc, graphic.Vector.get(), width, height, 0, 0, &place, 0, 0);
}

int32_t GraphicExtent(NitfFile& document, uint32_t index, int32_t row_offset, int32_t column_offset,
                      uint32_t& width, uint32_t& height) {
  const GrSubHdr* graphic = SubheaderAt(document.Graphics, index, document.GraphicCount);
  if (graphic == nullptr) return ERR_INVALID_PARAMETER;
  OwnedVector vector;
  Data data;
  int32_t status = ReadGraphicData(document, index, data);
  if (status != SUCCESS) return status;
  // The two kinds take the halves of the second bound in opposite orders, and only drawings count their location.
  if (TypeOf(*graphic) != kCgmDrawing) {
    width = static_cast<uint32_t>(WrapAdd(column_offset, graphic->Bound2Second));
    height = static_cast<uint32_t>(WrapAdd(row_offset, graphic->Bound2First));
    return SUCCESS;
  }
  status = LoadCgm(vector, data);
  if (status != SUCCESS) return status;
  width = Magnitude(WrapAdd(WrapAdd(column_offset, graphic->LocationColumn), graphic->Bound2First));
  height = Magnitude(WrapAdd(WrapAdd(row_offset, graphic->LocationRow), graphic->Bound2Second));
  return SUCCESS;
}

}  // namespace tavi

#include "GraphicObjects.h"

#include <cmath>
#include <cstring>
#include <iterator>
#include <string_view>

namespace tavi {

TAVI_UNIT(L"Common/GraphicObjects")

namespace {

constexpr uint32_t kSolid = 0;
constexpr uint32_t kDashed = 1;

VectorPoint Point(double x, double y) {
  return {x, y, 0.0, 0};
}

// 32-bit sums as they turn into real numbers.
uint32_t Plus(int32_t place, uint32_t distance) {
  return static_cast<uint32_t>(place) + distance;
}
uint32_t Minus(int32_t place, uint32_t distance) {
  return static_cast<uint32_t>(place) - distance;
}
VectorPoint UnsignedPoint(const Placement& at) {
  return Point(static_cast<uint32_t>(at.column), static_cast<uint32_t>(at.row));
}
VectorPoint SignedPoint(const Placement& at) {
  return Point(at.column, at.row);
}

void SetPen(PenRecord& record, const SymbolPen& pen, uint32_t style = kSolid) {
  record.size = sizeof record;
  record.style = style;
  record.width = pen.width;
  record.word12 = 0;
  record.color = pen.color;
}

void SetBrush(BrushRecord& record) {
  record.size = sizeof record;
  std::memset(record.zero28, 0, sizeof record.zero28);
}

int32_t AddObject(HostVector* vector, VectorObjectRecord& record, VectorObjectKind kind, uint64_t size) {
  record.head.size = static_cast<uint32_t>(size);
  record.head.kind = kind;
  return HostVecAddObject(vector, 0, kind, &record, 0);
}

int32_t AddLine(HostVector* vector, const SymbolPen& pen, uint32_t style, const VectorPoint& first,
                const VectorPoint& second) {
  VectorObjectRecord record;
  HostVecInitObject(&record);
  record.line.first = first;
  record.line.second = second;
  SetPen(record.line.pen, pen, style);
  return AddObject(vector, record, VECTOR_LINE, sizeof record.line);
}

enum class Brush : uint8_t { kAsItIs, kSet };

template <uint32_t kCount>
int32_t AddPolygon(HostVector* vector, const SymbolPen& pen, Brush brush,
                   const VectorPoint (&corners)[kCount]) {
  HostArray<VectorPoint> points;
  if (!points.Allocate(kCount, Here())) return ERR_NO_MEMORY;
  HostMemCopy(points.data(), corners, sizeof corners);
  VectorObjectRecord record;
  HostVecInitObject(&record);
  record.polygon.points = points.data();
  record.polygon.count = kCount;
  SetPen(record.polygon.pen, pen);
  if (brush == Brush::kSet) SetBrush(record.polygon.brush);
  return AddObject(vector, record, VECTOR_POLYGON, sizeof record.polygon);
}

void SetRectangle(HostRect& rectangle, const Placement& from, const Placement& to) {
  SetRect(&rectangle, from.column, from.row, to.column, to.row);
}

// Also of the shapes that lie around the place, it begins there.
void SetRectangle(HostRect& rectangle, const Placement& at, const SymbolSize& size) {
  SetRect(&rectangle, at.column, at.row, static_cast<int32_t>(Plus(at.column, size.width)),
          static_cast<int32_t>(Plus(at.row, size.height)));
}

uint32_t ColourOf(char letter) {
  switch (letter) {
    case 'B':
      return 0xFF0000;
    case 'N':
    case 'W':
      return 0xFFFFFF;
    case 'O':
      return 0x0096FF;
    case 'R':
      return 0x0000FF;
    case 'Y':
      return 0x00FFFF;
    default:
      return 0;
  }
}

// What the builders are given, and the rectangle that they give back.
struct Symbol {
  HostVector* vector;
  SymbolPen pen;
  Placement at;
  Placement end;
  SymbolSize size;
  HostRect rectangle;
};

using Build = int32_t (*)(Symbol& symbol);

template <auto kBuilder>
int32_t BuildShape(Symbol& s) {
  return kBuilder(s.vector, s.pen, s.at, s.size, s.rectangle);
}
template <bool kIsDashed>
int32_t BuildLine(Symbol& s) {
  return AddLineObject(s.vector, s.pen, s.at, s.end, kIsDashed, s.rectangle);
}
int32_t BuildSolidLine(Symbol& s) {
  return AddSolidLineObject(s.vector, s.pen, s.at, s.end, s.rectangle);
}

// By SNUM, from 1. Rotation is not applied to any.
constexpr Build kBuilders[] = {
    BuildLine<false>,                // 1
    BuildLine<true>,                 // 2
    BuildLine<true>,                 // 3
    BuildLine<true>,                 // 4
    BuildLine<true>,                 // 5
    BuildLine<true>,                 // 6
    nullptr,                         // 7
    nullptr,                         // 8
    nullptr,                         // 9
    BuildShape<AddTriangleObject>,   // 10
    BuildShape<AddRectangleObject>,  // 11
    BuildShape<AddRectangleObject>,  // 12
    BuildShape<AddEllipseObject>,    // 13
    BuildShape<AddEllipseObject>,    // 14
    BuildShape<AddQuadObject>,       // 15
    BuildShape<AddDiamondObject>,    // 16
    BuildShape<AddHexagonObject>,    // 17
    BuildSolidLine,                  // 18
};

Build BuilderOf(int32_t number) {
  constexpr auto kLast = static_cast<int32_t>(std::size(kBuilders));
  return number >= 1 && number <= kLast ? kBuilders[number - 1] : nullptr;
}

int32_t AddObjectLayer(HostVector* vector) {
  constexpr std::u16string_view kName = u"Object Layer";
  constexpr uint32_t kLayerFlags = 4;
  ObjectLayerRecord record{};
  record.size = sizeof record;
  for (size_t i = 0; i < kName.size(); ++i) record.name[i] = kName[i];
  record.word132 = 1;
  HostVectorLayer layer{};
  const int32_t status = HostVecAddLayer(vector, &record, &layer, kLayerFlags);
  return status == SUCCESS ? HostVecSetActiveLayer(vector, &layer) : status;
}

}  // namespace

int32_t DrawObjectSymbol(GrSubHdr& graphic, HostDrawingContext dc, int32_t row_offset, int32_t column_offset,
                         uint32_t paint) {
  constexpr int32_t kPaintSize = 1000;
  HostVector* vector = graphic.Vector.get();
  int32_t status = AddObjectLayer(vector);
  if (status != SUCCESS) return status;
  const Build build = BuilderOf(NumberOf(graphic.Text.SNUM));
  if (build == nullptr) return SUCCESS;
  const auto& text = graphic.Text;
  Symbol symbol = {
      .vector = vector,
      .pen = {static_cast<uint32_t>(NumberOf(text.NWDTH)), ColourOf(text.SCOLOR[0])},
      .at = {WrapAdd(row_offset, graphic.LocationRow), WrapAdd(column_offset, graphic.LocationColumn)},
      .end = {WrapAdd(row_offset, graphic.Bound2First), WrapAdd(column_offset, graphic.Bound2Second)},
      .size = {static_cast<uint32_t>(NumberOf(text.NPIXPL)), static_cast<uint32_t>(NumberOf(text.NLIPS))},
      .rectangle = {},
  };
  status = build(symbol);
  if (status != SUCCESS || paint == 0) return status;
  HostVecResetView(vector);
  HostVecRefreshView(vector);
  return HostVecPaint(dc, vector, kPaintSize, kPaintSize, 0, 0, &symbol.rectangle, 0, 0);
}

int32_t AddLineObject(HostVector* vector, const SymbolPen& pen, const Placement& from, const Placement& to,
                      bool dashed, HostRect& rectangle) {
  SetRectangle(rectangle, from, to);
  return AddLine(vector, pen, dashed ? kDashed : kSolid, UnsignedPoint(from), UnsignedPoint(to));
}

int32_t AddSolidLineObject(HostVector* vector, const SymbolPen& pen, const Placement& from,
                           const Placement& to, HostRect& rectangle) {
  SetRectangle(rectangle, from, to);
  return AddLine(vector, pen, kSolid, SignedPoint(from), SignedPoint(to));
}

// The third corner lies the width below the first, and not beside it.
int32_t AddTriangleObject(HostVector* vector, const SymbolPen& pen, const Placement& at,
                          const SymbolSize& size, HostRect& rectangle) {
  SetRectangle(rectangle, at, size);
  const VectorPoint corners[] = {SignedPoint(at),
                                 Point(Plus(at.column, size.width / 2), Minus(at.row, size.height)),
                                 Point(at.column, Plus(at.row, size.width))};
  return AddPolygon(vector, pen, Brush::kAsItIs, corners);
}

int32_t AddRectangleObject(HostVector* vector, const SymbolPen& pen, const Placement& at,
                           const SymbolSize& size, HostRect& rectangle) {
  SetRectangle(rectangle, at, size);
  VectorObjectRecord record;
  HostVecInitObject(&record);
  record.rectangle.corner = Point(Minus(at.column, size.width / 2), Minus(at.row, size.height / 2));
  record.rectangle.opposite = Point(Plus(at.column, size.width / 2), Plus(at.row, size.height / 2));
  SetPen(record.rectangle.pen, pen);
  SetBrush(record.rectangle.brush);
  return AddObject(vector, record, VECTOR_RECTANGLE, sizeof record.rectangle);
}

int32_t AddEllipseObject(HostVector* vector, const SymbolPen& pen, const Placement& at,
                         const SymbolSize& size, HostRect& rectangle) {
  SetRectangle(rectangle, at, size);
  VectorObjectRecord record;
  HostVecInitObject(&record);
  record.ellipse.centre = SignedPoint(at);
  record.ellipse.radius_x = size.width;
  record.ellipse.radius_y = size.height;
  SetPen(record.ellipse.pen, pen);
  SetBrush(record.ellipse.brush);
  return AddObject(vector, record, VECTOR_ELLIPSE, sizeof record.ellipse);
}

// The last corner lies the whole width below the place: the outline closes crookedly.
int32_t AddQuadObject(HostVector* vector, const SymbolPen& pen, const Placement& at, const SymbolSize& size,
                      HostRect& rectangle) {
  SetRectangle(rectangle, at, size);
  const double x = at.column;
  const double y = at.row;
  const double width = size.width;
  const uint32_t half_height = size.height / 2;
  const VectorPoint corners[] = {Point(x + width, y - half_height), Point(x, y - half_height),
                                 Point(x, y + half_height), Point(x + width, y + width)};
  return AddPolygon(vector, pen, Brush::kSet, corners);
}

// The width is measured along y and the height along x.
int32_t AddDiamondObject(HostVector* vector, const SymbolPen& pen, const Placement& at,
                         const SymbolSize& size, HostRect& rectangle) {
  SetRectangle(rectangle, at, size);
  const double x = at.column;
  const double y = at.row;
  const uint32_t half_width = size.width / 2;
  const uint32_t half_height = size.height / 2;
  const VectorPoint corners[] = {Point(x, y - half_width), Point(x - half_height, y),
                                 Point(x, y + half_width), Point(x + half_height, y)};
  return AddPolygon(vector, pen, Brush::kSet, corners);
}

// The angle is 30 radians, which makes the step small and negative.
int32_t AddHexagonObject(HostVector* vector, const SymbolPen& pen, const Placement& at,
                         const SymbolSize& size, HostRect& rectangle) {
  SetRectangle(rectangle, at, size);
  const double x = at.column;
  const double y = at.row;
  const uint32_t half_height = size.height / 2;
  const double step = half_height / std::tan(30.0);
  const VectorPoint corners[] = {Point(x + step, y - half_height), Point(x - step, y - half_height),
                                 Point(x - 2 * step, y),           Point(x - step, y + half_height),
                                 Point(x + step, y + half_height), Point(x + 2 * step, y)};
  return AddPolygon(vector, pen, Brush::kSet, corners);
}

}  // namespace tavi

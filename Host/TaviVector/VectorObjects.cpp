// Layers, and the objects that callers describe by records.
#include <cmath>
#include <cstring>
#include <new>
#include <stdexcept>
#include <utility>

#include "TaviHost.h"
#include "TaviVector/VectorRecord.h"

namespace tavi::host::vec {
namespace {

enum PenStyle : uint32_t { kPenDashDotDot = 4, kPenNone = 5 };
enum BrushStyle : uint32_t { kBrushNone = 0, kBrushSolid = 1, kBrushHatched = 2 };

// Changes the vector's drawing, which is made when there is none and dropped again when the change fails.
template <class Change>
int32_t ChangeDrawing(HostVector* vector, Change change) noexcept {
  const bool was_empty = DrawingOf(vector) == nullptr;
  Drawing* const drawing = NeedDrawing(vector);
  if (drawing == nullptr) return ERR_NO_MEMORY;
  try {
    change(*drawing);
    return SUCCESS;
  } catch (const std::bad_alloc&) {
  } catch (const std::length_error&) {
  }
  if (was_empty) DropDrawing(vector);
  return ERR_NO_MEMORY;
}

Point PointOf(const VectorPoint& point) {
  return {point.x, point.y};
}

bool IsNumber(Point point) {
  return std::isfinite(point.x) && std::isfinite(point.y);
}

// Index of the pen's stroke. A pen that was left as HostVecInitObject makes it is one unit wide.
uint32_t AddPen(Drawing& drawing, const PenRecord& pen) {
  if (pen.style == kPenNone) return kNone;
  Stroke stroke;
  stroke.color = pen.color & 0x00FFFFFF;
  stroke.width = pen.size == 0 && pen.width == 0 ? 1 : pen.width;
  if (pen.style <= kPenDashDotDot) stroke.type = static_cast<LineType>(pen.style);
  return Intern(drawing.strokes, stroke);
}

uint32_t AddBrush(Drawing& drawing, const BrushRecord& brush) {
  if (brush.style != kBrushSolid && brush.style != kBrushHatched) return kNone;
  Fill fill;
  fill.color = brush.color & 0x00FFFFFF;
  if (brush.style == kBrushHatched) {
    fill.interior = Interior::kHatch;
    const bool known = brush.hatch >= 1 && brush.hatch <= static_cast<uint32_t>(Hatch::kDiagonalCross);
    if (known) fill.hatch = static_cast<Hatch>(brush.hatch);
  }
  return Intern(drawing.fills, fill);
}

template <class Record>
AreaStyle StyleOf(Drawing& drawing, const Record& record) {
  const uint32_t fill = AddBrush(drawing, record.brush);
  return {fill, AddPen(drawing, record.pen)};
}

void Append(const HostVector* vector, Drawing& drawing, Shape&& shape) {
  drawing.objects.push_back({std::move(shape), LoadVectorPart(vector).active_layer, kNone});
}

int32_t AddLine(HostVector* vector, const VectorLineRecord& record) {
  const Point first = PointOf(record.first);
  const Point second = PointOf(record.second);
  if (!IsNumber(first) || !IsNumber(second)) return ERR_INVALID_PARAMETER;
  return ChangeDrawing(vector, [&](Drawing& drawing) {
    Append(vector, drawing, Polyline{{first, second}, AddPen(drawing, record.pen)});
  });
}

int32_t AddRectangle(HostVector* vector, const VectorRectangleRecord& record) {
  const Point corner = PointOf(record.corner);
  const Point opposite = PointOf(record.opposite);
  if (!IsNumber(corner) || !IsNumber(opposite)) return ERR_INVALID_PARAMETER;
  return ChangeDrawing(vector, [&](Drawing& drawing) {
    Append(vector, drawing, Rectangle{corner, opposite, StyleOf(drawing, record)});
  });
}

int32_t AddEllipse(HostVector* vector, const VectorEllipseRecord& record) {
  const Point centre = PointOf(record.centre);
  const Point radii{record.radius_x, record.radius_y};
  if (!IsNumber(centre) || !IsNumber(radii)) return ERR_INVALID_PARAMETER;
  return ChangeDrawing(vector, [&](Drawing& drawing) {
    Append(vector, drawing, Ellipse{centre, {radii.x, 0}, {0, radii.y}, StyleOf(drawing, record)});
  });
}

int32_t AddPolygon(HostVector* vector, const VectorPolygonRecord& record) {
  const uint32_t count = record.count;
  const VectorPoint* const points = record.points;
  if (points == nullptr && count != 0) return ERR_NULL_ARGUMENT;
  for (uint32_t i = 0; i < count; ++i) {
    if (!IsNumber(PointOf(points[i]))) return ERR_INVALID_PARAMETER;
  }
  return ChangeDrawing(vector, [&](Drawing& drawing) {
    Polygon polygon;
    polygon.rings.resize(1);
    polygon.rings[0].points.reserve(count);
    for (uint32_t i = 0; i < count; ++i) polygon.rings[0].points.push_back(PointOf(points[i]));
    polygon.style = StyleOf(drawing, record);
    Append(vector, drawing, std::move(polygon));
  });
}

uint32_t RecordSize(uint32_t kind) {
  switch (kind) {
    case VECTOR_LINE:
      return sizeof(VectorLineRecord);
    case VECTOR_RECTANGLE:
      return sizeof(VectorRectangleRecord);
    case VECTOR_POLYGON:
      return sizeof(VectorPolygonRecord);
    case VECTOR_ELLIPSE:
      return sizeof(VectorEllipseRecord);
    default:
      return 0;
  }
}

}  // namespace
}  // namespace tavi::host::vec

using namespace tavi::host::vec;

// All zero: a pen whose size stays 0 is solid, black and one unit wide, a brush of style 0 fills nothing.
void HostVecInitObject(VectorObjectRecord* object) {
  if (object != nullptr) std::memset(static_cast<void*>(object), 0, sizeof *object);
}

int32_t HostVecAddLayer(HostVector* vector, const ObjectLayerRecord* record, HostVectorLayer* layer,
                        uint32_t) {
  HostForgetLimitHit();
  if (vector == nullptr || record == nullptr || layer == nullptr) return ERR_NULL_ARGUMENT;
  if (record->size != sizeof *record) return ERR_INVALID_PARAMETER;
  return ChangeDrawing(vector, [&](Drawing& drawing) {
    Layer added;
    for (const uint16_t unit : record->name) {
      if (unit == 0) break;
      added.name.push_back(static_cast<char16_t>(unit));
    }
    drawing.layers.push_back(std::move(added));
    *layer = {static_cast<uint32_t>(drawing.layers.size() - 1), 0};
  });
}

int32_t HostVecSetActiveLayer(HostVector* vector, const HostVectorLayer* layer) {
  if (vector == nullptr || layer == nullptr) return ERR_NULL_ARGUMENT;
  VectorPart part = LoadVectorPart(vector);
  if (part.drawing == nullptr || layer->index >= part.drawing->layers.size()) return ERR_INVALID_PARAMETER;
  part.active_layer = layer->index;
  StoreVectorPart(vector, part);
  return SUCCESS;
}

int32_t HostVecAddObject(HostVector* vector, uint32_t, uint32_t kind, const VectorObjectRecord* object,
                         uint32_t) {
  HostForgetLimitHit();
  if (vector == nullptr || object == nullptr) return ERR_NULL_ARGUMENT;
  // Records of single kinds are shorter than the union: only the head is read before the kind is known.
  const uint32_t size = RecordSize(kind);
  if (size == 0 || object->head.size != size || object->head.kind != kind) return ERR_INVALID_PARAMETER;
  switch (kind) {
    case VECTOR_LINE:
      return AddLine(vector, object->line);
    case VECTOR_RECTANGLE:
      return AddRectangle(vector, object->rectangle);
    case VECTOR_POLYGON:
      return AddPolygon(vector, object->polygon);
    default:
      return AddEllipse(vector, object->ellipse);
  }
}

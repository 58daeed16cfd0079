// What the tests of vector drawings share.
#pragma once

#include <cstring>
#include <vector>

#include "../host/HostTest.h"
#include "TaviHost.h"
#include "TaviVector/Drawing.h"
#include "TaviVector/VectorRecord.h"

namespace tavi::test {

// An owned record, made as callers make theirs.
class Vector {
 public:
  Vector() {
    std::memset(&record_, 0xA5, sizeof record_);
    record_.word976 = 8194;
    HostVecInit(&record_);
    record_.word844 = 32768;
  }
  explicit Vector(host::vec::Drawing drawing) : Vector() {
    EXPECT_EQ(host::vec::TakeDrawing(&record_, std::move(drawing)), SUCCESS);
  }
  ~Vector() {
    if (HostVecIsEmpty(&record_) == 0) HostVecFree(&record_);
  }
  Vector(const Vector&) = delete;
  Vector& operator=(const Vector&) = delete;

  HostVector* get() { return &record_; }
  const HostVector* get() const { return &record_; }
  HostVector* operator->() { return &record_; }
  bool IsEmpty() const { return HostVecIsEmpty(&record_) != 0; }
  const host::vec::Drawing& drawing() const { return *host::vec::DrawingOf(&record_); }

 private:
  HostVector record_;
};

inline VectorPoint At(double x, double y) {
  return {x, y, 0, 0};
}

inline PenRecord Pen(uint32_t color, uint32_t width = 1, uint32_t style = 0) {
  PenRecord pen = {};
  pen.size = sizeof pen;
  pen.style = style;
  pen.width = width;
  pen.color = color;
  return pen;
}

inline BrushRecord Brush(uint32_t color, uint32_t style = 1, uint32_t hatch = 0) {
  BrushRecord brush = {};
  brush.size = sizeof brush;
  brush.style = style;
  brush.color = color;
  brush.hatch = hatch;
  return brush;
}

inline VectorObjectRecord MakeObject(uint32_t kind, uint32_t size) {
  VectorObjectRecord object;
  HostVecInitObject(&object);
  object.head.size = size;
  object.head.kind = kind;
  return object;
}

inline VectorObjectRecord LineRecord(VectorPoint first, VectorPoint second, const PenRecord& pen) {
  VectorObjectRecord object = MakeObject(VECTOR_LINE, sizeof(VectorLineRecord));
  object.line.first = first;
  object.line.second = second;
  object.line.pen = pen;
  return object;
}

inline VectorObjectRecord RectangleRecord(VectorPoint corner, VectorPoint opposite, const PenRecord& pen,
                                          const BrushRecord& brush) {
  VectorObjectRecord object = MakeObject(VECTOR_RECTANGLE, sizeof(VectorRectangleRecord));
  object.rectangle.corner = corner;
  object.rectangle.opposite = opposite;
  object.rectangle.pen = pen;
  object.rectangle.brush = brush;
  return object;
}

inline VectorObjectRecord PolygonRecord(const VectorPoint* points, uint32_t count, const PenRecord& pen,
                                        const BrushRecord& brush) {
  VectorObjectRecord object = MakeObject(VECTOR_POLYGON, sizeof(VectorPolygonRecord));
  std::memcpy(static_cast<void*>(&object.polygon.points), static_cast<const void*>(&points), sizeof points);
  object.polygon.count = count;
  object.polygon.pen = pen;
  object.polygon.brush = brush;
  return object;
}

inline VectorObjectRecord EllipseRecord(VectorPoint centre, double radius_x, double radius_y,
                                        const PenRecord& pen, const BrushRecord& brush) {
  VectorObjectRecord object = MakeObject(VECTOR_ELLIPSE, sizeof(VectorEllipseRecord));
  object.ellipse.centre = centre;
  object.ellipse.radius_x = radius_x;
  object.ellipse.radius_y = radius_y;
  object.ellipse.pen = pen;
  object.ellipse.brush = brush;
  return object;
}

inline int32_t Add(Vector* vector, const VectorObjectRecord& object) {
  return HostVecAddObject(vector->get(), 0, object.head.kind, &object, 0);
}

inline ObjectLayerRecord LayerRecord(const char16_t* name) {
  ObjectLayerRecord record = {};
  record.size = sizeof record;
  for (size_t i = 0; i < 64 && name[i] != 0; ++i) record.name[i] = name[i];
  record.word132 = 1;
  return record;
}

// The bytes of a block, which is released.
inline std::vector<uint8_t> TakeBytes(HostGlobalMemory block, uint64_t size) {
  const auto* const bytes = static_cast<const uint8_t*>(GlobalLock(block));
  std::vector<uint8_t> copy;
  if (bytes != nullptr) copy.assign(bytes, bytes + size);
  GlobalUnlock(block);
  HostGlobalFree(block, __LINE__, nullptr);
  return copy;
}

}  // namespace tavi::test

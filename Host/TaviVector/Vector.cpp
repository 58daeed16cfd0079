// The operations on whole vectors.
#include <cmath>
#include <new>
#include <stdexcept>

#include "TaviHost.h"
#include "TaviVector/VectorRecord.h"

using namespace tavi::host::vec;

void HostVecInit(HostVector* vector) {
  if (vector != nullptr) StoreVectorPart(vector, VectorPart());
}

int32_t HostVecIsEmpty(const HostVector* vector) {
  return DrawingOf(vector) != nullptr ? 0 : 1;
}

void HostVecFree(HostVector* vector) {
  if (LoadVectorPart(vector).magic == 0) return;
  DropDrawing(vector);
  StoreVectorPart(vector, VectorPart());
}

void HostVecSetBackColor(HostVector* vector, uint32_t color) {
  if (vector == nullptr) return;
  VectorPart part = LoadVectorPart(vector);
  part.back_color = color & 0x00FFFFFF;
  StoreVectorPart(vector, part);
}

void HostVecPrepare(HostVector*, uint32_t) {}

void HostVecTranslate(HostVector* vector, const VectorPoint* by, uint32_t, uint32_t) {
  if (vector == nullptr || by == nullptr) return;
  const Point translation{by->x, by->y};
  if (!std::isfinite(translation.x) || !std::isfinite(translation.y)) return;
  VectorPart part = LoadVectorPart(vector);
  part.translation = translation;
  part.has_translation = true;
  StoreVectorPart(vector, part);
}

void HostVecApplyTransform(HostVector* vector) {
  VectorPart part = LoadVectorPart(vector);
  if (!part.has_translation) return;
  // A translation changes values where they stand: it needs no memory.
  if (part.drawing != nullptr) {
    Transform(*part.drawing, {1, 0, part.translation.x, 0, 1, part.translation.y});
  }
  part.has_translation = false;
  StoreVectorPart(vector, part);
}

void HostVecSetViewport(HostVector* vector, const HostRect* rectangle) {
  if (vector == nullptr) return;
  VectorPart part = LoadVectorPart(vector);
  part.has_viewport = rectangle != nullptr;
  part.viewport = rectangle != nullptr ? *rectangle : HostRect();
  StoreVectorPart(vector, part);
}

void HostVecRefreshView(HostVector*) {}
void HostVecResetView(HostVector*) {}

int32_t HostVecCopy(HostVector* target, const HostVector* source, uint32_t) {
  HostForgetLimitHit();
  if (target == nullptr || source == nullptr) return ERR_NULL_ARGUMENT;
  const Drawing* const drawing = DrawingOf(source);
  if (drawing == nullptr) return ERR_INVALID_VECTOR;
  if (target == source) return SUCCESS;
  try {
    const int32_t status = TakeDrawing(target, Drawing(*drawing));
    if (status != SUCCESS) return status;
  } catch (const std::bad_alloc&) {
    return ERR_NO_MEMORY;
  } catch (const std::length_error&) {
    return ERR_NO_MEMORY;
  }
  // What the copy holds is counted for itself: vectors that grew hold more than their copies.
  const VectorPart held = LoadVectorPart(target);
  VectorPart settings = LoadVectorPart(source);
  settings.drawing = held.drawing;
  settings.charged = held.charged;
  StoreVectorPart(target, settings);
  return SUCCESS;
}

#include "TaviVector/VectorRecord.h"

#include <new>
#include <utility>

#include "TaviKernel/Tracking.h"
#include "TaviVector/DrawingMemory.h"

namespace tavi::host::vec {

int32_t TakeDrawing(HostVector* vector, Drawing&& drawing) noexcept {
  if (vector == nullptr) return ERR_NULL_ARGUMENT;
  const uint64_t bytes = BytesOf(drawing);
  if (!ChargeDrawing(bytes)) return ERR_NO_MEMORY;
  auto* const held = new (std::nothrow) Drawing(std::move(drawing));
  if (held == nullptr) {
    ReleaseDrawing(bytes);
    return ERR_NO_MEMORY;
  }
  DropDrawing(vector);
  VectorPart part = LoadVectorPart(vector);
  part.drawing = held;
  part.charged = bytes;
  StoreVectorPart(vector, part);
  NoteMade(LiveKind::kVector, held, {});
  return SUCCESS;
}

Drawing* NeedDrawing(HostVector* vector) noexcept {
  if (Drawing* const held = DrawingOf(vector); held != nullptr) return held;
  return TakeDrawing(vector, Drawing()) == SUCCESS ? DrawingOf(vector) : nullptr;
}

void DropDrawing(HostVector* vector) noexcept {
  VectorPart part = LoadVectorPart(vector);
  if (part.drawing == nullptr) return;
  NoteGone(LiveKind::kVector, part.drawing);
  delete std::exchange(part.drawing, nullptr);
  ReleaseDrawing(std::exchange(part.charged, uint64_t{0}));
  part.active_layer = 0;
  StoreVectorPart(vector, part);
}

}  // namespace tavi::host::vec

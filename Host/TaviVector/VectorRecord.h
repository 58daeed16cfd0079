// What the host keeps in its own bytes of a HostVector, and the drawing that a record holds.
#pragma once

#include <cstdint>
#include <cstring>
#include <optional>

#include "TaviHost.h"
#include "TaviVector/Drawing.h"

namespace tavi::host::vec {

inline constexpr uint32_t kWhite = 0x00FFFFFF;

// Stands in the record's first bytes. Records without the mark, such as zeroed ones, are empty vectors with the
// settings that stand here.
struct VectorPart {
  uint64_t magic = 0;
  Drawing* drawing = nullptr;  // owned; null in an empty vector
  uint32_t back_color = kWhite;
  uint32_t active_layer = 0;
  bool has_viewport = false;
  bool has_translation = false;
  HostRect viewport{};
  Point translation;     // noted, not carried out yet
  uint64_t charged = 0;  // bytes of the drawing that count towards HOST_LIMIT_DRAWINGS
};

inline constexpr uint64_t kVectorMagic = 0x5243455649564154;
static_assert(sizeof(VectorPart) <= sizeof(HostVector::host0));

inline VectorPart LoadVectorPart(const HostVector* vector) noexcept {
  VectorPart part;
  if (vector == nullptr) return part;
  std::memcpy(static_cast<void*>(&part), vector->host0, sizeof part);
  return part.magic == kVectorMagic ? part : VectorPart();
}

inline void StoreVectorPart(HostVector* vector, VectorPart part) noexcept {
  part.magic = kVectorMagic;
  std::memcpy(vector->host0, static_cast<const void*>(&part), sizeof part);
}

// Null for a null record and for an empty vector.
inline Drawing* DrawingOf(HostVector* vector) noexcept {
  return LoadVectorPart(vector).drawing;
}
inline const Drawing* DrawingOf(const HostVector* vector) noexcept {
  return LoadVectorPart(vector).drawing;
}

inline uint32_t BackColorOf(const HostVector* vector) noexcept {
  return LoadVectorPart(vector).back_color;
}

inline std::optional<HostRect> ViewportOf(const HostVector* vector) noexcept {
  const VectorPart part = LoadVectorPart(vector);
  return part.has_viewport ? std::optional(part.viewport) : std::nullopt;
}

// Gives the vector a drawing in the place of the one that it holds, if any; its settings stay. A drawing without
// objects counts as well: the vector is not empty then. Status: ERR_NULL_ARGUMENT, ERR_NO_MEMORY, and then the vector
// is as it was.
int32_t TakeDrawing(HostVector* vector, Drawing&& drawing) noexcept;

// The vector's drawing, made when there is none: null without memory.
Drawing* NeedDrawing(HostVector* vector) noexcept;

// Leaves the vector without a drawing.
void DropDrawing(HostVector* vector) noexcept;

}  // namespace tavi::host::vec

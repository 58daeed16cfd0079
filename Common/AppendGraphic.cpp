#include <limits>

#include "Append.h"
#include "DisplayList.h"
#include "GraphicDrawing.h"
#include "HeaderSetter.h"

namespace tavi {

TAVI_UNIT(L"Common/AppendGraphic")

namespace {

// The smallest and the largest corner of a drawing, y upward.
struct Extents {
  double smallest[3] = {};
  double largest[3] = {};
};

// Truncated towards zero; what exceeds 32 bits becomes their nearest number.
int32_t Truncate(double value) {
  constexpr double kLimit = std::numeric_limits<int32_t>::max();
  if (value != value) return 0;
  return static_cast<int32_t>(value > kLimit ? kLimit : value < -kLimit ? -kLimit : value);
}

// No raster row or column may need more than five digits. The left side is not looked at, and that is kept.
bool FitsLocations(const Extents& extents) {
  constexpr int32_t kFarthest = 99999;
  const int32_t top = -Truncate(extents.largest[1]);
  const int32_t right = Truncate(extents.largest[0]);
  const int32_t bottom = -Truncate(extents.smallest[1]);
  return top <= kFarthest && right <= kFarthest && bottom <= kFarthest;
}

// Moves the drawing below the x axis, where the rows of a raster are. The caller's drawing stays so.
void MoveBelowAxis(HostVector* vector, double highest) {
  VectorPoint by{};
  by.y = -highest - 1;
  HostVecTranslate(vector, &by, 0, 0);
  HostVecApplyTransform(vector);
  HostVecRefreshView(vector);
}

// Writes the drawing as CGM.
int32_t SaveDrawing(GlobalBlock& block, const HostVector* vector) {
  constexpr uint32_t kCgmFormat = 62;
  HostSaveOptionsRecord options{};
  HostSaveOptions(&options, sizeof options);
  options.flags1905 |= 1;
  const int32_t status = HostVecSaveMemory(block.out(), vector, kCgmFormat, block.size_out(), &options);
  block.Announce();
  return status;
}

int32_t TakeDrawing(GrSubHdr& record, const HostVector* vector) {
  GlobalBlock block(Here());
  const int32_t status = SaveDrawing(block, vector);
  if (status != SUCCESS) return status;
  const void* bytes = block.Lock();
  if (bytes == nullptr || block.size() > UINT32_MAX) return ERR_NO_MEMORY;
  return SetGraphicData(record, bytes, block.size());
}

void SetLevel(GrSubHdr& record, const char* field, uint32_t level) {
  SetNumber(record, *FindRow<GrSubHdr>(GraphicRows(), field), level);
}
void SetBound(GrSubHdr& record, const char* field, int32_t first, int32_t second) {
  const FieldRow<GrSubHdr>& row = *FindRow<GrSubHdr>(GraphicRows(), field);
  row.set_pair(record, row, first, second);
}

int32_t CheckArguments(const NitfFile& document, const HostVector* vector, Extents& extents) {
  if (document.GraphicCount >= kMostSegmentsOfAKind) return kNoRoomForSegment;
  if (vector == nullptr) return ERR_NULL_ARGUMENT;
  if (HostVecIsEmpty(vector) != 0) return ERR_INVALID_VECTOR;
  const int32_t status = HostVecGetExtents(vector, extents.smallest, extents.largest);
  if (status != SUCCESS) return status;
  return FitsLocations(extents) ? SUCCESS : ERR_INVALID_PARAMETER;
}

}  // namespace

int32_t SetGraphicData(GrSubHdr& record, const void* bytes, uint64_t size) {
  HostArray<uint8_t> made;
  if (!made.Allocate(size, Here())) return ERR_NO_MEMORY;
  if (size != 0) HostMemCopy(made.data(), bytes, size);
  record.GraphicDataBuffer = std::move(made);
  record.GraphicDataInMemory = 1;
  return SUCCESS;
}

int32_t AppendGraphicSegment(NitfFile& document, HostVector* vector, const HostRect& rectangle) {
  Extents extents;
  int32_t status = CheckArguments(document, vector, extents);
  if (status != SUCCESS) return status;
  NewSegment<GrSubHdr> segment(document, document.GraphicCount, Here());
  if (!segment.made()) return ERR_NO_MEMORY;
  GrSubHdr& record = segment.record();
  if (extents.largest[1] > 0) MoveBelowAxis(vector, extents.largest[1]);
  HostVecSetViewport(vector, &rectangle);
  HostVecRefreshView(vector);
  HostVecResetView(vector);
  status = TakeDrawing(record, vector);
  if (status != SUCCESS) return status;
  SetLevel(record, "SDLVL", static_cast<uint32_t>(NextDisplayLevel(document)));
  uint32_t lowest = 0;
  if (LowestDisplayLevel(document, lowest)) SetLevel(record, "SALVL", lowest);
  SetBound(record, "SBND1", rectangle.left, rectangle.top);
  SetBound(record, "SBND2", rectangle.right, rectangle.bottom);

  constexpr uint32_t kSubheader = 258;
  constexpr uint32_t kTableEntry = 10;
  const uint64_t data = record.GraphicDataBuffer.size();
  NtfHdr& header = document.Header;
  if (!MakeRoomForGraphic(header)) return ERR_NO_MEMORY;
  // Nothing fails from here on.
  AddGraphicSubheaderLength(header, kSubheader);
  AddGraphicDataLength(header, static_cast<uint32_t>(data));
  segment.Join(document.Graphics);
  ++document.GraphicCount;
  ++header.NumGraphics;
  AddToTotals(header, kTableEntry, kSubheader, data);
  return SUCCESS;
}

int32_t SetVectorHandle(NitfFile& document, uint32_t index, const HostVector* vector) {
  GrSubHdr* record = SubheaderAt(document.Graphics, index, document.GraphicCount);
  if (record == nullptr) return ERR_INVALID_PARAMETER;
  if (vector == nullptr) return ERR_NULL_ARGUMENT;
  if (HostVecIsEmpty(vector) != 0) return ERR_INVALID_VECTOR;
  int32_t status = TakeDrawing(*record, vector);
  if (status != SUCCESS) return status;
  // The record's own drawing, which an application may have changed, is the copy already.
  if (vector != record->Vector.get()) {
    record->Vector.Reset();
    status = HostVecCopy(record->Vector.get(), vector, 0);
    if (status != SUCCESS) return status;
  }
  NtfHdr& header = document.Header;
  if (index < header.NumGraphics && index < header.LsWork.size()) {
    header.LsWork[index] = static_cast<uint32_t>(record->GraphicDataBuffer.size());
  }
  return SUCCESS;
}

// Whatever is asked for, the first segment's drawing is the one that is loaded. That is kept.
HostVector* GetVectorHandle(NitfFile& document, uint32_t index) {
  GrSubHdr* record = SubheaderAt(document.Graphics, index, document.GraphicCount);
  if (record == nullptr) return nullptr;
  return DrawGraphicSegment(nullptr, nullptr, document, 0, 0, 0) == SUCCESS ? record->Vector.get() : nullptr;
}

}  // namespace tavi

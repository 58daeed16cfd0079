// Nodes of the segment lists: made with a fresh subheader, announced to the host, destroyed.
#pragma once

#include <new>

#include "NitfFile.h"

namespace tavi {

inline constexpr int32_t kTrackedObject = 4;

template <class Object>
void TrackObject(const Object* object, Place place) {
  HostTrackAdd(kTrackedObject, object, place.line, place.unit);
}

template <class Object>
void DeleteObject(Object* object, Place place) {
  if (object == nullptr) return;
  HostTrackRemove(kTrackedObject, object, place.line, place.unit);
  delete object;
}

template <class Record>
void DestroyNode(SegmentNode<Record>* node, Place place) {
  if (node == nullptr) return;
  DeleteObject(node->Subheader, place);
  DeleteObject(node, place);
}

template <class Record>
Record* MakeRecord(NitfFile& document, uint32_t index) {
  auto* record = new (std::nothrow) Record(&document);
  if (record != nullptr) record->SegmentIndex = index;
  return record;
}
template <>
inline DExSbHdr* MakeRecord<DExSbHdr>(NitfFile&, uint32_t) {
  return new (std::nothrow) DExSbHdr();
}

// A node in no list yet, with the subheader of the segment `index`. Null without memory.
template <class Record>
SegmentNode<Record>* MakeNode(NitfFile& document, uint32_t index, Place place) {
  auto* node = new (std::nothrow) SegmentNode<Record>;
  if (node == nullptr) return nullptr;
  TrackObject(node, place);
  node->Subheader = MakeRecord<Record>(document, index);
  if (node->Subheader == nullptr) {
    DestroyNode(node, place);
    return nullptr;
  }
  TrackObject(node->Subheader, place);
  return node;
}

}  // namespace tavi

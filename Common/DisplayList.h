// The common coordinate system: the order of drawing, the offsets of attached segments, the size of the
// composite.
#pragma once

#include <cstdint>

#include "NitfFile.h"
#include "TaviNitf.h"

namespace tavi {

enum DisplayKind : uint32_t { kDisplayImage = 0, kDisplayGraphic = 2, kDisplayLabel = 3 };

struct DisplayEntry {
  uint32_t Kind;
  uint32_t DisplayLevel;
  uint32_t Index;  // place in the list of its kind
};
static_assert(sizeof(DisplayEntry) == 12);

// All drawable segments by ascending display level, built afresh for each use. SUCCESS without an array for a
// document that holds texts only; ERR_NO_MEMORY.
int32_t BuildDisplayList(HostArray<DisplayEntry>& list, NitfFile& document);

// A segment's offset: what the locations of all segments sum to that it is attached to, its own not counted.
struct Offset {
  int32_t row = 0;
  int32_t column = 0;
};

// Finds the first segment of a kind with a display level, and the segment at a place, without walking the list each time.
template <class Record>
class LevelIndex {
 public:
  struct Place {
    const Record* record = nullptr;
    uint32_t index = 0;
  };

  LevelIndex(const SegmentNode<Record>* node, uint32_t count) : head_(node), count_(count) {
    for (uint32_t i = 0; node != nullptr && i < count; ++i, node = node->Next) {
      if (i < kMostPlaces) nth_[i] = node->Subheader;
      if (node->Subheader == nullptr) continue;
      const uint32_t level = node->Subheader->DisplayLevel + kLowest;
      if (level < kLevels && first_[level].record == nullptr) first_[level] = {node->Subheader, i};
    }
  }

  // The first segment with the level; no record when there is none.
  Place Find(uint32_t level) const {
    return level + kLowest < kLevels ? first_[level + kLowest] : Search(level);
  }

  // The segment at a place of the list; null when there is none.
  const Record* At(uint32_t index) const { return index < kMostPlaces ? nth_[index] : nullptr; }

 private:
  // A level that no file can hold, but an application can set.
  Place Search(uint32_t level) const {
    const SegmentNode<Record>* node = head_;
    for (uint32_t i = 0; node != nullptr && i < count_; ++i, node = node->Next) {
      if (node->Subheader != nullptr && node->Subheader->DisplayLevel == level) return {node->Subheader, i};
    }
    return {};
  }

  const SegmentNode<Record>* head_;
  uint32_t count_;
  // Levels of three characters: 0 to 999, and -99 to -1 where a file has a sign.
  static constexpr uint32_t kLowest = 99;
  static constexpr uint32_t kLevels = 999 + kLowest + 1;
  Place first_[kLevels];
  // Three digits bound the segments of a kind.
  static constexpr uint32_t kMostPlaces = 999;
  const Record* nth_[kMostPlaces] = {};
};

// Sums up attachment chains. The document must not change meanwhile.
class AttachmentWalk {
 public:
  explicit AttachmentWalk(const NitfFile& document);
  // A chain that comes back to a segment ends there with the sums gathered so far.
  Offset AccumulateAttachment(const DisplayEntry& entry) const;
  // The image of an entry of the display list.
  const ImSubHdr& Image(const DisplayEntry& entry) const { return *images_.At(entry.Index); }

 private:
  uint32_t AttachmentLevelOf(const DisplayEntry& entry) const;

  const NitfFile& document_;
  LevelIndex<ImSubHdr> images_;
  LevelIndex<GrSubHdr> graphics_;
};

// The lowest display level above all that exist; 1 for a document with nothing to draw.
int32_t NextDisplayLevel(NitfFile& document);

// See GetActual_Width_Height.
int32_t CompositeSize(NitfFile& document, uint32_t& width, uint32_t& height);
// See Tavi_NitfDrawObjects.
int32_t DrawObjects(FilterLoadContext* context, HostDrawingContext dc, NitfFile& document);

}  // namespace tavi

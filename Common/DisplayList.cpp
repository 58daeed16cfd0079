#include "DisplayList.h"

#include <algorithm>
#include <bitset>
#include <utility>

#include "GraphicDrawing.h"
#include "HandlImg.h"
#include "LabelDrawing.h"
#include "Limits.h"

namespace tavi {

TAVI_UNIT(L"Common/DisplayList")

namespace {

// Three digits bound each kind of segment, in the file and when appending.
constexpr uint32_t kMostSegments = 999;
using Visited = std::bitset<kMostSegments + 1>;

template <class Record>
void AddEntries(HostArray<DisplayEntry>& list, uint64_t& used, DisplayKind kind,
                const SegmentNode<Record>* node, uint32_t count) {
  for (uint32_t i = 0; node != nullptr && i < count; ++i, node = node->Next) {
    if (node->Subheader != nullptr) list[used++] = {kind, node->Subheader->DisplayLevel, i};
  }
}

// An exchange sort, exactly so: what its swaps leave among equal levels decides which segment is on top.
void SortByLevel(HostArray<DisplayEntry>& list) {
  for (uint64_t i = 0; i + 1 < list.size(); ++i) {
    for (uint64_t j = i + 1; j < list.size(); ++j) {
      if (list[i].DisplayLevel > list[j].DisplayLevel) std::swap(list[i], list[j]);
    }
  }
}

uint32_t DrawableCount(const NitfFile& d) {
  return d.ImageCount + d.GraphicCount + d.LabelCount;
}

// Climbs from parent to parent. Coming to a segment a second time means that the chain never ends.
class Climb {
 public:
  Climb(const NitfFile& document, uint32_t level) : document_(document), level_(level) {}

  Offset Run(const LevelIndex<ImSubHdr>& images, const LevelIndex<GrSubHdr>& graphics) {
    bool changed = true;
    while (changed && !looped_) {
      changed = ClimbFrom(images, images_);
      changed |= !looped_ && ClimbFrom(graphics, graphics_);
      changed |= !looped_ && ClimbLabels();
    }
    return sum_;
  }

 private:
  template <class Record>
  void Take(const Record& record, uint32_t index, Visited& visited) {
    if (index > kMostSegments || visited.test(index)) {
      looped_ = true;
      return;
    }
    visited.set(index);
    sum_.row = WrapAdd(sum_.row, record.LocationRow);
    sum_.column = WrapAdd(sum_.column, record.LocationColumn);
    level_ = record.AttachmentLevel;
  }

  // Images and graphics: the search starts over after each hit.
  template <class Record>
  bool ClimbFrom(const LevelIndex<Record>& levels, Visited& visited) {
    bool changed = false;
    for (auto place = levels.Find(level_); place.record != nullptr && !looped_; place = levels.Find(level_)) {
      Take(*place.record, place.index, visited);
      changed = true;
    }
    return changed;
  }

  // Labels: passes over the whole list, each going on with the new level, until one has no hit.
  bool ClimbLabels() {
    bool changed = false;
    bool hit = true;
    while (hit && !looped_) {
      hit = false;
      const SegmentNode<LbSubHdr>* node = document_.Labels;
      for (uint32_t i = 0; node != nullptr && i < document_.LabelCount && !looped_; ++i, node = node->Next) {
        if (node->Subheader == nullptr || node->Subheader->DisplayLevel != level_) continue;
        Take(*node->Subheader, i, labels_);
        hit = changed = true;
      }
    }
    return changed;
  }

  const NitfFile& document_;
  uint32_t level_;
  Offset sum_;
  bool looped_ = false;
  Visited images_, graphics_, labels_;
};

struct Extent {
  uint32_t width = 0;
  uint32_t height = 0;
};

uint64_t GridPixels(const ImSubHdr& image) {
  // Each side in 32 bits, as the size of the composite is.
  const uint32_t width = image.BlockWidth * image.BlocksPerRow;
  const uint32_t height = image.BlockHeight * image.BlocksPerColumn;
  return uint64_t{width} * height;
}

Extent ImageExtent(const ImSubHdr& image, const Offset& offset) {
  const auto add = [](uint32_t size, int32_t a, int32_t b) {
    return size + static_cast<uint32_t>(a) + static_cast<uint32_t>(b);
  };
  return {add(image.BlockWidth * image.BlocksPerRow, image.LocationColumn, offset.column),
          add(image.BlockHeight * image.BlocksPerColumn, image.LocationRow, offset.row)};
}

}  // namespace

int32_t BuildDisplayList(HostArray<DisplayEntry>& list, NitfFile& d) {
  const auto drawable =
      static_cast<uint32_t>(CountImageHeaders(d) + CountGraphicHeaders(d) + CountLabelHeaders(d));
  if (drawable == 0 && CountTextHeaders(d) != 0) return SUCCESS;
  if (!list.Allocate(drawable, Here())) return ERR_NO_MEMORY;
  uint64_t used = 0;
  AddEntries(list, used, kDisplayImage, d.Images, d.ImageCount);
  AddEntries(list, used, kDisplayGraphic, d.Graphics, d.GraphicCount);
  AddEntries(list, used, kDisplayLabel, d.Labels, d.LabelCount);
  SortByLevel(list);
  return SUCCESS;
}

AttachmentWalk::AttachmentWalk(const NitfFile& document)
    : document_(document),
      images_(document.Images, document.ImageCount),
      graphics_(document.Graphics, document.GraphicCount) {}

uint32_t AttachmentWalk::AttachmentLevelOf(const DisplayEntry& entry) const {
  const auto level = [](const auto* record) { return record != nullptr ? record->AttachmentLevel : 0; };
  switch (entry.Kind) {
    case kDisplayImage:
      return level(images_.At(entry.Index));
    case kDisplayGraphic:
      return level(graphics_.At(entry.Index));
    case kDisplayLabel:
      return level(SubheaderAt(document_.Labels, entry.Index, document_.LabelCount));
    default:
      return 0;
  }
}

Offset AttachmentWalk::AccumulateAttachment(const DisplayEntry& entry) const {
  return Climb(document_, AttachmentLevelOf(entry)).Run(images_, graphics_);
}

int32_t NextDisplayLevel(NitfFile& document) {
  HostArray<DisplayEntry> list;
  BuildDisplayList(list, document);
  uint32_t highest = 0;
  for (uint64_t i = 0; i < list.size(); ++i) highest = std::max(highest, list[i].DisplayLevel);
  return static_cast<int32_t>(highest + 1);
}

int32_t CompositeSize(NitfFile& document, uint32_t& width, uint32_t& height) {
  constexpr uint32_t kCanvas = 2048;
  constexpr uint32_t kTextsOnly = 2;
  constexpr uint32_t kLabelMargin = 10;
  const auto yield = [&](uint32_t w, uint32_t h) {
    width = w;
    height = h;
    return int32_t{SUCCESS};
  };
  if (document.FixedCanvas != 0) return yield(kCanvas, kCanvas);
  HostArray<DisplayEntry> list;
  int32_t status = BuildDisplayList(list, document);
  if (status != SUCCESS) return status;
  if (DrawableCount(document) == 0 && document.TextCount >= 1) return yield(kTextsOnly, kTextsOnly);
  // Labels without an image make a composite of one pixel, whatever graphics there are. That is kept.
  if (document.ImageCount == 0 && document.LabelCount >= 1) return yield(1, 1);

  const AttachmentWalk walk(document);
  Extent most;
  Extent extent;  // a label adds none: the one before it stands
  for (uint64_t i = 0; i < list.size(); ++i) {
    const Offset offset = walk.AccumulateAttachment(list[i]);
    if (list[i].Kind == kDisplayImage) {
      extent = ImageExtent(walk.Image(list[i]), offset);
    } else if (list[i].Kind == kDisplayGraphic) {
      status = GraphicExtent(document, list[i].Index, offset.row, offset.column, extent.width, extent.height);
      if (status != SUCCESS) return status;
    }
    most.width = std::max(most.width, extent.width);
    most.height = std::max(most.height, extent.height);
  }
  if (document.LabelCount >= 1) {
    most.width += kLabelMargin;
    most.height += kLabelMargin;
  }
  return most.width == 0 && most.height == 0 ? yield(kCanvas, kCanvas) : yield(most.width, most.height);
}

int32_t DrawObjects(FilterLoadContext* context, HostDrawingContext dc, NitfFile& document) {
  HostArray<DisplayEntry> list;
  int32_t status = BuildDisplayList(list, document);
  const AttachmentWalk walk(document);
  DrawBudget budget(static_cast<uint64_t>(std::max<int64_t>(document.SourceSize, 0)));
  for (uint64_t i = 0; status == SUCCESS && i < list.size(); ++i) {
    const Offset offset = walk.AccumulateAttachment(list[i]);
    switch (list[i].Kind) {
      case kDisplayImage:
        if (!budget.Take(GridPixels(walk.Image(list[i])))) return ERR_FILE_FORMAT;
        status = DrawImageSegment(context, dc, document, list[i].Index, offset.row, offset.column);
        break;
      case kDisplayGraphic:
        status = DrawGraphicSegment(context, dc, document, list[i].Index, offset.row, offset.column);
        break;
      case kDisplayLabel:
        status = DrawLabelSegment(dc, document, list[i].Index, offset.row, offset.column);
        break;
      default:
        break;
    }
  }
  return status;
}

}  // namespace tavi

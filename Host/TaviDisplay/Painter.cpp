#include "TaviDisplay/Painter.h"

#include <algorithm>
#include <memory>
#include <new>

#include "TaviKernel/DrawingContext.h"
#include "TaviKernel/PixelView.h"
#include "TaviKernel/RowPipe.h"

namespace tavi::host {
namespace {

// One axis of the painting: the visible stretch of the destination, and where each of its pixels comes from.
class Axis {
 public:
  Axis(int32_t from, int32_t to, uint32_t source_side, uint32_t destination_side)
      : from_(from),
        backwards_(to < from),
        length_(backwards_ ? int64_t{from} - to : int64_t{to} - from),
        source_side_(source_side) {
    const int64_t low = backwards_ ? int64_t{to} + 1 : int64_t{from};
    const int64_t high = low + length_;
    const int64_t first = std::clamp<int64_t>(low, 0, destination_side);
    first_ = static_cast<uint32_t>(first);
    count_ = static_cast<uint32_t>(std::clamp<int64_t>(high, first, destination_side) - first);
  }

  uint32_t first() const { return first_; }
  uint32_t count() const { return count_; }
  bool keeps_size() const { return !backwards_ && length_ == source_side_; }

  // The source pixel under the middle of a visible pixel. The product stays below 2^33 x 2^31.
  uint32_t SourceOf(uint32_t destination) const {
    const auto step = static_cast<uint64_t>(backwards_ ? from_ - destination : destination - from_);
    return static_cast<uint32_t>((2 * step + 1) * source_side_ / (2 * static_cast<uint64_t>(length_)));
  }

 private:
  int64_t from_;
  bool backwards_;
  int64_t length_;
  uint32_t source_side_;
  uint32_t first_;
  uint32_t count_;
};

// The source column of each visible column; null without memory.
std::unique_ptr<uint32_t[]> MapColumns(const Axis& axis) {
  std::unique_ptr<uint32_t[]> map(new (std::nothrow) uint32_t[axis.count()]);
  for (uint32_t i = 0; map != nullptr && i < axis.count(); ++i) map[i] = axis.SourceOf(axis.first() + i);
  return map;
}

// Whether the rows can be kept as the bits that they come from: then they are expanded when they are looked at.
bool BeginFolding(const RowPipe& pipe, const PixelView& target, const Columns& columns) {
  return pipe.bits() != nullptr && columns.map == nullptr && columns.source % 8 == 0 &&
         target.memory != nullptr && target.memory->BeginFolding(*pipe.bits(), columns.count);
}

}  // namespace

int32_t Paint(HostDrawingContext context, const HostBitmap* bitmap, const HostRect* rectangle,
              const uint32_t* key) noexcept {
  if (!IsContext(context) || rectangle == nullptr) return ERR_INVALID_PARAMETER;
  if (IsVoid(bitmap)) return SUCCESS;
  PixelView source;
  PixelView target;
  if (!ViewOf(bitmap, &source) || !ViewOf(context->bitmap, &target)) return ERR_NO_BITMAP;
  const Axis across(rectangle->left, rectangle->right, source.width, target.width);
  const Axis down(rectangle->top, rectangle->bottom, source.height, target.height);
  if (across.count() == 0 || down.count() == 0) return SUCCESS;

  Columns columns{across.first(), across.count(), across.SourceOf(across.first()), nullptr};
  std::unique_ptr<uint32_t[]> map;
  if (!across.keeps_size()) {
    map = MapColumns(across);
    if (map == nullptr) return ERR_NO_MEMORY;
    columns.map = map.get();
  }
  RowPipe pipe(source, target, key);
  const bool whole = key == nullptr && across.count() == target.width;
  const bool folds = whole && BeginFolding(pipe, target, columns);
  for (uint32_t y = down.first(); y < down.first() + down.count(); ++y) {
    const uint8_t* const from = source.ReadRow(source.StorageRow(down.SourceOf(y)));
    const uint32_t row = target.StorageRow(y);
    if (folds) {
      target.memory->PutFolded(row, from + columns.source / 8);
    } else {
      pipe.Move(from, whole ? target.ReplaceRow(row) : target.ChangeRow(row), columns);
    }
  }
  if (target.sample_order == SampleOrder::kUnknown) SetSampleOrder(context->bitmap, SampleOrder::kNative);
  return SUCCESS;
}

}  // namespace tavi::host

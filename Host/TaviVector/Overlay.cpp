#include "TaviVector/Overlay.h"

#include <algorithm>
#include <cstdlib>
#include <memory>
#include <new>
#include <stdexcept>

#include "TaviVector/BlendRows.h"
#include "TaviVector/PaintBudget.h"
#include "TaviVector/Painter.h"

namespace tavi::host::vec {
namespace {

constexpr int64_t kTileSide = 2048;

// Whole pixels: left and top inside, right and bottom just outside.
struct PixelArea {
  int64_t left = 0;
  int64_t top = 0;
  int64_t right = 0;
  int64_t bottom = 0;
  int64_t width() const { return right - left; }
  int64_t height() const { return bottom - top; }
  bool IsEmpty() const { return width() <= 0 || height() <= 0; }
  Box AsBox() const {
    return {{static_cast<double>(left), static_cast<double>(top)},
            {static_cast<double>(right), static_cast<double>(bottom)}};
  }
};

PixelArea PixelsOf(const Box& box, const PixelArea& within) {
  const Box seen = Common(box, within.AsBox());
  if (seen.IsEmpty()) return {};
  return {static_cast<int64_t>(std::floor(seen.low.x)), static_cast<int64_t>(std::floor(seen.low.y)),
          static_cast<int64_t>(std::ceil(seen.high.x)), static_cast<int64_t>(std::ceil(seen.high.y))};
}

// NOLINTBEGIN(cppcoreguidelines-no-malloc): calloc alone gives cleared memory whose pages nobody has touched yet, and of
// most drawings few are touched.
struct PixelsDeleter {
  void operator()(uint32_t* pixels) const { std::free(pixels); }
};
using PixelsOwner = std::unique_ptr<uint32_t[], PixelsDeleter>;

PixelsOwner ClearPixels(size_t count) {
  PixelsOwner pixels(static_cast<uint32_t*>(std::calloc(count, sizeof(uint32_t))));
  if (pixels == nullptr) throw std::bad_alloc();
  return pixels;
}
// NOLINTEND(cppcoreguidelines-no-malloc)

class Overlay {
 public:
  Overlay(const PixelView& target, const Drawing& drawing, const Affine& to_device)
      : whole_{0, 0, target.width, target.height},
        boxes_(DeviceBoxes(drawing, to_device)),
        job_{drawing, to_device, whole_.AsBox()},
        blender_(target) {}

  int32_t Paint(PaintAccount& account) {
    Box covered;
    for (const Box& box : boxes_) Include(covered, Common(box, whole_.AsBox()));
    const PixelArea area = PixelsOf(covered, whole_);
    if (area.IsEmpty()) return SUCCESS;
    if (!SpendBudget(job_.drawing, job_.to_device, boxes_, whole_.AsBox(), account.pixels))
      return ERR_NO_MEMORY;
    SmoothLines smooth(job_.drawing, whole_.AsBox(), account.lines);
    job_.smooth_left = &smooth.left;
    const int32_t status = PaintTiles(area);
    job_.smooth_left = nullptr;
    return status;
  }

 private:
  int32_t PaintTiles(const PixelArea& area) {
    columns_ = std::min(area.width(), kTileSide);
    pixels_ = ClearPixels(static_cast<size_t>(columns_ * std::min(area.height(), kTileSide)));
    for (int64_t top = area.top; top < area.bottom; top += kTileSide) {
      for (int64_t left = area.left; left < area.right; left += kTileSide) {
        const PixelArea tile{left, top, std::min(left + kTileSide, area.right),
                             std::min(top + kTileSide, area.bottom)};
        if (!PaintTile(tile)) return ERR_NO_MEMORY;
      }
    }
    return SUCCESS;
  }

  bool PaintTile(const PixelArea& tile) {
    const Box visible = tile.AsBox();
    const auto meets = [&](const Box& box) { return !Common(box, visible).IsEmpty(); };
    if (std::none_of(boxes_.begin(), boxes_.end(), meets)) return true;
    // Rows of all tiles are as long as those of the widest.
    const auto canvas = Canvas::OnPixels(pixels_.get(), static_cast<int32_t>(columns_),
                                         static_cast<int32_t>(tile.height()), tile.left, tile.top);
    if (canvas == nullptr) return false;
    vec::Paint(job_, boxes_, visible, *canvas);
    const PixelArea touched = PixelsOf(canvas->TakeTouched(), tile);
    if (!canvas->IsSound()) return false;
    if (!touched.IsEmpty()) Put(tile, touched, *canvas->Touched());
    return true;
  }

  // Puts what was touched over the bitmap, and leaves the pixels clear for the next tile.
  void Put(const PixelArea& tile, const PixelArea& touched, const TouchedRows& cells) {
    const auto last = static_cast<uint32_t>(tile.width());
    for (int64_t y = touched.top; y < touched.bottom; ++y) {
      uint32_t* const row = pixels_.get() + (y - tile.top) * columns_;
      cells.ForEachRun(static_cast<int32_t>(y - tile.top), [&](uint32_t first, uint32_t count) {
        if (first < last) {
          blender_.BlendAndClear(static_cast<uint32_t>(y), static_cast<uint32_t>(tile.left) + first,
                                 std::min(count, last - first), row + first);
        }
        // Nothing is shown of what lies beyond a tile that is less wide than the others.
        if (first + count > last)
          std::fill_n(row + std::max(first, last), first + count - std::max(first, last), 0u);
      });
    }
  }

  PixelArea whole_;
  std::vector<Box> boxes_;
  PaintJob job_;
  RowBlender blender_;
  int64_t columns_ = 0;
  PixelsOwner pixels_;
};

}  // namespace

int32_t PaintOver(const PixelView& target, const Drawing& drawing, const Affine& to_device,
                  PaintAccount& account) noexcept {
  try {
    return Overlay(target, drawing, to_device).Paint(account);
  } catch (const std::bad_alloc&) {
    return ERR_NO_MEMORY;
  } catch (const std::length_error&) {
    return ERR_NO_MEMORY;
  }
}

}  // namespace tavi::host::vec

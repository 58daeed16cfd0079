// Drawings painted one unit to a pixel, and questions about the pixels.
#pragma once

#include <algorithm>
#include <cstdint>
#include <memory>
#include <utility>
#include <vector>

#include "VectorTest.h"

namespace tavi::test {

inline constexpr uint32_t kPaper = 0xFFFFFF;
inline constexpr uint32_t kRed = 0x0000FF;
inline constexpr uint32_t kGreen = 0x00FF00;
inline constexpr uint32_t kBlue = 0xFF0000;
inline constexpr uint32_t kBlack = 0;

// Whole pixels: left and top inside, right and bottom just outside. Nothing found: all 0.
struct Area {
  int left = 0;
  int top = 0;
  int right = 0;
  int bottom = 0;
  int width() const { return right - left; }
  int height() const { return bottom - top; }
};

// A 24-bit bitmap of white paper.
class Paper {
 public:
  explicit Paper(uint32_t width = 100, uint32_t height = 100)
      : bitmap_(std::make_unique<Bitmap>(width, height, 24)) {
    HostFillBitmap(bitmap().get(), kPaper);
  }

  int32_t Paint(host::vec::Drawing drawing, const HostRect& rectangle = {0, 0, 0, 0}) {
    Vector vector(std::move(drawing));
    const Context context(bitmap());
    return HostVecPaint(context.get(), vector.get(), 0, 0, 0, 0, &rectangle, 0, 0);
  }

  // 0x00BBGGRR.
  uint32_t At(int x, int y) const {
    const std::vector<uint8_t> row = bitmap_->Row(static_cast<uint32_t>(y));
    const auto at = static_cast<size_t>(x) * 3;
    return static_cast<uint32_t>(row[at]) << 16 | static_cast<uint32_t>(row[at + 1]) << 8 | row[at + 2];
  }

  // What is covered by anything but paper.
  Area Inked() const {
    return Find([](uint32_t color) { return color != kPaper; });
  }
  Area Find(uint32_t wanted) const {
    return Find([wanted](uint32_t color) { return color == wanted; });
  }
  int Count(uint32_t wanted) const {
    int count = 0;
    ForAll([&](int, int, uint32_t color) { count += color == wanted ? 1 : 0; });
    return count;
  }
  // Pixels that a black drawing covers, in parts.
  double Ink() const {
    double ink = 0;
    ForAll([&](int, int, uint32_t color) { ink += (255 - (color & 0xFF)) / 255.0; });
    return ink;
  }

  Bitmap& bitmap() { return *bitmap_; }

 private:
  template <class Visit>
  void ForAll(Visit visit) const {
    for (uint32_t y = 0; y < (*bitmap_)->height; ++y) {
      const std::vector<uint8_t> row = bitmap_->Row(y);
      for (size_t x = 0; x < (*bitmap_)->width; ++x) {
        visit(static_cast<int>(x), static_cast<int>(y),
              static_cast<uint32_t>(row[3 * x]) << 16 | static_cast<uint32_t>(row[3 * x + 1]) << 8 |
                  row[3 * x + 2]);
      }
    }
  }
  template <class Wanted>
  Area Find(Wanted wanted) const {
    Area area;
    ForAll([&](int x, int y, uint32_t color) {
      if (!wanted(color)) return;
      const bool first = area.width() == 0;
      area.left = first ? x : std::min(area.left, x);
      area.top = first ? y : std::min(area.top, y);
      area.right = first ? x + 1 : std::max(area.right, x + 1);
      area.bottom = first ? y + 1 : std::max(area.bottom, y + 1);
    });
    return area;
  }

  std::unique_ptr<Bitmap> bitmap_;
};

// Drawings put together attribute by attribute.
struct Sketch {
  host::vec::Drawing drawing;

  uint32_t Add(host::vec::Stroke stroke) { return Put(drawing.strokes, std::move(stroke)); }
  uint32_t Add(host::vec::Fill fill) { return Put(drawing.fills, std::move(fill)); }
  uint32_t Add(host::vec::TextStyle style) { return Put(drawing.texts, std::move(style)); }
  uint32_t Line(uint32_t color, double width) {
    host::vec::Stroke stroke;
    stroke.color = color;
    stroke.width = width;
    return Add(stroke);
  }
  uint32_t Solid(uint32_t color) {
    host::vec::Fill fill;
    fill.color = color;
    return Add(fill);
  }
  void Draw(host::vec::Shape shape, uint32_t clip = host::vec::kNone) {
    drawing.objects.push_back({std::move(shape), 0, clip});
  }

 private:
  template <class Attribute>
  static uint32_t Put(std::vector<Attribute>& pool, Attribute attribute) {
    pool.push_back(std::move(attribute));
    return static_cast<uint32_t>(pool.size() - 1);
  }
};

}  // namespace tavi::test

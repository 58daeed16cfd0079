#include "TaviVector/PaintFills.h"

#include <array>
#include <utility>

#include "TaviVector/PaintBudget.h"
#include "TaviVector/Sampling.h"

namespace tavi::host::vec {
namespace {

constexpr double kHatchSpacing = 7;  // from line to line, in device units
constexpr double kMostHatchLines = 10'000;

Box BoxOf(const Rings& rings) {
  Box box;
  for (const auto& ring : rings) Include(box, BoxOf(std::span<const Point>(ring)));
  return box;
}

void AddRings(const Scene& scene, const Rings& rings) {
  for (const auto& ring : rings) AddArea(scene, ring);
}

// One bit for each pixel of the canvas: whether its middle is inside. It is when an odd number of edges cross its row to
// the left of it, which takes time in proportion to the crossings and the pixels alone.
class ParityMask {
 public:
  explicit ParityMask(const PixelRaster& raster)
      : corner_(raster.corner),
        columns_(raster.columns),
        rows_(raster.rows),
        words_(static_cast<size_t>(raster.columns) / 64 + 1),
        bits_(words_ * static_cast<size_t>(raster.rows)) {}

  void Cross(const std::vector<Point>& ring) {
    for (size_t i = 0; i < ring.size(); ++i) {
      Cross(ring[i] - corner_, ring[i + 1 < ring.size() ? i + 1 : 0] - corner_);
    }
  }

  template <class Inside>
  void ForInside(Inside inside) const {
    for (int32_t row = 0; row < rows_; ++row) {
      const uint64_t* const words = &bits_[static_cast<size_t>(row) * words_];
      uint64_t within = 0;
      for (int32_t column = 0; column < columns_; ++column) {
        within ^= words[column / 64] >> (column % 64) & 1;
        if (within != 0) inside(column, row);
      }
    }
  }

 private:
  // The first row or column whose middle is not before the place.
  static int32_t From(double place, int32_t count) {
    const double clamped = std::clamp(place + 0.5, 0.0, static_cast<double>(count));
    return static_cast<int32_t>(clamped);
  }

  void Cross(Point from, Point to) {
    if (from.y > to.y) std::swap(from, to);
    const int32_t last = From(to.y, rows_);
    const double slope = (to.x - from.x) / (to.y - from.y);
    for (int32_t row = From(from.y, rows_); row < last; ++row) {
      const int32_t column = From(from.x + slope * (row + 0.5 - from.y), columns_);
      uint64_t& word = bits_[static_cast<size_t>(row) * words_ + static_cast<size_t>(column / 64)];
      word ^= uint64_t{1} << (column % 64);
    }
  }

  Point corner_;
  int32_t columns_;
  int32_t rows_;
  size_t words_;
  std::vector<uint64_t> bits_;
};

// Fills with the colours that `color` (device point to pixel) gives.
template <class ColorAt>
void FillRough(const Scene& scene, const Rings& rings, ColorAt color) {
  const PixelRaster raster(scene, BoxOf(rings));
  if (raster.columns <= 0 || raster.rows <= 0) return;
  ParityMask mask(raster);
  for (const auto& ring : rings) mask.Cross(ring);
  Image image{raster.columns, raster.rows, {}};
  image.pixels.resize(static_cast<size_t>(raster.columns) * static_cast<size_t>(raster.rows));
  mask.ForInside([&](int32_t column, int32_t row) {
    const Point middle = raster.corner + Point{column + 0.5, row + 0.5};
    image.pixels[static_cast<size_t>(row) * static_cast<size_t>(raster.columns) +
                 static_cast<size_t>(column)] = color(middle);
  });
  const Point low = raster.corner;
  const Point high = low + Point{static_cast<double>(raster.columns), static_cast<double>(raster.rows)};
  scene.canvas.AddRing(std::array{low, Point{high.x, low.y}, high, Point{low.x, high.y}});
  scene.canvas.FillWith(image, raster.corner, raster.side);
}

bool IsRough(const Scene& scene, const Rings& rings) {
  if (!scene.on_pixels) return false;
  double crossings = 0;
  for (const auto& ring : rings) {
    const auto at = [&ring](size_t i) { return ring[i]; };
    crossings += CountCrossings(ring.size(), at, scene.visible.low.y, scene.visible.high.y);
  }
  return IsCrowded(crossings, AreaOf(Common(BoxOf(rings), scene.visible)));
}

void FillSolid(const Scene& scene, const Rings& rings, uint32_t color) {
  if (IsRough(scene, rings)) {
    FillRough(scene, rings, [pixel = Opaque(color)](Point) { return pixel; });
    return;
  }
  AddRings(scene, rings);
  scene.canvas.Fill(color, FillRule::kEvenOdd);
}

template <class ColorAt>
void FillColored(const Scene& scene, const Rings& rings, ColorAt color) {
  if (IsRough(scene, rings)) {
    FillRough(scene, rings, color);
    return;
  }
  AddRings(scene, rings);
  FillSampled(scene, BoxOf(rings), color);
}

void OutlineArea(LinePainter& lines, const Rings& rings, uint32_t color) {
  LineStyle style;
  style.color = color;
  for (const auto& ring : rings) lines.Draw(ring, true, style);
  lines.Flush();
}

// Parallel lines over the box: those where normal . p is a multiple of the spacing away from the origin.
void DrawHatchLines(const Scene& scene, const Box& box, Point origin, Point normal, uint32_t color) {
  const Point along{-normal.y, normal.x};
  const Point corners[] = {box.low, box.high, {box.low.x, box.high.y}, {box.high.x, box.low.y}};
  Point across{1, -1};  // least and greatest distance of the corners, then the same along the lines
  Point reach{1, -1};
  for (const Point corner : corners) {
    const double d = Dot(corner - origin, normal);
    const double l = Dot(corner - origin, along);
    across = across.x > across.y ? Point{d, d} : Point{std::min(across.x, d), std::max(across.y, d)};
    reach = reach.x > reach.y ? Point{l, l} : Point{std::min(reach.x, l), std::max(reach.y, l)};
  }
  const double first = std::ceil(across.x / kHatchSpacing);
  const double last = std::min(std::floor(across.y / kHatchSpacing), first + kMostHatchLines);
  const auto count = last >= first ? static_cast<int32_t>(last - first) + 1 : 0;
  for (int32_t i = 0; i < count; ++i) {
    const Point on = origin + ((first + i) * kHatchSpacing) * normal;
    scene.canvas.MoveTo(on + reach.x * along);
    scene.canvas.LineTo(on + reach.y * along);
  }
  if (!scene.canvas.HasPath()) return;
  LineStyle style;
  style.color = color;
  scene.canvas.Stroke(style);
}

// The directions across the lines of a hatch.
std::vector<Point> NormalsOf(const Scene& scene, Hatch hatch) {
  const double half = std::sqrt(0.5);
  // In device space y runs downward: a rising line goes along (1, -1), unless the picture is mirrored.
  const bool mirrored = Determinant(scene.to_device) > 0;
  const Point rising = mirrored ? Point{half, -half} : Point{half, half};
  const Point falling = mirrored ? Point{half, half} : Point{half, -half};
  switch (hatch) {
    case Hatch::kVertical:
      return {{1, 0}};
    case Hatch::kRising:
      return {rising};
    case Hatch::kFalling:
      return {falling};
    case Hatch::kCross:
      return {{0, 1}, {1, 0}};
    case Hatch::kDiagonalCross:
      return {rising, falling};
    default:
      return {{0, 1}};
  }
}

// Where the hatch's lines are computed pixel by pixel: work in proportion to the pixels, whatever the area's edges.
void HatchPixels(const Scene& scene, const Rings& rings, const Fill& fill) {
  // Lines along the axes run through the middles of pixels.
  const Point mapped = scene.Map(fill.origin);
  const Point origin{std::floor(mapped.x) + 0.5, std::floor(mapped.y) + 0.5};
  const std::vector<Point> normals = NormalsOf(scene, fill.hatch);
  FillColored(scene, rings, [&](Point p) {
    double nearest = kHatchSpacing;
    for (const Point normal : normals) {
      const double lines = Dot(p - origin, normal) / kHatchSpacing;
      nearest = std::min(nearest, std::abs(lines - FloorOf(lines + 0.5)) * kHatchSpacing);
    }
    return Premultiplied(fill.color, std::max(0.0, 1 - nearest));
  });
}

void HatchLines(const Scene& scene, const Rings& rings, const Fill& fill) {
  const Box box = Grown(Common(BoxOf(rings), scene.visible), 1);
  if (box.IsEmpty()) return;
  AddRings(scene, rings);
  scene.canvas.PushClip(FillRule::kEvenOdd);
  for (const Point normal : NormalsOf(scene, fill.hatch)) {
    DrawHatchLines(scene, box, scene.Map(fill.origin), normal, fill.color);
  }
  scene.canvas.PopClip();
}

void FillHatched(const Scene& scene, const Rings& rings, const Fill& fill) {
  if (fill.gap_color) FillSolid(scene, rings, *fill.gap_color);
  if (scene.on_pixels) {
    HatchPixels(scene, rings, fill);
  } else {
    HatchLines(scene, rings, fill);
  }
}

void FillPatterned(const Scene& scene, const Rings& rings, const Fill& fill) {
  const Pattern* const pattern = Find(scene.drawing.patterns, fill.pattern);
  const bool usable = pattern != nullptr && pattern->columns != 0 && pattern->rows != 0 &&
                      pattern->colors.size() >= uint64_t{pattern->columns} * pattern->rows;
  if (!usable) {
    FillSolid(scene, rings, fill.color);
    return;
  }
  const Point along = scene.MapVector(fill.pattern_along);
  const Point up = scene.MapVector(fill.pattern_up);
  const Point origin = scene.Map(fill.origin);
  Affine to_copies;
  if (!Invert({along.x, up.x, origin.x, along.y, up.y, origin.y}, &to_copies)) {
    FillSolid(scene, rings, pattern->colors[0]);
    return;
  }
  const double columns = pattern->columns;
  const double rows = pattern->rows;
  FillColored(scene, rings, [&](Point p) {
    const Point copy = Tame(to_copies.Apply(p));
    const double column = std::min((copy.x - FloorOf(copy.x)) * columns, columns - 1);
    const double row = std::min((1 - (copy.y - FloorOf(copy.y))) * rows, rows - 1);
    return Opaque(pattern->colors[static_cast<size_t>(row) * pattern->columns + static_cast<size_t>(column)]);
  });
}

}  // namespace

void AddArea(const Scene& scene, std::vector<Point> ring) {
  const Box box = BoxOf(std::span<const Point>(ring));
  if (!scene.IsVisible(Grown(box, 1))) return;
  if (!Contains(Grown(scene.visible, kNear), box)) ring = ClipRing(Grown(scene.visible, 16), std::move(ring));
  scene.canvas.AddRing(ring);
}

void PaintInterior(const Scene& scene, LinePainter& lines, const Rings& rings, const Fill& fill) {
  if (fill.interior == Interior::kEmpty || !scene.IsVisible(Grown(BoxOf(rings), 2))) return;
  lines.Flush();
  switch (fill.interior) {
    case Interior::kHollow:
      OutlineArea(lines, rings, fill.color);
      break;
    case Interior::kPattern:
      FillPatterned(scene, rings, fill);
      break;
    case Interior::kHatch:
      FillHatched(scene, rings, fill);
      break;
    default:
      FillSolid(scene, rings, fill.color);
      break;
  }
}

}  // namespace tavi::host::vec

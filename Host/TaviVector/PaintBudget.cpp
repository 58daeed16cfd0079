#include "TaviVector/PaintBudget.h"

#include <algorithm>
#include <cmath>

#include "TaviKernel/Limits.h"
#include "TaviVector/Geometry.h"
#include "TaviVector/Scene.h"

namespace tavi::host::vec {
namespace {

// Whole pixels, rounded up. What is too large for the number, or none, is the largest.
uint64_t AsCount(double pixels) {
  constexpr double kBeyond = 1.8e19;
  return pixels < kBeyond ? static_cast<uint64_t>(std::ceil(pixels)) : kBeyondNumbers;
}

// The pixels of one object of which `seen` is on the canvas.
class Cost {
 public:
  Cost(const Drawing& drawing, const Affine& to_device, double scale, const Box& seen)
      : drawing_(drawing),
        to_device_(to_device),
        scale_(scale),
        seen_(seen),
        area_(AreaOf(seen)),
        around_(Around(seen)) {}

  double operator()(const Polyline& line) const { return OfLines(line.stroke, line.points, 1); }
  double operator()(const Segments& lines) const { return OfLines(lines.stroke, lines.points, 2); }
  double operator()(const Polygon& polygon) const {
    double cost = OfFill(polygon.style.fill);
    if (cost > 0) cost += OfCrossings(polygon);
    for (const Ring& ring : polygon.rings) cost += OfLines(polygon.style.edge, ring.points, 1);
    return cost;
  }
  double operator()(const Markers& markers) const {
    const MarkerStyle* const style = Find(drawing_.markers, markers.marker);
    if (style == nullptr) return 0;
    const double side = Tame(drawing_.SizeOf(*style)) * scale_;
    return static_cast<double>(markers.points.size()) * std::min(area_, side * side);
  }
  double operator()(const Text&) const { return area_; }
  double operator()(const CellArray&) const { return area_; }
  double operator()(const Rectangle& shape) const { return OfArea(shape.style); }
  double operator()(const Ellipse& shape) const { return OfArea(shape.style); }
  double operator()(const Arc& shape) const { return OfArea(shape.style) + OfOutline(shape.stroke); }
  double operator()(const Figure& shape) const { return OfArea(shape.style) + OfOutline(shape.stroke); }

 private:
  // In units, as the lengths of lines are.
  double Around(const Box& seen) const {
    return seen.IsEmpty() ? 0 : 2 * (seen.high.x - seen.low.x + seen.high.y - seen.low.y) / scale_;
  }
  double OfArea(const AreaStyle& style) const { return OfFill(style.fill) + OfOutline(style.edge); }
  double OfFill(uint32_t index) const {
    const Fill* const fill = Find(drawing_.fills, index);
    if (fill == nullptr || fill->interior == Interior::kEmpty || fill->interior == Interior::kHollow)
      return 0;
    return fill->interior == Interior::kSolid ? area_ : kOfHatch * area_;
  }
  // Of smooth edges, or else of going over the pixels one by one.
  double OfCrossings(const Polygon& polygon) const {
    constexpr double kOfSmooth = 48;
    constexpr double kOfRough = 4;
    double crossings = 0;
    for (const Ring& ring : polygon.rings) {
      const auto at = [&](size_t i) { return to_device_.Apply(Tame(ring.points[i])); };
      crossings += CountCrossings(ring.points.size(), at, seen_.low.y, seen_.high.y);
    }
    return IsCrowded(crossings, area_) ? kOfHatch * area_ + kOfRough * crossings : kOfSmooth * crossings;
  }
  // The pixels that a pixel of a line stands for: rough lines of one pixel are drawn apart.
  double WidthOf(uint32_t index) const {
    constexpr double kThin = 2;
    constexpr double kOfThin = 4;
    constexpr double kOfWide = 32;
    const Stroke* const stroke = Find(drawing_.strokes, index);
    if (stroke == nullptr) return 0;
    const double width = Tame(drawing_.WidthOf(*stroke)) * scale_;
    return width > kThin ? std::max(width, kOfWide) : kOfThin;
  }
  double OfOutline(uint32_t stroke) const { return std::min(2 * area_, WidthOf(stroke) * around_ * scale_); }
  // Of the pieces between points, none of which can cover more than what is seen of the object.
  double OfLines(uint32_t stroke, std::span<const Point> points, size_t step) const {
    const double width = WidthOf(stroke);
    double cost = 0;
    for (size_t i = 0; width > 0 && i + 1 < points.size(); i += step) {
      const Point from = Tame(points[i]);
      const Point to = Tame(points[i + 1]);
      cost += std::min(area_, std::hypot(to.x - from.x, to.y - from.y) * scale_ * width);
    }
    return cost;
  }

  // What lines and patterns take of the time, against a flat colour.
  static constexpr double kOfHatch = 12;

  const Drawing& drawing_;
  const Affine& to_device_;
  double scale_;
  Box seen_;
  double area_;
  double around_;
};

}  // namespace

SmoothLines::SmoothLines(const Drawing& drawing, const Box& canvas, double& spent)
    : most_(std::max(kMostSmooth, kSmoothOfCanvas * AreaOf(canvas)) - spent), spent_(spent) {
  left = most_ + kSmoothOfObject * static_cast<double>(drawing.objects.size());
}

SmoothLines::~SmoothLines() {
  spent_ += std::clamp(most_ - left, 0.0, std::max(most_, 0.0));
}

bool IsCrowded(double crossings, double area) {
  constexpr double kMany = 100'000;
  constexpr double kMost = 1'000'000;
  constexpr double kOfArea = 0.25;
  return crossings > kMost || (crossings > kMany && crossings > kOfArea * area);
}

bool SpendBudget(const Drawing& drawing, const Affine& to_device, std::span<const Box> boxes,
                 const Box& canvas, double& spent) {
  const double scale = std::max(ScaleOf(to_device), 1e-9);
  const auto limit = static_cast<double>(HostGetLimit(HOST_LIMIT_PAINT));
  const double of_objects = kPixelsOfObject * static_cast<double>(drawing.objects.size());
  const double earned = of_objects + std::max(kFreeLayers * AreaOf(canvas) - limit, 0.0);
  double total = spent;
  for (size_t i = 0; i < boxes.size() && total <= limit + earned; ++i) {
    const Box seen = Common(boxes[i], canvas);
    if (!seen.IsEmpty()) total += std::visit(Cost(drawing, to_device, scale, seen), drawing.objects[i].shape);
  }
  if (!IsWithin(HOST_LIMIT_PAINT, AsCount(total), AsCount(earned))) return false;
  spent += std::max(total - spent - of_objects, 0.0);
  return true;
}

}  // namespace tavi::host::vec

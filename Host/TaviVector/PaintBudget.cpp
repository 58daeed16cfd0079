#include "TaviVector/PaintBudget.h"

#include <algorithm>
#include <cmath>

#include "TaviVector/Geometry.h"
#include "TaviVector/Scene.h"

namespace tavi::host::vec {
namespace {

double AreaOf(const Box& box) {
  return box.IsEmpty() ? 0 : (box.high.x - box.low.x) * (box.high.y - box.low.y);
}

// The pixels of one object of which `seen` is on the canvas.
class Cost {
 public:
  Cost(const Drawing& drawing, double scale, const Box& seen)
      : drawing_(drawing), scale_(scale), area_(AreaOf(seen)), around_(Around(seen)) {}

  double operator()(const Polyline& line) const { return OfStroke(line.stroke, LengthOf(line.points, 1)); }
  double operator()(const Segments& lines) const { return OfStroke(lines.stroke, LengthOf(lines.points, 2)); }
  double operator()(const Polygon& polygon) const {
    double length = 0;
    for (const Ring& ring : polygon.rings) length += LengthOf(ring.points, 1);
    return OfFill(polygon.style.fill) + OfStroke(polygon.style.edge, length);
  }
  double operator()(const Markers& markers) const {
    const MarkerStyle* const style = Find(drawing_.markers, markers.marker);
    if (style == nullptr) return 0;
    const double side = drawing_.SizeOf(*style) * scale_;
    return static_cast<double>(markers.points.size()) * std::min(area_, side * side);
  }
  double operator()(const Text&) const { return area_; }
  double operator()(const CellArray&) const { return area_; }
  double operator()(const Rectangle& shape) const { return OfArea(shape.style); }
  double operator()(const Ellipse& shape) const { return OfArea(shape.style); }
  double operator()(const Arc& shape) const { return OfArea(shape.style) + OfStroke(shape.stroke, around_); }
  double operator()(const Figure& shape) const {
    return OfArea(shape.style) + OfStroke(shape.stroke, around_);
  }

 private:
  // Of the pieces between points, none longer than what is seen of the object is across.
  double LengthOf(std::span<const Point> points, size_t step) const {
    double length = 0;
    for (size_t i = 0; i + 1 < points.size(); i += step) {
      const Point from = Tame(points[i]);
      const Point to = Tame(points[i + 1]);
      length += std::min(std::hypot(to.x - from.x, to.y - from.y), around_ / 2);
    }
    return length;
  }
  // In units, as the lengths of lines are.
  double Around(const Box& seen) const {
    return seen.IsEmpty() ? 0 : 2 * (seen.high.x - seen.low.x + seen.high.y - seen.low.y) / scale_;
  }
  double OfArea(const AreaStyle& style) const { return OfFill(style.fill) + OfStroke(style.edge, around_); }
  double OfFill(uint32_t index) const {
    constexpr double kOfHatch = 3;  // lines and patterns cost more than a flat colour
    const Fill* const fill = Find(drawing_.fills, index);
    if (fill == nullptr || fill->interior == Interior::kEmpty || fill->interior == Interior::kHollow)
      return 0;
    return fill->interior == Interior::kSolid ? area_ : kOfHatch * area_;
  }
  double OfStroke(uint32_t index, double length) const {
    constexpr double kThin = 4;
    const Stroke* const stroke = Find(drawing_.strokes, index);
    if (stroke == nullptr) return 0;
    const double width = drawing_.WidthOf(*stroke) * scale_;
    return width < kThin ? 0 : width * length * scale_;
  }

  const Drawing& drawing_;
  double scale_;
  double area_;
  double around_;
};

}  // namespace

bool IsWithinBudget(const Drawing& drawing, const Affine& to_device, std::span<const Box> boxes,
                    const Box& canvas) {
  const double scale = std::max(ScaleOf(to_device), 1e-9);
  double left = std::max(kFreePixels, kFreeLayers * AreaOf(canvas)) +
                kPixelsOfObject * static_cast<double>(drawing.objects.size());
  for (size_t i = 0; i < boxes.size() && left >= 0; ++i) {
    const Box seen = Common(boxes[i], canvas);
    if (!seen.IsEmpty()) left -= std::visit(Cost(drawing, scale, seen), drawing.objects[i].shape);
  }
  return left >= 0;
}

}  // namespace tavi::host::vec

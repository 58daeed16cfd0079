// What objects cover.
#include <array>
#include <variant>

#include "TaviVector/Geometry.h"
#include "TaviVector/Painter.h"
#include "TaviVector/Scene.h"
#include "TaviVector/TextLayout.h"

namespace tavi::host::vec {
namespace {

Box TameBox(const Box& box) {
  return box.IsEmpty() ? box : Box{Tame(box.low), Tame(box.high)};
}

// centre + a cos t + b sin t for t of the sweep.
struct Sweep {
  Point centre;
  Point a;
  Point b;
  double start = 0;
  double sweep = kFullTurn;
};

// Its ends, and where it is farthest along an axis.
void IncludeArc(Box& box, const Sweep& arc) {
  const auto at = [&](double t) {
    Include(box, Tame(arc.centre + std::cos(t) * arc.a + std::sin(t) * arc.b));
  };
  at(arc.start);
  at(arc.start + arc.sweep);
  const double low = std::min(arc.start, arc.start + arc.sweep);
  const double high = std::max(arc.start, arc.start + arc.sweep);
  for (const double extreme : {std::atan2(arc.b.x, arc.a.x), std::atan2(arc.b.y, arc.a.y)}) {
    // Every half turn there is one.
    const double first = extreme + std::ceil((low - extreme) / std::numbers::pi) * std::numbers::pi;
    for (int i = 0; i < 3; ++i) {
      const double t = first + i * std::numbers::pi;
      if (t <= high) at(t);
    }
  }
}

// A cubic's ends, and where one of its coordinates turns.
void IncludeCurve(Box& box, Point from, const std::array<Point, 3>& curve) {
  const Point c1 = curve[0];
  const Point c2 = curve[1];
  const Point end = curve[2];
  const auto at = [&](double t) {
    if (!(t > 0 && t < 1)) return;
    const double u = 1 - t;
    Include(box, u * u * u * from + 3 * u * u * t * c1 + 3 * u * t * t * c2 + t * t * t * end);
  };
  const auto turns = [&](double p0, double p1, double p2, double p3) {
    const double a = p3 - 3 * p2 + 3 * p1 - p0;
    const double b = 2 * (p2 - 2 * p1 + p0);
    const double c = p1 - p0;
    if (a == 0) {
      if (b != 0) at(-c / b);
      return;
    }
    const double root = std::sqrt(std::max(b * b - 4 * a * c, 0.0));
    at((-b + root) / (2 * a));
    at((-b - root) / (2 * a));
  };
  turns(from.x, c1.x, c2.x, end.x);
  turns(from.y, c1.y, c2.y, end.y);
  Include(box, end);
}

// Measures shapes in the drawing's own space, or as they are painted in another one. There lines are as wide along both
// axes, whatever the scales of the two.
class Measurer {
 public:
  explicit Measurer(const Drawing& drawing) : drawing_(drawing) {}
  Measurer(const Drawing& drawing, const Affine& to_device)
      : drawing_(drawing), to_device_(to_device), scale_(ScaleOf(to_device)), painted_(true) {}

  Box Of(const Polyline& line) const { return Lines(line.points, false, line.stroke); }

  Box Of(const Segments& segments) const {
    Box box;
    if (Find(drawing_.strokes, segments.stroke) == nullptr) return box;
    IncludeAll(box, std::span(segments.points).first(segments.points.size() / 2 * 2));
    return Grown(box, Reach(segments.stroke));
  }

  Box Of(const Polygon& polygon) const {
    Box box;
    for (const Ring& ring : polygon.rings) Include(box, Area(ring.points, polygon.style));
    return box;
  }

  Box Of(const Rectangle& rectangle) const {
    const Point a = Tame(rectangle.corner);
    const Point b = Tame(rectangle.opposite);
    Box box;
    if (!IsSeen(rectangle.style)) return box;
    const std::array corners{a, Point{b.x, a.y}, b, Point{a.x, b.y}};
    // Turned ones have tips.
    if (painted_) return Area(corners, rectangle.style);
    IncludeAll(box, corners);
    return Grown(box, Reach(rectangle.style.edge));
  }

  Box Of(const Ellipse& ellipse) const {
    Box box;
    if (!IsSeen(ellipse.style)) return box;
    IncludeArc(box, {Map(ellipse.centre), MapVector(ellipse.a), MapVector(ellipse.b)});
    return Grown(box, Reach(ellipse.style.edge));
  }

  Box Of(const Arc& arc) const {
    Box box;
    const bool open = arc.closure == Closure::kOpen;
    if (open ? Find(drawing_.strokes, arc.stroke) == nullptr : !IsSeen(arc.style)) return box;
    const Sweep sweep{Map(arc.centre), MapVector(arc.a), MapVector(arc.b), Tame(arc.start),
                      TameSweep(arc.sweep)};
    IncludeArc(box, sweep);
    if (arc.closure == Closure::kPie) Include(box, sweep.centre);
    box = Grown(box, Reach(open ? arc.stroke : arc.style.edge));
    if (!open) Include(box, Outline(Corners(sweep, arc.closure), true, arc.style.edge));
    return box;
  }

  Box Of(const Figure& figure) const {
    const bool area = figure.style.fill != kNone || figure.style.edge != kNone;
    Box box;
    if (area ? !IsSeen(figure.style) : Find(drawing_.strokes, figure.stroke) == nullptr) return box;
    for (const Contour& contour : figure.contours) {
      Point from = Map(contour.start);
      Include(box, from);
      for (const auto& [c1, c2, end] : contour.curves) {
        IncludeCurve(box, from, {Map(c1), Map(c2), Map(end)});
        from = Map(end);
      }
    }
    const uint32_t stroke = area ? figure.style.edge : figure.stroke;
    box = Grown(box, Reach(stroke));
    for (const Contour& contour : figure.contours) {
      Include(box, Outline(Corners(contour), area || contour.closed, stroke));
    }
    return box;
  }

  Box Of(const Markers& markers) const {
    Box box;
    const MarkerStyle* const style = Find(drawing_.markers, markers.marker);
    if (style == nullptr) return box;
    IncludeAll(box, markers.points);
    double size = style->type == MarkerType::kDot ? 0 : Tame(drawing_.SizeOf(*style) * scale_);
    if (painted_) size *= 1 + kLineOfMarker;
    return Grown(box, std::max(size, 0.0) / 2);
  }

  Box Of(const Text& text) const {
    const LaidText laid = LayOut(drawing_, text);
    if (!painted_) return Transformed(laid.extent, laid.to_drawing);
    return TouchedBy(laid, Chained(laid.to_drawing, to_device_));
  }

  Box Of(const CellArray& cells) const {
    const Point p = Tame(cells.corner);
    const Point q = Tame(cells.opposite);
    const Point r = Tame(cells.row_end);
    Box box;
    if (cells.columns == 0 || cells.rows == 0) return box;
    IncludeAll(box, std::array{p, q, r, p + q - r});
    return box;
  }

 private:
  Point Map(Point p) const { return painted_ ? Tame(to_device_.Apply(Tame(p))) : Tame(p); }
  Point MapVector(Point v) const { return painted_ ? Tame(to_device_.ApplyVector(Tame(v))) : Tame(v); }
  void IncludeAll(Box& box, std::span<const Point> points) const {
    for (const Point p : points) Include(box, Map(p));
  }

  // A curve with corners, as short lines.
  static std::vector<Point> Corners(const Sweep& arc, Closure closure) {
    const double tolerance = (Length(arc.a) + Length(arc.b)) / 10'000;
    std::vector<Point> points = FlattenArc(arc.centre, arc.a, arc.b, arc.start, arc.sweep, tolerance);
    if (closure == Closure::kPie) points.push_back(arc.centre);
    return points;
  }

  std::vector<Point> Corners(const Contour& contour) const {
    std::vector<Point> points{Map(contour.start)};
    for (const auto& [c1, c2, end] : contour.curves) {
      const std::array curve{Map(c1), Map(c2), Map(end)};
      const Point from = points.back();
      const double size = Length(curve[0] - from) + Length(curve[1] - curve[0]) + Length(curve[2] - curve[1]);
      FlattenCurve(from, curve, std::max(size / 10'000, 1e-9), &points);
    }
    return points;
  }

  // Half the width of a stroke, 0 of none.
  double HalfWidth(uint32_t index) const {
    const Stroke* const stroke = Find(drawing_.strokes, index);
    return stroke != nullptr ? std::max(Tame(drawing_.WidthOf(*stroke) * scale_), 0.0) / 2 : 0;
  }

  // How far a line reaches around its points, joins aside: the corners of square ends lie beyond half its width.
  double Reach(uint32_t index) const {
    const Stroke* const stroke = Find(drawing_.strokes, index);
    const bool square = painted_ && stroke != nullptr && stroke->cap == LineCap::kSquare;
    return HalfWidth(index) * (square ? std::numbers::sqrt2 : 1);
  }

  // The cells of the characters and what glyphs have beyond them, the strokes of those that are drawn as lines included.
  static Box TouchedBy(const LaidText& laid, const Affine& to_device) {
    Box box = Transformed(laid.extent, to_device);
    for (const PlacedGlyph& placed : laid.glyphs) {
      const Affine by = Chained(placed.to_text, to_device);
      const double line = placed.glyph->strokes.empty() ? 0 : ScaleOf(by) * kHersheyLine;
      Include(box, Grown(Transformed(placed.glyph->box, by), line / 2));
    }
    return box;
  }

  bool IsSeen(const AreaStyle& style) const {
    const Fill* const fill = Find(drawing_.fills, style.fill);
    return (fill != nullptr && fill->interior != Interior::kEmpty) ||
           Find(drawing_.strokes, style.edge) != nullptr;
  }

  Box Area(std::span<const Point> points, const AreaStyle& style) const {
    if (!IsSeen(style)) return {};
    if (Find(drawing_.strokes, style.edge) != nullptr) return Lines(points, true, style.edge);
    Box box;
    IncludeAll(box, points);
    return box;
  }

  Box Lines(std::span<const Point> points, bool closed, uint32_t index) const {
    std::vector<Point> mapped;
    mapped.reserve(points.size());
    for (const Point p : points) mapped.push_back(Map(p));
    return Outline(mapped, closed, index);
  }

  // The same of points that are mapped.
  Box Outline(std::span<const Point> points, bool closed, uint32_t index) const {
    Box box;
    const Stroke* const stroke = Find(drawing_.strokes, index);
    if (stroke == nullptr) return box;
    for (const Point p : points) Include(box, p);
    box = Grown(box, Reach(index));
    const double half = HalfWidth(index);
    if (stroke->join != LineJoin::kMitre || half == 0) return box;
    const size_t count = points.size();
    for (size_t i = closed ? 0 : 1; i + (closed ? 0 : 1) < count; ++i) {
      IncludeTip(box, points[(i + count - 1) % count], points[i], points[(i + 1) % count], half,
                 stroke->mitre_limit);
    }
    return box;
  }

  // The tip of the mitre at a corner.
  static void IncludeTip(Box& box, Point before, Point corner, Point behind, double half, double limit) {
    const double in_length = Length(corner - before);
    const double out_length = Length(behind - corner);
    if (!(in_length > 0 && out_length > 0)) return;
    const Point in = (1 / in_length) * (corner - before);
    const Point out = (1 / out_length) * (behind - corner);
    // Half the angle between the lines decides how far the tip reaches.
    const double sine = std::sqrt(std::max((1 - Dot(in, Point{-out.x, -out.y})) / 2, 0.0));
    const double least = 1 / std::clamp(Tame(limit), 1.0, 32.0);
    const Point outward = in - out;
    const double length = Length(outward);
    if (sine < least || !(length > 0)) return;
    Include(box, corner + (half / sine / length) * outward);
  }

  const Drawing& drawing_;
  Affine to_device_;
  double scale_ = 1;
  bool painted_ = false;
};

}  // namespace

Box BoundsOf(const Drawing& drawing, const Object& object) {
  const Measurer measurer(drawing);
  Box box = std::visit([&](const auto& shape) { return measurer.Of(shape); }, object.shape);
  const Box* const clip = Find(drawing.clips, object.clip);
  if (clip != nullptr) box = Common(box, *clip);
  return box.IsEmpty() ? Box() : TameBox(box);
}

Box PaintedBounds(const Drawing& drawing, const Object& object, const Affine& to_device) {
  const Measurer measurer(drawing, to_device);
  Box box = std::visit([&](const auto& shape) { return measurer.Of(shape); }, object.shape);
  const Box* const clip = Find(drawing.clips, object.clip);
  if (clip != nullptr) box = Common(box, Transformed(TameBox(*clip), to_device));
  return box.IsEmpty() ? Box() : TameBox(box);
}

Box BoundsOf(const Drawing& drawing) {
  Box bounds;
  for (const Object& object : drawing.objects) {
    if (IsShown(drawing, object)) Include(bounds, BoundsOf(drawing, object));
  }
  return bounds;
}

}  // namespace tavi::host::vec

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

void IncludeAll(Box& box, std::span<const Point> points) {
  for (const Point p : points) Include(box, Tame(p));
}

// centre + a cos t + b sin t for t of the sweep: its ends, and where it is farthest along an axis.
void IncludeArc(Box& box, const Arc& arc) {
  const Point a = Tame(arc.a);
  const Point b = Tame(arc.b);
  const double start = Tame(arc.start);
  const double sweep = TameSweep(arc.sweep);
  const auto at = [&](double t) { Include(box, Tame(Tame(arc.centre) + std::cos(t) * a + std::sin(t) * b)); };
  at(start);
  at(start + sweep);
  const double low = std::min(start, start + sweep);
  const double high = std::max(start, start + sweep);
  for (const double extreme : {std::atan2(b.x, a.x), std::atan2(b.y, a.y)}) {
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
  const Point c1 = Tame(curve[0]);
  const Point c2 = Tame(curve[1]);
  const Point end = Tame(curve[2]);
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

class Measurer {
 public:
  explicit Measurer(const Drawing& drawing) : drawing_(drawing) {}

  Box Of(const Polyline& line) const { return Lines(line.points, false, line.stroke); }

  Box Of(const Segments& segments) const {
    Box box;
    if (Find(drawing_.strokes, segments.stroke) == nullptr) return box;
    IncludeAll(box, std::span(segments.points).first(segments.points.size() / 2 * 2));
    return Grown(box, HalfWidth(segments.stroke));
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
    Include(box, a);
    Include(box, b);
    return Grown(box, HalfWidth(rectangle.style.edge));
  }

  Box Of(const Ellipse& ellipse) const {
    Box box;
    if (!IsSeen(ellipse.style)) return box;
    IncludeArc(box, {ellipse.centre, ellipse.a, ellipse.b, 0, kFullTurn, Closure::kChord, kNone, {}});
    return Grown(box, HalfWidth(ellipse.style.edge));
  }

  Box Of(const Arc& arc) const {
    Box box;
    const bool open = arc.closure == Closure::kOpen;
    if (open ? Find(drawing_.strokes, arc.stroke) == nullptr : !IsSeen(arc.style)) return box;
    IncludeArc(box, arc);
    if (arc.closure == Closure::kPie) Include(box, Tame(arc.centre));
    box = Grown(box, HalfWidth(open ? arc.stroke : arc.style.edge));
    if (!open) Include(box, Lines(Corners(arc), true, arc.style.edge));
    return box;
  }

  Box Of(const Figure& figure) const {
    const bool area = figure.style.fill != kNone || figure.style.edge != kNone;
    Box box;
    if (area ? !IsSeen(figure.style) : Find(drawing_.strokes, figure.stroke) == nullptr) return box;
    for (const Contour& contour : figure.contours) {
      Point from = Tame(contour.start);
      Include(box, from);
      for (const auto& curve : contour.curves) {
        IncludeCurve(box, from, curve);
        from = Tame(curve[2]);
      }
    }
    const uint32_t stroke = area ? figure.style.edge : figure.stroke;
    box = Grown(box, HalfWidth(stroke));
    for (const Contour& contour : figure.contours) {
      Include(box, Lines(Corners(contour), area || contour.closed, stroke));
    }
    return box;
  }

  Box Of(const Markers& markers) const {
    Box box;
    const MarkerStyle* const style = Find(drawing_.markers, markers.marker);
    if (style == nullptr) return box;
    IncludeAll(box, markers.points);
    const double size = style->type == MarkerType::kDot ? 0 : Tame(drawing_.SizeOf(*style));
    return Grown(box, std::max(size, 0.0) / 2);
  }

  Box Of(const Text& text) const {
    const LaidText laid = LayOut(drawing_, text);
    return Transformed(laid.extent, laid.to_drawing);
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
  // A curve with corners, as short lines.
  static std::vector<Point> Corners(const Arc& arc) {
    const Point a = Tame(arc.a);
    const Point b = Tame(arc.b);
    const double tolerance = (Length(a) + Length(b)) / 10'000;
    std::vector<Point> points =
        FlattenArc(Tame(arc.centre), a, b, Tame(arc.start), TameSweep(arc.sweep), tolerance);
    if (arc.closure == Closure::kPie) points.push_back(Tame(arc.centre));
    return points;
  }

  static std::vector<Point> Corners(const Contour& contour) {
    std::vector<Point> points{Tame(contour.start)};
    for (const auto& [c1, c2, end] : contour.curves) {
      const std::array curve{Tame(c1), Tame(c2), Tame(end)};
      const Point from = points.back();
      const double size = Length(curve[0] - from) + Length(curve[1] - curve[0]) + Length(curve[2] - curve[1]);
      FlattenCurve(from, curve, std::max(size / 10'000, 1e-9), &points);
    }
    return points;
  }

  // Half the width of a stroke, 0 of none.
  double HalfWidth(uint32_t index) const {
    const Stroke* const stroke = Find(drawing_.strokes, index);
    return stroke != nullptr ? std::max(Tame(drawing_.WidthOf(*stroke)), 0.0) / 2 : 0;
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
    Box box;
    const Stroke* const stroke = Find(drawing_.strokes, index);
    if (stroke == nullptr) return box;
    IncludeAll(box, points);
    const double half = HalfWidth(index);
    box = Grown(box, half);
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
    before = Tame(before);
    corner = Tame(corner);
    behind = Tame(behind);
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
};

}  // namespace

Box BoundsOf(const Drawing& drawing, const Object& object) {
  const Measurer measurer(drawing);
  Box box = std::visit([&](const auto& shape) { return measurer.Of(shape); }, object.shape);
  const Box* const clip = Find(drawing.clips, object.clip);
  if (clip != nullptr) box = Common(box, *clip);
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

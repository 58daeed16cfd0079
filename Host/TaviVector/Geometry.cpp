#include "TaviVector/Geometry.h"

#include <utility>

namespace tavi::host::vec {
namespace {

constexpr double kMostArcSteps = 1 << 14;
constexpr double kMostCurveSteps = 1 << 10;

// Narrows [first, last], the part of the segment that is inside, by one side of the box: distance + t step >= 0.
bool NarrowBy(double distance, double step, double* first, double* last) {
  if (step == 0) return distance >= 0;
  const double t = -distance / step;
  if (step > 0) {
    *first = std::max(*first, t);
  } else {
    *last = std::min(*last, t);
  }
  return *first <= *last;
}

// One side of a box: the half-plane sign * (coordinate - limit) >= 0.
struct Side {
  bool upright;  // of y
  double sign;
  double limit;
  double Distance(Point p) const { return sign * ((upright ? p.y : p.x) - limit); }
};

std::vector<Point> ClipBySide(const Side& side, const std::vector<Point>& ring) {
  std::vector<Point> inside;
  inside.reserve(ring.size() + 8);
  for (size_t i = 0; i < ring.size(); ++i) {
    const Point from = ring[i];
    const Point to = ring[i + 1 < ring.size() ? i + 1 : 0];
    const double d0 = side.Distance(from);
    const double d1 = side.Distance(to);
    if (d0 >= 0) inside.push_back(from);
    if ((d0 < 0) == (d1 < 0)) continue;
    Point cut = from + (d0 / (d0 - d1)) * (to - from);
    (side.upright ? cut.y : cut.x) = side.limit;
    inside.push_back(cut);
  }
  return inside;
}

double StepsFor(double steps, double most) {
  return std::isnan(steps) ? 1 : std::clamp(std::ceil(steps), 1.0, most);
}

}  // namespace

Box Transformed(const Box& box, const Affine& by) {
  Box result;
  if (box.IsEmpty()) return result;
  for (const Point corner : {box.low, box.high, Point{box.low.x, box.high.y}, Point{box.high.x, box.low.y}}) {
    Include(result, Tame(by.Apply(corner)));
  }
  return result;
}

Affine Chained(const Affine& first, const Affine& second) {
  const Point x = second.ApplyVector({first.xx, first.yx});
  const Point y = second.ApplyVector({first.xy, first.yy});
  const Point origin = second.Apply({first.x0, first.y0});
  return {x.x, y.x, origin.x, x.y, y.y, origin.y};
}

double ScaleOf(const Affine& a) {
  const double scale = std::sqrt(std::abs(Determinant(a)));
  return std::isfinite(scale) ? std::min(scale, kFarthest) : 1;
}

bool Invert(const Affine& a, Affine* inverse) {
  const double determinant = Determinant(a);
  if (!std::isfinite(determinant) || determinant == 0) return false;
  const double factor = 1 / determinant;
  if (!std::isfinite(factor)) return false;
  inverse->xx = a.yy * factor;
  inverse->xy = -a.xy * factor;
  inverse->yx = -a.yx * factor;
  inverse->yy = a.xx * factor;
  const Point origin = inverse->ApplyVector({a.x0, a.y0});
  inverse->x0 = -origin.x;
  inverse->y0 = -origin.y;
  return std::isfinite(inverse->x0) && std::isfinite(inverse->y0);
}

bool ClipSegment(const Box& box, Point* from, Point* to) {
  const Point step = *to - *from;
  double first = 0;
  double last = 1;
  if (!NarrowBy(from->x - box.low.x, step.x, &first, &last)) return false;
  if (!NarrowBy(box.high.x - from->x, -step.x, &first, &last)) return false;
  if (!NarrowBy(from->y - box.low.y, step.y, &first, &last)) return false;
  if (!NarrowBy(box.high.y - from->y, -step.y, &first, &last)) return false;
  const Point start = *from;
  if (first > 0) *from = start + first * step;
  if (last < 1) *to = start + last * step;
  return true;
}

std::vector<Point> ClipRing(const Box& box, std::vector<Point> ring) {
  const Side sides[] = {
      {false, 1, box.low.x}, {false, -1, box.high.x}, {true, 1, box.low.y}, {true, -1, box.high.y}};
  for (const Side& side : sides) {
    if (ring.empty()) break;
    ring = ClipBySide(side, ring);
  }
  return ring;
}

std::vector<Point> FlattenArc(Point centre, Point a, Point b, double start, double sweep, double tolerance) {
  // The chord of an angle d is no farther from a circle of radius r than r (1 - cos(d / 2)).
  const double radius = Length(a) + Length(b);
  const double angle = radius > tolerance ? 2 * std::acos(1 - tolerance / radius) : 1;
  const auto steps =
      static_cast<int32_t>(StepsFor(std::max(std::abs(sweep) / angle, std::abs(sweep) * 1.3), kMostArcSteps));
  std::vector<Point> points;
  points.reserve(static_cast<size_t>(steps) + 1);
  for (int32_t i = 0; i <= steps; ++i) {
    const double t = start + sweep * (static_cast<double>(i) / steps);
    points.push_back(Tame(centre + std::cos(t) * a + std::sin(t) * b));
  }
  return points;
}

void FlattenCurve(Point from, const std::array<Point, 3>& curve, double tolerance,
                  std::vector<Point>* points) {
  const auto [c1, c2, end] = curve;
  // A cubic keeps within its second differences / 8 of its chord.
  const double bend = std::max(Length(from - 2 * c1 + c2), Length(c1 - 2 * c2 + end));
  const bool straight = c1 == from && c2 == end;
  const auto steps =
      straight ? 1 : static_cast<int32_t>(StepsFor(std::sqrt(0.75 * bend / tolerance), kMostCurveSteps));
  for (int32_t i = 1; i < steps; ++i) {
    const double t = static_cast<double>(i) / steps;
    const double u = 1 - t;
    points->push_back(u * u * u * from + 3 * u * u * t * c1 + 3 * u * t * t * c2 + t * t * t * end);
  }
  points->push_back(end);
}

}  // namespace tavi::host::vec

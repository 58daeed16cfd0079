// Circles, ellipses and their arcs.
#include <array>
#include <cmath>
#include <numbers>

#include "TaviFile/CgmInterpreter.h"

namespace tavi::host::cgm {
namespace {

constexpr double kTurn = 2 * std::numbers::pi;

Point operator-(Point a, Point b) {
  return {a.x - b.x, a.y - b.y};
}
double Cross(Point a, Point b) {
  return a.x * b.y - a.y * b.x;
}

// The way from one angle on to another, more than nothing and at most a full turn: equal rays give a full circle.
double Forward(double from, double to) {
  const double turn = std::fmod(to - from, kTurn);
  return turn <= 0 ? turn + kTurn : turn;
}

std::optional<vec::Closure> ReadClosure(Parameters& p) {
  const int64_t closure = p.Enumerated();
  if (!p.ok() || closure < 0 || closure > 1) return std::nullopt;
  return closure == 0 ? vec::Closure::kPie : vec::Closure::kChord;
}

void DrawArc(Interpreter& in, const vec::Arc& arc) {
  arc.closure == vec::Closure::kOpen ? in.DrawLine(arc) : in.DrawArea(arc);
}

vec::Arc CircleArc(Interpreter& in, Point centre, double radius) {
  vec::Arc arc;
  arc.centre = in.Map(centre);
  arc.a = in.MapVector({radius, 0});
  arc.b = in.MapVector({0, radius});
  return arc;
}

void Circle(Interpreter& in, Parameters& p) {
  const Point centre = p.At();
  const double radius = p.Vdc();
  if (!p.ok() || radius < 0) return;
  in.DrawArea(vec::Ellipse{in.Map(centre), in.MapVector({radius, 0}), in.MapVector({0, radius}), {}});
}

void Ellipse(Interpreter& in, Parameters& p) {
  const Point centre = p.At();
  const Point first = p.At();
  const Point second = p.At();
  if (!p.ok()) return;
  in.DrawArea(vec::Ellipse{in.Map(centre), in.MapVector(first - centre), in.MapVector(second - centre), {}});
}

struct ThreePoints {
  Point start, via, end;
};

// Points on a line have no circle.
std::optional<vec::Arc> ArcThrough(Interpreter& in, const ThreePoints& points) {
  const Point u = points.via - points.start;
  const Point v = points.end - points.start;
  const double cross = Cross(u, v);
  if (cross == 0) return std::nullopt;
  const double uu = u.x * u.x + u.y * u.y;
  const double vv = v.x * v.x + v.y * v.y;
  const Point to_centre{(v.y * uu - u.y * vv) / (2 * cross), (u.x * vv - v.x * uu) / (2 * cross)};
  const Point centre{points.start.x + to_centre.x, points.start.y + to_centre.y};
  vec::Arc arc = CircleArc(in, centre, std::hypot(to_centre.x, to_centre.y));
  arc.start = std::atan2(-to_centre.y, -to_centre.x);
  const Point last = points.end - centre;
  const double end = std::atan2(last.y, last.x);
  arc.sweep = cross > 0 ? Forward(arc.start, end) : -Forward(end, arc.start);
  return arc;
}

void DrawThreePoints(Interpreter& in, Parameters& p, bool close) {
  const ThreePoints points{p.At(), p.At(), p.At()};
  const std::optional<vec::Closure> closure = close ? ReadClosure(p) : vec::Closure::kOpen;
  if (!p.ok() || !closure) return;
  if (std::optional<vec::Arc> arc = ArcThrough(in, points)) {
    arc->closure = *closure;
    DrawArc(in, *arc);
  } else {
    in.DrawLine(vec::Polyline{in.Map({points.start, points.via, points.end}), vec::kNone});
  }
}

void ArcThreePoint(Interpreter& in, Parameters& p) {
  DrawThreePoints(in, p, false);
}
void ArcThreePointClose(Interpreter& in, Parameters& p) {
  DrawThreePoints(in, p, true);
}

enum class Direction { kForward, kReversed };

void DrawArcCentre(Interpreter& in, Parameters& p, bool close, Direction direction) {
  const Point centre = p.At();
  const Point from = p.At();
  const Point to = p.At();
  const double radius = p.Vdc();
  const std::optional<vec::Closure> closure = close ? ReadClosure(p) : vec::Closure::kOpen;
  const bool rays = (from.x != 0 || from.y != 0) && (to.x != 0 || to.y != 0);
  if (!p.ok() || !closure || !rays || radius < 0) return;
  vec::Arc arc = CircleArc(in, centre, radius);
  arc.start = std::atan2(from.y, from.x);
  const double end = std::atan2(to.y, to.x);
  arc.sweep = direction == Direction::kForward ? Forward(arc.start, end) : -Forward(end, arc.start);
  arc.closure = *closure;
  DrawArc(in, arc);
}

void ArcCentre(Interpreter& in, Parameters& p) {
  DrawArcCentre(in, p, false, Direction::kForward);
}
void ArcCentreClose(Interpreter& in, Parameters& p) {
  DrawArcCentre(in, p, true, Direction::kForward);
}
void ArcCentreReversed(Interpreter& in, Parameters& p) {
  DrawArcCentre(in, p, false, Direction::kReversed);
}

// Where a ray cuts the ellipse of two conjugate radii: d = a cos t + b sin t up to a factor.
double ParameterOf(Point a, Point b, Point d) {
  const double area = Cross(a, b);
  return std::atan2(Cross(a, d) / area, Cross(d, b) / area);
}

void DrawEllipticalArc(Interpreter& in, Parameters& p, bool close) {
  const Point centre = p.At();
  const Point a = p.At() - centre;
  const Point b = p.At() - centre;
  const Point from = p.At();
  const Point to = p.At();
  const std::optional<vec::Closure> closure = close ? ReadClosure(p) : vec::Closure::kOpen;
  const bool rays = (from.x != 0 || from.y != 0) && (to.x != 0 || to.y != 0);
  if (!p.ok() || !closure || !rays || Cross(a, b) == 0) return;
  vec::Arc arc;
  arc.centre = in.Map(centre);
  arc.a = in.MapVector(a);
  arc.b = in.MapVector(b);
  arc.start = ParameterOf(a, b, from);
  arc.sweep = Forward(arc.start, ParameterOf(a, b, to));
  arc.closure = *closure;
  DrawArc(in, arc);
}

void EllipticalArc(Interpreter& in, Parameters& p) {
  DrawEllipticalArc(in, p, false);
}
void EllipticalArcClose(Interpreter& in, Parameters& p) {
  DrawEllipticalArc(in, p, true);
}

constexpr auto kHandlers = std::to_array<Handler>({
    {4, 12, "CIRCLE", Circle},
    {4, 13, "CIRCULAR ARC 3 POINT", ArcThreePoint},
    {4, 14, "CIRCULAR ARC 3 POINT CLOSE", ArcThreePointClose},
    {4, 15, "CIRCULAR ARC CENTRE", ArcCentre},
    {4, 16, "CIRCULAR ARC CENTRE CLOSE", ArcCentreClose},
    {4, 17, "ELLIPSE", Ellipse},
    {4, 18, "ELLIPTICAL ARC", EllipticalArc},
    {4, 19, "ELLIPTICAL ARC CLOSE", EllipticalArcClose},
    {4, 20, "CIRCULAR ARC CENTRE REVERSED", ArcCentreReversed},
});

}  // namespace

std::span<const Handler> ArcHandlers() {
  return kHandlers;
}

}  // namespace tavi::host::cgm

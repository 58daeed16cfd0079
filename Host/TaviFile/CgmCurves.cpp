// Curves of version 3: Béziers, B-splines, arcs of parabolas and hyperbolas.
#include <array>
#include <cmath>

#include "TaviFile/CgmInterpreter.h"
#include "TaviFile/CgmLimits.h"

namespace tavi::host::cgm {
namespace {

Point Blend(Point a, Point b, double share) {
  return {a.x + (b.x - a.x) * share, a.y + (b.y - a.y) * share};
}

// Kind 1: separate curves of four points. Kind 2: a curve of four, and three more for each that goes on from it.
void Polybezier(Interpreter& in, Parameters& p) {
  constexpr int64_t kSeparate = 1;
  constexpr int64_t kContinuing = 2;
  const int64_t kind = p.Index();
  const std::vector<Point> points = in.Map(p.Points());
  if (!p.ok() || (kind != kSeparate && kind != kContinuing) || points.size() < 4) return;
  vec::Figure figure;
  size_t at = 0;
  while (at + 3 < points.size()) {
    if (at == 0 || kind == kSeparate) figure.contours.push_back({points[at], {}, false});
    figure.contours.back().curves.push_back({points[at + 1], points[at + 2], points[at + 3]});
    at += kind == kSeparate ? 4 : 3;
  }
  in.DrawLine(std::move(figure));
}

// The two tangents meet in the first point.
void ParabolicArc(Interpreter& in, Parameters& p) {
  const Point tangents = p.At();
  const Point start = p.At();
  const Point end = p.At();
  if (!p.ok()) return;
  vec::Figure figure;
  figure.contours.push_back({in.Map(start), {}, false});
  figure.contours.back().curves.push_back(
      {in.Map(Blend(start, tangents, 2.0 / 3)), in.Map(Blend(end, tangents, 2.0 / 3)), in.Map(end)});
  in.DrawLine(std::move(figure));
}

// centre + a cosh t + b sinh t; a ray cuts that branch where it is steeper along a than along b.
void HyperbolicArc(Interpreter& in, Parameters& p) {
  const Point centre = p.At();
  const Point a_end = p.At();
  const Point b_end = p.At();
  const std::array<Point, 2> rays = {p.At(), p.At()};
  const Point a{a_end.x - centre.x, a_end.y - centre.y};
  const Point b{b_end.x - centre.x, b_end.y - centre.y};
  const double area = a.x * b.y - a.y * b.x;
  if (!p.ok() || area == 0) return;
  std::array<double, 2> ends{};
  for (size_t i = 0; i < 2; ++i) {
    const double along_a = (rays[i].x * b.y - rays[i].y * b.x) / area;
    const double along_b = (a.x * rays[i].y - a.y * rays[i].x) / area;
    if (along_a <= std::abs(along_b)) return;
    ends[i] = std::atanh(along_b / along_a);
  }
  std::vector<Point> points;
  for (int i = 0; i <= kHyperbolaPieces; ++i) {
    const double t = ends[0] + (ends[1] - ends[0]) * i / kHyperbolaPieces;
    points.push_back({centre.x + a.x * std::cosh(t) + b.x * std::sinh(t),
                      centre.y + a.y * std::cosh(t) + b.y * std::sinh(t)});
  }
  in.DrawLine(vec::Polyline{in.Map(std::move(points)), vec::kNone});
}

struct Weighted {
  double x, y, w;
};

struct Spline {
  size_t order = 0;
  std::vector<Weighted> controls;  // coordinates times weights
  std::vector<double> knots;
  double first = 0, last = 0;  // the part of the parameter's range that is drawn
};

// De Boor's scheme for t between the knots `span` and `span` + 1.
Point PointOf(const Spline& spline, size_t span, double t) {
  std::array<Weighted, kLargestSplineOrder> d{};
  const size_t degree = spline.order - 1;
  for (size_t i = 0; i <= degree; ++i) d[i] = spline.controls[span - degree + i];
  for (size_t round = 1; round <= degree; ++round) {
    for (size_t i = degree; i >= round; --i) {
      const double low = spline.knots[span - degree + i];
      const double high = spline.knots[span + 1 + i - round];
      const double share = high == low ? 0 : (t - low) / (high - low);
      d[i] = {d[i - 1].x + (d[i].x - d[i - 1].x) * share, d[i - 1].y + (d[i].y - d[i - 1].y) * share,
              d[i - 1].w + (d[i].w - d[i - 1].w) * share};
    }
  }
  const Weighted& at = d[degree];
  return at.w == 0 ? Point{at.x, at.y} : Point{at.x / at.w, at.y / at.w};
}

std::vector<Point> PointsOf(const Spline& spline) {
  std::vector<Point> points;
  for (size_t span = spline.order - 1; span < spline.controls.size(); ++span) {
    const double low = std::max(spline.knots[span], spline.first);
    const double high = std::min(spline.knots[span + 1], spline.last);
    if (low >= high) continue;
    for (int i = points.empty() ? 0 : 1; i <= kPiecesPerSpan; ++i) {
      points.push_back(PointOf(spline, span, low + (high - low) * i / kPiecesPerSpan));
    }
  }
  return points;
}

bool ReadSpline(Parameters& p, bool rational, Spline* spline) {
  const int64_t order = p.Integer();
  const int64_t count = p.Integer();
  if (!p.ok() || order < 2 || order > kLargestSplineOrder || count < order) return false;
  if (static_cast<uint64_t>(count) > p.left() / p.PointBytes()) return false;
  spline->order = static_cast<size_t>(order);
  for (int64_t i = 0; i < count; ++i) {
    const Point at = p.At();
    spline->controls.push_back({at.x, at.y, 1});
  }
  for (int64_t i = 0; i < count + order; ++i) {
    spline->knots.push_back(p.Real());
    if (i > 0 && spline->knots.back() < spline->knots[spline->knots.size() - 2]) return false;
  }
  spline->first = p.Real();
  spline->last = p.Real();
  for (Weighted& control : spline->controls) {
    if (!rational) break;
    const double weight = p.Real();
    if (weight <= 0) return false;
    control = {control.x * weight, control.y * weight, weight};
  }
  return p.ok();
}

void DrawSpline(Interpreter& in, Parameters& p, bool rational) {
  Spline spline;
  if (!ReadSpline(p, rational, &spline)) return;
  const uint64_t spans = spline.controls.size() - spline.order + 1;
  in.ChargeSplineSteps(spans * kPiecesPerSpan * spline.order * (spline.order - 1) / 2);
  std::vector<Point> points = PointsOf(spline);
  if (points.size() >= 2) in.DrawLine(vec::Polyline{in.Map(std::move(points)), vec::kNone});
}

void BSpline(Interpreter& in, Parameters& p) {
  DrawSpline(in, p, false);
}
void RationalBSpline(Interpreter& in, Parameters& p) {
  DrawSpline(in, p, true);
}

constexpr auto kHandlers = std::to_array<Handler>({
    {4, 22, "HYPERBOLIC ARC", HyperbolicArc},
    {4, 23, "PARABOLIC ARC", ParabolicArc},
    {4, 24, "NON-UNIFORM B-SPLINE", BSpline},
    {4, 25, "NON-UNIFORM RATIONAL B-SPLINE", RationalBSpline},
    {4, 26, "POLYBEZIER", Polybezier},
});

}  // namespace

std::span<const Handler> CurveHandlers() {
  return kHandlers;
}

}  // namespace tavi::host::cgm

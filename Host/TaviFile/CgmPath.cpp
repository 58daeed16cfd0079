#include "TaviFile/CgmPath.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <utility>

namespace tavi::host::cgm {
namespace {

using vec::Contour;
using vec::Point;

void LineTo(Contour& contour, Point to) {
  const Point from = contour.curves.empty() ? contour.start : contour.curves.back()[2];
  contour.curves.push_back({from, to, to});
}

Contour Straight(const Point* points, size_t count, bool closed) {
  Contour contour{points[0], {}, closed};
  for (size_t i = 1; i < count; ++i) LineTo(contour, points[i]);
  return contour;
}

struct Turn {
  Point centre, a, b;
  Point At(double t) const {
    return {centre.x + a.x * std::cos(t) + b.x * std::sin(t),
            centre.y + a.y * std::cos(t) + b.y * std::sin(t)};
  }
  Point Slope(double t) const {
    return {b.x * std::cos(t) - a.x * std::sin(t), b.y * std::cos(t) - a.y * std::sin(t)};
  }
};

// A cubic follows a quarter of an ellipse to within three thousandths of its size.
Contour CurvesOf(const Turn& turn, double start, double sweep) {
  const int pieces =
      std::max(1, static_cast<int>(std::ceil(std::abs(sweep) / (std::numbers::pi / 2) - 1e-9)));
  const double step = sweep / pieces;
  const double reach = 4.0 / 3 * std::tan(step / 4);
  Contour contour{turn.At(start), {}, false};
  for (int i = 0; i < pieces; ++i) {
    const double t0 = start + step * i;
    const double t1 = t0 + step;
    const Point p0 = turn.At(t0), d0 = turn.Slope(t0), p1 = turn.At(t1), d1 = turn.Slope(t1);
    contour.curves.push_back({Point{p0.x + reach * d0.x, p0.y + reach * d0.y},
                              Point{p1.x - reach * d1.x, p1.y - reach * d1.y}, p1});
  }
  return contour;
}

std::vector<Contour> Of(const vec::Polyline& line) {
  if (line.points.empty()) return {};
  return {Straight(line.points.data(), line.points.size(), false)};
}

std::vector<Contour> Of(const vec::Segments& lines) {
  std::vector<Contour> contours;
  for (size_t i = 0; i + 1 < lines.points.size(); i += 2)
    contours.push_back(Straight(&lines.points[i], 2, false));
  return contours;
}

std::vector<Contour> Of(const vec::Polygon& polygon) {
  std::vector<Contour> contours;
  for (const vec::Ring& ring : polygon.rings) {
    if (!ring.points.empty()) contours.push_back(Straight(ring.points.data(), ring.points.size(), true));
  }
  return contours;
}

std::vector<Contour> Of(const vec::Rectangle& r) {
  const std::array<Point, 4> corners = {r.corner, Point{r.opposite.x, r.corner.y}, r.opposite,
                                        Point{r.corner.x, r.opposite.y}};
  return {Straight(corners.data(), corners.size(), true)};
}

std::vector<Contour> Of(const vec::Ellipse& e) {
  Contour contour = CurvesOf({e.centre, e.a, e.b}, 0, 2 * std::numbers::pi);
  contour.closed = true;
  return {std::move(contour)};
}

std::vector<Contour> Of(const vec::Arc& arc) {
  Contour contour = CurvesOf({arc.centre, arc.a, arc.b}, arc.start, arc.sweep);
  if (arc.closure == vec::Closure::kPie) LineTo(contour, arc.centre);
  contour.closed = arc.closure != vec::Closure::kOpen;
  return {std::move(contour)};
}

std::vector<Contour> Of(const vec::Figure& figure) {
  return figure.contours;
}
std::vector<Contour> Of(const vec::Markers&) {
  return {};
}
std::vector<Contour> Of(const vec::Text&) {
  return {};
}
std::vector<Contour> Of(const vec::CellArray&) {
  return {};
}

}  // namespace

std::vector<Contour> ContoursOf(const vec::Shape& shape) {
  return std::visit([](const auto& of) { return Of(of); }, shape);
}

void PathBuilder::Join(Contour contour) {
  if (contour.closed) {
    NewRegion();
    contours_.push_back(std::move(contour));
    return;
  }
  if (open_) {
    Contour& last = contours_.back();
    const Point end = last.curves.empty() ? last.start : last.curves.back()[2];
    if (end == contour.start || kind_ == PathKind::kFigure) {
      if (!(end == contour.start)) LineTo(last, contour.start);
      last.curves.insert(last.curves.end(), contour.curves.begin(), contour.curves.end());
      return;
    }
  }
  contours_.push_back(std::move(contour));
  open_ = true;
}

void PathBuilder::Add(const vec::Shape& shape) {
  for (Contour& contour : ContoursOf(shape)) Join(std::move(contour));
}

void PathBuilder::NewRegion() {
  if (open_ && kind_ == PathKind::kFigure) contours_.back().closed = true;
  open_ = false;
}

std::vector<Contour> PathBuilder::Take() {
  NewRegion();
  return std::move(contours_);
}

}  // namespace tavi::host::cgm

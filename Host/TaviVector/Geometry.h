// What painting and bounds need of plane geometry. Numbers that are no numbers count as 0, and numbers beyond all
// pictures as the farthest there is, so that everything behind Tame() is finite.
#pragma once

#include <algorithm>
#include <cmath>
#include <numbers>
#include <span>
#include <vector>

#include "TaviVector/Drawing.h"

namespace tavi::host::vec {

inline constexpr double kFarthest = 1e12;

inline double Tame(double value) {
  return std::isnan(value) ? 0 : std::clamp(value, -kFarthest, kFarthest);
}
inline Point Tame(Point p) {
  return {Tame(p.x), Tame(p.y)};
}

inline Point operator+(Point a, Point b) {
  return {a.x + b.x, a.y + b.y};
}
inline Point operator-(Point a, Point b) {
  return {a.x - b.x, a.y - b.y};
}
inline Point operator*(double factor, Point p) {
  return {factor * p.x, factor * p.y};
}
inline double Cross(Point a, Point b) {
  return a.x * b.y - a.y * b.x;
}
inline double Dot(Point a, Point b) {
  return a.x * b.x + a.y * b.y;
}
inline double Length(Point p) {
  return std::sqrt(Dot(p, p));
}

inline void Include(Box& box, Point p) {
  if (box.IsEmpty()) {
    box = {p, p};
    return;
  }
  box.low = {std::min(box.low.x, p.x), std::min(box.low.y, p.y)};
  box.high = {std::max(box.high.x, p.x), std::max(box.high.y, p.y)};
}

inline void Include(Box& box, const Box& other) {
  if (other.IsEmpty()) return;
  Include(box, other.low);
  Include(box, other.high);
}

inline Box Grown(const Box& box, double by) {
  if (box.IsEmpty()) return box;
  return {{box.low.x - by, box.low.y - by}, {box.high.x + by, box.high.y + by}};
}

inline Box Common(const Box& a, const Box& b) {
  return {{std::max(a.low.x, b.low.x), std::max(a.low.y, b.low.y)},
          {std::min(a.high.x, b.high.x), std::min(a.high.y, b.high.y)}};
}

inline bool Contains(const Box& box, const Box& other) {
  return box.low.x <= other.low.x && box.low.y <= other.low.y && box.high.x >= other.high.x &&
         box.high.y >= other.high.y;
}

inline double AreaOf(const Box& box) {
  return box.IsEmpty() ? 0 : (box.high.x - box.low.x) * (box.high.y - box.low.y);
}

inline Box BoxOf(std::span<const Point> points) {
  if (points.empty()) return {};
  Box box{points[0], points[0]};
  for (const Point p : points) {
    box.low = {std::min(box.low.x, p.x), std::min(box.low.y, p.y)};
    box.high = {std::max(box.high.x, p.x), std::max(box.high.y, p.y)};
  }
  return box;
}

// The box of a box's four corners under a transform.
Box Transformed(const Box& box, const Affine& by);

// First `first`, then `second`.
Affine Chained(const Affine& first, const Affine& second);

inline double Determinant(const Affine& a) {
  return a.xx * a.yy - a.xy * a.yx;
}

// By how much lengths grow on the average: the square root of the area's scale. Always finite.
double ScaleOf(const Affine& a);

// False when the transform flattens the plane.
bool Invert(const Affine& a, Affine* inverse);

// Cuts the segment at the box; false when nothing of it lies inside.
bool ClipSegment(const Box& box, Point* from, Point* to);

// The part of a closed ring that lies in the box, as one ring. Inside the box the even-odd rule gives the same area.
std::vector<Point> ClipRing(const Box& box, std::vector<Point> ring);

// Points on centre + a cos t + b sin t from `start` over `sweep`, both ends included, no farther than `tolerance` from
// the curve (as long as that takes a sensible number of points).
std::vector<Point> FlattenArc(Point centre, Point a, Point b, double start, double sweep, double tolerance);

// Appends the points behind `from` up to the curve's end.
void FlattenCurve(Point from, const std::array<Point, 3>& curve, double tolerance,
                  std::vector<Point>* points);

inline constexpr double kFullTurn = 2 * std::numbers::pi;

// A sweep of at most a full turn.
inline double TameSweep(double sweep) {
  return std::isnan(sweep) ? 0 : std::clamp(sweep, -kFullTurn, kFullTurn);
}

}  // namespace tavi::host::vec

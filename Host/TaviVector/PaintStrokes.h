// Lines: widths, dashes, gaps, caps, joins.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#include "TaviVector/Scene.h"

namespace tavi::host::vec {

// Lines of one stroke are gathered into one path. Whoever paints something else flushes first.
class LinePainter {
 public:
  explicit LinePainter(const Scene& scene) : scene_(scene) {}

  // A line through points in device space, with a stroke of the drawing (none: nothing is drawn).
  void Draw(std::span<const Point> points, bool closed, uint32_t stroke);
  // The same with a solid line of its own style.
  void Draw(std::span<const Point> points, bool closed, const LineStyle& style);
  void Flush();
  // The box of the canvas's clip, in device space.
  void SetClip(const Box& clip) { clip_ = clip; }

 private:
  // A stroke in device space.
  struct Pen {
    LineStyle style;
    std::vector<double> dashes;
    double period = 0;
    std::optional<uint32_t> gap;
  };

  Pen MakePen(const Stroke& stroke) const;
  void SetDashes(const Stroke& stroke, Pen* pen) const;
  void UseStroke(uint32_t index);
  bool IsDashed(std::span<const Point> points, bool closed) const;
  bool IsSmooth(double length, bool dashed) const;
  void Add(std::span<const Point> points, bool closed);
  static double LengthIn(const Box& box, std::span<const Point> points, bool closed);
  void AddRough(std::span<const Point> points, bool closed);
  void AddRuns(std::span<const Point> points, bool closed, bool dashed, double length);
  void AddDashedRing(std::span<const Point> points, const Box& near);
  void AddClipped(std::span<const Point> points, bool closed, bool dashed, const Box& near,
                  double before = 0);
  void BreakInGap(Point from, Point to, double before, double* offset);
  void Append(Point p, bool begins);
  void AddDot(Point at);
  void StrokePath(bool dashed, double offset);
  double Reach() const;
  bool IsEnough() const;
  bool IsTooMuch() const;

  const Scene& scene_;
  uint32_t current_ = kNone;  // the stroke of `pen_`
  Pen pen_;
  Box clip_{{-kFarthest, -kFarthest}, {kFarthest, kFarthest}};
  size_t gathered_ = 0;         // points in the path
  double gathered_length_ = 0;  // and its length
  Point last_;
  std::vector<Point> crisp_;
};

}  // namespace tavi::host::vec

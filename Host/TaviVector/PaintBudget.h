// What painting a drawing may cost. A metafile of a megabyte can ask for the same million pixels a hundred thousand times.
#pragma once

#include <algorithm>
#include <cmath>
#include <span>

#include "TaviVector/Drawing.h"

namespace tavi::host::vec {

// A drawing may cover the pixels of HOST_LIMIT_PAINT for nothing; of a larger canvas, so many times all of it.
inline constexpr double kFreeLayers = 16;
// And for each object, a square of 64 x 64.
inline constexpr double kPixelsOfObject = 4096;

// Whether a drawing whose objects may touch these boxes keeps within that on a canvas of which `spent` pixels were
// covered for nothing before; adds to it what this drawing covers so. Pixels stand for time: those of hatches, of crowded
// edges and of thin lines count several times. How lines are drawn when they crowd is told by SmoothLines.
bool SpendBudget(const Drawing& drawing, const Affine& to_device, std::span<const Box> boxes,
                 const Box& canvas, double& spent);

// Up to this length, and the part of the canvas's pixels, the lines on a canvas have smooth edges and dashes; of each
// object, a piece more. What comes behind is drawn roughly, in a small part of the time.
inline constexpr double kMostSmooth = 8'000'000;
inline constexpr double kSmoothOfCanvas = 1.0 / 8;
inline constexpr double kSmoothOfObject = 64;

// What is left of that for a drawing on a canvas on which lines of the length `spent` were smooth before. In the end,
// adds to it what this drawing took beyond what its objects earn.
class SmoothLines {
 public:
  SmoothLines(const Drawing& drawing, const Box& canvas, double& spent);
  ~SmoothLines();
  SmoothLines(const SmoothLines&) = delete;
  SmoothLines& operator=(const SmoothLines&) = delete;

  double left;

 private:
  double most_;  // for everybody
  double& spent_;
};

// Whether an area has so many edges, for its size, that smooth ones would take too long: crossings of the edges with rows
// of pixels.
bool IsCrowded(double crossings, double area);

// The crossings of a closed ring between two heights.
template <class PointAt>
double CountCrossings(size_t count, PointAt point_at, double low, double high) {
  double crossings = 0;
  double last = count == 0 ? 0 : std::clamp(point_at(count - 1).y, low, high);
  for (size_t i = 0; i < count; ++i) {
    const double y = std::clamp(point_at(i).y, low, high);
    crossings += std::abs(y - last);
    last = y;
  }
  return crossings;
}

}  // namespace tavi::host::vec

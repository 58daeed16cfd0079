// What the painters of the shapes share. Internal to the painter.
#pragma once

#include <span>
#include <vector>

#include "TaviVector/Canvas.h"
#include "TaviVector/Drawing.h"
#include "TaviVector/Geometry.h"

namespace tavi::host::vec {

struct Scene {
  const Drawing& drawing;
  Canvas& canvas;
  Affine to_device;
  Box visible;  // what the canvas shows, in device space
  Box whole;    // all that is painted, in as many canvases as it takes
  bool on_pixels = true;
  double* smooth_left = nullptr;  // see PaintJob
  double scale = 1;               // device units in a unit, on the average
  double tolerance = 0.1;         // of curves, in device units

  Point Map(Point p) const { return Tame(to_device.Apply(Tame(p))); }
  Point MapVector(Point v) const { return Tame(to_device.ApplyVector(Tame(v))); }
  std::vector<Point> Map(std::span<const Point> points) const {
    std::vector<Point> mapped;
    mapped.reserve(points.size());
    for (const Point p : points) mapped.push_back(Map(p));
    return mapped;
  }
  bool IsVisible(const Box& box) const { return !Common(box, visible).IsEmpty(); }
};

// Paths keep well inside the rasteriser's range of about eight million pixels.
inline constexpr double kNear = 100'000;

// Thickness of a marker's lines, times its size.
inline constexpr double kLineOfMarker = 1.0 / 16;

// Adds a ring to the canvas's path, cut down to what the canvas shows when it goes far beyond.
void AddArea(const Scene& scene, std::vector<Point> ring);

// The pool's entry, or null for kNone and what lies beyond the pool.
template <class Attribute>
const Attribute* Find(const std::vector<Attribute>& pool, uint32_t index) {
  return index < pool.size() ? &pool[index] : nullptr;
}

}  // namespace tavi::host::vec

// Pictures in device pixels, coloured point by point. Internal to the painter.
#pragma once

#include <cmath>
#include <cstdint>
#include <utility>

#include "TaviVector/Scene.h"

namespace tavi::host::vec {

// The floor of a number of sensible size (Tame), computed in place.
inline double FloorOf(double value) {
  const auto whole = static_cast<double>(static_cast<int64_t>(value));
  return value < whole ? whole - 1 : whole;
}

// The pixels of the canvas that a box touches.
struct PixelRaster {
  Point corner;
  double side = 1;  // of a pixel, in device units
  int32_t columns = 0;
  int32_t rows = 0;

  PixelRaster(const Scene& scene, const Box& box) {
    constexpr double kMostPixels = 4'194'304;
    constexpr double kLongest = 32'767;  // side of the rasteriser's pictures
    const Box seen = Common(box, scene.visible);
    if (seen.IsEmpty()) return;
    corner = {std::floor(seen.low.x), std::floor(seen.low.y)};
    const double width = std::ceil(seen.high.x) - corner.x;
    const double height = std::ceil(seen.high.y) - corner.y;
    // A page of an export may be larger than any canvas of pixels.
    if (!scene.on_pixels) side = std::max(1.0, std::sqrt(width * height / kMostPixels));
    columns = static_cast<int32_t>(std::min(std::ceil(width / side), kLongest));
    rows = static_cast<int32_t>(std::min(std::ceil(height / side), kLongest));
  }
};

// Fills the canvas's path, which lies in the box, with the colours that `color` (device point to pixel) gives.
template <class ColorAt>
void FillSampled(const Scene& scene, const Box& box, ColorAt color) {
  const PixelRaster raster(scene, box);
  if (raster.columns <= 0 || raster.rows <= 0) {
    scene.canvas.DropPath();
    return;
  }
  Image image{raster.columns, raster.rows, {}};
  image.pixels.resize(static_cast<size_t>(raster.columns) * static_cast<size_t>(raster.rows));
  uint32_t* at = image.pixels.data();
  for (int32_t row = 0; row < raster.rows; ++row) {
    const double y = raster.corner.y + (row + 0.5) * raster.side;
    for (int32_t column = 0; column < raster.columns; ++column) {
      *at++ = color(Point{raster.corner.x + (column + 0.5) * raster.side, y});
    }
  }
  scene.canvas.FillWith(image, raster.corner, raster.side);
}

}  // namespace tavi::host::vec

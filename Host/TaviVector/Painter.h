// Paints drawings.
#pragma once

#include <functional>
#include <span>

#include "TaviVector/Canvas.h"
#include "TaviVector/Drawing.h"

namespace tavi::host::vec {

struct PaintJob {
  const Drawing& drawing;
  Affine to_device;
  Box whole;                      // all that is painted, in device space
  bool on_pixels = true;          // else shapes stay exact, for exports
  double* smooth_left = nullptr;  // length of the lines that may be smooth yet (SmoothLines); null: all
};

// Whether an object is on a layer that is shown.
bool IsShown(const Drawing& drawing, const Object& object);

// What an object covers in device space, where the widths of lines and the sizes of markers grow by the same factor along
// both axes. Tips, ends and glyphs that reach beyond the object's bounds are included. Empty like the bounds.
Box PaintedBounds(const Drawing& drawing, const Object& object, const Affine& to_device);

// What each object of the drawing may touch, in device space: empty boxes for those that show nothing.
std::vector<Box> DeviceBoxes(const Drawing& drawing, const Affine& to_device);

// Paints the objects whose boxes (DeviceBoxes) meet what the canvas shows.
void Paint(const PaintJob& job, std::span<const Box> boxes, const Box& visible, Canvas& canvas);

}  // namespace tavi::host::vec

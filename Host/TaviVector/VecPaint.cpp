// Painting a vector into a context.
#include <cmath>
#include <new>
#include <stdexcept>

#include "TaviHost.h"
#include "TaviKernel/DrawingContext.h"
#include "TaviKernel/PixelView.h"
#include "TaviVector/BackColor.h"
#include "TaviVector/Geometry.h"
#include "TaviVector/Overlay.h"
#include "TaviVector/VectorRecord.h"

namespace tavi::host::vec {
namespace {

// One axis of the mapping: device = scale * coordinate + shift.
struct AxisMap {
  double scale = 1;
  double shift = 0;
};

// Where a side of the rectangle begins and ends. Its first pixel is inside and its last just outside, also when it runs
// backwards.
struct Side {
  double from;
  double to;
};

Side SideOf(int32_t from, int32_t to) {
  const int backwards = to < from ? 1 : 0;
  return {static_cast<double>(from) + backwards, static_cast<double>(to) + backwards};
}

constexpr double kNoExtent = 1e-9;

// Drawings without extent along an axis stand in the middle of the rectangle, as large as along the other axis.
AxisMap Map(double low, double high, const Side& side, double scale_of_none) {
  const double extent = high - low;
  if (std::abs(extent) < kNoExtent) {
    return {scale_of_none, (side.from + side.to) / 2 - scale_of_none * low};
  }
  const double scale = (side.to - side.from) / extent;
  return {scale, side.from - scale * low};
}

double ScaleAlong(double low, double high, const Side& side) {
  return high - low < kNoExtent ? 1 : std::abs((side.to - side.from) / (high - low));
}

Affine Placement(const Box& bounds, const HostRect& rectangle) {
  if (rectangle.left == rectangle.right || rectangle.top == rectangle.bottom) {
    return {1, 0, static_cast<double>(rectangle.left), 0, -1, static_cast<double>(rectangle.top)};
  }
  const Side across = SideOf(rectangle.left, rectangle.right);
  const Side down = SideOf(rectangle.top, rectangle.bottom);
  const double x_scale = ScaleAlong(bounds.low.x, bounds.high.x, across);
  const double y_scale = ScaleAlong(bounds.low.y, bounds.high.y, down);
  const AxisMap x = Map(bounds.low.x, bounds.high.x, across, across.to < across.from ? -y_scale : y_scale);
  // The top of the drawing is its greatest y.
  const AxisMap y = Map(-bounds.high.y, -bounds.low.y, down, down.to < down.from ? -x_scale : x_scale);
  return {x.scale, 0, x.shift, 0, -y.scale, y.shift};
}

}  // namespace
}  // namespace tavi::host::vec

using namespace tavi::host;

int32_t HostVecPaint(HostDrawingContext context, HostVector* vector, int32_t, int32_t, uint32_t, uint32_t,
                     const HostRect* rectangle, uint32_t, uint32_t) {
  HostForgetLimitHit();
  if (context == nullptr || vector == nullptr || rectangle == nullptr) return ERR_NULL_ARGUMENT;
  if (!IsContext(context)) return ERR_INVALID_PARAMETER;
  PixelView target;
  if (!ViewOf(context->bitmap, &target)) return ERR_NO_BITMAP;
  const vec::Drawing* const drawing = vec::DrawingOf(vector);
  if (drawing == nullptr) return SUCCESS;
  try {
    const vec::Box bounds = vec::BoundsOf(*drawing);
    if (bounds.IsEmpty()) return SUCCESS;
    std::optional<vec::Drawing> changed;
    const vec::Drawing& shown = vec::WithBackColor(*drawing, vec::BackColorOf(vector), changed);
    return vec::PaintOver(target, shown, vec::Placement(bounds, *rectangle), context->painted);
  } catch (const std::bad_alloc&) {
    return ERR_NO_MEMORY;
  } catch (const std::length_error&) {
    return ERR_NO_MEMORY;
  }
}

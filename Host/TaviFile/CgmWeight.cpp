#include "TaviFile/CgmWeight.h"

namespace tavi::host::cgm {
namespace {

constexpr uint64_t kPointBytes = sizeof(vec::Point);
constexpr uint64_t kCurveBytes = 3 * kPointBytes;
constexpr uint64_t kCurvesOfEllipse = 4;
// What the heap adds to a block.
constexpr uint64_t kBlockBytes = 16;

uint64_t PointsOf(const vec::Polyline& line) {
  return line.points.size();
}
uint64_t PointsOf(const vec::Segments& lines) {
  return lines.points.size();
}
uint64_t PointsOf(const vec::Polygon& polygon) {
  constexpr uint64_t kPointsPerRing = (sizeof(vec::Ring) + 2 * kBlockBytes) / kPointBytes;
  uint64_t points = 0;
  for (const vec::Ring& ring : polygon.rings) points += kPointsPerRing + ring.points.size();
  return points;
}
uint64_t PointsOf(const vec::Figure& figure) {
  constexpr uint64_t kPointsPerContour = (sizeof(vec::Contour) + kBlockBytes) / kPointBytes;
  uint64_t points = 0;
  for (const vec::Contour& contour : figure.contours) points += kPointsPerContour + 3 * contour.curves.size();
  return points;
}
uint64_t PointsOf(const vec::Markers& markers) {
  return markers.points.size();
}
template <class OtherShape>
uint64_t PointsOf(const OtherShape&) {
  return kCurvesOfEllipse;
}

uint64_t Points(const vec::Shape& shape) {
  return std::visit([](const auto& of) { return PointsOf(of); }, shape);
}

}  // namespace

uint64_t WeightOf(const vec::Shape& shape) {
  return sizeof(vec::Object) + kBlockBytes + Points(shape) * kPointBytes;
}

uint64_t WeightInFigure(const vec::Shape& shape) {
  const bool curves = std::holds_alternative<vec::Figure>(shape);
  return sizeof(vec::Contour) + kBlockBytes + Points(shape) * (curves ? kPointBytes : kCurveBytes);
}

}  // namespace tavi::host::cgm

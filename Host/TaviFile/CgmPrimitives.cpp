// Lines, markers and areas with straight sides.
#include <array>

#include "TaviFile/CgmInterpreter.h"

namespace tavi::host::cgm {
namespace {

void Polyline(Interpreter& in, Parameters& p) {
  std::vector<Point> points = p.Points();
  if (p.ok() && points.size() >= 2) in.DrawLine(vec::Polyline{in.Map(std::move(points)), vec::kNone});
}

void DisjointPolyline(Interpreter& in, Parameters& p) {
  std::vector<Point> points = p.Points();
  points.resize(points.size() & ~size_t{1});
  if (p.ok() && !points.empty()) in.DrawLine(vec::Segments{in.Map(std::move(points)), vec::kNone});
}

void Polymarker(Interpreter& in, Parameters& p) {
  std::vector<Point> points = p.Points();
  if (p.ok() && !points.empty()) in.DrawMarkers(in.Map(std::move(points)));
}

void Polygon(Interpreter& in, Parameters& p) {
  std::vector<Point> points = p.Points();
  if (!p.ok() || points.size() < 3) return;
  vec::Polygon polygon;
  polygon.rings.push_back({in.Map(std::move(points)), {}});
  in.DrawArea(std::move(polygon));
}

// The flag of a vertex says whether the edge that leaves it is seen, and whether it leads back to the first one.
void PolygonSet(Interpreter& in, Parameters& p) {
  constexpr size_t kFlagBytes = 2;
  vec::Polygon polygon;
  vec::Ring ring;
  const auto end_ring = [&] {
    if (ring.points.size() >= 2) polygon.rings.push_back(std::move(ring));
    ring = {};
  };
  while (p.ok() && p.left() >= p.PointBytes() + kFlagBytes) {
    const Point at = p.At();
    const int64_t flag = p.Enumerated();
    ring.points.push_back(in.Map(at));
    ring.visible.push_back(flag == 1 || flag == 3 ? 1 : 0);
    if (flag == 2 || flag == 3) end_ring();
  }
  end_ring();
  if (p.ok() && !polygon.rings.empty()) in.DrawArea(std::move(polygon));
}

void Rectangle(Interpreter& in, Parameters& p) {
  const Point corner = p.At();
  const Point opposite = p.At();
  if (!p.ok()) return;
  if (in.IsUpright()) {
    in.DrawArea(vec::Rectangle{in.Map(corner), in.Map(opposite), {}});
    return;
  }
  vec::Polygon turned;
  turned.rings.push_back({in.Map({corner, {opposite.x, corner.y}, opposite, {corner.x, opposite.y}}), {}});
  in.DrawArea(std::move(turned));
}

constexpr auto kHandlers = std::to_array<Handler>({
    {4, 1, "POLYLINE", Polyline},
    {4, 2, "DISJOINT POLYLINE", DisjointPolyline},
    {4, 3, "POLYMARKER", Polymarker},
    {4, 7, "POLYGON", Polygon},
    {4, 8, "POLYGON SET", PolygonSet},
    {4, 11, "RECTANGLE", Rectangle},
});

}  // namespace

std::span<const Handler> PrimitiveHandlers() {
  return kHandlers;
}

}  // namespace tavi::host::cgm

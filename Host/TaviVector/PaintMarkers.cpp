#include <array>

#include "TaviVector/PaintCells.h"

namespace tavi::host::vec {
namespace {

constexpr double kDot = 2;  // side of a dot, in device units

class MarkerPainter {
 public:
  MarkerPainter(const Scene& scene, LinePainter& lines, const MarkerStyle& marker)
      : lines_(lines), type_(marker.type) {
    const double size = std::clamp(Tame(scene.drawing.SizeOf(marker) * scene.scale), 1.0, kNear);
    half_ = size / 2;
    style_.color = marker.color;
    style_.width = std::max(1.0, size * kLineOfMarker);
    if (type_ == MarkerType::kDot) style_.width = kDot;
    if (type_ == MarkerType::kCircle) {
      circle_ = FlattenArc({}, {half_, 0}, {0, half_}, 0, kFullTurn, scene.tolerance);
      circle_.pop_back();
    }
  }

  double reach() const { return half_ + style_.width; }

  void Draw(Point at) {
    const double slant = half_ * std::sqrt(0.5);
    switch (type_) {
      case MarkerType::kDot:
        lines_.Draw(std::array{Point{at.x - kDot / 2, at.y}, Point{at.x + kDot / 2, at.y}}, false, style_);
        break;
      case MarkerType::kPlus:
        Across(at, {half_, 0});
        Across(at, {0, half_});
        break;
      case MarkerType::kCircle:
        DrawCircle(at);
        break;
      case MarkerType::kCross:
        Across(at, {half_, half_});
        Across(at, {half_, -half_});
        break;
      default:
        Across(at, {half_, 0});
        Across(at, {0, half_});
        Across(at, {slant, slant});
        Across(at, {slant, -slant});
        break;
    }
  }

 private:
  void Across(Point at, Point half) { lines_.Draw(std::array{at - half, at + half}, false, style_); }
  void DrawCircle(Point at) {
    std::vector<Point> ring = circle_;
    for (Point& p : ring) p = p + at;
    lines_.Draw(ring, true, style_);
  }

  LinePainter& lines_;
  MarkerType type_;
  double half_ = 0;
  LineStyle style_;
  std::vector<Point> circle_;
};

}  // namespace

void PaintMarkers(const Scene& scene, LinePainter& lines, const Markers& markers) {
  const MarkerStyle* const style = Find(scene.drawing.markers, markers.marker);
  if (style == nullptr) return;
  MarkerPainter painter(scene, lines, *style);
  for (const Point p : markers.points) {
    const Point at = scene.Map(p);
    if (scene.IsVisible(Grown({at, at}, painter.reach()))) painter.Draw(at);
  }
}

}  // namespace tavi::host::vec

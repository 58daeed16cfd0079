#include "TaviVector/Painter.h"

#include <array>
#include <variant>

#include "TaviVector/PaintCells.h"
#include "TaviVector/PaintFills.h"
#include "TaviVector/PaintStrokes.h"
#include "TaviVector/PaintText.h"
#include "TaviVector/Scene.h"

namespace tavi::host::vec {
namespace {

class ShapePainter {
 public:
  explicit ShapePainter(const Scene& scene) : scene_(scene), lines_(scene) {}
  ~ShapePainter() {
    lines_.Flush();
    SetClip(kNone);
  }
  ShapePainter(const ShapePainter&) = delete;
  ShapePainter& operator=(const ShapePainter&) = delete;

  void Paint(const Object& object) {
    SetClip(object.clip);
    std::visit([this](const auto& shape) { Draw(shape); }, object.shape);
  }

 private:
  void SetClip(uint32_t clip) {
    if (clip == clip_) return;
    lines_.Flush();
    if (Find(scene_.drawing.clips, clip_) != nullptr) scene_.canvas.PopClip();
    clip_ = clip;
    const Box* const box = Find(scene_.drawing.clips, clip);
    lines_.SetClip(box == nullptr ? scene_.visible : Transformed(*box, scene_.to_device));
    if (box == nullptr) return;
    if (!box->IsEmpty()) AddArea(scene_, Corners(box->low, box->high));
    scene_.canvas.PushClip(FillRule::kEvenOdd);
  }

  std::vector<Point> Corners(Point a, Point b) const {
    return scene_.Map(std::array{a, Point{b.x, a.y}, b, Point{a.x, b.y}});
  }

  std::vector<Point> ArcPoints(const Arc& arc) const {
    return FlattenArc(scene_.Map(arc.centre), scene_.MapVector(arc.a), scene_.MapVector(arc.b),
                      Tame(arc.start), TameSweep(arc.sweep), scene_.tolerance);
  }

  // An area with all its edges drawn.
  void DrawArea(const Rings& rings, const AreaStyle& style) {
    FillArea(rings, style);
    for (const auto& ring : rings) lines_.Draw(ring, true, style.edge);
  }

  void FillArea(const Rings& rings, const AreaStyle& style) {
    const Fill* const fill = Find(scene_.drawing.fills, style.fill);
    if (fill != nullptr) PaintInterior(scene_, lines_, rings, *fill);
  }

  // Runs of visible edges as lines.
  void DrawVisibleEdges(const std::vector<Point>& points, const std::vector<uint8_t>& visible,
                        uint32_t edge) {
    const size_t count = points.size();
    const auto shown = [&](size_t i) { return i >= visible.size() || visible[i] != 0; };
    size_t hidden = 0;
    while (hidden < count && shown(hidden)) ++hidden;
    if (hidden == count) {
      lines_.Draw(points, true, edge);
      return;
    }
    std::vector<Point> run;
    for (size_t i = 1; i <= count; ++i) {
      const size_t at = (hidden + i) % count;
      run.push_back(points[at]);
      if (shown(at)) continue;
      if (run.size() > 1) lines_.Draw(run, false, edge);
      run.clear();
    }
  }

  void Draw(const Polyline& line) { lines_.Draw(scene_.Map(line.points), false, line.stroke); }

  void Draw(const Segments& segments) {
    for (size_t i = 0; i + 1 < segments.points.size(); i += 2) {
      const std::array ends{scene_.Map(segments.points[i]), scene_.Map(segments.points[i + 1])};
      lines_.Draw(ends, false, segments.stroke);
    }
  }

  void Draw(const Polygon& polygon) {
    Rings rings;
    for (const Ring& ring : polygon.rings) rings.push_back(scene_.Map(ring.points));
    FillArea(rings, polygon.style);
    for (size_t i = 0; i < rings.size(); ++i) {
      DrawVisibleEdges(rings[i], polygon.rings[i].visible, polygon.style.edge);
    }
  }

  void Draw(const Rectangle& rectangle) {
    DrawArea({Corners(rectangle.corner, rectangle.opposite)}, rectangle.style);
  }

  void Draw(const Ellipse& ellipse) {
    std::vector<Point> ring = FlattenArc(scene_.Map(ellipse.centre), scene_.MapVector(ellipse.a),
                                         scene_.MapVector(ellipse.b), 0, kFullTurn, scene_.tolerance);
    ring.pop_back();
    DrawArea({std::move(ring)}, ellipse.style);
  }

  void Draw(const Arc& arc) {
    std::vector<Point> points = ArcPoints(arc);
    if (arc.closure == Closure::kOpen) {
      lines_.Draw(points, false, arc.stroke);
      return;
    }
    if (arc.closure == Closure::kPie) points.push_back(scene_.Map(arc.centre));
    DrawArea({std::move(points)}, arc.style);
  }

  void Draw(const Figure& figure) {
    Rings rings;
    for (const Contour& contour : figure.contours) {
      std::vector<Point> points{scene_.Map(contour.start)};
      for (const auto& [c1, c2, end] : contour.curves) {
        FlattenCurve(points.back(), {scene_.Map(c1), scene_.Map(c2), scene_.Map(end)}, scene_.tolerance,
                     &points);
      }
      if (contour.closed && points.size() > 2 && points.back() == points.front()) points.pop_back();
      rings.push_back(std::move(points));
    }
    if (figure.style.fill != kNone || figure.style.edge != kNone) {
      DrawArea(rings, figure.style);
      return;
    }
    for (size_t i = 0; i < rings.size(); ++i) lines_.Draw(rings[i], figure.contours[i].closed, figure.stroke);
  }

  void Draw(const Markers& markers) { PaintMarkers(scene_, lines_, markers); }
  void Draw(const Text& text) { PaintText(scene_, lines_, text); }
  void Draw(const CellArray& cells) {
    lines_.Flush();
    PaintCells(scene_, cells);
  }

  const Scene& scene_;
  LinePainter lines_;
  uint32_t clip_ = kNone;
};

// Whether the object leaves nothing to be seen of what is beneath it: a plain rectangle beyond all sides of the canvas.
bool CoversCanvas(const Scene& scene, const Object& object) {
  const Rectangle* const rectangle = std::get_if<Rectangle>(&object.shape);
  if (rectangle == nullptr || !IsShown(scene.drawing, object)) return false;
  const Fill* const fill = Find(scene.drawing.fills, rectangle->style.fill);
  if (fill == nullptr || fill->interior != Interior::kSolid) return false;
  const Affine& m = scene.to_device;
  const bool upright = (m.xy == 0 && m.yx == 0) || (m.xx == 0 && m.yy == 0);
  if (!upright || Find(scene.drawing.clips, object.clip) != nullptr) return false;
  return Contains(BoxOf(std::array{scene.Map(rectangle->corner), scene.Map(rectangle->opposite)}),
                  scene.visible);
}

// The first of the objects that can be seen. Vector formats keep them all.
size_t FirstSeen(const Scene& scene, size_t count) {
  if (!scene.on_pixels) return 0;
  while (count > 0 && !CoversCanvas(scene, scene.drawing.objects[count - 1])) --count;
  return count > 0 ? count - 1 : 0;
}

}  // namespace

bool IsShown(const Drawing& drawing, const Object& object) {
  const Layer* const layer = Find(drawing.layers, object.layer);
  return layer == nullptr || layer->visible;
}

std::vector<Box> DeviceBoxes(const Drawing& drawing, const Affine& to_device) {
  // The thinnest lines, dots and rounded places reach a little beyond.
  constexpr double kMargin = 8;
  std::vector<Box> boxes;
  boxes.reserve(drawing.objects.size());
  for (const Object& object : drawing.objects) {
    const Box box = IsShown(drawing, object) ? PaintedBounds(drawing, object, to_device) : Box();
    boxes.push_back(Grown(box, kMargin));
  }
  return boxes;
}

void Paint(const PaintJob& job, std::span<const Box> boxes, const Box& visible, Canvas& canvas) {
  Scene scene{job.drawing, canvas, job.to_device, visible, job.whole, job.on_pixels, job.smooth_left};
  scene.scale = ScaleOf(job.to_device);
  scene.tolerance = job.on_pixels ? 0.1 : 0.01;
  ShapePainter painter(scene);
  for (size_t i = FirstSeen(scene, boxes.size()); i < boxes.size() && canvas.IsSound(); ++i) {
    if (scene.IsVisible(boxes[i])) painter.Paint(job.drawing.objects[i]);
  }
}

}  // namespace tavi::host::vec

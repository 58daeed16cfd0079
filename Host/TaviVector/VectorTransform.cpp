// Transform of a whole drawing.
#include <cmath>
#include <variant>
#include <vector>

#include "TaviVector/Drawing.h"
#include "TaviVector/Geometry.h"

namespace tavi::host::vec {
namespace {

class Mover {
 public:
  Mover(const Affine& by, const std::vector<TextStyle>& texts)
      : by_(by),
        texts_(texts),
        scale_(ScaleOf(by)),
        keeps_axes_((by.xy == 0 && by.yx == 0) || (by.xx == 0 && by.yy == 0)) {}

  // Objects before styles: texts are fitted along the directions that they had.
  void Run(Drawing& drawing) const {
    for (Object& object : drawing.objects) MoveShape(object.shape);
    for (Stroke& stroke : drawing.strokes) Resize(stroke);
    for (Fill& fill : drawing.fills) Move(fill);
    for (MarkerStyle& marker : drawing.markers) {
      if (!marker.scaled) marker.size = Tame(marker.size * scale_);
    }
    for (TextStyle& text : drawing.texts) Turn(text);
    for (Box& clip : drawing.clips) Move(clip);
    drawing.nominal_width = Tame(drawing.nominal_width * scale_);
    drawing.nominal_marker = Tame(drawing.nominal_marker * scale_);
  }

 private:
  void Move(Point& point) const { point = Tame(by_.Apply(point)); }
  void Turn(Point& vector) const { vector = Tame(by_.ApplyVector(vector)); }
  void Move(std::vector<Point>& points) const {
    for (Point& point : points) Move(point);
  }

  void Resize(Stroke& stroke) const {
    if (!stroke.scaled) stroke.width = Tame(stroke.width * scale_);
    for (double& dash : stroke.dashes) dash = Tame(dash * scale_);
  }

  void Move(Fill& fill) const {
    Move(fill.origin);
    Turn(fill.pattern_up);
    Turn(fill.pattern_along);
  }

  // How much longer a vector becomes.
  double Stretch(Point vector) const {
    const double length = Length(vector);
    const double stretch = Length(by_.ApplyVector(vector)) / length;
    return length > 0 && std::isfinite(stretch) ? stretch : scale_;
  }

  // The height follows the up vector, and the vectors keep its length.
  void Turn(TextStyle& text) const {
    const double stretch = Stretch(text.up);
    Turn(text.up);
    Turn(text.base);
    text.height = Tame(text.height * stretch);
    if (stretch > 0) {
      text.up = {text.up.x / stretch, text.up.y / stretch};
      text.base = {text.base.x / stretch, text.base.y / stretch};
    }
  }

  void Move(Box& box) const { box = Transformed(box, by_); }

  void MoveShape(Shape& shape) const {
    if (const auto* const rectangle = std::get_if<Rectangle>(&shape); rectangle != nullptr && !keeps_axes_) {
      const Point a = rectangle->corner;
      const Point b = rectangle->opposite;
      shape = Polygon{{Ring{{a, {b.x, a.y}, b, {a.x, b.y}}, {}}}, rectangle->style};
    }
    std::visit([this](auto& kind) { MoveKind(kind); }, shape);
  }

  void MoveKind(Polyline& line) const { Move(line.points); }
  void MoveKind(Segments& segments) const { Move(segments.points); }
  void MoveKind(Markers& markers) const { Move(markers.points); }
  void MoveKind(Polygon& polygon) const {
    for (Ring& ring : polygon.rings) Move(ring.points);
  }
  void MoveKind(Rectangle& rectangle) const {
    Move(rectangle.corner);
    Move(rectangle.opposite);
  }
  template <class Round>
  void MoveRound(Round& round) const {
    Move(round.centre);
    Turn(round.a);
    Turn(round.b);
  }
  void MoveKind(Ellipse& ellipse) const { MoveRound(ellipse); }
  void MoveKind(Arc& arc) const { MoveRound(arc); }
  void MoveKind(Figure& figure) const {
    for (Contour& contour : figure.contours) {
      Move(contour.start);
      for (auto& curve : contour.curves) {
        for (Point& point : curve) Move(point);
      }
    }
  }
  void MoveKind(Text& text) const {
    Move(text.at);
    if (!text.fit || text.spans.empty() || text.spans[0].style >= texts_.size()) return;
    const TextStyle& style = texts_[text.spans[0].style];
    text.fit = Point{Tame(text.fit->x * Stretch(style.base)), Tame(text.fit->y * Stretch(style.up))};
  }
  void MoveKind(CellArray& cells) const {
    Move(cells.corner);
    Move(cells.opposite);
    Move(cells.row_end);
  }

  Affine by_;
  const std::vector<TextStyle>& texts_;
  double scale_;
  bool keeps_axes_;  // rectangles stay rectangles
};

}  // namespace

void Transform(Drawing& drawing, const Affine& by) {
  Mover(by, drawing.texts).Run(drawing);
}

}  // namespace tavi::host::vec

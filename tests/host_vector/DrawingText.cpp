#include "DrawingText.h"

#include <cmath>
#include <cstdio>

namespace tavi::test {
namespace {

using namespace host::vec;

class Describer {
 public:
  explicit Describer(const Drawing& drawing) : drawing_(drawing) {}

  std::vector<ObjectText> Run() {
    for (const Object& object : drawing_.objects) {
      clip_ = ClipText(object.clip);
      std::visit([this](const auto& shape) { Put(shape); }, object.shape);
    }
    return std::move(lines_);
  }

 private:
  static std::string Number(double value) {
    char text[40];
    std::snprintf(text, sizeof text, "%.10g", value == 0 ? 0.0 : value);
    return text;
  }
  static std::string Color(uint32_t color) {
    char text[16];
    std::snprintf(text, sizeof text, "#%06x", color);
    return text;
  }
  static std::string Color(const std::optional<uint32_t>& color) { return color ? Color(*color) : "none"; }
  static std::string At(Point p) { return "(" + Number(p.x) + " " + Number(p.y) + ")"; }
  static std::string At(const std::vector<Point>& points) {
    std::string text;
    for (const Point& p : points) text += At(p);
    return text;
  }
  template <class Enumeration>
  static std::string Value(Enumeration value) {
    return std::to_string(static_cast<int>(value));
  }

  std::string ClipText(uint32_t index) const {
    if (index == kNone) return "";
    const Box& box = drawing_.clips.at(index);
    return " clip" + At(box.low) + At(box.high);
  }

  std::string StrokeText(uint32_t index) const {
    if (index == kNone) return "none";
    const Stroke& stroke = drawing_.strokes.at(index);
    const bool gaps = stroke.type != LineType::kSolid;
    std::string text =
        Color(stroke.color) + "*" + Number(drawing_.WidthOf(stroke)) + " type" + Value(stroke.type);
    if (stroke.type == LineType::kCustom) {
      for (const double dash : stroke.dashes) text += " " + Number(dash);
    }
    if (gaps) text += " gap " + Color(stroke.gap_color);
    if (stroke.cap != LineCap::kButt) text += " cap" + Value(stroke.cap);
    if (stroke.join != LineJoin::kMitre) return text + " join" + Value(stroke.join);
    return stroke.mitre_limit < 10 ? text + " mitre " + Number(stroke.mitre_limit) : text;
  }

  std::string FillText(uint32_t index) const {
    if (index == kNone || drawing_.fills.at(index).interior == Interior::kEmpty) return "none";
    const Fill& fill = drawing_.fills.at(index);
    std::string text = "interior" + Value(fill.interior) + Color(fill.color);
    if (fill.interior == Interior::kHatch)
      text += " hatch" + Value(fill.hatch) + " from " + At(fill.origin) + " gap " + Color(fill.gap_color);
    if (fill.interior != Interior::kPattern) return text;
    const Pattern& pattern = drawing_.patterns.at(fill.pattern);
    text += " pattern" + std::to_string(pattern.columns) + "x" + std::to_string(pattern.rows);
    for (const uint32_t color : pattern.colors) text += Color(color);
    return text + At(fill.origin) + At(fill.pattern_up) + At(fill.pattern_along);
  }

  std::string Area(const AreaStyle& style) const {
    return " fill " + FillText(style.fill) + " edge " + StrokeText(style.edge);
  }

  void Line(const std::string& exact, std::vector<ObjectText::Near> near = {}) {
    lines_.push_back({exact + clip_, std::move(near)});
  }

  void Put(const Polyline& line) { Line("polyline " + StrokeText(line.stroke) + At(line.points)); }
  void Put(const Segments& segments) {
    Line("segments " + StrokeText(segments.stroke) + At(segments.points));
  }
  void Put(const Polygon& polygon) {
    std::string text = "polygon" + Area(polygon.style);
    for (const Ring& ring : polygon.rings) {
      text += " ring";
      for (size_t i = 0; i < ring.points.size(); ++i) {
        text += At(ring.points[i]) + (i < ring.visible.size() && ring.visible[i] == 0 ? "hidden" : "");
      }
    }
    Line(text);
  }
  void Put(const Rectangle& rectangle) {
    Line("rectangle" + Area(rectangle.style) + At(rectangle.corner) + At(rectangle.opposite));
  }
  // Circles have no axes of their own.
  void Put(const Ellipse& e) {
    const bool circle =
        e.a.x * e.b.x + e.a.y * e.b.y == 0 && std::hypot(e.a.x, e.a.y) == std::hypot(e.b.x, e.b.y);
    const std::string text = Area(e.style) + At(e.centre);
    if (circle) {
      Line("circle" + text + Number(std::hypot(e.a.x, e.a.y)));
    } else {
      Line("ellipse" + text + At(e.a) + At(e.b));
    }
  }
  // By points on the way.
  void Put(const Arc& arc) {
    constexpr int kSteps = 5;
    constexpr double kTolerance = 0.1;
    std::vector<ObjectText::Near> near;
    for (int i = 0; i <= kSteps; ++i) {
      const double t = arc.start + arc.sweep * i / kSteps;
      near.push_back({arc.centre.x + arc.a.x * std::cos(t) + arc.b.x * std::sin(t), kTolerance});
      near.push_back({arc.centre.y + arc.a.y * std::cos(t) + arc.b.y * std::sin(t), kTolerance});
    }
    const std::string style = arc.closure == Closure::kOpen ? " " + StrokeText(arc.stroke) : Area(arc.style);
    Line("arc" + Value(arc.closure) + style + At(arc.centre), std::move(near));
  }
  void Put(const Figure& figure) {
    const bool lines = figure.style.fill == kNone && figure.style.edge == kNone;
    Polygon polygon{{}, figure.style};
    for (const Contour& contour : figure.contours) {
      std::vector<Point> points{contour.start};
      for (const auto& curve : contour.curves) points.push_back(curve[2]);
      if (lines && contour.closed) points.push_back(points[0]);
      if (lines) Put(Polyline{points, figure.stroke});
      polygon.rings.push_back({points, {}});
    }
    if (!lines) Put(polygon);
  }
  void Put(const Markers& markers) {
    const MarkerStyle& style = drawing_.markers.at(markers.marker);
    Line("markers" + Value(style.type) + Color(style.color) + "*" + Number(drawing_.SizeOf(style)) +
         At(markers.points));
  }
  // Heights of fitted text go through the height of its capitals.
  void Put(const Text& text) {
    std::vector<ObjectText::Near> near;
    std::string line = "text" + At(text.at) + (text.fit ? " fit" + Number(text.fit->x) : "");
    if (text.fit) near.push_back({text.fit->y, 2.0});
    for (const TextSpan& span : text.spans) {
      const TextStyle& s = drawing_.texts.at(span.style);
      near.push_back({s.height, text.fit ? 1.0 : 0.0});
      line += " '" + span.text + "' font" + Value(s.font.family);
      line += s.font.family == FontFamily::kHershey ? Value(s.font.hershey)
                                                    : Value(s.font.bold) + Value(s.font.italic);
      line += Color(s.color) + "*" + Number(s.expansion) + "+" + Number(s.spacing) + At(s.up) + At(s.base) +
              " path" + Value(s.path) + " align" + Value(s.across) + Value(s.upright) +
              Number(s.across_fraction) + "," + Number(s.upright_fraction) + " box " + Color(s.box_color);
    }
    Line(line, std::move(near));
  }
  void Put(const CellArray& cells) {
    std::string text = "cells " + std::to_string(cells.columns) + "x" + std::to_string(cells.rows) +
                       At(cells.corner) + At(cells.opposite) + At(cells.row_end);
    for (const uint32_t color : cells.colors) text += Color(color);
    Line(text + (cells.transparent ? " without " + Color(*cells.transparent) : ""));
  }

  const Drawing& drawing_;
  std::string clip_;
  std::vector<ObjectText> lines_;
};

}  // namespace

bool ObjectText::Matches(const ObjectText& other) const {
  if (exact != other.exact || near.size() != other.near.size()) return false;
  for (size_t i = 0; i < near.size(); ++i) {
    if (!(std::abs(near[i].value - other.near[i].value) <= near[i].tolerance)) return false;
  }
  return true;
}

std::vector<ObjectText> Describe(const Drawing& drawing) {
  return Describer(drawing).Run();
}

}  // namespace tavi::test

#include "RandomDrawing.h"

#include <cmath>
#include <iterator>
#include <random>
#include <tuple>
#include <utility>

namespace tavi::test {
namespace {

using namespace host::vec;

class Maker {
 public:
  Maker(uint32_t seed, int reach) : random_(seed), reach_(reach) {}

  Drawing Run() {
    drawing_.layers.push_back({u"", true});
    if (Chance(3)) {
      drawing_.nominal_width = Between(1, 4);
      drawing_.nominal_marker = Between(1, 9);
    }
    for (int i = Between(0, 3); i > 0; --i) drawing_.patterns.push_back(MakePattern());
    for (int i = Between(0, 2); i > 0; --i) drawing_.clips.push_back(MakeClip());
    for (int i = Between(1, 8); i > 0; --i) {
      const uint32_t clip = Chance(3) ? Below(drawing_.clips.size()) : kNone;
      drawing_.objects.push_back({MakeShape(), 0, clip});
    }
    return std::move(drawing_);
  }

 private:
  int Between(int low, int high) {
    return low + static_cast<int>(random_() % static_cast<uint32_t>(high - low + 1));
  }
  bool Chance(int in) { return Between(1, in) == 1; }
  uint32_t Below(size_t count) { return count == 0 ? kNone : static_cast<uint32_t>(random_() % count); }
  template <class Enumeration>
  Enumeration Choose(Enumeration last, int first = 0) {
    return static_cast<Enumeration>(Between(first, static_cast<int>(last)));
  }
  // Few colours, so that attributes also stay the same from object to object.
  uint32_t Color() {
    constexpr uint32_t kColors[] = {0x000000, 0xFFFFFF, 0x0000FF, 0x123456, 0x80FF01};
    return kColors[Below(std::size(kColors))];
  }
  std::optional<uint32_t> Gap() { return Chance(2) ? std::optional(Color()) : std::nullopt; }
  Point At() { return {double(Between(-reach_, reach_)), double(Between(-reach_, reach_))}; }
  std::vector<Point> Points(int least, int most) {
    std::vector<Point> points;
    for (int i = Between(least, most); i > 0; --i) points.push_back(At());
    return points;
  }
  // Vectors that span a good part of the plane.
  std::pair<Point, Point> Axes(int longest) {
    for (;;) {
      const Point a{double(Between(-longest, longest)), double(Between(-longest, longest))};
      const Point b{double(Between(-longest, longest)), double(Between(-longest, longest))};
      const double area = std::abs(a.x * b.y - a.y * b.x);
      if (area > 0.3 * std::hypot(a.x, a.y) * std::hypot(b.x, b.y)) return {a, b};
    }
  }

  Pattern MakePattern() {
    Pattern pattern;
    pattern.columns = static_cast<uint32_t>(Between(1, 5));
    pattern.rows = static_cast<uint32_t>(Between(1, 4));
    for (uint32_t i = 0; i < pattern.columns * pattern.rows; ++i) pattern.colors.push_back(Color());
    return pattern;
  }
  Box MakeClip() {
    const Point low = At();
    return {low, {low.x + Between(1, reach_), low.y + Between(1, reach_)}};
  }

  uint32_t MakeStroke(std::optional<uint32_t> gap) {
    Stroke stroke;
    stroke.color = Color();
    stroke.width = Between(0, 6);
    stroke.scaled = Chance(4);
    stroke.type = Choose(LineType::kCustom);
    if (stroke.type == LineType::kCustom) {
      for (int i = 2 * Between(1, 4); i > 0; --i) stroke.dashes.push_back(Between(1, 20));
    }
    if (Chance(4)) stroke.cap = Choose(LineCap::kSquare);
    if (Chance(4)) stroke.join = Choose(LineJoin::kBevel);
    if (Chance(8)) stroke.mitre_limit = Between(4, 36) / 4.0;
    stroke.gap_color = gap;
    return Intern(drawing_.strokes, stroke);
  }
  uint32_t MakeStroke() { return MakeStroke(Gap()); }

  uint32_t MakeFill(std::optional<uint32_t> gap) {
    if (Chance(5)) return kNone;
    Fill fill;
    fill.interior = Choose(Interior::kEmpty);
    fill.color = Color();
    fill.hatch = Choose(Hatch::kDiagonalCross, 1);
    fill.gap_color = gap;
    fill.pattern = Below(drawing_.patterns.size());
    if (fill.interior == Interior::kPattern && fill.pattern == kNone) fill.interior = Interior::kSolid;
    fill.origin = At();
    std::tie(fill.pattern_up, fill.pattern_along) = Axes(20);
    return Intern(drawing_.fills, fill);
  }

  // Interior and edge want the same gaps: two colours make two objects.
  AreaStyle MakeArea() {
    const std::optional<uint32_t> gap = Gap();
    const uint32_t fill = MakeFill(gap);
    return {fill, Chance(3) ? kNone : MakeStroke(gap)};
  }

  Ring MakeRing() {
    Ring ring{Points(3, 7), {}};
    if (Chance(2)) {
      for (size_t i = 0; i < ring.points.size(); ++i) ring.visible.push_back(Chance(3) ? 0 : 1);
    }
    return ring;
  }

  Ellipse MakeEllipse() {
    Ellipse ellipse{At(), {}, {}, MakeArea()};
    if (Chance(2)) {
      const double radius = Between(0, 300);
      ellipse.a = {radius, 0};
      ellipse.b = {0, Chance(2) ? radius : -radius};
    } else {
      std::tie(ellipse.a, ellipse.b) = Axes(300);
    }
    return ellipse;
  }

  Arc MakeArc() {
    Arc arc;
    arc.centre = At();
    const double radius = Between(20, 300);
    std::tie(arc.a, arc.b) =
        Chance(2) ? std::pair(Point{radius, 0}, Point{0, Chance(2) ? radius : -radius}) : Axes(300);
    arc.start = Between(-7000, 7000) / 1000.0;
    arc.sweep = (Chance(2) ? 1 : -1) * Between(50, 6200) / 1000.0;
    arc.closure = Choose(Closure::kChord);
    if (arc.closure == Closure::kOpen) {
      arc.stroke = MakeStroke();
    } else {
      arc.style = MakeArea();
    }
    return arc;
  }

  // Of straight lines; curves are not kept.
  Figure MakeFigure() {
    Figure figure;
    const bool area = Chance(2);
    for (int i = Between(1, 3); i > 0; --i) {
      Contour contour;
      contour.start = At();
      Point last = contour.start;
      for (int k = Between(2, 5); k > 0; --k) {
        const Point to{last.x + Between(1, 9), last.y - Between(1, 9)};
        contour.curves.push_back({last, to, to});
        last = to;
      }
      contour.closed = area || Chance(2);
      figure.contours.push_back(contour);
    }
    if (area) {
      figure.style.edge = MakeStroke();
    } else {
      figure.stroke = MakeStroke();
    }
    return figure;
  }

  std::string Characters() {
    constexpr const char* kPieces[] = {
        "A", "b c", "(x)", "\xC3\xA9", "\xC2\xB0", "0", "~", "\xC3\xBF", "\xCE\xB1\xE2\x82\xAC"};
    std::string text;
    for (int i = Between(1, 12); i > 0; --i) text += kPieces[Below(std::size(kPieces))];
    if (Chance(40)) text += std::string(300, 'm');
    return text;
  }

  Font MakeFont() {
    Font font;
    font.family = Choose(FontFamily::kHershey);
    if (font.family == FontFamily::kHershey) {
      font.hershey = Choose(HersheyFace::kGothicItalian);
    } else {
      font.bold = Chance(2);
      font.italic = Chance(2);
    }
    return font;
  }

  // What a span may differ in from the one before.
  void VarySpan(TextStyle* style) {
    style->font = MakeFont();
    style->color = Color();
    style->height = Between(2, 60);
    style->expansion = Chance(2) ? 1 : Between(1, 12) / 4.0;
    style->spacing = Chance(2) ? 0 : Between(-8, 8) / 8.0;
    style->box_color = Gap();
  }

  Text MakeText() {
    TextStyle style;
    if (Chance(2)) std::tie(style.up, style.base) = Axes(500);
    style.path = Choose(TextPath::kDown);
    style.across = Choose(TextAcross::kContinuous);
    style.upright = Choose(TextUpright::kContinuous);
    style.across_fraction = Chance(2) ? 0 : Between(-4, 8) / 4.0;
    style.upright_fraction = Chance(2) ? 0 : Between(-4, 8) / 4.0;
    Text text{At(), {}, {}};
    for (int i = Chance(2) ? 1 : Between(2, 4); i > 0; --i) {
      VarySpan(&style);
      text.spans.push_back({Characters(), Intern(drawing_.texts, style)});
    }
    if (Chance(3)) text.fit = Point{double(Between(1, 900)), double(Between(1, 90))};
    return text;
  }

  CellArray MakeCells() {
    CellArray cells{
        At(), At(), At(), static_cast<uint32_t>(Between(1, 6)), static_cast<uint32_t>(Between(1, 5)), {}, {}};
    for (uint32_t i = 0; i < cells.columns * cells.rows; ++i) cells.colors.push_back(Color());
    return cells;
  }

  uint32_t MakeMarker() {
    MarkerStyle style;
    style.type = Choose(MarkerType::kCross, 1);
    style.color = Color();
    style.size = Between(1, 30);
    style.scaled = Chance(4);
    return Intern(drawing_.markers, style);
  }

  Shape MakeShape() {
    switch (Between(0, 9)) {
      case 0:
        return Polyline{Points(2, 9), MakeStroke()};
      case 1: {
        std::vector<Point> points = Points(2, 9);
        points.resize(points.size() / 2 * 2);
        return Segments{points, MakeStroke()};
      }
      case 2: {
        Polygon polygon{{}, MakeArea()};
        for (int i = Between(1, 3); i > 0; --i) polygon.rings.push_back(MakeRing());
        return polygon;
      }
      case 3:
        return Rectangle{At(), At(), MakeArea()};
      case 4:
        return MakeEllipse();
      case 5:
        return MakeArc();
      case 6:
        return MakeFigure();
      case 7:
        return Markers{Points(1, 5), MakeMarker()};
      case 8:
        return MakeText();
      default:
        return MakeCells();
    }
  }

  std::mt19937 random_;
  int reach_;
  Drawing drawing_;
};

}  // namespace

Drawing RandomDrawing(uint32_t seed, int reach) {
  return Maker(seed, reach).Run();
}

}  // namespace tavi::test

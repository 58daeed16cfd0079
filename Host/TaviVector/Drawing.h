// The drawing model: what a HostVector holds. A plain value: copying one shares nothing.
//
// Space: x to the right, y upward, one unit a pixel where the picture says nothing else. Angles of arcs are those of the
// parameter t in centre + a cos t + b sin t. Colours are 0x00BBGGRR. Attributes stand in pools and objects name them by
// index, because pictures draw thousands of objects with a few styles.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <variant>
#include <vector>

namespace tavi::host::vec {

struct Point {
  double x = 0;
  double y = 0;
  friend bool operator==(const Point&, const Point&) = default;
};

// x' = xx x + xy y + x0, y' = yx x + yy y + y0.
struct Affine {
  double xx = 1, xy = 0, x0 = 0;
  double yx = 0, yy = 1, y0 = 0;
  Point Apply(Point p) const { return {xx * p.x + xy * p.y + x0, yx * p.x + yy * p.y + y0}; }
  Point ApplyVector(Point v) const { return {xx * v.x + xy * v.y, yx * v.x + yy * v.y}; }
};

// An empty box has low above high.
struct Box {
  Point low{1, 1};
  Point high{0, 0};
  bool IsEmpty() const { return low.x > high.x || low.y > high.y; }
};

// ---- Attributes ----------------------------------------------------------------------------------------

// In the place of a colour: the back colour of the vector that holds the drawing.
inline constexpr uint32_t kBackColor = 0x01000000;

inline constexpr uint32_t kNone = UINT32_MAX;  // no such attribute: not stroked, not filled, not clipped

enum class LineType : uint8_t { kSolid, kDash, kDot, kDashDot, kDashDotDot, kCustom };
enum class LineCap : uint8_t { kButt, kRound, kSquare };
enum class LineJoin : uint8_t { kMitre, kRound, kBevel };

// Of lines and of the edges of areas.
struct Stroke {
  uint32_t color = 0;
  double width = 1;     // in units, or in nominal widths where `scaled`
  bool scaled = false;  // see Drawing::nominal_width
  LineType type = LineType::kSolid;
  std::vector<double> dashes;  // kCustom: on, off, … in units
  LineCap cap = LineCap::kButt;
  LineJoin join = LineJoin::kMitre;
  double mitre_limit = 10;
  std::optional<uint32_t> gap_color;  // painted between the dashes; none: what is beneath shows
  friend bool operator==(const Stroke&, const Stroke&) = default;
};

enum class Interior : uint8_t { kHollow, kSolid, kPattern, kHatch, kEmpty };
enum class Hatch : uint8_t { kHorizontal = 1, kVertical, kRising, kFalling, kCross, kDiagonalCross };

// A small picture that repeats: rows from the top, columns from the left.
struct Pattern {
  uint32_t columns = 0;
  uint32_t rows = 0;
  std::vector<uint32_t> colors;
  friend bool operator==(const Pattern&, const Pattern&) = default;
};

struct Fill {
  Interior interior = Interior::kSolid;  // kHollow: the outline in the fill's colour
  uint32_t color = 0;
  Hatch hatch = Hatch::kHorizontal;
  uint32_t pattern = kNone;  // index into Drawing::patterns
  Point origin;              // of hatch and pattern
  Point pattern_up{0, 1};    // height and width vectors of one copy of the pattern, in units
  Point pattern_along{1, 0};
  std::optional<uint32_t> gap_color;  // painted between hatch lines
  friend bool operator==(const Fill&, const Fill&) = default;
};

enum class MarkerType : uint8_t { kDot = 1, kPlus, kAsterisk, kCircle, kCross };

struct MarkerStyle {
  MarkerType type = MarkerType::kAsterisk;
  uint32_t color = 0;
  double size = 1;  // full extent, in units, or in nominal marker sizes where `scaled`
  bool scaled = false;
  friend bool operator==(const MarkerStyle&, const MarkerStyle&) = default;
};

enum class FontFamily : uint8_t { kSans, kSerif, kMono, kHershey };
enum class HersheyFace : uint8_t {
  kCartographicRoman,
  kCartographicGreek,
  kSimplexRoman,
  kSimplexGreek,
  kSimplexScript,
  kComplexRoman,
  kComplexGreek,
  kComplexScript,
  kComplexItalic,
  kComplexCyrillic,
  kDuplexRoman,
  kTriplexRoman,
  kTriplexItalic,
  kGothicGerman,
  kGothicEnglish,
  kGothicItalian
};

struct Font {
  FontFamily family = FontFamily::kSans;
  bool bold = false;
  bool italic = false;
  HersheyFace hershey = HersheyFace::kSimplexRoman;
  friend bool operator==(const Font&, const Font&) = default;
};

enum class TextPath : uint8_t { kRight, kLeft, kUp, kDown };
enum class TextAcross : uint8_t { kNormal, kLeft, kCentre, kRight, kContinuous };
enum class TextUpright : uint8_t { kNormal, kTop, kCap, kHalf, kBase, kBottom, kContinuous };

struct TextStyle {
  Font font;
  uint32_t color = 0;
  double height = 16;    // em size in units
  double expansion = 1;  // of the width of the characters
  double spacing = 0;    // between characters, times the height
  Point up{0, 1};        // directions; the ratio of their lengths scales the width
  Point base{1, 0};
  TextPath path = TextPath::kRight;
  TextAcross across = TextAcross::kNormal;
  TextUpright upright = TextUpright::kNormal;
  double across_fraction = 0;         // of kContinuous: 0 left, 1 right
  double upright_fraction = 0;        // 0 bottom, 1 top
  std::optional<uint32_t> box_color;  // painted behind the characters
  friend bool operator==(const TextStyle&, const TextStyle&) = default;
};

// ---- Objects -------------------------------------------------------------------------------------------

struct Polyline {
  std::vector<Point> points;
  uint32_t stroke = kNone;
  friend bool operator==(const Polyline&, const Polyline&) = default;
};

// Separate lines: points 0 to 1, 2 to 3, …
struct Segments {
  std::vector<Point> points;
  uint32_t stroke = kNone;
  friend bool operator==(const Segments&, const Segments&) = default;
};

struct Ring {
  std::vector<Point> points;     // closed; the first point is not repeated
  std::vector<uint8_t> visible;  // for each point whether the edge that leaves it is drawn; empty: all are
  friend bool operator==(const Ring&, const Ring&) = default;
};

// What every area has.
struct AreaStyle {
  uint32_t fill = kNone;
  uint32_t edge = kNone;  // a stroke; drawn over the interior
  friend bool operator==(const AreaStyle&, const AreaStyle&) = default;
};

// The rings are one area under the even-odd rule.
struct Polygon {
  std::vector<Ring> rings;
  AreaStyle style;
  friend bool operator==(const Polygon&, const Polygon&) = default;
};

struct Rectangle {
  Point corner;
  Point opposite;
  AreaStyle style;
  friend bool operator==(const Rectangle&, const Rectangle&) = default;
};

// centre + a cos t + b sin t, for all t.
struct Ellipse {
  Point centre;
  Point a{1, 0};
  Point b{0, 1};
  AreaStyle style;
  friend bool operator==(const Ellipse&, const Ellipse&) = default;
};

enum class Closure : uint8_t { kOpen, kPie, kChord };

// The same from t = start over `sweep` (radians, at most a full turn, negative for falling t). Open arcs are stroked,
// closed ones are areas.
struct Arc {
  Point centre;
  Point a{1, 0};
  Point b{0, 1};
  double start = 0;
  double sweep = 0;
  Closure closure = Closure::kOpen;
  uint32_t stroke = kNone;
  AreaStyle style;
  friend bool operator==(const Arc&, const Arc&) = default;
};

// One outline of straight lines and cubic curves.
struct Contour {
  Point start;
  std::vector<std::array<Point, 3>>
      curves;  // control, control, end; a straight line repeats its ends as controls
  bool closed = false;
  friend bool operator==(const Contour&, const Contour&) = default;
};

// Outlines drawn as lines (style.fill and style.edge kNone) or as one even-odd area.
struct Figure {
  std::vector<Contour> contours;
  uint32_t stroke = kNone;
  AreaStyle style;
  friend bool operator==(const Figure&, const Figure&) = default;
};

struct Markers {
  std::vector<Point> points;
  uint32_t marker = kNone;
  friend bool operator==(const Markers&, const Markers&) = default;
};

struct TextSpan {
  std::string text;  // UTF-8
  uint32_t style = kNone;
  friend bool operator==(const TextSpan&, const TextSpan&) = default;
};

// Spans follow each other along the path and are aligned as one, by the first span's style.
struct Text {
  Point at;
  std::vector<TextSpan> spans;
  std::optional<Point>
      fit;  // width along the base vector and height along the up vector to fit the text into
  friend bool operator==(const Text&, const Text&) = default;
};

// A parallelogram of cells: `corner` begins the first cell, `row_end` ends the first row, `opposite` the last.
struct CellArray {
  Point corner;
  Point opposite;
  Point row_end;
  uint32_t columns = 0;
  uint32_t rows = 0;
  std::vector<uint32_t> colors;         // columns x rows
  std::optional<uint32_t> transparent;  // cells of this colour are left out
  friend bool operator==(const CellArray&, const CellArray&) = default;
};

using Shape =
    std::variant<Polyline, Segments, Polygon, Rectangle, Ellipse, Arc, Figure, Markers, Text, CellArray>;

struct Object {
  Shape shape;
  uint32_t layer = 0;
  uint32_t clip = kNone;  // index into Drawing::clips
  friend bool operator==(const Object&, const Object&) = default;
};

// ---- The drawing ---------------------------------------------------------------------------------------

struct Layer {
  std::u16string name;
  bool visible = true;
  friend bool operator==(const Layer&, const Layer&) = default;
};

struct Drawing {
  std::vector<Layer> layers;
  std::vector<Object> objects;  // in the order of painting
  std::vector<Stroke> strokes;
  std::vector<Fill> fills;
  std::vector<Pattern> patterns;
  std::vector<MarkerStyle> markers;
  std::vector<TextStyle> texts;
  std::vector<Box> clips;
  // What a scaled width of 1 and a scaled marker size of 1 are in units. The painter shows no line thinner than a pixel.
  double nominal_width = 1;
  double nominal_marker = 6;
  // The units are no pixels, but what a real-valued metafile says: fractions of them count when it is written again.
  bool real_units = false;

  double WidthOf(const Stroke& stroke) const {
    return stroke.scaled ? stroke.width * nominal_width : stroke.width;
  }
  double SizeOf(const MarkerStyle& m) const { return m.scaled ? m.size * nominal_marker : m.size; }
};

// Index of an equal attribute in the pool, which is added at its end if need be. Looks at the last few entries only:
// styles repeat nearby.
template <class Attribute>
uint32_t Intern(std::vector<Attribute>& pool, const Attribute& attribute) {
  const size_t nearest = pool.size() > 8 ? pool.size() - 8 : 0;
  for (size_t i = pool.size(); i > nearest; --i) {
    if (pool[i - 1] == attribute) return static_cast<uint32_t>(i - 1);
  }
  pool.push_back(attribute);
  return static_cast<uint32_t>(pool.size() - 1);
}

// Moves, scales, turns everything, attributes in units with it (by the square root of the area's scale).
void Transform(Drawing& drawing, const Affine& by);

// What an object and a whole drawing cover: half the widths of strokes, markers and text boxes counted, clips applied.
// Empty for a drawing without visible objects. Never NaN or infinite.
Box BoundsOf(const Drawing& drawing, const Object& object);
Box BoundsOf(const Drawing& drawing);

}  // namespace tavi::host::vec

// How shapes get their styles: from the attributes in force to the drawing's pools.
#include <algorithm>
#include <cmath>
#include <numeric>

#include "TaviFile/CgmFonts.h"
#include "TaviFile/CgmInterpreter.h"
#include "TaviFile/CgmLimits.h"
#include "TaviFile/CgmTextMeasure.h"
#include "TaviFile/CgmWeight.h"

namespace tavi::host::cgm {
namespace {

using vec::Interior;
using vec::kNone;

// Where a picture has no scale, a nominal line is as wide as this on paper, and a nominal marker as large.
constexpr double kNominalLineMillimetres = 0.35;
constexpr double kNominalMarkerMillimetres = 3.5;

// Pictures in pixels have lines a pixel wide. Larger ones were made to be scaled down: there, as in real-valued ones,
// sizes are shares of the picture's side.
constexpr double kPixelPicture = 4096;
constexpr double kLineShare = 1000;
constexpr double kMarkerShare = 100;
constexpr double kTextShare = 100;
constexpr double kPixelText = 12;

// Registered types beyond the five are shown by the nearest of them.
vec::LineType TypeOf(int64_t type) {
  switch (type) {
    case 2:
    case 9:   // stitch line
    case 12:  // hidden line
      return vec::LineType::kDash;
    case 3:
      return vec::LineType::kDot;
    case 4:
    case 10:  // chain line
    case 11:  // centre line
      return vec::LineType::kDashDot;
    case 5:
    case 13:  // phantom line
      return vec::LineType::kDashDotDot;
    default:
      return vec::LineType::kSolid;
  }
}

constexpr int64_t kInterpolated = 6;

// An interior that no element has set is empty: areas of annotations without one are outlines of their edges. Who
// asks for hollow gets the outline.
Interior InteriorOf(const std::optional<int64_t>& interior) {
  switch (interior.value_or(4)) {
    case 1:
    case 5:  // geometric pattern
    case kInterpolated:
      return Interior::kSolid;
    case 2:
      return Interior::kPattern;
    case 3:
      return Interior::kHatch;
    case 4:
      return Interior::kEmpty;
    default:
      return Interior::kHollow;
  }
}

vec::Hatch HatchOf(int64_t index) {
  return index >= 1 && index <= 6 ? static_cast<vec::Hatch>(index) : vec::Hatch::kHorizontal;
}

void SetStroke(Shape& shape, uint32_t stroke) {
  std::visit(
      [stroke](auto& s) {
        if constexpr (requires { s.stroke; }) s.stroke = stroke;
      },
      shape);
}

void SetArea(Shape& shape, const vec::AreaStyle& style) {
  std::visit(
      [&style](auto& s) {
        if constexpr (requires { s.style.fill; }) s.style = style;
      },
      shape);
}

struct Cover {
  vec::Box* box;

  void Add(Point p) const {
    if (box->IsEmpty()) *box = {p, p};
    box->low = {std::min(box->low.x, p.x), std::min(box->low.y, p.y)};
    box->high = {std::max(box->high.x, p.x), std::max(box->high.y, p.y)};
  }
  void Add(const std::vector<Point>& points) const {
    for (const Point& p : points) Add(p);
  }
  void Add(Point centre, Point a, Point b) const {
    const Point reach{std::abs(a.x) + std::abs(b.x), std::abs(a.y) + std::abs(b.y)};
    Add({centre.x - reach.x, centre.y - reach.y});
    Add({centre.x + reach.x, centre.y + reach.y});
  }
  void operator()(const vec::Polyline& s) const { Add(s.points); }
  void operator()(const vec::Segments& s) const { Add(s.points); }
  void operator()(const vec::Polygon& s) const {
    for (const vec::Ring& ring : s.rings) Add(ring.points);
  }
  void operator()(const vec::Rectangle& s) const {
    Add(s.corner);
    Add(s.opposite);
  }
  void operator()(const vec::Ellipse& s) const { Add(s.centre, s.a, s.b); }
  void operator()(const vec::Arc& s) const { Add(s.centre, s.a, s.b); }
  void operator()(const vec::Figure& s) const {
    for (const vec::Contour& contour : s.contours) {
      Add(contour.start);
      for (const auto& curve : contour.curves) Add(curve[2]);
    }
  }
  void operator()(const vec::Markers& s) const { Add(s.points); }
  void operator()(const vec::Text& s) const { Add(s.at); }
  void operator()(const vec::CellArray& s) const {
    Add(s.corner);
    Add(s.opposite);
    Add(s.row_end);
  }
};

}  // namespace

std::pair<double, bool> Interpreter::WidthOf(const std::optional<Size>& size,
                                             double nominal_millimetres) const {
  const Size given = size.value_or(Size());
  const double value = std::max(0.0, given.value);
  switch (given.mode) {
    case SizeMode::kAbsolute:
      return {value * LengthScale(), false};
    case SizeMode::kFraction:
      return {value * frame.Side(coding.vdc_is_real) * LengthScale(), false};
    case SizeMode::kMillimetres:
      if (frame.millimetres > 0) return {value / frame.millimetres * LengthScale(), false};
      return {value / nominal_millimetres, true};
    case SizeMode::kScaled:
      break;
  }
  return {value, true};
}

// The dashes of a type that the metafile defines, or one of the fixed types.
vec::Stroke Interpreter::DashesOf(int64_t type, vec::Stroke stroke, bool* scaled) {
  const auto defined = tables.dashes.find(type);
  if (defined == tables.dashes.end()) {
    stroke.type = TypeOf(type);
    return stroke;
  }
  const auto [cycle, relative] = WidthOf(defined->second.cycle, kNominalLineMillimetres);
  stroke.type = vec::LineType::kCustom;
  for (const double share : defined->second.shares) stroke.dashes.push_back(share * cycle);
  *scaled = relative;
  return stroke;
}

uint32_t Interpreter::StrokeOf(const LineAspects& aspects, const Ends& ends) {
  bool scaled_dashes = false;
  vec::Stroke stroke;
  stroke.color = Resolve(aspects.color);
  std::tie(stroke.width, stroke.scaled) = WidthOf(aspects.width, kNominalLineMillimetres);
  stroke.cap = ends.cap;
  stroke.join = ends.join;
  stroke.mitre_limit = now.mitre_limit;
  stroke = DashesOf(aspects.type, std::move(stroke), &scaled_dashes);
  if (!now.transparent && stroke.type != vec::LineType::kSolid) stroke.gap_color = Resolve(now.auxiliary);
  const uint32_t index = Intern(drawing_.strokes, stroke, stroke.dashes.size() * sizeof(double));
  if (scaled_dashes) scaled_dashes_.insert(index);
  return index;
}

template <class Style>
uint32_t Interpreter::Intern(std::vector<Style>& pool, const Style& style, uint64_t more_bytes) {
  const size_t before = pool.size();
  const uint32_t index = vec::Intern(pool, style);
  if (pool.size() != before) ChargeBytes(sizeof(Style) + more_bytes);
  return index;
}

// What a pattern's size counts in. Without a scale a millimetre is what it is to nominal lines of a pixel.
double Interpreter::PatternUnit() const {
  switch (now.pattern_size ? now.pattern_size_mode : SizeMode::kAbsolute) {
    case SizeMode::kFraction:
      return frame.Side(coding.vdc_is_real);
    case SizeMode::kMillimetres:
      return 1 / (frame.millimetres > 0 ? frame.millimetres : kNominalLineMillimetres);
    default:
      return 1;
  }
}

uint32_t Interpreter::CurrentFill() {
  const FillAspects aspects = FillInForce(now, tables);
  vec::Fill fill;
  fill.interior = InteriorOf(aspects.interior);
  if (fill.interior == Interior::kEmpty) return kNone;
  const bool interpolated = aspects.interior == kInterpolated && now.interpolated;
  fill.color = Resolve(interpolated ? *now.interpolated : aspects.color);
  fill.hatch = HatchOf(aspects.hatch);
  const auto [low, high] = frame.Extent(coding.vdc_is_real);
  fill.origin = Map(now.reference_point.value_or(low));
  if (fill.interior == Interior::kPattern) {
    const auto pattern = tables.patterns.find(aspects.pattern);
    const auto [up, along] =
        now.pattern_size.value_or(std::pair(Point{0, high.y - low.y}, Point{high.x - low.x, 0}));
    const double unit = PatternUnit();
    fill.pattern_up = MapVector({up.x * unit, up.y * unit});
    fill.pattern_along = MapVector({along.x * unit, along.y * unit});
    // A pattern that nothing has defined is a plain colour.
    if (pattern == tables.patterns.end()) fill.interior = Interior::kSolid;
    if (pattern != tables.patterns.end()) fill.pattern = PatternIn(pattern->first, pattern->second);
  }
  if (!now.transparent && fill.interior == Interior::kHatch) fill.gap_color = Resolve(now.auxiliary);
  return Intern(drawing_.fills, fill);
}

// Each definition goes into the drawing once, however often it is used.
uint32_t Interpreter::PatternIn(int64_t index, const vec::Pattern& pattern) {
  const auto known = drawn_patterns_.find(index);
  if (known != drawn_patterns_.end()) return known->second;
  ChargeCells(pattern.columns, pattern.rows);  // its colours stand in the table too
  drawing_.patterns.push_back(pattern);
  return drawn_patterns_[index] = static_cast<uint32_t>(drawing_.patterns.size() - 1);
}

void Interpreter::DefinePattern(int64_t index, vec::Pattern pattern) {
  tables.patterns[index] = std::move(pattern);
  drawn_patterns_.erase(index);
}

void Interpreter::ForgetStyles() {
  line_.reset();
  area_.reset();
  text_ = {};
}

uint32_t Interpreter::CurrentLine() {
  if (!line_) line_ = StrokeOf(LineInForce(now, tables), now.line_ends);
  return *line_;
}

vec::AreaStyle Interpreter::CurrentArea() {
  if (area_) return *area_;
  vec::AreaStyle style;
  style.fill = CurrentFill();
  if (now.edge_visible) style.edge = StrokeOf(EdgeInForce(now, tables), now.edge_ends);
  area_ = style;
  return style;
}

uint32_t Interpreter::CurrentTextStyle(bool capitals) {
  std::optional<uint32_t>& known = text_[capitals ? 1 : 0];
  if (known) return *known;
  const TextAspects aspects = TextInForce(now, tables);
  vec::TextStyle style;
  style.font = FontAt(tables, aspects.font).font;
  style.color = Resolve(aspects.color);
  style.height = std::abs(now.character_height.value_or(0)) * LengthScale();  // 0: settled at the end
  if (capitals) style.height /= CapitalsOf(style.font.family);
  style.expansion = aspects.expansion;
  style.spacing = aspects.spacing;
  // Text that no element has turned stands upright, whatever way the axes run.
  const auto [up, base] =
      now.orientation.value_or(std::pair(Point{0, frame.DirectionY()}, Point{frame.DirectionX(), 0}));
  style.up = MapVector(up);
  style.base = MapVector(base);
  style.path = now.path;
  style.across = now.across;
  style.upright = now.upright;
  style.across_fraction = now.across_fraction;
  style.upright_fraction = now.upright_fraction;
  if (!now.transparent) style.box_color = Resolve(now.auxiliary);
  known = Intern(drawing_.texts, style);
  return *known;
}

uint32_t Interpreter::CurrentClip() {
  if (!now.clip || !now.clipping) return kNone;
  vec::Box box;
  const Cover cover{&box};
  cover.Add(Map(now.clip->first));
  cover.Add(Map(now.clip->second));
  if (drawing_.clips.empty() ||
      !(drawing_.clips.back().low == box.low && drawing_.clips.back().high == box.high)) {
    drawing_.clips.push_back(box);
  }
  return static_cast<uint32_t>(drawing_.clips.size() - 1);
}

void Interpreter::AddToPath(const Shape& shape) {
  ChargeBytes(WeightInFigure(shape));
  path->Add(shape);
}

void Interpreter::DrawLine(Shape shape) {
  if (path) return AddToPath(shape);
  SetStroke(shape, CurrentLine());
  Draw(std::move(shape));
}

void Interpreter::DrawArea(Shape shape) {
  if (path) return AddToPath(shape);
  SetArea(shape, CurrentArea());
  Draw(std::move(shape));
}

void Interpreter::DrawMarkers(std::vector<Point> points) {
  const MarkerAspects aspects = MarkerInForce(now, tables);
  vec::MarkerStyle style;
  const bool known = aspects.type >= 1 && aspects.type <= 5;
  style.type = known ? static_cast<vec::MarkerType>(aspects.type) : vec::MarkerType::kAsterisk;
  style.color = Resolve(aspects.color);
  std::tie(style.size, style.scaled) = WidthOf(aspects.size, kNominalMarkerMillimetres);
  Draw(vec::Markers{std::move(points), Intern(drawing_.markers, style)});
}

void Interpreter::Draw(Shape shape) {
  ChargeBytes(WeightOf(shape));
  Place(std::move(shape));
}

void Interpreter::Place(Shape shape) {
  FlushText();
  if (protection > 0) return;
  vec::Box box;
  std::visit(Cover{&box}, shape);
  if (box.IsEmpty()) return;
  // Copies of segments may blow coordinates up beyond use.
  for (const double limit : {box.low.x, box.low.y, box.high.x, box.high.y}) {
    if (!(std::abs(limit) <= 4 * kLargestCoordinate)) return;
  }
  const Cover all{&covered_};
  all.Add(box.low);
  all.Add(box.high);
  drawing_.objects.push_back({std::move(shape), 0, CurrentClip()});
}

void Interpreter::FlushText() {
  if (!text) return;
  vec::Text complete = std::move(*text);
  text.reset();
  Draw(std::move(complete));
}

void Interpreter::EndPath() {
  if (!path) return;
  const bool area = path->kind() == PathKind::kFigure;
  vec::Figure figure{path->Take(), kNone, {}};
  path.reset();
  if (figure.contours.empty()) return;
  if (area) {
    figure.style = CurrentArea();
  } else {
    figure.stroke = CurrentLine();
  }
  Place(std::move(figure));
}

// What is relative to the picture can be told when all of it is known.
void Interpreter::ResolveNominalSizes() {
  double side =
      covered_.IsEmpty() ? 0 : std::max(covered_.high.x - covered_.low.x, covered_.high.y - covered_.low.y);
  double text_height = kPixelText;
  drawing_.real_units = coding.vdc_is_real;
  if (coding.vdc_is_real || side > kPixelPicture) {
    if (side <= 0) side = frame.Side(true);
    drawing_.nominal_width = side / kLineShare;
    drawing_.nominal_marker = side / kMarkerShare;
    text_height = side / kTextShare;
  }
  for (vec::TextStyle& style : drawing_.texts) {
    if (style.height == 0) style.height = text_height;
  }
  for (const uint32_t index : scaled_dashes_) {
    for (double& dash : drawing_.strokes[index].dashes) dash *= drawing_.nominal_width;
  }
}

}  // namespace tavi::host::cgm

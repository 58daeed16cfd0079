#include "TaviVector/PaintStrokes.h"

#include <array>
#include <utility>

#include "TaviVector/DashedRings.h"

namespace tavi::host::vec {
namespace {

constexpr double kWidest = 100'000;
constexpr double kSharpest = 32;         // mitre limit
constexpr double kMostDashes = 100'000;  // of one line, on all that is painted
constexpr double kShortestPeriod = 0.5;
constexpr size_t kMostDashLengths = 64;
// The rasteriser takes long paths more slowly than their parts.
constexpr size_t kPointsAtOnce = 512;
constexpr double kLengthAtOnce = 2048;
// What a dash takes of the time, against a piece of a line one pixel long.
constexpr double kLengthOfDash = 12;
constexpr double kThin = 2;

double WidthOr1(double width) {
  return std::clamp(std::isfinite(width) ? width : 1, 1.0, kWidest);
}

// Dashes and gaps in line widths.
std::span<const double> LengthsOf(LineType type) {
  static constexpr std::array<double, 2> kDash{6, 4};
  static constexpr std::array<double, 2> kDot{1.5, 2.5};
  static constexpr std::array<double, 4> kDashDot{6, 3, 1.5, 3};
  static constexpr std::array<double, 6> kDashDotDot{6, 3, 1.5, 3, 1.5, 3};
  switch (type) {
    case LineType::kDash:
      return kDash;
    case LineType::kDot:
      return kDot;
    case LineType::kDashDot:
      return kDashDot;
    case LineType::kDashDotDot:
      return kDashDotDot;
    default:
      return {};
  }
}

// A thin line along an axis covers one row or column of pixels in full when it runs through their middles. False when
// the line is not all along axes.
bool MakeCrisp(std::span<const Point> points, bool closed, std::vector<Point>* crisp) {
  constexpr double kStraight = 1e-6;
  const size_t count = points.size();
  const size_t segments = closed ? count : count - 1;
  for (size_t i = 0; i < segments; ++i) {
    const Point step = points[i + 1 < count ? i + 1 : 0] - points[i];
    if (std::abs(step.x) > kStraight && std::abs(step.y) > kStraight) return false;
  }
  crisp->assign(points.begin(), points.end());
  const auto middle = [](double value) { return std::floor(value + kStraight) + 0.5; };
  for (size_t i = 0; i < segments; ++i) {
    const size_t next = i + 1 < count ? i + 1 : 0;
    const Point step = points[next] - points[i];
    if (std::abs(step.x) <= kStraight) (*crisp)[i].x = (*crisp)[next].x = middle(points[i].x);
    if (std::abs(step.y) <= kStraight) (*crisp)[i].y = (*crisp)[next].y = middle(points[i].y);
  }
  return true;
}

}  // namespace

void LinePainter::SetDashes(const Stroke& stroke, Pen* pen) const {
  if (stroke.type == LineType::kCustom) {
    for (const double dash : stroke.dashes) {
      if (pen->dashes.size() == kMostDashLengths) break;
      pen->dashes.push_back(std::clamp(Tame(dash * scene_.scale), 0.0, kFarthest));
    }
  } else {
    const double unit = std::max(pen->style.width, 1.25);
    for (const double length : LengthsOf(stroke.type)) pen->dashes.push_back(length * unit);
  }
  for (const double dash : pen->dashes) pen->period += dash;
  if (pen->dashes.size() % 2 != 0) pen->period *= 2;
  // Dashes that nobody could tell apart are a solid line.
  if (pen->period < kShortestPeriod) pen->dashes.clear();
}

LinePainter::Pen LinePainter::MakePen(const Stroke& stroke) const {
  Pen pen;
  pen.style.color = stroke.color;
  pen.style.width = WidthOr1(scene_.drawing.WidthOf(stroke) * scene_.scale);
  pen.style.cap = stroke.cap;
  pen.style.join = stroke.join;
  pen.style.mitre_limit =
      std::isfinite(stroke.mitre_limit) ? std::clamp(stroke.mitre_limit, 1.0, kSharpest) : kSharpest;
  SetDashes(stroke, &pen);
  if (!pen.dashes.empty()) pen.gap = stroke.gap_color;
  return pen;
}

double LinePainter::Reach() const {
  const double mitre = pen_.style.join == LineJoin::kMitre ? std::max(pen_.style.mitre_limit, 1.5) : 1.5;
  return pen_.style.width / 2 * mitre + 2;
}

void LinePainter::Flush() {
  if (gathered_ != 0) StrokePath(false, 0);
}

void LinePainter::StrokePath(bool dashed, double offset) {
  LineStyle style = pen_.style;
  style.dashes = dashed ? std::span<const double>(pen_.dashes) : std::span<const double>();
  style.dash_offset = offset;
  scene_.canvas.Stroke(style);
  gathered_ = 0;
  gathered_length_ = 0;
}

void LinePainter::UseStroke(uint32_t index) {
  if (index == current_) return;
  Flush();
  pen_ = MakePen(scene_.drawing.strokes[index]);
  current_ = index;
}

void LinePainter::Draw(std::span<const Point> points, bool closed, uint32_t stroke) {
  if (stroke >= scene_.drawing.strokes.size() || points.empty()) return;
  UseStroke(stroke);
  Add(points, closed);
}

void LinePainter::Draw(std::span<const Point> points, bool closed, const LineStyle& style) {
  if (points.empty()) return;
  const bool same = current_ == kNone && style.color == pen_.style.color && style.width == pen_.style.width &&
                    style.cap == pen_.style.cap && style.join == pen_.style.join;
  if (!same) {
    Flush();
    pen_ = {};
    pen_.style = style;
    pen_.style.width = WidthOr1(style.width);
    current_ = kNone;
  }
  Add(points, closed);
}

// A point of a line without length shows the pen.
void LinePainter::AddDot(Point at) {
  Flush();
  const double half = pen_.style.width / 2;
  const LineStyle style{pen_.style.color, 2 * half,
                        pen_.style.cap == LineCap::kRound ? LineCap::kRound : LineCap::kButt};
  scene_.canvas.MoveTo({at.x - (style.cap == LineCap::kRound ? 0 : half), at.y});
  scene_.canvas.LineTo({at.x + (style.cap == LineCap::kRound ? 0 : half), at.y});
  scene_.canvas.Stroke(style);
}

// The length of what lies in the box.
double LinePainter::LengthIn(const Box& box, std::span<const Point> points, bool closed) {
  double length = 0;
  for (size_t i = 0; i + (closed ? 0 : 1) < points.size(); ++i) {
    Point from = points[i];
    Point to = points[i + 1 < points.size() ? i + 1 : 0];
    if (ClipSegment(box, &from, &to)) length += Length(to - from);
  }
  return length;
}

bool LinePainter::IsDashed(std::span<const Point> points, bool closed) const {
  if (pen_.dashes.empty()) return false;
  return LengthIn(Grown(scene_.whole, Reach()), points, closed) / pen_.period <= kMostDashes;
}

// Takes what the line costs from what is left.
bool LinePainter::IsSmooth(double length, bool dashed) const {
  if (scene_.smooth_left == nullptr) return true;
  const size_t count = pen_.dashes.size();
  const auto in_period = static_cast<double>(count % 2 == 0 ? count / 2 : count);
  *scene_.smooth_left -= dashed ? length * (1 + kLengthOfDash * in_period / pen_.period) : length;
  return *scene_.smooth_left >= 0;
}

void LinePainter::Add(std::span<const Point> points, bool closed) {
  const Box box = BoxOf(points);
  if (!scene_.IsVisible(Grown(box, Reach()))) return;
  if (box.low == box.high) {
    AddDot(box.low);
    return;
  }
  if (scene_.on_pixels && pen_.style.width < 1.5 && MakeCrisp(points, closed, &crisp_)) points = crisp_;
  const double length = LengthIn(Grown(scene_.visible, pen_.style.width), points, closed);
  const bool dashed = IsDashed(points, closed);
  if (!IsSmooth(length, dashed)) {
    AddRough(points, closed);
    return;
  }
  if (dashed && pen_.gap) {
    Flush();
    const uint32_t color = std::exchange(pen_.style.color, *pen_.gap);
    AddRuns(points, closed, false, length);
    Flush();
    pen_.style.color = color;
  }
  AddRuns(points, closed, dashed, length);
}

// Where lines crowd beyond all telling apart, time counts for more than smooth edges.
void LinePainter::AddRough(std::span<const Point> points, bool closed) {
  Flush();
  if (pen_.style.width > kThin) {
    pen_.style.smooth = false;
    AddRuns(points, closed, false, kLengthAtOnce);
    Flush();
    return;
  }
  for (size_t i = 0; i + (closed ? 0 : 1) < points.size(); ++i) {
    scene_.canvas.DrawThin(points[i], points[i + 1 < points.size() ? i + 1 : 0], pen_.style.color, clip_);
  }
}

void LinePainter::AddRuns(std::span<const Point> points, bool closed, bool dashed, double length) {
  if (dashed) Flush();
  const Box near = Grown(scene_.visible, Reach());
  const bool small = points.size() <= kPointsAtOnce && length <= kLengthAtOnce;
  if (!small || !Contains(Grown(near, kNear / 4), BoxOf(points))) {
    if (dashed && closed) {
      AddDashedRing(points, near);
    } else {
      AddClipped(points, closed, dashed, near);
    }
    return;
  }
  scene_.canvas.MoveTo(points[0]);
  for (const Point p : points.subspan(1)) scene_.canvas.LineTo(p);
  if (closed) scene_.canvas.ClosePath();
  gathered_ += points.size();
  gathered_length_ += length;
  if (dashed || IsEnough()) StrokePath(dashed, 0);
}

// A dash that goes on through the ring's first point is joined there.
void LinePainter::AddDashedRing(std::span<const Point> points, const Box& near) {
  const auto split = SplitDashedRing(points, pen_.dashes);
  if (!split) {
    AddClipped(points, true, true, near);
    return;
  }
  AddClipped(split->seam, false, false, near);
  Flush();
  AddClipped(split->rest, false, true, near, split->along);
}

// The parts of a long or far-reaching line that lie near what is visible. `before`: the length of what came before it.
void LinePainter::AddClipped(std::span<const Point> points, bool closed, bool dashed, const Box& near,
                             double before) {
  const size_t count = points.size();
  // A ring that leaves the neighbourhood begins outside, so that no corner inside lacks its join. Dashes begin at the
  // same point whatever is visible.
  const auto outside = [&near](Point p) { return !Contains(near, {p, p}); };
  const auto start_of_ring = std::find_if(points.begin(), points.end(), outside) - points.begin();
  const size_t first = closed && !dashed ? static_cast<size_t>(start_of_ring) % count : 0;
  const size_t segments = closed ? count : count - 1;
  double offset = 0;   // length up to the run, as `before` is up to the segment
  bool going = false;  // whether the path has come to the segment's start
  for (size_t i = 0; i < segments; ++i) {
    const Point start = points[(first + i) % count];
    const Point end = points[(first + i + 1) % count];
    Point from = start;
    Point to = end;
    const bool seen = ClipSegment(near, &from, &to);
    if (seen && !(going && from == start)) {
      if (dashed && gathered_ != 0) StrokePath(true, offset);
      offset = before + Length(from - start);
      Append(from, true);
    } else if (seen && dashed && IsEnough()) {
      BreakInGap(from, to, before, &offset);
    }
    if (seen) Append(to, false);
    going = seen && to == end;
    if (dashed) before = std::fmod(before + Length(end - start), pen_.period);
    if (!IsEnough()) continue;
    // Paths of dashes end in gaps, which need no joins, as long as there are any.
    if (dashed && going && !IsTooMuch()) continue;
    StrokePath(dashed, offset);
    if (!going) continue;
    // The next part makes the join, from half of this segment on.
    Append(dashed ? to : 0.5 * (from + to), true);
    if (!dashed) Append(to, false);
    offset = before;
  }
  if (closed && going && !dashed) Append(0.5 * (points[first] + points[(first + 1) % count]), false);
  if (dashed && gathered_ != 0) StrokePath(true, offset);
}

// Ends the path of dashes in the segment's first gap, if it has one, and begins another one.
void LinePainter::BreakInGap(Point from, Point to, double before, double* offset) {
  const DashPlace place = PlaceIn(pen_.dashes, before);
  const double distance = place.drawn ? place.to_end : 0;
  const double length = Length(to - from);
  if (!(distance < length)) return;
  const Point cut = from + (distance / length) * (to - from);
  Append(cut, false);
  StrokePath(true, *offset);
  Append(cut, true);
  *offset = before + distance;
}

void LinePainter::Append(Point p, bool begins) {
  if (begins) {
    scene_.canvas.MoveTo(p);
  } else {
    scene_.canvas.LineTo(p);
    gathered_length_ += Length(p - last_);
  }
  last_ = p;
  ++gathered_;
}

bool LinePainter::IsEnough() const {
  return gathered_ > kPointsAtOnce || gathered_length_ > kLengthAtOnce;
}

bool LinePainter::IsTooMuch() const {
  return gathered_ > 4 * kPointsAtOnce || gathered_length_ > 4 * kLengthAtOnce;
}

}  // namespace tavi::host::vec

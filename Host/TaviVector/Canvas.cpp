#include "TaviVector/Canvas.h"

#include <cairo-pdf.h>
#include <cairo-svg.h>
#include <cairo.h>

#include <utility>

#include "TaviKernel/Limits.h"

namespace tavi::host::vec {
namespace {

struct SurfaceOwner {
  explicit SurfaceOwner(cairo_surface_t* held) : surface(held) {}
  ~SurfaceOwner() { cairo_surface_destroy(surface); }
  SurfaceOwner(SurfaceOwner&& other) noexcept : surface(std::exchange(other.surface, nullptr)) {}
  SurfaceOwner(const SurfaceOwner&) = delete;
  SurfaceOwner& operator=(const SurfaceOwner&) = delete;
  SurfaceOwner& operator=(SurfaceOwner&&) = delete;
  bool ok() const { return cairo_surface_status(surface) == CAIRO_STATUS_SUCCESS; }
  cairo_surface_t* surface;
};

struct PatternOwner {
  explicit PatternOwner(cairo_pattern_t* held) : pattern(held) {}
  ~PatternOwner() { cairo_pattern_destroy(pattern); }
  PatternOwner(const PatternOwner&) = delete;
  PatternOwner& operator=(const PatternOwner&) = delete;
  cairo_pattern_t* pattern;
};

cairo_surface_t* SurfaceOver(const uint32_t* pixels, int32_t columns, int32_t rows) {
  // The rasteriser takes pixels that it only reads by the same type as those that it writes.
  // NOLINTNEXTLINE(cppcoreguidelines-pro-type-const-cast): they are only read
  auto* const bytes = reinterpret_cast<unsigned char*>(const_cast<uint32_t*>(pixels));
  return cairo_image_surface_create_for_data(bytes, CAIRO_FORMAT_ARGB32, columns, rows, columns * 4);
}

cairo_status_t WriteTo(void* sink, const unsigned char* bytes, unsigned int count) {
  return static_cast<Sink*>(sink)->Write(bytes, count) ? CAIRO_STATUS_SUCCESS : CAIRO_STATUS_WRITE_ERROR;
}

double Channel(uint32_t color, int shift) {
  return (color >> shift & 0xFF) / 255.0;
}

void SetColor(cairo_t* cairo, uint32_t color) {
  cairo_set_source_rgb(cairo, Channel(color, 0), Channel(color, 8), Channel(color, 16));
}

cairo_line_cap_t CapOf(LineCap cap) {
  if (cap == LineCap::kRound) return CAIRO_LINE_CAP_ROUND;
  return cap == LineCap::kSquare ? CAIRO_LINE_CAP_SQUARE : CAIRO_LINE_CAP_BUTT;
}

cairo_line_join_t JoinOf(LineJoin join) {
  if (join == LineJoin::kRound) return CAIRO_LINE_JOIN_ROUND;
  return join == LineJoin::kBevel ? CAIRO_LINE_JOIN_BEVEL : CAIRO_LINE_JOIN_MITER;
}

cairo_fill_rule_t RuleOf(FillRule rule) {
  return rule == FillRule::kEvenOdd ? CAIRO_FILL_RULE_EVEN_ODD : CAIRO_FILL_RULE_WINDING;
}

}  // namespace

struct Canvas::Handles {
  // The owner is emptied once there is room for the handles, not before.
  explicit Handles(SurfaceOwner&& held) : target(std::move(held)), cairo(cairo_create(target.surface)) {}
  ~Handles() { cairo_destroy(cairo); }
  Handles(const Handles&) = delete;
  Handles& operator=(const Handles&) = delete;

  SurfaceOwner target;
  cairo_t* cairo;
  Point origin;                // of the surface, in device space
  uint32_t* pixels = nullptr;  // of a canvas on pixels
  int32_t columns = 0;
  int32_t rows = 0;
};

Canvas::Canvas(std::unique_ptr<Handles> handles) : handles_(std::move(handles)) {}

Canvas::~Canvas() = default;

std::unique_ptr<Canvas> Canvas::Make(std::unique_ptr<Handles> handles) {
  if (cairo_status(handles->cairo) != CAIRO_STATUS_SUCCESS) return nullptr;
  return std::unique_ptr<Canvas>(new Canvas(std::move(handles)));
}

std::unique_ptr<Canvas> Canvas::OnPixels(uint32_t* pixels, int32_t columns, int32_t rows, int64_t left,
                                         int64_t top) {
  auto handles = std::make_unique<Handles>(SurfaceOwner(SurfaceOver(pixels, columns, rows)));
  handles->origin = {static_cast<double>(left), static_cast<double>(top)};
  handles->pixels = pixels;
  handles->columns = columns;
  handles->rows = rows;
  auto canvas = Make(std::move(handles));
  if (canvas != nullptr && columns <= TouchedRows::kMostColumns) {
    canvas->cells_ = std::make_unique<TouchedRows>(columns, rows);
  }
  return canvas;
}

std::unique_ptr<Canvas> Canvas::OnSvg(Sink* sink, double width, double height) {
  auto handles = std::make_unique<Handles>(
      SurfaceOwner(cairo_svg_surface_create_for_stream(&WriteTo, sink, width, height)));
  cairo_svg_surface_set_document_unit(handles->target.surface, CAIRO_SVG_UNIT_PX);
  return Make(std::move(handles));
}

std::unique_ptr<Canvas> Canvas::OnPdf(Sink* sink, double width, double height) {
  return Make(std::make_unique<Handles>(
      SurfaceOwner(cairo_pdf_surface_create_for_stream(&WriteTo, sink, width, height))));
}

// A count beyond the room says that there were more.
void Canvas::NoteLine(Point from, Point to, bool begins) {
  ++points_;
  if (line_count_ < lines_.size()) lines_[line_count_] = {from, to, begins};
  line_count_ = std::min(line_count_ + 1, lines_.size() + 1);
}

// How far the mitres of the path reach from their vertices, in halves of the line's width: the limit where that is in
// doubt, because lines are so short or turn so sharply that the rasteriser's rounding of their ends may count.
double Canvas::JoinReach(double limit) const {
  constexpr double kShortest = 1;
  constexpr double kSharpest = 0.1;  // sine of half the angle between two lines
  constexpr double kRounding = 1.1;
  constexpr double kFarthestOut = 1e6;  // beyond, the rasteriser's numbers end
  if (line_count_ > lines_.size()) return limit;
  double reach = 1;
  Point first;
  Point last;
  const auto join = [&](Point a, Point b) {
    if (Length(a) == 0 || Length(b) == 0) return;
    const double cosine = std::clamp(Dot(a, b) / (Length(a) * Length(b)), -1.0, 1.0);
    const double sine = std::sqrt((1 + cosine) / 2);
    reach = std::max(reach, sine < kSharpest ? limit : kRounding / sine);
  };
  for (size_t i = 0; i <= line_count_; ++i) {
    const Point span = i < line_count_ ? lines_[i].to - lines_[i].from : Point();
    if (i == line_count_ || lines_[i].begins) {
      join(last, first);  // as if the ring were closed
      first = last = {};
      continue;
    }
    if (span.x == 0 && span.y == 0) continue;
    const Point far = lines_[i].to;
    if (Length(span) < kShortest || !(std::max(std::abs(far.x), std::abs(far.y)) < kFarthestOut))
      return limit;
    join(last, span);
    if (first.x == 0 && first.y == 0) first = span;
    last = span;
  }
  return std::min(reach, limit);
}

void Canvas::MoveTo(Point p) {
  Include(path_, p);
  NoteLine(p, p, true);
  start_ = at_ = p;
  cairo_move_to(handles_->cairo, p.x - handles_->origin.x, p.y - handles_->origin.y);
}

void Canvas::LineTo(Point p) {
  Include(path_, p);
  NoteLine(at_, p, false);
  at_ = p;
  cairo_line_to(handles_->cairo, p.x - handles_->origin.x, p.y - handles_->origin.y);
}

void Canvas::ClosePath() {
  NoteLine(at_, start_, false);
  at_ = start_;
  cairo_close_path(handles_->cairo);
}

void Canvas::DropPath() {
  cairo_new_path(handles_->cairo);
  path_ = {};
  line_count_ = 0;
  points_ = 0;
}

void Canvas::AddRing(std::span<const Point> ring) {
  if (ring.empty()) return;
  MoveTo(ring[0]);
  for (const Point p : ring.subspan(1)) LineTo(p);
  ClosePath();
}

void Canvas::Touch(double margin) {
  const Box box = Grown(path_, margin + 1);
  Include(touched_, box);
  if (cells_ != nullptr && !box.IsEmpty())
    cells_->Add({box.low - handles_->origin, box.high - handles_->origin});
  path_ = {};
  line_count_ = 0;
}

void Canvas::TouchLines(double margin) {
  if (cells_ == nullptr || line_count_ > lines_.size()) {
    Touch(margin);
    return;
  }
  for (size_t i = 0; i < line_count_; ++i) {
    cells_->AddSegment(lines_[i].from - handles_->origin, lines_[i].to - handles_->origin, margin + 1);
  }
  Include(touched_, Grown(path_, margin + 1));
  path_ = {};
  line_count_ = 0;
}

void Canvas::Bound(double earned) {
  earned_ = earned;
}

// Whether there is room for the path and for so many pixels of a picture. If not, the path is dropped.
bool Canvas::CanHold(double pixels) {
  constexpr double kPixelsOfPoint = 256;
  constexpr double kPixelsOfPicture = 32;  // for each
  constexpr double kPointsOfOperation = 4;
  const auto points = static_cast<double>(std::exchange(points_, 0)) + kPointsOfOperation;
  if (!earned_) return true;
  held_ += points * kPixelsOfPoint + pixels * kPixelsOfPicture;
  is_beyond_ = is_beyond_ ||
               !IsWithin(HOST_LIMIT_PAINT, static_cast<uint64_t>(held_), static_cast<uint64_t>(*earned_));
  if (is_beyond_) DropPath();
  return !is_beyond_;
}

void Canvas::Fill(uint32_t color, FillRule rule) {
  if (!CanHold(0)) return;
  SetColor(handles_->cairo, color);
  cairo_set_fill_rule(handles_->cairo, RuleOf(rule));
  cairo_fill(handles_->cairo);
  Touch(0);
}

void Canvas::Stroke(const LineStyle& style) {
  if (!CanHold(0)) return;
  cairo_t* const cairo = handles_->cairo;
  SetColor(cairo, style.color);
  cairo_set_line_width(cairo, style.width);
  cairo_set_line_cap(cairo, CapOf(style.cap));
  cairo_set_line_join(cairo, JoinOf(style.join));
  cairo_set_miter_limit(cairo, style.mitre_limit);
  cairo_set_dash(cairo, style.dashes.data(), static_cast<int>(style.dashes.size()), style.dash_offset);
  cairo_set_antialias(cairo, style.smooth ? CAIRO_ANTIALIAS_DEFAULT : CAIRO_ANTIALIAS_NONE);
  cairo_stroke(cairo);
  cairo_set_antialias(cairo, CAIRO_ANTIALIAS_DEFAULT);
  constexpr double kCapReach = 1.5;
  const bool mitred = style.join == LineJoin::kMitre && style.mitre_limit > kCapReach;
  const double reach = mitred ? std::max(JoinReach(style.mitre_limit), kCapReach) : kCapReach;
  TouchLines(style.width / 2 * reach);
}

void Canvas::DrawThin(Point from, Point to, uint32_t color, const Box& within) {
  Handles& h = *handles_;
  const Box pixels{h.origin, h.origin + Point{static_cast<double>(h.columns), static_cast<double>(h.rows)}};
  const Box box = Common(pixels, within);
  if (h.pixels == nullptr || box.IsEmpty() || !ClipSegment(box, &from, &to)) return;
  Include(path_, from);
  Include(path_, to);
  NoteLine(from, to, true);
  TouchLines(0);
  cairo_surface_flush(h.target.surface);
  const Point span = to - from;
  // The segment is cut down to the canvas: its steps are few.
  const auto steps =
      std::max(1, static_cast<int32_t>(std::ceil(std::max(std::abs(span.x), std::abs(span.y)))));
  const Point step = (1.0 / steps) * span;
  Point at = from - h.origin;
  const uint32_t pixel = Opaque(color);
  for (int32_t i = 0; i <= steps; ++i, at = at + step) {
    const int32_t column = std::clamp(static_cast<int32_t>(at.x), 0, h.columns - 1);
    const int32_t row = std::clamp(static_cast<int32_t>(at.y), 0, h.rows - 1);
    h.pixels[static_cast<size_t>(row) * static_cast<size_t>(h.columns) + static_cast<size_t>(column)] = pixel;
  }
  cairo_surface_mark_dirty(h.target.surface);
}

void Canvas::FillWith(const Image& image, Point corner, double side) {
  if (!CanHold(static_cast<double>(image.pixels.size()))) return;
  cairo_t* const cairo = handles_->cairo;
  const SurfaceOwner source(SurfaceOver(image.pixels.data(), image.columns, image.rows));
  const PatternOwner paint(cairo_pattern_create_for_surface(source.surface));
  cairo_pattern_set_filter(paint.pattern, CAIRO_FILTER_NEAREST);
  cairo_pattern_set_extend(paint.pattern, CAIRO_EXTEND_PAD);
  cairo_matrix_t to_image;
  cairo_matrix_init_scale(&to_image, 1 / side, 1 / side);
  cairo_matrix_translate(&to_image, handles_->origin.x - corner.x, handles_->origin.y - corner.y);
  cairo_pattern_set_matrix(paint.pattern, &to_image);
  cairo_set_source(cairo, paint.pattern);
  cairo_set_fill_rule(cairo, CAIRO_FILL_RULE_EVEN_ODD);
  cairo_fill(cairo);
  cairo_set_source_rgb(cairo, 0, 0, 0);  // lets go of the picture, whose pixels are the caller's
  Touch(0);
}

void Canvas::PushClip(FillRule rule) {
  CanHold(0);
  path_ = {};
  line_count_ = 0;
  cairo_t* const cairo = handles_->cairo;
  // Saving leaves the path alone, and restoring puts the former clip back.
  cairo_save(cairo);
  cairo_set_fill_rule(cairo, RuleOf(rule));
  cairo_clip(cairo);
}

void Canvas::PopClip() {
  cairo_restore(handles_->cairo);
}

bool Canvas::IsSound() const {
  return !is_beyond_ && cairo_status(handles_->cairo) != CAIRO_STATUS_NO_MEMORY;
}

Box Canvas::TakeTouched() {
  cairo_surface_flush(handles_->target.surface);
  return std::exchange(touched_, Box{});
}

bool Canvas::Finish() {
  cairo_show_page(handles_->cairo);
  cairo_surface_finish(handles_->target.surface);
  return cairo_status(handles_->cairo) == CAIRO_STATUS_SUCCESS && handles_->target.ok();
}

bool WritePng(uint32_t* pixels, int32_t columns, int32_t rows, Sink* sink) {
  const SurfaceOwner source(SurfaceOver(pixels, columns, rows));
  return cairo_surface_write_to_png_stream(source.surface, &WriteTo, sink) == CAIRO_STATUS_SUCCESS;
}

}  // namespace tavi::host::vec

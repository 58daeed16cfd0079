#include "TaviVector/PaintText.h"

#include <array>

#include "TaviVector/TextLayout.h"

namespace tavi::host::vec {
namespace {

bool KeepsAxes(const Affine& a) {
  return (a.xy == 0 && a.yx == 0) || (a.xx == 0 && a.yy == 0);
}

// Glyphs of one colour are filled together.
class GlyphPainter {
 public:
  GlyphPainter(const Scene& scene, LinePainter& lines, const Affine& to_device)
      : scene_(scene), lines_(lines), to_device_(to_device) {}

  void Draw(const PlacedGlyph& placed) {
    const Affine to_device = Chained(placed.to_text, to_device_);
    const bool stroked = !placed.glyph->strokes.empty();
    const double line = stroked ? ScaleOf(to_device) * kHersheyLine : 0;
    if (!scene_.IsVisible(Grown(Transformed(placed.glyph->box, to_device), line / 2 + 2))) return;
    // One path holds either outlines or strokes, of one colour.
    if (gathered_ != 0 && (color_ != placed.color || stroked_ != stroked)) Finish();
    color_ = placed.color;
    stroked_ = stroked;
    for (const Contour& contour : placed.glyph->outlines) AddContour(contour, to_device);
    if (stroked) DrawStrokes(placed, to_device);
    if (++gathered_ > kGlyphsAtOnce) Finish();
  }

  void Finish() {
    if (stroked_) {
      lines_.Flush();
    } else if (scene_.canvas.HasPath()) {
      scene_.canvas.Fill(color_, FillRule::kWinding);
    }
    gathered_ = 0;
  }

 private:
  static constexpr size_t kGlyphsAtOnce = 64;

  void AddContour(const Contour& contour, const Affine& by) {
    std::vector<Point> ring{Tame(by.Apply(contour.start))};
    for (const auto& [c1, c2, end] : contour.curves) {
      const std::array curve{Tame(by.Apply(c1)), Tame(by.Apply(c2)), Tame(by.Apply(end))};
      FlattenCurve(ring.back(), curve, scene_.tolerance, &ring);
    }
    AddArea(scene_, std::move(ring));
  }

  void DrawStrokes(const PlacedGlyph& placed, const Affine& by) {
    LineStyle style;
    style.color = placed.color;
    style.width = ScaleOf(by) * kHersheyLine;
    style.cap = LineCap::kRound;
    style.join = LineJoin::kRound;
    for (const auto& stroke : placed.glyph->strokes) {
      std::vector<Point> line;
      line.reserve(stroke.size());
      for (const Point p : stroke) line.push_back(Tame(by.Apply(p)));
      lines_.Draw(line, false, style);
    }
  }

  const Scene& scene_;
  LinePainter& lines_;
  Affine to_device_;
  uint32_t color_ = 0;
  bool stroked_ = false;
  size_t gathered_ = 0;
};

// Boxes along the axes end with whole pixels.
void FillBox(const Scene& scene, const TextBox& box, const Affine& to_device) {
  std::vector<Point> ring;
  if (scene.on_pixels && KeepsAxes(to_device)) {
    const Box device = Transformed(box.box, to_device);
    constexpr double kSlack = 1e-6;
    const Point low{std::floor(device.low.x + kSlack), std::floor(device.low.y + kSlack)};
    const Point high{std::ceil(device.high.x - kSlack), std::ceil(device.high.y - kSlack)};
    ring = {low, {high.x, low.y}, high, {low.x, high.y}};
  } else {
    const Point low = box.box.low;
    const Point high = box.box.high;
    for (const Point p : {low, {high.x, low.y}, high, {low.x, high.y}})
      ring.push_back(Tame(to_device.Apply(p)));
  }
  AddArea(scene, std::move(ring));
  scene.canvas.Fill(box.color, FillRule::kEvenOdd);
}

}  // namespace

void PaintText(const Scene& scene, LinePainter& lines, const Text& text) {
  const LaidText laid = LayOut(scene.drawing, text);
  Affine to_device = Chained(laid.to_drawing, scene.to_device);
  const Box device = Transformed(laid.extent, to_device);
  if (!scene.IsVisible(Grown(device, 2 * Length(device.high - device.low) + 2))) return;
  lines.Flush();
  for (const TextBox& box : laid.boxes) FillBox(scene, box, to_device);
  // Base lines of upright and of turned texts lie between two rows of pixels.
  if (scene.on_pixels && to_device.yx == 0) to_device.y0 = std::round(to_device.y0);
  if (scene.on_pixels && to_device.xx == 0) to_device.x0 = std::round(to_device.x0);
  GlyphPainter painter(scene, lines, to_device);
  for (const PlacedGlyph& glyph : laid.glyphs) painter.Draw(glyph);
  painter.Finish();
}

}  // namespace tavi::host::vec

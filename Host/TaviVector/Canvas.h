// The one facade over the rasteriser: paths, strokes, fills, clips and pictures in device space, y downward. Nothing
// else of the host calls it.
#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <vector>

#include "TaviVector/Geometry.h"
#include "TaviVector/Touched.h"

namespace tavi::host::vec {

enum class FillRule : uint8_t { kEvenOdd, kWinding };

// What lines look like, in device space.
struct LineStyle {
  uint32_t color = 0;
  double width = 1;
  LineCap cap = LineCap::kButt;
  LineJoin join = LineJoin::kMitre;
  double mitre_limit = 10;
  std::span<const double> dashes = {};
  double dash_offset = 0;
  bool smooth = true;  // edges take part of the pixels that they touch in part
};

// Premultiplied colours, 0xAARRGGBB, row by row.
struct Image {
  int32_t columns = 0;
  int32_t rows = 0;
  std::vector<uint32_t> pixels;
};

// A pixel of the canvas from a colour of the interface, 0x00BBGGRR.
constexpr uint32_t Opaque(uint32_t color) {
  return 0xFF000000 | (color & 0xFF) << 16 | (color & 0xFF00) | (color >> 16 & 0xFF);
}

// The same, covering `coverage` (0 to 1) of its pixel.
inline uint32_t Premultiplied(uint32_t color, double coverage) {
  const auto alpha = static_cast<uint32_t>(coverage * 256);
  const uint32_t pixel = Opaque(color);
  const uint32_t odd = (pixel >> 8 & 0xFF00FF) * alpha & 0xFF00FF00;
  const uint32_t even = (pixel & 0xFF00FF) * alpha >> 8 & 0xFF00FF;
  return odd | even;
}

// Where an exported picture goes.
class Sink {
 public:
  virtual ~Sink() = default;
  virtual bool Write(const unsigned char* bytes, size_t count) noexcept = 0;
};

class Canvas {
 public:
  // On premultiplied pixels 0xAARRGGBB, which the caller keeps; the pixel (0, 0) stands at `left`, `top` of the device.
  static std::unique_ptr<Canvas> OnPixels(uint32_t* pixels, int32_t columns, int32_t rows, int64_t left,
                                          int64_t top);
  static std::unique_ptr<Canvas> OnSvg(Sink* sink, double width, double height);
  static std::unique_ptr<Canvas> OnPdf(Sink* sink, double width, double height);
  ~Canvas();
  Canvas(const Canvas&) = delete;
  Canvas& operator=(const Canvas&) = delete;

  // A path is built, then used by one of the operations, which leaves it empty.
  void MoveTo(Point p);
  void LineTo(Point p);
  void ClosePath();
  void AddRing(std::span<const Point> ring);
  bool HasPath() const { return !path_.IsEmpty(); }
  void DropPath();

  void Fill(uint32_t color, FillRule rule);
  void Stroke(const LineStyle& style);
  // A line one pixel wide with hard edges, within the box, on pixels only: much faster than a stroke. The path is empty.
  void DrawThin(Point from, Point to, uint32_t color, const Box& within);
  // Fills with a picture whose pixel (0, 0) has its corner at `corner` and whose pixels are `side` wide and high; what
  // is beyond its edges shows the pixels next to them.
  void FillWith(const Image& image, Point corner, double side);
  // Restricts what follows to the path, until PopClip.
  void PushClip(FillRule rule);
  void PopClip();

  // For exports, which hold what is drawn instead of covering pixels: nothing more is drawn once the points of paths and
  // the pixels of pictures, at what they count, are beyond HOST_LIMIT_PAINT and what the drawing earns.
  void Bound(double earned);
  // False once an operation failed for want of memory, or was beyond the bound.
  bool IsSound() const;
  // Covers everything that was drawn since the last call, in device space.
  Box TakeTouched();
  // The same of a canvas on pixels since it was made, in its own columns and rows; null when it is too wide. To be asked
  // for behind TakeTouched.
  const TouchedRows* Touched() const { return cells_.get(); }
  // Ends an export. False when something failed, memory for instance.
  bool Finish();

 private:
  struct Handles;
  explicit Canvas(std::unique_ptr<Handles> handles);
  static std::unique_ptr<Canvas> Make(std::unique_ptr<Handles> handles);
  void Touch(double margin);
  void TouchLines(double margin);
  void NoteLine(Point from, Point to, bool begins);
  double JoinReach(double limit) const;
  bool CanHold(double pixels);

  struct Line {
    Point from;
    Point to;
    bool begins = false;  // a place where the path begins anew, not a line
  };

  std::unique_ptr<Handles> handles_;
  std::optional<double> earned_;  // none: not bounded
  double held_ = 0;
  size_t points_ = 0;  // of the path
  bool is_beyond_ = false;
  Box path_;
  Box touched_;
  std::unique_ptr<TouchedRows> cells_;
  // The lines of the path, when they are few: what a stroke touches is less than their common box.
  std::array<Line, 256> lines_;
  size_t line_count_ = 0;
  Point start_;
  Point at_;
};

// Writes a picture as PNG.
bool WritePng(uint32_t* pixels, int32_t columns, int32_t rows, Sink* sink);

}  // namespace tavi::host::vec

// What a canvas says was touched holds every pixel that is not clear: the others are never put over a picture.
#include <random>

#include "PaintTest.h"
#include "TaviVector/Canvas.h"

namespace tavi::test {
namespace {

using namespace host::vec;
using TouchedTest = HostTest;

constexpr int32_t kColumns = 700;
constexpr int32_t kRows = 240;

class Page {
 public:
  Page(int64_t left, int64_t top)
      : left_(static_cast<double>(left)),
        top_(static_cast<double>(top)),
        pixels_(size_t{kColumns} * kRows),
        canvas_(Canvas::OnPixels(pixels_.data(), kColumns, kRows, left, top)) {}

  Canvas& canvas() { return *canvas_; }
  Point At(double x, double y) const { return {left_ + x, top_ + y}; }

  // Pixels that were drawn and not told, and cells that were told.
  size_t Lost() {
    canvas_->TakeTouched();
    size_t lost = 0;
    told_ = 0;
    for (int32_t y = 0; y < kRows; ++y) {
      std::vector<bool> is_told(kColumns);
      canvas_->Touched()->ForEachRun(y, [&](uint32_t first, uint32_t count) {
        for (uint32_t x = first; x < first + count; ++x) is_told.at(x) = true;
        told_ += count;
      });
      for (size_t x = 0; x < kColumns; ++x) {
        if (pixels_[static_cast<size_t>(y) * kColumns + x] != 0 && !is_told[x]) ++lost;
      }
    }
    return lost;
  }
  size_t told() const { return told_; }

 private:
  double left_;
  double top_;
  std::vector<uint32_t> pixels_;
  std::unique_ptr<Canvas> canvas_;
  size_t told_ = 0;
};

// Rings and lines of all widths, with turns so sharp that their mitres reach far, and lines shorter than a pixel.
TEST_F(TouchedTest, StrokesOfAllKinds) {
  std::mt19937 random(5);
  const auto number = [&](double low, double high) {
    return std::uniform_real_distribution<double>(low, high)(random);
  };
  const auto below = [&](int count) { return std::uniform_int_distribution<int>(0, count - 1)(random); };
  const double steps[] = {0.02, 0.9, 5, 60, 400};
  const double dashes[] = {7, 3};
  for (int i = 0; i < 600; ++i) {
    Page page(below(3) * 2048, below(3) * 2048);
    for (int paths = below(2); paths >= 0; --paths) {
      Point at = page.At(number(-50, kColumns + 50), number(-50, kRows + 50));
      page.canvas().MoveTo(at);
      const double step = steps[below(5)];
      Point span = {number(-step, step), number(-step, step)};
      for (int lines = below(6); lines > 0; --lines) {
        // Every other turn leads almost all the way back.
        span = below(2) == 0 ? Point{number(-step, step), number(-step, step)}
                             : -1 * span + Point{number(-0.1, 0.1) * step, number(-0.1, 0.1) * step};
        at = at + span;
        page.canvas().LineTo(at);
      }
      if (below(3) == 0) page.canvas().ClosePath();
    }
    LineStyle style;
    style.width = number(0.3, 30);
    style.cap = static_cast<LineCap>(below(3));
    style.join = static_cast<LineJoin>(below(3));
    style.mitre_limit = below(2) == 0 ? 10 : 1000;
    style.smooth = below(4) != 0;
    if (below(4) == 0) style.dashes = dashes;
    page.canvas().Stroke(style);
    ASSERT_EQ(page.Lost(), 0U) << i;
  }
}

TEST_F(TouchedTest, PathsOfMoreLinesThanAreNoted) {
  Page page(0, 0);
  page.canvas().MoveTo(page.At(5, 5));
  for (int i = 0; i < 400; ++i) page.canvas().LineTo(page.At(5 + i % 2 * 600, 5 + i / 2));
  page.canvas().Stroke({});
  EXPECT_EQ(page.Lost(), 0U);
}

TEST_F(TouchedTest, FillsAndThinLines) {
  Page page(2048, 0);
  page.canvas().AddRing(std::array{page.At(600, 20), page.At(699.5, 30), page.At(650, 200)});
  page.canvas().Fill(0xFF, FillRule::kEvenOdd);
  const Box within{page.At(0, 0), page.At(kColumns, kRows)};
  page.canvas().DrawThin(page.At(-20, -20), page.At(690, 300), 0xFF00, within);
  page.canvas().DrawThin(page.At(3, 239.5), page.At(3, 0), 0xFF00, within);
  EXPECT_EQ(page.Lost(), 0U);
}

TEST_F(TouchedTest, AFrameTouchesLittle) {
  Page page(0, 0);
  page.canvas().AddRing(std::array{page.At(10, 10), page.At(690, 10), page.At(690, 230), page.At(10, 230)});
  LineStyle style;
  style.width = 4;
  style.mitre_limit = 1000;
  page.canvas().Stroke(style);
  EXPECT_EQ(page.Lost(), 0U);
  EXPECT_LT(page.told(), size_t{kColumns} * kRows / 3);
}

// A bitmap of several tiles: what the last tile of a row of them holds beyond the right edge is nothing to the next row.
TEST_F(TouchedTest, WhatIsBeyondTheEdgeShowsNowhere) {
  Sketch sketch;
  const uint32_t stroke = sketch.Line(kRed, 10);
  sketch.Draw(Polyline{{{2000, -100}, {2300, -100}}, stroke});
  sketch.Draw(Polyline{{{0, -2060}, {4, -2060}}, stroke});
  sketch.Draw(Polyline{{{60, -2140}, {200, -2140}}, stroke});
  Paper paper(2100, 2200);
  ASSERT_EQ(paper.Paint(sketch.drawing), SUCCESS);
  EXPECT_EQ(paper.Count(kRed), 100 * 10 + 4 * 10 + 140 * 10);
  EXPECT_EQ(paper.At(2099, 100), kRed);
}

}  // namespace
}  // namespace tavi::test

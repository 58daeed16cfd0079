// Large bitmaps are painted in tiles: nobody can tell where these fall.
#include <cmath>
#include <cstdlib>
#include <numbers>
#include <string>
#include <utility>
#include <vector>

#include "PaintTest.h"

namespace tavi::test {
namespace {

using namespace host::vec;

class PaintTilesTest : public HostTest {};

constexpr int kCanvas = 2500;
constexpr int kMargin = 100;  // around all shapes, in pixels

// Pixels in a unit along the axes.
struct Scales {
  double x;
  double y;
  const char* name;
};
constexpr Scales kScales[] = {{1, 1, "1:1"}, {1, 2, "1:2"}, {2, 1, "2:1"}, {0.5, 4, "1:8"}, {4, 0.5, "8:1"}};

// Shapes on a canvas that is seen as pixels from its upper left corner, whatever the scales.
struct TiledSketch : Sketch {
  explicit TiledSketch(const Scales& s) : scales(s) {}

  Point At(double column, double row) const { return {column / scales.x, -row / scales.y}; }
  // Lines and markers grow by the mean.
  double Size(double pixels) const { return pixels / std::sqrt(scales.x * scales.y); }

  uint32_t Pen(double width, LineCap cap, LineJoin join, const std::vector<double>& dashes = {}) {
    Stroke stroke;
    stroke.width = Size(width);
    stroke.cap = cap;
    stroke.join = join;
    stroke.mitre_limit = 10;
    if (!dashes.empty()) stroke.type = LineType::kCustom;
    for (const double dash : dashes) stroke.dashes.push_back(Size(dash));
    return Add(stroke);
  }

  // A window of the canvas. Specks in its corners keep the drawing's bounds.
  std::vector<uint8_t> Paint(int left, int top, int width, int height) const {
    Sketch framed{drawing};
    const AreaStyle white{framed.Solid(kPaper), kNone};
    framed.Draw(host::vec::Rectangle{At(0, 0), At(4, 4), white});
    framed.Draw(host::vec::Rectangle{At(kCanvas, kCanvas), At(kCanvas - 4, kCanvas - 4), white});
    Paper paper(static_cast<uint32_t>(width), static_cast<uint32_t>(height));
    EXPECT_EQ(paper.Paint(framed.drawing, {-left, -top, kCanvas - left, kCanvas - top}), SUCCESS);
    return paper.bitmap().Bytes();
  }

  Scales scales;
};

// The greatest difference of a sample, and where it is.
struct Difference {
  int greatest = 0;
  size_t column = 0;
  size_t row = 0;
};

Difference Compare(const TiledSketch& sketch) {
  constexpr size_t kWidth = 1031;
  constexpr size_t kHeight = 939;
  const auto line = [](size_t width) { return (width * 3 + 3) / 4 * 4; };
  const std::vector<uint8_t> whole = sketch.Paint(0, 0, kCanvas, kCanvas);
  Difference difference;
  for (size_t top = 0; top < kCanvas; top += kHeight) {
    for (size_t left = 0; left < kCanvas; left += kWidth) {
      const std::vector<uint8_t> part =
          sketch.Paint(static_cast<int>(left), static_cast<int>(top), kWidth, kHeight);
      for (size_t y = 0; y < std::min(kHeight, kCanvas - top); ++y) {
        for (size_t x = 0; x < 3 * std::min(kWidth, kCanvas - left); ++x) {
          const int here = whole[(top + y) * line(kCanvas) + 3 * left + x];
          const int there = part[y * line(kWidth) + x];
          if (std::abs(here - there) > difference.greatest)
            difference = {std::abs(here - there), left + x / 3, top + y};
        }
      }
    }
  }
  return difference;
}

void ExpectSameInWindows(const TiledSketch& sketch, const std::string& what) {
  // Places are rounded to parts of a pixel, and edges are cut where they leave the canvas: where areas meet in a slanted
  // edge, its smoothness may differ.
  constexpr int kRounding = 80;
  const Difference difference = Compare(sketch);
  EXPECT_LE(difference.greatest, kRounding)
      << what << " at " << sketch.scales.name << ": " << difference.column << ' ' << difference.row;
}

TEST_F(PaintTilesTest, DashesOfRingsBeginAtTheSamePoint) {
  for (const Scales& scales : kScales) {
    TiledSketch sketch(scales);
    const AreaStyle style{kNone, sketch.Pen(10, LineCap::kButt, LineJoin::kMitre, {36, 24})};
    sketch.Draw(host::vec::Rectangle{sketch.At(kMargin, kMargin),
                                     sketch.At(kCanvas - kMargin, kCanvas - kMargin), style});
    constexpr double kMiddle = kCanvas / 2;
    sketch.Draw(
        host::vec::Ellipse{sketch.At(kMiddle, kMiddle), sketch.At(1100, 0), sketch.At(0, 1100), style});
    ExpectSameInWindows(sketch, "rings");
  }
}

// Pens with all kinds of joins and ends.
constexpr std::pair<LineCap, LineJoin> kPens[] = {{LineCap::kButt, LineJoin::kMitre},
                                                  {LineCap::kRound, LineJoin::kBevel},
                                                  {LineCap::kSquare, LineJoin::kRound}};

TEST_F(PaintTilesTest, RingsThatEndWithinADashAreJoinedThere) {
  for (const auto& [cap, join] : kPens) {
    // The last dash begins 100 pixels before the ring's end.
    TiledSketch sketch({1, 2, "1:2"});
    const AreaStyle style{kNone, sketch.Pen(40, cap, join, {200, 100})};
    sketch.Draw(host::vec::Polygon{
        {{{sketch.At(200, 200), sketch.At(2300, 200), sketch.At(2300, 2200), sketch.At(200, 2200)}, {}}},
        style});
    ExpectSameInWindows(sketch, "ring");
  }
}

TEST_F(PaintTilesTest, DashedLinesKeepTheirCornersAndEnds) {
  for (const Scales& scales : kScales) {
    for (const auto& [cap, join] : kPens) {
      TiledSketch sketch(scales);
      Polyline line;
      for (int i = 0; i < 16; ++i) {
        line.points.push_back(sketch.At(kMargin + (i % 2) * 1400 + i * 10, kMargin + i * 150));
      }
      line.stroke = sketch.Pen(24, cap, join, {90, 50});
      sketch.Draw(line);
      ExpectSameInWindows(sketch, "zigzag");
    }
  }
}

TEST_F(PaintTilesTest, WideStrokesAreWholeAtUnequalScales) {
  for (const Scales& scales : kScales) {
    for (const auto& [cap, join] : kPens) {
      TiledSketch sketch(scales);
      const uint32_t pen = sketch.Pen(180, cap, join);
      // Beside the border of a tile on either side, with ends and tips towards it.
      sketch.Draw(Polyline{{sketch.At(1950, 300), sketch.At(1950, 1200)}, pen});
      sketch.Draw(Segments{{sketch.At(200, 1950), sketch.At(900, 1950)}, pen});
      sketch.Draw(Polyline{{sketch.At(1400, 1700), sketch.At(1980, 1980), sketch.At(1700, 1400)}, pen});
      sketch.Draw(host::vec::Polygon{
          {{{sketch.At(2140, 300), sketch.At(2400, 500), sketch.At(2400, 200)}, {}}}, {kNone, pen}});
      sketch.Draw(
          host::vec::Ellipse{sketch.At(300, 2250), sketch.At(130, 0), sketch.At(0, 130), {kNone, pen}});
      sketch.Draw(Arc{sketch.At(900, 2250),
                      sketch.At(130, 0),
                      sketch.At(0, 130),
                      0,
                      2,
                      Closure::kPie,
                      kNone,
                      {kNone, pen}});
      ExpectSameInWindows(sketch, "strokes");
    }
  }
}

TEST_F(PaintTilesTest, LargeMarkersAreWhole) {
  for (const Scales& scales : kScales) {
    TiledSketch sketch(scales);
    for (uint32_t i = 0; i < 5; ++i) {
      sketch.drawing.markers.push_back({static_cast<MarkerType>(i + 1), kRed, sketch.Size(500), false});
      const double along = 260 + 480 * i;
      sketch.Draw(Markers{{sketch.At(1785, along)}, i});
      sketch.Draw(Markers{{sketch.At(along, 1785)}, i});
    }
    ExpectSameInWindows(sketch, "markers");
  }
}

TEST_F(PaintTilesTest, LargeTextsAreWhole) {
  for (const Scales& scales : kScales) {
    for (const FontFamily family : {FontFamily::kHershey, FontFamily::kSerif}) {
      for (const double row : {2040, 2300}) {
        TiledSketch sketch(scales);
        TextStyle style;
        style.font.family = family;
        style.font.italic = true;
        style.height = sketch.Size(900);
        const uint32_t index = sketch.Add(style);
        sketch.Draw(Text{sketch.At(300, row), {{"fj", index}}, std::nullopt});
        sketch.Draw(Text{sketch.At(1650, row), {{"MW", index}}, std::nullopt});
        ExpectSameInWindows(sketch, family == FontFamily::kHershey ? "line text" : "text");
      }
    }
  }
}

TEST_F(PaintTilesTest, LinesOfGlyphsReachFartherThanTheirBoxes) {
  // The foot of the letter lies above the border of a tile, and half of its thickness below.
  TiledSketch sketch({4, 0.5, "8:1"});
  TextStyle style;
  style.font.family = FontFamily::kHershey;
  style.height = sketch.Size(900);
  sketch.Draw(Text{sketch.At(50, 2031), {{"L", sketch.Add(style)}}, std::nullopt});
  ExpectSameInWindows(sketch, "letter");
}

TEST_F(PaintTilesTest, NoStrokeIsCutAtUnequalScales) {
  // Alone in its drawing, so that nothing else widens what is painted: 100 units wide, and 141 pixels.
  Sketch sketch;
  Stroke stroke;
  stroke.width = 100;
  sketch.Draw(Polyline{{{50, 0}, {50, -900}}, sketch.Add(stroke)});
  Paper paper(300, 2200);
  ASSERT_EQ(paper.Paint(sketch.drawing, {100, 100, 200, 2100}), SUCCESS);
  EXPECT_NEAR(paper.Inked().width(), 100 * std::numbers::sqrt2, 2);
}

}  // namespace
}  // namespace tavi::test

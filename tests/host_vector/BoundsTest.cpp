// What drawings cover.
#include <cmath>
#include <numbers>

#include "PaintTest.h"

namespace tavi::test {
namespace {

using namespace host::vec;
using BoundsTest = HostTest;

void ExpectBox(const Box& box, double left, double bottom, double right, double top) {
  EXPECT_NEAR(box.low.x, left, 1e-6);
  EXPECT_NEAR(box.low.y, bottom, 1e-6);
  EXPECT_NEAR(box.high.x, right, 1e-6);
  EXPECT_NEAR(box.high.y, top, 1e-6);
}

Box Of(const Sketch& sketch) {
  return BoundsOf(sketch.drawing);
}

TEST_F(BoundsTest, LinesCountWithHalfTheirWidth) {
  Sketch sketch;
  sketch.Draw(Polyline{{{10, 20}, {50, 20}}, sketch.Line(kRed, 6)});
  ExpectBox(Of(sketch), 7, 17, 53, 23);
}

TEST_F(BoundsTest, MitresCountAsFarAsTheyReach) {
  const auto top = [](LineJoin join, double limit) {
    Sketch sketch;
    Stroke stroke;
    stroke.width = 10;
    stroke.join = join;
    stroke.mitre_limit = limit;
    sketch.Draw(Polyline{{{-10, 0}, {0, 30}, {10, 0}}, sketch.Add(stroke)});
    return Of(sketch).high.y;
  };
  const double half_angle = std::atan2(10, 30);
  EXPECT_NEAR(top(LineJoin::kMitre, 10), 30 + 5 / std::sin(half_angle), 1e-6);
  EXPECT_NEAR(top(LineJoin::kMitre, 2), 35, 1e-6);
  EXPECT_NEAR(top(LineJoin::kRound, 10), 35, 1e-6);
}

TEST_F(BoundsTest, PaintedPixelsLieInside) {
  Sketch sketch;
  Stroke stroke;
  stroke.width = 8;
  const uint32_t edge = sketch.Add(stroke);
  sketch.Draw(Polyline{{{40, -80}, {50, -20}, {60, -80}}, edge});
  sketch.Draw(Arc{{50, -50}, {20, 5}, {-5, 30}, 0.3, 4, Closure::kPie, kNone, {sketch.Solid(kRed), edge}});
  const Box box = Of(sketch);
  Paper paper;
  ASSERT_EQ(paper.Paint(sketch.drawing), SUCCESS);
  const Area inked = paper.Inked();
  EXPECT_NEAR(inked.left, box.low.x, 5);
  EXPECT_GE(inked.left + 1, box.low.x);
  EXPECT_LE(inked.right - 1, box.high.x);
  EXPECT_GE(inked.top + 1, -box.high.y);
  EXPECT_LE(inked.bottom - 1, -box.low.y);
}

TEST_F(BoundsTest, AreasCountWithTheirEdges) {
  Sketch sketch;
  sketch.Draw(host::vec::Rectangle{{10, 10}, {0, 0}, {sketch.Solid(kRed), kNone}});
  ExpectBox(Of(sketch), 0, 0, 10, 10);
  sketch.Draw(host::vec::Ellipse{{100, 0}, {30, 40}, {-40, 30}, {kNone, sketch.Line(kRed, 4)}});
  ExpectBox(Of(sketch), 0, -52, 152, 52);
}

TEST_F(BoundsTest, ArcsCountAsFarAsTheyGo) {
  Sketch sketch;
  const double pi = std::numbers::pi;
  const uint32_t stroke = sketch.Line(kRed, 0);
  const auto box = [&](double start, double sweep, Closure closure) {
    Sketch one = sketch;
    one.Draw(Arc{{0, 0}, {10, 0}, {0, 10}, start, sweep, closure, stroke, {kNone, stroke}});
    return Of(one);
  };
  const double s = std::sqrt(50.0);
  ExpectBox(box(-pi / 4, pi / 2, Closure::kOpen), s, -s, 10, s);
  ExpectBox(box(-pi / 4, pi / 2, Closure::kPie), 0, -s, 10, s);
  ExpectBox(box(pi / 4, -3 * pi / 2, Closure::kChord), -10, -10, 10, s);
  ExpectBox(box(7, 2 * pi, Closure::kChord), -10, -10, 10, 10);
}

TEST_F(BoundsTest, CurvesCountNotTheirControls) {
  Sketch sketch;
  sketch.Draw(Figure{{{{0, 0}, {{{{0, 40}, {100, 40}, {100, 0}}}}, false}}, sketch.Line(kRed, 0), {}});
  ExpectBox(Of(sketch), 0, 0, 100, 30);
}

TEST_F(BoundsTest, MarkersCellsAndTexts) {
  Sketch sketch;
  sketch.drawing.markers.push_back({MarkerType::kPlus, kRed, 8, false});
  sketch.Draw(Markers{{{0, 0}, {10, 10}}, 0});
  ExpectBox(Of(sketch), -4, -4, 14, 14);
  Sketch cells;
  cells.Draw(CellArray{{0, 0}, {15, -10}, {10, 0}, 1, 1, {0}, std::nullopt});
  ExpectBox(Of(cells), 0, -10, 15, 0);
  Sketch text;
  TextStyle style;
  style.height = 100;
  text.Draw(Text{{0, 0}, {{"HH", text.Add(style)}}, std::nullopt});
  const Box box = Of(text);
  EXPECT_NEAR(box.low.x, 0, 1e-6);
  EXPECT_NEAR(box.high.x, 144, 3);
  EXPECT_NEAR(box.high.y, 90, 8);
  EXPECT_NEAR(box.low.y, -21, 8);
}

TEST_F(BoundsTest, WhatShowsNothingCoversNothing) {
  Sketch sketch;
  EXPECT_TRUE(Of(sketch).IsEmpty());
  sketch.Draw(Polyline{{{0, 0}, {5, 5}}, kNone});
  sketch.Draw(host::vec::Rectangle{{0, 0}, {5, 5}, {}});
  Fill fill;
  fill.interior = Interior::kEmpty;
  sketch.Draw(host::vec::Rectangle{{0, 0}, {5, 5}, {sketch.Add(fill), kNone}});
  sketch.Draw(Markers{{{0, 0}}, kNone});
  EXPECT_TRUE(Of(sketch).IsEmpty());
  sketch.drawing.layers.push_back({u"hidden", false});
  sketch.Draw(Polyline{{{0, 0}, {5, 5}}, sketch.Line(kRed, 1)});
  EXPECT_TRUE(Of(sketch).IsEmpty());
  sketch.drawing.layers[0].visible = true;
  EXPECT_FALSE(Of(sketch).IsEmpty());
}

TEST_F(BoundsTest, ClipsLimit) {
  Sketch sketch;
  sketch.drawing.clips.push_back({{2, 2}, {4, 4}});
  sketch.drawing.clips.push_back({{20, 20}, {40, 40}});
  const uint32_t solid = sketch.Solid(kRed);
  sketch.Draw(host::vec::Rectangle{{0, 0}, {10, 10}, {solid, kNone}}, 0);
  sketch.Draw(host::vec::Rectangle{{0, 0}, {10, 10}, {solid, kNone}}, 1);
  ExpectBox(Of(sketch), 2, 2, 4, 4);
}

TEST_F(BoundsTest, FarthestPlacesAreClamped) {
  Sketch sketch;
  sketch.Draw(Polyline{{{-1e300, 4294967290.0}, {0, std::nan("")}}, sketch.Line(kRed, 0)});
  ExpectBox(Of(sketch), -1e12, 0, 0, 4294967290.0);
}

}  // namespace
}  // namespace tavi::test

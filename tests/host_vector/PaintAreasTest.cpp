// Areas: interiors, edges, holes; cell arrays and markers.
#include <numbers>
#include <optional>

#include "PaintTest.h"

namespace tavi::test {
namespace {

using namespace host::vec;
using PaintAreasTest = HostTest;

Ring Square(double x, double y, double side) {
  return {{{x, y}, {x + side, y}, {x + side, y - side}, {x, y - side}}, {}};
}

TEST_F(PaintAreasTest, RingsAreOneAreaByTheEvenOddRule) {
  Sketch sketch;
  sketch.Draw(host::vec::Polygon{{Square(10, -10, 80), Square(30, -30, 40)}, {sketch.Solid(kRed), kNone}});
  Paper paper;
  ASSERT_EQ(paper.Paint(sketch.drawing), SUCCESS);
  EXPECT_EQ(paper.Count(kRed), 6400 - 1600);
  EXPECT_EQ(paper.At(50, 50), kPaper);
}

TEST_F(PaintAreasTest, EdgesLieOverTheInterior) {
  Sketch sketch;
  sketch.Draw(host::vec::Rectangle{{20, -20}, {80, -80}, {sketch.Solid(kRed), sketch.Line(kBlue, 10)}});
  Paper paper;
  ASSERT_EQ(paper.Paint(sketch.drawing), SUCCESS);
  EXPECT_EQ(paper.Count(kBlue), 70 * 70 - 50 * 50);
  EXPECT_EQ(paper.Count(kRed), 50 * 50);
}

TEST_F(PaintAreasTest, HiddenEdgesAreLeftOut) {
  Sketch sketch;
  Ring ring = Square(20, -20, 60);
  ring.visible = {1, 0, 1, 0};  // top and bottom
  sketch.Draw(host::vec::Polygon{{ring}, {kNone, sketch.Line(kBlue, 10)}});
  Paper paper;
  ASSERT_EQ(paper.Paint(sketch.drawing), SUCCESS);
  EXPECT_EQ(paper.Count(kBlue), 2 * 60 * 10);
  EXPECT_EQ(paper.At(50, 20), kBlue);
  EXPECT_EQ(paper.At(50, 80), kBlue);
  EXPECT_EQ(paper.At(20, 50), kPaper);
}

TEST_F(PaintAreasTest, RunsOfVisibleEdgesHaveJoins) {
  Sketch sketch;
  Ring ring = Square(20, -20, 60);
  ring.visible = {1, 0, 1, 1};  // all but the right one
  sketch.Draw(host::vec::Polygon{{ring}, {kNone, sketch.Line(kBlue, 10)}});
  Paper paper;
  ASSERT_EQ(paper.Paint(sketch.drawing), SUCCESS);
  EXPECT_EQ(paper.At(15, 15), kBlue);
  EXPECT_EQ(paper.At(15, 84), kBlue);
  EXPECT_EQ(paper.At(84, 84), kPaper);
  EXPECT_EQ(paper.At(80, 50), kPaper);
}

TEST_F(PaintAreasTest, HollowIsAnOutlineInTheFillColour) {
  Sketch sketch;
  Fill fill;
  fill.interior = Interior::kHollow;
  fill.color = kRed;
  sketch.Draw(host::vec::Rectangle{{20, -20}, {80, -80}, {sketch.Add(fill), kNone}});
  Paper paper;
  ASSERT_EQ(paper.Paint(sketch.drawing), SUCCESS);
  EXPECT_EQ(paper.Count(kRed), 61 * 61 - 59 * 59);
  EXPECT_EQ(paper.At(50, 50), kPaper);
}

TEST_F(PaintAreasTest, EmptyIsNothing) {
  Sketch sketch;
  Fill fill;
  fill.interior = Interior::kEmpty;
  sketch.Draw(host::vec::Rectangle{{20, -20}, {80, -80}, {sketch.Add(fill), kNone}});
  sketch.Draw(host::vec::Rectangle{{20, -20}, {80, -80}, {kNone, kNone}});
  Paper paper;
  ASSERT_EQ(paper.Paint(sketch.drawing), SUCCESS);
  EXPECT_EQ(paper.Inked().width(), 0);
}

Paper Hatched(Hatch hatch, const HostRect& rectangle, std::optional<uint32_t> gap = std::nullopt) {
  Sketch sketch;
  Fill fill;
  fill.interior = Interior::kHatch;
  fill.hatch = hatch;
  fill.gap_color = gap;
  const uint32_t index = sketch.Add(fill);
  // Two neighbours.
  sketch.Draw(host::vec::Rectangle{{0, 0}, {43, -100}, {index, kNone}});
  sketch.Draw(host::vec::Rectangle{{43, 0}, {100, -100}, {index, kNone}});
  Paper paper;
  EXPECT_EQ(paper.Paint(sketch.drawing, rectangle), SUCCESS);
  return paper;
}

TEST_F(PaintAreasTest, HatchesMatchAcrossNeighbours) {
  const Paper rows = Hatched(Hatch::kHorizontal, {0, 0, 0, 0});
  const Paper columns = Hatched(Hatch::kVertical, {0, 0, 0, 0});
  for (int i = 0; i < 100; ++i) {
    const uint32_t wanted = i % 7 == 0 ? kBlack : kPaper;
    for (const int across : {0, 20, 42, 43, 70}) {
      EXPECT_EQ(rows.At(across, i), wanted);
      EXPECT_EQ(columns.At(i, across), wanted);
    }
  }
  EXPECT_NEAR(rows.Ink(), 10000.0 / 7, 100);
  EXPECT_NEAR(Hatched(Hatch::kCross, {0, 0, 0, 0}).Ink(), 10000 * (1 - 36.0 / 49), 150);
  EXPECT_NEAR(Hatched(Hatch::kRising, {0, 0, 0, 0}).Ink(), 10000.0 / 7, 150);
  EXPECT_NEAR(Hatched(Hatch::kDiagonalCross, {0, 0, 0, 0}).Ink(), 10000 * (1 - 36.0 / 49), 400);
}

// How much the picture stays the same under a step to the right and upward, against one to the right and downward.
bool Rises(const Paper& paper) {
  int rising = 0;
  int falling = 0;
  for (int y = 10; y < 90; ++y) {
    for (int x = 10; x < 90; ++x) {
      rising += paper.At(x, y) == paper.At(x + 3, y - 3) ? 1 : 0;
      falling += paper.At(x, y) == paper.At(x + 3, y + 3) ? 1 : 0;
    }
  }
  EXPECT_NE(rising, falling);
  return rising > falling;
}

TEST_F(PaintAreasTest, SlopesFollowTheDrawing) {
  EXPECT_TRUE(Rises(Hatched(Hatch::kRising, {0, 0, 100, 100})));
  EXPECT_FALSE(Rises(Hatched(Hatch::kFalling, {0, 0, 100, 100})));
  EXPECT_FALSE(Rises(Hatched(Hatch::kRising, {99, 0, -1, 100})));
  EXPECT_TRUE(Rises(Hatched(Hatch::kFalling, {0, 99, 100, -1})));
}

TEST_F(PaintAreasTest, GapsOfHatchesTakeTheirColour) {
  const Paper paper = Hatched(Hatch::kHorizontal, {0, 0, 0, 0}, kGreen);
  EXPECT_EQ(paper.At(50, 7), kBlack);
  EXPECT_EQ(paper.At(50, 8), kGreen);
  EXPECT_EQ(paper.Count(kPaper), 0);
}

TEST_F(PaintAreasTest, HatchesKeepTheirSpacingAtEveryScale) {
  const Paper paper = Hatched(Hatch::kHorizontal, {0, 0, 50, 50});
  EXPECT_NEAR(paper.Ink(), 2500.0 / 7, 60);
}

TEST_F(PaintAreasTest, PatternsRepeatFromTheirOrigin) {
  Sketch sketch;
  sketch.drawing.patterns.push_back({2, 2, {kRed, kGreen, kBlue, kBlack}});
  Fill fill;
  fill.interior = Interior::kPattern;
  fill.pattern = 0;
  fill.origin = {10, -90};
  fill.pattern_up = {0, 20};
  fill.pattern_along = {20, 0};
  sketch.Draw(host::vec::Rectangle{{0, 0}, {100, -100}, {sketch.Add(fill), kNone}});
  Paper paper;
  ASSERT_EQ(paper.Paint(sketch.drawing), SUCCESS);
  // The copy at the origin covers rows 70 to 90.
  EXPECT_EQ(paper.At(15, 75), kRed);
  EXPECT_EQ(paper.At(25, 75), kGreen);
  EXPECT_EQ(paper.At(15, 85), kBlue);
  EXPECT_EQ(paper.At(25, 85), kBlack);
  EXPECT_EQ(paper.At(5, 75), kGreen);
  EXPECT_EQ(paper.At(15, 95), kRed);
  EXPECT_EQ(paper.At(55, 35), kRed);
  for (const uint32_t color : {kRed, kGreen, kBlue, kBlack}) EXPECT_EQ(paper.Count(color), 2500);
}

TEST_F(PaintAreasTest, BrokenPatternsFallBackToAColour) {
  Sketch sketch;
  sketch.drawing.patterns.push_back({2, 2, {kRed}});
  sketch.drawing.patterns.push_back({1, 1, {kBlue}});
  Fill fill;
  fill.interior = Interior::kPattern;
  fill.color = kGreen;
  fill.pattern = 0;
  sketch.Draw(host::vec::Rectangle{{0, 0}, {10, -10}, {sketch.Add(fill), kNone}});
  fill.pattern = 9;
  sketch.Draw(host::vec::Rectangle{{20, 0}, {30, -10}, {sketch.Add(fill), kNone}});
  fill.pattern = 1;
  fill.pattern_up = fill.pattern_along;
  sketch.Draw(host::vec::Rectangle{{40, 0}, {50, -10}, {sketch.Add(fill), kNone}});
  Paper paper;
  ASSERT_EQ(paper.Paint(sketch.drawing), SUCCESS);
  EXPECT_EQ(paper.Count(kGreen), 200);
  EXPECT_EQ(paper.Count(kBlue), 100);
}

TEST_F(PaintAreasTest, EllipsesAndArcsCoverWhatTheyShould) {
  Sketch sketch;
  const uint32_t solid = sketch.Solid(kBlack);
  const auto ink = [&](Shape shape) {
    Sketch one = sketch;
    one.Draw(std::move(shape));
    Paper paper;
    EXPECT_EQ(paper.Paint(one.drawing), SUCCESS);
    return paper.Ink();
  };
  const double pi = std::numbers::pi;
  EXPECT_NEAR(ink(host::vec::Ellipse{{50, -50}, {40, 0}, {0, 20}, {solid, kNone}}), pi * 800, 10);
  EXPECT_NEAR(ink(host::vec::Ellipse{{50, -50}, {30, 10}, {-10, 30}, {solid, kNone}}), pi * 1000, 10);
  EXPECT_NEAR(ink(Arc{{50, -50}, {40, 0}, {0, 40}, 0, pi / 2, Closure::kPie, kNone, {solid, kNone}}),
              pi * 400, 5);
  EXPECT_NEAR(ink(Arc{{50, -50}, {40, 0}, {0, 40}, 1, -pi, Closure::kPie, kNone, {solid, kNone}}), pi * 800,
              5);
  EXPECT_NEAR(ink(Arc{{50, -50}, {40, 0}, {0, 40}, 0, pi / 2, Closure::kChord, kNone, {solid, kNone}}),
              pi * 400 - 800, 5);
  EXPECT_NEAR(ink(Arc{{50, -50}, {40, 0}, {0, 40}, 0, pi, Closure::kOpen, sketch.Line(kBlack, 4), {}}),
              pi * 160, 8);
}

TEST_F(PaintAreasTest, ArcsRunTowardPositiveAngles) {
  Sketch sketch;
  sketch.Draw(
      Arc{{50, -50}, {40, 0}, {0, 40}, 0, std::numbers::pi / 2, Closure::kOpen, sketch.Line(kRed, 6), {}});
  Paper paper;
  ASSERT_EQ(paper.Paint(sketch.drawing), SUCCESS);
  EXPECT_EQ(paper.At(78, 22), kRed);  // up and to the right
  EXPECT_EQ(paper.At(78, 78), kPaper);
}

TEST_F(PaintAreasTest, FiguresAreLinesOrOneArea) {
  Sketch sketch;
  Contour hill{{10, -90}, {{{{10, 10}, {90, 10}, {90, -90}}}}, false};
  sketch.Draw(Figure{{hill}, sketch.Line(kRed, 4), {}});
  Paper lines;
  ASSERT_EQ(lines.Paint(sketch.drawing), SUCCESS);
  // A cubic's middle: (p0 + 3 p1 + 3 p2 + p3) / 8.
  EXPECT_EQ(lines.At(50, 15), kRed);
  EXPECT_EQ(lines.At(50, 50), kPaper);
  sketch.drawing.objects.clear();
  hill.closed = true;
  sketch.Draw(Figure{{hill}, kNone, {sketch.Solid(kBlue), kNone}});
  Paper area;
  ASSERT_EQ(area.Paint(sketch.drawing), SUCCESS);
  EXPECT_EQ(area.At(50, 50), kBlue);
  EXPECT_EQ(area.At(50, 92), kPaper);
}

CellArray Cells(Point corner, Point row_end, Point opposite) {
  return {corner, opposite, row_end, 3, 2, {kRed, kGreen, kBlue, kBlack, 0x808080, 0xFFFF00}, std::nullopt};
}

TEST_F(PaintAreasTest, CellsAreSharpAndWithoutGaps) {
  Sketch sketch;
  sketch.Draw(Cells({10, -10}, {40, -10}, {40, -30}));
  Paper paper;
  ASSERT_EQ(paper.Paint(sketch.drawing), SUCCESS);
  for (const uint32_t color : {kRed, kGreen, kBlue, kBlack, 0x808080u, 0xFFFF00u}) {
    EXPECT_EQ(paper.Count(color), 100) << color;
  }
  EXPECT_EQ(paper.At(10, 10), kRed);
  EXPECT_EQ(paper.At(39, 10), kBlue);
  EXPECT_EQ(paper.At(10, 29), kBlack);
}

TEST_F(PaintAreasTest, CellsAreMirroredAndSheared) {
  Sketch sketch;
  sketch.Draw(Cells({40, -30}, {10, -30}, {10, -10}));
  Paper mirrored;
  ASSERT_EQ(mirrored.Paint(sketch.drawing), SUCCESS);
  EXPECT_EQ(mirrored.At(39, 29), kRed);
  EXPECT_EQ(mirrored.At(10, 10), 0xFFFF00u);
  EXPECT_EQ(mirrored.Count(kGreen), 100);
  sketch.drawing.objects.clear();
  sketch.Draw(Cells({10, -10}, {70, -10}, {90, -50}));
  Paper sheared;
  ASSERT_EQ(sheared.Paint(sketch.drawing), SUCCESS);
  EXPECT_EQ(sheared.At(25, 20), kRed);
  EXPECT_EQ(sheared.At(80, 40), 0xFFFF00u);
  EXPECT_NEAR(sheared.Count(kGreen), 400, 20);
}

TEST_F(PaintAreasTest, TransparentCellsAreLeftOut) {
  Sketch sketch;
  CellArray cells = Cells({10, -10}, {40, -10}, {40, -30});
  cells.transparent = kGreen;
  sketch.Draw(cells);
  Paper paper;
  ASSERT_EQ(paper.Paint(sketch.drawing), SUCCESS);
  EXPECT_EQ(paper.At(25, 15), kPaper);
  EXPECT_EQ(paper.Count(kRed), 100);
}

TEST_F(PaintAreasTest, MarkersHaveTheirSize) {
  const auto inked = [](MarkerType type) {
    Sketch sketch;
    MarkerStyle style{type, kRed, 32, false};
    sketch.drawing.markers.push_back(style);
    sketch.Draw(Markers{{{50, -50}}, 0});
    Paper paper;
    EXPECT_EQ(paper.Paint(sketch.drawing), SUCCESS);
    EXPECT_EQ(paper.At(50, 50) == kPaper, type == MarkerType::kCircle);
    return paper.Inked();
  };
  EXPECT_EQ(inked(MarkerType::kDot).width(), 2);
  for (const MarkerType type :
       {MarkerType::kPlus, MarkerType::kAsterisk, MarkerType::kCircle, MarkerType::kCross}) {
    EXPECT_NEAR(inked(type).width(), 32, 3);
    EXPECT_NEAR(inked(type).height(), 32, 3);
  }
}

TEST_F(PaintAreasTest, ClipsAndHiddenLayers) {
  Sketch sketch;
  sketch.drawing.layers = {{u"shown", true}, {u"hidden", false}};
  sketch.drawing.clips.push_back({{10, -20}, {20, -10}});
  sketch.drawing.clips.push_back({});
  const uint32_t red = sketch.Solid(kRed);
  const uint32_t blue = sketch.Solid(kBlue);
  sketch.Draw(host::vec::Rectangle{{0, 0}, {100, -100}, {red, kNone}}, 0);
  sketch.Draw(host::vec::Rectangle{{0, 0}, {100, -100}, {blue, kNone}}, 1);
  sketch.Draw(host::vec::Rectangle{{0, 0}, {100, -100}, {blue, kNone}});
  sketch.drawing.objects.back().layer = 1;
  Paper paper;
  ASSERT_EQ(paper.Paint(sketch.drawing), SUCCESS);
  EXPECT_EQ(paper.Count(kRed), 100);
  EXPECT_EQ(paper.Count(kBlue), 0);
}

}  // namespace
}  // namespace tavi::test

// Drawings that cover the same pixels again and again.
#include "PaintTest.h"
#include "TaviVector/PaintBudget.h"

namespace tavi::test {
namespace {

using namespace host::vec;
using PaintBudgetTest = HostTest;

constexpr Box kCanvas{{0, 0}, {2048, 2048}};

bool Keeps(const Drawing& drawing, const Box& canvas = kCanvas) {
  const std::vector<Box> boxes(drawing.objects.size(), canvas);
  double spent = 0;
  return SpendBudget(drawing, {}, boxes, canvas, spent);
}

Drawing Copies(const Shape& shape, size_t count) {
  Drawing drawing;
  drawing.layers.push_back({});
  drawing.strokes.emplace_back().width = 100;
  drawing.fills.emplace_back();
  drawing.markers.emplace_back().size = 1000;
  drawing.objects.assign(count, {shape});
  return drawing;
}

TEST_F(PaintBudgetTest, LayersOfAreasAreCounted) {
  const host::vec::Rectangle whole{{0, 0}, {2048, 2048}, {0, kNone}};
  EXPECT_TRUE(Keeps(Copies(whole, 128)));
  EXPECT_FALSE(Keeps(Copies(whole, 130)));
  host::vec::Rectangle open = whole;
  open.style.fill = kNone;
  EXPECT_TRUE(Keeps(Copies(open, 10000)));
}

TEST_F(PaintBudgetTest, HatchesCostMoreAndLargeCanvasesBearSomeLayers) {
  const host::vec::Rectangle whole{{0, 0}, {2048, 2048}, {0, kNone}};
  Drawing hatched = Copies(whole, 12);
  hatched.fills[0].interior = Interior::kHatch;
  EXPECT_FALSE(Keeps(hatched));
  constexpr Box kLarge{{0, 0}, {20000, 20000}};
  EXPECT_TRUE(Keeps(Copies(whole, 16), kLarge));
  EXPECT_FALSE(Keeps(Copies(whole, 17), kLarge));
}

TEST_F(PaintBudgetTest, LinesCountSeveralTimesAndWideOnesMost) {
  host::vec::Polyline line{{}, 0};
  for (int i = 0; i < 10000; ++i) line.points.push_back({i % 2 * 2000.0, i % 3 * 1000.0});
  EXPECT_FALSE(Keeps(Copies(line, 1)));
  Drawing thin = Copies(line, 1);
  thin.strokes[0].width = 2;
  EXPECT_TRUE(Keeps(thin));
  thin.objects.assign(10, thin.objects[0]);
  EXPECT_FALSE(Keeps(thin));
  // Of many short lines, the objects earn each its own.
  EXPECT_TRUE(Keeps(Copies(host::vec::Polyline{{{0, 0}, {30, 0}}, 0}, 1'000'000)));
  EXPECT_FALSE(Keeps(Copies(host::vec::Markers{line.points, 0}, 1)));
}

TEST_F(PaintBudgetTest, NumbersBeyondAllBoundsStayNumbers) {
  const double huge = std::numeric_limits<double>::max();
  const double none = std::numeric_limits<double>::quiet_NaN();
  EXPECT_TRUE(Keeps(Copies(host::vec::Polyline{{{-huge, none}, {huge, -huge}, {none, huge}}, 0}, 1)));
}

TEST_F(PaintBudgetTest, EdgesThatCrossAgainAndAgainCount) {
  host::vec::Polygon polygon{{{}}, {0, kNone}};
  for (int i = 0; i < 8000; ++i) {
    polygon.rings[0].points.push_back({1.0 * (i * 7919 % 2000), 1.0 * (i * 977 % 1999)});
  }
  EXPECT_TRUE(Keeps(Copies(polygon, 2)));
  EXPECT_FALSE(Keeps(Copies(polygon, 10)));
  polygon.rings[0].points = {{0, 0}, {2048, 0}, {2048, 2048}, {0, 2048}};
  EXPECT_TRUE(Keeps(Copies(polygon, 100)));
}

void Take(const Drawing& drawing, double length, double& spent) {
  SmoothLines smooth(drawing, kCanvas, spent);
  smooth.left -= length;
}

TEST_F(PaintBudgetTest, SmoothLinesAreShared) {
  const Drawing drawing = Copies(host::vec::Polyline{{{0, 0}, {30, 0}}, 0}, 100);
  double spent = 0;
  {
    SmoothLines smooth(drawing, kCanvas, spent);
    EXPECT_EQ(smooth.left, kMostSmooth + 100 * kSmoothOfObject);
    smooth.left -= 100 * kSmoothOfObject;
  }
  EXPECT_EQ(spent, 0);
  Take(drawing, 100 * kSmoothOfObject + 1000, spent);
  EXPECT_EQ(spent, 1000);
  Take(drawing, 1e12, spent);
  EXPECT_EQ(spent, kMostSmooth);
  EXPECT_EQ(SmoothLines(drawing, kCanvas, spent).left, 100 * kSmoothOfObject);
  EXPECT_EQ(SmoothLines(drawing, {{0, 0}, {20000, 20000}}, spent).left,
            20000 * 20000 * kSmoothOfCanvas - kMostSmooth + 100 * kSmoothOfObject);
}

// How many pixels of a row's first hundred are painted.
int Painted(const Paper& paper, int row) {
  int count = 0;
  for (int x = 0; x < 100; ++x) count += paper.At(x, row) == kPaper ? 0 : 1;
  return count;
}

TEST_F(PaintBudgetTest, TooManyDashesBecomeSolidLines) {
  Sketch sketch;
  Stroke dashed;
  dashed.type = LineType::kCustom;
  dashed.dashes = {2, 2};
  const uint32_t stroke = sketch.Add(dashed);
  for (int row = 0; row < 1000; ++row) {
    for (int again = 0; again < 2; ++again) {
      sketch.Draw(host::vec::Polyline{{{0, -2.0 * row}, {2000, -2.0 * row}}, stroke});
    }
  }
  Paper paper(2000, 2000);
  const Context context(paper.bitmap());
  Vector vector(sketch.drawing);
  const HostRect at = {0, 0, 0, 0};
  ASSERT_EQ(HostVecPaint(context.get(), vector.get(), 0, 0, 0, 0, &at, 0, 0), SUCCESS);
  EXPECT_EQ(Painted(paper, 0), 50);
  EXPECT_EQ(Painted(paper, 400), 50);
  EXPECT_EQ(Painted(paper, 1998), 100);
  EXPECT_EQ(Painted(paper, 1997), 0);
  // What the first drawing took is gone for the next, but for what that earns.
  Sketch few;
  few.drawing.strokes = sketch.drawing.strokes;
  few.Draw(host::vec::Polyline{{{0, -1.0}, {2000, -1.0}}, stroke});
  Vector next(few.drawing);
  ASSERT_EQ(HostVecPaint(context.get(), next.get(), 0, 0, 0, 0, &at, 0, 0), SUCCESS);
  EXPECT_EQ(Painted(paper, 1), 100);
  Paper other(2000, 10);
  ASSERT_EQ(other.Paint(few.drawing), SUCCESS);
  EXPECT_EQ(Painted(other, 1), 50);
}

TEST_F(PaintBudgetTest, DrawingsOfOneContextShareIt) {
  Paper paper(2000, 2000);
  const Context context(paper.bitmap());
  Vector vector(Copies(host::vec::Rectangle{{0, 0}, {2000, -2000}, {0, kNone}}, 60));
  const HostRect at = {0, 0, 0, 0};
  EXPECT_EQ(HostVecPaint(context.get(), vector.get(), 0, 0, 0, 0, &at, 0, 0), SUCCESS);
  EXPECT_EQ(HostVecPaint(context.get(), vector.get(), 0, 0, 0, 0, &at, 0, 0), SUCCESS);
  EXPECT_EQ(HostVecPaint(context.get(), vector.get(), 0, 0, 0, 0, &at, 0, 0), ERR_NO_MEMORY);
}

TEST_F(PaintBudgetTest, BeyondItNothingIsPainted) {
  Paper paper(2000, 2000);
  EXPECT_EQ(paper.Paint(Copies(host::vec::Rectangle{{0, 0}, {2000, -2000}, {0, kNone}}, 5000)),
            ERR_NO_MEMORY);
  EXPECT_EQ(paper.At(1000, 1000), kPaper);
}

}  // namespace
}  // namespace tavi::test

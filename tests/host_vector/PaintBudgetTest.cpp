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

TEST_F(PaintBudgetTest, WideLinesAndMarkersCountThinLinesDoNot) {
  host::vec::Polyline line{{}, 0};
  for (int i = 0; i < 10000; ++i) line.points.push_back({i % 2 * 2000.0, i % 3 * 1000.0});
  EXPECT_FALSE(Keeps(Copies(line, 1)));
  Drawing thin = Copies(line, 1);
  thin.strokes[0].width = 2;
  EXPECT_TRUE(Keeps(thin));
  EXPECT_FALSE(Keeps(Copies(host::vec::Markers{line.points, 0}, 1)));
}

TEST_F(PaintBudgetTest, NumbersBeyondAllBoundsStayNumbers) {
  const double huge = std::numeric_limits<double>::max();
  const double none = std::numeric_limits<double>::quiet_NaN();
  EXPECT_TRUE(Keeps(Copies(host::vec::Polyline{{{-huge, none}, {huge, -huge}, {none, huge}}, 0}, 1)));
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

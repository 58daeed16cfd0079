// Drawings that ask for the back colour of their vector.
#include "PaintTest.h"
#include "TaviVector/BackColor.h"

namespace tavi::test {
namespace {

using namespace host::vec;
using BackColorTest = HostTest;

Drawing EverywhereBackColor() {
  Drawing drawing;
  drawing.layers.push_back({});
  drawing.strokes.emplace_back().color = kBackColor;
  drawing.strokes[0].gap_color = kBackColor;
  drawing.fills.emplace_back().color = kBackColor;
  drawing.fills[0].gap_color = kBackColor;
  drawing.patterns.push_back({2, 1, {kBackColor, kRed}});
  drawing.markers.emplace_back().color = kBackColor;
  drawing.texts.emplace_back().color = kBackColor;
  drawing.texts[0].box_color = kBackColor;
  CellArray cells;
  cells.opposite = {10, -10};
  cells.row_end = {10, 0};
  cells.columns = cells.rows = 1;
  cells.colors = {kBackColor};
  drawing.objects.push_back({cells});
  return drawing;
}

TEST_F(BackColorTest, TakesThePlaceOfEveryRequest) {
  std::optional<Drawing> changed;
  const Drawing& shown = WithBackColor(EverywhereBackColor(), kBlue, changed);
  EXPECT_EQ(shown.strokes[0].color, kBlue);
  EXPECT_EQ(shown.strokes[0].gap_color, kBlue);
  EXPECT_EQ(shown.fills[0].color, kBlue);
  EXPECT_EQ(shown.fills[0].gap_color, kBlue);
  EXPECT_EQ(shown.patterns[0].colors, (std::vector<uint32_t>{kBlue, kRed}));
  EXPECT_EQ(shown.markers[0].color, kBlue);
  EXPECT_EQ(shown.texts[0].color, kBlue);
  EXPECT_EQ(shown.texts[0].box_color, kBlue);
  EXPECT_EQ(std::get<CellArray>(shown.objects[0].shape).colors[0], kBlue);
}

TEST_F(BackColorTest, DrawingWithoutRequestsIsNotCopied) {
  Drawing drawing;
  drawing.strokes.emplace_back().color = kRed;
  std::optional<Drawing> changed;
  EXPECT_EQ(&WithBackColor(drawing, kBlue, changed), &drawing);
  EXPECT_FALSE(changed.has_value());
}

TEST_F(BackColorTest, IsPaintedAndStaysWithTheVector) {
  Paper paper(20, 20);
  Vector vector(EverywhereBackColor());
  const Context context(paper.bitmap());
  const HostRect at = {5, 5, 5, 5};
  for (const uint32_t color : {kGreen, kBlue}) {
    HostVecSetBackColor(vector.get(), color);
    ASSERT_EQ(HostVecPaint(context.get(), vector.get(), 0, 0, 0, 0, &at, 0, 0), SUCCESS);
    EXPECT_EQ(paper.At(9, 9), color);
    EXPECT_EQ(paper.At(2, 2), kPaper);
  }
}

}  // namespace
}  // namespace tavi::test

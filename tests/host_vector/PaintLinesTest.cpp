// Lines: width, dashes, gaps, caps, joins.
#include <cmath>

#include "PaintTest.h"

namespace tavi::test {
namespace {

using namespace host::vec;
using PaintLinesTest = HostTest;

TEST_F(PaintLinesTest, AWidthIsCentredOnTheLine) {
  Sketch sketch;
  sketch.Draw(Polyline{{{10, -50}, {90, -50}}, sketch.Line(kRed, 10)});
  Paper paper;
  ASSERT_EQ(paper.Paint(sketch.drawing), SUCCESS);
  const Area inked = paper.Inked();
  EXPECT_EQ(inked.left, 10);
  EXPECT_EQ(inked.right, 90);
  EXPECT_EQ(inked.top, 45);
  EXPECT_EQ(inked.bottom, 55);
  EXPECT_EQ(paper.Count(kRed), 800);
}

TEST_F(PaintLinesTest, AThinLineAlongAnAxisFillsOneRow) {
  for (const double width : {0.0, 0.25, 1.0}) {
    Sketch sketch;
    sketch.Draw(Polyline{{{10, -50}, {90, -50}}, sketch.Line(kRed, width)});
    Paper paper;
    ASSERT_EQ(paper.Paint(sketch.drawing), SUCCESS);
    EXPECT_EQ(paper.Count(kRed), 80) << width;
    EXPECT_EQ(paper.Inked().height(), 1) << width;
    EXPECT_EQ(paper.Inked().top, 50) << width;
  }
}

TEST_F(PaintLinesTest, NoScaleMakesLinesThinnerThanAPixel) {
  Sketch sketch;
  const uint32_t stroke = sketch.Line(kBlack, 1);
  sketch.Draw(Polyline{{{0, 0}, {100000, -100000}}, stroke});
  Paper paper;
  ASSERT_EQ(paper.Paint(sketch.drawing, {0, 0, 100, 100}), SUCCESS);
  EXPECT_NEAR(paper.Ink(), 100 * std::sqrt(2.0), 5);
}

TEST_F(PaintLinesTest, WidthsGrowWithThePicture) {
  Sketch sketch;
  sketch.Draw(Polyline{{{0, -5}, {10, -5}}, sketch.Line(kRed, 2)});
  sketch.Draw(Polyline{{{0, 1}, {10, 1}}, sketch.Line(kBlue, 2)});
  Paper paper;
  // Bounds -1 to 11 and -6 to 2.
  ASSERT_EQ(paper.Paint(sketch.drawing, {0, 0, 96, 64}), SUCCESS);
  EXPECT_EQ(paper.Find(kBlue).height(), 16);
  EXPECT_EQ(paper.Find(kBlue).top, 0);
  EXPECT_EQ(paper.Find(kRed).bottom, 64);
  EXPECT_EQ(paper.Find(kRed).left, 8);
}

TEST_F(PaintLinesTest, DashesAreInProportionToTheWidth) {
  for (const LineType type : {LineType::kDash, LineType::kDot, LineType::kDashDot, LineType::kDashDotDot}) {
    std::vector<int> starts[2];
    for (const int scale : {1, 2}) {
      Sketch sketch;
      Stroke stroke;
      stroke.width = 4 * scale;
      stroke.type = type;
      sketch.Draw(Polyline{{{0, -20}, {400, -20}}, sketch.Add(stroke)});
      Paper paper(400, 40);
      ASSERT_EQ(paper.Paint(sketch.drawing), SUCCESS);
      for (int x = 1; x < 400; ++x) {
        if (paper.At(x, 20) == kBlack && paper.At(x - 1, 20) != kBlack)
          starts[scale - 1].push_back(x / scale);
      }
    }
    ASSERT_GT(starts[1].size(), 2u);
    ASSERT_GT(starts[0].size(), starts[1].size());
    for (size_t i = 0; i < starts[1].size(); ++i) EXPECT_NEAR(starts[0][i], starts[1][i], 1);
  }
}

TEST_F(PaintLinesTest, DashesOfThinLinesAreVisible) {
  Sketch sketch;
  Stroke stroke;
  stroke.type = LineType::kDot;
  sketch.Draw(Polyline{{{0, -20}, {100, -20}}, sketch.Add(stroke)});
  Paper paper;
  ASSERT_EQ(paper.Paint(sketch.drawing), SUCCESS);
  EXPECT_GT(paper.Ink(), 25);
  EXPECT_LT(paper.Ink(), 60);
}

TEST_F(PaintLinesTest, GapsShowWhatIsBeneathOrTheirColour) {
  for (const bool filled : {false, true}) {
    Sketch sketch;
    Stroke stroke;
    stroke.width = 6;
    stroke.type = LineType::kCustom;
    stroke.dashes = {10, 10};
    stroke.color = kRed;
    if (filled) stroke.gap_color = kGreen;
    sketch.Draw(Polyline{{{0, -20}, {100, -20}}, sketch.Add(stroke)});
    Paper paper;
    ASSERT_EQ(paper.Paint(sketch.drawing), SUCCESS);
    EXPECT_EQ(paper.At(5, 20), kRed);
    EXPECT_EQ(paper.At(15, 20), filled ? kGreen : kPaper);
    EXPECT_EQ(paper.At(25, 20), kRed);
  }
}

TEST_F(PaintLinesTest, DashesGoOnAcrossFarAwayParts) {
  // The line comes from far outside; its dashes fall where they would on a picture that shows all of it.
  Sketch sketch;
  Stroke stroke;
  stroke.width = 6;
  stroke.type = LineType::kCustom;
  stroke.dashes = {10, 10};
  sketch.Draw(Polyline{{{-1'000'000, -20}, {500'000, -20}, {1'000'000, -20}}, sketch.Add(stroke)});
  Paper paper;
  ASSERT_EQ(paper.Paint(sketch.drawing), SUCCESS);
  EXPECT_EQ(paper.At(5, 20), kBlack);
  EXPECT_EQ(paper.At(15, 20), kPaper);
  EXPECT_EQ(paper.At(85, 20), kBlack);
  EXPECT_EQ(paper.At(95, 20), kPaper);
}

TEST_F(PaintLinesTest, CapsEndLines) {
  const auto inked = [](LineCap cap) {
    Sketch sketch;
    Stroke stroke;
    stroke.width = 20;
    stroke.cap = cap;
    sketch.Draw(Polyline{{{40, -50}, {60, -50}}, sketch.Add(stroke)});
    Paper paper;
    EXPECT_EQ(paper.Paint(sketch.drawing), SUCCESS);
    return std::pair(paper.Inked().width(), paper.At(31, 41) == kBlack);
  };
  EXPECT_EQ(inked(LineCap::kButt), std::pair(20, false));
  EXPECT_EQ(inked(LineCap::kRound), std::pair(40, false));
  EXPECT_EQ(inked(LineCap::kSquare), std::pair(40, true));
}

TEST_F(PaintLinesTest, JoinsFillCorners) {
  const auto corner = [](LineJoin join) {
    Sketch sketch;
    Stroke stroke;
    stroke.width = 20;
    stroke.join = join;
    sketch.Draw(Polyline{{{20, -80}, {20, -20}, {80, -20}}, sketch.Add(stroke)});
    Paper paper;
    EXPECT_EQ(paper.Paint(sketch.drawing), SUCCESS);
    return std::pair(paper.At(10, 10) == kBlack, paper.At(13, 13) == kBlack);
  };
  EXPECT_EQ(corner(LineJoin::kMitre), std::pair(true, true));
  EXPECT_EQ(corner(LineJoin::kRound), std::pair(false, true));
  EXPECT_EQ(corner(LineJoin::kBevel), std::pair(false, false));
}

TEST_F(PaintLinesTest, LongLinesKeepTheirJoins) {
  // More points than one path takes: a zigzag whose corners all have mitres.
  Sketch sketch;
  Stroke stroke;
  stroke.width = 4;
  Polyline line;
  for (int i = 0; i < 2000; ++i) line.points.push_back({i * 0.05, i % 2 == 0 ? -20.0 : -80.0});
  line.stroke = sketch.Add(stroke);
  sketch.Draw(line);
  Paper paper;
  ASSERT_EQ(paper.Paint(sketch.drawing), SUCCESS);
  for (int x = 2; x < 98; ++x) {
    for (int y = 22; y < 78; y += 5) ASSERT_EQ(paper.At(x, y), kBlack) << x << ' ' << y;
  }
}

TEST_F(PaintLinesTest, ALineWithoutLengthShowsItsPen) {
  Sketch sketch;
  sketch.Draw(Polyline{{{50, -50}, {50, -50}}, sketch.Line(kRed, 10)});
  Paper paper;
  ASSERT_EQ(paper.Paint(sketch.drawing), SUCCESS);
  EXPECT_EQ(paper.Count(kRed), 100);
}

TEST_F(PaintLinesTest, SegmentsAreSeparateLines) {
  Sketch sketch;
  sketch.Draw(Segments{{{10, -10}, {30, -10}, {50, -10}, {70, -10}, {80, -90}}, sketch.Line(kRed, 4)});
  Paper paper;
  ASSERT_EQ(paper.Paint(sketch.drawing), SUCCESS);
  EXPECT_EQ(paper.Count(kRed), 160);
  EXPECT_EQ(paper.At(40, 10), kPaper);
}

TEST_F(PaintLinesTest, ScaledWidthsAreTimesTheNominalOne) {
  Sketch sketch;
  Stroke stroke;
  stroke.scaled = true;
  stroke.width = 2;
  sketch.drawing.nominal_width = 5;
  sketch.Draw(Polyline{{{10, -50}, {90, -50}}, sketch.Add(stroke)});
  Paper paper;
  ASSERT_EQ(paper.Paint(sketch.drawing), SUCCESS);
  EXPECT_EQ(paper.Inked().height(), 10);
}

TEST_F(PaintLinesTest, LinesInClipsAreCut) {
  Sketch sketch;
  sketch.drawing.clips.push_back({{20, -60}, {40, -40}});
  const uint32_t stroke = sketch.Line(kRed, 100);
  sketch.Draw(Polyline{{{0, -50}, {100, -50}}, stroke}, 0);
  sketch.Draw(Polyline{{{80, -50}, {90, -50}}, sketch.Line(kBlue, 4)});
  Paper paper;
  ASSERT_EQ(paper.Paint(sketch.drawing), SUCCESS);
  EXPECT_EQ(paper.Count(kRed), 400);
  EXPECT_EQ(paper.Find(kRed).left, 20);
  EXPECT_EQ(paper.Count(kBlue), 40);
}

TEST_F(PaintLinesTest, MissingStrokesDrawNothing) {
  Sketch sketch;
  sketch.Draw(Polyline{{{0, -50}, {100, -50}}, kNone});
  sketch.Draw(Polyline{{{0, -50}, {100, -50}}, 77});
  sketch.Draw(Polyline{{}, sketch.Line(kRed, 3)});
  Paper paper;
  ASSERT_EQ(paper.Paint(sketch.drawing), SUCCESS);
  EXPECT_EQ(paper.Inked().width(), 0);
}

}  // namespace
}  // namespace tavi::test

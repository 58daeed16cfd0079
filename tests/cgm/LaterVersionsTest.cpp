// What versions 2 to 4 add, as far as it is drawn; the rest is skipped.
#include <cmath>

#include "CgmTest.h"

namespace tavi::test {
namespace {

class LaterVersionsTest : public CgmTest {};

TEST_F(LaterVersionsTest, FiguresAreOneArea) {
  const Loaded loaded(Metafile()
                          .Body(5, 22, List().I(1))
                          .Body(5, 23, List().Rgb(255, 0, 0))
                          .Body(0, 8)
                          .Body(4, 1, Line({0, 0, 10, 0}))
                          .Body(4, 15, Line({10, 10, 0, -1, 0, 1, 10}))
                          .Body(4, 1, Line({0, 20, 0, 5}))
                          .Body(3, 10)
                          .Body(4, 11, Line({2, 2, 4, 4}))
                          .Body(0, 9)
                          .Body(4, 1, Line()));
  ASSERT_EQ(loaded.count(), 2U);
  const auto& figure = loaded.As<vec::Figure>();
  ASSERT_EQ(figure.contours.size(), 2U);
  EXPECT_TRUE(figure.contours[0].closed);
  EXPECT_EQ(figure.contours[0].start, (Point{0, 0}));
  // A line, two quarters of a circle, the way to the next line, that line.
  ASSERT_EQ(figure.contours[0].curves.size(), 5U);
  ExpectNear(figure.contours[0].curves[1][2], {20, 10}, 1e-9);
  ExpectNear(figure.contours[0].curves[2][2], {10, 20}, 1e-9);
  EXPECT_EQ(figure.contours[0].curves[4][2], (Point{0, 5}));
  EXPECT_EQ(figure.contours[1].curves.size(), 3U);
  EXPECT_EQ(loaded.Fill(figure.style.fill).color, kRed);
  EXPECT_EQ(figure.stroke, vec::kNone);
}

TEST_F(LaterVersionsTest, FiguresTakeEveryShape) {
  const Loaded loaded(Metafile()
                          .Body(5, 22, List().I(1))
                          .Body(0, 8)
                          .Body(4, 7, Line({0, 0, 9, 0, 9, 9}))
                          .Body(4, 8, Line({0, 0, 1, 9, 0, 1, 9, 9, 3}))
                          .Body(4, 12, Line({5, 5, 3}))
                          .Body(4, 16, Line({5, 5, 1, 0, 0, 1, 3, 0}))
                          .Body(4, 2, Line({0, 0, 1, 1, 2, 2, 3, 3}))
                          .Body(4, 26, List().I(1).Points({3, 3, 4, 4, 5, 5, 6, 0}))
                          .Body(0, 9));
  ASSERT_EQ(loaded.count(), 1U);
  const auto& contours = loaded.As<vec::Figure>().contours;
  ASSERT_EQ(contours.size(), 5U);
  for (const vec::Contour& contour : contours) EXPECT_TRUE(contour.closed);
  ASSERT_EQ(contours[2].curves.size(), 4U);
  ExpectNear(contours[2].curves[3][2], {8, 5}, 1e-9);
  EXPECT_EQ(contours[3].curves.back()[2], (Point{5, 5})) << "a pie goes through its centre";
  EXPECT_EQ(contours[4].curves.size(), 4U);
}

TEST_F(LaterVersionsTest, ConnectingEdgesAreThereAnyway) {
  const auto contour = [](bool connected) {
    Metafile metafile;
    metafile.Body(5, 22, List().I(1)).Body(0, 8).Body(4, 1, Line({0, 0, 10, 0}));
    if (connected) metafile.Body(4, 21);
    const Loaded loaded(metafile.Body(4, 1, Line({10, 10, 0, 10})).Body(0, 9));
    return loaded.As<vec::Figure>().contours.at(0);
  };
  EXPECT_EQ(contour(true), contour(false));
  EXPECT_EQ(contour(true).curves.size(), 3U);
}

TEST_F(LaterVersionsTest, UnfinishedAndEmptyFigures) {
  EXPECT_EQ(Loaded(Metafile().Body(0, 8).Body(0, 9)).count(), 0U);
  EXPECT_EQ(Loaded(Metafile().Body(0, 9)).count(), 0U);
  EXPECT_EQ(Loaded(Metafile().Body(0, 8).Body(4, 11, Line())).count(), 1U);
  EXPECT_EQ(Loaded(Metafile().Body(0, 8).Body(4, 11, Line()).Body(0, 8).Body(4, 11, Line())).count(), 2U);
}

TEST_F(LaterVersionsTest, CompoundLines) {
  const Loaded loaded(Metafile()
                          .Body(5, 4, List().Rgb(0, 255, 0))
                          .Body(0, 15)
                          .Body(4, 1, Line({0, 0, 10, 0}))
                          .Body(4, 1, Line({10, 0, 20, 5}))
                          .Body(4, 1, Line({50, 50, 60, 60}))
                          .Body(0, 16));
  const auto& figure = loaded.As<vec::Figure>();
  ASSERT_EQ(figure.contours.size(), 2U);
  EXPECT_EQ(figure.contours[0].curves.size(), 2U);
  EXPECT_FALSE(figure.contours[0].closed);
  EXPECT_EQ(loaded.Stroke(figure.stroke).color, kGreen);
  EXPECT_EQ(figure.style.fill, vec::kNone);
}

TEST_F(LaterVersionsTest, SegmentsAreCopied) {
  Metafile metafile;
  metafile.Head(0, 6, List().I(7)).Head(5, 4, List().Rgb(255, 0, 0)).Head(4, 1, Line({0, 0, 10, 0}));
  metafile.Head(4, 11, Line({0, 0, 10, 20})).Head(0, 7);
  // Turned by a quarter, twice as large, moved.
  metafile.Body(8, 1, List().I(7).Fixed(0).Fixed(-2).Fixed(2).Fixed(0).I(100).I(50).I(1));
  metafile.Body(4, 1, Line()).Body(8, 1, List().I(8).Fixed(1).Fixed(0).Fixed(0).Fixed(1).I(0).I(0).I(1));
  const Loaded loaded(metafile);
  ASSERT_EQ(loaded.count(), 3U);
  EXPECT_EQ(loaded.As<vec::Polyline>().points, (std::vector<Point>{{100, 50}, {100, 70}}));
  EXPECT_EQ(loaded.Stroke(loaded.As<vec::Polyline>().stroke).color, kRed);
  EXPECT_EQ(loaded.As<vec::Polygon>(1).rings.at(0).points,
            (std::vector<Point>{{100, 50}, {100, 70}, {60, 70}, {60, 50}}));
  EXPECT_EQ(loaded.Stroke(loaded.As<vec::Polyline>(2).stroke).color, 0U);
}

TEST_F(LaterVersionsTest, SegmentsInThePictureAreDrawnToo) {
  const Loaded loaded(Metafile()
                          .Body(0, 6, List().I(1))
                          .Body(4, 1, Line())
                          .Body(0, 7)
                          .Body(8, 1, List().I(1).Fixed(1).Fixed(0).Fixed(0).Fixed(1).I(5).I(5).I(1)));
  ASSERT_EQ(loaded.count(), 2U);
  EXPECT_EQ(loaded.As<vec::Polyline>(1).points[0], (Point{15, 25}));
}

TEST_F(LaterVersionsTest, CopiesThatGrowWithoutEndAreRefused) {
  const auto copy = [](int name) {
    return Element(8, 1, List().I(name).Fixed(1).Fixed(0).Fixed(0).Fixed(1).I(1).I(1).I(1));
  };
  Metafile metafile;
  metafile.Body(0, 6, List().I(0));
  for (int i = 0; i < 100; ++i) metafile.Body(4, 1, Line());
  metafile.Body(0, 7);
  for (int level = 1; level < 8; ++level) {
    metafile.Body(0, 6, List().I(level));
    for (int i = 0; i < 12; ++i) metafile.BodyOctets(copy(level - 1));
    metafile.Body(0, 7);
  }
  EXPECT_EQ(Loaded(metafile).status(), ERR_NO_MEMORY);
  // One that copies itself ends at some depth.
  const Loaded self(Metafile()
                        .Body(0, 6, List().I(1))
                        .Body(4, 1, Line())
                        .BodyOctets(copy(1))
                        .Body(0, 7)
                        .BodyOctets(copy(1)));
  EXPECT_EQ(self.status(), SUCCESS);
  EXPECT_LT(self.count(), 20U);
}

TEST_F(LaterVersionsTest, Beziers) {
  const Loaded loaded(Metafile()
                          .Body(4, 26, List().I(1).Points({0, 0, 1, 1, 2, 1, 3, 0, 5, 5, 6, 6, 7, 6, 8, 5}))
                          .Body(4, 26, List().I(2).Points({0, 0, 1, 1, 2, 1, 3, 0, 4, -1, 5, -1, 6, 0}))
                          .Body(4, 26, List().I(3).Points({0, 0, 1, 1, 2, 1, 3, 0})));
  ASSERT_EQ(loaded.count(), 2U);
  EXPECT_EQ(loaded.As<vec::Figure>().contours.size(), 2U);
  ASSERT_EQ(loaded.As<vec::Figure>(1).contours.size(), 1U);
  ASSERT_EQ(loaded.As<vec::Figure>(1).contours[0].curves.size(), 2U);
  EXPECT_EQ(loaded.As<vec::Figure>(1).contours[0].curves[1][2], (Point{6, 0}));
}

TEST_F(LaterVersionsTest, ReversedArcs) {
  const Loaded loaded(Metafile().Body(4, 20, Line({0, 0, 1, 0, 0, 1, 10})));
  EXPECT_NEAR(loaded.As<vec::Arc>().sweep, -3 * std::acos(-1.0) / 2, 1e-9);
}

TEST_F(LaterVersionsTest, ParabolasAndHyperbolas) {
  const Loaded loaded(
      Metafile().Body(4, 23, Line({5, 10, 0, 0, 10, 0})).Body(4, 22, Line({0, 0, 10, 0, 0, 5, 3, -1, 3, 1})));
  ASSERT_EQ(loaded.count(), 2U);
  const auto& parabola = loaded.As<vec::Figure>().contours.at(0);
  EXPECT_EQ(parabola.start, (Point{0, 0}));
  EXPECT_EQ(parabola.curves.at(0)[2], (Point{10, 0}));
  for (const Point& p : loaded.As<vec::Polyline>(1).points) {
    EXPECT_NEAR(p.x * p.x / 100 - p.y * p.y / 25, 1, 1e-9);
  }
}

// A circle's quarter is a rational curve of the second degree.
TEST_F(LaterVersionsTest, Splines) {
  List list = List().I(3).I(3).Points({1000, 0, 1000, 1000, 0, 1000});
  for (const double knot : {0, 0, 0, 1, 1, 1, 0, 1}) list.Fixed(knot);
  list.Fixed(1).Fixed(std::sqrt(0.5)).Fixed(1);
  List plain = List().I(2).I(3).Points({0, 0, 10, 0, 10, 10});
  for (const double knot : {0, 0, 1, 2, 2, 0, 2}) plain.Fixed(knot);
  const Loaded loaded(Metafile().Body(4, 25, list).Body(4, 24, plain));
  ASSERT_EQ(loaded.count(), 2U);
  for (const Point& p : loaded.As<vec::Polyline>().points) EXPECT_NEAR(std::hypot(p.x, p.y), 1000, 0.1);
  EXPECT_EQ(loaded.As<vec::Polyline>().points.front(), (Point{1000, 0}));
  EXPECT_EQ(loaded.As<vec::Polyline>().points.back(), (Point{0, 1000}));
  EXPECT_EQ(loaded.As<vec::Polyline>(1).points.at(16), (Point{10, 0}));
}

TEST_F(LaterVersionsTest, SplinesThatMakeNoSense) {
  for (const auto& [order, count] :
       std::vector<std::pair<int, int>>{{1, 3}, {99, 100}, {4, 3}, {3, -1}, {3, 32767}, {0, 0}}) {
    List list = List().I(order).I(count).Points({0, 0, 10, 0, 10, 10});
    for (int i = 0; i < 12; ++i) list.Fixed(i);
    EXPECT_EQ(Loaded(Metafile().Body(4, 24, list)).count(), 0U) << order;
  }
  List falling = List().I(2).I(2).Points({0, 0, 10, 0});
  for (const double knot : {1, 0, 2, 3, 0, 3}) falling.Fixed(knot);
  EXPECT_EQ(Loaded(Metafile().Body(4, 24, falling)).count(), 0U);
}

TEST_F(LaterVersionsTest, CapsJoinsAndDefinedDashes) {
  const Loaded loaded(Metafile()
                          .Picture(2, 17, List().I(-5).I(100).I(3).I(1))
                          .Picture(2, 17, List().I(-6).I(90).I(1).I(1).I(1))
                          .Picture(2, 17, List().I(-7).I(90).I(0).I(0))
                          .Body(5, 37, List().I(3).I(3))
                          .Body(5, 38, List().I(4))
                          .Body(3, 19, List().Fixed(3.5))
                          .Body(5, 2, List().I(-5))
                          .Body(4, 1, Line())
                          .Body(5, 2, List().I(-6))
                          .Body(5, 37, List().I(4).I(1))
                          .Body(5, 38, List().I(3))
                          .Body(4, 1, Line())
                          .Body(5, 2, List().I(-7))
                          .Body(4, 1, Line()));
  const vec::Stroke first = loaded.Stroke(loaded.As<vec::Polyline>().stroke);
  EXPECT_EQ(first.cap, vec::LineCap::kRound);
  EXPECT_EQ(first.join, vec::LineJoin::kBevel);
  EXPECT_EQ(first.mitre_limit, 3.5);
  EXPECT_EQ(first.type, vec::LineType::kCustom);
  EXPECT_EQ(first.dashes, (std::vector<double>{75, 25}));
  const vec::Stroke second = loaded.Stroke(loaded.As<vec::Polyline>(1).stroke);
  EXPECT_EQ(second.cap, vec::LineCap::kSquare);
  EXPECT_EQ(second.join, vec::LineJoin::kRound);
  EXPECT_EQ(second.dashes.size(), 6U) << "an odd list runs through twice";
  EXPECT_EQ(loaded.Stroke(loaded.As<vec::Polyline>(2).stroke).type, vec::LineType::kSolid);
}

TEST_F(LaterVersionsTest, DefinedDashesAreBounded) {
  for (const int count : {63, 64, 65, 20'000}) {
    List list = List().I(-5).I(count);
    for (int i = 0; i < count; ++i) list.I(1);
    const Loaded loaded(Metafile().Picture(2, 17, list).Body(5, 2, List().I(-5)).Body(4, 1, Line()));
    const vec::Stroke stroke = loaded.Stroke(loaded.As<vec::Polyline>().stroke);
    ASSERT_EQ(stroke.dashes.size(), 64U) << count;
    EXPECT_NEAR(stroke.dashes[63], 1, 1e-9) << "the lengths stay those of the whole cycle";
  }
}

TEST_F(LaterVersionsTest, TilesOfPlainBits) {
  const List begin = Line({10, 90}).I(0).I(1).I(2).I(1).I(8).I(2).Fixed(1).Fixed(1).I(0).I(0).I(16).I(2);
  const Octets record = {0};
  const List bits = List().I(5).I(0).Rgb(255, 255, 255).Rgb(255, 0, 0).Add(record).Add({0x80, 0x01});
  const List plain = List().I(1).I(0).Rgb(255, 255, 255).Rgb(0, 255, 0).Add(record);
  const List faxed = List().I(2).I(0).Rgb(255, 255, 255).Rgb(0, 255, 0).Add(record).Add({1, 2, 3});
  const Loaded loaded(Metafile()
                          .Body(4, 28, bits)
                          .Body(0, 19, begin)
                          .Body(4, 28, bits)
                          .Body(4, 28, plain)
                          .Body(4, 28, bits)
                          .Body(0, 20)
                          .Body(0, 19, begin)
                          .Body(4, 28, faxed)
                          .Body(0, 20));
  ASSERT_EQ(loaded.count(), 2U) << "as many as there are places, and none that is coded";
  const auto& tile = loaded.As<vec::CellArray>();
  EXPECT_EQ(tile.corner, (Point{10, 90}));
  EXPECT_EQ(tile.row_end, (Point{18, 90}));
  EXPECT_EQ(tile.opposite, (Point{18, 88}));
  ASSERT_EQ(tile.colors.size(), 16U);
  EXPECT_EQ(tile.colors[0], kRed);
  EXPECT_EQ(tile.colors[1], 0xFFFFFFU);
  EXPECT_EQ(tile.colors[15], kRed);
  EXPECT_EQ(loaded.As<vec::CellArray>(1).corner, (Point{18, 90}));
  EXPECT_EQ(loaded.As<vec::CellArray>(1).colors, std::vector<uint32_t>{kGreen});
}

TEST_F(LaterVersionsTest, TilesOfColors) {
  const List begin = Line({0, 0}).I(0).I(0).I(1).I(1).I(2).I(1).Fixed(5).Fixed(5).I(0).I(0).I(2).I(1);
  const Loaded loaded(Metafile()
                          .Body(0, 19, begin)
                          .Body(4, 29, List().I(5).I(0).I(8).Add({0}).Rgb(255, 0, 0).Rgb(0, 0, 255)));
  EXPECT_EQ(loaded.As<vec::CellArray>().colors, (std::vector<uint32_t>{kRed, kBlue}));
  EXPECT_EQ(loaded.As<vec::CellArray>().opposite, (Point{10, 5}));
}

TEST_F(LaterVersionsTest, ProtectionRegionsAndStructures) {
  const Loaded loaded(Metafile()
                          .Body(0, 13, List().I(1))
                          .Body(4, 11, Line())
                          .Body(0, 14)
                          .Body(0, 21, List().String("a").String("b").I(0))
                          .Body(0, 22)
                          .Body(9, 1, List().String("k").String("v"))
                          .Body(4, 1, Line())
                          .Body(0, 23));
  ASSERT_EQ(loaded.count(), 1U);
  EXPECT_EQ(loaded.As<vec::Polyline>().points.size(), 2U);
}

}  // namespace
}  // namespace tavi::test

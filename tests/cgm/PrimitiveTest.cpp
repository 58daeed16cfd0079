// Each primitive of version 1.
#include <cmath>
#include <numbers>

#include "CgmTest.h"

namespace tavi::test {
namespace {

class PrimitiveTest : public CgmTest {};

constexpr double kPi = std::numbers::pi;

Point On(const vec::Arc& arc, double t) {
  return {arc.centre.x + arc.a.x * std::cos(t) + arc.b.x * std::sin(t),
          arc.centre.y + arc.a.y * std::cos(t) + arc.b.y * std::sin(t)};
}
Point Start(const vec::Arc& arc) {
  return On(arc, arc.start);
}
Point Middle(const vec::Arc& arc) {
  return On(arc, arc.start + arc.sweep / 2);
}
Point End(const vec::Arc& arc) {
  return On(arc, arc.start + arc.sweep);
}

TEST_F(PrimitiveTest, Lines) {
  const Loaded loaded(
      Metafile().Body(4, 1, Line({1, 2, 3, 4, 5, -6})).Body(4, 2, Line({1, 2, 3, 4, 5, 6, 7, 8, 9, 9})));
  EXPECT_EQ(loaded.As<vec::Polyline>().points, (std::vector<Point>{{1, 2}, {3, 4}, {5, -6}}));
  EXPECT_EQ(loaded.As<vec::Segments>(1).points, (std::vector<Point>{{1, 2}, {3, 4}, {5, 6}, {7, 8}}));
}

TEST_F(PrimitiveTest, Markers) {
  const Loaded loaded(Metafile()
                          .Body(5, 6, List().I(4))
                          .Body(5, 7, List().I(9))
                          .Body(5, 8, List().Rgb(255, 0, 0))
                          .Body(4, 3, Line({1, 2, 3, 4})));
  const auto& markers = loaded.As<vec::Markers>();
  EXPECT_EQ(markers.points, (std::vector<Point>{{1, 2}, {3, 4}}));
  EXPECT_EQ(loaded.Marker(markers.marker), (vec::MarkerStyle{vec::MarkerType::kCircle, kRed, 9, false}));
}

TEST_F(PrimitiveTest, Polygon) {
  const Loaded loaded(Metafile().Body(4, 7, Line({1, 2, 3, 4, 5, 6})).Body(4, 7, Line({1, 2, 3, 4})));
  ASSERT_EQ(loaded.count(), 1U);
  ASSERT_EQ(loaded.As<vec::Polygon>().rings.size(), 1U);
  EXPECT_EQ(loaded.As<vec::Polygon>().rings[0].points, (std::vector<Point>{{1, 2}, {3, 4}, {5, 6}}));
  EXPECT_TRUE(loaded.As<vec::Polygon>().rings[0].visible.empty());
}

TEST_F(PrimitiveTest, PolygonSet) {
  const Loaded loaded(Metafile().Body(
      4, 8, Line({0, 0, 1, 9, 0, 0, 9, 9, 3, 2, 2, 1, 4, 2, 1, 4, 4, 2, 6, 6, 1, 7, 6, 0, 7, 7, 1})));
  const auto& rings = loaded.As<vec::Polygon>().rings;
  ASSERT_EQ(rings.size(), 3U);
  EXPECT_EQ(rings[0].points, (std::vector<Point>{{0, 0}, {9, 0}, {9, 9}}));
  EXPECT_EQ(rings[0].visible, (std::vector<uint8_t>{1, 0, 1}));
  EXPECT_EQ(rings[1].visible, (std::vector<uint8_t>{1, 1, 0}));
  EXPECT_EQ(rings[2].points.size(), 3U) << "the last one needs no closing flag";
}

TEST_F(PrimitiveTest, RectangleCircleEllipse) {
  const Loaded loaded(Metafile()
                          .Body(4, 11, Line({9, 8, 1, 2}))
                          .Body(4, 12, Line({10, 20, 5}))
                          .Body(4, 17, Line({10, 20, 13, 24, 6, 23}))
                          .Body(4, 12, Line({10, 20, -5})));
  ASSERT_EQ(loaded.count(), 3U);
  EXPECT_EQ(loaded.As<vec::Rectangle>().corner, (Point{9, 8}));
  EXPECT_EQ(loaded.As<vec::Rectangle>().opposite, (Point{1, 2}));
  EXPECT_EQ(loaded.As<vec::Ellipse>(1).centre, (Point{10, 20}));
  EXPECT_EQ(loaded.As<vec::Ellipse>(1).a, (Point{5, 0}));
  EXPECT_EQ(loaded.As<vec::Ellipse>(1).b, (Point{0, 5}));
  EXPECT_EQ(loaded.As<vec::Ellipse>(2).a, (Point{3, 4}));
  EXPECT_EQ(loaded.As<vec::Ellipse>(2).b, (Point{-4, 3}));
}

TEST_F(PrimitiveTest, ArcsThroughThreePoints) {
  const Loaded loaded(Metafile()
                          .Body(4, 13, Line({10, 0, 0, 10, -10, 0}))
                          .Body(4, 13, Line({10, 0, 0, -10, -10, 0}))
                          .Body(4, 14, Line({10, 0, 0, 10, -10, 0, 0}))
                          .Body(4, 14, Line({10, 0, 0, 10, -10, 0, 1}))
                          .Body(4, 13, Line({0, 0, 5, 5, 10, 10}))
                          .Body(4, 14, Line({10, 0, 0, 10, -10, 0, 7})));
  ASSERT_EQ(loaded.count(), 5U);
  const auto& up = loaded.As<vec::Arc>();
  ExpectNear(Start(up), {10, 0});
  ExpectNear(Middle(up), {0, 10});
  ExpectNear(End(up), {-10, 0});
  EXPECT_EQ(up.closure, vec::Closure::kOpen);
  EXPECT_NE(up.stroke, vec::kNone);
  ExpectNear(Middle(loaded.As<vec::Arc>(1)), {0, -10});
  EXPECT_EQ(loaded.As<vec::Arc>(2).closure, vec::Closure::kPie);
  EXPECT_EQ(loaded.As<vec::Arc>(3).closure, vec::Closure::kChord);
  EXPECT_EQ(loaded.As<vec::Polyline>(4).points, (std::vector<Point>{{0, 0}, {5, 5}, {10, 10}}));
}

TEST_F(PrimitiveTest, ArcsAroundACentre) {
  const Loaded loaded(Metafile()
                          .Body(4, 15, Line({100, 100, 7, 0, 0, 3, 50}))
                          .Body(4, 15, Line({100, 100, 0, 3, 7, 0, 50}))
                          .Body(4, 16, Line({100, 100, 1, 0, -1, 0, 50, 0}))
                          .Body(4, 16, Line({100, 100, 1, 0, 1, 0, 50, 1}))
                          .Body(4, 15, Line({100, 100, 0, 0, 1, 0, 50})));
  ASSERT_EQ(loaded.count(), 4U);
  ExpectNear(Start(loaded.As<vec::Arc>()), {150, 100});
  ExpectNear(End(loaded.As<vec::Arc>()), {100, 150});
  EXPECT_NEAR(loaded.As<vec::Arc>().sweep, kPi / 2, 1e-9);
  EXPECT_NEAR(loaded.As<vec::Arc>(1).sweep, 3 * kPi / 2, 1e-9);
  EXPECT_EQ(loaded.As<vec::Arc>(2).closure, vec::Closure::kPie);
  EXPECT_NEAR(loaded.As<vec::Arc>(3).sweep, 2 * kPi, 1e-9) << "equal rays give a full circle";
}

// Downward axes turn the direction of arcs on the screen, not their ends.
TEST_F(PrimitiveTest, ArcsUnderADownwardAxis) {
  const Loaded loaded(
      Metafile().Picture(2, 6, Line({0, 100, 100, 0})).Body(4, 15, Line({100, 100, 1, 0, 0, 1, 50})));
  ExpectNear(Start(loaded.As<vec::Arc>()), {150, -100});
  ExpectNear(Middle(loaded.As<vec::Arc>()), {100 + 50 * std::sqrt(0.5), -100 - 50 * std::sqrt(0.5)});
  ExpectNear(End(loaded.As<vec::Arc>()), {100, -150});
}

TEST_F(PrimitiveTest, EllipticalArcs) {
  const Loaded loaded(Metafile()
                          .Body(4, 18, Line({0, 0, 20, 0, 0, 10, 1, 0, 0, 1}))
                          .Body(4, 18, Line({0, 0, 20, 0, 0, -10, 1, 0, 0, -1}))
                          .Body(4, 19, Line({0, 0, 20, 0, 0, 10, 0, 1, -5, 0, 0}))
                          .Body(4, 19, Line({0, 0, 20, 0, 10, 10, 20, 0, 10, 10, 1}))
                          .Body(4, 18, Line({0, 0, 20, 0, 40, 0, 1, 0, 0, 1})));
  ASSERT_EQ(loaded.count(), 4U);
  ExpectNear(Start(loaded.As<vec::Arc>()), {20, 0});
  ExpectNear(End(loaded.As<vec::Arc>()), {0, 10});
  ExpectNear(End(loaded.As<vec::Arc>(1)), {0, -10});
  EXPECT_NEAR(loaded.As<vec::Arc>(1).sweep, kPi / 2, 1e-9);
  ExpectNear(End(loaded.As<vec::Arc>(2)), {-20, 0});
  EXPECT_EQ(loaded.As<vec::Arc>(2).closure, vec::Closure::kPie);
  ExpectNear(Start(loaded.As<vec::Arc>(3)), {20, 0});
  ExpectNear(End(loaded.As<vec::Arc>(3)), {10, 10});
}

TEST_F(PrimitiveTest, GeneralisedPrimitivesAreSkipped) {
  const Loaded loaded(
      Metafile().Body(4, 10, List().I(-1).I(1).Points({1, 2}).String("x")).Body(4, 1, Line()));
  EXPECT_EQ(loaded.count(), 1U);
}

TEST_F(PrimitiveTest, PolygonsOfManyPoints) {
  std::vector<int> coordinates;
  for (int i = 0; i < 100'000; ++i) {
    coordinates.push_back(i % 1000);
    coordinates.push_back(i / 100);
  }
  const Loaded loaded(
      Metafile().BodyOctets(Element(4, 7, List().Points(coordinates).octets(), Form::kPartitioned, 32000)));
  ASSERT_EQ(loaded.As<vec::Polygon>().rings.size(), 1U);
  EXPECT_EQ(loaded.As<vec::Polygon>().rings[0].points.size(), 100'000U);
}

}  // namespace
}  // namespace tavi::test

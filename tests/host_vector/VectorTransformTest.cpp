// Translations as callers apply them, and the transform of every kind and attribute of the model.
#include <cmath>
#include <limits>

#include "VectorTest.h"

namespace tavi::test {
namespace {

using namespace host::vec;

class VectorTransform : public HostTest {};

Drawing OneOf(Shape shape) {
  Drawing drawing;
  drawing.objects.push_back({std::move(shape), 0, kNone});
  return drawing;
}

template <class Kind>
Kind Moved(Kind kind, const Affine& by) {
  Drawing drawing = OneOf(std::move(kind));
  Transform(drawing, by);
  return std::get<Kind>(drawing.objects[0].shape);
}

constexpr Affine kShift{1, 0, 10, 0, 1, -20};
constexpr Affine kQuarterTurn{0, -1, 0, 1, 0, 0};
constexpr Affine kWider{3, 0, 0, 0, 1, 0};
constexpr Affine kTwice{2, 0, 5, 0, 2, 7};
constexpr Affine kMirror{1, 0, 0, 0, -1, 0};

TEST_F(VectorTransform, ATranslationWaitsUntilItIsApplied) {
  Vector vector;
  ASSERT_EQ(Add(&vector, LineRecord(At(1, 2), At(3, 4), Pen(0))), SUCCESS);
  const VectorPoint by = At(0, -5);
  HostVecTranslate(vector.get(), &by, 0, 0);
  const auto& line = std::get<Polyline>(vector.drawing().objects[0].shape);
  EXPECT_EQ(line.points[0], (Point{1, 2}));
  HostVecApplyTransform(vector.get());
  EXPECT_EQ(line.points[0], (Point{1, -3}));
  EXPECT_EQ(line.points[1], (Point{3, -1}));
  HostVecApplyTransform(vector.get());
  EXPECT_EQ(line.points[0], (Point{1, -3})) << "it is forgotten";
}

TEST_F(VectorTransform, TheLastTranslationCounts) {
  Vector vector;
  ASSERT_EQ(Add(&vector, LineRecord(At(0, 0), At(3, 4), Pen(0))), SUCCESS);
  const VectorPoint first = At(100, 100);
  const VectorPoint second = At(1, 1);
  const VectorPoint bad = At(std::numeric_limits<double>::quiet_NaN(), 1);
  HostVecTranslate(vector.get(), &first, 0, 0);
  HostVecTranslate(vector.get(), &second, 0, 0);
  HostVecTranslate(vector.get(), &bad, 0, 0);
  HostVecApplyTransform(vector.get());
  EXPECT_EQ(std::get<Polyline>(vector.drawing().objects[0].shape).points[0], (Point{1, 1}));
}

TEST_F(VectorTransform, TranslatingAnEmptyVectorIsForgotten) {
  Vector vector;
  const VectorPoint by = At(100, 100);
  HostVecTranslate(vector.get(), &by, 0, 0);
  HostVecApplyTransform(vector.get());
  EXPECT_TRUE(vector.IsEmpty());
  ASSERT_EQ(Add(&vector, LineRecord(At(0, 0), At(3, 4), Pen(0))), SUCCESS);
  HostVecApplyTransform(vector.get());
  EXPECT_EQ(std::get<Polyline>(vector.drawing().objects[0].shape).points[0], (Point{0, 0}));
}

TEST_F(VectorTransform, ResultsStayNumbers) {
  Vector vector;
  ASSERT_EQ(Add(&vector, LineRecord(At(1e308, -1e308), At(3, 4), Pen(0))), SUCCESS);
  const VectorPoint by = At(1.7e308, -1.7e308);
  HostVecTranslate(vector.get(), &by, 0, 0);
  HostVecApplyTransform(vector.get());
  for (const Point& point : std::get<Polyline>(vector.drawing().objects[0].shape).points) {
    EXPECT_TRUE(std::isfinite(point.x) && std::isfinite(point.y));
  }
}

TEST_F(VectorTransform, PointsOfEveryKindMove) {
  const std::vector<Point> points = {{0, 0}, {1, 2}};
  const std::vector<Point> moved = {{10, -20}, {11, -18}};
  EXPECT_EQ(Moved(Polyline{points, 3}, kShift), (Polyline{moved, 3}));
  EXPECT_EQ(Moved(Segments{points, 3}, kShift), (Segments{moved, 3}));
  EXPECT_EQ(Moved(Markers{points, 3}, kShift), (Markers{moved, 3}));
  EXPECT_EQ(Moved(Polygon{{{points, {1, 0}}, {points, {}}}, {1, 2}}, kShift),
            (Polygon{{{moved, {1, 0}}, {moved, {}}}, {1, 2}}));
  EXPECT_EQ(Moved(Rectangle{{0, 0}, {1, 2}, {1, 2}}, kShift), (Rectangle{{10, -20}, {11, -18}, {1, 2}}));
  const Figure figure{{{{0, 0}, {{{{1, 1}, {2, 2}, {3, 3}}}}, true}}, 1, {2, 3}};
  EXPECT_EQ(Moved(figure, kShift),
            (Figure{{{{10, -20}, {{{{11, -19}, {12, -18}, {13, -17}}}}, true}}, 1, {2, 3}}));
  EXPECT_EQ(Moved(Text{{1, 2}, {{"a", 0}}, {}}, kShift), (Text{{11, -18}, {{"a", 0}}, {}}));
  EXPECT_EQ(Moved(CellArray{{0, 0}, {2, 2}, {2, 0}, 1, 1, {5}, 6}, kShift),
            (CellArray{{10, -20}, {12, -18}, {12, -20}, 1, 1, {5}, 6}));
}

TEST_F(VectorTransform, AxesOfRoundShapesTurnButDoNotMove) {
  using Round = Ellipse;
  EXPECT_EQ(Moved(Round{{1, 2}, {5, 0}, {0, 3}, {1, 2}}, kShift), (Round{{11, -18}, {5, 0}, {0, 3}, {1, 2}}));
  EXPECT_EQ(Moved(Round{{1, 2}, {5, 0}, {0, 3}, {}}, kQuarterTurn), (Round{{-2, 1}, {0, 5}, {-3, 0}, {}}));
  const Arc arc{{0, 0}, {5, 0}, {0, 5}, 1, 2, Closure::kPie, 3, {4, 5}};
  EXPECT_EQ(Moved(arc, kWider), (Arc{{0, 0}, {15, 0}, {0, 5}, 1, 2, Closure::kPie, 3, {4, 5}}));
}

TEST_F(VectorTransform, RectanglesOffTheAxesBecomePolygons) {
  const Rectangle rectangle{{0, 0}, {4, 2}, {7, 8}};
  EXPECT_EQ(Moved(rectangle, kQuarterTurn), (Rectangle{{0, 0}, {-2, 4}, {7, 8}}));
  Drawing drawing = OneOf(rectangle);
  Transform(drawing, {1, -1, 0, 1, 1, 0});
  const auto& polygon = std::get<Polygon>(drawing.objects[0].shape);
  ASSERT_EQ(polygon.rings.size(), 1u);
  EXPECT_EQ(polygon.rings[0].points, (std::vector<Point>{{0, 0}, {4, 4}, {2, 6}, {-2, 2}}));
  EXPECT_EQ(polygon.style, (AreaStyle{7, 8}));
}

TEST_F(VectorTransform, SizesFollowTheSquareRootOfTheArea) {
  Drawing drawing;
  Stroke stroke;
  stroke.width = 3;
  stroke.dashes = {2, 1};
  drawing.strokes.push_back(stroke);
  stroke.scaled = true;
  drawing.strokes.push_back(stroke);
  drawing.markers.push_back({MarkerType::kPlus, 0, 5, false});
  drawing.markers.push_back({MarkerType::kPlus, 0, 5, true});
  Transform(drawing, {8, 0, 0, 0, 2, 0});
  EXPECT_EQ(drawing.strokes[0].width, 12);
  EXPECT_EQ(drawing.strokes[0].dashes, (std::vector<double>{8, 4}));
  EXPECT_EQ(drawing.WidthOf(drawing.strokes[1]), 12) << "scaled widths grow with what they are scaled by";
  EXPECT_EQ(drawing.SizeOf(drawing.markers[0]), 20);
  EXPECT_EQ(drawing.SizeOf(drawing.markers[1]), 5 * 6 * 4);
}

TEST_F(VectorTransform, PatternsAndClipsMove) {
  Drawing drawing;
  Fill fill;
  fill.origin = {1, 1};
  fill.pattern_up = {0, 4};
  fill.pattern_along = {3, 0};
  drawing.fills.push_back(fill);
  drawing.clips.push_back({{0, 0}, {4, 2}});
  drawing.clips.push_back({});
  Transform(drawing, kTwice);
  EXPECT_EQ(drawing.fills[0].origin, (Point{7, 9}));
  EXPECT_EQ(drawing.fills[0].pattern_up, (Point{0, 8}));
  EXPECT_EQ(drawing.fills[0].pattern_along, (Point{6, 0}));
  EXPECT_EQ(drawing.clips[0].low, (Point{5, 7}));
  EXPECT_EQ(drawing.clips[0].high, (Point{13, 11}));
  EXPECT_TRUE(drawing.clips[1].IsEmpty());
  Transform(drawing, kQuarterTurn);
  EXPECT_EQ(drawing.clips[0].low, (Point{-11, 5}));
  EXPECT_EQ(drawing.clips[0].high, (Point{-7, 13}));
}

TEST_F(VectorTransform, TextKeepsTheLengthOfItsUpVectorAndGrowsInHeight) {
  Drawing drawing;
  TextStyle style;
  style.height = 10;
  drawing.texts.push_back(style);
  drawing.objects.push_back({Text{{0, 0}, {{"a", 0}}, Point{30, 8}}, 0, kNone});
  Transform(drawing, kTwice);
  EXPECT_EQ(drawing.texts[0].height, 20);
  EXPECT_EQ(drawing.texts[0].up, (Point{0, 1}));
  EXPECT_EQ(drawing.texts[0].base, (Point{1, 0}));
  EXPECT_EQ(std::get<Text>(drawing.objects[0].shape).fit, (Point{60, 16}));
  Transform(drawing, kWider);
  EXPECT_EQ(drawing.texts[0].height, 20);
  EXPECT_EQ(drawing.texts[0].base, (Point{3, 0})) << "wider characters, as high as before";
  EXPECT_EQ(std::get<Text>(drawing.objects[0].shape).fit, (Point{180, 16}));
  Transform(drawing, kMirror);
  EXPECT_EQ(drawing.texts[0].up, (Point{0, -1}));
  EXPECT_EQ(drawing.texts[0].height, 20);
}

TEST_F(VectorTransform, TheIdentityChangesNothing) {
  Drawing drawing = OneOf(Text{{1, 2}, {{"a", 0}}, Point{3, 4}});
  TextStyle style;
  style.up = {0.6, 0.8};
  style.base = {0.8, -0.6};
  drawing.texts.push_back(style);
  Transform(drawing, Affine());
  EXPECT_EQ(drawing.texts[0], style);
  EXPECT_EQ(std::get<Text>(drawing.objects[0].shape), (Text{{1, 2}, {{"a", 0}}, Point{3, 4}}));
}

TEST_F(VectorTransform, TextWithoutDirectionsSurvives) {
  Drawing drawing;
  TextStyle style;
  style.up = {0, 0};
  style.base = {0, 0};
  drawing.texts.push_back(style);
  Transform(drawing, kTwice);
  EXPECT_EQ(drawing.texts[0].height, 32);
  Transform(drawing, {0, 0, 0, 0, 0, 0});
  EXPECT_TRUE(std::isfinite(drawing.texts[0].height));
}

}  // namespace
}  // namespace tavi::test

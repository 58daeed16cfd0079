// Objects and layers as callers describe them, and what becomes of them in the drawing.
#include <cmath>
#include <limits>

#include "VectorTest.h"

namespace tavi::test {
namespace {

namespace vec = host::vec;

constexpr double kNan = std::numeric_limits<double>::quiet_NaN();
constexpr double kInfinity = std::numeric_limits<double>::infinity();

class VectorObjects : public HostTest {
 protected:
  void TearDown() override {
    HostVecFree(vector_.get());
    HostTest::TearDown();
  }
  template <class Kind>
  const Kind& Last() const {
    return std::get<Kind>(vector_.drawing().objects.back().shape);
  }
  const vec::Stroke& StrokeAt(uint32_t index) const { return vector_.drawing().strokes.at(index); }
  const vec::Fill& FillAt(uint32_t index) const { return vector_.drawing().fills.at(index); }

  Vector vector_;
};

TEST_F(VectorObjects, InitFillsAllBytes) {
  VectorObjectRecord object;
  std::memset(static_cast<void*>(&object), 0xA5, sizeof object);
  HostVecInitObject(&object);
  VectorObjectRecord other;
  std::memset(static_cast<void*>(&other), 0x5A, sizeof other);
  HostVecInitObject(&other);
  EXPECT_EQ(std::memcmp(&object, &other, sizeof object), 0);
}

TEST_F(VectorObjects, TheDefaultIsASolidBlackPenOneUnitWideAndNoBrush) {
  const struct {
    uint32_t kind, size;
  } kinds[] = {{VECTOR_RECTANGLE, sizeof(VectorRectangleRecord)},
               {VECTOR_POLYGON, sizeof(VectorPolygonRecord)},
               {VECTOR_ELLIPSE, sizeof(VectorEllipseRecord)}};
  for (const auto& [kind, size] : kinds) {
    ASSERT_EQ(Add(&vector_, MakeObject(kind, size)), SUCCESS);
    const vec::AreaStyle style = std::visit(
        [](const auto& shape) {
          if constexpr (requires { shape.style.fill; }) return shape.style;
          return vec::AreaStyle();
        },
        vector_.drawing().objects.back().shape);
    EXPECT_EQ(style.fill, vec::kNone);
    ASSERT_NE(style.edge, vec::kNone);
    EXPECT_EQ(StrokeAt(style.edge), vec::Stroke());
  }
  ASSERT_EQ(Add(&vector_, MakeObject(VECTOR_LINE, sizeof(VectorLineRecord))), SUCCESS);
  EXPECT_EQ(StrokeAt(Last<vec::Polyline>().stroke), vec::Stroke());
  EXPECT_EQ(vector_.drawing().strokes.size(), 1u) << "equal styles stand once";
}

TEST_F(VectorObjects, Lines) {
  ASSERT_EQ(Add(&vector_, LineRecord(At(1, 2), At(3.5, -4), Pen(0x00112233, 3))), SUCCESS);
  const auto& line = Last<vec::Polyline>();
  EXPECT_EQ(line.points, (std::vector<vec::Point>{{1, 2}, {3.5, -4}}));
  const vec::Stroke& stroke = StrokeAt(line.stroke);
  EXPECT_EQ(stroke.color, 0x00112233u);
  EXPECT_EQ(stroke.width, 3);
  EXPECT_FALSE(stroke.scaled);
}

TEST_F(VectorObjects, PenStyles) {
  for (uint32_t style = 0; style <= 4; ++style) {
    ASSERT_EQ(Add(&vector_, LineRecord(At(0, 0), At(1, 1), Pen(0, 1, style))), SUCCESS);
    EXPECT_EQ(StrokeAt(Last<vec::Polyline>().stroke).type, static_cast<vec::LineType>(style));
  }
  ASSERT_EQ(Add(&vector_, LineRecord(At(0, 0), At(1, 1), Pen(0, 1, 5))), SUCCESS);
  EXPECT_EQ(Last<vec::Polyline>().stroke, vec::kNone);
  ASSERT_EQ(Add(&vector_, LineRecord(At(0, 0), At(1, 1), Pen(0, 1, 77))), SUCCESS);
  EXPECT_EQ(StrokeAt(Last<vec::Polyline>().stroke).type, vec::LineType::kSolid);
  ASSERT_EQ(Add(&vector_, LineRecord(At(0, 0), At(1, 1), Pen(0, 0))), SUCCESS);
  EXPECT_EQ(StrokeAt(Last<vec::Polyline>().stroke).width, 0) << "the thinnest line";
}

TEST_F(VectorObjects, Brushes) {
  ASSERT_EQ(Add(&vector_, RectangleRecord(At(0, 0), At(1, 1), Pen(0), Brush(0xFF00FF))), SUCCESS);
  const vec::Fill& solid = FillAt(Last<vec::Rectangle>().style.fill);
  EXPECT_EQ(solid.interior, vec::Interior::kSolid);
  EXPECT_EQ(solid.color, 0xFF00FFu);
  for (uint32_t hatch = 1; hatch <= 6; ++hatch) {
    ASSERT_EQ(Add(&vector_, RectangleRecord(At(0, 0), At(1, 1), Pen(0), Brush(0xFF, 2, hatch))), SUCCESS);
    const vec::Fill& fill = FillAt(Last<vec::Rectangle>().style.fill);
    EXPECT_EQ(fill.interior, vec::Interior::kHatch);
    EXPECT_EQ(fill.hatch, static_cast<vec::Hatch>(hatch));
  }
  for (const uint32_t style : {0u, 3u, UINT32_MAX}) {
    ASSERT_EQ(Add(&vector_, RectangleRecord(At(0, 0), At(1, 1), Pen(0), Brush(0xFF, style))), SUCCESS);
    EXPECT_EQ(Last<vec::Rectangle>().style.fill, vec::kNone);
  }
}

TEST_F(VectorObjects, RectanglesAndEllipses) {
  ASSERT_EQ(Add(&vector_, RectangleRecord(At(5, 6), At(1, -2), Pen(0), BrushRecord())), SUCCESS);
  EXPECT_EQ(Last<vec::Rectangle>().corner, (vec::Point{5, 6}));
  EXPECT_EQ(Last<vec::Rectangle>().opposite, (vec::Point{1, -2}));
  ASSERT_EQ(Add(&vector_, EllipseRecord(At(7, 8), 20, 10, Pen(0), BrushRecord())), SUCCESS);
  const auto& ellipse = Last<vec::Ellipse>();
  EXPECT_EQ(ellipse.centre, (vec::Point{7, 8}));
  EXPECT_EQ(ellipse.a, (vec::Point{20, 0}));
  EXPECT_EQ(ellipse.b, (vec::Point{0, 10}));
}

TEST_F(VectorObjects, PointsOfPolygonsAreCopied) {
  std::vector<VectorPoint> points = {At(0, 0), At(10, 0), At(10, 10)};
  ASSERT_EQ(Add(&vector_, PolygonRecord(points.data(), 3, Pen(0), BrushRecord())), SUCCESS);
  for (VectorPoint& point : points) point = At(kNan, kNan);
  points = {};
  const auto& polygon = Last<vec::Polygon>();
  ASSERT_EQ(polygon.rings.size(), 1u);
  EXPECT_EQ(polygon.rings[0].points, (std::vector<vec::Point>{{0, 0}, {10, 0}, {10, 10}}));
  EXPECT_TRUE(polygon.rings[0].visible.empty());
}

// The record of a kind that is shorter than the union ends where its size says.
TEST_F(VectorObjects, ShortRecordsAreNotReadBeyondTheirSize) {
  const VectorObjectRecord object = LineRecord(At(0, 0), At(1, 1), Pen(0));
  std::vector<uint8_t> exact(sizeof(VectorLineRecord));
  std::memcpy(exact.data(), &object, exact.size());
  EXPECT_EQ(HostVecAddObject(vector_.get(), 0, VECTOR_LINE,
                             reinterpret_cast<const VectorObjectRecord*>(exact.data()), 0),
            SUCCESS);
}

TEST_F(VectorObjects, KindsAndSizesMustAgree) {
  VectorObjectRecord object = LineRecord(At(0, 0), At(1, 1), Pen(0));
  for (const uint32_t kind : {0u, 1u, 3u, 4u, 5u, 6u, 7u, 8u, UINT32_MAX}) {
    EXPECT_EQ(HostVecAddObject(vector_.get(), 0, kind, &object, 0), ERR_INVALID_PARAMETER) << kind;
  }
  object.head.size = 155;
  EXPECT_EQ(Add(&vector_, object), ERR_INVALID_PARAMETER);
  object.head.size = 156;
  object.head.kind = VECTOR_RECTANGLE;
  EXPECT_EQ(HostVecAddObject(vector_.get(), 0, VECTOR_LINE, &object, 0), ERR_INVALID_PARAMETER);
  EXPECT_TRUE(vector_.IsEmpty()) << "what is refused leaves no drawing behind";
}

TEST_F(VectorObjects, CoordinatesThatAreNoNumbersAreRefused) {
  for (const double bad : {kNan, kInfinity, -kInfinity}) {
    const VectorPoint points[] = {At(0, 0), At(1, 1), At(2, bad)};
    EXPECT_EQ(Add(&vector_, LineRecord(At(bad, 0), At(1, 1), Pen(0))), ERR_INVALID_PARAMETER);
    EXPECT_EQ(Add(&vector_, LineRecord(At(0, 0), At(1, bad), Pen(0))), ERR_INVALID_PARAMETER);
    EXPECT_EQ(Add(&vector_, RectangleRecord(At(0, bad), At(1, 1), Pen(0), BrushRecord())),
              ERR_INVALID_PARAMETER);
    EXPECT_EQ(Add(&vector_, RectangleRecord(At(0, 0), At(bad, 1), Pen(0), BrushRecord())),
              ERR_INVALID_PARAMETER);
    EXPECT_EQ(Add(&vector_, PolygonRecord(points, 3, Pen(0), BrushRecord())), ERR_INVALID_PARAMETER);
    EXPECT_EQ(Add(&vector_, EllipseRecord(At(bad, 0), 1, 1, Pen(0), BrushRecord())), ERR_INVALID_PARAMETER);
    EXPECT_EQ(Add(&vector_, EllipseRecord(At(0, 0), bad, 1, Pen(0), BrushRecord())), ERR_INVALID_PARAMETER);
    EXPECT_EQ(Add(&vector_, EllipseRecord(At(0, 0), 1, bad, Pen(0), BrushRecord())), ERR_INVALID_PARAMETER);
  }
  EXPECT_TRUE(vector_.IsEmpty());
}

TEST_F(VectorObjects, PolygonsWithoutPoints) {
  EXPECT_EQ(Add(&vector_, PolygonRecord(nullptr, 3, Pen(0), BrushRecord())), ERR_NULL_ARGUMENT);
  EXPECT_EQ(Add(&vector_, PolygonRecord(nullptr, UINT32_MAX, Pen(0), BrushRecord())), ERR_NULL_ARGUMENT);
  EXPECT_TRUE(vector_.IsEmpty());
  EXPECT_EQ(Add(&vector_, PolygonRecord(nullptr, 0, Pen(0), BrushRecord())), SUCCESS);
  EXPECT_FALSE(vector_.IsEmpty());
}

TEST_F(VectorObjects, NegativeAndUnsignedPositionsAreTakenAsTheyAre) {
  ASSERT_EQ(Add(&vector_, LineRecord(At(4294967290.0, -5), At(0, 0), Pen(0))), SUCCESS);
  EXPECT_EQ(Last<vec::Polyline>().points[0], (vec::Point{4294967290.0, -5}));
}

TEST_F(VectorObjects, LayersAreNumberedAndNamed) {
  ObjectLayerRecord record = LayerRecord(u"Übersicht");
  HostVectorLayer layer = {9, 9};
  ASSERT_EQ(HostVecAddLayer(vector_.get(), &record, &layer, 4), SUCCESS);
  EXPECT_EQ(layer.index, 0u);
  for (uint16_t& unit : record.name) unit = u'x';  // no terminator
  ASSERT_EQ(HostVecAddLayer(vector_.get(), &record, &layer, 4), SUCCESS);
  EXPECT_EQ(layer.index, 1u);
  ASSERT_EQ(vector_.drawing().layers.size(), 2u);
  EXPECT_EQ(vector_.drawing().layers[0].name, u"Übersicht");
  EXPECT_EQ(vector_.drawing().layers[1].name, std::u16string(64, u'x'));
  EXPECT_TRUE(vector_.drawing().layers[1].visible);
}

TEST_F(VectorObjects, ObjectsGoToTheActiveLayer) {
  const ObjectLayerRecord record = LayerRecord(u"");
  HostVectorLayer first = {};
  HostVectorLayer second = {};
  ASSERT_EQ(HostVecAddLayer(vector_.get(), &record, &first, 4), SUCCESS);
  ASSERT_EQ(HostVecAddLayer(vector_.get(), &record, &second, 4), SUCCESS);
  ASSERT_EQ(HostVecSetActiveLayer(vector_.get(), &second), SUCCESS);
  ASSERT_EQ(Add(&vector_, LineRecord(At(0, 0), At(1, 1), Pen(0))), SUCCESS);
  ASSERT_EQ(HostVecSetActiveLayer(vector_.get(), &first), SUCCESS);
  ASSERT_EQ(Add(&vector_, LineRecord(At(0, 0), At(1, 1), Pen(0))), SUCCESS);
  EXPECT_EQ(vector_.drawing().objects[0].layer, 1u);
  EXPECT_EQ(vector_.drawing().objects[1].layer, 0u);
}

TEST_F(VectorObjects, LayersThatAreNotThereAreRefused) {
  const HostVectorLayer none = {0, 0};
  EXPECT_EQ(HostVecSetActiveLayer(vector_.get(), &none), ERR_INVALID_PARAMETER);
  ObjectLayerRecord record = LayerRecord(u"");
  record.size = 143;
  HostVectorLayer layer = {};
  EXPECT_EQ(HostVecAddLayer(vector_.get(), &record, &layer, 4), ERR_INVALID_PARAMETER);
  record.size = 144;
  ASSERT_EQ(HostVecAddLayer(vector_.get(), &record, &layer, 4), SUCCESS);
  const HostVectorLayer beyond = {1, 0};
  EXPECT_EQ(HostVecSetActiveLayer(vector_.get(), &beyond), ERR_INVALID_PARAMETER);
  EXPECT_EQ(HostVecSetActiveLayer(vector_.get(), &layer), SUCCESS);
}

TEST_F(VectorObjects, ManyObjectsShareTheirStyles) {
  for (int i = 0; i < 10000; ++i) {
    ASSERT_EQ(Add(&vector_, LineRecord(At(i, 0), At(i, 9), Pen(i % 3 == 0 ? 0x0000FFu : 0x00FF00u, 2))),
              SUCCESS);
  }
  EXPECT_EQ(vector_.drawing().objects.size(), 10000u);
  EXPECT_EQ(vector_.drawing().strokes.size(), 2u);
}

}  // namespace
}  // namespace tavi::test

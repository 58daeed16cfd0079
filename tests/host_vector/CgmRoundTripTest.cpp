// What is written is read again as the same drawing.
#include <set>

#include "DrawingText.h"
#include "RandomDrawing.h"
#include "TaviFile/CgmWriter.h"
#include "VectorTest.h"

namespace tavi::test {
namespace {

using namespace host::vec;

class CgmRoundTrip : public HostTest {};

std::vector<ObjectText> ReadBack(const std::vector<uint8_t>& metafile) {
  Vector vector;
  EXPECT_EQ(HostVecLoadMemory(metafile.data(), vector.get(), metafile.size(), nullptr, 0), SUCCESS);
  if (vector.IsEmpty()) return {};
  return Describe(vector.drawing());
}

// True when all is as it was.
::testing::AssertionResult Survives(const Drawing& drawing) {
  const std::vector<ObjectText> before = Describe(drawing);
  const std::vector<ObjectText> after = ReadBack(host::cgm::WriteMetafile(drawing));
  for (size_t i = 0; i < before.size(); ++i) {
    if (i >= after.size()) return ::testing::AssertionFailure() << "lost: " << before[i].exact;
    if (!before[i].Matches(after[i])) {
      return ::testing::AssertionFailure()
             << "object " << i << "\n  " << before[i].exact << "\nbecame\n  " << after[i].exact;
    }
  }
  if (after.size() != before.size())
    return ::testing::AssertionFailure() << after.size() << " objects came back";
  return ::testing::AssertionSuccess();
}

TEST_F(CgmRoundTrip, RandomDrawingsOfEveryKindAndAttribute) {
  constexpr uint32_t kCases = 10000;
  std::set<size_t> kinds;
  for (uint32_t seed = 0; seed < kCases; ++seed) {
    // Every tenth one does not fit 16 bits.
    Drawing drawing = RandomDrawing(seed, seed % 10 == 9 ? 1000000 : 3000);
    drawing.real_units = seed % 10 == 8;
    for (const Object& object : drawing.objects) kinds.insert(object.shape.index());
    ASSERT_TRUE(Survives(drawing)) << "seed " << seed;
  }
  EXPECT_EQ(kinds.size(), std::variant_size_v<Shape>);
}

TEST_F(CgmRoundTrip, TheDescriptionSeesDifferences) {
  const Drawing drawing = RandomDrawing(1, 3000);
  for (uint32_t seed = 2; seed < 200; ++seed) {
    const std::vector<ObjectText> other = Describe(RandomDrawing(seed, 3000));
    EXPECT_FALSE(Describe(drawing)[0].Matches(other[0])) << seed;
  }
}

TEST_F(CgmRoundTrip, LongLists) {
  Drawing drawing;
  drawing.strokes.push_back({});
  drawing.texts.push_back({});
  Polyline line{{}, 0};
  Ring ring;
  CellArray cells{{0, 0}, {300, -200}, {300, 0}, 301, 201, {}, {}};
  for (int i = 0; i < 30000; ++i) line.points.push_back({double(i - 15000), double(i % 100)});
  for (int i = 0; i < 20000; ++i) {
    ring.points.push_back({double(i % 300), double(i % 201)});
    ring.visible.push_back(i % 5 != 0);
  }
  for (uint32_t i = 0; i < 301 * 201; ++i) cells.colors.push_back(i * 77 & 0xFFFFFF);
  drawing.objects = {{line, 0, kNone},
                     {Polygon{{ring}, {kNone, 0}}, 0, kNone},
                     {cells, 0, kNone},
                     {Text{{0, 0}, {{std::string(100000, 'x'), 0}}, {}}, 0, kNone}};
  EXPECT_TRUE(Survives(drawing));
}

TEST_F(CgmRoundTrip, CoordinatesAtTheEndsOfTheirRange) {
  Drawing drawing;
  drawing.strokes.push_back({});
  for (const double farthest : {32767.0, 32768.0, 2147483647.0}) {
    drawing.objects = {{Polyline{{{farthest, farthest}, {-farthest, -farthest}, {0, 0}}, 0}, 0, kNone}};
    EXPECT_TRUE(Survives(drawing)) << farthest;
  }
}

TEST_F(CgmRoundTrip, ThroughTheOperations) {
  Vector vector;
  const ObjectLayerRecord record = LayerRecord(u"Layer one");
  HostVectorLayer layer = {};
  ASSERT_EQ(HostVecAddLayer(vector.get(), &record, &layer, 4), SUCCESS);
  const VectorPoint points[] = {At(0, -10), At(40, -80), At(80, -5)};
  ASSERT_EQ(Add(&vector, LineRecord(At(1, -2), At(30, -40), Pen(0xFF, 3, 1))), SUCCESS);
  ASSERT_EQ(Add(&vector, RectangleRecord(At(5, -5), At(50, -60), Pen(0xFF00, 2), Brush(0xFF))), SUCCESS);
  ASSERT_EQ(Add(&vector, PolygonRecord(points, 3, Pen(1, 1, 4), Brush(2, 2, 5))), SUCCESS);
  ASSERT_EQ(Add(&vector, EllipseRecord(At(70, -70), 30, 20, Pen(3), BrushRecord())), SUCCESS);
  HostGlobalMemory block = nullptr;
  uint64_t size = 0;
  ASSERT_EQ(HostVecSaveMemory(&block, vector.get(), 62, &size, nullptr), SUCCESS);
  const std::vector<uint8_t> bytes = TakeBytes(block, size);
  Vector loaded;
  ASSERT_EQ(HostVecLoadMemory(bytes.data(), loaded.get(), bytes.size(), nullptr, 0), SUCCESS);
  EXPECT_EQ(loaded.drawing().layers.at(0).name, u"Layer one");
  const std::vector<ObjectText> before = Describe(vector.drawing());
  const std::vector<ObjectText> after = Describe(loaded.drawing());
  ASSERT_EQ(before.size(), after.size());
  for (size_t i = 0; i < before.size(); ++i) EXPECT_EQ(before[i].exact, after[i].exact);
  for (const Vector* const each : {&vector, &loaded}) {
    double smallest[3];
    double largest[3];
    EXPECT_EQ(HostVecGetExtents(each->get(), smallest, largest), SUCCESS);
    EXPECT_DOUBLE_EQ(largest[0], 100.5);
    EXPECT_DOUBLE_EQ(smallest[1], -90.5);
  }
}

// Read one unit to a pixel from the origin, the metafile shows the drawing where the viewport says.
TEST_F(CgmRoundTrip, TheViewportIsWhereTheDrawingIsReadAgain) {
  Vector vector;
  ASSERT_EQ(Add(&vector, RectangleRecord(At(10, 400), At(210, 500), Pen(0, 0, 5), Brush(0xFF))), SUCCESS);
  ASSERT_EQ(Add(&vector, LineRecord(At(10, 400), At(210, 500), Pen(0, 0))), SUCCESS);
  const HostRect viewport{30, 70, 130, 270};
  HostVecSetViewport(vector.get(), &viewport);
  HostGlobalMemory block = nullptr;
  uint64_t size = 0;
  ASSERT_EQ(HostVecSaveMemory(&block, vector.get(), 62, &size, nullptr), SUCCESS);
  const std::vector<uint8_t> bytes = TakeBytes(block, size);
  Vector loaded;
  ASSERT_EQ(HostVecLoadMemory(bytes.data(), loaded.get(), bytes.size(), nullptr, 0), SUCCESS);
  HostRect bounds;
  ASSERT_EQ(HostVecGetBounds(loaded.get(), 0, &bounds, 0), SUCCESS);
  EXPECT_NEAR(bounds.left, viewport.left, 1);
  EXPECT_NEAR(bounds.top, viewport.top, 1);
  EXPECT_NEAR(bounds.right, viewport.right, 1);
  EXPECT_NEAR(bounds.bottom, viewport.bottom, 1);
}

}  // namespace
}  // namespace tavi::test

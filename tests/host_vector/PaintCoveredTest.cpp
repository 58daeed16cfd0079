// What lies beneath a rectangle that covers the whole bitmap is not painted, and nobody can tell.
#include "PaintTest.h"
#include "RandomDrawing.h"

namespace tavi::test {
namespace {

using namespace host::vec;

class PaintCovered : public HostTest {};

// The same area as another kind of object, of which the painter knows nothing.
Shape AsPolygon(const host::vec::Rectangle& r) {
  return Polygon{{Ring{{r.corner, {r.opposite.x, r.corner.y}, r.opposite, {r.corner.x, r.opposite.y}}, {}}},
                 r.style};
}

std::vector<uint8_t> Pixels(const Drawing& drawing) {
  Paper paper(300, 200);
  EXPECT_EQ(paper.Paint(drawing), SUCCESS);
  return paper.bitmap().Bytes();
}

// Random objects, one in between that may cover all, and further ones.
void ExpectSame(const host::vec::Rectangle& rectangle, const Fill& fill, uint32_t seed,
                const std::optional<Box>& clip = {}, bool hidden = false) {
  Drawing drawing = RandomDrawing(seed, 300);
  drawing.layers.push_back({u"", !hidden});
  drawing.fills.push_back(fill);
  Object object{rectangle, static_cast<uint32_t>(drawing.layers.size() - 1), kNone};
  auto& style = std::get<host::vec::Rectangle>(object.shape).style;
  style.fill = static_cast<uint32_t>(drawing.fills.size() - 1);
  style.edge = drawing.strokes.empty() ? kNone : 0;
  if (clip) {
    object.clip = static_cast<uint32_t>(drawing.clips.size());
    drawing.clips.push_back(*clip);
  }
  const size_t middle = drawing.objects.size() / 2;
  const auto place = drawing.objects.begin() + static_cast<std::ptrdiff_t>(middle);
  drawing.objects.insert(place, object);
  const std::vector<uint8_t> painted = Pixels(drawing);
  drawing.objects[middle].shape = AsPolygon(std::get<host::vec::Rectangle>(object.shape));
  EXPECT_EQ(painted, Pixels(drawing)) << "seed " << seed;
}

constexpr host::vec::Rectangle kAll{{-1, 1}, {301, -201}, {}};

Fill Plain() {
  Fill fill;
  fill.color = 0x336699;
  return fill;
}

TEST_F(PaintCovered, BeneathARectangleBeyondAllSides) {
  for (uint32_t seed = 0; seed < 200; ++seed) ExpectSame(kAll, Plain(), seed);
  for (uint32_t seed = 0; seed < 20; ++seed) ExpectSame({{300, 0}, {0, -200}, {}}, Plain(), seed);
}

// Each of these lets something through.
TEST_F(PaintCovered, NotBeneathWhatLeavesSomething) {
  Fill hatched = Plain();
  hatched.interior = Interior::kHatch;
  Fill hollow = Plain();
  hollow.interior = Interior::kHollow;
  for (uint32_t seed = 0; seed < 40; ++seed) {
    ExpectSame({{0.25, 1}, {301, -201}, {}}, Plain(), seed);
    ExpectSame({{-1, 1}, {299.5, -201}, {}}, Plain(), seed);
    ExpectSame({{-1, -0.5}, {301, -201}, {}}, Plain(), seed);
    ExpectSame({{-1, 1}, {301, -199.75}, {}}, Plain(), seed);
    ExpectSame(kAll, hatched, seed);
    ExpectSame(kAll, hollow, seed);
    ExpectSame(kAll, Plain(), seed, Box{{20, -150}, {200, -10}});
    ExpectSame(kAll, Plain(), seed, {}, true);
  }
}

TEST_F(PaintCovered, TheLastOfManyShows) {
  Sketch s;
  for (uint32_t color = 1; color <= 120; ++color)
    s.Draw(host::vec::Rectangle{{-1, 1}, {101, -101}, {s.Solid(color), kNone}});
  Paper paper;
  ASSERT_EQ(paper.Paint(s.drawing), SUCCESS);
  EXPECT_EQ(paper.Count(120), 10000);
}

}  // namespace
}  // namespace tavi::test

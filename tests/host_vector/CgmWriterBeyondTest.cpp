// Metafiles of what the profile has no word for: dashes and ends of lines, places of hatches, real units, Unicode.
#include <bit>
#include <cmath>
#include <numeric>

#include "CgmSketch.h"

namespace tavi::test {
namespace {

using namespace sketch;
using host::cgm::WriteMetafile;
using Sketch = sketch::CgmSketch;

class CgmWriterBeyond : public HostTest {};

// A line of one custom stroke.
Sketch Dashed(std::vector<double> dashes) {
  Sketch s;
  const uint32_t stroke = s.Stroke(0, 1, LineType::kCustom);
  s.drawing.strokes[stroke].dashes = std::move(dashes);
  s.Add(Polyline{{{0, 0}, {1, 1}}, stroke});
  return s;
}

TEST_F(CgmWriterBeyond, CustomDashesStandBehindTheTypeThatIsNearest) {
  const struct {
    std::vector<double> dashes;
    int type;
  } cases[] = {{{8, 4}, 2}, {{1, 4}, 3}, {{8, 2, 1, 2}, 4}, {{8, 2, 1, 2, 1, 2}, 5}};
  for (const auto& [dashes, type] : cases) {
    const std::vector<CgmElement> body = Body(Dashed(dashes).Elements());
    ASSERT_EQ(CodesOf(body), "5,3 5,2 5,2 5,4 4,1");
    EXPECT_EQ(Words(body[1]), (std::vector<int>{type}));
    EXPECT_EQ(Words(body[2]), (std::vector<int>{-1}));
  }
}

TEST_F(CgmWriterBeyond, CustomDashesAreDefinedInThePicturesDescriptor) {
  const std::vector<CgmElement> elements = Dashed({8, 2, 1, 2}).Elements();
  EXPECT_EQ(CodesOf(elements, 2), "2,2 2,5 2,3 2,6 2,17");
  EXPECT_EQ(Words(Find(elements, 2, 17)), (std::vector<int>{-1, 13, 8, 2, 1, 2}));
  EXPECT_EQ(Words(Find(elements, 1, 11)), (std::vector<int>{2, -1, 1, 2, 17}));
  EXPECT_EQ(Words(Find(elements, 1, 1)), (std::vector<int>{1}));
}

// Twenty cycles of 3.35 units are 67: rounded to 3 each, the dashes would be two cycles ahead by then.
TEST_F(CgmWriterBeyond, CyclesThatAreNotWholeAreDefinedSeveralTimesOver) {
  const std::vector<int> words = Words(Find(Dashed({2.5, 0.85}).Elements(), 2, 17));
  ASSERT_EQ(words.size(), 2U + 40U);
  EXPECT_EQ(words[1], 67);
  const double sum = std::accumulate(words.begin() + 2, words.end(), 0.0);
  for (size_t i = 2; i < words.size(); i += 2) EXPECT_NEAR(words[i] / sum * 67, 2.5, 1e-3);
}

TEST_F(CgmWriterBeyond, EqualDashesAreDefinedOnce) {
  Sketch s = Dashed({8, 4});
  const auto add = [&s](std::vector<double> dashes, uint32_t color) {
    const uint32_t stroke = s.Stroke(color, 1, LineType::kCustom);
    s.drawing.strokes[stroke].dashes = std::move(dashes);
    s.Add(host::vec::Rectangle{{0, 0}, {5, -5}, {kNone, stroke}});
  };
  add({8, 4}, kRed);
  add({1, 1}, kBlue);
  const std::vector<CgmElement> elements = s.Elements();
  EXPECT_EQ(CodesOf(elements, 2), "2,2 2,5 2,3 2,6 2,17 2,17");
  std::vector<int> types;
  for (const CgmElement& element : elements) {
    if (element.group == 5 && element.id == 27) types.push_back(Words(element)[0]);
  }
  EXPECT_EQ(types, (std::vector<int>{2, -1, 3, -2}));
}

TEST_F(CgmWriterBeyond, DashesThatNoDefinitionHoldsBecomeAFixedType) {
  const double nan = std::nan("");
  for (const std::vector<double>& dashes :
       std::vector<std::vector<double>>{{}, {0, 0}, {-1, 5}, {nan, 1}, {40000, 3}, {0.001, 0.001}}) {
    const std::vector<CgmElement> elements = Dashed(dashes).Elements();
    EXPECT_EQ(CodesOf(elements, 2), "2,2 2,5 2,3 2,6");
    EXPECT_GT(Words(Find(elements, 5, 2))[0], 0);
  }
  EXPECT_EQ(Words(Find(Dashed(std::vector<double>(100, 2)).Elements(), 2, 17)).size(), 2U + 64U);
}

TEST_F(CgmWriterBeyond, EndsAndJoinsAreToldWhereTheyChange) {
  Sketch s;
  host::vec::Stroke stroke;
  s.drawing.strokes = {stroke, stroke, stroke};
  s.drawing.strokes[1].cap = LineCap::kRound;
  s.drawing.strokes[1].join = LineJoin::kBevel;
  s.drawing.strokes[2].mitre_limit = 2.5;
  for (const uint32_t i : {0u, 1u, 1u, 2u, 0u}) s.Add(Polyline{{{0, 0}, {5, -5}}, i});
  s.Add(host::vec::Rectangle{{0, 0}, {5, -5}, {kNone, 1}});
  const std::vector<CgmElement> elements = s.Elements();
  const std::vector<CgmElement> body = Body(elements);
  EXPECT_EQ(CodesOf(body),
            "5,3 5,2 5,4 4,1 5,37 5,38 4,1 4,1 5,37 5,38 3,19 4,1 3,19 4,1 5,22 5,30 5,28 5,27 5,29 5,44 "
            "5,45 4,11");
  EXPECT_EQ(Words(Find(body, 5, 37)), (std::vector<int>{3, 3}));
  EXPECT_EQ(Words(Find(body, 5, 38)), (std::vector<int>{4}));
  EXPECT_EQ(Words(body[10]), (std::vector<int>{2, 0x8000 - 0x10000}));
  EXPECT_EQ(Words(body[12]), (std::vector<int>{32767, 0})) << "no limit again";
  EXPECT_EQ(Words(Find(elements, 1, 11)), (std::vector<int>{6, -1, 1, 3, 19, 5, 37, 5, 38, 5, 44, 5, 45}));
}

TEST_F(CgmWriterBeyond, HatchesThatBeginElsewhereSayWhere) {
  Sketch s;
  const uint32_t usual = s.Fill(Interior::kHatch, kRed);
  s.drawing.fills.resize(3, s.drawing.fills[usual]);
  s.drawing.fills[1].origin = {5, -3000};
  s.drawing.fills[2].origin = {5, -40000};
  for (const uint32_t fill : {0u, 1u, 1u, 2u}) s.Add(host::vec::Rectangle{{0, 0}, {5, -5}, {fill, kNone}});
  const std::vector<CgmElement> body = Body(s.Elements());
  EXPECT_EQ(CodesOf(body), "5,23 5,22 5,24 5,30 4,11 5,31 4,11 4,11 4,11")
      << "too far away for 16 bits, it does not make all coordinates wide";
  EXPECT_EQ(Words(Find(body, 5, 31)), (std::vector<int>{5, 3000}));
  s.Add(Polyline{{{0, 0}, {40000, 0}}, s.Stroke(0)});
  EXPECT_EQ(CodesOf(Body(s.Elements()), 5), "5,23 5,22 5,24 5,30 5,31 5,31 5,3 5,2 5,4") << "wide anyway";
}

// ---- Real units ----

float FloatAt(const CgmElement& element, size_t at) {
  uint32_t bits = 0;
  for (size_t i = 4 * at; i < 4 * at + 4; ++i) bits = bits << 8 | element.list.at(i);
  return std::bit_cast<float>(bits);
}

TEST_F(CgmWriterBeyond, RealUnitsAreFloatingPoint) {
  Sketch s;
  s.drawing.real_units = true;
  s.Add(Polyline{{{0.25, -0.125}, {0.75, 0.5}}, s.Stroke(kRed, 0.015625)});
  s.Add(host::vec::Ellipse{{0.5, 0}, {0.25, 0}, {0, 0.25}, {kNone, 0}});
  const std::vector<CgmElement> elements = s.Elements();
  EXPECT_EQ(CodesOf(elements, 1), "1,1 1,11 1,2 1,3 1,12");
  EXPECT_EQ(Words(Find(elements, 1, 3)), (std::vector<int>{1}));
  EXPECT_EQ(Find(elements, 1, 12).list, (std::vector<uint8_t>{0x30, 0x46, 0, 0, 0, 9, 0, 23}));
  const CgmElement line = Find(elements, 4, 1);
  ASSERT_EQ(line.list.size(), 16U);
  EXPECT_EQ(FloatAt(line, 0), 0.25F);
  EXPECT_EQ(FloatAt(line, 1), 0.125F);
  EXPECT_EQ(FloatAt(line, 3), -0.5F);
  EXPECT_EQ(FloatAt(Find(elements, 5, 3), 0), 0.015625F);
  EXPECT_EQ(FloatAt(Find(elements, 4, 12), 2), 0.25F);
  const CgmElement extent = Find(elements, 2, 6);
  EXPECT_NEAR(FloatAt(extent, 0), 0.25, 0.01) << "left";
  EXPECT_NEAR(FloatAt(extent, 1), 0.26, 0.01) << "bottom, y downward";
  EXPECT_NEAR(FloatAt(extent, 2), 0.76, 0.01) << "right";
  EXPECT_NEAR(FloatAt(extent, 3), -0.51, 0.01) << "top";
}

// From a thousandth of a unit to what is as large as the earth in millimetres.
TEST_F(CgmWriterBeyond, RealUnitsOfAnySizeAreReadAgain) {
  for (const Point corner : {Point{1e-3, 2e-3}, Point{0.5, 0.25}, Point{123456, 654321}, Point{3e8, -1e9}}) {
    Sketch s;
    s.drawing.real_units = true;
    const Point opposite{corner.x * 1.5, corner.y * 1.25};
    s.Add(host::vec::Rectangle{corner, opposite, {s.Fill(Interior::kSolid, kRed), kNone}});
    s.drawing.texts.push_back({});
    s.drawing.texts[0].height = corner.x / 8;
    s.drawing.texts[0].up = {-0.6, 0.8};
    s.drawing.texts[0].base = {0.8, 0.6};
    s.Add(Text{corner, {{"A", 0}}, {}});
    const std::vector<uint8_t> bytes = WriteMetafile(s.drawing);
    Vector vector;
    ASSERT_EQ(HostVecLoadMemory(bytes.data(), vector.get(), bytes.size(), nullptr, 0), SUCCESS);
    const Drawing& read = vector.drawing();
    EXPECT_TRUE(read.real_units);
    const auto& box = std::get<host::vec::Rectangle>(read.objects.at(0).shape);
    constexpr double kPart = 1e-6;
    EXPECT_NEAR(box.corner.x, corner.x, std::abs(corner.x) * kPart);
    EXPECT_NEAR(box.corner.y, corner.y, std::abs(corner.y) * kPart);
    EXPECT_NEAR(box.opposite.x, opposite.x, std::abs(opposite.x) * kPart);
    EXPECT_NEAR(read.texts.at(0).height, corner.x / 8, corner.x * 1e-6);
    EXPECT_NEAR(read.texts[0].up.x, -0.6, kPart);
  }
}

TEST_F(CgmWriterBeyond, WhatIsClippedOrBesideTheSceneHasItsRealPlaceToo) {
  Sketch s;
  s.drawing.real_units = true;
  const uint32_t stroke = s.Stroke(0, 0);
  s.drawing.clips = {{{0, 0}, {1, 1}}};
  s.Add(Polyline{{{0, 0}, {50000, 0.5}}, stroke}, 0);
  s.Add(Arc{{0, -90000}, {90000, 0}, {0, 90000}, 1.5705, 0.0005, Closure::kOpen, stroke, {}});
  const std::vector<uint8_t> bytes = WriteMetafile(s.drawing);
  Vector vector;
  ASSERT_EQ(HostVecLoadMemory(bytes.data(), vector.get(), bytes.size(), nullptr, 0), SUCCESS);
  EXPECT_NEAR(std::get<Polyline>(vector.drawing().objects.at(0).shape).points.at(1).x, 50000, 0.01);
  EXPECT_NEAR(std::get<Arc>(vector.drawing().objects.at(1).shape).centre.y, -90000, 0.01);
}

TEST_F(CgmWriterBeyond, AViewportMakesPixelsOfRealUnits) {
  Sketch s;
  s.drawing.real_units = true;
  s.Add(host::vec::Rectangle{{0, 0}, {1, 0.5}, {s.Fill(Interior::kSolid, kRed), kNone}});
  Vector vector(s.drawing);
  const HostRect viewport{10, 20, 410, 220};
  HostVecSetViewport(vector.get(), &viewport);
  HostGlobalMemory block = nullptr;
  uint64_t size = 0;
  ASSERT_EQ(HostVecSaveMemory(&block, vector.get(), 62, &size, nullptr), SUCCESS);
  const std::vector<CgmElement> elements = ListElements(TakeBytes(block, size));
  EXPECT_EQ(CodesOf(elements, 1), "1,1 1,11 1,2");
  EXPECT_EQ(Words(Find(elements, 4, 11)), (std::vector<int>{10, 220, 410, 20}));
}

TEST_F(CgmWriterBeyond, OnlyTextsThatLatin1LacksAreUtf8) {
  Sketch s;
  s.drawing.texts.push_back({});
  s.Add(Text{{0, 0}, {{"\xC3\xA9", 0}}, {}});
  EXPECT_EQ(CodesOf(s.Elements(), 1), "1,1 1,11 1,2 1,13");
  s.Add(Text{{0, 0}, {{"a", 0}, {"\xCE\xB1", 0}, {"b", 0}}, {}});
  const std::vector<CgmElement> elements = s.Elements();
  EXPECT_EQ(ListOf(elements, 1, 14), (std::vector<int>{0, 0, 1, 'B', 0, 4, 2, '/', 'I'}));
  EXPECT_EQ(CodesOf(Body(elements)), "5,14 5,15 5,10 5,16 4,4 4,4 5,19 4,6 5,19 4,6");
  EXPECT_EQ(ListOf(elements, 4, 4).back(), 0xE9);
}

}  // namespace
}  // namespace tavi::test

// How elements are cut out of the octets.
#include "CgmTest.h"

namespace tavi::test {
namespace {

class ElementTest : public CgmTest {};

const std::vector<Point> kPoints = {{10, 20}, {30, 40}};

TEST_F(ElementTest, EveryFormOfAnElementIsTheSame) {
  const Octets list = Line().octets();
  for (const Octets& element :
       {Element(4, 1, list), Element(4, 1, list, Form::kLong), Element(4, 1, list, Form::kPartitioned, 2),
        Element(4, 1, list, Form::kPartitioned, 6), Element(4, 1, list, Form::kPartitioned, 3)}) {
    const Loaded loaded(Metafile().BodyOctets(element).Body(4, 1, Line({1, 2, 3, 4})));
    ASSERT_EQ(loaded.status(), SUCCESS);
    ASSERT_EQ(loaded.count(), 2U);
    EXPECT_EQ(loaded.As<vec::Polyline>().points, kPoints);
    EXPECT_EQ(loaded.As<vec::Polyline>(1).points[1], (Point{3, 4}));
  }
}

TEST_F(ElementTest, LongListsAreWhole) {
  std::vector<int> coordinates;
  for (int i = 0; i < 40000; ++i) coordinates.push_back(i % 30000);
  for (const Form form : {Form::kAuto, Form::kPartitioned}) {
    const Loaded loaded(
        Metafile().BodyOctets(Element(4, 1, List().Points(coordinates).octets(), form, 1000)));
    const auto& line = loaded.As<vec::Polyline>();
    ASSERT_EQ(line.points.size(), 20000U);
    EXPECT_EQ(line.points[19999], (Point{9998, 9999}));
  }
}

TEST_F(ElementTest, OddListsArePadded) {
  for (const size_t length : {1U, 3U, 29U, 31U, 33U, 255U}) {
    const Loaded loaded(Metafile().BodyOctets(Element(7, 2, Octets(length, 0xFF))).Body(4, 1, Line()));
    EXPECT_EQ(loaded.As<vec::Polyline>().points, kPoints) << length;
  }
}

TEST_F(ElementTest, OctetsBeyondTheParametersAreIgnored) {
  const Loaded loaded(
      Metafile().Body(4, 1, Line().Add({1, 2, 3})).Body(4, 11, Line({1, 2, 3, 4}).Add({9, 9})));
  EXPECT_EQ(loaded.As<vec::Polyline>().points, kPoints);
  EXPECT_EQ(loaded.As<vec::Rectangle>(1).opposite, (Point{3, 4}));
}

// Every element that there is, and every one that is not, with lists of nothing, one octet, and rubbish: none of them
// takes the line behind it along, but for those that end the picture or take lines in.
TEST_F(ElementTest, NoElementHurtsItsNeighbours) {
  for (int group = 0; group < 16; ++group) {
    for (int id = 0; id < 128; ++id) {
      const bool structure = group == 0 && id >= 2 && id <= 20;
      for (const size_t length : {size_t{0}, size_t{1}, size_t{2}, size_t{7}, size_t{40}}) {
        const Octets list(length, static_cast<uint8_t>(id * 7 + 3));
        const Loaded loaded(Metafile().BodyOctets(Element(group, id, list)).Body(7, 1).Body(4, 1, Line()));
        ASSERT_EQ(loaded.status(), SUCCESS) << group << ',' << id;
        if (structure) continue;
        ASSERT_GE(loaded.count(), 1U) << group << ',' << id << " of " << length;
      }
    }
  }
}

TEST_F(ElementTest, PrimitivesNeedTheirParameters) {
  for (const int id : {1, 2, 3, 4, 5, 7, 8, 9, 11, 12, 13, 14, 15, 16, 17, 18, 19, 20, 22, 23, 24, 25, 26}) {
    for (size_t length = 0; length < 4; ++length) {
      EXPECT_EQ(Loaded(Metafile().BodyOctets(Element(4, id, Octets(length, 1)))).count(), 0U) << id;
    }
  }
}

TEST_F(ElementTest, OctetsBehindTheMetafileAreIgnored) {
  Octets metafile = Metafile().Body(4, 1, Line()).Finish();
  metafile.insert(metafile.end(), {0x40, 0x28, 1, 2, 3});
  EXPECT_EQ(Loaded(metafile).count(), 1U);
}

TEST_F(ElementTest, OnlyTheFirstPictureIsRead) {
  Octets metafile = Metafile().Body(4, 1, Line()).Finish();
  metafile = WithoutEnd(metafile, 2);  // END METAFILE
  const Octets second = Metafile().Body(4, 12, List().I(1).I(2).I(3)).Finish();
  metafile.insert(metafile.end(), second.begin() + 12, second.end());
  const Loaded loaded(metafile);
  EXPECT_EQ(loaded.count(), 1U);
  EXPECT_EQ(loaded.drawing().layers.at(0).name, u"one");
}

TEST_F(ElementTest, NestedPicturesEndTheFirst) {
  const Loaded loaded(
      Metafile().Body(4, 1, Line()).Body(0, 3, List().String("x")).Body(0, 4).Body(4, 1, Line()));
  EXPECT_EQ(loaded.count(), 1U);
}

TEST_F(ElementTest, PrimitivesOutsideABodyAreLost) {
  const Loaded loaded(Metafile().Head(4, 1, Line()).Picture(4, 1, Line()).Body(4, 1, Line({5, 6, 7, 8})));
  ASSERT_EQ(loaded.count(), 1U);
  EXPECT_EQ(loaded.As<vec::Polyline>().points[0], (Point{5, 6}));
}

}  // namespace
}  // namespace tavi::test

// Damaged and hostile metafiles: a status or a part of the drawing, in bounded time and memory.
#include <algorithm>
#include <cmath>

#include "CgmTest.h"
#include "ProcessorTime.h"

namespace tavi::test {
namespace {

class BadInputTest : public CgmTest {};

TEST_F(BadInputTest, ArgumentsThatAreMissing) {
  const Octets metafile = Metafile().Body(4, 1, Line()).Finish();
  HostVector vector{};
  EXPECT_EQ(HostVecLoadMemory(metafile.data(), nullptr, metafile.size(), nullptr, 0), ERR_NULL_ARGUMENT);
  EXPECT_EQ(HostVecLoadMemory(nullptr, &vector, metafile.size(), nullptr, 0), ERR_FILE_FORMAT);
  EXPECT_EQ(HostVecLoadMemory(metafile.data(), &vector, 0, nullptr, 0), ERR_FILE_FORMAT);
  EXPECT_EQ(HostVecIsEmpty(&vector), 1);
  ASSERT_EQ(HostVecLoadMemory(metafile.data(), &vector, metafile.size(), nullptr, 0), SUCCESS)
      << "zeroed is initialised";
  EXPECT_EQ(HostVecIsEmpty(&vector), 0);
  HostVecFree(&vector);
}

TEST_F(BadInputTest, OtherThingsAreNoMetafiles) {
  for (const std::string& text : {std::string("BEGMF 'x';"), std::string("%PDF-1.4"), std::string(1, '\0'),
                                  std::string(2, '\0'), std::string(100, '\xFF')}) {
    const Loaded loaded(Octets(text.begin(), text.end()));
    EXPECT_EQ(loaded.status(), ERR_FILE_FORMAT);
    EXPECT_TRUE(loaded.IsEmpty());
  }
}

TEST_F(BadInputTest, APictureWithoutObjectsIsADrawing) {
  const Loaded loaded{Metafile()};
  EXPECT_EQ(loaded.status(), SUCCESS);
  EXPECT_FALSE(loaded.IsEmpty());
  EXPECT_EQ(loaded.count(), 0U);
}

// Up to BEGIN PICTURE BODY nothing is there; behind it, what was drawn stays.
TEST_F(BadInputTest, EveryCut) {
  const Octets whole = Metafile()
                           .Body(4, 1, Line())
                           .Body(4, 4, Line({1, 2, 1}).String("text"))
                           .Body(4, 12, Line({1, 2, 3}))
                           .Finish();
  const Octets begin = Element(0, 4);
  const auto body = std::search(whole.begin(), whole.end(), begin.begin(), begin.end()) - whole.begin() + 2;
  size_t most = 0;
  for (size_t length = 0; length <= whole.size(); ++length) {
    const Loaded loaded(Octets(whole.begin(), whole.begin() + static_cast<ptrdiff_t>(length)));
    const bool has_body = length >= static_cast<size_t>(body);
    ASSERT_EQ(loaded.status(), has_body ? SUCCESS : ERR_FILE_FORMAT) << length;
    ASSERT_GE(loaded.count(), most);
    most = loaded.count();
  }
  EXPECT_EQ(most, 3U);
}

TEST_F(BadInputTest, PartitionsWithoutEnd) {
  Octets metafile = Metafile().Body(4, 1, Line()).Finish();
  metafile = WithoutEnd(metafile, 4);
  const Octets open =
      List().I(4 << 12 | 1 << 5 | 31).I(0x8004).Points({1, 2}).I(0x8004).Points({3, 4}).octets();
  metafile.insert(metafile.end(), open.begin(), open.end());
  EXPECT_EQ(Loaded(metafile).count(), 1U);
  // Ten thousand empty ones.
  Octets empty = Metafile().Body(4, 1, Line()).Finish();
  empty = WithoutEnd(empty, 4);
  List parts = List().I(4 << 12 | 1 << 5 | 31);
  for (int i = 0; i < 10'000; ++i) parts.I(0x8000);
  parts.I(8).Points({1, 2, 3, 4});
  empty.insert(empty.end(), parts.octets().begin(), parts.octets().end());
  EXPECT_EQ(Loaded(empty).count(), 2U);
}

TEST_F(BadInputTest, DefaultsWithinDefaults) {
  List innermost;
  innermost.Add(Element(5, 4, List().Rgb(255, 0, 0)));
  Octets nested = Element(1, 12, innermost);
  for (int i = 0; i < 100; ++i) nested = Element(1, 12, nested);
  Metafile metafile;
  metafile.Head(2, 2, List().I(1)).Head(1, 12, List().Add(nested)).Body(4, 1, Line());
  const Loaded loaded(metafile);
  EXPECT_EQ(loaded.Stroke(loaded.As<vec::Polyline>().stroke).color, 0U) << "not followed";
}

TEST_F(BadInputTest, PicturesWithinDefaults) {
  List inner;
  inner.Add(Element(0, 3, List().String("")))
      .Add(Element(0, 4))
      .Add(Element(4, 1, Line()))
      .Add(Element(0, 2));
  const Loaded loaded(Metafile().Head(1, 12, inner).Body(4, 1, Line()));
  EXPECT_EQ(loaded.status(), SUCCESS);
  EXPECT_GE(loaded.count(), 1U);
}

TEST_F(BadInputTest, MillionsOfTinyElements) {
  const Octets one = Element(5, 1, List().I(1));
  Octets many;
  for (int i = 0; i < 1'000'000; ++i) many.insert(many.end(), one.begin(), one.end());
  const tavi_test::ProcessorTime time;
  const Loaded loaded(Metafile().BodyOctets(many).Body(4, 1, Line()));
  EXPECT_EQ(loaded.count(), 1U);
  EXPECT_LT(time.Seconds(), 10);
}

TEST_F(BadInputTest, ManyStylesStayApart) {
  Metafile metafile;
  Octets body;
  for (int i = 0; i < 20'000; ++i) {
    for (const Octets& element : {Element(5, 3, List().I(i)), Element(4, 1, Line())}) {
      body.insert(body.end(), element.begin(), element.end());
    }
  }
  const Loaded loaded(metafile.BodyOctets(body));
  ASSERT_EQ(loaded.count(), 20'000U);
  EXPECT_EQ(loaded.drawing().strokes.size(), 20'000U);
}

TEST_F(BadInputTest, SavedContextsAreBounded) {
  Octets body;
  for (int i = 0; i < 20'000; ++i) {
    const Octets element = Element(3, 11, List().I(i));
    body.insert(body.end(), element.begin(), element.end());
  }
  EXPECT_EQ(Loaded(Metafile().BodyOctets(body).Body(3, 12, List().I(19'999)).Body(4, 1, Line())).count(), 1U);
}

Octets Repeated(const Octets& element, size_t octets) {
  Octets all;
  while (all.size() < octets) all.insert(all.end(), element.begin(), element.end());
  return all;
}

Octets Copy() {
  return Element(8, 1, List().I(1).Fixed(1).Fixed(0).Fixed(0).Fixed(1).I(0).I(0).I(1));
}

// Each text asks for its font and its character set, whose names may be as long as the metafile.
TEST_F(BadInputTest, LongNamesAreReadOnce) {
  const std::string name(400'000, 'q');
  const Octets texts = Repeated(Element(4, 4, Line({1, 2, 1}).String("x")), 400'000);
  const tavi_test::ProcessorTime time;
  const Loaded loaded(
      Metafile().Head(1, 13, List().String(name)).Head(1, 14, List().I(4).String(name)).BodyOctets(texts));
  EXPECT_GT(loaded.count(), 30'000U);
  EXPECT_LT(time.Seconds(), 5);
}

// Copies of segments grow into objects of many times their size, in figures as well.
TEST_F(BadInputTest, WhatCopiesDrawIsBounded) {
  const Octets circles = Repeated(Element(4, 12, Line({1, 2, 3})), 400'000);
  for (const bool figure : {false, true}) {
    for (const int copies : {1, 14}) {
      Octets all = Element(0, 6, List().I(1));
      all.insert(all.end(), circles.begin(), circles.end());
      for (const Octets& element : {Element(0, 7), figure ? Element(0, 8) : Octets()})
        all.insert(all.end(), element.begin(), element.end());
      for (int i = 0; i < copies; ++i) {
        const Octets copy = Copy();
        all.insert(all.end(), copy.begin(), copy.end());
      }
      const Loaded loaded(Metafile().BodyOctets(all));
      EXPECT_EQ(loaded.status(), copies == 1 ? SUCCESS : ERR_NO_MEMORY) << figure;
    }
  }
}

// Even those that protection keeps from being drawn.
TEST_F(BadInputTest, TheWorkForSplinesIsBounded) {
  constexpr int kControls = 4000;
  List spline = List().I(8).I(kControls);
  for (int i = 0; i < kControls; ++i) spline.I(i).I(i % 7);
  for (int i = 0; i < kControls + 8; ++i) spline.Fixed(i);
  const Octets splines = Repeated(Element(4, 24, spline.Fixed(7).Fixed(kControls)), 200'000);
  for (const int copies : {0, 14}) {
    Metafile metafile;
    metafile.Body(0, 13, List().I(1)).Body(0, 6, List().I(1)).BodyOctets(splines).Body(0, 7);
    for (int i = 0; i < copies; ++i) metafile.BodyOctets(Copy());
    EXPECT_EQ(Loaded(metafile).status(), copies == 0 ? SUCCESS : ERR_NO_MEMORY);
  }
}

// A pattern that is used stands in the table and in the drawing, and each copy of a segment defines it anew.
TEST_F(BadInputTest, PatternsCountTwice) {
  List table = List().I(1).I(1000).I(600).I(1);
  for (int row = 0; row < 600; ++row) table.Add(Octets(126, 0x55));
  const auto load = [&](bool used) {
    Metafile metafile;
    metafile.Picture(2, 2, List().I(0)).Body(0, 6, List().I(1)).Body(5, 22, List().I(2)).Body(5, 32, table);
    if (used) metafile.Body(4, 11, Line());
    metafile.Body(0, 7).BodyOctets(Copy()).BodyOctets(Copy());
    return Loaded(metafile).status();
  };
  EXPECT_EQ(load(false), SUCCESS);
  EXPECT_EQ(load(true), ERR_NO_MEMORY);
}

TEST_F(BadInputTest, CopiesBeyondTheCoordinatesAreLost) {
  const List copy = List().I(1).Fixed(32767).Fixed(0).Fixed(0).Fixed(32767).I(0).I(0).I(1);
  Metafile metafile;
  metafile.Body(0, 6, List().I(1)).Body(4, 1, Line({30000, 0, 0, 30000})).Body(8, 1, copy).Body(0, 7);
  const Loaded loaded(metafile.Body(8, 1, copy));
  EXPECT_EQ(loaded.status(), SUCCESS);
  for (const vec::Object& object : loaded.drawing().objects) {
    for (const Point& p : std::get<vec::Polyline>(object.shape).points) EXPECT_LT(std::abs(p.x), 2e10);
  }
}

}  // namespace
}  // namespace tavi::test

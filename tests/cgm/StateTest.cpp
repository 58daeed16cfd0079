// Attributes, defaults, bundles, colours, and the picture's frame.
#include "CgmTest.h"

namespace tavi::test {
namespace {

class StateTest : public CgmTest {};

vec::Stroke StrokeOfLine(const Loaded& loaded, size_t index = 0) {
  return loaded.Stroke(loaded.As<vec::Polyline>(index).stroke);
}

TEST_F(StateTest, DefaultsOfLines) {
  const vec::Stroke stroke = StrokeOfLine(Loaded(Metafile().Body(4, 1, Line())));
  EXPECT_EQ(stroke.color, 0U);
  EXPECT_EQ(stroke.type, vec::LineType::kSolid);
  EXPECT_TRUE(stroke.scaled);
  EXPECT_EQ(stroke.width, 1);
  EXPECT_EQ(stroke.cap, vec::LineCap::kButt);
  EXPECT_EQ(stroke.mitre_limit, 32767);
  EXPECT_FALSE(stroke.gap_color);
}

TEST_F(StateTest, LineAttributes) {
  const Loaded loaded(Metafile()
                          .Body(5, 2, List().I(4))
                          .Body(5, 3, List().I(12))
                          .Body(5, 4, List().Rgb(255, 0, 0))
                          .Body(4, 1, Line()));
  const vec::Stroke stroke = StrokeOfLine(loaded);
  EXPECT_EQ(stroke.type, vec::LineType::kDashDot);
  EXPECT_EQ(stroke.width, 12);
  EXPECT_FALSE(stroke.scaled);
  EXPECT_EQ(stroke.color, kRed);
}

TEST_F(StateTest, LineTypes) {
  const std::vector<std::pair<int, vec::LineType>> types = {
      {1, vec::LineType::kSolid},      {2, vec::LineType::kDash},   {3, vec::LineType::kDot},
      {5, vec::LineType::kDashDotDot}, {77, vec::LineType::kSolid}, {-4, vec::LineType::kSolid},
      {12, vec::LineType::kDash}};
  for (const auto& [index, type] : types) {
    EXPECT_EQ(StrokeOfLine(Loaded(Metafile().Body(5, 2, List().I(index)).Body(4, 1, Line()))).type, type)
        << index;
  }
}

TEST_F(StateTest, WidthsInEveryMode) {
  // The side of the extent is 1000.
  const auto width = [](int mode, const List& value, const List& scaling) {
    return StrokeOfLine(Loaded(Metafile()
                                   .Picture(2, 3, List().I(mode))
                                   .Picture(2, 1, scaling)
                                   .Body(5, 3, value)
                                   .Body(4, 1, Line())));
  };
  const List abstract = List().I(0).Float(1);
  EXPECT_EQ(width(0, List().I(7), abstract).width, 7);
  EXPECT_EQ(width(1, List().Fixed(2.5), abstract).width, 2.5);
  EXPECT_TRUE(width(1, List().Fixed(2.5), abstract).scaled);
  EXPECT_NEAR(width(2, List().Fixed(0.25), abstract).width, 250, 1e-9);
  EXPECT_NEAR(width(3, List().Fixed(3), List().I(1).Float(0.5F)).width, 6, 1e-9);
  EXPECT_TRUE(width(3, List().Fixed(3), abstract).scaled);
}

TEST_F(StateTest, NominalWidths) {
  EXPECT_EQ(Loaded(Metafile().Body(4, 1, Line({0, 0, 500, 4000}))).drawing().nominal_width, 1);
  const Loaded large(Metafile().Body(4, 1, Line({0, 0, 500, 20000})));
  EXPECT_EQ(large.drawing().nominal_width, 20);
  EXPECT_EQ(large.drawing().nominal_marker, 200);
  const Loaded real(
      Metafile().Bare().Head(1, 3, List().I(1)).Body(4, 1, List().Fixed(0).Fixed(0).Fixed(0.5).Fixed(0.25)));
  EXPECT_NEAR(real.drawing().nominal_width, 0.0005, 1e-12);
}

TEST_F(StateTest, AreaAttributes) {
  const Loaded loaded(Metafile()
                          .Body(5, 22, List().I(3))
                          .Body(5, 23, List().Rgb(0, 255, 0))
                          .Body(5, 24, List().I(5))
                          .Body(5, 31, Line({3, 4}))
                          .Body(5, 30, List().I(1))
                          .Body(5, 27, List().I(2))
                          .Body(5, 28, List().I(5))
                          .Body(5, 29, List().Rgb(0, 0, 255))
                          .Body(4, 11, Line())
                          .Body(5, 30, List().I(0))
                          .Body(4, 11, Line()));
  const auto& area = loaded.As<vec::Rectangle>().style;
  const vec::Fill fill = loaded.Fill(area.fill);
  EXPECT_EQ(fill.interior, vec::Interior::kHatch);
  EXPECT_EQ(fill.hatch, vec::Hatch::kCross);
  EXPECT_EQ(fill.color, kGreen);
  EXPECT_EQ(fill.origin, (Point{3, 4}));
  const vec::Stroke edge = loaded.Stroke(area.edge);
  EXPECT_EQ(edge.type, vec::LineType::kDash);
  EXPECT_EQ(edge.width, 5);
  EXPECT_EQ(edge.color, kBlue);
  EXPECT_EQ(loaded.As<vec::Rectangle>(1).style.edge, vec::kNone);
}

// Areas whose interior nothing has set are empty, hollow ones have outlines.
TEST_F(StateTest, Interiors) {
  EXPECT_EQ(Loaded(Metafile().Body(4, 11, Line())).As<vec::Rectangle>().style.fill, vec::kNone);
  const std::vector<std::pair<int, vec::Interior>> styles = {
      {0, vec::Interior::kHollow}, {1, vec::Interior::kSolid}, {2, vec::Interior::kSolid},  // no such pattern
      {3, vec::Interior::kHatch},  {5, vec::Interior::kSolid}, {6, vec::Interior::kSolid}};
  for (const auto& [style, interior] : styles) {
    const Loaded loaded(Metafile().Body(5, 22, List().I(style)).Body(4, 11, Line()));
    EXPECT_EQ(loaded.Fill(loaded.As<vec::Rectangle>().style.fill).interior, interior) << style;
  }
  const Loaded empty(Metafile().Body(5, 22, List().I(1)).Body(5, 22, List().I(4)).Body(4, 11, Line()));
  EXPECT_EQ(empty.As<vec::Rectangle>().style.fill, vec::kNone);
  const Loaded unknown(Metafile().Body(5, 22, List().I(1)).Body(5, 22, List().I(9)).Body(4, 11, Line()));
  EXPECT_EQ(unknown.Fill(unknown.As<vec::Rectangle>().style.fill).interior, vec::Interior::kSolid);
}

TEST_F(StateTest, Patterns) {
  const List table = List().I(7).I(2).I(2).I(8).Rgb(255, 0, 0).Rgb(0, 255, 0).Rgb(0, 0, 255).Rgb(0, 0, 0);
  const Loaded loaded(Metafile()
                          .Body(5, 32, table)
                          .Body(5, 22, List().I(2))
                          .Body(5, 25, List().I(7))
                          .Body(5, 33, Line({0, 8, 16, 0}))
                          .Body(4, 11, Line())
                          .Body(4, 12, Line({1, 2, 3})));
  const vec::Fill fill = loaded.Fill(loaded.As<vec::Rectangle>().style.fill);
  ASSERT_EQ(loaded.drawing().patterns.size(), 1U) << "each pattern stands in the drawing once";
  EXPECT_EQ(fill.interior, vec::Interior::kPattern);
  EXPECT_EQ(fill.pattern, 0U);
  EXPECT_EQ(fill.pattern_up, (Point{0, 8}));
  EXPECT_EQ(fill.pattern_along, (Point{16, 0}));
  EXPECT_EQ(loaded.drawing().patterns[0].colors, (std::vector<uint32_t>{kRed, kGreen, kBlue, 0}));
}

TEST_F(StateTest, TransparencyFillsGapsWithTheAuxiliaryColor) {
  const Loaded loaded(Metafile()
                          .Body(3, 3, List().Rgb(255, 0, 0))
                          .Body(3, 4, List().I(0))
                          .Body(4, 1, Line())
                          .Body(5, 2, List().I(2))
                          .Body(4, 1, Line())
                          .Body(4, 4, Line({1, 2, 1}).String("x"))
                          .Body(5, 22, List().I(3))
                          .Body(4, 11, Line())
                          .Body(3, 4, List().I(1))
                          .Body(4, 1, Line()));
  EXPECT_FALSE(StrokeOfLine(loaded, 0).gap_color) << "solid lines have no gaps";
  EXPECT_EQ(StrokeOfLine(loaded, 1).gap_color, kRed);
  EXPECT_EQ(loaded.TextStyle(loaded.As<vec::Text>(2).spans.at(0).style).box_color, kRed);
  EXPECT_EQ(loaded.Fill(loaded.As<vec::Rectangle>(3).style.fill).gap_color, kRed);
  EXPECT_FALSE(StrokeOfLine(loaded, 4).gap_color);
}

TEST_F(StateTest, ColorTablesCountFromWhereTheyStand) {
  const Loaded loaded(Metafile()
                          .Picture(2, 2, List().I(0))
                          .Body(4, 1, Line())
                          .Body(5, 4, List().Add({5}))
                          .Body(5, 34, List().Add({5}).Rgb(255, 0, 0))
                          .Body(4, 1, Line())
                          .Body(5, 34, List().Add({5}).Rgb(0, 255, 0))
                          .Body(4, 1, Line())
                          .Body(5, 4, List().Add({0}))
                          .Body(4, 1, Line())
                          .Body(5, 4, List().Add({99}))
                          .Body(4, 1, Line()));
  EXPECT_EQ(StrokeOfLine(loaded, 0).color, 0U);
  EXPECT_EQ(StrokeOfLine(loaded, 1).color, kRed);
  EXPECT_EQ(StrokeOfLine(loaded, 2).color, kGreen);
  EXPECT_EQ(StrokeOfLine(loaded, 3).color, vec::kBackColor);
  EXPECT_EQ(StrokeOfLine(loaded, 4).color, 0U);
  const Loaded background(Metafile()
                              .Picture(2, 2, List().I(0))
                              .Picture(2, 7, List().Rgb(0, 0, 255))
                              .Body(5, 4, List().Add({0}))
                              .Body(4, 1, Line()));
  EXPECT_EQ(StrokeOfLine(background).color, kBlue);
}

TEST_F(StateTest, DefaultsReplacement) {
  List defaults;
  defaults.Add(Element(2, 2, List().I(1)))
      .Add(Element(2, 3, List().I(0)))
      .Add(Element(5, 3, List().I(9)))
      .Add(Element(5, 4, List().Rgb(255, 0, 0)))
      .Add(Element(5, 29, List().Rgb(1, 2, 3)));
  List more;
  more.Add(Element(5, 2, List().I(3)));
  const Loaded loaded(Metafile().Head(1, 12, defaults).Head(1, 12, more).Body(4, 1, Line()));
  const vec::Stroke stroke = StrokeOfLine(loaded);
  EXPECT_EQ(stroke.width, 9);
  EXPECT_EQ(stroke.color, kRed);
  EXPECT_EQ(stroke.type, vec::LineType::kDot);
}

// What stands before the picture and is no default does not reach it.
TEST_F(StateTest, PicturesBeginWithTheDefaults) {
  List defaults;
  defaults.Add(Element(2, 2, List().I(1))).Add(Element(5, 4, List().Rgb(0, 255, 0)));
  Metafile metafile;
  metafile.Bare()
      .Head(1, 12, defaults)
      .Head(2, 2, List().I(0))
      .Head(2, 3, List().I(0))
      .Head(2, 6, Line({0, 100, 100, 0}))
      .Head(2, 11, List().I(1).I(3).Fixed(1).Rgb(1, 2, 3))
      .Head(3, 1, List().I(32))
      .Head(3, 5, Line({1, 1, 2, 2}))
      .Head(5, 2, List().I(2))
      .Head(5, 4, List().Rgb(255, 0, 0))
      .Head(0, 13)
      .Body(5, 3, List().Fixed(2))
      .Body(4, 1, Line());
  const Loaded loaded(metafile);
  const vec::Stroke stroke = StrokeOfLine(loaded);
  EXPECT_EQ(stroke.color, kGreen);
  EXPECT_EQ(stroke.type, vec::LineType::kSolid);
  EXPECT_EQ(stroke.width, 2);
  EXPECT_EQ(loaded.As<vec::Polyline>().points[0], (Point{10, 20}));
  EXPECT_EQ(loaded.drawing().objects.at(0).clip, vec::kNone);
}

// Segments before the picture keep to themselves what they set, closed or not.
TEST_F(StateTest, SegmentsBeforeThePictureLeaveNoTrace) {
  for (const bool closed : {true, false}) {
    Metafile metafile;
    metafile.Head(0, 6, List().I(1)).Head(3, 1, List().I(32)).Head(5, 4, List().Rgb(255, 0, 0));
    metafile.Head(5, 34, List().I(1, 8).Rgb(9, 9, 9));
    if (closed) metafile.Head(0, 7);
    const Loaded loaded(metafile.Body(4, 1, Line()));
    EXPECT_EQ(StrokeOfLine(loaded).color, 0U);
    EXPECT_EQ(loaded.As<vec::Polyline>().points[0], (Point{10, 20}));
  }
}

TEST_F(StateTest, InterpolatedInteriorsShowTheirFirstColor) {
  const auto fill = [](const List& interpolated) {
    const Loaded loaded(Metafile()
                            .Body(5, 23, List().Rgb(0, 0, 255))
                            .Body(5, 22, List().I(6))
                            .Body(5, 43, interpolated)
                            .Body(4, 11, Line()));
    return loaded.Fill(loaded.As<vec::Rectangle>().style.fill);
  };
  const List parallel = List().I(1).I(5).I(5).I(1).Fixed(0.5).Rgb(255, 0, 0).Rgb(0, 255, 0);
  EXPECT_EQ(fill(parallel).interior, vec::Interior::kSolid);
  EXPECT_EQ(fill(parallel).color, kRed);
  const List triangular = List().I(3).Points({5, 5, 9, 9}).I(0).Rgb(0, 255, 0).Rgb(255, 0, 0).Rgb(1, 1, 1);
  EXPECT_EQ(fill(triangular).color, kGreen);
  EXPECT_EQ(fill(List().I(1).I(5).I(5).I(9).Fixed(0.5).Rgb(255, 0, 0)).color, kBlue) << "cut";
}

TEST_F(StateTest, PatternSizesInEveryMode) {
  const auto along = [](int mode, const List& size, const List& scaling) {
    const Loaded loaded(Metafile()
                            .Picture(2, 1, scaling)
                            .Picture(2, 16, List().I(mode))
                            .Body(5, 32, List().I(1).I(2).I(1).I(8).Rgb(1, 2, 3).Rgb(4, 5, 6))
                            .Body(5, 22, List().I(2))
                            .Body(5, 33, size)
                            .Body(4, 11, Line()));
    return loaded.Fill(loaded.As<vec::Rectangle>().style.fill).pattern_along;
  };
  const List abstract = List().I(0).Float(1);
  const List real = List().Fixed(0).Fixed(0.25).Fixed(0.5).Fixed(0);
  ExpectNear(along(0, Line({0, 8, 16, 0}), abstract), {16, 0});
  ExpectNear(along(2, real, abstract), {500, 0});
  ExpectNear(along(3, real, List().I(1).Float(0.25F)), {2, 0});
  ExpectNear(along(3, real, abstract), {0.5 / 0.35, 0});
}

TEST_F(StateTest, BundlesOfEveryKind) {
  Metafile metafile;
  metafile.Picture(2, 11, List().I(4).I(2).I(6).Rgb(255, 0, 0))
      .Picture(2, 12, List().I(4).I(5).I(7).Rgb(255, 0, 0))
      .Picture(2, 13, List().I(4).I(1).I(0).Fixed(0.5).Fixed(2).Rgb(255, 0, 0))
      .Picture(2, 14, List().I(4).I(3).Rgb(255, 0, 0).I(6).I(1))
      .Picture(2, 15, List().I(4).I(3).I(8).Rgb(255, 0, 0));
  for (const int id : {1, 5, 9, 21, 26}) metafile.Body(5, id, List().I(4));
  metafile.Body(5, 30, List().I(1));
  const auto draw = [&metafile] {
    metafile.Body(4, 1, Line())
        .Body(4, 3, Line())
        .Body(4, 4, Line({1, 2, 1}).String("x"))
        .Body(4, 11, Line());
  };
  draw();
  List flags;
  for (int i = 0; i < 18; ++i) flags.I(i).I(1);
  metafile.Body(5, 35, flags.I(99).I(1).I(-1).I(1));
  draw();
  const Loaded loaded(metafile);
  ASSERT_EQ(loaded.count(), 8U);
  EXPECT_EQ(StrokeOfLine(loaded).type, vec::LineType::kSolid) << "attributes of their own at first";
  EXPECT_EQ(StrokeOfLine(loaded, 4).type, vec::LineType::kDash);
  EXPECT_EQ(StrokeOfLine(loaded, 4).width, 6);
  EXPECT_EQ(StrokeOfLine(loaded, 4).color, kRed);
  EXPECT_EQ(loaded.Marker(loaded.As<vec::Markers>(5).marker),
            (vec::MarkerStyle{vec::MarkerType::kCross, kRed, 7, false}));
  const vec::TextStyle text = loaded.TextStyle(loaded.As<vec::Text>(6).spans.at(0).style);
  EXPECT_EQ(text.spacing, 0.5);
  EXPECT_EQ(text.expansion, 2);
  EXPECT_EQ(text.color, kRed);
  const auto& area = loaded.As<vec::Rectangle>(7).style;
  EXPECT_EQ(loaded.Fill(area.fill).hatch, vec::Hatch::kDiagonalCross);
  EXPECT_EQ(loaded.Fill(area.fill).color, kRed);
  EXPECT_EQ(loaded.Stroke(area.edge).type, vec::LineType::kDot);
  EXPECT_EQ(loaded.Stroke(area.edge).width, 8);
}

TEST_F(StateTest, TheExtentTurnsAxesAndScalesNothing) {
  const auto first = [](const std::vector<int>& extent) {
    const Loaded loaded(Metafile().Picture(2, 6, Line(extent)).Body(4, 1, Line({10, 20, 0, 0})));
    return loaded.As<vec::Polyline>().points.at(0);
  };
  EXPECT_EQ(first({0, 0, 32767, 32767}), (Point{10, 20}));
  EXPECT_EQ(first({0, 32767, 32767, 0}), (Point{10, -20}));
  EXPECT_EQ(first({3000, 0, 0, 3000}), (Point{-10, 20}));
  EXPECT_EQ(first({9, 9, -9, -9}), (Point{-10, -20}));
  EXPECT_EQ(first({5, 5, 5, 5}), (Point{10, 20})) << "an extent of nothing turns nothing";
}

TEST_F(StateTest, Clipping) {
  const Loaded loaded(Metafile()
                          .Body(4, 1, Line({-500, 0, 5000, 0}))
                          .Body(3, 5, Line({50, 60, 10, 20}))
                          .Body(4, 1, Line())
                          .Body(4, 11, Line())
                          .Body(3, 6, List().I(0))
                          .Body(4, 1, Line()));
  EXPECT_EQ(loaded.drawing().objects.at(0).clip, vec::kNone) << "the extent cuts nothing off";
  const uint32_t clip = loaded.drawing().objects.at(1).clip;
  ASSERT_LT(clip, loaded.drawing().clips.size());
  EXPECT_EQ(loaded.drawing().clips[clip].low, (Point{10, 20}));
  EXPECT_EQ(loaded.drawing().clips[clip].high, (Point{50, 60}));
  EXPECT_EQ(loaded.drawing().objects.at(2).clip, clip);
  EXPECT_EQ(loaded.drawing().objects.at(3).clip, vec::kNone);
}

}  // namespace
}  // namespace tavi::test

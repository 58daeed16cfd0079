// Texts, by the boxes that they cover: the shapes of the characters are the fonts' own.
#include "PaintTest.h"
#include "TaviVector/Fonts.h"
#include "TaviVector/TextLayout.h"

namespace tavi::test {
namespace {

using namespace host::vec;
using PaintTextTest = HostTest;

TextStyle Style(double height = 40) {
  TextStyle style;
  style.height = height;
  return style;
}

Paper Written(const std::string& text, const TextStyle& style, Point at = {100, -100}) {
  Sketch sketch;
  sketch.Draw(Text{at, {{text, sketch.Add(style)}}, std::nullopt});
  Paper paper(200, 200);
  EXPECT_EQ(paper.Paint(sketch.drawing), SUCCESS);
  return paper;
}

TEST_F(PaintTextTest, HeightIsTheEmSize) {
  // Capitals of Helvetica are 0.72 em high, its H 0.72 em wide.
  const Area inked = Written("H", Style(100), {50, -150}).Inked();
  EXPECT_EQ(inked.bottom, 150);
  EXPECT_NEAR(inked.height(), 70, 3);
  EXPECT_NEAR(inked.left, 58, 3);
  EXPECT_NEAR(inked.width(), 56, 4);
}

TEST_F(PaintTextTest, WidthsAreThoseOfTheOriginalFamilies) {
  // Advance widths of "Hamburg 012" in thousandths of the em, summed from the families' published tables.
  const auto width = [](FontFamily family, bool bold) {
    Drawing drawing;
    TextStyle style = Style(1000);
    style.font.family = family;
    style.font.bold = bold;
    drawing.texts.push_back(style);
    const LaidText laid = LayOut(drawing, Text{{0, 0}, {{"Hamburg 012", 0}}, std::nullopt});
    return laid.extent.high.x - laid.extent.low.x;
  };
  EXPECT_NEAR(width(FontFamily::kSans, false), 722 + 556 + 833 + 556 + 556 + 333 + 556 + 278 + 3 * 556, 10);
  EXPECT_NEAR(width(FontFamily::kSerif, false), 722 + 444 + 778 + 500 + 500 + 333 + 500 + 250 + 3 * 500, 10);
  EXPECT_NEAR(width(FontFamily::kMono, true), 11 * 600, 10);
}

TEST_F(PaintTextTest, TheFourStylesDiffer) {
  double ink[4] = {};
  for (int i = 0; i < 4; ++i) {
    TextStyle style = Style();
    style.font.bold = (i & 1) != 0;
    style.font.italic = (i & 2) != 0;
    ink[i] = Written("Hil", style).Ink();
  }
  EXPECT_GT(ink[1], 1.2 * ink[0]);
  EXPECT_GT(ink[3], 1.2 * ink[2]);
  EXPECT_NE(ink[0], ink[2]);
}

TEST_F(PaintTextTest, AlignmentPutsTheRightPlaceAtThePoint) {
  const auto area = [](TextAcross across, TextUpright upright) {
    TextStyle style = Style();
    style.across = across;
    style.upright = upright;
    style.across_fraction = 0.5;
    style.upright_fraction = 1;
    return Written("HHH", style).Inked();
  };
  constexpr int kSlack = 4;
  EXPECT_NEAR(area(TextAcross::kNormal, TextUpright::kNormal).left, 100, kSlack);
  EXPECT_NEAR(area(TextAcross::kNormal, TextUpright::kNormal).bottom, 100, 1);
  EXPECT_NEAR(area(TextAcross::kLeft, TextUpright::kBase).left, 100, kSlack);
  EXPECT_NEAR(area(TextAcross::kRight, TextUpright::kBase).right, 100, kSlack);
  const Area centred = area(TextAcross::kCentre, TextUpright::kHalf);
  EXPECT_NEAR(centred.left + centred.right, 200, 2);
  EXPECT_NEAR(centred.top + centred.bottom, 200, 2);
  const Area fraction = area(TextAcross::kContinuous, TextUpright::kContinuous);
  EXPECT_NEAR(fraction.left + fraction.right, 200, 2);
  EXPECT_GT(fraction.top, 100);
  EXPECT_NEAR(area(TextAcross::kLeft, TextUpright::kCap).top, 100, 1);
  EXPECT_GT(area(TextAcross::kLeft, TextUpright::kTop).top, 102);
  EXPECT_LT(area(TextAcross::kLeft, TextUpright::kBottom).bottom, 98);
}

TEST_F(PaintTextTest, PathsLeadInFourDirections) {
  const auto area = [](TextPath path) {
    TextStyle style = Style(20);
    style.path = path;
    return Written("HHH", style).Inked();
  };
  EXPECT_GE(area(TextPath::kRight).left, 100);
  EXPECT_LE(area(TextPath::kLeft).right, 100);
  const Area up = area(TextPath::kUp);
  EXPECT_EQ(up.bottom, 100);
  EXPECT_GT(up.height(), 2 * up.width());
  EXPECT_NEAR(up.left + up.right, 200, 2);
  const Area down = area(TextPath::kDown);
  EXPECT_GT(down.top, 100);
  EXPECT_GT(down.height(), 2 * down.width());
}

TEST_F(PaintTextTest, ExpansionAndSpacingWiden) {
  TextStyle style = Style(20);
  const int plain = Written("HH", style, {10, -100}).Inked().width();
  style.spacing = 1;
  EXPECT_NEAR(Written("HH", style, {10, -100}).Inked().width(), plain + 20, 1);
  style.spacing = 0;
  style.expansion = 2;
  EXPECT_NEAR(Written("HH", style, {10, -100}).Inked().width(), 2 * plain, 3);
}

TEST_F(PaintTextTest, OrientationTurnsMirrorsAndStretches) {
  TextStyle style = Style(20);
  style.up = {-1, 0};
  style.base = {0, 1};
  const Area turned = Written("HHHH", style).Inked();
  EXPECT_EQ(turned.right, 100);
  EXPECT_LE(turned.bottom, 100);
  EXPECT_GT(turned.height(), 2 * turned.width());
  style.up = {0, -1};
  style.base = {1, 0};
  EXPECT_EQ(Written("HHHH", style).Inked().top, 100);
  style.up = {0, 5};
  style.base = {5, 0};
  const int plain = Written("HHHH", style, {10, -100}).Inked().width();
  style.base = {10, 0};
  EXPECT_NEAR(Written("HHHH", style, {10, -100}).Inked().width(), 2 * plain, 4);
}

TEST_F(PaintTextTest, BoxesLieBehindTheCharacters) {
  TextStyle style = Style(20);
  style.box_color = kGreen;
  const Paper paper = Written("gH", style, {50, -100});
  EXPECT_GT(paper.Count(kBlack), 10);
  const Area box = paper.Inked();
  EXPECT_EQ(box.left, 50);
  EXPECT_LE(box.top, 100 - 18);
  EXPECT_GE(box.bottom, 100 + 4);
  EXPECT_EQ(paper.At(box.left, box.top), kGreen);
  EXPECT_EQ(paper.At(box.right - 1, box.bottom - 1), kGreen);
}

TEST_F(PaintTextTest, SpansAreAlignedAsOne) {
  Sketch sketch;
  TextStyle first = Style(20);
  first.color = kRed;
  first.across = TextAcross::kRight;
  TextStyle second = Style(40);
  second.color = kBlue;
  sketch.Draw(Text{{150, -100}, {{"HH", sketch.Add(first)}, {"H", sketch.Add(second)}}, std::nullopt});
  Paper paper(200, 200);
  ASSERT_EQ(paper.Paint(sketch.drawing), SUCCESS);
  EXPECT_LT(paper.Find(kRed).right, paper.Find(kBlue).left);
  EXPECT_NEAR(paper.Inked().right, 150, 5);
  EXPECT_EQ(paper.Find(kBlue).bottom, 100);
  EXPECT_EQ(paper.Find(kRed).bottom, 100);
}

TEST_F(PaintTextTest, RestrictedTextShrinksToFit) {
  const auto inked = [](double width, double height) {
    Sketch sketch;
    sketch.Draw(Text{{10, -100}, {{"HHHHHH", sketch.Add(Style(40))}}, Point{width, height}});
    Paper paper(200, 200);
    EXPECT_EQ(paper.Paint(sketch.drawing), SUCCESS);
    return paper.Inked();
  };
  const Area plain = inked(1000, 1000);
  EXPECT_NEAR(inked(60, 1000).right, 70, 3);
  EXPECT_EQ(inked(60, 1000).height(), plain.height());
  EXPECT_NEAR(inked(1000, 20).height(), plain.height() * 20 / 44.7, 2);
}

TEST_F(PaintTextTest, EveryHersheyFaceIsDrawn) {
  for (int face = 0; face < 16; ++face) {
    TextStyle style = Style(64);
    style.font.family = FontFamily::kHershey;
    style.font.hershey = static_cast<HersheyFace>(face);
    const Paper paper = Written("H", style, {20, -100});
    // Capitals are 21 of 32 units high; those of the German face hang below the line.
    EXPECT_GE(paper.Inked().height(), 40) << face;
    EXPECT_LE(paper.Inked().height(), 60) << face;
    EXPECT_GT(paper.Ink(), 100) << face;
    EXPECT_LT(paper.Ink(), 1300) << face;
  }
}

TEST_F(PaintTextTest, Utf8IsRead) {
  EXPECT_EQ(CharactersOf("A\x01\x7F\xC2\x85z"), U"Az");
  EXPECT_EQ(CharactersOf("\xC3\xA4\xE2\x82\xAC\xF0\x9F\x98\x80"), U"\u00E4\u20AC\U0001F600");
  EXPECT_EQ(CharactersOf("a\xFFz\xC3"), U"a\uFFFDz\uFFFD");
  EXPECT_EQ(CharactersOf("\xC0\xAF\xED\xA0\x80"), U"\uFFFD\uFFFD\uFFFD");
  EXPECT_NE(Written("\xC3\x84", Style(), {20, -100}).Inked().height(),
            Written("A", Style(), {20, -100}).Inked().height());
}

TEST_F(PaintTextTest, StrangeStylesAreHarmless) {
  for (const double height : {0.0, -5.0, 1e300}) {
    TextStyle style = Style(height);
    style.expansion = -height;
    style.up = {0, 0};
    Written("Strange", style);
  }
  Sketch sketch;
  sketch.Draw(Text{{0, 0}, {{"no style", 5}}, std::nullopt});
  sketch.Draw(Text{{0, 0}, {}, std::nullopt});
  Paper paper;
  EXPECT_EQ(paper.Paint(sketch.drawing), SUCCESS);
  EXPECT_EQ(paper.Inked().width(), 0);
}

TEST_F(PaintTextTest, MetricsAreSensible) {
  for (const FontFamily family :
       {FontFamily::kSans, FontFamily::kSerif, FontFamily::kMono, FontFamily::kHershey}) {
    const Face& face = FaceOf({family, false, false, HersheyFace::kSimplexRoman});
    EXPECT_GT(face.metrics().ascent, face.metrics().cap);
    EXPECT_NEAR(face.metrics().cap, 0.65, 0.1);
    EXPECT_NEAR(face.metrics().ascent + face.metrics().descent, 1.06, 0.15);
    EXPECT_EQ(&face, &FaceOf({family, false, false, HersheyFace::kSimplexRoman}));
  }
}

}  // namespace
}  // namespace tavi::test

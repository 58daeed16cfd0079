// Text, its attributes, fonts and character sets.
#include "CgmTest.h"

namespace tavi::test {
namespace {

class TextTest : public CgmTest {};

List TextAt(int x, int y, const std::string& text, int final = 1) {
  return List().Points({x, y, final}).String(text);
}

std::string TextOf(const Metafile& metafile) {
  const Loaded loaded(metafile);
  const auto& text = loaded.As<vec::Text>();
  return text.spans.empty() ? "" : text.spans[0].text;
}

vec::TextStyle StyleOf(const Metafile& metafile) {
  const Loaded loaded(metafile);
  return loaded.TextStyle(loaded.As<vec::Text>().spans.at(0).style);
}

TEST_F(TextTest, AttributesReachTheDrawing) {
  const vec::TextStyle style = StyleOf(Metafile()
                                           .Body(5, 12, List().Fixed(1.5))
                                           .Body(5, 13, List().Fixed(-0.25))
                                           .Body(5, 14, List().Rgb(255, 0, 0))
                                           .Body(5, 15, List().I(21))
                                           .Body(5, 16, Line({-3, 4, 4, 3}))
                                           .Body(5, 17, List().I(3))
                                           .Body(5, 18, List().I(4).I(6).Fixed(0.5).Fixed(0.75))
                                           .Body(4, 4, TextAt(1, 2, "x")));
  EXPECT_EQ(style.expansion, 1.5);
  EXPECT_EQ(style.spacing, -0.25);
  EXPECT_EQ(style.color, kRed);
  EXPECT_EQ(style.height, 21);
  EXPECT_EQ(style.up, (Point{-3, 4}));
  EXPECT_EQ(style.base, (Point{4, 3}));
  EXPECT_EQ(style.path, vec::TextPath::kDown);
  EXPECT_EQ(style.across, vec::TextAcross::kContinuous);
  EXPECT_EQ(style.upright, vec::TextUpright::kContinuous);
  EXPECT_EQ(style.across_fraction, 0.5);
  EXPECT_EQ(style.upright_fraction, 0.75);
  EXPECT_FALSE(style.box_color);
}

TEST_F(TextTest, TextStandsUprightUnderADownwardAxis) {
  Metafile metafile;
  metafile.Picture(2, 6, Line({0, 100, 100, 0})).Body(4, 4, TextAt(3, 4, "x"));
  EXPECT_EQ(StyleOf(metafile).up, (Point{0, 1}));
  EXPECT_EQ(StyleOf(metafile).base, (Point{1, 0}));
  EXPECT_EQ(Loaded(metafile).As<vec::Text>().at, (Point{3, -4}));
  const vec::TextStyle style = StyleOf(Metafile()
                                           .Picture(2, 6, Line({0, 100, 100, 0}))
                                           .Body(5, 16, Line({0, -1, 1, 0}))
                                           .Body(4, 4, TextAt(3, 4, "x")));
  EXPECT_EQ(style.up, (Point{0, 1}));
}

TEST_F(TextTest, AppendedTextIsOneObject) {
  const Loaded loaded(Metafile()
                          .Body(4, 4, TextAt(1, 2, "one ", 0))
                          .Body(5, 14, List().Rgb(255, 0, 0))
                          .Body(4, 6, List().I(0).String("two "))
                          .Body(4, 6, List().I(1).String("three"))
                          .Body(4, 6, List().I(1).String("lost")));
  ASSERT_EQ(loaded.count(), 1U);
  const auto& text = loaded.As<vec::Text>();
  ASSERT_EQ(text.spans.size(), 3U);
  EXPECT_EQ(text.spans[0].text, "one ");
  EXPECT_EQ(text.spans[2].text, "three");
  EXPECT_EQ(loaded.TextStyle(text.spans[0].style).color, 0U);
  EXPECT_EQ(loaded.TextStyle(text.spans[1].style).color, kRed);
}

TEST_F(TextTest, TextThatIsNeverEndedIsDrawn) {
  EXPECT_EQ(Loaded(Metafile().Body(4, 4, TextAt(1, 2, "x", 0))).count(), 1U);
  const Loaded between(Metafile().Body(4, 4, TextAt(1, 2, "x", 0)).Body(4, 1, Line()));
  ASSERT_EQ(between.count(), 2U);
  EXPECT_EQ(between.As<vec::Text>().spans.size(), 1U);
}

TEST_F(TextTest, RestrictedTextHasABox) {
  const Loaded loaded(Metafile()
                          .Body(5, 15, List().I(72))
                          .Body(4, 5, Line({200, 90, 1, 2, 1}).String("x"))
                          .Body(5, 42, List().I(3))
                          .Body(4, 5, Line({200, 90, 1, 2, 1}).String("x"))
                          .Body(4, 4, TextAt(1, 2, "x")));
  ASSERT_TRUE(loaded.As<vec::Text>().fit);
  EXPECT_EQ(loaded.As<vec::Text>().fit->x, 200);
  EXPECT_GT(loaded.As<vec::Text>().fit->y, 90) << "the box given holds capitals only";
  EXPECT_EQ(loaded.As<vec::Text>(1).fit->y, 90);
  EXPECT_EQ(loaded.As<vec::Text>().at, (Point{1, 2}));
  EXPECT_NEAR(loaded.TextStyle(loaded.As<vec::Text>().spans.at(0).style).height, 100, 1e-9);
  EXPECT_EQ(loaded.TextStyle(loaded.As<vec::Text>(2).spans.at(0).style).height, 72);
  EXPECT_FALSE(loaded.As<vec::Text>(2).fit);
}

TEST_F(TextTest, HeightsThatNothingSets) {
  EXPECT_EQ(StyleOf(Metafile().Body(4, 4, TextAt(1, 2, "x"))).height, 12);
  EXPECT_EQ(StyleOf(Metafile().Body(4, 4, TextAt(1, 2, "x")).Body(4, 1, Line({0, 0, 20000, 0}))).height, 200);
}

TEST_F(TextTest, LongStrings) {
  const std::string text(700, 'a');
  EXPECT_EQ(TextOf(Metafile().Body(4, 4, TextAt(1, 2, text))), text);
  const Octets chunks = List().Points({1, 2, 1}).LongString(text, 300).octets();
  EXPECT_EQ(TextOf(Metafile().BodyOctets(Element(4, 4, chunks, Form::kPartitioned, 100))), text);
}

TEST_F(TextTest, StringsBeyondTheListAreCut) {
  EXPECT_EQ(TextOf(Metafile().Body(4, 4, List().Points({1, 2, 1}).Add({200, 'a', 'b'}))), "ab");
  EXPECT_EQ(TextOf(Metafile().Body(4, 4, List().Points({1, 2, 1}).Add({255, 0xFF, 0xFF, 'a', 'b'}))), "ab");
  EXPECT_EQ(Loaded(Metafile().Body(4, 4, List().Points({1, 2, 1}).Add({255, 0xFF}))).count(), 0U);
}

TEST_F(TextTest, ControlOctetsAreLeftOut) {
  EXPECT_EQ(TextOf(Metafile().Body(4, 4, TextAt(1, 2, std::string("a\0b\x1B\x7F\x85\nc", 8)))), "abc");
  EXPECT_EQ(Loaded(Metafile().Body(4, 4, TextAt(1, 2, "\x01\x02"))).count(), 0U);
  EXPECT_EQ(Loaded(Metafile().Body(4, 4, TextAt(1, 2, ""))).count(), 0U);
}

TEST_F(TextTest, CharacterSets) {
  EXPECT_EQ(TextOf(Metafile().Body(4, 4, TextAt(1, 2, "caf\xE9"))), "caf\xC3\xA9");
  const List latin = List().I(0).String("B").I(1).String("A");
  EXPECT_EQ(TextOf(Metafile().Head(1, 14, latin).Body(5, 20, List().I(2)).Body(4, 4, TextAt(1, 2, "\xE9"))),
            "\xC3\xA9");
  for (const char* const tail : {"G", "/I", "%/G"}) {
    const List utf8 = List().I(0).String("B").I(4).String(tail);
    EXPECT_EQ(
        TextOf(
            Metafile()
                .Head(1, 14, utf8)
                .Body(5, 19, List().I(2))
                .Body(4, 4,
                      TextAt(1, 2, "\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80\xFF\xC0\x80\xED\xA0\x80\xC2\x85"))),
        "\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80\xC3\xBF\xC3\x80\xC3\xAD\xC2\xA0")
        << tail;
  }
}

TEST_F(TextTest, Fonts) {
  using vec::FontFamily;
  using vec::HersheyFace;
  const std::vector<std::pair<std::string, vec::Font>> fonts = {
      {"TIMES_ROMAN", {FontFamily::kSerif, false, false, {HersheyFace::kSimplexRoman}}},
      {"Times-BoldItalic", {FontFamily::kSerif, true, true, {HersheyFace::kSimplexRoman}}},
      {"HELVETICA", {FontFamily::kSans, false, false, {HersheyFace::kSimplexRoman}}},
      {"helvetica oblique", {FontFamily::kSans, false, true, {HersheyFace::kSimplexRoman}}},
      {"HELVETICA_BOLD", {FontFamily::kSans, true, false, {HersheyFace::kSimplexRoman}}},
      {"Courier", {FontFamily::kMono, false, false, {HersheyFace::kSimplexRoman}}},
      {"COURIER_BOLD_ITALIC", {FontFamily::kMono, true, true, {HersheyFace::kSimplexRoman}}},
      {"HERSHEY/GOTHIC_ENGLISH", {FontFamily::kHershey, false, false, HersheyFace::kGothicEnglish}},
      {"hershey:triplex_italic", {FontFamily::kHershey, false, false, HersheyFace::kTriplexItalic}},
      {"Hershey/Symbol_Math", {FontFamily::kHershey, false, false, HersheyFace::kSimplexRoman}},
      {"NITF1", {FontFamily::kSans, false, false, HersheyFace::kSimplexRoman}},
      {"", {FontFamily::kSans, false, false, HersheyFace::kSimplexRoman}}};
  List list;
  for (const auto& [name, font] : fonts) list.String(name);
  for (size_t i = 0; i < fonts.size(); ++i) {
    const Metafile metafile = Metafile()
                                  .Head(1, 13, list)
                                  .Body(5, 10, List().I(static_cast<int>(i + 1)))
                                  .Body(4, 4, TextAt(1, 2, "x"));
    EXPECT_EQ(StyleOf(metafile).font, fonts[i].second) << fonts[i].first;
  }
  for (const int index : {0, -1, 13, 32767}) {
    EXPECT_EQ(
        StyleOf(Metafile().Head(1, 13, list).Body(5, 10, List().I(index)).Body(4, 4, TextAt(1, 2, "x"))).font,
        vec::Font());
  }
}

TEST_F(TextTest, TheSymbolFontHasGreekLetters) {
  EXPECT_EQ(TextOf(Metafile().Head(1, 13, List().String("Symbol")).Body(4, 4, TextAt(1, 2, "ab1"))),
            "\u03B1\u03B2"
            "1");
}

}  // namespace
}  // namespace tavi::test

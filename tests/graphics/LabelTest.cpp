// Labels: where their lines go, in which colours, and what stops them.
#include "GraphicsTest.h"

namespace graphics {
namespace {

class Label : public GraphicsTest {
 protected:
  static NtfBuilder File(const std::string& text, const Bytes& ltc = {10, 20, 30},
                         const Bytes& lbc = {40, 50, 60}) {
    NtfBuilder builder;
    builder.layout = tavi_test::Layout::kNitf20;
    LabelSpec label;
    label.row = 11;
    label.column = 22;
    label.ltc = ltc;
    label.lbc = lbc;
    label.data = unit::ToBytes(text);
    builder.labels = {label};
    return builder;
  }

  void SetUp() override {
    GraphicsTest::SetUp();
    host_.emplace();
    (*host_)->answers["TextOutA"] = 1;
  }
  void TearDown() override {
    host_.reset();
    GraphicsTest::TearDown();
  }
  Recording& host() { return **host_; }

  int32_t Draw(const NtfBuilder& file, int32_t row = 0, int32_t column = 0) {
    NitfFile document;
    Open(document, file);
    host().calls.clear();
    return tavi::DrawLabelSegment(canvas_.dc(), document, 0, row, column);
  }
  Calls Lines(const std::string& text) {
    EXPECT_EQ(Draw(File(text)), SUCCESS);
    return host().Of("TextOutA");
  }
  Canvas canvas_{200, 200};

 private:
  std::optional<Recorder> host_;
};

TEST_F(Label, CallsComeInThisOrder) {
  EXPECT_EQ(Draw(File("one\r\n\r\ntwo"), 100, 1000), SUCCESS);
  EXPECT_EQ(host().calls,
            (Calls{"SaveDC", "SetTextColor 0x1E140A", "SetBkColor 0x3C3228", "SetBkMode 2",
                   "TextOutA x=1022 y=111 'one'", "TextOutA x=1022 y=131 'two'", "RestoreDC 1"}));
}

TEST_F(Label, BothBreaksPartLinesAndRunsOfThemCountAsOne) {
  const Calls two = {"TextOutA x=22 y=11 'one'", "TextOutA x=22 y=31 'two'"};
  for (const char* text :
       {"one\r\n\r\ntwo", "one\rtwo", "one\ntwo", "\r\n\none\n\r\n\rtwo\r\n", "one\r\r\r\rtwo\n"}) {
    EXPECT_EQ(Lines(text), two) << text;
  }
  EXPECT_EQ(Lines("just one line, with blanks "),
            (Calls{"TextOutA x=22 y=11 'just one line, with blanks '"}));
  EXPECT_EQ(Lines("a\nb\nc\nd").back(), "TextOutA x=22 y=71 'd'");
}

TEST_F(Label, TextWithoutALineDrawsNothing) {
  for (const char* text : {"", "\n", "\r\n\r\n"}) {
    EXPECT_EQ(Lines(text), Calls{});
    EXPECT_EQ(host().calls.back(), "RestoreDC 1");
  }
}

TEST_F(Label, TextEndsAtItsFirstNul) {
  EXPECT_EQ(Lines(std::string("one\ntw\0o\nthree", 14)),
            (Calls{"TextOutA x=22 y=11 'one'", "TextOutA x=22 y=31 'tw'"}));
}

TEST_F(Label, BytesAreHandedOnWhateverTheyAre) {
  EXPECT_EQ(Lines("\x01\xFF\t\x80"), (Calls{"TextOutA x=22 y=11 '\x01\xFF\t\x80'"}));
}

TEST_F(Label, OnlyBlackIsNoBackground) {
  EXPECT_EQ(Draw(File("x", {0, 0, 0}, {0, 0, 0})), SUCCESS);
  EXPECT_EQ(host().Of("SetBkMode"), (Calls{"SetBkMode 1"}));
  EXPECT_EQ(host().Of("SetTextColor"), (Calls{"SetTextColor 0x0"}));
  for (const Bytes& lbc : {Bytes{0, 0, 1}, Bytes{1, 0, 0}, Bytes{255, 255, 255}}) {
    EXPECT_EQ(Draw(File("x", {255, 0, 0}, lbc)), SUCCESS);
    EXPECT_EQ(host().Of("SetBkMode"), (Calls{"SetBkMode 2"}));
    EXPECT_EQ(host().Of("SetTextColor"), (Calls{"SetTextColor 0xFF"}));
  }
  EXPECT_EQ(Draw(File("x", {0, 0, 0}, {0, 0, 1})), SUCCESS);
  EXPECT_EQ(host().Of("SetBkColor"), (Calls{"SetBkColor 0x10000"}));
}

TEST_F(Label, FailedTextOutIsNotLookedAt) {
  host().answers["TextOutA"] = 0;
  EXPECT_EQ(Lines("one\ntwo").size(), 2U);
}

TEST_F(Label, RowsWrapAt32Bits) {
  EXPECT_EQ(Draw(File("a\nb"), 2147483636, -2147483648), SUCCESS);
  EXPECT_EQ(host().Of("TextOutA"),
            (Calls{"TextOutA x=-2147483626 y=2147483647 'a'", "TextOutA x=-2147483626 y=-2147483629 'b'"}));
}

TEST_F(Label, DataCutShortTouchNothing) {
  NtfBuilder file = File("text");
  file.header["LL[0]"] = "005";
  EXPECT_EQ(Draw(file), ERR_FILE_READ);
  EXPECT_EQ(host().calls, Calls{});
}

TEST_F(Label, IndexThatIsNotThereIsRefused) {
  NitfFile document;
  Open(document, File("text"));
  EXPECT_EQ(tavi::DrawLabelSegment(canvas_.dc(), document, 1, 0, 0), ERR_INVALID_PARAMETER);
}

TEST_F(Label, StateOfTheContextIsPutBack) {
  SetTextColor(canvas_.dc(), 0x123456);
  SetBkColor(canvas_.dc(), 0x654321);
  SetBkMode(canvas_.dc(), 1);
  EXPECT_EQ(Draw(File("text")), SUCCESS);
  EXPECT_EQ(SetTextColor(canvas_.dc(), 0), 0x123456U);
  EXPECT_EQ(SetBkColor(canvas_.dc(), 0), 0x654321U);
  EXPECT_EQ(SetBkMode(canvas_.dc(), 2), 1);
}

TEST_F(Label, CompositionDrawsLabelsWhereTheyAreAttached) {
  NtfBuilder file = File("text");
  file.images = {GreyImage(30, 20).At(100, 50).Level(1)};
  file.labels[0].ldlvl = 2;
  file.labels[0].lalvl = 1;
  NitfFile document;
  Open(document, file);
  host().calls.clear();
  EXPECT_EQ(tavi::DrawObjects(nullptr, canvas_.dc(), document), SUCCESS);
  EXPECT_EQ(host().Of("TextOutA"), (Calls{"TextOutA x=72 y=111 'text'"}));
}

TEST_F(Label, SecondLabelHasItsOwnText) {
  NtfBuilder file = File("first");
  file.labels.push_back(file.labels[0]);
  file.labels[1].data = unit::ToBytes("second");
  file.labels[1].lxshd = tavi_test::Tre("TAG", "extension");
  NitfFile document;
  Open(document, file);
  host().calls.clear();
  EXPECT_EQ(tavi::DrawLabelSegment(canvas_.dc(), document, 1, 0, 0), SUCCESS);
  EXPECT_EQ(host().Of("TextOutA"), (Calls{"TextOutA x=22 y=11 'second'"}));
}

TEST_F(Label, LettersCoverTheirBoxAndNothingElse) {
  host().answers.clear();
  EXPECT_EQ(Draw(File("HHHH", {255, 0, 0}, {0, 255, 0})), SUCCESS);
  uint32_t red = 0;
  uint32_t green = 0;
  for (uint32_t y = 0; y < 200; ++y) {
    for (uint32_t x = 0; x < 200; ++x) {
      const uint32_t colour = canvas_.At(x, y);
      if (colour == 0xFFFFFF) continue;
      EXPECT_GE(x, 22U);
      EXPECT_GE(y, 11U);
      EXPECT_LT(y, 11U + 20U);
      red += (colour & 0xFF) > 200 && colour >> 8 < 60;
      green += (colour >> 8 & 0xFF) > 200 && (colour & 0xFF) < 60;
    }
  }
  EXPECT_GT(red, 50U);
  EXPECT_GT(green, red);
}

}  // namespace
}  // namespace graphics

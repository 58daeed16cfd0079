// Object symbols: the exact record of every primitive, byte by byte, the rectangle that is painted, and what fails.
#include <cmath>
#include <cstring>
#include <tuple>

#include "GraphicsTest.h"

namespace graphics {
namespace {

struct Xy {
  double x, y;
};

class ObjectSymbol : public GraphicsTest {
 protected:
  // A 2.0 symbol at row 100, column 200 whose second location is row 150, column 290: 31 wide, 21 high, pen 3.
  static NtfBuilder Symbol(const std::string& snum, const std::string& scolor = "R") {
    GraphicSpec graphic;
    graphic.sfmt = 'O';
    graphic.row = 100;
    graphic.column = 200;
    graphic.bound2_row = 150;
    graphic.bound2_column = 290;
    graphic.fields = {{"SNUM", snum},    {"SCOLOR", scolor}, {"NPIXPL", "0031"},
                      {"NLIPS", "0021"}, {"NWDTH", "0003"},  {"SROT", "045"}};
    return File(graphic, tavi_test::Layout::kNitf20);
  }

  void SetUp() override {
    GraphicsTest::SetUp();
    host_.emplace();
    (*host_)->answers["HostVecPaint"] = SUCCESS;
  }
  void TearDown() override {
    host_.reset();
    GraphicsTest::TearDown();
  }
  Recording& host() { return **host_; }

  int32_t Draw(const NtfBuilder& file, int32_t row = 0, int32_t column = 0, uint32_t paint = 1) {
    document_.emplace();
    Open(*document_, file);
    document_->PaintEachObject = paint;
    host().calls.clear();
    host().objects.clear();
    const int32_t status = tavi::DrawGraphicSegment(nullptr, canvas_.dc(), *document_, 0, row, column);
    is_empty_ = IsEmpty(*document_);
    document_.reset();
    return status;
  }
  bool is_empty() const { return is_empty_; }

  // ---- The records as they are laid out, put together by offset ----

  struct Expected {
    std::vector<uint8_t> bytes;
    Expected(uint32_t kind, uint32_t size) : bytes(size) {
      VectorObjectRecord defaults;
      HostVecInitObject(&defaults);
      std::memcpy(bytes.data(), &defaults, size);
      Word(0, size);
      Word(4, kind);
    }
    void Word(size_t offset, uint32_t value) { std::memcpy(&bytes[offset], &value, 4); }
    void Real(size_t offset, double value) { std::memcpy(&bytes[offset], &value, 8); }
    void Point(size_t offset, const Xy& p) {
      Real(offset, p.x);
      Real(offset + 8, p.y);
      Real(offset + 16, 0.0);
      Word(offset + 24, 0);
    }
    void Pen(size_t offset, uint32_t style, uint32_t width, uint32_t color) {
      Word(offset, 68);
      Word(offset + 4, style);
      Word(offset + 8, width);
      Word(offset + 12, 0);
      Word(offset + 16, color);
    }
    void Brush(size_t offset) {
      Word(offset, 220);
      std::memset(&bytes[offset + 28], 0, 16);
    }
  };

  static constexpr uint32_t kRed = 0x0000FF;
  static Expected Line(uint32_t style, const Xy& a, const Xy& b, uint32_t width = 3) {
    Expected e(2, 156);
    e.Point(32, a);
    e.Point(60, b);
    e.Pen(88, style, width, kRed);
    return e;
  }
  static Expected Rectangle(const Xy& a, const Xy& b) {
    Expected e(3, 376);
    e.Point(32, a);
    e.Point(60, b);
    e.Pen(88, 0, 3, kRed);
    e.Brush(156);
    return e;
  }
  static Expected Ellipse(const Xy& centre, double rx, double ry) {
    Expected e(7, 364);
    e.Real(32, centre.x);
    e.Real(40, centre.y);
    e.Real(48, 0.0);
    e.Word(56, 0);
    e.Pen(60, 0, 3, kRed);
    e.Brush(128);
    e.Real(348, rx);
    e.Real(356, ry);
    return e;
  }
  void ExpectRecord(const Expected& expected) {
    ASSERT_EQ(host().objects.size(), 1U);
    EXPECT_EQ(host().objects[0].record, expected.bytes);
  }
  void ExpectPolygon(const std::vector<Xy>& corners, bool brush) {
    ASSERT_EQ(host().objects.size(), 1U);
    AddedObject& object = host().objects[0];
    ASSERT_EQ(object.points.size(), corners.size());
    for (size_t i = 0; i < corners.size(); ++i) {
      // Copies: the members of a point stand on 4-byte places.
      const auto [x, y, z, word] =
          std::tuple(+object.points[i].x, +object.points[i].y, +object.points[i].z, +object.points[i].word24);
      EXPECT_EQ(x, corners[i].x) << "x of corner " << i;
      EXPECT_EQ(y, corners[i].y) << "y of corner " << i;
      EXPECT_EQ(z, 0.0);
      EXPECT_EQ(word, 0U);
    }
    Expected expected(6, 336);
    ASSERT_EQ(object.record.size(), 336U);
    std::memcpy(&expected.bytes[32], &object.record[32], 8);  // the address of the points
    expected.Word(40, static_cast<uint32_t>(corners.size()));
    expected.Pen(44, 0, 3, kRed);
    if (brush) expected.Brush(112);
    EXPECT_EQ(object.record, expected.bytes);
  }

  Canvas canvas_;

 private:
  std::optional<Recorder> host_;
  std::optional<NitfFile> document_;
  bool is_empty_ = false;
};

constexpr const char* kLayer = "HostVecAddLayer 144 'Object Layer' 1 0 0 4 word844=32768";

TEST_F(ObjectSymbol, CallsComeInThisOrder) {
  EXPECT_EQ(Draw(Symbol("000001")), SUCCESS);
  EXPECT_EQ(host().calls, (Calls{"HostVecInit 8194", kLayer, "HostVecSetActiveLayer", "HostVecAddObject 2",
                                 "HostVecResetView", "HostVecRefreshView",
                                 "HostVecPaint 1000x1000 (200,100,290,150)", "HostVecFree"}))
      << "the last one comes with the document's end";
}

TEST_F(ObjectSymbol, S1IsASolidLine) {
  EXPECT_EQ(Draw(Symbol("000001")), SUCCESS);
  ExpectRecord(Line(0, {200, 100}, {290, 150}));
}

TEST_F(ObjectSymbol, S2To6AreDashedLines) {
  for (const char* snum : {"000002", "000003", "000004", "000005", "000006"}) {
    SCOPED_TRACE(snum);
    EXPECT_EQ(Draw(Symbol(snum)), SUCCESS);
    ExpectRecord(Line(1, {200, 100}, {290, 150}));
    EXPECT_EQ(host().Of("HostVecPaint"), (Calls{"HostVecPaint 1000x1000 (200,100,290,150)"}));
  }
}

TEST_F(ObjectSymbol, S18IsASolidLineToo) {
  EXPECT_EQ(Draw(Symbol("000018")), SUCCESS);
  ExpectRecord(Line(0, {200, 100}, {290, 150}));
  EXPECT_EQ(host().Of("HostVecPaint"), (Calls{"HostVecPaint 1000x1000 (200,100,290,150)"}));
}

TEST_F(ObjectSymbol, NumbersWithoutAPrimitiveLeaveAnEmptyLayer) {
  for (const char* snum :
       {"000000", "000007", "000008", "000009", "000019", "000020", "999999", "-00001", "      ", "abcdef"}) {
    SCOPED_TRACE(snum);
    EXPECT_EQ(Draw(Symbol(snum)), SUCCESS);
    EXPECT_EQ(host().calls, (Calls{"HostVecInit 8194", kLayer, "HostVecSetActiveLayer", "HostVecFree"}));
    EXPECT_FALSE(is_empty()) << "the layer stays";
  }
}

TEST_F(ObjectSymbol, NumbersConvertUpToTheFirstOtherCharacter) {
  EXPECT_EQ(Draw(Symbol("   18x")), SUCCESS);
  ExpectRecord(Line(0, {200, 100}, {290, 150}));
}

constexpr const char* kFromCentre = "HostVecPaint 1000x1000 (200,100,231,121)";

TEST_F(ObjectSymbol, S10IsATriangleWithItsThirdCornerBelow) {
  EXPECT_EQ(Draw(Symbol("000010")), SUCCESS);
  ExpectPolygon({{200, 100}, {215, 79}, {200, 131}}, false);
  EXPECT_EQ(host().Of("HostVecPaint"), (Calls{kFromCentre}));
}

TEST_F(ObjectSymbol, S11And12AreRectangles) {
  for (const char* snum : {"000011", "000012"}) {
    EXPECT_EQ(Draw(Symbol(snum)), SUCCESS);
    ExpectRecord(Rectangle({185, 90}, {215, 110}));
    EXPECT_EQ(host().Of("HostVecPaint"), (Calls{kFromCentre}));
  }
}

TEST_F(ObjectSymbol, S13And14AreEllipsesWithTheWholeSizeAsRadii) {
  for (const char* snum : {"000013", "000014"}) {
    EXPECT_EQ(Draw(Symbol(snum)), SUCCESS);
    ExpectRecord(Ellipse({200, 100}, 31, 21));
    EXPECT_EQ(host().Of("HostVecPaint"), (Calls{kFromCentre}));
  }
}

TEST_F(ObjectSymbol, S15ClosesCrookedly) {
  EXPECT_EQ(Draw(Symbol("000015")), SUCCESS);
  ExpectPolygon({{231, 90}, {200, 90}, {200, 110}, {231, 131}}, true);
  EXPECT_EQ(host().Of("HostVecPaint"), (Calls{kFromCentre}));
}

TEST_F(ObjectSymbol, S16MeasuresTheWidthAlongYAndTheHeightAlongX) {
  EXPECT_EQ(Draw(Symbol("000016")), SUCCESS);
  ExpectPolygon({{200, 85}, {190, 100}, {200, 115}, {210, 100}}, true);
  EXPECT_EQ(host().Of("HostVecPaint"), (Calls{kFromCentre}));
}

TEST_F(ObjectSymbol, S17TakesTheTangentOfThirtyRadians) {
  EXPECT_EQ(Draw(Symbol("000017")), SUCCESS);
  const double k = 10.0 / std::tan(30.0);
  ASSERT_NEAR(k, 10.0 / -6.405331196646276, 1e-12);
  ExpectPolygon(
      {{200 + k, 90}, {200 - k, 90}, {200 - 2 * k, 100}, {200 - k, 110}, {200 + k, 110}, {200 + 2 * k, 100}},
      true);
  EXPECT_EQ(host().Of("HostVecPaint"), (Calls{kFromCentre}));
}

// ---- Places before the origin: which parts turn unsigned ----

class ObjectSymbolBeforeTheOrigin : public ObjectSymbol {
 protected:
  static constexpr double kWrap = 4294967296.0;
  // At row -10, column -20, the second location at row -3, column -4.
  int32_t DrawAt(const std::string& snum) {
    NtfBuilder file = Symbol(snum);
    file.graphics[0].bound2_row = 107;
    file.graphics[0].bound2_column = 216;
    return Draw(file, -110, -220);
  }
};

TEST_F(ObjectSymbolBeforeTheOrigin, LinesTurnUnsigned) {
  EXPECT_EQ(DrawAt("000001"), SUCCESS);
  ExpectRecord(Line(0, {kWrap - 20, kWrap - 10}, {kWrap - 4, kWrap - 3}));
  EXPECT_EQ(host().Of("HostVecPaint"), (Calls{"HostVecPaint 1000x1000 (-20,-10,-4,-3)"}));
}

TEST_F(ObjectSymbolBeforeTheOrigin, S18StaysSigned) {
  EXPECT_EQ(DrawAt("000018"), SUCCESS);
  ExpectRecord(Line(0, {-20, -10}, {-4, -3}));
  EXPECT_EQ(host().Of("HostVecPaint"), (Calls{"HostVecPaint 1000x1000 (-20,-10,-4,-3)"}));
}

TEST_F(ObjectSymbolBeforeTheOrigin, TriangleTurnsUnsignedInPart) {
  EXPECT_EQ(DrawAt("000010"), SUCCESS);
  ExpectPolygon({{-20, -10}, {kWrap - 5, kWrap - 31}, {-20, 21}}, false);
}

TEST_F(ObjectSymbolBeforeTheOrigin, RectangleTurnsUnsigned) {
  EXPECT_EQ(DrawAt("000011"), SUCCESS);
  ExpectRecord(Rectangle({kWrap - 35, kWrap - 20}, {kWrap - 5, 0}));
}

TEST_F(ObjectSymbolBeforeTheOrigin, EllipseStaysSigned) {
  EXPECT_EQ(DrawAt("000013"), SUCCESS);
  ExpectRecord(Ellipse({-20, -10}, 31, 21));
}

TEST_F(ObjectSymbolBeforeTheOrigin, CentresOfTheOtherPolygonsStaySigned) {
  EXPECT_EQ(DrawAt("000015"), SUCCESS);
  ExpectPolygon({{11, -20}, {-20, -20}, {-20, 0}, {11, 21}}, true);
  EXPECT_EQ(DrawAt("000016"), SUCCESS);
  ExpectPolygon({{-20, -25}, {-30, -10}, {-20, 5}, {-10, -10}}, true);
  EXPECT_EQ(DrawAt("000017"), SUCCESS);
  const double k = 10.0 / std::tan(30.0);
  ExpectPolygon(
      {{-20 + k, -20}, {-20 - k, -20}, {-20 - 2 * k, -10}, {-20 - k, 0}, {-20 + k, 0}, {-20 + 2 * k, -10}},
      true);
}

TEST_F(ObjectSymbolBeforeTheOrigin, NegativeSizesAreUnsigned) {
  NtfBuilder file = Symbol("000013");
  file.graphics[0].fields["NPIXPL"] = "-002";
  file.graphics[0].fields["NLIPS"] = "-001";
  EXPECT_EQ(Draw(file), SUCCESS);
  ExpectRecord(Ellipse({200, 100}, kWrap - 2, kWrap - 1));
  EXPECT_EQ(host().Of("HostVecPaint"), (Calls{"HostVecPaint 1000x1000 (200,100,198,99)"}));
  file.graphics[0].fields["SNUM"] = "000015";
  EXPECT_EQ(Draw(file), SUCCESS);
  ExpectPolygon({{200 + kWrap - 2, 100 - 2147483647.0},
                 {200, 100 - 2147483647.0},
                 {200, 100 + 2147483647.0},
                 {200 + kWrap - 2, 100 + kWrap - 2}},
                true);
}

TEST_F(ObjectSymbol, OffsetsWrapAt32Bits) {
  EXPECT_EQ(Draw(Symbol("000018"), 2147483647, 2147483647), SUCCESS);
  ExpectRecord(Line(0, {-2147483449.0, -2147483549.0}, {-2147483359.0, -2147483499.0}));
}

// ---- Colours, pen, painting ----

TEST_F(ObjectSymbol, EveryLetterHasItsColour) {
  const std::map<std::string, uint32_t> colours = {
      {"B", 0xFF0000}, {"N", 0xFFFFFF}, {"W", 0xFFFFFF}, {"O", 0x0096FF}, {"R", 0x0000FF},
      {"Y", 0x00FFFF}, {"K", 0},        {"C", 0},        {" ", 0},        {"r", 0}};
  for (const auto& [letter, colour] : colours) {
    EXPECT_EQ(Draw(Symbol("000001", letter)), SUCCESS);
    ASSERT_EQ(host().objects.size(), 1U);
    uint32_t pen = 1;
    std::memcpy(&pen, &host().objects[0].record[88 + 16], 4);
    EXPECT_EQ(pen, colour) << letter;
  }
}

TEST_F(ObjectSymbol, PenWidthIsThatOfTheFieldAsItConverts) {
  for (const auto& [text, width] : std::map<std::string, uint32_t>{
           {"0000", 0}, {"0012", 12}, {"9999", 9999}, {"-001", 0xFFFFFFFF}, {"x", 0}}) {
    NtfBuilder file = Symbol("000001");
    file.graphics[0].fields["NWDTH"] = text;
    EXPECT_EQ(Draw(file), SUCCESS);
    ExpectRecord(Line(0, {200, 100}, {290, 150}, width));
  }
}

TEST_F(ObjectSymbol, WithoutTheFlagTheObjectIsBuiltAndNotPainted) {
  EXPECT_EQ(Draw(Symbol("000010"), 0, 0, 0), SUCCESS);
  EXPECT_EQ(host().calls, (Calls{"HostVecInit 8194", kLayer, "HostVecSetActiveLayer", "HostVecAddObject 6",
                                 "HostVecFree"}));
  EXPECT_FALSE(is_empty());
}

// Without a context the object is built all the same; what painting it says then is the host's word.
TEST_F(ObjectSymbol, WithoutAContext) {
  for (const uint32_t paint : {0U, 1U}) {
    NitfFile document;
    Open(document, Symbol("000010"));
    document.PaintEachObject = paint;
    host().answers.clear();
    host().calls.clear();
    const int32_t status = tavi::DrawGraphicSegment(nullptr, nullptr, document, 0, 0, 0);
    EXPECT_EQ(status, paint == 0 ? SUCCESS : ERR_NULL_ARGUMENT);
    EXPECT_EQ(host().Of("HostVecAddObject"), Calls{"HostVecAddObject 6"});
    EXPECT_EQ(host().Of("HostVecPaint").size(), paint);
    EXPECT_EQ(IsEmpty(document), paint != 0) << "a failure empties it";
  }
}

TEST_F(ObjectSymbol, OfA21FileHasNoNumberAndDrawsNothing) {
  GraphicSpec graphic;
  graphic.sfmt = 'O';
  graphic.data = {1, 2, 3};
  EXPECT_EQ(Draw(File(graphic)), SUCCESS);
  EXPECT_EQ(host().calls, (Calls{"HostVecInit 8194", kLayer, "HostVecSetActiveLayer", "HostVecFree"}));
}

TEST_F(ObjectSymbol, FailedHostCallsAreReturnedAndEmptyTheVector) {
  for (const char* operation :
       {"HostVecAddLayer", "HostVecSetActiveLayer", "HostVecAddObject", "HostVecPaint"}) {
    SCOPED_TRACE(operation);
    for (const int32_t status : {-1, -13, 0, 2}) {
      host().answers[operation] = status;
      EXPECT_EQ(Draw(Symbol("000017")), status);
      EXPECT_TRUE(is_empty());
    }
    host().answers.erase(operation);
    host().answers["HostVecPaint"] = SUCCESS;
  }
}

TEST_F(ObjectSymbol, DataThatCannotBeReadComeFirst) {
  NtfBuilder file = Symbol("000001");
  file.graphics[0].data = {1, 2, 3};
  file.header["LS[0]"] = "000004";
  EXPECT_EQ(Draw(file), ERR_FILE_READ);
  EXPECT_EQ(host().Of("HostVecAddLayer"), Calls{});
}

}  // namespace
}  // namespace graphics

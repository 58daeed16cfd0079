// Files with graphics, through the exports only: what stands where in the composite.
#include "CgmPicture.h"
#include "ConformanceTest.h"

namespace tavi_test {
namespace {

constexpr CgmColour kRed = {255, 0, 0};
constexpr CgmColour kGreen = {0, 255, 0};
constexpr CgmColour kBlue = {0, 0, 255};
constexpr CgmColour kYellow = {255, 255, 0};
constexpr Rgb kRedPixel = {255, 0, 0};
constexpr Rgb kGreenPixel = {0, 255, 0};
constexpr Rgb kBluePixel = {0, 0, 255};
constexpr Rgb kYellowPixel = {255, 255, 0};
constexpr Rgb kGrey = {100, 100, 100};

struct Size {
  uint32_t width = 0;
  uint32_t height = 0;
  friend bool operator==(const Size&, const Size&) = default;
};

struct Box {
  int32_t left, top, right, bottom;
};

class GraphicsFiles : public ConformanceTest {
 protected:
  // A grey field with nothing on it.
  static NtfBuilder Field(uint32_t columns = 60, uint32_t rows = 40) {
    return NtfBuilder{GreyImage(columns, rows, Bytes(size_t{columns} * rows, 100)).Level(1)};
  }
  // The bounds of a drawing stand column first.
  static GraphicSpec Drawing(const CgmPicture& picture, const Box& box, uint32_t level = 2) {
    GraphicSpec graphic;
    graphic.sdlvl = level;
    graphic.bound1_row = box.left;
    graphic.bound1_column = box.top;
    graphic.bound2_row = box.right;
    graphic.bound2_column = box.bottom;
    graphic.data = picture.Build();
    return graphic;
  }
  static CgmPicture Filled(const CgmColour& colour) { return CgmPicture().Rectangle(0, 0, 100, 100, colour); }
  // Red above left, green above right, blue below left, yellow below right.
  static CgmPicture Quarters(CgmPicture::Sense sense = CgmPicture::Sense::kDown) {
    const bool down = sense == CgmPicture::Sense::kDown;
    const int top = down ? 0 : 200;
    const int bottom = down ? 200 : 0;
    CgmPicture picture(sense);
    picture.Rectangle(0, top, 100, 100, kRed).Rectangle(100, top, 200, 100, kGreen);
    return picture.Rectangle(0, 100, 100, bottom, kBlue).Rectangle(100, 100, 200, bottom, kYellow);
  }
  // Every pixel inside has the colour, every other one of the picture has not.
  static void ExpectExactly(const LoadedPicture& picture, const Box& box, const Rgb& colour) {
    ASSERT_EQ(picture.status, SUCCESS);
    for (uint32_t y = 0; y < picture.height; ++y) {
      for (uint32_t x = 0; x < picture.width; ++x) {
        const auto column = static_cast<int32_t>(x);
        const auto row = static_cast<int32_t>(y);
        const bool inside = column >= box.left && column < box.right && row >= box.top && row < box.bottom;
        ASSERT_EQ(picture.At(x, y) == colour, inside) << "at " << x << ", " << y;
      }
    }
  }
  static void ExpectQuarters(const LoadedPicture& picture, const std::vector<Rgb>& colours) {
    ASSERT_EQ(picture.status, SUCCESS);
    ASSERT_EQ(colours.size(), 4U);
    EXPECT_EQ(picture.At(15, 10), colours[0]);
    EXPECT_EQ(picture.At(24, 10), colours[1]);
    EXPECT_EQ(picture.At(15, 17), colours[2]);
    EXPECT_EQ(picture.At(24, 17), colours[3]);
    EXPECT_EQ(picture.At(9, 10), kGrey);
    EXPECT_EQ(picture.At(31, 10), kGrey);
    EXPECT_EQ(picture.At(15, 4), kGrey);
    EXPECT_EQ(picture.At(15, 22), kGrey);
  }
  Size SizeOf(const NtfBuilder& file) {
    const FileInformation information = Info(Write(file));
    EXPECT_EQ(information.status, SUCCESS);
    return {information.info.width, information.info.height};
  }
};

TEST_F(GraphicsFiles, DrawingFillsItsBounds) {
  NtfBuilder file = Field();
  file.graphics = {Drawing(Filled(kRed), {10, 5, 30, 20})};
  ExpectExactly(Load(file), {10, 5, 30, 20}, kRedPixel);
}

TEST_F(GraphicsFiles, DrawingIsScaledToItsBoundsAndNotByItsExtent) {
  NtfBuilder file = Field();
  file.graphics = {Drawing(Quarters(), {10, 5, 30, 21})};
  ExpectQuarters(Load(file), {kRedPixel, kGreenPixel, kBluePixel, kYellowPixel});
}

TEST_F(GraphicsFiles, DrawingsThatGrowUpwardStandUpright) {
  NtfBuilder file = Field();
  file.graphics = {Drawing(Quarters(CgmPicture::Sense::kUp), {10, 5, 30, 21})};
  ExpectQuarters(Load(file), {kRedPixel, kGreenPixel, kBluePixel, kYellowPixel});
}

TEST_F(GraphicsFiles, BoundsThatRunBackwardsMirror) {
  NtfBuilder file = Field();
  file.graphics = {Drawing(Quarters(), {30, 5, 10, 21})};
  ExpectQuarters(Load(file), {kGreenPixel, kRedPixel, kYellowPixel, kBluePixel});
  file.graphics = {Drawing(Quarters(), {10, 21, 30, 5})};
  file.images[0] = GreyImage(60, 60, Bytes(3600, 100)).Level(1);
  ExpectQuarters(Load(file), {kBluePixel, kYellowPixel, kRedPixel, kGreenPixel});
  file.graphics = {Drawing(Quarters(), {30, 21, 10, 5})};
  ExpectQuarters(Load(file), {kYellowPixel, kBluePixel, kGreenPixel, kRedPixel});
}

// A side begins with the pixel of its first bound and ends before that of its second, whichever way it runs.
TEST_F(GraphicsFiles, MirroredBoundsBeginWithTheFirstAndEndBeforeTheSecond) {
  const std::pair<Box, Box> cases[] = {{{10, 5, 30, 20}, {10, 5, 30, 20}},
                                       {{30, 5, 10, 20}, {11, 5, 31, 20}},
                                       {{10, 20, 30, 5}, {10, 6, 30, 21}},
                                       {{30, 20, 10, 5}, {11, 6, 31, 21}}};
  for (const auto& [bounds, covered] : cases) {
    SCOPED_TRACE(std::to_string(bounds.left) + " " + std::to_string(bounds.top));
    NtfBuilder file = Field();
    file.graphics = {Drawing(Filled(kRed), bounds)};
    ExpectExactly(Load(file), covered, kRedPixel);
  }
}

TEST_F(GraphicsFiles, EqualBoundsPaintOneUnitToAPixel) {
  NtfBuilder file = Field();
  CgmPicture picture;
  picture.Rectangle(5, 3, 15, 9, kBlue);
  file.graphics = {Drawing(picture, {20, 10, 20, 10})};
  ExpectExactly(Load(file), {25, 13, 35, 19}, kBluePixel);
}

TEST_F(GraphicsFiles, OnlyWhatIsDrawnCoversTheImage) {
  NtfBuilder file = Field();
  CgmPicture picture;
  picture.Rectangle(0, 0, 10, 20, kRed).Rectangle(30, 0, 40, 20, kRed);
  file.graphics = {Drawing(picture, {10, 5, 50, 25})};
  const LoadedPicture composite = Load(file);
  ASSERT_EQ(composite.status, SUCCESS);
  EXPECT_EQ(composite.At(15, 15), kRedPixel);
  EXPECT_EQ(composite.At(30, 15), kGrey);
  EXPECT_EQ(composite.At(45, 15), kRedPixel);
}

TEST_F(GraphicsFiles, LocationIsAddedRowFirst) {
  NtfBuilder file = Field();
  GraphicSpec graphic = Drawing(Filled(kRed), {0, 0, 10, 6});
  graphic.row = 20;
  graphic.column = 33;
  file.graphics = {graphic};
  ExpectExactly(Load(file), {33, 20, 43, 26}, kRedPixel);
}

TEST_F(GraphicsFiles, DrawingBeforeTheOriginIsCutOff) {
  NtfBuilder file = Field();
  GraphicSpec graphic = Drawing(Filled(kRed), {0, 0, 20, 12});
  graphic.row = -4;
  graphic.column = -10;
  file.graphics = {graphic};
  ExpectExactly(Load(file), {0, 0, 10, 8}, kRedPixel);
  graphic = Drawing(Filled(kBlue), {-10, -4, 10, 8});
  file.graphics = {graphic};
  ExpectExactly(Load(file), {0, 0, 10, 8}, kBluePixel);
}

TEST_F(GraphicsFiles, AttachedDrawingMovesWithWhatItHangsFrom) {
  NtfBuilder file = Field();
  file.images.push_back(GreyImage(5, 5, Bytes(25, 7)).At(10, 20).Level(2, 1));
  GraphicSpec graphic = Drawing(Filled(kRed), {0, 0, 6, 4}, 3);
  graphic.salvl = 2;
  graphic.row = 8;
  graphic.column = 9;
  GraphicSpec second = Drawing(Filled(kBlue), {0, 0, 3, 3}, 4);
  second.salvl = 3;
  second.row = -1;
  second.column = -2;
  file.graphics = {graphic, second};
  const LoadedPicture picture = Load(file);
  ASSERT_EQ(picture.status, SUCCESS);
  EXPECT_EQ(picture.At(34, 21), kRedPixel);
  EXPECT_EQ(picture.At(35, 22), kGrey);
  EXPECT_EQ(picture.At(26, 17), kGrey);
  EXPECT_EQ(picture.At(27, 17), kBluePixel);
  EXPECT_EQ(picture.At(29, 19), kBluePixel);
  EXPECT_EQ(picture.At(30, 18), kRedPixel);
}

TEST_F(GraphicsFiles, LevelsDecideWhatLiesOnTop) {
  for (const bool swapped : {false, true}) {
    NtfBuilder file = Field();
    file.graphics = {Drawing(Filled(kRed), {10, 10, 30, 30}, swapped ? 3 : 2),
                     Drawing(Filled(kBlue), {20, 20, 40, 38}, swapped ? 2 : 3)};
    const LoadedPicture picture = Load(file);
    ASSERT_EQ(picture.status, SUCCESS);
    EXPECT_EQ(picture.At(12, 12), kRedPixel);
    EXPECT_EQ(picture.At(38, 35), kBluePixel);
    EXPECT_EQ(picture.At(25, 25), swapped ? kRedPixel : kBluePixel);
  }
}

TEST_F(GraphicsFiles, ImageAboveADrawingCoversIt) {
  NtfBuilder file = Field();
  file.images.push_back(GreyImage(10, 10, Bytes(100, 7)).At(10, 10).Level(5));
  file.graphics = {Drawing(Filled(kRed), {5, 5, 30, 30}, 3)};
  const LoadedPicture picture = Load(file);
  ASSERT_EQ(picture.status, SUCCESS);
  EXPECT_EQ(picture.At(15, 15), (Rgb{7, 7, 7}));
  EXPECT_EQ(picture.At(25, 25), kRedPixel);
}

TEST_F(GraphicsFiles, WithoutAnImageTheDrawingsGiveTheSizeAndTheFileTheBackground) {
  NtfBuilder file;
  file.background = {10, 20, 30};
  file.graphics = {Drawing(Filled(kRed), {10, 5, 30, 20})};
  EXPECT_EQ(SizeOf(file), (Size{30, 20}));
  const LoadedPicture picture = Load(file);
  ExpectExactly(picture, {10, 5, 30, 20}, kRedPixel);
  EXPECT_EQ(picture.At(0, 0), (Rgb{10, 20, 30}));
}

TEST_F(GraphicsFiles, StrokesAreDrawnWithTheirWidth) {
  NtfBuilder file = Field();
  CgmPicture picture;
  picture.Line(0, 10, 40, 10, 4, kGreen);  // with its width it covers rows 8 to 12
  file.graphics = {Drawing(picture, {10, 20, 54, 24})};
  const LoadedPicture composite = Load(file);
  ASSERT_EQ(composite.status, SUCCESS);
  EXPECT_EQ(composite.At(30, 21), kGreenPixel);
  EXPECT_EQ(composite.At(30, 22), kGreenPixel);
  EXPECT_EQ(composite.At(30, 18), kGrey);
  EXPECT_EQ(composite.At(30, 25), kGrey);
}

TEST_F(GraphicsFiles, GreyLoadsDrawGraphicsAsWell) {
  NtfBuilder file = Field();
  file.graphics = {Drawing(Filled({250, 250, 250}), {10, 5, 30, 20})};
  LoadRequest request;
  request.bits = 8;
  const LoadedPicture picture = LoadFile(Write(file), request);
  ASSERT_EQ(picture.status, SUCCESS);
  EXPECT_EQ(picture.rows.at(10).pixels.at(15), 250);
  EXPECT_EQ(picture.rows.at(10).pixels.at(5), 100);
}

TEST_F(GraphicsFiles, FixedCanvasDrawsThemToo) {
  NtfBuilder file = Field();
  file.graphics = {Drawing(Filled(kRed), {1000, 1500, 1010, 1510})};
  const LoadedPicture picture = Load(file, TAVI_LOAD_FIXED_CANVAS);
  ASSERT_EQ(picture.status, SUCCESS);
  EXPECT_EQ(picture.width, 2048U);
  EXPECT_EQ(picture.At(1005, 1505), kRedPixel);
  EXPECT_EQ(picture.At(30, 30), kGrey);
}

TEST_F(GraphicsFiles, RenderedBitmapHoldsTheDrawing) {
  NtfBuilder file = Field();
  file.graphics = {Drawing(Filled(kRed), {10, 5, 30, 20})};
  NitfHandle document = nullptr;
  ASSERT_EQ(Tavi_NITFCreate(&document, Write(file).c_str()), SUCCESS);
  HostBitmap bitmap{};
  EXPECT_EQ(Tavi_NtfRenderBitmap(&bitmap, document), SUCCESS);
  Bytes row(bitmap.bytes_per_line);
  HostGetBitmapRow(&bitmap, row.data(), bitmap.height - 1 - 10, row.size());  // the last row is the top
  EXPECT_EQ(Bytes(row.begin() + 45, row.begin() + 48), (Bytes{0, 0, 255}));
  HostFreeBitmap(&bitmap);
  Tavi_NITFDestroy(&document);
}

TEST_F(GraphicsFiles, ManyDrawingsAreFoundByTheirLengths) {
  NtfBuilder file = Field(300, 40);
  for (int i = 0; i < 60; ++i) {
    CgmPicture picture;
    picture.Rectangle(0, 0, 10, 10, {static_cast<uint8_t>(4 * i), 9, 200});
    for (int extra = 0; extra < i % 7; ++extra)
      picture.Line(0, 5, 10, 5, 1, {static_cast<uint8_t>(4 * i), 9, 200});
    file.graphics.push_back(Drawing(picture, {5 * i, 3, 5 * i + 4, 30}, static_cast<uint32_t>(2 + i)));
    if (i % 4 == 0) file.graphics.back().sxshd = Tre("TAG", std::string(static_cast<size_t>(i), 'x'));
  }
  const LoadedPicture composite = Load(file);
  ASSERT_EQ(composite.status, SUCCESS);
  for (uint32_t i = 0; i < 60; ++i) {
    EXPECT_EQ(composite.At(5 * i + 2, 10), (Rgb{static_cast<uint8_t>(4 * i), 9, 200})) << i;
    EXPECT_EQ(composite.At(5 * i + 4, 10), kGrey);
  }
}

// What drawings may cover is shared by all of a composition: each alone is drawn, the third is too much.
TEST_F(GraphicsFiles, DrawingsThatCoverMuchShareWhatTheyMayCover) {
  NtfBuilder file = Field(2000, 2000);
  CgmPicture layers;
  for (int i = 0; i < 60; ++i) layers.Rectangle(0, 0, 100, 100, kRed);
  for (uint32_t level : {2U, 3U}) file.graphics.push_back(Drawing(layers, {0, 0, 2000, 2000}, level));
  EXPECT_EQ(Load(file).status, SUCCESS);
  file.graphics.push_back(Drawing(layers, {0, 0, 2000, 2000}, 4));
  EXPECT_EQ(Load(file).status, ERR_NO_MEMORY);
  file.graphics.erase(file.graphics.begin());
  EXPECT_EQ(Load(file).status, SUCCESS);
}

TEST_F(GraphicsFiles, SymbolsOfA21FilePaintNothing) {
  for (const char sfmt : {'B', 'O'}) {
    NtfBuilder file = Field();
    GraphicSpec graphic;
    graphic.sfmt = sfmt;
    graphic.sdlvl = 2;
    graphic.data = Bytes(20, 0xFF);
    graphic.fields["SCOLOR"] = "R";
    file.graphics = {graphic};
    for (const uint32_t flags : {0U, uint32_t{TAVI_LOAD_PAINT_EACH_OBJECT}}) {
      const LoadedPicture picture = Load(file, flags);
      ASSERT_EQ(picture.status, SUCCESS);
      for (const int grey : Greys(picture)) ASSERT_EQ(grey, 100);
    }
  }
}

TEST_F(GraphicsFiles, DataThatAreNoDrawingEndTheLoadAndTheSizing) {
  for (const Bytes& data : {Bytes{}, Bytes{'x'}, Bytes(200, 'g'), Bytes(10, 0)}) {
    NtfBuilder file = Field();
    file.graphics = {{.sdlvl = 2, .data = data}};
    EXPECT_EQ(OpenStatus(file.Build()), SUCCESS);
    EXPECT_EQ(Load(file).status, ERR_FILE_FORMAT) << data.size();
    EXPECT_EQ(Info(Write(file)).status, ERR_FILE_FORMAT);
  }
}

TEST_F(GraphicsFiles, DataCutShortEndTheLoad) {
  NtfBuilder file = Field();
  file.graphics = {Drawing(Filled(kRed), {10, 5, 30, 20})};
  const BuiltFile built = file.Build().Truncate("graphic[0].data", 40);
  EXPECT_EQ(LoadFile(Write(built)).status, ERR_FILE_READ);
}

TEST_F(GraphicsFiles, BrokenDrawingUnderAFixedCanvasEndsTheDrawing) {
  NtfBuilder file = Field();
  file.graphics = {{.sdlvl = 2, .data = {'x'}}};
  const LoadedPicture picture = Load(file, TAVI_LOAD_FIXED_CANVAS);
  EXPECT_EQ(picture.status, ERR_FILE_FORMAT);
  EXPECT_TRUE(picture.rows.empty());
}

TEST_F(GraphicsFiles, EmptyPictureIsADrawingOfNothing) {
  NtfBuilder file = Field();
  file.graphics = {Drawing(CgmPicture(), {10, 5, 30, 20})};
  const LoadedPicture picture = Load(file);
  ASSERT_EQ(picture.status, SUCCESS);
  for (const int grey : Greys(picture)) ASSERT_EQ(grey, 100);
}

}  // namespace
}  // namespace tavi_test

// Graphics appended from drawings, and drawings exchanged. Host drawings are y upward, rasters y downward.
#include <cmath>

#include "AppendTest.h"

namespace editing {
namespace {

constexpr HostRect kPlace = {10, 20, 30, 35};
constexpr uint32_t kRed = 0x0000FF;
constexpr uint32_t kBlue = 0xFF0000;

class AppendGraphic : public AppendTest {
 protected:
  static int32_t Append(NitfHandle document, Drawing& drawing, const HostRect& place = kPlace) {
    return Tavi_NITFAppendGraphicSegment(document, drawing.get(), &place);
  }
  // The path of a file of two drawings, red and blue, on a grey image of 50 x 50.
  [[nodiscard]] std::wstring FileOfTwo() const {
    NtfBuilder file;
    file.images = {tavi_test::GreyImage(50, 50, Bytes(2500, 128))};
    const Document document(Write(file));
    Drawing red(0, -10, 10, -1, kRed);
    Drawing blue(0, -10, 10, -1, kBlue);
    EXPECT_EQ(Append(document.handle, red), SUCCESS);
    EXPECT_EQ(Append(document.handle, blue, {35, 35, 45, 48}), SUCCESS);
    Saved(document.handle);
    std::filesystem::copy_file(Output(), directory() / "two.ntf",
                               std::filesystem::copy_options::overwrite_existing);
    return (directory() / "two.ntf").wstring();
  }
};

// The pixel's colour within the tolerance of the drawing's edges.
void ExpectPixel(const Composite& composite, uint32_t x, uint32_t y, uint32_t color) {
  ASSERT_LT(x, composite.width);
  ASSERT_LT(y, composite.height);
  const uint8_t* bgr = composite.At(x, y);
  EXPECT_NEAR(bgr[2], color & 0xFF, 2) << x << "," << y;
  EXPECT_NEAR(bgr[1], color >> 8 & 0xFF, 2) << x << "," << y;
  EXPECT_NEAR(bgr[0], color >> 16, 2) << x << "," << y;
}

TEST_F(AppendGraphic, AGraphicOfANewDocument) {
  const NewDocument document;
  Drawing drawing(3, -20, 23, -5);
  ASSERT_EQ(Append(document.handle, drawing), SUCCESS);
  EXPECT_EQ(Tavi_NITFGetGraphicHeaderCount(document.handle), 1);
  const GraphicRecord record(document.handle, 0);
  EXPECT_EQ(record.Text(offsetof(NitfGraphicHeaderInfo, SY)), "SY");
  EXPECT_EQ(record.Text(offsetof(NitfGraphicHeaderInfo, SFMT)), "C");
  EXPECT_EQ(+record->SDLVL, 1U);
  EXPECT_EQ(+record->SALVL, 0U) << "there is nothing to attach it to";
  EXPECT_EQ(+record->SLOC_ROW, 0U);
  EXPECT_EQ(+record->SLOC_COLUMN, 0U);
  EXPECT_EQ(+record->SBND1_FIRST, 10U);
  EXPECT_EQ(+record->SBND1_SECOND, 20U);
  EXPECT_EQ(+record->SBND2_FIRST, 30U);
  EXPECT_EQ(+record->SBND2_SECOND, 35U);

  const Bytes saved = Saved(document.handle);
  EXPECT_EQ(saved.size(), FileLength(document.handle));
  EXPECT_EQ(FieldAt(saved, kHlPlace, 6), "000398");
  EXPECT_EQ(FieldAt(saved, kNumiPlace, 10), "0000010258");
  EXPECT_EQ(NumberAt(saved, kNumiPlace + 10, 6), saved.size() - 398 - 258);
  constexpr size_t kFormat = 398 + 2 + 10 + 20 + 167 + 1;
  EXPECT_EQ(FieldAt(saved, kFormat, 1), "C");
  EXPECT_EQ(FieldAt(saved, kFormat + 1, 13 + 6), "0000000000000001000");
  EXPECT_EQ(FieldAt(saved, kFormat + 20, 20 + 1 + 10), "00000000000001000020C0003000035");
}

TEST_F(AppendGraphic, WhatIsSavedIsDrawn) {
  const std::wstring path = FileOfTwo();
  const Document document(path);
  ASSERT_EQ(document.open, SUCCESS);
  const Composite composite = Render(document.handle);
  ASSERT_EQ(composite.status, SUCCESS);
  ASSERT_EQ(composite.width, 50U);
  ASSERT_EQ(composite.height, 50U);
  for (const auto& [x, y] : {std::pair{11U, 21U}, {20U, 28U}, {28U, 33U}}) ExpectPixel(composite, x, y, kRed);
  for (const auto& [x, y] : {std::pair{36U, 36U}, {40U, 40U}, {43U, 46U}})
    ExpectPixel(composite, x, y, kBlue);
  for (const auto& [x, y] : {std::pair{8U, 21U}, {32U, 28U}, {20U, 37U}, {20U, 18U}, {47U, 47U}, {0U, 0U}}) {
    ExpectPixel(composite, x, y, 0x808080);
  }
  EXPECT_EQ(Saved(document.handle), ReadBytes(path));
}

TEST_F(AppendGraphic, LevelsAndAttachment) {
  NtfBuilder file;
  file.images = {tavi_test::GreyImage(4, 4).Level(30), tavi_test::GreyImage(4, 4).Level(7)};
  const Document document(Write(file));
  for (const uint32_t level : {31U, 32U, 33U}) {
    Drawing drawing(0, -9, 9, -1);
    ASSERT_EQ(Append(document.handle, drawing), SUCCESS);
    const GraphicRecord record(document.handle, level - 31);
    EXPECT_EQ(+record->SDLVL, level);
    EXPECT_EQ(+record->SALVL, 7U) << "the lowest there is";
  }
}

TEST_F(AppendGraphic, ADrawingAboveTheAxisIsMovedBelowIt) {
  for (const double high : {10.0, 0.5, 123.0}) {
    SCOPED_TRACE(high);
    const NewDocument document;
    Drawing drawing(2, -6, 12, high);
    const Drawing::Extents before = drawing.Reach();
    ASSERT_EQ(Append(document.handle, drawing), SUCCESS);
    const Drawing::Extents after = drawing.Reach();
    const double moved = -before.largest[1] - 1;
    EXPECT_DOUBLE_EQ(after.largest[1], -1);
    EXPECT_DOUBLE_EQ(after.smallest[1], before.smallest[1] + moved);
    EXPECT_DOUBLE_EQ(after.smallest[0], before.smallest[0]);
    EXPECT_DOUBLE_EQ(after.largest[0], before.largest[0]);
  }
}

TEST_F(AppendGraphic, ADrawingBelowTheAxisStays) {
  for (const double high : {0.0, -1.0, -50.0}) {
    const NewDocument document;
    Drawing drawing(2, -60, 12, high);
    const Drawing::Extents before = drawing.Reach();
    ASSERT_EQ(Append(document.handle, drawing), SUCCESS);
    EXPECT_DOUBLE_EQ(drawing.Reach().largest[1], before.largest[1]);
  }
}

TEST_F(AppendGraphic, HowFarADrawingMayReach) {
  struct Case {
    double left, low, right, high;
    int32_t status;
  };
  const Case cases[] = {{0, -10, 99999, -1, SUCCESS},    {0, -10, 99999.9, -1, SUCCESS},
                        {0, -10, 100000, -1, -13},       {0, -99999.9, 10, -1, SUCCESS},
                        {0, -100000, 10, -1, -13},       {0, -200000, 10, -100000, -13},
                        {-500000, -10, 10, -1, SUCCESS},  // the left side is not looked at
                        {0, -10, 1e30, -1, -13},         {0, -1e30, 1, -1, -13}};
  for (const Case& one : cases) {
    SCOPED_TRACE(std::to_string(one.left) + " " + std::to_string(one.low) + " " + std::to_string(one.right));
    const NewDocument document;
    Drawing drawing(one.left, one.low, one.right, one.high);
    const Drawing::Extents before = drawing.Reach();
    EXPECT_EQ(Append(document.handle, drawing), one.status);
    EXPECT_EQ(Tavi_NITFGetGraphicHeaderCount(document.handle), one.status == SUCCESS ? 1 : 0);
    EXPECT_DOUBLE_EQ(drawing.Reach().smallest[1], before.smallest[1]);
  }
}

TEST_F(AppendGraphic, WhatCannotBeAppended) {
  const Document document(Write(EditableFile()));
  const State before = StateOf(document.handle);
  Drawing drawing(0, -9, 9, -1);
  Drawing empty;
  EXPECT_EQ(Tavi_NITFAppendGraphicSegment(nullptr, drawing.get(), &kPlace), ERR_NULL_HANDLE);
  EXPECT_EQ(Tavi_NITFAppendGraphicSegment(document.handle, drawing.get(), nullptr), ERR_NULL_HANDLE);
  EXPECT_EQ(Tavi_NITFAppendGraphicSegment(document.handle, nullptr, nullptr), ERR_NULL_HANDLE);
  EXPECT_EQ(Tavi_NITFAppendGraphicSegment(document.handle, nullptr, &kPlace), ERR_NULL_ARGUMENT);
  EXPECT_EQ(Tavi_NITFAppendGraphicSegment(document.handle, empty.get(), &kPlace), ERR_INVALID_VECTOR);
  EXPECT_EQ(StateOf(document.handle), before);
}

TEST_F(AppendGraphic, NineHundredAndNinetyNine) {
  const NewDocument document;
  Drawing drawing(0, -9, 9, -1);
  for (int i = 1; i <= 999; ++i) ASSERT_EQ(Append(document.handle, drawing), SUCCESS);
  const State full = StateOf(document.handle);
  EXPECT_EQ(full.graphics, 999);
  EXPECT_EQ(full.saved.size(), full.file_length);
  EXPECT_EQ(Append(document.handle, drawing), 0);
  EXPECT_EQ(Tavi_NITFAppendGraphicSegment(document.handle, nullptr, &kPlace), 0) << "the limit comes first";
  EXPECT_EQ(StateOf(document.handle), full);
  const Document again(Output().wstring());
  ASSERT_EQ(again.open, SUCCESS);
  EXPECT_EQ(Tavi_NITFGetGraphicHeaderCount(again.handle), 999);
}

// Texts of the source file are looked for behind all graphics, also those that are not in it: they cannot be read any
// more, and a save that comes to them fails.
TEST_F(AppendGraphic, TextsOfTheSourceAreLostBehindANewGraphic) {
  const Document document(Write(EditableFile()));
  uint8_t text[18];
  ASSERT_EQ(Tavi_NITFGetTextSegment(document.handle, 0, text, nullptr), SUCCESS);
  Drawing drawing(0, -9, 9, -1);
  ASSERT_EQ(Append(document.handle, drawing), SUCCESS);
  EXPECT_EQ(Tavi_NITFGetTextSegment(document.handle, 0, text, nullptr), ERR_FILE_READ);
  EXPECT_EQ(Tavi_NITFSaveFile(document.handle, Output().wstring().c_str()), ERR_FILE_READ);
}

TEST_F(AppendGraphic, MixedDocuments) {
  // Which kinds, in which order.
  for (const char* order : {"igt", "tgi", "gti", "iigtgt", "gg", "tt", "gi", "ti", "tg"}) {
    SCOPED_TRACE(order);
    const NewDocument document;
    Picture picture(50, 50);
    int32_t counts[3] = {};
    for (const char* kind = order; *kind != '\0'; ++kind) {
      if (*kind == 'i') {
        ASSERT_EQ(Tavi_NITFAppendImageSegment(document.handle, picture.get(), 10, 24, 5), SUCCESS);
        ++counts[0];
      } else if (*kind == 'g') {
        Drawing drawing(0, -10, 10, -1, kRed);
        ASSERT_EQ(Append(document.handle, drawing), SUCCESS);
        ++counts[1];
      } else {
        ASSERT_EQ(Tavi_NITFAppendTextSegment(document.handle, TextFile("text").c_str()), SUCCESS);
        ++counts[2];
      }
    }
    const Bytes saved = Saved(document.handle);
    EXPECT_EQ(saved.size(), FileLength(document.handle));
    EXPECT_EQ(NumberAt(saved, kFlPlace, 12), saved.size());
    const Document again(Output().wstring());
    ASSERT_EQ(again.open, SUCCESS);
    EXPECT_EQ(Tavi_NITFGetImageHeaderCount(again.handle), counts[0]);
    EXPECT_EQ(Tavi_NITFGetGraphicHeaderCount(again.handle), counts[1]);
    EXPECT_EQ(Tavi_NITFGetTextHeaderCount(again.handle), counts[2]);
    const Composite composite = Render(again.handle);
    ASSERT_EQ(composite.status, SUCCESS);
    const uint32_t width = counts[0] != 0 ? 50U : counts[1] != 0 ? 30U : 2U;  // of the image, or by SBND2
    EXPECT_EQ(composite.width, width);
    if (std::string(order).starts_with("i") && counts[1] != 0) ExpectPixel(composite, 20, 28, kRed);
    if (counts[2] != 0) {
      uint8_t text[5];
      EXPECT_EQ(Tavi_NITFGetTextSegment(again.handle, 0, text, nullptr), SUCCESS);
      EXPECT_STREQ(reinterpret_cast<char*>(text), "text");
    }
    EXPECT_EQ(Saved(again.handle), saved);
  }
}

// ---- Drawings of segments ----

TEST_F(AppendGraphic, TheFirstDrawingIsTheOneThatIsLoaded) {
  const Document document(FileOfTwo());
  HostVector* second = Tavi_NITFGetVectorHandle(document.handle, 1);
  ASSERT_NE(second, nullptr);
  EXPECT_NE(HostVecIsEmpty(second), 0) << "it is not the one that was loaded";
  HostVector* first = Tavi_NITFGetVectorHandle(document.handle, 0);
  ASSERT_NE(first, nullptr);
  EXPECT_NE(first, second);
  EXPECT_EQ(HostVecIsEmpty(first), 0);
  EXPECT_EQ(Tavi_NITFGetVectorHandle(document.handle, 0), first);
  // A composition fills both.
  EXPECT_EQ(Render(document.handle).status, SUCCESS);
  EXPECT_EQ(HostVecIsEmpty(second), 0);
}

// What stands first decides for all: pixels cannot be painted without a context, an object is built without one.
TEST_F(AppendGraphic, ASymbolThatComesFirst) {
  for (const char kind : {'B', 'O'}) {
    SCOPED_TRACE(kind);
    NtfBuilder file;
    file.graphics.resize(2);
    file.graphics[0].sfmt = kind;
    file.graphics[0].data = Bytes(8, 0x55);
    file.graphics[1].sdlvl = 2;
    file.graphics[1].data = Bytes(9, 'g');
    const Document document(Write(file));
    ASSERT_EQ(document.open, SUCCESS);
    for (int times = 0; times < 2; ++times) {
      HostVector* first = Tavi_NITFGetVectorHandle(document.handle, 0);
      HostVector* second = Tavi_NITFGetVectorHandle(document.handle, 1);
      if (kind == 'B') {
        EXPECT_EQ(first, nullptr);
        EXPECT_EQ(second, nullptr);
        continue;
      }
      ASSERT_NE(first, nullptr);
      EXPECT_EQ(HostVecIsEmpty(first), 0);
      ASSERT_NE(second, nullptr);
      EXPECT_NE(HostVecIsEmpty(second), 0);
    }
  }
}

TEST_F(AppendGraphic, HandlesThatAreNot) {
  const Document document(FileOfTwo());
  EXPECT_EQ(Tavi_NITFGetVectorHandle(nullptr, 0), nullptr);
  EXPECT_EQ(Tavi_NITFGetVectorHandle(document.handle, 2), nullptr);
  EXPECT_EQ(Tavi_NITFGetVectorHandle(document.handle, 0xFFFFFFFF), nullptr);
  Drawing drawing(0, -9, 9, -1);
  EXPECT_EQ(Tavi_NITFSetVectorHandle(nullptr, 0, drawing.get()), ERR_NULL_HANDLE);
  EXPECT_EQ(Tavi_NITFSetVectorHandle(document.handle, 2, drawing.get()), ERR_INVALID_PARAMETER);
  EXPECT_EQ(Tavi_NITFSetVectorHandle(document.handle, 2, nullptr), ERR_INVALID_PARAMETER);
  EXPECT_EQ(Tavi_NITFSetVectorHandle(document.handle, 0, nullptr), ERR_NULL_ARGUMENT);
  Drawing empty;
  EXPECT_EQ(Tavi_NITFSetVectorHandle(document.handle, 0, empty.get()), ERR_INVALID_VECTOR);
}

// An appended drawing stands in memory, and what is loaded is looked for in the source file.
TEST_F(AppendGraphic, AnAppendedDrawingIsNotLoaded) {
  const NewDocument document;
  Drawing drawing(0, -9, 9, -1);
  ASSERT_EQ(Append(document.handle, drawing), SUCCESS);
  EXPECT_EQ(Tavi_NITFGetVectorHandle(document.handle, 0), nullptr);
  EXPECT_EQ(Render(document.handle).status, ERR_FILE_READ);
  Saved(document.handle);
  const Document again(Output().wstring());
  HostVector* loaded = Tavi_NITFGetVectorHandle(again.handle, 0);
  ASSERT_NE(loaded, nullptr);
  EXPECT_EQ(HostVecIsEmpty(loaded), 0);
}

TEST_F(AppendGraphic, AReplacedDrawingIsSaved) {
  const Document document(FileOfTwo());
  const Bytes before = Saved(document.handle);
  const uint32_t length = FileLength(document.handle);
  Drawing green(0, -7, 7, -1, 0x00FF00);
  ASSERT_EQ(Tavi_NITFSetVectorHandle(document.handle, 0, green.get()), SUCCESS);
  EXPECT_EQ(FileLength(document.handle), length) << "FL stays, whatever the new size";
  EXPECT_EQ(+GraphicRecord(document.handle, 0)->SBND2_FIRST, 30U);
  const Bytes after = Saved(document.handle);
  constexpr size_t kLengths = kNumiPlace + 3 + 16 + 3;  // LSSH and LS of the first graphic
  const size_t old_size = NumberAt(before, kLengths + 4, 6);
  const size_t new_size = NumberAt(after, kLengths + 4, 6);
  EXPECT_EQ(after.size() - before.size(), new_size - old_size);
  EXPECT_EQ(FieldAt(after, kLengths, 4), "0258");
  EXPECT_EQ(FieldAt(after, kLengths + 10, 10), FieldAt(before, kLengths + 10, 10));
  const Document again(Output().wstring());
  ASSERT_EQ(again.open, SUCCESS);
  const Composite composite = Render(again.handle);
  ASSERT_EQ(composite.status, SUCCESS);
  ExpectPixel(composite, 20, 28, 0x00FF00);
  ExpectPixel(composite, 40, 40, kBlue);
}

TEST_F(AppendGraphic, TheSegmentKeepsACopyOfItsNewDrawing) {
  const Document document(FileOfTwo());
  {
    Drawing green(0, -7, 7, -1, 0x00FF00);
    ASSERT_EQ(Tavi_NITFSetVectorHandle(document.handle, 1, green.get()), SUCCESS);
  }
  HostVector* kept = Tavi_NITFGetVectorHandle(document.handle, 1);
  ASSERT_NE(kept, nullptr);
  EXPECT_EQ(HostVecIsEmpty(kept), 0);
  HostRect bounds{};
  ASSERT_EQ(HostVecGetBounds(kept, 0, &bounds, 0), SUCCESS);
  EXPECT_EQ(bounds.right - bounds.left, 7);
  EXPECT_EQ(bounds.bottom - bounds.top, 6);
}

// An application may change a segment's own drawing and put it back.
TEST_F(AppendGraphic, ASegmentsOwnDrawingComesBack) {
  const Document document(FileOfTwo());
  HostVector* own = Tavi_NITFGetVectorHandle(document.handle, 0);
  ASSERT_NE(own, nullptr);
  VectorPoint by{};
  by.y = -100;
  HostVecTranslate(own, &by, 0, 0);
  HostVecApplyTransform(own);
  ASSERT_EQ(Tavi_NITFSetVectorHandle(document.handle, 0, own), SUCCESS);
  EXPECT_EQ(HostVecIsEmpty(own), 0);
  Saved(document.handle);
  const Document again(Output().wstring());
  HostVector* loaded = Tavi_NITFGetVectorHandle(again.handle, 0);
  ASSERT_NE(loaded, nullptr);
  EXPECT_EQ(HostVecIsEmpty(loaded), 0);
}

}  // namespace
}  // namespace editing

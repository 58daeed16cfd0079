// Drawings as picture files, and texts written into a context.
#include <png.h>

#include <string>
#include <string_view>

#include "PaintTest.h"

namespace tavi::test {
namespace {

using namespace host::vec;
using ExportTest = HostTest;

enum : uint32_t { kSvg = 1, kPng = 2, kPdf = 3 };

std::string Export(const Sketch& sketch, uint32_t kind) {
  Vector vector(sketch.drawing);
  HostGlobalMemory block = nullptr;
  uint64_t size = 0;
  EXPECT_EQ(HostVecExport(&block, vector.get(), kind, &size), SUCCESS);
  const std::vector<uint8_t> bytes = TakeBytes(block, size);
  return {bytes.begin(), bytes.end()};
}

Sketch Mixed() {
  Sketch sketch;
  Fill hatch;
  hatch.interior = Interior::kHatch;
  sketch.Draw(host::vec::Rectangle{{0, 0}, {60, -40}, {sketch.Add(hatch), sketch.Line(kRed, 4)}});
  sketch.Draw(CellArray{{10, -10}, {30, -30}, {30, -10}, 2, 1, {kRed, kBlue}, std::nullopt});
  sketch.Draw(Text{{5, -20}, {{"Text", sketch.Add(TextStyle())}}, std::nullopt});
  return sketch;
}

struct Picture {
  uint32_t width = 0;
  uint32_t height = 0;
  std::vector<uint8_t> rgba;
};

Picture ReadPng(const std::string& bytes) {
  Picture picture;
  png_image image{};
  image.version = PNG_IMAGE_VERSION;
  EXPECT_NE(png_image_begin_read_from_memory(&image, bytes.data(), bytes.size()), 0);
  image.format = PNG_FORMAT_RGBA;
  picture.width = image.width;
  picture.height = image.height;
  picture.rgba.resize(PNG_IMAGE_SIZE(image));
  EXPECT_NE(png_image_finish_read(&image, nullptr, picture.rgba.data(), 0, nullptr), 0);
  return picture;
}

TEST_F(ExportTest, APngShowsTheDrawingOnNothing) {
  Sketch sketch;
  sketch.Draw(host::vec::Rectangle{{100, 100}, {110, 80}, {sketch.Solid(kRed), kNone}});
  sketch.Draw(host::vec::Rectangle{{120, 80}, {130, 60}, {sketch.Solid(kBlue), kNone}});
  const Picture picture = ReadPng(Export(sketch, kPng));
  ASSERT_EQ(picture.width, 30u);
  ASSERT_EQ(picture.height, 40u);
  const auto at = [&](size_t x, size_t y) {
    const uint8_t* const p = &picture.rgba[(y * 30 + x) * 4];
    return std::vector<int>{p[0], p[1], p[2], p[3]};
  };
  EXPECT_EQ(at(5, 5), (std::vector<int>{255, 0, 0, 255}));
  EXPECT_EQ(at(25, 35), (std::vector<int>{0, 0, 255, 255}));
  EXPECT_EQ(at(25, 5)[3], 0);
}

TEST_F(ExportTest, ALargePngIsScaledDown) {
  Sketch sketch;
  sketch.Draw(host::vec::Rectangle{{0, 0}, {16384, -100}, {sketch.Solid(kRed), kNone}});
  const Picture picture = ReadPng(Export(sketch, kPng));
  EXPECT_EQ(picture.width, 8192u);
  EXPECT_EQ(picture.height, 50u);
}

TEST_F(ExportTest, ALargePngKeepsItsHatches) {
  Sketch sketch;
  Fill hatch;
  hatch.interior = Interior::kHatch;
  hatch.color = kRed;
  sketch.Draw(host::vec::Rectangle{{0, 0}, {4000, -2000}, {sketch.Add(hatch), kNone}});
  const Picture picture = ReadPng(Export(sketch, kPng));
  ASSERT_EQ(picture.width, 4000u);
  for (size_t y = 0; y < 2000; ++y) {
    ASSERT_EQ(picture.rgba[(y * 4000 + 3999) * 4 + 3], y % 7 == 0 ? 255 : 0) << y;
  }
}

TEST_F(ExportTest, SvgAndPdfAreWhatTheySay) {
  const std::string svg = Export(Mixed(), kSvg);
  EXPECT_NE(svg.find("<svg"), std::string::npos);
  EXPECT_NE(svg.find("viewBox=\"0 0 64 44\""), std::string::npos);
  EXPECT_NE(svg.find("</svg>"), std::string::npos);
  const std::string pdf = Export(Mixed(), kPdf);
  EXPECT_EQ(pdf.substr(0, 5), "%PDF-");
  EXPECT_NE(pdf.find("%%EOF"), std::string::npos);
}

TEST_F(ExportTest, WhatHasNoExtentStillHasAPage) {
  Sketch sketch;
  for (const uint32_t kind : {kSvg, kPng, kPdf}) EXPECT_FALSE(Export(sketch, kind).empty());
  sketch.Draw(Polyline{{{5, 5}, {5, 15}}, sketch.Line(kRed, 0)});
  EXPECT_EQ(ReadPng(Export(sketch, kPng)).width, 1u);
  sketch.Draw(Polyline{{{-1e300, 5}, {1e300, 15}}, sketch.Line(kRed, 0)});
  for (const uint32_t kind : {kSvg, kPng, kPdf}) EXPECT_FALSE(Export(sketch, kind).empty());
}

// The limit `paint`, for a while.
class PaintLimit {
 public:
  explicit PaintLimit(uint64_t pixels) : before_(HostGetLimit(HOST_LIMIT_PAINT)) {
    HostSetLimit(HOST_LIMIT_PAINT, pixels);
  }
  ~PaintLimit() { HostSetLimit(HOST_LIMIT_PAINT, before_); }
  PaintLimit(const PaintLimit&) = delete;
  PaintLimit& operator=(const PaintLimit&) = delete;

 private:
  uint64_t before_;
};

void ExpectRefused(const Sketch& sketch, uint32_t kind) {
  Vector vector(sketch.drawing);
  HostGlobalMemory block = nullptr;
  uint64_t size = 7;
  EXPECT_EQ(HostVecExport(&block, vector.get(), kind, &size), ERR_NO_MEMORY) << kind;
  EXPECT_EQ(HostLimitHit(), uint32_t{HOST_LIMIT_PAINT}) << kind;
  EXPECT_EQ(block, nullptr);
  EXPECT_EQ(size, 0u);
}

TEST_F(ExportTest, PagesKeepTheLimitOfPainting) {
  Sketch texts;
  texts.Draw(Text{{0, 0}, {{std::string(200, 'W'), texts.Add(TextStyle())}}, std::nullopt});
  Sketch pictures;
  pictures.Draw(CellArray{{0, 0}, {300, 300}, {300, 0}, 2, 1, {kRed, kBlue}, std::nullopt});
  Sketch hatches;
  Fill hatch;
  hatch.interior = Interior::kHatch;
  hatches.Draw(host::vec::Rectangle{{0, 0}, {400, 400}, {hatches.Add(hatch), kNone}});
  for (Sketch* const sketch : {&texts, &pictures, &hatches}) {
    sketch->drawing.objects.assign(20, sketch->drawing.objects[0]);
    for (const uint32_t kind : {kSvg, kPng, kPdf}) {
      {
        const PaintLimit tight(10'000);
        ExpectRefused(*sketch, kind);
      }
      EXPECT_FALSE(Export(*sketch, kind).empty());
    }
  }
}

TEST_F(ExportTest, ObjectsEarnTheirRoomOnPages) {
  Sketch sketch;
  const uint32_t stroke = sketch.Line(kRed, 1);
  const uint32_t fill = sketch.Solid(kBlue);
  for (int i = 0; i < 1000; ++i) {
    sketch.Draw(Polyline{{{0, 1.0 * i}, {20, 2.0 * i}}, stroke});
    sketch.Draw(host::vec::Rectangle{{0, 1.0 * i}, {20, 2.0 + i}, {fill, kNone}});
  }
  const PaintLimit none(0);
  for (const uint32_t kind : {kSvg, kPdf}) EXPECT_FALSE(Export(sketch, kind).empty());
}

// A page of outlines takes many times the memory of its texts.
TEST_F(ExportTest, TooManyTextsForAPageAreRefused) {
  Sketch sketch;
  const uint32_t style = sketch.Add(TextStyle());
  const std::string line(250, 'W');
  for (int i = 0; i < 300; ++i) sketch.Draw(Text{{0, 1.0 * i}, {{line, style}}, std::nullopt});
  const PaintLimit tight(uint64_t{32} << 20);
  for (const uint32_t kind : {kSvg, kPdf}) ExpectRefused(sketch, kind);
}

TEST_F(ExportTest, StatusesAreTold) {
  Vector vector(Mixed().drawing);
  Vector empty;
  HostGlobalMemory block = nullptr;
  uint64_t size = 7;
  EXPECT_EQ(HostVecExport(nullptr, vector.get(), kSvg, &size), ERR_NULL_ARGUMENT);
  EXPECT_EQ(HostVecExport(&block, nullptr, kSvg, &size), ERR_NULL_ARGUMENT);
  EXPECT_EQ(HostVecExport(&block, vector.get(), kSvg, nullptr), ERR_NULL_ARGUMENT);
  EXPECT_EQ(HostVecExport(&block, vector.get(), 0, &size), ERR_NOT_SUPPORTED);
  EXPECT_EQ(HostVecExport(&block, vector.get(), 4, &size), ERR_NOT_SUPPORTED);
  EXPECT_EQ(HostVecExport(&block, empty.get(), kSvg, &size), ERR_INVALID_VECTOR);
  EXPECT_EQ(block, nullptr);
  EXPECT_EQ(size, 0u);
}

using TextOutTest = HostTest;

int32_t Write(const Context& context, int32_t x, int32_t y, std::string_view text) {
  return TextOutA(context.get(), x, y, text.data(), static_cast<int32_t>(text.size()));
}

TEST_F(TextOutTest, TheCellBeginsAtThePoint) {
  Paper paper;
  const Context context(paper.bitmap());
  SetTextColor(context.get(), kRed);
  SetBkColor(context.get(), kGreen);
  ASSERT_EQ(Write(context, 10, 30, "Hg"), 1);
  const Area box = paper.Inked();
  EXPECT_EQ(box.left, 10);
  EXPECT_EQ(box.top, 30);
  EXPECT_NEAR(box.height(), 18, 1);
  // H 0.722 and g 0.556 of 16 pixels.
  EXPECT_NEAR(box.width(), 21, 1);
  EXPECT_EQ(paper.At(10, 30), kGreen);
  EXPECT_GT(paper.Count(kRed), 10);
}

TEST_F(TextOutTest, ATransparentModeLeavesWhatIsBehind) {
  Paper paper;
  const Context context(paper.bitmap());
  SetBkColor(context.get(), kGreen);
  SetBkMode(context.get(), 1);
  ASSERT_EQ(Write(context, 10, 30, "H"), 1);
  EXPECT_EQ(paper.Count(kGreen), 0);
  const Area inked = paper.Inked();
  EXPECT_NEAR(inked.height(), 11, 2);
  EXPECT_NEAR(inked.top, 33, 2);
}

TEST_F(TextOutTest, Latin1IsWritten) {
  Paper plain;
  Paper accented;
  const Context first(plain.bitmap());
  const Context second(accented.bitmap());
  ASSERT_EQ(Write(first, 10, 30, "O"), 1);
  ASSERT_EQ(Write(second, 10, 30, "\xD6"), 1);
  EXPECT_GT(accented.Ink(), plain.Ink() + 2);
  EXPECT_EQ(accented.Inked().width(), plain.Inked().width());
}

TEST_F(TextOutTest, WhatCannotBeWrittenIsTold) {
  Paper paper;
  const Context context(paper.bitmap());
  EXPECT_EQ(TextOutA(nullptr, 0, 0, "x", 1), 0);
  EXPECT_EQ(TextOutA(context.get(), 0, 0, nullptr, 1), 0);
  EXPECT_EQ(TextOutA(context.get(), 0, 0, "x", -1), 0);
  EXPECT_EQ(TextOutA(context.get(), 0, 0, nullptr, 0), 1);
  EXPECT_EQ(TextOutA(context.get(), INT32_MIN, INT32_MAX, "far away", 8), 1);
  EXPECT_EQ(Write(context, 0, 0, "\r\n\t"), 1);
  EXPECT_EQ(paper.Inked().width(), 0);
}

}  // namespace
}  // namespace tavi::test

// Painting onto bitmaps of every kind, into every rectangle, in tiles, on threads, and with numbers meant to hurt.
#include <atomic>
#include <cmath>
#include <limits>
#include <thread>

#include "PaintTest.h"
#include "TaviVector/Geometry.h"
#include "TaviVector/Overlay.h"

namespace tavi::test {
namespace {

using namespace host::vec;
using PaintBitmapsTest = HostTest;

Sketch Block(uint32_t color, double left, double top, double right, double bottom) {
  Sketch sketch;
  sketch.Draw(host::vec::Rectangle{{left, -top}, {right, -bottom}, {sketch.Solid(color), kNone}});
  return sketch;
}

// The picture as 24 bits blue first, top row first: what painting it onto paper of that kind gives.
std::vector<uint32_t> AsColors(Bitmap& bitmap) {
  Paper paper(bitmap->width, bitmap->height);
  const Context context(paper.bitmap());
  EXPECT_EQ(Paint(context, bitmap,
                  {0, 0, static_cast<int32_t>(bitmap->width), static_cast<int32_t>(bitmap->height)}),
            SUCCESS);
  std::vector<uint32_t> colors;
  for (uint32_t y = 0; y < bitmap->height; ++y) {
    for (uint32_t x = 0; x < bitmap->width; ++x)
      colors.push_back(paper.At(static_cast<int>(x), static_cast<int>(y)));
  }
  return colors;
}

int32_t PaintOnto(Bitmap& bitmap, const Sketch& sketch, const HostRect& rectangle = {0, 0, 0, 0}) {
  Vector vector(sketch.drawing);
  const Context context(bitmap);
  return HostVecPaint(context.get(), vector.get(), 0, 0, 0, 0, &rectangle, 0, 0);
}

struct Kind {
  uint32_t bits;
  uint32_t order;
  uint32_t perspective;
};

std::vector<Kind> AllKinds() {
  std::vector<Kind> kinds;
  for (const uint32_t bits : {1u, 2u, 3u, 4u, 5u, 6u, 7u, 8u, 12u, 16u, 24u, 32u, 48u, 64u}) {
    for (const uint32_t order : {0u, 1u}) {
      for (const uint32_t perspective : {1u, 4u}) kinds.push_back({bits, order, perspective});
    }
  }
  return kinds;
}

TEST_F(PaintBitmapsTest, EveryDepthOrderAndPerspective) {
  for (const Kind& kind : AllKinds()) {
    SCOPED_TRACE(std::to_string(kind.bits) + " bits, order " + std::to_string(kind.order) + ", perspective " +
                 std::to_string(kind.perspective));
    Bitmap bitmap(40, 30, kind.bits, kind.order, kind.perspective);
    ASSERT_EQ(bitmap.status(), SUCCESS);
    HostFillBitmap(bitmap.get(), kBlack);
    const std::vector<uint32_t> before = AsColors(bitmap);
    ASSERT_EQ(PaintOnto(bitmap, Block(kPaper, 5, 3, 25, 13)), SUCCESS);
    const std::vector<uint32_t> after = AsColors(bitmap);
    for (size_t y = 0; y < 30; ++y) {
      for (size_t x = 0; x < 40; ++x) {
        const bool inside = x >= 5 && x < 25 && y >= 3 && y < 13;
        ASSERT_EQ(after[y * 40 + x], inside ? kPaper : before[y * 40 + x]) << x << ' ' << y;
      }
    }
  }
}

TEST_F(PaintBitmapsTest, ColoursKeepTheirChannels) {
  for (const uint32_t bits : {24u, 32u, 48u, 64u}) {
    for (const uint32_t order : {0u, 1u}) {
      Bitmap bitmap(10, 10, bits, order);
      HostFillBitmap(bitmap.get(), 0x102030);
      ASSERT_EQ(PaintOnto(bitmap, Block(0x123456, 0, 0, 5, 10)), SUCCESS);
      EXPECT_EQ(AsColors(bitmap)[0], 0x123456u) << bits << ' ' << order;
      EXPECT_EQ(AsColors(bitmap)[9], 0x102030u) << bits << ' ' << order;
    }
  }
}

TEST_F(PaintBitmapsTest, HalfCoveredPixelsAreHalfway) {
  for (const uint32_t bits : {8u, 12u, 16u, 24u, 32u, 48u, 64u}) {
    Bitmap bitmap(10, 10, bits);
    HostFillBitmap(bitmap.get(), kBlack);
    ASSERT_EQ(PaintOnto(bitmap, Block(kPaper, 2, 2, 7.5, 8)), SUCCESS);
    const uint32_t edge = AsColors(bitmap)[5 * 10 + 7];
    EXPECT_NEAR(edge & 0xFF, 128, 3) << bits;
    EXPECT_EQ(AsColors(bitmap)[5 * 10 + 6], kPaper) << bits;
  }
}

TEST_F(PaintBitmapsTest, PalettesGiveTheirNearestEntry) {
  Bitmap bitmap(10, 10, 8);
  const HostPaletteEntry entries[4] = {{0, 0, 0, 0}, {0, 0, 250, 0}, {0, 250, 0, 0}, {250, 0, 0, 0}};
  HostPutBitmapColors(bitmap.get(), 0, 4, entries);
  ASSERT_EQ(PaintOnto(bitmap, Block(kRed, 0, 0, 5, 10)), SUCCESS);
  EXPECT_EQ(bitmap.Row(5)[2], 1);
  EXPECT_EQ(bitmap.Row(5)[7], 0);
}

TEST_F(PaintBitmapsTest, RectanglesMirror) {
  const auto red = [](const HostRect& rectangle) {
    Sketch sketch = Block(kRed, -7, 100, 3, 120);
    sketch.Draw(host::vec::Rectangle{{3, -120}, {13, -140}, {sketch.Solid(kBlue), kNone}});
    Paper paper;
    EXPECT_EQ(paper.Paint(sketch.drawing, rectangle), SUCCESS);
    EXPECT_EQ(paper.Inked().width(), 40);
    EXPECT_EQ(paper.Inked().height(), 60);
    EXPECT_EQ(paper.Inked().left, 10);
    EXPECT_EQ(paper.Inked().top, 20);
    return std::pair(paper.Find(kRed).left, paper.Find(kRed).top);
  };
  EXPECT_EQ(red({10, 20, 50, 80}), std::pair(10, 20));
  EXPECT_EQ(red({49, 20, 9, 80}), std::pair(30, 20));
  EXPECT_EQ(red({10, 79, 50, 19}), std::pair(10, 50));
  EXPECT_EQ(red({49, 79, 9, 19}), std::pair(30, 50));
}

TEST_F(PaintBitmapsTest, AnEmptyRectangleIsOneUnitToAPixel) {
  for (const HostRect& rectangle :
       {HostRect{10, 20, 10, 20}, HostRect{10, 20, 90, 20}, HostRect{10, 20, 10, 90}}) {
    Paper paper;
    ASSERT_EQ(paper.Paint(Block(kRed, 5, 6, 15, 26).drawing, rectangle), SUCCESS);
    EXPECT_EQ(paper.Count(kRed), 200);
    EXPECT_EQ(paper.Find(kRed).left, 15);
    EXPECT_EQ(paper.Find(kRed).top, 26);
  }
}

TEST_F(PaintBitmapsTest, ADrawingWithoutExtentStandsInTheMiddle) {
  Sketch sketch;
  sketch.Draw(Polyline{{{0, 0}, {10, 0}}, sketch.Line(kRed, 0)});
  Paper paper;
  ASSERT_EQ(paper.Paint(sketch.drawing, {20, 20, 80, 40}), SUCCESS);
  EXPECT_EQ(paper.Count(kRed), 60);
  EXPECT_EQ(paper.Inked().top, 30);
  EXPECT_EQ(paper.Inked().left, 20);
}

TEST_F(PaintBitmapsTest, StatusesAreTold) {
  Paper paper;
  Vector vector(Block(kRed, 0, 0, 5, 5).drawing);
  const HostRect rectangle{0, 0, 10, 10};
  const Context context(paper.bitmap());
  EXPECT_EQ(HostVecPaint(nullptr, vector.get(), 0, 0, 0, 0, &rectangle, 0, 0), ERR_NULL_ARGUMENT);
  EXPECT_EQ(HostVecPaint(context.get(), nullptr, 0, 0, 0, 0, &rectangle, 0, 0), ERR_NULL_ARGUMENT);
  EXPECT_EQ(HostVecPaint(context.get(), vector.get(), 0, 0, 0, 0, nullptr, 0, 0), ERR_NULL_ARGUMENT);
  Vector empty;
  EXPECT_EQ(HostVecPaint(context.get(), empty.get(), 0, 0, 0, 0, &rectangle, 0, 0), SUCCESS);
  EXPECT_EQ(paper.Inked().width(), 0);
  HostFreeBitmap(paper.bitmap().get());
  EXPECT_EQ(HostVecPaint(context.get(), vector.get(), 0, 0, 0, 0, &rectangle, 0, 0), ERR_NO_BITMAP);
}

TEST_F(PaintBitmapsTest, TilesMeetWithoutSeams) {
  // Wider and higher than one tile, with all that could differ from tile to tile.
  constexpr uint32_t kSide = 2500;
  Sketch sketch;
  Fill hatch;
  hatch.interior = Interior::kHatch;
  hatch.hatch = Hatch::kHorizontal;
  hatch.color = kBlue;
  sketch.Draw(host::vec::Rectangle{{0, 0}, {kSide, -1000}, {sketch.Add(hatch), kNone}});
  Stroke dashed;
  dashed.width = 6;
  dashed.color = kRed;
  dashed.type = LineType::kCustom;
  dashed.dashes = {10, 10};
  sketch.Draw(Polyline{{{0, -1500}, {kSide, -1500}}, sketch.Add(dashed)});
  sketch.Draw(host::vec::Rectangle{{2000, -2000}, {2100, -2100}, {sketch.Solid(kGreen), kNone}});
  Paper paper(kSide, kSide);
  ASSERT_EQ(paper.Paint(sketch.drawing), SUCCESS);
  EXPECT_EQ(paper.Count(kBlue), 143 * 2500);
  EXPECT_EQ(paper.Count(kRed), 125 * 10 * 6);
  EXPECT_EQ(paper.Count(kGreen), 10000);
}

TEST_F(PaintBitmapsTest, TwoThreadsPaintAtOnce) {
  std::atomic<int> faults{0};
  const auto work = [&faults](uint32_t color) {
    for (int i = 0; i < 20; ++i) {
      Sketch sketch = Block(color, 10, 10, 90, 90);
      TextStyle style;
      style.font.family = static_cast<FontFamily>(i % 4);
      style.font.bold = i % 3 == 0;
      sketch.Draw(Text{{20, -50}, {{"Threads " + std::to_string(i), sketch.Add(style)}}, std::nullopt});
      Paper paper;
      if (paper.Paint(sketch.drawing) != SUCCESS || paper.At(12, 88) != color) ++faults;
    }
  };
  std::thread first(work, kRed);
  std::thread second(work, kGreen);
  first.join();
  second.join();
  EXPECT_EQ(faults, 0);
}

TEST_F(PaintBitmapsTest, NumbersThatHurtAreHarmless) {
  const double huge[] = {1e300, -1e300, 1e18, std::numeric_limits<double>::infinity(),
                         std::numeric_limits<double>::quiet_NaN()};
  for (const double a : huge) {
    for (const double b : huge) {
      Sketch sketch;
      Stroke stroke;
      stroke.width = b;
      stroke.type = LineType::kCustom;
      stroke.dashes = {a, 1};
      stroke.mitre_limit = a;
      const AreaStyle style{sketch.Solid(kRed), sketch.Add(stroke)};
      sketch.drawing.markers.push_back({MarkerType::kCircle, kRed, a, false});
      sketch.drawing.clips.push_back({{a, b}, {b, a}});
      TextStyle text;
      text.height = a;
      text.up = {b, a};
      sketch.Draw(Polyline{{{0, 0}, {a, b}, {b, 5}}, style.edge});
      sketch.Draw(host::vec::Polygon{{{{{0, 0}, {a, b}, {b, 5}, {1, 1}}, {}}}, style});
      sketch.Draw(host::vec::Ellipse{{a, b}, {b, 0}, {0, a}, style}, 0);
      sketch.Draw(Arc{{0, 0}, {b, 0}, {0, a}, a, b, Closure::kPie, style.edge, style});
      sketch.Draw(Figure{{{{0, 0}, {{{{a, b}, {b, a}, {1, 1}}}}, true}}, kNone, style});
      sketch.Draw(Markers{{{a, b}, {1, 1}}, 0});
      sketch.Draw(Text{{a, b}, {{"Text", sketch.Add(text)}}, Point{a, b}});
      sketch.Draw(CellArray{{a, b}, {b, a}, {1, 1}, 2, 2, {1, 2, 3, 4}, std::nullopt});
      for (const Object& object : sketch.drawing.objects) {
        const Box box = BoundsOf(sketch.drawing, object);
        for (const double value : {box.low.x, box.low.y, box.high.x, box.high.y})
          ASSERT_TRUE(std::isfinite(value));
      }
      Paper paper;
      EXPECT_EQ(paper.Paint(sketch.drawing), SUCCESS);
      EXPECT_EQ(paper.Paint(sketch.drawing, {0, 0, 100, 100}), SUCCESS);
    }
  }
}

TEST_F(PaintBitmapsTest, CrowdsOfLongLinesAndEdgesAreStillDrawn) {
  // Beyond what is drawn smoothly: lines that cover the paper, and a polygon whose edges do.
  Sketch lines;
  Noise noise(7);
  const auto anywhere = [&noise] {
    return Point{static_cast<double>(noise.Below(1000)), -static_cast<double>(noise.Below(1000))};
  };
  Polyline line;
  for (int i = 0; i < 20000; ++i) line.points.push_back(anywhere());
  line.stroke = lines.Line(kRed, 1);
  lines.Draw(line);
  Paper paper(1000, 1000);
  ASSERT_EQ(paper.Paint(lines.drawing), SUCCESS);
  EXPECT_GT(paper.Count(kRed), 900'000);
  Sketch areas;
  areas.Draw(host::vec::Polygon{{{line.points, {}}}, {areas.Solid(kBlue), kNone}});
  Paper second(1000, 1000);
  ASSERT_EQ(second.Paint(areas.drawing), SUCCESS);
  EXPECT_NEAR(second.Count(kBlue), 500'000, 50'000);
}

TEST_F(PaintBitmapsTest, RoughAreasCoverTheSamePixels) {
  // A saw with vertical edges on whole pixels: the rule for crowded areas must give what the rasteriser gives.
  Ring saw;
  for (int i = 0; i < 600; ++i) {
    const double y = i % 4 == 0 || i % 4 == 3 ? 0 : -2000;
    saw.points.push_back({static_cast<double>(i / 2), y});
  }
  Sketch sketch;
  sketch.Draw(host::vec::Polygon{{saw}, {sketch.Solid(kRed), kNone}});
  Sketch crowded = sketch;
  auto& rings = std::get<host::vec::Polygon>(crowded.drawing.objects[0].shape).rings;
  // The same ring twice more leaves the area as it is.
  rings.push_back(rings[0]);
  rings.push_back(rings[0]);
  for (int i = 0; i < 4; ++i) rings.insert(rings.end(), {saw, saw});
  Paper smooth(300, 2000);
  Paper rough(300, 2000);
  ASSERT_EQ(smooth.Paint(sketch.drawing), SUCCESS);
  ASSERT_EQ(rough.Paint(crowded.drawing), SUCCESS);
  EXPECT_EQ(rough.Count(kRed), smooth.Count(kRed));
  EXPECT_GT(rough.Count(kRed), 200'000);
}

TEST_F(PaintBitmapsTest, DashesPastCountingAreSolid) {
  Sketch sketch;
  Stroke stroke;
  stroke.type = LineType::kCustom;
  stroke.width = 4;
  stroke.dashes = {1e-9, 1e-9};
  sketch.Draw(Polyline{{{0, -50}, {100, -50}}, sketch.Add(stroke)});
  Paper paper;
  ASSERT_EQ(paper.Paint(sketch.drawing), SUCCESS);
  EXPECT_EQ(paper.Count(kBlack), 400);
}

}  // namespace
}  // namespace tavi::test

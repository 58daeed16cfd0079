// Numbers at every precision.
#include <limits>

#include "CgmTest.h"

namespace tavi::test {
namespace {

class PrecisionTest : public CgmTest {};

constexpr int kPrecisions[] = {8, 16, 24, 32};

TEST_F(PrecisionTest, VdcIntegers) {
  for (const int bits : {16, 24, 32}) {
    const Loaded loaded(
        Metafile().Body(3, 1, List().I(bits)).Body(4, 1, List().Points({-300, 200, 5, -6}, bits)));
    EXPECT_EQ(loaded.As<vec::Polyline>().points, (std::vector<Point>{{-300, 200}, {5, -6}})) << bits;
  }
  const Loaded loaded(
      Metafile().Body(3, 1, List().I(32)).Body(4, 1, List().Points({INT32_MIN, INT32_MAX, 0, 0}, 32)));
  EXPECT_EQ(loaded.As<vec::Polyline>().points[0], (Point{-2147483648.0, 2147483647.0}));
}

TEST_F(PrecisionTest, VdcReals) {
  const auto check = [](int kind, int a, int b, const List& points) {
    const Loaded loaded(
        Metafile().Bare().Head(1, 3, List().I(1)).Body(3, 2, List().I(kind).I(a).I(b)).Body(4, 1, points));
    ASSERT_EQ(loaded.count(), 1U) << kind << a;
    ExpectNear(loaded.As<vec::Polyline>().points[0], {-8.66, 0.25}, 2e-5);
    ExpectNear(loaded.As<vec::Polyline>().points[1], {1234.5, -1}, 2e-5);
  };
  check(1, 16, 16, List().Fixed(-8.66).Fixed(0.25).Fixed(1234.5).Fixed(-1));
  check(1, 32, 32, List().Fixed64(-8.66).Fixed64(0.25).Fixed64(1234.5).Fixed64(-1));
  check(0, 9, 23, List().Float(-8.66F).Float(0.25F).Float(1234.5F).Float(-1));
  check(0, 12, 52, List().Double(-8.66).Double(0.25).Double(1234.5).Double(-1));
  // -8.66 as it is known from other writers.
  check(1, 16, 16, List().Add({0xFF, 0xF7, 0x57, 0x0A}).Fixed(0.25).Fixed(1234.5).Fixed(-1));
}

TEST_F(PrecisionTest, Integers) {
  for (const int bits : kPrecisions) {
    // A cell array: its sides and depth are integers.
    const List cells = List()
                           .Points({0, 0, 2, 1, 2, 0})
                           .I(2, bits)
                           .I(1, bits)
                           .I(8, bits)
                           .I(1)
                           .Align()
                           .Rgb(255, 0, 0)
                           .Rgb(0, 255, 0);
    const Loaded loaded(Metafile().Head(1, 4, List().I(bits)).Body(4, 9, cells));
    EXPECT_EQ(loaded.As<vec::CellArray>().colors, (std::vector<uint32_t>{kRed, kGreen})) << bits;
  }
}

TEST_F(PrecisionTest, APrecisionIsReadAtTheOneBefore) {
  const Loaded loaded(Metafile()
                          .Head(1, 4, List().I(32))
                          .Head(1, 4, List().I(8, 32))
                          .Head(1, 7, List().I(16, 8))
                          .Body(5, 4, List().I(255).I(0).I(0))
                          .Body(4, 1, Line()));
  EXPECT_EQ(loaded.Stroke(loaded.As<vec::Polyline>().stroke).color, kRed);
}

TEST_F(PrecisionTest, Indices) {
  for (const int bits : kPrecisions) {
    const Loaded loaded(
        Metafile().Head(1, 6, List().I(bits)).Body(5, 2, List().I(3, bits)).Body(4, 1, Line()));
    EXPECT_EQ(loaded.Stroke(loaded.As<vec::Polyline>().stroke).type, vec::LineType::kDot) << bits;
  }
}

TEST_F(PrecisionTest, Names) {
  for (const int bits : kPrecisions) {
    const Loaded loaded(Metafile()
                            .Head(1, 16, List().I(bits))
                            .Body(5, 4, List().Rgb(255, 0, 0))
                            .Body(3, 11, List().I(-3, bits))
                            .Body(5, 4, List().Rgb(0, 255, 0))
                            .Body(3, 12, List().I(-3, bits))
                            .Body(4, 1, Line()));
    EXPECT_EQ(loaded.Stroke(loaded.As<vec::Polyline>().stroke).color, kRed) << bits;
  }
}

TEST_F(PrecisionTest, ColorsWithTheirExtent) {
  for (const int bits : kPrecisions) {
    const int64_t full = bits == 8 ? 200 : 1000;
    const List extent = List().I(0, bits).I(0, bits).I(0, bits).I(full, bits).I(full, bits).I(full, bits);
    const Loaded loaded(Metafile()
                            .Head(1, 7, List().I(bits))
                            .Head(1, 10, extent)
                            .Body(5, 4, List().I(full, bits).I(0, bits).I(full / 2, bits))
                            .Body(4, 1, Line()));
    EXPECT_EQ(loaded.Stroke(loaded.As<vec::Polyline>().stroke).color, 0x8000FFU) << bits;
  }
}

// L, a and b as whole numbers with a tenth of a step; red, green and blue in percent.
TEST_F(PrecisionTest, ColorExtentsWithScales) {
  List lab;
  for (const double number : {0.5, 0.0, 1.0, -100.0, 1.0, -100.0}) lab.Fixed(number);
  const auto color = [](int model, const List& extent, const Octets& value) {
    const Loaded loaded(Metafile()
                            .Head(1, 19, List().I(model))
                            .Head(1, 10, extent)
                            .Body(5, 4, List().Add(value))
                            .Body(4, 1, Line()));
    return loaded.Stroke(loaded.As<vec::Polyline>().stroke).color;
  };
  for (const int model : {2, 3}) {
    EXPECT_GE(color(model, lab, {200, 100, 100}) & 0xFF, 253U);
    EXPECT_EQ(color(model, lab, {0, 100, 100}), 0U);
  }
  List percent;
  for (int i = 0; i < 3; ++i) percent.Fixed(0.01).Fixed(0);
  EXPECT_EQ(color(5, percent, {100, 0, 51}), 0x8200FFU);
  // One that is cut or has no scale changes nothing.
  EXPECT_EQ(color(5, List().Fixed(0.01).Fixed(0), {255, 0, 0}), kRed);
  List flat;
  for (int i = 0; i < 6; ++i) flat.Fixed(0);
  EXPECT_EQ(color(5, flat, {255, 0, 0}), kRed);
}

TEST_F(PrecisionTest, ColorIndices) {
  for (const int bits : kPrecisions) {
    const Loaded loaded(Metafile()
                            .Head(1, 8, List().I(bits))
                            .Picture(2, 2, List().I(0))
                            .Body(5, 34, List().I(200, bits).Rgb(1, 2, 3).Rgb(0, 255, 0))
                            .Body(5, 4, List().I(201, bits))
                            .Body(4, 1, Line()));
    EXPECT_EQ(loaded.Stroke(loaded.As<vec::Polyline>().stroke).color, kGreen) << bits;
  }
}

TEST_F(PrecisionTest, FourComponents) {
  const Loaded loaded(
      Metafile().Head(1, 19, List().I(4)).Body(5, 4, List().Add({0, 255, 255, 0})).Body(4, 1, Line()));
  EXPECT_EQ(loaded.Stroke(loaded.As<vec::Polyline>().stroke).color, kRed);
}

TEST_F(PrecisionTest, PerceivedColors) {
  for (const int model : {2, 3}) {
    const Loaded loaded(Metafile()
                            .Head(1, 19, List().I(model))
                            .Body(5, 4, List().Add({255, 128, 128}))
                            .Body(4, 1, Line())
                            .Body(5, 4, List().Add({0, 128, 128}))
                            .Body(4, 1, Line()));
    const uint32_t white = loaded.Stroke(loaded.As<vec::Polyline>().stroke).color;
    EXPECT_GE(white & 0xFF, 253U);
    EXPECT_GE(white >> 16 & 0xFF, 253U);
    EXPECT_EQ(loaded.Stroke(loaded.As<vec::Polyline>(1).stroke).color, 0U);
  }
}

TEST_F(PrecisionTest, UnknownPrecisionsChangeNothing) {
  Metafile metafile;
  for (const int bits : {0, 1, 7, 9, 15, 40, 64, -8, 32000}) {
    for (const int id : {4, 6, 7, 8, 16}) metafile.Head(1, id, List().I(bits));
    metafile.Head(1, 5, List().I(0).I(bits).I(23))
        .Body(3, 1, List().I(bits))
        .Body(3, 2, List().I(2).I(bits).I(9));
  }
  metafile.Body(3, 1, List().I(8));  // coordinates have 16 bits at least
  metafile.Body(5, 2, List().I(2)).Body(5, 4, List().Rgb(0, 0, 255)).Body(4, 1, Line());
  const Loaded loaded(metafile);
  const vec::Stroke stroke = loaded.Stroke(loaded.As<vec::Polyline>().stroke);
  EXPECT_EQ(stroke.color, kBlue);
  EXPECT_EQ(stroke.type, vec::LineType::kDash);
}

TEST_F(PrecisionTest, NumbersThatAreNoneLoseTheirElement) {
  for (const float bad : {std::numeric_limits<float>::quiet_NaN(), std::numeric_limits<float>::infinity(),
                          -std::numeric_limits<float>::infinity(), 1e30F}) {
    const Loaded loaded(Metafile()
                            .Bare()
                            .Head(1, 3, List().I(1))
                            .Head(1, 5, List().I(0).I(9).I(23))
                            .Body(3, 2, List().I(0).I(9).I(23))
                            .Body(5, 3, List().Float(bad))
                            .Body(4, 1, List().Float(0).Float(bad).Float(1).Float(1))
                            .Body(4, 12, List().Float(0).Float(0).Float(bad))
                            .Body(4, 1, List().Float(0).Float(0).Float(1).Float(1)));
    ASSERT_EQ(loaded.count(), 1U);
    EXPECT_EQ(loaded.Stroke(loaded.As<vec::Polyline>().stroke).width, 1);
  }
}

}  // namespace
}  // namespace tavi::test

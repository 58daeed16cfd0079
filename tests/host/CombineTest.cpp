#include <algorithm>
#include <string>

#include "HostTest.h"
#include "Reference.h"

namespace tavi::test {
namespace {

using CombineTest = HostTest;

constexpr uint32_t kDepths[] = {1, 2, 3, 4, 5, 6, 7, 8, 12, 16, 24, 32, 48, 64};

struct CombineCase {
  int32_t x, y;
  uint32_t width, height;
  int32_t source_x, source_y;
};

int32_t Combine(Bitmap* target, const Bitmap& source, const CombineCase& c) {
  return HostCombineBitmap(target->get(), c.x, c.y, c.width, c.height, source.get(), c.source_x, c.source_y,
                           800);
}

// What RawPixel must give when pixels are taken over as they are.
std::vector<uint64_t> ReferenceCombine(const Bitmap& target, const Bitmap& source, const CombineCase& c) {
  std::vector<uint64_t> pixels = RawPixels(target);
  for (int64_t y = 0; y < target->height; ++y) {
    for (int64_t x = 0; x < target->width; ++x) {
      const int64_t right = x - c.x;
      const int64_t down = y - c.y;
      const int64_t from_x = right + c.source_x;
      const int64_t from_y = down + c.source_y;
      const bool inside = right >= 0 && right < c.width && down >= 0 && down < c.height && from_x >= 0 &&
                          from_x < source->width && from_y >= 0 && from_y < source->height;
      if (!inside) continue;
      pixels[static_cast<size_t>(y * target->width + x)] =
          RawPixel(source, static_cast<uint32_t>(from_x), static_cast<uint32_t>(from_y));
    }
  }
  return pixels;
}

void CheckCombine(Bitmap* target, const Bitmap& source, const CombineCase& c) {
  const std::vector<uint64_t> wanted = ReferenceCombine(*target, source, c);
  ASSERT_EQ(Combine(target, source, c), SUCCESS);
  ASSERT_EQ(RawPixels(*target), wanted)
      << source->bits << " bits at " << c.x << ',' << c.y << " from " << c.source_x << ',' << c.source_y
      << " size " << c.width << 'x' << c.height;
}

TEST_F(CombineTest, PixelsOfOneDepthAreTakenOverAtEveryOffset) {
  for (const uint32_t bits : kDepths) {
    Bitmap source(17, 4, bits);
    FillWithNoise(&source, bits);
    for (int32_t x = 0; x < 10; ++x) {
      for (int32_t source_x = 0; source_x < 9; ++source_x) {
        for (const uint32_t width : {1u, 2u, 5u, 8u, 17u}) {
          Bitmap target(26, 5, bits);
          FillWithNoise(&target, 77);
          CheckCombine(&target, source, {x, 1, width, 3, source_x, 0});
        }
      }
    }
  }
}

TEST_F(CombineTest, BytesOutsideTheRectangleStay) {
  for (const uint32_t bits : kDepths) {
    Bitmap source(9, 2, bits);
    Bitmap target(21, 4, bits);
    FillWithNoise(&source, 1);
    FillWithNoise(&target, 2);
    const std::vector<uint8_t> before = target.Bytes();
    ASSERT_EQ(Combine(&target, source, {3, 1, 9, 2, 0, 0}), SUCCESS);
    const std::vector<uint8_t> after = target.Bytes();
    const size_t line = target->bytes_per_line;
    for (size_t i = 0; i < before.size(); ++i) {
      const size_t row = i / line;
      const size_t first = i % line * 8;
      const bool outside = row < 1 || row > 2 || first + 8 <= size_t{3} * bits || first >= size_t{12} * bits;
      ASSERT_TRUE(!outside || after[i] == before[i]) << bits << " byte " << i;
    }
  }
}

TEST_F(CombineTest, PartsOutsideEitherBitmapAreLeftOut) {
  constexpr int32_t kMin = INT32_MIN;
  constexpr int32_t kMax = INT32_MAX;
  for (const uint32_t bits : {1u, 8u, 12u, 24u}) {
    Bitmap source(7, 5, bits);
    FillWithNoise(&source, bits);
    for (const CombineCase& c :
         {CombineCase{-3, -2, 7, 5, 0, 0}, CombineCase{8, 6, 7, 5, 0, 0}, CombineCase{0, 0, 100, 100, 0, 0},
          CombineCase{2, 2, 7, 5, -2, -1}, CombineCase{2, 2, 7, 5, 3, 4}, CombineCase{-2, -2, 9, 9, -4, -4},
          CombineCase{0, 0, 0, 5, 0, 0}, CombineCase{0, 0, 5, 0, 0, 0}, CombineCase{0, 0, 4, 4, 7, 0},
          CombineCase{10, 0, 4, 4, 0, 0}, CombineCase{kMin, kMin, UINT32_MAX, UINT32_MAX, kMin, kMin},
          CombineCase{kMax, kMax, UINT32_MAX, UINT32_MAX, kMax, kMax},
          CombineCase{kMin, 0, UINT32_MAX, 3, 0, 0}, CombineCase{0, 0, UINT32_MAX, UINT32_MAX, kMin, kMin}}) {
      Bitmap target(10, 8, bits);
      FillWithNoise(&target, 3);
      CheckCombine(&target, source, c);
    }
  }
}

TEST_F(CombineTest, BitmapsOfBothPerspectives) {
  for (const uint32_t perspectives : {0x11u, 0x14u, 0x41u, 0x44u}) {
    for (const uint32_t bits : {1u, 8u, 24u}) {
      Bitmap source(6, 5, bits, 1, perspectives >> 4);
      Bitmap target(9, 9, bits, 1, perspectives & 15);
      FillWithNoise(&source, 1);
      FillWithNoise(&target, 2);
      CheckCombine(&target, source, {2, 1, 6, 3, 0, 1});
    }
  }
}

TEST_F(CombineTest, PalettesAreNotLookedAtBetweenEqualOrders) {
  Bitmap source(3, 1, 8, 0);
  Bitmap target(3, 1, 8, 0);
  const HostPaletteEntry entry = {1, 2, 3, 0};
  HostPutBitmapColors(target.get(), 200, 1, &entry);
  source.SetRow(0, {200, 5, 7});
  ASSERT_EQ(Combine(&target, source, {0, 0, 3, 1, 0, 0}), SUCCESS);
  EXPECT_EQ(RawPixels(target), (std::vector<uint64_t>{200, 5, 7}));
}

TEST_F(CombineTest, OtherDepthsAndOrdersAreCombinedByColour) {
  for (const uint32_t from : kDepths) {
    for (const uint32_t to : kDepths) {
      if (from == to || from == 16) continue;
      Bitmap source(9, 3, from, 1);
      Bitmap target(13, 5, to, 0, 4);
      FillWithNoise(&source, from);
      HostFillBitmap(target.get(), 0x808080);
      std::vector<uint64_t> wanted = RawPixels(target);
      for (uint32_t y = 0; y < 3; ++y) {
        for (uint32_t x = 0; x < 9; ++x) {
          wanted[(y + 1) * 13 + x + 2] = RawOfColor(target, PixelColor(source, x, y, Endian::kNative));
        }
      }
      ASSERT_EQ(Combine(&target, source, {2, 1, 9, 3, 0, 0}), SUCCESS);
      ASSERT_EQ(RawPixels(target), wanted) << from << " on " << to;
    }
  }
}

TEST_F(CombineTest, RedFirstAndBlueFirstExchangeTheChannels) {
  for (const uint32_t bits : {24u, 32u, 48u, 64u}) {
    Bitmap source(5, 1, bits, 1);
    FillWithNoise(&source, bits);
    Bitmap red_first(5, 1, bits, 0);
    ASSERT_EQ(Combine(&red_first, source, {0, 0, 5, 1, 0, 0}), SUCCESS);
    Bitmap grey(5, 1, bits, 2);
    ASSERT_EQ(Combine(&grey, source, {0, 0, 5, 1, 0, 0}), SUCCESS);
    for (uint32_t x = 0; x < 5; ++x) {
      const Color color = PixelColor(source, x, 0, Endian::kNative);
      EXPECT_EQ(PixelColor(red_first, x, 0, Endian::kNative), color);
      EXPECT_EQ(RawPixel(grey, x, 0), RawPixel(source, x, 0)) << "order 2 is blue first like order 1";
    }
  }
}

TEST_F(CombineTest, IndexedBitmapsOfOneDepthAndPaletteKeepTheirIndicesInEveryOrder) {
  Bitmap source(4, 1, 8, 1);
  Bitmap target(4, 1, 8, 0);
  for (Bitmap* bitmap : {&source, &target}) {
    // Two entries of one colour: by colour, the second would become the first.
    const HostPaletteEntry entries[2] = {{9, 9, 9, 0}, {9, 9, 9, 0}};
    HostPutBitmapColors(bitmap->get(), 0, 2, entries);
  }
  source.SetRow(0, {0, 1, 200, 9});
  ASSERT_EQ(Combine(&target, source, {0, 0, 4, 1, 0, 0}), SUCCESS);
  EXPECT_EQ(RawPixels(target), (std::vector<uint64_t>{0, 1, 200, 9}));
}

TEST_F(CombineTest, AttachedPixelsAreASource) {
  uint8_t pixels[8] = {1, 2, 3, 4, 5, 6, 7, 8};
  HostBitmap tile{};
  ASSERT_EQ(HostCreateBitmap(&tile, 212, 2, 4, 2, 8, 1, nullptr, 1, nullptr, 0), SUCCESS);
  Bitmap target(4, 2, 8, 0);
  EXPECT_EQ(HostCombineBitmap(target.get(), 0, 0, 4, 2, &tile, 0, 0, 800), ERR_NO_BITMAP)
      << "nothing attached";
  ASSERT_EQ(HostAttachBitmapData(&tile, pixels, 8), SUCCESS);
  EXPECT_EQ(HostCombineBitmap(target.get(), 0, 0, 4, 2, &tile, 0, 0, 800), SUCCESS);
  EXPECT_EQ(target.Bytes(), (std::vector<uint8_t>{1, 2, 3, 4, 5, 6, 7, 8}));
}

TEST_F(CombineTest, StatusesAreAsDocumented) {
  Bitmap bitmap(4, 4, 8);
  Bitmap other(4, 4, 8);
  Bitmap empty;
  EXPECT_EQ(HostCombineBitmap(bitmap.get(), 0, 0, 4, 4, other.get(), 0, 0, 801), ERR_NOT_SUPPORTED);
  EXPECT_EQ(HostCombineBitmap(nullptr, 0, 0, 4, 4, other.get(), 0, 0, 800), ERR_NO_BITMAP);
  EXPECT_EQ(HostCombineBitmap(bitmap.get(), 0, 0, 4, 4, nullptr, 0, 0, 800), ERR_NO_BITMAP);
  EXPECT_EQ(HostCombineBitmap(bitmap.get(), 0, 0, 4, 4, empty.get(), 0, 0, 800), ERR_NO_BITMAP);
}

}  // namespace
}  // namespace tavi::test

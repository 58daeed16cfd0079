#include <algorithm>
#include <array>
#include <numeric>

#include "HostTest.h"
#include "Reference.h"

namespace tavi::test {
namespace {

using HistogramTest = HostTest;
using AdjustTest = HostTest;

using Counters = std::array<uint32_t, 256>;

Counters Histogram(const Bitmap& bitmap) {
  Counters counters{};
  EXPECT_EQ(HostHistogram(bitmap.get(), counters.data(), 256, 0), SUCCESS);
  return counters;
}

TEST_F(HistogramTest, CountsTheLuminanceOfEveryPixel) {
  for (const uint32_t bits : {1u, 2u, 3u, 4u, 5u, 6u, 7u, 8u, 12u, 24u, 32u, 48u, 64u}) {
    for (const uint32_t order : {0u, 1u}) {
      Bitmap bitmap(21, 5, bits, order);
      FillWithNoise(&bitmap, bits);
      Counters wanted{};
      for (uint32_t y = 0; y < 5; ++y) {
        for (uint32_t x = 0; x < 21; ++x) {
          const Color color = PixelColor(bitmap, x, y, Endian::kNative);
          const uint32_t level =
              (7471 * (color.blue >> 8) + 38470 * (color.green >> 8) + 19595 * (color.red >> 8) + 32768) >>
              16;
          ++wanted[level];
        }
      }
      EXPECT_EQ(Histogram(bitmap), wanted) << bits;
    }
  }
}

TEST_F(HistogramTest, IndicesCountAsTheGreyOfTheirEntries) {
  Bitmap bitmap(4, 1, 8, 0);
  const HostPaletteEntry entries[2] = {{200, 200, 200, 0}, {0, 0, 255, 0}};
  HostPutBitmapColors(bitmap.get(), 0, 2, entries);
  bitmap.SetRow(0, {0, 0, 1, 7});
  const Counters counters = Histogram(bitmap);
  EXPECT_EQ(counters[200], 2u);
  EXPECT_EQ(counters[76], 1u);
  EXPECT_EQ(counters[7], 1u);
}

TEST_F(HistogramTest, CountersAreAddedTo) {
  Bitmap bitmap(2, 2, 24);
  Counters counters;
  counters.fill(10);
  EXPECT_EQ(HostHistogram(bitmap.get(), counters.data(), 256, 0), SUCCESS);
  EXPECT_EQ(counters[0], 14u);
  EXPECT_EQ(counters[1], 10u);
}

TEST_F(HistogramTest, StatusesAreAsDocumented) {
  Bitmap bitmap(2, 2, 24);
  Bitmap empty;
  Counters counters{};
  EXPECT_EQ(HostHistogram(empty.get(), counters.data(), 256, 0), ERR_NO_BITMAP);
  EXPECT_EQ(HostHistogram(nullptr, counters.data(), 256, 0), ERR_NO_BITMAP);
  EXPECT_EQ(HostHistogram(bitmap.get(), nullptr, 256, 0), ERR_INVALID_PARAMETER);
  EXPECT_EQ(HostHistogram(bitmap.get(), counters.data(), 255, 0), ERR_INVALID_PARAMETER);
  EXPECT_EQ(HostHistogram(bitmap.get(), counters.data(), 256, 1), ERR_INVALID_PARAMETER);
}

uint32_t Brightest(const Counters& counters) {
  uint32_t level = 255;
  while (level > 0 && counters[level] == 0) --level;
  return level;
}

TEST_F(AdjustTest, ADarkPictureBecomesReadableInEveryDepth) {
  for (const uint32_t bits : {8u, 12u, 16u, 24u, 32u, 48u, 64u}) {
    Bitmap dark(20, 20, 8, 0);
    for (uint32_t y = 0; y < 20; ++y) {
      std::vector<uint8_t> row(20);
      for (uint32_t x = 0; x < 20; ++x) row[x] = static_cast<uint8_t>((x + y) % 20);
      dark.SetRow(y, row);
    }
    Bitmap picture(20, 20, bits, bits == 8 ? 0 : 1);
    ASSERT_EQ(HostCombineBitmap(picture.get(), 0, 0, 20, 20, dark.get(), 0, 0, 800), SUCCESS);
    ASSERT_EQ(Brightest(Histogram(picture)), 19u) << bits;
    EXPECT_EQ(HostAdjustBitmap(picture.get(), 350), SUCCESS);
    const Counters counters = Histogram(picture);
    // 19 and 350 thousandths of 255; the other levels in proportion, so that all twenty stay apart.
    EXPECT_NEAR(Brightest(counters), 19 + 0.35 * 255, 1.5) << bits;
    EXPECT_EQ(counters[0], 20u) << bits;
    EXPECT_EQ(std::count_if(counters.begin(), counters.end(), [](uint32_t n) { return n != 0; }), 20) << bits;
  }
}

TEST_F(AdjustTest, ShallowPicturesAreBrightenedInThePalette) {
  Bitmap picture(3, 1, 8, 0);
  picture.SetRow(0, {0, 10, 5});
  const std::vector<uint8_t> before = picture.Bytes();
  EXPECT_EQ(HostAdjustBitmap(picture.get(), 350), SUCCESS);
  EXPECT_EQ(picture.Bytes(), before);
  const std::vector<HostPaletteEntry> colors = picture.Colors();
  EXPECT_EQ(colors[0].red, 0);
  EXPECT_NEAR(colors[10].red, 10 + 89, 1);
  EXPECT_NEAR(colors[5].red, colors[10].red / 2.0, 1);
  EXPECT_EQ(colors[255].red, 255);
}

TEST_F(AdjustTest, HuesStay) {
  Bitmap picture(1, 1, 24);
  picture.SetRow(0, {10, 20, 40});
  EXPECT_EQ(HostAdjustBitmap(picture.get(), 350), SUCCESS);
  const std::vector<uint8_t> row = picture.Row(0);
  EXPECT_NEAR(row[2], 40 + 89, 1);
  EXPECT_NEAR(row[1], row[2] / 2.0, 1);
  EXPECT_NEAR(row[0], row[2] / 4.0, 1);
}

TEST_F(AdjustTest, BlackStaysBlackAndWhiteStaysWhite) {
  for (const uint32_t color : {0x000000u, 0xFFFFFFu}) {
    Bitmap picture(3, 3, 24);
    HostFillBitmap(picture.get(), color);
    const std::vector<uint8_t> before = picture.Bytes();
    EXPECT_EQ(HostAdjustBitmap(picture.get(), 350), SUCCESS);
    EXPECT_EQ(picture.Bytes(), before);
  }
}

TEST_F(AdjustTest, AmountsBeyondTheFullScaleAreRefused) {
  Bitmap picture(1, 1, 24);
  picture.SetRow(0, {10, 20, 40});
  EXPECT_EQ(HostAdjustBitmap(picture.get(), 1001), ERR_INVALID_PARAMETER);
  EXPECT_EQ(HostAdjustBitmap(picture.get(), -1001), ERR_INVALID_PARAMETER);
  EXPECT_EQ(HostAdjustBitmap(picture.get(), 0), SUCCESS);
  EXPECT_EQ(picture.Row(0), (std::vector<uint8_t>{10, 20, 40, 0}));
  EXPECT_EQ(HostAdjustBitmap(picture.get(), -1000), SUCCESS);
  EXPECT_EQ(picture.Row(0), (std::vector<uint8_t>{0, 0, 0, 0}));
  EXPECT_EQ(HostAdjustBitmap(nullptr, 350), ERR_NO_BITMAP);
}

}  // namespace
}  // namespace tavi::test

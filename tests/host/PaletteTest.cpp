#include <cstring>

#include "HostTest.h"

namespace tavi::test {
namespace {

using PaletteTest = HostTest;

bool Same(const HostPaletteEntry& a, const HostPaletteEntry& b) {
  return std::memcmp(&a, &b, sizeof a) == 0;
}

TEST_F(PaletteTest, TheFixedPaletteIsARampWithWhiteBehindIt) {
  for (uint32_t bits = 1; bits <= 8; ++bits) {
    HostPaletteEntry* const palette = HostDefaultPalette(bits);
    ASSERT_NE(palette, nullptr);
    const uint32_t last = (1u << bits) - 1;
    for (uint32_t i = 0; i < 256; ++i) {
      const double exact = i <= last ? 255.0 * i / last : 255.0;
      EXPECT_NEAR(palette[i].red, exact, 0.5) << bits << ' ' << i;
      EXPECT_EQ(palette[i].red, palette[i].green);
      EXPECT_EQ(palette[i].red, palette[i].blue);
      EXPECT_EQ(palette[i].reserved, 0);
    }
    EXPECT_EQ(palette[0].red, 0);
    EXPECT_EQ(palette[last].red, 255);
    HostFreeMem(palette, 0, nullptr);
  }
  for (const uint32_t bits : {0u, 9u, 12u, 16u, 24u, 0xFFFFFFFFu})
    EXPECT_EQ(HostDefaultPalette(bits), nullptr);
}

TEST_F(PaletteTest, ABitmapBeginsWithTheFixedPalette) {
  for (uint32_t bits = 1; bits <= 8; ++bits) {
    Bitmap bitmap(2, 2, bits);
    HostPaletteEntry* const standard = HostDefaultPalette(bits);
    const std::vector<HostPaletteEntry> colors = bitmap.Colors();
    ASSERT_EQ(colors.size(), 1u << bits);
    for (size_t i = 0; i < colors.size(); ++i) EXPECT_TRUE(Same(colors[i], standard[i])) << bits << ' ' << i;
    HostFreeMem(standard, 0, nullptr);
  }
}

TEST_F(PaletteTest, EntriesBeyondThePaletteAreLeftOut) {
  Bitmap bitmap(2, 2, 2);
  const HostPaletteEntry put[3] = {{1, 2, 3, 4}, {5, 6, 7, 8}, {9, 10, 11, 12}};
  HostPutBitmapColors(bitmap.get(), 2, 3, put);
  HostPutBitmapColors(bitmap.get(), 4, 1, put);
  HostPutBitmapColors(bitmap.get(), UINT32_MAX, UINT32_MAX, put);
  HostPaletteEntry got[6];
  std::memset(got, 0xEE, sizeof got);
  HostGetBitmapColors(bitmap.get(), 1, 100, got);
  EXPECT_EQ(got[0].red, 85);
  EXPECT_TRUE(Same(got[1], put[0]));
  EXPECT_TRUE(Same(got[2], put[1]));
  EXPECT_EQ(got[3].red, 0xEE);
  HostGetBitmapColors(bitmap.get(), 4, 1, got);
  HostGetBitmapColors(bitmap.get(), 0, 0, got);
  EXPECT_EQ(got[0].red, 85);
  HostGetBitmapColors(bitmap.get(), 0, 1, nullptr);
  HostPutBitmapColors(bitmap.get(), 0, 1, nullptr);
  EXPECT_EQ(bitmap->color_count, 4u);
}

TEST_F(PaletteTest, DeepBitmapsHaveNoPalette) {
  Bitmap bitmap(2, 2, 24);
  HostPaletteEntry entry = {1, 2, 3, 4};
  HostPutBitmapColors(bitmap.get(), 0, 1, &entry);
  HostGetBitmapColors(bitmap.get(), 0, 1, &entry);
  EXPECT_EQ(entry.red, 3);
  const HostPalette palette = HostCreatePalette(&entry, 1);
  HostSetBitmapPalette(bitmap.get(), palette);
  EXPECT_EQ(bitmap->color_count, 0u);
  HostDeleteObject(palette, 0, nullptr);
}

TEST_F(PaletteTest, ACallersTableIsTakenWhenCreating) {
  HostPaletteEntry table[256];
  for (uint32_t i = 0; i < 256; ++i) {
    table[i] = {static_cast<uint8_t>(i), static_cast<uint8_t>(i * 3), static_cast<uint8_t>(i * 7), 0};
  }
  for (const uint32_t bits : {1u, 4u, 8u, 12u, 16u}) {
    HostBitmap record{};
    ASSERT_EQ(HostCreateBitmap(&record, 212, 1, 4, 4, bits, 0, table, 1, nullptr, 0), SUCCESS);
    EXPECT_EQ(record.color_count, bits < 8 ? 1u << bits : 256u);
    HostPaletteEntry last;
    HostGetBitmapColors(&record, record.color_count - 1, 1, &last);
    EXPECT_TRUE(Same(last, table[record.color_count - 1]));
    HostFreeBitmap(&record);
  }
}

TEST_F(PaletteTest, APaletteObjectCopiesItsEntries) {
  HostPaletteEntry entries[2] = {{1, 2, 3, 0}, {4, 5, 6, 0}};
  const HostPalette palette = HostCreatePalette(entries, 2);
  ASSERT_NE(palette, nullptr);
  entries[1] = {0, 0, 0, 0};
  Bitmap bitmap(2, 2, 8);
  HostSetBitmapPalette(bitmap.get(), palette);
  HostDeleteObject(palette, 0, nullptr);
  const std::vector<HostPaletteEntry> colors = bitmap.Colors();
  ASSERT_EQ(colors.size(), 256u) << "up to 8 bits a palette is always complete";
  EXPECT_EQ(colors[1].red, 6);
  EXPECT_EQ(colors[2].red, 2);
  EXPECT_EQ(colors[255].red, 255);
}

TEST_F(PaletteTest, AGreyBitmapWithAPaletteCountsItsEntries) {
  const HostPaletteEntry entries[2] = {{1, 2, 3, 0}, {4, 5, 6, 0}};
  for (const uint32_t bits : {12u, 16u}) {
    Bitmap bitmap(2, 2, bits, 2);
    const HostPalette palette = HostCreatePalette(entries, 2);
    HostSetBitmapPalette(bitmap.get(), palette);
    HostDeleteObject(palette, 0, nullptr);
    EXPECT_EQ(bitmap->color_count, 2u);
    EXPECT_EQ(bitmap.Colors()[1].red, 6);
    const HostPalette none = HostCreatePalette(nullptr, 0);
    HostSetBitmapPalette(bitmap.get(), none);
    HostDeleteObject(none, 0, nullptr);
    EXPECT_EQ(bitmap->color_count, 0u);
  }
}

TEST_F(PaletteTest, PaletteObjectsThatCannotBeAreRefused) {
  HostPaletteEntry entries[256] = {};
  EXPECT_EQ(HostCreatePalette(entries, 257), nullptr);
  EXPECT_EQ(HostCreatePalette(nullptr, 1), nullptr);
  const HostPalette full = HostCreatePalette(entries, 256);
  EXPECT_NE(full, nullptr);
  HostDeleteObject(full, 0, nullptr);
  HostDeleteObject(nullptr, 0, nullptr);
  Bitmap bitmap(2, 2, 8);
  HostSetBitmapPalette(bitmap.get(), nullptr);
  HostSetBitmapPalette(nullptr, nullptr);
}

TEST_F(PaletteTest, OnlyShallowContextsNeedAPalette) {
  Bitmap source(2, 2, 8);
  const HostPaletteEntry entry = {9, 8, 7, 0};
  HostPutBitmapColors(source.get(), 0, 1, &entry);
  Bitmap colors(2, 2, 24);
  for (const uint32_t bits : {12u, 16u, 24u, 32u, 48u, 64u}) {
    Bitmap target(2, 2, bits);
    const Context context(target);
    EXPECT_EQ(HostCreatePaintPalette(context.get(), source.get()), nullptr);
  }
  for (const uint32_t bits : {1u, 4u, 8u}) {
    Bitmap target(2, 2, bits);
    const Context context(target);
    const HostPalette of_source = HostCreatePaintPalette(context.get(), source.get());
    const HostPalette of_target = HostCreatePaintPalette(context.get(), colors.get());
    ASSERT_NE(of_source, nullptr);
    ASSERT_NE(of_target, nullptr);
    Bitmap taker(2, 2, 8);
    HostSetBitmapPalette(taker.get(), of_source);
    EXPECT_TRUE(Same(taker.Colors()[0], entry));
    HostDeleteObject(of_source, 0, nullptr);
    HostDeleteObject(of_target, 0, nullptr);
    EXPECT_EQ(HostCreatePaintPalette(context.get(), nullptr), nullptr);
  }
  EXPECT_EQ(HostCreatePaintPalette(nullptr, source.get()), nullptr);
}

}  // namespace
}  // namespace tavi::test

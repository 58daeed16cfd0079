#include <cstring>
#include <string>

#include "HostTest.h"
#include "Reference.h"

namespace tavi::test {
namespace {

using PaintTest = HostTest;

constexpr uint32_t kDepths[] = {1, 2, 3, 4, 5, 6, 7, 8, 12, 16, 24, 32, 48, 64};

// Colours that differ between the entries, some of them twice.
void SetColorfulPalette(Bitmap* bitmap, uint32_t seed) {
  Noise noise(seed);
  std::vector<HostPaletteEntry> entries((*bitmap)->color_count);
  for (HostPaletteEntry& entry : entries) {
    entry = {static_cast<uint8_t>(noise.Below(8) * 36), noise.Byte(),
             static_cast<uint8_t>(noise.Below(4) * 80), 0};
  }
  HostPutBitmapColors(bitmap->get(), 0, static_cast<uint32_t>(entries.size()), entries.data());
}

// Noise, but smooth in 16-bit pictures, whose byte order is to be recognised: big-endian samples.
void FillSource(Bitmap* bitmap, uint32_t seed) {
  FillWithNoise(bitmap, seed);
  if ((*bitmap)->bits != 16) return;
  Noise noise(seed);
  std::vector<uint8_t> row((*bitmap)->bytes_per_line);
  for (uint32_t y = 0; y < (*bitmap)->height; ++y) {
    for (size_t x = 0; x < row.size() / 2; ++x) {
      const auto sample = static_cast<uint32_t>(3000 + 1300 * x + 700 * y + noise.Below(300));
      row[2 * x] = static_cast<uint8_t>(sample >> 8);
      row[2 * x + 1] = static_cast<uint8_t>(sample);
    }
    bitmap->SetRow(y, row);
  }
}

struct PaintCase {
  Bitmap* target;
  const Bitmap* source;
  HostRect rect;
};

// Paints and compares every pixel, and the padding, with the reference.
void CheckPaint(const PaintCase& c, const uint32_t* key, const std::string& what) {
  const std::vector<uint64_t> wanted = ReferencePaint(*c.target, *c.source, c.rect, Endian::kBig, key);
  const Context context(*c.target);
  const int32_t status =
      key != nullptr ? PaintKeyed(context, *c.source, c.rect, *key) : Paint(context, *c.source, c.rect);
  ASSERT_EQ(status, SUCCESS) << what;
  ASSERT_EQ(RawPixels(*c.target), wanted) << what;
}

std::string Name(const Bitmap& target, const Bitmap& source) {
  return std::to_string(source->bits) + " bits of order " + std::to_string(source->order) + " on " +
         std::to_string(target->bits) + " of order " + std::to_string(target->order);
}

TEST_F(PaintTest, EveryDepthOnEveryDepth) {
  for (const uint32_t from : kDepths) {
    for (const uint32_t to : kDepths) {
      for (const uint32_t orders : {0x11u, 0x00u, 0x10u, 0x21u}) {
        Bitmap source(19, 7, from, orders >> 4);
        Bitmap target(23, 9, to, orders & 15, 4);
        FillSource(&source, from + to);
        FillWithNoise(&target, 9);
        HostFillBitmap(target.get(), 0x808080);
        CheckPaint({&target, &source, {2, 1, 21, 8}}, nullptr, Name(target, source));
      }
    }
  }
}

TEST_F(PaintTest, EveryDepthThroughPalettes) {
  for (uint32_t from = 1; from <= 8; ++from) {
    for (const uint32_t to : kDepths) {
      Bitmap source(19, 7, from);
      Bitmap target(19, 7, to);
      SetColorfulPalette(&source, from);
      if (to <= 8) SetColorfulPalette(&target, to + 50);
      FillSource(&source, 1);
      CheckPaint({&target, &source, {0, 0, 19, 7}}, nullptr, Name(target, source));
    }
  }
}

TEST_F(PaintTest, FullColourFindsTheNearestEntry) {
  for (uint32_t to = 1; to <= 8; ++to) {
    Bitmap source(40, 20, 24);
    Bitmap target(40, 20, to);
    FillWithNoise(&source, to);
    SetColorfulPalette(&target, to);
    CheckPaint({&target, &source, {0, 0, 40, 20}}, nullptr, Name(target, source));
  }
}

TEST_F(PaintTest, EqualPalettesKeepTheIndices) {
  Bitmap source(30, 4, 8);
  Bitmap target(30, 4, 8);
  SetColorfulPalette(&source, 3);
  SetColorfulPalette(&target, 3);
  FillWithNoise(&source, 8);
  const Context context(target);
  EXPECT_EQ(Paint(context, source, {0, 0, 30, 4}), SUCCESS);
  EXPECT_EQ(RawPixels(target), RawPixels(source));
}

// Long stretches of one colour, noise, and both within a row, cut on either side.
TEST_F(PaintTest, PagesOfOneBitAtEveryOffset) {
  constexpr uint32_t kWidth = 333;
  for (const uint32_t to : {8u, 24u}) {
    for (const uint32_t order : {0u, 1u}) {
      Bitmap source(kWidth, 6, 1);
      SetColorfulPalette(&source, 5 + order);
      FillWithNoise(&source, to);
      const size_t line = source->bytes_per_line;
      source.SetRow(0, std::vector<uint8_t>(line, 0x00));
      source.SetRow(1, std::vector<uint8_t>(line, 0xFF));
      std::vector<uint8_t> mixed(line, 0xFF);
      for (size_t i = 11; i < 29; ++i) mixed[i] = 0;
      mixed[4] = 0x7F;
      source.SetRow(2, mixed);
      for (int32_t x = -25; x <= 17; ++x) {
        Bitmap target(320, 7, to, order);
        if (to == 8) SetColorfulPalette(&target, 77);
        FillWithNoise(&target, 3);
        CheckPaint({&target, &source, {x, 1, x + int32_t{kWidth}, 7}}, nullptr,
                   Name(target, source) + " at " + std::to_string(x));
      }
    }
  }
}

// Rows of a big picture that one-bit pixels cover whole are expanded when they are looked at: by whatever that is, and
// whatever is written meanwhile.
TEST_F(PaintTest, BigPagesOfOneBitAreExpandedWhenTheyAreLookedAt) {
  constexpr uint32_t kWidth = 1003;
  for (const uint32_t to : {8u, 24u}) {
    const uint32_t height = to == 8 ? 68 : 24;  // just as big as it takes
    const auto bottom = static_cast<int32_t>(height);
    for (const uint32_t perspective : {1u, 4u}) {
      Bitmap page(kWidth + 16, height, 1);
      Bitmap other(kWidth, height, 1);
      Bitmap spot(5, 5, 24);
      SetColorfulPalette(&page, 5);
      SetColorfulPalette(&other, 6);
      FillWithNoise(&page, to);
      FillWithNoise(&other, to + 1);
      FillWithNoise(&spot, 7);
      Bitmap target(kWidth, height, to, 1, perspective);
      const std::string name = std::to_string(to) + " bits, perspective " + std::to_string(perspective);
      HostFillBitmap(target.get(), 0x112233);
      const int32_t right = kWidth + 16;
      CheckPaint({&target, &page, {-8, 0, right - 8, bottom}}, nullptr, name + ", cut at a byte");
      CheckPaint({&target, &page, {-3, 5, right - 3, 5 + bottom}}, nullptr, name + ", cut in a byte");
      CheckPaint({&target, &page, {-8, 2, right - 8, 2 + bottom}}, nullptr, name + ", again");
      CheckPaint({&target, &spot, {700, 10, 705, 15}}, nullptr, name + ", a spot on it");
      CheckPaint({&target, &other, {0, 9, int32_t{kWidth}, 9 + bottom}}, nullptr, name + ", others");
      CheckPaint({&target, &page, {-16, 0, right - 16, bottom}}, nullptr, name + ", over all");

      uint8_t whole[kWidth * 3 + 8] = {};
      uint8_t part[7] = {};
      HostGetBitmapRow(target.get(), part, 20, sizeof part);
      HostGetBitmapRow(target.get(), whole, 20, target->bytes_per_line);
      EXPECT_EQ(std::memcmp(part, whole, sizeof part), 0) << name;
      HostPutBitmapRow(target.get(), "\1\2\3", 21, 3);
      std::vector<uint8_t> before = target.Row(22);
      HostPutBitmapRow(target.get(), before.data(), 22, 3);
      EXPECT_EQ(target.Row(22), before) << name;
      EXPECT_EQ(target.Row(21)[1], 2) << name;
      HostClearBitmap(target.get());
      EXPECT_EQ(target.Row(20), std::vector<uint8_t>(target->bytes_per_line)) << name;
    }
  }
}

TEST_F(PaintTest, BothPerspectivesOnBoth) {
  for (const uint32_t perspectives : {0x11u, 0x14u, 0x41u, 0x44u}) {
    for (const uint32_t bits : {1u, 8u, 24u}) {
      Bitmap source(9, 5, bits, 1, perspectives >> 4);
      Bitmap target(12, 8, 24, 1, perspectives & 15);
      FillWithNoise(&source, 2);
      CheckPaint({&target, &source, {1, 2, 10, 7}}, nullptr, std::to_string(perspectives));
    }
  }
}

TEST_F(PaintTest, ThePerspectiveIsWhatTheRecordSaysNow) {
  Bitmap source(1, 2, 24, 1, 4);
  source.SetRow(0, {1, 1, 1, 0});
  source.SetRow(1, {2, 2, 2, 0});
  source->view_perspective = 1;
  Bitmap target(1, 2, 24);
  const Context context(target);
  EXPECT_EQ(Paint(context, source, {0, 0, 1, 2}), SUCCESS);
  EXPECT_EQ(target.Row(0)[0], 1);
}

TEST_F(PaintTest, PartsOutsideAreLeftOut) {
  for (const uint32_t bits : {1u, 4u, 8u, 12u, 16u, 24u}) {
    Bitmap source(11, 6, bits, bits <= 8 ? 0 : 2);
    FillSource(&source, bits);
    for (const int32_t x : {-11, -10, -3, 0, 5, 12, 13, 100}) {
      for (const int32_t y : {-7, -6, -5, 0, 4, 7, 8}) {
        Bitmap target(13, 8, 24);
        HostFillBitmap(target.get(), 0x332211);
        CheckPaint({&target, &source, {x, y, x + 11, y + 6}}, nullptr,
                   std::to_string(bits) + " at " + std::to_string(x) + "," + std::to_string(y));
      }
    }
  }
}

TEST_F(PaintTest, SubBytePixelsLandAtEveryOffset) {
  for (const uint32_t bits : {1u, 2u, 3u, 4u, 5u, 6u, 7u, 12u}) {
    for (int32_t x = 0; x < 9; ++x) {
      Bitmap source(10, 2, bits, 2);
      Bitmap target(21, 3, bits, 2);
      FillSource(&source, bits);
      FillWithNoise(&target, 4);
      CheckPaint({&target, &source, {x, 1, x + 10, 3}}, nullptr,
                 std::to_string(bits) + " at " + std::to_string(x));
    }
  }
}

TEST_F(PaintTest, OtherSizesShowTheNearestPixel) {
  for (const uint32_t bits : {1u, 8u, 12u, 16u, 24u, 48u}) {
    Bitmap source(10, 6, bits);
    FillSource(&source, bits);
    for (const HostRect& rect : {HostRect{0, 0, 20, 12}, HostRect{0, 0, 5, 3}, HostRect{1, 1, 18, 2},
                                 HostRect{-7, -9, 40, 31}, HostRect{3, 3, 4, 4}, HostRect{0, 0, 10, 7}}) {
      for (const uint32_t to : {8u, 16u, 24u}) {
        Bitmap target(20, 12, to);
        CheckPaint({&target, &source, rect}, nullptr, Name(target, source));
      }
    }
  }
}

TEST_F(PaintTest, RectanglesThatRunBackwardsMirror) {
  Bitmap source(6, 4, 24);
  FillWithNoise(&source, 6);
  for (const HostRect& rect : {HostRect{5, 0, -1, 4}, HostRect{0, 3, 6, -1}, HostRect{5, 3, -1, -1},
                               HostRect{11, 8, 0, 1}, HostRect{3, 3, -9, 15}}) {
    Bitmap target(12, 9, 24, 1, 4);
    CheckPaint({&target, &source, rect}, nullptr,
               std::to_string(rect.left) + " to " + std::to_string(rect.right));
  }
  Bitmap mirrored(6, 4, 24);
  const Context context(mirrored);
  ASSERT_EQ(Paint(context, source, {5, 3, -1, -1}), SUCCESS);
  EXPECT_EQ(RawPixel(mirrored, 0, 0), RawPixel(source, 5, 3));
  EXPECT_EQ(RawPixel(mirrored, 5, 1), RawPixel(source, 0, 2));
}

TEST_F(PaintTest, RectanglesOfExtremeCoordinates) {
  Bitmap source(4, 4, 24);
  FillWithNoise(&source, 6);
  constexpr int32_t kMin = INT32_MIN;
  constexpr int32_t kMax = INT32_MAX;
  for (const HostRect& rect :
       {HostRect{kMin, kMin, kMax, kMax}, HostRect{kMax, kMax, kMin, kMin}, HostRect{0, 0, kMax, kMax},
        HostRect{kMin, kMin, 3, 3}, HostRect{kMax - 4, 0, kMax, 4}, HostRect{kMin, kMin, kMin + 4, kMin + 4},
        HostRect{kMin, 0, kMax, 4}}) {
    Bitmap target(5, 5, 24);
    CheckPaint({&target, &source, rect}, nullptr,
               std::to_string(rect.left) + " to " + std::to_string(rect.right));
  }
}

TEST_F(PaintTest, AWideSourceShrinksIntoANarrowRectangle) {
  Bitmap source(100000, 1, 8);
  FillWithNoise(&source, 6);
  Bitmap target(7, 1, 24);
  CheckPaint({&target, &source, {0, 0, 7, 1}}, nullptr, "wide");
}

TEST_F(PaintTest, AnEmptyRectanglePaintsNothing) {
  Bitmap source(4, 4, 24);
  HostFillBitmap(source.get(), 0xFFFFFF);
  Bitmap target(4, 4, 24);
  const Context context(target);
  EXPECT_EQ(Paint(context, source, {1, 1, 1, 3}), SUCCESS);
  EXPECT_EQ(Paint(context, source, {1, 1, 3, 1}), SUCCESS);
  EXPECT_EQ(Paint(context, source, {0, 0, 0, 0}), SUCCESS);
  EXPECT_EQ(target.Bytes(), std::vector<uint8_t>(48, 0));
}

TEST_F(PaintTest, PixelsOfTheKeyAreLeftOut) {
  for (const uint32_t from : kDepths) {
    for (const uint32_t to : kDepths) {
      Bitmap source(19, 7, from, 1);
      Bitmap target(19, 7, to, 1, 4);
      if (from <= 8) SetColorfulPalette(&source, from);
      FillSource(&source, from + to);
      HostFillBitmap(target.get(), 0x4080C0);
      // The colour of some pixel, where eight bits can name it.
      const Color color = PixelColor(source, 5, 3, Endian::kBig);
      const uint32_t key = (color.blue >> 8) << 16 | (color.green & 0xFF00) | color.red >> 8;
      CheckPaint({&target, &source, {0, 0, 19, 7}}, &key, Name(target, source));
    }
  }
}

TEST_F(PaintTest, AllIndicesOfTheKeysColourAreLeftOut) {
  Bitmap source(4, 1, 8);
  const HostPaletteEntry entries[4] = {{1, 2, 3, 0}, {9, 9, 9, 0}, {1, 2, 3, 0}, {1, 2, 4, 0}};
  HostPutBitmapColors(source.get(), 0, 4, entries);
  source.SetRow(0, {0, 1, 2, 3});
  Bitmap target(4, 1, 24);
  HostFillBitmap(target.get(), 0xFFFFFF);
  const Context context(target);
  EXPECT_EQ(PaintKeyed(context, source, {0, 0, 4, 1}, 0x010203), SUCCESS);
  EXPECT_EQ(target.Row(0), (std::vector<uint8_t>{255, 255, 255, 9, 9, 9, 255, 255, 255, 1, 2, 4}));
}

TEST_F(PaintTest, ADeepPixelIsLeftOutOnlyWhenItIsTheKeyExactly) {
  Bitmap source(3, 1, 48);
  source.SetRow(0, {0, 0, 0, 0, 0, 0, 1, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 1});
  Bitmap target(3, 1, 24);
  HostFillBitmap(target.get(), 0xFFFFFF);
  const Context context(target);
  EXPECT_EQ(PaintKeyed(context, source, {0, 0, 3, 1}, 0), SUCCESS);
  EXPECT_EQ(target.Row(0), (std::vector<uint8_t>{255, 255, 255, 0, 0, 0, 0, 0, 1, 0, 0, 0}));
}

TEST_F(PaintTest, KeyedPaintingScalesMirrorsAndClips) {
  Bitmap source(5, 5, 2);
  FillWithNoise(&source, 6);
  const uint32_t key = 0x555555;
  for (const HostRect& rect : {HostRect{-3, -2, 9, 14}, HostRect{6, 6, -4, 1}, HostRect{4, 4, 9, 9}}) {
    Bitmap target(8, 8, 24);
    HostFillBitmap(target.get(), 0x123456);
    CheckPaint({&target, &source, rect}, &key, std::to_string(rect.left));
  }
}

// A context may have a palette selected that is gone: it is neither looked at nor given back.
TEST_F(PaintTest, PalettesDeletedWhileTheyAreSelected) {
  Bitmap target(4, 4, 24);
  const HostDrawingContext context = HostCreateBitmapDC(target.get());
  const HostPaletteEntry entries[3] = {};
  const HostPalette first = HostCreatePalette(entries, 2);
  const HostPalette second = HostCreatePalette(entries, 3);
  EXPECT_EQ(SelectPalette(context, first, 0), nullptr);
  EXPECT_EQ(RealizePalette(context), 2U);
  EXPECT_EQ(SelectPalette(context, second, 0), first);
  EXPECT_EQ(SelectPalette(context, first, 0), second);
  HostDeleteObject(first, 0, nullptr);
  EXPECT_EQ(SelectPalette(context, second, 0), nullptr);
  EXPECT_EQ(RealizePalette(context), 3U);
  HostDeleteObject(second, 0, nullptr);
  HostDeleteBitmapDC(context);
}

TEST_F(PaintTest, ContextsThatAreGone) {
  Bitmap target(4, 4, 24);
  const HostDrawingContext context = HostCreateBitmapDC(target.get());
  const HostDrawingContext other = HostCreateBitmapDC(target.get());
  HostDeleteBitmapDC(context);
  HostDeleteBitmapDC(context);
  const HostRect place = {0, 0, 4, 4};
  EXPECT_EQ(HostPaintBitmap(context, target.get(), nullptr, nullptr, &place, nullptr, 0xCC0020),
            ERR_INVALID_PARAMETER);
  EXPECT_EQ(SelectPalette(context, nullptr, 0), nullptr);
  EXPECT_EQ(RealizePalette(context), 0U);
  EXPECT_EQ(TextOutA(context, 0, 0, "x", 1), 0);
  EXPECT_EQ(TextOutA(other, 0, 0, "x", 1), 1);
  HostDeleteBitmapDC(other);
}

TEST_F(PaintTest, GreySamplesGoThroughAPaletteAsFarAsItReaches) {
  for (const uint32_t bits : {12u, 16u}) {
    Bitmap source(4, 1, bits, 2);
    source.SetRow(0, bits == 12 ? std::vector<uint8_t>{0, 0x10, 0, 2, 0xF0, 0xFF, 0, 0}
                                : std::vector<uint8_t>{0, 0, 0, 1, 0, 2, 0xFF, 0xF0});
    const HostPaletteEntry entries[2] = {{10, 20, 30, 0}, {40, 50, 60, 0}};
    const HostPalette palette = HostCreatePalette(entries, 2);
    HostSetBitmapPalette(source.get(), palette);
    HostDeleteObject(palette, 0, nullptr);
    Bitmap target(4, 1, 24);
    const Context context(target);
    EXPECT_EQ(Paint(context, source, {0, 0, 4, 1}), SUCCESS);
    EXPECT_EQ(target.Row(0), (std::vector<uint8_t>{10, 20, 30, 40, 50, 60, 0, 0, 0, 255, 255, 255})) << bits;
  }
}

TEST_F(PaintTest, PackedSamplesAreReadLowNibbleFirst) {
  Bitmap source(2, 1, 12, 2);
  source.SetRow(0, {0x34, 0x62, 0x85, 0});  // samples 0x234 and 0x856
  Bitmap target(2, 1, 16, 2);
  const Context context(target);
  EXPECT_EQ(Paint(context, source, {0, 0, 2, 1}), SUCCESS);
  EXPECT_EQ(RawPixels(target), (std::vector<uint64_t>{0x2342, 0x8568}));
}

TEST_F(PaintTest, WhatIsNotSupportedSaysSo) {
  Bitmap source(4, 4, 24);
  Bitmap target(4, 4, 24);
  const Context context(target);
  const HostDrawingContext dc = context.get();
  const HostRect rect = {0, 0, 4, 4};
  EXPECT_EQ(HostPaintBitmap(dc, source.get(), &rect, nullptr, &rect, nullptr, kSourceCopy),
            ERR_NOT_SUPPORTED);
  EXPECT_EQ(HostPaintBitmap(dc, source.get(), nullptr, &rect, &rect, nullptr, kSourceCopy),
            ERR_NOT_SUPPORTED);
  EXPECT_EQ(HostPaintBitmap(dc, source.get(), nullptr, nullptr, &rect, &rect, kSourceCopy),
            ERR_NOT_SUPPORTED);
  EXPECT_EQ(HostPaintBitmap(dc, source.get(), nullptr, nullptr, &rect, nullptr, 0x42), ERR_NOT_SUPPORTED);
  EXPECT_EQ(HostPaintBitmap(nullptr, source.get(), nullptr, nullptr, &rect, nullptr, kSourceCopy),
            ERR_INVALID_PARAMETER);
  EXPECT_EQ(HostPaintBitmap(dc, source.get(), nullptr, nullptr, nullptr, nullptr, kSourceCopy),
            ERR_INVALID_PARAMETER);
  EXPECT_EQ(HostPaintBitmap(dc, nullptr, nullptr, nullptr, &rect, nullptr, kSourceCopy), ERR_NO_BITMAP);
  Bitmap empty;
  EXPECT_EQ(HostPaintBitmap(dc, empty.get(), nullptr, nullptr, &rect, nullptr, kSourceCopy), ERR_NO_BITMAP);
  EXPECT_EQ(HostPaintBitmapKeyed(dc, source.get(), nullptr, nullptr, &rect, nullptr, 500, 1, 1, 1, 1, 1, 1, 1,
                                 0, 0, 0, kSourceCopy),
            ERR_NOT_SUPPORTED);
  EXPECT_EQ(HostPaintBitmapKeyed(dc, source.get(), nullptr, nullptr, &rect, nullptr, 1000, 1, 1, 1, 1, 1, 1,
                                 0, 0, 0, 0, kSourceCopy),
            ERR_NOT_SUPPORTED);
}

TEST_F(PaintTest, AContextWhoseBitmapIsGonePaintsNothing) {
  HostBitmap record{};
  ASSERT_EQ(HostCreateBitmap(&record, 212, 1, 4, 4, 24, 1, nullptr, 1, nullptr, 0), SUCCESS);
  const HostDrawingContext context = HostCreateBitmapDC(&record);
  HostFreeBitmap(&record);
  Bitmap source(4, 4, 24);
  const HostRect rect = {0, 0, 4, 4};
  EXPECT_EQ(HostPaintBitmap(context, source.get(), nullptr, nullptr, &rect, nullptr, kSourceCopy),
            ERR_NO_BITMAP);
  HostDeleteBitmapDC(context);
  HostDeleteBitmapDC(nullptr);
}

TEST_F(PaintTest, BigPicturesArePaintedLikeSmallOnes) {
  for (const uint32_t bits : {8u, 24u}) {
    Bitmap source(1500, 1400, bits, 1, 1);
    FillWithNoise(&source, bits);
    Bitmap target(1600, 1400, 24, 1, 4);
    HostFillBitmap(target.get(), 0x030201);
    const Context context(target);
    ASSERT_EQ(Paint(context, source, {50, 0, 1550, 1400}), SUCCESS);
    for (const uint32_t y : {0u, 1u, 700u, 1399u}) {
      const std::vector<uint8_t> from = source.Row(y);
      const std::vector<uint8_t> to = target.Row(1399 - y);
      for (size_t x = 0; x < 1600; ++x) {
        for (size_t channel = 0; channel < 3; ++channel) {
          const bool inside = x >= 50 && x < 1550;
          const size_t place = bits == 8 ? x - 50 : 3 * (x - 50) + channel;
          const uint8_t background[3] = {3, 2, 1};
          ASSERT_EQ(to[3 * x + channel], inside ? from[place] : background[channel])
              << bits << ' ' << x << ' ' << y;
        }
      }
    }
  }
}

}  // namespace
}  // namespace tavi::test

// Raw fax data: every kind, both bit orders, with end-of-line codes and without.
#include "FaxEncoder.h"

#include <thread>

namespace tavi_test {
namespace {

class FaxTest : public CodecTest {};

uint32_t FormatOf(FaxKind kind) {
  return kind == FaxKind::kG4 ? 68 : kind == FaxKind::kG3TwoD ? 67 : 66;
}

Pixels LoadPage(const Stream& data, uint32_t format, uint32_t width, uint32_t height) {
  FaxDescription description{.format = format, .width = width, .height = height};
  Bitmap bitmap;
  EXPECT_EQ(LoadFax(data, &description, &bitmap), SUCCESS);
  EXPECT_EQ(description.asked, 1);
  EXPECT_TRUE(description.found_zeros);
  EXPECT_EQ(bitmap->bits, 1u);
  EXPECT_EQ(bitmap->order, 1u);
  return bitmap.Read();
}

constexpr FaxKind kKinds[] = {FaxKind::kG3OneD, FaxKind::kG3OneDNoLineEnds, FaxKind::kG3OneDByteAligned,
                              FaxKind::kG3TwoD, FaxKind::kG4};

TEST_F(FaxTest, EveryKindInBothBitOrders) {
  for (const FaxKind kind : kKinds) {
    for (const bool least_bit_first : {false, true}) {
      for (const bool fill_bits : {false, true}) {
        for (const bool control : {false, true}) {
          const Pixels page = MakePage(203, 150);
          const Stream data = EncodeFax(page, {kind, least_bit_first, fill_bits, control});
          EXPECT_EQ(MaxDifference(LoadPage(data, FormatOf(kind), 203, 150), page), 0)
              << static_cast<int>(kind) << least_bit_first << fill_bits << control;
        }
      }
    }
  }
}

TEST_F(FaxTest, EveryWidthUpToFiveBytes) {
  for (const FaxKind kind : kKinds) {
    for (uint32_t width = 1; width <= 40; ++width) {
      const Pixels page = MakePage(width, 40);
      EXPECT_EQ(MaxDifference(LoadPage(EncodeFax(page, {kind}), FormatOf(kind), width, 40), page), 0)
          << static_cast<int>(kind) << " " << width;
    }
  }
}

TEST_F(FaxTest, WidePage) {
  for (const FaxKind kind : kKinds) {
    const Pixels page = MakePage(9000, 20);
    EXPECT_EQ(MaxDifference(LoadPage(EncodeFax(page, {kind}), FormatOf(kind), 9000, 20), page), 0);
  }
}

TEST_F(FaxTest, TheFirstLineEndMayBeLeftOut) {
  for (const FaxKind kind : {FaxKind::kG3OneD, FaxKind::kG3TwoD}) {
    for (const bool least_bit_first : {false, true}) {
      const Pixels page = MakePage(203, 60);
      Stream data = EncodeFax(page, {kind, least_bit_first, true});
      ASSERT_EQ(data[0], 0);
      const size_t lead = kind == FaxKind::kG3OneD ? 2 : 0;
      data.erase(data.begin(), data.begin() + static_cast<ptrdiff_t>(lead));
      EXPECT_EQ(MaxDifference(LoadPage(data, FormatOf(kind), 203, 60), page), 0);
    }
  }
}

TEST_F(FaxTest, TwoDimensionsWithoutLineEndsAreCodedAsGroup4) {
  const Pixels page = MakePage(203, 60);
  EXPECT_EQ(MaxDifference(LoadPage(EncodeFax(page, {FaxKind::kG4}), 67, 203, 60), page), 0);
}

TEST_F(FaxTest, PaddingOfRowsStaysZero) {
  FaxDescription description{.format = 66, .width = 13, .height = 20};
  Bitmap bitmap;
  ASSERT_EQ(LoadFax(EncodeFax(MakePage(13, 20), {}), &description, &bitmap), SUCCESS);
  for (uint32_t y = 0; y < 20; ++y) {
    uint8_t row[4];
    HostGetBitmapRow(bitmap.get(), row, y, sizeof row);
    EXPECT_EQ(row[1] & 0x07, 0);
    EXPECT_EQ(row[2], 0);
    EXPECT_EQ(row[3], 0);
  }
}

TEST_F(FaxTest, LinesThatAreMissingAreWhite) {
  for (const FaxKind kind : kKinds) {
    const Pixels page = MakePage(203, 60);
    const Pixels longer = LoadPage(EncodeFax(page, {kind}), FormatOf(kind), 203, 90);
    for (uint32_t y = 0; y < 90; ++y) {
      for (uint32_t x = 0; x < 203; ++x) {
        ASSERT_EQ(longer.At(x, y), y < 60 ? page.At(x, y) : 1)
            << static_cast<int>(kind) << " " << x << "," << y;
      }
    }
  }
}

TEST_F(FaxTest, LinesBehindTheHeightAreLeftOut) {
  const Pixels page = MakePage(203, 60);
  const Pixels shorter = LoadPage(EncodeFax(page, {}), 66, 203, 20);
  for (uint32_t y = 0; y < 20; ++y) {
    for (uint32_t x = 0; x < 203; ++x) ASSERT_EQ(shorter.At(x, y), page.At(x, y));
  }
}

TEST_F(FaxTest, ABitmapOfTheSameShapeKeepsItsPalette) {
  const Pixels page = MakePage(64, 32);
  Bitmap bitmap;
  HostPaletteEntry palette[256] = {};
  palette[0] = {10, 20, 30, 0};
  palette[1] = {40, 50, 60, 0};
  ASSERT_EQ(HostCreateBitmap(bitmap.get(), sizeof(HostBitmap), 1, 64, 32, 1, 0, palette, 1, nullptr, 0),
            SUCCESS);
  FaxDescription description{.format = 66, .width = 64, .height = 32};
  ASSERT_EQ(LoadFax(EncodeFax(page, {}), &description, &bitmap), SUCCESS);
  EXPECT_EQ(bitmap.Palette()[1].red, 60);
  EXPECT_EQ(MaxDifference(bitmap.Read(), page), 0);
  // Another shape replaces it, and nothing is lost on the way.
  FaxDescription other{.format = 66, .width = 63, .height = 32};
  ASSERT_EQ(LoadFax(EncodeFax(MakePage(63, 32), {}), &other, &bitmap), SUCCESS);
  EXPECT_EQ(bitmap->width, 63u);
  EXPECT_EQ(bitmap.Palette()[1].red, 255);
}

TEST_F(FaxTest, TheHooksFailureEndsTheLoad) {
  for (const int32_t status : {int32_t{ERR_FILE_READ}, 0, 2, int32_t{ERR_NOT_SUPPORTED}}) {
    FaxDescription description{.format = 66, .width = 64, .height = 32, .status = status};
    Bitmap bitmap;
    EXPECT_EQ(LoadFax(EncodeFax(MakePage(64, 32), {}), &description, &bitmap), status);
    EXPECT_EQ(bitmap->flags & 1, 0);
  }
}

TEST_F(FaxTest, OnlyFaxCanBeDescribed) {
  FaxDescription description{.format = 10, .width = 64, .height = 32};
  Bitmap bitmap;
  EXPECT_EQ(LoadFax(EncodeFax(MakePage(64, 32), {}), &description, &bitmap), ERR_NOT_SUPPORTED);
  FaxDescription empty{.format = 66, .width = 0, .height = 32};
  EXPECT_EQ(LoadFax(EncodeFax(MakePage(64, 32), {}), &empty, &bitmap), ERR_INVALID_PARAMETER);
}

TEST_F(FaxTest, InstallingReturnsTheHookInForce) {
  FaxDescription description;
  EXPECT_EQ(HostSetLoadHook(DescribeFax, &description), nullptr);
  EXPECT_EQ(HostSetLoadHook(nullptr, nullptr), DescribeFax);
  EXPECT_EQ(HostSetLoadHook(nullptr, nullptr), nullptr);
}

TEST_F(FaxTest, ThreadsHaveHooksOfTheirOwn) {
  const auto run = [](FaxKind kind, uint32_t width) {
    const Pixels page = MakePage(width, 64);
    const Stream data = EncodeFax(page, {kind});
    for (int i = 0; i < 50; ++i) {
      ASSERT_EQ(MaxDifference(LoadPage(data, FormatOf(kind), width, 64), page), 0);
    }
  };
  FaxDescription mine;
  HostSetLoadHook(DescribeFax, &mine);
  std::thread one(run, FaxKind::kG3OneD, 203);
  std::thread two(run, FaxKind::kG3TwoD, 411);
  one.join();
  two.join();
  EXPECT_EQ(mine.asked, 0);
  EXPECT_EQ(HostSetLoadHook(nullptr, nullptr), DescribeFax);
}

TEST_F(FaxTest, ADamagedLineDoesNotSpoilTheOthers) {
  const Pixels page = MakePage(203, 60);
  Stream data = EncodeFax(page, {FaxKind::kG3OneD, false, true});
  for (size_t i = data.size() / 2; i < data.size() / 2 + 3; ++i) data[i] = 0x55;
  const Pixels loaded = LoadPage(data, 66, 203, 60);
  int equal_lines = 0;
  for (uint32_t y = 0; y < 60; ++y) {
    bool equal = true;
    for (uint32_t x = 0; x < 203; ++x) equal = equal && loaded.At(x, y) == page.At(x, y);
    equal_lines += equal ? 1 : 0;
  }
  EXPECT_GE(equal_lines, 26);
}

TEST_F(FaxTest, WhatIsNoFaxIsRefused) {
  Stream noise(4000);
  const Pixels random = MakeNoise(4000, 1, 1, 8);
  for (size_t i = 0; i < noise.size(); ++i) noise[i] = static_cast<uint8_t>(random.samples[i]);
  for (const uint32_t format : {66u, 67u, 68u}) {
    FaxDescription description{.format = format, .width = 1728, .height = 1000};
    Bitmap bitmap;
    EXPECT_LT(LoadFax(noise, &description, &bitmap), 0) << format;
    EXPECT_EQ(bitmap->flags & 1, 0);
    FaxDescription nothing{.format = format, .width = 1728, .height = 1000};
    EXPECT_LT(LoadFax({}, &nothing, &bitmap), 0);
  }
}

}  // namespace
}  // namespace tavi_test

#include <cstring>

#include "HostTest.h"
#include "Reference.h"

namespace tavi::test {
namespace {

using BitmapTest = HostTest;

constexpr uint32_t kDepths[] = {1, 2, 3, 4, 5, 6, 7, 8, 12, 16, 24, 32, 48, 64};

int32_t Create(HostBitmap* record, uint32_t flags, uint32_t width, uint32_t height, uint32_t bits,
               void* data = nullptr, uint64_t size = 0) {
  return HostCreateBitmap(record, sizeof *record, flags, width, height, bits, 1, nullptr, 1, data, size);
}

// The limit as it was, again at the end.
class Limit {
 public:
  explicit Limit(uint64_t bytes) : old_(HostGetBitmapLimit()) { HostSetBitmapLimit(bytes); }
  Limit(const Limit&) = delete;
  Limit& operator=(const Limit&) = delete;
  ~Limit() { HostSetBitmapLimit(old_); }

 private:
  uint64_t old_;
};

TEST_F(BitmapTest, AnInitialisedRecordIsEmpty) {
  HostBitmap record;
  std::memset(&record, 0xCC, sizeof record);
  HostInitBitmap(&record, sizeof record, 35, 18, 1);
  EXPECT_EQ(record.width, 35u);
  EXPECT_EQ(record.height, 18u);
  EXPECT_EQ(record.bits, 1u);
  EXPECT_EQ(record.bytes_per_line, 8u);
  EXPECT_EQ(record.flags & 1, 0);
  uint8_t byte = 77;
  HostGetBitmapRow(&record, &byte, 0, 1);
  HostPutBitmapRow(&record, &byte, 0, 1);
  HostFillBitmap(&record, 0xFFFFFF);
  HostClearBitmap(&record);
  EXPECT_EQ(byte, 77);
  EXPECT_EQ(HostCreateBitmapDC(&record), nullptr);
  HostFreeBitmap(&record);
}

TEST_F(BitmapTest, ANewBitmapHasItsShapeAndIsZero) {
  for (const uint32_t bits : kDepths) {
    for (const uint32_t width : {1u, 2u, 7u, 8u, 9u, 33u}) {
      Bitmap bitmap(width, 5, bits, 2, 4);
      ASSERT_EQ(bitmap.status(), SUCCESS);
      EXPECT_EQ(bitmap->width, width);
      EXPECT_EQ(bitmap->height, 5u);
      EXPECT_EQ(bitmap->bits, bits);
      EXPECT_EQ(bitmap->bytes_per_line, (bits * width + 31) / 32 * 4);
      EXPECT_EQ(bitmap->flags & 1, 1);
      EXPECT_EQ(bitmap->color_count, bits <= 8 ? 1u << bits : 0);
      EXPECT_EQ(bitmap->view_perspective, 4u);
      EXPECT_EQ(bitmap->order, 2u);
      EXPECT_EQ(bitmap.Bytes(), std::vector<uint8_t>(5 * bitmap->bytes_per_line, 0));
    }
  }
}

TEST_F(BitmapTest, BadRequestsAreRefusedAndLeaveAnEmptyRecord) {
  struct Case {
    uint32_t flags, width, height, bits;
    int32_t status;
  };
  const Case cases[] = {
      {1, 4, 4, 0, ERR_INVALID_BPP},
      {1, 4, 4, 9, ERR_INVALID_BPP},
      {1, 4, 4, 20, ERR_INVALID_BPP},
      {1, 4, 4, 36, ERR_INVALID_BPP},
      {1, 4, 4, 65, ERR_INVALID_BPP},
      {2, 4, 4, 0, ERR_INVALID_BPP},
      {2, 0, 0, 9, ERR_INVALID_BPP},
      {0, 4, 4, 8, ERR_INVALID_PARAMETER},
      {3, 4, 4, 8, ERR_INVALID_PARAMETER},
      {1, 0, 4, 8, ERR_INVALID_PARAMETER},
      {1, 4, 0, 8, ERR_INVALID_PARAMETER},
      {1, 0x80000000u, 1, 8, ERR_INVALID_PARAMETER},
      {1, 1, 0xFFFFFFFFu, 8, ERR_INVALID_PARAMETER},
      {1, 0x7FFFFFFF, 0x7FFFFFFF, 64, ERR_NO_MEMORY},
      {1, 0x7FFFFFFF, 0x7FFFFFFF, 1, ERR_NO_MEMORY},
      {1, 60000, 60000, 24, ERR_NO_MEMORY},
  };
  for (const Case& c : cases) {
    HostBitmap record;
    std::memset(&record, 0xFF, sizeof record);
    EXPECT_EQ(Create(&record, c.flags, c.width, c.height, c.bits), c.status)
        << c.flags << ' ' << c.width << 'x' << c.height << 'x' << c.bits;
    EXPECT_EQ(record.flags & 1, 0);
    EXPECT_EQ(record.width, 0u);
    EXPECT_EQ(record.height, 0u);
  }
  HostBitmap record{};
  EXPECT_EQ(HostCreateBitmap(&record, 211, 1, 4, 4, 8, 1, nullptr, 1, nullptr, 0), ERR_INVALID_PARAMETER);
  EXPECT_EQ(HostCreateBitmap(nullptr, 212, 1, 4, 4, 8, 1, nullptr, 1, nullptr, 0), ERR_INVALID_PARAMETER);
  uint8_t data[64];
  EXPECT_EQ(Create(&record, 1, 4, 4, 8, data, sizeof data), ERR_INVALID_PARAMETER);
}

TEST_F(BitmapTest, TheLimitBoundsThePixelsOfOneBitmap) {
  EXPECT_EQ(HostGetBitmapLimit(), uint64_t{2} << 30);
  const Limit limit(1024);
  Bitmap fits(16, 16, 32);
  EXPECT_EQ(fits.status(), SUCCESS);
  Bitmap exceeds(16, 17, 32);
  EXPECT_EQ(exceeds.status(), ERR_NO_MEMORY);
}

TEST_F(BitmapTest, MemoryThatTheSystemRefusesIsReported) {
  const Limit limit(UINT64_MAX);
  Bitmap bitmap(0x20000000, 0x7FFFFFFF, 64);
  EXPECT_EQ(bitmap.status(), ERR_NO_MEMORY);
}

TEST_F(BitmapTest, RowsComeBackAsTheyWerePut) {
  for (const uint32_t bits : kDepths) {
    Bitmap bitmap(37, 6, bits);
    FillWithNoise(&bitmap, bits);
    const std::vector<uint8_t> before = bitmap.Bytes();
    Noise noise(bits + 100);
    std::vector<uint8_t> row(bitmap->bytes_per_line + 50u);
    for (uint8_t& byte : row) byte = noise.Byte();
    HostPutBitmapRow(bitmap.get(), row.data(), 2, 3);           // a part
    HostPutBitmapRow(bitmap.get(), row.data(), 4, row.size());  // never more than a row
    HostPutBitmapRow(bitmap.get(), row.data(), 6, 3);           // outside
    HostPutBitmapRow(bitmap.get(), row.data(), UINT32_MAX, 3);
    std::vector<uint8_t> wanted = before;
    const size_t line = bitmap->bytes_per_line;
    std::memcpy(&wanted[2 * line], row.data(), 3);
    std::memcpy(&wanted[4 * line], row.data(), line);
    EXPECT_EQ(bitmap.Bytes(), wanted) << bits;
  }
}

TEST_F(BitmapTest, GettingARowWritesWhatWasAskedAndNoMore) {
  Bitmap bitmap(5, 2, 8);
  bitmap.SetRow(1, {1, 2, 3, 4, 5, 6, 7, 8});
  uint8_t buffer[10];
  std::memset(buffer, 0xEE, sizeof buffer);
  HostGetBitmapRow(bitmap.get(), buffer, 1, 3);
  const uint8_t part[10] = {1, 2, 3, 0xEE, 0xEE, 0xEE, 0xEE, 0xEE, 0xEE, 0xEE};
  EXPECT_EQ(std::memcmp(buffer, part, 10), 0);
  HostGetBitmapRow(bitmap.get(), buffer, 1, 1000);
  const uint8_t whole[10] = {1, 2, 3, 4, 5, 6, 7, 8, 0xEE, 0xEE};
  EXPECT_EQ(std::memcmp(buffer, whole, 10), 0);
  HostGetBitmapRow(bitmap.get(), buffer, 2, 10);
  EXPECT_EQ(std::memcmp(buffer, whole, 10), 0);
  HostGetBitmapRow(nullptr, buffer, 0, 10);
  HostGetBitmapRow(bitmap.get(), nullptr, 0, 10);
}

TEST_F(BitmapTest, FillingGivesEveryPixelTheColour) {
  for (const uint32_t bits : kDepths) {
    for (const uint32_t order : {0u, 1u, 2u}) {
      for (const uint32_t width : {1u, 2u, 7u, 8u, 9u, 16u, 37u}) {
        for (const uint32_t color : {0x000000u, 0xFFFFFFu, 0x102030u, 0x0000FFu, 0x808080u}) {
          Bitmap bitmap(width, 3, bits, order, 4);
          FillWithNoise(&bitmap, 1);
          HostFillBitmap(bitmap.get(), color);
          const uint64_t wanted = RawOfColor(bitmap, FromInterface(color));
          for (const uint64_t raw : RawPixels(bitmap))
            ASSERT_EQ(raw, wanted) << bits << ' ' << order << ' ' << width;
        }
      }
    }
  }
}

TEST_F(BitmapTest, FillingLeavesThePaddingZero) {
  for (const uint32_t bits : kDepths) {
    Bitmap bitmap(5, 2, bits);
    HostFillBitmap(bitmap.get(), 0xFFFFFF);
    const std::vector<uint8_t> row = bitmap.Row(1);
    for (size_t bit = size_t{5} * bits; bit < row.size() * 8; ++bit) {
      // 12-bit pixels fill a byte from its low end.
      const size_t shift = bits == 12 ? bit % 8 : 7 - bit % 8;
      ASSERT_EQ(row[bit / 8] >> shift & 1, 0) << bits << " bit " << bit;
    }
  }
}

TEST_F(BitmapTest, ClearingZeroesAllPixels) {
  for (const uint32_t bits : kDepths) {
    Bitmap bitmap(9, 4, bits);
    FillWithNoise(&bitmap, 3);
    HostClearBitmap(bitmap.get());
    EXPECT_EQ(bitmap.Bytes(), std::vector<uint8_t>(4 * bitmap->bytes_per_line, 0));
  }
}

// Big bitmaps put filling off until a row is looked at: no order of operations may show it.
TEST_F(BitmapTest, BigBitmapsAreFilledWhereverTheyAreLookedAt) {
  constexpr uint32_t kSide = 1500;
  for (int round = 0; round < 3; ++round) {
    Bitmap bitmap(kSide, kSide, 24);
    ASSERT_EQ(bitmap.status(), SUCCESS);
    const size_t line = bitmap->bytes_per_line;
    EXPECT_EQ(bitmap.Row(700), std::vector<uint8_t>(line, 0)) << "fresh in round " << round;
    FillWithNoise(&bitmap, 1);
    HostFillBitmap(bitmap.get(), 0x010203);
    std::vector<uint8_t> filled;
    for (uint32_t x = 0; x < kSide; ++x) filled.insert(filled.end(), {1, 2, 3});
    filled.resize(line, 0);
    EXPECT_EQ(bitmap.Row(0), filled);
    EXPECT_EQ(bitmap.Row(1499), filled);
    bitmap.SetRow(10, std::vector<uint8_t>(5, 0xAB));
    std::vector<uint8_t> part = filled;
    std::fill_n(part.begin(), 5, uint8_t{0xAB});
    EXPECT_EQ(bitmap.Row(10), part);
    EXPECT_EQ(bitmap.Row(11), filled);
    const std::vector<uint8_t> noise(line, 0x77);
    bitmap.SetRow(12, noise);
    EXPECT_EQ(bitmap.Row(12), noise);
    HostClearBitmap(bitmap.get());
    EXPECT_EQ(bitmap.Row(12), std::vector<uint8_t>(line, 0));
    EXPECT_EQ(bitmap.Row(13), std::vector<uint8_t>(line, 0));
  }
}

TEST_F(BitmapTest, BigBitmapsAreCountedAndCombinedWhileFillingIsPending) {
  Bitmap target(2000, 3000, 8, 0);
  HostFillBitmap(target.get(), 0x646464);
  Bitmap source(1000, 1, 8, 0);
  FillWithNoise(&source, 4);
  EXPECT_EQ(HostCombineBitmap(target.get(), 500, 1234, 1000, 1, source.get(), 0, 0, 800), SUCCESS);
  std::vector<uint8_t> wanted(2000, 100);
  const std::vector<uint8_t> row = source.Row(0);
  std::copy(row.begin(), row.end(), wanted.begin() + 500);
  EXPECT_EQ(target.Row(1234), wanted);
  EXPECT_EQ(target.Row(1233), std::vector<uint8_t>(2000, 100));
  uint32_t counters[256] = {};
  HostFillBitmap(target.get(), 0x020202);
  EXPECT_EQ(HostHistogram(target.get(), counters, 256, 0), SUCCESS);
  EXPECT_EQ(counters[2], 6000000u);
}

TEST_F(BitmapTest, ARecordMovesByPlainCopy) {
  HostBitmap first{};
  ASSERT_EQ(Create(&first, 1, 10, 10, 24), SUCCESS);
  const uint8_t row[30] = {9, 8, 7};
  HostPutBitmapRow(&first, row, 4, sizeof row);
  HostBitmap second = first;
  std::memset(&first, 0, sizeof first);
  uint8_t read[30];
  HostGetBitmapRow(&second, read, 4, sizeof read);
  EXPECT_EQ(std::memcmp(row, read, sizeof row), 0);
  HostFreeBitmap(&second);
}

TEST_F(BitmapTest, FreeingLeavesAnEmptyRecordAndTwiceIsHarmless) {
  HostBitmap record{};
  ASSERT_EQ(Create(&record, 1, 10, 10, 8), SUCCESS);
  HostFreeBitmap(&record);
  EXPECT_EQ(record.flags & 1, 0);
  EXPECT_EQ(record.width, 0u);
  EXPECT_EQ(record.bits, 0u);
  HostFreeBitmap(&record);
}

TEST_F(BitmapTest, RubbishIsNoBitmap) {
  for (const int rubbish : {0x00, 0xFF, 0xCC}) {
    HostBitmap record;
    std::memset(&record, rubbish, sizeof record);
    uint8_t byte = 5;
    HostFreeBitmap(&record);
    HostFillBitmap(&record, 1);
    HostClearBitmap(&record);
    HostAccessBitmap(&record);
    HostReleaseBitmap(&record);
    HostGetBitmapRow(&record, &byte, 0, 1);
    HostPutBitmapRow(&record, &byte, 0, 1);
    EXPECT_EQ(HostAttachBitmapData(&record, &byte, 1), ERR_NO_BITMAP);
    EXPECT_EQ(HostAdjustBitmap(&record, 350), ERR_NO_BITMAP);
    EXPECT_EQ(HostCreateBitmapDC(&record), nullptr);
  }
  HostFreeBitmap(nullptr);
  HostFillBitmap(nullptr, 1);
  HostClearBitmap(nullptr);
  HostAccessBitmap(nullptr);
  HostReleaseBitmap(nullptr);
  HostInitBitmap(nullptr, 212, 1, 1, 1);
  EXPECT_EQ(HostAttachBitmapData(nullptr, nullptr, 0), ERR_NO_BITMAP);
}

TEST_F(BitmapTest, ARecordWhoseShapeWasChangedIsNoBitmapButFrees) {
  HostBitmap record{};
  ASSERT_EQ(Create(&record, 1, 4, 4, 24), SUCCESS);
  for (uint32_t HostBitmap::*field :
       {&HostBitmap::width, &HostBitmap::height, &HostBitmap::bits, &HostBitmap::bytes_per_line}) {
    const uint32_t old = record.*field;
    record.*field = old * 1000;
    EXPECT_EQ(HostAdjustBitmap(&record, 350), ERR_NO_BITMAP);
    HostFillBitmap(&record, 0xFFFFFF);
    record.*field = old;
  }
  record.width = 1000;
  HostFreeBitmap(&record);
}

TEST_F(BitmapTest, AttachedPixelsStayTheCallers) {
  uint8_t pixels[2 * 8];
  for (uint8_t i = 0; i < 16; ++i) pixels[i] = i;
  HostBitmap record{};
  ASSERT_EQ(Create(&record, 2, 2, 2, 24), SUCCESS);
  EXPECT_EQ(record.flags & 1, 0);
  EXPECT_EQ(HostCreateBitmapDC(&record), nullptr) << "nothing attached yet";
  EXPECT_EQ(HostAttachBitmapData(&record, pixels, 15), ERR_INVALID_PARAMETER);
  EXPECT_EQ(HostAttachBitmapData(&record, nullptr, 16), ERR_INVALID_PARAMETER);
  EXPECT_EQ(HostAttachBitmapData(&record, pixels, 16), SUCCESS);
  uint8_t row[8];
  HostGetBitmapRow(&record, row, 1, 8);
  EXPECT_EQ(row[0], 8);
  const uint8_t put[3] = {70, 71, 72};
  HostPutBitmapRow(&record, put, 0, 3);
  EXPECT_EQ(pixels[2], 72);
  EXPECT_EQ(pixels[3], 3);
  HostFillBitmap(&record, 0xFFFFFF);
  EXPECT_EQ(pixels[8], 255);
  HostClearBitmap(&record);
  EXPECT_EQ(pixels[8], 0);
  HostFreeBitmap(&record);
}

TEST_F(BitmapTest, PixelsAreAttachedAtOnce) {
  uint8_t pixels[8] = {1, 2, 3, 4, 5, 6, 7, 8};
  HostBitmap record{};
  EXPECT_EQ(Create(&record, 2, 2, 2, 8, pixels, 7), ERR_INVALID_PARAMETER);
  ASSERT_EQ(Create(&record, 2, 2, 2, 8, pixels, 8), SUCCESS);
  uint8_t row[4];
  HostGetBitmapRow(&record, row, 1, 4);
  EXPECT_EQ(row[3], 8);
}

TEST_F(BitmapTest, ABitmapWithItsOwnPixelsTakesNoOthers) {
  Bitmap bitmap(2, 2, 8);
  uint8_t pixels[8];
  EXPECT_EQ(HostAttachBitmapData(bitmap.get(), pixels, 8), ERR_NO_BITMAP);
  Bitmap empty;
  EXPECT_EQ(HostAttachBitmapData(empty.get(), pixels, 8), ERR_NO_BITMAP);
}

// Nobody frees a record whose flag is not set; with a palette of its own there is something to free.
TEST_F(BitmapTest, TheFlagSaysWhetherThereIsSomethingToFree) {
  HostPaletteEntry* const standard = HostDefaultPalette(8);
  HostBitmap record{};
  ASSERT_EQ(Create(&record, 2, 2, 2, 8), SUCCESS);
  HostPutBitmapColors(&record, 0, 255, standard);
  EXPECT_EQ(record.flags & 1, 0) << "the fixed palette takes no memory";
  standard[3].red = 99;
  HostPutBitmapColors(&record, 0, 255, standard);
  EXPECT_EQ(record.flags & 1, 1);
  HostFreeBitmap(&record);
  ASSERT_EQ(HostCreateBitmap(&record, 212, 2, 2, 2, 8, 1, standard, 1, nullptr, 0), SUCCESS);
  EXPECT_EQ(record.flags & 1, 1);
  HostFreeBitmap(&record);
  HostFreeMem(standard, 0, nullptr);
}

TEST_F(BitmapTest, ABitmapWithoutAreaPaintsNothing) {
  HostBitmap record{};
  ASSERT_EQ(Create(&record, 2, 0, 0, 0), SUCCESS);
  Bitmap target(4, 4, 24);
  const Context context(target);
  const HostRect rect = {0, 0, 4, 4};
  EXPECT_EQ(HostPaintBitmap(context.get(), &record, nullptr, nullptr, &rect, nullptr, kSourceCopy), SUCCESS);
  EXPECT_EQ(HostCombineBitmap(target.get(), 0, 0, 4, 4, &record, 0, 0, 800), SUCCESS);
  EXPECT_EQ(target.Bytes(), std::vector<uint8_t>(48, 0));
}

}  // namespace
}  // namespace tavi::test

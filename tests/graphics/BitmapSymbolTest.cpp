// Bitmap symbols: how their bits are unpacked, coloured and painted.
#include <random>

#include "GraphicsTest.h"

namespace graphics {
namespace {

// ---- Unpacking ----

class BilevelSymbol : public GraphicsTest {
 protected:
  struct Unpacked {
    int32_t status = 0;
    std::vector<Bytes> rows;
  };
  static Unpacked Unpack(uint32_t width, uint32_t height, const Bytes& data, int64_t line = -1) {
    tavi::OwnedBitmap bitmap;
    EXPECT_EQ(
        HostCreateBitmap(bitmap.get(), sizeof(HostBitmap), 1, width, height, 1, 0, nullptr, 1, nullptr, 0),
        SUCCESS);
    Unpacked unpacked;
    unpacked.status =
        tavi::UnpackBilevelSymbol(data.data(), data.size(), bitmap.get(),
                                  line < 0 ? bitmap->bytes_per_line : static_cast<uint64_t>(line));
    for (uint32_t y = 0; y < height; ++y) {
      unpacked.rows.emplace_back(bitmap->bytes_per_line);
      HostGetBitmapRow(bitmap.get(), unpacked.rows[y].data(), y, bitmap->bytes_per_line);
    }
    return unpacked;
  }
};

TEST_F(BilevelSymbol, RowsRunOnAcrossBytes) {
  // 3 x 5 bits: 101 010 111 000 110, and one bit over.
  const Unpacked unpacked = Unpack(3, 5, {0b10101011, 0b10001101});
  EXPECT_EQ(unpacked.status, SUCCESS);
  EXPECT_EQ(unpacked.rows, (std::vector<Bytes>{{0b10100000, 0, 0, 0},
                                               {0b01000000, 0, 0, 0},
                                               {0b11100000, 0, 0, 0},
                                               {0b00000000, 0, 0, 0},
                                               {0b11000000, 0, 0, 0}}));
}

TEST_F(BilevelSymbol, WholeBytesAreTakenAsTheyStand) {
  const Unpacked unpacked = Unpack(16, 2, {1, 2, 3, 4});
  EXPECT_EQ(unpacked.status, SUCCESS);
  EXPECT_EQ(unpacked.rows, (std::vector<Bytes>{{1, 2, 0, 0}, {3, 4, 0, 0}}));
}

TEST_F(BilevelSymbol, EveryShapeIsUnpackedBitByBit) {
  std::mt19937 random(7);
  for (uint32_t width = 1; width <= 41; ++width) {
    for (const uint32_t height : {1U, 2U, 7U}) {
      Bytes data((width * height + 7) / 8);
      for (uint8_t& byte : data) byte = static_cast<uint8_t>(random());
      const Unpacked unpacked = Unpack(width, height, data);
      ASSERT_EQ(unpacked.status, SUCCESS);
      std::vector<Bytes> expected(height, Bytes(unpacked.rows[0].size()));
      for (uint32_t bit = 0; bit < width * height; ++bit) {
        if ((data[bit / 8] & 128 >> bit % 8) == 0) continue;
        uint8_t& byte = expected[bit / width][bit % width / 8];
        byte = static_cast<uint8_t>(byte | 128 >> bit % width % 8);
      }
      ASSERT_EQ(unpacked.rows, expected) << width << " x " << height;
    }
  }
}

TEST_F(BilevelSymbol, OnlyWholeMissingBytesAreAFault) {
  EXPECT_EQ(Unpack(3, 5, {0xFF, 0xFE}).status, SUCCESS) << "15 bits of 16";
  EXPECT_EQ(Unpack(3, 3, {0xFF, 0x00}).status, SUCCESS) << "one bit of the last byte is used";
  EXPECT_EQ(Unpack(3, 3, {0xFF}).status, ERR_FILE_FORMAT);
  EXPECT_EQ(Unpack(8, 2, {0xFF}).status, ERR_FILE_FORMAT);
  EXPECT_EQ(Unpack(8, 1, {}).status, ERR_FILE_FORMAT);
}

TEST_F(BilevelSymbol, RowsThatDoNotFitALineAreAFault) {
  EXPECT_EQ(Unpack(32, 1, {1, 2, 3, 4}, 3).status, ERR_FILE_FORMAT);
  EXPECT_EQ(Unpack(17, 1, {1, 2, 3}, 2).status, ERR_FILE_FORMAT);
  EXPECT_EQ(Unpack(16, 1, {1, 2}, 2).status, SUCCESS);
}

TEST_F(BilevelSymbol, NoRowsNeedNoData) {
  HostBitmap bitmap;
  HostInitBitmap(&bitmap, sizeof bitmap, 8, 0, 1);
  EXPECT_EQ(tavi::UnpackBilevelSymbol(nullptr, 0, &bitmap, 4), SUCCESS);
}

// ---- Painting ----

class BitmapSymbol : public GraphicsTest {
 protected:
  // 8 x 4 pixels at row 3, column 5: a frame around nothing.
  static NtfBuilder Symbol(const std::string& scolor, const std::string& nbpp = "1") {
    GraphicSpec graphic;
    graphic.sfmt = 'B';
    graphic.row = 3;
    graphic.column = 5;
    graphic.data = {0xFF, 0x81, 0x81, 0xFF};
    graphic.fields = {{"SCOLOR", scolor}, {"NPIXPL", "0008"}, {"NLIPS", "0004"}, {"NBPP", nbpp}};
    return File(graphic, tavi_test::Layout::kNitf20);
  }

  void SetUp() override {
    GraphicsTest::SetUp();
    host_.emplace();
  }
  void TearDown() override {
    host_.reset();
    GraphicsTest::TearDown();
  }
  Recording& host() { return **host_; }

  int32_t Draw(const NtfBuilder& file, int32_t row = 0, int32_t column = 0) {
    NitfFile document;
    Open(document, file);
    host().calls.clear();
    const int32_t status = tavi::DrawGraphicSegment(nullptr, canvas_.dc(), document, 0, row, column);
    EXPECT_TRUE(IsEmpty(document)) << "no vector comes of a bitmap";
    return status;
  }
  Canvas canvas_{40, 40, 0x405060};

 private:
  std::optional<Recorder> host_;
};

constexpr uint32_t kCanvas = 0x405060;

TEST_F(BitmapSymbol, BilevelSymbolIsUnpackedAndPaintedWithoutItsBackground) {
  EXPECT_EQ(Draw(Symbol("R")), SUCCESS);
  EXPECT_EQ(host().Beginning("HostCreate"),
            (Calls{"HostCreateBitmap 212 1 8x4x1 order 0 palette view 1 data 0 null"}));
  EXPECT_EQ(host().Of("HostPaintBitmapKeyed"),
            (Calls{"HostPaintBitmapKeyed 8x4x1 (5,3,13,7) 0xCC0020 1000 without 0x0"}));
  EXPECT_EQ(host().Of("RealizePalette").size(), 1U);
  EXPECT_EQ(host().calls.back(), "HostFreeBitmap");
  EXPECT_EQ(canvas_.At(5, 3), 0x0000FFU);
  EXPECT_EQ(canvas_.At(12, 6), 0x0000FFU);
  EXPECT_EQ(canvas_.At(6, 4), kCanvas);
  EXPECT_EQ(canvas_.At(4, 3), kCanvas);
  EXPECT_EQ(canvas_.At(13, 7), kCanvas);
}

struct Letter {
  const char* letter;
  uint32_t symbol;      // 0x00BBGGRR
  uint32_t background;  // of the palette
  bool keyed;
};

class BitmapSymbolLetter : public BitmapSymbol, public testing::WithParamInterface<Letter> {};
INSTANTIATE_TEST_SUITE_P(All, BitmapSymbolLetter,
                         testing::Values(Letter{"B", 0xFF0000, 0, true},
                                         Letter{"K", 0x000000, 0xFFFFFF, true},
                                         Letter{"N", 0xFFFFFF, 0, false}, Letter{"W", 0xFFFFFF, 0, true},
                                         Letter{"O", 0x0096FF, 0, true}, Letter{"R", 0x0000FF, 0, true},
                                         Letter{"Y", 0x00FFFF, 0, true}));

TEST_P(BitmapSymbolLetter, HasItsColours) {
  const Letter& l = GetParam();
  EXPECT_EQ(Draw(Symbol(l.letter)), SUCCESS);
  EXPECT_EQ(host().Of("HostPaintBitmap").size(), l.keyed ? 0U : 1U);
  EXPECT_EQ(host().Of("HostPaintBitmapKeyed"),
            l.keyed ? Calls{"HostPaintBitmapKeyed 8x4x1 (5,3,13,7) 0xCC0020 1000 without " +
                            std::string(l.background != 0 ? "0xFFFFFF" : "0x0")}
                    : Calls{});
  ASSERT_EQ(host().bitmap_palette.size(), 2U);
  const auto colour = [](const HostPaletteEntry& e) {
    return static_cast<uint32_t>(e.blue << 16 | e.green << 8 | e.red);
  };
  EXPECT_EQ(colour(host().bitmap_palette[0]), l.background);
  EXPECT_EQ(colour(host().bitmap_palette[1]), l.symbol);
  EXPECT_EQ(canvas_.At(5, 3), l.symbol);
  EXPECT_EQ(canvas_.At(6, 4), l.keyed ? kCanvas : l.background);
}

TEST_F(BitmapSymbol, OtherLettersAreBlackOnBlackAndLeaveNothing) {
  for (const char* letter : {"C", " ", "r"}) {
    EXPECT_EQ(Draw(Symbol(letter)), SUCCESS);
    EXPECT_EQ(host().Of("HostPaintBitmapKeyed"),
              (Calls{"HostPaintBitmapKeyed 8x4x1 (5,3,13,7) 0xCC0020 1000 without 0x0"}));
    EXPECT_EQ(canvas_.At(5, 3), kCanvas);
  }
}

TEST_F(BitmapSymbol, OffsetsAndNegativePlacesAreAdded) {
  EXPECT_EQ(Draw(Symbol("R"), -5, -8), SUCCESS);
  EXPECT_EQ(host().Of("HostPaintBitmapKeyed"),
            (Calls{"HostPaintBitmapKeyed 8x4x1 (-3,-2,5,2) 0xCC0020 1000 without 0x0"}));
  EXPECT_EQ(canvas_.At(4, 0), 0x0000FFU);
  EXPECT_EQ(canvas_.At(3, 0), kCanvas);
}

TEST_F(BitmapSymbol, ColourTableHasItsWayButNotOverWhatIsLeftOut) {
  NtfBuilder file = Symbol("R");
  file.graphics[0].lut_planes = {{10, 40}, {20, 50}, {30, 60}};
  EXPECT_EQ(Draw(file), SUCCESS);
  EXPECT_EQ(host().Of("HostPaintBitmapKeyed"),
            (Calls{"HostPaintBitmapKeyed 8x4x1 (5,3,13,7) 0xCC0020 1000 without 0x0"}));
  EXPECT_EQ(canvas_.At(5, 3), 0x3C3228U);
  EXPECT_EQ(canvas_.At(6, 4), 0x1E140AU) << "the table's background is not the letter's, and is painted";
}

TEST_F(BitmapSymbol, TableOfOneEntryChangesTheBackgroundAlone) {
  NtfBuilder file = Symbol("R");
  file.graphics[0].lut_planes = {{0x77}};
  EXPECT_EQ(Draw(file), SUCCESS);
  EXPECT_EQ(canvas_.At(5, 3), 0x0000FFU);
  EXPECT_EQ(canvas_.At(6, 4), 0x777777U);
}

TEST_F(BitmapSymbol, TableLargerThanThePaletteIsCut) {
  NtfBuilder file = Symbol("N");
  file.graphics[0].lut_planes = std::vector<Bytes>(3, Bytes(256, 9));
  EXPECT_EQ(Draw(file), SUCCESS);
  EXPECT_EQ(canvas_.At(5, 3), 0x090909U);
  EXPECT_EQ(host().bitmap_palette.size(), 2U);
}

TEST_F(BitmapSymbol, DeeperSymbolsLieOverTheDataAsTheyStand) {
  NtfBuilder file = Symbol("N", "8");
  file.graphics[0].data.resize(8 * 4);
  for (uint8_t i = 0; i < 32; ++i) file.graphics[0].data[i] = static_cast<uint8_t>(i * 8);
  EXPECT_EQ(Draw(file), SUCCESS);
  EXPECT_EQ(host().Of("HostCreateBitmap"), (Calls{"HostCreateBitmap 212 2 8x4x8 order 0 view 1 data 32"}));
  EXPECT_EQ(host().Of("HostPaintBitmap"), (Calls{"HostPaintBitmap 8x4x8 (5,3,13,7) 0xCC0020"}));
  EXPECT_EQ(canvas_.At(5, 3), 0x000000U);
  EXPECT_EQ(canvas_.At(12, 6), 0xF8F8F8U);
}

TEST_F(BitmapSymbol, DeeperSymbolsHaveNoLetterColourAndLeaveBlackOut) {
  NtfBuilder file = Symbol("K", "8");
  file.graphics[0].data.assign(8 * 4, 200);
  file.graphics[0].data[1] = 0;
  EXPECT_EQ(Draw(file), SUCCESS);
  EXPECT_EQ(host().Of("HostPaintBitmapKeyed"),
            (Calls{"HostPaintBitmapKeyed 8x4x8 (5,3,13,7) 0xCC0020 1000 without 0x0"}));
  EXPECT_EQ(canvas_.At(5, 3), 0xC8C8C8U);
  EXPECT_EQ(canvas_.At(6, 3), kCanvas);
}

TEST_F(BitmapSymbol, DeeperSymbolsTakeTheirColourTable) {
  NtfBuilder file = Symbol("N", "4");
  file.graphics[0].data = Bytes(16, 0x12);
  file.graphics[0].lut_planes = {{1, 2, 3}, {4, 5, 6}, {7, 8, 9}};
  EXPECT_EQ(Draw(file), SUCCESS);
  EXPECT_EQ(canvas_.At(5, 3), 0x080502U);
  EXPECT_EQ(canvas_.At(6, 3), 0x090603U);
}

TEST_F(BitmapSymbol, DataShorterThanTheBitmapLaidOverThemAreRefused) {
  NtfBuilder file = Symbol("N", "8");
  file.graphics[0].data.resize(31);
  EXPECT_EQ(Draw(file), ERR_INVALID_PARAMETER);
  EXPECT_EQ(host().Of("HostPaintBitmap"), Calls{});
}

TEST_F(BitmapSymbol, WithoutDataDeeperSymbolsHaveNothingToPaint) {
  NtfBuilder file = Symbol("N", "8");
  file.graphics[0].data.clear();
  EXPECT_LT(Draw(file), SUCCESS);
  EXPECT_EQ(canvas_.At(5, 3), kCanvas);
}

TEST_F(BitmapSymbol, SidesThatAreNoneAreRefusedByTheHost) {
  for (const auto& [field, text] : std::vector<std::pair<std::string, std::string>>{{"NPIXPL", "0000"},
                                                                                    {"NLIPS", "0000"},
                                                                                    {"NPIXPL", "-001"},
                                                                                    {"NLIPS", "-999"},
                                                                                    {"NPIXPL", "wide"}}) {
    SCOPED_TRACE(field + text);
    NtfBuilder file = Symbol("R");
    file.graphics[0].fields[field] = text;
    EXPECT_EQ(Draw(file), ERR_INVALID_PARAMETER);
    EXPECT_EQ(host().Of("HostPaintBitmapKeyed"), Calls{});
  }
}

TEST_F(BitmapSymbol, DepthThatIsNoneIsRefusedByTheHost) {
  for (const char* nbpp : {"0", "9", "x"}) EXPECT_EQ(Draw(Symbol("R", nbpp)), ERR_INVALID_BPP) << nbpp;
}

TEST_F(BitmapSymbol, LargestSymbolWithFewDataIsRefused) {
  NtfBuilder file = Symbol("R");
  file.graphics[0].fields["NPIXPL"] = "9999";
  file.graphics[0].fields["NLIPS"] = "9999";
  EXPECT_EQ(Draw(file), ERR_FILE_FORMAT);
}

TEST_F(BitmapSymbol, OfA21FileHasNoSizeAndPaintsNothing) {
  for (const char* scolor : {"C", "N", "K"}) {
    GraphicSpec graphic;
    graphic.sfmt = 'B';
    graphic.row = 3;
    graphic.column = 5;
    graphic.data = {1, 2, 3};
    graphic.fields["SCOLOR"] = scolor;
    EXPECT_EQ(Draw(File(graphic)), SUCCESS) << scolor;
    EXPECT_EQ(host().Of("HostCreateBitmap"), (Calls{"HostCreateBitmap 212 2 0x0x0 order 0 view 1 data 3"}));
    EXPECT_EQ(canvas_.At(5, 3), kCanvas);
  }
}

// Without a context the bitmap is made all the same and the host refuses to paint it.
TEST_F(BitmapSymbol, WithoutAContextTheHostRefuses) {
  for (const char* scolor : {"R", "N"}) {
    NitfFile document;
    Open(document, Symbol(scolor));
    host().calls.clear();
    EXPECT_LT(tavi::DrawGraphicSegment(nullptr, nullptr, document, 0, 0, 0), SUCCESS) << scolor;
    EXPECT_EQ(host().Of("HostCreateBitmap").size(), 1U);
    EXPECT_TRUE(IsEmpty(document));
  }
}

TEST_F(BitmapSymbol, FailedHostCallsAreReturnedWithEverythingReleased) {
  for (const char* operation : {"HostCreateBitmap", "HostPaintBitmapKeyed"}) {
    host().answers = {{operation, ERR_NO_MEMORY}};
    EXPECT_EQ(Draw(Symbol("R")), ERR_NO_MEMORY) << operation;
  }
  host().answers = {{"HostPaintBitmap", ERR_NO_BITMAP}};
  EXPECT_EQ(Draw(Symbol("N")), ERR_NO_BITMAP);
}

TEST_F(BitmapSymbol, PaletteOfAnIndexedContextIsSelectedAndPutBack) {
  tavi::OwnedBitmap indexed;
  ASSERT_EQ(HostCreateBitmap(indexed.get(), sizeof(HostBitmap), 1, 20, 20, 8, 0, nullptr, 1, nullptr, 0),
            SUCCESS);
  const tavi::BitmapContext context(indexed.get());
  NitfFile document;
  Open(document, Symbol("R"));
  host().calls.clear();
  EXPECT_EQ(tavi::DrawGraphicSegment(nullptr, context.get(), document, 0, 0, 0), SUCCESS);
  const size_t selected = host().Of("SelectPalette").size();
  EXPECT_EQ(host().Of("HostDeleteObject").size() * 2, selected);
  EXPECT_EQ(host().Of("RealizePalette").size(), 1U);
}

}  // namespace
}  // namespace graphics

// Cell arrays and pattern tables: packed and in runs, at every local precision.
#include <algorithm>

#include "CgmTest.h"

namespace tavi::test {
namespace {

class CellTest : public CgmTest {};

constexpr int kColumns = 5;
constexpr int kRows = 3;

// Values put together bit by bit, rows at words.
class Bits {
 public:
  void Put(uint32_t value, int bits) {
    for (int i = bits - 1; i >= 0; --i) {
      if (used_ % 8 == 0) octets_.push_back(0);
      octets_.back() = static_cast<uint8_t>(octets_.back() | (value >> i & 1) << (7 - used_ % 8));
      ++used_;
    }
  }
  void Align(int to) {
    while (used_ % static_cast<size_t>(to) != 0) Put(0, 1);
  }
  const Octets& octets() const { return octets_; }

 private:
  Octets octets_;
  size_t used_ = 0;
};

List Head(int columns, int rows, int precision, int mode) {
  return Line({0, 0, 50, 30, 50, 0}).I(columns).I(rows).I(precision).I(mode);
}

uint32_t Index(int x, int y, int bits) {
  return static_cast<uint32_t>(x * 3 + y * 5 + 1) & ((1U << std::min(bits, 4)) - 1);
}

Metafile Indexed(int index_precision) {
  Metafile metafile;
  List table = List().I(0, index_precision);
  for (int i = 0; i < 16; ++i) table.Rgb(static_cast<uint8_t>(i), 7, 9);
  metafile.Head(1, 8, List().I(index_precision)).Picture(2, 2, List().I(0)).Body(5, 34, table);
  return metafile;
}

void ExpectCells(const Loaded& loaded, int bits, const std::string& what) {
  const auto& cells = loaded.As<vec::CellArray>();
  ASSERT_EQ(cells.colors.size(), static_cast<size_t>(kColumns * kRows)) << what;
  EXPECT_EQ(cells.columns, static_cast<uint32_t>(kColumns));
  EXPECT_EQ(cells.rows, static_cast<uint32_t>(kRows));
  for (int i = 0; i < kColumns * kRows; ++i) {
    EXPECT_EQ(cells.colors[static_cast<size_t>(i)], 0x090700U | Index(i % kColumns, i / kColumns, bits))
        << what << i;
  }
}

TEST_F(CellTest, PackedIndices) {
  for (const int local : {0, 1, 2, 4, 8, 16, 24, 32}) {
    const int bits = local == 0 ? 16 : local;
    for (const bool padded : {true, false}) {
      Bits data;
      for (int y = 0; y < kRows; ++y) {
        if (padded) data.Align(16);
        data.Align(8);
        for (int x = 0; x < kColumns; ++x) data.Put(Index(x, y, bits), bits);
      }
      const Loaded loaded(Indexed(16).Body(4, 9, Head(kColumns, kRows, local, 1).Add(data.octets())));
      ExpectCells(loaded, bits, "at " + std::to_string(local));
    }
  }
}

TEST_F(CellTest, RunsOfIndices) {
  for (const int local : {0, 1, 2, 4, 8, 16, 24, 32}) {
    const int bits = local == 0 ? 8 : local;
    Bits data;
    for (int y = 0; y < kRows; ++y) {
      data.Align(16);
      for (int x = 0; x < kColumns; ++x) {
        data.Put(1, 16);
        data.Put(Index(x, y, bits), bits);
      }
    }
    const Loaded loaded(Indexed(8).Body(4, 9, Head(kColumns, kRows, local, 0).Add(data.octets())));
    ExpectCells(loaded, bits, "at " + std::to_string(local));
  }
}

TEST_F(CellTest, RunsOfDirectColors) {
  const List data = List().I(3).Rgb(255, 0, 0).I(2).Rgb(0, 255, 0).I(9).Rgb(0, 0, 255).Align();
  const Loaded loaded(Metafile().Body(4, 9, Head(5, 2, 8, 0).Add(data.octets())));
  const std::vector<uint32_t> wanted = {kRed, kRed, kRed, kGreen, kGreen, kBlue, kBlue, kBlue, kBlue, kBlue};
  EXPECT_EQ(loaded.As<vec::CellArray>().colors, wanted) << "a run ends with its row";
}

// A component keeps its value, which the extent of 0 to 255 gives its meaning. Fewer bits cannot say 255: there the
// largest value is full.
TEST_F(CellTest, DirectColorsOfAnotherDepth) {
  for (const int bits : {1, 2, 4, 16, 24, 32}) {
    Bits data;
    const uint32_t full = bits < 8 ? (1U << bits) - 1 : 255;
    for (int y = 0; y < 2; ++y) {
      data.Align(16);
      for (const uint32_t value : {full, 0U, 0U, 0U, full, 0U}) data.Put(value, bits);
    }
    const Loaded loaded(Metafile().Body(4, 9, Head(2, 2, bits, 1).Add(data.octets())));
    EXPECT_EQ(loaded.As<vec::CellArray>().colors, (std::vector<uint32_t>{kRed, kGreen, kRed, kGreen}))
        << bits;
  }
  const List wide = Head(2, 1, 16, 1).I(1).I(2).I(3).I(254).I(256).I(0xFFFF);
  EXPECT_EQ(Loaded(Metafile().Body(4, 9, wide)).As<vec::CellArray>().colors,
            (std::vector<uint32_t>{0x030201, 0xFFFFFE}));
}

TEST_F(CellTest, DepthsWithinAndBelowAnotherExtent) {
  const List extent = List().I(0).I(0).I(0).I(1000).I(1000).I(1000);
  const auto colors = [&extent](const List& cells) {
    return Loaded(Metafile().Head(1, 7, List().I(16)).Head(1, 10, extent).Body(4, 9, cells))
        .As<vec::CellArray>()
        .colors;
  };
  EXPECT_EQ(colors(Head(1, 1, 24, 1).I(1000, 24).I(500, 24).I(0, 24)), (std::vector<uint32_t>{0x0080FF}));
  EXPECT_EQ(colors(Head(1, 1, 8, 1).Add({255, 0, 51})), (std::vector<uint32_t>{0x3300FF}));
}

// Rows begin at even places of the parameters, wherever the colours begin.
TEST_F(CellTest, RowsBeginAtEvenPlacesOfTheList) {
  for (const int integer : {8, 16, 24, 32}) {
    const auto head = [integer](int columns, int rows, int mode) {
      return Line({0, 0, 50, 30, 50, 0}).I(columns, integer).I(rows, integer).I(8, integer).I(mode);
    };
    const auto table = [integer](int columns, int rows) {
      return List().I(1).I(columns, integer).I(rows, integer).I(8, integer);
    };
    const auto load = [integer](int id, const List& list) {
      Metafile metafile;
      metafile.Head(1, 4, List().I(integer)).Body(id == 9 ? 4 : 5, id, list);
      metafile.Body(5, 22, List().I(2)).Body(5, 25, List().I(1)).Body(4, 11, Line());
      return metafile.Finish();
    };
    const std::vector<uint32_t> wanted = {kRed, kGreen};
    List packed = head(1, 2, 1).Align().Rgb(255, 0, 0).Align().Rgb(0, 255, 0);
    EXPECT_EQ(Loaded(load(9, packed)).As<vec::CellArray>().colors, wanted) << integer;
    List runs = head(1, 2, 0).Align().I(1, integer).Rgb(255, 0, 0).Align().I(1, integer).Rgb(0, 255, 0);
    EXPECT_EQ(Loaded(load(9, runs)).As<vec::CellArray>().colors, wanted) << integer;
    List bare = head(1, 2, 1).Rgb(255, 0, 0).Rgb(0, 255, 0);
    if (integer != 8 && integer != 24) {
      EXPECT_EQ(Loaded(load(9, bare)).As<vec::CellArray>().colors, wanted) << "without any padding";
    }
    const Loaded pattern(load(32, table(1, 2).Align().Rgb(255, 0, 0).Align().Rgb(0, 255, 0)));
    ASSERT_EQ(pattern.drawing().patterns.size(), 1U) << integer;
    EXPECT_EQ(pattern.drawing().patterns[0].colors, wanted) << integer;
  }
}

TEST_F(CellTest, CornersAndTransparentCells) {
  const Loaded loaded(Metafile()
                          .Picture(2, 6, Line({0, 100, 100, 0}))
                          .Body(3, 20, List().I(1).Rgb(0, 255, 0))
                          .Body(4, 9, Head(1, 1, 8, 1).Rgb(255, 0, 0))
                          .Body(3, 20, List().I(0).Rgb(0, 255, 0))
                          .Body(4, 9, Head(1, 1, 8, 1).Rgb(255, 0, 0)));
  const auto& cells = loaded.As<vec::CellArray>();
  EXPECT_EQ(cells.corner, (Point{0, 0}));
  EXPECT_EQ(cells.opposite, (Point{50, -30}));
  EXPECT_EQ(cells.row_end, (Point{50, 0}));
  EXPECT_EQ(cells.transparent, kGreen);
  EXPECT_FALSE(loaded.As<vec::CellArray>(1).transparent);
}

TEST_F(CellTest, RowsInPartitions) {
  List data;
  for (int i = 0; i < 8; ++i) data.Rgb(255, 0, 0);
  const Octets list = Head(2, 4, 8, 1).Add(data.octets()).octets();
  const Loaded loaded(Metafile().BodyOctets(Element(4, 9, list, Form::kPartitioned, 6)));
  EXPECT_EQ(loaded.As<vec::CellArray>().colors, std::vector<uint32_t>(8, kRed));
}

// What the list does not hold loses the array; nothing is taken for it first.
TEST_F(CellTest, CellsThatAreNotThere) {
  for (const int mode : {0, 1}) {
    for (const auto& [columns, rows] : std::vector<std::pair<int, int>>{
             {0, 3}, {3, 0}, {-1, 3}, {3, -7}, {3, 3}, {32767, 32767}, {1, 32767}, {32767, 1}}) {
      const Loaded loaded(
          Metafile().Body(4, 9, Head(columns, rows, 8, mode).I(2).Rgb(1, 2, 3)).Body(4, 1, Line()));
      ASSERT_EQ(loaded.status(), SUCCESS) << columns << 'x' << rows;
      EXPECT_EQ(loaded.count(), 1U) << columns << 'x' << rows;
      const Loaded pattern(
          Metafile().Body(5, 32, List().I(1).I(columns).I(rows).I(8).Rgb(1, 2, 3)).Body(4, 1, Line()));
      EXPECT_EQ(pattern.count(), 1U);
    }
  }
  EXPECT_EQ(Loaded(Metafile().Body(4, 9, Head(1, 1, 5, 1).Rgb(1, 2, 3))).count(), 0U) << "no such depth";
  EXPECT_EQ(Loaded(Metafile().Body(4, 9, Head(1, 1, 8, 2).Rgb(1, 2, 3))).count(), 0U) << "no such mode";
  EXPECT_EQ(Loaded(Metafile().Body(4, 9, Head(4, 1, 8, 0).I(0).Rgb(1, 2, 3).I(4).Rgb(1, 2, 3))).count(), 0U);
}

// A few octets of runs that stand for a picture of gigabytes.
TEST_F(CellTest, RunsBeyondAllReasonAreRefused) {
  Metafile metafile;
  metafile.Head(1, 4, List().I(32)).Head(1, 8, List().I(8, 32)).Picture(2, 2, List().I(0));
  List bomb = Line({0, 0, 50, 30, 50, 0}).I(30000, 32).I(1000, 32).I(8, 32).I(0);
  for (int y = 0; y < 1000; ++y) bomb.I(30000, 32).I(1, 8).I(0, 8);
  const Loaded loaded(metafile.BodyOctets(Element(4, 9, bomb.octets())));
  EXPECT_EQ(loaded.status(), ERR_NO_MEMORY);
  EXPECT_TRUE(loaded.IsEmpty() || loaded.count() == 0);
  // The same shape within the limit is drawn.
  List fair = Line({0, 0, 50, 30, 50, 0}).I(1000, 32).I(1000, 32).I(8, 32).I(0);
  for (int y = 0; y < 1000; ++y) fair.I(1000, 32).I(1, 8).I(0, 8);
  Metafile other;
  other.Head(1, 4, List().I(32)).Head(1, 8, List().I(8, 32)).Picture(2, 2, List().I(0));
  const Loaded drawn(other.BodyOctets(Element(4, 9, fair.octets())));
  EXPECT_EQ(drawn.As<vec::CellArray>().colors.size(), 1'000'000U);
}

}  // namespace
}  // namespace tavi::test

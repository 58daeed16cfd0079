// What all drawings together may hold.
#include "PaintTest.h"
#include "TaviVector/DrawingMemory.h"

namespace tavi::test {
namespace {

using namespace host::vec;

class DrawingMemoryTest : public HostTest {
 protected:
  void TearDown() override {
    HostSetVectorLimit(limit_);
    HostTest::TearDown();
  }

 private:
  uint64_t limit_ = HostGetVectorLimit();
};

Drawing WithCells(uint32_t count) {
  Drawing drawing;
  CellArray cells;
  cells.columns = count;
  cells.rows = 1;
  cells.colors.assign(count, kRed);
  drawing.objects.push_back({cells});
  return drawing;
}

TEST_F(DrawingMemoryTest, DrawingsAreCountedUntilTheyAreFreed) {
  const uint64_t each = BytesOf(WithCells(100'000));
  EXPECT_GT(each, 400'000U);
  EXPECT_LT(each, 500'000U);
  HostSetVectorLimit(2 * each);
  for (int round = 0; round < 3; ++round) {
    Vector first(WithCells(100'000));
    Vector second(WithCells(100'000));
    HostVector third = {};
    HostVecInit(&third);
    EXPECT_EQ(TakeDrawing(&third, WithCells(100'000)), ERR_NO_MEMORY);
    EXPECT_EQ(HostVecIsEmpty(&third), 1);
    EXPECT_EQ(HostVecCopy(&third, first.get(), 0), ERR_NO_MEMORY);
    EXPECT_EQ(HostVecIsEmpty(&third), 1);
  }
}

}  // namespace
}  // namespace tavi::test

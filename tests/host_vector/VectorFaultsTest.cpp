// Every allocation of the operations on vectors fails in turn. They answer with a status, leak nothing, and the vector
// is as it was.
#include "AllocationFaults.h"
#include "VectorTest.h"

namespace tavi::test {
namespace {

class VectorFaults : public HostTest {};

// Debug builds also note where things were made: without memory for that they do without.
#if defined(NDEBUG)
constexpr bool kAllCount = true;
#else
constexpr bool kAllCount = false;
#endif

void ExpectRefused(int32_t status, uint64_t nth, int64_t left) {
  if (!kAllCount && status == SUCCESS) return;
  EXPECT_EQ(status, ERR_NO_MEMORY) << "allocation " << nth;
  if (kAllCount) {
    EXPECT_EQ(left, 0) << "allocation " << nth;
  }
}

TEST_F(VectorFaults, AddingObjects) {
  const VectorPoint points[] = {At(0, 0), At(1, 1), At(2, 5)};
  const VectorObjectRecord objects[] = {
      LineRecord(At(0, 0), At(1, 1), Pen(1)), RectangleRecord(At(0, 0), At(1, 1), Pen(1), Brush(2)),
      PolygonRecord(points, 3, Pen(1), Brush(2)), EllipseRecord(At(0, 0), 1, 1, Pen(1), Brush(2))};
  for (const VectorObjectRecord& object : objects) {
    Vector vector;
    const uint64_t count = FailEachAllocation(
        [&] {
          const int32_t status = Add(&vector, object);
          EXPECT_EQ(vector.IsEmpty(), status != SUCCESS);
          HostVecFree(vector.get());
          return status;
        },
        ExpectRefused);
    EXPECT_GE(count, 3u);
  }
}

TEST_F(VectorFaults, AFailedAdditionLeavesWhatWasThere) {
  Vector vector;
  ASSERT_EQ(Add(&vector, LineRecord(At(0, 0), At(1, 1), Pen(1))), SUCCESS);
  const VectorPoint points[] = {At(0, 0), At(1, 1), At(2, 5)};
  const AllocationFault fault(1, true);
  EXPECT_EQ(Add(&vector, PolygonRecord(points, 3, Pen(1), Brush(2))), ERR_NO_MEMORY);
  EXPECT_FALSE(vector.IsEmpty());
  EXPECT_EQ(vector.drawing().objects.size(), 1u);
}

TEST_F(VectorFaults, AddingLayers) {
  Vector vector;
  const ObjectLayerRecord record = LayerRecord(u"a name that is longer than short strings are");
  HostVectorLayer layer = {};
  const uint64_t count = FailEachAllocation(
      [&] {
        const int32_t status = HostVecAddLayer(vector.get(), &record, &layer, 4);
        EXPECT_EQ(vector.IsEmpty(), status != SUCCESS);
        HostVecFree(vector.get());
        return status;
      },
      ExpectRefused);
  EXPECT_GE(count, 3u);
}

TEST_F(VectorFaults, Copying) {
  Vector source;
  ASSERT_EQ(Add(&source, LineRecord(At(0, 0), At(1, 1), Pen(1))), SUCCESS);
  ASSERT_EQ(Add(&source, RectangleRecord(At(0, 0), At(1, 1), Pen(1), Brush(2))), SUCCESS);
  Vector target;
  const uint64_t count = FailEachAllocation(
      [&] {
        const int32_t status = HostVecCopy(target.get(), source.get(), 0);
        EXPECT_EQ(target.IsEmpty(), status != SUCCESS);
        HostVecFree(target.get());
        return status;
      },
      ExpectRefused);
  EXPECT_GE(count, 4u);
}

// What a container says that can never grow so far is no more than memory that is lacking.
TEST_F(VectorFaults, ListsThatAreTooLong) {
  Vector source;
  ASSERT_EQ(Add(&source, RectangleRecord(At(0, 0), At(9, 9), Pen(1), Brush(2))), SUCCESS);
  Bitmap bitmap(20, 20, 24);
  const Context context(bitmap);
  const HostRect everywhere{0, 0, 20, 20};
  Vector target;
  for (const bool paints : {false, true}) {
    bool happened = true;
    uint64_t refused = 0;
    for (uint64_t nth = 1; happened; ++nth) {
      int32_t status = SUCCESS;
      {
        const AllocationFault fault = AllocationFault::TooLong(nth);
        status = paints ? HostVecPaint(context.get(), source.get(), 0, 0, 0, 0, &everywhere, 0, 0)
                        : HostVecCopy(target.get(), source.get(), 0);
        happened = fault.happened();
      }
      // The leak table of debug builds does without its entry.
      EXPECT_TRUE(status == ERR_NO_MEMORY || status == SUCCESS) << "allocation " << nth << ": " << status;
      refused += status == ERR_NO_MEMORY ? 1 : 0;
      HostVecFree(target.get());
    }
    EXPECT_GE(refused, 2U);
  }
}

TEST_F(VectorFaults, TranslatingTakesNoMemory) {
  Vector vector;
  ASSERT_EQ(Add(&vector, RectangleRecord(At(0, 0), At(1, 1), Pen(1), Brush(2))), SUCCESS);
  const VectorPoint by = At(1, 1);
  const AllocationFault fault(1, true);
  HostVecTranslate(vector.get(), &by, 0, 0);
  HostVecApplyTransform(vector.get());
  EXPECT_FALSE(fault.happened());
}

TEST_F(VectorFaults, Writing) {
  Vector vector;
  const VectorPoint points[] = {At(0, 0), At(40, 40), At(80, 0)};
  ASSERT_EQ(Add(&vector, PolygonRecord(points, 3, Pen(1, 2, 1), Brush(2, 2, 3))), SUCCESS);
  ASSERT_EQ(Add(&vector, EllipseRecord(At(50, 50), 20, 10, Pen(1), Brush(2))), SUCCESS);
  const HostRect viewport{10, 10, 200, 200};
  for (const bool mapped : {false, true}) {
    HostVecSetViewport(vector.get(), mapped ? &viewport : nullptr);
    const uint64_t count = FailEachAllocation(
        [&] {
          HostGlobalMemory block = nullptr;
          uint64_t size = 7;
          const int32_t status = HostVecSaveMemory(&block, vector.get(), 62, &size, nullptr);
          EXPECT_EQ(block == nullptr, status != SUCCESS);
          EXPECT_EQ(size == 0, status != SUCCESS);
          HostGlobalFree(block, 0, nullptr);
          return status;
        },
        ExpectRefused);
    EXPECT_GE(count, 5u);
  }
}

TEST_F(VectorFaults, EncodingBitmaps) {
  Bitmap bitmap(40, 30, 24);
  const uint64_t count = FailEachAllocation(
      [&] {
        HostGlobalMemory block = nullptr;
        uint64_t size = 7;
        const int32_t status = HostSaveMemory(&block, bitmap.get(), 10, 24, 20, &size, nullptr);
        EXPECT_EQ(block == nullptr, status != SUCCESS);
        EXPECT_EQ(size == 0, status != SUCCESS);
        HostGlobalFree(block, 0, nullptr);
        return status;
      },
      ExpectRefused);
  EXPECT_GE(count, 4u);
}

}  // namespace
}  // namespace tavi::test

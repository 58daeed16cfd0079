// Records: what makes one valid, what an empty one is, who owns a drawing.
#include <limits>

#include "VectorTest.h"

namespace tavi::test {
namespace {

using host::vec::BackColorOf;
using host::vec::DrawingOf;
using host::vec::ViewportOf;

class VectorRecord : public HostTest {};

HostRect Bounds(const Vector& vector) {
  HostRect bounds{7, 7, 7, 7};
  EXPECT_EQ(HostVecGetBounds(vector.get(), 0, &bounds, 0), SUCCESS);
  return bounds;
}

TEST_F(VectorRecord, InitMakesAnEmptyVectorOfAnyBytesAndKeepsTheTwoWords) {
  for (const int filler : {0x00, 0xA5, 0xFF}) {
    HostVector record;
    std::memset(&record, filler, sizeof record);
    record.word976 = 8194;
    record.word844 = 32768;
    HostVecInit(&record);
    EXPECT_EQ(HostVecIsEmpty(&record), 1);
    EXPECT_EQ(record.word976, 8194u);
    EXPECT_EQ(record.word844, 32768u);
    EXPECT_EQ(BackColorOf(&record), 0x00FFFFFFu);
    EXPECT_FALSE(ViewportOf(&record));
  }
}

// Nothing is freed here: the fixture sees that nothing was taken either.
TEST_F(VectorRecord, AnInitialisedVectorNeedsNoFree) {
  Vector vector;
  HostVecSetBackColor(vector.get(), 0x123456);
  const HostRect viewport{1, 2, 3, 4};
  HostVecSetViewport(vector.get(), &viewport);
  EXPECT_TRUE(vector.IsEmpty());
}

TEST_F(VectorRecord, ZeroedRecordsAreEmptyVectors) {
  HostVector record = {};
  EXPECT_EQ(HostVecIsEmpty(&record), 1);
  HostVecFree(&record);
  const HostVector zeroed = {};
  EXPECT_EQ(std::memcmp(&record, &zeroed, sizeof record), 0);
  const VectorObjectRecord line = LineRecord(At(0, 0), At(1, 1), Pen(0));
  EXPECT_EQ(HostVecAddObject(&record, 0, VECTOR_LINE, &line, 0), SUCCESS);
  EXPECT_EQ(HostVecIsEmpty(&record), 0);
  HostVecFree(&record);
  EXPECT_EQ(HostVecIsEmpty(&record), 1);
}

TEST_F(VectorRecord, ALayerOrAnObjectMakesADrawing) {
  Vector with_layer;
  const ObjectLayerRecord record = LayerRecord(u"one");
  HostVectorLayer layer = {};
  EXPECT_EQ(HostVecAddLayer(with_layer.get(), &record, &layer, 4), SUCCESS);
  EXPECT_FALSE(with_layer.IsEmpty());
  Vector with_object;
  EXPECT_EQ(Add(&with_object, LineRecord(At(0, 0), At(1, 1), Pen(0))), SUCCESS);
  EXPECT_FALSE(with_object.IsEmpty());
  Vector loaded((host::vec::Drawing()));
  EXPECT_FALSE(loaded.IsEmpty()) << "a loaded picture counts even without objects";
}

TEST_F(VectorRecord, FreeLeavesAnEmptyVectorThatCanBeFilledAgain) {
  Vector vector;
  EXPECT_EQ(Add(&vector, LineRecord(At(0, 0), At(9, 9), Pen(0))), SUCCESS);
  const HostRect viewport{1, 2, 3, 4};
  HostVecSetViewport(vector.get(), &viewport);
  HostVecSetBackColor(vector.get(), 0x123456);
  HostVecFree(vector.get());
  EXPECT_TRUE(vector.IsEmpty());
  EXPECT_FALSE(ViewportOf(vector.get())) << "settings go with the drawing";
  EXPECT_EQ(BackColorOf(vector.get()), 0x00FFFFFFu);
  HostVecFree(vector.get());
  EXPECT_EQ(Add(&vector, LineRecord(At(0, 0), At(1, 1), Pen(0))), SUCCESS);
  EXPECT_EQ(vector.drawing().objects.size(), 1u);
}

TEST_F(VectorRecord, ARecordMovesByPlainCopy) {
  Vector vector;
  EXPECT_EQ(Add(&vector, LineRecord(At(0, 0), At(1, 1), Pen(0))), SUCCESS);
  HostVector moved = *vector.get();
  HostVecInit(vector.get());
  EXPECT_EQ(HostVecIsEmpty(&moved), 0);
  HostVecFree(&moved);
}

TEST_F(VectorRecord, CopiesShareNothing) {
  Vector source;
  EXPECT_EQ(Add(&source, LineRecord(At(0, 0), At(10, -10), Pen(0x0000FF, 2))), SUCCESS);
  HostVecSetBackColor(source.get(), 0x445566);
  const HostRect viewport{1, 2, 3, 4};
  HostVecSetViewport(source.get(), &viewport);
  Vector target;
  target->word976 = 1;
  EXPECT_EQ(HostVecCopy(target.get(), source.get(), 0), SUCCESS);
  EXPECT_EQ(target->word976, 1u) << "the words are the record's own";
  EXPECT_NE(DrawingOf(target.get()), DrawingOf(source.get()));
  EXPECT_EQ(BackColorOf(target.get()), 0x445566u);
  EXPECT_TRUE(ViewportOf(target.get()));
  EXPECT_EQ(Add(&source, LineRecord(At(0, 0), At(50, 50), Pen(0))), SUCCESS);
  EXPECT_EQ(target.drawing().objects.size(), 1u);
  HostVecFree(source.get());
  const HostRect bounds = Bounds(target);
  EXPECT_EQ(bounds.left, -1);
  EXPECT_EQ(bounds.bottom, 11);
}

TEST_F(VectorRecord, ACopyReplacesWhatTheTargetHolds) {
  Vector source;
  EXPECT_EQ(Add(&source, LineRecord(At(0, 0), At(1, 1), Pen(0))), SUCCESS);
  Vector target;
  EXPECT_EQ(Add(&target, LineRecord(At(5, 5), At(6, 6), Pen(0))), SUCCESS);
  EXPECT_EQ(Add(&target, LineRecord(At(5, 5), At(6, 6), Pen(0))), SUCCESS);
  EXPECT_EQ(HostVecCopy(target.get(), source.get(), 0), SUCCESS);
  EXPECT_EQ(target.drawing().objects.size(), 1u);
  EXPECT_EQ(HostVecCopy(source.get(), source.get(), 0), SUCCESS);
  EXPECT_EQ(source.drawing().objects.size(), 1u);
}

TEST_F(VectorRecord, AnEmptySourceIsRefused) {
  Vector source;
  Vector target;
  EXPECT_EQ(Add(&target, LineRecord(At(5, 5), At(6, 6), Pen(0))), SUCCESS);
  EXPECT_EQ(HostVecCopy(target.get(), source.get(), 0), ERR_INVALID_VECTOR);
  EXPECT_EQ(target.drawing().objects.size(), 1u) << "the target is left alone";
}

TEST_F(VectorRecord, NullPointersAreAnswered) {
  Vector vector;
  VectorObjectRecord object = MakeObject(VECTOR_LINE, sizeof(VectorLineRecord));
  const ObjectLayerRecord record = LayerRecord(u"");
  HostVectorLayer layer = {};
  HostRect bounds;
  double corner[3];
  EXPECT_EQ(HostVecIsEmpty(nullptr), 1);
  HostVecInit(nullptr);
  HostVecFree(nullptr);
  HostVecInitObject(nullptr);
  HostVecSetBackColor(nullptr, 0);
  HostVecPrepare(nullptr, 1);
  HostVecTranslate(nullptr, nullptr, 0, 0);
  HostVecTranslate(vector.get(), nullptr, 0, 0);
  HostVecApplyTransform(nullptr);
  HostVecSetViewport(nullptr, nullptr);
  HostVecRefreshView(nullptr);
  HostVecResetView(nullptr);
  EXPECT_EQ(HostVecAddLayer(nullptr, &record, &layer, 4), ERR_NULL_ARGUMENT);
  EXPECT_EQ(HostVecAddLayer(vector.get(), nullptr, &layer, 4), ERR_NULL_ARGUMENT);
  EXPECT_EQ(HostVecAddLayer(vector.get(), &record, nullptr, 4), ERR_NULL_ARGUMENT);
  EXPECT_EQ(HostVecSetActiveLayer(nullptr, &layer), ERR_NULL_ARGUMENT);
  EXPECT_EQ(HostVecSetActiveLayer(vector.get(), nullptr), ERR_NULL_ARGUMENT);
  EXPECT_EQ(HostVecAddObject(nullptr, 0, VECTOR_LINE, &object, 0), ERR_NULL_ARGUMENT);
  EXPECT_EQ(HostVecAddObject(vector.get(), 0, VECTOR_LINE, nullptr, 0), ERR_NULL_ARGUMENT);
  EXPECT_EQ(HostVecGetBounds(nullptr, 0, &bounds, 0), ERR_NULL_ARGUMENT);
  EXPECT_EQ(HostVecGetBounds(vector.get(), 0, nullptr, 0), ERR_NULL_ARGUMENT);
  EXPECT_EQ(HostVecGetExtents(nullptr, corner, corner), ERR_NULL_ARGUMENT);
  EXPECT_EQ(HostVecGetExtents(vector.get(), nullptr, corner), ERR_NULL_ARGUMENT);
  EXPECT_EQ(HostVecGetExtents(vector.get(), corner, nullptr), ERR_NULL_ARGUMENT);
  EXPECT_EQ(HostVecCopy(nullptr, vector.get(), 0), ERR_NULL_ARGUMENT);
  EXPECT_EQ(HostVecCopy(vector.get(), nullptr, 0), ERR_NULL_ARGUMENT);
  EXPECT_TRUE(vector.IsEmpty());
}

TEST_F(VectorRecord, EmptyVectorsCoverNothing) {
  Vector empty;
  Vector bare((host::vec::Drawing()));
  for (const Vector* const vector : {&empty, &bare}) {
    const HostRect bounds = Bounds(*vector);
    EXPECT_EQ(bounds.left, 0);
    EXPECT_EQ(bounds.top, 0);
    EXPECT_EQ(bounds.right, 0);
    EXPECT_EQ(bounds.bottom, 0);
    double smallest[3] = {7, 7, 7};
    double largest[3] = {7, 7, 7};
    EXPECT_EQ(HostVecGetExtents(vector->get(), smallest, largest), SUCCESS);
    for (int i = 0; i < 3; ++i) {
      EXPECT_EQ(smallest[i], 0);
      EXPECT_EQ(largest[i], 0);
    }
  }
}

TEST_F(VectorRecord, ExtentsCountHalfTheWidthOfStrokesAndGrowUpward) {
  Vector vector;
  EXPECT_EQ(Add(&vector, RectangleRecord(At(10, -20), At(30, -5), Pen(0, 4), BrushRecord())), SUCCESS);
  double smallest[3];
  double largest[3];
  EXPECT_EQ(HostVecGetExtents(vector.get(), smallest, largest), SUCCESS);
  EXPECT_DOUBLE_EQ(smallest[0], 8);
  EXPECT_DOUBLE_EQ(smallest[1], -22);
  EXPECT_DOUBLE_EQ(largest[0], 32);
  EXPECT_DOUBLE_EQ(largest[1], -3);
  EXPECT_EQ(smallest[2], 0);
  EXPECT_EQ(largest[2], 0);
  const HostRect bounds = Bounds(vector);
  EXPECT_EQ(bounds.left, 8);
  EXPECT_EQ(bounds.top, 3) << "rows run downward";
  EXPECT_EQ(bounds.right, 32);
  EXPECT_EQ(bounds.bottom, 22);
}

TEST_F(VectorRecord, BoundsGoOutwardToWholePixelsAndStopAtTheirRange) {
  Vector vector;
  EXPECT_EQ(Add(&vector, RectangleRecord(At(0.25, 0.25), At(9.75, 9.75), Pen(0, 0, 5), Brush(0))), SUCCESS);
  HostRect bounds = Bounds(vector);
  EXPECT_EQ(bounds.left, 0);
  EXPECT_EQ(bounds.top, -10);
  EXPECT_EQ(bounds.right, 10);
  EXPECT_EQ(bounds.bottom, 0);
  EXPECT_EQ(Add(&vector, LineRecord(At(-1e300, -1e300), At(4294967296.0, 1e300), Pen(0))), SUCCESS);
  bounds = Bounds(vector);
  EXPECT_EQ(bounds.left, std::numeric_limits<int32_t>::min());
  EXPECT_EQ(bounds.top, std::numeric_limits<int32_t>::min());
  EXPECT_EQ(bounds.right, std::numeric_limits<int32_t>::max());
  EXPECT_EQ(bounds.bottom, std::numeric_limits<int32_t>::max());
}

// A drawing that has grown holds more than its copies: were they to give back as much as it took, nothing could be loaded
// any more.
TEST_F(VectorRecord, CopiesGiveBackWhatTheyTook) {
  host::vec::Drawing grown;
  grown.strokes.reserve(100'000);
  grown.strokes.push_back({});
  Vector source(std::move(grown));
  {
    Vector copy;
    ASSERT_EQ(HostVecCopy(copy.get(), source.get(), 0), SUCCESS);
  }
  HostVector other = {};
  HostVecInit(&other);
  EXPECT_EQ(host::vec::TakeDrawing(&other, host::vec::Drawing()), SUCCESS);
  HostVecFree(&other);
}

}  // namespace
}  // namespace tavi::test

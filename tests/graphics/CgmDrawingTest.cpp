// Drawings: how they are read, loaded, placed and painted, and what the record's vector holds afterwards.
#include <limits>

#include "GraphicsTest.h"

namespace graphics {
namespace {

class CgmDrawing : public GraphicsTest {
 protected:
  static GraphicSpec Sample() { return {.data = {'c', 'g', 'm', 0, 'x'}}; }

  void SetUp() override {
    GraphicsTest::SetUp();
    host_.emplace();
    (*host_)->load = [](HostVector* vector) { return AddOneLine(vector); };
    (*host_)->answers["HostVecPaint"] = SUCCESS;
  }
  void TearDown() override {
    host_.reset();
    GraphicsTest::TearDown();
  }
  Recording& host() { return **host_; }

  int32_t Draw(NitfFile& document, int32_t row = 0, int32_t column = 0, uint32_t index = 0) {
    host().calls.clear();
    host().objects.clear();
    return tavi::DrawGraphicSegment(nullptr, canvas_.dc(), document, index, row, column);
  }
  Canvas canvas_;

 private:
  std::optional<Recorder> host_;
};

TEST_F(CgmDrawing, RecordBeginsWithItsVector) {
  NitfFile document;
  Open(document, File(Sample()));
  tavi::GrSubHdr& graphic = Graphic(document);
  EXPECT_EQ(static_cast<void*>(graphic.Vector.get()), static_cast<void*>(&graphic));
  EXPECT_EQ(sizeof graphic.Vector, 1024U);
  EXPECT_EQ(graphic.Vector.get()->word844, 32768U);
  EXPECT_TRUE(IsEmpty(document));
  EXPECT_EQ(host().Of("HostVecInit"), (Calls{"HostVecInit 8194"}));
}

TEST_F(CgmDrawing, CallsComeInThisOrder) {
  NtfBuilder file = File(Sample());
  file.background = {0x11, 0x22, 0x33};
  file.graphics[0].row = 7;
  file.graphics[0].column = 9;
  file.graphics[0].bound1_row = 10;  // the first half, which goes with the column
  file.graphics[0].bound1_column = 20;
  file.graphics[0].bound2_row = 110;
  file.graphics[0].bound2_column = 70;
  NitfFile document;
  Open(document, file);
  EXPECT_EQ(Draw(document, 1000, 2000), SUCCESS);
  EXPECT_EQ(host().calls,
            (Calls{"HostVecInit 8194", "HostVecLoadMemory 5 0x80000001 word844=32768", "HostVecAddObject 2",
                   "HostVecGetBounds", "HostVecPrepare 1", "HostVecSetBackColor 0x332211",
                   "HostVecPaint 100x50 (2019,1027,2119,1077)"}));
  EXPECT_EQ(host().loaded, (Bytes{'c', 'g', 'm', 0, 'x'}));
  EXPECT_FALSE(IsEmpty(document));
}

TEST_F(CgmDrawing, DataAreThoseBehindTheSubheaderOfThatSegment) {
  NtfBuilder file = File(Sample());
  file.graphics[0].sxshd = tavi_test::Tre("TAG", "some extension");
  file.graphics.push_back({.data = {'s', 'e', 'c', 'o', 'n', 'd'}});
  file.images = {GreyImage(3, 2)};
  NitfFile document;
  Open(document, file);
  EXPECT_EQ(Draw(document, 0, 0, 1), SUCCESS);
  EXPECT_EQ(host().loaded, unit::ToBytes("second"));
  EXPECT_EQ(Draw(document, 0, 0, 0), SUCCESS);
  EXPECT_EQ(host().loaded, Sample().data);
}

struct Bounds {
  const char* name;
  int32_t first1, second1, first2, second2, row, column;
  const char* paint;
};

class CgmPlacement : public CgmDrawing, public testing::WithParamInterface<Bounds> {};
constexpr int32_t kMost = std::numeric_limits<int32_t>::max();
INSTANTIATE_TEST_SUITE_P(
    All, CgmPlacement,
    testing::Values(Bounds{"Plain", 1, 2, 31, 22, 0, 0, "HostVecPaint 30x20 (1,2,31,22)"},
                    Bounds{"Empty", 5, 6, 5, 6, 0, 0, "HostVecPaint 0x0 (5,6,5,6)"},
                    Bounds{"Negative", -40, -30, -10, -20, 0, 0, "HostVecPaint 30x10 (-40,-30,-10,-20)"},
                    Bounds{"UpsideDown", 1, 22, 31, 2, 0, 0, "HostVecPaint 30x20 (1,22,31,2)"},
                    Bounds{"Mirrored", 31, 2, 1, 22, 0, 0, "HostVecPaint -30x20 (31,2,1,22)"},
                    Bounds{"BothWays", 31, 22, 1, 2, 0, 0, "HostVecPaint -30x20 (31,22,1,2)"},
                    Bounds{"Offset", 1, 2, 3, 4, -100, 50, "HostVecPaint 2x2 (51,-98,53,-96)"},
                    Bounds{"Wrapping", 1, 2, 3, 4, kMost, kMost,
                           "HostVecPaint 2x2 (-2147483648,-2147483647,-2147483646,-2147483645)"}),
    [](const auto& bounds) { return bounds.param.name; });

TEST_P(CgmPlacement, RectangleIsThatOfTheBounds) {
  const Bounds& b = GetParam();
  NtfBuilder file = File(Sample());
  file.graphics[0].bound1_row = b.first1;
  file.graphics[0].bound1_column = b.second1;
  file.graphics[0].bound2_row = b.first2;
  file.graphics[0].bound2_column = b.second2;
  NitfFile document;
  Open(document, file);
  EXPECT_EQ(Draw(document, b.row, b.column), SUCCESS);
  EXPECT_EQ(host().Of("HostVecPaint"), (Calls{b.paint}));
}

TEST_F(CgmDrawing, NegativeLocationIsAddedHalfByHalf) {
  NtfBuilder file = File(Sample());
  file.graphics[0].row = -12;
  file.graphics[0].column = -34;
  NitfFile document;
  Open(document, file);
  EXPECT_EQ(Draw(document), SUCCESS);
  EXPECT_EQ(host().Of("HostVecPaint"), (Calls{"HostVecPaint 0x0 (-34,-12,-34,-12)"}));
}

TEST_F(CgmDrawing, NewDocumentHasAWhiteBackground) {
  NitfFile document;
  Open(document, File(Sample()));
  document.Background = tavi::kWhite;
  EXPECT_EQ(Draw(document), SUCCESS);
  EXPECT_EQ(host().Of("HostVecSetBackColor"), (Calls{"HostVecSetBackColor 0xFFFFFF"}));
}

TEST_F(CgmDrawing, WithoutAContextItIsOnlyLoaded) {
  NitfFile document;
  Open(document, File(Sample()));
  host().calls.clear();
  EXPECT_EQ(tavi::DrawGraphicSegment(nullptr, nullptr, document, 0, 0, 0), SUCCESS);
  EXPECT_EQ(host().calls, (Calls{"HostVecInit 8194", "HostVecLoadMemory 5 0x80000001 word844=32768",
                                 "HostVecAddObject 2", "HostVecGetBounds"}));
  EXPECT_FALSE(IsEmpty(document));
}

TEST_F(CgmDrawing, EachDrawStartsAfresh) {
  NitfFile document;
  Open(document, File(Sample()));
  double length = 10.0;
  host().load = [&](HostVector* vector) { return AddOneLine(vector, length); };
  EXPECT_EQ(Draw(document), SUCCESS);
  EXPECT_EQ(host().Of("HostVecFree"), Calls{});
  length = 3.0;
  EXPECT_EQ(Draw(document), SUCCESS);
  EXPECT_EQ(host().Beginning("HostVec")[0], "HostVecFree");
  EXPECT_EQ(host().Beginning("HostVec")[1], "HostVecInit 8194");
  double smallest[3];
  double largest[3];
  ASSERT_EQ(HostVecGetExtents(Graphic(document).Vector.get(), smallest, largest), SUCCESS);
  EXPECT_LT(largest[0], 10.0) << "nothing of the earlier drawing is left";
}

TEST_F(CgmDrawing, NoDataReachTheHostAsNullAndItsAnswerStands) {
  NitfFile document;
  Open(document, File({}));
  host().load = nullptr;
  host().answers["HostVecLoadMemory"] = ERR_FILE_FORMAT;
  EXPECT_EQ(Draw(document), ERR_FILE_FORMAT);
  EXPECT_EQ(host().Of("HostVecLoadMemory"), (Calls{"HostVecLoadMemory null 0 0x80000001 word844=32768"}));
  EXPECT_EQ(host().Of("HostVecPaint"), Calls{});
}

TEST_F(CgmDrawing, FailedLoadIsMeasuredAllTheSameAndLeavesTheVectorEmpty) {
  NitfFile document;
  Open(document, File(Sample()));
  for (const int32_t status : {-9, -1, -16, 0, 2}) {
    host().load = [&](HostVector* vector) {
      AddOneLine(vector);  // a host that leaves half a drawing behind
      return status;
    };
    EXPECT_EQ(Draw(document), status);
    EXPECT_EQ(host().Beginning("HostVec").back(), "HostVecFree");
    EXPECT_EQ(host().Of("HostVecGetBounds").size(), 1U);
    EXPECT_EQ(host().Of("HostVecPaint"), Calls{});
    EXPECT_TRUE(IsEmpty(document));
  }
}

TEST_F(CgmDrawing, FailedMeasureIsNotLookedAt) {
  NitfFile document;
  Open(document, File(Sample()));
  host().answers["HostVecGetBounds"] = ERR_NO_MEMORY;
  EXPECT_EQ(Draw(document), SUCCESS);
}

TEST_F(CgmDrawing, FailedPaintLeavesTheDrawingLoaded) {
  NitfFile document;
  Open(document, File(Sample()));
  host().answers["HostVecPaint"] = ERR_NO_BITMAP;
  EXPECT_EQ(Draw(document), ERR_NO_BITMAP);
  EXPECT_FALSE(IsEmpty(document));
}

TEST_F(CgmDrawing, DataCutShortGiveAReadErrorAndAnEmptyVector) {
  NitfFile document;
  Open(document, File(Sample()));
  EXPECT_EQ(Draw(document), SUCCESS);
  document.SourceSize -= 1;
  EXPECT_EQ(Draw(document), ERR_FILE_READ);
  EXPECT_TRUE(IsEmpty(document)) << "nothing of the earlier draw survives";
  EXPECT_EQ(host().Of("HostVecLoadMemory"), Calls{});
  EXPECT_EQ(Graphic(document).Vector.get()->word844, 32768U);
}

TEST_F(CgmDrawing, LengthBeyondTheTableCountsAsNone) {
  NitfFile document;
  Open(document, File(Sample()));
  document.Header.NumGraphics = 0;
  host().load = nullptr;
  host().answers["HostVecLoadMemory"] = ERR_FILE_FORMAT;
  EXPECT_EQ(Draw(document), ERR_FILE_FORMAT);
  EXPECT_EQ(host().Of("HostVecLoadMemory"), (Calls{"HostVecLoadMemory null 0 0x80000001 word844=32768"}));
}

TEST_F(CgmDrawing, DataHeldInMemoryAreNotConsulted) {
  NitfFile document;
  Open(document, File(Sample()));
  tavi::GrSubHdr& graphic = Graphic(document);
  ASSERT_TRUE(graphic.GraphicDataBuffer.Allocate(9, {}));
  graphic.GraphicDataInMemory = 1;
  EXPECT_EQ(Draw(document), SUCCESS);
  EXPECT_EQ(host().loaded, Sample().data);
}

TEST_F(CgmDrawing, SegmentWithoutASourceFileGivesAReadError) {
  NitfFile document;
  tavi::MakeEmptyDocument(document);
  document.GraphicCount = 1;
  ASSERT_EQ(tavi::AllocateObjects(document), SUCCESS);
  ASSERT_TRUE(tavi::AddGraphicSubheaderLength(document.Header, 258));
  ASSERT_TRUE(tavi::AddGraphicDataLength(document.Header, 10));
  document.Header.NumGraphics = 1;
  EXPECT_EQ(Draw(document), ERR_FILE_READ);
}

TEST_F(CgmDrawing, IndexThatIsNotThereIsRefused) {
  NitfFile document;
  Open(document, File(Sample()));
  EXPECT_EQ(Draw(document, 0, 0, 1), ERR_INVALID_PARAMETER);
  EXPECT_EQ(host().calls, Calls{});
}

TEST_F(CgmDrawing, DrawingGoesWithItsRecord) {
  {
    NitfFile document;
    Open(document, File(Sample()));
    EXPECT_EQ(Draw(document), SUCCESS);
    host().calls.clear();
  }
  EXPECT_EQ(host().Of("HostVecFree"), (Calls{"HostVecFree"}));
}

TEST_F(CgmDrawing, CompositionAddsTheOffsetsOfWhatAGraphicIsAttachedTo) {
  NtfBuilder file = File(Sample());
  file.images = {GreyImage(30, 20).At(100, 200).Level(1)};
  file.graphics[0].sdlvl = 3;
  file.graphics[0].salvl = 2;
  file.graphics[0].row = 1;
  file.graphics[0].column = 2;
  file.graphics.push_back(file.graphics[0]);
  file.graphics[1].sdlvl = 2;
  file.graphics[1].salvl = 1;
  file.graphics[1].row = 10;
  file.graphics[1].column = 20;
  NitfFile document;
  Open(document, file);
  host().calls.clear();
  EXPECT_EQ(tavi::DrawObjects(nullptr, canvas_.dc(), document), SUCCESS);
  EXPECT_EQ(host().Of("HostVecPaint"),
            (Calls{"HostVecPaint 0x0 (220,110,220,110)", "HostVecPaint 0x0 (222,111,222,111)"}));
}

TEST_F(CgmDrawing, FailedGraphicEndsTheComposition) {
  NtfBuilder file = File(Sample());
  file.graphics[0].sdlvl = 1;
  file.graphics.push_back({.sdlvl = 2, .data = {'x'}});
  file.images = {GreyImage(3, 3).Level(3)};
  NitfFile document;
  Open(document, file);
  host().answers["HostVecPaint"] = ERR_NO_MEMORY;
  host().calls.clear();
  EXPECT_EQ(tavi::DrawObjects(nullptr, canvas_.dc(), document), ERR_NO_MEMORY);
  EXPECT_EQ(host().Of("HostVecPaint").size(), 1U);
  EXPECT_EQ(host().Of("HostPaintBitmap"), Calls{});
}

TEST_F(CgmDrawing, ImageAndGraphicOfOneLevelKeepTheImageBelow) {
  NtfBuilder file = File(Sample());
  file.images = {GreyImage(3, 3).Level(1)};
  NitfFile document;
  Open(document, file);
  host().calls.clear();
  EXPECT_EQ(tavi::DrawObjects(nullptr, canvas_.dc(), document), SUCCESS);
  const Calls paints = host().Beginning("HostVecPaint");
  ASSERT_EQ(paints.size(), 1U);
  EXPECT_EQ(host().calls.back(), paints[0]);
  EXPECT_EQ(host().Of("HostPaintBitmap").size(), 1U);
}

}  // namespace
}  // namespace graphics

// The size of composites with graphics and labels.
#include "GraphicsTest.h"

namespace graphics {
namespace {

struct Size {
  int32_t status = 0;
  uint32_t width = 0;
  uint32_t height = 0;
  friend bool operator==(const Size&, const Size&) = default;
  friend void PrintTo(const Size& size, std::ostream* out) {
    *out << size.status << ": " << size.width << " x " << size.height;
  }
};

class GraphicExtent : public GraphicsTest {
 protected:
  void SetUp() override {
    GraphicsTest::SetUp();
    host_.emplace();
    (*host_)->load = [](HostVector* vector) { return AddOneLine(vector, 5000.0); };
  }
  void TearDown() override {
    host_.reset();
    GraphicsTest::TearDown();
  }
  Recording& host() { return **host_; }

  Size SizeOf(const NtfBuilder& file, bool fixed = false) {
    NitfFile document;
    Open(document, file);
    document.FixedCanvas = fixed;
    host().calls.clear();
    Size size;
    size.status = tavi::CompositeSize(document, size.width, size.height);
    return size;
  }
  // The second bound is first 30, second 70; the location row 5, column 6.
  static GraphicSpec Sample(char sfmt = 'C') {
    GraphicSpec graphic;
    graphic.sfmt = sfmt;
    graphic.row = 5;
    graphic.column = 6;
    graphic.bound1_row = 900;
    graphic.bound1_column = 900;
    graphic.bound2_row = 30;
    graphic.bound2_column = 70;
    graphic.data = {'c', 'g', 'm'};
    return graphic;
  }

 private:
  std::optional<Recorder> host_;
};

TEST_F(GraphicExtent, OfADrawingCountsTheLocationAndTakesTheFirstHalfAsWidth) {
  EXPECT_EQ(SizeOf(File(Sample())), (Size{SUCCESS, 36, 75}));
}

TEST_F(GraphicExtent, OfOtherGraphicsLeavesTheLocationOutAndTakesTheFirstHalfAsHeight) {
  EXPECT_EQ(SizeOf(File(Sample('O'))), (Size{SUCCESS, 70, 30}));
  EXPECT_EQ(SizeOf(File(Sample('B'))), (Size{SUCCESS, 70, 30}));
  EXPECT_EQ(host().Of("HostVecLoadMemory"), Calls{});
}

TEST_F(GraphicExtent, DrawingIsLoadedAndItsOwnSizeDoesNotCount) {
  EXPECT_EQ(SizeOf(File(Sample())), (Size{SUCCESS, 36, 75}));
  EXPECT_EQ(host().Of("HostVecLoadMemory"), (Calls{"HostVecLoadMemory 3 0x80000001 word844=32768"}));
  EXPECT_EQ(host().Of("HostVecInit"), (Calls{"HostVecInit 8194"}));
  EXPECT_EQ(host().Of("HostVecFree"), (Calls{"HostVecFree"}));
  EXPECT_EQ(host().loaded, Sample().data);
}

TEST_F(GraphicExtent, RecordsOwnVectorIsLeftAlone) {
  NitfFile document;
  Open(document, File(Sample()));
  uint32_t width = 0;
  uint32_t height = 0;
  EXPECT_EQ(tavi::CompositeSize(document, width, height), SUCCESS);
  EXPECT_TRUE(IsEmpty(document));
}

TEST_F(GraphicExtent, OffsetsOfWhatItIsAttachedToCount) {
  for (const char sfmt : {'C', 'O'}) {
    NtfBuilder file = File(Sample(sfmt));
    file.images = {GreyImage(1, 1).At(100, 200).Level(1)};
    file.graphics[0].sdlvl = 2;
    file.graphics[0].salvl = 1;
    EXPECT_EQ(SizeOf(file), (sfmt == 'C' ? Size{SUCCESS, 236, 175} : Size{SUCCESS, 270, 130}));
  }
}

TEST_F(GraphicExtent, OfADrawingBeforeTheOriginIsItsDistance) {
  NtfBuilder file = File(Sample());
  file.graphics[0].row = -100;
  file.graphics[0].column = -200;
  EXPECT_EQ(SizeOf(file), (Size{SUCCESS, 170, 30}));
  file.graphics[0].row = -9999;
  file.graphics[0].column = -9999;
  file.graphics[0].bound2_row = -9999;
  EXPECT_EQ(SizeOf(file), (Size{SUCCESS, 19998, 9929}));
}

TEST_F(GraphicExtent, OfOtherGraphicsBeforeTheOriginIsALargeNumber) {
  NtfBuilder file = File(Sample('O'));
  file.graphics[0].bound2_row = -1;
  file.images = {GreyImage(100, 100)};
  EXPECT_EQ(SizeOf(file), (Size{SUCCESS, 100, 0xFFFFFFFF}));
}

TEST_F(GraphicExtent, LargestOfEachDirectionCounts) {
  NtfBuilder file = File(Sample());
  file.images = {GreyImage(200, 10).Level(1)};
  EXPECT_EQ(SizeOf(file), (Size{SUCCESS, 200, 75}));
  file.graphics.push_back(Sample('O'));
  file.graphics[1].bound2_row = 300;
  EXPECT_EQ(SizeOf(file), (Size{SUCCESS, 200, 300}));
}

TEST_F(GraphicExtent, OfNothingGivesTheFixedCanvas) {
  EXPECT_EQ(SizeOf(File({.data = {'c'}})), (Size{SUCCESS, 2048, 2048}));
}

TEST_F(GraphicExtent, FixedCanvasLooksAtNothing) {
  host().load = [](HostVector*) { return int32_t{ERR_FILE_FORMAT}; };
  EXPECT_EQ(SizeOf(File(Sample()), true), (Size{SUCCESS, 2048, 2048}));
  EXPECT_EQ(host().calls, Calls{});
}

TEST_F(GraphicExtent, FailedLoadIsReturnedWithNothingLeft) {
  for (const int32_t status : {-9, -1, 0, 2}) {
    host().load = [&](HostVector* vector) {
      AddOneLine(vector);
      return status;
    };
    EXPECT_EQ(SizeOf(File(Sample())).status, status);
  }
}

TEST_F(GraphicExtent, DrawingWithoutDataIsHandedOnAsNull) {
  NtfBuilder file = File(Sample());
  file.graphics[0].data.clear();
  host().load = [](HostVector*) { return int32_t{ERR_FILE_FORMAT}; };
  EXPECT_EQ(SizeOf(file).status, ERR_FILE_FORMAT);
  EXPECT_EQ(host().Of("HostVecLoadMemory"), (Calls{"HostVecLoadMemory null 0 0x80000001 word844=32768"}));
}

TEST_F(GraphicExtent, DataCutShortAreAReadErrorForEveryKind) {
  for (const char sfmt : {'C', 'O', 'B'}) {
    NtfBuilder file = File(Sample(sfmt));
    file.header["LS[0]"] = "000004";
    EXPECT_EQ(SizeOf(file).status, ERR_FILE_READ) << sfmt;
  }
}

// ---- Labels ----

NtfBuilder WithLabel(NtfBuilder file) {
  file.layout = tavi_test::Layout::kNitf20;
  file.labels = {{.ldlvl = 500, .row = 3000, .column = 3000, .data = {'x'}}};
  return file;
}

TEST_F(GraphicExtent, LabelsWithoutAnImageGiveOnePixelWhateverGraphicsThereAre) {
  EXPECT_EQ(SizeOf(WithLabel({})), (Size{SUCCESS, 1, 1}));
  EXPECT_EQ(SizeOf(WithLabel(File(Sample()))), (Size{SUCCESS, 1, 1}));
  EXPECT_EQ(host().Of("HostVecLoadMemory"), Calls{});
}

TEST_F(GraphicExtent, LabelsAddTenAndNoExtentOfTheirOwn) {
  NtfBuilder file;
  file.images = {GreyImage(30, 20)};
  EXPECT_EQ(SizeOf(WithLabel(file)), (Size{SUCCESS, 40, 30}));
  file.graphics = {Sample()};
  EXPECT_EQ(SizeOf(WithLabel(file)), (Size{SUCCESS, 46, 85}));
}

TEST_F(GraphicExtent, LabelKeepsTheExtentOfTheEntryBefore) {
  NtfBuilder file;
  file.images = {GreyImage(30, 20).Level(2)};
  file = WithLabel(file);
  file.labels[0].ldlvl = 1;
  EXPECT_EQ(SizeOf(file), (Size{SUCCESS, 40, 30}));
}

}  // namespace
}  // namespace graphics

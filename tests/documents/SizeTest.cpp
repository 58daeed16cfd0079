// The size of the composite, and which image lies on top.
#include "DocumentTest.h"

namespace tavi::documents {
namespace {

using tavi_test::Bytes;
using tavi_test::GreyImage;
using tavi_test::ImageSpec;
using tavi_test::Info;
using tavi_test::LoadedPicture;
using tavi_test::LoadFile;
using tavi_test::NtfBuilder;
using tavi_test::Rgb;

class CompositeSize : public DocumentTest {
 protected:
  // What fltInfo says under a load flag.
  Extent InfoSize(const NtfBuilder& file, uint32_t flags) {
    const tavi_test::FileInformation information = Info(Write(file), flags);
    return {information.status, information.info.width, information.info.height};
  }
};

// An image of one grey level.
ImageSpec Plain(uint32_t columns, uint32_t rows, uint8_t level) {
  return GreyImage(columns, rows, Bytes(size_t{columns} * rows, level));
}

TEST_F(CompositeSize, OfNothing) {
  NtfBuilder extensions;
  EXPECT_EQ(Size(extensions), (Extent{SUCCESS, 2048, 2048}));
  extensions.data_extensions.resize(1);
  extensions.reserved.resize(1);
  EXPECT_EQ(Size(extensions), (Extent{SUCCESS, 2048, 2048}));
}

TEST_F(CompositeSize, OfANewDocument) {
  const Document document(nullptr);
  Extent extent;
  extent.status = GetActual_Width_Height(document.handle, &extent.width, &extent.height);
  EXPECT_EQ(extent, (Extent{SUCCESS, 2048, 2048}));
}

TEST_F(CompositeSize, NullArgumentsAreRefused) {
  const Document document(nullptr);
  uint32_t side = 77;
  EXPECT_EQ(GetActual_Width_Height(nullptr, &side, &side), ERR_NULL_ARGUMENT);
  EXPECT_EQ(GetActual_Width_Height(document.handle, nullptr, &side), ERR_NULL_ARGUMENT);
  EXPECT_EQ(GetActual_Width_Height(document.handle, &side, nullptr), ERR_NULL_ARGUMENT);
}

TEST_F(CompositeSize, OfTextsAlone) {
  NtfBuilder file;
  file.texts.resize(3);
  EXPECT_EQ(Size(file), (Extent{SUCCESS, 2, 2}));
  file.background = {1, 2, 3};
  const LoadedPicture picture = LoadFile(Write(file));
  EXPECT_EQ(picture.status, SUCCESS);
  ASSERT_EQ(picture.rows.size(), 2U);
  EXPECT_EQ(picture.At(1, 1), (Rgb{1, 2, 3}));
}

TEST_F(CompositeSize, TextsAddNothingToImages) {
  NtfBuilder file{GreyImage(7, 5)};
  file.texts.resize(1);
  EXPECT_EQ(Size(file), (Extent{SUCCESS, 7, 5}));
}

TEST_F(CompositeSize, OfTheFixedCanvas) {
  const Extent fixed{SUCCESS, 2048, 2048};
  EXPECT_EQ(InfoSize(NtfBuilder{GreyImage(3, 2)}, TAVI_LOAD_FIXED_CANVAS), fixed);
  NtfBuilder texts;
  EXPECT_EQ(InfoSize(texts, TAVI_LOAD_FIXED_CANVAS), fixed);
  texts.texts.resize(1);
  EXPECT_EQ(InfoSize(texts, TAVI_LOAD_FIXED_CANVAS), fixed);
}

TEST_F(CompositeSize, CountsBlocksAndNotRowsAndColumns) {
  ImageSpec image;
  image.Blocks(2, 3, 512, 16);
  image.rows = 1;
  image.columns = 1000;
  EXPECT_EQ(Size(NtfBuilder{image}), (Extent{SUCCESS, 1024, 48}));
}

TEST_F(CompositeSize, LocationsAddToIt) {
  EXPECT_EQ(Size(NtfBuilder{GreyImage(20, 30).At(100, 50)}), (Extent{SUCCESS, 70, 130}));
}

TEST_F(CompositeSize, ParentsAddTheirLocations) {
  NtfBuilder file{GreyImage(8, 8).Level(1).At(10, 20), GreyImage(8, 8).Level(2, 1).At(3, 4)};
  EXPECT_EQ(Size(file), (Extent{SUCCESS, 8 + 20 + 4, 8 + 10 + 3}));
  file.images.push_back(GreyImage(8, 8).Level(3, 2).At(100, 200));
  EXPECT_EQ(Size(file), (Extent{SUCCESS, 8 + 20 + 4 + 200, 8 + 10 + 3 + 100}));
}

TEST_F(CompositeSize, AChildMayStandBeforeItsParent) {
  const NtfBuilder file{GreyImage(8, 8).Level(9, 2).At(1, 2), GreyImage(4, 4).Level(2).At(30, 40)};
  EXPECT_EQ(Size(file), (Extent{SUCCESS, 8 + 2 + 40, 8 + 1 + 30}));
}

TEST_F(CompositeSize, AMissingParentAddsNothing) {
  EXPECT_EQ(Size(NtfBuilder{GreyImage(8, 8).Level(1, 77).At(1, 2)}), (Extent{SUCCESS, 10, 9}));
}

// Attachment to level 0 means no parent, but for a segment whose display level is 0.
TEST_F(CompositeSize, DisplayLevelZeroIsAParentToo) {
  const NtfBuilder file{GreyImage(8, 8).Level(1, 0).At(1, 2), GreyImage(2, 2).Level(0, 5).At(10, 20)};
  EXPECT_EQ(Size(file), (Extent{SUCCESS, 30, 19}));
}

TEST_F(CompositeSize, OfTwoParentsOfOneLevelTheFirstCounts) {
  const NtfBuilder file{GreyImage(2, 2).Level(1).At(10, 10), GreyImage(2, 2).Level(1).At(20, 20),
                        GreyImage(2, 2).Level(2, 1).At(100, 100)};
  EXPECT_EQ(Size(file), (Extent{SUCCESS, 112, 112}));
}

// A segment attached to itself is visited once.
TEST_F(CompositeSize, AttachmentToItselfEnds) {
  EXPECT_EQ(Size(NtfBuilder{GreyImage(4, 4).Level(1, 1).At(2, 3)}), (Extent{SUCCESS, 4 + 3 + 3, 4 + 2 + 2}));
}

// Each of two segments attached to each other is visited once.
TEST_F(CompositeSize, AttachmentToEachOtherEnds) {
  const NtfBuilder file{GreyImage(4, 4).Level(1, 2).At(1, 2), GreyImage(4, 4).Level(2, 1).At(10, 20)};
  EXPECT_EQ(Size(file), (Extent{SUCCESS, 4 + 20 + 2 + 20, 4 + 10 + 1 + 10}));
}

TEST_F(CompositeSize, LongAttachmentLoopsEnd) {
  NtfBuilder file;
  constexpr uint32_t kCount = 200;
  for (uint32_t i = 0; i < kCount; ++i) {
    file.images.push_back(GreyImage(1, 1).Level(i + 1, (i + 1) % kCount + 1).At(1, 1));
  }
  EXPECT_EQ(Size(file), (Extent{SUCCESS, 1 + kCount + 1, 1 + kCount + 1}));
}

TEST_F(CompositeSize, ANegativeExtentWinsAsALargeNumber) {
  const NtfBuilder file{GreyImage(20, 20).Level(1).At(0, -30), GreyImage(50, 50).Level(2)};
  EXPECT_EQ(Size(file), (Extent{SUCCESS, static_cast<uint32_t>(-10), 50}));
  const LoadedPicture picture = LoadFile(Write(file));
  EXPECT_EQ(picture.status, ERR_INVALID_PARAMETER) << "the host refuses a bitmap of that side";
}

TEST_F(CompositeSize, ABitmapOfNoWidthIsRefusedByTheHost) {
  ImageSpec image = GreyImage(2, 2);
  image.fields["NPPBH"] = "0000";
  const std::wstring path = Write(NtfBuilder{image});
  EXPECT_EQ(Info(path).status, SUCCESS);
  EXPECT_EQ(LoadFile(path).status, ERR_INVALID_PARAMETER);
}

TEST_F(CompositeSize, OfImagesWithoutExtentIsTheDefault) {
  ImageSpec image = GreyImage(2, 2);
  image.fields = {{"NPPBH", "0000"}, {"NPPBV", "0000"}};
  EXPECT_EQ(Size(NtfBuilder{image}), (Extent{SUCCESS, 2048, 2048}));
}

TEST_F(CompositeSize, HugeCountsAreRefusedWhenDrawing) {
  ImageSpec image = GreyImage(2, 2);
  image.fields = {{"NBPR", "9998"}, {"NPPBH", "9998"}, {"NBPC", "9998"}, {"NPPBV", "9998"}};
  EXPECT_EQ(Size(NtfBuilder{image}), (Extent{SUCCESS, 9998U * 9998U, 9998U * 9998U}));
  EXPECT_EQ(LoadFile(Write(NtfBuilder{image})).status, ERR_NO_MEMORY);
}

class DrawingOrder : public DocumentTest {
 protected:
  // The grey levels of the first row of a composite of plain images.
  std::vector<int> FirstRow(const NtfBuilder& file) {
    const LoadedPicture picture = LoadFile(Write(file));
    EXPECT_EQ(picture.status, SUCCESS);
    std::vector<int> levels;
    for (uint32_t x = 0; picture.status == SUCCESS && x < picture.width; ++x) {
      levels.push_back(picture.At(x, 0).green);
    }
    return levels;
  }
};

TEST_F(DrawingOrder, HigherLevelsLieOnTop) {
  EXPECT_EQ(FirstRow(NtfBuilder{Plain(1, 1, 10).Level(1), Plain(1, 1, 20).Level(2)}), std::vector<int>{20});
  EXPECT_EQ(FirstRow(NtfBuilder{Plain(1, 1, 10).Level(2), Plain(1, 1, 20).Level(1)}), std::vector<int>{10});
}

TEST_F(DrawingOrder, EqualLevelsKeepTheirOrder) {
  EXPECT_EQ(FirstRow(NtfBuilder{Plain(1, 1, 10).Level(5), Plain(1, 1, 20).Level(5)}), std::vector<int>{20});
}

// Levels 2, 2, 1: sorting swaps the first with the third, so that the second is drawn before the first.
TEST_F(DrawingOrder, EqualLevelsStandAsTheExchangesLeaveThem) {
  const NtfBuilder file{Plain(3, 1, 10).Level(2), Plain(3, 1, 20).Level(2), Plain(3, 1, 30).Level(1)};
  EXPECT_EQ(FirstRow(file), (std::vector<int>{10, 10, 10}));
}

TEST_F(DrawingOrder, ImagesAreDrawnAtTheSumOfTheirLocations) {
  const NtfBuilder file{Plain(6, 1, 10).Level(1).At(0, 0), Plain(1, 1, 20).Level(2, 1).At(0, 2),
                        Plain(1, 1, 30).Level(3, 2).At(0, 3)};
  EXPECT_EQ(FirstRow(file), (std::vector<int>{10, 10, 20, 10, 10, 30}));
}

TEST_F(DrawingOrder, ANegativeLocationIsCutAtTheEdge) {
  const NtfBuilder file{Plain(4, 2, 10).Level(1), GreyImage(3, 2, {1, 2, 3, 4, 5, 6}).Level(2).At(-1, -1)};
  EXPECT_EQ(FirstRow(file), (std::vector<int>{5, 6, 10, 10}));
}

}  // namespace
}  // namespace tavi::documents

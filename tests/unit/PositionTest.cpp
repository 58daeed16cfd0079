// Where segments stand in the source file, told by the length tables alone.
#include <gtest/gtest.h>

#include "NitfFile.h"
#include "UnitTest.h"

namespace {

using namespace unit;

// A document with lists only: positions need no file.
struct Lengths {
  NitfFile d;
  Lengths() { d.Header.HlRead = 100; }
  void Set(tavi::LengthList& list, std::initializer_list<uint32_t> values) {
    ASSERT_TRUE(list.Allocate(values.size(), {}));
    uint64_t i = 0;
    for (const uint32_t value : values) list[i++] = value;
  }
  void Images(std::initializer_list<uint32_t> subheaders, std::initializer_list<uint32_t> data) {
    Set(d.Header.LishRead, subheaders);
    Set(d.Header.LiRead, data);
    d.Header.NumImages = d.ImageCount = d.ImagesInFile = static_cast<uint32_t>(subheaders.size());
  }
  void Graphics(std::initializer_list<uint32_t> subheaders, std::initializer_list<uint32_t> data) {
    Set(d.Header.LsshRead, subheaders);
    Set(d.Header.LsRead, data);
    d.Header.NumGraphics = d.GraphicCount = d.GraphicsInFile = static_cast<uint32_t>(subheaders.size());
  }
  void Labels(std::initializer_list<uint32_t> subheaders, std::initializer_list<uint32_t> data) {
    Set(d.Header.LlshList, subheaders);
    Set(d.Header.LlRead, data);
    d.Header.NumLabels = d.LabelCount = d.LabelsInFile = static_cast<uint32_t>(subheaders.size());
  }
  void Texts(std::initializer_list<uint32_t> subheaders, std::initializer_list<uint32_t> data) {
    Set(d.Header.LtshList, subheaders);
    Set(d.Header.LtRead, data);
    d.Header.NumTexts = d.TextCount = d.TextsInFile = static_cast<uint32_t>(subheaders.size());
  }
  void Extensions(std::initializer_list<uint32_t> subheaders, std::initializer_list<uint32_t> data) {
    Set(d.Header.LdshList, subheaders);
    Set(d.Header.LdList, data);
    d.Header.NumDes = d.DesCount = static_cast<uint32_t>(subheaders.size());
  }
};

class PositionTest : public UnitTest {};

TEST_F(PositionTest, MissingTableContributesNothing) {
  Lengths l;
  l.Images({10, 20}, {1, 2});
  l.Graphics({5}, {6});
  l.Texts({7, 8}, {9, 10});
  l.d.Header.LiRead.Release();
  EXPECT_EQ(tavi::ImageSubHeaderPosition(l.d, 1), 110);
  EXPECT_EQ(tavi::ImageDataPosition(l.d, 1), 130);
  EXPECT_EQ(tavi::PositionPastGraphics(l.d), 100 + 30 + 11);
  l.d.Header.LishRead.Release();
  EXPECT_EQ(tavi::ImageDataPosition(l.d, 1), 100);
  l.d.Header.LtshList.Release();
  EXPECT_EQ(tavi::TextDataPosition(l.d, 1), 100 + 11 + 9);
  l.d.Header.LsshRead.Release();
  l.d.Header.LsRead.Release();
  EXPECT_EQ(tavi::PositionPastLabels(l.d), 100);
}

TEST_F(PositionTest, IndexAtOrPastTheHeadersCountContributesNothing) {
  Lengths l;
  l.Images({10, 20, 40}, {1, 2, 4});
  l.Texts({7, 8}, {9, 10});
  l.Extensions({3, 5}, {30, 50});
  l.d.Header.NumImages = 2;
  EXPECT_EQ(tavi::ImageSubHeaderPosition(l.d, 2), 133);
  EXPECT_EQ(tavi::ImageDataPosition(l.d, 2), 133);
  EXPECT_EQ(tavi::ImageSubHeaderPosition(l.d, 999), 133);
  EXPECT_EQ(tavi::ImageDataPosition(l.d, 0xFFFFFFFF), 133);
  EXPECT_EQ(tavi::GraphicSubHeaderPosition(l.d, 0), 133)
      << "the sum over ImagesInFile meets the guard as well";
  EXPECT_EQ(tavi::TextDataPosition(l.d, 5), 133 + 34);
  EXPECT_EQ(tavi::DesSubHeaderPosition(l.d, 5), 133 + 34 + 88);
}

TEST_F(PositionTest, ImageDataLengthIsGuarded) {
  Lengths l;
  l.Images({10, 20, 40}, {1, 2, 4});
  EXPECT_EQ(tavi::ImageDataLength(l.d, 2), 4U);
  EXPECT_EQ(tavi::ImageDataLength(l.d, 3), 0U);
  l.d.Header.NumImages = 2;
  EXPECT_EQ(tavi::ImageDataLength(l.d, 2), 0U);
  l.d.Header.LiRead.Release();
  EXPECT_EQ(tavi::ImageDataLength(l.d, 0), 0U);
}

TEST_F(PositionTest, AppendedImagesMoveNothing) {
  Lengths l;
  l.Images({10, 20}, {1, 2});
  l.Graphics({5}, {6});
  l.Texts({7}, {8});
  const int64_t graphics = tavi::GraphicSubHeaderPosition(l.d, 0);
  const int64_t texts = tavi::TextSubHeaderPosition(l.d, 0);
  ASSERT_TRUE(tavi::AddImageSubheaderLength(l.d.Header, 1000));
  ASSERT_TRUE(tavi::AddImageDataLength(l.d.Header, 2000));
  l.d.Header.NumImages = l.d.ImageCount = 3;
  EXPECT_EQ(tavi::GraphicSubHeaderPosition(l.d, 0), graphics);
  EXPECT_EQ(tavi::TextSubHeaderPosition(l.d, 0), texts);
}

// Kept as it stands: in the 2.1 layout texts and data extensions are looked for behind the appended graphic.
TEST_F(PositionTest, AppendedGraphicMovesTextsAndExtensionsIn21) {
  for (const bool nitf20 : {false, true}) {
    Lengths l;
    l.d.IsNitf20 = nitf20;
    l.Images({10}, {1});
    l.Graphics({50, 60}, {5, 6});
    l.Labels({2}, {3});
    l.Texts({7}, {8});
    l.Extensions({9}, {9});
    const int64_t past_graphics = tavi::PositionPastGraphics(l.d);
    const int64_t past_labels = tavi::PositionPastLabels(l.d);
    const int64_t text = tavi::TextDataPosition(l.d, 0);
    const int64_t extension = tavi::DesSubHeaderPosition(l.d, 0);
    EXPECT_EQ(past_graphics, 232);
    EXPECT_EQ(past_labels, nitf20 ? 237 : 232);
    ASSERT_TRUE(tavi::AddGraphicSubheaderLength(l.d.Header, 0));
    ASSERT_TRUE(tavi::AddGraphicDataLength(l.d.Header, 42));
    l.d.Header.NumGraphics = l.d.GraphicCount = 3;
    const int64_t appended = nitf20 ? 0 : 258 + 42;
    EXPECT_EQ(tavi::PositionPastGraphics(l.d), past_graphics)
        << "where the source has its first label or text";
    EXPECT_EQ(tavi::GraphicSubHeaderPosition(l.d, 2), past_graphics);
    EXPECT_EQ(tavi::PositionPastLabels(l.d), past_labels + appended);
    EXPECT_EQ(tavi::TextDataPosition(l.d, 0), text + appended);
    EXPECT_EQ(tavi::DesSubHeaderPosition(l.d, 0), extension + appended);
  }
}

TEST_F(PositionTest, AppendedTextsMoveNoExtension) {
  Lengths l;
  l.Texts({7, 8}, {9, 10});
  l.Extensions({3}, {4});
  const int64_t extension = tavi::DesSubHeaderPosition(l.d, 0);
  ASSERT_TRUE(tavi::AddTextDataLength(l.d.Header, 500));
  l.d.Header.NumTexts = l.d.TextCount = 3;
  EXPECT_EQ(tavi::DesSubHeaderPosition(l.d, 0), extension);
}

// The current count decides whether a group is stepped over, the source's count how far.
TEST_F(PositionTest, GroupWhoseCurrentCountIsZeroIsNotSteppedOver) {
  Lengths l;
  l.Images({10}, {1});
  l.Graphics({50}, {5});
  l.Texts({7}, {8});
  l.Extensions({9}, {9});
  l.d.ImageCount = 0;
  EXPECT_EQ(tavi::GraphicSubHeaderPosition(l.d, 0), 100);
  EXPECT_EQ(tavi::PositionPastGraphics(l.d), 155);
  l.d.GraphicCount = 0;
  EXPECT_EQ(tavi::PositionPastGraphics(l.d), 100);
  EXPECT_EQ(tavi::PositionPastLabels(l.d), 100);
  EXPECT_EQ(tavi::DesSubHeaderPosition(l.d, 0), 115);
  l.d.TextCount = 0;
  EXPECT_EQ(tavi::DesSubHeaderPosition(l.d, 0), 100);
}

TEST_F(PositionTest, LabelsAreSteppedOverIn20Alone) {
  Lengths l;
  l.Labels({20, 30}, {2, 3});
  EXPECT_EQ(tavi::PositionPastLabels(l.d), 100);
  l.d.IsNitf20 = 1;
  EXPECT_EQ(tavi::PositionPastLabels(l.d), 155);
  EXPECT_EQ(tavi::LabelSubHeaderPosition(l.d, 1), 122);
  EXPECT_EQ(tavi::LabelDataPosition(l.d, 1), 152);
  l.d.LabelsInFile = 1;
  EXPECT_EQ(tavi::PositionPastLabels(l.d), 122);
  l.d.LabelCount = 0;
  EXPECT_EQ(tavi::PositionPastLabels(l.d), 100);
}

TEST_F(PositionTest, SumOfAGroupWrapsAtThirtyTwoBits) {
  Lengths l;
  l.Images({0x10, 0x20}, {0xFFFFFFF8, 0xFFFFFFFF});
  l.Graphics({0xFFFFFFFF}, {0xFFFFFFFF});
  EXPECT_EQ(tavi::ImageSubHeaderPosition(l.d, 1), 100 + 8);
  EXPECT_EQ(tavi::ImageDataPosition(l.d, 1), 100 + 8 + 0x20);
  EXPECT_EQ(tavi::PositionPastGraphics(l.d), 100 + 0x27 + int64_t{0xFFFFFFFE}) << "each group by itself";
}

}  // namespace

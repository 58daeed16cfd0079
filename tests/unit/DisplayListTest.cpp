// The order of drawing, the offsets of attached segments, the composite's size: on documents built by hand.
#include "DisplayList.h"

#include <gtest/gtest.h>

#include <limits>
#include <random>

#include "UnitTest.h"

namespace {

using tavi::DisplayEntry;
using tavi::kDisplayGraphic;
using tavi::kDisplayImage;
using tavi::kDisplayLabel;
using tavi::Offset;
using namespace unit;

struct Segment {
  uint32_t level = 0;
  uint32_t attached_to = 0;
  int32_t row = 0;
  int32_t column = 0;
};

// What a document holds, as far as composition looks at it.
struct Lists {
  std::vector<Segment> images = {};
  std::vector<Segment> graphics = {};
  std::vector<Segment> labels = {};
  uint32_t texts = 0;
};

// A document with those lists.
struct Scene {
  NitfFile d;

  explicit Scene(const Lists& lists) {
    d.ImageCount = static_cast<uint32_t>(lists.images.size());
    d.GraphicCount = static_cast<uint32_t>(lists.graphics.size());
    d.LabelCount = static_cast<uint32_t>(lists.labels.size());
    d.TextCount = lists.texts;
    EXPECT_EQ(tavi::AllocateObjects(d), SUCCESS);
    Fill(d.Images, lists.images);
    Fill(d.Graphics, lists.graphics);
    Fill(d.Labels, lists.labels);
  }
  template <class Node>
  static void Fill(Node* node, const std::vector<Segment>& segments) {
    for (const Segment& segment : segments) {
      node->Subheader->DisplayLevel = segment.level;
      node->Subheader->AttachmentLevel = segment.attached_to;
      node->Subheader->LocationRow = segment.row;
      node->Subheader->LocationColumn = segment.column;
      node = node->Next;
    }
  }
  // Gives an image a grid of blocks.
  void Grid(uint32_t index, uint32_t across, uint32_t down, uint32_t width, uint32_t height) {
    tavi::ImSubHdr* image = tavi::SubheaderAt(d.Images, index, d.ImageCount);
    image->BlocksPerRow = across;
    image->BlocksPerColumn = down;
    image->BlockWidth = width;
    image->BlockHeight = height;
  }
  Offset OffsetOf(tavi::DisplayKind kind, uint32_t index) const {
    return tavi::AttachmentWalk(d).AccumulateAttachment({kind, 0, index});
  }
  std::vector<DisplayEntry> List() {
    tavi::HostArray<DisplayEntry> list;
    EXPECT_EQ(tavi::BuildDisplayList(list, d), SUCCESS);
    return {list.data(), list.data() + list.size()};
  }
};

void ExpectOffset(const Offset& offset, int32_t row, int32_t column) {
  EXPECT_EQ(offset.row, row);
  EXPECT_EQ(offset.column, column);
}

std::string Show(const std::vector<DisplayEntry>& list) {
  std::string text;
  for (const DisplayEntry& e : list) {
    text += "i?gl"[e.Kind] + std::to_string(e.Index) + ":" + std::to_string(e.DisplayLevel) + " ";
  }
  return text;
}

class DisplayListTest : public UnitTest {};

// ---- The order ----

// Which of equal levels comes last is what these swaps leave, and it is on top.
std::vector<DisplayEntry> ExchangeSorted(std::vector<DisplayEntry> list) {
  const size_t n = list.size();
  for (size_t i = 0; n > 1 && i <= n - 2; ++i) {
    for (size_t j = i + 1; j <= n - 1; ++j) {
      if (list[i].DisplayLevel > list[j].DisplayLevel) {
        const DisplayEntry kept = list[i];
        list[i] = list[j];
        list[j] = kept;
      }
    }
  }
  return list;
}

TEST_F(DisplayListTest, OrderIsThatOfAnExchangeSortForAllSmallLists) {
  for (uint32_t n = 1; n <= 6; ++n) {
    const uint32_t images = (n + 2) / 3;
    const uint32_t graphics = (n + 1) / 3;
    Scene scene({.images = std::vector<Segment>(images),
                 .graphics = std::vector<Segment>(graphics),
                 .labels = std::vector<Segment>(n / 3)});
    std::vector<uint32_t*> levels;
    std::vector<DisplayEntry> unsorted;
    const auto add = [&](auto* node, uint32_t kind) {
      for (uint32_t i = 0; node != nullptr; node = node->Next, ++i) {
        levels.push_back(&node->Subheader->DisplayLevel);
        unsorted.push_back({kind, 0, i});
      }
    };
    add(scene.d.Images, 0);
    add(scene.d.Graphics, 2);
    add(scene.d.Labels, 3);
    ASSERT_EQ(levels.size(), n);
    uint32_t combinations = 1;
    for (uint32_t i = 0; i < n; ++i) combinations *= 4;
    for (uint32_t combination = 0; combination < combinations; ++combination) {
      uint32_t rest = combination;
      for (uint32_t i = 0; i < n; ++i, rest /= 4) *levels[i] = unsorted[i].DisplayLevel = rest % 4;
      ASSERT_EQ(Show(scene.List()), Show(ExchangeSorted(unsorted)));
    }
  }
}

TEST_F(DisplayListTest, TwoTwoOneComesOutBackwards) {
  Scene scene({.images = {{2}, {2}, {1}}});
  EXPECT_EQ(Show(scene.List()), "i2:1 i1:2 i0:2 ");
}

TEST_F(DisplayListTest, KindsOfEqualLevelStayInTheirOrder) {
  Scene scene({.images = {{5}}, .graphics = {{5}}, .labels = {{5}}});
  EXPECT_EQ(Show(scene.List()), "i0:5 g0:5 l0:5 ");
}

TEST_F(DisplayListTest, LevelsCompareAsUnsigned) {
  Scene scene({.images = {{0xFFFFFFFF}, {999}, {0}}});
  EXPECT_EQ(Show(scene.List()), "i2:0 i1:999 i0:4294967295 ");
}

TEST_F(DisplayListTest, NodesWithoutASubheaderAreLeftOut) {
  Scene scene({.images = {{3}, {2}, {1}}});
  tavi::ImSubHdr* taken = scene.d.Images->Next->Subheader;
  scene.d.Images->Next->Subheader = nullptr;
  EXPECT_EQ(Show(scene.List()), "i2:1 i0:3 ");
  scene.d.Images->Next->Subheader = taken;
}

TEST_F(DisplayListTest, ListsAreTakenUpToTheirCurrentCounts) {
  Scene scene({.images = {{1}, {2}}, .graphics = {{3}, {4}}, .labels = {{5}, {6}}});
  scene.d.ImageCount = scene.d.GraphicCount = scene.d.LabelCount = 1;
  EXPECT_EQ(Show(scene.List()), "i0:1 g0:3 l0:5 ");
}

TEST_F(DisplayListTest, TextsAloneHaveNoArray) {
  Scene scene({.texts = 2});
  tavi::HostArray<DisplayEntry> list;
  EXPECT_EQ(tavi::BuildDisplayList(list, scene.d), SUCCESS);
  EXPECT_FALSE(list.exists());
}

TEST_F(DisplayListTest, NoSegmentsHaveAnEmptyArray) {
  Scene scene(Lists{});
  tavi::HostArray<DisplayEntry> list;
  EXPECT_EQ(tavi::BuildDisplayList(list, scene.d), SUCCESS);
  EXPECT_EQ(list.size(), 0U);
}

// ---- The next level ----

int32_t NextLevel(Scene&& scene) {
  return tavi::NextDisplayLevel(scene.d);
}

TEST_F(DisplayListTest, NextLevelIsOneWhenThereIsNothingToDraw) {
  EXPECT_EQ(NextLevel(Scene(Lists{})), 1);
  EXPECT_EQ(NextLevel(Scene({.texts = 3})), 1);
}

TEST_F(DisplayListTest, NextLevelIsAboveAllThatExist) {
  EXPECT_EQ(NextLevel(Scene({.images = {{0}}})), 1);
  EXPECT_EQ(NextLevel(Scene({.images = {{4}, {9}, {2}}})), 10);
  EXPECT_EQ(NextLevel(Scene({.images = {{4}}, .graphics = {{12}}, .labels = {{3}}})), 13);
  EXPECT_EQ(NextLevel(Scene({.images = {{4}}, .graphics = {{1}}, .labels = {{30}}})), 31);
  EXPECT_EQ(NextLevel(Scene({.images = {{999}}})), 1000);
}

// ---- Attachment ----

TEST_F(DisplayListTest, SegmentWithoutAParentHasNoOffset) {
  const Scene scene({.images = {{1, 0, 10, 20}}, .graphics = {{2, 0, 30, 40}}, .labels = {{3, 0, 50, 60}}});
  ExpectOffset(scene.OffsetOf(kDisplayImage, 0), 0, 0);
  ExpectOffset(scene.OffsetOf(kDisplayGraphic, 0), 0, 0);
  ExpectOffset(scene.OffsetOf(kDisplayLabel, 0), 0, 0);
}

TEST_F(DisplayListTest, ParentThatDoesNotExistGivesNoOffset) {
  const Scene scene({.images = {{1, 77, 10, 20}}});
  ExpectOffset(scene.OffsetOf(kDisplayImage, 0), 0, 0);
}

TEST_F(DisplayListTest, ChainSumsAllItsParentsAndNotItself) {
  const Scene scene({.images = {{1, 0, 1, 2}, {2, 1, 10, 20}, {3, 2, 100, 200}, {4, 3, 1000, 2000}}});
  ExpectOffset(scene.OffsetOf(kDisplayImage, 3), 111, 222);
  ExpectOffset(scene.OffsetOf(kDisplayImage, 1), 1, 2);
}

TEST_F(DisplayListTest, LocationsAreSigned) {
  const Scene scene({.images = {{1, 0, -500, 300}, {2, 1, 100, -700}, {3, 2, 0, 0}}});
  ExpectOffset(scene.OffsetOf(kDisplayImage, 2), -400, -400);
}

TEST_F(DisplayListTest, ChainClimbsAcrossKinds) {
  // label 5 → graphic 4 → label 3 → image 2 → graphic 1
  const Scene scene({.images = {{2, 1, 10, 10}},
                     .graphics = {{4, 3, 1000, 1000}, {1, 0, 1, 1}},
                     .labels = {{5, 4, 7, 7}, {3, 2, 100, 100}}});
  ExpectOffset(scene.OffsetOf(kDisplayLabel, 0), 1111, 1111);
  ExpectOffset(scene.OffsetOf(kDisplayGraphic, 0), 111, 111);
  ExpectOffset(scene.OffsetOf(kDisplayImage, 0), 1, 1);
}

TEST_F(DisplayListTest, LabelsChainForwardsAndBackwards) {
  const Scene scene({.labels = {{1, 0, 1, 1},
                                {2, 1, 10, 10},
                                {3, 2, 100, 100},
                                {9, 3, 0, 0},
                                {8, 7, 0, 0},
                                {7, 6, 5, 5},
                                {6, 0, 50, 50}}});
  ExpectOffset(scene.OffsetOf(kDisplayLabel, 3), 111, 111);
  ExpectOffset(scene.OffsetOf(kDisplayLabel, 4), 55, 55);
}

TEST_F(DisplayListTest, ImagesAreTriedBeforeGraphicsAndLabels) {
  const Scene scene(
      {.images = {{1, 0, 1, 0}, {5, 1, 0, 0}}, .graphics = {{1, 0, 10, 0}}, .labels = {{1, 0, 100, 0}}});
  ExpectOffset(scene.OffsetOf(kDisplayImage, 1), 1, 0);
}

TEST_F(DisplayListTest, FirstOfAKindWithTheLevelIsTheParent) {
  const Scene scene({.images = {{9, 3, 0, 0}, {3, 0, 1, 1}, {3, 0, 10, 10}}});
  ExpectOffset(scene.OffsetOf(kDisplayImage, 0), 1, 1);
}

// A level of 0 is a parent like any other when a segment has it, and then it is everybody's.
TEST_F(DisplayListTest, SegmentOfLevelZeroIsAParent) {
  const Scene scene({.images = {{0, 99, 5, 6}, {1, 0, 0, 0}}});
  ExpectOffset(scene.OffsetOf(kDisplayImage, 1), 5, 6);
}

TEST_F(DisplayListTest, EntryOfAnotherKindStartsAtLevelZero) {
  const Scene scene({.images = {{1, 99, 10, 10}, {0, 1, 3, 4}}});
  const tavi::AttachmentWalk walk(scene.d);
  ExpectOffset(walk.AccumulateAttachment({1, 0, 0}), 13, 14);
  ExpectOffset(walk.AccumulateAttachment({7, 0, 0}), 13, 14);
}

TEST_F(DisplayListTest, SumsWrap) {
  constexpr int32_t kMost = std::numeric_limits<int32_t>::max();
  const Scene scene({.images = {{1, 0, kMost, 0}, {2, 1, 1, 0}, {3, 2, 0, 0}}});
  EXPECT_EQ(scene.OffsetOf(kDisplayImage, 2).row, std::numeric_limits<int32_t>::min());
}

// ---- Chains that never end ----

TEST_F(DisplayListTest, SelfAttachedSegmentCountsItselfOnce) {
  ExpectOffset(Scene({.images = {{1, 1, 3, 4}}}).OffsetOf(kDisplayImage, 0), 3, 4);
  ExpectOffset(Scene({.graphics = {{1, 1, 3, 4}}}).OffsetOf(kDisplayGraphic, 0), 3, 4);
  ExpectOffset(Scene({.labels = {{1, 1, 3, 4}}}).OffsetOf(kDisplayLabel, 0), 3, 4);
  ExpectOffset(Scene({.images = {{0, 0, 3, 4}}}).OffsetOf(kDisplayImage, 0), 3, 4);
}

TEST_F(DisplayListTest, TwoAttachedToEachOtherCountOnceEach) {
  ExpectOffset(Scene({.images = {{1, 2, 1, 1}, {2, 1, 10, 10}}}).OffsetOf(kDisplayImage, 0), 11, 11);
  ExpectOffset(Scene({.images = {{1, 2, 1, 1}}, .graphics = {{2, 1, 10, 10}}}).OffsetOf(kDisplayImage, 0), 11,
               11);
  ExpectOffset(Scene({.images = {{1, 2, 1, 1}}, .labels = {{2, 1, 10, 10}}}).OffsetOf(kDisplayLabel, 0), 11,
               11);
  ExpectOffset(Scene({.labels = {{1, 2, 1, 1}, {2, 1, 10, 10}}}).OffsetOf(kDisplayLabel, 0), 11, 11);
}

TEST_F(DisplayListTest, ChainThatRunsIntoALoopCountsEachOnce) {
  const Scene scene({.images = {{1, 3, 1, 1}, {2, 1, 10, 10}, {3, 2, 100, 100}, {9, 1, 5000, 5000}}});
  ExpectOffset(scene.OffsetOf(kDisplayImage, 3), 111, 111);
}

// The rule told literally: a walk over three lists, without a guard. Gives up after far more hits than there
// are segments.
struct LiteralWalk {
  const std::vector<Segment>& images;
  const std::vector<Segment>& graphics;
  const std::vector<Segment>& labels;
  int32_t row = 0;
  int32_t column = 0;
  int hits = 0;

  bool Run(uint32_t level) {
    for (bool changed = true; changed;) {
      changed = false;
      for (const auto* list : {&images, &graphics}) {
        for (size_t i = 0; i < list->size();) {
          if ((*list)[i].level != level) {
            ++i;
            continue;
          }
          if (!Take((*list)[i], level)) return false;
          changed = true;
          i = 0;
        }
      }
      for (bool hit = true; hit;) {
        hit = false;
        for (const Segment& label : labels) {
          if (label.level != level) continue;
          if (!Take(label, level)) return false;
          hit = changed = true;
        }
      }
    }
    return true;
  }
  bool Take(const Segment& segment, uint32_t& level) {
    row += segment.row;
    column += segment.column;
    level = segment.attached_to;
    return ++hits < 100;
  }
};

TEST_F(DisplayListTest, GuardChangesNoChainThatEnds) {
  std::mt19937 random(5);
  int ended = 0;
  for (int scene_number = 0; scene_number < 3000; ++scene_number) {
    std::vector<Segment> lists[3];
    for (auto& list : lists) {
      list.resize(random() % 4);
      for (Segment& segment : list) {
        segment = {static_cast<uint32_t>(random() % 7), static_cast<uint32_t>(random() % 7),
                   static_cast<int32_t>(random() % 1000) - 500, static_cast<int32_t>(random() % 1000)};
      }
    }
    const Scene scene({.images = lists[0], .graphics = lists[1], .labels = lists[2]});
    const tavi::DisplayKind kKinds[] = {kDisplayImage, kDisplayGraphic, kDisplayLabel};
    for (size_t kind = 0; kind < 3; ++kind) {
      for (uint32_t i = 0; i < lists[kind].size(); ++i) {
        LiteralWalk literal{lists[0], lists[1], lists[2]};
        const bool ends = literal.Run(lists[kind][i].attached_to);
        const Offset offset = scene.OffsetOf(kKinds[kind], i);
        if (!ends) continue;
        ++ended;
        ASSERT_EQ(offset.row, literal.row);
        ASSERT_EQ(offset.column, literal.column);
      }
    }
  }
  EXPECT_GT(ended, 2000);
}

// ---- The composite's size ----

class CompositeSizeTest : public UnitTest {
 protected:
  static void ExpectSize(Scene& scene, uint32_t width, uint32_t height) {
    uint32_t w = 0xDEAD;
    uint32_t h = 0xBEEF;
    EXPECT_EQ(tavi::CompositeSize(scene.d, w, h), SUCCESS);
    EXPECT_EQ(w, width);
    EXPECT_EQ(h, height);
  }
};

TEST_F(CompositeSizeTest, FixedCanvasIs2048WhateverThereIs) {
  Scene none(Lists{});
  none.d.FixedCanvas = 1;
  ExpectSize(none, 2048, 2048);
  Scene scene({.images = {{1}}, .graphics = {{2}}, .labels = {{3}}, .texts = 1});
  scene.d.FixedCanvas = 1;
  ExpectSize(scene, 2048, 2048);
}

TEST_F(CompositeSizeTest, NoSegmentsAre2048) {
  Scene scene(Lists{});
  ExpectSize(scene, 2048, 2048);
}

TEST_F(CompositeSizeTest, TextsAloneAreTwoByTwo) {
  Scene scene({.texts = 1});
  ExpectSize(scene, 2, 2);
}

TEST_F(CompositeSizeTest, LabelsWithoutAnImageAreOnePixel) {
  Scene labels({.labels = {{1, 0, 500, 500}}});
  ExpectSize(labels, 1, 1);
  Scene with_graphics({.graphics = {{2, 0, 300, 300}}, .labels = {{1, 0, 500, 500}}, .texts = 4});
  ExpectSize(with_graphics, 1, 1);
}

TEST_F(CompositeSizeTest, ImageTakesItsWholeBlockGridAtItsPlace) {
  Scene scene({.images = {{1}}});
  scene.Grid(0, 2, 3, 512, 256);
  ExpectSize(scene, 1024, 768);
  scene.d.Images->Subheader->LocationRow = 100;
  scene.d.Images->Subheader->LocationColumn = 50;
  ExpectSize(scene, 1074, 868);
}

TEST_F(CompositeSizeTest, AttachedImageCountsBothPlaces) {
  Scene scene({.images = {{1, 0, 10, 20}, {2, 1, 300, 400}}});
  scene.Grid(0, 1, 1, 8, 8);
  scene.Grid(1, 1, 1, 8, 8);
  ExpectSize(scene, 428, 318);
}

TEST_F(CompositeSizeTest, EachSideIsTheLargestByItself) {
  Scene scene({.images = {{1}, {2}, {3}}});
  scene.Grid(0, 1, 1, 100, 1);
  scene.Grid(1, 1, 1, 1, 200);
  scene.Grid(2, 1, 1, 50, 50);
  ExpectSize(scene, 100, 200);
}

TEST_F(CompositeSizeTest, ImageOfNoBlocksIs2048) {
  Scene scene({.images = {{1}}});
  ExpectSize(scene, 2048, 2048);
  scene.d.Images->Subheader->LocationRow = 5;  // one side is enough
  ExpectSize(scene, 0, 5);
}

TEST_F(CompositeSizeTest, NegativeExtentComparesAsALargeNumber) {
  Scene scene({.images = {{1, 0, 0, -100}, {2}}});
  scene.Grid(0, 1, 1, 8, 8);
  scene.Grid(1, 1, 1, 50, 50);
  ExpectSize(scene, static_cast<uint32_t>(8 - 100), 50);
}

TEST_F(CompositeSizeTest, ProductsWrap) {
  Scene scene({.images = {{1}}});
  scene.Grid(0, 65536, 65537, 65536, 65536);
  ExpectSize(scene, 0, 65536);
}

TEST_F(CompositeSizeTest, LabelsAddTenOnceAndNoExtentOfTheirOwn) {
  Scene one({.images = {{1}}, .labels = {{2, 0, 5000, 5000}}});
  one.Grid(0, 1, 1, 64, 32);
  ExpectSize(one, 74, 42);
  Scene three({.images = {{1}}, .labels = {{2, 0, 5000, 5000}, {3}, {4, 1, 7, 7}}});
  three.Grid(0, 1, 1, 64, 32);
  ExpectSize(three, 74, 42);
  Scene empty({.images = {{1}}, .labels = {{2}}});
  ExpectSize(empty, 10, 10);
}

TEST_F(CompositeSizeTest, ImageAttachedToALabelMoves) {
  Scene scene({.images = {{1, 2, 0, 0}}, .labels = {{2, 0, 100, 200}}});
  scene.Grid(0, 1, 1, 8, 8);
  ExpectSize(scene, 218, 118);
}

}  // namespace

// Size of the composite, order of drawing, attachments, locations and background.
#include "ConformanceTest.h"

namespace tavi_test {
namespace {

class Composition : public ConformanceTest {
 protected:
  FileInformation InfoOf(const NtfBuilder& file, uint32_t flags = 0) { return Info(Write(file), flags); }

  // Width and height as fltInfo gives them.
  std::pair<uint32_t, uint32_t> SizeOf(const NtfBuilder& file, uint32_t flags = 0) {
    const FileInformation information = InfoOf(file, flags);
    EXPECT_EQ(information.status, SUCCESS);
    return {information.info.width, information.info.height};
  }
};

using Size = std::pair<uint32_t, uint32_t>;

// One pixel of the given grey.
ImageSpec Dot(uint8_t grey) {
  return GreyImage(1, 1, {grey});
}

TEST_F(Composition, FixedCanvasIs2048By2048EvenWithoutSegments) {
  EXPECT_EQ(SizeOf({}, TAVI_LOAD_FIXED_CANVAS), (Size{2048, 2048}));
  EXPECT_EQ(SizeOf({GreyImage(3, 2)}, TAVI_LOAD_FIXED_CANVAS), (Size{2048, 2048}));
}

TEST_F(Composition, NoSegmentsOfAnyKindGive2048By2048) {
  EXPECT_EQ(SizeOf({}), (Size{2048, 2048}));
  NtfBuilder file;
  file.data_extensions.emplace_back();
  EXPECT_EQ(SizeOf(file), (Size{2048, 2048}));
}

TEST_F(Composition, TextsOnlyGive2By2OfBackground) {
  NtfBuilder file;
  file.texts.push_back({.data = {'h', 'i'}});
  file.background = {9, 8, 7};
  EXPECT_EQ(SizeOf(file), (Size{2, 2}));
  const LoadedPicture picture = Load(file);
  EXPECT_EQ(picture.status, SUCCESS);
  EXPECT_EQ(picture.height, 2U);
  EXPECT_EQ(picture.At(1, 1), (Rgb{9, 8, 7}));
}

TEST_F(Composition, SizeComesFromTheBlocks) {
  ImageSpec image = GreyImage(1, 1);
  image.Blocks(2, 3, 512, 100);
  image.columns = 700;
  image.rows = 210;
  EXPECT_EQ(SizeOf({image}), (Size{1024, 300}));
}

TEST_F(Composition, LocationCountsInTheSize) {
  EXPECT_EQ(SizeOf({GreyImage(10, 20).At(100, 50)}), (Size{60, 120}));
}

TEST_F(Composition, LocationsOfAttachedImagesAddUp) {
  NtfBuilder file{GreyImage(4, 4).Level(1).At(10, 20), GreyImage(4, 4).Level(2, 1).At(100, 200)};
  EXPECT_EQ(SizeOf(file), (Size{224, 114}));
  ExpectReference(file);
}

TEST_F(Composition, ChainOfAttachments) {
  NtfBuilder file{Dot(10).Level(3, 2).At(1, 2), Dot(20).Level(2, 1).At(10, 20), Dot(30).Level(1).At(3, 4)};
  const LoadedPicture picture = Load(file);
  EXPECT_EQ(picture.At(26, 14).red, 10);
  EXPECT_EQ(picture.At(24, 13).red, 20);
  EXPECT_EQ(picture.At(4, 3).red, 30);
  ExpectReference(file);
}

TEST_F(Composition, ParentIsTheFirstImageWithTheLevel) {
  NtfBuilder file{Dot(1).Level(5).At(0, 3), Dot(2).Level(5).At(0, 9), Dot(3).Level(6, 5).At(0, 1)};
  EXPECT_EQ(Load(file).At(4, 0).red, 3);
  ExpectReference(file);
}

TEST_F(Composition, AttachmentToALevelThatIsNotThereAddsNothing) {
  EXPECT_EQ(SizeOf({Dot(1).Level(1, 77).At(2, 3)}), (Size{4, 3}));
}

TEST_F(Composition, LevelZeroIsAParentWhenASegmentHasIt) {
  // The image of level 0 is attached to level 0: to itself. Its location counts once more for it and for the
  // other.
  NtfBuilder file{Dot(1).Level(0, 0).At(2, 3), Dot(2).Level(1, 0).At(10, 10)};
  EXPECT_EQ(SizeOf(file), (Size{14, 13}));
  ExpectReference(file);
}

TEST_F(Composition, AttachmentLoopsEnd) {
  NtfBuilder pair{Dot(1).Level(1, 2).At(1, 10), Dot(2).Level(2, 1).At(100, 1000)};
  // From either image both are visited once: its own location counts twice, the other's once.
  EXPECT_EQ(SizeOf(pair), (Size{1000 + 1000 + 10 + 1, 100 + 100 + 1 + 1}));
  EXPECT_EQ(SizeOf({Dot(1).Level(4, 4).At(5, 6)}), (Size{13, 11}));
  NtfBuilder ring;
  for (uint32_t i = 0; i < 50; ++i) ring.images.push_back(Dot(1).Level(i + 1, (i + 1) % 50 + 1).At(1, 1));
  EXPECT_EQ(SizeOf(ring), (Size{52, 52}));
}

TEST_F(Composition, HigherLevelsAreDrawnOverLowerOnes) {
  EXPECT_EQ(Load({Dot(1).Level(2), Dot(2).Level(1)}).At(0, 0).red, 1);
  EXPECT_EQ(Load({Dot(1).Level(1), Dot(2).Level(2)}).At(0, 0).red, 2);
  EXPECT_EQ(Load({Dot(1).Level(999), Dot(2).Level(1), Dot(3).Level(500)}).At(0, 0).red, 1);
}

TEST_F(Composition, EqualLevelsKeepTheirOrder) {
  EXPECT_EQ(Load({Dot(1).Level(1), Dot(2).Level(1)}).At(0, 0).red, 2);
}

TEST_F(Composition, LevelsTwoTwoOneAreDrawnThirdSecondFirst) {
  // The exchange of the first and the third entry turns the two equal ones round.
  EXPECT_EQ(Load({Dot(1).Level(2), Dot(2).Level(2), Dot(3).Level(1)}).At(0, 0).red, 1);
  EXPECT_EQ(Load({Dot(1).Level(1), Dot(2).Level(2), Dot(3).Level(2)}).At(0, 0).red, 3);
}

TEST_F(Composition, EveryOrderOfFourLevelsFromThree) {
  for (uint32_t code = 0; code < 81; ++code) {
    NtfBuilder file;
    for (uint32_t i = 0, rest = code; i < 4; ++i, rest /= 3) {
      file.images.push_back(Dot(static_cast<uint8_t>(10 + i)).Level(1 + rest % 3));
    }
    SCOPED_TRACE(code);
    ExpectReference(file);
  }
}

TEST_F(Composition, NegativeLocationsCutTheImage) {
  NtfBuilder file{GreyImage(4, 4).At(-1, -2)};
  EXPECT_EQ(SizeOf(file), (Size{2, 3}));
  EXPECT_EQ(Load(file).At(0, 0).red, 6);
  ExpectReference(file);
}

TEST_F(Composition, NegativeLocationOfAParentMovesItsChild) {
  NtfBuilder file{GreyImage(8, 8).Level(1).At(-3, 0), Dot(255).Level(2, 1).At(4, 5)};
  EXPECT_EQ(Load(file).At(5, 1).red, 255);
  ExpectReference(file);
}

TEST_F(Composition, NegativeExtentComparesAsALargeUnsignedNumber) {
  const FileInformation information = InfoOf({GreyImage(4, 4).At(0, -10), GreyImage(20, 4)});
  EXPECT_EQ(information.status, SUCCESS);
  EXPECT_EQ(information.info.width, static_cast<uint32_t>(-6));
  EXPECT_EQ(information.info.height, 4U);
  EXPECT_EQ(Load({GreyImage(4, 4).At(0, -10), GreyImage(20, 4)}).status, ERR_INVALID_PARAMETER);
}

TEST_F(Composition, ExtentOfZeroInBothDirectionsGives2048By2048) {
  EXPECT_EQ(SizeOf({GreyImage(4, 4).At(-4, -4)}), (Size{2048, 2048}));
}

TEST_F(Composition, ExtentOfZeroInOneDirectionIsRefusedByTheHost) {
  EXPECT_EQ(SizeOf({GreyImage(4, 4).At(-4, 0)}), (Size{4, 0}));
  EXPECT_EQ(Load({GreyImage(4, 4).At(-4, 0)}).status, ERR_INVALID_PARAMETER);
}

TEST_F(Composition, BackgroundFillsWhatNoImageCovers) {
  NtfBuilder file{Dot(5).At(1, 1)};
  file.background = {0x10, 0x20, 0x30};
  const LoadedPicture picture = Load(file);
  EXPECT_EQ(picture.At(0, 0), (Rgb{0x10, 0x20, 0x30}));
  EXPECT_EQ(picture.At(1, 1), (Rgb{5, 5, 5}));
}

TEST_F(Composition, FailingImageStopsTheDrawing) {
  NtfBuilder file{GreyImage(2, 2).Level(1), GreyImage(2, 2).Level(2)};
  file.images[0].ic = "C0";
  const LoadedPicture picture = Load(file);
  EXPECT_EQ(picture.status, ERR_NOT_SUPPORTED);
  EXPECT_TRUE(picture.rows.empty());
}

TEST_F(Composition, CodesWithoutADecoderAreRefused) {
  for (const char* ic : {"C0", "C2", "M0", "M2"}) {
    SCOPED_TRACE(ic);
    ImageSpec image = GreyImage(2, 2);
    image.ic = ic;
    EXPECT_EQ(OpenStatus(NtfBuilder{image}.Build()), SUCCESS);
    EXPECT_EQ(Load(image).status, ERR_NOT_SUPPORTED);
  }
}

TEST_F(Composition, TextsAndDataExtensionsAreNotDrawn) {
  NtfBuilder file{GreyImage(3, 2)};
  const LoadedPicture alone = Load(file);
  file.texts.push_back({.data = {'a', 'b', 'c'}});
  file.data_extensions.push_back({.data = {1, 2, 3}});
  const LoadedPicture together = Load(file);
  EXPECT_EQ(together.width, alone.width);
  EXPECT_EQ(Greys(together), Greys(alone));
}

TEST_F(Composition, ManyImagesAreFoundByTheirLengths) {
  NtfBuilder file;
  for (uint32_t i = 0; i < 60; ++i) {
    file.images.push_back(
        GreyImage(1 + i % 5, 1 + i % 3, Pattern(40, i)).Level(1 + i).At(0, static_cast<int>(5 * i)));
    if (i % 4 == 0) file.images.back().udid = Tre("TAG", std::string(i, 'x'));
    if (i % 7 == 0) file.images.back().comments = {"one", "two"};
  }
  ExpectReference(file);
}

}  // namespace
}  // namespace tavi_test

// Every field of an image in turn with values that no producer writes: a status, no crash, no leak, and no
// memory beyond what the host allows.
#include "ConformanceTest.h"

namespace tavi_test {
namespace {

class StrangeValues : public ConformanceTest {
 protected:
  void SetUp() override {
    ConformanceTest::SetUp();
    limit_ = HostGetBitmapLimit();
    HostSetBitmapLimit(uint64_t{8} << 20);
  }
  void TearDown() override {
    HostSetBitmapLimit(limit_);
    ConformanceTest::TearDown();
  }

  void LoadEveryStrangeForm(const ImageSpec& image) {
    const BuiltFile built = NtfBuilder{image}.Build();
    const FieldPlace pixels = built.At("image[0].pixels");
    for (const std::string& field : built.order) {
      const FieldPlace place = built.At(field);
      if (place.offset == pixels.offset || !(field.starts_with("image") || field.starts_with("L"))) continue;
      for (const std::string& text : Forms(place.length)) {
        BuiltFile strange = built;
        strange.Patch(field, text);
        const int32_t status = LoadFile(Write(strange)).status;
        EXPECT_TRUE(status == SUCCESS || status < 0) << field << " of " << text << ": " << status;
      }
    }
  }

 private:
  static std::vector<std::string> Forms(size_t width) {
    std::vector<std::string> forms;
    for (const char fill : {'0', '9', ' ', 'x', '\xFF', '\0'}) forms.emplace_back(width, fill);
    std::string one(width, '0');
    one.back() = '1';
    std::string large(width, '9');
    large.back() = '8';  // all nines are a sentinel in some fields
    std::string negative(width, '0');
    negative.front() = '-';
    negative.back() = '7';
    forms.insert(forms.end(), {one, large, negative});
    return forms;
  }

  uint64_t limit_ = 0;
};

TEST_F(StrangeValues, BilevelBlocksWithMasks) {
  ImageSpec image = BilevelImage(1, 1, Pattern(40));
  image.Blocks(2, 2, 5, 4);
  image.ic = "NM";
  image.mask.block_offsets = {{0, 3, kAbsentBlock, 6}};
  image.mask.pad_offsets = {{0, 3, kAbsentBlock, 6}};
  image.mask.pad_code = {1};
  LoadEveryStrangeForm(image);
}

TEST_F(StrangeValues, OneBandWithATable) {
  ImageSpec image = GreyImage(1, 1, Pattern(80));
  image.Blocks(2, 2, 4, 4);
  image.bands[0].luts = {Pattern(256, 3), Pattern(256, 4), Pattern(256, 5)};
  image.udid = Tre("TAG", "abc");
  image.comments = {"comment"};
  LoadEveryStrangeForm(image);
}

TEST_F(StrangeValues, DeepSamples) {
  LoadEveryStrangeForm(DeepImage(4, 4, 32, 24, Pattern(80)));
}

TEST_F(StrangeValues, EveryInterleaveOrder) {
  for (const char mode : {'B', 'P', 'R', 'S'}) {
    ImageSpec image = RgbImage(1, 1, mode, Pattern(400));
    image.Blocks(2, 2, 4, 4);
    image.ic = "NM";
    image.mask.block_offsets = {{0, 48, kAbsentBlock, 96}};
    image.mask.pad_offsets = {{0, 48, 96, 100}};
    LoadEveryStrangeForm(image);
  }
}

TEST_F(StrangeValues, EveryTruncationOfAColourImage) {
  for (const char mode : {'B', 'P', 'R', 'S'}) {
    ImageSpec image = RgbImage(1, 1, mode, Pattern(96));
    image.Blocks(2, 1, 4, 4);
    NtfBuilder file{image};
    const BuiltFile built = file.Build();
    for (size_t keep = 0; keep <= 96; ++keep) {
      BuiltFile cut = built;
      cut.Truncate("image[0].pixels", keep);
      SCOPED_TRACE(keep);
      EXPECT_EQ(Differences(LoadFile(Write(cut)), ReferenceCompose(file, cut)), "");
    }
  }
}

TEST_F(StrangeValues, LargestMaskTablesNeedNoMemoryThatTheFileCannotFill) {
  ImageSpec image = GreyImage(1, 1, {1});
  image.ic = "NM";
  image.mask.block_offsets = {{0}};
  image.fields = {{"NBPR", "9998"}, {"NBPC", "9998"}};
  EXPECT_EQ(OpenStatus(NtfBuilder{image}.Build()), ERR_FILE_READ);
}

TEST_F(StrangeValues, LargestTablesOfBandsNeedNoMemoryThatTheFileCannotFill) {
  ImageSpec image = GreyImage(1, 1, {1});
  image.use_xbands = true;
  image.fields["XBANDS"] = "99999";
  EXPECT_EQ(OpenStatus(NtfBuilder{image}.Build()), ERR_FILE_READ);
}

}  // namespace
}  // namespace tavi_test

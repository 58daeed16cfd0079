// Real files with coded images: they are drawn, and their pictures agree with those of independent decoders.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>

#include "../samples/SampleFiles.h"
#include "CodedTest.h"
#include "Tools.h"

namespace tavi::samples {
namespace {

using tavi_test::LoadedPicture;
using tavi_test::LoadFile;
using tavi_test::LoadRequest;
using tavi_test::Pixels;
using tavi_test::Rgb;

std::wstring PathOf(const std::string& name) {
  return (Folder() / name).wstring();
}

class CodedSamples : public tavi_test::HostTest {
 protected:
  void SetUp() override {
    tavi_test::HostTest::SetUp();
    files_ = Files();
    if (files_.empty()) GTEST_SKIP() << "no sample files in " << Folder();
  }

  const nlohmann::json& files() const { return files_; }

  static LoadedPicture Load(const std::string& name) {
    LoadRequest request;
    request.load_entry = HostLoadMemory;
    request.hook_entry = HostSetLoadHook;
    LoadedPicture picture = LoadFile(PathOf(name), request);
    EXPECT_EQ(picture.status, SUCCESS) << name;
    return picture;
  }

  // The picture from `row`, `column` on shows these 8-bit samples; `channels` names those that are shown.
  static void ExpectShown(const std::string& name, const Pixels& expected, int tolerance, uint32_t row = 0,
                          uint32_t column = 0) {
    const LoadedPicture picture = Load(name);
    ASSERT_EQ(picture.status, SUCCESS) << name;
    ASSERT_GE(picture.width, column + expected.width) << name;
    ASSERT_GE(picture.height, row + expected.height) << name;
    int worst = 0;
    for (uint32_t y = 0; y < expected.height; ++y) {
      for (uint32_t x = 0; x < expected.width; ++x) {
        const Rgb is = picture.At(column + x, row + y);
        const auto due = [&](uint32_t c) { return int{expected.At(x, y, expected.channels == 1 ? 0 : c)}; };
        worst = std::max(
            {worst, std::abs(is.red - due(0)), std::abs(is.green - due(1)), std::abs(is.blue - due(2))});
      }
    }
    EXPECT_LE(worst, tolerance) << name;
  }

  // The whole data of the file's image are the stream.
  Pixels Jpeg2000(const std::string& name, size_t image = 0) {
    const auto pixels = tavi_test::ByOpjDecompress(ImageData(name, image), directory());
    EXPECT_TRUE(pixels.has_value()) << name;
    return pixels.value_or(Pixels{});
  }

 private:
  nlohmann::json files_;
};

TEST_F(CodedSamples, EveryCodedFileIsDrawn) {
  size_t drawn = 0;
  for (const nlohmann::json& file : files()) {
    const Contents contents = ContentsOf(file);
    if (file.at("open") != 1 || contents.coded_images == 0 || contents.graphics != 0) continue;
    const std::string name = file.at("file");
    const LoadedPicture picture = Load(name);
    EXPECT_EQ(picture.rows.size(), tavi_test::Info(PathOf(name)).info.height) << name;
    ++drawn;
  }
  EXPECT_GE(drawn, 9U);
}

TEST_F(CodedSamples, JpegPicturesAgreeWithDjpeg) {
  if (!tavi_test::HasTool("djpeg")) GTEST_SKIP() << "no djpeg";
  for (const char* name : {"i_3018a.ntf", "i_3008a.ntf"}) {
    const auto expected = tavi_test::ByDjpeg(ImageData(name, 0), directory());
    ASSERT_TRUE(expected.has_value()) << name;
    ExpectShown(name, *expected, 2);
  }
}

TEST_F(CodedSamples, Jpeg2000PicturesAgreeWithOpjDecompress) {
  if (!tavi_test::HasTool("opj_decompress")) GTEST_SKIP() << "no opj_decompress";
  ExpectShown("file9_j2c.ntf", Jpeg2000("file9_j2c.ntf"), 0);
  // The tool converts what the file says to be sYCC, as the host does, with a rounding of its own.
  ExpectShown("file2_jp2_1place.ntf", Jpeg2000("file2_jp2_1place.ntf"), 1);
  ExpectShown("p1_06b.ntf", Jpeg2000("p1_06b.ntf"), 0);
}

// Four components, of which IREPBAND names three.
TEST_F(CodedSamples, ChosenBandsOfAMultispectralPicture) {
  if (!tavi_test::HasTool("opj_decompress")) GTEST_SKIP() << "no opj_decompress";
  const Pixels expected = Jpeg2000("056_512x512_s_8_4_ms_j2c.ntf");
  ExpectShown("056_512x512_s_8_4_ms_j2c.ntf", expected, 0);
}

// 61 x 99 pixels in a block of 64 x 126: the picture is stretched to the block, each pixel taking the one
// under its middle.
TEST_F(CodedSamples, APictureSmallerThanItsBlockIsStretched) {
  if (!tavi_test::HasTool("opj_decompress")) GTEST_SKIP() << "no opj_decompress";
  const Pixels stream = Jpeg2000("p1_01a.ntf");
  ASSERT_EQ(stream.width, 61U);
  ASSERT_EQ(stream.height, 99U);
  Pixels expected(64, 126, 1);
  for (uint32_t y = 0; y < 126; ++y)
    for (uint32_t x = 0; x < 64; ++x)
      expected.At(x, y) = stream.At((2 * x + 1) * 61 / 128, (2 * y + 1) * 99 / 252);
  ExpectShown("p1_01a.ntf", expected, 0);
}

TEST_F(CodedSamples, TwelveBitsAreShownByTheirHighBits) {
  if (!tavi_test::HasTool("opj_decompress")) GTEST_SKIP() << "no opj_decompress";
  Pixels expected = Jpeg2000("p1_04a.ntf");
  for (uint16_t& sample : expected.samples) sample = static_cast<uint16_t>((sample * 255U + 2047U) / 4095U);
  ExpectShown("p1_04a.ntf", expected, 1);
}

}  // namespace
}  // namespace tavi::samples

// Real files against what is known of them: whether they open, what their pictures show.
#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>

#include "HostFixture.h"
#include "LoadPicture.h"
#include "SampleFiles.h"
#include "TaviNitf.h"

namespace tavi::samples {
namespace {

using tavi_test::Info;
using tavi_test::LoadedPicture;
using tavi_test::LoadFile;
using tavi_test::Rgb;

std::wstring PathOf(const std::string& name) {
  return (Folder() / name).wstring();
}

class Samples : public tavi_test::HostTest {
 protected:
  void SetUp() override {
    tavi_test::HostTest::SetUp();
    files_ = Files();
    if (files_.empty()) {
      GTEST_SKIP() << "no sample files in " << Folder();
    }
  }

  const nlohmann::json& files() const { return files_; }

  // The picture of a file that is drawn; `width` and `height` are what it must have.
  static LoadedPicture Load(const std::string& name, uint32_t width, uint32_t height) {
    LoadedPicture picture = LoadFile(PathOf(name));
    EXPECT_EQ(picture.status, SUCCESS) << name;
    EXPECT_EQ(picture.width, width) << name;
    EXPECT_EQ(picture.height, height) << name;
    EXPECT_EQ(picture.rows.size(), height) << name;
    return picture;
  }

  // Compares with `expected(x, y)` and tells the first difference.
  template <class Expected>
  static void ExpectPixels(const LoadedPicture& picture, uint32_t width, uint32_t height, Expected expected) {
    ASSERT_EQ(picture.status, SUCCESS);
    ASSERT_GE(picture.width, width);
    ASSERT_GE(picture.rows.size(), height);
    size_t differences = 0;
    for (uint32_t y = 0; y < height; ++y) {
      for (uint32_t x = 0; x < width; ++x) {
        const Rgb wanted = expected(x, y);
        const Rgb found = picture.At(x, y);
        if (!(wanted == found) && differences++ == 0) {
          ADD_FAILURE() << "at " << x << ", " << y << ": wanted " << int{wanted.red} << " "
                        << int{wanted.green} << " " << int{wanted.blue} << ", found " << int{found.red} << " "
                        << int{found.green} << " " << int{found.blue};
        }
      }
    }
    EXPECT_EQ(differences, 0U);
  }

  // Compares with the picture that another renderer made of the file's one image. The picture covers the
  // image's rows and columns; ours covers its whole blocks and may be larger.
  static void ExpectReference(const std::string& name, uint32_t width, uint32_t height) {
    const Picture reference = ReadPng(name + "_0.ref.png");
    const LoadedPicture picture = Load(name, width, height);
    ExpectPixels(picture, reference.width, reference.height, [&](uint32_t x, uint32_t y) {
      const uint8_t* pixel = reference.At(x, y);
      return Rgb{pixel[0], pixel[1], pixel[2]};
    });
  }

 private:
  nlohmann::json files_;
};

// A file without graphics whose images all stand uncompressed.
bool IsDrawn(const nlohmann::json& file) {
  const Contents contents = ContentsOf(file);
  return file.at("open") == 1 && contents.graphics == 0 && contents.coded_images == 0;
}

TEST_F(Samples, OpenAsTheManifestSays) {
  size_t refused = 0;
  for (const nlohmann::json& file : files()) {
    const std::string name = file.at("file");
    NitfHandle handle = nullptr;
    EXPECT_EQ(Tavi_NITFCreate(&handle, PathOf(name).c_str()), file.at("open").get<int32_t>()) << name;
    if (handle == nullptr) {
      ++refused;
      continue;
    }
    const Contents contents = ContentsOf(file);
    const bool empty = contents.images + contents.graphics + contents.texts == 0;
    EXPECT_EQ(Tavi_NITFGetStatus(handle), TAVI_DOCUMENT_VALID | (empty ? TAVI_DOCUMENT_EMPTY : 0)) << name;
    EXPECT_EQ(Tavi_NITFDestroy(&handle), SUCCESS);
  }
  EXPECT_GE(files().size(), 30U);
  EXPECT_EQ(refused, 4U);
}

TEST_F(Samples, RefusalsComeFromTheFilterAsWell) {
  for (const nlohmann::json& file : files()) {
    if (file.at("open") != 1) {
      const std::string name = file.at("file");
      EXPECT_EQ(Info(PathOf(name)).status, file.at("open").get<int32_t>()) << name;
      EXPECT_EQ(LoadFile(PathOf(name)).status, file.at("open").get<int32_t>()) << name;
    }
  }
}

TEST_F(Samples, UncompressedFilesAreDrawn) {
  size_t drawn = 0;
  for (const nlohmann::json& file : files()) {
    if (!IsDrawn(file)) {
      continue;
    }
    const std::string name = file.at("file");
    const tavi_test::FileInformation information = Info(PathOf(name));
    EXPECT_EQ(information.status, SUCCESS) << name;
    Load(name, information.info.width, information.info.height);
    ++drawn;
  }
  EXPECT_EQ(drawn, 13U);
}

TEST_F(Samples, FilesWithGraphicsAreDrawn) {
  size_t drawn = 0;
  for (const nlohmann::json& file : files()) {
    if (file.at("open") != 1 || ContentsOf(file).graphics == 0) continue;
    const std::string name = file.at("file");
    const tavi_test::FileInformation information = Info(PathOf(name));
    EXPECT_EQ(information.status, SUCCESS) << name;
    Load(name, information.info.width, information.info.height);
    ++drawn;
  }
  EXPECT_EQ(drawn, 4U);
}

// A black image and, beyond it, a white background; four yellow arrows and four yellow words, each of which covers its
// own rectangle from end to end and nothing else is.
TEST_F(Samples, ArrowsAndWordsStandInTheirRectangles) {
  struct Place {
    uint32_t row, column, top, left, bottom, right;
  };
  // SLOC, SBND1 and SBND2 as they stand in the file.
  constexpr Place kPlaces[] = {{326, 713, 326, 713, 411, 788}, {275, 762, 275, 762, 345, 836},
                               {409, 713, 409, 713, 483, 799}, {475, 795, 475, 795, 537, 861},
                               {408, 642, 408, 642, 494, 717}, {475, 595, 475, 595, 546, 671},
                               {340, 631, 340, 631, 412, 717}, {258, 542, 258, 542, 373, 663}};
  const LoadedPicture picture = Load("gdal3453.ntf", 1563, 1336);
  ASSERT_EQ(picture.status, SUCCESS);
  std::vector<uint8_t> inside(size_t{1563} * 1336);
  for (const Place& p : kPlaces) {
    // The first half of a bound is the column's, the first half of the location the row's.
    const uint32_t left = p.column + p.top;
    const uint32_t top = p.row + p.left;
    const uint32_t right = p.column + p.bottom;
    const uint32_t bottom = p.row + p.right;
    std::vector<bool> rows(bottom - top);
    // Smooth edges reach into the pixel beside the rectangle.
    for (uint32_t y = top - 1; y <= std::min(bottom, 1335U); ++y) {
      for (uint32_t x = left - 1; x <= right; ++x) inside[size_t{y} * 1563 + x] = 1;
    }
    for (uint32_t y = top; y < bottom; ++y) {
      for (uint32_t x = left; x < right; ++x) {
        rows[y - top] = rows[y - top] || (picture.At(x, y).red > 128 && picture.At(x, y).blue < 128);
      }
    }
    EXPECT_GT(std::count(rows.begin(), rows.end(), true), (bottom - top) / 2) << "at " << left << ", " << top;
  }
  for (uint32_t y = 0; y < 1336; ++y) {
    for (uint32_t x = 0; x < 1563; ++x) {
      if (inside[size_t{y} * 1563 + x] != 0) continue;
      const Rgb expected = y < 937 ? Rgb{0, 0, 0} : Rgb{255, 255, 255};
      ASSERT_EQ(picture.At(x, y) == expected, true) << "at " << x << ", " << y;
    }
  }
}

// Eight bits, one block.
TEST_F(Samples, GreyPictureAgreesWithItsReference) {
  ExpectReference("i_3001a.ntf", 1024, 1024);
}

// Three bands by row.
TEST_F(Samples, PictureInRowsAgreesWithItsReference) {
  ExpectReference("i_3201c.ntf", 126, 126);
}

// Three bands by block, IREP MULTI.
TEST_F(Samples, PictureInPlanesAgreesWithItsReference) {
  ExpectReference("merlionRGB.ntf", 1024, 540);
}

// Sixteen bits of 979 x 734 in one block of 1024 x 1024: the whole block is shown. A sample is brought to
// eight bits linearly over its full scale; this file's samples are n x 257, so that any such rounding gives
// n.
TEST_F(Samples, SixteenBitPictureAgreesWithItsReference) {
  const std::vector<uint8_t> data = ImageData("headmono16.ntf", 0);
  for (size_t i = 0; i + 1 < data.size(); i += 2) {
    ASSERT_EQ(data[i], data[i + 1]) << "sample " << i / 2;
  }
  ExpectReference("headmono16.ntf", 1024, 1024);
}

// Beyond the image's rows and columns stands what the file holds there.
TEST_F(Samples, BlocksAreShownBeyondTheImage) {
  const std::vector<uint8_t> data = ImageData("headmono16.ntf", 0);
  ExpectPixels(Load("headmono16.ntf", 1024, 1024), 1024, 1024, [&](uint32_t x, uint32_t y) {
    const uint8_t level = data[(size_t{y} * 1024 + x) * 2];
    return Rgb{level, level, level};
  });
}

// 3 x 10 blocks of 512 x 128, the last column partly beyond the image.
TEST_F(Samples, BlocksStandRowByRow) {
  const std::vector<uint8_t> data = ImageData("i_6130e.ntf", 0);
  ExpectPixels(Load("i_6130e.ntf", 1536, 1280), 1536, 1280, [&](uint32_t x, uint32_t y) {
    const size_t block = size_t{y / 128} * 3 + x / 512;
    const uint8_t level = data[(block * 128 + y % 128) * 512 + x % 512];
    return Rgb{level, level, level};
  });
}

// An image and a text: the text is not drawn.
TEST_F(Samples, TextBesideAnImageDoesNotShow) {
  const std::vector<uint8_t> data = ImageData("MIE4NITF_test_file.r0t0q0c0i0.NTF", 0);
  ExpectPixels(Load("MIE4NITF_test_file.r0t0q0c0i0.NTF", 160, 120), 160, 120, [&](uint32_t x, uint32_t y) {
    const uint8_t level = data[size_t{y} * 160 + x];
    return Rgb{level, level, level};
  });
}

// Five images of one place and one display level: equal levels keep their order, so that the last one shows.
TEST_F(Samples, OfImagesOfOneLevelTheLastShows) {
  const std::vector<uint8_t> data = ImageData("kwiver_mie_combined.ntf", 4);
  ExpectPixels(Load("kwiver_mie_combined.ntf", 200, 150), 200, 150, [&](uint32_t x, uint32_t y) {
    const uint8_t level = data[size_t{y} * 200 + x];
    return Rgb{level, level, level};
  });
}

// Bilevel, 35 x 18 at row 100, column 100, behind a mask table of 15 bytes. Its palette is black and green
// and its pad code 0: black is transparent and shows the background, whose three bytes are blanks.
TEST_F(Samples, BilevelPictureWithPadCodeShowsTheBackground) {
  constexpr uint32_t kColumns = 35;
  constexpr uint32_t kRows = 18;
  constexpr uint32_t kPlace = 100;
  constexpr size_t kMaskTable = 15;
  const std::vector<uint8_t> data = ImageData("i_3034f_geographic.ntf", 0);
  const Rgb background{0x20, 0x20, 0x20};
  ExpectPixels(Load("i_3034f_geographic.ntf", kPlace + kColumns, kPlace + kRows), kPlace + kColumns,
               kPlace + kRows, [&](uint32_t x, uint32_t y) {
                 if (x < kPlace || y < kPlace) {
                   return background;
                 }
                 const size_t bit = size_t{y - kPlace} * kColumns + (x - kPlace);
                 const bool set = (data[kMaskTable + bit / 8] >> (7 - bit % 8) & 1) != 0;
                 return set ? Rgb{0, 255, 0} : background;
               });
}

TEST_F(Samples, FilesWithoutDrawableSegmentsShowTheBackground) {
  for (const char* name : {"mimcsa.ntf", "csshpa_simplepoint.ntf"}) {
    const std::vector<uint8_t> bytes = Bytes(name);
    const Rgb background{bytes[297], bytes[298], bytes[299]};
    ExpectPixels(Load(name, 2048, 2048), 2048, 2048, [&](uint32_t, uint32_t) { return background; });
  }
}

// The true samples of the three small files of 4 x 4 pixels in 2 x 2 blocks: size and bands, then rows by
// band.
class SmallBlocks : public Samples {
 protected:
  void SetUp() override {
    Samples::SetUp();
    if (IsSkipped()) {
      return;
    }
    std::ifstream in(Folder() / "ff_nitf_8bit_true.txt");
    int bands = 0;
    int count = 0;
    int columns = 0;
    int rows = 0;
    in >> bands >> count >> columns >> rows;
    ASSERT_EQ(bands, 3);
    ASSERT_EQ(columns, 4);
    ASSERT_EQ(rows, 4);
    for (int value = 0; in >> value;) {
      samples_.push_back(static_cast<uint8_t>(value));
    }
    ASSERT_EQ(samples_.size(), 48U);
  }

  Rgb True(uint32_t x, uint32_t y) const {
    const size_t place = size_t{y} * 4 + x;
    return {samples_[place], samples_[16 + place], samples_[32 + place]};
  }

 private:
  std::vector<uint8_t> samples_;
};

TEST_F(SmallBlocks, ByBlockShowTheTrueSamples) {
  ExpectPixels(Load("ff_nitf_8bit_b.nitf", 4, 4), 4, 4, [&](uint32_t x, uint32_t y) { return True(x, y); });
}

TEST_F(SmallBlocks, SequentialShowTheTrueSamples) {
  ExpectPixels(Load("ff_nitf_8bit_s.nitf", 4, 4), 4, 4, [&](uint32_t x, uint32_t y) { return True(x, y); });
}

// By pixel the last row of every block is not read and repeats its predecessor.
TEST_F(SmallBlocks, ByPixelRepeatTheRowAboveInTheLastRowOfEachBlock) {
  ExpectPixels(Load("ff_nitf_8bit_p.nitf", 4, 4), 4, 4,
               [&](uint32_t x, uint32_t y) { return True(x, y & ~1U); });
}

// A reference exists for one refused file too; it shows what another renderer makes of it, and is of no use
// here.
TEST_F(Samples, EveryReferenceOfADrawnFileIsCompared) {
  const std::vector<std::string> compared = {"headmono16.ntf", "i_3001a.ntf", "i_3201c.ntf",
                                             "merlionRGB.ntf"};
  for (const nlohmann::json& file : files()) {
    if (file.contains("ref_png") && IsDrawn(file)) {
      const std::string name = file.at("file");
      EXPECT_NE(std::find(compared.begin(), compared.end(), name), compared.end()) << name;
    }
  }
}

}  // namespace
}  // namespace tavi::samples

// The codecs' command-line tools as black boxes: what they write is read, and read as they read it
// themselves.
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>

#include "FaxEncoder.h"
#include "Jpeg2000Encoder.h"
#include "JpegEncoder.h"

namespace tavi_test {
namespace {

class ToolsTest : public CodecTest {
 protected:
  void SetUp() override {
    CodecTest::SetUp();
    std::string pattern = (std::filesystem::temp_directory_path() / "tavi-codecs-XXXXXX").string();
    ASSERT_NE(mkdtemp(pattern.data()), nullptr);
    folder_ = pattern;
  }
  void TearDown() override {
    std::filesystem::remove_all(folder_);
    CodecTest::TearDown();
  }

  std::string Path(const std::string& name) const { return (folder_ / name).string(); }

  // Runs a tool; its messages go nowhere.
  static void Run(const std::string& command) {
    ASSERT_EQ(std::system((command + " >/dev/null 2>&1").c_str()), 0) << command;
  }

 private:
  std::filesystem::path folder_;
};

bool HasTool(const char* name) {
  return std::system((std::string("command -v ") + name + " >/dev/null 2>&1").c_str()) == 0;
}

// Tools are asked for by the packages that the tests need; a system without them has nothing to compare with.
#define NEED_TOOL(name) \
  if (!HasTool(name)) GTEST_SKIP() << name << " is not installed"

Stream ReadFile(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  return Stream(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>());
}

// PGM and PPM of 8 or 16 bits.
void WritePnm(const std::string& path, const Pixels& pixels, uint32_t maximum) {
  std::ofstream file(path, std::ios::binary);
  file << (pixels.channels == 1 ? "P5" : "P6") << "\n"
       << pixels.width << " " << pixels.height << "\n"
       << maximum << "\n";
  for (const uint16_t sample : pixels.samples) {
    if (maximum > 255) file.put(static_cast<char>(sample >> 8));
    file.put(static_cast<char>(sample));
  }
}

Pixels ReadPnm(const std::string& path) {
  const Stream bytes = ReadFile(path);
  std::string text(bytes.begin(),
                   bytes.begin() + static_cast<ptrdiff_t>(std::min<size_t>(bytes.size(), 500)));
  for (size_t at = text.find('#'); at != std::string::npos; at = text.find('#')) {
    while (at < text.size() && text[at] != '\n') text[at++] = ' ';
  }
  std::istringstream header(text);
  std::string magic;
  uint32_t width = 0;
  uint32_t height = 0;
  uint32_t maximum = 0;
  header >> magic >> width >> height >> maximum;
  size_t at = static_cast<size_t>(header.tellg()) + 1;
  Pixels pixels(width, height, magic == "P5" ? 1 : 3);
  for (uint16_t& sample : pixels.samples) {
    sample = bytes.at(at++);
    if (maximum > 255) sample = static_cast<uint16_t>(sample << 8 | bytes.at(at++));
  }
  return pixels;
}

TEST_F(ToolsTest, Cjpeg) {
  NEED_TOOL("cjpeg");
  NEED_TOOL("djpeg");
  for (const char* const options : {"-quality 80", "-quality 60 -progressive", "-rgb", "-grayscale",
                                    "-restart 3B", "-sample 2x1", "-arithmetic", "-optimize -quality 99"}) {
    WritePnm(Path("in.ppm"), MakeScene(150, 90, 3, 8), 255);
    Run("cjpeg " + std::string(options) + " -outfile " + Path("x.jpg") + " " + Path("in.ppm"));
    Run("djpeg -pnm -outfile " + Path("out.pnm") + " " + Path("x.jpg"));
    EXPECT_EQ(MaxDifference(LoadPixels(ReadFile(Path("x.jpg"))), ReadPnm(Path("out.pnm"))), 0) << options;
  }
}

TEST_F(ToolsTest, OpjCompress) {
  NEED_TOOL("opj_compress");
  NEED_TOOL("opj_decompress");
  for (const char* const format : {"j2k", "jp2"}) {
    for (const char* const options :
         {"", "-r 20", "-t 64,64", "-I -r 10", "-p RPCL -n 3", "-r 40,20,1", "-d 5,9"}) {
      for (const uint32_t channels : {1u, 3u}) {
        for (const uint32_t maximum : {255u, 4095u, 65535u}) {
          uint32_t bits = 8;
          while ((1u << bits) - 1 < maximum) ++bits;
          const std::string in = Path(channels == 1 ? "in.pgm" : "in.ppm");
          const std::string out = Path(channels == 1 ? "out.pgm" : "out.ppm");
          WritePnm(in, MakeScene(150, 90, channels, bits), maximum);
          Run("opj_compress -i " + in + " -o " + Path("x.") + format + " " + options);
          Run("opj_decompress -i " + Path("x.") + format + " -o " + out);
          EXPECT_EQ(MaxDifference(LoadPixels(ReadFile(Path("x.") + format)), ReadPnm(out)), 0)
              << format << " " << options << " " << channels << " " << maximum;
        }
      }
    }
  }
}

// fax2tiff makes a TIFF file of raw fax data; its pixels, uncompressed by tiffcp, are what the host shows.
TEST_F(ToolsTest, Fax2Tiff) {
  NEED_TOOL("fax2tiff");
  NEED_TOOL("tiffcp");
  const Pixels page = MakePage(1728, 300);
  for (const bool two : {false, true}) {
    const Stream data = EncodeFax(page, {two ? FaxKind::kG3TwoD : FaxKind::kG3OneD});
    std::ofstream(Path("page.g3"), std::ios::binary)
        .write(reinterpret_cast<const char*>(data.data()), static_cast<std::streamsize>(data.size()));
    Run("fax2tiff -m -M " + std::string(two ? "-2" : "-1") + " -X 1728 -o " + Path("page.tif") + " " +
        Path("page.g3"));
    Run("tiffcp -c none -f msb2lsb -r 10000 " + Path("page.tif") + " " + Path("plain.tif"));
    const Stream plain = ReadFile(Path("plain.tif"));
    FaxDescription description{.format = two ? 67u : 66u, .width = 1728, .height = 300};
    Bitmap bitmap;
    ASSERT_EQ(LoadFax(data, &description, &bitmap), SUCCESS);
    // The one strip of an uncompressed file holds all rows with black as 1.
    Stream rows;
    for (uint32_t y = 0; y < 300; ++y) {
      uint8_t row[216];
      HostGetBitmapRow(bitmap.get(), row, y, sizeof row);
      for (const uint8_t byte : row) rows.push_back(static_cast<uint8_t>(~byte));
    }
    EXPECT_NE(std::search(plain.begin(), plain.end(), rows.begin(), rows.end()), plain.end()) << two;
  }
}

}  // namespace
}  // namespace tavi_test

// Segments of one stream: what the load is given, and what becomes of the bitmap that it gives.
#include "Streams.h"

namespace tavi_test {
namespace {

class SingleStream : public CodedTest {
 protected:
  // Loads an image of one stream and returns the one call.
  RecordedLoad LoadOne(const ImageSpec& image) {
    RecordingHost host;
    host.width = image.nppbh * image.nbpr;
    host.height = image.nppbv * image.nbpc;
    const LoadedPicture picture = Load(image, host);
    EXPECT_EQ(picture.status, SUCCESS);
    EXPECT_EQ(host.loads.size(), 1U);
    if (host.loads.size() != 1) return {};
    EXPECT_TRUE(host.hooks.empty());
    const uint8_t level = RecordingHost::LevelOf(0);
    EXPECT_EQ(picture.At(0, 0), (Rgb{level, level, level}));
    return host.loads[0];
  }
};

TEST_F(SingleStream, EveryCodeHandsTheWholeDataToTheLoad) {
  for (const char* ic : {"C3", "C5", "C6", "C8", "I1", "M3", "M5", "M6", "M8"}) {
    SCOPED_TRACE(ic);
    ImageSpec image = CodedImage(ic, "MONO", 1, 1, 1, 8, 8);
    image.pixels = TinyJpeg(1);
    const RecordedLoad load = LoadOne(image);
    EXPECT_EQ(load.bytes, image.pixels);
    EXPECT_EQ(load.record_size, 212U);
    EXPECT_EQ(load.bits, 0U);
    EXPECT_EQ(load.order, 4U);
    EXPECT_TRUE(load.has_options);
    EXPECT_FALSE(load.has_information);
    EXPECT_FALSE(load.given_pixels) << "the segment bitmap is freed first";
    EXPECT_EQ(load.options.flags, 0U);
  }
}

TEST_F(SingleStream, TheStreamNeedNotBeOfAnyKnownKind) {
  ImageSpec image = CodedImage("C3", "MONO", 1, 1, 1, 8, 8);
  image.pixels = {'n', 'o', ' ', 's', 't', 'r', 'e', 'a', 'm'};
  EXPECT_EQ(LoadOne(image).bytes, image.pixels);
}

TEST_F(SingleStream, DataBeginBehindTheMaskTable) {
  ImageSpec image = CodedImage("M3", "MONO", 1, 1, 1, 8, 8);
  image.mask.block_offsets = {{500}};  // not looked at
  image.mask.gap = {9, 9, 9};
  image.pixels = TinyJpeg(1);
  EXPECT_EQ(LoadOne(image).bytes, image.pixels);
}

TEST_F(SingleStream, AnAbsentOnlyBlockIsLoadedAllTheSame) {
  ImageSpec image = CodedImage("M5", "MONO", 1, 1, 1, 8, 8);
  image.mask.block_offsets = {{kAbsentBlock}};
  image.pixels = TinyJpeg(1);
  EXPECT_EQ(LoadOne(image).bytes, image.pixels);
}

TEST_F(SingleStream, CodesOf2000AreOneStreamWhateverTheBlocks) {
  for (const char* ic : {"C8", "M8"}) {
    ImageSpec image = CodedImage(ic, "RGB", 3, 3, 2, 8, 8);
    image.pixels = Concatenate({TinyJpeg(1), TinyJpeg(2)});
    EXPECT_EQ(LoadOne(image).bytes, image.pixels) << ic;
  }
}

// M8 has no mask table: what stands there counts as data.
TEST_F(SingleStream, OfM8AndM6TheMaskTableIsData) {
  for (const char* ic : {"M8", "M6"}) {
    ImageSpec image = CodedImage(ic, "MONO", 1, 1, 1, 8, 8);
    image.pixels = Concatenate({{0, 0, 0, 10, 0, 0, 0, 0, 0, 0}, TinyJpeg(1)});
    EXPECT_EQ(LoadOne(image).bytes, image.pixels) << ic;
  }
}

TEST_F(SingleStream, RgbSaysThatComponentsAreColours) {
  ImageSpec image = CodedImage("C3", "RGB", 3, 1, 1, 8, 8);
  image.pixels = TinyJpeg(1);
  EXPECT_EQ(LoadOne(image).options.flags, kComponentsAreRgb);
  image.irep = "YCbCr601";
  EXPECT_EQ(LoadOne(image).options.flags, 0U);
  image.irep = "RGB/LUT";
  EXPECT_EQ(LoadOne(image).options.flags, 0U);
}

TEST_F(SingleStream, MultiAsksForTheBandsOfItsRoles) {
  struct Case {
    std::vector<std::string> roles;
    uint32_t red, green, blue;
  };
  const std::vector<Case> cases = {
      {{"B ", "G ", "R "}, 2, 1, 0},       {{"  ", "  ", "  ", "  "}, 0, 1, 2},
      {{"  ", "B ", "G ", "R "}, 3, 2, 1}, {{"Y ", "Cb", "Cr"}, 0, 1, 2},
      {{"  ", "Cr", "Cb", "Y "}, 3, 2, 1}, {{"  ", "M ", "  "}, 1, 1, 1},
      {{"  ", "M ", "LU", "  "}, 2, 2, 2}, {{"  "}, 0, 1, 2},
      {{"R ", "G ", "  ", "  "}, 0, 1, 2}, {{"  ", "R ", "  ", "  "}, 1, 1, 2},
      {{"Y ", "  ", "  ", "  "}, 0, 3, 3}, {{"R "}, 0, 0, 0},
      {{"Cb", "R ", "Y ", "  "}, 1, 1, 2},
  };
  for (const Case& one : cases) {
    ImageSpec image = CodedImage("C8", "MULTI", 1, 1, 1, 8, 8);
    image.Roles(one.roles);
    image.pixels = TinyJpeg(1);
    const HostLoadFlagsRecord options = LoadOne(image).options;
    EXPECT_EQ(options.flags, kTakeBands);
    EXPECT_EQ(options.red_band, one.red) << one.roles.size() << one.roles[0];
    EXPECT_EQ(options.green_band, one.green) << one.roles.size() << one.roles[0];
    EXPECT_EQ(options.blue_band, one.blue) << one.roles.size() << one.roles[0];
  }
}

TEST_F(SingleStream, BandsBeyondNineAreChosenAmong) {
  ImageSpec image = CodedImage("C8", "MULTI", 12, 1, 1, 8, 8);
  image.bands[11].irepband = "R ";
  image.bands[10].irepband = "G ";
  image.bands[9].irepband = "B ";
  image.pixels = TinyJpeg(1);
  const HostLoadFlagsRecord options = LoadOne(image).options;
  EXPECT_EQ(options.red_band, 11U);
  EXPECT_EQ(options.green_band, 10U);
  EXPECT_EQ(options.blue_band, 9U);
}

TEST_F(SingleStream, TheLoadsStatusIsTheLibrarys) {
  ImageSpec image = CodedImage("C3", "MONO", 1, 1, 1, 8, 8);
  image.pixels = TinyJpeg(1);
  RecordingHost host;
  for (const int32_t status : {-9, -16, -7, -1, 0, 2, -700003}) {
    host.answer = [&](HostBitmap*) { return status; };
    const LoadedPicture picture = Load(image, host);
    // What is no failure below 1 ends the drawing, and the rows are still delivered.
    if (status < 1) {
      EXPECT_EQ(picture.status, status);
      EXPECT_EQ(picture.height, 0U);
    } else {
      EXPECT_EQ(picture.status, SUCCESS);
      EXPECT_EQ(picture.At(0, 0), (Rgb{255, 255, 255}));
    }
  }
}

// Without tiles the painted size is the header's: a bitmap of another size is stretched to it.
TEST_F(SingleStream, ABitmapOfAnotherSizeIsBroughtToTheHeadersSize) {
  ImageSpec image = CodedImage("C3", "MONO", 1, 1, 1, 16, 12);
  image.pixels = TinyJpeg(1);
  for (const uint32_t side : {4U, 40U}) {
    RecordingHost host;
    host.width = host.height = side;
    const LoadedPicture picture = Load(image, host);
    ASSERT_EQ(picture.status, SUCCESS);
    EXPECT_EQ(picture.width, 16U);
    EXPECT_EQ(picture.height, 12U);
    const uint8_t level = RecordingHost::LevelOf(0);
    for (const auto& [x, y] : {std::pair{0U, 0U}, {15U, 0U}, {0U, 11U}, {15U, 11U}, {8U, 6U}})
      EXPECT_EQ(picture.At(x, y), (Rgb{level, level, level})) << side << ": " << x << ", " << y;
  }
}

TEST_F(SingleStream, AShortFileIsNotLoaded) {
  ImageSpec image = CodedImage("C3", "MONO", 1, 1, 1, 8, 8);
  image.pixels = TinyJpeg(1);
  RecordingHost host;
  BuiltFile built = NtfBuilder{image}.Build();
  built.bytes.pop_back();
  EXPECT_EQ(LoadFile(Write(built), host.Request()).status, ERR_FILE_READ);
  EXPECT_TRUE(host.loads.empty());
}

TEST_F(SingleStream, AnOffsetBeyondTheDataIsNotLoaded) {
  ImageSpec image = CodedImage("M3", "MONO", 1, 1, 1, 8, 8);
  image.pixels = TinyJpeg(1);
  for (const uint32_t offset : {10000U, 0x80000000U, 0xFFFFFFFFU}) {
    image.mask.imdatoff = offset;
    RecordingHost host;
    EXPECT_EQ(Load(image, host).status, ERR_FILE_READ) << offset;
    EXPECT_TRUE(host.loads.empty());
  }
}

TEST_F(SingleStream, ReservedCodesAreRefused) {
  for (const char* ic : {"C0", "C2", "M0", "M2"}) {
    ImageSpec image = CodedImage(ic, "MONO", 1, 1, 1, 8, 8);
    image.pixels = TinyJpeg(1);
    RecordingHost host;
    EXPECT_EQ(Load(image, host).status, ERR_NOT_SUPPORTED) << ic;
    EXPECT_TRUE(host.loads.empty());
  }
}

}  // namespace
}  // namespace tavi_test

// Streams that claim far more than they hold: refused at once, with little memory.
#include <sys/resource.h>
#include <unistd.h>

#include <cstring>
#include <fstream>

#include "DeepJpegEncoder.h"
#include "FaxEncoder.h"
#include "Jpeg2000Encoder.h"
#include "JpegEncoder.h"
#include "ProcessorTime.h"

namespace tavi_test {
namespace {

// Sanitized builds are several times slower; nobody waits minutes there either.
constexpr double kMostSeconds = 5;
#if defined(__SANITIZE_ADDRESS__)
constexpr long kMostKilobytes = 900 * 1024;  // what was freed is kept for a while
#else
constexpr long kMostKilobytes = 512 * 1024;
#endif

class BombTest : public CodecTest {
 protected:
  void SetUp() override {
    CodecTest::SetUp();
    time_ = {};
    before_ = PeakKilobytes();
  }
  void TearDown() override {
    EXPECT_LT(time_.Seconds(), kMostSeconds);
    EXPECT_LT(PeakKilobytes() - before_, kMostKilobytes);
    CodecTest::TearDown();
  }

 private:
  static long PeakKilobytes() {
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return usage.ru_maxrss;
  }
  ProcessorTime time_;
  long before_ = 0;
};

void Put(Stream* stream, size_t at, uint64_t value, int size) {
  for (int i = 0; i < size; ++i) {
    (*stream)[at + static_cast<size_t>(i)] = static_cast<uint8_t>(value >> (8 * (size - 1 - i)));
  }
}

size_t FindMarker(const Stream& stream, uint8_t marker) {
  for (size_t i = 0; i + 1 < stream.size(); ++i) {
    if (stream[i] == 0xFF && stream[i + 1] == marker) return i;
  }
  ADD_FAILURE() << "no such marker";
  return 0;
}

Stream WithJpegSize(Stream stream, uint8_t frame, uint32_t width, uint32_t height) {
  const size_t at = FindMarker(stream, frame);
  Put(&stream, at + 5, height, 2);
  Put(&stream, at + 7, width, 2);
  return stream;
}

TEST_F(BombTest, JpegOfTheLargestSize) {
  for (const bool progressive : {false, true}) {
    const Stream stream = EncodeJpeg(MakeScene(16, 16, 3, 8), {.progressive = progressive});
    Bitmap bitmap;
    EXPECT_EQ(Load(WithJpegSize(stream, progressive ? 0xC2 : 0xC0, 65500, 65500), &bitmap), ERR_NO_MEMORY);
    EXPECT_EQ(Load(WithJpegSize(stream, progressive ? 0xC2 : 0xC0, 20000, 20000), &bitmap), ERR_FILE_FORMAT);
  }
}

TEST_F(BombTest, DeepJpegOfTheLargestSize) {
  Bitmap bitmap;
  const Stream lossless = EncodeLossless(MakeScene(16, 16, 1, 16), {.bits = 16});
  EXPECT_EQ(Load(WithJpegSize(lossless, 0xC3, 65500, 65500), &bitmap), ERR_NO_MEMORY);
  EXPECT_EQ(Load(WithJpegSize(lossless, 0xC3, 20000, 20000), &bitmap), ERR_FILE_FORMAT);
  const Stream twelve = EncodeJpeg12(MakeScene(16, 16, 1, 12), DeepProcess::kProgressive);
  EXPECT_EQ(Load(WithJpegSize(twelve, 0xC2, 20000, 20000), &bitmap), ERR_FILE_FORMAT);
}

// Thousands of scans, each of which goes over all of a large picture.
Stream ScanBomb(uint32_t side, int scans) {
  const Stream one = EncodeJpeg(MakeScene(16, 16, 1, 8), {.color = JpegColor::kGrey, .progressive = true});
  Stream bomb = WithJpegSize(one, 0xC2, side, side);
  bomb.resize(bomb.size() - 2);  // the end marker
  // Refining the first coefficient again and again, without data.
  const uint8_t scan[] = {0xFF, 0xDA, 0x00, 0x08, 0x01, 0x01, 0x00, 0x00, 0x00, 0x10};
  for (int i = 0; i < scans; ++i) bomb.insert(bomb.end(), scan, scan + sizeof scan);
  bomb.insert(bomb.end(), {0xFF, 0xD9});
  return bomb;
}

TEST_F(BombTest, ThousandsOfScans) {
  Bitmap bitmap;
  EXPECT_EQ(Load(ScanBomb(4000, 5000), &bitmap), ERR_FILE_FORMAT);
  EXPECT_EQ(Load(ScanBomb(1000, 50000), &bitmap), ERR_FILE_FORMAT);
}

constexpr size_t kSiz = 4;  // the segment behind SOC and the marker
constexpr size_t kSizWidth = kSiz + 4;
constexpr size_t kSizHeight = kSiz + 8;
constexpr size_t kSizTileWidth = kSiz + 20;
constexpr size_t kSizTileHeight = kSiz + 24;

Stream SmallCodestream() {
  return EncodeJpeg2000(MakeScene(32, 32, 1, 8), {.levels = 2});
}

Stream WithGrid(Stream stream, uint32_t side, uint32_t tile) {
  Put(&stream, kSizWidth, side, 4);
  Put(&stream, kSizHeight, side, 4);
  Put(&stream, kSizTileWidth, tile, 4);
  Put(&stream, kSizTileHeight, tile, 4);
  return stream;
}

TEST_F(BombTest, CodestreamThatClaimsTenThousandMillionPixels) {
  Stream stream = WithGrid(SmallCodestream(), 100000, 100000);
  stream.resize(200);
  Bitmap bitmap;
  EXPECT_EQ(Load(stream, &bitmap), ERR_NO_MEMORY);
  EXPECT_EQ(Load(WithGrid(SmallCodestream(), 0xFFFFFFFF, 0xFFFFFFFF), &bitmap), ERR_NO_MEMORY);
  EXPECT_EQ(Load(WithGrid(SmallCodestream(), 20000, 20000), &bitmap), ERR_FILE_FORMAT);
}

TEST_F(BombTest, MillionsOfTiles) {
  Bitmap bitmap;
  EXPECT_EQ(Load(WithGrid(SmallCodestream(), 4000, 1), &bitmap), ERR_FILE_FORMAT);
  EXPECT_LT(Load(WithGrid(SmallCodestream(), 4080, 16), &bitmap), 0);
}

Stream ManyComponents(uint32_t count, uint32_t side) {
  const Stream small = SmallCodestream();
  Stream stream(small.begin(), small.begin() + static_cast<ptrdiff_t>(kSiz + 36));
  stream.resize(kSiz + 38);
  Put(&stream, kSiz, 38 + 3 * count, 2);
  Put(&stream, kSiz + 36, count, 2);
  for (uint32_t i = 0; i < count; ++i) stream.insert(stream.end(), {7, 1, 1});
  stream.insert(stream.end(), small.begin() + static_cast<ptrdiff_t>(kSiz + 38 + 3), small.end());
  return WithGrid(stream, side, side);
}

TEST_F(BombTest, SixteenThousandComponents) {
  ASSERT_EQ(LoadPixels(ManyComponents(1, 32)).samples, MakeScene(32, 32, 1, 8).samples);
  for (const uint32_t side : {32u, 256u, 4096u}) {
    for (const uint32_t flags : {0u, kAsBands}) {
      Bitmap bitmap;
      const int32_t status = Load(ManyComponents(16384, side), &bitmap, {.flags = flags, .red = 16383});
      EXPECT_TRUE(status == SUCCESS || status < 0);
    }
  }
}

Stream Padded(Stream stream, size_t size) {
  stream.resize(std::max(size, stream.size()));
  return stream;
}

// Where the coding style of the main header has its fields.
constexpr size_t kLayers = 6;
constexpr size_t kLevels = 9;
constexpr size_t kBlockWidth = 10;
constexpr size_t kBlockHeight = 11;
constexpr size_t kPrecincts = 14;

// Code-blocks of 2^log x 2^log samples.
Stream WithBlocks(Stream stream, uint8_t log) {
  const size_t style = FindMarker(stream, 0x52);
  stream[style + kBlockWidth] = stream[style + kBlockHeight] = static_cast<uint8_t>(log - 2);
  return stream;
}

Stream WithPrecincts(Stream stream, uint8_t log) {
  const size_t style = FindMarker(stream, 0x52);
  stream[style + 4] |= 1;
  const size_t count = stream[style + kLevels] + size_t{1};
  Put(&stream, style + 2, 12 + count, 2);
  stream.insert(stream.begin() + static_cast<ptrdiff_t>(style + kPrecincts), count,
                static_cast<uint8_t>(log << 4 | log));
  return stream;
}

Stream WithLayers(Stream stream, uint32_t layers) {
  Put(&stream, FindMarker(stream, 0x52) + kLayers, layers, 2);
  return stream;
}

// A stream that is just taken and one of the same size that claims too much, for each thing that costs.
struct Claim {
  const char* what;
  Stream taken;
  Stream refused;
};

TEST_F(BombTest, EachThingThatAShortCodestreamClaimsIsLimited) {
  const Stream small = SmallCodestream();
  const std::vector<Claim> claims = {
      {"samples", WithGrid(small, 6400, 6400), WithGrid(small, 7000, 7000)},
      {"samples of three components", WithGrid(ManyComponents(3, 32), 3500, 3500),
       WithGrid(ManyComponents(3, 32), 4096, 4096)},
      {"tiles", WithGrid(small, 120 * 16, 16), WithGrid(small, 130 * 16, 16)},
      {"components of tiles", WithGrid(ManyComponents(512, 32), 128, 16),
       WithGrid(ManyComponents(16384, 32), 64, 16)},
      {"code-blocks", WithGrid(WithBlocks(small, 2), 2800, 2800), WithGrid(WithBlocks(small, 2), 3200, 3200)},
      {"precincts", WithGrid(WithPrecincts(small, 4), 3400, 3400),
       WithGrid(WithPrecincts(small, 4), 4400, 4400)},
      {"packets", WithGrid(WithLayers(WithPrecincts(small, 6), 1000), 2500, 2500),
       WithGrid(WithLayers(WithPrecincts(small, 6), 1000), 3200, 3200)},
  };
  for (const Claim& claim : claims) {
    Bitmap bitmap;
    EXPECT_EQ(Load(claim.taken, &bitmap), SUCCESS) << claim.what;
    EXPECT_EQ(Load(claim.refused, &bitmap), ERR_FILE_FORMAT) << claim.what;
  }
}

TEST_F(BombTest, LongerCodestreamsMayClaimMore) {
  const Stream small = SmallCodestream();
  Bitmap bitmap;
  EXPECT_EQ(Load(WithGrid(small, 8000, 8000), &bitmap), ERR_FILE_FORMAT);
  EXPECT_EQ(Load(Padded(WithGrid(small, 8000, 8000), 240000), &bitmap), ERR_FILE_FORMAT);
  EXPECT_EQ(Load(Padded(WithGrid(small, 8000, 8000), 320000), &bitmap), SUCCESS);
  EXPECT_EQ(Load(Padded(WithGrid(small, 12000, 12000), 1000000), &bitmap), ERR_FILE_FORMAT);
  EXPECT_EQ(Load(Padded(WithGrid(ManyComponents(16384, 32), 64, 16), 360000), &bitmap), ERR_FILE_FORMAT);
}

// What a megabyte may claim at most.
TEST_F(BombTest, AMegabyteOfSamples) {
  Bitmap bitmap;
  EXPECT_EQ(Load(Padded(WithGrid(SmallCodestream(), 9800, 9800), 1000000), &bitmap), SUCCESS);
}

TEST_F(BombTest, AMegabyteOfTiles) {
  Bitmap bitmap;
  const Stream small = SmallCodestream();
  EXPECT_EQ(Load(Padded(WithGrid(small, 180 * 16, 16), 1000000), &bitmap), SUCCESS);
  EXPECT_EQ(Load(Padded(WithGrid(small, 200 * 16, 16), 1000000), &bitmap), ERR_FILE_FORMAT);
}

TEST_F(BombTest, AMegabyteOfPrecincts) {
  Bitmap bitmap;
  EXPECT_EQ(Load(Padded(WithGrid(WithPrecincts(SmallCodestream(), 4), 5200, 5200), 1000000), &bitmap),
            SUCCESS);
}

TEST_F(BombTest, TinyPrecinctsAndManyLayers) {
  const Stream large = WithGrid(SmallCodestream(), 5000, 5000);
  Bitmap bitmap;
  const int32_t status = Load(WithLayers(large, 65535), &bitmap);
  EXPECT_TRUE(status == SUCCESS || status < 0);
  EXPECT_EQ(Load(WithPrecincts(large, 1), &bitmap), ERR_FILE_FORMAT);
}

// A length that ends within the part's own header must not be followed: one would never arrive.
TEST_F(BombTest, TilePartsThatPointBack) {
  Stream stream = SmallCodestream();
  const size_t part = FindMarker(stream, 0x90);
  const uint8_t comment[] = {0xFF, 0x64, 0x00, 0x06, 0x00, 0x01, 'a', 'b'};
  stream.insert(stream.begin() + static_cast<ptrdiff_t>(part) + 12, std::begin(comment), std::end(comment));
  for (const uint32_t size : {0u, 1u, 12u, 13u, 14u, 19u, 20u, 21u, 22u, 23u, 0xFFFFFFFFu}) {
    Put(&stream, part + 6, size, 4);
    Bitmap bitmap;
    const int32_t status = Load(stream, &bitmap);
    EXPECT_TRUE(status == SUCCESS || status < 0) << status;
  }
}

// While it lives, the process may take no more than a gigabyte above what it has. AddressSanitizer's own memory allows
// no such limit.
class AddressSpaceLimit {
 public:
  AddressSpaceLimit() {
    getrlimit(RLIMIT_AS, &former_);
#if !defined(__SANITIZE_ADDRESS__)
    std::ifstream statistics("/proc/self/statm");
    rlim_t pages = 0;
    statistics >> pages;
    const rlimit limit{pages * static_cast<rlim_t>(sysconf(_SC_PAGESIZE)) + (rlim_t{1} << 30),
                       former_.rlim_max};
    setrlimit(RLIMIT_AS, &limit);
#endif
  }
  AddressSpaceLimit(const AddressSpaceLimit&) = delete;
  AddressSpaceLimit& operator=(const AddressSpaceLimit&) = delete;
  ~AddressSpaceLimit() {
    setrlimit(RLIMIT_AS, &former_);
  }

 private:
  rlimit former_{};
};

// The decoder asks for as much memory as a tile-part says it has, wherever it finds one.
TEST_F(BombTest, TilePartsOfFourGigabytes) {
  const Stream plain = SmallCodestream();
  const size_t part = FindMarker(plain, 0x90);
  const Stream empty_part = {0xFF, 0x90, 0x00, 0x0A, 0x00, 0x00, 0x00,
                             0x00, 0x00, 0x0E, 0x00, 0x02, 0xFF, 0x93};
  // Behind a marker that is not known, and so has no length: the decoder looks on two bytes further.
  const Stream unknown = {0xFF, 0x31, 0x7F, 0xFF};
  for (const Stream& before : {Stream(), empty_part, unknown}) {
    Stream stream = plain;
    Put(&stream, part + 6, 0xFFFFFFF0, 4);
    Put(&stream, part + 10, before == empty_part ? 0x0102 : 0x0001, 2);
    stream.insert(stream.begin() + static_cast<ptrdiff_t>(part), before.begin(), before.end());
    const AddressSpaceLimit limit;
    Bitmap bitmap;
    EXPECT_EQ(Load(stream, &bitmap), SUCCESS) << before.size();
  }
}

TEST_F(BombTest, FlatPicturesThatCompressWellAreNoBombs) {
  const Pixels flat(3000, 3000, 1);
  const Stream stream = EncodeJpeg2000(flat, {});
  EXPECT_LT(stream.size(), 2000u);
  Bitmap bitmap;
  EXPECT_EQ(Load(stream, &bitmap), SUCCESS);
  EXPECT_EQ(Load(EncodeJpeg(flat, {.color = JpegColor::kGrey, .progressive = true}), &bitmap), SUCCESS);
}

TEST_F(BombTest, FaxOfTenThousandMillionElements) {
  const Stream data = EncodeFax(MakePage(64, 32), {});
  Bitmap bitmap;
  for (const uint32_t format : {66u, 67u, 68u}) {
    for (const auto& [width, height] : {std::pair(100000u, 100000u),
                                        {0x7FFFFFFFu, 1u},
                                        {1u, 0x7FFFFFFFu},
                                        {0xFFFFFFFFu, 0xFFFFFFFFu},
                                        {99999999u, 99999999u}}) {
      FaxDescription description{.format = format, .width = width, .height = height};
      EXPECT_LT(LoadFax(data, &description, &bitmap), 0) << width << "x" << height;
    }
  }
}

TEST_F(BombTest, BoxesThatClaimToBeLonger) {
  Stream stream =
      EncodeJpeg2000(MakeScene(32, 32, 1, 8), {.jp2 = true, .color = J2kColor::kGrey, .levels = 2});
  for (size_t i = 0; i + 8 < stream.size(); ++i) {
    if (std::memcmp(&stream[i], "jp2h", 4) != 0) continue;
    Stream changed = stream;
    Put(&changed, i - 4, 0xFFFFFFFF, 4);
    Bitmap bitmap;
    EXPECT_LT(Load(changed, &bitmap), 0);
    Put(&changed, i - 4, 1, 4);
    EXPECT_LT(Load(changed, &bitmap), 0);
  }
}

}  // namespace
}  // namespace tavi_test

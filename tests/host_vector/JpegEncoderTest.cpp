// Bitmaps as JPEG in memory: the variety that each format code means, every depth, sense and quality.
#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <optional>
#include <set>

#include "VectorTest.h"

namespace tavi::test {
namespace {

constexpr uint32_t kYcc = 10;
constexpr uint32_t kRgb = 182;
constexpr int32_t kBest = 2;
constexpr int32_t kCoarsest = 255;

class JpegEncoder : public HostTest {};

std::vector<uint8_t> Encode(const Bitmap& bitmap, uint32_t format, uint32_t bits, int32_t quality) {
  HostGlobalMemory block = nullptr;
  uint64_t size = 0;
  HostSaveOptionsRecord options;
  HostSaveOptions(&options, sizeof options);
  options.flags1905 = 1;
  EXPECT_EQ(HostSaveMemory(&block, bitmap.get(), format, bits, quality, &size, &options), SUCCESS);
  return TakeBytes(block, size);
}

// What the header of a stream says.
struct Header {
  uint32_t width = 0;
  uint32_t height = 0;
  std::vector<uint8_t> ids;
  std::vector<uint8_t> sampling;
  bool jfif = false;
  std::optional<uint8_t> adobe_transform;
};

Header ReadHeader(const std::vector<uint8_t>& stream) {
  Header header;
  EXPECT_GT(stream.size(), 4u);
  EXPECT_EQ(stream[0], 0xFF);
  EXPECT_EQ(stream[1], 0xD8);
  EXPECT_EQ(stream[stream.size() - 2], 0xFF);
  EXPECT_EQ(stream[stream.size() - 1], 0xD9);
  for (size_t at = 2; at + 4 < stream.size();) {
    const uint8_t marker = stream[at + 1];
    const uint8_t* const data = stream.data() + at + 4;
    if (marker == 0xE0) header.jfif = std::memcmp(data, "JFIF", 5) == 0;
    if (marker == 0xEE && std::memcmp(data, "Adobe", 5) == 0) header.adobe_transform = data[11];
    if (marker == 0xC0) {
      header.height = uint32_t{data[1]} << 8 | data[2];
      header.width = uint32_t{data[3]} << 8 | data[4];
      for (size_t i = 0; i < data[5]; ++i) {
        header.ids.push_back(data[6 + 3 * i]);
        header.sampling.push_back(data[7 + 3 * i]);
      }
    }
    if (marker == 0xDA) break;
    at += 2 + (size_t{stream[at + 2]} << 8 | stream[at + 3]);
  }
  return header;
}

// Of a decoded picture: red, green, blue for each pixel from the top, or one level.
std::vector<uint8_t> Decode(const std::vector<uint8_t>& stream) {
  Bitmap bitmap;
  EXPECT_EQ(
      HostLoadMemory(stream.data(), bitmap.get(), sizeof(HostBitmap), 0, 0, stream.size(), nullptr, nullptr),
      SUCCESS);
  std::vector<uint8_t> samples;
  const size_t used = size_t{bitmap->width} * bitmap->bits / 8;
  for (uint32_t row = 0; row < bitmap->height; ++row) {
    const std::vector<uint8_t> bytes = bitmap.Row(row);
    samples.insert(samples.end(), bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(used));
  }
  return samples;
}

int Distance(const std::vector<uint8_t>& a, const std::vector<uint8_t>& b) {
  if (a.size() != b.size()) return 256;
  int largest = 0;
  for (size_t i = 0; i < a.size(); ++i) largest = std::max(largest, std::abs(int{a[i]} - int{b[i]}));
  return largest;
}

uint8_t Level(uint32_t x, uint32_t y, uint32_t channel) {
  return static_cast<uint8_t>(127.5 +
                              127.5 * std::sin(x * 0.11 + channel * 2.0) * std::cos(y * 0.07 + channel));
}

constexpr uint32_t kWidth = 83;
constexpr uint32_t kHeight = 61;

// A smooth colour picture, and the samples that it has.
struct Scene {
  explicit Scene(uint32_t order = 1, uint32_t perspective = 1)
      : bitmap(kWidth, kHeight, 24, order, perspective) {
    for (uint32_t y = 0; y < kHeight; ++y) {
      std::vector<uint8_t> row(bitmap->bytes_per_line);
      for (uint32_t x = 0; x < kWidth; ++x) {
        for (uint32_t channel = 0; channel < 3; ++channel) {
          const uint8_t level = Level(x, y, channel);
          row[3 * x + (order == 0 ? channel : 2 - channel)] = level;
          samples.push_back(level);
        }
      }
      bitmap.SetRow(perspective == 4 ? kHeight - 1 - y : y, row);
    }
  }
  Bitmap bitmap;
  std::vector<uint8_t> samples;
};

TEST_F(JpegEncoder, Format10IsSubsampledYcbcrWithAJfifMarker) {
  const Scene scene;
  const std::vector<uint8_t> stream = Encode(scene.bitmap, kYcc, 24, kBest);
  const Header header = ReadHeader(stream);
  EXPECT_EQ(header.width, kWidth);
  EXPECT_EQ(header.height, kHeight);
  EXPECT_TRUE(header.jfif);
  EXPECT_FALSE(header.adobe_transform);
  EXPECT_EQ(header.ids, (std::vector<uint8_t>{1, 2, 3}));
  EXPECT_EQ(header.sampling, (std::vector<uint8_t>{0x22, 0x11, 0x11}));
  EXPECT_LT(Distance(Decode(stream), scene.samples), 24) << "chroma has half the resolution";
}

TEST_F(JpegEncoder, Format182IsPlainRgbWithAnAdobeMarker) {
  const Scene scene;
  const std::vector<uint8_t> stream = Encode(scene.bitmap, kRgb, 24, kBest);
  const Header header = ReadHeader(stream);
  EXPECT_FALSE(header.jfif);
  ASSERT_TRUE(header.adobe_transform);
  EXPECT_EQ(*header.adobe_transform, 0);
  EXPECT_EQ(header.sampling, (std::vector<uint8_t>{0x11, 0x11, 0x11}));
  EXPECT_LE(Distance(Decode(stream), scene.samples), 2);
}

// The decoder of the library's own tool agrees about the colours of both.
TEST_F(JpegEncoder, DjpegSeesTheSameColours) {
  if (std::system("command -v djpeg >/dev/null 2>&1") != 0)
    FAIL() << "djpeg is not installed: package libjpeg-turbo-progs";
  const Scene scene;
  const std::filesystem::path folder = std::filesystem::temp_directory_path() /
                                       ("tavi-jpeg-" + std::to_string(reinterpret_cast<uintptr_t>(&scene)));
  std::filesystem::create_directory(folder);
  for (const uint32_t format : {kYcc, kRgb}) {
    const std::vector<uint8_t> stream = Encode(scene.bitmap, format, 24, kBest);
    std::ofstream((folder / "x.jpg"), std::ios::binary)
        .write(reinterpret_cast<const char*>(stream.data()), static_cast<std::streamsize>(stream.size()));
    const std::string command =
        "djpeg -pnm -outfile '" + (folder / "x.ppm").string() + "' '" + (folder / "x.jpg").string() + "'";
    ASSERT_EQ(std::system(command.c_str()), 0);
    std::ifstream file(folder / "x.ppm", std::ios::binary);
    std::vector<uint8_t> bytes((std::istreambuf_iterator<char>(file)), std::istreambuf_iterator<char>());
    ASSERT_GT(bytes.size(), scene.samples.size());
    bytes.erase(bytes.begin(), bytes.end() - static_cast<std::ptrdiff_t>(scene.samples.size()));
    EXPECT_LT(Distance(bytes, scene.samples), format == kRgb ? 3 : 24) << format;
  }
  std::filesystem::remove_all(folder);
}

TEST_F(JpegEncoder, EightBitsAreGrey) {
  const Scene scene;
  std::vector<uint8_t> levels;
  for (size_t i = 0; i < scene.samples.size(); i += 3) {
    levels.push_back(static_cast<uint8_t>(
        std::lround(0.299 * scene.samples[i] + 0.587 * scene.samples[i + 1] + 0.114 * scene.samples[i + 2])));
  }
  for (const uint32_t format : {kYcc, kRgb}) {
    const std::vector<uint8_t> stream = Encode(scene.bitmap, format, 8, kBest);
    EXPECT_EQ(ReadHeader(stream).ids.size(), 1u);
    EXPECT_LE(Distance(Decode(stream), levels), 2);
  }
}

TEST_F(JpegEncoder, TheStreamBeginsWithTheTopRow) {
  for (const uint32_t order : {0u, 1u}) {
    const Scene upright(order, 1);
    const Scene bottom_up(order, 4);
    EXPECT_EQ(Encode(upright.bitmap, kRgb, 24, 10), Encode(bottom_up.bitmap, kRgb, 24, 10));
    EXPECT_EQ(Encode(upright.bitmap, kYcc, 8, 10), Encode(bottom_up.bitmap, kYcc, 8, 10));
  }
}

TEST_F(JpegEncoder, IndexedPicturesGoThroughTheirPalette) {
  Bitmap bitmap(16, 16, 8);
  HostPaletteEntry entries[256] = {};
  entries[0] = {0, 0, 255, 0};  // red
  entries[1] = {255, 0, 0, 0};  // blue
  HostPutBitmapColors(bitmap.get(), 0, 256, entries);
  for (uint32_t row = 8; row < 16; ++row) bitmap.SetRow(row, std::vector<uint8_t>(16, 1));
  const std::vector<uint8_t> grey = Decode(Encode(bitmap, kYcc, 8, kBest));
  ASSERT_EQ(grey.size(), 256u);
  EXPECT_NEAR(grey.front(), 76, 1);
  EXPECT_NEAR(grey.back(), 29, 1);
  const std::vector<uint8_t> colors = Decode(Encode(bitmap, kRgb, 24, kBest));
  ASSERT_EQ(colors.size(), 768u);
  EXPECT_NEAR(colors[0], 255, 1);
  EXPECT_NEAR(colors[2], 0, 1);
  EXPECT_NEAR(colors[767], 255, 1);
}

TEST_F(JpegEncoder, EveryDepthIsEncoded) {
  for (const uint32_t depth : {1u, 2u, 3u, 4u, 5u, 6u, 7u, 8u, 12u, 16u, 24u, 32u, 48u, 64u}) {
    Bitmap bitmap(24, 16, depth);
    ASSERT_EQ(bitmap.status(), SUCCESS);
    HostFillBitmap(bitmap.get(), 0x00FFFFFF);
    EXPECT_EQ(Distance(Decode(Encode(bitmap, kYcc, 8, kBest)), std::vector<uint8_t>(24 * 16, 255)), 0)
        << depth;
    EXPECT_LE(Distance(Decode(Encode(bitmap, kRgb, 24, kBest)), std::vector<uint8_t>(24 * 48, 255)), 0)
        << depth;
    HostClearBitmap(bitmap.get());
    EXPECT_EQ(Distance(Decode(Encode(bitmap, kYcc, 24, kBest)), std::vector<uint8_t>(24 * 48, 0)), 0)
        << depth;
  }
}

TEST_F(JpegEncoder, TwelveBitsKeepTheirScale) {
  Bitmap bitmap(256, 8, 16, 2);
  for (uint32_t row = 0; row < 8; ++row) {
    std::vector<uint8_t> bytes;
    for (uint32_t x = 0; x < 256; ++x) {
      bytes.push_back(static_cast<uint8_t>(x));
      bytes.push_back(static_cast<uint8_t>(x));
    }
    bitmap.SetRow(row, bytes);
  }
  const std::vector<uint8_t> levels = Decode(Encode(bitmap, kYcc, 8, kBest));
  ASSERT_EQ(levels.size(), 2048u);
  for (size_t x = 0; x < 256; ++x) EXPECT_NEAR(levels[x], static_cast<int>(x), 2);
}

TEST_F(JpegEncoder, SizesFallAndErrorsGrowWithTheQualityFactor) {
  Bitmap bitmap(200, 150, 24);
  Noise noise(5);
  for (uint32_t y = 0; y < 150; ++y) {
    std::vector<uint8_t> row(bitmap->bytes_per_line);
    for (uint32_t i = 0; i < 600; ++i) {
      row[i] = static_cast<uint8_t>(Level(i / 3, y, i % 3) * 3 / 4 + noise.Below(64));
    }
    bitmap.SetRow(y, row);
  }
  for (const uint32_t format : {kYcc, kRgb}) {
    std::set<size_t> sizes;
    size_t last = SIZE_MAX;
    for (int32_t factor = kBest; factor <= kCoarsest; ++factor) {
      const size_t size = Encode(bitmap, format, 24, factor).size();
      EXPECT_LE(size, last) << "factor " << factor;
      last = size;
      sizes.insert(size);
    }
    EXPECT_GT(sizes.size(), 100u) << "the factors differ";
    EXPECT_LT(*sizes.begin() * 15, *sizes.rbegin());
  }
}

TEST_F(JpegEncoder, ArgumentsThatMakeNoSense) {
  Bitmap bitmap(8, 8, 24);
  const auto save = [&](const HostBitmap* record, uint32_t format, uint32_t bits, int32_t quality) {
    auto* block = reinterpret_cast<HostGlobalMemory>(&bitmap);
    uint64_t size = 77;
    const int32_t status = HostSaveMemory(&block, record, format, bits, quality, &size, nullptr);
    EXPECT_EQ(block, nullptr);
    EXPECT_EQ(size, 0u);
    return status;
  };
  EXPECT_EQ(save(nullptr, kYcc, 24, 2), ERR_NULL_ARGUMENT);
  for (const uint32_t format : {0u, 11u, 62u, 248u}) {
    EXPECT_EQ(save(bitmap.get(), format, 24, 2), ERR_NOT_SUPPORTED);
  }
  for (const uint32_t bits : {0u, 1u, 12u, 16u, 32u})
    EXPECT_EQ(save(bitmap.get(), kYcc, bits, 2), ERR_INVALID_BPP);
  for (const int32_t quality : {INT32_MIN, -1, 0, 1, 256, INT32_MAX}) {
    EXPECT_EQ(save(bitmap.get(), kRgb, 24, quality), ERR_INVALID_QFACTOR);
  }
  const Bitmap empty;
  EXPECT_EQ(save(empty.get(), kYcc, 24, 2), ERR_NO_BITMAP);
  HostBitmap garbage;
  std::memset(&garbage, 0xA5, sizeof garbage);
  EXPECT_EQ(save(&garbage, kYcc, 24, 2), ERR_NO_BITMAP);
  uint64_t size = 77;
  EXPECT_EQ(HostSaveMemory(nullptr, bitmap.get(), kYcc, 24, 2, &size, nullptr), ERR_NULL_ARGUMENT);
  EXPECT_EQ(size, 0u);
  HostGlobalMemory block = nullptr;
  EXPECT_EQ(HostSaveMemory(&block, bitmap.get(), kYcc, 24, 2, nullptr, nullptr), ERR_NULL_ARGUMENT);
}

TEST_F(JpegEncoder, SidesUpToTheLargestThatAStreamHolds) {
  Bitmap widest(65500, 1, 1);
  EXPECT_EQ(ReadHeader(Encode(widest, kYcc, 8, 50)).width, 65500u);
  Bitmap highest(1, 65500, 8);
  EXPECT_EQ(ReadHeader(Encode(highest, kYcc, 8, 50)).height, 65500u);
  for (const bool wide : {true, false}) {
    Bitmap beyond(wide ? 65501 : 1, wide ? 1 : 65501, 8);
    HostGlobalMemory block = nullptr;
    uint64_t size = 0;
    EXPECT_EQ(HostSaveMemory(&block, beyond.get(), kYcc, 8, 50, &size, nullptr), ERR_NOT_SUPPORTED);
  }
}

TEST_F(JpegEncoder, OptionsAreFilledWithTheirSize) {
  HostSaveOptionsRecord options;
  std::memset(&options, 0xA5, sizeof options);
  HostSaveOptions(&options, sizeof options);
  EXPECT_EQ(options.size, 1909u);
  EXPECT_EQ(options.flags1905, 0);
  HostSaveOptionsRecord untouched;
  std::memset(&untouched, 0xA5, sizeof untouched);
  HostSaveOptions(&untouched, 1908);
  EXPECT_EQ(untouched.flags1905, 0xA5);
  HostSaveOptions(nullptr, 1909);
}

}  // namespace
}  // namespace tavi::test

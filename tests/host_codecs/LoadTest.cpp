// HostLoadMemory itself: its options, its statuses, the record before and after.
#include <cstring>
#include <thread>

#include "DeepJpegEncoder.h"
#include "Jpeg2000Encoder.h"
#include "JpegEncoder.h"

namespace tavi_test {
namespace {

class LoadTest : public CodecTest {};

Stream GreyJpeg() {
  return EncodeJpeg(MakeScene(33, 22, 1, 8), {.color = JpegColor::kGrey});
}

TEST_F(LoadTest, DefaultsOfTheOptions) {
  HostLoadFlagsRecord record;
  std::memset(&record, 0xA5, sizeof record);
  HostLoadOptions(&record, sizeof record);
  uint32_t places[12];
  std::memcpy(places, &record, sizeof places);
  for (int i = 0; i < 12; ++i) EXPECT_EQ(places[i], i == 10 ? 1u : i == 11 ? 2u : 0u) << i;
  HostLoadOptions(nullptr, sizeof record);
  record.flags = 7;
  HostLoadOptions(&record, 47);
  EXPECT_EQ(record.flags, 7u);
}

TEST_F(LoadTest, NoOptionsAreTheDefaults) {
  const Stream stream = EncodeJpeg(MakeScene(33, 22, 3, 8), {});
  Bitmap bitmap;
  ASSERT_EQ(
      HostLoadMemory(stream.data(), bitmap.get(), sizeof(HostBitmap), 0, 4, stream.size(), nullptr, nullptr),
      SUCCESS);
  EXPECT_EQ(MaxDifference(bitmap.Read(), DecodeJpeg(stream)), 0);
}

TEST_F(LoadTest, InformationComesWithThePicture) {
  const Stream stream = GreyJpeg();
  HostFileInfo information;
  std::memset(&information, 0xA5, sizeof information);
  Bitmap bitmap;
  ASSERT_EQ(HostLoadMemory(stream.data(), bitmap.get(), sizeof(HostBitmap), 0, 4, stream.size(), nullptr,
                           &information),
            SUCCESS);
  EXPECT_EQ(information.format, 10u);
  EXPECT_EQ(information.width, 33u);
}

TEST_F(LoadTest, ArgumentsThatAreWrong) {
  const Stream stream = GreyJpeg();
  Bitmap bitmap;
  const auto load = [&](const void* buffer, HostBitmap* record, uint64_t record_size, uint32_t bits,
                        uint32_t order) {
    return HostLoadMemory(buffer, record, record_size, bits, order, stream.size(), nullptr, nullptr);
  };
  EXPECT_EQ(load(nullptr, bitmap.get(), 212, 0, 4), ERR_NULL_ARGUMENT);
  EXPECT_EQ(load(stream.data(), nullptr, 212, 0, 4), ERR_NULL_ARGUMENT);
  EXPECT_EQ(load(stream.data(), bitmap.get(), 211, 0, 4), ERR_INVALID_PARAMETER);
  EXPECT_EQ(load(stream.data(), bitmap.get(), 212, 0, 3), ERR_INVALID_PARAMETER);
  EXPECT_EQ(load(stream.data(), bitmap.get(), 212, 0, 5), ERR_INVALID_PARAMETER);
  EXPECT_EQ(load(stream.data(), bitmap.get(), 212, 9, 4), ERR_INVALID_BPP);
}

TEST_F(LoadTest, PixelsOfTheRecordAreFreedFirst) {
  Bitmap bitmap;
  for (int i = 0; i < 3; ++i) ASSERT_EQ(Load(GreyJpeg(), &bitmap), SUCCESS);
  EXPECT_EQ(Load({1, 2, 3}, &bitmap), ERR_NOT_SUPPORTED);
  EXPECT_EQ(bitmap->flags & 1, 0);
  EXPECT_EQ(bitmap->width, 0u);
}

TEST_F(LoadTest, AZeroedRecordWillDo) {
  HostBitmap record;
  std::memset(&record, 0, sizeof record);
  const Stream stream = GreyJpeg();
  ASSERT_EQ(HostLoadMemory(stream.data(), &record, sizeof record, 0, 4, stream.size(), nullptr, nullptr),
            SUCCESS);
  HostFreeBitmap(&record);
}

TEST_F(LoadTest, AnotherDepthIsConvertedTo) {
  const Stream grey = GreyJpeg();
  const Pixels expected = DecodeJpeg(grey);
  const Pixels wide = LoadPixels(grey, {.bits = 24, .order = 1});
  ASSERT_EQ(wide.channels, 3u);
  for (uint32_t c = 0; c < 3; ++c) EXPECT_EQ(ChannelOf(wide, c).samples, expected.samples);
  EXPECT_EQ(LoadPixels(grey, {.bits = 8}).samples, expected.samples);
  const Stream color = EncodeJpeg(MakeScene(33, 22, 3, 8), {});
  Bitmap narrow;
  ASSERT_EQ(Load(color, &narrow, {.bits = 8}), SUCCESS);
  EXPECT_EQ(narrow->bits, 8u);
}

TEST_F(LoadTest, DepthsAboveTheLimitAreRefused) {
  const Stream stream = EncodeJpeg(MakeScene(330, 220, 3, 8), {});
  const Stream codestream = EncodeJpeg2000(MakeScene(330, 220, 3, 8), {});
  const uint64_t before = HostGetBitmapLimit();
  HostSetBitmapLimit(200000);
  Bitmap bitmap;
  EXPECT_EQ(Load(stream, &bitmap), ERR_NO_MEMORY);
  EXPECT_EQ(Load(codestream, &bitmap), ERR_NO_MEMORY);
  HostSetBitmapLimit(before);
  EXPECT_EQ(Load(stream, &bitmap), SUCCESS);
}

TEST_F(LoadTest, ThreadsLoadAtTheSameTime) {
  const std::vector<Stream> streams = {
      GreyJpeg(), EncodeJpeg(MakeScene(200, 100, 3, 8), {.progressive = true}),
      EncodeLossless(MakeNoise(200, 100, 1, 12), {.bits = 12}),
      EncodeJpeg12(MakeScene(200, 100, 3, 12), DeepProcess::kSequential),
      EncodeJpeg2000(MakeScene(200, 100, 3, 8), {.jp2 = true, .color = J2kColor::kRgb})};
  std::vector<Pixels> expected;
  for (const Stream& stream : streams) expected.push_back(LoadPixels(stream));
  std::vector<std::thread> threads;
  for (int t = 0; t < 4; ++t) {
    threads.emplace_back([&] {
      for (int round = 0; round < 10; ++round) {
        for (size_t i = 0; i < streams.size(); ++i) {
          EXPECT_EQ(LoadPixels(streams[i]).samples, expected[i].samples);
        }
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
}

TEST_F(LoadTest, VersionsOfTheCodecs) {
  std::vector<std::string> versions;
  for (uint32_t i = 0; HostCodecVersion(i) != nullptr; ++i) versions.emplace_back(HostCodecVersion(i));
  ASSERT_EQ(versions.size(), 4u);
  const char* const names[] = {"libjpeg-turbo ", "DCMTK ", "OpenJPEG ", "libtiff "};
  for (size_t i = 0; i < versions.size(); ++i) {
    ASSERT_EQ(versions[i].rfind(names[i], 0), 0u) << versions[i];
    const std::string number = versions[i].substr(std::strlen(names[i]));
    EXPECT_GE(number.size(), 3u);
    EXPECT_EQ(number.find_first_not_of("0123456789."), std::string::npos) << number;
  }
  EXPECT_EQ(HostCodecVersion(0xFFFFFFFF), nullptr);
}

}  // namespace
}  // namespace tavi_test

// Streams that were cut or changed: a status or a picture of the size that the header says, never a crash, a
// leak, or a message.
#include <random>

#include "DeepJpegEncoder.h"
#include "FaxEncoder.h"
#include "Jpeg2000Encoder.h"
#include "JpegEncoder.h"

namespace tavi_test {
namespace {

class DamageTest : public CodecTest {
 protected:
  void SetUp() override {
    CodecTest::SetUp();
    ::testing::internal::CaptureStderr();
    ::testing::internal::CaptureStdout();
  }
  void TearDown() override {
    // Nobody prints.
    EXPECT_EQ(::testing::internal::GetCapturedStdout(), "");
    EXPECT_EQ(::testing::internal::GetCapturedStderr(), "");
    CodecTest::TearDown();
  }
};

std::vector<Stream> EveryKind(uint32_t width, uint32_t height) {
  const Pixels grey = MakeNoise(width, height, 1, 8);
  const Pixels color = MakeScene(width, height, 3, 8);
  return {
      EncodeJpeg(grey, {.color = JpegColor::kGrey, .restart_rows = 1}),
      EncodeJpeg(color, {.across = 2, .down = 2}),
      EncodeJpeg(color, {.progressive = true}),
      EncodeJpeg(color, {.arithmetic = true}),
      EncodeJpeg12(MakeScene(width, height, 1, 12), DeepProcess::kSequential),
      EncodeJpeg12(MakeScene(width, height, 3, 12), DeepProcess::kProgressive),
      EncodeLossless(MakeNoise(width, height, 1, 12), {.bits = 12, .predictor = 7}),
      EncodeLossless(color, {.bits = 8}),
      EncodeJpeg2000(grey, {.levels = 3}),
      EncodeJpeg2000(
          color, {.jp2 = true, .color = J2kColor::kRgb, .mix = true, .ratio = 8, .tile = 64, .layers = 2}),
      EncodeJpeg2000(color, {.jp2 = true, .color = J2kColor::kYcc, .step = 2, .levels = 3})};
}

// A picture that loads has the shape that the whole one has.
void ExpectStatusOrPicture(const Stream& stream, uint32_t width, uint32_t height) {
  for (const uint32_t flags : {0u, kAsBands}) {
    Bitmap bitmap;
    const int32_t status = Load(stream, &bitmap, {.flags = flags, .red = 2});
    if (status == SUCCESS) {
      EXPECT_EQ(bitmap->width, width);
      EXPECT_EQ(bitmap->height, height);
    } else {
      EXPECT_LT(status, 0);
      EXPECT_EQ(bitmap->flags & 1, 0);
    }
  }
}

TEST_F(DamageTest, CutAtEveryKilobyte) {
  for (const Stream& stream : EveryKind(200, 150)) {
    for (size_t size = 0; size < stream.size(); size += 1024) {
      ExpectStatusOrPicture(Stream(stream.begin(), stream.begin() + static_cast<ptrdiff_t>(size)), 200, 150);
    }
  }
}

TEST_F(DamageTest, CutAtEveryByteOfTheHeaders) {
  for (const Stream& stream : EveryKind(40, 30)) {
    for (size_t size = 0; size < std::min<size_t>(stream.size(), 700); ++size) {
      ExpectStatusOrPicture(Stream(stream.begin(), stream.begin() + static_cast<ptrdiff_t>(size)), 40, 30);
    }
  }
}

// The upper part of a cut picture is there, where its decoder only warns.
TEST_F(DamageTest, WhatThereIsOfACutPictureIsShown) {
  const Pixels scene = MakeScene(200, 150, 1, 8);
  const Stream jpeg = EncodeJpeg(scene, {.color = JpegColor::kGrey});
  const Pixels whole = LoadPixels(jpeg);
  const Pixels cut = LoadPixels(Stream(jpeg.begin(), jpeg.end() - static_cast<ptrdiff_t>(jpeg.size() / 3)));
  ASSERT_EQ(cut.samples.size(), whole.samples.size());
  for (uint32_t i = 0; i < 200 * 40; ++i) ASSERT_EQ(cut.samples[i], whole.samples[i]);
  const Stream codestream = EncodeJpeg2000(scene, {.tile = 50});
  const Pixels cut2000 = LoadPixels(
      Stream(codestream.begin(), codestream.end() - static_cast<ptrdiff_t>(codestream.size() / 3)));
  ASSERT_EQ(cut2000.samples.size(), scene.samples.size());
  for (uint32_t i = 0; i < 200 * 40; ++i) ASSERT_EQ(cut2000.samples[i], scene.samples[i]);
}

TEST_F(DamageTest, CutLosslessStreamsAreRefused) {
  const Stream stream = EncodeLossless(MakeNoise(200, 150, 1, 12), {.bits = 12});
  Bitmap bitmap;
  EXPECT_EQ(Load(Stream(stream.begin(), stream.begin() + 20000), &bitmap), ERR_FILE_READ);
}

TEST_F(DamageTest, ChangedBytes) {
  std::mt19937 random(7);
  for (const Stream& stream : EveryKind(60, 50)) {
    for (int round = 0; round < 150; ++round) {
      Stream changed = stream;
      const int changes = 1 + static_cast<int>(random() % 8);
      // Half of the changes go to the headers.
      for (int i = 0; i < changes; ++i) {
        const size_t span = i % 2 == 0 ? std::min<size_t>(changed.size(), 250) : changed.size();
        changed[random() % span] = static_cast<uint8_t>(random());
      }
      Bitmap bitmap;
      const int32_t status = Load(changed, &bitmap, {.flags = round % 3 == 0 ? kAsBands : 0});
      EXPECT_TRUE(status == SUCCESS || status < 0) << status;
      EXPECT_EQ(bitmap->flags & 1, status == SUCCESS ? 1 : 0);
    }
  }
}

TEST_F(DamageTest, MissingTablesAreNoCrash) {
  for (Stream stream : EveryKind(40, 30)) {
    if (stream[1] != 0xD8) continue;
    for (size_t i = 0; i + 1 < std::min<size_t>(stream.size(), 700); ++i) {
      // Tables become comments.
      if (stream[i] == 0xFF && (stream[i + 1] == 0xC4 || stream[i + 1] == 0xDB)) stream[i + 1] = 0xFE;
    }
    ExpectStatusOrPicture(stream, 40, 30);
  }
}

TEST_F(DamageTest, FaxCutAtEveryKilobyteAndChanged) {
  std::mt19937 random(11);
  for (const FaxKind kind : {FaxKind::kG3OneD, FaxKind::kG3OneDNoLineEnds, FaxKind::kG3TwoD, FaxKind::kG4}) {
    const Stream data = EncodeFax(MakePage(1000, 400), {kind});
    const uint32_t format = kind == FaxKind::kG4 ? 68 : kind == FaxKind::kG3TwoD ? 67 : 66;
    for (size_t size = 0; size < data.size(); size += 1024) {
      FaxDescription description{.format = format, .width = 1000, .height = 400};
      Bitmap bitmap;
      const int32_t status =
          LoadFax(Stream(data.begin(), data.begin() + static_cast<ptrdiff_t>(size)), &description, &bitmap);
      EXPECT_EQ(status, size == 0 ? ERR_FILE_READ : SUCCESS) << static_cast<int>(kind) << " " << size;
    }
    for (int round = 0; round < 30; ++round) {
      Stream changed = data;
      for (int i = 0; i < 5; ++i) changed[random() % changed.size()] = static_cast<uint8_t>(random());
      FaxDescription description{.format = format, .width = 1000, .height = 400};
      Bitmap bitmap;
      const int32_t status = LoadFax(changed, &description, &bitmap);
      EXPECT_TRUE(status == SUCCESS || status == ERR_FILE_FORMAT) << status;
    }
  }
}

}  // namespace
}  // namespace tavi_test

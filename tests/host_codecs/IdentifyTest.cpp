// HostFileInfoMemory: which kind a stream is, and what it is like.
#include <cstring>

#include "DeepJpegEncoder.h"
#include "Jpeg2000Encoder.h"
#include "JpegEncoder.h"

namespace tavi_test {
namespace {

class IdentifyTest : public CodecTest {};

int32_t Inform(const Stream& stream, HostFileInfo* information) {
  std::memset(information, 0xA5, sizeof *information);
  return HostFileInfoMemory(BytesOf(stream), information, sizeof *information, stream.size(), 0, 0);
}

void ExpectKind(const Stream& stream, uint32_t format, uint32_t width, uint32_t height, uint32_t bits) {
  HostFileInfo information;
  ASSERT_EQ(Inform(stream, &information), SUCCESS);
  EXPECT_EQ(information.format, format);
  EXPECT_EQ(information.width, width);
  EXPECT_EQ(information.height, height);
  EXPECT_EQ(information.bits, bits);
  uint64_t memory = 0;
  std::memcpy(&memory, reinterpret_cast<const char*>(&information) + 1052, sizeof memory);
  EXPECT_EQ(memory, (uint64_t{bits} * width + 31) / 32 * 4 * height);
  EXPECT_EQ(information.host1100, 1u);
  EXPECT_EQ(information.host1108[0], 0);
}

TEST_F(IdentifyTest, EveryKind) {
  ExpectKind(EncodeJpeg(MakeScene(33, 22, 1, 8), {.color = JpegColor::kGrey}), 10, 33, 22, 8);
  ExpectKind(EncodeJpeg(MakeScene(33, 22, 3, 8), {.progressive = true}), 10, 33, 22, 24);
  ExpectKind(EncodeJpeg(MakeScene(33, 22, 3, 8), {.tables = false}), 10, 33, 22, 24);
  ExpectKind(EncodeJpeg(MakeScene(33, 22, 4, 8), {.color = JpegColor::kCmyk}), 10, 33, 22, 24);
  ExpectKind(WithNitfHeader(EncodeJpeg(MakeScene(33, 22, 3, 8), {})), 10, 33, 22, 24);
  ExpectKind(EncodeJpeg12(MakeScene(33, 22, 1, 12), DeepProcess::kSequential), 26, 33, 22, 16);
  ExpectKind(EncodeJpeg12(MakeScene(33, 22, 3, 12), DeepProcess::kProgressive), 26, 33, 22, 48);
  ExpectKind(EncodeLossless(MakeScene(33, 22, 1, 8), {.bits = 8}), 11, 33, 22, 8);
  ExpectKind(EncodeLossless(MakeScene(33, 22, 1, 12), {.bits = 12}), 11, 33, 22, 16);
  ExpectKind(EncodeJpeg2000(MakeScene(33, 22, 1, 8), {.levels = 2}), 5, 33, 22, 8);
  ExpectKind(EncodeJpeg2000(MakeScene(33, 22, 3, 11), {.bits = 11, .jp2 = true, .levels = 2}), 5, 33, 22, 48);
}

TEST_F(IdentifyTest, MetafilesHaveNoPixels) {
  // BEGIN METAFILE with a name of three letters, METAFILE VERSION 1.
  const Stream metafile = {0x00, 0x24, 0x03, 'a', 'b', 'c', 0x10, 0x22, 0x00, 0x01};
  ExpectKind(metafile, 62, 0, 0, 0);
  // A name in the long form.
  Stream longer = {0x00, 0x3F, 0x00, 0x29, 0x28};
  longer.insert(longer.end(), 40, 'n');
  longer.insert(longer.end(), {0x00, 0x10, 0x22, 0x00, 0x01});
  ExpectKind(longer, 62, 0, 0, 0);
  Bitmap bitmap;
  EXPECT_EQ(Load(metafile, &bitmap), ERR_NOT_SUPPORTED);
}

TEST_F(IdentifyTest, UnknownStreams) {
  HostFileInfo information;
  EXPECT_EQ(Inform({}, &information), ERR_NOT_SUPPORTED);
  EXPECT_EQ(Inform({0xFF}, &information), ERR_NOT_SUPPORTED);
  EXPECT_EQ(Inform({'N', 'I', 'T', 'F', '0', '2', '.', '1', '0'}, &information), ERR_NOT_SUPPORTED);
  EXPECT_EQ(Inform(Stream(1000, 0), &information), ERR_NOT_SUPPORTED);
  EXPECT_EQ(Inform({0x00, 0x24, 0x03, 'a', 'b', 'c', 0x30, 0x22}, &information), ERR_NOT_SUPPORTED);
}

TEST_F(IdentifyTest, HeadersThatAreCutShort) {
  HostFileInfo information;
  const Stream jpeg = EncodeJpeg(MakeScene(33, 22, 1, 8), {.color = JpegColor::kGrey});
  EXPECT_EQ(Inform(Stream(jpeg.begin(), jpeg.begin() + 30), &information), ERR_FILE_READ);
  const Stream codestream = EncodeJpeg2000(MakeScene(33, 22, 1, 8), {.levels = 2});
  EXPECT_EQ(Inform(Stream(codestream.begin(), codestream.begin() + 20), &information), ERR_FILE_READ);
}

TEST_F(IdentifyTest, HeadersThatMakeNoSense) {
  HostFileInfo information;
  Stream jpeg = EncodeJpeg(MakeScene(33, 22, 1, 8), {.color = JpegColor::kGrey});
  for (size_t i = 0; i + 8 < jpeg.size(); ++i) {
    if (jpeg[i] == 0xFF && jpeg[i + 1] == 0xC0) jpeg[i + 5] = jpeg[i + 6] = 0;  // the height
  }
  EXPECT_EQ(Inform(jpeg, &information), ERR_FILE_FORMAT);
  Stream codestream = EncodeJpeg2000(MakeScene(33, 22, 1, 8), {.levels = 2});
  codestream[11] = codestream[10] = codestream[9] = codestream[8] = 0;  // the width
  EXPECT_EQ(Inform(codestream, &information), ERR_FILE_FORMAT);
}

TEST_F(IdentifyTest, ArgumentsThatAreWrong) {
  HostFileInfo information;
  const Stream stream = EncodeJpeg(MakeScene(33, 22, 1, 8), {.color = JpegColor::kGrey});
  EXPECT_EQ(HostFileInfoMemory(nullptr, &information, sizeof information, 5, 0, 0), ERR_NULL_ARGUMENT);
  EXPECT_EQ(HostFileInfoMemory(stream.data(), nullptr, sizeof information, stream.size(), 0, 0),
            ERR_NULL_ARGUMENT);
  EXPECT_EQ(HostFileInfoMemory(stream.data(), &information, 2183, stream.size(), 0, 0),
            ERR_INVALID_PARAMETER);
}

}  // namespace
}  // namespace tavi_test

// Damaged, cut and boastful streams: a status in bounded time and memory.
#include "../host_codecs/DeepJpegEncoder.h"
#include "../host_codecs/FaxEncoder.h"
#include "../host_codecs/Jpeg2000Encoder.h"
#include "../host_codecs/JpegEncoder.h"
#include "CodedTest.h"
#include "ProcessorTime.h"
#include "Random.h"
#include "Streams.h"

namespace tavi_test {
namespace {

struct Kind {
  std::string name;
  std::string ic;
  Bytes stream;
  uint32_t bits = 8;
};

// A noisy picture, so that the streams are of several kilobytes.
std::vector<Kind> Kinds() {
  const Pixels noise = MakeNoise(96, 96, 1, 8);
  const Pixels deep = MakeNoise(96, 96, 1, 12);
  return {{"baseline", "C3", EncodeJpeg(noise, {.color = JpegColor::kGrey})},
          {"progressive", "C3", EncodeJpeg(noise, {.color = JpegColor::kGrey, .progressive = true})},
          {"12 bits", "C3", EncodeJpeg12(deep, DeepProcess::kSequential), 12},
          {"lossless", "C5", EncodeLossless(deep, {.bits = 12}), 12},
          {"JPEG 2000", "C8", EncodeJpeg2000(noise, {})},
          {"JP2", "C8", EncodeJpeg2000(noise, {.jp2 = true})},
          {"fax", "C1", EncodeFax(MakeNoise(96, 96, 1, 1), {}), 1}};
}

class CodedBadInput : public CodedTest {
 protected:
  static ImageSpec Image(const Kind& kind) {
    ImageSpec image = CodedImage(kind.ic, "MONO", 1, 1, 1, 96, 96);
    image.nbpp = image.abpp = kind.bits;
    if (kind.bits == 1) {
      image.pvtype = "B";
      image.comrat = "1D";
    }
    image.pixels = kind.stream;
    return image;
  }
};

// The segment ends early, and so does its length.
TEST_F(CodedBadInput, StreamsCutAtEveryKilobyte) {
  for (const Kind& kind : Kinds()) {
    for (size_t keep = 0; keep < kind.stream.size(); keep += 1024) {
      ImageSpec image = Image(kind);
      image.pixels.resize(keep);
      const LoadedPicture picture = Decode(image);
      EXPECT_TRUE(picture.status == SUCCESS || picture.status < 0) << kind.name << " " << keep;
      if (kind.bits != 1 && keep == 0) {
        EXPECT_LT(picture.status, 0) << kind.name;
      }
    }
  }
}

// The file ends early, and the segment's length does not know.
TEST_F(CodedBadInput, FilesCutAtEveryKilobyteAreShortReads) {
  for (const Kind& kind : Kinds()) {
    const BuiltFile whole = NtfBuilder{Image(kind)}.Build();
    const size_t begin = whole.At("image[0].pixels").offset;
    for (size_t end = begin; end < whole.bytes.size(); end += 1024) {
      BuiltFile cut = whole;
      cut.bytes.resize(end);
      EXPECT_EQ(Decode(cut).status, ERR_FILE_READ) << kind.name << " " << end - begin;
    }
  }
}

TEST_F(CodedBadInput, DamagedStreamsEndInAStatus) {
  Random random(17);
  for (const Kind& kind : Kinds()) {
    for (int round = 0; round < 40; ++round) {
      ImageSpec image = Image(kind);
      const uint32_t changes = 1 + random.Below(6);
      for (uint32_t i = 0; i < changes; ++i) {
        const auto size = static_cast<uint32_t>(image.pixels.size());
        image.pixels[random.Below(random.Below(2) == 0 ? size : std::min(size, 200U))] = random.Byte();
      }
      const LoadedPicture picture = Decode(image);
      EXPECT_TRUE(picture.status == SUCCESS || picture.status < 0) << kind.name << " " << round;
    }
  }
}

// What the stream says and what the subheader says need not agree.
TEST_F(CodedBadInput, AStreamOfAnotherSizeIsShownAtTheHeadersSize) {
  for (const Kind& kind : Kinds()) {
    if (kind.bits == 1) continue;  // fax data say nothing of a size
    for (const uint32_t side : {1U, 40U, 95U, 97U, 300U}) {
      ImageSpec image = Image(kind).Blocks(1, 1, side, side);
      const LoadedPicture picture = Decode(image);
      EXPECT_EQ(picture.status, SUCCESS) << kind.name << " " << side;
      EXPECT_EQ(picture.width, side);
      EXPECT_EQ(picture.height, side);
    }
  }
}

TEST_F(CodedBadInput, TilesOfAnotherSizeStayInsideThePicture) {
  for (const uint32_t side : {1U, 7U, 9U, 64U}) {
    const Bytes stream = EncodeJpeg(MakeScene(side, side, 1, 8), {.color = JpegColor::kGrey});
    ImageSpec image = CodedImage("C3", "MONO", 1, 2, 2, 8, 8);
    for (int i = 0; i < 4; ++i) {
      Bytes tile = stream;
      tile.resize(std::max<size_t>(tile.size(), 700) + (i == 3 ? 0 : 40));
      image.pixels.insert(image.pixels.end(), tile.begin(), tile.end());
    }
    const LoadedPicture picture = Decode(image);
    EXPECT_TRUE(picture.status == SUCCESS || picture.status == ERR_FILE_READ)
        << side << ": " << picture.status;
  }
}

// 100,000 x 100,000 pixels claimed by a few hundred bytes.
TEST_F(CodedBadInput, BoastfulStreamsAreRefusedAtOnce) {
  const auto at = [](const Bytes& stream, uint8_t marker) {
    for (size_t i = 0; i + 1 < stream.size(); ++i)
      if (stream[i] == 0xFF && stream[i + 1] == marker) return i;
    ADD_FAILURE() << "no marker " << int{marker};
    return size_t{0};
  };
  Bytes jpeg = EncodeJpeg(MakeScene(8, 8, 1, 8), {.color = JpegColor::kGrey});
  const size_t frame = at(jpeg, 0xC0);
  jpeg[frame + 5] = jpeg[frame + 6] = jpeg[frame + 7] = jpeg[frame + 8] = 0xFF;  // 65,535 x 65,535
  Bytes j2k = EncodeJpeg2000(MakeScene(8, 8, 1, 8), {.levels = 1});
  const size_t size = at(j2k, 0x51);
  for (const size_t field : {size_t{6}, size_t{10}, size_t{22}, size_t{26}}) {  // picture and tile
    const Bytes value = {0x00, 0x01, 0x86, 0xA0};
    std::copy(value.begin(), value.end(), j2k.begin() + static_cast<std::ptrdiff_t>(size + field));
  }
  for (const auto& [ic, stream] : {std::pair{"C3", jpeg}, {"C8", j2k}}) {
    for (const uint32_t across : {1U, 2U}) {
      ImageSpec image = CodedImage(ic, "MONO", 1, across, 1, 8, 8);
      image.pixels = Concatenate({stream, Bytes(500, 0), across == 2 ? stream : Bytes{}, Bytes(600, 0)});
      const ProcessorTime time;
      const LoadedPicture picture = Decode(image);
      EXPECT_LT(picture.status, 0) << ic;
      EXPECT_LT(time.Seconds(), 5) << ic;
    }
  }
}

TEST_F(CodedBadInput, MaskEntriesOfAnyValueEndInAStatus) {
  Random random(23);
  const std::vector<Bytes> streams = {TinyJpeg(1, 900), TinyJpeg(2, 900), TinyJpeg(3, 900), TinyJpeg(4, 900)};
  for (int round = 0; round < 200; ++round) {
    ImageSpec image = CodedImage(random.Below(2) == 0 ? "M3" : "M5", "RGB", 3, 2, 2, 8, 8);
    image.Mode(random.Below(2) == 0 ? 'S' : 'B');
    image.pixels = Concatenate(streams);
    std::vector<uint32_t> entries;
    for (int i = 0; i < 4; ++i) {
      const uint32_t kind = random.Below(5);
      entries.push_back(kind == 0   ? kAbsentBlock
                        : kind == 1 ? random.Below(0xFFFFFFFE)
                        : kind == 2 ? random.Below(4000)
                                    : 900 * static_cast<uint32_t>(i));
    }
    image.mask.block_offsets = entries;
    if (random.Below(4) == 0) image.mask.imdatoff = random.Below(random.Below(2) == 0 ? 5000 : 0xFFFFFFFF);
    const LoadedPicture picture = Decode(image);
    EXPECT_TRUE(picture.status == SUCCESS || picture.status < 0) << round;
  }
}

// 99 x 99 blocks and three streams, by scan and in bands: no search begins anew for each block.
TEST_F(CodedBadInput, ManyBlocksWithFewStreamsEndQuickly) {
  const Bytes streams =
      Concatenate({TinyJpeg(1, 4000), TinyJpeg(2, 4000), Bytes(2000000, 0), TinyJpeg(3, 1500)});
  for (const char mode : {'B', 'S'}) {
    ImageSpec image = CodedImage("C3", "RGB", 3, 99, 99, 8, 8).Mode(mode);
    image.pixels = streams;
    const ProcessorTime time;
    const LoadedPicture picture = Decode(image);
    EXPECT_TRUE(picture.status == SUCCESS || picture.status < 0) << mode;
    EXPECT_LT(time.Seconds(), 30) << mode;
  }
}

// Markers only: each of a million blocks would be a stream of three bytes.
TEST_F(CodedBadInput, NothingButMarkersEndsQuickly) {
  Bytes markers;
  for (int i = 0; i < 500000; ++i) markers.insert(markers.end(), {0xFF, 0xD8, 0xFF});
  for (const char mode : {'B', 'S'}) {
    ImageSpec image = CodedImage("C3", "RGB", 3, 500, 500, 1, 1).Mode(mode);
    image.pixels = markers;
    const ProcessorTime time;
    EXPECT_EQ(Decode(image).status, ERR_UNSUPPORTED_COMPRESSION) << mode;
    EXPECT_LT(time.Seconds(), 30) << mode;
  }
}

}  // namespace
}  // namespace tavi_test

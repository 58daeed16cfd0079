// Band-sequential streams: one for each band of each block.
#include "Random.h"

#include "ProcessorTime.h"
#include "Streams.h"

namespace tavi_test {
namespace {

constexpr uint32_t kSide = 8;

class BandStreams : public CodedTest {
 protected:
  static ImageSpec Sequential(uint32_t bands, uint32_t across, uint32_t down,
                              const std::vector<Bytes>& streams, const std::string& ic = "C3") {
    ImageSpec image = CodedImage(ic, "RGB", bands, across, down, kSide, kSide).Mode('S');
    image.pixels = Concatenate(streams);
    return image;
  }
  // The loads' streams, a run of equal ones as one.
  static std::vector<Bytes> Distinct(const RecordingHost& host) {
    std::vector<Bytes> streams;
    for (const RecordedLoad& load : host.loads) {
      if (streams.empty() || streams.back() != load.bytes) streams.push_back(load.bytes);
    }
    return streams;
  }
  // `count` streams of different sizes.
  static std::vector<Bytes> Streams(size_t count) {
    std::vector<Bytes> streams;
    for (size_t i = 0; i < count; ++i) streams.push_back(TinyJpeg(static_cast<uint32_t>(i), 1100 + 100 * i));
    return streams;
  }
  static void ExpectStreams(const RecordingHost& host, const std::vector<Bytes>& streams) {
    ASSERT_EQ(host.loads.size(), streams.size());
    for (size_t i = 0; i < streams.size(); ++i) EXPECT_EQ(host.loads[i].bytes, streams[i]) << i;
  }
};

// After each load as many streams are passed over as there are bands: with 3 bands band 1 takes the fourth
// stream behind that of band 0. The next block begins with the stream behind this block's first.
TEST_F(BandStreams, TheNextBandIsAsManyStreamsFurtherOnAsThereAreBands) {
  const std::vector<Bytes> s = Streams(12);
  RecordingHost host;
  host.bits = 8;
  const LoadedPicture picture = Load(Sequential(3, 2, 2, s), host);
  ASSERT_EQ(picture.status, SUCCESS);
  ExpectStreams(host, {s[0], s[4], s[8], s[1], s[5], s[9], s[2], s[6], s[10], s[3], s[7], s[11]});
  for (const RecordedLoad& load : host.loads) {
    EXPECT_EQ(load.options.flags, kComponentsAreRgb);
    EXPECT_EQ(load.bits, 0U);
    EXPECT_EQ(load.order, 4U);
    EXPECT_FALSE(load.given_pixels);
  }
  // Band 0 is red: the array that is merged is filled from its end, and its first is blue.
  for (uint32_t block = 0; block < 4; ++block) {
    const Rgb expected = {RecordingHost::LevelOf(3 * block), RecordingHost::LevelOf(3 * block + 1),
                          RecordingHost::LevelOf(3 * block + 2)};
    EXPECT_EQ(picture.At(block % 2 * kSide + 1, block / 2 * kSide + 1), expected) << block;
  }
}

TEST_F(BandStreams, OptionsByRepresentation) {
  for (const auto& [irep, flags] : std::vector<std::pair<std::string, uint32_t>>{
           {"RGB", kComponentsAreRgb}, {"MULTI", kComponentsAreRgb}, {"MONO", 0}, {"YCbCr601", 0}}) {
    ImageSpec image = Sequential(3, 2, 2, Streams(12));
    image.irep = irep;
    image.Roles({"B ", "G ", "R "});  // no choice of bands here
    RecordingHost host;
    host.bits = 8;
    ASSERT_EQ(Load(image, host).status, SUCCESS) << irep;
    ASSERT_EQ(host.loads.size(), 12U);
    for (const RecordedLoad& load : host.loads) {
      EXPECT_EQ(load.options.flags, flags) << irep;
      EXPECT_EQ(load.options.red_band, 0U);
      EXPECT_EQ(load.options.blue_band, 2U);
    }
  }
}

// Of more than three bands the last three are merged: the last one becomes blue.
TEST_F(BandStreams, OfFiveBandsTheLastThreeShow) {
  const std::vector<Bytes> s = Streams(30);
  RecordingHost host;
  host.bits = 8;
  const LoadedPicture picture = Load(Sequential(5, 2, 3, s), host);
  ASSERT_EQ(picture.status, SUCCESS);
  ASSERT_EQ(host.loads.size(), 30U);
  EXPECT_EQ(host.loads[0].bytes, s[0]);
  EXPECT_EQ(host.loads[4].bytes, s[24]);
  EXPECT_EQ(picture.At(1, 1),
            (Rgb{RecordingHost::LevelOf(2), RecordingHost::LevelOf(3), RecordingHost::LevelOf(4)}));
}

TEST_F(BandStreams, OfTwoBandsTheFirstIsGreen) {
  const std::vector<Bytes> s = Streams(6);
  RecordingHost host;
  host.bits = 8;
  const LoadedPicture picture = Load(Sequential(2, 2, 1, s), host);
  ASSERT_EQ(picture.status, SUCCESS);
  ExpectStreams(host, {s[0], s[3], s[1], s[4]});
  EXPECT_EQ(picture.At(1, 1), (Rgb{0, RecordingHost::LevelOf(0), RecordingHost::LevelOf(1)}));
}

// Where no stream follows, the last one of the data stands in.
TEST_F(BandStreams, WithTooFewStreamsTheLastServesAll) {
  const std::vector<Bytes> s = Streams(3);
  RecordingHost host;
  host.bits = 8;
  ASSERT_EQ(Load(Sequential(3, 2, 1, s), host).status, SUCCESS);
  ExpectStreams(host, {s[0], s[2], s[2], s[1], s[2], s[2]});
}

TEST_F(BandStreams, WithoutAnyOtherStreamTheDecodingFails) {
  RecordingHost host;
  EXPECT_EQ(Load(Sequential(3, 2, 1, {TinyJpeg(1, 900)}), host).status, ERR_FILE_READ);
  EXPECT_TRUE(host.loads.empty());
}

// A refused band leaves its block as it was; later bands go on with the very next stream.
TEST_F(BandStreams, ARefusedBandGivesUpTheBlock) {
  std::vector<Bytes> s = Streams(12);
  s[4] = RefusedStream(s[4].size());
  RecordingHost host;
  host.bits = 8;
  EXPECT_EQ(Load(Sequential(3, 2, 2, s), host).status, SUCCESS);
  // Block 0: stream 0, the refused 4, then 5 without any passed over.
  ASSERT_GE(host.loads.size(), 2U);
  EXPECT_EQ(host.loads[0].bytes, s[0]);
  EXPECT_EQ(host.loads[1].bytes, s[5]);
}

TEST_F(BandStreams, ARefusedBandFailsItsRun) {
  std::vector<Bytes> s = Streams(6);
  s[3] = RefusedStream(s[3].size());  // of block 0 and, as the only block of its run, decisive
  RecordingHost host;
  host.bits = 8;
  EXPECT_EQ(Load(Sequential(2, 2, 1, s), host).status, ERR_UNSUPPORTED_COMPRESSION);
  EXPECT_EQ(host.loads.size(), 1U);
}

TEST_F(BandStreams, AFailedLoadEndsTheDecoding) {
  RecordingHost host;
  host.answer = [](HostBitmap*) { return ERR_NO_MEMORY; };
  EXPECT_EQ(Load(Sequential(3, 2, 2, Streams(12)), host).status, ERR_NO_MEMORY);
  EXPECT_EQ(host.loads.size(), 1U);
}

// With a mask all bands of a block take the block's one entry. The last entry is read as it stands, from the
// start of the data and not from the pixels. Whether the one stream is loaded for each band or once for all is
// left open.
TEST_F(BandStreams, UnderAMaskAllBandsTakeTheBlocksEntry) {
  const std::vector<Bytes> s = Streams(3);
  ImageSpec image = Sequential(3, 3, 1, s, "M3");
  image.mask.block_offsets = {{0, 1100, 2300}};
  const auto pixels = static_cast<uint32_t>(image.MaskTable().size());
  RecordingHost host;
  host.bits = 8;
  // The last one begins within the mask's distance before the third stream: no stream.
  EXPECT_EQ(Load(image, host).status, ERR_UNSUPPORTED_COMPRESSION);
  EXPECT_EQ(Distinct(host), (std::vector<Bytes>{s[0], s[1]}));
  // An entry that counts from the start of the data finds it; the second block's stream is then longer.
  image.mask.block_offsets = {{0, 1100, 2300 + pixels}};
  RecordingHost second;
  second.bits = 8;
  // A grey by the number in the stream's comment.
  second.answer = [&](HostBitmap* bitmap) {
    const auto level = static_cast<uint32_t>(50 + second.loads.back().bytes.at(9));
    const int32_t status =
        HostCreateBitmap(bitmap, sizeof *bitmap, 1, kSide, kSide, 8, 2, nullptr, 1, nullptr, 0);
    HostFillBitmap(bitmap, level << 16 | level << 8 | level);
    return status;
  };
  const LoadedPicture picture = Load(image, second);
  ASSERT_EQ(picture.status, SUCCESS);
  const std::vector<Bytes> loaded = Distinct(second);
  ASSERT_EQ(loaded.size(), 3U);
  EXPECT_EQ(loaded[1].size(), 1200U + pixels);
  EXPECT_EQ(loaded[2], s[2]);
  for (uint32_t block = 0; block < 3; ++block) {
    const auto level = static_cast<uint8_t>(50 + block);
    EXPECT_EQ(picture.At(block * kSide, 0), (Rgb{level, level, level}));
  }
}

TEST_F(BandStreams, AbsentBlocksAreNotMerged) {
  const std::vector<Bytes> s = Streams(2);
  ImageSpec image = Sequential(3, 1, 3, s, "M3");
  image.mask.block_offsets = {{0, kAbsentBlock, 1100 + 46}};
  ASSERT_EQ(image.MaskTable().size(), 46U);
  RecordingHost host;
  host.bits = 8;
  const LoadedPicture picture = Load(image, host);
  ASSERT_EQ(picture.status, SUCCESS);
  const std::vector<Bytes> loaded = Distinct(host);
  ASSERT_EQ(loaded.size(), 2U);
  EXPECT_EQ(loaded[0].size(), 1146U);
  EXPECT_EQ(loaded[1], s[1]);
  EXPECT_EQ(picture.At(1, kSide + 1), (Rgb{0, 0, 0}));
}

TEST_F(BandStreams, EntriesBeyondTheDataAreShortReads) {
  for (const uint32_t entry : {100000U, 0x80000000U, 0xFFFFFFFEU}) {
    ImageSpec image = Sequential(3, 2, 1, Streams(2), "M3");
    image.mask.block_offsets = {{0, entry}};
    RecordingHost host;
    EXPECT_EQ(Load(image, host).status, ERR_FILE_READ) << entry;
  }
}

// Two or more bands, but one block: one stream, whatever the interleave.
TEST_F(BandStreams, OneBlockIsOneStream) {
  const std::vector<Bytes> s = Streams(3);
  RecordingHost host;
  ASSERT_EQ(Load(Sequential(3, 1, 1, s), host).status, SUCCESS);
  ExpectStreams(host, {Concatenate(s)});
}

TEST_F(BandStreams, RandomFilesAgreeWithTheLiteralWalk) {
  Random random(815);
  size_t succeeded = 0;
  for (int round = 0; round < 200; ++round) {
    const uint32_t bands = 2 + random.Below(4);
    const uint32_t across = 1 + random.Below(2);
    const uint32_t down = across == 1 ? 2 + random.Below(2) : 1 + random.Below(3);
    std::vector<Bytes> streams;
    const size_t count = random.Below(3) == 0 ? 1 + random.Below(8) : bands * across * down;
    for (size_t i = 0; i < count; ++i)
      streams.push_back(TinyJpeg(static_cast<uint32_t>(i), 500 + random.Below(1200)));
    const ImageSpec image = Sequential(bands, across, down, streams);
    NtfBuilder file{image};
    // What lies behind the data may be taken for streams, too.
    if (random.Below(2) == 0)
      file.trailer = Concatenate({Bytes(random.Below(1500)), TinyJpeg(99), Bytes(random.Below(2000))});
    const BuiltFile built = file.Build();
    const Expected expected = StreamReference(image, built).Bands();
    RecordingHost host;
    host.bits = 8;
    EXPECT_EQ(LoadFile(Write(built), host.Request()).status, expected.status) << round;
    ExpectStreams(host, expected.streams);
    succeeded += expected.status == SUCCESS ? 1 : 0;
    if (HasFailure()) return;
  }
  EXPECT_GT(succeeded, 60U);
  EXPECT_LT(succeeded, 190U);
}

// 2000 bands of 9 x 9 blocks and three streams: the walk comes to its end at once.
TEST_F(BandStreams, ManyBandsWithFewStreamsEndQuickly) {
  ImageSpec image = Sequential(2000, 9, 9, Streams(3));
  const ProcessorTime time;
  RecordingHost host;
  host.answer = [&](HostBitmap* bitmap) {
    return HostCreateBitmap(bitmap, sizeof *bitmap, 1, 1, 1, 8, 2, nullptr, 1, nullptr, 0);
  };
  EXPECT_EQ(Load(image, host).status, SUCCESS);
  EXPECT_LT(time.Seconds(), 20);
}

}  // namespace
}  // namespace tavi_test

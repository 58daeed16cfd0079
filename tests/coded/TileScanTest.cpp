// One stream for each block, found by scanning for start markers.
#include "Random.h"

#include "Streams.h"

namespace tavi_test {
namespace {

constexpr uint32_t kSide = 8;

class TileScan : public CodedTest {
 protected:
  static ImageSpec Scanned(uint32_t across, uint32_t down, const std::vector<Bytes>& streams,
                           const std::string& irep = "MONO") {
    ImageSpec image = CodedImage("C3", irep, irep == "MONO" ? 1 : 3, across, down, kSide, kSide);
    image.pixels = Concatenate(streams);
    return image;
  }
  void ExpectStreams(const RecordingHost& host, const std::vector<Bytes>& streams) {
    ASSERT_EQ(host.loads.size(), streams.size());
    for (size_t i = 0; i < streams.size(); ++i) EXPECT_EQ(host.loads[i].bytes, streams[i]) << i;
  }
  // The sizes of the streams that were loaded.
  static std::vector<size_t> Sizes(const RecordingHost& host) {
    std::vector<size_t> sizes;
    for (const RecordedLoad& load : host.loads) sizes.push_back(load.bytes.size());
    return sizes;
  }
};

TEST_F(TileScan, BlocksTakeOneStreamAfterAnother) {
  const std::vector<Bytes> streams = {TinyJpeg(1, 700),  TinyJpeg(2, 3000), TinyJpeg(3, 1021),
                                      TinyJpeg(4, 1022), TinyJpeg(5, 2043), TinyJpeg(6, 1500)};
  const ImageSpec image = Scanned(3, 2, streams);
  RecordingHost host;
  const LoadedPicture picture = Load(image, host);
  ASSERT_EQ(picture.status, SUCCESS);
  ExpectStreams(host, streams);
  for (uint32_t i = 0; i < 6; ++i) {
    const uint8_t level = RecordingHost::LevelOf(i);
    EXPECT_EQ(picture.At(i % 3 * kSide + 4, i / 3 * kSide + 4), (Rgb{level, level, level})) << i;
  }
}

// Every distance of the second stream around the ends of the stretches.
TEST_F(TileScan, AStreamIsFoundAtEveryDistance) {
  std::vector<size_t> distances;
  for (const size_t around : {1021, 1024, 2042, 2045, 3063})
    for (size_t d = around - 4; d <= around + 4; ++d) distances.push_back(d);
  for (const size_t distance : distances) {
    const std::vector<Bytes> streams = {TinyJpeg(1, distance), TinyJpeg(2, 2500)};
    RecordingHost host;
    NtfBuilder file{Scanned(2, 1, streams)};
    EXPECT_EQ(Load(file, host).status, SUCCESS) << distance;
    ASSERT_GE(host.loads.size(), 1U);
    EXPECT_EQ(host.loads[0].bytes, streams[0]) << distance;
  }
}

// The marker within a stream's entropy-coded data ends that stream; there is no defence.
TEST_F(TileScan, AMarkerWithinAStreamEndsIt) {
  Bytes first = TinyJpeg(1, 1600);
  first[900] = 0xFF;
  first[901] = 0xD8;
  first[902] = 0xFF;
  RecordingHost host;
  Load(Scanned(2, 1, {first, TinyJpeg(2, 1200)}), host);
  EXPECT_EQ(Sizes(host), (std::vector<size_t>{900, 1200}));
}

TEST_F(TileScan, APieceOfAMarkerIsNone) {
  Bytes first = TinyJpeg(1, 1600);
  first[900] = 0xFF;
  first[901] = 0xD8;
  first[903] = 0xFF;
  first[950] = 0xD8;
  first[951] = 0xFF;
  RecordingHost host;
  Load(Scanned(2, 1, {first, TinyJpeg(2, 1200)}), host);
  EXPECT_EQ(Sizes(host), (std::vector<size_t>{1600, 1200}));
}

// A place counts only while it is below what is left of the data: a marker at place p of a stretch needs
// p + 1 below it. Here the data end soon, and the next segment's streams lie behind them.
TEST_F(TileScan, APlaceMustBeBelowWhatIsLeft) {
  // Data of 700 + 700 bytes of which the first stream takes 700: 700 are left, and the next stream stands
  // 900 behind the second's start, at place 900 of its first stretch. It does not count there and has no
  // other stretch.
  const std::vector<Bytes> streams = {TinyJpeg(1, 700), TinyJpeg(2, 700)};
  ImageSpec image = Scanned(3, 1, streams);
  NtfBuilder file{image};
  file.trailer = Concatenate({Bytes(200, 0), TinyJpeg(3, 700), Bytes(4000, 0)});
  RecordingHost host;
  EXPECT_EQ(Load(file, host).status, ERR_FILE_READ);
  ExpectStreams(host, {streams[0]});
  // At distance 1021 it stands at place 1021 of the first stretch and at place 0 of the second, which never
  // counts.
  file.trailer = Concatenate({Bytes(321, 0), TinyJpeg(3, 700), Bytes(4000, 0)});
  RecordingHost seam;
  EXPECT_EQ(Load(file, seam).status, ERR_FILE_READ);
  ExpectStreams(seam, {streams[0]});
  // At distance 1100 it stands at place 79 of the second stretch, and counts.
  file.trailer = Concatenate({Bytes(400, 0), TinyJpeg(3, 700), Bytes(4000, 0)});
  RecordingHost second;
  Load(file, second);
  ASSERT_GE(second.loads.size(), 2U);
  EXPECT_EQ(second.loads[1].bytes.size(), 1100U);
}

// The stretches must be whole: a stream that begins in the file's last 1023 bytes behind the start is not
// found.
TEST_F(TileScan, AShortStretchEndsTheSearch) {
  const std::vector<Bytes> streams = {TinyJpeg(1, 500), TinyJpeg(2, 523)};
  RecordingHost host;
  EXPECT_EQ(Load(Scanned(2, 1, streams), host).status, ERR_FILE_READ);
  EXPECT_TRUE(host.loads.empty());
  // One byte more, though behind the data, makes the stretch whole.
  NtfBuilder file{Scanned(2, 1, streams)};
  file.trailer = {0};
  EXPECT_EQ(Load(file, host).status, ERR_FILE_READ);  // the last stream is not found in so little
  ExpectStreams(host, {streams[0]});
}

// Place 1022 is the last that counts, though its marker ends behind the stretch: no second stretch is wanted.
TEST_F(TileScan, TheLastPlaceOfAStretchCounts) {
  const std::vector<Bytes> streams = {TinyJpeg(1, 1022), TinyJpeg(2, 600)};
  RecordingHost host;
  EXPECT_EQ(Load(Scanned(2, 1, streams), host).status, SUCCESS);
  ExpectStreams(host, streams);
}

TEST_F(TileScan, FewerStreamsThanBlocksEndTheDecoding) {
  const std::vector<Bytes> streams = {TinyJpeg(1, 1500), TinyJpeg(2, 1500)};
  RecordingHost host;
  EXPECT_EQ(Load(Scanned(2, 2, streams), host).status, ERR_FILE_READ);
  ExpectStreams(host, {streams[0]});
}

TEST_F(TileScan, OfMoreStreamsTheLastBlockTakesTheLast) {
  const std::vector<Bytes> streams = {TinyJpeg(1, 1500), TinyJpeg(2, 1500), TinyJpeg(3, 1500)};
  RecordingHost host;
  ASSERT_EQ(Load(Scanned(1, 2, streams), host).status, SUCCESS);
  ExpectStreams(host, {streams[0], streams[2]});
}

// The stretches of the backward search do not overlap and start 1024 bytes before the end.
TEST_F(TileScan, TheLastStreamIsMissedWhereAStretchCutsItsMarker) {
  // Streams of 1500, 1500 and `last`: with 1023 or 1022 bytes to the end, the marker's first byte or two lie
  // in the stretch before the last one.
  for (const size_t last : {1020U, 1021U, 1022U, 1023U, 1024U, 1025U, 1026U, 1027U}) {
    const std::vector<Bytes> streams = {TinyJpeg(1, 1500), TinyJpeg(2, 1500), TinyJpeg(3, last)};
    RecordingHost host;
    ASSERT_EQ(Load(Scanned(1, 2, streams), host).status, SUCCESS) << last;
    // A place of 3 or more holds the marker's third byte: 1023 bytes to the end are the most in a stretch.
    const bool missed = last > 1023 && last <= 1026;
    const size_t taken = last > 1026 || !missed ? last : last + 1500;
    EXPECT_EQ(Sizes(host), (std::vector<size_t>{1500, taken})) << last;
  }
}

TEST_F(TileScan, AStretchAtTheStartOfTheDataIsNotSearchedBackward) {
  // 2048 bytes: the two stretches stand at 1024 and at 0, and the latter is not looked at.
  const std::vector<Bytes> streams = {TinyJpeg(1, 600), TinyJpeg(2, 1448)};
  RecordingHost host;
  EXPECT_EQ(Load(Scanned(2, 1, streams), host).status, ERR_FILE_READ);
  ExpectStreams(host, {streams[0]});
  // One byte more, and the second stretch stands at 1.
  const std::vector<Bytes> longer = {TinyJpeg(1, 600), TinyJpeg(2, 1449)};
  RecordingHost second;
  EXPECT_EQ(Load(Scanned(2, 1, longer), second).status, SUCCESS);
  ExpectStreams(second, longer);
}

TEST_F(TileScan, DataWithinOneStretchHaveNoLastStream) {
  NtfBuilder file{Scanned(2, 1, {TinyJpeg(1, 500), TinyJpeg(2, 524)})};
  file.trailer = Bytes(3000, 0);
  RecordingHost host;
  EXPECT_EQ(Load(file, host).status, ERR_FILE_READ);
  EXPECT_EQ(Sizes(host), (std::vector<size_t>{500}));
}

// Every block but the first is given a fresh start, and the same choice of bands.
TEST_F(TileScan, MultiStreamsAfterTheFirstBeginAfresh) {
  const Bytes start = {0xFF, 0xD8, 0xFF, 0xE6, 0x00, 0x19, 'N',  'I',  'T',  'F',  0x00, 0x02, 0x00, 'B',
                       0x00, 0x02, 0x00, 0x02, 0x03, 0x08, 0x00, 0x01, 0x00, 0x03, 0x08, 0x01, 0x01};
  const std::vector<Bytes> streams = {TinyJpeg(1, 700), TinyJpeg(2, 900), TinyJpeg(3, 800),
                                      TinyJpeg(4, 1300)};
  ImageSpec image = Scanned(2, 2, streams, "MULTI");
  image.Roles({"G ", "R ", "B "});
  RecordingHost host;
  ASSERT_EQ(Load(image, host).status, SUCCESS);
  ExpectStreams(host, {streams[0], Concatenate({start, streams[1]}), Concatenate({start, streams[2]}),
                       Concatenate({start, streams[3]})});
  for (const RecordedLoad& load : host.loads) {
    EXPECT_EQ(load.options.flags, kTakeBands);
    EXPECT_EQ(load.options.red_band, 1U);
    EXPECT_EQ(load.options.green_band, 0U);
    EXPECT_EQ(load.options.blue_band, 2U);
  }
}

// A block that is given up does not count as decoded.
TEST_F(TileScan, MultiStreamsAfterARefusedOneDoNotBeginAfresh) {
  const std::vector<Bytes> streams = {RefusedStream(1500), TinyJpeg(2, 1500), TinyJpeg(3, 1500)};
  RecordingHost host;
  ASSERT_EQ(Load(Scanned(1, 3, streams, "MULTI"), host).status, SUCCESS);
  ASSERT_EQ(host.loads.size(), 2U);
  EXPECT_EQ(host.loads[0].bytes, streams[1]);
  EXPECT_EQ(host.loads[1].bytes.size(), 1527U);
}

// One band of interleave S is no band-sequential image, nor is a three-band one of other interleaves.
TEST_F(TileScan, OnlySeveralBandsInSequenceAreMerged) {
  const std::vector<Bytes> streams = {TinyJpeg(1, 1500), TinyJpeg(2, 1500)};
  for (const char mode : {'B', 'P', 'R'}) {
    RecordingHost host;
    ASSERT_EQ(Load(Scanned(2, 1, streams, "RGB").Mode(mode), host).status, SUCCESS) << mode;
    ExpectStreams(host, streams);
  }
  RecordingHost host;
  ASSERT_EQ(Load(Scanned(2, 1, streams).Mode('S'), host).status, SUCCESS);
  ExpectStreams(host, streams);
}

// A mask table without a block mask: searches and reads begin behind it, but the last stream's place is
// counted from the start of the data and then moved by it, too.
TEST_F(TileScan, BehindAnEmptyMaskTableTheLastStreamIsReadTooFarOn) {
  ImageSpec image = Scanned(2, 1, {TinyJpeg(1, 1500), TinyJpeg(2, 1500)});
  image.ic = "M3";
  const size_t table = image.MaskTable().size();
  NtfBuilder file{image};
  RecordingHost host;
  EXPECT_EQ(Load(file, host).status, ERR_FILE_READ);
  file.trailer = Bytes(2000, 0x77);
  RecordingHost second;
  // What is read there begins within the stream and is no stream.
  EXPECT_EQ(Load(file, second).status, ERR_UNSUPPORTED_COMPRESSION);
  EXPECT_EQ(Sizes(second), (std::vector<size_t>{1500}));
  EXPECT_EQ(table, 10U);
}

// Many files of random streams against the literal search.
TEST_F(TileScan, RandomFilesAgreeWithTheLiteralSearch) {
  Random random(4711);
  size_t succeeded = 0;
  size_t failed = 0;
  for (int round = 0; round < 400; ++round) {
    const uint32_t across = 1 + random.Below(3);
    const uint32_t down = across == 1 ? 2 + random.Below(2) : 1 + random.Below(3);
    std::vector<Bytes> streams;
    const size_t count = across * down + (random.Below(4) == 0 ? random.Below(3) : 0);
    for (size_t i = 0; i < count; ++i) {
      const size_t size = random.Below(3) == 0 ? 1015 + random.Below(16) : 500 + random.Below(3000);
      streams.push_back(TinyJpeg(static_cast<uint32_t>(i), size));
    }
    const ImageSpec image = Scanned(across, down, streams);
    NtfBuilder file{image};
    if (random.Below(2) == 0)
      file.trailer = Concatenate({Bytes(random.Below(1500)), TinyJpeg(99), Bytes(random.Below(2000))});
    const BuiltFile built = file.Build();
    const Expected expected = StreamReference(image, built).Tiles();
    RecordingHost host;
    EXPECT_EQ(LoadFile(Write(built), host.Request()).status, expected.status) << round;
    ExpectStreams(host, expected.streams);
    (expected.status == SUCCESS ? succeeded : failed) += 1;
    if (HasFailure()) return;
  }
  EXPECT_GT(succeeded, 100U);
  EXPECT_GT(failed, 10U);
}

}  // namespace
}  // namespace tavi_test

// One stream for each block, found by the block mask.
#include "../host_codecs/DeepJpegEncoder.h"
#include "../host_codecs/Jpeg2000Encoder.h"
#include "Streams.h"

namespace tavi_test {
namespace {

constexpr uint32_t kSide = 8;

Rgb Level(size_t load) {
  const uint8_t level = RecordingHost::LevelOf(load);
  return {level, level, level};
}

class TileMask : public CodedTest {
 protected:
  // A masked image of blocks of 8 x 8; entry i of the mask is given for each block.
  static ImageSpec Masked(uint32_t across, uint32_t down, const std::vector<uint32_t>& entries,
                          const std::vector<Bytes>& streams, const std::string& irep = "MONO") {
    ImageSpec image = CodedImage("M3", irep, irep == "MONO" ? 1 : 3, across, down, kSide, kSide);
    image.mask.block_offsets = entries;
    image.pixels = Concatenate(streams);
    return image;
  }
  // The colour in the middle of a block.
  static Rgb At(const LoadedPicture& picture, uint32_t column, uint32_t row) {
    return picture.At(column * kSide + 4, row * kSide + 4);
  }
};

TEST_F(TileMask, AStreamGoesToTheNextPresentEntry) {
  const std::vector<Bytes> streams = {TinyJpeg(1, 700), TinyJpeg(2, 900), TinyJpeg(3, 800),
                                      TinyJpeg(4, 1000)};
  const ImageSpec image = Masked(2, 2, {0, 700, 1600, 2400}, streams);
  RecordingHost host;
  const LoadedPicture picture = Load(image, host);
  ASSERT_EQ(picture.status, SUCCESS);
  ASSERT_EQ(host.loads.size(), 4U);
  for (uint32_t i = 0; i < 4; ++i) {
    EXPECT_EQ(host.loads[i].bytes, streams[i]) << i;
    EXPECT_EQ(host.loads[i].bits, 0U);
    EXPECT_EQ(host.loads[i].order, 4U);
    EXPECT_EQ(host.loads[i].record_size, 212U);
    EXPECT_TRUE(host.loads[i].has_options);
    EXPECT_FALSE(host.loads[i].has_information);
    EXPECT_FALSE(host.loads[i].given_pixels);
    EXPECT_EQ(host.loads[i].options.flags, 0U);
    EXPECT_EQ(At(picture, i % 2, i / 2), Level(i));
  }
}

TEST_F(TileMask, AbsentBlocksStayAsTheBitmapWasCreated) {
  const std::vector<Bytes> streams = {TinyJpeg(1, 700), TinyJpeg(2, 900), TinyJpeg(3, 1100)};
  const ImageSpec image = Masked(3, 2, {kAbsentBlock, 0, kAbsentBlock, 700, 1600, kAbsentBlock}, streams);
  RecordingHost host;
  const LoadedPicture picture = Load(image, host);
  ASSERT_EQ(picture.status, SUCCESS);
  ASSERT_EQ(host.loads.size(), 3U);
  for (size_t i = 0; i < 3; ++i) EXPECT_EQ(host.loads[i].bytes, streams[i]) << i;
  EXPECT_EQ(At(picture, 0, 0), (Rgb{0, 0, 0}));
  EXPECT_EQ(At(picture, 1, 0), Level(0));
  EXPECT_EQ(At(picture, 2, 0), (Rgb{0, 0, 0}));
  EXPECT_EQ(At(picture, 0, 1), Level(1));
  EXPECT_EQ(At(picture, 1, 1), Level(2));
  EXPECT_EQ(At(picture, 2, 1), (Rgb{0, 0, 0}));
}

TEST_F(TileMask, AllBlocksAbsentLoadsNothing) {
  const ImageSpec image = Masked(2, 2, {}, {TinyJpeg(1)});
  RecordingHost host;
  const LoadedPicture picture = Load(image, host);
  ASSERT_EQ(picture.status, SUCCESS);
  EXPECT_TRUE(host.loads.empty());
  EXPECT_EQ(At(picture, 1, 1), (Rgb{0, 0, 0}));
}

// The last stream is searched backward, whatever its entry says.
TEST_F(TileMask, TheLastEntryIsOnlyAMark) {
  const std::vector<Bytes> streams = {TinyJpeg(1, 700), TinyJpeg(2, 900)};
  const ImageSpec image = Masked(2, 1, {0, 700}, streams);
  for (const uint32_t entry : {700U, 701U, 650U}) {
    ImageSpec changed = image;
    changed.mask.block_offsets = {{0, entry}};
    RecordingHost host;
    ASSERT_EQ(Load(changed, host).status, SUCCESS) << entry;
    ASSERT_EQ(host.loads.size(), 2U);
    EXPECT_EQ(host.loads[0].bytes.size(), entry);
    EXPECT_EQ(host.loads[1].bytes, streams[1]);
  }
}

// The last present block takes the last stream of the data even when that belongs to none.
TEST_F(TileMask, TheLastPresentBlockTakesTheLastStreamOfTheData) {
  const std::vector<Bytes> streams = {TinyJpeg(1, 700), TinyJpeg(2, 900), TinyJpeg(3, 750)};
  const ImageSpec image = Masked(3, 1, {0, 700, kAbsentBlock}, streams);
  RecordingHost host;
  ASSERT_EQ(Load(image, host).status, SUCCESS);
  ASSERT_EQ(host.loads.size(), 2U);
  EXPECT_EQ(host.loads[0].bytes, streams[0]);
  EXPECT_EQ(host.loads[1].bytes, streams[2]);
}

// Mask table and streams together no longer than a stretch: the backward search has nothing to look at, the
// stream is empty and the block is given up.
TEST_F(TileMask, WithoutALastStreamTheBlockIsGivenUp) {
  const ImageSpec image = Masked(1, 2, {kAbsentBlock, 0}, {TinyJpeg(1, 700)});
  RecordingHost host;
  EXPECT_EQ(Load(image, host).status, ERR_UNSUPPORTED_COMPRESSION);
  EXPECT_TRUE(host.loads.empty());
}

TEST_F(TileMask, AnOffsetInFrontOfTheStreamsCounts) {
  const std::vector<Bytes> streams = {TinyJpeg(1, 700), TinyJpeg(2, 900)};
  ImageSpec image = Masked(2, 1, {0, 700}, streams);
  image.mask.gap = Bytes(300, 0x55);
  RecordingHost host;
  ASSERT_EQ(Load(image, host).status, SUCCESS);
  ASSERT_EQ(host.loads.size(), 2U);
  EXPECT_EQ(host.loads[0].bytes, streams[0]);
  EXPECT_EQ(host.loads[1].bytes, streams[1]);
}

TEST_F(TileMask, EntriesBeyondTheDataAreShortReads) {
  for (const uint32_t entry : {5000U, 0x7FFFFFFFU, 0xFFFFFFFEU}) {
    const ImageSpec image = Masked(3, 1, {0, entry, 700}, {TinyJpeg(1, 700), TinyJpeg(2, 900)});
    RecordingHost host;
    EXPECT_EQ(Load(image, host).status, ERR_FILE_READ) << entry;
    EXPECT_TRUE(host.loads.empty()) << entry;
  }
}

// Entries that do not ascend give a size below 0, which as an unsigned one no file holds.
TEST_F(TileMask, DescendingEntriesAreShortReads) {
  const ImageSpec image = Masked(3, 1, {700, 0, 700}, {TinyJpeg(1, 700), TinyJpeg(2, 900)});
  RecordingHost host;
  EXPECT_EQ(Load(image, host).status, ERR_FILE_READ);
}

TEST_F(TileMask, EqualEntriesGiveUpTheBlock) {
  const std::vector<Bytes> streams = {TinyJpeg(1, 700), TinyJpeg(2, 900)};
  const ImageSpec image = Masked(1, 3, {0, 0, 700}, streams);
  RecordingHost host;
  const LoadedPicture picture = Load(image, host);
  ASSERT_EQ(picture.status, SUCCESS);
  ASSERT_EQ(host.loads.size(), 2U);
  EXPECT_EQ(At(picture, 0, 0), (Rgb{0, 0, 0}));
  EXPECT_EQ(At(picture, 0, 1), Level(0));
  EXPECT_EQ(At(picture, 0, 2), Level(1));
}

// A run is as many blocks as there are down.
TEST_F(TileMask, ARunFailsWhenItsLastTakenBlockIsRefused) {
  Bytes other(700, 0x11);
  const Bytes a = TinyJpeg(1, 700);
  const Bytes b = TinyJpeg(2, 1100);
  struct Case {
    uint32_t across, down;
    std::vector<Bytes> streams;
    int32_t status;
    size_t loads;
  };
  const std::vector<Case> cases = {
      {1, 3, {other, a, b}, SUCCESS, 2},
      {1, 3, {a, other, b}, SUCCESS, 2},
      {3, 1, {other, a, b}, ERR_UNSUPPORTED_COMPRESSION, 0},  // three runs of one block
      {3, 1, {a, other, b}, ERR_UNSUPPORTED_COMPRESSION, 1},
      {2, 2, {other, a, a, b}, SUCCESS, 3},
      {2, 2, {a, other, a, b}, ERR_UNSUPPORTED_COMPRESSION, 1},
      {2, 2, {a, a, other, b}, SUCCESS, 3},
      {2, 2, {other, other, a, b}, ERR_UNSUPPORTED_COMPRESSION, 0},
  };
  for (size_t i = 0; i < cases.size(); ++i) {
    std::vector<uint32_t> entries;
    for (size_t k = 0; k < cases[i].streams.size(); ++k) entries.push_back(static_cast<uint32_t>(700 * k));
    RecordingHost host;
    const LoadedPicture picture =
        Load(Masked(cases[i].across, cases[i].down, entries, cases[i].streams), host);
    EXPECT_EQ(picture.status, cases[i].status) << i;
    EXPECT_EQ(host.loads.size(), cases[i].loads) << i;
  }
}

TEST_F(TileMask, AbsentBlocksDoNotMendARun) {
  const ImageSpec image = Masked(1, 2, {0, kAbsentBlock}, {Bytes(1500, 0x11)});
  RecordingHost host;
  EXPECT_EQ(Load(image, host).status, ERR_UNSUPPORTED_COMPRESSION);
}

TEST_F(TileMask, AFailedLoadEndsTheDecoding) {
  const ImageSpec image = Masked(1, 3, {0, 700, 1400}, {TinyJpeg(1), TinyJpeg(2), TinyJpeg(3, 1100)});
  RecordingHost host;
  host.answer = [](HostBitmap*) { return ERR_FILE_FORMAT; };
  EXPECT_EQ(Load(image, host).status, ERR_FILE_FORMAT);
  EXPECT_EQ(host.loads.size(), 1U);
}

TEST_F(TileMask, ATileKeepsItsOwnSize) {
  const ImageSpec image = Masked(2, 1, {0, 700}, {TinyJpeg(1), TinyJpeg(2, 900)});
  RecordingHost host;
  host.width = host.height = 4;
  const LoadedPicture picture = Load(image, host);
  ASSERT_EQ(picture.status, SUCCESS);
  EXPECT_EQ(picture.At(3, 3), Level(0));
  EXPECT_EQ(picture.At(4, 4), (Rgb{0, 0, 0}));
  EXPECT_EQ(picture.At(11, 3), Level(1));
  host.loads.clear();
  host.width = host.height = 12;  // the second lies over the first
  const LoadedPicture wide = Load(image, host);
  ASSERT_EQ(wide.status, SUCCESS);
  EXPECT_EQ(wide.At(7, 7), Level(0));
  EXPECT_EQ(wide.At(8, 0), Level(1));
}

// The tile's colour order is overwritten, not converted: red first, read as blue first.
TEST_F(TileMask, ATileTakesTheSegmentsColourOrder) {
  const ImageSpec image = Masked(2, 1, {0, 700}, {TinyJpeg(1), TinyJpeg(2, 900)}, "RGB");
  RecordingHost host;
  host.answer = [](HostBitmap* bitmap) {
    const int32_t status =
        HostCreateBitmap(bitmap, sizeof *bitmap, 1, kSide, kSide, 24, 0, nullptr, 1, nullptr, 0);
    HostFillBitmap(bitmap, 0x0000C8);  // red
    return status;
  };
  const LoadedPicture picture = Load(image, host);
  ASSERT_EQ(picture.status, SUCCESS);
  EXPECT_EQ(At(picture, 0, 0), (Rgb{0, 0, 200}));
  EXPECT_EQ(At(picture, 1, 0), (Rgb{0, 0, 200}));
}

// Tiles may be JPEG of any kind and JPEG 2000. The last one is searched by its start marker, which a codestream
// does not have.
TEST_F(TileMask, EveryKnownKindOfStreamIsTaken) {
  const Pixels scene = MakeScene(8, 8, 1, 8);
  const Pixels deep = MakeScene(8, 8, 1, 12);
  for (const Bytes& stream :
       {EncodeJpeg2000(scene, {.levels = 1}), EncodeJpeg2000(scene, {.jp2 = true, .levels = 1}),
        EncodeJpeg12(deep, DeepProcess::kSequential), EncodeLossless(deep, {.bits = 12})}) {
    const auto size = static_cast<uint32_t>(stream.size());
    const ImageSpec image = Masked(2, 1, {0, size}, {stream, TinyJpeg(2, 1500)});
    RecordingHost host;
    const int32_t status = Load(image, host).status;
    ASSERT_FALSE(host.loads.empty()) << status;
    EXPECT_EQ(host.loads[0].bytes, stream);
  }
}

TEST_F(TileMask, RgbSaysThatComponentsAreColours) {
  const ImageSpec image = Masked(2, 1, {0, 700}, {TinyJpeg(1), TinyJpeg(2, 900)}, "RGB");
  RecordingHost host;
  ASSERT_EQ(Load(image, host).status, SUCCESS);
  for (const RecordedLoad& load : host.loads) EXPECT_EQ(load.options.flags, kComponentsAreRgb);
}

// Under a mask nothing counts as consumed: a fresh start would be read from before the data, fails, and the
// choice of bands is left out from the second decoded block on.
TEST_F(TileMask, OfMultiOnlyTheFirstDecodedBlockAsksForBands) {
  const std::vector<Bytes> streams = {TinyJpeg(1), TinyJpeg(2), TinyJpeg(3, 1100)};
  ImageSpec image = Masked(2, 2, {kAbsentBlock, 0, 700, 1400}, streams, "MULTI");
  image.Roles({"B ", "G ", "R "});
  RecordingHost host;
  ASSERT_EQ(Load(image, host).status, SUCCESS);
  ASSERT_EQ(host.loads.size(), 3U);
  EXPECT_EQ(host.loads[0].options.flags, kTakeBands);
  EXPECT_EQ(host.loads[0].options.red_band, 2U);
  EXPECT_EQ(host.loads[0].options.green_band, 1U);
  EXPECT_EQ(host.loads[0].options.blue_band, 0U);
  for (size_t i = 0; i < 3; ++i) EXPECT_EQ(host.loads[i].bytes, streams[i]) << i;
  for (size_t i = 1; i < 3; ++i) {
    EXPECT_EQ(host.loads[i].options.flags, 0U) << i;
    EXPECT_EQ(host.loads[i].options.red_band, 0U) << i;
    EXPECT_EQ(host.loads[i].options.green_band, 1U) << i;
    EXPECT_EQ(host.loads[i].options.blue_band, 2U) << i;
  }
}

// With room in front of the pixels the fresh start is read from that room.
TEST_F(TileMask, OfMultiALargeOffsetGivesAFreshStartFromBeforeThePixels) {
  const std::vector<Bytes> streams = {TinyJpeg(1), TinyJpeg(2, 1100)};
  ImageSpec image = Masked(2, 1, {0, 700}, streams, "MULTI");
  image.mask.gap.resize(2000);
  for (size_t i = 0; i < image.mask.gap.size(); ++i) image.mask.gap[i] = static_cast<uint8_t>(i % 251);
  RecordingHost host;
  ASSERT_EQ(Load(image, host).status, SUCCESS);
  ASSERT_EQ(host.loads.size(), 2U);
  EXPECT_EQ(host.loads[0].bytes, streams[0]);
  const RecordedLoad& second = host.loads[1];
  EXPECT_EQ(second.options.flags, kTakeBands);
  ASSERT_EQ(second.bytes.size(), 1100U + 27U);
  const Bytes data = image.Data();
  const size_t from = image.MaskTable().size() - 1100;
  EXPECT_EQ(Bytes(second.bytes.begin() + 27, second.bytes.end()),
            Bytes(data.begin() + static_cast<std::ptrdiff_t>(from),
                  data.begin() + static_cast<std::ptrdiff_t>(from + 1100)));
}

// The entries of the second and third band, which the mask of a band-sequential image would have, are not
// looked at.
TEST_F(TileMask, OneEntryForEachBlockIsLookedAt) {
  const std::vector<Bytes> streams = {TinyJpeg(1), TinyJpeg(2, 900)};
  const ImageSpec image = Masked(2, 1, {0, 700, 13, 14, 15, 16}, streams, "RGB");
  RecordingHost host;
  ASSERT_EQ(Load(image, host).status, SUCCESS);
  EXPECT_EQ(host.loads.size(), 2U);
}

// With a pad mask alone the streams are found by scanning, and the last one is read too far on.
TEST_F(TileMask, APadMaskIsNotLookedAt) {
  const std::vector<Bytes> streams = {TinyJpeg(1), TinyJpeg(2, 900)};
  ImageSpec image = CodedImage("M3", "MONO", 1, 2, 1, kSide, kSide);
  image.mask.pad_offsets = {{kAbsentBlock, 12345}};
  image.pixels = Concatenate({streams[0], streams[1]});
  RecordingHost host;
  NtfBuilder file{image};
  file.trailer = Bytes(4000, 0);
  EXPECT_EQ(Load(file, host).status, ERR_UNSUPPORTED_COMPRESSION);
  ASSERT_EQ(host.loads.size(), 1U);
  EXPECT_EQ(host.loads[0].bytes, streams[0]);
}

TEST_F(TileMask, AFileCutInTheLastStreamFails) {
  const ImageSpec image = Masked(2, 1, {0, 700}, {TinyJpeg(1), TinyJpeg(2, 900)});
  BuiltFile built = NtfBuilder{image}.Build();
  built.bytes.pop_back();
  RecordingHost host;
  // The backward search meets the short read first, so that the block has no stream: nothing is read, which
  // cannot come short.
  EXPECT_EQ(LoadFile(Write(built), host.Request()).status, ERR_UNSUPPORTED_COMPRESSION);
  EXPECT_EQ(host.loads.size(), 1U);
}

}  // namespace
}  // namespace tavi_test

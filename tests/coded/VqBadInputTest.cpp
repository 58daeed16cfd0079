// Vector quantised data that nothing can be decoded from, or not all of it. Everything that reaches the codes
// keeps the reference's reservoir in step with the library's.

#include "ProcessorTime.h"
#include "Random.h"
#include "VqFile.h"

namespace tavi_test {
namespace {

class VqBadInput : public CodedTest {
 protected:
  // 16 x 8 pixels in kernels of 4 x 4.
  static ImageSpec Image(const std::string& ic = "C4") { return CodedImage(ic, "MONO", 1, 1, 1, 16, 8); }
  static VqStream Good() {
    VqStream stream{.image_rows = 2, .codes_per_row = 4, .code_bits = 8, .entries = 8};
    for (uint8_t table = 0; table < 4; ++table)
      stream.tables.push_back(Bytes(32, static_cast<uint8_t>(50 + table)));
    stream.codes = {0, 1, 2, 3, 4, 5, 6, 7};
    return stream;
  }
  int32_t Status(const VqStream& stream, ImageSpec image = Image()) {
    image.pixels = stream.Build();
    return Status(image);
  }
  int32_t Status(const ImageSpec& image) { return Status(image, NtfBuilder{image}.Build()); }
  int32_t Status(const ImageSpec& image, const BuiltFile& built) {
    const int32_t status = LoadFile(Write(built)).status;
    EXPECT_EQ(status, DecodeVq(image, built).status);
    return status;
  }
};

TEST_F(VqBadInput, TheGoodStreamIsGood) {
  EXPECT_EQ(Status(Good()), SUCCESS);
}

TEST_F(VqBadInput, ZerosInTheHeaderAreRefused) {
  VqStream stream = Good();
  stream.image_rows = 0;
  EXPECT_EQ(Status(stream), ERR_FILE_FORMAT);
  stream = Good();
  stream.codes_per_row = 0;
  EXPECT_EQ(Status(stream), ERR_FILE_FORMAT);
  stream = Good();
  stream.record_count = 0;
  EXPECT_EQ(Status(stream), ERR_FILE_FORMAT);
  stream = Good();
  ImageSpec image = Image();
  image.pixels = stream.Build();
  image.pixels[8] = 0;  // the code length
  EXPECT_EQ(Status(image), ERR_FILE_FORMAT);
}

TEST_F(VqBadInput, MoreKernelsThanPixelsAreRefused) {
  VqStream stream = Good();
  for (const uint32_t count : {9U, 17U, 0x80000000U, 0xFFFFFFFFU}) {
    stream.image_rows = count;
    EXPECT_EQ(Status(stream), ERR_FILE_FORMAT) << count;
  }
  stream = Good();
  for (const uint32_t count : {17U, 0x80000000U, 0xFFFFFFFFU}) {
    stream.codes_per_row = count;
    EXPECT_EQ(Status(stream), ERR_FILE_FORMAT) << count;
  }
}

TEST_F(VqBadInput, CodesOfMoreThanSixteenBitsAreRefused) {
  for (const uint8_t bits : {uint8_t{17}, uint8_t{32}, uint8_t{33}, uint8_t{255}}) {
    ImageSpec image = Image();
    image.pixels = Good().Build();
    image.pixels[8] = bits;
    EXPECT_EQ(Status(image), ERR_FILE_FORMAT) << int{bits};
  }
}

// Tables that the file cannot hold are not made room for.
TEST_F(VqBadInput, MoreEntriesThanTheFileHoldsAreAShortRead) {
  const uint64_t limit = HostGetBitmapLimit();
  for (const uint32_t entries : {9U, 1000U, 0x10000000U, 0x40000000U, 0x80000000U, 0xFFFFFFFFU}) {
    VqStream stream = Good();
    stream.entries = entries;
    ImageSpec image = Image();
    image.pixels = stream.Build();
    const ProcessorTime time;
    const int32_t status = LoadFile(Write(NtfBuilder{image})).status;
    EXPECT_LT(time.Seconds(), 2);
    // With 9 entries the codes serve as the end of the tables, and then the codes are missing.
    EXPECT_EQ(status, ERR_FILE_READ) << entries;
  }
  EXPECT_EQ(HostGetBitmapLimit(), limit);
}

TEST_F(VqBadInput, MoreRecordsThanTheFileHoldsAreAShortRead) {
  VqStream stream = Good();
  stream.tables.clear();
  stream.codes.clear();
  stream.record_count = 0xFFFF;
  ImageSpec image = Image();
  image.pixels = stream.Head();
  image.pixels.resize(300);
  EXPECT_EQ(Status(image), ERR_FILE_READ);
}

TEST_F(VqBadInput, ATableWithoutEntriesShowsZeros) {
  VqStream stream = Good();
  stream.entries = 0;
  stream.tables.assign(4, Bytes{});
  EXPECT_EQ(Status(stream), SUCCESS);
}

// Cut after every byte: a short read, whatever stood there, and nothing is left alive.
TEST_F(VqBadInput, CutAnywhereItIsAShortRead) {
  for (const char* ic : {"C4", "M4"}) {
    ImageSpec image = Image(ic);
    image.pixels = Good().Build();
    image.mask.pad_code = {1};
    if (ic == std::string("M4")) image.mask.block_offsets = {{0}};
    const BuiltFile whole = NtfBuilder{image}.Build();
    const size_t begin = whole.At("image[0].pixels").offset;
    for (size_t end = begin; end < whole.bytes.size(); ++end) {
      BuiltFile cut = whole;
      cut.bytes.resize(end);
      EXPECT_EQ(Status(image, cut), ERR_FILE_READ) << ic << " " << end - begin;
    }
    EXPECT_EQ(Status(image, whole), SUCCESS);
  }
}

// The data length plays no part in reading: what the file holds behind the data serves.
TEST_F(VqBadInput, AShortDataLengthIsNotLookedAt) {
  ImageSpec image = Image();
  image.pixels = Good().Build();
  NtfBuilder file{image};
  file.header["LI[0]"] = "0000000001";
  const BuiltFile built = file.Build();
  EXPECT_EQ(Status(image, built), SUCCESS);
}

TEST_F(VqBadInput, LargeBlocksOfAFewBytesAreBounded) {
  const uint64_t limit = HostGetBitmapLimit();
  HostSetBitmapLimit(64 << 20);
  ImageSpec image = CodedImage("C4", "MONO", 1, 9, 9, 8192, 8192);
  image.pixels = Good().Build();
  const int32_t status = LoadFile(Write(NtfBuilder{image})).status;
  EXPECT_EQ(status, ERR_NO_MEMORY);
  HostSetBitmapLimit(limit);
}

// Any byte of header and records replaced by anything: no crash, no leak, a status.
TEST_F(VqBadInput, DamagedHeadersEndInAStatus) {
  Random random(99);
  const Bytes good = Good().Build();
  for (int round = 0; round < 600; ++round) {
    ImageSpec image = Image();
    image.pixels = good;
    const uint32_t changes = 1 + random.Below(3);
    for (uint32_t i = 0; i < changes; ++i) image.pixels[random.Below(40)] = random.Byte();
    const BuiltFile built = NtfBuilder{image}.Build();
    const int32_t status = LoadFile(Write(built)).status;
    EXPECT_TRUE(status == SUCCESS || status == ERR_FILE_READ || status == ERR_FILE_FORMAT) << status;
    // The reference would make room for as many entries as the damage claims.
    const uint32_t entries = uint32_t{image.pixels[23]} << 24 | uint32_t{image.pixels[24]} << 16;
    if (entries == 0) {
      EXPECT_EQ(DecodeVq(image, built).status, status) << round;
    }
  }
}

}  // namespace
}  // namespace tavi_test

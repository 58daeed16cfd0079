// Look-up tables and the data mask table of an image.
#include <gtest/gtest.h>

#include <cstring>

#include "ImageRead.h"

namespace {

using tavi::ImSubHdr;
using tavi_test::BandSpec;
using tavi_test::Bytes;
using tavi_test::ImageSpec;
using namespace unit;

class ImageTablesTest : public ImageReadTest {};

// ---- Look-up tables ----

Bytes Table(size_t size, int first) {
  Bytes table(size);
  for (size_t i = 0; i < size; ++i) table[i] = static_cast<uint8_t>(static_cast<size_t>(first) + i * 3);
  return table;
}

// The tables in the order of the file are red, green and blue: bytes 2, 1 and 0 of an entry.
void ExpectLut(const ImSubHdr& record, const Bytes& first, const Bytes& second, const Bytes& third) {
  ASSERT_GE(record.Lut.size(), first.size());
  for (size_t i = 0; i < first.size(); ++i) {
    uint8_t entry[4];
    std::memcpy(entry, &record.Lut[i], 4);
    EXPECT_EQ(entry[2], first[i]);
    EXPECT_EQ(entry[1], second[i]);
    EXPECT_EQ(entry[0], third[i]);
    EXPECT_EQ(entry[3], 0);
  }
}

TEST_F(ImageTablesTest, SingleTableServesAllThreeColours) {
  ImageSpec image = tavi_test::GreyImage(1, 1);
  image.bands[0].luts = {Table(256, 17)};
  ImageRead read;
  Read(read, image);
  ASSERT_EQ(read.status, SUCCESS);
  EXPECT_EQ(read.record.BandLutCounts[0], 1U);
  EXPECT_EQ(read.record.BandLutEntries[0], 256U);
  ExpectLut(read.record, Table(256, 17), Table(256, 17), Table(256, 17));
}

TEST_F(ImageTablesTest, ThreeTablesAreRedGreenAndBlue) {
  ImageSpec image = tavi_test::GreyImage(1, 1);
  image.bands[0].luts = {Table(5, 10), Table(5, 100), Table(5, 200)};
  ImageRead read;
  Read(read, image);
  ASSERT_EQ(read.status, SUCCESS);
  EXPECT_EQ(read.record.BandLutCounts[0], 3U);
  EXPECT_EQ(read.record.BandLutEntries[0], 5U);
  ExpectLut(read.record, Table(5, 10), Table(5, 100), Table(5, 200));
}

TEST_F(ImageTablesTest, AnyNumberButOneReadsThreeTables) {
  for (const char* text : {"2", "3", "9"}) {
    ImageSpec image = tavi_test::GreyImage(1, 1);
    image.bands[0].luts = {Table(4, 1), Table(4, 2), Table(4, 3)};
    image.fields["NLUTS[0]"] = text;
    ImageRead read;
    Read(read, image);
    ASSERT_EQ(read.status, SUCCESS) << text;
    ExpectLut(read.record, Table(4, 1), Table(4, 2), Table(4, 3));
    EXPECT_STREQ(read.record.Text.ILOC, "0000000000") << "what follows is in step";
  }
}

// Of four tables the fourth is misread as what follows: its bytes are ISYNC and IMODE.
TEST_F(ImageTablesTest, FourthTableIsMisreadAsTheNextFields) {
  ImageSpec image = tavi_test::GreyImage(1, 1);
  image.bands[0].luts = {Table(2, 1), Table(2, 2), Table(2, 3), {'0', 'B'}};
  ImageRead read;
  Read(read, image);
  EXPECT_STREQ(read.record.Text.ISYNC, "0");
  EXPECT_STREQ(read.record.Text.IMODE, "B");
  EXPECT_STREQ(read.record.Text.NBPR, "0B00");
}

TEST_F(ImageTablesTest, LastBandsTableWinsAndBothSizesStay) {
  ImageSpec image = tavi_test::GreyImage(1, 1);
  image.bands.assign(4, BandSpec());
  image.bands[1].luts = {Table(7, 50)};
  image.bands[2].luts = {Table(3, 90), Table(3, 91), Table(3, 92)};
  ImageRead read;
  Read(read, image);
  ASSERT_EQ(read.status, SUCCESS);
  ExpectLut(read.record, Table(3, 90), Table(3, 91), Table(3, 92));
  ASSERT_EQ(read.record.BandLutEntries.size(), 4U);
  const uint32_t kSizes[] = {0, 7, 3, 0};
  for (uint32_t band = 0; band < 4; ++band) EXPECT_EQ(read.record.BandLutEntries[band], kSizes[band]);
}

TEST_F(ImageTablesTest, TableOfNoEntriesIsNone) {
  ImageSpec image = tavi_test::GreyImage(1, 1);
  image.bands[0].luts = {Bytes{}};
  ImageRead read;
  Read(read, image);
  ASSERT_EQ(read.status, SUCCESS);
  EXPECT_EQ(read.record.BandLutCounts[0], 1U);
  ASSERT_TRUE(read.record.BandLutEntries.exists());
  EXPECT_EQ(read.record.BandLutEntries[0], 0U);
  EXPECT_FALSE(read.record.Lut.exists());
}

TEST_F(ImageTablesTest, TableThatTheFileCannotHoldIsAShortRead) {
  ImageSpec image = tavi_test::GreyImage(1, 1);
  image.bands[0].luts = {Table(4, 1)};
  for (const char* text : {"99999", "-0004"}) {
    image.fields["NELUT[0]"] = text;
    EXPECT_EQ(StatusOf(image), ERR_FILE_READ) << text;
  }
}

// ---- The data mask table ----

ImageSpec Masked(const char* ic) {
  ImageSpec image = tavi_test::GreyImage(1, 1);
  image.ic = ic;
  image.Blocks(2, 3, 1, 1);
  image.bands.assign(2, BandSpec());
  return image;
}

TEST_F(ImageTablesTest, MaskTableIsThereForSixCodes) {
  for (const char* ic : {"NC", "NM", "C0", "C1", "C2", "C3", "C4", "C5", "C6", "C8", "I1", "M0", "M1", "M2",
                         "M3", "M4", "M5", "M6", "M8"}) {
    ImageSpec image = Masked(ic);
    // What would be a table when read as one: offset 16909060, masks, a pad code of eight bits.
    if (!image.HasMaskTable()) image.pixels = Bytes{1, 2, 3, 4, 0, 4, 0, 4, 0, 8, 9};
    image.mask.imdatoff = 0x01020304;
    image.mask.bmrlnth = 0;
    image.mask.tmrlnth = 0;
    image.mask.tpxcdlnth = 0;
    ImageRead read;
    Read(read, image);
    ASSERT_EQ(read.status, SUCCESS) << ic;
    EXPECT_EQ(read.record.DataOffset, image.HasMaskTable() ? 0x01020304U : 0U) << ic;
    EXPECT_FALSE(read.record.BlockMask.exists());
    EXPECT_FALSE(read.record.PadMask.exists());
    EXPECT_FALSE(read.record.PadCode.exists());
  }
}

void ExpectMask(const tavi::MaskTable& mask, const std::vector<uint32_t>& entries) {
  ASSERT_EQ(mask.bytes.size(), entries.size() * 4 + 4) << "a zero entry behind the last";
  for (size_t i = 0; i <= entries.size(); ++i) {
    const uint32_t entry = i < entries.size() ? entries[i] : 0;
    for (size_t b = 0; b < 4; ++b) {
      EXPECT_EQ(mask.bytes[i * 4 + b], static_cast<uint8_t>(entry >> (24 - 8 * b))) << i << " " << b;
    }
    EXPECT_EQ(mask.At(i), i < entries.size() ? entry : 0xFFFFFFFFU);
  }
}

TEST_F(ImageTablesTest, MaskEntriesStayBigEndianOneForEachBlockAndBand) {
  std::vector<uint32_t> blocks;
  std::vector<uint32_t> pads;
  for (uint32_t i = 0; i < 12; ++i) {
    blocks.push_back(0x01020300 + i);
    pads.push_back(0xFF000000 + 7 * i);
  }
  for (const char mode : {'B', 'P', 'R', 'S'}) {
    ImageSpec image = Masked("NM");
    image.imode = mode;
    image.mask.block_offsets = blocks;
    image.mask.pad_offsets = pads;
    image.mask.pad_code = {0xAB};
    ImageRead read;
    Read(read, image);
    ASSERT_EQ(read.status, SUCCESS);
    EXPECT_EQ(read.record.DataOffset, 10U + 1 + 96);
    EXPECT_EQ(read.record.BlockMaskLength, 4U);
    EXPECT_EQ(read.record.PadMaskLength, 4U);
    EXPECT_EQ(read.record.PadCodeBits, 8U);
    ExpectMask(read.record.BlockMask, blocks);
    ExpectMask(read.record.PadMask, pads);
    ASSERT_EQ(read.record.PadCode.size(), 2U);
    EXPECT_EQ(read.record.PadCode[0], 0xAB);
    EXPECT_EQ(read.record.PadCode[1], 0);
  }
}

// The lengths of records decide presence only.
TEST_F(ImageTablesTest, EntriesAreFourBytesWhateverTheirLengthFieldSays) {
  ImageSpec image = Masked("M3");
  image.mask.block_offsets = {{11, 12}};
  image.mask.pad_offsets = {{13}};
  image.mask.bmrlnth = 1;
  image.mask.tmrlnth = 0xFFFF;
  ImageRead read;
  Read(read, image);
  ASSERT_EQ(read.status, SUCCESS);
  EXPECT_EQ(read.record.BlockMaskLength, 1U);
  EXPECT_EQ(read.record.PadMaskLength, 0xFFFFU);
  EXPECT_EQ(read.record.BlockMask.At(1), 12U);
  EXPECT_EQ(read.record.PadMask.At(0), 13U);
}

TEST_F(ImageTablesTest, PadMaskStandsAloneToo) {
  ImageSpec image = Masked("NM");
  image.mask.pad_offsets = {{5, 6, 7}};
  ImageRead read;
  Read(read, image);
  ASSERT_EQ(read.status, SUCCESS);
  EXPECT_FALSE(read.record.BlockMask.exists());
  EXPECT_EQ(read.record.PadMask.At(2), 7U);
}

TEST_F(ImageTablesTest, PadCodeTakesWholeBytes) {
  const std::pair<uint16_t, size_t> kCases[] = {{0, 0},  {1, 1},  {7, 1},  {8, 1}, {9, 2},
                                                {12, 2}, {16, 2}, {17, 3}, {64, 8}};
  for (const auto& [bits, bytes] : kCases) {
    ImageSpec image = Masked("M5");
    image.mask.tpxcdlnth = bits;
    image.mask.pad_code = Bytes(bytes, 0x21);
    image.mask.block_offsets = {{0x11223344}};
    ImageRead read;
    Read(read, image);
    ASSERT_EQ(read.status, SUCCESS);
    EXPECT_EQ(read.record.PadCode.exists(), bits != 0);
    if (bits != 0) {
      ASSERT_EQ(read.record.PadCode.size(), bytes + 1);
      EXPECT_EQ(read.record.PadCode[bytes], 0);
    }
    EXPECT_EQ(read.record.BlockMask.At(0), 0x11223344U) << "what follows is in step";
  }
}

TEST_F(ImageTablesTest, MaskThatTheFileCannotHoldIsAShortRead) {
  ImageSpec image = Masked("NM");
  image.mask.block_offsets = {{1}};
  image.fields["NBPR"] = "9998";
  image.fields["NBPC"] = "9998";
  EXPECT_EQ(StatusOf(image), ERR_FILE_READ);
  image.fields["NBPR"] = "-001";
  EXPECT_EQ(StatusOf(image), ERR_FILE_READ);
  image.fields["NBPC"] = "-001";
  EXPECT_EQ(StatusOf(image), ERR_FILE_READ);
}

TEST_F(ImageTablesTest, MaskOfNoBlocksHoldsTheZeroEntryAlone) {
  ImageSpec image = Masked("NM");
  image.mask.block_offsets = std::vector<uint32_t>();
  image.mask.exact_tables = true;
  image.fields["NBPR"] = "0000";
  ImageRead read;
  Read(read, image);
  ASSERT_EQ(read.status, SUCCESS);
  ExpectMask(read.record.BlockMask, {});
}

}  // namespace

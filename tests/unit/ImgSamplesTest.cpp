// Sample conversion by depth, the range scan, and the reserved rows of real values.
#include "ImgSamples.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <limits>
#include <random>

#include "UnitTest.h"

namespace {

using tavi_test::BuiltFile;
using tavi_test::Bytes;
using tavi_test::NtfBuilder;
using namespace unit;

// ---- A literal restatement of the conversion, one sample at a time ----

uint32_t BigEndian32(const uint8_t* p) {
  return static_cast<uint32_t>(p[0]) * 16777216U + static_cast<uint32_t>(p[1]) * 65536U +
         static_cast<uint32_t>(p[2]) * 256U + p[3];
}

void ReferenceRepack(Bytes& row, size_t length) {
  for (size_t group = 0; group < (length - 1) / 3 + 1; ++group) {
    uint8_t* p = row.data() + group * 3;
    const int a = p[0];
    const int b = p[1];
    const int c = p[2];
    p[0] = static_cast<uint8_t>(((a << 4) & 0xFF) | (b >> 4));
    p[1] = static_cast<uint8_t>(((c << 4) & 0xFF) | (a >> 4));
    p[2] = static_cast<uint8_t>(((b << 4) & 0xFF) | (c >> 4));
  }
}

void ReferenceNormalise(Bytes& row, size_t length, int32_t minimum, int32_t maximum) {
  const auto d = static_cast<int32_t>(static_cast<uint32_t>(maximum) - static_cast<uint32_t>(minimum));
  for (size_t i = 0; i < length; ++i) {
    const uint32_t value = BigEndian32(&row[4 * i]);
    std::memcpy(&row[4 * i], &value, 4);
    const double r = (value * 255.0 - minimum * 255.0) / d;
    row[i] = d == 0 ? uint8_t{0} : static_cast<uint8_t>(static_cast<int64_t>(std::trunc(r)));
  }
}

void ReferenceRescale(Bytes& row, size_t length, uint32_t nbpp, uint32_t abpp) {
  const auto m = static_cast<uint32_t>(std::pow(2.0, nbpp) - 1) & 0xFFFF;
  const auto d = static_cast<int64_t>(std::pow(2.0, abpp) - 1) & 0xFFFF;
  for (size_t i = 0; i < length / 2; ++i) {
    const uint32_t w = row[2 * i] * 256U + row[2 * i + 1];
    const auto product = static_cast<int32_t>(w * m);  // wraps at 32 bits
    const int64_t quotient = product / d;
    row[2 * i] = static_cast<uint8_t>(quotient & 0xFF);
    row[2 * i + 1] = static_cast<uint8_t>((quotient >> 8) & 0xFF);
  }
}

void ReferenceConvert(Bytes& row, uint32_t nbpp, uint32_t abpp, size_t length, int32_t minimum,
                      int32_t maximum) {
  if (abpp == nbpp) {
    if (nbpp == 12 && length >= 1) ReferenceRepack(row, length);
  } else if (nbpp >= 17 && nbpp <= 32) {
    ReferenceNormalise(row, length, minimum, maximum);
  } else if (abpp >= 9 && abpp <= 16 && nbpp <= 16) {
    ReferenceRescale(row, length, nbpp, abpp);
  }
}

Bytes RandomBytes(size_t size, uint32_t seed) {
  std::mt19937 random(seed);
  Bytes bytes(size);
  for (uint8_t& byte : bytes) byte = static_cast<uint8_t>(random());
  return bytes;
}

Bytes Converted(Bytes row, uint32_t nbpp, uint32_t abpp, uint64_t length, int32_t minimum = 0,
                int32_t maximum = 0) {
  row.resize(std::max<size_t>(row.size(), tavi::ConversionExtent(nbpp, abpp, length)));
  EXPECT_EQ(tavi::ConvertSamples(row.data(), nbpp, abpp, length, minimum, maximum), SUCCESS);
  return row;
}

class ConvertSamplesTest : public UnitTest {};

// All two-digit depths, all short lengths: what is not in the table is left alone.
TEST_F(ConvertSamplesTest, EveryPairOfDepthsFollowsTheTable) {
  const std::pair<int32_t, int32_t> kRanges[] = {{0, 0}, {0, 255}, {-100, 1000}};
  for (uint32_t nbpp = 0; nbpp <= 99; ++nbpp) {
    for (uint32_t abpp = 0; abpp <= 99; ++abpp) {
      for (const size_t length : {0, 1, 2, 3, 4, 5, 8, 13}) {
        for (const auto& [minimum, maximum] : kRanges) {
          // As large as the conversion says it needs, so that a byte beyond is one too many.
          const Bytes row =
              RandomBytes(static_cast<size_t>(tavi::ConversionExtent(nbpp, abpp, length)), nbpp * 100 + abpp);
          Bytes expected = row;
          ReferenceConvert(expected, nbpp, abpp, length, minimum, maximum);
          Bytes actual = row;
          tavi::ConvertSamples(actual.data(), nbpp, abpp, length, minimum, maximum);
          ASSERT_EQ(actual, expected) << "NBPP " << nbpp << " ABPP " << abpp << " length " << length;
          if (!tavi::NeedsConversion(nbpp, abpp)) {
            ASSERT_EQ(actual, row);
          }
        }
      }
    }
  }
}

TEST_F(ConvertSamplesTest, LongRowsOfEachKind) {
  const std::pair<uint32_t, uint32_t> kDepths[] = {{12, 12}, {17, 9},  {24, 16}, {32, 24},
                                                   {32, 8},  {16, 12}, {8, 9},   {12, 11}};
  const std::pair<int32_t, int32_t> kRanges[] = {
      {0, 0},
      {0, std::numeric_limits<int32_t>::max()},
      {std::numeric_limits<int32_t>::min(), std::numeric_limits<int32_t>::max()},
      {5, 4},
      {-1, -1}};
  for (const auto& [nbpp, abpp] : kDepths) {
    for (const auto& [minimum, maximum] : kRanges) {
      constexpr size_t kLength = 4099;
      Bytes row = RandomBytes(static_cast<size_t>(tavi::ConversionExtent(nbpp, abpp, kLength)), nbpp);
      Bytes expected = row;
      ReferenceConvert(expected, nbpp, abpp, kLength, minimum, maximum);
      tavi::ConvertSamples(row.data(), nbpp, abpp, kLength, minimum, maximum);
      EXPECT_EQ(row == expected, true) << nbpp << "/" << abpp << " from " << minimum << " to " << maximum;
    }
  }
}

TEST_F(ConvertSamplesTest, TwelveBitPairsBecomeLowNibbleFirst) {
  // Samples 0xABC and 0xDEF, packed most significant first.
  EXPECT_EQ(Converted({0xAB, 0xCD, 0xEF}, 12, 12, 3), (Bytes{0xBC, 0xFA, 0xDE}));
}

// Every length begins a group of three of its own.
TEST_F(ConvertSamplesTest, RepackTakesWholeGroups) {
  const Bytes row = {0x12, 0x34, 0x56, 0x78, 0x9A, 0xBC};
  EXPECT_EQ(Converted(row, 12, 12, 0), row);
  EXPECT_EQ(Converted(row, 12, 12, 1), (Bytes{0x23, 0x61, 0x45, 0x78, 0x9A, 0xBC}));
  EXPECT_EQ(Converted(row, 12, 12, 3), (Bytes{0x23, 0x61, 0x45, 0x78, 0x9A, 0xBC}));
  EXPECT_EQ(Converted(row, 12, 12, 4), (Bytes{0x23, 0x61, 0x45, 0x89, 0xC7, 0xAB}));
  EXPECT_EQ(tavi::ConversionExtent(12, 12, 4), 6U);
}

TEST_F(ConvertSamplesTest, EqualDepthsStayBigEndian) {
  const Bytes row = {1, 2, 3, 4, 5, 6, 7, 8};
  for (const uint32_t depth : {8U, 16U, 24U, 32U, 64U}) EXPECT_EQ(Converted(row, depth, depth, 2), row);
}

TEST_F(ConvertSamplesTest, FullScaleOfTwelveActualBitsIsFullScaleOfSixteen) {
  EXPECT_EQ(Converted({0x0F, 0xFF}, 16, 12, 2), (Bytes{0xFF, 0xFF}));
  EXPECT_EQ(Converted({0x00, 0x00}, 16, 12, 2), (Bytes{0x00, 0x00}));
  // 2048 x 65535 / 4095 = 32775 = 0x8007, little-endian
  EXPECT_EQ(Converted({0x08, 0x00}, 16, 12, 2), (Bytes{0x07, 0x80}));
}

TEST_F(ConvertSamplesTest, SampleBeyondTheActualBitsKeepsItsLowSixteenBits) {
  // 4096 x 65535 / 4095 = 65551 = 0x1000F
  EXPECT_EQ(Converted({0x10, 0x00}, 16, 12, 2), (Bytes{0x0F, 0x00}));
  // 65535 x 65535 wraps to -131071; / 4095 truncates to -32
  EXPECT_EQ(Converted({0xFF, 0xFF}, 16, 12, 2), (Bytes{0xE0, 0xFF}));
}

TEST_F(ConvertSamplesTest, OddByteOfTheLastWordIsLeftAlone) {
  EXPECT_EQ(Converted({0x0F, 0xFF, 0x0F}, 16, 12, 3), (Bytes{0xFF, 0xFF, 0x0F}));
}

TEST_F(ConvertSamplesTest, NothingClampsWhenNormalising) {
  EXPECT_EQ(Converted({0, 0, 0, 255, 0, 0, 1, 0, 0, 0, 0, 7}, 32, 24, 3, 0, 255)[0], 255);
  EXPECT_EQ(Converted({0, 0, 0, 255, 0, 0, 1, 0, 0, 0, 0, 7}, 32, 24, 3, 0, 255)[1], 0)
      << "256, its low byte";
  EXPECT_EQ(Converted({0, 0, 0, 255, 0, 0, 1, 0, 0, 0, 0, 7}, 32, 24, 3, 0, 255)[2], 7);
}

TEST_F(ConvertSamplesTest, SampleBelowTheMinimumWrapsBelowZero) {
  // (10 - 20) x 255 / 255 = -10
  EXPECT_EQ(Converted({0, 0, 0, 10}, 32, 24, 1, 20, 275)[0], 0xF6);
}

TEST_F(ConvertSamplesTest, TopBitCountsAsLargeWhenNormalising) {
  // 2^31 x 255 / 2^30 = 510 = 0x1FE
  EXPECT_EQ(Converted({0x80, 0, 0, 0}, 32, 24, 1, 0, 0x40000000)[0], 0xFE);
}

TEST_F(ConvertSamplesTest, RangeOfNothingGivesZero) {
  for (const int32_t bound : {0, -1, 77}) {
    const Bytes row = Converted({0, 0, 0, 77, 1, 2, 3, 4}, 32, 24, 2, bound, bound);
    EXPECT_EQ(row[0], 0);
    EXPECT_EQ(row[1], 0);
  }
}

TEST_F(ConvertSamplesTest, NormalisingTakesFourBytesForOneWhateverTheDepth) {
  EXPECT_EQ(tavi::ConversionExtent(17, 8, 10), 40U);
  EXPECT_EQ(tavi::ConversionExtent(32, 24, 10), 40U);
  EXPECT_EQ(tavi::ConversionExtent(32, 32, 10), 10U);
  EXPECT_EQ(tavi::ConversionExtent(16, 12, 10), 10U);
}

// The index of the range of values would pass its table's end: no conversion.
TEST_F(ConvertSamplesTest, ContainersAboveThirtyTwoBitsAreLeftAlone) {
  const Bytes row = {1, 2, 3, 4, 5, 6, 7, 8};
  for (const uint32_t actual : {9U, 12U, 16U}) EXPECT_EQ(Converted(row, 64, actual, 8), row);
  EXPECT_FALSE(tavi::NeedsConversion(64, 12));
}

// ---- The range scan ----

class ScanTest : public UnitTest {
 protected:
  struct Range {
    int32_t status;
    int32_t minimum;
    int32_t maximum;
  };
  // Scans `length` bytes of the data of the second image of a file.
  Range Scan(const Bytes& data, uint32_t length, int32_t minimum = -1, int32_t maximum = -1) {
    NtfBuilder builder({tavi_test::GreyImage(3, 1), tavi_test::GreyImage(1, 1)});
    builder.images[1].pixels = data;
    NitfFile d;
    const int32_t opened = tavi::OpenNitfFile(d, builder.Build().Write(directory()).c_str());
    EXPECT_EQ(opened, SUCCESS);
    Range range = {0, minimum, maximum};
    range.status = tavi::ScanSampleRange(range.minimum, range.maximum, length, d, 1);
    return range;
  }
  // Values are taken from the start of each chunk of 50,000 bytes; what is left over in one is skipped.
  static std::pair<int32_t, int32_t> Reference(const Bytes& data, size_t length) {
    int32_t minimum = std::numeric_limits<int32_t>::max();
    int32_t maximum = std::numeric_limits<int32_t>::min();
    for (size_t chunk = 0; chunk < length; chunk += 50000) {
      const size_t end = std::min(chunk + 50000, length);
      for (size_t i = chunk; i + 4 <= end; i += 4) {
        const auto value = static_cast<int32_t>(BigEndian32(&data[i]));
        minimum = std::min(minimum, value);
        maximum = std::max(maximum, value);
      }
    }
    return {minimum, maximum};
  }
};

Bytes Values(std::initializer_list<uint32_t> values) {
  Bytes bytes;
  for (const uint32_t value : values) {
    for (int shift = 24; shift >= 0; shift -= 8) bytes.push_back(static_cast<uint8_t>(value >> shift));
  }
  return bytes;
}

TEST_F(ScanTest, FindsSmallestAndLargestBigEndianValue) {
  const Range range = Scan(Values({300, 17, 65536, 42}), 16);
  EXPECT_EQ(range.status, SUCCESS);
  EXPECT_EQ(range.minimum, 17);
  EXPECT_EQ(range.maximum, 65536);
}

TEST_F(ScanTest, TopBitCountsAsNegative) {
  const Range range = Scan(Values({5, 0x80000000, 7}), 12);
  EXPECT_EQ(range.minimum, std::numeric_limits<int32_t>::min());
  EXPECT_EQ(range.maximum, 7);
}

TEST_F(ScanTest, IsSeededWithTheFirstValueOnlyFromAllOnes) {
  EXPECT_EQ(Scan(Values({50, 60}), 8).minimum, 50);
  const Range unseeded = Scan(Values({50, 60}), 8, 0, 0);
  EXPECT_EQ(unseeded.minimum, 0);
  EXPECT_EQ(unseeded.maximum, 60);
  const Range half = Scan(Values({50, 60}), 8, -1, 55);
  EXPECT_EQ(half.minimum, -1);
  EXPECT_EQ(half.maximum, 60);
}

TEST_F(ScanTest, DataOfAllOnesAreSeededAgainInTheNextChunk) {
  Bytes data(50000, 0xFF);
  const Bytes more = Values({1000, 2000});
  data.insert(data.end(), more.begin(), more.end());
  const Range range = Scan(data, 50008);
  EXPECT_EQ(range.minimum, 1000);
  EXPECT_EQ(range.maximum, 2000);
}

TEST_F(ScanTest, ChunksAndTheirRests) {
  const Bytes data = RandomBytes(150007, 7);
  for (const size_t length : {4, 5, 7, 49999, 50000, 50001, 50003, 50004, 99998, 100000, 100003, 150007}) {
    const Range range = Scan(data, static_cast<uint32_t>(length));
    const auto [minimum, maximum] = Reference(data, length);
    EXPECT_EQ(range.status, SUCCESS);
    EXPECT_EQ(range.minimum, minimum) << length;
    EXPECT_EQ(range.maximum, maximum) << length;
  }
}

TEST_F(ScanTest, LeftoverBytesAreSkipped) {
  const Range range = Scan({0, 0, 0, 9, 0x7F, 0xFF, 0xFF}, 7);
  EXPECT_EQ(range.minimum, 9);
  EXPECT_EQ(range.maximum, 9);
}

TEST_F(ScanTest, NoDataEndsAtOnce) {
  const Range range = Scan({}, 0);
  EXPECT_EQ(range.status, SUCCESS);
  EXPECT_EQ(range.minimum, -1);
  EXPECT_EQ(range.maximum, -1);
}

TEST_F(ScanTest, LessThanOneValueReadsNoFurther) {
  for (const uint32_t length : {1U, 2U, 3U}) EXPECT_EQ(Scan(Bytes(length, 5), length).status, SUCCESS);
}

TEST_F(ScanTest, DataThatEndTooEarlyAreAShortRead) {
  EXPECT_EQ(Scan(Values({1, 2}), 9).status, ERR_FILE_READ);
  EXPECT_EQ(Scan(Values({1, 2}), 0xFFFFFFFF).status, ERR_FILE_READ);
  // What whole chunks have given stays.
  const Range range = Scan(Bytes(60000, 1), 100001);
  EXPECT_EQ(range.status, ERR_FILE_READ);
  EXPECT_EQ(range.minimum, 0x01010101);
  EXPECT_EQ(range.maximum, 0x01010101);
}

// ---- Real values, for the reserved pixel type ----

class RealRowTest : public UnitTest {};

TEST_F(RealRowTest, FloatRowsOfTheReservedRangeAreZero) {
  Bytes row = Values({0, 1, 1000, 0x3F800000, 0x7FFFFFFF, 0xFFFFFFFF, 0x80000000});
  tavi::ConvertFloatRow(row.data(), 7, 32, -1.0F, -1.0F);
  EXPECT_EQ(Bytes(row.begin(), row.begin() + 7), Bytes(7, 0));
}

TEST_F(RealRowTest, DoubleRowsOfTheReservedRangeAreZero) {
  Bytes row = RandomBytes(7 * 8, 3);
  tavi::ConvertDoubleRow(row.data(), 7, 64, -1.0, -1.0);
  EXPECT_EQ(Bytes(row.begin(), row.begin() + 7), Bytes(7, 0));
}

// The integer's value counts, not its bit pattern: 0x3F800000 is over a thousand million, not one.
TEST_F(RealRowTest, FloatRowsScaleTheIntegersValue) {
  Bytes row = Values({0, 50, 100, 101, 25, 0x3F800000});
  tavi::ConvertFloatRow(row.data(), 6, 32, 0.0F, 100.0F);
  EXPECT_EQ(row[0], 0);
  EXPECT_EQ(row[1], 127) << "127.5, truncated";
  EXPECT_EQ(row[2], 255);
  EXPECT_EQ(row[3], 1) << "257.55, its low byte";
  EXPECT_EQ(row[4], 63) << "63.75";
  EXPECT_EQ(row[5], static_cast<uint8_t>(static_cast<int64_t>(1065353216.0F * 255.0F / 100.0F)));
}

TEST_F(RealRowTest, FloatRowsTakeTheMinimumOff) {
  Bytes row = Values({10, 20, 15, 5});
  tavi::ConvertFloatRow(row.data(), 4, 32, 10.0F, 20.0F);
  EXPECT_EQ(row[0], 0);
  EXPECT_EQ(row[1], 255);
  EXPECT_EQ(row[2], 127);
  EXPECT_EQ(row[3], static_cast<uint8_t>(-127)) << "-127.5, truncated toward zero";
}

// Single precision: 2^24 + 1 cannot be told from 2^24.
TEST_F(RealRowTest, FloatRowsAreSinglePrecision) {
  Bytes row = Values({16777217, 16777216});
  tavi::ConvertFloatRow(row.data(), 2, 32, 16777215.0F, 16777217.0F);
  EXPECT_EQ(row[0], row[1]);
}

// Only the low half of the eight bytes is left of a double: far below anything that single precision holds.
TEST_F(RealRowTest, DoubleRowsComeOutAsTheValueZero) {
  for (const auto& [minimum, maximum, expected] : {std::tuple{-50.0, 50.0, 127}, std::tuple{0.0, 1.0, 0},
                                                   std::tuple{-1.0, 0.0, 255}, std::tuple{-2.0, -1.0, 254}}) {
    Bytes row;
    for (const double value : {0.0, 1.0, -7.5, 1e300}) {
      uint8_t bytes[8];
      std::memcpy(bytes, &value, 8);
      row.insert(row.end(), bytes, bytes + 8);
    }
    const Bytes counting = {1, 2, 3, 4, 5, 6, 7, 8};
    row.insert(row.end(), counting.begin(), counting.end());
    tavi::ConvertDoubleRow(row.data(), 5, 64, minimum, maximum);
    EXPECT_EQ(Bytes(row.begin(), row.begin() + 5), Bytes(5, static_cast<uint8_t>(expected))) << minimum;
  }
}

TEST_F(RealRowTest, NoSamplesTouchNothing) {
  tavi::ConvertFloatRow(nullptr, 0, 32, 0, 1);
  tavi::ConvertDoubleRow(nullptr, 0, 64, 0, 1);
  EXPECT_EQ(tavi::ConvertSamples(nullptr, 16, 12, 0, 0, 0), SUCCESS);
  EXPECT_EQ(tavi::ConvertSamples(nullptr, 12, 12, 0, 0, 0), SUCCESS);
  EXPECT_EQ(tavi::ConvertSamples(nullptr, 32, 8, 0, 0, 0), SUCCESS);
}

}  // namespace

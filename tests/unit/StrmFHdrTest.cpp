// The streaming file header: finding it and reading it.
#include "StrmFHdr.h"

#include <gtest/gtest.h>

#include "UnitTest.h"

namespace {

using tavi::StrmFHdr;
using namespace unit;

const std::string kFirst = "\x0A\x6E\x1D\x97";
const std::string kSecond = "\x0E\xCA\x14\xBF";

// ---- The search ----

class LocateTest : public UnitTest {
 protected:
  // A file that the test writes into while it is open.
  void Create(NitfFile& d, const std::string& bytes) {
    d.File = HostFileOpen((directory() / "search.bin").wstring().c_str(), 33538, 128);
    ASSERT_NE(d.File, -1);
    Put(d, 0, bytes);
    d.SourceSize = static_cast<int64_t>(bytes.size());
  }
  static void Put(const NitfFile& d, int64_t at, const std::string& bytes) {
    HostFileSeek(d.File, at, 0);
    ASSERT_EQ(HostFileWrite(d.File, bytes.data(), bytes.size()), bytes.size());
  }
};

TEST_F(LocateTest, FileWithoutADelimiterIsRefused) {
  for (const size_t size : {0, 1, 3, 4, 5, 252, 254, 255, 256, 258, 259, 506, 507, 508, 2000}) {
    NitfFile d;
    Create(d, std::string(size, 'x'));
    StrmFHdr stream;
    uint32_t tail = 0;
    EXPECT_EQ(tavi::LocateStreamingHeader(d, stream, tail), ERR_INVALID_PARAMETER) << size;
    EXPECT_EQ(tail, 0U);
  }
}

TEST_F(LocateTest, NoFileIsRefused) {
  NitfFile d;
  StrmFHdr stream;
  uint32_t tail = 0;
  EXPECT_EQ(tavi::LocateStreamingHeader(d, stream, tail), ERR_INVALID_PARAMETER);
}

TEST_F(LocateTest, PartOfADelimiterIsNone) {
  for (const char* end : {"\x0A\x6E\x1D", "\x6E\x1D\x97", "\x0A\x6E\x1D\x96", "\x0A\x0A\x6E\x1D"}) {
    NitfFile d;
    Create(d, std::string(600, 'x') + end);
    StrmFHdr stream;
    uint32_t tail = 0;
    EXPECT_EQ(tavi::LocateStreamingHeader(d, stream, tail), ERR_INVALID_PARAMETER);
  }
}

// Among these distances are all that straddle the seams between two chunks.
TEST_F(LocateTest, DelimiterIsFoundAtEveryDistanceFromTheEnd) {
  constexpr int64_t kSize = 1200;
  NitfFile d;
  Create(d, std::string(kSize, 'x'));
  for (int64_t distance = 4; distance <= kSize - 207; ++distance) {
    Put(d, kSize - distance, kFirst);
    StrmFHdr stream;
    uint32_t tail = 0;
    ASSERT_EQ(tavi::LocateStreamingHeader(d, stream, tail), ERR_FILE_FORMAT) << distance;
    ASSERT_EQ(tail, distance - 4);
    Put(d, kSize - distance, "xxxx");
  }
}

TEST_F(LocateTest, DelimiterAcrossTheSeamOfTwoChunksIsFound) {
  for (int64_t before = 1; before <= 3; ++before) {  // bytes of it before the last chunk
    NitfFile d;
    Create(d, std::string(1000, 'x'));
    Put(d, 1000 - 255 - before, kFirst);
    StrmFHdr stream;
    uint32_t tail = 0;
    EXPECT_EQ(tavi::LocateStreamingHeader(d, stream, tail), ERR_FILE_FORMAT);
    EXPECT_EQ(tail, 251U + before);
  }
}

TEST_F(LocateTest, ZeroByteHidesWhatStandsBehindItInItsChunk) {
  struct {
    int64_t zero;  // distance from the end
    bool found;
  } const kCases[] = {{101, false}, {150, false}, {255, false}, {256, true}, {96, true}, {1, true}};
  for (const auto& c : kCases) {
    NitfFile d;
    Create(d, std::string(1000, 'x'));
    Put(d, 900, kFirst);
    Put(d, 1000 - c.zero, std::string(1, '\0'));
    StrmFHdr stream;
    uint32_t tail = 0;
    EXPECT_EQ(tavi::LocateStreamingHeader(d, stream, tail), c.found ? ERR_FILE_FORMAT : ERR_INVALID_PARAMETER)
        << c.zero;
  }
}

// The search runs backwards over the chunks, and forwards within each.
TEST_F(LocateTest, LastChunkWinsAndInItTheFirstDelimiter) {
  NitfFile d;
  Create(d, std::string(1000, 'x'));
  Put(d, 500, kFirst);
  Put(d, 800, kFirst);
  Put(d, 900, kFirst);
  StrmFHdr stream;
  uint32_t tail = 0;
  EXPECT_EQ(tavi::LocateStreamingHeader(d, stream, tail), ERR_FILE_FORMAT);
  EXPECT_EQ(tail, 196U);
}

TEST_F(LocateTest, HiddenDelimiterLeavesTheOneInAnotherChunk) {
  NitfFile d;
  Create(d, std::string(1000, 'x'));
  Put(d, 500, kFirst);
  Put(d, 880, std::string(1, '\0'));
  Put(d, 900, kFirst);
  StrmFHdr stream;
  uint32_t tail = 0;
  EXPECT_EQ(tavi::LocateStreamingHeader(d, stream, tail), ERR_FILE_FORMAT);
  EXPECT_EQ(tail, 496U);
}

TEST_F(LocateTest, DelimiterNearTheFilesStartIsNoStreamingHeader) {
  for (const int64_t at : {0, 1, 100, 206}) {
    NitfFile d;
    Create(d, std::string(240, 'x'));
    Put(d, at, kFirst);
    StrmFHdr stream;
    uint32_t tail = 0;
    EXPECT_LT(tavi::LocateStreamingHeader(d, stream, tail), SUCCESS) << at;
  }
}

// ---- The streaming header itself ----

class ReadStreamTest : public LocateTest {
 protected:
  int32_t Read(StrmFHdr& stream, const std::string& bytes) {
    NitfFile d;
    Create(d, "before" + bytes);
    HostFileSeek(d.File, 6, 0);
    const int32_t status = tavi::ReadStreamingHeader(stream, d);
    position_ = Position(d);
    return status;
  }
  int64_t position_ = 0;
};

TEST_F(ReadStreamTest, FieldsAreKeptAndThePositionIsRestored) {
  StrmFHdr stream;
  ASSERT_EQ(Read(stream, "0000005" + kFirst + "abcde" + kSecond + "0000005"), SUCCESS);
  EXPECT_EQ(stream.ReplacementLength, 5U);
  EXPECT_EQ(stream.TrailingLength, 5U);
  EXPECT_EQ(stream.FirstDelimiter, kFirst);
  EXPECT_EQ(stream.SecondDelimiter, kSecond);
  ASSERT_EQ(stream.ReplacementData.size(), 6U);
  EXPECT_STREQ(reinterpret_cast<const char*>(stream.ReplacementData.data()), "abcde");
  EXPECT_EQ(position_, 6);
}

TEST_F(ReadStreamTest, NewRecordIsEmpty) {
  const StrmFHdr stream;
  EXPECT_EQ(stream.ReplacementLength, 0U);
  EXPECT_EQ(stream.TrailingLength, 0U);
  EXPECT_EQ(std::string(stream.FirstDelimiter, 5), std::string(5, '\0'));
  EXPECT_EQ(std::string(stream.SecondDelimiter, 5), std::string(5, '\0'));
  EXPECT_FALSE(stream.ReplacementData.exists());
}

TEST_F(ReadStreamTest, EmptyReplacementData) {
  StrmFHdr stream;
  ASSERT_EQ(Read(stream, "0000000" + kFirst + kSecond + "0000000"), SUCCESS);
  EXPECT_EQ(stream.ReplacementLength, 0U);
}

TEST_F(ReadStreamTest, WhatIsWrongDecidesTheStatus) {
  const std::string whole = "0000005" + kFirst + "abcde" + kSecond + "0000005";
  for (size_t kept = 0; kept < whole.size(); ++kept) {
    StrmFHdr stream;
    EXPECT_EQ(Read(stream, whole.substr(0, kept)), ERR_FILE_READ) << kept;
  }
  StrmFHdr stream;
  EXPECT_EQ(Read(stream, "0000005" + kSecond + "abcde" + kSecond + "0000005"), ERR_FILE_FORMAT);
  EXPECT_EQ(Read(stream, "0000005" + kFirst + "abcde" + kFirst + "0000005"), ERR_FILE_FORMAT);
  EXPECT_EQ(Read(stream, "0000005" + kFirst + "abcde" + kSecond + "0000006"), ERR_FILE_FORMAT);
  EXPECT_EQ(Read(stream, "0000006" + kFirst + "abcde" + kSecond + "0000006" + "xx"), ERR_FILE_FORMAT);
  EXPECT_EQ(Read(stream, "9999999" + kFirst + "abcde" + kSecond + "9999999"), ERR_FILE_READ);
  EXPECT_EQ(Read(stream, "-000005" + kFirst + "abcde" + kSecond + "-000005"), ERR_FILE_READ);
}

}  // namespace

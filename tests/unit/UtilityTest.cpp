// Field texts: numbers in and out of fixed-width fields, and the count of tagged records.
#include "Utility.h"

#include <gtest/gtest.h>

#include <cstring>
#include <limits>
#include <string>
#include <vector>

#include "NtfBuilder.h"
#include "TaviStatus.h"

namespace {

using tavi::CountTres;
using tavi::FormatNumericField;
using tavi::ParseInteger;
using tavi::ParseLocationPair;
using tavi::SetFixedText;

// A buffer of rubbish: a byte that an operation forgets to write, or writes beyond its field, shows.
struct Buffer {
  char bytes[64];
  Buffer() { std::memset(bytes, '~', sizeof bytes); }
  std::string First(size_t n) const { return {bytes, n}; }
};

std::string Formatted(uint32_t width, int32_t value) {
  Buffer buffer;
  EXPECT_EQ(FormatNumericField(buffer.bytes, width, value), SUCCESS);
  EXPECT_EQ(buffer.bytes[width], '\0');
  EXPECT_EQ(buffer.bytes[width + 1], '~') << "beyond the field";
  return buffer.First(width);
}

TEST(FormatNumericFieldTest, RightJustifiesWithZeros) {
  EXPECT_EQ(Formatted(12, 388), "000000000388");
  EXPECT_EQ(Formatted(3, 7), "007");
}

TEST(FormatNumericFieldTest, ZeroIsAllZeros) {
  EXPECT_EQ(Formatted(1, 0), "0");
  EXPECT_EQ(Formatted(5, 0), "00000");
}

TEST(FormatNumericFieldTest, ValueOfTheWidthFillsTheField) {
  EXPECT_EQ(Formatted(3, 999), "999");
  EXPECT_EQ(Formatted(10, std::numeric_limits<int32_t>::max()), "2147483647");
  EXPECT_EQ(Formatted(11, std::numeric_limits<int32_t>::min()), "-2147483648");
}

TEST(FormatNumericFieldTest, NegativeKeepsItsSignAmongTheDigits) {
  EXPECT_EQ(Formatted(4, -5), "00-5");
  EXPECT_EQ(Formatted(3, -12), "-12");
}

TEST(FormatNumericFieldTest, ValueTooWideKeepsTheFieldsWidth) {
  EXPECT_EQ(Formatted(3, 12345), "123");
  EXPECT_EQ(Formatted(1, -7), "-");
  EXPECT_EQ(Formatted(0, 7), "");
}

TEST(SetFixedTextTest, LeftJustifiesWithBlanks) {
  Buffer buffer;
  EXPECT_EQ(SetFixedText(buffer.bytes, 6, "abc"), SUCCESS);
  EXPECT_EQ(buffer.First(8), std::string("abc   \0~", 8));
}

TEST(SetFixedTextTest, EmptyTextLeavesAllBlanks) {
  Buffer buffer;
  EXPECT_EQ(SetFixedText(buffer.bytes, 4, ""), SUCCESS);
  EXPECT_EQ(buffer.First(6), std::string("    \0~", 6));
}

TEST(SetFixedTextTest, TextOfTheWidthLeavesNoBlankAndKeepsTheNul) {
  Buffer buffer;
  EXPECT_EQ(SetFixedText(buffer.bytes, 4, "wxyz"), SUCCESS);
  EXPECT_EQ(buffer.First(6), std::string("wxyz\0~", 6));
}

TEST(SetFixedTextTest, TextLongerByOneChangesNothing) {
  Buffer buffer;
  EXPECT_EQ(SetFixedText(buffer.bytes, 4, "wxyzu"), ERR_INVALID_PARAMETER);
  EXPECT_EQ(buffer.First(64), std::string(64, '~'));
}

TEST(SetFixedTextTest, NullDestinationIsRefusedWhateverTheText) {
  EXPECT_EQ(SetFixedText(nullptr, 4, "ab"), ERR_INVALID_PARAMETER);
  EXPECT_EQ(SetFixedText(nullptr, 4, "abcdef"), ERR_INVALID_PARAMETER);
}

TEST(SetFixedTextTest, NullTextIsRefusedAndChangesNothing) {
  Buffer buffer;
  EXPECT_EQ(SetFixedText(buffer.bytes, 4, nullptr), ERR_INVALID_PARAMETER);
  EXPECT_EQ(buffer.First(8), std::string(8, '~'));
}

// ---- Tagged records ----

int32_t Count(const std::string& block) {
  // A block of exactly its own size: a read beyond it is an error that the sanitizers see.
  const std::vector<uint8_t> exact(block.begin(), block.end());
  return CountTres(exact.data(), static_cast<uint32_t>(exact.size()));
}

std::string Record(const std::string& tag, const std::string& data) {
  const tavi_test::Bytes bytes = tavi_test::Tre(tag, data);
  return {bytes.begin(), bytes.end()};
}

TEST(CountTresTest, LengthZeroDoesNotTouchThePointer) {
  EXPECT_EQ(CountTres(nullptr, 0), 0);
}

TEST(CountTresTest, RecordsOfLengthsThreeAndZeroAreTwo) {
  const std::string block = Record("ABCDEF", "123") + Record("GHIJKL", "");
  ASSERT_EQ(block.size(), 25U);
  EXPECT_EQ(Count(block), 2);
}

TEST(CountTresTest, OneRecordThatFillsTheBlock) {
  EXPECT_EQ(Count(Record("ABCDEF", "")), 1);
  EXPECT_EQ(Count(Record("ABCDEF", std::string(99999 - 11, 'x'))), 1);
}

TEST(CountTresTest, ManyRecords) {
  std::string block;
  for (size_t i = 0; i < 100; ++i) block += Record("TRE", std::string(i, '9'));
  EXPECT_EQ(Count(block), 100);
}

TEST(CountTresTest, DataOfDigitsAreNotTakenForLengths) {
  EXPECT_EQ(Count(Record("ABCDEF", "00001000010000100001") + Record("B", "7")), 2);
}

TEST(CountTresTest, RecordThatRunsPastTheEndCounts) {
  EXPECT_EQ(Count("ABCDEF00099xyz"), 1);
  EXPECT_EQ(Count(Record("A", "1") + "BBBBBB99999"), 2);
}

TEST(CountTresTest, LengthThatIsNoNumberAdvancesByEleven) {
  EXPECT_EQ(Count("ABCDEFxxxxxGHIJKLyyyyy"), 2);
  EXPECT_EQ(Count(std::string(22, '\0')), 2);
}

TEST(CountTresTest, LengthIsConvertedAsOtherTexts) {
  EXPECT_EQ(Count("ABCDEF    4wxyz"), 1);       // leading blanks
  EXPECT_EQ(Count("ABCDEF4    wxyz"), 1);       // stops behind the digit
  EXPECT_EQ(Count("ABCDEF3xxxxwxyzGHIJK"), 2);  // 3 + 11 = 14, and a second begins there
}

TEST(CountTresTest, CutOffHeadStaysInsideTheBlock) {
  for (size_t kept = 1; kept < 11; ++kept) {
    EXPECT_EQ(Count(std::string("ABCDEF00042").substr(0, kept)), 1) << kept;
    EXPECT_EQ(Count(Record("Z", "ab") + std::string("ABCDEF00042").substr(0, kept)), 2) << kept;
  }
}

TEST(CountTresTest, NegativeLengthEnds) {
  EXPECT_EQ(Count("ABCDEF-0011"), 1);
  EXPECT_EQ(Count("ABCDEF-9999GHIJKL00000"), 2);
}

// ---- Numbers ----

int32_t Parsed(const std::string& text) {
  return ParseInteger(text.data(), text.size());
}

TEST(ParseIntegerTest, Digits) {
  EXPECT_EQ(Parsed("0"), 0);
  EXPECT_EQ(Parsed("000388"), 388);
  EXPECT_EQ(Parsed("2147483647"), 2147483647);
}

TEST(ParseIntegerTest, LeadingWhiteSpaceAndOneSign) {
  EXPECT_EQ(Parsed("   12"), 12);
  EXPECT_EQ(Parsed("\t\n\v\f\r 12"), 12);
  EXPECT_EQ(Parsed("+7"), 7);
  EXPECT_EQ(Parsed(" -7"), -7);
  EXPECT_EQ(Parsed("--7"), 0);
  EXPECT_EQ(Parsed("+-7"), 0);
  EXPECT_EQ(Parsed("- 7"), 0);
}

TEST(ParseIntegerTest, StopsAtTheFirstOtherCharacter) {
  EXPECT_EQ(Parsed("12x4"), 12);
  EXPECT_EQ(Parsed("12 34"), 12);
  EXPECT_EQ(Parsed("2.9"), 2);
  EXPECT_EQ(Parsed("0-012"), 0);
  EXPECT_EQ(Parsed("0x1F"), 0);
}

TEST(ParseIntegerTest, StopsAtANul) {
  EXPECT_EQ(Parsed(std::string("12\0"
                               "34",
                               5)),
            12);
  EXPECT_EQ(Parsed(std::string("\0"
                               "34",
                               3)),
            0);
}

TEST(ParseIntegerTest, StopsAtTheFieldsWidth) {
  EXPECT_EQ(ParseInteger("123456", 3), 123);
  EXPECT_EQ(ParseInteger("-", 1), 0);
  EXPECT_EQ(ParseInteger("    5", 4), 0);
}

TEST(ParseIntegerTest, TextWithoutDigitsIsZero) {
  EXPECT_EQ(Parsed(""), 0);
  EXPECT_EQ(Parsed("     "), 0);
  EXPECT_EQ(Parsed("abc"), 0);
  EXPECT_EQ(Parsed("-"), 0);
}

TEST(ParseIntegerTest, BeyondThirtyTwoBitsGivesTheNearest) {
  EXPECT_EQ(Parsed("2147483648"), std::numeric_limits<int32_t>::max());
  EXPECT_EQ(Parsed("999999999999"), std::numeric_limits<int32_t>::max());
  EXPECT_EQ(Parsed("-2147483648"), std::numeric_limits<int32_t>::min());
  EXPECT_EQ(Parsed("-999999999999"), std::numeric_limits<int32_t>::min());
  EXPECT_EQ(Parsed(std::string(60, '9')), std::numeric_limits<int32_t>::max());
}

TEST(NumberOfTest, TakesABufferWithoutItsLastByte) {
  const char buffer[4] = {'1', '2', '3', '4'};
  EXPECT_EQ(tavi::NumberOf(buffer), 123);
}

// ---- Location pairs ----

struct PairCase {
  const char* text;
  int32_t first;
  int32_t second;
};

class LocationPairTest : public testing::TestWithParam<PairCase> {};

TEST_P(LocationPairTest, HalvesAreSigned) {
  const tavi::LocationPair pair = ParseLocationPair(GetParam().text);
  EXPECT_EQ(pair.first, GetParam().first);
  EXPECT_EQ(pair.second, GetParam().second);
}

INSTANTIATE_TEST_SUITE_P(
    All, LocationPairTest,
    testing::Values(PairCase{"0000000000", 0, 0}, PairCase{"-001200012", -12, 12},
                    PairCase{"00012-0012", 12, -12}, PairCase{"-0012-0034", -12, -34},
                    PairCase{"9999999999", 99999, 99999}, PairCase{"-9999-9999", -9999, -9999},
                    // A sign behind the first character ends the number: what the bounds setter writes.
                    PairCase{"00-1200-34", 0, 0}, PairCase{"   12  -12", 12, -12},
                    PairCase{"+0012abcde", 12, 0}, PairCase{"-    -   1", 0, 0}, PairCase{"--012--034", 0, 0},
                    PairCase{"12345-6789", 12345, -6789}));

TEST(LocationPairTest, DoesNotReadBeyondItsTenCharacters) {
  const std::vector<char> exact = {'0', '0', '0', '0', '1', '-', '0', '0', '0', '2'};
  const tavi::LocationPair pair = ParseLocationPair(exact.data());
  EXPECT_EQ(pair.first, 1);
  EXPECT_EQ(pair.second, -2);
}

// ---- Big-endian numbers and wrapping arithmetic ----

TEST(BigEndianTest, MostSignificantByteFirst) {
  const uint8_t bytes[] = {0x80, 0x01, 0xFE, 0xFF};
  EXPECT_EQ(tavi::ReadBig16(bytes), 0x8001U);
  EXPECT_EQ(tavi::ReadBig32(bytes), 0x8001FEFFU);
}

TEST(WrapTest, SumsAndProductsWrapAtThirtyTwoBits) {
  constexpr int32_t kMost = std::numeric_limits<int32_t>::max();
  constexpr int32_t kLeast = std::numeric_limits<int32_t>::min();
  EXPECT_EQ(tavi::WrapAdd(kMost, 1), kLeast);
  EXPECT_EQ(tavi::WrapAdd(kLeast, -1), kMost);
  EXPECT_EQ(tavi::WrapMultiply(65536, 65536), 0);
  EXPECT_EQ(tavi::WrapMultiply(65535, 65535), -131071);
  EXPECT_EQ(tavi::WrapMultiply(-3, 5), -15);
}

}  // namespace

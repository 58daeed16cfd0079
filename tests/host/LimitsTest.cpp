// The table of limits, and the note of the one that refused last.
#include "TaviHost.h"

#include <cctype>
#include <limits>
#include <set>
#include <string>
#include <thread>

#include "HostTest.h"

namespace tavi::test {
namespace {

constexpr uint64_t kLargest = std::numeric_limits<uint64_t>::max();
constexpr uint32_t kNoLimit = HOST_LIMIT_NONE;
constexpr uint32_t kPicture = HOST_LIMIT_PICTURE;

// All limits are as they were and the note is clear when a test ends.
class LimitsTest : public HostTest {
 protected:
  void SetUp() override {
    HostTest::SetUp();
    HostForgetLimitHit();
  }
  void TearDown() override {
    for (uint32_t limit = 1; limit <= HOST_LIMIT_COUNT; ++limit)
      HostSetLimit(limit, HostDescribeLimit(limit)->preset);
    HostForgetLimitHit();
    HostTest::TearDown();
  }
};

int32_t Create(HostBitmap* bitmap, uint32_t side) {
  return HostCreateBitmap(bitmap, sizeof *bitmap, 1, side, side, 8, 2, nullptr, 1, nullptr, 0);
}

TEST_F(LimitsTest, EachIsDescribedInALine) {
  std::set<std::string> names;
  for (uint32_t limit = 1; limit <= HOST_LIMIT_COUNT; ++limit) {
    const HostLimitRecord* const record = HostDescribeLimit(limit);
    ASSERT_NE(record, nullptr) << limit;
    const std::string name = record->name;
    EXPECT_TRUE(names.insert(name).second) << name;
    ASSERT_FALSE(name.empty());
    EXPECT_TRUE(std::islower(static_cast<unsigned char>(name.front()))) << name;
    for (const char c : name) {
      const auto octet = static_cast<unsigned char>(c);
      EXPECT_TRUE(std::islower(octet) || std::isdigit(octet)) << name;
    }
    EXPECT_FALSE(std::string(record->unit).empty()) << name;
    const std::string reason = record->reason;
    EXPECT_GT(reason.size(), 20U) << name;
    EXPECT_LT(reason.size(), 110U) << name;
    EXPECT_EQ(reason.find('\n'), std::string::npos) << name;
    EXPECT_NE(reason.back(), '.') << name;
    EXPECT_TRUE(record->status == ERR_NO_MEMORY || record->status == ERR_FILE_FORMAT) << name;
    EXPECT_GT(record->preset, 0U) << name;
    EXPECT_EQ(HostGetLimit(limit), record->preset) << name;
  }
  EXPECT_EQ(HostDescribeLimit(kNoLimit), nullptr);
  EXPECT_EQ(HostDescribeLimit(HOST_LIMIT_COUNT + 1), nullptr);
  EXPECT_EQ(HostDescribeLimit(UINT32_MAX), nullptr);
}

TEST_F(LimitsTest, EachIsSetByItself) {
  for (uint32_t limit = 1; limit <= HOST_LIMIT_COUNT; ++limit) HostSetLimit(limit, 1000 + limit);
  for (uint32_t limit = 1; limit <= HOST_LIMIT_COUNT; ++limit) {
    EXPECT_EQ(HostGetLimit(limit), 1000 + limit);
    EXPECT_NE(HostDescribeLimit(limit)->preset, 1000 + limit);
  }
  for (const uint32_t unknown : {kNoLimit, uint32_t{HOST_LIMIT_COUNT} + 1, UINT32_MAX}) {
    HostSetLimit(unknown, 7);
    EXPECT_EQ(HostGetLimit(unknown), 0U);
    EXPECT_EQ(HostWithinLimit(unknown, 0, kLargest), 0) << "nothing is allowed on the word of no limit";
    EXPECT_EQ(HostLimitHit(), kNoLimit);
  }
}

TEST_F(LimitsTest, TheOlderOperationsAreTheSameLimits) {
  HostSetBitmapLimit(11);
  HostSetVectorLimit(22);
  EXPECT_EQ(HostGetLimit(HOST_LIMIT_PICTURE), 11U);
  EXPECT_EQ(HostGetLimit(HOST_LIMIT_DRAWINGS), 22U);
  HostSetLimit(HOST_LIMIT_PICTURE, 33);
  HostSetLimit(HOST_LIMIT_DRAWINGS, 44);
  EXPECT_EQ(HostGetBitmapLimit(), 33U);
  EXPECT_EQ(HostGetVectorLimit(), 44U);
}

TEST_F(LimitsTest, TheValueAndWhatIsEarnedAreAllowedTogether) {
  HostSetLimit(HOST_LIMIT_CELLS, 100);
  EXPECT_EQ(HostWithinLimit(HOST_LIMIT_CELLS, 100, 0), 1);
  EXPECT_EQ(HostWithinLimit(HOST_LIMIT_CELLS, 150, 50), 1);
  EXPECT_EQ(HostLimitHit(), kNoLimit);
  EXPECT_EQ(HostWithinLimit(HOST_LIMIT_CELLS, 151, 50), 0);
  EXPECT_EQ(HostLimitHit(), uint32_t{HOST_LIMIT_CELLS});
  EXPECT_EQ(HostWithinLimit(HOST_LIMIT_CELLS, kLargest, kLargest - 50), 1) << "the sum does not wrap";
  HostSetLimit(HOST_LIMIT_CELLS, kLargest);
  EXPECT_EQ(HostWithinLimit(HOST_LIMIT_CELLS, kLargest, 0), 1);
  EXPECT_EQ(HostWithinLimit(HOST_LIMIT_CELLS, kLargest, kLargest), 1);
  HostSetLimit(HOST_LIMIT_CELLS, 0);
  EXPECT_EQ(HostWithinLimit(HOST_LIMIT_CELLS, 0, 0), 1);
  EXPECT_EQ(HostWithinLimit(HOST_LIMIT_CELLS, 1, 0), 0);
}

TEST_F(LimitsTest, TheLastRefusalIsNoted) {
  HostSetLimit(kPicture, 64);
  HostBitmap bitmap{};
  EXPECT_EQ(Create(&bitmap, 9), ERR_NO_MEMORY);
  EXPECT_EQ(HostLimitHit(), kPicture);
  EXPECT_EQ(HostLimitHit(), kPicture) << "asking does not clear it";
  EXPECT_EQ(HostWithinLimit(HOST_LIMIT_FAX, kLargest, 0), 0);
  EXPECT_EQ(HostLimitHit(), uint32_t{HOST_LIMIT_FAX});
  HostForgetLimitHit();
  EXPECT_EQ(HostLimitHit(), kNoLimit);
}

// What has no bearing on a limit leaves none behind: arguments, and pixels that the caller brings.
TEST_F(LimitsTest, AnOperationBeginsWithoutANote) {
  HostSetLimit(kPicture, 64);
  HostBitmap bitmap{};
  ASSERT_EQ(Create(&bitmap, 9), ERR_NO_MEMORY);
  EXPECT_EQ(Create(&bitmap, 0), ERR_INVALID_PARAMETER);
  EXPECT_EQ(HostLimitHit(), kNoLimit);
  ASSERT_EQ(Create(&bitmap, 9), ERR_NO_MEMORY);
  EXPECT_EQ(Create(&bitmap, 8), SUCCESS);
  EXPECT_EQ(HostLimitHit(), kNoLimit);
  HostFreeBitmap(&bitmap);
  ASSERT_EQ(Create(&bitmap, 9), ERR_NO_MEMORY);
  EXPECT_EQ(HostLoadMemory("", &bitmap, sizeof bitmap, 0, 4, 0, nullptr, nullptr), ERR_NOT_SUPPORTED);
  EXPECT_EQ(HostLimitHit(), kNoLimit);
}

// A row that the record cannot describe is refused by no limit.
TEST_F(LimitsTest, RowsOfMoreThanFourGigabytesAreNoLimit) {
  HostBitmap bitmap{};
  EXPECT_EQ(HostCreateBitmap(&bitmap, sizeof bitmap, 1, 0x7FFFFFFF, 1, 64, 1, nullptr, 1, nullptr, 0),
            ERR_NO_MEMORY);
  EXPECT_EQ(HostLimitHit(), kPicture);
  HostSetLimit(kPicture, kLargest);
  EXPECT_EQ(HostCreateBitmap(&bitmap, sizeof bitmap, 1, 0x7FFFFFFF, 1, 64, 1, nullptr, 1, nullptr, 0),
            ERR_NO_MEMORY);
  EXPECT_EQ(HostLimitHit(), kNoLimit);
}

// Memory that cannot be had is no limit, whatever refused something before.
TEST_F(LimitsTest, WantOfMemoryClearsTheNote) {
  const auto hit = [] { EXPECT_EQ(HostWithinLimit(HOST_LIMIT_PAINT, kLargest, 0), 0); };
  hit();
  EXPECT_EQ(HostAllocMem(1, kLargest - 8, 0, nullptr), nullptr);
  EXPECT_EQ(HostLimitHit(), kNoLimit);
  hit();
  EXPECT_EQ(HostAllocMem(kLargest, kLargest, 0, nullptr), nullptr);
  EXPECT_EQ(HostLimitHit(), kNoLimit);
  hit();
  EXPECT_EQ(HostAllocTemp(1, kLargest - 8, 0, nullptr), nullptr);
  EXPECT_EQ(HostLimitHit(), kNoLimit);
  void* const block = HostAllocMem(1, 8, 0, nullptr);
  ASSERT_NE(block, nullptr);
  hit();
  EXPECT_EQ(HostReallocMem(block, kLargest - 8, 0, nullptr), nullptr);
  EXPECT_EQ(HostLimitHit(), kNoLimit);
  hit();
  HostFreeMem(block, 0, nullptr);
  EXPECT_EQ(HostLimitHit(), uint32_t{HOST_LIMIT_PAINT}) << "freeing is no want";
#if !defined(__SANITIZE_ADDRESS__)  // which ends the program when so much is asked for
  HostSetLimit(kPicture, kLargest);
  HostBitmap bitmap{};
  EXPECT_EQ(Create(&bitmap, 0x7FFFFFF0), ERR_NO_MEMORY);
  EXPECT_EQ(HostLimitHit(), kNoLimit);
#endif
}

TEST_F(LimitsTest, TheNoteIsTheThreadsOwn) {
  ASSERT_EQ(HostWithinLimit(HOST_LIMIT_FAX, kLargest, 0), 0);
  uint32_t at_first = UINT32_MAX;
  uint32_t then = UINT32_MAX;
  std::thread([&] {
    at_first = HostLimitHit();
    HostSetLimit(kPicture, 64);
    HostBitmap bitmap{};
    EXPECT_EQ(Create(&bitmap, 9), ERR_NO_MEMORY);
    then = HostLimitHit();
  }).join();
  EXPECT_EQ(at_first, kNoLimit);
  EXPECT_EQ(then, kPicture);
  EXPECT_EQ(HostLimitHit(), uint32_t{HOST_LIMIT_FAX});
  EXPECT_EQ(HostGetLimit(kPicture), 64U) << "the value is the process's";
  std::thread([] { HostForgetLimitHit(); }).join();
  EXPECT_EQ(HostLimitHit(), uint32_t{HOST_LIMIT_FAX});
}

TEST_F(LimitsTest, ManyThreadsEachHaveTheirOwn) {
  std::vector<std::thread> threads;
  for (uint32_t limit = 1; limit <= 8; ++limit) {
    threads.emplace_back([limit] {
      for (int i = 0; i < 2000; ++i) {
        HostSetLimit(limit, 1000);
        EXPECT_EQ(HostWithinLimit(limit, 1000, 0), 1);
        EXPECT_EQ(HostWithinLimit(limit, 1001, 0), 0);
        EXPECT_EQ(HostLimitHit(), limit);
        HostForgetLimitHit();
        EXPECT_EQ(HostLimitHit(), kNoLimit);
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
}

}  // namespace
}  // namespace tavi::test

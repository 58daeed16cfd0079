// Every limit refuses a small file, says that it was the one, and lets the file pass when it is raised.
#include <limits>

#include "HostFixture.h"
#include "LimitFiles.h"
#include "LoadPicture.h"

namespace tavi_test {
namespace {

uint32_t LimitOf(const std::string& name) {
  for (uint32_t limit = 1; limit <= HOST_LIMIT_COUNT; ++limit) {
    if (name == HostDescribeLimit(limit)->name) return limit;
  }
  ADD_FAILURE() << "no limit " << name;
  return HOST_LIMIT_NONE;
}

class Changed {
 public:
  Changed(uint32_t limit, uint64_t value) : limit_(limit), before_(HostGetLimit(limit)) {
    HostSetLimit(limit, value);
  }
  ~Changed() { HostSetLimit(limit_, before_); }
  Changed(const Changed&) = delete;
  Changed& operator=(const Changed&) = delete;

 private:
  uint32_t limit_;
  uint64_t before_;
};

class LimitsTest : public HostTest {
 protected:
  int32_t Load(const BuiltFile& file) const {
    LoadRequest request;
    request.load_entry = HostLoadMemory;
    request.hook_entry = HostSetLoadHook;
    return LoadFile(file.Write(directory()), request).status;
  }
};

TEST_F(LimitsTest, EveryLimitHasItsFile) {
  const std::vector<LimitFile> files = MakeLimitFiles();
  ASSERT_EQ(files.size(), size_t{HOST_LIMIT_COUNT});
  for (uint32_t i = 0; i < files.size(); ++i) EXPECT_EQ(LimitOf(files[i].limit), i + 1);
}

TEST_F(LimitsTest, TheOneThatRefusesIsNamed) {
  for (const LimitFile& each : MakeLimitFiles()) {
    const uint32_t limit = LimitOf(each.limit);
    EXPECT_LT(each.file.bytes.size(), 100'000U) << each.limit;
    {
      const Changed tightened(limit, each.value);
      EXPECT_EQ(Load(each.file), HostDescribeLimit(limit)->status) << each.limit;
      EXPECT_EQ(HostLimitHit(), limit) << each.limit;
    }
    HostForgetLimitHit();
    EXPECT_EQ(Load(each.file), SUCCESS) << each.limit;
    EXPECT_EQ(HostLimitHit(), uint32_t{HOST_LIMIT_NONE}) << each.limit;
  }
}

// What is refused as things stand passes when the limit is raised.
TEST_F(LimitsTest, RaisedMoreThanThePresetPasses) {
  for (const LimitFile& each : MakeFilesBeyondPresets()) {
    const uint32_t limit = LimitOf(each.limit);
    EXPECT_EQ(Load(each.file), HostDescribeLimit(limit)->status) << each.limit;
    EXPECT_EQ(HostLimitHit(), limit) << each.limit;
    const Changed raised(limit, each.value);
    HostForgetLimitHit();
    EXPECT_EQ(Load(each.file), SUCCESS) << each.limit;
    EXPECT_EQ(HostLimitHit(), uint32_t{HOST_LIMIT_NONE}) << each.limit;
  }
}

// The largest number switches a limit off.
TEST_F(LimitsTest, SwitchedOffNoneRefuses) {
  for (const LimitFile& each : MakeLimitFiles()) {
    const Changed off(LimitOf(each.limit), std::numeric_limits<uint64_t>::max());
    HostForgetLimitHit();
    EXPECT_EQ(Load(each.file), SUCCESS) << each.limit;
    EXPECT_EQ(HostLimitHit(), uint32_t{HOST_LIMIT_NONE}) << each.limit;
  }
}

// Another failure behind a refusal is not put down to the limit: a file that ends early, and one that is no file.
TEST_F(LimitsTest, OtherFailuresHaveAStatusOfTheirOwn) {
  const LimitFile picture = MakeLimitFiles().front();
  const Changed tightened(HOST_LIMIT_PICTURE, picture.value);
  ASSERT_EQ(Load(picture.file), ERR_NO_MEMORY);
  ASSERT_EQ(HostLimitHit(), uint32_t{HOST_LIMIT_PICTURE});
  BuiltFile cut = NtfBuilder{GreyImage(4, 4)}.Build();
  const int32_t status = Load(cut.Truncate("image[0].data", 3));
  EXPECT_EQ(status, ERR_FILE_READ);
  EXPECT_NE(HostDescribeLimit(HOST_LIMIT_PICTURE)->status, status);
  EXPECT_EQ(HostLimitHit(), uint32_t{HOST_LIMIT_NONE}) << "the composite was made since";
}

}  // namespace
}  // namespace tavi_test

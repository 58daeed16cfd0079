#include <numeric>

#include "../host/HostTest.h"
#include "Platform/GlobalMemory.h"

namespace tavi::test {
namespace {

class GlobalMemory : public HostTest {};

TEST_F(GlobalMemory, ABlockHoldsACopyUntilItIsFreed) {
  std::vector<uint8_t> bytes(1000);
  std::iota(bytes.begin(), bytes.end(), uint8_t{0});
  const std::vector<uint8_t> before = bytes;
  HostGlobalMemory block = nullptr;
  uint64_t size = 0;
  const uint64_t alive = HostLiveObjects();
  ASSERT_EQ(host::MakeGlobal(bytes, &block, &size), SUCCESS);
  EXPECT_EQ(HostLiveObjects(), alive + 1) << "blocks are counted";
  EXPECT_EQ(size, 1000u);
  bytes.assign(1000, 0);
  const auto* const locked = static_cast<const uint8_t*>(GlobalLock(block));
  ASSERT_NE(locked, nullptr);
  EXPECT_EQ(std::vector<uint8_t>(locked, locked + size), before);
  EXPECT_EQ(GlobalUnlock(block), 0);
  HostGlobalFree(block, 1, L"unit");
}

TEST_F(GlobalMemory, LocksNest) {
  const uint8_t byte = 7;
  HostGlobalMemory block = nullptr;
  ASSERT_EQ(host::MakeGlobal({&byte, 1}, &block, nullptr), SUCCESS);
  void* const bytes = GlobalLock(block);
  EXPECT_EQ(GlobalLock(block), bytes);
  EXPECT_EQ(GlobalUnlock(block), 1) << "still locked";
  EXPECT_EQ(GlobalUnlock(block), 0);
  EXPECT_EQ(GlobalUnlock(block), 0) << "more often than it was locked";
  EXPECT_EQ(GlobalLock(block), bytes);
  HostGlobalFree(block, 0, nullptr);
}

TEST_F(GlobalMemory, EmptyBlocksCanBeLocked) {
  HostGlobalMemory block = nullptr;
  uint64_t size = 9;
  ASSERT_EQ(host::MakeGlobal({}, &block, &size), SUCCESS);
  EXPECT_EQ(size, 0u);
  EXPECT_NE(GlobalLock(block), nullptr);
  HostGlobalFree(block, 0, nullptr);
}

TEST_F(GlobalMemory, NoBlock) {
  EXPECT_EQ(GlobalLock(nullptr), nullptr);
  EXPECT_EQ(GlobalUnlock(nullptr), 0);
  HostGlobalFree(nullptr, 0, nullptr);
  EXPECT_EQ(host::MakeGlobal({}, nullptr, nullptr), ERR_NULL_ARGUMENT);
}

}  // namespace
}  // namespace tavi::test

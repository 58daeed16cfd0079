#include <algorithm>
#include <cstring>
#include <string>

#include "HostTest.h"

namespace tavi::test {
namespace {

using MemoryTest = HostTest;

bool AllZero(const void* block, size_t bytes) {
  const auto* const at = static_cast<const uint8_t*>(block);
  return std::all_of(at, at + bytes, [](uint8_t byte) { return byte == 0; });
}

void CollectLine(const char* text, void* user) {
  *static_cast<std::string*>(user) += text;
}

TEST_F(MemoryTest, BlocksAreZeroAlsoWhenTheirMemoryWasUsedBefore) {
  for (const uint64_t bytes : {uint64_t{1}, uint64_t{1000}, uint64_t{4} << 20, (uint64_t{5} << 20) + 7}) {
    for (int round = 0; round < 3; ++round) {
      void* const block = HostAllocMem(bytes, 1, __LINE__, L"MemoryTest");
      ASSERT_NE(block, nullptr);
      EXPECT_TRUE(AllZero(block, bytes)) << bytes << " round " << round;
      HostMemSet(block, 0xFF, bytes);
      HostFreeMem(block, __LINE__, L"MemoryTest");
    }
  }
}

TEST_F(MemoryTest, ZeroElementsGiveAValidBlock) {
  void* const none = HostAllocMem(0, 12, 0, nullptr);
  void* const empty = HostAllocMem(12, 0, 0, nullptr);
  EXPECT_NE(none, nullptr);
  EXPECT_NE(empty, nullptr);
  EXPECT_NE(none, empty);
  HostFreeMem(none, 0, nullptr);
  HostFreeMem(empty, 0, nullptr);
}

TEST_F(MemoryTest, OverflowingAndImpossibleSizesAreRefused) {
  EXPECT_EQ(HostAllocMem(UINT64_MAX, 2, 0, nullptr), nullptr);
  EXPECT_EQ(HostAllocMem(uint64_t{1} << 33, uint64_t{1} << 33, 0, nullptr), nullptr);
  EXPECT_EQ(HostAllocMem((uint64_t{1} << 32) + 1, uint64_t{1} << 32, 0, nullptr), nullptr);
  EXPECT_EQ(HostAllocMem(UINT64_MAX, 1, 0, nullptr), nullptr);
  EXPECT_EQ(HostAllocMem(1, UINT64_MAX - 8, 0, nullptr), nullptr);
  EXPECT_EQ(HostAllocTemp(UINT64_MAX, UINT64_MAX, 0, nullptr), nullptr);
  EXPECT_EQ(HostReallocMem(nullptr, UINT64_MAX, 0, nullptr), nullptr);
}

TEST_F(MemoryTest, BlocksAreAlignedForAnyObject) {
  for (const uint64_t bytes : {uint64_t{1}, uint64_t{100}, uint64_t{6} << 20}) {
    void* const block = HostAllocMem(1, bytes, 0, nullptr);
    EXPECT_EQ(reinterpret_cast<uintptr_t>(block) % alignof(std::max_align_t), 0u);
    HostFreeMem(block, 0, nullptr);
  }
}

TEST_F(MemoryTest, ResizingKeepsTheContentsAcrossAllSizes) {
  auto* block = static_cast<uint8_t*>(HostReallocMem(nullptr, 64, 0, nullptr));
  ASSERT_NE(block, nullptr);
  for (int i = 0; i < 64; ++i) block[i] = static_cast<uint8_t>(i * 3);
  for (const uint64_t bytes : {uint64_t{100}, uint64_t{5} << 20, uint64_t{5} << 20 | 100, uint64_t{40} << 20,
                               uint64_t{4} << 20, uint64_t{64}, uint64_t{64}}) {
    block = static_cast<uint8_t*>(HostReallocMem(block, bytes, 0, nullptr));
    ASSERT_NE(block, nullptr);
    for (int i = 0; i < 64; ++i) ASSERT_EQ(block[i], i * 3 & 0xFF) << "at size " << bytes;
    if (bytes > 64) std::memset(block + 64, 0xEE, bytes - 64);
  }
  HostFreeMem(block, 0, nullptr);
}

TEST_F(MemoryTest, AFailedResizeLeavesTheBlock) {
  auto* const block = static_cast<uint8_t*>(HostAllocMem(8, 1, 0, nullptr));
  block[7] = 42;
  EXPECT_EQ(HostReallocMem(block, UINT64_MAX - 100, 0, nullptr), nullptr);
  EXPECT_EQ(block[7], 42);
  HostFreeMem(block, 0, nullptr);
}

TEST_F(MemoryTest, TemporaryBlocksAreZeroAndFreed) {
  void* const block = HostAllocTemp(30, 4, __LINE__, L"MemoryTest");
  ASSERT_NE(block, nullptr);
  EXPECT_TRUE(AllZero(block, 120));
  HostFreeTemp(block, __LINE__, L"MemoryTest");
}

TEST_F(MemoryTest, NullIsFreedAndCopiedWithoutEffect) {
  HostFreeMem(nullptr, 0, nullptr);
  HostFreeTemp(nullptr, 0, nullptr);
  HostMemCopy(nullptr, nullptr, 10);
  HostMemSet(nullptr, 1, 10);
}

TEST_F(MemoryTest, CopyAndFillTouchExactlyTheirBytes) {
  uint8_t block[6] = {1, 2, 3, 4, 5, 6};
  const uint8_t source[2] = {9, 8};
  HostMemCopy(block + 1, source, 2);
  HostMemSet(block + 4, 0x1FF, 1);
  const uint8_t wanted[6] = {1, 9, 8, 4, 255, 6};
  EXPECT_EQ(std::memcmp(block, wanted, sizeof block), 0);
}

TEST_F(MemoryTest, EveryKindOfObjectIsCounted) {
  const uint64_t before = HostLiveObjects();
  void* const block = HostAllocMem(1, 1, 0, nullptr);
  EXPECT_EQ(HostLiveObjects(), before + 1);
  void* const temporary = HostAllocTemp(1, 1, 0, nullptr);
  EXPECT_EQ(HostLiveObjects(), before + 2);
  const HostPalette palette = HostCreatePalette(nullptr, 0);
  EXPECT_EQ(HostLiveObjects(), before + 3);
  {
    Bitmap bitmap(3, 3, 24);
    EXPECT_EQ(HostLiveObjects(), before + 4);
    const Context context(bitmap);
    EXPECT_EQ(HostLiveObjects(), before + 5);
  }
  HostDeleteObject(palette, 0, nullptr);
  HostFreeTemp(temporary, 0, nullptr);
  HostFreeMem(block, 0, nullptr);
  EXPECT_EQ(HostLiveObjects(), before);
}

TEST_F(MemoryTest, TrackedObjectsAreCountedOnceAndForgottenOnce) {
  const uint64_t before = HostLiveObjects();
  int object = 0;
  HostTrackAdd(4, &object, 7, L"Common/Unit");
  HostTrackAdd(4, &object, 8, L"Common/Unit");
  HostTrackAdd(5, &object, 9, L"Common/Unit");
  EXPECT_EQ(HostLiveObjects(), before + 2);
  HostTrackRemove(4, &object, 0, nullptr);
  HostTrackRemove(4, &object, 0, nullptr);
  HostTrackRemove(5, &object, 0, nullptr);
  HostTrackRemove(3, &object, 0, nullptr);
  HostTrackAdd(4, nullptr, 0, nullptr);
  EXPECT_EQ(HostLiveObjects(), before);
}

TEST_F(MemoryTest, TheLeakReportNamesWhatIsAlive) {
  int object = 0;
  HostTrackAdd(4, &object, 77, L"Common/Töne");
  void* const block = HostAllocMem(1, 1, 123, L"Common/Unit");
  std::string report;
  EXPECT_EQ(HostReportLeaks(&CollectLine, &report), HostLiveObjects());
  EXPECT_NE(report.find("tracked object of kind 4"), std::string::npos) << report;
  EXPECT_NE(report.find("made in Common/T\xC3\xB6ne, line 77\n"), std::string::npos) << report;
  EXPECT_NE(report.find("memory block"), std::string::npos) << report;
#if !defined(NDEBUG)
  EXPECT_NE(report.find("made in Common/Unit, line 123\n"), std::string::npos) << report;
#endif
  HostFreeMem(block, 0, nullptr);
  HostTrackRemove(4, &object, 0, nullptr);
}

TEST_F(MemoryTest, TheLeakReportGoesToStandardErrorWithoutASink) {
  int object = 0;
  HostTrackAdd(5, &object, 3, L"Here");
  ::testing::internal::CaptureStderr();
  HostReportLeaks(nullptr, nullptr);
  const std::string text = ::testing::internal::GetCapturedStderr();
  EXPECT_NE(text.find("tracked object of kind 5"), std::string::npos) << text;
  HostTrackRemove(5, &object, 0, nullptr);
}

}  // namespace
}  // namespace tavi::test

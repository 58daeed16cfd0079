// Different files, bitmaps and contexts on different threads.
#include <atomic>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <functional>
#include <string>
#include <thread>

#include "HostTest.h"

namespace tavi::test {
namespace {

using ThreadTest = HostTest;

constexpr uint32_t kThreads = 4;

void OnThreads(const std::function<void(uint32_t)>& work) {
  std::vector<std::thread> threads;
  for (uint32_t i = 0; i < kThreads; ++i) threads.emplace_back(work, i);
  for (std::thread& thread : threads) thread.join();
}

TEST_F(ThreadTest, BlocksOfAllSizes) {
  std::atomic<uint32_t> faults{0};
  OnThreads([&](uint32_t thread) {
    Noise noise(thread);
    for (int i = 0; i < 200; ++i) {
      const uint64_t bytes = noise.Below(20) == 0 ? (4u << 20) + noise.Below(1000) : noise.Below(10000) + 1;
      auto* const block = static_cast<uint8_t*>(HostAllocMem(1, bytes, 0, L"Thread"));
      if (block == nullptr || block[0] != 0 || block[bytes - 1] != 0) ++faults;
      HostTrackAdd(4, block, 0, L"Thread");
      block[0] = block[bytes - 1] = 1;
      HostTrackRemove(4, block, 0, L"Thread");
      HostFreeMem(block, 0, L"Thread");
    }
  });
  EXPECT_EQ(faults, 0u);
}

TEST_F(ThreadTest, FilesAreOpenedReadAndClosed) {
  const std::filesystem::path path =
      std::filesystem::temp_directory_path() / ("tavi_threads_" + std::to_string(::getpid()));
  std::ofstream(path, std::ios::binary) << std::string(100000, 'x') + "end";
  std::atomic<uint32_t> faults{0};
  OnThreads([&](uint32_t) {
    for (int i = 0; i < 200; ++i) {
      const int64_t file = HostFileOpen(path.wstring().c_str(), 0x8000, 0x100);
      char text[4] = {};
      if (HostFileSeek(file, -3, 2) != 100000 || HostFileRead(file, text, 10) != 3 ||
          std::strcmp(text, "end") != 0) {
        ++faults;
      }
      HostFileClose(file);
      if (HostFileRead(file, text, 1) != 0) ++faults;
    }
  });
  std::filesystem::remove(path);
  EXPECT_EQ(faults, 0u);
}

TEST_F(ThreadTest, PicturesArePainted) {
  std::atomic<uint32_t> faults{0};
  OnThreads([&](uint32_t thread) {
    for (int i = 0; i < 10; ++i) {
      const auto level = static_cast<uint8_t>(10 * thread + static_cast<uint32_t>(i));
      Bitmap source(1200, 1200, 24);
      Bitmap target(1200, 1200, 24, 1, 4);
      HostFillBitmap(source.get(), level * 0x010101u);
      HostFillBitmap(target.get(), 0xFFFFFF);
      const Context context(target);
      if (Paint(context, source, {0, 0, 1200, 1200}) != SUCCESS) ++faults;
      if (target.Row(600) != std::vector<uint8_t>(3600, level)) ++faults;
    }
  });
  EXPECT_EQ(faults, 0u);
}

void Count(const char*, const char*, void* user) {
  ++*static_cast<std::atomic<uint32_t>*>(user);
}

TEST_F(ThreadTest, MessagesArriveWhileTheSinkIsSet) {
  std::atomic<uint32_t> heard{0};
  OnThreads([&](uint32_t) {
    for (int i = 0; i < 100; ++i) {
      HostSetMessageSink(&Count, &heard);
      MessageBoxA(nullptr, "text", "caption", 0);
      HostSetBitmapLimit(HostGetBitmapLimit());
    }
  });
  HostSetMessageSink(nullptr, nullptr);
  EXPECT_EQ(heard, kThreads * 100);
}

}  // namespace
}  // namespace tavi::test

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <set>
#include <string>

#include "HostTest.h"

namespace tavi::test {
namespace {

namespace fs = std::filesystem;

constexpr uint32_t kRead = 0x8000;
constexpr uint32_t kReadMode = 0x100;
constexpr uint32_t kCreate = 33538;
constexpr uint32_t kCreateMode = 128;

class FileTest : public HostTest {
 protected:
  void SetUp() override {
    HostTest::SetUp();
    std::string pattern = (fs::temp_directory_path() / "tavi_host_XXXXXX").string();
    ASSERT_NE(mkdtemp(pattern.data()), nullptr);
    folder_ = pattern;
  }
  void TearDown() override {
    fs::remove_all(folder_);
    HostTest::TearDown();
  }

  std::wstring Path(const char* name) const { return (folder_ / name).wstring(); }

  std::wstring MakeFile(const char* name, const std::vector<uint8_t>& bytes) const {
    std::ofstream out(folder_ / name, std::ios::binary);
    out.write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
    return Path(name);
  }

  fs::path folder_;
};

class File {
 public:
  explicit File(const std::wstring& path, uint32_t flags = kRead, uint32_t mode = kReadMode)
      : handle_(HostFileOpen(path.c_str(), flags, mode)) {}
  File(const File&) = delete;
  File& operator=(const File&) = delete;
  ~File() { HostFileClose(handle_); }
  int64_t handle() const { return handle_; }
  std::vector<uint8_t> Read(uint64_t bytes) const {
    std::vector<uint8_t> buffer(bytes + 1, 0xA5);
    const uint64_t moved = HostFileRead(handle_, buffer.data(), bytes);
    EXPECT_LE(moved, bytes);
    EXPECT_EQ(buffer[bytes], 0xA5);
    buffer.resize(moved);
    return buffer;
  }

 private:
  int64_t handle_;
};

std::vector<uint8_t> Pattern(size_t size) {
  Noise noise(static_cast<uint32_t>(size));
  std::vector<uint8_t> bytes(size);
  for (uint8_t& byte : bytes) byte = noise.Byte();
  return bytes;
}

std::vector<uint8_t> Slice(const std::vector<uint8_t>& bytes, size_t from, size_t count) {
  from = std::min(from, bytes.size());
  count = std::min(count, bytes.size() - from);
  const auto start = bytes.begin() + static_cast<std::ptrdiff_t>(from);
  return {start, start + static_cast<std::ptrdiff_t>(count)};
}

TEST_F(FileTest, WhatIsNoRegularFileFailsToOpen) {
  EXPECT_EQ(HostFileOpen(Path("missing").c_str(), kRead, kReadMode), -1);
  EXPECT_EQ(HostFileOpen(folder_.wstring().c_str(), kRead, kReadMode), -1);
  EXPECT_EQ(HostFileOpen(folder_.wstring().c_str(), kCreate, kCreateMode), -1);
  EXPECT_EQ(HostFileOpen(L"/dev/null", kRead, kReadMode), -1);
  EXPECT_EQ(HostFileOpen(L"", kRead, kReadMode), -1);
  EXPECT_EQ(HostFileOpen(nullptr, kRead, kReadMode), -1);
}

TEST_F(FileTest, APipeWithoutAWriterFailsInsteadOfWaiting) {
  ASSERT_EQ(mkfifo((folder_ / "pipe").c_str(), 0600), 0);
  EXPECT_EQ(HostFileOpen(Path("pipe").c_str(), kRead, kReadMode), -1);
}

TEST_F(FileTest, NamesThatAreNoTextFailToOpen) {
  const std::wstring good = MakeFile("good", {1});
  std::wstring bad = good;
  bad.back() = static_cast<wchar_t>(0xD800);
  EXPECT_EQ(HostFileOpen(bad.c_str(), kCreate, kCreateMode), -1);
  bad.back() = static_cast<wchar_t>(0x110000);
  EXPECT_EQ(HostFileOpen(bad.c_str(), kCreate, kCreateMode), -1);
}

TEST_F(FileTest, NamesGoToTheFileSystemAsUtf8) {
  const std::wstring path = Path("") + L"a\u00e9\u4e2d\U0001F600";
  { const File file(path, kCreate, kCreateMode); }
  EXPECT_TRUE(fs::exists(folder_ / "a\xC3\xA9\xE4\xB8\xAD\xF0\x9F\x98\x80"));
}

TEST_F(FileTest, UnknownFlagsAreRefused) {
  const std::wstring path = MakeFile("file", {1, 2, 3});
  for (const uint32_t flags : {0u, 1u, 2u, 0x8001u, 0x8002u, 0x8301u}) {
    EXPECT_EQ(HostFileOpen(path.c_str(), flags, kReadMode), -1) << flags;
  }
  EXPECT_EQ(fs::file_size(folder_ / "file"), 3u);
}

TEST_F(FileTest, ReadsFromEveryPlaceGiveTheBytesThatStandThere) {
  const std::vector<uint8_t> bytes = Pattern(300000);
  const File file(MakeFile("file", bytes));
  ASSERT_GE(file.handle(), 0);
  Noise noise(5);
  const uint32_t sizes[] = {1, 2, 10, 100, 4096, 16383, 16384, 16385, 65535, 65536, 65537, 200000};
  size_t position = 0;
  for (int i = 0; i < 3000; ++i) {
    const uint32_t size = sizes[noise.Below(i % 10 == 0 ? 12 : 5)];
    if (noise.Below(3) == 0) {
      position = noise.Below(300100);
      ASSERT_EQ(HostFileSeek(file.handle(), static_cast<int64_t>(position), 0),
                static_cast<int64_t>(position));
    }
    const std::vector<uint8_t> wanted = Slice(bytes, position, size);
    ASSERT_EQ(file.Read(size), wanted) << "at " << position << " size " << size;
    position += wanted.size();
    ASSERT_EQ(HostFileSeek(file.handle(), 0, 1), static_cast<int64_t>(position));
  }
}

TEST_F(FileTest, ReadsAcrossTheEdgesOfTheWindow) {
  const std::vector<uint8_t> bytes = Pattern(3 * 65536 + 11);
  const std::wstring path = MakeFile("file", bytes);
  for (const size_t edge : {size_t{16384}, size_t{65536}, size_t{131072}, bytes.size()}) {
    for (size_t before = 0; before < 4; ++before) {
      const File file(path);
      file.Read(1);  // sets the window
      HostFileSeek(file.handle(), static_cast<int64_t>(edge - before), 0);
      EXPECT_EQ(file.Read(before + 2), Slice(bytes, edge - before, before + 2)) << edge << ' ' << before;
      EXPECT_EQ(file.Read(20000), Slice(bytes, std::min(edge + 2, bytes.size()), 20000));
    }
  }
}

TEST_F(FileTest, AReadAtTheEndComesBackShort) {
  const std::vector<uint8_t> bytes = Pattern(100);
  const File file(MakeFile("file", bytes));
  EXPECT_EQ(file.Read(60).size(), 60u);
  EXPECT_EQ(file.Read(60), Slice(bytes, 60, 40));
  EXPECT_EQ(file.Read(60).size(), 0u);
  EXPECT_EQ(HostFileSeek(file.handle(), 0, 1), 100);
  EXPECT_EQ(HostFileSeek(file.handle(), 1000000, 0), 1000000);
  EXPECT_EQ(file.Read(1).size(), 0u);
  EXPECT_EQ(file.Read(70000).size(), 0u);
}

TEST_F(FileTest, AnEmptyReadMovesNothing) {
  const File file(MakeFile("file", {1, 2, 3}));
  uint8_t byte = 7;
  EXPECT_EQ(HostFileRead(file.handle(), &byte, 0), 0u);
  EXPECT_EQ(HostFileRead(file.handle(), nullptr, 3), 0u);
  EXPECT_EQ(byte, 7);
  EXPECT_EQ(HostFileSeek(file.handle(), 0, 1), 0);
}

TEST_F(FileTest, SeeksFromAllOrigins) {
  const File file(MakeFile("file", Pattern(100)));
  EXPECT_EQ(HostFileSeek(file.handle(), 10, 0), 10);
  EXPECT_EQ(HostFileSeek(file.handle(), 5, 1), 15);
  EXPECT_EQ(HostFileSeek(file.handle(), -7, 1), 8);
  EXPECT_EQ(HostFileSeek(file.handle(), 0, 2), 100);
  EXPECT_EQ(HostFileSeek(file.handle(), -100, 2), 0);
  EXPECT_EQ(HostFileSeek(file.handle(), 50, 2), 150);
}

TEST_F(FileTest, ASeekBeforeTheStartIsRefusedAndThePositionStays) {
  const File file(MakeFile("file", Pattern(100)));
  HostFileSeek(file.handle(), 20, 0);
  EXPECT_EQ(HostFileSeek(file.handle(), -1, 0), -1);
  EXPECT_EQ(HostFileSeek(file.handle(), -21, 1), -1);
  EXPECT_EQ(HostFileSeek(file.handle(), -101, 2), -1);
  EXPECT_EQ(HostFileSeek(file.handle(), INT64_MIN, 1), -1);
  EXPECT_EQ(HostFileSeek(file.handle(), INT64_MAX, 1), -1);
  EXPECT_EQ(HostFileSeek(file.handle(), INT64_MAX, 2), -1);
  EXPECT_EQ(HostFileSeek(file.handle(), 0, 3), -1);
  EXPECT_EQ(HostFileSeek(file.handle(), 0, -1), -1);
  EXPECT_EQ(HostFileSeek(file.handle(), 0, 1), 20);
}

TEST_F(FileTest, ThePositionsEndIsNotPassed) {
  const File file(MakeFile("file", Pattern(10)));
  EXPECT_EQ(HostFileSeek(file.handle(), INT64_MAX, 0), INT64_MAX);
  EXPECT_EQ(file.Read(10).size(), 0u);
  EXPECT_EQ(HostFileSeek(file.handle(), 1, 1), -1);
  EXPECT_EQ(HostFileSeek(file.handle(), 0, 1), INT64_MAX);
}

TEST_F(FileTest, HandlesThatAreNotOpenComeBackShort) {
  const std::wstring path = MakeFile("file", {1, 2, 3});
  const int64_t closed = HostFileOpen(path.c_str(), kRead, kReadMode);
  ASSERT_GE(closed, 0);
  HostFileClose(closed);
  for (const int64_t handle : {int64_t{-1}, closed, int64_t{0}, int64_t{12345}, INT64_MAX, INT64_MIN}) {
    uint8_t byte = 9;
    EXPECT_EQ(HostFileRead(handle, &byte, 1), 0u);
    EXPECT_EQ(HostFileWrite(handle, &byte, 1), 0u);
    EXPECT_EQ(HostFileWriteHuge(handle, &byte, 1), 0u);
    EXPECT_EQ(HostFileSeek(handle, 0, 0), -1);
    EXPECT_EQ(byte, 9);
    HostFileClose(handle);
  }
}

TEST_F(FileTest, AHandleIsNeverGivenOutTwice) {
  const std::wstring path = MakeFile("file", {1, 2, 3});
  std::set<int64_t> seen;
  for (int i = 0; i < 1000; ++i) {
    const File first(path);
    const File second(path);
    EXPECT_TRUE(seen.insert(first.handle()).second);
    EXPECT_TRUE(seen.insert(second.handle()).second);
  }
}

TEST_F(FileTest, FilesHavePositionsOfTheirOwn) {
  const std::wstring path = MakeFile("file", {1, 2, 3, 4});
  const File first(path);
  const File second(path);
  EXPECT_EQ(first.Read(2), (std::vector<uint8_t>{1, 2}));
  EXPECT_EQ(second.Read(1), (std::vector<uint8_t>{1}));
  EXPECT_EQ(first.Read(2), (std::vector<uint8_t>{3, 4}));
}

TEST_F(FileTest, CreatedFilesAreWrittenAndReadBack) {
  const std::wstring path = MakeFile("file", Pattern(5000));
  {
    const File file(path, kCreate, kCreateMode);
    ASSERT_GE(file.handle(), 0);
    EXPECT_EQ(fs::file_size(folder_ / "file"), 0u) << "truncated";
    EXPECT_EQ(HostFileWrite(file.handle(), "abcdef", 6), 6u);
    EXPECT_EQ(HostFileSeek(file.handle(), 0, 1), 6);
    HostFileSeek(file.handle(), 2, 0);
    EXPECT_EQ(file.Read(10), (std::vector<uint8_t>{'c', 'd', 'e', 'f'}));
    // What stands in the window is written over.
    HostFileSeek(file.handle(), 3, 0);
    EXPECT_EQ(HostFileWriteHuge(file.handle(), "XY", 2), 2u);
    HostFileSeek(file.handle(), 0, 0);
    EXPECT_EQ(file.Read(10), (std::vector<uint8_t>{'a', 'b', 'c', 'X', 'Y', 'f'}));
  }
  EXPECT_EQ(fs::file_size(folder_ / "file"), 6u);
}

TEST_F(FileTest, WritingBehindTheEndLeavesZeros) {
  const File file(Path("file"), kCreate, kCreateMode);
  HostFileSeek(file.handle(), 3, 0);
  EXPECT_EQ(HostFileWrite(file.handle(), "z", 1), 1u);
  HostFileSeek(file.handle(), 0, 0);
  EXPECT_EQ(file.Read(9), (std::vector<uint8_t>{0, 0, 0, 'z'}));
}

TEST_F(FileTest, AFileOpenForReadingIsNotWritten) {
  const std::wstring path = MakeFile("file", {1, 2, 3});
  const File file(path);
  EXPECT_EQ(HostFileWrite(file.handle(), "abc", 3), 0u);
  EXPECT_EQ(HostFileWrite(file.handle(), nullptr, 3), 0u);
  EXPECT_EQ(file.Read(3), (std::vector<uint8_t>{1, 2, 3}));
}

TEST_F(FileTest, AWriteThatTheSystemCutsShortSaysSo) {
  std::signal(SIGXFSZ, SIG_IGN);
  rlimit old{};
  ASSERT_EQ(getrlimit(RLIMIT_FSIZE, &old), 0);
  const File file(Path("file"), kCreate, kCreateMode);
  const rlimit small{1000, old.rlim_max};
  ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &small), 0);
  const std::vector<uint8_t> bytes = Pattern(5000);
  const uint64_t written = HostFileWrite(file.handle(), bytes.data(), bytes.size());
  const uint64_t after = HostFileWrite(file.handle(), bytes.data(), 1);
  ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &old), 0);
  EXPECT_EQ(written, 1000u);
  EXPECT_EQ(after, 0u);
}

TEST_F(FileTest, WhenNoDescriptorIsLeftOpeningFails) {
  const std::wstring path = MakeFile("file", {1});
  rlimit old{};
  ASSERT_EQ(getrlimit(RLIMIT_NOFILE, &old), 0);
  const int next = dup(0);
  close(next);
  const rlimit none{static_cast<rlim_t>(next), old.rlim_max};
  ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &none), 0);
  const int64_t handle = HostFileOpen(path.c_str(), kRead, kReadMode);
  ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &old), 0);
  EXPECT_EQ(handle, -1);
}

}  // namespace
}  // namespace tavi::test

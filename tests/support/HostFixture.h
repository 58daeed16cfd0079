// What tests need around the library: a folder of their own, the host's messages, and the promise that
// nothing is left alive.
#ifndef TAVI_TESTS_SUPPORT_HOST_FIXTURE_H
#define TAVI_TESTS_SUPPORT_HOST_FIXTURE_H

#include <gtest/gtest.h>

#include <cstdint>
#include <filesystem>
#include <mutex>
#include <string>
#include <vector>

namespace tavi_test {

// A fresh folder, removed with all it holds.
class TempDir {
 public:
  TempDir();
  ~TempDir();
  TempDir(const TempDir&) = delete;
  TempDir& operator=(const TempDir&) = delete;

  [[nodiscard]] const std::filesystem::path& path() const { return path_; }

 private:
  std::filesystem::path path_;
};

struct Message {
  std::string text;
  std::string caption;
};

// Collects the host's message boxes and debug strings while it lives, in place of showing them.
class HostCapture {
 public:
  HostCapture();
  ~HostCapture();
  HostCapture(const HostCapture&) = delete;
  HostCapture& operator=(const HostCapture&) = delete;

  [[nodiscard]] const std::vector<Message>& messages() const { return messages_; }
  [[nodiscard]] const std::vector<std::string>& debug() const { return debug_; }

 private:
  std::mutex mutex_;  // any thread may call a sink
  std::vector<Message> messages_;
  std::vector<std::string> debug_;
};

// A test with a folder and captured messages, which fails when the host counts more live objects at its end
// than at its beginning.
class HostTest : public ::testing::Test {
 protected:
  void SetUp() override;
  void TearDown() override;

  [[nodiscard]] const std::filesystem::path& directory() const { return directory_.path(); }
  [[nodiscard]] const HostCapture& host() const { return capture_; }

 private:
  TempDir directory_;
  HostCapture capture_;
  uint64_t alive_ = 0;
};

}  // namespace tavi_test

#endif  // TAVI_TESTS_SUPPORT_HOST_FIXTURE_H

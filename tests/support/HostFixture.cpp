#include "HostFixture.h"

#include <atomic>
#include <chrono>
#include <stdexcept>

#include "TaviHost.h"

namespace tavi_test {
namespace {

std::filesystem::path MakeFolder() {
  static std::atomic<unsigned> counter{0};
  const auto stamp = std::chrono::steady_clock::now().time_since_epoch().count();
  const std::filesystem::path parent = std::filesystem::temp_directory_path();
  for (int attempt = 0; attempt < 100; ++attempt) {
    const std::filesystem::path path =
        parent / ("tavinitf-test-" + std::to_string(stamp) + "-" + std::to_string(counter++));
    if (std::filesystem::create_directory(path)) return path;
  }
  throw std::runtime_error("no temporary folder can be made in " + parent.string());
}

}  // namespace

TempDir::TempDir() : path_(MakeFolder()) {}

TempDir::~TempDir() {
  std::error_code ignored;
  std::filesystem::remove_all(path_, ignored);
}

HostCapture::HostCapture() {
  HostSetMessageSink(
      [](const char* text, const char* caption, void* user) {
        auto* const capture = static_cast<HostCapture*>(user);
        const std::lock_guard lock(capture->mutex_);
        capture->messages_.push_back({text, caption});
      },
      this);
  HostSetDebugSink(
      [](const char* text, void* user) {
        auto* const capture = static_cast<HostCapture*>(user);
        const std::lock_guard lock(capture->mutex_);
        capture->debug_.emplace_back(text);
      },
      this);
}

HostCapture::~HostCapture() {
  HostSetMessageSink(nullptr, nullptr);
  HostSetDebugSink(nullptr, nullptr);
}

void HostTest::SetUp() {
  alive_ = HostLiveObjects();
}

void HostTest::TearDown() {
  const uint64_t now = HostLiveObjects();
  std::string report;
  if (now != alive_) {
    HostReportLeaks([](const char* line, void* user) { *static_cast<std::string*>(user) += line; }, &report);
  }
  EXPECT_EQ(now, alive_) << report;
}

}  // namespace tavi_test

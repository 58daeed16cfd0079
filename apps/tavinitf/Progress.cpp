#include "Progress.h"

#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdio>

namespace tavinitf {
namespace {

constexpr auto kQuietTime = std::chrono::milliseconds(500);
constexpr size_t kBarWidth = 40;

}  // namespace

Progress::Progress(size_t total) : total_(total), terminal_(isatty(STDERR_FILENO) == 1) {}

Progress::~Progress() {
  Clear();
}

void Progress::Advance() {
  const std::lock_guard lock(mutex_);
  ++done_;
  Draw();
}

void Progress::PrintLine(const std::string& line) {
  const std::lock_guard lock(mutex_);
  Clear();
  std::fprintf(stderr, "%s\n", line.c_str());
  Draw();
}

void Progress::Draw() {
  if (!terminal_ || done_ == total_ || std::chrono::steady_clock::now() - start_ < kQuietTime) return;
  const size_t filled = kBarWidth * done_ / total_;
  std::array<char, kBarWidth + 1> bar{};  // takes no memory, so that nothing leaves a thread that draws it
  std::fill_n(bar.begin(), kBarWidth, '.');
  std::fill_n(bar.begin(), filled, '#');
  std::fprintf(stderr, "\r[%s] %zu of %zu", bar.data(), done_, total_);
  std::fflush(stderr);
  drawn_ = true;
}

void Progress::Clear() {
  if (!drawn_) return;
  std::fputs("\r\x1b[K", stderr);
  std::fflush(stderr);
  drawn_ = false;
}

}  // namespace tavinitf

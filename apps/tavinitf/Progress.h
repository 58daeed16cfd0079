// A progress bar on standard error: on a terminal only, and only for work of more than half a second.
#pragma once

#include <chrono>
#include <cstddef>
#include <mutex>
#include <string>

namespace tavinitf {

class Progress {
 public:
  explicit Progress(size_t total);
  ~Progress();
  Progress(const Progress&) = delete;
  Progress& operator=(const Progress&) = delete;

  // One more step is done. From any thread.
  void Advance();
  // A line on standard error that the bar does not run into. From any thread.
  void PrintLine(const std::string& line);

 private:
  void Draw();
  void Clear();

  std::mutex mutex_;
  std::chrono::steady_clock::time_point start_ = std::chrono::steady_clock::now();
  size_t total_;
  size_t done_ = 0;
  bool terminal_;
  bool drawn_ = false;
};

}  // namespace tavinitf

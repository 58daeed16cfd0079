// One open regular file: a position that moves without system calls, and a window of the file in memory for
// small reads.
#pragma once

#include <cstdint>
#include <memory>

namespace tavi::host {

enum class FileAccess : uint8_t { kRead, kCreate };

class OpenFile {
 public:
  // Null when the file cannot be opened or is no regular file. May throw std::bad_alloc.
  static std::shared_ptr<OpenFile> Open(const char* path, FileAccess access);

  explicit OpenFile(int descriptor) : descriptor_(descriptor) {}
  OpenFile(const OpenFile&) = delete;
  OpenFile& operator=(const OpenFile&) = delete;
  ~OpenFile();

  uint64_t Read(uint8_t* buffer, uint64_t bytes) noexcept;
  uint64_t Write(const uint8_t* buffer, uint64_t bytes) noexcept;
  int64_t Seek(int64_t offset, int32_t origin) noexcept;

 private:
  uint64_t ReadWindow(uint8_t* buffer, uint64_t bytes) noexcept;
  bool FillWindow() noexcept;

  int descriptor_;
  int64_t position_ = 0;
  std::unique_ptr<uint8_t[]> window_;  // made at the first small read
  int64_t window_start_ = 0;
  uint64_t window_bytes_ = 0;
};

}  // namespace tavi::host

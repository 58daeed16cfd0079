#include "TaviKernel/OpenFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <new>

namespace tavi::host {
namespace {

constexpr uint64_t kWindowBytes = uint64_t{64} << 10;
// After a jump the neighbourhood may not be wanted: interleaved planes are read a little here, a little
// there.
constexpr uint64_t kJumpBytes = uint64_t{16} << 10;
constexpr uint64_t kLargestTransfer = uint64_t{1} << 30;

// Reads until `bytes` are there, the file ends or the system fails.
uint64_t ReadFully(int descriptor, uint8_t* buffer, uint64_t bytes, int64_t position) {
  uint64_t done = 0;
  while (done < bytes) {
    const uint64_t step = std::min(bytes - done, kLargestTransfer);
    const ssize_t moved = pread(descriptor, buffer + done, step, position + static_cast<int64_t>(done));
    if (moved < 0 && errno == EINTR) continue;
    if (moved <= 0) break;
    done += static_cast<uint64_t>(moved);
  }
  return done;
}

uint64_t WriteFully(int descriptor, const uint8_t* buffer, uint64_t bytes, int64_t position) {
  uint64_t done = 0;
  while (done < bytes) {
    const uint64_t step = std::min(bytes - done, kLargestTransfer);
    const ssize_t moved = pwrite(descriptor, buffer + done, step, position + static_cast<int64_t>(done));
    if (moved < 0 && errno == EINTR) continue;
    if (moved <= 0) break;
    done += static_cast<uint64_t>(moved);
  }
  return done;
}

// What may still be moved from a position without passing the largest one.
uint64_t RoomAfter(int64_t position) {
  return static_cast<uint64_t>(INT64_MAX - position);
}

}  // namespace

std::shared_ptr<OpenFile> OpenFile::Open(const char* path, FileAccess access) {
  // O_NONBLOCK: opening a pipe that nobody writes to would otherwise wait for ever. Regular files ignore it.
  const int flags = access == FileAccess::kRead ? O_RDONLY : O_RDWR | O_CREAT | O_TRUNC;
  int descriptor = -1;
  do {
    descriptor = open(path, flags | O_CLOEXEC | O_NOCTTY | O_NONBLOCK, 0666);
  } while (descriptor < 0 && errno == EINTR);
  if (descriptor < 0) return nullptr;
  struct stat status {};
  if (fstat(descriptor, &status) != 0 || !S_ISREG(status.st_mode)) {
    close(descriptor);
    return nullptr;
  }
  try {
    return std::make_shared<OpenFile>(descriptor);
  } catch (const std::bad_alloc&) {
    close(descriptor);
    throw;
  }
}

OpenFile::~OpenFile() {
  close(descriptor_);
}

// Brings the stretch from the position on into the window; false when nothing could be read.
bool OpenFile::FillWindow() noexcept {
  if (window_ == nullptr) window_.reset(new (std::nothrow) uint8_t[kWindowBytes]);
  if (window_ == nullptr) return false;
  const bool goes_on = position_ >= window_start_ &&
                       static_cast<uint64_t>(position_ - window_start_) <= window_bytes_ + kWindowBytes;
  const uint64_t wanted = std::min(goes_on ? kWindowBytes : kJumpBytes, RoomAfter(position_));
  window_start_ = position_;
  window_bytes_ = ReadFully(descriptor_, window_.get(), wanted, position_);
  return window_bytes_ != 0;
}

// Takes what the window holds at the position.
uint64_t OpenFile::ReadWindow(uint8_t* buffer, uint64_t bytes) noexcept {
  if (position_ < window_start_) return 0;
  const auto offset = static_cast<uint64_t>(position_ - window_start_);
  if (offset >= window_bytes_) return 0;
  const uint64_t taken = std::min(bytes, window_bytes_ - offset);
  std::memcpy(buffer, window_.get() + offset, taken);
  position_ += static_cast<int64_t>(taken);
  return taken;
}

uint64_t OpenFile::Read(uint8_t* buffer, uint64_t bytes) noexcept {
  if (buffer == nullptr || bytes == 0) return 0;
  bytes = std::min(bytes, RoomAfter(position_));
  uint64_t done = ReadWindow(buffer, bytes);
  while (done < bytes && bytes - done < kJumpBytes && FillWindow())
    done += ReadWindow(buffer + done, bytes - done);
  if (done < bytes) {
    const uint64_t direct = ReadFully(descriptor_, buffer + done, bytes - done, position_);
    position_ += static_cast<int64_t>(direct);
    done += direct;
  }
  return done;
}

uint64_t OpenFile::Write(const uint8_t* buffer, uint64_t bytes) noexcept {
  if (buffer == nullptr || bytes == 0) return 0;
  window_bytes_ = 0;  // it may hold what is now overwritten
  const uint64_t done = WriteFully(descriptor_, buffer, std::min(bytes, RoomAfter(position_)), position_);
  position_ += static_cast<int64_t>(done);
  return done;
}

int64_t OpenFile::Seek(int64_t offset, int32_t origin) noexcept {
  int64_t base = 0;
  if (origin == 1) {
    base = position_;
  } else if (origin == 2) {
    struct stat status {};
    if (fstat(descriptor_, &status) != 0) return -1;
    base = status.st_size;
  } else if (origin != 0) {
    return -1;
  }
  if (offset > 0 && base > INT64_MAX - offset) return -1;
  if (base + offset < 0) return -1;
  position_ = base + offset;
  return position_;
}

}  // namespace tavi::host

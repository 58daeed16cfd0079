#include "SaveOutput.h"

#include <algorithm>

#include "TaviStatus.h"

namespace tavi {

TAVI_UNIT(L"Common/SaveOutput")

namespace {

constexpr uint64_t kBufferSize = uint64_t{1} << 20;
constexpr uint32_t kCreateOrEmpty = 0x8302;  // raw bytes, for reading and writing
constexpr uint32_t kOwnerWrites = 0x80;

}  // namespace

bool SaveOutput::Prepare() {
  return buffer_.Allocate(kBufferSize, Here());
}

void SaveOutput::Open(const wchar_t* path) {
  file_ = HostFileOpen(path, kCreateOrEmpty, kOwnerWrites);
}

void SaveOutput::SeekTo(int64_t position) {
  if (position >= 0) position_ = position;
}

uint8_t* SaveOutput::Room(uint64_t& size) {
  const bool follows = position_ >= start_ && position_ <= start_ + static_cast<int64_t>(used_);
  if (!follows || position_ - start_ == static_cast<int64_t>(kBufferSize)) {
    Flush();
    start_ = position_;
  }
  const auto offset = static_cast<uint64_t>(position_ - start_);
  size = std::min(size, kBufferSize - offset);
  return buffer_.data() + offset;
}

void SaveOutput::Took(uint64_t size) {
  position_ += static_cast<int64_t>(size);
  used_ = std::max(used_, static_cast<uint64_t>(position_ - start_));
  end_ = std::max(end_, position_);
}

int32_t SaveOutput::Write(const void* bytes, uint64_t size) {
  const auto* from = static_cast<const uint8_t*>(bytes);
  while (size != 0 && !failed_) {
    uint64_t taken = size;
    uint8_t* to = Room(taken);
    HostMemCopy(to, from, taken);
    Took(taken);
    from += taken;
    size -= taken;
  }
  return failed_ ? ERR_FILE_WRITE : SUCCESS;
}

int32_t SaveOutput::WriteRepeated(char byte, uint64_t size) {
  while (size != 0 && !failed_) {
    uint64_t taken = size;
    uint8_t* to = Room(taken);
    HostMemSet(to, static_cast<uint8_t>(byte), taken);
    Took(taken);
    size -= taken;
  }
  return failed_ ? ERR_FILE_WRITE : SUCCESS;
}

int32_t SaveOutput::Copy(NitfFile& source, uint64_t size) {
  while (size != 0 && !failed_) {
    uint64_t wanted = size;
    uint8_t* to = Room(wanted);
    const uint64_t read = ReadSource(source, to, wanted);
    Took(read);
    if (read != wanted) return ERR_FILE_READ;
    size -= read;
  }
  return failed_ ? ERR_FILE_WRITE : SUCCESS;
}

int32_t SaveOutput::Flush() {
  if (used_ != 0 && !failed_) {
    failed_ = HostFileSeek(file_, start_, kFromStart) != start_ ||
              HostFileWrite(file_, buffer_.data(), used_) != used_;
  }
  start_ = position_;
  used_ = 0;
  return failed_ ? ERR_FILE_WRITE : SUCCESS;
}

int32_t SaveOutput::Close() {
  const int32_t status = Flush();
  if (file_ != kNoFile) HostFileClose(file_);
  file_ = kNoFile;
  return status;
}

}  // namespace tavi

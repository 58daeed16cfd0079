#include "OutputFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <filesystem>
#include <system_error>

namespace tavinitf {
namespace {

// Names of the parts under way, for the signal handler: it may only read memory and call unlink. One place
// for each thread that can write; a part without a place is written all the same.
constexpr size_t kSlots = 256;
std::array<std::atomic<const char*>, kSlots> parts_under_way{};

size_t TakeSlot(const char* name) {
  for (size_t i = 0; i < kSlots; ++i) {
    const char* free_slot = nullptr;
    if (parts_under_way[i].compare_exchange_strong(free_slot, name)) return i;
  }
  return kSlots;
}

void FreeSlot(size_t slot) {
  if (slot < kSlots) parts_under_way[slot] = nullptr;
}

void RemovePartsAndEnd(int signal) {
  for (const auto& part : parts_under_way) {
    if (const char* name = part) unlink(name);
  }
  std::signal(signal, SIG_DFL);
  raise(signal);
}

// A target that exists keeps its place where it really stands: a link is followed, and what is no regular
// file, such as a device, is never replaced.
bool ResolveTarget(const std::string& target, std::string& resolved, std::string& reason) {
  std::error_code error;
  const auto status = std::filesystem::status(target, error);
  if (std::filesystem::is_directory(status)) {
    reason = "is a directory";
  } else if (std::filesystem::exists(status) && !std::filesystem::is_regular_file(status)) {
    reason = "is no regular file";
  } else if (!std::filesystem::exists(status) && std::filesystem::is_symlink(target, error)) {
    reason = "is a link to nothing";
  } else {
    const auto canonical = std::filesystem::weakly_canonical(target, error);
    resolved = error ? target : canonical.string();
  }
  return reason.empty();
}

}  // namespace

OutputFile::~OutputFile() {
  if (file_ != nullptr) std::fclose(file_);
  if (!part_.empty()) {
    unlink(part_.c_str());
    FreeSlot(slot_);
  }
}

bool OutputFile::Fail(const std::string& reason) {
  if (error_.empty()) error_ = reason;
  return false;
}

bool OutputFile::FailFromSystem() {
  return Fail(std::strerror(errno));
}

bool OutputFile::Open(const std::string& target) {
  std::string reason;
  if (!ResolveTarget(target, target_, reason)) return Fail(reason);
  const std::filesystem::path path(target_);
  for (int attempt = 0; attempt < 1000; ++attempt) {
    const std::string name = "." + path.filename().string() + "." + std::to_string(getpid()) + "-" +
                             std::to_string(attempt) + ".part";
    const std::string part = (path.parent_path() / name).string();
    const int descriptor = open(part.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
    if (descriptor < 0 && errno == EEXIST) continue;
    if (descriptor < 0) return FailFromSystem();
    part_ = part;
    slot_ = TakeSlot(part_.c_str());
    file_ = fdopen(descriptor, "w+b");
    if (file_ == nullptr) {
      FailFromSystem();
      close(descriptor);
      return false;
    }
    return true;
  }
  return Fail("no free temporary name beside it");
}

bool OutputFile::Write(const void* data, size_t size) {
  if (std::fwrite(data, 1, size, file_) != size) return FailFromSystem();
  size_ = std::max(size_, Position());
  return true;
}

bool OutputFile::Read(void* data, size_t size) {
  return std::fread(data, 1, size, file_) == size || Fail("cannot be read back");
}

bool OutputFile::Seek(int64_t offset, int origin) {
  return fseeko(file_, offset, origin) == 0 || FailFromSystem();
}

int64_t OutputFile::Position() const {
  return ftello(file_);
}

bool OutputFile::Commit() {
  if (!error_.empty()) return false;
  const bool flushed = std::fflush(file_) == 0 || FailFromSystem();
  const bool closed = std::fclose(file_) == 0 || FailFromSystem();
  file_ = nullptr;
  if (!flushed || !closed) return false;
  if (std::rename(part_.c_str(), target_.c_str()) != 0) return FailFromSystem();
  FreeSlot(slot_);
  part_.clear();
  return true;
}

void RemovePartsOnSignals() {
  for (const int number : {SIGINT, SIGTERM, SIGHUP}) std::signal(number, RemovePartsAndEnd);
  // A write beyond the file size limit is a failed write like any other.
  std::signal(SIGXFSZ, SIG_IGN);
}

}  // namespace tavinitf

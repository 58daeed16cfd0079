#include "OutputFile.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cerrno>
#include <climits>
#include <csignal>
#include <cstring>
#include <filesystem>
#include <iterator>
#include <system_error>

namespace tavinitf {
namespace {

// Names of the parts under way, for the signal handler: it may only read memory and call what is safe in it. One place
// for each thread that can write; a part without a place is written all the same.
constexpr size_t kSlots = 256;
std::array<std::atomic<const char*>, kSlots> parts_under_way{};
std::atomic<int> changes_under_way = 0;
std::atomic<bool> is_ending = false;

// The last ones come of faults in libraries, which do without memory badly.
constexpr std::array kEndingSignals = {SIGINT,  SIGTERM, SIGHUP,  SIGQUIT, SIGPIPE,
                                       SIGXCPU, SIGABRT, SIGSEGV, SIGBUS};

// While it lives, a part comes into being or goes: its file and its place among those under way do not agree, and no
// signal that ends the program may come between. This thread puts signals off, a handler on another one waits.
class PartChange {
 public:
  PartChange() {
    sigset_t ending{};
    sigemptyset(&ending);
    for (const int number : kEndingSignals) sigaddset(&ending, number);
    pthread_sigmask(SIG_BLOCK, &ending, &before_);
    ++changes_under_way;
    // What a handler has seen is what it removes: nothing may be added behind its back.
    while (is_ending) {
      --changes_under_way;
      pause();
      ++changes_under_way;
    }
  }
  ~PartChange() {
    --changes_under_way;
    pthread_sigmask(SIG_SETMASK, &before_, nullptr);
  }
  PartChange(const PartChange&) = delete;
  PartChange& operator=(const PartChange&) = delete;

 private:
  sigset_t before_{};
};

constexpr int kStreams[] = {STDOUT_FILENO, STDERR_FILENO};
// Of a file that replaces another only its owner sees anything before it is whole.
constexpr mode_t kPrivate = 0600;
constexpr mode_t kPermissions = 07777;

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

// A change takes as long as the system takes for a call; one that hangs is not waited for longer than a second.
void AwaitChanges() {
  for (int i = 0; i < 1000 && changes_under_way != 0; ++i) poll(nullptr, 0, 1);
}

void RemovePartsAndEnd(int signal) {
  is_ending = true;
  AwaitChanges();
  for (const auto& part : parts_under_way) {
    if (const char* name = part) unlink(name);
  }
  std::signal(signal, SIG_DFL);
  raise(signal);
}

// Whether standard output or standard error go into the file: replacing it would take away what others print there.
bool IsPrintedTo(const std::string& target) {
  struct stat file {};
  struct stat stream {};
  if (stat(target.c_str(), &file) != 0) return false;
  return std::any_of(std::begin(kStreams), std::end(kStreams), [&](int descriptor) {
    return fstat(descriptor, &stream) == 0 && stream.st_dev == file.st_dev && stream.st_ino == file.st_ino;
  });
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
  } else if (IsPrintedTo(target)) {
    reason = "is where this program prints";
  } else {
    const auto canonical = std::filesystem::weakly_canonical(target, error);
    resolved = error ? target : canonical.string();
  }
  return reason.empty();
}

}  // namespace

OutputFile::~OutputFile() {
  if (file_ != nullptr) std::fclose(file_);
  if (part_.empty()) return;
  const PartChange change;
  unlink(part_.c_str());
  FreeSlot(slot_);
}

bool OutputFile::Fail(const std::string& reason) {
  if (error_.empty()) error_ = reason;
  return false;
}

bool OutputFile::FailFromSystem() {
  return Fail(std::strerror(errno));
}

// Makes the file of that name, which is this output's part from then on. From the file to its place in the table
// nothing may fail.
int OutputFile::Create(std::string& part) {
  const PartChange change;
  const mode_t mode = replaced_mode_ ? kPrivate : 0666;
  const int descriptor = open(part.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, mode);
  if (descriptor < 0) return descriptor;
  part_.swap(part);
  slot_ = TakeSlot(part_.c_str());
  return descriptor;
}

bool OutputFile::Open(const std::string& target) {
  std::string reason;
  if (!ResolveTarget(target, target_, reason)) return Fail(reason);
  struct stat replaced {};
  if (stat(target_.c_str(), &replaced) == 0) replaced_mode_ = replaced.st_mode & kPermissions;
  const std::filesystem::path path(target_);
  for (int attempt = 0; attempt < 1000; ++attempt) {
    const std::string ending = "." + std::to_string(getpid()) + "-" + std::to_string(attempt) + ".part";
    // The longest names leave no room for an ending.
    const std::string name = "." + path.filename().string().substr(0, NAME_MAX - 1 - ending.size());
    std::string part = (path.parent_path() / (name + ending)).string();
    const int descriptor = Create(part);
    if (descriptor < 0 && errno == EEXIST) continue;
    if (descriptor < 0) return FailFromSystem();
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
  // Some systems tell only now that there was no room for what they have taken. Some files cannot be synchronised.
  const bool flushed = std::fflush(file_) == 0 || FailFromSystem();
  const bool stored = !flushed || fsync(fileno(file_)) == 0 || errno == EINVAL || FailFromSystem();
  // Some file systems know no permissions.
  if (stored && replaced_mode_) fchmod(fileno(file_), *replaced_mode_);
  const bool closed = std::fclose(file_) == 0 || FailFromSystem();
  file_ = nullptr;
  if (!flushed || !stored || !closed) return false;
  const PartChange change;
  if (std::rename(part_.c_str(), target_.c_str()) != 0) return FailFromSystem();
  FreeSlot(slot_);
  part_.clear();
  return true;
}

void RemovePartsOnSignals() {
  for (const int number : kEndingSignals) {
    // What is ignored, as by nohup, stays so, and so does what tells of faults of its own.
    const auto before = std::signal(number, RemovePartsAndEnd);
    if (before != SIG_DFL && before != SIG_ERR) std::signal(number, before);
  }
  // A write beyond the file size limit is a failed write like any other.
  std::signal(SIGXFSZ, SIG_IGN);
}

}  // namespace tavinitf

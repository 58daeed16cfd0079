#include "FaultyCalls.h"

#include <dlfcn.h>
#include <fcntl.h>
#include <sys/mman.h>
#include <sys/sendfile.h>
#include <sys/uio.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "FaultNew.h"

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
// The sanitizers' own allocator stays where it is.
constexpr bool kLanguageMemoryFails = true;
#else
#define TAVI_MALLOC_FAILS 1
constexpr bool kLanguageMemoryFails = false;
#endif

namespace tavinitf::faults {
namespace {

constexpr int kMostFiles = 1024;

// Plain and without constructors: the allocation functions look at it before anything is constructed.
struct State {
  std::atomic<bool> armed;
  std::atomic<bool> begun;  // a file under the folder has been named
  std::atomic<uint64_t> seen;
  Plan plan;
  const char* folder;
  Progress* progress;
  std::array<std::atomic<bool>, kMostFiles> is_ours;  // by descriptor
};

constinit State state{};

enum class Fate : uint8_t { kGoesOn, kFails, kSignalBefore, kSignalAfter };

Fate Decide(Call call) {
  const Plan& plan = state.plan;
  const bool counts = plan.call == call || (plan.call == Call::kAny && call != Call::kMemory);
  if (!state.armed || !counts) return Fate::kGoesOn;
  const uint64_t seen = ++state.seen;
  state.progress->seen = seen;
  if (plan.lasting ? seen < plan.nth : seen != plan.nth) return Fate::kGoesOn;
  state.progress->happened = true;
  if (plan.signal == 0) return Fate::kFails;
  return plan.after ? Fate::kSignalAfter : Fate::kSignalBefore;
}

// Runs `work`, or lets it fail in its place.
template <class Result, class Failure, class Work>
Result Faulty(Call call, bool is_ours, Failure fail, Work work) {
  const Fate fate = is_ours ? Decide(call) : Fate::kGoesOn;
  if (fate == Fate::kFails) return fail();
  if (fate == Fate::kSignalBefore) kill(getpid(), state.plan.signal);
  const Result result = work();
  if (fate == Fate::kSignalAfter) {
    const int error = errno;
    kill(getpid(), state.plan.signal);
    errno = error;
  }
  return result;
}

template <class Result>
auto Failing(int error, Result result) {
  return [=] {
    errno = error;
    return result;
  };
}

bool Names(const char* path) {
  if (!state.armed || path == nullptr) return false;
  const bool is_ours = std::strncmp(path, state.folder, std::strlen(state.folder)) == 0;
  if (is_ours) state.begun = true;
  return is_ours;
}

bool IsOurs(int descriptor) {
  return state.armed && descriptor >= 0 && descriptor < kMostFiles &&
         state.is_ours[static_cast<size_t>(descriptor)];
}

bool IsOurs(std::FILE* file) {
  return state.armed && file != nullptr && IsOurs(fileno(file));
}

int Follow(int descriptor, bool is_ours) {
  if (descriptor >= 0 && descriptor < kMostFiles) state.is_ours[static_cast<size_t>(descriptor)] = is_ours;
  return descriptor;
}

// The function of that name behind this executable.
template <class Function>
Function* Next(Function*, const char* name) {
  return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

bool MemoryFails() {
  return state.begun && Decide(Call::kMemory) == Fate::kFails;
}

}  // namespace

void Arm(const Plan& plan, const char* folder, Progress* progress) {
  state.plan = plan;
  state.folder = folder;
  state.progress = progress;
  state.armed = true;
}

void Disarm() {
  state.armed = false;
}

}  // namespace tavinitf::faults

namespace tavi::faults {

Refusal RefuseRequest(uint64_t) {
  return kLanguageMemoryFails && tavinitf::faults::MemoryFails() ? Refusal::kNoMemory : Refusal::kNone;
}

void NoteRelease() {}

}  // namespace tavi::faults

using tavinitf::faults::Call;
using tavinitf::faults::Failing;
using tavinitf::faults::Faulty;
using tavinitf::faults::Follow;
using tavinitf::faults::IsOurs;
using tavinitf::faults::MemoryFails;
using tavinitf::faults::Names;
using tavinitf::faults::Next;

#define NEXT(function) static const auto next = Next(&function, #function)

namespace {

mode_t ModeOf(int flags, va_list arguments) {
  return (flags & (O_CREAT | O_TMPFILE)) != 0 ? va_arg(arguments, mode_t) : 0;
}

template <class Open>
int OpenWith(Open next, const char* path, int flags, mode_t mode) {
  const bool is_ours = Names(path);
  return Faulty<int>(Call::kOpen, is_ours, Failing(EMFILE, -1),
                     [&] { return Follow(next(path, flags, mode), is_ours); });
}

template <class Open>
std::FILE* OpenStream(Open next, const char* path, const char* mode) {
  const bool is_ours = Names(path);
  return Faulty<std::FILE*>(Call::kOpen, is_ours, Failing<std::FILE*>(EMFILE, nullptr), [&] {
    std::FILE* const file = next(path, mode);
    if (file != nullptr) Follow(fileno(file), is_ours);
    return file;
  });
}

// What the stream has in its buffer is read all the same; what it asks the system for is refused.
template <class Read>
auto WithoutReading(std::FILE* file, Read read) {
  const int descriptor = fileno(file);
  const int kept = fcntl(descriptor, F_DUPFD_CLOEXEC, 0);
  const int unreadable = open("/dev/null", O_WRONLY);
  dup2(unreadable, descriptor);
  const auto result = read();
  dup2(kept, descriptor);
  close(kept);
  close(unreadable);
  errno = EIO;
  return result;
}

}  // namespace

extern "C" {

int open(const char* path, int flags, ...) {
  va_list arguments;
  va_start(arguments, flags);
  const mode_t mode = ModeOf(flags, arguments);
  va_end(arguments);
  NEXT(open);
  return OpenWith(next, path, flags, mode);
}

int open64(const char* path, int flags, ...) {
  va_list arguments;
  va_start(arguments, flags);
  const mode_t mode = ModeOf(flags, arguments);
  va_end(arguments);
  NEXT(open64);
  return OpenWith(next, path, flags, mode);
}

std::FILE* fopen(const char* path, const char* mode) {
  NEXT(fopen);
  return OpenStream(next, path, mode);
}

std::FILE* fopen64(const char* path, const char* mode) {
  NEXT(fopen64);
  return OpenStream(next, path, mode);
}

std::FILE* fdopen(int descriptor, const char* mode) noexcept {
  NEXT(fdopen);
  return Faulty<std::FILE*>(Call::kOpen, IsOurs(descriptor), Failing<std::FILE*>(EMFILE, nullptr),
                            [&] { return next(descriptor, mode); });
}

ssize_t read(int descriptor, void* buffer, size_t bytes) {
  NEXT(read);
  return Faulty<ssize_t>(Call::kRead, IsOurs(descriptor), Failing(EIO, ssize_t{-1}),
                         [&] { return next(descriptor, buffer, bytes); });
}

ssize_t pread(int descriptor, void* buffer, size_t bytes, off_t position) {
  NEXT(pread);
  return Faulty<ssize_t>(Call::kRead, IsOurs(descriptor), Failing(EIO, ssize_t{-1}),
                         [&] { return next(descriptor, buffer, bytes, position); });
}

size_t fread(void* buffer, size_t size, size_t count, std::FILE* file) {
  NEXT(fread);
  const auto read = [&] { return next(buffer, size, count, file); };
  return Faulty<size_t>(
      Call::kRead, IsOurs(file), [&] { return WithoutReading(file, read); }, read);
}

int fgetc(std::FILE* file) {
  NEXT(fgetc);
  const auto read = [&] { return next(file); };
  return Faulty<int>(
      Call::kRead, IsOurs(file), [&] { return WithoutReading(file, read); }, read);
}

int dup(int descriptor) noexcept {
  NEXT(dup);
  return Follow(next(descriptor), IsOurs(descriptor));
}

ssize_t write(int descriptor, const void* bytes, size_t count) {
  NEXT(write);
  return Faulty<ssize_t>(Call::kWrite, IsOurs(descriptor), Failing(ENOSPC, ssize_t{-1}),
                         [&] { return next(descriptor, bytes, count); });
}

ssize_t writev(int descriptor, const struct iovec* pieces, int count) {
  NEXT(writev);
  return Faulty<ssize_t>(Call::kWrite, IsOurs(descriptor), Failing(ENOSPC, ssize_t{-1}),
                         [&] { return next(descriptor, pieces, count); });
}

ssize_t pwrite(int descriptor, const void* bytes, size_t count, off_t position) {
  NEXT(pwrite);
  return Faulty<ssize_t>(Call::kWrite, IsOurs(descriptor), Failing(ENOSPC, ssize_t{-1}),
                         [&] { return next(descriptor, bytes, count, position); });
}

ssize_t sendfile(int to, int from, off_t* position, size_t count) noexcept {
  NEXT(sendfile);
  return Faulty<ssize_t>(Call::kWrite, IsOurs(to), Failing(ENOSPC, ssize_t{-1}),
                         [&] { return next(to, from, position, count); });
}

ssize_t copy_file_range(int from, off64_t* from_position, int to, off64_t* to_position, size_t count,
                        unsigned flags) {
  NEXT(copy_file_range);
  return Faulty<ssize_t>(Call::kWrite, IsOurs(to), Failing(ENOSPC, ssize_t{-1}),
                         [&] { return next(from, from_position, to, to_position, count, flags); });
}

size_t fwrite(const void* bytes, size_t size, size_t count, std::FILE* file) {
  NEXT(fwrite);
  const auto fail = [&] {
    const size_t half = next(bytes, size, count / 2, file);
    errno = ENOSPC;
    return half;
  };
  return Faulty<size_t>(Call::kWrite, IsOurs(file), fail, [&] { return next(bytes, size, count, file); });
}

off_t lseek(int descriptor, off_t offset, int origin) noexcept {
  NEXT(lseek);
  return Faulty<off_t>(Call::kSeek, IsOurs(descriptor), Failing(EIO, off_t{-1}),
                       [&] { return next(descriptor, offset, origin); });
}

off64_t lseek64(int descriptor, off64_t offset, int origin) noexcept {
  NEXT(lseek64);
  return Faulty<off64_t>(Call::kSeek, IsOurs(descriptor), Failing(EIO, off64_t{-1}),
                         [&] { return next(descriptor, offset, origin); });
}

int fseeko(std::FILE* file, off_t offset, int origin) {
  NEXT(fseeko);
  return Faulty<int>(Call::kSeek, IsOurs(file), Failing(EIO, -1), [&] { return next(file, offset, origin); });
}

int truncate(const char* path, off_t size) noexcept {
  NEXT(truncate);
  return Faulty<int>(Call::kSeek, Names(path), Failing(EIO, -1), [&] { return next(path, size); });
}

int fflush(std::FILE* file) {
  NEXT(fflush);
  return Faulty<int>(Call::kEnd, IsOurs(file), Failing(EIO, EOF), [&] { return next(file); });
}

// The disk itself is not waited for, which would take most of the tests' time.
int fsync(int descriptor) {
  NEXT(fsync);
  const bool is_ours = IsOurs(descriptor);
  return Faulty<int>(Call::kEnd, is_ours, Failing(EIO, -1), [&] { return is_ours ? 0 : next(descriptor); });
}

int fclose(std::FILE* file) {
  NEXT(fclose);
  const bool is_ours = IsOurs(file);
  const auto close = [&] {
    if (is_ours) Follow(fileno(file), false);
    return next(file);
  };
  const auto fail = [&] {
    close();
    errno = EIO;
    return EOF;
  };
  return Faulty<int>(Call::kEnd, is_ours, fail, close);
}

int close(int descriptor) {
  NEXT(close);
  const bool is_ours = IsOurs(descriptor);
  const auto close_it = [&] {
    if (is_ours) Follow(descriptor, false);
    return next(descriptor);
  };
  const auto fail = [&] {
    close_it();
    errno = EIO;
    return -1;
  };
  return Faulty<int>(Call::kEnd, is_ours, fail, close_it);
}

int rename(const char* from, const char* to) noexcept {
  NEXT(rename);
  return Faulty<int>(Call::kRename, Names(to), Failing(EACCES, -1), [&] { return next(from, to); });
}

#if defined(TAVI_MALLOC_FAILS)

// dlsym takes memory itself; these are the C library's own names for its allocator.
void* __libc_malloc(size_t bytes);
void* __libc_calloc(size_t count, size_t bytes);
void* __libc_realloc(void* block, size_t bytes);

void* malloc(size_t bytes) noexcept {
  if (!MemoryFails()) return __libc_malloc(bytes);
  errno = ENOMEM;
  return nullptr;
}

void* calloc(size_t count, size_t bytes) noexcept {
  if (!MemoryFails()) return __libc_calloc(count, bytes);
  errno = ENOMEM;
  return nullptr;
}

void* realloc(void* block, size_t bytes) noexcept {
  if (!MemoryFails()) return __libc_realloc(block, bytes);
  errno = ENOMEM;
  return nullptr;
}

void* mmap(void* address, size_t bytes, int protection, int flags, int descriptor, off_t offset) noexcept {
  NEXT(mmap);
  if (!MemoryFails()) return next(address, bytes, protection, flags, descriptor, offset);
  errno = ENOMEM;
  return MAP_FAILED;
}

#endif

}  // extern "C"

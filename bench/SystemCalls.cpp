// Counts system calls by watching a child process stop at each of them.
#include <sys/ptrace.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>

#include "Bench.h"
#include "TaviNitf.h"

namespace tavi_bench {
namespace {

// Marks begin and end of what is counted; nothing else calls it.
constexpr uint64_t kMarker = SYS_getppid;

[[noreturn]] void OpenBetweenMarkers(const std::wstring& path) {
  if (ptrace(PTRACE_TRACEME, 0, nullptr, nullptr) != 0) _exit(1);
  raise(SIGSTOP);
  syscall(SYS_getppid);
  NitfHandle document = nullptr;
  const int32_t status = Tavi_NITFCreate(&document, path.c_str());
  syscall(SYS_getppid);
  _exit(status == SUCCESS ? 0 : 1);
}

}  // namespace

int CountOpenSystemCalls(const std::wstring& path) {
  const pid_t child = fork();
  if (child == 0) OpenBetweenMarkers(path);
  int state = 0;
  if (child < 0 || waitpid(child, &state, 0) != child || !WIFSTOPPED(state)) return -1;
  ptrace(PTRACE_SETOPTIONS, child, nullptr, PTRACE_O_TRACESYSGOOD);
  int markers = 0;
  int calls = 0;
  while (ptrace(PTRACE_SYSCALL, child, nullptr, nullptr) == 0 && waitpid(child, &state, 0) == child) {
    if (WIFEXITED(state) || WIFSIGNALED(state)) break;
    __ptrace_syscall_info info{};
    const long size = ptrace(PTRACE_GET_SYSCALL_INFO, child, sizeof(info), &info);
    if (size <= 0 || info.op != PTRACE_SYSCALL_INFO_ENTRY) continue;
    if (info.entry.nr == kMarker) {
      ++markers;
    } else if (markers == 1) {
      ++calls;
    }
  }
  const bool opened = WIFEXITED(state) && WEXITSTATUS(state) == 0;
  return opened && markers == 2 ? calls : -1;
}

}  // namespace tavi_bench

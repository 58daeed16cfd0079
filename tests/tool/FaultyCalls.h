// Calls of the system and of the C library that fail on demand. The test executable defines them itself, so that they come
// before the libraries' own for all that is linked into it: the tool's objects, the host and the language's library.
//
// Only calls on files under the plan's folder count, and those for memory from the first of such files on: what the tool
// does before it knows its files is the same whatever it is asked.
#pragma once

#include <cstdint>

namespace tavinitf::faults {

enum class Call : uint8_t {
  kOpen,    // open, fopen, fdopen: EMFILE
  kRead,    // read, pread, fread, fgetc: EIO, the streams having given what was in their buffers
  kWrite,   // write, pwrite, writev, fwrite, sendfile, copy_file_range: ENOSPC, fwrite having moved half
  kSeek,    // lseek, fseeko, truncate: EIO
  kEnd,     // fflush, fsync, fclose, close: EIO, and the file is closed all the same
  kRename,  // rename: EACCES
  kMemory,  // malloc, calloc, realloc, mmap; under sanitizers the allocation functions of the language
  kAny,     // each of the above but memory, for signals
};

struct Plan {
  Call call;
  uint64_t nth;        // counted from 1
  bool lasting;        // and every later one
  int signal = 0;      // in place of failing, the process gets it
  bool after = false;  // the signal comes when the call is done
};

// What the faults of a process share with the one that has made it.
struct Progress {
  uint64_t seen;
  bool happened;
};

// From now on, in this process. The progress and the folder's name have to last.
void Arm(const Plan& plan, const char* folder, Progress* progress);
void Disarm();

}  // namespace tavinitf::faults

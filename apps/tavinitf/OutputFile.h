// An output file that appears whole or not at all: it is written beside its target under a temporary name and
// takes the target's place at the end.
#pragma once

#include <sys/types.h>

#include <cstdint>
#include <cstdio>
#include <optional>
#include <string>

namespace tavinitf {

class OutputFile {
 public:
  OutputFile() = default;
  ~OutputFile();
  OutputFile(const OutputFile&) = delete;
  OutputFile& operator=(const OutputFile&) = delete;

  // Each returns false on failure; error() then says why, and stays as the first failure left it.
  bool Open(const std::string& target);
  bool Write(const void* data, size_t size);
  bool Read(void* data, size_t size);  // TIFF reads its own directory back
  bool Seek(int64_t offset, int origin);
  // Completes the file and puts it in the target's place. Without it the destructor removes what was written.
  bool Commit();

  // The temporary name, for one who writes the file by its name in place of Write: whatever stands there when Commit is
  // called takes the target's place.
  [[nodiscard]] const std::string& part() const { return part_; }
  [[nodiscard]] int64_t Position() const;
  [[nodiscard]] int64_t Size() const { return size_; }
  [[nodiscard]] const std::string& error() const { return error_; }
  // Takes down the first reason for a failure; returns false.
  bool Fail(const std::string& reason);

 private:
  bool FailFromSystem();
  int Create(std::string& part);

  std::FILE* file_ = nullptr;
  std::string target_;
  std::string part_;
  std::string error_;
  int64_t size_ = 0;
  std::optional<mode_t> replaced_mode_;  // permissions of the file that is replaced, which its successor gets
  size_t slot_ = 0;                      // place in the table of parts to remove on a signal
};

// On a signal that ends the program, and when it aborts, removes the parts that are being written and then ends as the
// signal asks. Nothing can be done on SIGKILL: parts stay there, under their temporary names.
void RemovePartsOnSignals();

}  // namespace tavinitf

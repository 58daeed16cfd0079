// Small files that meet the limits of the host. What a file's bytes earn comes on top of a limit's value.
#ifndef TAVI_TESTS_LIMITS_LIMIT_FILES_H
#define TAVI_TESTS_LIMITS_LIMIT_FILES_H

#include <cstdint>
#include <string>
#include <vector>

#include "NtfBuilder.h"

namespace tavi_test {

struct LimitFile {
  std::string limit;  // its name
  uint64_t value;
  BuiltFile file;
};

// For each limit a file that the value refuses, and that is drawn as things stand.
std::vector<LimitFile> MakeLimitFiles();
// Files that are refused as things stand, and drawn with the value.
std::vector<LimitFile> MakeFilesBeyondPresets();

}  // namespace tavi_test

#endif  // TAVI_TESTS_LIMITS_LIMIT_FILES_H

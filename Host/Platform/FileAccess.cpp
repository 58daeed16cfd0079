#include <unistd.h>

#include <new>
#include <string>

#include "TaviHost.h"
#include "TaviKernel/WideText.h"

// Modes other than 0 ask for the rights to write (2) and to read (4), as the original of the name has it.
int32_t _waccess(const wchar_t* path, int32_t mode) {
  if (path == nullptr) return -1;
  const int rights = mode == 0 ? F_OK : ((mode & 2) != 0 ? W_OK : 0) | ((mode & 4) != 0 ? R_OK : 0);
  try {
    std::string name;
    if (!tavi::host::ToUtf8(path, &name)) return -1;
    return access(name.c_str(), rights) == 0 ? 0 : -1;
  } catch (const std::bad_alloc&) {
    return -1;
  }
}

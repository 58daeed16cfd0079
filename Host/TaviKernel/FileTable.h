// Open files under numbers that stay wrong once they are wrong: a closed handle is never the handle of a
// later file.
#pragma once

#include <cstdint>
#include <memory>

namespace tavi::host {

class OpenFile;

// The handle of the file from now on, or -1 without memory.
int64_t RegisterFile(std::shared_ptr<OpenFile> file) noexcept;
// Null for a handle that is not open.
std::shared_ptr<OpenFile> FindFile(int64_t handle) noexcept;
// Takes the file out of the table; null when the handle is not open.
std::shared_ptr<OpenFile> UnregisterFile(int64_t handle) noexcept;

}  // namespace tavi::host

// Opening a file for a look into it, with the refusal in words when it does not open.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "Segments.h"

namespace tavinitf {

struct Reading {
  std::wstring wide_path;
  NitfContents contents;               // up to the refused field
  std::optional<std::string> refusal;  // what is wrong with the file, when it does not open
  int32_t refusal_status = 0;

  // The one line that tells of the refusal.
  [[nodiscard]] std::string RefusalLine(const std::string& path) const;
};

Reading Read(const std::string& path);

}  // namespace tavinitf

// File names as the shell hands them over (UTF-8) and as the library takes them (wide text).
#pragma once

#include <optional>
#include <string>

namespace tavinitf {

// Nothing when the name is not valid UTF-8: the library could not name such a file.
std::optional<std::wstring> WideFromUtf8(const std::string& name);

}  // namespace tavinitf

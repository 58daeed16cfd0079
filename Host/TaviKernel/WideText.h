// Wide text (UTF-16 or UTF-32, by the size of wchar_t) as UTF-8.
#pragma once

#include <string>

namespace tavi::host {

// False when the text holds a code point that does not exist (half a surrogate pair, or above 0x10FFFF). May
// throw std::bad_alloc.
bool ToUtf8(const wchar_t* text, std::string* out);

}  // namespace tavi::host

#include "PathNames.h"

#include <cstdint>

namespace tavinitf {
namespace {

struct Lead {
  uint32_t bits;
  int followers;
  uint32_t least;  // smaller values must be written with fewer bytes
};

std::optional<Lead> ReadLead(uint8_t byte) {
  if (byte < 0x80) return Lead{byte, 0, 0};
  if ((byte & 0xE0) == 0xC0) return Lead{byte & 0x1FU, 1, 0x80};
  if ((byte & 0xF0) == 0xE0) return Lead{byte & 0x0FU, 2, 0x800};
  if ((byte & 0xF8) == 0xF0) return Lead{byte & 0x07U, 3, 0x10000};
  return std::nullopt;
}

void Append(std::wstring& text, uint32_t code) {
  if (sizeof(wchar_t) == 2 && code >= 0x10000) {
    text.push_back(static_cast<wchar_t>(0xD800 + ((code - 0x10000) >> 10)));
    text.push_back(static_cast<wchar_t>(0xDC00 + ((code - 0x10000) & 0x3FF)));
  } else {
    text.push_back(static_cast<wchar_t>(code));
  }
}

}  // namespace

std::optional<std::wstring> WideFromUtf8(const std::string& name) {
  std::wstring wide;
  for (size_t i = 0; i < name.size();) {
    const std::optional<Lead> lead = ReadLead(static_cast<uint8_t>(name[i++]));
    if (!lead) return std::nullopt;
    uint32_t code = lead->bits;
    for (int k = 0; k < lead->followers; ++k) {
      if (i == name.size() || (static_cast<uint8_t>(name[i]) & 0xC0) != 0x80) return std::nullopt;
      code = (code << 6) | (static_cast<uint8_t>(name[i++]) & 0x3FU);
    }
    const bool surrogate = code >= 0xD800 && code <= 0xDFFF;
    if (code < lead->least || code > 0x10FFFF || surrogate) return std::nullopt;
    Append(wide, code);
  }
  return wide;
}

}  // namespace tavinitf

#include "JsonForms.h"

#include "Refusal.h"

namespace tavinitf {

std::string AsUtf8(const std::string& bytes) {
  std::string text;
  for (const char c : bytes) {
    const auto byte = static_cast<unsigned char>(c);
    if (byte < 0x80) {
      text += c;
    } else {
      text += static_cast<char>(0xC0 | (byte >> 6));
      text += static_cast<char>(0x80 | (byte & 0x3F));
    }
  }
  return text;
}

Json StatusAsJson(int32_t status, const std::string& text) {
  return {{"status", StatusName(status)}, {"number", status}, {"text", text}};
}

}  // namespace tavinitf

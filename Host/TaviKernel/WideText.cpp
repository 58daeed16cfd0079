#include "TaviKernel/WideText.h"

#include <cstdint>

namespace tavi::host {
namespace {

constexpr bool IsHighSurrogate(uint32_t unit) {
  return unit >= 0xD800 && unit <= 0xDBFF;
}
constexpr bool IsLowSurrogate(uint32_t unit) {
  return unit >= 0xDC00 && unit <= 0xDFFF;
}

// Takes one code point and moves on; false when there is none.
bool NextCodePoint(const wchar_t** text, uint32_t* point) {
  constexpr uint32_t kUnitMask = sizeof(wchar_t) == 2 ? 0xFFFFu : 0xFFFFFFFFu;
  const uint32_t first = static_cast<uint32_t>(*(*text)++) & kUnitMask;
  *point = first;
  if (sizeof(wchar_t) == 2 && IsHighSurrogate(first)) {
    const uint32_t second = static_cast<uint32_t>(**text) & kUnitMask;
    if (!IsLowSurrogate(second)) return false;
    ++*text;
    *point = 0x10000 + ((first - 0xD800) << 10) + (second - 0xDC00);
    return true;
  }
  return first <= 0x10FFFF && !IsHighSurrogate(first) && !IsLowSurrogate(first);
}

void AppendUtf8(uint32_t point, std::string* out) {
  const auto tail = [&](uint32_t shift) {
    out->push_back(static_cast<char>(0x80 | ((point >> shift) & 0x3F)));
  };
  if (point < 0x80) {
    out->push_back(static_cast<char>(point));
  } else if (point < 0x800) {
    out->push_back(static_cast<char>(0xC0 | (point >> 6)));
    tail(0);
  } else if (point < 0x10000) {
    out->push_back(static_cast<char>(0xE0 | (point >> 12)));
    tail(6);
    tail(0);
  } else {
    out->push_back(static_cast<char>(0xF0 | (point >> 18)));
    tail(12);
    tail(6);
    tail(0);
  }
}

}  // namespace

bool ToUtf8(const wchar_t* text, std::string* out) {
  out->clear();
  while (*text != 0) {
    uint32_t point = 0;
    if (!NextCodePoint(&text, &point)) return false;
    AppendUtf8(point, out);
  }
  return true;
}

}  // namespace tavi::host

#include "Utility.h"

#include <algorithm>
#include <charconv>
#include <cstdio>
#include <cstring>
#include <limits>

#include "TaviStatus.h"

namespace tavi {

namespace {

bool IsSpace(char c) {
  return c == ' ' || (c >= '\t' && c <= '\r');
}
bool IsDigit(char c) {
  return c >= '0' && c <= '9';
}

}  // namespace

int32_t ParseInteger(const char* text, size_t width) {
  size_t i = 0;
  while (i < width && IsSpace(text[i])) ++i;
  bool negative = false;
  if (i < width && (text[i] == '-' || text[i] == '+')) negative = text[i++] == '-';
  int64_t value = 0;
  constexpr int64_t kLargest = std::numeric_limits<int32_t>::max();
  for (; i < width && IsDigit(text[i]); ++i) value = std::min(value * 10 + (text[i] - '0'), kLargest + 1);
  return static_cast<int32_t>(negative ? -value : std::min(value, kLargest));
}

double ParseReal(const char* text, size_t width) {
  const char* end = text + width;
  while (text < end && IsSpace(*text)) ++text;
  if (text < end && *text == '+') ++text;
  double value = 0.0;
  std::from_chars(text, end, value);  // leaves 0 where there is no number
  return value;
}

LocationPair ParseLocationPair(const char* ten_characters) {
  constexpr size_t kHalf = 5;
  const auto half = [](const char* text) {
    if (text[0] != '-') return ParseInteger(text, kHalf);
    char digits[kHalf];
    std::memcpy(digits, text, kHalf);
    digits[0] = '0';
    return -ParseInteger(digits, kHalf);
  };
  return {half(ten_characters), half(ten_characters + kHalf)};
}

int32_t FormatNumericField(char* destination, uint32_t width, int32_t value) {
  char digits[16];
  const auto printed = static_cast<uint32_t>(std::snprintf(digits, sizeof digits, "%d", value));
  const uint32_t kept = std::min(printed, width);
  std::memset(destination, '0', width);
  std::memcpy(destination + width - kept, digits, kept);
  destination[width] = '\0';
  return SUCCESS;
}

int32_t SetFixedText(char* destination, uint32_t width, const char* text) {
  if (destination == nullptr || text == nullptr) return ERR_INVALID_PARAMETER;
  const size_t length = strnlen(text, width + 1);  // what is longer need not end
  if (length > width) return ERR_INVALID_PARAMETER;
  std::memset(destination, ' ', width);
  std::memcpy(destination, text, length);
  destination[width] = '\0';
  return SUCCESS;
}

int32_t CountTres(const void* block, uint32_t length) {
  constexpr uint64_t kTagWidth = 6;
  constexpr uint64_t kLengthWidth = 5;
  const auto* bytes = static_cast<const char*>(block);
  int32_t count = 0;
  for (uint64_t position = 0; position < length; ++count) {
    const uint64_t field = position + kTagWidth;
    const uint64_t readable = field < length ? std::min<uint64_t>(kLengthWidth, length - field) : 0;
    const int32_t data = readable != 0 ? ParseInteger(bytes + field, readable) : 0;
    position += kTagWidth + kLengthWidth + static_cast<uint64_t>(std::max(data, 0));
  }
  return count;
}

}  // namespace tavi

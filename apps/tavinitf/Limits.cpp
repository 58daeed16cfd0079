#include "Limits.h"

#include <array>
#include <cctype>
#include <charconv>
#include <string_view>
#include <system_error>

#include "TaviHost.h"

namespace tavinitf {
namespace {

// A number with a unit of 1024 or a power of it: 500000, 64K, 8GB, 1 GiB.
std::optional<uint64_t> ReadSize(std::string_view text) {
  uint64_t number = 0;
  const char* const end = text.data() + text.size();
  const auto [behind, error] = std::from_chars(text.data(), end, number);
  if (error != std::errc()) return std::nullopt;
  std::string unit;
  for (const char c : std::string_view(behind, end)) {
    if (c != ' ') unit += static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
  }
  if (unit.ends_with('B')) unit.pop_back();
  if (unit.size() == 2 && unit.back() == 'I') unit.pop_back();
  constexpr std::string_view kUnits = "KMGTPE";
  constexpr unsigned kStep = 10;
  if (unit.empty()) return number;
  const size_t place = unit.size() == 1 ? kUnits.find(unit.front()) : std::string_view::npos;
  if (place == std::string_view::npos) return std::nullopt;
  const auto shift = kStep * static_cast<unsigned>(place + 1);
  if (number > UINT64_MAX >> shift) return std::nullopt;
  return number << shift;
}

uint32_t LimitNamed(std::string_view name) {
  for (uint32_t limit = 1; const HostLimitRecord* record = HostDescribeLimit(limit); ++limit) {
    if (name == record->name) return limit;
  }
  return HOST_LIMIT_NONE;
}

struct Setting {
  std::optional<std::string> name;
  std::optional<uint64_t> value;
};

Setting Read(const std::string& text) {
  const size_t equals = text.find('=');
  if (equals == std::string::npos) return {std::nullopt, ReadSize(text)};
  return {text.substr(0, equals), ReadSize(std::string_view(text).substr(equals + 1))};
}

}  // namespace

std::string ComplainOfLimit(const std::string& setting) {
  const Setting read = Read(setting);
  if (read.name && LimitNamed(*read.name) == HOST_LIMIT_NONE)
    return "\"" + *read.name + R"(" is no limit; "tavinitf limits" lists them)";
  return read.value ? "" : "\"" + setting + "\" has no size such as 8GB or 500000";
}

void ApplyLimit(const std::string& setting) {
  const Setting read = Read(setting);
  if (read.name) {
    HostSetLimit(LimitNamed(*read.name), *read.value);
    return;
  }
  constexpr uint64_t kDrawingShare = 8;  // the drawings of a file need far less than its picture
  HostSetLimit(HOST_LIMIT_PICTURE, *read.value);
  HostSetLimit(HOST_LIMIT_DRAWINGS, *read.value / kDrawingShare);
}

std::string LimitWords(uint32_t limit) {
  const HostLimitRecord& record = *HostDescribeLimit(limit);
  const std::string name = record.name;
  return "more than the limit \"" + name + "\" of " + std::to_string(HostGetLimit(limit)) + " " +
         record.unit + " is asked for (--limit " + name + "=VALUE raises it)";
}

std::optional<std::string> WordsOfLimitHit(int32_t status) {
  const uint32_t limit = HostLimitHit();
  if (limit == HOST_LIMIT_NONE || HostDescribeLimit(limit)->status != status) return std::nullopt;
  return LimitWords(limit);
}

}  // namespace tavinitf

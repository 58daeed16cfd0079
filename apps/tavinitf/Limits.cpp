#include "Limits.h"

#include <vector>

#include "TaviHost.h"

namespace tavinitf {
namespace {

// The drawings of a file need far less than its picture.
constexpr uint64_t kDrawingShare = 8;

[[noreturn]] void Complain(const std::string& setting, const std::string& complaint) {
  throw CLI::ValidationError("--limit", "\"" + setting + "\" " + complaint);
}

uint64_t ValueOf(const std::string& setting, std::string text) {
  // A number is read without a sign, which takes a minus for a very large one.
  if (text.find('-') != std::string::npos) Complain(setting, "must not be negative");
  constexpr bool kThousands = false;
  uint64_t value = 0;
  const std::string complaint = CLI::AsSizeValue(kThousands)(text);
  if (!complaint.empty() || !CLI::detail::lexical_cast(text, value))
    Complain(setting, "has no value such as 8GB or 500000");
  return value;
}

uint32_t LimitNamed(const std::string& setting, const std::string& name) {
  for (uint32_t limit = 1; const HostLimitRecord* record = HostDescribeLimit(limit); ++limit) {
    if (name == record->name) return limit;
  }
  Complain(setting, "names no limit; \"tavinitf limits\" lists them");
}

void Apply(const std::string& setting) {
  const size_t equals = setting.find('=');
  if (equals != std::string::npos) {
    HostSetLimit(LimitNamed(setting, setting.substr(0, equals)),
                 ValueOf(setting, setting.substr(equals + 1)));
    return;
  }
  const uint64_t bytes = ValueOf(setting, setting);
  HostSetLimit(HOST_LIMIT_PICTURE, bytes);
  HostSetLimit(HOST_LIMIT_DRAWINGS, bytes / kDrawingShare);
}

}  // namespace

void AddLimitOption(CLI::App& app) {
  app.add_option_function<std::vector<std::string>>(
         "--limit",
         [](const std::vector<std::string>& settings) {
           for (const std::string& setting : settings) Apply(setting);
         },
         "What a file may ask for, before the subcommand: SIZE is the largest picture in bytes, such as 8GB "
         "(2GB unless given), since a file of a few bytes can claim any size; NAME is one of \"tavinitf "
         "limits\"")
      ->expected(1)
      ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll)
      ->allow_extra_args(false)
      ->type_name("SIZE|NAME=VALUE");
}

std::string LimitWords(uint32_t limit) {
  const HostLimitRecord* const record = HostDescribeLimit(limit);
  if (record == nullptr) return "more than a limit is asked for";
  const std::string name = record->name;
  return "more than the limit \"" + name + "\" of " + std::to_string(HostGetLimit(limit)) + " " +
         record->unit + " is asked for (--limit " + name + "=VALUE raises it)";
}

std::optional<std::string> WordsOfLimitHit(int32_t status) {
  const uint32_t limit = HostLimitHit();
  const HostLimitRecord* const record = HostDescribeLimit(limit);
  if (record == nullptr || record->status != status) return std::nullopt;
  return LimitWords(limit);
}

}  // namespace tavinitf

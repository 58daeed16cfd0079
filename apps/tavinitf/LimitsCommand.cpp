// tavinitf limits: what files may ask for, each with its value and its reason.
#include <cinttypes>
#include <cstdio>
#include <memory>

#include "Commands.h"
#include "JsonForms.h"
#include "TaviHost.h"

namespace tavinitf {
namespace {

int RunLimits(bool as_json) {
  Json all = Json::array();
  for (uint32_t limit = 1; const HostLimitRecord* record = HostDescribeLimit(limit); ++limit) {
    const uint64_t value = HostGetLimit(limit);
    if (as_json) {
      all.push_back({{"name", record->name},
                     {"value", value},
                     {"preset", record->preset},
                     {"unit", record->unit},
                     {"reason", record->reason}});
    } else {
      std::printf("%-9s %12" PRIu64 " %-8s %s\n", record->name, value, record->unit, record->reason);
    }
  }
  if (as_json) std::printf("%s\n", all.dump(2).c_str());
  return kDone;
}

}  // namespace

void AddLimitsCommand(CLI::App& app, int& exit_status) {
  auto as_json = std::make_shared<bool>(false);
  CLI::App* command =
      app.add_subcommand("limits", "List what a file may ask for; --limit NAME=VALUE changes it");
  command->add_flag("--json", *as_json, "Print a JSON array with one object for each limit");
  command->callback([as_json, &exit_status] { exit_status = RunLimits(*as_json); });
}

}  // namespace tavinitf

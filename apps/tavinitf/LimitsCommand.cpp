// tavinitf limits: what files may ask for, each with its value and its reason.
#include <cinttypes>
#include <cstdio>

#include "Commands.h"
#include "JsonForms.h"
#include "TaviHost.h"

namespace tavinitf {

int RunLimits(const LimitsOptions& options) {
  Json all = Json::array();
  for (uint32_t limit = 1; const HostLimitRecord* record = HostDescribeLimit(limit); ++limit) {
    const uint64_t value = HostGetLimit(limit);
    if (options.json) {
      all.push_back({{"name", record->name},
                     {"value", value},
                     {"preset", record->preset},
                     {"unit", record->unit},
                     {"reason", record->reason}});
    } else {
      std::printf("%-9s %12" PRIu64 " %-8s %s\n", record->name, value, record->unit, record->reason);
    }
  }
  if (options.json) std::printf("%s\n", all.dump(2).c_str());
  return kDone;
}

}  // namespace tavinitf

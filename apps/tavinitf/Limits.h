// What files may ask for: the host's limits by name, on the command line and in refusals.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace tavinitf {

// `8GB` for pictures and drawings, or `cells=2M`: what is wrong with it, nothing when it can be applied.
std::string ComplainOfLimit(const std::string& setting);
void ApplyLimit(const std::string& setting);

// `more than the limit "picture" of 1024 bytes is asked for (--limit picture=VALUE raises it)`
std::string LimitWords(uint32_t limit);
// The same for the limit that made an operation of this thread end in the status just now; nothing when none did.
std::optional<std::string> WordsOfLimitHit(int32_t status);

}  // namespace tavinitf

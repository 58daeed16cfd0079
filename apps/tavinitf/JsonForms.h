// What the JSON of all subcommands has in common.
#pragma once

#include <cstdint>
#include <nlohmann/json.hpp>
#include <string>

namespace tavinitf {

// Keys stay in the order in which they are put in.
using Json = nlohmann::ordered_json;

// Field bytes as text: headers hold ASCII, and where they do not, byte n is the character U+00n. So the exact
// bytes come back by encoding the text as Latin-1.
std::string AsUtf8(const std::string& bytes);

Json StatusAsJson(int32_t status, const std::string& text);

}  // namespace tavinitf

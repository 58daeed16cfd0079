// How the command line names one segment: "image:0", "graphic:2", "des:1".
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "Segments.h"

namespace tavinitf {

struct Selector {
  SegmentKind kind;
  uint32_t index;
};

// Nothing when the text is no word of `kinds`, a colon and a decimal number. "header" stands alone.
std::optional<Selector> ParseSelector(const std::string& text, const std::vector<SegmentKind>& kinds);

// What is wrong with the text, for the command line's own check; empty when nothing is.
std::string ComplainOfSelector(const std::string& text, const std::vector<SegmentKind>& kinds);

// `there is no image 5 (the file has 2)`
std::string ExplainNoSegment(const Selector& selector, const NitfContents& contents);

}  // namespace tavinitf

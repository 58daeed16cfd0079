#include "Selector.h"

#include <algorithm>

namespace tavinitf {
namespace {

// More digits than any file has segments would only overflow.
constexpr size_t kMostDigits = 9;

const char* WordOf(SegmentKind kind) {
  switch (kind) {
    case SegmentKind::kFileHeader:
      return "header";
    case SegmentKind::kDataExtension:
      return "des";
    default:
      return KindName(kind);
  }
}

std::optional<uint32_t> ParseIndex(const std::string& digits) {
  if (digits.empty() || digits.size() > kMostDigits) return std::nullopt;
  if (digits.find_first_not_of("0123456789") != std::string::npos) return std::nullopt;
  return static_cast<uint32_t>(std::stoul(digits));
}

}  // namespace

std::optional<Selector> ParseSelector(const std::string& text, const std::vector<SegmentKind>& kinds) {
  for (const SegmentKind kind : kinds) {
    const std::string word = WordOf(kind);
    if (kind == SegmentKind::kFileHeader) {
      if (text == word) return Selector{kind, 0};
    } else if (text.starts_with(word + ":")) {
      const std::optional<uint32_t> index = ParseIndex(text.substr(word.size() + 1));
      if (index) return Selector{kind, *index};
    }
  }
  return std::nullopt;
}

std::string ComplainOfSelector(const std::string& text, const std::vector<SegmentKind>& kinds) {
  if (ParseSelector(text, kinds)) return {};
  std::string forms;
  for (const SegmentKind kind : kinds) {
    forms += forms.empty() ? "" : ", ";
    forms += WordOf(kind);
    if (kind != SegmentKind::kFileHeader) forms += ":N";
  }
  return "\"" + Printable(text) + "\" is none of " + forms;
}

std::string ExplainNoSegment(const Selector& selector, const NitfContents& contents) {
  const auto count = std::count_if(contents.segments.begin(), contents.segments.end(),
                                   [&](const Segment& s) { return s.kind == selector.kind; });
  return std::string("there is no ") + KindName(selector.kind) + " " + std::to_string(selector.index) +
         " (the file has " + std::to_string(count) + ")";
}

}  // namespace tavinitf

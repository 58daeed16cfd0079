// tavinitf headers: every field of every segment in file order, as text or as JSON.
#include <algorithm>
#include <cstdio>
#include <fstream>
#include <optional>

#include "Commands.h"
#include "FieldBytes.h"
#include "JsonForms.h"
#include "Reading.h"
#include "Refusal.h"
#include "Selector.h"
#include "TaviStatus.h"

namespace tavinitf {
namespace {

const std::vector<SegmentKind>& SelectableKinds() {
  static const std::vector<SegmentKind> kinds = {SegmentKind::kFileHeader, SegmentKind::kImage,
                                                 SegmentKind::kGraphic,    SegmentKind::kLabel,
                                                 SegmentKind::kText,       SegmentKind::kDataExtension};
  return kinds;
}

// The segments of which a field was read, the file header first; of them the chosen one alone.
std::vector<const Segment*> ReadSegments(const NitfContents& contents,
                                         const std::optional<Selector>& selector) {
  std::vector<const Segment*> segments;
  const auto add = [&](const Segment& segment) {
    const bool chosen = !selector || (selector->kind == segment.kind && selector->index == segment.index);
    if (chosen && !segment.fields.empty()) segments.push_back(&segment);
  };
  add(contents.header);
  for (const Segment& segment : contents.segments) add(segment);
  return segments;
}

// ---- For people ----

std::string ShownName(const Field& field) {
  return IndexedName(field.name, field.index, field.sub_index);
}

std::string ShownNumbers(std::ifstream& file, const Field& field, uint32_t width) {
  constexpr uint64_t kShown = 8;
  const std::string bytes = PieceOf(file, field, 0, kShown * width);
  std::string text;
  for (size_t at = 0; at + width <= bytes.size(); at += width) {
    text += (text.empty() ? "" : " ") + std::to_string(NumberAt(bytes, at, width));
  }
  const uint64_t count = field.size / width;
  return count > kShown ? text + " ... (" + std::to_string(count) + " numbers)" : text;
}

std::string ShownValue(std::ifstream& file, const Field& field) {
  if (const BinaryForm* form = FindBinaryForm(field)) return ShownNumbers(file, field, form->width);
  constexpr uint64_t kLongestText = 80;  // the longest field of the format that is not a block of records
  const std::string bytes = PieceOf(file, field, 0, kLongestText);
  if (field.size <= kLongestText) return Printable(Trimmed(bytes));
  return Printable(bytes) + " ... (" + std::to_string(field.size) + " bytes)";
}

void PrintSegment(std::ifstream& file, const Segment& segment) {
  if (segment.kind == SegmentKind::kFileHeader) {
    std::puts(KindName(segment.kind));
  } else {
    std::printf("%s %u\n", KindName(segment.kind), segment.index);
  }
  std::puts("      offset  length  field");
  for (const Field& field : segment.fields) {
    const std::string value = ShownValue(file, field);
    std::printf("  %10llu  %6llu  %s", static_cast<unsigned long long>(field.offset),
                static_cast<unsigned long long>(field.size), ShownName(field).c_str());
    const int gap = std::max(1, 14 - static_cast<int>(ShownName(field).size()));
    if (!value.empty()) std::printf("%*s%s", gap, "", value.c_str());
    std::puts("");
  }
}

// ---- JSON, written piece by piece: a mask table can be as long as the file ----

std::string AsText(const Json& json) {
  return json.dump(-1, ' ', true, Json::error_handler_t::replace);
}

void WriteNumbers(std::ifstream& file, const Field& field, uint32_t width) {
  constexpr uint64_t kPiece = 1 << 16;  // a multiple of every width
  const char* separator = "";
  std::fputs(", \"numbers\": [", stdout);
  for (uint64_t start = 0; start < field.size; start += kPiece) {
    const std::string bytes = PieceOf(file, field, start, kPiece);
    std::string text;
    for (size_t at = 0; at + width <= bytes.size(); at += width) {
      text += separator + std::to_string(NumberAt(bytes, at, width));
      separator = ", ";
    }
    std::fputs(text.c_str(), stdout);
  }
  std::fputs("]", stdout);
}

void WriteField(std::ifstream& file, const Field& field) {
  std::printf("{\"name\": %s", AsText(field.name).c_str());
  if (field.index >= 0) std::printf(", \"index\": %d", field.index);
  if (field.sub_index >= 0) std::printf(", \"sub_index\": %d", field.sub_index);
  std::printf(", \"offset\": %llu, \"length\": %llu", static_cast<unsigned long long>(field.offset),
              static_cast<unsigned long long>(field.size));
  const BinaryForm* form = FindBinaryForm(field);
  if (form == nullptr) {
    std::printf(", \"text\": %s", AsText(AsUtf8(WholeOf(file, field))).c_str());
  } else if (form->table) {
    WriteNumbers(file, field, form->width);
  } else {
    std::printf(", \"number\": %u", NumberAt(WholeOf(file, field), 0, form->width));
  }
  std::fputs("}", stdout);
}

void WriteSegment(std::ifstream& file, const Segment& segment) {
  std::printf("    {\"kind\": %s, \"index\": %u, \"fields\": [", AsText(KindName(segment.kind)).c_str(),
              segment.index);
  const char* separator = "\n      ";
  for (const Field& field : segment.fields) {
    std::fputs(separator, stdout);
    WriteField(file, field);
    separator = ",\n      ";
  }
  std::fputs("\n    ]}", stdout);
}

void WriteJson(const std::string& path, std::ifstream& file, const Reading& reading,
               const std::vector<const Segment*>& segments) {
  std::printf("{\n  \"file\": %s,\n  \"size\": %llu,\n  \"segments\": [", AsText(path).c_str(),
              static_cast<unsigned long long>(reading.contents.file_size));
  const char* separator = "\n";
  for (const Segment* segment : segments) {
    std::fputs(separator, stdout);
    WriteSegment(file, *segment);
    separator = ",\n";
  }
  std::fputs(segments.empty() ? "]" : "\n  ]", stdout);
  if (reading.refusal) {
    std::printf(",\n  \"error\": %s", AsText(StatusAsJson(reading.refusal_status, *reading.refusal)).c_str());
  }
  std::puts("\n}");
}

}  // namespace

int RunHeaders(const HeadersOptions& options) {
  const std::optional<Selector> selector = ParseSelector(options.segment, SelectableKinds());
  const Reading reading = Read(options.file);
  const NitfContents& contents = reading.contents;
  if (!reading.refusal && selector && contents.Find(selector->kind, selector->index) == nullptr) {
    std::fprintf(
        stderr, "%s\n",
        FailureLine(options.file, "not listed", ExplainNoSegment(*selector, contents), ERR_INVALID_PARAMETER)
            .c_str());
    return kFailed;
  }
  std::ifstream file;
  // What is no regular file has nothing to show, and opening it could wait for ever.
  if (contents.file_size != 0) file.open(options.file, std::ios::binary);
  const std::vector<const Segment*> segments = ReadSegments(contents, selector);
  if (options.json) {
    WriteJson(options.file, file, reading, segments);
  } else {
    for (const Segment* segment : segments) PrintSegment(file, *segment);
  }
  if (!reading.refusal) return kDone;
  std::fprintf(stderr, "%s\n", reading.RefusalLine(options.file).c_str());
  return kFailed;
}

std::string ComplainOfListed(const std::string& selector) {
  return ComplainOfSelector(selector, SelectableKinds());
}

}  // namespace tavinitf

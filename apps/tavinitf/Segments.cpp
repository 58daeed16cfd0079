#include "Segments.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <system_error>
#include <utility>

#include "TaviStatus.h"

namespace tavinitf {
namespace {

// Longer fields are tables and tagged records, of which nothing here looks at more than the beginning.
constexpr uint64_t kKeptBytes = 1024;

Segment& SegmentOf(NitfContents& contents, SegmentKind kind, uint32_t index) {
  if (kind == SegmentKind::kFileHeader) return contents.header;
  auto& segments = contents.segments;
  const auto same = [&](const Segment& s) { return s.kind == kind && s.index == index; };
  const auto found = std::find_if(segments.begin(), segments.end(), same);
  if (found != segments.end()) return *found;
  // No field follows in the segment before this one: hostile headers have millions, which need no room to grow.
  if (!segments.empty()) segments.back().fields.shrink_to_fit();
  Segment& made = segments.emplace_back();
  made.kind = kind;
  made.index = index;
  return made;
}

void Gather(void* user, const tavi::SeenField& seen) {
  auto& contents = *static_cast<NitfContents*>(user);
  Field field{seen.name, seen.index, seen.sub_index, seen.offset, seen.size, {}};
  if (seen.size != 0) {
    field.bytes.assign(reinterpret_cast<const char*>(seen.bytes), std::min(seen.size, kKeptBytes));
  }
  contents.before_last = std::move(contents.last);
  contents.last = field;
  contents.last_kind = seen.segment;
  contents.last_index = seen.segment_index;
  SegmentOf(contents, seen.segment, seen.segment_index).fields.push_back(std::move(field));
}

constexpr std::array<LengthTables, 5> kTables = {{{SegmentKind::kImage, "NUMI", "LISH", "LI"},
                                                  {SegmentKind::kGraphic, "NUMS", "LSSH", "LS"},
                                                  {SegmentKind::kLabel, "NUML", "LLSH", "LL"},
                                                  {SegmentKind::kText, "NUMT", "LTSH", "LT"},
                                                  {SegmentKind::kDataExtension, "NUMDES", "LDSH", "LD"}}};

// Every segment that the header announces gets its place, also one that was not reached.
void PlaceSegments(NitfContents& contents) {
  std::vector<Segment> placed;
  uint64_t offset = contents.header.Number("HL");
  for (const LengthTables& table : kTables) {
    const uint64_t count = contents.header.Number(table.count);
    for (uint32_t i = 0; i < count; ++i) {
      const auto at = static_cast<int32_t>(i);
      if (contents.header.Find(table.data, at) == nullptr) break;  // the header ends before its tables do
      Segment segment;
      std::swap(segment, SegmentOf(contents, table.kind, i));
      segment.subheader = {offset, contents.header.Number(table.subheader, at)};
      segment.data = {segment.subheader.end(), contents.header.Number(table.data, at)};
      offset = segment.data.end();
      placed.push_back(std::move(segment));
    }
  }
  contents.segments = std::move(placed);
  contents.reserved_count = contents.header.Number("NUMRES");
}

}  // namespace

const Field* Segment::Find(const std::string& name, int32_t at) const {
  // A streamed file gives some fields twice; the later one holds.
  const auto found = std::find_if(fields.rbegin(), fields.rend(), [&](const Field& f) {
    return f.name == name && (at < 0 || f.index == at);
  });
  return found == fields.rend() ? nullptr : &*found;
}

std::string Segment::Text(const std::string& name, int32_t at) const {
  const Field* field = Find(name, at);
  return field == nullptr ? std::string() : Trimmed(field->bytes);
}

uint64_t Segment::Number(const std::string& name, int32_t at) const {
  const std::string text = Text(name, at);
  return text.empty() || text[0] < '0' || text[0] > '9' ? 0 : std::strtoull(text.c_str(), nullptr, 10);
}

uint64_t Segment::BandCount() const {
  const uint64_t bands = Number("NBANDS");
  return bands != 0 ? bands : Number("XBANDS");
}

const Segment* NitfContents::Find(SegmentKind kind, uint32_t index) const {
  if (kind == SegmentKind::kFileHeader) return &header;
  const auto found = std::find_if(segments.begin(), segments.end(),
                                  [&](const Segment& s) { return s.kind == kind && s.index == index; });
  return found == segments.end() ? nullptr : &*found;
}

std::span<const LengthTables> AllLengthTables() {
  return kTables;
}

const char* KindName(SegmentKind kind) {
  switch (kind) {
    case SegmentKind::kFileHeader:
      return "file header";
    case SegmentKind::kImage:
      return "image";
    case SegmentKind::kGraphic:
      return "graphic";
    case SegmentKind::kLabel:
      return "label";
    case SegmentKind::kText:
      return "text";
    case SegmentKind::kDataExtension:
      return "data extension";
  }
  return "segment";
}

std::string IndexedName(const std::string& name, int32_t index, int32_t sub_index) {
  std::string text = name;
  for (const int32_t place : {index, sub_index}) {
    if (place >= 0) text += "[" + std::to_string(place) + "]";
  }
  return text;
}

std::string Printable(const std::string& bytes) {
  std::string text;
  for (const char c : bytes) {
    const auto byte = static_cast<unsigned char>(c);
    if (byte >= 0x20 && byte < 0x7F && c != '"' && c != '\\') {
      text += c;
    } else {
      std::array<char, 8> escaped{};
      std::snprintf(escaped.data(), escaped.size(), "\\x%02x", static_cast<unsigned>(byte));
      text += escaped.data();
    }
  }
  return text;
}

std::string Trimmed(const std::string& text) {
  constexpr const char* kBlanks = " \t";
  const size_t first = text.find_first_not_of(kBlanks);
  if (first == std::string::npos) return {};
  return text.substr(first, text.find_last_not_of(kBlanks) - first + 1);
}

NitfContents ReadContents(const std::string& path, const std::wstring& wide_path) {
  NitfContents contents;
  std::error_code error;
  if (std::filesystem::status(path, error).type() == std::filesystem::file_type::not_found) {
    contents.status = ERR_FILE_NOT_FOUND;
    return contents;
  }
  const auto size = std::filesystem::file_size(path, error);
  contents.file_size = error ? 0 : size;
  contents.status = tavi::InspectFile(wide_path.c_str(), Gather, &contents);
  PlaceSegments(contents);
  return contents;
}

}  // namespace tavinitf

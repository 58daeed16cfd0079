// The header fields of a file, gathered into segments, with the places of the segments' subheaders and data.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "Inspect.h"

namespace tavinitf {

using tavi::SegmentKind;

struct Field {
  std::string name;
  int32_t index;      // place in a repeated group, or -1
  int32_t sub_index;  // place within that place, or -1
  uint64_t offset;
  uint64_t size;  // in the file; `bytes` holds the beginning of a long field only
  std::string bytes;
};

struct Extent {
  uint64_t offset = 0;
  uint64_t length = 0;
  [[nodiscard]] uint64_t end() const { return offset + length; }
};

struct Segment {
  SegmentKind kind = SegmentKind::kFileHeader;
  uint32_t index = 0;
  Extent subheader;  // as HL and the header's length tables say; they may lie outside the file
  Extent data;
  std::vector<Field> fields;

  [[nodiscard]] const Field* Find(const std::string& name, int32_t at = -1) const;
  // The field's text without the blanks around it; empty when the file has no such field.
  [[nodiscard]] std::string Text(const std::string& name, int32_t at = -1) const;
  [[nodiscard]] uint64_t Number(const std::string& name, int32_t at = -1) const;
  // NBANDS, or XBANDS where that is 0.
  [[nodiscard]] uint64_t BandCount() const;
};

struct NitfContents {
  int32_t status = 0;      // of opening the file
  uint64_t file_size = 0;  // 0 when there is no such file
  Segment header;
  std::vector<Segment> segments;  // in file order: images, graphics, labels, texts, data extensions
  uint64_t reserved_count = 0;    // NUMRES
  // The field at which reading stopped, and the one read before it. Nothing when not even one was read.
  std::optional<Field> last;
  std::optional<Field> before_last;
  SegmentKind last_kind = SegmentKind::kFileHeader;
  uint32_t last_index = 0;

  [[nodiscard]] const Segment* Find(SegmentKind kind, uint32_t index) const;
};

// The file header's tables of one kind of segment: their number, the lengths of their subheaders and of their
// data.
struct LengthTables {
  SegmentKind kind;
  const char* count;
  const char* subheader;
  const char* data;
};
std::span<const LengthTables> AllLengthTables();

// "image", "graphic", "label", "text", "data extension"; "file header" for the header itself.
const char* KindName(SegmentKind kind);

// `LISH[2]`, `LUTD[0][1]`; -1 for a place that there is not.
std::string IndexedName(const std::string& name, int32_t index, int32_t sub_index);

// Text that a terminal shows as it is: bytes that are no printable ASCII, quotes and backslashes as \\x...
std::string Printable(const std::string& bytes);

// The text without the blanks around it.
std::string Trimmed(const std::string& text);

// Opens the file, gathers what is reported, closes it. After a refusal the contents end at the refused field.
NitfContents ReadContents(const std::string& path, const std::wstring& wide_path);

}  // namespace tavinitf

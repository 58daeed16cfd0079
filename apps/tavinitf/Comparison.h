// What became different between a file and the one that was saved from it: fields, and the data of segments.
#pragma once

#include <string>
#include <vector>

#include "Segments.h"

namespace tavinitf {

struct Change {
  SegmentKind kind;
  uint32_t index;
  std::string field;  // the format's name; "data" for what a segment holds behind its headers and tables
  int32_t field_index;
  int32_t sub_index;
  std::string before;  // shown bytes; empty where there was none
  std::string after;
  bool only_before;  // the other file has no such field
  bool only_after;

  // `image 0: COMRAT "01.5" becomes "00.0"`
  [[nodiscard]] std::string Line() const;
};

struct ComparedFile {
  std::string path;
  const NitfContents& contents;
};

// In the order of the file before; what the other alone has comes last.
std::vector<Change> Compare(const ComparedFile& before, const ComparedFile& after);

// Whether saving makes this change by itself, whatever the document holds: the writer prints some fields from numbers
// and codes, and keeps fewer kinds of values than there are.
bool IsWritersOwn(const Change& change);

// The end of what the header's lengths account for.
uint64_t EndOfSegments(const NitfContents& contents);

}  // namespace tavinitf

// Opens a file as the library does and reports every header field in the order in which it is read. The
// command-line tool lists headers with it and finds the field at which a file was refused.
#pragma once

#include <cstdint>

namespace tavi {

enum class SegmentKind : uint8_t { kFileHeader, kImage, kGraphic, kLabel, kText, kDataExtension };

// One field as it stands in the file. `name` and `bytes` are valid during the report only.
struct SeenField {
  SegmentKind segment;
  uint32_t segment_index;  // place among the segments of its kind; 0 for the file header
  const char* name;        // the format's own name
  int32_t index;           // place in a repeated group (length tables, comments, bands), or -1
  int32_t sub_index;       // place within that place (the tables of one band), or -1
  uint64_t offset;         // of the first byte, from the start of the file
  const uint8_t* bytes;
  uint64_t size;
};

using FieldObserver = void (*)(void* user, const SeenField& field);

// Opens the file, reports each field, closes it again. The status is that of opening it (see
// Tavi_NITFCreate): after a refusal the last field reported is the one that was refused, or the one
// that announces more than the file can hold.
int32_t InspectFile(const wchar_t* path, FieldObserver observe, void* user);

}  // namespace tavi

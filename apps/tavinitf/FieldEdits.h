// One field of a file with a new value: "image:0.IID1=river", "header:FTITLE=Delta", "image:0.ICOM[1]=second".
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "Selector.h"

namespace tavinitf {

struct Edit {
  Selector segment;
  std::string field;
  int32_t place;  // of a repeated field, or -1
  std::string value;

  // `image 0: IID1`
  [[nodiscard]] std::string Name() const;
};

std::optional<Edit> ParseEdit(const std::string& text);
// What is wrong with the text, for the command line's own check; empty when nothing is.
std::string ComplainOfEdit(const std::string& text);

// The field's bytes with the new value in them, or why the field cannot have it.
struct EditedBytes {
  std::string bytes;
  std::string complaint;
};
EditedBytes FormBytes(const Segment& segment, const Field& field, const Edit& edit);

}  // namespace tavinitf

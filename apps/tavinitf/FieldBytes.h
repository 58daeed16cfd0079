// The bytes of a field. Contents keep the beginning of a long one only; the rest is taken from the file.
#pragma once

#include <cstdint>
#include <fstream>
#include <string>

#include "Segments.h"

namespace tavinitf {

// `size` bytes of the field from `start` on, fewer where the field or the file ends before.
std::string PieceOf(std::ifstream& file, const Field& field, uint64_t start, uint64_t size);
std::string WholeOf(std::ifstream& file, const Field& field);

// How a field is to be understood that is no text: big-endian numbers of `width` bytes, one or a table.
struct BinaryForm {
  const char* name;
  uint32_t width;
  bool table;
};
// Nothing for a text, and for a field that ends inside a number.
const BinaryForm* FindBinaryForm(const Field& field);
uint32_t NumberAt(const std::string& bytes, size_t place, uint32_t width);

}  // namespace tavinitf

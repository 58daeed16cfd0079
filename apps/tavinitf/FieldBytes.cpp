#include "FieldBytes.h"

#include <algorithm>
#include <array>

namespace tavinitf {
namespace {

constexpr std::array<BinaryForm, 9> kBinaryForms = {{{"FBKGC", 1, true},
                                                     {"LUTD", 1, true},
                                                     {"IMDATOFF", 4, false},
                                                     {"BMRLNTH", 2, false},
                                                     {"TMRLNTH", 2, false},
                                                     {"TPXCDLNTH", 2, false},
                                                     {"TPXCD", 1, true},
                                                     {"BMRnBNDm", 4, true},
                                                     {"TMRnBNDm", 4, true}}};

}  // namespace

std::string PieceOf(std::ifstream& file, const Field& field, uint64_t start, uint64_t size) {
  if (start >= field.size) return {};
  size = std::min(size, field.size - start);
  if (start + size <= field.bytes.size()) return field.bytes.substr(start, size);
  std::string piece(size, '\0');
  file.clear();
  file.seekg(static_cast<std::streamoff>(field.offset + start));
  file.read(piece.data(), static_cast<std::streamsize>(size));
  piece.resize(static_cast<size_t>(std::max<std::streamsize>(file.gcount(), 0)));
  return piece;
}

std::string WholeOf(std::ifstream& file, const Field& field) {
  return PieceOf(file, field, 0, field.size);
}

const BinaryForm* FindBinaryForm(const Field& field) {
  const auto* form = std::find_if(kBinaryForms.begin(), kBinaryForms.end(),
                                  [&](const BinaryForm& f) { return field.name == f.name; });
  if (form == kBinaryForms.end()) return nullptr;
  const bool whole = form->table ? field.size % form->width == 0 : field.size == form->width;
  return whole ? form : nullptr;
}

uint32_t NumberAt(const std::string& bytes, size_t place, uint32_t width) {
  uint32_t number = 0;
  for (uint32_t i = 0; i < width; ++i) {
    number = number << 8 | static_cast<unsigned char>(bytes[place + i]);
  }
  return number;
}

}  // namespace tavinitf

// The numbers of an image subheader that say how its data are laid out.
#pragma once

#include "Segments.h"

namespace tavinitf {

struct ImageShape {
  uint64_t rows = 0;
  uint64_t columns = 0;
  uint64_t across = 0;  // blocks
  uint64_t down = 0;
  uint64_t block_width = 0;
  uint64_t block_height = 0;
  uint64_t sample_bits = 0;
  uint64_t bands = 0;
  std::string coding;
  std::string mode;

  [[nodiscard]] bool IsUncompressed() const { return coding == "NC" || coding == "NM"; }
  // The entries of a mask: one for each block, by IMODE S one for each block of each band.
  [[nodiscard]] uint64_t MaskEntries() const;
  // The uncompressed bytes that one mask entry stands for.
  [[nodiscard]] uint64_t StoredBlockBytes() const;
};

ImageShape ShapeOf(const Segment& image);

}  // namespace tavinitf

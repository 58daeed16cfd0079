// Rows of colours: cell arrays, patterns and tiles.
#pragma once

#include <cstdint>
#include <vector>

#include "TaviFile/CgmInterpreter.h"

namespace tavi::host::cgm {

struct CellLayout {
  int64_t columns = 0;
  int64_t rows = 0;
  int64_t bits = 0;  // of an index or a component; 0: as elsewhere in the metafile
  bool packed = true;
  int64_t row_bits = 16;     // rows begin at multiples of these,
  bool from_element = true;  // counted from the begin of the parameters, not from that of the colours
};

// The colours of columns x rows cells, from the place where the parameters stand. False when they make no sense, or
// when the list does not hold them all.
bool ReadCells(Interpreter& in, const Parameters& p, const CellLayout& layout, std::vector<uint32_t>* colors);

// The same for cells of one bit, which choose between two colours.
bool ReadBits(Interpreter& in, Bytes octets, const CellLayout& layout, const std::array<uint32_t, 2>& choice,
              std::vector<uint32_t>* colors);

}  // namespace tavi::host::cgm

// Copies runs of bits between rows whose pixels do not begin on bytes.
#pragma once

#include <cstdint>

namespace tavi::host {

// Which bit of a byte comes first: the most significant in pixels of fewer than 8 bits, the least significant
// in 12-bit pixels, which are packed low nibble first.
enum class BitOrder : uint8_t { kMostFirst, kLeastFirst };

// Copies `count` bits; the positions are counted in bits from the rows' first ones. Other bits of the
// destination stay, and no byte outside the two runs is touched. The runs may not overlap unless both begin
// at the same bit of the same row.
void CopyBits(BitOrder order, uint8_t* destination, uint64_t destination_bit, const uint8_t* source,
              uint64_t source_bit, uint64_t count) noexcept;

}  // namespace tavi::host

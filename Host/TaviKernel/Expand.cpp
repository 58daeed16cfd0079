#include "TaviKernel/Expand.h"

#include <bit>
#include <cstring>

namespace tavi::host {

void ExpandTo24(const uint8_t* indices, uint64_t count, const uint32_t* table, uint8_t* out) noexcept {
  uint64_t i = 0;
  if constexpr (std::endian::native == std::endian::little) {
    // Four pixels are three words.
    for (; i + 4 <= count; i += 4) {
      const uint32_t a = table[indices[i]];
      const uint32_t b = table[indices[i + 1]];
      const uint32_t c = table[indices[i + 2]];
      const uint32_t d = table[indices[i + 3]];
      const uint32_t words[3] = {a | b << 24, b >> 8 | c << 16, c >> 16 | d << 8};
      std::memcpy(out + 3 * i, words, sizeof words);
    }
  }
  for (; i < count; ++i) {
    const uint32_t color = table[indices[i]];
    out[3 * i] = static_cast<uint8_t>(color);
    out[3 * i + 1] = static_cast<uint8_t>(color >> 8);
    out[3 * i + 2] = static_cast<uint8_t>(color >> 16);
  }
}

}  // namespace tavi::host

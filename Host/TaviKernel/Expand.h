// Pixels of a byte as pixels of three.
#pragma once

#include <array>
#include <cstdint>

#include "TaviKernel/Color.h"

namespace tavi::host {

// The three bytes that stand for each byte.
class Expansion {
 public:
  Expansion() = default;
  explicit Expansion(const std::array<Color8, 256>& colors);

  // Writes for each index the three low bytes of its colour, the lowest first.
  void Apply(const uint8_t* indices, uint64_t count, uint8_t* out) const noexcept;

 private:
  void ApplyTable(const uint8_t* indices, uint64_t count, uint8_t* out) const noexcept;

  std::array<uint64_t, 256> colors_{};
  bool repeats_ = false;  // each byte stands for itself three times over, as in a full grey ramp
};

}  // namespace tavi::host

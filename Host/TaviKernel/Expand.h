// Pixels of a byte as pixels of three, and pixels of a bit as pixels of one byte or three.
#pragma once

#include <array>
#include <cstddef>
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

// What each byte of a row of one-bit pixels becomes: eight pixels of one byte or three.
class BitExpansion {
 public:
  BitExpansion() = default;
  // A pixel has the low bytes of `zero` or `one`, the lowest first; `size` is 1 or 3.
  BitExpansion(Color8 zero, Color8 one, uint32_t size) noexcept;

  bool operator==(const BitExpansion& other) const { return size_ == other.size_ && plain_ == other.plain_; }

  // Writes `count` pixels from bit `x` of the row on, the most significant bit of a byte first.
  void Apply(const uint8_t* row, uint64_t x, uint64_t count, uint8_t* out) const noexcept;

 private:
  static constexpr uint64_t kWord = 8;  // bytes of the row that are looked at together

  template <uint64_t kSize>
  void ApplyBytes(const uint8_t* bytes, uint64_t count, uint8_t* out) const noexcept;
  void ApplyPart(uint8_t byte, uint64_t first, uint64_t count, uint8_t* out) const noexcept;

  uint64_t size_ = 0;    // of a pixel
  uint64_t stride_ = 0;  // of eight pixels
  std::array<uint8_t, size_t{256} * 24> table_{};
  // As many pixels of either colour as a word of bits has.
  std::array<std::array<uint8_t, kWord * 24>, 2> plain_{};
};

}  // namespace tavi::host

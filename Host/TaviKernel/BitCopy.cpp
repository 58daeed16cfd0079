#include "TaviKernel/BitCopy.h"

#include <algorithm>
#include <cstring>

namespace tavi::host {
namespace {

template <BitOrder kOrder>
struct Bits {
  static constexpr bool kMost = kOrder == BitOrder::kMostFirst;

  // `count` bits (1 to 8) from bit `offset` of `source`, as a number whose first bit is at the end that comes
  // first.
  static uint32_t Fetch(const uint8_t* source, uint32_t offset, uint32_t count) {
    const bool crosses = offset + count > 8;
    const uint32_t mask = (1u << count) - 1;
    if constexpr (kMost) {
      const uint32_t both = uint32_t{source[0]} << 8 | (crosses ? source[1] : 0u);
      return both >> (16 - offset - count) & mask;
    } else {
      const uint32_t both = source[0] | (crosses ? uint32_t{source[1]} << 8 : 0u);
      return both >> offset & mask;
    }
  }

  // Puts `count` bits at bit `offset` of one byte.
  static void Put(uint8_t* destination, uint32_t offset, uint32_t count, uint32_t bits) {
    const uint32_t shift = kMost ? 8 - offset - count : offset;
    const uint32_t mask = ((1u << count) - 1) << shift;
    *destination = static_cast<uint8_t>((*destination & ~mask) | bits << shift);
  }

  static void Copy(uint8_t* destination, uint32_t to, const uint8_t* source, uint32_t from, uint64_t count) {
    if (to != 0) {
      const auto head = static_cast<uint32_t>(std::min<uint64_t>(8 - to, count));
      Put(destination++, to, head, Fetch(source, from, head));
      count -= head;
      from += head;
      source += from / 8;
      from %= 8;
    }
    const uint64_t bytes = count / 8;
    if (from == 0) {
      std::memmove(destination, source, bytes);
    } else {
      CopyShifted(destination, source, from, bytes);
    }
    const auto tail = static_cast<uint32_t>(count % 8);
    if (tail != 0) Put(destination + bytes, 0, tail, Fetch(source + bytes, from, tail));
  }

  static void CopyShifted(uint8_t* destination, const uint8_t* source, uint32_t from, uint64_t bytes) {
    const uint32_t back = 8 - from;
    for (uint64_t i = 0; i < bytes; ++i) {
      const uint32_t first = source[i];
      const uint32_t second = source[i + 1];
      destination[i] =
          static_cast<uint8_t>(kMost ? first << from | second >> back : first >> from | second << back);
    }
  }
};

}  // namespace

void CopyBits(BitOrder order, uint8_t* destination, uint64_t destination_bit, const uint8_t* source,
              uint64_t source_bit, uint64_t count) noexcept {
  if (count == 0) return;
  destination += destination_bit / 8;
  source += source_bit / 8;
  const auto to = static_cast<uint32_t>(destination_bit % 8);
  const auto from = static_cast<uint32_t>(source_bit % 8);
  if (order == BitOrder::kMostFirst) {
    Bits<BitOrder::kMostFirst>::Copy(destination, to, source, from, count);
  } else {
    Bits<BitOrder::kLeastFirst>::Copy(destination, to, source, from, count);
  }
}

}  // namespace tavi::host

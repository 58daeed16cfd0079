#include "TaviKernel/Expand.h"

#include <algorithm>
#include <bit>
#include <cstring>

#if defined(__x86_64__) && defined(__GNUC__)
#include <tmmintrin.h>
#define TAVI_HAS_SHUFFLE 1
#else
#define TAVI_HAS_SHUFFLE 0
#endif

namespace tavi::host {
namespace {

#if TAVI_HAS_SHUFFLE

// Sixteen bytes become 48. Returns how many bytes it has dealt with.
__attribute__((target("ssse3"))) uint64_t RepeatShuffled(const uint8_t* bytes, uint64_t count, uint8_t* out) {
  const __m128i first = _mm_setr_epi8(0, 0, 0, 1, 1, 1, 2, 2, 2, 3, 3, 3, 4, 4, 4, 5);
  const __m128i second = _mm_setr_epi8(5, 5, 6, 6, 6, 7, 7, 7, 8, 8, 8, 9, 9, 9, 10, 10);
  const __m128i third = _mm_setr_epi8(10, 11, 11, 11, 12, 12, 12, 13, 13, 13, 14, 14, 14, 15, 15, 15);
  uint64_t i = 0;
  for (; i + 16 <= count; i += 16) {
    const __m128i in = _mm_loadu_si128(reinterpret_cast<const __m128i*>(bytes + i));
    auto* const target = reinterpret_cast<__m128i*>(out + 3 * i);
    _mm_storeu_si128(target, _mm_shuffle_epi8(in, first));
    _mm_storeu_si128(target + 1, _mm_shuffle_epi8(in, second));
    _mm_storeu_si128(target + 2, _mm_shuffle_epi8(in, third));
  }
  return i;
}

uint64_t Repeat(const uint8_t* bytes, uint64_t count, uint8_t* out) {
  static const bool has_shuffle = __builtin_cpu_supports("ssse3") != 0;
  return has_shuffle ? RepeatShuffled(bytes, count, out) : 0;
}

#else

uint64_t Repeat(const uint8_t*, uint64_t, uint8_t*) {
  return 0;
}

#endif

void Store(uint8_t* out, uint64_t word) {
  std::memcpy(out, &word, sizeof word);
}

}  // namespace

Expansion::Expansion(const std::array<Color8, 256>& colors) : repeats_(true) {
  for (uint32_t i = 0; i < 256; ++i) {
    colors_[i] = colors[i];
    repeats_ = repeats_ && colors[i] == MakeColor8(i, i, i);
  }
}

void Expansion::Apply(const uint8_t* indices, uint64_t count, uint8_t* out) const noexcept {
  const uint64_t done = repeats_ ? Repeat(indices, count, out) : 0;
  ApplyTable(indices + done, count - done, out + 3 * done);
}

void Expansion::ApplyTable(const uint8_t* indices, uint64_t count, uint8_t* out) const noexcept {
  uint64_t i = 0;
  if constexpr (std::endian::native == std::endian::little) {
    // Eight pixels are three words.
    for (; i + 8 <= count; i += 8) {
      const uint8_t* const at = indices + i;
      const uint64_t third = colors_[at[2]];
      const uint64_t sixth = colors_[at[5]];
      Store(out + 3 * i, colors_[at[0]] | colors_[at[1]] << 24 | third << 48);
      Store(out + 3 * i + 8, third >> 16 | colors_[at[3]] << 8 | colors_[at[4]] << 32 | sixth << 56);
      Store(out + 3 * i + 16, sixth >> 8 | colors_[at[6]] << 16 | colors_[at[7]] << 40);
    }
  }
  for (; i < count; ++i) {
    const uint64_t color = colors_[indices[i]];
    out[3 * i] = static_cast<uint8_t>(color);
    out[3 * i + 1] = static_cast<uint8_t>(color >> 8);
    out[3 * i + 2] = static_cast<uint8_t>(color >> 16);
  }
}

BitExpansion::BitExpansion(Color8 zero, Color8 one, uint32_t size) noexcept
    : size_(size), stride_(8 * size_) {
  const auto put = [size](Color8 color, uint8_t* out) {
    for (uint32_t i = 0; i < size; ++i) out[i] = static_cast<uint8_t>(color >> (8 * i));
  };
  for (uint32_t byte = 0; byte < 256; ++byte) {
    for (uint32_t i = 0; i < 8; ++i) {
      put((byte >> (7 - i) & 1) != 0 ? one : zero, table_.data() + byte * stride_ + i * size_);
    }
  }
  for (uint64_t i = 0; i < 8 * kWord; ++i) {
    put(zero, plain_[0].data() + i * size_);
    put(one, plain_[1].data() + i * size_);
  }
}

// Pages are mostly of one colour over long stretches: those are stored in few wide pieces.
template <uint64_t kSize>
void BitExpansion::ApplyBytes(const uint8_t* bytes, uint64_t count, uint8_t* out) const noexcept {
  constexpr uint64_t kStride = 8 * kSize;
  uint64_t i = 0;
  for (; i + kWord <= count; i += kWord) {
    uint64_t word;
    std::memcpy(&word, bytes + i, sizeof word);
    uint8_t* const to = out + i * kStride;
    if (word == 0 || word == UINT64_MAX) {
      std::memcpy(to, plain_[word & 1].data(), kWord * kStride);
      continue;
    }
    for (uint64_t k = 0; k < kWord; ++k) {
      std::memcpy(to + k * kStride, table_.data() + bytes[i + k] * kStride, kStride);
    }
  }
  for (; i < count; ++i) std::memcpy(out + i * kStride, table_.data() + bytes[i] * kStride, kStride);
}

void BitExpansion::ApplyPart(uint8_t byte, uint64_t first, uint64_t count, uint8_t* out) const noexcept {
  std::memcpy(out, table_.data() + byte * stride_ + first * size_, count * size_);
}

void BitExpansion::Apply(const uint8_t* row, uint64_t x, uint64_t count, uint8_t* out) const noexcept {
  row += x / 8;
  x %= 8;
  if (x != 0 && count != 0) {
    const uint64_t head = std::min(8 - x, count);
    ApplyPart(*row++, x, head, out);
    out += head * size_;
    count -= head;
  }
  const uint64_t whole = count / 8;
  if (size_ == 1) {
    ApplyBytes<1>(row, whole, out);
  } else {
    ApplyBytes<3>(row, whole, out);
  }
  if (count % 8 != 0) ApplyPart(row[whole], 0, count % 8, out + whole * stride_);
}

}  // namespace tavi::host

#include "TaviFile/CgmWriterElements.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <limits>

namespace tavi::host::cgm {
namespace {

constexpr size_t kLongForm = 31;
constexpr uint32_t kMoreFollows = 0x8000;
constexpr size_t kLargestPartition = 0x7FFE;  // even, so that words are not cut
constexpr size_t kShortString = 254;
constexpr uint32_t kLongString = 255;
constexpr size_t kLargestChunk = 0x7FFF;

}  // namespace

int32_t ToVdc(double value) {
  constexpr double kLowest = std::numeric_limits<int32_t>::min();
  constexpr double kHighest = std::numeric_limits<int32_t>::max();
  if (std::isnan(value)) return 0;
  return static_cast<int32_t>(std::clamp(std::floor(value + 0.5), kLowest, kHighest));
}

void ElementWriter::Begin(ElementCode code) {
  constexpr std::array kLater{code::kLineTypeDefinition, code::kMitreLimit, code::kLineCap,
                              code::kLineJoin,           code::kEdgeCap,    code::kEdgeJoin};
  if (std::find(kLater.begin(), kLater.end(), code) != kLater.end()) later_elements_.insert(code);
  code_ = code;
  list_.clear();
}

void ElementWriter::PutWord(uint32_t value) {
  bytes_.push_back(static_cast<uint8_t>(value >> 8));
  bytes_.push_back(static_cast<uint8_t>(value));
}

void ElementWriter::PutPartition(size_t first, size_t count) {
  const bool more = first + count < list_.size();
  PutWord(static_cast<uint32_t>(count) | (more ? kMoreFollows : 0));
  const auto from = list_.begin() + static_cast<std::ptrdiff_t>(first);
  bytes_.insert(bytes_.end(), from, from + static_cast<std::ptrdiff_t>(count));
}

void ElementWriter::End() {
  const size_t length = list_.size();
  PutWord(uint32_t{code_.group} << 12 | uint32_t{code_.id} << 5 |
          static_cast<uint32_t>(std::min(length, kLongForm)));
  if (length < kLongForm) {
    bytes_.insert(bytes_.end(), list_.begin(), list_.end());
  } else {
    for (size_t done = 0; done < length; done += kLargestPartition) {
      PutPartition(done, std::min(kLargestPartition, length - done));
    }
  }
  if (bytes_.size() % 2 != 0) bytes_.push_back(0);
}

void ElementWriter::Word(uint32_t value) {
  Octet(value >> 8);
  Octet(value);
}

void ElementWriter::Words(uint32_t value) {
  Word(value >> 16);
  Word(value);
}

void ElementWriter::Integer(int64_t value) {
  Word(static_cast<uint32_t>(std::clamp<int64_t>(value, INT16_MIN, INT16_MAX)));
}

void ElementWriter::Vdc(int32_t value) {
  const int32_t narrow = std::clamp<int32_t>(value, INT16_MIN, INT16_MAX);
  needs_wide_vdc_ = needs_wide_vdc_ || narrow != value;
  if (real_) {
    Float(value / unit_);
  } else if (vdc_bytes_ == 2) {
    Word(static_cast<uint32_t>(narrow));
  } else {
    Words(static_cast<uint32_t>(value));
  }
}

void ElementWriter::Direction(double value) {
  if (real_) {
    Float(value);
  } else {
    Vdc(ToVdc(value));
  }
}

void ElementWriter::Float(double value) {
  constexpr double kLargest = std::numeric_limits<float>::max();
  Words(std::bit_cast<uint32_t>(static_cast<float>(std::clamp(value, -kLargest, kLargest))));
}

void ElementWriter::PointOf(vec::Point point) {
  Vdc(ToVdc(point.x));
  Vdc(ToVdc(-point.y));
}

// Fixed point: the whole part, rounded down, and 65536ths.
void ElementWriter::Real(double value) {
  const int32_t fixed = ToVdc(value * 65536);
  Words(static_cast<uint32_t>(fixed));
}

void ElementWriter::Color(uint32_t color) {
  for (uint32_t shift = 0; shift < 24; shift += 8) Octet(color >> shift);
}

void ElementWriter::WideColor(uint32_t color) {
  for (uint32_t shift = 0; shift < 24; shift += 8) Word(color >> shift & 0xFF);
}

void ElementWriter::String(std::string_view text) {
  if (text.size() <= kShortString) {
    Octet(static_cast<uint32_t>(text.size()));
    list_.insert(list_.end(), text.begin(), text.end());
    return;
  }
  Octet(kLongString);
  while (!text.empty()) {
    const std::string_view chunk = text.substr(0, kLargestChunk);
    text.remove_prefix(chunk.size());
    Word(static_cast<uint32_t>(chunk.size()) | (text.empty() ? 0 : kMoreFollows));
    list_.insert(list_.end(), chunk.begin(), chunk.end());
  }
}

void ElementWriter::Elements(const ElementWriter& other) {
  list_.insert(list_.end(), other.bytes_.begin(), other.bytes_.end());
}

void ElementWriter::Align() {
  if (list_.size() % 2 != 0) Octet(0);
}

}  // namespace tavi::host::cgm

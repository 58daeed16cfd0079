#include "TaviKernel/SampleOrder.h"

#include <algorithm>
#include <array>
#include <bit>
#include <bitset>
#include <cstdlib>

namespace tavi::host {
namespace {

constexpr uint32_t kRows = 64;
constexpr uint32_t kRuns = 8;             // in each of them, when they are longer than that
constexpr uint32_t kRunLength = 256;      // samples
constexpr uint32_t kValuesPerRun = 64;    // of which the values are judged
constexpr uint32_t kFewestStretched = 9;  // significant bits that are stretched
constexpr uint32_t kMostStretched = 15;
constexpr uint32_t kStretches = kMostStretched - kFewestStretched + 1;
constexpr uint32_t kEnoughEvidence = 24;  // bits
constexpr uint32_t kFewBits = 4;          // stretches from 9 to 12 bits, which leave out most values
constexpr uint32_t kManyValues = 64;

// Whether a stretch of `bits` significant bits can yield the value.
constexpr bool CanBeStretched(uint32_t value, uint32_t bits) {
  const uint32_t full = (1u << bits) - 1;
  const uint32_t origin = (value * full + 65534) / 65535;
  return origin * 65535 / full == value;
}

constexpr uint32_t Swapped(uint32_t value) {
  return (value >> 8 | value << 8) & 0xFFFF;
}

// Neighbouring differences and range of the samples read in one order.
struct Smoothness {
  uint64_t differences = 0;
  uint32_t smallest = 0xFFFF;
  uint32_t largest = 0;

  uint64_t range() const { return largest > smallest ? largest - smallest : 1; }

  template <bool kBig>
  void Add(const uint8_t* samples, uint32_t count) {
    uint32_t low = smallest;
    uint32_t high = largest;
    const auto value = [samples](size_t i) {
      return kBig ? uint32_t{samples[2 * i]} << 8 | samples[2 * i + 1]
                  : uint32_t{samples[2 * i + 1]} << 8 | samples[2 * i];
    };
    for (uint32_t i = 0; i < count; ++i) {
      low = std::min(low, value(i));
      high = std::max(high, value(i));
    }
    uint32_t row_sum = 0;  // 2048 differences fit
    for (uint32_t i = 1; i < count; ++i) {
      row_sum += static_cast<uint32_t>(
          std::abs(static_cast<int32_t>(value(i)) - static_cast<int32_t>(value(i - 1))));
    }
    differences += row_sum;
    smallest = low;
    largest = high;
  }
};

// Whether `a` is smoother than `share` quarters of `b`.
bool IsSmoother(const Smoothness& a, const Smoothness& b, uint64_t quarters) {
  // At most 2^33 x 2^16 x 4.
  return a.differences * b.range() * 4 < b.differences * a.range() * quarters;
}

// The different values that occur, read native. Values of two equal bytes are left out.
class Values {
 public:
  // Takes some of the samples, evenly spread.
  void Add(const uint8_t* samples, uint32_t count) {
    const uint32_t step = std::max(1u, count / kValuesPerRun);
    for (size_t i = 0; i < count; i += step) {
      const uint32_t value = samples[2 * i] | uint32_t{samples[2 * i + 1]} << 8;
      if (value != Swapped(value)) seen_[value / 64] |= uint64_t{1} << (value % 64);
    }
  }

  // Sums up what was added.
  void Judge() {
    for (uint32_t word = 0; word < seen_.size(); ++word) {
      for (uint64_t rest = seen_[word]; rest != 0; rest &= rest - 1) {
        Count(word * 64 + static_cast<uint32_t>(std::countr_zero(rest)));
      }
    }
  }

  uint32_t count() const { return count_; }
  bool has_zero_byte() const { return IsZeroOnly(low_) || IsZeroOnly(high_); }

  // Bits of evidence for the stretch that has most of it, 0 when none fits.
  uint32_t Evidence() const {
    uint32_t best = 0;
    for (uint32_t s = 0; s < kStretches; ++s) {
      if (fitting_[s] * 20 < count_ * 19) continue;
      best = std::max(best, static_cast<uint32_t>(low_bytes_[s].count()) * (16 - kFewestStretched - s));
    }
    return best;
  }

  // How densely the values of one byte that occur fill the stretch that they span, as a ratio.
  struct Density {
    uint64_t count;
    uint64_t span;
    bool IsTwice(const Density& other) const { return count * other.span >= 2 * other.count * span; }
  };
  Density NativeDensity() const { return DensityOf(high_); }
  Density BigEndianDensity() const { return DensityOf(low_); }

  // Whether one stretch from at most 12 bits fits (nearly) all values.
  bool FitsFewBits() const {
    return std::any_of(fitting_.begin(), fitting_.begin() + kFewBits,
                       [this](uint32_t n) { return n * 20 >= count_ * 19; });
  }
  // Whether one stretch from at most 12 bits fits all values read big-endian.
  bool FitsBigEndian() const {
    return std::any_of(big_endian_misfits_.begin(), big_endian_misfits_.end(),
                       [](uint32_t n) { return n == 0; });
  }

 private:
  static bool IsZeroOnly(const std::bitset<256>& bytes) { return bytes[0] && bytes.count() == 1; }

  static Density DensityOf(const std::bitset<256>& bytes) {
    size_t first = 0;
    size_t last = 255;
    while (first < last && !bytes[first]) ++first;
    while (last > first && !bytes[last]) --last;
    return {bytes.count(), last - first + 1};
  }

  void Count(uint32_t value) {
    ++count_;
    low_.set(value & 0xFF);
    high_.set(value >> 8);
    for (uint32_t s = 0; s < kStretches; ++s) {
      if (!CanBeStretched(value, kFewestStretched + s)) continue;
      ++fitting_[s];
      low_bytes_[s].set(value & 0xFF);
    }
    for (uint32_t s = 0; s < big_endian_misfits_.size(); ++s) {
      big_endian_misfits_[s] += CanBeStretched(Swapped(value), kFewestStretched + s) ? 0 : 1;
    }
  }

  std::array<uint64_t, 0x10000 / 64> seen_{};
  uint32_t count_ = 0;
  std::bitset<256> low_;  // the bytes that occur
  std::bitset<256> high_;
  std::array<uint32_t, kStretches> fitting_{};
  std::array<std::bitset<256>, kStretches> low_bytes_{};
  std::array<uint32_t, kFewBits> big_endian_misfits_{};
};

}  // namespace

namespace {

// What the samples show when a stretch fits them that may fit by chance.
bool IsNativeOnThinEvidence(const Values& values, const Smoothness& big, const Smoothness& native) {
  if (values.NativeDensity().IsTwice(values.BigEndianDensity())) return true;
  if (values.BigEndianDensity().IsTwice(values.NativeDensity())) return false;
  if (IsSmoother(native, big, 3)) return true;
  if (IsSmoother(big, native, 3)) return false;
  return values.FitsFewBits() && !values.FitsBigEndian();
}

}  // namespace

SampleOrder DetectSampleOrder(const PixelView& view) noexcept {
  Smoothness big;
  Smoothness native;
  Values values;
  const uint64_t rows = std::min(view.height, kRows);
  const uint64_t runs = view.width > kRuns * kRunLength ? kRuns : 1;
  const uint32_t length = runs == 1 ? view.width : kRunLength;
  for (uint64_t i = 0; i < rows; ++i) {
    // The middles of equal parts of the picture.
    const auto row = static_cast<uint32_t>((2 * i + 1) * view.height / (2 * rows));
    for (uint64_t run = 0; run < runs; ++run) {
      const uint64_t first = (2 * run + 1) * (view.width - length) / (2 * runs);
      const uint8_t* const samples = view.ReadRow(row) + 2 * first;
      big.Add<true>(samples, length);
      native.Add<false>(samples, length);
      values.Add(samples, length);
    }
  }
  values.Judge();
  if (values.count() == 0 || values.has_zero_byte()) return SampleOrder::kBigEndian;
  const uint32_t evidence = values.Evidence();
  bool is_native = evidence >= kEnoughEvidence;
  if (!is_native && evidence != 0) is_native = IsNativeOnThinEvidence(values, big, native);
  if (evidence == 0) is_native = values.count() >= kManyValues && IsSmoother(native, big, 2);
  return is_native ? SampleOrder::kNative : SampleOrder::kBigEndian;
}

}  // namespace tavi::host

#include "TaviFile/CgmParameters.h"

#include <bit>
#include <cmath>

#include "TaviFile/CgmLimits.h"

namespace tavi::host::cgm {
namespace {

constexpr uint8_t kLongString = 255;
constexpr uint32_t kMoreChunks = 0x8000;

size_t BytesOf(RealForm form) {
  return form == RealForm::kFloat32 || form == RealForm::kFixed32 ? 4 : 8;
}

}  // namespace

std::optional<RealForm> RealFormOf(int64_t kind, int64_t a, int64_t b) {
  if (kind == 0 && a == 9 && b == 23) return RealForm::kFloat32;
  if (kind == 0 && a == 12 && b == 52) return RealForm::kFloat64;
  if (kind == 1 && a == 16 && b == 16) return RealForm::kFixed32;
  if (kind == 1 && a == 32 && b == 32) return RealForm::kFixed64;
  return std::nullopt;
}

uint64_t Parameters::Raw(int bits) {
  const auto bytes = static_cast<size_t>(bits / 8);
  if (!ok_ || left() < bytes) {
    ok_ = false;
    return 0;
  }
  uint64_t value = 0;
  for (size_t i = 0; i < bytes; ++i) value = value << 8 | list_[at_ + i];
  at_ += bytes;
  return value;
}

uint32_t Parameters::Unsigned(int bits) {
  return static_cast<uint32_t>(Raw(bits));
}

int64_t Parameters::Signed(int bits) {
  const int unused = 64 - bits;
  return static_cast<int64_t>(Raw(bits) << unused) >> unused;
}

// The whole part of a fixed number is its floor, the fraction is added.
double Parameters::RealOf(RealForm form) {
  double value = 0;
  switch (form) {
    case RealForm::kFloat32:
      value = double{std::bit_cast<float>(Unsigned(32))};
      break;
    case RealForm::kFloat64:
      value = std::bit_cast<double>(Raw(64));
      break;
    case RealForm::kFixed32:
      value = static_cast<double>(Signed(16));
      value += Unsigned(16) / 65536.0;
      break;
    case RealForm::kFixed64:
      value = static_cast<double>(Signed(32));
      value += Unsigned(32) / 4294967296.0;
      break;
  }
  if (!(std::abs(value) <= kLargestCoordinate)) ok_ = false;  // nor one that is no number
  return ok_ ? value : 0;
}

double Parameters::Vdc() {
  if (!coding_->vdc_is_real) return static_cast<double>(Signed(coding_->vdc_integer));
  return RealOf(coding_->vdc_real);
}

Point Parameters::At() {
  const double x = Vdc();
  return {x, Vdc()};
}

size_t Parameters::PointBytes() const {
  return 2 *
         (coding_->vdc_is_real ? BytesOf(coding_->vdc_real) : static_cast<size_t>(coding_->vdc_integer / 8));
}

std::vector<Point> Parameters::Points() {
  std::vector<Point> points(left() / PointBytes());
  for (Point& point : points) point = At();
  return points;
}

Size Parameters::SizeOf(SizeMode mode) {
  return {mode == SizeMode::kAbsolute ? Vdc() : Real(), mode};
}

std::array<uint32_t, 4> Parameters::Components() {
  std::array<uint32_t, 4> values{};
  for (size_t i = 0; i < coding_->colors.components(); ++i) values[i] = Unsigned(coding_->color);
  return values;
}

ColorRef Parameters::Color() {
  if (coding_->direct_color) return {ColorRef::Kind::kDirect, DirectColor()};
  return {ColorRef::Kind::kIndex, ColorIndex()};
}

std::string Parameters::String() {
  uint32_t count = Unsigned(8);
  bool more = false;
  std::string text;
  do {
    if (more || count == kLongString) {
      const uint32_t word = Unsigned(16);
      more = (word & kMoreChunks) != 0;
      count = word & ~kMoreChunks;
    }
    if (!ok_) break;
    const size_t here = std::min<size_t>(count, left());
    const Bytes part = list_.subspan(at_, here);
    text.append(part.begin(), part.end());
    at_ += here;
    more = more && here == count;
  } while (more);
  return text;
}

}  // namespace tavi::host::cgm

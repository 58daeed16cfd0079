#include "TaviFile/CgmColor.h"

#include <algorithm>
#include <cmath>

#include "TaviFile/CgmLimits.h"
#include "TaviVector/Drawing.h"

namespace tavi::host::cgm {
namespace {

constexpr uint32_t kBlack = 0;

uint32_t Byte(double share) {
  return static_cast<uint32_t>(std::lround(std::clamp(share, 0.0, 1.0) * 255));
}

uint32_t Pack(double red, double green, double blue) {
  return Byte(red) | Byte(green) << 8 | Byte(blue) << 16;
}

double Gamma(double linear) {
  const double x = std::clamp(linear, 0.0, 1.0);
  return x <= 0.0031308 ? 12.92 * x : 1.055 * std::pow(x, 1 / 2.4) - 0.055;
}

// sRGB of XYZ relative to the white of D65.
uint32_t FromXyz(double x, double y, double z) {
  const double X = 0.95047 * x;
  const double Z = 1.08883 * z;
  return Pack(Gamma(3.2406 * X - 1.5372 * y - 0.4986 * Z), Gamma(-0.9689 * X + 1.8758 * y + 0.0415 * Z),
              Gamma(0.0557 * X - 0.2040 * y + 1.0570 * Z));
}

double Cube(double f) {
  return f > 6.0 / 29 ? f * f * f : (f - 4.0 / 29) * 108 / 841;
}

uint32_t FromLab(double lightness, double a, double b) {
  const double fy = (lightness + 16) / 116;
  return FromXyz(Cube(fy + a / 500), Cube(fy), Cube(fy - b / 200));
}

uint32_t FromLuv(double lightness, double u, double v) {
  if (lightness <= 0) return kBlack;
  const double up = u / (13 * lightness) + 0.19784;
  const double vp = v / (13 * lightness) + 0.46834;
  if (vp <= 0) return kBlack;
  const double y = Cube((lightness + 16) / 116);
  return FromXyz(y * 9 * up / (4 * vp) / 0.95047, y, y * (12 - 3 * up - 20 * vp) / (4 * vp) / 1.08883);
}

}  // namespace

std::pair<double, double> ColorCoding::RangeOf(size_t component) const {
  if (model != ColorModel::kCieLab && model != ColorModel::kCieLuv) return {0, 1};
  if (component == 0) return {0, 100};
  return {-128, 127};
}

uint32_t ColorCoding::FromShares(const std::array<double, 4>& s) const {
  const auto perceived = [&](size_t i) {
    const auto [first, last] = RangeOf(i);
    return first + (last - first) * s[i];
  };
  switch (model) {
    case ColorModel::kCieLab:
      return FromLab(perceived(0), perceived(1), perceived(2));
    case ColorModel::kCieLuv:
      return FromLuv(perceived(0), perceived(1), perceived(2));
    case ColorModel::kCmyk:
      return Pack((1 - s[0]) * (1 - s[3]), (1 - s[1]) * (1 - s[3]), (1 - s[2]) * (1 - s[3]));
    default:
      return Pack(s[0], s[1], s[2]);
  }
}

uint32_t ColorCoding::Decode(const std::array<uint32_t, 4>& values) const {
  std::array<double, 4> shares{};
  for (size_t i = 0; i < components(); ++i) {
    const double range = high[i] - low[i];
    shares[i] = range == 0 ? 0 : std::clamp((values[i] - low[i]) / range, 0.0, 1.0);
  }
  return FromShares(shares);
}

uint32_t ColorCoding::DecodeLocal(const std::array<uint32_t, 4>& values, int bits) const {
  const double whole = std::ldexp(1.0, bits) - 1;
  // Half a step: scales of fixed point are not exact.
  const auto fits = [whole](double end) { return end <= whole + 0.5; };
  const auto count = static_cast<std::ptrdiff_t>(components());
  if (std::all_of(low.begin(), low.begin() + count, fits) &&
      std::all_of(high.begin(), high.begin() + count, fits)) {
    return Decode(values);
  }
  std::array<double, 4> shares{};
  for (size_t i = 0; i < components(); ++i) shares[i] = values[i] / whole;
  return FromShares(shares);
}

ColorTable::ColorTable() : entries_{vec::kBackColor, kBlack} {}

void ColorTable::Set(uint32_t index, uint32_t color) {
  if (index >= kColorTableEntries) return;
  if (index >= entries_.size()) entries_.resize(index + 1, kBlack);
  entries_[index] = color;
}

uint32_t ColorTable::operator[](uint32_t index) const {
  return index < entries_.size() ? entries_[index] : entries_[1];
}

uint32_t ColorTable::Resolve(ColorRef ref) const {
  switch (ref.kind) {
    case ColorRef::Kind::kForeground:
      return entries_[1];
    case ColorRef::Kind::kBackground:
      return entries_[0];
    case ColorRef::Kind::kIndex:
      return (*this)[ref.value];
    case ColorRef::Kind::kDirect:
      return ref.value;
  }
  return kBlack;
}

}  // namespace tavi::host::cgm

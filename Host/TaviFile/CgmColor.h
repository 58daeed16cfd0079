// Colours of a metafile: how they are coded, and what their indices mean.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

namespace tavi::host::cgm {

enum class ColorModel : uint8_t { kRgb = 1, kCieLab, kCieLuv, kCmyk, kRgbRelated };

// Ranges of the components of direct colours.
struct ColorCoding {
  ColorModel model = ColorModel::kRgb;
  std::array<double, 4> low = {0, 0, 0, 0};
  std::array<double, 4> high = {255, 255, 255, 255};

  size_t components() const { return model == ColorModel::kCmyk ? 4 : 3; }
  // 0x00BBGGRR of components as they stand in the metafile.
  uint32_t Decode(const std::array<uint32_t, 4>& values) const;
  // The same for components of another depth: they stand for the same values where those fit, otherwise they span the
  // whole range of the depth.
  uint32_t DecodeLocal(const std::array<uint32_t, 4>& values, int bits) const;
  // The values between which the model's component runs: lightness 0 to 100, its chroma -128 to 127, others 0 to 1.
  std::pair<double, double> RangeOf(size_t component) const;

 private:
  uint32_t FromShares(const std::array<double, 4>& shares) const;
};

// A colour as an attribute names it. Indices keep their meaning open until something is drawn.
struct ColorRef {
  enum class Kind : uint8_t { kForeground, kBackground, kIndex, kDirect };
  Kind kind = Kind::kForeground;
  uint32_t value = 0;
};

class ColorTable {
 public:
  ColorTable();
  void Set(uint32_t index, uint32_t color);
  uint32_t operator[](uint32_t index) const;
  // The colour of a reference; the foreground of an indexed picture is its colour 1.
  uint32_t Resolve(ColorRef ref) const;

 private:
  std::vector<uint32_t> entries_;
};

}  // namespace tavi::host::cgm

// Makes the sample file that scripts/demo.sh renders: a map in colours with three images on top of it, each
// stored in another way of the format.  make_demo OUT.ntf
#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <filesystem>
#include <string_view>

#include "NtfBuilder.h"

namespace {

using tavi_test::Bytes;
using tavi_test::ImageSpec;

constexpr uint32_t kWidth = 640;
constexpr uint32_t kHeight = 400;

// ---- An invented landscape
// -----------------------------------------------------------------------------------------

double Lattice(int32_t x, int32_t y) {
  uint32_t n = static_cast<uint32_t>(x) * 374761393U + static_cast<uint32_t>(y) * 668265263U;
  n = (n ^ (n >> 13)) * 1274126177U;
  return static_cast<double>((n ^ (n >> 16)) & 0xFFFF) / 65535.0;
}

double Smooth(double t) {
  return t * t * (3 - 2 * t);
}

double Noise(double x, double y) {
  const auto left = static_cast<int32_t>(std::floor(x));
  const auto top = static_cast<int32_t>(std::floor(y));
  const double u = Smooth(x - left);
  const double v = Smooth(y - top);
  const double upper = std::lerp(Lattice(left, top), Lattice(left + 1, top), u);
  const double lower = std::lerp(Lattice(left, top + 1), Lattice(left + 1, top + 1), u);
  return std::lerp(upper, lower, v);
}

// Height above the sea, about -0.5 to 0.5.
double Height(double x, double y) {
  double height = -0.47;
  double share = 0.5;
  double scale = 1.0 / 150;
  for (int octave = 0; octave < 5; ++octave) {
    height += share * Noise(x * scale + 7 * octave, y * scale + 3 * octave);
    share *= 0.5;
    scale *= 2;
  }
  return height;
}

struct Color {
  double red, green, blue;
};

Color Mix(const Color& a, const Color& b, double t) {
  return {std::lerp(a.red, b.red, t), std::lerp(a.green, b.green, t), std::lerp(a.blue, b.blue, t)};
}

// Lit from the upper left.
double Light(double x, double y) {
  const double slope = (Height(x + 1, y) - Height(x - 1, y)) + (Height(x, y + 1) - Height(x, y - 1));
  return std::clamp(1.0 + 9.0 * slope, 0.45, 1.5);
}

Color LandColor(double height) {
  constexpr std::array<Color, 5> kSteps = {
      {{214, 203, 152}, {126, 160, 90}, {92, 126, 72}, {150, 132, 100}, {245, 245, 245}}};
  const double place = std::clamp(height / 0.32, 0.0, 0.999) * (kSteps.size() - 1);
  const auto step = static_cast<size_t>(place);
  return Mix(kSteps[step], kSteps[step + 1], place - static_cast<double>(step));
}

uint8_t ToByte(double value) {
  return static_cast<uint8_t>(std::lround(std::clamp(value, 0.0, 255.0)));
}

Color MapColor(uint32_t x, uint32_t y) {
  const double height = Height(x, y);
  if (height < 0) return Mix({86, 150, 190}, {24, 58, 110}, std::min(1.0, -height * 4));
  const Color land = LandColor(height);
  const double light = Light(x, y);
  return {land.red * light, land.green * light, land.blue * light};
}

// ---- The images
// ------------------------------------------------------------------------------------------------------

// The whole map: red, green and blue in planes, block by block.
ImageSpec Map() {
  constexpr uint32_t kBlockWidth = 64;
  constexpr uint32_t kBlockHeight = 80;
  ImageSpec image;
  image.Blocks(kWidth / kBlockWidth, kHeight / kBlockHeight, kBlockWidth, kBlockHeight).Mode('B');
  image.Roles({"R ", "G ", "B "}).Level(1);
  image.irep = "RGB";
  for (uint32_t top = 0; top < kHeight; top += kBlockHeight) {
    for (uint32_t left = 0; left < kWidth; left += kBlockWidth) {
      std::array<Bytes, 3> planes;
      for (uint32_t i = 0; i < kBlockWidth * kBlockHeight; ++i) {
        const Color color = MapColor(left + i % kBlockWidth, top + i / kBlockWidth);
        planes[0].push_back(ToByte(color.red));
        planes[1].push_back(ToByte(color.green));
        planes[2].push_back(ToByte(color.blue));
      }
      for (const Bytes& plane : planes) image.pixels.insert(image.pixels.end(), plane.begin(), plane.end());
    }
  }
  return image;
}

// Heights as false colours in a disc: one band with a look-up table, entry 0 marks pixels that are not there.
ImageSpec HeightDisc(uint32_t left, uint32_t top) {
  constexpr uint32_t kSide = 180;
  ImageSpec image = tavi_test::GreyImage(kSide, kSide);
  image.irep = "RGB/LUT";
  image.ic = "NM";
  image.mask.pad_code = {0};
  image.Level(2, 1).At(static_cast<int32_t>(top), static_cast<int32_t>(left));
  image.bands[0].irepband = "LU";
  image.bands[0].luts.assign(3, Bytes(256, 0));
  for (uint32_t i = 1; i < 256; ++i) {
    const double t = (i - 1) / 254.0;
    image.bands[0].luts[0][i] = ToByte(255 * std::clamp(1.5 - std::abs(4 * t - 3), 0.0, 1.0));
    image.bands[0].luts[1][i] = ToByte(255 * std::clamp(1.5 - std::abs(4 * t - 2), 0.0, 1.0));
    image.bands[0].luts[2][i] = ToByte(255 * std::clamp(1.5 - std::abs(4 * t - 1), 0.0, 1.0));
  }
  image.pixels.assign(size_t{kSide} * kSide, 0);
  for (uint32_t i = 0; i < kSide * kSide; ++i) {
    const double dx = i % kSide - kSide / 2.0 + 0.5;
    const double dy = i / kSide - kSide / 2.0 + 0.5;
    if (std::hypot(dx, dy) > kSide / 2.0) continue;
    const double height = Height(left + i % kSide, top + i / kSide);
    image.pixels[i] = static_cast<uint8_t>(std::clamp(128 + height * 380, 1.0, 255.0));
  }
  return image;
}

// The relief alone in grey, four blocks, in the lower left corner.
ImageSpec ReliefInset() {
  constexpr uint32_t kSide = 64;
  ImageSpec image = tavi_test::GreyImage(1, 1);
  image.Blocks(2, 2, kSide, kSide).Level(3, 1).At(kHeight - 2 * kSide - 12, 12);
  image.pixels.clear();
  for (uint32_t block = 0; block < 4; ++block) {
    for (uint32_t i = 0; i < kSide * kSide; ++i) {
      const uint32_t x = block % 2 * kSide + i % kSide;
      const uint32_t y = block / 2 * kSide + i / kSide;
      const bool edge = x < 2 || y < 2 || x >= 2 * kSide - 2 || y >= 2 * kSide - 2;
      image.pixels.push_back(edge ? 255 : ToByte(150 * Light(12 + 5.0 * x, 5.0 * y)));
    }
  }
  return image;
}

// Seven rows of five picture elements for each letter of the name.
constexpr std::array<std::array<std::string_view, 7>, 8> kLetters = {{
    {"#####", "..#..", "..#..", "..#..", "..#..", "..#..", "..#.."},
    {".###.", "#...#", "#...#", "#####", "#...#", "#...#", "#...#"},
    {"#...#", "#...#", "#...#", "#...#", "#...#", ".#.#.", "..#.."},
    {".###.", "..#..", "..#..", "..#..", "..#..", "..#..", ".###."},
    {"#...#", "##..#", "#.#.#", "#.#.#", "#.#.#", "#..##", "#...#"},
    {".###.", "..#..", "..#..", "..#..", "..#..", "..#..", ".###."},
    {"#####", "..#..", "..#..", "..#..", "..#..", "..#..", "..#.."},
    {"#####", "#....", "#....", "####.", "#....", "#....", "#...."},
}};

// The name in one bit a pixel, with two colours of its own; the colour of bit 0 is left out.
ImageSpec Title() {
  constexpr uint32_t kScale = 5;
  constexpr uint32_t kTitleWidth = 6 * kScale * 8;
  constexpr uint32_t kTitleHeight = 7 * kScale;
  Bytes bits((kTitleWidth * kTitleHeight + 7) / 8, 0);
  for (uint32_t i = 0; i < kTitleWidth * kTitleHeight; ++i) {
    const uint32_t column = i % kTitleWidth / kScale;
    const uint32_t row = i / kTitleWidth / kScale;
    const bool set = column % 6 < 5 && kLetters[column / 6][row][column % 6] == '#';
    if (set) bits[i / 8] = static_cast<uint8_t>(bits[i / 8] | (0x80U >> (i % 8)));
  }
  ImageSpec image = tavi_test::BilevelImage(kTitleWidth, kTitleHeight, bits);
  image.irep = "RGB/LUT";
  image.ic = "NM";
  image.mask.pad_code = {0};
  image.bands[0].irepband = "LU";
  image.bands[0].luts = {{0, 255}, {0, 248}, {0, 214}};
  image.Level(4, 1).At(16, 18);
  return image;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) {
    std::fputs("usage: make_demo OUT.ntf\n", stderr);
    return 2;
  }
  const std::filesystem::path out = std::filesystem::absolute(argv[1]);
  tavi_test::NtfBuilder file{Map(), HeightDisc(430, 190), ReliefInset(), Title()};
  file.header["FTITLE"] = "An invented coast";
  static_cast<void>(file.Build().Write(out.parent_path(), out.filename().string()));
  return 0;
}

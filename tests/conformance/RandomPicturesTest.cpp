// Small random documents of images, over all modes, depths, masks, blocks, places and levels, compared with
// the reference composite pixel by pixel. A fixed seed: what fails once fails always.
#include <algorithm>
#include <random>

#include "ConformanceTest.h"

namespace tavi_test {
namespace {

class Dice {
 public:
  explicit Dice(uint32_t seed) : engine_(seed) {}

  uint32_t Below(uint32_t bound) { return static_cast<uint32_t>(engine_() % bound); }
  uint32_t From(uint32_t low, uint32_t high) { return low + Below(high - low + 1); }
  bool OneIn(uint32_t chances) { return Below(chances) == 0; }
  uint8_t Byte() { return static_cast<uint8_t>(engine_() >> 7); }

  template <typename T>
  T Of(std::initializer_list<T> choices) {
    return choices.begin()[Below(static_cast<uint32_t>(choices.size()))];
  }

 private:
  std::mt19937 engine_;  // its sequence is the same on every system
};

Bytes RandomBytes(Dice& dice, size_t count) {
  Bytes bytes(count);
  for (uint8_t& byte : bytes) byte = dice.Byte();
  return bytes;
}

// Bytes that the image's pixels take at most, whichever way they are read.
size_t PixelBytes(const ImageSpec& image) {
  const size_t bands = std::max<size_t>(3, image.bands.size());
  const size_t row = size_t{image.nppbh} * bands * std::max(1U, image.nbpp / 8) + 4;
  return row * image.nppbv * image.BlockCount() + 16;
}

void RollBands(Dice& dice, ImageSpec& image) {
  if (image.pvtype == "B  ") return;
  const uint32_t bands = dice.Of({1U, 1U, 2U, 3U, 3U, 4U, 5U, 11U});
  std::vector<std::string> roles;
  for (uint32_t i = 0; i < bands; ++i) {
    roles.push_back(dice.Of<const char*>({"  ", "  ", "R ", "G ", "B ", "M ", "LU", "Y ", "Cb", "Cr", "XY"}));
  }
  image.Roles(roles);
  image.use_xbands = dice.OneIn(8);
}

void RollPalette(Dice& dice, ImageSpec& image) {
  if (image.bands.size() != 1 || image.nbpp > 8 || dice.Below(3) != 0) return;
  const size_t entries = size_t{1} << image.nbpp;
  const size_t tables = dice.OneIn(2) ? 1 : 3;
  for (size_t i = 0; i < tables; ++i) image.bands[0].luts.push_back(RandomBytes(dice, entries));
}

// Offsets of blocks inside the data, some absent, some beyond the data.
std::vector<uint32_t> RollTable(Dice& dice, const ImageSpec& image) {
  std::vector<uint32_t> table;
  const auto extra = static_cast<uint32_t>(image.pixels.size() - PixelBytes(image));
  for (uint32_t i = 0; i < image.BlockCount(); ++i) {
    const uint32_t kind = dice.Below(8);
    table.push_back(kind < 2 ? kAbsentBlock : kind == 2 ? 1000000U : dice.Below(extra));
  }
  return table;
}

// Present blocks of sequential data whose last stands in an earlier column of the walk than the first: the
// distance of their bands is not defined.
bool RunsBackwards(const ImageSpec& image) {
  if (image.imode != 'S' || image.bands.size() < 3 || !image.mask.block_offsets) return false;
  std::vector<uint32_t> present;
  for (uint32_t i = 0; i < image.BlockCount(); ++i) {
    if (image.mask.block_offsets->at(i) != kAbsentBlock) present.push_back(i % image.nbpc);
  }
  return !present.empty() && present.back() < present.front();
}

void RollMask(Dice& dice, ImageSpec& image) {
  if (!dice.OneIn(3)) return;
  image.ic = "NM";
  const Bytes extra = RandomBytes(dice, 64);
  image.pixels.insert(image.pixels.end(), extra.begin(), extra.end());
  if (dice.OneIn(2)) image.mask.block_offsets = RollTable(dice, image);
  if (dice.OneIn(2)) image.mask.pad_offsets = RollTable(dice, image);
  if (RunsBackwards(image)) image.mask.block_offsets.reset();
  if (dice.OneIn(2)) image.mask.pad_code = {static_cast<uint8_t>(dice.Byte() & ((1U << image.nbpp) - 1))};
  if (dice.OneIn(2)) image.mask.gap = RandomBytes(dice, dice.Below(6));
}

ImageSpec RollImage(Dice& dice) {
  ImageSpec image;
  image.irep = dice.Of<const char*>({"MONO", "RGB", "MULTI", "RGB/LUT", "NODISPLY", "YCbCr601", "POLAR"});
  if (dice.OneIn(5)) {
    image.pvtype = "B  ";
    image.nbpp = image.abpp = 1;
  }
  image.Blocks(dice.From(1, 3), dice.From(1, 3), dice.From(1, 9), dice.From(1, 7));
  if (dice.OneIn(2)) image.Blocks(1, 1, dice.From(1, 12), dice.From(1, 9));
  image.imode = dice.Of({'B', 'P', 'R', 'S'});
  RollBands(dice, image);
  if (image.bands.size() == 1 && image.nbpp == 8 && dice.OneIn(4)) image.nbpp = image.abpp = dice.From(1, 7);
  RollPalette(dice, image);
  image.pixels = RandomBytes(dice, PixelBytes(image));
  RollMask(dice, image);
  if (dice.OneIn(12)) image.pixels.resize(dice.Below(static_cast<uint32_t>(image.pixels.size())));
  image.At(static_cast<int32_t>(dice.Below(16)) - 3, static_cast<int32_t>(dice.Below(16)) - 3);
  image.Level(dice.From(0, 5), dice.Below(6));
  return image;
}

NtfBuilder RollFile(uint32_t seed) {
  for (uint32_t attempt = 0;; ++attempt) {
    Dice dice(seed + 1000003U * attempt);
    NtfBuilder file;
    for (uint32_t i = dice.From(1, 4); i > 0; --i) file.images.push_back(RollImage(dice));
    file.background = RandomBytes(dice, 3);
    const Composite size = ReferenceSize(file);
    if (size.width > 0 && size.height > 0 && size.width < 500 && size.height < 500) return file;
  }
}

class RandomPictures : public ConformanceTest, public ::testing::WithParamInterface<uint32_t> {};

// Batches, so that one failing picture does not hide the others.
INSTANTIATE_TEST_SUITE_P(Batches, RandomPictures, ::testing::Range(0U, 20U));

TEST_P(RandomPictures, AreTheReferenceComposite) {
  uint32_t drawn = 0;
  for (uint32_t i = 0; i < 50; ++i) {
    const uint32_t seed = 50 * GetParam() + i;
    SCOPED_TRACE("seed " + std::to_string(seed));
    const NtfBuilder file = RollFile(seed);
    const BuiltFile built = file.Build();
    const Composite expected = ReferenceCompose(file, built);
    EXPECT_EQ(Differences(LoadFile(Write(built)), expected), "");
    drawn += expected.status == SUCCESS ? 1 : 0;
  }
  EXPECT_GE(drawn, 20U);
}

}  // namespace
}  // namespace tavi_test

#include "RichFiles.h"

#include "../graphics/CgmPicture.h"

namespace tavi::faults {
namespace {

using tavi_test::BilevelImage;
using tavi_test::Bytes;
using tavi_test::DeepImage;
using tavi_test::GreyImage;
using tavi_test::ImageSpec;
using tavi_test::kAbsentBlock;
using tavi_test::NtfBuilder;
using tavi_test::RgbImage;
using tavi_test::Tre;

// Bytes that differ from their neighbours.
Bytes Pattern(size_t count, uint8_t first = 1) {
  Bytes bytes(count);
  for (size_t i = 0; i < count; ++i) {
    bytes[i] = static_cast<uint8_t>(first + 7 * i);
  }
  return bytes;
}

// Pixels below grey level 20 only, which the stretching of dark images acts on.
ImageSpec DarkImage() {
  return GreyImage(4, 3, Bytes(12, 5));
}

ImageSpec PaletteImage() {
  ImageSpec image = GreyImage(4, 2, {0, 1, 2, 3, 3, 2, 1, 0});
  image.irep = "RGB/LUT";
  image.bands[0].irepband = "LU";
  image.bands[0].luts = {{10, 20, 30, 40}, {50, 60, 70, 80}, {90, 100, 110, 120}};
  return image;
}

// Three bands in 2 x 2 blocks of 3 x 2 pixels. By row, blocks follow each other at the size of a bitmap of
// theirs, whose rows are padded to four bytes.
ImageSpec BlockedRgb(char mode) {
  const size_t row = mode == 'R' ? 12 : 9;
  ImageSpec image = RgbImage(3, 2, mode, Pattern(row * 2 * 4));
  image.Blocks(2, 2, 3, 2);
  return image;
}

// The same with the second block absent and a pad code.
ImageSpec MaskedRgb(char mode) {
  ImageSpec image = BlockedRgb(mode);
  image.ic = "NM";
  const uint32_t block = mode == 'S' ? 6 : 18;
  image.mask.block_offsets = {0, kAbsentBlock, block, 2 * block};
  image.mask.pad_code = {0};
  return image;
}

ImageSpec MaskedBilevel() {
  ImageSpec image = BilevelImage(8, 2, {0xA5, 0x3C, 0xF0, 0x0F, 0x55, 0xAA});
  image.Blocks(2, 2, 8, 2);
  image.ic = "NM";
  image.irep = "RGB/LUT";
  image.bands[0].irepband = "LU";
  image.bands[0].luts = {{0, 255}, {0, 128}, {0, 64}};
  image.mask.block_offsets = {0, 2, kAbsentBlock, 4};
  image.mask.pad_offsets = {kAbsentBlock, 2, kAbsentBlock, kAbsentBlock};
  image.mask.pad_code = {1};
  return image;
}

ImageSpec MaskedGrey() {
  ImageSpec image = GreyImage(4, 2, Pattern(24));
  image.Blocks(2, 2, 4, 2);
  image.ic = "NM";
  image.mask.block_offsets = {0, kAbsentBlock, 8, 16};
  image.mask.pad_code = {1};
  return image;
}

ImageSpec BlocksOf(uint32_t nbpp, uint32_t abpp) {
  ImageSpec image = DeepImage(4, 2, nbpp, abpp, Pattern(size_t{4} * 4 * 2 * nbpp / 8));
  image.Blocks(2, 2, 4, 2);
  return image;
}

ImageSpec ManyBands() {
  ImageSpec image = RgbImage(3, 2, 'S', Pattern(size_t{3} * 2 * 10));
  image.Roles(std::vector<std::string>(10, "  "));
  image.irep = "MULTI";
  return image;
}

ImageSpec FourBands() {
  ImageSpec image = BlockedRgb('B');
  image.Roles({"B ", "G ", "R ", "N "});
  image.irep = "MULTI";
  image.pixels = Pattern(size_t{6} * 4 * 4);
  return image;
}

ImageSpec TwoBands() {
  ImageSpec image = RgbImage(4, 2, 'B', Pattern(size_t{8} * 4 * 3));
  image.Roles({"M ", "  "}).Blocks(2, 2, 4, 2);
  image.irep = "MULTI";
  return image;
}

// Drawings over an image, one of them attached to it, and what a file can name but not describe.
NtfBuilder Graphics() {
  NtfBuilder file{GreyImage(8, 6)};
  tavi_test::CgmPicture picture;
  picture.Rectangle(0, 0, 5, 5, {1, 2, 3}).Line(0, 0, 9, 9, 2, {200, 100, 50});
  for (uint32_t i = 0; i < 2; ++i) {
    tavi_test::GraphicSpec graphic;
    graphic.sdlvl = 2 + i;
    graphic.salvl = i;
    graphic.bound2_row = 7;
    graphic.bound2_column = 5;
    graphic.sxshd = Tre("SXSTRE", "about the graphic");
    graphic.data = picture.Build();
    file.graphics.push_back(graphic);
  }
  file.graphics.push_back({.sfmt = 'B', .sdlvl = 4, .data = {1, 2, 3}});
  file.graphics.push_back({.sfmt = 'O', .sdlvl = 5, .data = {1, 2, 3}});
  return file;
}

NtfBuilder TextsOnly() {
  NtfBuilder file;
  file.texts.resize(2);
  file.texts[0].data = {'h', 'e', 'l', 'l', 'o'};
  return file;
}

}  // namespace

NtfBuilder FileOfEverything() {
  NtfBuilder file;
  file.background = {10, 20, 30};
  file.udhd = Tre("UDHTRE", "user data");
  file.xhd = Tre("XHDTRE", "extended data");
  ImageSpec first = GreyImage(6, 4, {});
  first.igeolo = std::string(60, '0');
  first.comments = {"first comment", "second comment"};
  first.udid = Tre("UDITRE", "about the image");
  first.ixshd = Tre("IXSTRE", "more about it");
  file.images.push_back(first);
  file.images.push_back(PaletteImage().Level(2, 1).At(1, 1));
  file.images.push_back(MaskedBilevel().Level(3, 2).At(1, -1));
  file.images.push_back(MaskedRgb('B').Level(4, 0).At(2, 3));
  file.images.push_back(MaskedGrey().Level(5, 4).At(0, 1));
  file.images.push_back(DeepImage(3, 2, 16, 11, Pattern(12)).Level(6));
  file.images.push_back(ManyBands().Level(7));
  file.images.push_back(BlockedRgb('P').Level(8, 7));
  file.images.push_back(BlockedRgb('R').Level(9));
  file.texts.resize(1);
  file.texts[0].data = {'t', 'e', 'x', 't'};
  file.texts[0].txshd = Tre("TXSTRE", "about the text");
  file.data_extensions.resize(2);
  file.data_extensions[0].data = Tre("OVERFL", "overflowed");
  file.data_extensions[1].desshf = {'u', 's', 'e', 'r'};
  file.reserved.resize(1);
  return file;
}

std::vector<NamedFile> FilesOfEveryKind() {
  return {
      {"Everything", FileOfEverything()},
      {"TextsOnly", TextsOnly()},
      {"Graphics", Graphics()},
      {"Grey", NtfBuilder{GreyImage(4, 3)}},
      {"Dark", NtfBuilder{DarkImage()}},
      {"Grey12", NtfBuilder{DeepImage(4, 2, 12, 12, Pattern(12))}},
      {"Grey16", NtfBuilder{DeepImage(4, 2, 16, 16, Pattern(16))}},
      {"Grey16of11Bits", NtfBuilder{DeepImage(4, 2, 16, 11, Pattern(16))}},
      {"Grey32of24Bits", NtfBuilder{DeepImage(4, 2, 32, 24, Pattern(32))}},
      {"Palette", NtfBuilder{PaletteImage()}},
      {"GreyBlocks", NtfBuilder{BlocksOf(8, 8)}},
      {"Grey12Blocks", NtfBuilder{BlocksOf(12, 12)}},
      {"Grey16of11BitsBlocks", NtfBuilder{BlocksOf(16, 11)}},
      {"MaskedGrey", NtfBuilder{MaskedGrey()}},
      {"Bilevel", NtfBuilder{BilevelImage(5, 3, {0xA5, 0x3C})}},
      {"MaskedBilevel", NtfBuilder{MaskedBilevel()}},
      {"TwoBands", NtfBuilder{TwoBands()}},
      {"RgbB", NtfBuilder{BlockedRgb('B')}},
      {"RgbP", NtfBuilder{BlockedRgb('P')}},
      {"RgbR", NtfBuilder{BlockedRgb('R')}},
      {"RgbS", NtfBuilder{BlockedRgb('S')}},
      {"MaskedRgbB", NtfBuilder{MaskedRgb('B')}},
      {"MaskedRgbP", NtfBuilder{MaskedRgb('P')}},
      {"MaskedRgbR", NtfBuilder{MaskedRgb('R')}},
      {"MaskedRgbS", NtfBuilder{MaskedRgb('S')}},
      {"FourBands", NtfBuilder{FourBands()}},
      {"ManyBands", NtfBuilder{ManyBands()}},
  };
}

}  // namespace tavi::faults

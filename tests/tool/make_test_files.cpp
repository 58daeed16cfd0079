// Makes the files that the tests of the command line look at.  make_test_files DIRECTORY
// The pixel values are simple formulas, which tool_support.py states again.
#include <array>
#include <cstdio>
#include <filesystem>

#include "../graphics/CgmPicture.h"
#include "LimitFiles.h"
#include "NtfBuilder.h"

namespace {

using namespace tavi_test;

// Red, green, blue of pixel (x, y): 3x + y, x + 5y, 7x + 11y + 2, each modulo 256. A plane of each, one after
// another.
ImageSpec ColorImage(uint32_t columns, uint32_t rows) {
  Bytes pixels;
  const auto add_plane = [&](uint32_t across, uint32_t down, uint32_t start) {
    for (uint32_t y = 0; y < rows; ++y) {
      for (uint32_t x = 0; x < columns; ++x)
        pixels.push_back(static_cast<uint8_t>(across * x + down * y + start));
    }
  };
  add_plane(3, 1, 0);
  add_plane(1, 5, 0);
  add_plane(7, 11, 2);
  return RgbImage(columns, rows, 'B', pixels);
}

// Grey of pixel (x, y): 3x + 7y, modulo 256; no pixel of the small pictures here is 255.
Bytes GreyPixels(uint32_t columns, uint32_t rows) {
  Bytes pixels;
  for (uint32_t y = 0; y < rows; ++y) {
    for (uint32_t x = 0; x < columns; ++x) pixels.push_back(static_cast<uint8_t>(3 * x + 7 * y));
  }
  return pixels;
}

BuiltFile Color() {
  return NtfBuilder{ColorImage(37, 23)}.Build();
}
BuiltFile Grey() {
  return NtfBuilder{GreyImage(29, 17, GreyPixels(29, 17))}.Build();
}
// All values below 20.
BuiltFile Dark() {
  return NtfBuilder{GreyImage(8, 2, Bytes(16, 10))}.Build();
}

// Every kind of segment, and two images of which one is masked.
BuiltFile Mixed() {
  NtfBuilder file;
  file.images.push_back(ColorImage(4, 3));
  ImageSpec masked = GreyImage(4, 4, GreyPixels(4, 4));
  masked.ic = "NM";
  masked.mask.pad_code = {7};
  masked.Level(5, 1).At(2, -1);
  file.images.push_back(masked);
  GraphicSpec graphic;
  graphic.sdlvl = 7;
  graphic.salvl = 1;
  graphic.row = 12;
  graphic.column = 34;
  graphic.data = Bytes(10, 0);
  file.graphics.push_back(graphic);
  TextSpec text;
  text.txtfmt = "UT1";
  text.data = Bytes(21, 'a');
  file.texts.push_back(text);
  DataExtensionSpec extension;
  extension.data = Bytes(5, 'x');
  file.data_extensions.push_back(extension);
  file.reserved.push_back({Bytes(3, 'r'), Bytes(4, 's')});
  return file.Build();
}

// The second image's data are no stream of any kind.
BuiltFile Coded(const char* coding) {
  ImageSpec coded = GreyImage(4, 4);
  coded.ic = coding;
  return NtfBuilder{GreyImage(4, 4), coded}.Build();
}

BuiltFile DeepBands() {
  ImageSpec image = RgbImage(2, 2, 'P', Bytes(24, 0));
  image.nbpp = 16;
  image.abpp = 11;
  return NtfBuilder{image}.Build();
}

// The third image is real-valued.
BuiltFile RealValued() {
  ImageSpec real = GreyImage(2, 2);
  real.pvtype = "R";
  return NtfBuilder{GreyImage(2, 2), GreyImage(2, 2), real}.Build();
}

BuiltFile Patched(const char* field, const char* text) {
  return Color().Patch(field, text);
}

// More pixels than one bitmap may take.
BuiltFile Huge(uint32_t side) {
  ImageSpec image = GreyImage(1, 1);
  image.nbpr = side;
  image.nbpc = side;
  image.nppbh = side;
  image.nppbv = side;
  return NtfBuilder{image}.Build();
}

void Append(Bytes& to, const Bytes& more) {
  to.insert(to.end(), more.begin(), more.end());
}

// A record whose length is no number, one that runs past the block, and what is left of a record's head.
Bytes OddRecords() {
  Bytes block = Tre("FIRST ", "0123456789");
  Append(block, {'B', 'A', 'D', 'L', 'E', 'N', 'x', 'y', 'z', ' ', ' '});
  Append(block, {0xFF, '"', '\\', 0, 'o', 'd', ' ', ' ', '1', '2', 'x'});
  Append(block, Bytes(12, 'd'));
  Append(block, {'O', 'V', 'E', 'R', 'U', 'N', '9', '9', '9', '9', '9', '!'});
  return block;
}

// Two bands with look-up tables, one table for all colours and three; comments, corners, both record areas.
ImageSpec FullImage() {
  ImageSpec image = GreyImage(4, 3);
  image.Roles({"LU", "M"});
  image.pixels = Bytes(24, 1);
  image.irep = "RGB/LUT";
  image.bands[0].luts = {Bytes{1, 2, 3, 4, 5, 6, 7, 8, 9, 10}};
  image.bands[1].luts = {Bytes{0, 255}, Bytes{128, 7}, Bytes{9, 11}};
  image.igeolo = std::string(60, '7');
  image.comments = {"first comment", "the second"};
  image.udid = Tre("USERDF", std::string(3000, 'u'));
  Append(*image.udid, Tre("SECOND", ""));
  image.ixshd = OddRecords();
  image.fields["IID1"] = "\xff\x01\"\\ \x80 \n\t";
  image.fields["IID2"] = "  between blanks";
  return image.Level(2).At(-1, 12);
}

ImageSpec MaskedImage() {
  ImageSpec image = GreyImage(8, 4, GreyPixels(8, 4));
  image.Blocks(4, 2, 2, 2);
  image.ic = "NM";
  image.mask.block_offsets = std::vector<uint32_t>{0, kAbsentBlock, 4, 8, 12, 16, 20, 0x01020304};
  image.mask.pad_offsets = std::vector<uint32_t>{kAbsentBlock, 4};
  image.mask.pad_code = {9};
  image.mask.gap = {1, 2, 3};
  return image.Level(3);
}

ImageSpec ManyBands() {
  ImageSpec image = GreyImage(2, 2);
  image.irep = "MULTI";
  image.bands = std::vector<BandSpec>(11);
  image.use_xbands = true;
  image.pixels = Bytes(44, 3);
  return image.Level(4);
}

// Every field that the layout knows, most of them with a length of their own.
BuiltFile Full() {
  ImageSpec coded = GreyImage(4, 4);
  coded.ic = "C8";
  coded.comrat = "N012";
  NtfBuilder file{FullImage(), MaskedImage(), ManyBands(), coded.Level(5)};
  file.header["FTITLE"] = "A title with blanks behind it";
  file.background = {1, 128, 255};
  file.udhd = Tre("HEADER", "abc");
  file.xhd = OddRecords();
  for (const char* data : {"first drawing", "second"}) {
    GraphicSpec graphic;
    const std::string text = data;
    graphic.data = Bytes(text.begin(), text.end());
    graphic.sxshd = Tre("GRAPHC", data);
    file.graphics.push_back(graphic);
  }
  TextSpec text;
  text.data = {'t', 'e', 'x', 't', 0, 0xFF, '\r', '\n'};
  text.txshd = Tre("TEXTTR", "t");
  file.texts.push_back(text);
  file.texts.push_back({});
  DataExtensionSpec overflow;
  overflow.desshf = Bytes{'u', 's', 'e', 'r', ' ', 0xFE};
  overflow.data = Tre("OVERFL", "12345");
  file.data_extensions.push_back(overflow);
  DataExtensionSpec other;  // the fields behind its security block are read as those of an overflow
  other.desid = "CSSHPA DES";
  other.data = Bytes(40, 'z');
  file.data_extensions.push_back(other);
  file.reserved.push_back({Bytes(3, 'r'), Bytes(4, 's')});
  return file.Build();
}

// Every kind of segment, and nothing wrong with any: the levels hang together, the mask's entries agree, the overflow is
// told of on both sides.
BuiltFile Tidy() {
  ImageSpec blocked = GreyImage(16, 8, GreyPixels(16, 8));
  blocked.Blocks(2, 2, 8, 4).Level(1);
  blocked.udid = Tre("USERDF", "12345");
  blocked.igeolo = std::string(60, '7');
  blocked.comments = {"first comment", "the second"};
  blocked.fields["UDOFL"] = "001";
  blocked.bands[0].irepband = "M ";
  ImageSpec masked = GreyImage(4, 4);
  masked.Blocks(2, 2, 2, 2).Level(2, 1).At(3, -1);
  masked.pixels = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12};
  masked.ic = "NM";
  masked.mask.block_offsets = std::vector<uint32_t>{0, kAbsentBlock, 4, 8};
  masked.mask.pad_offsets = std::vector<uint32_t>{kAbsentBlock, kAbsentBlock, 4, kAbsentBlock};
  masked.mask.pad_code = {7};
  NtfBuilder file{blocked, masked};
  file.header["FTITLE"] = "A tidy file";
  file.udhd = Tre("HEADER", "abc");
  GraphicSpec graphic;
  graphic.sdlvl = 3;
  graphic.salvl = 2;
  graphic.row = -12;
  graphic.column = 34;
  graphic.fields["SCOLOR"] = "C";
  graphic.data = Bytes(10, 0);
  file.graphics.push_back(graphic);
  TextSpec text;
  text.txtalvl = 2;
  text.data = {'t', 'e', 'x', 't', '\r', '\n'};
  file.texts.push_back(text);
  DataExtensionSpec overflow;
  overflow.fields["DESOFLW"] = "UDID  ";
  overflow.fields["DESITEM"] = "001";
  overflow.data = Tre("OVERFL", "12345");
  file.data_extensions.push_back(overflow);
  return file.Build();
}

// A drawing over a grey field, red on the left and blue on the right; a picture without anything in it; a symbol.
BuiltFile Drawings() {
  NtfBuilder file{GreyImage(60, 40, Bytes(60 * 40, 100))};
  tavi_test::CgmPicture halves;
  halves.Rectangle(0, 0, 20, 30, {255, 0, 0}).Rectangle(20, 0, 40, 30, {0, 0, 255});
  GraphicSpec drawing;
  drawing.sdlvl = 2;
  drawing.bound1_row = 10;  // left, top, right, bottom
  drawing.bound1_column = 5;
  drawing.bound2_row = 50;
  drawing.bound2_column = 35;
  drawing.data = halves.Build();
  GraphicSpec nothing = drawing;
  nothing.sdlvl = 3;
  nothing.data = tavi_test::CgmPicture().Build();
  GraphicSpec symbol;
  symbol.sfmt = 'B';
  symbol.sdlvl = 4;
  symbol.data = Bytes(4, 0xFF);
  file.graphics = {drawing, nothing, symbol};
  return file.Build();
}

// More data than one piece of a copy takes.
BuiltFile Large() {
  return NtfBuilder{GreyImage(1500, 1001, GreyPixels(1500, 1001))}.Build();
}

// A mask table of 80 000 bytes: one block for each pixel.
BuiltFile ManyBlocks() {
  ImageSpec image = GreyImage(200, 100, GreyPixels(200, 100));
  image.Blocks(200, 100, 1, 1);
  image.ic = "NM";
  image.mask.block_offsets.emplace();
  for (uint32_t i = 0; i < 20000; ++i) image.mask.block_offsets->push_back(i);
  return NtfBuilder{image}.Build();
}

// 8 x 8 pixels of grey 136: one block of which only the mean differs from 128, one code in each table.
BuiltFile Jpeg() {
  Bytes stream = {0xFF, 0xD8, 0xFF, 0xDB, 0x00, 0x43, 0x00};
  Append(stream, Bytes(64, 8));
  Append(stream, {0xFF, 0xC0, 0x00, 0x0B, 8, 0, 8, 0, 8, 1, 1, 0x11, 0});
  for (const std::array<uint8_t, 2> table : {std::array<uint8_t, 2>{0x00, 4}, {0x10, 0}}) {
    Append(stream, {0xFF, 0xC4, 0x00, 0x14, table[0], 1});
    Append(stream, Bytes(15, 0));
    stream.push_back(table[1]);
  }
  Append(stream, {0xFF, 0xDA, 0x00, 0x08, 1, 1, 0x00, 0, 63, 0, 0x43, 0xFF, 0xD9});
  ImageSpec image = GreyImage(8, 8, stream);
  image.ic = "C3";
  image.comrat = "00.0";
  return NtfBuilder{image}.Build();
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) {
    std::fputs("usage: make_test_files DIRECTORY\n", stderr);
    return 2;
  }
  const std::filesystem::path folder = argv[1];
  std::filesystem::create_directories(folder);
  const auto write = [&](const char* name, const BuiltFile& file) { file.Write(folder, name); };
  write("color.ntf", Color());
  write("grey.ntf", Grey());
  write("dark.ntf", Dark());
  write("mixed.ntf", Mixed());
  write("coded.ntf", Coded("C8"));
  write("refused_coding.ntf", Coded("C0"));
  write("huge.ntf", Huge(900));
  write("vast.ntf", Huge(9998));  // more than there are addresses
  write("empty_document.ntf", NtfBuilder{}.Build());
  write("deep_bands.ntf", DeepBands());
  write("real_valued.ntf", RealValued());
  write("clevel.ntf", Patched("CLEVEL", "05"));
  write("fver.ntf", Patched("FVER", "02.00"));
  write("fhdr.ntf", Patched("FHDR", "%PDF"));
  write("control_bytes.ntf", Patched("FHDR", "\x01\"\\\xff"));
  write("fsclas.ntf", Patched("FSCLAS", "Q"));
  write("imode.ntf", Patched("image[0].IMODE", "X"));
  write("numi.ntf", Patched("NUMI", "999"));
  write("udhdl.ntf", Patched("UDHDL", "00002"));
  write("udhdl_long.ntf", Patched("UDHDL", "90000"));
  write("streamed.ntf", Patched("FL", "999999999999"));
  write("nrows_cut.ntf", Color().Truncate("image[0].NROWS", 3));
  write("nrows_missing.ntf", Color().Truncate("image[0].NROWS", 0));
  write("subheader_missing.ntf", Mixed().Truncate("image[0].data", 5));
  write("data_cut.ntf", Color().Truncate("image[0].data", 100));
  write("nothing.ntf", BuiltFile{});
  write("full.ntf", Full());
  write("full_cut.ntf", Full().Truncate("image[1].BMR[5]", 2));
  write("tidy.ntf", Tidy());
  write("large.ntf", Large());
  write("large_cut.ntf", Large().Truncate("image[0].data", 1400000));
  write("many_blocks.ntf", ManyBlocks());
  write("jpeg.ntf", Jpeg());
  write("drawings.ntf", Drawings());
  for (const tavi_test::LimitFile& each : tavi_test::MakeLimitFiles())
    write(("limit_" + each.limit + "_" + std::to_string(each.value) + ".ntf").c_str(), each.file);
  return 0;
}

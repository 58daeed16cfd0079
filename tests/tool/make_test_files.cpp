// Makes the files that the tests of the command line look at.  make_test_files DIRECTORY
// The pixel values are simple formulas, which tool_support.py states again.
#include <cstdio>
#include <filesystem>

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
BuiltFile Huge() {
  ImageSpec image = GreyImage(1, 1);
  image.nbpr = 900;
  image.nbpc = 900;
  image.nppbh = 900;
  image.nppbv = 900;
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
  write("huge.ntf", Huge());
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
  return 0;
}

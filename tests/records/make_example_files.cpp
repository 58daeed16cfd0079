// Writes the files that the programs of the documentation are run on into the folder of its argument.
#include <filesystem>
#include <iostream>

#include "NtfBuilder.h"

namespace {

using tavi_test::Bytes;
using tavi_test::GreyImage;
using tavi_test::NtfBuilder;
using tavi_test::RgbImage;

// Two rows of three colours, a plane of each after the other, on a red background; a grey column apart.
NtfBuilder Pictures() {
  Bytes pixels;
  for (uint8_t i = 0; i < 18; ++i) {
    pixels.push_back(static_cast<uint8_t>(10 * i + 1));
  }
  NtfBuilder file{RgbImage(3, 2, 'B', pixels), GreyImage(1, 3, {100, 150, 200}).Level(2).At(1, 4)};
  file.background = {250, 20, 30};
  file.header["FTITLE"] = "Two pictures";
  return file;
}

NtfBuilder WithoutImages() {
  NtfBuilder file;
  file.header["FTITLE"] = "Nothing to see";
  file.texts.resize(1);
  return file;
}

// It opens, and its second image is coded in a way that cannot be drawn.
NtfBuilder NotDrawable() {
  NtfBuilder file{GreyImage(2, 2), GreyImage(2, 2).Level(2)};
  file.images[1].ic = "C0";
  return file;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) {
    std::cerr << "usage: make_example_files FOLDER\n";
    return 2;
  }
  const std::filesystem::path folder = argv[1];
  std::filesystem::create_directories(folder);
  Pictures().Build().Write(folder, "pictures.ntf");
  WithoutImages().Build().Write(folder, "no_images.ntf");
  NotDrawable().Build().Write(folder, "not_drawable.ntf");
  NtfBuilder refused;
  refused.header["CLEVEL"] = "05";
  refused.Build().Write(folder, "refused.ntf");
  return 0;
}

/*
 * Draws a NITF file into a PPM picture.
 *
 *   c++ -std=c++20 -Iinclude docs/examples/render.cpp -o render \
 *       -Lbuild/lib -Wl,-rpath,build/lib -lTaviNitf -lTaviHost
 *   ./render image.ntf image.ppm
 */
#include <filesystem>
#include <fstream>
#include <iostream>
#include <utility>
#include <vector>

#include "TaviNitf.h"

int main(int argc, char** argv) {
  if (argc != 3) return 2;
  NitfHandle file = nullptr;
  HostBitmap picture = {};
  int32_t status = Tavi_NITFCreate(&file, std::filesystem::path(argv[1]).wstring().c_str());
  if (status == SUCCESS) status = Tavi_NtfRenderBitmap(&picture, file);
  Tavi_NITFDestroy(&file);
  if (status != SUCCESS) {
    std::cerr << argv[1] << ": status " << status << '\n';
    return 1;
  }

  std::ofstream out(argv[2], std::ios::binary);
  out << "P6\n" << picture.width << ' ' << picture.height << "\n255\n";
  std::vector<char> row(picture.bytes_per_line);
  for (uint32_t y = picture.height; y-- > 0;) {  // the last row is the top of the picture
    HostGetBitmapRow(&picture, row.data(), y, row.size());
    for (uint32_t x = 0; x < picture.width; ++x) std::swap(row[3 * x], row[3 * x + 2]);  // blue comes first
    out.write(row.data(), 3 * static_cast<std::streamsize>(picture.width));
  }
  HostFreeBitmap(&picture);
  out.close();
  return out ? 0 : 1;
}

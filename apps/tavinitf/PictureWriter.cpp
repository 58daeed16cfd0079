#include "PictureWriter.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <filesystem>

namespace tavinitf {
namespace {

constexpr std::array<PictureFormat, 8> kFormats = {{{".png", MakePngWriter, false},
                                                    {".ppm", MakePpmWriter, false},
                                                    {".pgm", MakePgmWriter, true},
                                                    {".bmp", MakeBmpWriter, false},
                                                    {".tif", MakeTiffWriter, false},
                                                    {".tiff", MakeTiffWriter, false},
                                                    {".jpg", MakeJpegWriter, false},
                                                    {".jpeg", MakeJpegWriter, false}}};

}  // namespace

const PictureFormat* FindPictureFormat(const std::string& name) {
  std::string ending = std::filesystem::path(name).extension().string();
  std::transform(ending.begin(), ending.end(), ending.begin(),
                 [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
  const auto* found = std::find_if(kFormats.begin(), kFormats.end(),
                                   [&](const PictureFormat& f) { return ending == f.ending; });
  return found == kFormats.end() ? nullptr : found;
}

std::string PictureEndings() {
  std::string endings;
  for (const PictureFormat& format : kFormats)
    endings += (endings.empty() ? "" : " ") + std::string(format.ending);
  return endings;
}

void SwapToRgb(const uint8_t* bgr, uint32_t width, std::vector<uint8_t>& rgb) {
  rgb.resize(size_t{3} * width);
  for (size_t i = 0; i < rgb.size(); i += 3) {
    rgb[i] = bgr[i + 2];
    rgb[i + 1] = bgr[i + 1];
    rgb[i + 2] = bgr[i];
  }
}

}  // namespace tavinitf

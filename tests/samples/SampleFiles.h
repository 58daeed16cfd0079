// Real files that others wrote, with a manifest beside them that says what is in each.
#pragma once

#include <cstdint>
#include <filesystem>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

namespace tavi::samples {

// $TAVI_SAMPLES/nitf, or where the source tree's neighbour has them.
std::filesystem::path Folder();

// The manifest's list of files; empty when the files are not there.
nlohmann::json Files();

// The kinds of segments that a manifest entry lists, as far as these tests need them.
struct Contents {
  size_t images = 0;
  size_t coded_images = 0;  // of another compression than NC and NM
  size_t graphics = 0;
  size_t texts = 0;
};
Contents ContentsOf(const nlohmann::json& file);

// The bytes of a file.
std::vector<uint8_t> Bytes(const std::string& name);

// The data of one image segment, found from HL and the length table of the file header.
std::vector<uint8_t> ImageData(const std::string& name, size_t index);

// A metafile, and where it was found.
struct Metafile {
  std::string name;
  std::vector<uint8_t> bytes;
};
// $TAVI_SAMPLES/cgm/*.cgm, and the graphic segments of the files above. Empty when they are not there.
std::vector<Metafile> Metafiles();

struct Picture {
  uint32_t width = 0;
  uint32_t height = 0;
  std::vector<uint8_t> rgba;
  const uint8_t* At(uint32_t x, uint32_t y) const { return &rgba[(size_t{y} * width + x) * 4]; }
};
Picture ReadPng(const std::string& name);

}  // namespace tavi::samples

#include "SampleFiles.h"

#include <png.h>

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <stdexcept>

namespace tavi::samples {
namespace {

// Places in the file header: HL, and NUMI with its length table behind it.
constexpr size_t kHeaderLengthOffset = 354;
constexpr size_t kHeaderLengthWidth = 6;
constexpr size_t kImageTableOffset = 363;
constexpr size_t kSubheaderLengthWidth = 6;
constexpr size_t kDataLengthWidth = 10;
// Of the table of graphic segments, which begins behind that of images with the number of them.
constexpr size_t kCountWidth = 3;
constexpr size_t kGraphicSubheaderWidth = 4;
constexpr size_t kGraphicDataWidth = 6;

size_t Number(const std::vector<uint8_t>& bytes, size_t offset, size_t width) {
  return std::stoul(std::string(&bytes.at(offset), &bytes.at(offset) + width));
}

std::vector<uint8_t> Read(const std::filesystem::path& path) {
  std::ifstream in(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

void AddGraphics(const std::string& name, std::vector<Metafile>* metafiles) {
  const std::vector<uint8_t> bytes = Bytes(name);
  size_t position = Number(bytes, kHeaderLengthOffset, kHeaderLengthWidth);
  size_t entry = kImageTableOffset;
  for (size_t left = Number(bytes, entry - kCountWidth, kCountWidth); left > 0; --left) {
    position += Number(bytes, entry, kSubheaderLengthWidth);
    position += Number(bytes, entry + kSubheaderLengthWidth, kDataLengthWidth);
    entry += kSubheaderLengthWidth + kDataLengthWidth;
  }
  const size_t count = Number(bytes, entry, kCountWidth);
  entry += kCountWidth;
  for (size_t i = 0; i < count; ++i, entry += kGraphicSubheaderWidth + kGraphicDataWidth) {
    position += Number(bytes, entry, kGraphicSubheaderWidth);
    const size_t length = Number(bytes, entry + kGraphicSubheaderWidth, kGraphicDataWidth);
    const auto begin = bytes.begin() + static_cast<std::ptrdiff_t>(position);
    metafiles->push_back(
        {name + " graphic " + std::to_string(i), {begin, begin + static_cast<std::ptrdiff_t>(length)}});
    position += length;
  }
}

}  // namespace

std::filesystem::path Folder() {
  const char* given = std::getenv("TAVI_SAMPLES");
  return std::filesystem::path(given != nullptr ? given : TAVI_SAMPLES_DEFAULT) / "nitf";
}

nlohmann::json Files() {
  std::ifstream in(Folder() / "manifest.json");
  return in ? nlohmann::json::parse(in).at("files") : nlohmann::json::array();
}

Contents ContentsOf(const nlohmann::json& file) {
  Contents contents;
  for (const std::string segment : file.at("segments")) {
    if (segment.starts_with("image ")) {
      ++contents.images;
      const bool plain =
          segment.find(" NC ") != std::string::npos || segment.find(" NM ") != std::string::npos;
      contents.coded_images += plain ? 0 : 1;
    }
    contents.graphics += segment.starts_with("graphic ") ? 1 : 0;
    contents.texts += segment.starts_with("text ") ? 1 : 0;
  }
  return contents;
}

std::vector<uint8_t> Bytes(const std::string& name) {
  std::ifstream in(Folder() / name, std::ios::binary);
  if (!in) {
    throw std::runtime_error("no file " + name);
  }
  return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

std::vector<uint8_t> ImageData(const std::string& name, size_t index) {
  const std::vector<uint8_t> bytes = Bytes(name);
  size_t position = Number(bytes, kHeaderLengthOffset, kHeaderLengthWidth);
  for (size_t i = 0, entry = kImageTableOffset;; ++i, entry += kSubheaderLengthWidth + kDataLengthWidth) {
    position += Number(bytes, entry, kSubheaderLengthWidth);
    const size_t length = Number(bytes, entry + kSubheaderLengthWidth, kDataLengthWidth);
    if (i == index) {
      const auto begin = bytes.begin() + static_cast<std::ptrdiff_t>(position);
      return {begin, begin + static_cast<std::ptrdiff_t>(std::min(length, bytes.size() - position))};
    }
    position += length;
  }
}

std::vector<Metafile> Metafiles() {
  std::vector<Metafile> metafiles;
  const std::filesystem::path folder = Folder().parent_path() / "cgm";
  if (!std::filesystem::exists(folder)) return metafiles;
  for (const auto& entry : std::filesystem::directory_iterator(folder)) {
    if (entry.path().extension() == ".cgm") {
      metafiles.push_back({entry.path().filename().string(), Read(entry.path())});
    }
  }
  for (const nlohmann::json& file : Files()) {
    if (ContentsOf(file).graphics != 0) AddGraphics(file.at("file"), &metafiles);
  }
  std::sort(metafiles.begin(), metafiles.end(),
            [](const Metafile& a, const Metafile& b) { return a.name < b.name; });
  return metafiles;
}

Picture ReadPng(const std::string& name) {
  png_image image = {};
  image.version = PNG_IMAGE_VERSION;
  if (png_image_begin_read_from_file(&image, (Folder() / name).c_str()) == 0) {
    throw std::runtime_error(name + ": " + image.message);
  }
  image.format = PNG_FORMAT_RGBA;
  Picture picture{image.width, image.height, std::vector<uint8_t>(PNG_IMAGE_SIZE(image))};
  if (png_image_finish_read(&image, nullptr, picture.rgba.data(), 0, nullptr) == 0) {
    throw std::runtime_error(name + ": " + image.message);
  }
  return picture;
}

}  // namespace tavi::samples

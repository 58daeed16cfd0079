// Writes the seeds: make_seeds DIRECTORY makes a folder in it for every kind of input.
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <string>

#include "../tests/coded/Streams.h"
#include "../tests/coded/VqFile.h"
#include "../tests/host_codecs/FaxEncoder.h"
#include "../tests/host_codecs/Jpeg2000Encoder.h"
#include "../tests/host_codecs/JpegEncoder.h"
#include "CodedFiles.h"
#include "RichFiles.h"

namespace {

using tavi_test::Bytes;
namespace fs = std::filesystem;

class Folder {
 public:
  explicit Folder(const fs::path& path) : path_(path) { fs::create_directories(path); }
  void Add(const std::string& name, const Bytes& bytes) const {
    std::ofstream file(path_ / name, std::ios::binary);
    file.write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
  }

 private:
  fs::path path_;
};

Bytes Text(const std::string& text) {
  return {text.begin(), text.end()};
}

// A command of a metafile: header word, parameters, padding.
Bytes Command(uint32_t element_class, uint32_t id, const Bytes& parameters) {
  const auto size = static_cast<uint32_t>(parameters.size());
  const uint32_t word = element_class << 12 | id << 5 | (size < 31 ? size : 31U);
  Bytes bytes;
  const auto add_word = [&](uint32_t value) {
    bytes.push_back(static_cast<uint8_t>(value >> 8));
    bytes.push_back(static_cast<uint8_t>(value));
  };
  add_word(word);
  if (size >= 31) add_word(size);
  bytes.insert(bytes.end(), parameters.begin(), parameters.end());
  if (size % 2 != 0) bytes.push_back(0);
  return bytes;
}

// Every element of version 1 once, with parameters of the right size that mean something or other.
Bytes MetafileOfEverything() {
  Bytes file = Command(0, 1, {4, 's', 'e', 'e', 'd'});
  const auto add = [&](uint32_t element_class, uint32_t id, const Bytes& parameters) {
    const Bytes command = Command(element_class, id, parameters);
    file.insert(file.end(), command.begin(), command.end());
  };
  add(1, 1, {0, 1});
  add(1, 11, {0, 1, 0xFF, 0xFF, 0, 1});
  add(1, 13, {11, 'T', 'I', 'M', 'E', 'S', '_', 'R', 'O', 'M', 'A', 'N'});
  add(0, 3, {0, 0});
  add(2, 2, {0, 1});
  add(2, 3, {0, 0});
  add(2, 5, {0, 0});
  add(2, 6, {0, 0, 0x7F, 0xFF, 0x7F, 0xFF, 0, 0});
  add(0, 4, {});
  for (uint32_t id = 1; id <= 35; ++id) add(5, id, {0, 1, 0, 2, 0, 3, 0, 4});
  for (const uint32_t id : {22U, 30U}) add(5, id, {0, 1});
  add(5, 3, {0, 4});
  const Bytes points = {0, 10, 0, 20, 0, 90, 0, 30, 0, 50, 0, 80, 0, 20, 0, 60, 0, 30, 0, 20, 0, 40};
  for (const uint32_t id : {1U, 2U, 3U, 7U, 11U, 13U, 14U, 15U, 16U, 17U, 18U, 19U}) add(4, id, points);
  add(4, 12, {0, 50, 0, 50, 0, 20});
  add(4, 8, {0, 10, 0, 10, 0, 1, 0, 50, 0, 10, 0, 1, 0, 30, 0, 60, 0, 3});
  add(4, 4, {0, 10, 0, 90, 0, 1, 5, 'H', 'e', 'l', 'l', 'o'});
  add(4, 5, {0, 60, 0, 20, 0, 10, 0, 90, 0, 0, 3, 'a', 'b', 'c'});
  add(4, 6, {0, 1, 2, 'd', 'e'});
  add(4, 9, {0, 5, 0, 5, 0, 35, 0, 35, 0, 35, 0, 5, 0, 2, 0, 1, 0, 0, 0, 1, 9, 99, 199, 250, 0, 5});
  add(0, 5, {});
  add(0, 2, {});
  return file;
}

void WriteFiles(const fs::path& root) {
  const Folder files(root / "files");
  for (const auto& list : {tavi::faults::FilesOfEveryKind(), tavi::faults::CodedFiles()}) {
    for (const auto& named : list) files.Add(named.name + ".ntf", named.file.Build().bytes);
  }
  files.Add("everything.ntf", tavi::faults::FileOfEverything().Build().bytes);
  tavi_test::NtfBuilder drawn({tavi_test::GreyImage(60, 40)});
  tavi_test::GraphicSpec graphic;
  graphic.sdlvl = 2;
  graphic.data = MetafileOfEverything();
  graphic.bound2_row = 50;
  graphic.bound2_column = 35;
  drawn.graphics = {graphic, graphic};
  drawn.graphics[1].salvl = 2;
  drawn.graphics[1].sdlvl = 3;
  drawn.graphics[1].row = 7;
  files.Add("drawn.ntf", drawn.Build().bytes);
}

void WriteParts(const fs::path& root) {
  Folder(root / "metafiles").Add("everything.cgm", MetafileOfEverything());
  const Folder coded(root / "coded");
  for (const uint32_t bands : {1U, 3U}) {
    const auto scene = tavi_test::MakeScene(40, 36, bands, 8);
    const std::string suffix = std::to_string(bands);
    coded.Add("jpeg" + suffix,
              tavi_test::EncodeJpeg(
                  scene, {.color = bands == 1 ? tavi_test::JpegColor::kGrey : tavi_test::JpegColor::kYcc}));
    coded.Add("jpeg2000" + suffix, tavi_test::EncodeJpeg2000(scene, {}));
  }
  const Folder vq(root / "vq");
  tavi_test::VqStream stream{.image_rows = 2, .codes_per_row = 2, .code_bits = 8};
  stream.entries = 4;
  for (uint8_t table = 0; table < 4; ++table) stream.tables.push_back(Bytes(16, table));
  stream.codes.assign(16, 1);
  vq.Add("exact", stream.Build());
  stream.code_bits = 12;
  vq.Add("twelve", stream.Build());
  const Folder streams(root / "streams");
  const std::string first = "\x0a\x6e\x1d\x97";
  const std::string second = "\x0e\xca\x14\xbf";
  const Bytes truth =
      tavi_test::NtfBuilder({tavi_test::GreyImage(2, 3), tavi_test::GreyImage(4, 5)}).Build().bytes;
  const std::string length = tavi_test::Digits(truth.size(), 7);
  streams.Add("whole", Text(length + first + std::string(truth.begin(), truth.end()) + second + length +
                            std::string(207, ' ')));
  streams.Add("bare", Text(first + second));
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) {
    std::fputs("usage: make_seeds DIRECTORY\n", stderr);
    return 2;
  }
  WriteFiles(argv[1]);
  WriteParts(argv[1]);
  return 0;
}

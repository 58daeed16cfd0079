#include "Tools.h"

#include <sys/wait.h>

#include <cstdlib>
#include <fstream>

namespace tavi_test {
namespace {

int ExitStatus(const std::string& command) {
  const int status = std::system((command + " > /dev/null 2>&1").c_str());
  return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

bool Run(const std::string& command) {
  return ExitStatus(command) == 0;
}

std::string Quoted(const std::filesystem::path& path) {
  return "'" + path.string() + "'";
}

void WriteFile(const std::filesystem::path& path, const Stream& stream) {
  std::ofstream(path, std::ios::binary)
      .write(reinterpret_cast<const char*>(stream.data()), static_cast<std::streamsize>(stream.size()));
}

// The header of a portable greymap, pixmap or arbitrary map: width, height, channels, largest value.
struct PnmHeader {
  uint32_t width = 0;
  uint32_t height = 0;
  uint32_t channels = 0;
  uint32_t most = 0;
};

PnmHeader ReadPnmHeader(std::istream& in) {
  PnmHeader header;
  std::string kind;
  in >> kind;
  std::string word;
  const auto next = [&] {
    while (in >> word && word[0] == '#') std::getline(in, word);
    return word;
  };
  const auto number = [&] { return static_cast<uint32_t>(std::stoul(next())); };
  if (kind == "P7") {
    for (next(); in && word != "ENDHDR"; next()) {
      if (word == "WIDTH") header.width = number();
      if (word == "HEIGHT") header.height = number();
      if (word == "DEPTH") header.channels = number();
      if (word == "MAXVAL") header.most = number();
    }
  } else if (kind == "P5" || kind == "P6") {
    header.width = number();
    header.height = number();
    header.most = number();
    header.channels = kind == "P6" ? 3 : 1;
  }
  in.get();
  return header;
}

// Samples above 8 bits stand high byte first.
std::optional<Pixels> ReadPnm(const std::filesystem::path& path) {
  std::ifstream in(path, std::ios::binary);
  const PnmHeader header = ReadPnmHeader(in);
  if (!in || header.channels == 0) return std::nullopt;
  Pixels pixels(header.width, header.height, header.channels);
  for (uint16_t& sample : pixels.samples) {
    const int high = header.most > 255 ? in.get() : 0;
    sample = static_cast<uint16_t>(high << 8 | in.get());
  }
  return in ? std::optional(pixels) : std::nullopt;
}

}  // namespace

bool HasTool(const std::string& name) {
  return Run("command -v " + name);
}

std::optional<Pixels> ByOpjDecompress(const Stream& stream, const std::filesystem::path& folder) {
  const bool boxed = stream.size() > 4 && stream[0] == 0 && stream[3] == 12;
  const std::filesystem::path coded = folder / (boxed ? "stream.jp2" : "stream.j2k");
  WriteFile(coded, stream);
  // The tool writes grey pictures to .pgm whatever is asked for.
  const std::filesystem::path picture = folder / "picture.ppm";
  std::filesystem::remove(picture);
  std::filesystem::remove(folder / "picture.pgm");
  if (!Run("opj_decompress -i " + Quoted(coded) + " -o " + Quoted(picture))) return std::nullopt;
  return ReadPnm(std::filesystem::exists(picture) ? picture : folder / "picture.pgm");
}

std::optional<Pixels> ByDjpeg(const Stream& stream, const std::filesystem::path& folder) {
  const std::filesystem::path coded = folder / "stream.jpg";
  const std::filesystem::path picture = folder / "djpeg.pnm";
  WriteFile(coded, stream);
  constexpr int kOnlyWarned = 2;
  const int status = ExitStatus("djpeg -pnm -outfile " + Quoted(picture) + " " + Quoted(coded));
  return status == 0 || status == kOnlyWarned ? ReadPnm(picture) : std::nullopt;
}

}  // namespace tavi_test

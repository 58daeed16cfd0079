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

Stream ReadFile(const std::filesystem::path& path) {
  std::ifstream in(path, std::ios::binary);
  return Stream(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

void WritePnm(const std::filesystem::path& path, const Pixels& pixels, uint32_t most) {
  std::ofstream out(path, std::ios::binary);
  out << (pixels.channels == 1 ? "P5" : "P6") << "\n"
      << pixels.width << " " << pixels.height << "\n"
      << most << "\n";
  for (const uint16_t sample : pixels.samples) {
    if (most > 255) out.put(static_cast<char>(sample >> 8));
    out.put(static_cast<char>(sample));
  }
}

// Black is 1 in a portable bitmap. Rows end on whole bytes.
void WritePbm(const std::filesystem::path& path, const Pixels& page) {
  std::ofstream out(path, std::ios::binary);
  out << "P4\n" << page.width << " " << page.height << "\n";
  for (uint32_t y = 0; y < page.height; ++y) {
    for (uint32_t x = 0; x < page.width; x += 8) {
      uint32_t byte = 0;
      for (uint32_t i = 0; i < 8 && x + i < page.width; ++i) byte |= page.At(x + i, y) == 0 ? 0x80U >> i : 0;
      out.put(static_cast<char>(byte));
    }
  }
}

// The size and the one strip of a little-endian TIFF file.
struct TiffStrip {
  uint32_t width = 0;
  uint32_t height = 0;
  Stream data;
};

TiffStrip ReadTiff(const std::filesystem::path& path) {
  const Stream file = ReadFile(path);
  const auto number = [&](size_t at, size_t size) {
    uint32_t value = 0;
    for (size_t i = 0; i < size; ++i) value |= uint32_t{file.at(at + i)} << (8 * i);
    return value;
  };
  TiffStrip strip;
  uint32_t offset = 0;
  uint32_t size = 0;
  const size_t directory = number(4, 4);
  for (size_t i = 0; i < number(directory, 2); ++i) {
    constexpr uint32_t kShort = 3;
    const size_t entry = directory + 2 + 12 * i;
    const uint32_t value = number(entry + 8, number(entry + 2, 2) == kShort ? 2 : 4);
    switch (number(entry, 2)) {
      case 256:
        strip.width = value;
        break;
      case 257:
        strip.height = value;
        break;
      case 273:
        offset = value;
        break;
      case 279:
        size = value;
        break;
      default:
        break;
    }
  }
  for (size_t i = 0; i < size; ++i) strip.data.push_back(file.at(offset + i));
  return strip;
}

// The text that dump2dcm makes a file of: a picture of 8 or 16 bits in a file, little-endian.
void DescribePicture(const std::filesystem::path& path, const Pixels& pixels, uint32_t bits,
                     const std::filesystem::path& samples) {
  std::ofstream(path) << "(0008,0016) UI =SecondaryCaptureImageStorage\n(0008,0018) UI [1.2.3.4]\n"
                      << "(0020,000d) UI [1.2.3]\n(0020,000e) UI [1.2.3.5]\n(0028,0002) US 1\n"
                      << "(0028,0004) CS [MONOCHROME2]\n(0028,0010) US " << pixels.height
                      << "\n(0028,0011) US " << pixels.width << "\n(0028,0100) US " << (bits <= 8 ? 8 : 16)
                      << "\n(0028,0101) US " << bits << "\n(0028,0102) US " << bits - 1
                      << "\n(0028,0103) US 0\n(7fe0,0010) OW =" << samples.string() << "\n";
}

// Writes the items of a file's pixel data into files of their own, and reads one.
Stream PixelItem(const std::filesystem::path& file, uint32_t item, const std::filesystem::path& folder) {
  // The tool leaves a file alone that is there already.
  const std::filesystem::path path =
      folder / (file.filename().string() + "." + std::to_string(item) + ".raw");
  std::filesystem::remove(path);
  if (!Run("dcmdump +W " + Quoted(folder) + " " + Quoted(file))) return {};
  return ReadFile(path);
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

Stream ByCjpeg(const Pixels& pixels, const std::string& options, const std::filesystem::path& folder) {
  const std::filesystem::path picture = folder / "cjpeg.pnm";
  const std::filesystem::path coded = folder / "cjpeg.jpg";
  WritePnm(picture, pixels, 255);
  const bool done = Run("cjpeg " + options + " -outfile " + Quoted(coded) + " " + Quoted(picture));
  return done ? ReadFile(coded) : Stream();
}

Stream ByOpjCompress(const Pixels& pixels, uint32_t bits, bool boxed, const std::string& options,
                     const std::filesystem::path& folder) {
  const std::filesystem::path picture = folder / (pixels.channels == 1 ? "opj.pgm" : "opj.ppm");
  const std::filesystem::path coded = folder / (boxed ? "opj.jp2" : "opj.j2k");
  WritePnm(picture, pixels, (1U << bits) - 1);
  const bool done = Run("opj_compress -i " + Quoted(picture) + " -o " + Quoted(coded) + " " + options);
  return done ? ReadFile(coded) : Stream();
}

std::optional<DeepJpeg> ByDcmcjpeg(const Pixels& pixels, uint32_t bits, const std::string& options,
                                   const std::filesystem::path& folder) {
  Stream samples;
  for (const uint16_t sample : pixels.samples) {
    samples.push_back(static_cast<uint8_t>(sample));
    if (bits > 8) samples.push_back(static_cast<uint8_t>(sample >> 8));
  }
  WriteFile(folder / "samples.raw", samples);
  DescribePicture(folder / "picture.txt", pixels, bits, folder / "samples.raw");
  const auto path = [&](const char* name) { return Quoted(folder / name); };
  if (!Run("dump2dcm " + path("picture.txt") + " " + path("plain.dcm")) ||
      !Run("dcmcjpeg " + options + " " + path("plain.dcm") + " " + path("coded.dcm")) ||
      !Run("dcmdjpeg " + path("coded.dcm") + " " + path("decoded.dcm"))) {
    return std::nullopt;
  }
  DeepJpeg deep{PixelItem(folder / "coded.dcm", 1, folder), Pixels(pixels.width, pixels.height, 1)};
  const Stream decoded = PixelItem(folder / "decoded.dcm", 0, folder);
  if (deep.stream.empty() || decoded.size() != samples.size()) return std::nullopt;
  for (size_t i = 0; i < deep.decoded.samples.size(); ++i) {
    deep.decoded.samples[i] =
        bits > 8 ? static_cast<uint16_t>(decoded[2 * i] | decoded[2 * i + 1] << 8) : decoded[i];
  }
  return deep;
}

Stream ByTiffcp(const Pixels& page, const std::string& compression, const std::filesystem::path& folder) {
  WritePbm(folder / "page.pbm", page);
  const auto path = [&](const char* name) { return Quoted(folder / name); };
  const std::string rows = std::to_string(page.height);
  const bool done = Run("ppm2tiff -c none " + path("page.pbm") + " " + path("plain.tif")) &&
                    Run("tiffcp -L -c " + compression + " -f msb2lsb -r " + rows + " " + path("plain.tif") +
                        " " + path("fax.tif"));
  return done ? ReadTiff(folder / "fax.tif").data : Stream();
}

std::optional<Pixels> ByFax2tiff(const Stream& stream, bool two_dimensions, uint32_t width,
                                 const std::filesystem::path& folder) {
  WriteFile(folder / "page.g3", stream);
  const auto path = [&](const char* name) { return Quoted(folder / name); };
  const std::string dimensions = two_dimensions ? "-2" : "-1";
  if (!Run("fax2tiff -M -m " + dimensions + " -X " + std::to_string(width) + " -o " + path("read.tif") + " " +
           path("page.g3")) ||
      !Run("tiffcp -L -c none -f msb2lsb -r 100000 " + path("read.tif") + " " + path("rows.tif"))) {
    return std::nullopt;
  }
  const TiffStrip strip = ReadTiff(folder / "rows.tif");
  const size_t line = (size_t{strip.width} + 7) / 8;
  if (strip.width == 0 || strip.data.size() != line * strip.height) return std::nullopt;
  Pixels page(strip.width, strip.height, 1);
  for (uint32_t y = 0; y < strip.height; ++y) {
    for (uint32_t x = 0; x < strip.width; ++x) {
      page.At(x, y) = (strip.data[y * line + x / 8] >> (7 - x % 8) & 1) != 0 ? 0 : 1;
    }
  }
  return page;
}

}  // namespace tavi_test

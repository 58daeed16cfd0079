// TIFF by libtiff, through its conversion of all kinds of pictures to red, green, blue and alpha.
#include <tiffio.h>
#include <unistd.h>

#include <algorithm>
#include <vector>

#include "Limits.h"
#include "PictureReader.h"
#include "TaviHost.h"

namespace tavinitf {
namespace {

class TiffReader : public PictureReader {
 public:
  using PictureReader::PictureReader;
  ~TiffReader() override {
    if (tiff_ != nullptr) TIFFClose(tiff_);
  }
  TiffReader(const TiffReader&) = delete;
  TiffReader& operator=(const TiffReader&) = delete;

  bool Begin() override {
    TIFFSetErrorHandler(nullptr);
    TIFFSetWarningHandler(nullptr);
    const int descriptor = dup(fileno(file_));  // closing the TIFF closes it
    tiff_ = descriptor < 0 ? nullptr : TIFFFdOpen(descriptor, "picture", "r");
    if (tiff_ == nullptr) return Fail("the TIFF library cannot read it");
    uint16_t photometric = PHOTOMETRIC_RGB;
    TIFFGetField(tiff_, TIFFTAG_PHOTOMETRIC, &photometric);
    TIFFGetField(tiff_, TIFFTAG_IMAGEWIDTH, &shape_.width);
    TIFFGetField(tiff_, TIFFTAG_IMAGELENGTH, &shape_.height);
    shape_.channels = photometric == PHOTOMETRIC_MINISBLACK || photometric == PHOTOMETRIC_MINISWHITE ? 1 : 3;
    char reason[1024] = "";
    if (TIFFRGBAImageOK(tiff_, reason) != 1) return Fail(reason);
    const bool tiled = TIFFIsTiled(tiff_) != 0;
    const auto piece = static_cast<uint64_t>(tiled ? TIFFTileSize64(tiff_) : TIFFStripSize64(tiff_));
    return HostWithinLimit(HOST_LIMIT_PICTURE, piece, 0) != 0 ||
           Fail("one of its strips takes " + std::to_string(piece) +
                " bytes: " + LimitWords(HOST_LIMIT_PICTURE));
  }

  bool ReadRow(uint8_t* row) override {
    if (next_row_ == 0 && !ReadAll()) return Fail("its pixels cannot be decoded");
    const uint32_t* pixels = pixels_.data() + size_t{shape_.width} * next_row_++;
    constexpr uint32_t kFull = 255;
    for (uint32_t x = 0; x < shape_.width; ++x) {
      // The library has multiplied the colours by the alpha.
      const uint32_t white = kFull - TIFFGetA(pixels[x]);
      const uint32_t colours[] = {TIFFGetR(pixels[x]), TIFFGetG(pixels[x]), TIFFGetB(pixels[x])};
      for (uint32_t c = 0; c < shape_.channels; ++c)
        *row++ = static_cast<uint8_t>(std::min(colours[c] + white, kFull));
    }
    return true;
  }

 private:
  bool ReadAll() {
    pixels_.resize(size_t{shape_.width} * shape_.height);
    return TIFFReadRGBAImageOriented(tiff_, shape_.width, shape_.height, pixels_.data(), ORIENTATION_TOPLEFT,
                                     1) == 1;
  }

  TIFF* tiff_ = nullptr;
  size_t next_row_ = 0;
  std::vector<uint32_t> pixels_;
};

}  // namespace

std::unique_ptr<PictureReader> MakeTiffReader(std::FILE* file) {
  return std::make_unique<TiffReader>(file);
}

}  // namespace tavinitf

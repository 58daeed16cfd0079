// PNG by libpng. The library leaves by longjmp, so every function that calls it holds nothing to be destroyed.
#include <csetjmp>
#include <vector>

#include <png.h>

#include "PictureReader.h"

namespace tavinitf {
namespace {

class PngReader : public PictureReader {
 public:
  using PictureReader::PictureReader;
  ~PngReader() override { png_destroy_read_struct(&png_, &info_, nullptr); }
  PngReader(const PngReader&) = delete;
  PngReader& operator=(const PngReader&) = delete;

  bool Begin() override {
    png_ = png_create_read_struct(PNG_LIBPNG_VER_STRING, this, TakeError, DropWarning);
    info_ = png_ != nullptr ? png_create_info_struct(png_) : nullptr;
    if (info_ == nullptr) return Fail("no memory for the PNG library");
    if (!ReadHead()) return false;
    shape_ = {png_get_image_width(png_, info_), png_get_image_height(png_, info_), channels_ < 3 ? 1U : 3U};
    return true;
  }

  bool ReadRow(uint8_t* row) override {
    if (next_row_ == 0 && !Prepare()) return false;
    const uint8_t* samples = pixels_.data();
    if (passes_ > 1) {
      samples += next_row_ * row_bytes_;
    } else if (!ReadOne(pixels_.data())) {
      return false;
    }
    ++next_row_;
    TakeRow(samples, row);
    return true;
  }

 private:
  static void TakeError(png_structp png, png_const_charp message) {
    static_cast<PngReader*>(png_get_error_ptr(png))->Fail(message);
    png_longjmp(png, 1);
  }
  static void DropWarning(png_structp, png_const_charp) {}

  bool ReadHead() {
    if (setjmp(png_jmpbuf(png_)) != 0) return false;
    png_init_io(png_, file_);
    png_read_info(png_, info_);
    png_set_expand(png_);
    png_set_scale_16(png_);
    passes_ = png_set_interlace_handling(png_);
    png_read_update_info(png_, info_);
    channels_ = png_get_channels(png_, info_);
    row_bytes_ = png_get_rowbytes(png_, info_);
    return true;
  }

  // The rows of an interlaced picture are complete after the last pass only.
  bool Prepare() {
    const size_t rows = passes_ > 1 ? shape_.height : 1;
    pixels_.resize(row_bytes_ * rows);
    if (passes_ == 1) return true;
    rows_.resize(rows);
    for (size_t y = 0; y < rows; ++y) rows_[y] = pixels_.data() + y * row_bytes_;
    return ReadAll(rows_.data());
  }
  bool ReadAll(png_bytepp rows) {
    if (setjmp(png_jmpbuf(png_)) != 0) return false;
    png_read_image(png_, rows);
    return true;
  }
  bool ReadOne(png_bytep row) {
    if (setjmp(png_jmpbuf(png_)) != 0) return false;
    png_read_row(png_, row, nullptr);
    return true;
  }

  void TakeRow(const uint8_t* samples, uint8_t* row) const {
    const bool has_alpha = channels_ % 2 == 0;
    const uint32_t colours = shape_.channels;
    for (uint32_t x = 0; x < shape_.width; ++x, samples += channels_) {
      const uint32_t alpha = has_alpha ? samples[colours] : 255;
      for (uint32_t c = 0; c < colours; ++c) *row++ = OverWhite(samples[c], alpha);
    }
  }

  png_structp png_ = nullptr;
  png_infop info_ = nullptr;
  int passes_ = 1;
  uint32_t channels_ = 0;
  size_t row_bytes_ = 0;
  size_t next_row_ = 0;
  std::vector<uint8_t> pixels_;
  std::vector<png_bytep> rows_;
};

}  // namespace

std::unique_ptr<PictureReader> MakePngReader(std::FILE* file) {
  return std::make_unique<PngReader>(file);
}

}  // namespace tavinitf

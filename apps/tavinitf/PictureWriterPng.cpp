// PNG by libpng. The library leaves by longjmp, so every function that calls it holds nothing to be
// destroyed.
#include <png.h>

#include <csetjmp>

#include "PictureWriter.h"

namespace tavinitf {
namespace {

void WriteBytes(png_structp png, png_bytep data, png_size_t size) {
  auto* file = static_cast<OutputFile*>(png_get_io_ptr(png));
  if (!file->Write(data, size)) png_error(png, "write");
}

void FlushNothing(png_structp) {}

void TakeError(png_structp png, png_const_charp message) {
  static_cast<OutputFile*>(png_get_error_ptr(png))->Fail(message);
  png_longjmp(png, 1);
}

void DropWarning(png_structp, png_const_charp) {}

class PngWriter : public PictureWriter {
 public:
  using PictureWriter::PictureWriter;
  ~PngWriter() override { png_destroy_write_struct(&png_, &info_); }
  PngWriter(const PngWriter&) = delete;
  PngWriter& operator=(const PngWriter&) = delete;

  bool Begin(const PictureShape& shape) override {
    png_ = png_create_write_struct(PNG_LIBPNG_VER_STRING, &file_, TakeError, DropWarning);
    info_ = png_ == nullptr ? nullptr : png_create_info_struct(png_);
    if (info_ == nullptr) return file_.Fail("out of memory");
    if (setjmp(png_jmpbuf(png_)) != 0) return false;
    png_set_write_fn(png_, &file_, WriteBytes, FlushNothing);
    // Sides are bounded by the format and by memory; the library's own smaller bound is for untrusted input.
    png_set_user_limits(png_, PNG_UINT_31_MAX, PNG_UINT_31_MAX);
    const int color_type = shape.channels == 1 ? PNG_COLOR_TYPE_GRAY : PNG_COLOR_TYPE_RGB;
    png_set_IHDR(png_, info_, shape.width, shape.height, 8, color_type, PNG_INTERLACE_NONE,
                 PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
    png_write_info(png_, info_);
    if (shape.channels == 3) png_set_bgr(png_);
    return true;
  }

  bool WriteRow(const uint8_t* row) override {
    if (setjmp(png_jmpbuf(png_)) != 0) return false;
    png_write_row(png_, row);
    return true;
  }

  bool Finish() override {
    if (setjmp(png_jmpbuf(png_)) != 0) return false;
    png_write_end(png_, info_);
    return true;
  }

 private:
  png_structp png_ = nullptr;
  png_infop info_ = nullptr;
};

}  // namespace

std::unique_ptr<PictureWriter> MakePngWriter(OutputFile& file) {
  return std::make_unique<PngWriter>(file);
}

}  // namespace tavinitf

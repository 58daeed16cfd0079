// JPEG by libjpeg. The library leaves by longjmp, so every function that calls it holds nothing to be destroyed.
#include <array>
#include <csetjmp>
#include <cstdio>
// Needs size_t and FILE to be declared before it.
#include <jpeglib.h>
// Needs jpeglib.h before it.
#include <jerror.h>

#include "PictureReader.h"

namespace tavinitf {
namespace {

struct ErrorManager {
  jpeg_error_mgr base;  // first, so that the library's callbacks find their way back
  std::jmp_buf failed;
  std::array<char, JMSG_LENGTH_MAX> message;
};

void TakeError(j_common_ptr codec) {
  auto* manager = reinterpret_cast<ErrorManager*>(codec->err);
  manager->base.format_message(codec, manager->message.data());
  std::longjmp(manager->failed, 1);
}

void DropMessage(j_common_ptr) {}

// The library makes up what a file that is cut short lacks; other warnings are for pictures that are all there.
void TakeWarning(j_common_ptr codec, int level) {
  if (level >= 0) return;
  if (codec->err->msg_code == JWRN_JPEG_EOF || codec->err->msg_code == JWRN_HIT_MARKER) TakeError(codec);
}

class JpegReader : public PictureReader {
 public:
  using PictureReader::PictureReader;
  ~JpegReader() override { jpeg_destroy_decompress(&codec_); }
  JpegReader(const JpegReader&) = delete;
  JpegReader& operator=(const JpegReader&) = delete;

  bool Begin() override {
    codec_.err = jpeg_std_error(&errors_.base);
    errors_.base.error_exit = TakeError;
    errors_.base.output_message = DropMessage;
    errors_.base.emit_message = TakeWarning;
    if (!ReadHead()) return Fail(errors_.message.data());
    if (codec_.num_components != 1 && codec_.num_components != 3) {
      return Fail("its " + std::to_string(codec_.num_components) +
                  " components are neither grey nor red, green, blue");
    }
    shape_ = {codec_.image_width, codec_.image_height, static_cast<uint32_t>(codec_.num_components)};
    return true;
  }

  bool ReadRow(uint8_t* row) override { return ReadOne(row) || Fail(errors_.message.data()); }

 private:
  bool ReadHead() {
    if (setjmp(errors_.failed) != 0) return false;
    jpeg_create_decompress(&codec_);
    jpeg_stdio_src(&codec_, file_);
    jpeg_read_header(&codec_, TRUE);
    codec_.out_color_space = codec_.num_components == 1 ? JCS_GRAYSCALE : JCS_RGB;
    return true;
  }

  bool ReadOne(uint8_t* row) {
    if (setjmp(errors_.failed) != 0) return false;
    if (!started_) {
      started_ = true;
      jpeg_start_decompress(&codec_);
    }
    JSAMPROW rows[] = {row};
    jpeg_read_scanlines(&codec_, rows, 1);
    return true;
  }

  jpeg_decompress_struct codec_{};
  ErrorManager errors_{};
  bool started_ = false;
};

}  // namespace

std::unique_ptr<PictureReader> MakeJpegReader(std::FILE* file) {
  return std::make_unique<JpegReader>(file);
}

}  // namespace tavinitf

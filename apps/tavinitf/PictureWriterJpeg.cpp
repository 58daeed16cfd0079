// JPEG by libjpeg. The library leaves by longjmp, so every function that calls it holds nothing to be
// destroyed.
#include <array>
#include <csetjmp>
#include <cstdio>
// Needs size_t and FILE to be declared before it.
#include <jpeglib.h>

#include "PictureWriter.h"

namespace tavinitf {
namespace {

constexpr int kQuality = 92;

// The library's records come first in ours, so that its callbacks find their way back.
struct ErrorManager {
  jpeg_error_mgr base;
  std::jmp_buf failed;
  OutputFile* file;
};

struct Destination {
  jpeg_destination_mgr base;
  OutputFile* file;
  std::array<JOCTET, 65536> buffer;
};

void TakeError(j_common_ptr codec) {
  auto* manager = reinterpret_cast<ErrorManager*>(codec->err);
  std::array<char, JMSG_LENGTH_MAX> message{};
  manager->base.format_message(codec, message.data());
  manager->file->Fail(message.data());
  std::longjmp(manager->failed, 1);
}

void DropMessage(j_common_ptr) {}

void StartBuffer(j_compress_ptr codec) {
  auto* destination = reinterpret_cast<Destination*>(codec->dest);
  destination->base.next_output_byte = destination->buffer.data();
  destination->base.free_in_buffer = destination->buffer.size();
}

void WriteOut(j_compress_ptr codec, size_t size) {
  auto* destination = reinterpret_cast<Destination*>(codec->dest);
  if (destination->file->Write(destination->buffer.data(), size)) return;
  std::longjmp(reinterpret_cast<ErrorManager*>(codec->err)->failed, 1);
}

boolean EmptyBuffer(j_compress_ptr codec) {
  WriteOut(codec, reinterpret_cast<Destination*>(codec->dest)->buffer.size());
  StartBuffer(codec);
  return TRUE;
}

void EndBuffer(j_compress_ptr codec) {
  const auto* destination = reinterpret_cast<Destination*>(codec->dest);
  WriteOut(codec, destination->buffer.size() - destination->base.free_in_buffer);
}

class JpegWriter : public PictureWriter {
 public:
  using PictureWriter::PictureWriter;
  ~JpegWriter() override { jpeg_destroy_compress(&codec_); }
  JpegWriter(const JpegWriter&) = delete;
  JpegWriter& operator=(const JpegWriter&) = delete;

  bool Begin(const PictureShape& shape) override {
    codec_.err = jpeg_std_error(&errors_.base);
    errors_.base.error_exit = TakeError;
    errors_.base.output_message = DropMessage;
    errors_.file = &file_;
    if (setjmp(errors_.failed) != 0) return false;
    jpeg_create_compress(&codec_);
    destination_.base.init_destination = StartBuffer;
    destination_.base.empty_output_buffer = EmptyBuffer;
    destination_.base.term_destination = EndBuffer;
    destination_.file = &file_;
    codec_.dest = &destination_.base;
    codec_.image_width = shape.width;
    codec_.image_height = shape.height;
    codec_.input_components = static_cast<int>(shape.channels);
    codec_.in_color_space = shape.channels == 1 ? JCS_GRAYSCALE : JCS_EXT_BGR;
    jpeg_set_defaults(&codec_);
    jpeg_set_quality(&codec_, kQuality, TRUE);
    // Colours at full resolution: maps and labels have sharp coloured edges.
    if (shape.channels == 3) codec_.comp_info[0].h_samp_factor = codec_.comp_info[0].v_samp_factor = 1;
    jpeg_start_compress(&codec_, TRUE);
    return true;
  }

  bool WriteRow(const uint8_t* row) override {
    if (setjmp(errors_.failed) != 0) return false;
    JSAMPROW rows[] = {
        const_cast<JSAMPROW>(row)};  // NOLINT(cppcoreguidelines-pro-type-const-cast): not written to
    jpeg_write_scanlines(&codec_, rows, 1);
    return true;
  }

  bool Finish() override {
    if (setjmp(errors_.failed) != 0) return false;
    jpeg_finish_compress(&codec_);
    return true;
  }

 private:
  jpeg_compress_struct codec_{};
  ErrorManager errors_{};
  Destination destination_{};
};

}  // namespace

std::unique_ptr<PictureWriter> MakeJpegWriter(OutputFile& file) {
  return std::make_unique<JpegWriter>(file);
}

}  // namespace tavinitf

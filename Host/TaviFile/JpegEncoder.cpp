#include "TaviFile/JpegEncoder.h"

#include <csetjmp>
#include <cstdio>  // jpeglib.h needs its types
#include <cstdlib>
#include <cstring>
#include <new>
#include <utility>

#include <jpeglib.h>

#include "TaviHost.h"
#include "TaviKernel/Color.h"
#include "TaviKernel/ColorRows.h"

namespace tavi::host {
namespace {

static_assert(kJpegSide == JPEG_MAX_DIMENSION);

// The library reports an error by a call that must not return. It jumps back into Guarded.
struct ErrorManager {
  jpeg_error_mgr base;
  std::jmp_buf jump;
};

[[noreturn]] void OnError(j_common_ptr common) {
  std::longjmp(reinterpret_cast<ErrorManager*>(common->err)->jump, 1);
}

void OnMessage(j_common_ptr) {}

// One encoding. Everything that must survive a jump lives in here.
struct Session {
  Session(const PixelView& picture, JpegColors kind, int32_t factor)
      : view(picture), colors(kind), quality(factor), reader(picture) {
    std::memset(&encoder, 0, sizeof encoder);
    encoder.err = jpeg_std_error(&error.base);
    error.base.error_exit = OnError;
    error.base.output_message = OnMessage;
  }
  ~Session() {
    jpeg_destroy_compress(&encoder);
    FreeCodedBytes()(bytes);
  }
  Session(const Session&) = delete;
  Session& operator=(const Session&) = delete;

  const PixelView& view;
  const JpegColors colors;
  const int32_t quality;
  RowReader reader;
  std::unique_ptr<Color8[]> pixels;  // one row
  std::unique_ptr<uint8_t[]> row;    // the same as the library takes it
  jpeg_compress_struct encoder{};
  ErrorManager error{};
  unsigned char* bytes = nullptr;
  unsigned long size = 0;
};

// Runs a step of the encoding, which makes no object that a jump would leave behind. All that can go wrong in one is
// that memory is short: the picture has been looked at before.
int32_t Guarded(Session& session, void (*step)(Session&)) {
  if (setjmp(session.error.jump) != 0) return ERR_NO_MEMORY;
  step(session);
  return SUCCESS;
}

// The quality factors stand for the library's qualities from 100 to 1 at even steps. Those are taken as the scale of
// the quantisation tables that they mean, because that has finer steps.
int TableScale(int32_t factor) {
  constexpr double kSteps = kCoarsestQuality - kBestQuality;
  const double quality = 100 - 99 * (factor - kBestQuality) / kSteps;
  return static_cast<int>(quality < 50 ? 5000 / quality : 200 - 2 * quality);
}

// Pixels of 24 bits are taken as they stand. Others are converted, red first.
J_COLOR_SPACE InputSpace(const PixelView& view) {
  return view.layout == Layout::kColor24 && !view.red_first ? JCS_EXT_BGR : JCS_RGB;
}

void Start(Session& session) {
  jpeg_compress_struct* const encoder = &session.encoder;
  jpeg_create_compress(encoder);
  jpeg_mem_dest(encoder, &session.bytes, &session.size);
  encoder->image_width = session.view.width;
  encoder->image_height = session.view.height;
  const bool grey = session.colors == JpegColors::kGrey;
  encoder->input_components = grey ? 1 : 3;
  encoder->in_color_space = grey ? JCS_GRAYSCALE : InputSpace(session.view);
  jpeg_set_defaults(encoder);  // of colour pictures: YCbCr, chroma at half the resolution
  if (session.colors == JpegColors::kRgb) jpeg_set_colorspace(encoder, JCS_RGB);
  jpeg_set_linear_quality(encoder, TableScale(session.quality), TRUE);
  jpeg_start_compress(encoder, TRUE);
}

// The row as the library takes it.
const uint8_t* TakeRow(const Session& session, uint32_t picture_row) {
  const uint32_t width = session.view.width;
  const Color8* const pixels = session.pixels.get();
  const uint8_t* const from = session.view.ReadRow(session.view.StorageRow(picture_row));
  const bool grey = session.colors == JpegColors::kGrey;
  if (!grey && session.view.layout == Layout::kColor24) return from;
  session.reader.Read8(from, 0, width, session.pixels.get());
  uint8_t* out = session.row.get();
  if (grey) {
    for (uint32_t x = 0; x < width; ++x) out[x] = static_cast<uint8_t>(Luminance8(pixels[x]));
    return session.row.get();
  }
  for (uint32_t x = 0; x < width; ++x, out += 3) {
    out[0] = static_cast<uint8_t>(pixels[x] >> 16);
    out[1] = static_cast<uint8_t>(pixels[x] >> 8);
    out[2] = static_cast<uint8_t>(pixels[x]);
  }
  return session.row.get();
}

void WriteRows(Session& session) {
  jpeg_compress_struct* const encoder = &session.encoder;
  while (encoder->next_scanline < encoder->image_height) {
    // NOLINTNEXTLINE(cppcoreguidelines-pro-type-const-cast): the library only reads it
    auto* row = const_cast<JSAMPROW>(TakeRow(session, encoder->next_scanline));
    jpeg_write_scanlines(encoder, &row, 1);
  }
  jpeg_finish_compress(encoder);
}

}  // namespace

void FreeCodedBytes::operator()(uint8_t* bytes) const noexcept {
  std::free(bytes);  // NOLINT(cppcoreguidelines-no-malloc): the library made them with malloc
}

int32_t EncodeJpeg(const PixelView& view, JpegColors colors, int32_t quality, CodedBytes* coded) noexcept {
  Session session(view, colors, quality);
  session.pixels.reset(new (std::nothrow) Color8[view.width]);
  session.row.reset(new (std::nothrow) uint8_t[uint64_t{view.width} * 3]);
  if (session.pixels == nullptr || session.row == nullptr) return ERR_NO_MEMORY;
  int32_t status = Guarded(session, Start);
  if (status == SUCCESS) status = Guarded(session, WriteRows);
  if (status != SUCCESS) return status;
  coded->bytes.reset(std::exchange(session.bytes, nullptr));
  coded->size = session.size;
  return SUCCESS;
}

}  // namespace tavi::host

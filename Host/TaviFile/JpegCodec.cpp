// 8-bit JPEG by libjpeg-turbo, which writes its rows straight into the bitmap.
#include <csetjmp>
#include <cstdio>  // jpeglib.h needs its types
#include <cstring>
#include <memory>
#include <new>

#include <jpeglib.h>
// Error codes of the library; jpeglib.h has to stand in front.
#include <jerror.h>

#include "TaviFile/Codec.h"
#include "TaviFile/JpegMarkers.h"
#include "TaviFile/Picture.h"

namespace tavi::host {
namespace {

#define TAVI_TEXT_OF(value) TAVI_TEXT(value)
#define TAVI_TEXT(value) #value

// The quantisation tables of Annex K, in natural order: abbreviated streams leave them out.
constexpr uint8_t kLuminanceTable[DCTSIZE2] = {
    16, 11,  10,  16, 24, 40, 51, 61, 12,  12,  14,  19,  26, 58, 60, 55,  14,  13,  16,  24, 40, 57,
    69, 56,  14,  17, 22, 29, 51, 87, 80,  62,  18,  22,  37, 56, 68, 109, 103, 77,  24,  35, 55, 64,
    81, 104, 113, 92, 49, 64, 78, 87, 103, 121, 120, 101, 72, 92, 95, 98,  112, 100, 103, 99};
constexpr uint8_t kChrominanceTable[DCTSIZE2] = {
    17, 18, 24, 47, 99, 99, 99, 99, 18, 21, 26, 66, 99, 99, 99, 99, 24, 26, 56, 99, 99, 99,
    99, 99, 47, 66, 99, 99, 99, 99, 99, 99, 99, 99, 99, 99, 99, 99, 99, 99, 99, 99, 99, 99,
    99, 99, 99, 99, 99, 99, 99, 99, 99, 99, 99, 99, 99, 99, 99, 99, 99, 99, 99, 99};

// The library reports an error by a call that must not return. It jumps back into Guarded.
struct ErrorManager {
  jpeg_error_mgr base;
  std::jmp_buf jump;
  int32_t status;
};

int32_t StatusOf(int code) {
  switch (code) {
    case JERR_OUT_OF_MEMORY:
    case JERR_NO_BACKING_STORE:
      return ERR_NO_MEMORY;
    case JERR_ARITH_NOTIMPL:
    case JERR_SOF_UNSUPPORTED:
    case JERR_NOT_COMPILED:
    case JERR_CCIR601_NOTIMPL:
    case JERR_CONVERSION_NOTIMPL:
    case JERR_COMPONENT_COUNT:
    case JERR_FRACT_SAMPLE_NOTIMPL:
      return ERR_NOT_SUPPORTED;
    default:
      return ERR_FILE_FORMAT;
  }
}

[[noreturn]] void OnError(j_common_ptr common) {
  auto* const manager = reinterpret_cast<ErrorManager*>(common->err);
  manager->status = StatusOf(common->err->msg_code);
  std::longjmp(manager->jump, 1);
}

void OnMessage(j_common_ptr) {}
void OnWarning(j_common_ptr, int) {}

enum class Conversion : uint8_t { kNone, kFirst, kBands, kCmyk, kInvertedCmyk };

// One decoding. Everything that must survive a jump lives in here.
struct Session {
  Session(const JpegStream& stream, const DecodeRequest& load) : jpeg(stream), request(load) {
    std::memset(&decoder, 0, sizeof decoder);
    decoder.err = jpeg_std_error(&error.base);
    error.base.error_exit = OnError;
    error.base.output_message = OnMessage;
    error.base.emit_message = OnWarning;
  }
  ~Session() { jpeg_destroy_decompress(&decoder); }
  Session(const Session&) = delete;
  Session& operator=(const Session&) = delete;

  const JpegStream& jpeg;
  const DecodeRequest& request;
  jpeg_decompress_struct decoder{};
  ErrorManager error{};
  PixelView view;
  Conversion conversion = Conversion::kNone;
  std::unique_ptr<uint8_t[]> row;  // one coded row, where it has to be converted
};

// Runs a step of the decoding, which makes no object that a jump would leave behind.
int32_t Guarded(Session& session, void (*step)(Session&)) {
  if (setjmp(session.error.jump) != 0) return session.error.status;
  step(session);
  return SUCCESS;
}

void PresetTable(jpeg_decompress_struct* decoder, int slot, const uint8_t* values) {
  if (decoder->quant_tbl_ptrs[slot] == nullptr) {
    decoder->quant_tbl_ptrs[slot] = jpeg_alloc_quant_table(reinterpret_cast<j_common_ptr>(decoder));
  }
  for (int i = 0; i < DCTSIZE2; ++i) decoder->quant_tbl_ptrs[slot]->quantval[i] = values[i];
}

void ReadHeader(Session& session) {
  jpeg_decompress_struct* const decoder = &session.decoder;
  jpeg_create_decompress(decoder);
  const Bytes bytes = session.jpeg.bytes;
  jpeg_mem_src(decoder, bytes.data(), static_cast<unsigned long>(bytes.size()));
  PresetTable(decoder, 0, kLuminanceTable);
  PresetTable(decoder, 1, kChrominanceTable);
  while (jpeg_read_header(decoder, FALSE) == JPEG_HEADER_TABLES_ONLY) {
  }
}

void Start(Session& session) {
  jpeg_start_decompress(&session.decoder);
}

void KeepComponents(jpeg_decompress_struct* decoder) {
  decoder->jpeg_color_space = JCS_UNKNOWN;
  decoder->out_color_space = JCS_UNKNOWN;
}

// Decides what the library converts, and what is left to do with its rows.
void ChooseColors(Session* session) {
  jpeg_decompress_struct* const decoder = &session->decoder;
  const DecodeRequest& request = session->request;
  const bool says_so = decoder->saw_JFIF_marker || decoder->saw_Adobe_marker;
  const int components = decoder->num_components;
  if (components == 1) {
    decoder->out_color_space = JCS_GRAYSCALE;
  } else if (request.as_bands() || components == 2 || components > 4) {
    KeepComponents(decoder);
    session->conversion = components == 2 && !request.as_bands() ? Conversion::kFirst : Conversion::kBands;
  } else if (components == 3) {
    if (request.as_rgb() && !says_so) decoder->jpeg_color_space = JCS_RGB;
    decoder->out_color_space = request.order == 0 ? JCS_EXT_RGB : JCS_EXT_BGR;
  } else if (request.as_rgb() && !says_so) {
    KeepComponents(decoder);
    session->conversion = Conversion::kBands;
  } else {
    // Adobe's writers store the complements of the inks.
    decoder->out_color_space = JCS_CMYK;
    session->conversion = decoder->saw_Adobe_marker ? Conversion::kInvertedCmyk : Conversion::kCmyk;
  }
}

void ConvertBands(const Session& session, uint8_t* out) {
  const auto components = static_cast<uint32_t>(session.decoder.num_components);
  const std::array<uint32_t, 3> bands = ChosenBands(session.request, components);
  const std::array<uint32_t, 3> places = ChannelPlaces(session.request);
  for (uint32_t channel = 0; channel < 3; ++channel) {
    const uint8_t* const from = session.row.get() + bands[channel];
    uint8_t* const to = out + places[channel];
    for (uint64_t x = 0; x < session.view.width; ++x) to[3 * x] = from[components * x];
  }
}

void ConvertCmyk(const Session& session, uint8_t* out) {
  const uint8_t flip = session.conversion == Conversion::kCmyk ? 0xFF : 0;
  const std::array<uint32_t, 3> places = ChannelPlaces(session.request);
  const uint8_t* from = session.row.get();
  for (uint64_t x = 0; x < session.view.width; ++x, from += 4, out += 3) {
    const auto black = static_cast<uint32_t>(from[3] ^ flip);
    for (uint32_t channel = 0; channel < 3; ++channel) {
      const auto ink = static_cast<uint32_t>(from[channel] ^ flip);
      out[places[channel]] = static_cast<uint8_t>((ink * black + 127) / 255);
    }
  }
}

void ConvertRow(const Session& session, uint8_t* out) {
  switch (session.conversion) {
    case Conversion::kFirst:
      for (uint64_t x = 0; x < session.view.width; ++x) out[x] = session.row[2 * x];
      return;
    case Conversion::kCmyk:
    case Conversion::kInvertedCmyk:
      ConvertCmyk(session, out);
      return;
    default:
      ConvertBands(session, out);
  }
}

void ReadRows(Session& session) {
  jpeg_decompress_struct* const decoder = &session.decoder;
  while (decoder->output_scanline < decoder->output_height) {
    const uint32_t first = decoder->output_scanline;
    if (session.conversion == Conversion::kNone) {
      constexpr uint32_t kRows = 4;  // the most that the library makes at once
      JSAMPROW rows[kRows];
      const uint32_t count = std::min<uint32_t>(kRows, decoder->output_height - first);
      for (uint32_t i = 0; i < count; ++i) rows[i] = session.view.ReplaceRow(first + i);
      jpeg_read_scanlines(decoder, rows, count);
    } else {
      JSAMPROW row = session.row.get();
      jpeg_read_scanlines(decoder, &row, 1);
      ConvertRow(session, session.view.ReplaceRow(first));
    }
  }
}

int32_t MakeBitmap(Session* session) {
  jpeg_decompress_struct* const decoder = &session->decoder;
  const bool grey = decoder->num_components == 1 || session->conversion == Conversion::kFirst;
  const PictureShape shape{decoder->image_width, decoder->image_height, grey ? 1u : 3u, 8};
  if (session->conversion != Conversion::kNone) {
    const uint64_t bytes = uint64_t{decoder->image_width} * static_cast<uint32_t>(decoder->num_components);
    session->row.reset(new (std::nothrow) uint8_t[bytes]);
    if (session->row == nullptr) return ERR_NO_MEMORY;
  }
  return MakePicture(session->request, shape, &session->view);
}

int32_t Decode(Bytes stream, const DecodeRequest& request) noexcept {
  JpegStream jpeg;
  int32_t status = ReadJpegHeader(stream, &jpeg);
  if (status == SUCCESS) status = CheckJpegClaim(jpeg);
  if (status != SUCCESS) return status;
  Session session(jpeg, request);
  status = Guarded(session, ReadHeader);
  if (status != SUCCESS) return status;
  // The library reads on where this reader stopped; both must have found the same frame.
  if (session.decoder.image_width != jpeg.width || session.decoder.image_height != jpeg.height) {
    return ERR_FILE_FORMAT;
  }
  ChooseColors(&session);
  status = MakeBitmap(&session);
  if (status == SUCCESS) status = Guarded(session, Start);
  if (status == SUCCESS) status = Guarded(session, ReadRows);
  if (status != SUCCESS) HostFreeBitmap(request.bitmap);
  return status;
}

int32_t IdentifyStream(Bytes stream, StreamInfo* info) noexcept {
  JpegStream jpeg;
  const int32_t status = ReadJpegHeader(stream, &jpeg);
  if (status != SUCCESS) return status;
  const bool lossy = jpeg.process == JpegProcess::kSequential || jpeg.process == JpegProcess::kProgressive;
  if (!lossy || jpeg.precision != 8) return ERR_NOT_SUPPORTED;
  *info = {kFormatJpeg, jpeg.width, jpeg.height, PixelBits(jpeg.components, 8)};
  return SUCCESS;
}

const char* Version() noexcept {
  return "libjpeg-turbo " TAVI_TEXT_OF(LIBJPEG_TURBO_VERSION);
}

}  // namespace

const Codec kJpegCodec{Version, IdentifyStream, Decode};

}  // namespace tavi::host

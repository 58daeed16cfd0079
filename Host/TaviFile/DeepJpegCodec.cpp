// 12-bit and lossless JPEG by DCMTK's decoders.
#include <dcmtk/config/osconfig.h>
// Has to stand behind it.
#include <dcmtk/dcmjpeg/djcparam.h>
#include <dcmtk/dcmjpeg/djdijg12.h>
#include <dcmtk/dcmjpeg/djdijg16.h>
#include <dcmtk/dcmjpeg/djdijg8.h>
#include <dcmtk/oflog/oflog.h>

#include <cstring>
#include <memory>
#include <mutex>
#include <new>

#include "TaviFile/Codec.h"
#include "TaviFile/JpegMarkers.h"
#include "TaviFile/Picture.h"
#include "TaviFile/Plausible.h"

namespace tavi::host {
namespace {

#define TAVI_TEXT_OF(value) TAVI_TEXT(value)
#define TAVI_TEXT(value) #value

// The decoders write what they notice to a log on standard error.
void SilenceLog() {
  static std::once_flag once;
  std::call_once(once, [] { OFLog::getLogger("dcmtk.dcmjpeg").setLogLevel(OFLogger::OFF_LOG_LEVEL); });
}

bool IsLossless(const JpegStream& jpeg) {
  return jpeg.process == JpegProcess::kLossless;
}

// Whether three components are luminance and two colour differences.
bool IsYcc(const JpegStream& jpeg, const DecodeRequest& request) {
  if (jpeg.components != 3 || request.as_bands()) return false;
  if (jpeg.has_jfif) return true;
  if (jpeg.has_adobe) return jpeg.adobe_transform != 0;
  return !IsLossless(jpeg) && !request.as_rgb() && !jpeg.has_rgb_ids;
}

std::unique_ptr<DJDecoder> MakeDecoder(const JpegStream& jpeg, const DJCodecParameter& parameter,
                                       bool is_ycc) {
  if (jpeg.precision <= 8) return std::make_unique<DJDecompressIJG8Bit>(parameter, is_ycc);
  if (jpeg.precision <= 12) return std::make_unique<DJDecompressIJG12Bit>(parameter, is_ycc);
  return std::make_unique<DJDecompressIJG16Bit>(parameter, is_ycc);
}

// The whole picture, components interleaved, each sample of one byte up to 8 bits and of two above.
int32_t DecodeSamples(const JpegStream& jpeg, const DecodeRequest& request, uint8_t* samples,
                      uint64_t bytes) {
  SilenceLog();
  const DJCodecParameter parameter(ECC_lossyYCbCr, EDC_photometricInterpretation, EUC_default, EPC_default);
  const std::unique_ptr<DJDecoder> decoder = MakeDecoder(jpeg, parameter, IsYcc(jpeg, request));
  if (decoder->init().bad()) return ERR_NO_MEMORY;
  // The interface lacks a const: the decoder does not write to its input.
  auto* const input = const_cast<Uint8*>(jpeg.bytes.data());  // NOLINT(*-pro-type-const-cast)
  const OFCondition condition = decoder->decode(input, static_cast<Uint32>(jpeg.bytes.size()), samples,
                                                static_cast<Uint32>(bytes), OFFalse);
  if (condition.good()) return SUCCESS;
  return condition == EJ_Suspension ? ERR_FILE_READ : ERR_FILE_FORMAT;
}

template <typename Sample>
void StoreRow(const Sample* from, uint32_t components, const std::array<uint32_t, 3>& bands,
              const std::array<uint32_t, 3>& places, uint32_t channels, uint32_t width, Sample* out) {
  if (channels == 1) {
    for (uint64_t x = 0; x < width; ++x) out[x] = from[x * components + bands[0]];
    return;
  }
  for (uint32_t channel = 0; channel < 3; ++channel) {
    const Sample* const source = from + bands[channel];
    Sample* const target = out + places[channel];
    for (uint64_t x = 0; x < width; ++x) target[3 * x] = source[x * components];
  }
}

// Colours of fewer than 8 bits have no palette to stretch them.
void StretchSamples(uint8_t* samples, uint64_t count, uint32_t precision) {
  uint8_t levels[256];
  const uint32_t full = (1u << precision) - 1;
  for (uint32_t i = 0; i < 256; ++i)
    levels[i] = static_cast<uint8_t>((std::min(i, full) * 255 + full / 2) / full);
  for (uint64_t i = 0; i < count; ++i) samples[i] = levels[samples[i]];
}

template <typename Sample>
void StorePicture(const JpegStream& jpeg, const DecodeRequest& request, const Sample* samples,
                  uint32_t channels, const PixelView& view) {
  const std::array<uint32_t, 3> bands = ChosenBands(request, jpeg.components);
  const std::array<uint32_t, 3> places = ChannelPlaces(request);
  const uint64_t step = uint64_t{view.width} * jpeg.components;
  for (uint32_t y = 0; y < view.height; ++y) {
    StoreRow(samples + y * step, jpeg.components, bands, places, channels, view.width,
             reinterpret_cast<Sample*>(view.ReplaceRow(y)));
  }
}

int32_t DecodePicture(const JpegStream& jpeg, const DecodeRequest& request) {
  const uint64_t count = uint64_t{jpeg.width} * jpeg.height * jpeg.components;
  const uint64_t bytes = count * SampleBits(jpeg.precision) / 8;
  if (jpeg.bytes.size() > UINT32_MAX || bytes > UINT32_MAX) return ERR_NO_MEMORY;
  const std::unique_ptr<uint16_t[]> samples(new (std::nothrow) uint16_t[(bytes + 1) / 2]);
  if (samples == nullptr) return ERR_NO_MEMORY;
  auto* const as_bytes = reinterpret_cast<uint8_t*>(samples.get());
  int32_t status = DecodeSamples(jpeg, request, as_bytes, bytes);
  if (status != SUCCESS) return status;
  const bool grey = jpeg.components == 1 || (jpeg.components == 2 && !request.as_bands());
  const uint32_t channels = grey ? 1 : 3;
  PixelView view;
  status = MakePicture(request, {jpeg.width, jpeg.height, channels, jpeg.precision}, &view);
  if (status != SUCCESS) return status;
  if (jpeg.precision > 8) {
    StorePicture(jpeg, request, samples.get(), channels, view);
    return SUCCESS;
  }
  if (!grey && jpeg.precision < 8) StretchSamples(as_bytes, count, jpeg.precision);
  StorePicture(jpeg, request, as_bytes, channels, view);
  return SUCCESS;
}

bool IsMine(const JpegStream& jpeg) {
  if (jpeg.arithmetic) return false;
  if (IsLossless(jpeg)) return jpeg.precision >= 2 && jpeg.precision <= 16;
  return jpeg.process != JpegProcess::kOther && jpeg.precision == 12;
}

int32_t Decode(Bytes stream, const DecodeRequest& request) noexcept {
  JpegStream jpeg;
  int32_t status = ReadJpegHeader(stream, &jpeg);
  if (status == SUCCESS) status = CheckJpegClaim(jpeg);
  if (status != SUCCESS) return status;
  try {
    return DecodePicture(jpeg, request);
  } catch (const std::bad_alloc&) {
    return ERR_NO_MEMORY;
  } catch (...) {
    return ERR_FILE_FORMAT;
  }
}

int32_t IdentifyStream(Bytes stream, StreamInfo* info) noexcept {
  JpegStream jpeg;
  const int32_t status = ReadJpegHeader(stream, &jpeg);
  if (status != SUCCESS) return status;
  if (!IsMine(jpeg)) return ERR_NOT_SUPPORTED;
  const uint32_t format = IsLossless(jpeg) ? kFormatLosslessJpeg : kFormatJpeg12;
  *info = {format, jpeg.width, jpeg.height, PixelBits(jpeg.components, jpeg.precision)};
  return SUCCESS;
}

const char* Version() noexcept {
  return "DCMTK " PACKAGE_VERSION;
}

}  // namespace

const Codec kDeepJpegCodec{Version, IdentifyStream, Decode};

}  // namespace tavi::host

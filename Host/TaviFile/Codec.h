// The one interface between HostLoadMemory and the codec libraries. Each kind of coded picture is a Codec
// with a file of its own; nothing outside that file knows the library behind it.
#pragma once

#include <array>
#include <cstdint>
#include <span>

#include "TaviHost.h"

namespace tavi::host {

using Bytes = std::span<const uint8_t>;

// The host's numbers of the formats.
inline constexpr uint32_t kFormatJpeg2000 = 5;
inline constexpr uint32_t kFormatJpeg = 10;
inline constexpr uint32_t kFormatLosslessJpeg = 11;
inline constexpr uint32_t kFormatJpeg12 = 26;
inline constexpr uint32_t kFormatCgm = 62;
inline constexpr uint32_t kFormatFaxG3OneD = 66;
inline constexpr uint32_t kFormatFaxG3TwoD = 67;
inline constexpr uint32_t kFormatFaxG4 = 68;

// What the headers of a stream say.
struct StreamInfo {
  uint32_t format = 0;
  uint32_t width = 0;
  uint32_t height = 0;
  uint32_t bits = 0;  // of a pixel of the bitmap that it decodes to
};

// The load options that codecs read.
inline constexpr uint32_t kLoadAsRgb = 0x4000;    // three components are red, green and blue
inline constexpr uint32_t kLoadAsBands = 0x8000;  // three components are taken as they are

struct DecodeRequest {
  HostBitmap* bitmap = nullptr;  // empty; a failed decode leaves it so
  uint32_t order = 4;            // as HostLoadMemory takes it
  uint32_t flags = 0;
  std::array<uint32_t, 3> bands = {0, 1, 2};  // the components that become red, green and blue

  bool as_rgb() const { return (flags & kLoadAsRgb) != 0 && !as_bands(); }
  bool as_bands() const { return (flags & kLoadAsBands) != 0; }
};

struct Codec {
  // The library behind it and its version, such as "libtiff 4.5.0".
  const char* (*version)() noexcept;
  // SUCCESS when the stream is of a kind that the codec decodes, ERR_NOT_SUPPORTED when it is not,
  // ERR_FILE_READ or ERR_FILE_FORMAT when it begins like one and its header is cut short or makes no sense.
  // Null for what is never identified.
  int32_t (*identify)(Bytes stream, StreamInfo* info) noexcept;
  // Null for a kind that is only identified.
  int32_t (*decode)(Bytes stream, const DecodeRequest& request) noexcept;
};

extern const Codec kJpegCodec;      // 8-bit JPEG
extern const Codec kDeepJpegCodec;  // 12-bit and lossless JPEG
extern const Codec kJpeg2000Codec;
extern const Codec kCgmCodec;

// The codec of a stream, or null and why there is none.
const Codec* Identify(Bytes stream, StreamInfo* info, int32_t* status) noexcept;

// Raw fax data. They do not tell what they are.
struct FaxLayout {
  uint32_t format = 0;
  uint32_t width = 0;
  uint32_t height = 0;
};
int32_t DecodeFax(Bytes data, const FaxLayout& layout, HostBitmap* bitmap, uint32_t order) noexcept;
const char* FaxVersion() noexcept;

}  // namespace tavi::host

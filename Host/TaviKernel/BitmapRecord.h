// What the host keeps in its own bytes of a HostBitmap, and what a valid record gives access to.
#pragma once

#include <cstdint>
#include <cstring>

#include "TaviHost.h"
#include "TaviKernel/PixelMemory.h"

namespace tavi::host {

inline constexpr uint64_t kBitmapRecordSize = sizeof(HostBitmap);
inline constexpr uint32_t kPaletteEntries = 256;
inline constexpr uint32_t kBottomUp = 4;  // the view perspective whose row 0 is the bottom of the picture

// How a record came by its pixels.
enum class PixelSource : uint8_t {
  kNone,       // HostInitBitmap: there are none
  kAllocated,  // its own
  kAttached    // memory flags 2: a caller's, once they are attached
};

// The byte order of 16-bit samples, where the host knows it. Rows that a caller puts make it unknown.
enum class SampleOrder : uint8_t { kUnknown, kBigEndian, kNative };

// Everything of a bitmap that lives outside its record. One object, so that the record moves by plain copy.
struct BitmapBody {
  PixelMemory memory;  // empty when the pixels are a caller's
  uint32_t palette_count = 0;
  HostPaletteEntry palette[kPaletteEntries];
};

// Stands in the record's last bytes. The named fields of the record are the caller's to read; the shape is
// kept here as well, so that a record whose fields were changed is seen to be no longer valid.
struct BitmapPart {
  uint64_t magic = 0;
  BitmapBody* body = nullptr;
  uint8_t* pixels = nullptr;
  uint32_t width = 0;
  uint32_t height = 0;
  uint32_t bits = 0;
  uint32_t bytes_per_line = 0;
  PixelSource source = PixelSource::kNone;
  SampleOrder sample_order = SampleOrder::kUnknown;
};

inline constexpr uint64_t kBitmapMagic = 0x50414D5449564154;
static_assert(sizeof(BitmapPart) <= sizeof(HostBitmap::host72));

inline BitmapPart LoadPart(const HostBitmap& bitmap) noexcept {
  BitmapPart part;
  std::memcpy(&part, bitmap.host72, sizeof part);
  return part;
}

inline void StorePart(HostBitmap* bitmap, BitmapPart part) noexcept {
  part.magic = kBitmapMagic;
  std::memcpy(bitmap->host72, &part, sizeof part);
}

// Whether the record was made by this host, and whether moreover its shape is as it was made.
inline bool HasMagic(const BitmapPart& part) noexcept {
  return part.magic == kBitmapMagic;
}

inline bool IsValid(const HostBitmap* bitmap, BitmapPart* part) noexcept {
  if (bitmap == nullptr) return false;
  *part = LoadPart(*bitmap);
  return HasMagic(*part) && part->width == bitmap->width && part->height == bitmap->height &&
         part->bits == bitmap->bits && part->bytes_per_line == bitmap->bytes_per_line;
}

// 1 to 8, 12, 16, 24, 32, 48 or 64.
bool IsDepth(uint32_t bits) noexcept;
inline bool IsIndexed(uint32_t bits) {
  return bits >= 1 && bits <= 8;
}

// Bytes of a row, padded to four bytes.
inline uint64_t BytesPerLine(uint32_t bits, uint32_t width) {
  return ((uint64_t{bits} * width + 31) >> 5) * 4;
}

// The record's body, made when there is none: null without memory.
BitmapBody* NeedBody(HostBitmap* bitmap, BitmapPart* part) noexcept;
void FreeBody(BitmapBody* body) noexcept;

// The palette that pixels go through, or null: 2^bits entries up to 8 bits, `count` entries of 12 and 16
// bits.
const HostPaletteEntry* PaletteOf(const BitmapPart& part, uint32_t* count) noexcept;

}  // namespace tavi::host

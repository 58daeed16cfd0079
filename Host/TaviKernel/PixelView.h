// A bitmap with pixels, as the operations on pixels see it.
#pragma once

#include <cstdint>
#include <cstring>

#include "TaviHost.h"
#include "TaviKernel/BitmapRecord.h"

namespace tavi::host {

// How a depth is to be read. Up to 8 bits a pixel is a palette index, 12 and 16 bits are grey, whatever the
// order is.
enum class Layout : uint8_t { kIndexed, kGrey12, kGrey16, kColor24, kColor32, kColor48, kColor64 };

// The rows of a bitmap in storage order. All access to pixels goes through the row operations.
struct PixelRows {
  uint8_t* pixels = nullptr;
  PixelMemory* memory = nullptr;  // null for attached pixels
  uint32_t height = 0;
  uint64_t stride = 0;

  const uint8_t* ReadRow(uint32_t row) const {
    if (memory != nullptr) memory->Settle(row);
    return pixels + row * stride;
  }
  uint8_t* ChangeRow(uint32_t row) const {
    if (memory != nullptr) memory->Settle(row);
    return pixels + row * stride;
  }
  void CopyRow(uint32_t row, uint8_t* to, uint64_t bytes) const {
    if (memory != nullptr) {
      memory->CopyRow(row, to, bytes);
    } else {
      std::memcpy(to, pixels + row * stride, bytes);
    }
  }
  // For a row whose pixels are all about to be written. Its padding is zero afterwards.
  uint8_t* ReplaceRow(uint32_t row) const {
    if (memory != nullptr) memory->Discard(row);
    uint8_t* const start = pixels + row * stride;
    if (memory != nullptr) std::memset(start + stride - 4, 0, 4);
    return start;
  }
};

struct PixelView : PixelRows {
  uint32_t width = 0;
  uint32_t bits = 0;
  Layout layout = Layout::kIndexed;
  bool red_first = false;  // of colour layouts; orders 1 and 2 are both blue first
  bool bottom_up = false;
  SampleOrder sample_order = SampleOrder::kUnknown;
  uint32_t significant_bits = 16;  // of 16-bit samples: 9 to 16, the upper bits being zero
  const HostPaletteEntry* palette = nullptr;
  uint32_t palette_count = 0;

  // Bytes of a row that hold pixels, the last one perhaps in part.
  uint64_t UsedBytes() const { return (uint64_t{bits} * width + 7) / 8; }

  // The storage row of a row of the picture, counted from its top.
  uint32_t StorageRow(uint32_t picture_row) const {
    return bottom_up ? height - 1 - picture_row : picture_row;
  }
};

// False for a record that is not valid or has no pixels.
inline bool RowsOf(const HostBitmap* bitmap, BitmapPart* part, PixelRows* rows) noexcept {
  if (!IsValid(bitmap, part) || part->pixels == nullptr) return false;
  rows->pixels = part->pixels;
  rows->memory = part->source == PixelSource::kAllocated ? &part->body->memory : nullptr;
  rows->height = part->width != 0 ? part->height : 0;
  rows->stride = part->bytes_per_line;
  return rows->height != 0;
}

// The same, for operations that look into the pixels.
bool ViewOf(const HostBitmap* bitmap, PixelView* view) noexcept;

// A record made with memory flags 2 whose picture has no area: valid, with nothing in it.
bool IsVoid(const HostBitmap* bitmap) noexcept;

// Notes the byte order of the 16-bit samples.
inline void SetSampleOrder(HostBitmap* bitmap, SampleOrder order) noexcept {
  BitmapPart part;
  if (!IsValid(bitmap, &part) || part.sample_order == order) return;
  part.sample_order = order;
  StorePart(bitmap, part);
}

// Notes that full-scale samples of this byte order now stand in the bitmap.
inline void SetFullScale(HostBitmap* bitmap, SampleOrder order) noexcept {
  bitmap->host49[0] = 0;
  SetSampleOrder(bitmap, order);
}

// Notes that the source's samples now stand in the destination.
void CopySampleForm(HostBitmap* destination, const HostBitmap& source, const PixelView& source_view) noexcept;

}  // namespace tavi::host

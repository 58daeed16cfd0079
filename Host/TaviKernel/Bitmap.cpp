#include <algorithm>
#include <cstring>

#include "TaviHost.h"
#include "TaviKernel/BitmapRecord.h"
#include "TaviKernel/ColorRows.h"
#include "TaviKernel/Limits.h"
#include "TaviKernel/Palette.h"
#include "TaviKernel/PixelView.h"

namespace tavi::host {
namespace {

constexpr uint32_t kAllocatePixels = 1;
constexpr uint32_t kAttachPixels = 2;
constexpr uint32_t kLongestSide = 0x7FFFFFFF;

void MakeEmpty(HostBitmap* bitmap) {
  std::memset(bitmap, 0, sizeof *bitmap);
  bitmap->view_perspective = 1;
  StorePart(bitmap, BitmapPart());
}

// Sets the shape in the named fields and in the host's.
void SetShape(HostBitmap* bitmap, BitmapPart* part, uint32_t width, uint32_t height, uint32_t bits) {
  const uint64_t line = std::min<uint64_t>(BytesPerLine(bits, width), UINT32_MAX & ~3u);
  bitmap->width = part->width = width;
  bitmap->height = part->height = height;
  bitmap->bits = part->bits = bits;
  bitmap->bytes_per_line = part->bytes_per_line = static_cast<uint32_t>(line);
  bitmap->color_count = IsIndexed(bits) ? 1u << bits : 0;
}

struct CreateRequest {
  uint32_t memory_flags;
  uint32_t width;
  uint32_t height;
  uint32_t bits;
  const HostPaletteEntry* palette;
  void* data;
  uint64_t data_size;

  bool allocates() const { return memory_flags == kAllocatePixels; }
};

int32_t CheckRequest(const CreateRequest& request) {
  if (request.memory_flags != kAllocatePixels && request.memory_flags != kAttachPixels)
    return ERR_INVALID_PARAMETER;
  const bool no_side = request.width == 0 || request.height == 0;
  const bool unshaped = !request.allocates() && no_side && request.bits == 0;
  if (!unshaped && !IsDepth(request.bits)) return ERR_INVALID_BPP;
  if (request.allocates() && (no_side || request.data != nullptr || request.data_size != 0)) {
    return ERR_INVALID_PARAMETER;
  }
  if (request.width > kLongestSide || request.height > kLongestSide) return ERR_INVALID_PARAMETER;
  const uint64_t line = BytesPerLine(request.bits, request.width);
  if (request.allocates() && !IsWithin(HOST_LIMIT_PICTURE, Times(line, request.height))) return ERR_NO_MEMORY;
  if (line > UINT32_MAX) return ERR_NO_MEMORY;
  if (request.data != nullptr && request.data_size < line * request.height) return ERR_INVALID_PARAMETER;
  return SUCCESS;
}

int32_t FillRecord(HostBitmap* bitmap, BitmapPart* part, const CreateRequest& request) {
  SetShape(bitmap, part, request.width, request.height, request.bits);
  part->source = request.allocates() ? PixelSource::kAllocated : PixelSource::kAttached;
  StorePart(bitmap, *part);
  const bool has_palette = request.palette != nullptr && request.bits >= 1 && request.bits <= 16;
  if (request.allocates() || has_palette) {
    BitmapBody* const body = NeedBody(bitmap, part);
    if (body == nullptr) return ERR_NO_MEMORY;
    if (request.allocates() && !body->memory.Allocate(request.height, bitmap->bytes_per_line))
      return ERR_NO_MEMORY;
    if (has_palette) {
      body->palette_count = IsIndexed(request.bits) ? 1u << request.bits : kPaletteEntries;
      bitmap->color_count = body->palette_count;
      std::copy_n(request.palette, body->palette_count, body->palette);
    }
  }
  part->pixels = request.allocates() ? part->body->memory.bytes() : static_cast<uint8_t*>(request.data);
  StorePart(bitmap, *part);
  return SUCCESS;
}

}  // namespace
}  // namespace tavi::host

using namespace tavi::host;

void HostInitBitmap(HostBitmap* bitmap, uint64_t record_size, uint32_t width, uint32_t height,
                    uint32_t bits) {
  if (bitmap == nullptr || record_size != kBitmapRecordSize) return;
  MakeEmpty(bitmap);
  BitmapPart part;
  SetShape(bitmap, &part, width, height, bits);
  StorePart(bitmap, part);
}

int32_t HostCreateBitmap(HostBitmap* bitmap, uint64_t record_size, uint32_t memory_flags, uint32_t width,
                         uint32_t height, uint32_t bits, uint32_t order, const HostPaletteEntry* palette,
                         uint32_t view_perspective, void* data, uint64_t data_size) {
  HostForgetLimitHit();
  if (bitmap == nullptr || record_size != kBitmapRecordSize) return ERR_INVALID_PARAMETER;
  MakeEmpty(bitmap);
  const CreateRequest request{memory_flags, width, height, bits, palette, data, data_size};
  int32_t status = CheckRequest(request);
  if (status != SUCCESS) return status;
  BitmapPart part;
  status = FillRecord(bitmap, &part, request);
  if (status != SUCCESS) {
    FreeBody(part.body);
    MakeEmpty(bitmap);
    return status;
  }
  bitmap->order = order;
  bitmap->view_perspective = view_perspective;
  return SUCCESS;
}

void HostFreeBitmap(HostBitmap* bitmap) {
  if (bitmap == nullptr) return;
  // A record whose named fields were changed still frees what it owns.
  const BitmapPart part = LoadPart(*bitmap);
  if (!HasMagic(part)) return;
  FreeBody(part.body);
  MakeEmpty(bitmap);
}

int32_t HostAttachBitmapData(HostBitmap* bitmap, void* buffer, uint64_t size) {
  BitmapPart part;
  if (!IsValid(bitmap, &part) || part.source != PixelSource::kAttached) return ERR_NO_BITMAP;
  if (buffer == nullptr || size < uint64_t{part.bytes_per_line} * part.height) return ERR_INVALID_PARAMETER;
  part.pixels = static_cast<uint8_t*>(buffer);
  part.sample_order = SampleOrder::kUnknown;
  StorePart(bitmap, part);
  return SUCCESS;
}

void HostClearBitmap(HostBitmap* bitmap) {
  PixelView view;
  if (!ViewOf(bitmap, &view)) return;
  SetFullScale(bitmap, SampleOrder::kUnknown);
  if (view.memory != nullptr) {
    view.memory->FillRows(nullptr);
  } else {
    std::memset(view.pixels, 0, view.stride * view.height);
  }
}

void HostFillBitmap(HostBitmap* bitmap, uint32_t color) {
  PixelView view;
  if (!ViewOf(bitmap, &view)) return;
  SetFullScale(bitmap, SampleOrder::kNative);
  view.significant_bits = 16;
  view.sample_order = SampleOrder::kNative;
  // The first row is filled in place and serves as the pattern: that takes no memory.
  uint8_t* const first = view.ReplaceRow(0);
  FillRow(view, color, first);
  if (view.memory != nullptr) {
    view.memory->FillRows(first);
    return;
  }
  for (uint32_t row = 1; row < view.height; ++row)
    std::memcpy(view.pixels + row * view.stride, first, view.stride);
}

// Pixels are always at hand; the bracket is for hosts that have to lock them.
void HostAccessBitmap(HostBitmap*) {}
void HostReleaseBitmap(HostBitmap*) {}

void HostGetBitmapRow(const HostBitmap* bitmap, void* buffer, uint32_t row, uint64_t bytes) {
  BitmapPart part;
  PixelRows rows;
  if (buffer == nullptr || !RowsOf(bitmap, &part, &rows) || row >= rows.height) return;
  rows.CopyRow(row, static_cast<uint8_t*>(buffer), std::min(bytes, rows.stride));
}

void HostPutBitmapRow(HostBitmap* bitmap, const void* buffer, uint32_t row, uint64_t bytes) {
  BitmapPart part;
  PixelRows rows;
  if (buffer == nullptr || !RowsOf(bitmap, &part, &rows) || row >= rows.height) return;
  if (part.bits == 16 || part.bits >= 48) SetFullScale(bitmap, SampleOrder::kUnknown);
  uint8_t* const target = bytes >= rows.stride ? rows.ReplaceRow(row) : rows.ChangeRow(row);
  std::memcpy(target, buffer, std::min(bytes, rows.stride));
}

#include "TaviKernel/BitmapRecord.h"

#include <algorithm>
#include <cstring>
#include <iterator>
#include <new>

#include "TaviKernel/Palette.h"
#include "TaviKernel/Tracking.h"

namespace tavi::host {
bool IsDepth(uint32_t bits) noexcept {
  constexpr uint32_t kDeep[] = {12, 16, 24, 32, 48, 64};
  return IsIndexed(bits) || std::find(std::begin(kDeep), std::end(kDeep), bits) != std::end(kDeep);
}

BitmapBody* NeedBody(HostBitmap* bitmap, BitmapPart* part) noexcept {
  if (part->body != nullptr) return part->body;
  auto* const body = new (std::nothrow) BitmapBody;
  if (body == nullptr) return nullptr;
  std::memcpy(body->palette, DefaultPalette(part->bits), sizeof body->palette);
  body->palette_count = IsIndexed(part->bits) ? 1u << part->bits : 0;
  NoteMade(LiveKind::kBitmap, body, {});
  part->body = body;
  StorePart(bitmap, *part);
  bitmap->flags |= 1;  // there is something to free now
  return body;
}

void FreeBody(BitmapBody* body) noexcept {
  if (body == nullptr) return;
  NoteGone(LiveKind::kBitmap, body);
  body->memory.Free();
  delete body;
}

const HostPaletteEntry* PaletteOf(const BitmapPart& part, uint32_t* count) noexcept {
  *count = 0;
  if (part.bits == 0 || part.bits > 16) return nullptr;
  if (part.body != nullptr) {
    *count = part.body->palette_count;
    return *count != 0 ? part.body->palette : nullptr;
  }
  if (!IsIndexed(part.bits)) return nullptr;
  *count = 1u << part.bits;
  return DefaultPalette(part.bits);
}

}  // namespace tavi::host

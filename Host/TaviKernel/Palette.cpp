#include "TaviKernel/Palette.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <new>

#include "TaviKernel/BitmapRecord.h"
#include "TaviKernel/Memory.h"
#include "TaviKernel/Tracking.h"

namespace tavi::host {
namespace {

using Table = std::array<HostPaletteEntry, kPaletteEntries>;

constexpr uint64_t kPaletteMagic = 0x454C415056415421;

constexpr Table MakeTable(uint32_t bits) {
  Table table{};
  const uint32_t ramp = bits >= 1 && bits <= 8 ? 1u << bits : 0;
  for (uint32_t i = 0; i < kPaletteEntries; ++i) {
    const auto level = static_cast<uint8_t>(i < ramp ? (i * 255 + (ramp - 1) / 2) / (ramp - 1) : 255);
    table[i] = {level, level, level, 0};
  }
  return table;
}

constexpr std::array<Table, 9> kTables = {MakeTable(0), MakeTable(1), MakeTable(2),
                                          MakeTable(3), MakeTable(4), MakeTable(5),
                                          MakeTable(6), MakeTable(7), MakeTable(8)};

// Writes as many entries as the palette has room for.
void PutColors(HostBitmap* bitmap, uint32_t first, uint32_t count, const HostPaletteEntry* entries) {
  BitmapPart part;
  if (!IsValid(bitmap, &part)) return;
  uint32_t size = 0;
  const HostPaletteEntry* const palette = PaletteOf(part, &size);
  if (palette == nullptr || first >= size) return;
  const size_t bytes = std::min(count, size - first) * sizeof(HostPaletteEntry);
  // A bitmap without memory of its own keeps the fixed palette as long as it says the same.
  if (std::memcmp(palette + first, entries, bytes) == 0) return;
  BitmapBody* const body = NeedBody(bitmap, &part);
  if (body != nullptr) std::memcpy(body->palette + first, entries, bytes);
}

}  // namespace

const HostPaletteEntry* DefaultPalette(uint32_t bits) noexcept {
  return kTables[bits <= 8 ? bits : 0].data();
}

const HostPaletteObject* CheckPalette(HostPalette palette) noexcept {
  return palette != nullptr && palette->magic == kPaletteMagic ? palette : nullptr;
}

void HoldPalette(HostPalette palette) noexcept {
  if (palette != nullptr) ++palette->holders;
}

HostPalette ReleasePalette(HostPalette palette) noexcept {
  if (palette == nullptr) return nullptr;
  const bool is_alive = palette->magic == kPaletteMagic;
  if (--palette->holders == 0) delete palette;
  return is_alive ? palette : nullptr;
}

HostPalette MakePalette(const HostPaletteEntry* entries, uint32_t count) noexcept {
  if (count > kPaletteEntries || (entries == nullptr && count != 0)) return nullptr;
  auto* const palette = new (std::nothrow) HostPaletteObject{kPaletteMagic, count};
  if (palette == nullptr) return nullptr;
  std::copy_n(entries, count, palette->entries);
  NoteMade(LiveKind::kPalette, palette, {});
  return palette;
}

}  // namespace tavi::host

using namespace tavi::host;

void HostGetBitmapColors(const HostBitmap* bitmap, uint32_t first, uint32_t count,
                         HostPaletteEntry* entries) {
  BitmapPart part;
  if (entries == nullptr || !IsValid(bitmap, &part)) return;
  uint32_t size = 0;
  const HostPaletteEntry* const palette = PaletteOf(part, &size);
  if (palette == nullptr || first >= size) return;
  std::copy_n(palette + first, std::min(count, size - first), entries);
}

void HostPutBitmapColors(HostBitmap* bitmap, uint32_t first, uint32_t count,
                         const HostPaletteEntry* entries) {
  if (entries != nullptr) PutColors(bitmap, first, count, entries);
}

HostPaletteEntry* HostDefaultPalette(uint32_t bits) {
  if (!IsIndexed(bits)) return nullptr;
  void* const block = AllocateBlock(kPaletteEntries, sizeof(HostPaletteEntry), LiveKind::kMemory, {});
  if (block == nullptr) return nullptr;
  return static_cast<HostPaletteEntry*>(
      std::memcpy(block, DefaultPalette(bits), kPaletteEntries * sizeof(HostPaletteEntry)));
}

HostPalette HostCreatePalette(const HostPaletteEntry* entries, uint32_t count) {
  return MakePalette(entries, count);
}

// Up to 8 bits the palette stays complete: entries behind those given keep what they were. A picture of 12 or
// 16 bits has as many entries as were given, and its samples beyond them are grey.
void HostSetBitmapPalette(HostBitmap* bitmap, HostPalette palette) {
  const HostPaletteObject* const object = CheckPalette(palette);
  BitmapPart part;
  if (object == nullptr || !IsValid(bitmap, &part)) return;
  if (IsIndexed(part.bits)) {
    PutColors(bitmap, 0, object->count, object->entries);
    return;
  }
  if (part.bits != 12 && part.bits != 16) return;
  BitmapBody* const body = NeedBody(bitmap, &part);
  if (body == nullptr) return;
  std::copy_n(object->entries, object->count, body->palette);
  body->palette_count = object->count;
  bitmap->color_count = object->count;
}

void HostDeleteObject(HostPalette object, int32_t, const wchar_t*) {
  if (CheckPalette(object) == nullptr) return;
  NoteGone(LiveKind::kPalette, object);
  object->magic = 0;
  ReleasePalette(object);
}

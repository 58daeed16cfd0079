// Palette tables and palette objects.
#pragma once

#include <atomic>
#include <cstdint>

#include "TaviHost.h"

// What a HostPalette points to. Drawing contexts hold the palette that is selected: when its owner deletes it
// meanwhile, it stays until the last of them lets go of it.
struct HostPaletteObject {
  uint64_t magic;
  uint32_t count;
  std::atomic<uint32_t> holders = 1;
  HostPaletteEntry entries[256] = {};
};

namespace tavi::host {

// The fixed palette of a depth of 1 to 8 bits: a linear grey ramp, white behind it. Other depths give white
// throughout.
const HostPaletteEntry* DefaultPalette(uint32_t bits) noexcept;

// Null unless it is a palette object that is alive.
const HostPaletteObject* CheckPalette(HostPalette palette) noexcept;

// Takes part in keeping it, and ends that; the latter yields the palette when its owner has not deleted it. Both take
// null as well.
void HoldPalette(HostPalette palette) noexcept;
HostPalette ReleasePalette(HostPalette palette) noexcept;

HostPalette MakePalette(const HostPaletteEntry* entries, uint32_t count) noexcept;

inline uint32_t ColorOf(const HostPaletteEntry& entry) {
  return uint32_t{entry.blue} << 16 | uint32_t{entry.green} << 8 | entry.red;
}

}  // namespace tavi::host

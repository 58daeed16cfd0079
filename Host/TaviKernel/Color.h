// Pixels on their way from one layout to another, and the arithmetic of grey.
#pragma once

#include <cstdint>

#include "TaviHost.h"

namespace tavi::host {

// Eight bits a channel: blue in the low byte, then green, then red.
using Color8 = uint32_t;
// Sixteen bits a channel, in the same order.
using Color16 = uint64_t;

// Weights of the channels in grey; they add up to 65536, so that a grey keeps its level exactly.
inline constexpr uint32_t kRedWeight = 19595;
inline constexpr uint32_t kGreenWeight = 38470;
inline constexpr uint32_t kBlueWeight = 7471;

constexpr uint32_t Luminance(uint32_t blue, uint32_t green, uint32_t red) {
  return (blue * kBlueWeight + green * kGreenWeight + red * kRedWeight + 32768) >> 16;
}

constexpr uint32_t Luminance8(Color8 color) {
  return Luminance(color & 0xFF, color >> 8 & 0xFF, color >> 16 & 0xFF);
}

constexpr uint32_t Luminance16(Color16 color) {
  return Luminance(static_cast<uint32_t>(color & 0xFFFF), static_cast<uint32_t>(color >> 16 & 0xFFFF),
                   static_cast<uint32_t>(color >> 32 & 0xFFFF));
}

constexpr Color8 MakeColor8(uint32_t blue, uint32_t green, uint32_t red) {
  return blue | green << 8 | red << 16;
}

constexpr Color16 MakeColor16(uint64_t blue, uint64_t green, uint64_t red) {
  return blue | green << 16 | red << 32;
}

constexpr Color16 Grey16(uint32_t level) {
  return level * uint64_t{0x100010001};
}

// A sample of `bits` significant bits (9 to 16) at full scale of 16 bits, and back again.
constexpr uint32_t WidenSample(uint32_t sample, uint32_t bits) {
  const uint32_t largest = (1u << bits) - 1;
  const uint32_t limited = sample < largest ? sample : largest;
  return limited << (16 - bits) | limited >> (2 * bits - 16);
}

constexpr uint32_t NarrowSample(uint32_t sample, uint32_t bits) {
  return sample >> (16 - bits);
}

// Full scale stays full scale: 255 becomes 65535.
constexpr Color16 Widen(Color8 color) {
  return MakeColor16((color & 0xFF) * uint64_t{257}, (color >> 8 & 0xFF) * uint64_t{257},
                     (color >> 16 & 0xFF) * uint64_t{257});
}

// The high byte of each channel.
constexpr Color8 Narrow(Color16 color) {
  return MakeColor8(static_cast<uint32_t>(color >> 8 & 0xFF), static_cast<uint32_t>(color >> 24 & 0xFF),
                    static_cast<uint32_t>(color >> 40 & 0xFF));
}

// Red and blue in each other's place.
constexpr Color8 Exchanged(Color8 color) {
  return MakeColor8(color >> 16 & 0xFF, color >> 8 & 0xFF, color & 0xFF);
}

constexpr Color16 Exchanged(Color16 color) {
  return MakeColor16(color >> 32 & 0xFFFF, color >> 16 & 0xFFFF, color & 0xFFFF);
}

// From the 0x00BBGGRR of the interface, which has them the other way round.
constexpr Color8 FromInterface(uint32_t color) {
  return Exchanged(color);
}

inline Color8 FromEntry(const HostPaletteEntry& entry) {
  return MakeColor8(entry.blue, entry.green, entry.red);
}

}  // namespace tavi::host

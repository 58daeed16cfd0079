#include "TaviVector/BlendRows.h"

#include <algorithm>

namespace tavi::host::vec {
namespace {

constexpr uint32_t kChunk = 256;
constexpr uint32_t kClearStep = 32;  // pixels looked at together

uint32_t AlphaOf(uint32_t pixel) {
  return pixel >> 24;
}

// The rounded 255th part of a product of two bytes.
uint32_t Part255(uint32_t product) {
  return (product + 128 + ((product + 128) >> 8)) >> 8;
}

uint32_t Over8(uint32_t over, uint32_t under, uint32_t rest) {
  return std::min(over + Part255(under * rest), 255u);
}

// Both have blue in the low byte.
Color8 Over(uint32_t over, Color8 under) {
  const uint32_t rest = 255 - AlphaOf(over);
  return MakeColor8(Over8(over & 0xFF, under & 0xFF, rest), Over8(over >> 8 & 0xFF, under >> 8 & 0xFF, rest),
                    Over8(over >> 16 & 0xFF, under >> 16 & 0xFF, rest));
}

Color16 Over(uint32_t over, Color16 under) {
  const uint64_t rest = 255 - AlphaOf(over);
  const auto channel = [&](int over_shift, int under_shift) {
    const uint64_t sum =
        (over >> over_shift & 0xFF) * uint64_t{257} + ((under >> under_shift & 0xFFFF) * rest + 127) / 255;
    return std::min<uint64_t>(sum, 0xFFFF);
  };
  return MakeColor16(channel(0, 0), channel(8, 16), channel(16, 32));
}

// The order in which samples stand in the bitmap holds for those that are written too.
PixelView WithOrder(PixelView view, SampleOrder order) {
  view.sample_order = order;
  return view;
}

void Blend24(uint8_t* at, uint32_t count, const uint32_t* over) {
  for (uint32_t i = 0; i < count; ++i, at += 3) {
    const uint32_t pixel = over[i];
    const uint32_t rest = 255 - AlphaOf(pixel);
    if (rest == 0) {
      at[0] = static_cast<uint8_t>(pixel);
      at[1] = static_cast<uint8_t>(pixel >> 8);
      at[2] = static_cast<uint8_t>(pixel >> 16);
      continue;
    }
    at[0] = static_cast<uint8_t>(Over8(pixel & 0xFF, at[0], rest));
    at[1] = static_cast<uint8_t>(Over8(pixel >> 8 & 0xFF, at[1], rest));
    at[2] = static_cast<uint8_t>(Over8(pixel >> 16 & 0xFF, at[2], rest));
  }
}

// Whether the next pixels are all clear. Most of a drawing's box is.
bool AreClear(const uint32_t* pixels) {
  uint32_t any = 0;
  for (uint32_t i = 0; i < kClearStep; ++i) any |= pixels[i];
  return any == 0;
}

}  // namespace

RowBlender::RowBlender(const PixelView& target) noexcept
    : view_(target), reader_(target), writer_(WithOrder(target, reader_.sample_order())) {}

void RowBlender::BlendAndClear(uint32_t picture_row, uint32_t x, uint32_t count, uint32_t* over) noexcept {
  uint8_t* row = nullptr;
  for (uint32_t i = 0; i < count;) {
    if (i + kClearStep <= count && AreClear(over + i)) {
      i += kClearStep;
      continue;
    }
    if (AlphaOf(over[i]) == 0) {
      ++i;
      continue;
    }
    uint32_t end = i + 1;
    while (end < count && AlphaOf(over[end]) != 0) ++end;
    if (row == nullptr) row = view_.ChangeRow(view_.StorageRow(picture_row));
    BlendRun(row, x + i, end - i, over + i);
    std::fill_n(over + i, end - i, 0u);
    i = end;
  }
}

void RowBlender::BlendRun(uint8_t* row, uint32_t x, uint32_t count, const uint32_t* over) noexcept {
  if (view_.layout == Layout::kColor24 && !view_.red_first) {
    Blend24(row + uint64_t{x} * 3, count, over);
    return;
  }
  for (uint32_t done = 0; done < count; done += kChunk) {
    const uint32_t step = std::min(kChunk, count - done);
    if (reader_.deep()) {
      BlendDeep(row, x + done, step, over + done);
    } else {
      BlendShallow(row, x + done, step, over + done);
    }
  }
}

void RowBlender::BlendShallow(uint8_t* row, uint32_t x, uint32_t count, const uint32_t* over) noexcept {
  Color8 colors[kChunk];
  reader_.Read8(row, x, count, colors);
  for (uint32_t i = 0; i < count; ++i) colors[i] = Over(over[i], colors[i]);
  writer_.Write8(row, x, count, colors, nullptr);
}

void RowBlender::BlendDeep(uint8_t* row, uint32_t x, uint32_t count, const uint32_t* over) noexcept {
  Color16 colors[kChunk];
  reader_.Read16(row, x, count, colors);
  for (uint32_t i = 0; i < count; ++i) colors[i] = Over(over[i], colors[i]);
  writer_.Write16(row, x, count, colors, nullptr);
}

}  // namespace tavi::host::vec

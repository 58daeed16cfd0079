#include "TaviKernel/ColorRows.h"

#include <algorithm>
#include <bit>
#include <cstring>

#include "TaviKernel/BitCopy.h"
#include "TaviKernel/Palette.h"
#include "TaviKernel/SampleOrder.h"

namespace tavi::host {
namespace {

constexpr uint32_t kChunk = 256;  // pixels converted between two depths at a time

uint32_t Load16(const uint8_t* bytes) {
  uint16_t value;
  std::memcpy(&value, bytes, sizeof value);
  return value;
}

void Store16(uint8_t* bytes, uint32_t value) {
  const auto stored = static_cast<uint16_t>(value);
  std::memcpy(bytes, &stored, sizeof stored);
}

// Sample `x` of a 12-bit row: pairs of samples in three bytes, low nibble first.
uint32_t Load12(const uint8_t* row, uint32_t x) {
  const uint8_t* const at = row + uint64_t{x} * 3 / 2;
  return x % 2 == 0 ? at[0] | (at[1] & 0x0Fu) << 8 : at[0] >> 4 | uint32_t{at[1]} << 4;
}

void Store12(uint8_t* row, uint32_t x, uint32_t value) {
  uint8_t* const at = row + uint64_t{x} * 3 / 2;
  if (x % 2 == 0) {
    at[0] = static_cast<uint8_t>(value);
    at[1] = static_cast<uint8_t>((at[1] & 0xF0) | value >> 8);
  } else {
    at[0] = static_cast<uint8_t>((at[0] & 0x0F) | (value & 0x0F) << 4);
    at[1] = static_cast<uint8_t>(value >> 4);
  }
}

// Eight pixels of one bit as eight bytes of 0 or 1, the most significant bit first.
void UnpackByte(uint32_t byte, uint8_t* indices) {
  for (uint32_t i = 0; i < 8; ++i) indices[i] = static_cast<uint8_t>(byte >> (7 - i) & 1);
}

// One pixel of 24 bits from its bytes and the one behind them.
uint32_t Load24(const uint8_t* bytes) {
  uint32_t value;
  std::memcpy(&value, bytes, sizeof value);
  return value & 0xFFFFFF;
}

void Store24(uint8_t* bytes, Color8 color) {
  bytes[0] = static_cast<uint8_t>(color);
  bytes[1] = static_cast<uint8_t>(color >> 8);
  bytes[2] = static_cast<uint8_t>(color >> 16);
}

// Calls `put` for each pixel that is kept.
template <typename Put>
void ForKept(uint32_t count, const uint8_t* keep, Put&& put) {
  if (keep == nullptr) {
    for (uint32_t i = 0; i < count; ++i) put(i);
  } else {
    for (uint32_t i = 0; i < count; ++i) {
      if (keep[i] != 0) put(i);
    }
  }
}

}  // namespace

void UnpackIndices(const uint8_t* row, uint32_t bits, uint32_t x, uint32_t count, uint8_t* indices) noexcept {
  if (bits == 8) {
    std::memcpy(indices, row + x, count);
    return;
  }
  uint32_t i = 0;
  if (bits == 1) {
    for (; i < count && (x + i) % 8 != 0; ++i) indices[i] = row[(x + i) / 8] >> (7 - (x + i) % 8) & 1;
    for (; i + 8 <= count; i += 8) UnpackByte(row[(x + i) / 8], indices + i);
  }
  for (; i < count; ++i) {
    indices[i] = 0;
    CopyBits(BitOrder::kMostFirst, &indices[i], 8 - bits, row, (uint64_t{x} + i) * bits, bits);
  }
}

void PackIndices(uint8_t* row, uint32_t bits, uint32_t x, uint32_t count, const uint8_t* indices,
                 const uint8_t* keep) noexcept {
  if (bits == 8) {
    ForKept(count, keep, [&](uint32_t i) { row[x + i] = indices[i]; });
    return;
  }
  ForKept(count, keep, [&](uint32_t i) {
    CopyBits(BitOrder::kMostFirst, row, (uint64_t{x} + i) * bits, &indices[i], 8 - bits, bits);
  });
}

void CopyHighBytes12(const uint8_t* row, uint32_t x, uint32_t count, uint8_t* bytes) noexcept {
  uint32_t i = 0;
  if (x % 2 != 0 && count != 0) bytes[i++] = static_cast<uint8_t>(Load12(row, x) >> 4);
  const uint8_t* const at = row + uint64_t{x + i} / 2 * 3;
  uint64_t pair = 0;
  for (; i + 2 <= count; i += 2, ++pair) {
    bytes[i] = static_cast<uint8_t>(at[3 * pair] >> 4 | at[3 * pair + 1] << 4);
    bytes[i + 1] = at[3 * pair + 2];
  }
  if (i < count) bytes[i] = static_cast<uint8_t>(Load12(row, x + i) >> 4);
}

// A picture of 12 or 16 bits with a palette may mix colours and deeper greys: it counts as deep.
RowReader::RowReader(const PixelView& view) noexcept : view_(view), deep_(IsDeep(view.layout)) {
  for (uint32_t i = 0; i < view.palette_count; ++i) colors_[i] = FromEntry(view.palette[i]);
  if (view.layout != Layout::kGrey16) return;
  sample_order_ = view.sample_order != SampleOrder::kUnknown ? view.sample_order : DetectSampleOrder(view);
}

Color16 RowReader::GreyOrEntry(uint32_t sample, uint32_t level) const {
  return sample < view_.palette_count ? Widen(colors_[sample]) : Grey16(level);
}

void RowReader::ReadIndexed(const uint8_t* row, uint32_t x, uint32_t count, Color8* colors) const {
  uint8_t indices[kChunk];
  for (uint32_t done = 0; done < count; done += kChunk) {
    const uint32_t step = std::min(kChunk, count - done);
    UnpackIndices(row, view_.bits, x + done, step, indices);
    for (uint32_t i = 0; i < step; ++i) colors[done + i] = colors_[indices[i]];
  }
}

void RowReader::ReadShallow(const uint8_t* row, uint32_t x, uint32_t count, Color8* colors) const {
  if (view_.layout == Layout::kIndexed) {
    ReadIndexed(row, x, count, colors);
    return;
  }
  const uint32_t size = view_.bits / 8;
  const uint8_t* const first = row + uint64_t{x} * size;
  if (size == 3) {
    uint64_t i = 0;
    if constexpr (std::endian::native == std::endian::little) {
      // The last pixel may have nothing behind it.
      for (; i + 1 < count; ++i) colors[i] = Load24(first + 3 * i);
    }
    for (; i < count; ++i) colors[i] = MakeColor8(first[3 * i], first[3 * i + 1], first[3 * i + 2]);
  } else {
    for (uint64_t i = 0; i < count; ++i) {
      colors[i] = MakeColor8(first[4 * i], first[4 * i + 1], first[4 * i + 2]);
    }
  }
  if (!view_.red_first) return;
  for (uint32_t i = 0; i < count; ++i) colors[i] = Exchanged(colors[i]);
}

void RowReader::ReadGrey12(const uint8_t* row, uint32_t x, uint32_t count, Color16* colors) const {
  for (uint32_t i = 0; i < count; ++i) {
    const uint32_t sample = Load12(row, x + i);
    colors[i] = GreyOrEntry(sample, WidenSample(sample, 12));
  }
}

void RowReader::ReadGrey16(const uint8_t* row, uint32_t x, uint32_t count, Color16* colors) const {
  const uint8_t* const first = row + uint64_t{x} * 2;
  const bool big = sample_order_ == SampleOrder::kBigEndian;
  for (size_t i = 0; i < count; ++i) {
    const uint32_t sample = big ? uint32_t{first[2 * i]} << 8 | first[2 * i + 1] : Load16(first + 2 * i);
    colors[i] = GreyOrEntry(sample, WidenSample(sample, view_.significant_bits));
  }
}

void RowReader::ReadDeepColor(const uint8_t* row, uint32_t x, uint32_t count, Color16* colors) const {
  const uint64_t size = view_.bits / 8;
  const uint32_t bits = view_.significant_bits;
  const uint8_t* at = row + x * size;
  for (uint32_t i = 0; i < count; ++i, at += size) {
    const Color16 color = MakeColor16(WidenSample(Load16(at), bits), WidenSample(Load16(at + 2), bits),
                                      WidenSample(Load16(at + 4), bits));
    colors[i] = view_.red_first ? Exchanged(color) : color;
  }
}

void RowReader::Read8(const uint8_t* row, uint32_t x, uint32_t count, Color8* colors) const noexcept {
  if (!deep_) {
    ReadShallow(row, x, count, colors);
    return;
  }
  Color16 deep[kChunk];
  for (uint32_t done = 0; done < count; done += kChunk) {
    const uint32_t step = std::min(kChunk, count - done);
    Read16(row, x + done, step, deep);
    for (uint32_t i = 0; i < step; ++i) colors[done + i] = Narrow(deep[i]);
  }
}

void RowReader::Read16(const uint8_t* row, uint32_t x, uint32_t count, Color16* colors) const noexcept {
  switch (view_.layout) {
    case Layout::kGrey12:
      ReadGrey12(row, x, count, colors);
      return;
    case Layout::kGrey16:
      ReadGrey16(row, x, count, colors);
      return;
    case Layout::kColor48:
    case Layout::kColor64:
      ReadDeepColor(row, x, count, colors);
      return;
    default:
      break;
  }
  Color8 shallow[kChunk];
  for (uint32_t done = 0; done < count; done += kChunk) {
    const uint32_t step = std::min(kChunk, count - done);
    ReadShallow(row, x + done, step, shallow);
    for (uint32_t i = 0; i < step; ++i) colors[done + i] = Widen(shallow[i]);
  }
}

RowWriter::RowWriter(const PixelView& view) noexcept
    : view_(view),
      matcher_(view.palette, view.layout == Layout::kIndexed ? view.palette_count : 0, view.bits) {}

void RowWriter::WriteIndexed(uint8_t* row, uint32_t x, uint32_t count, const Color8* colors,
                             const uint8_t* keep) noexcept {
  uint8_t indices[kChunk];
  for (uint32_t done = 0; done < count; done += kChunk) {
    const uint32_t step = std::min(kChunk, count - done);
    for (uint32_t i = 0; i < step; ++i) indices[i] = matcher_.Match(colors[done + i]);
    PackIndices(row, view_.bits, x + done, step, indices, keep != nullptr ? keep + done : nullptr);
  }
}

void RowWriter::WriteShallow(uint8_t* row, uint32_t x, uint32_t count, const Color8* colors,
                             const uint8_t* keep) noexcept {
  const bool exchange = view_.red_first;
  const auto color = [&](uint32_t i) { return exchange ? Exchanged(colors[i]) : colors[i]; };
  if (view_.layout == Layout::kIndexed) {
    WriteIndexed(row, x, count, colors, keep);
  } else if (view_.layout == Layout::kColor24) {
    uint8_t* const first = row + uint64_t{x} * 3;
    ForKept(count, keep, [&](uint32_t i) { Store24(first + uint64_t{3} * i, color(i)); });
  } else {
    uint8_t* const first = row + uint64_t{x} * 4;
    ForKept(count, keep, [&](uint32_t i) {
      Store24(first + uint64_t{4} * i, color(i));
      first[uint64_t{4} * i + 3] = 0;
    });
  }
}

void RowWriter::PutDeep(uint8_t* row, uint32_t x, Color16 color) const noexcept {
  if (view_.layout == Layout::kGrey12) {
    Store12(row, x, Luminance16(color) >> 4);
    return;
  }
  if (view_.layout == Layout::kGrey16) {
    const uint32_t level = NarrowSample(Luminance16(color), view_.significant_bits);
    const bool big = view_.sample_order == SampleOrder::kBigEndian;
    row[uint64_t{x} * 2] = static_cast<uint8_t>(big ? level >> 8 : level);
    row[uint64_t{x} * 2 + 1] = static_cast<uint8_t>(big ? level : level >> 8);
    return;
  }
  if (view_.red_first) color = Exchanged(color);
  const uint64_t size = view_.bits / 8;
  uint8_t* const at = row + x * size;
  for (size_t channel = 0; channel < 3; ++channel, color >>= 16) {
    Store16(at + 2 * channel, NarrowSample(static_cast<uint32_t>(color & 0xFFFF), view_.significant_bits));
  }
  if (size == 8) Store16(at + 6, 0);
}

void RowWriter::Write8(uint8_t* row, uint32_t x, uint32_t count, const Color8* colors,
                       const uint8_t* keep) noexcept {
  if (IsDeep(view_.layout)) {
    ForKept(count, keep, [&](uint32_t i) { PutDeep(row, x + i, Widen(colors[i])); });
  } else {
    WriteShallow(row, x, count, colors, keep);
  }
}

void RowWriter::Write16(uint8_t* row, uint32_t x, uint32_t count, const Color16* colors,
                        const uint8_t* keep) noexcept {
  if (IsDeep(view_.layout)) {
    ForKept(count, keep, [&](uint32_t i) { PutDeep(row, x + i, colors[i]); });
    return;
  }
  Color8 shallow[kChunk];
  for (uint32_t done = 0; done < count; done += kChunk) {
    const uint32_t step = std::min(kChunk, count - done);
    for (uint32_t i = 0; i < step; ++i) shallow[i] = Narrow(colors[done + i]);
    WriteShallow(row, x + done, step, shallow, keep != nullptr ? keep + done : nullptr);
  }
}

void FillRow(const PixelView& view, uint32_t color, uint8_t* row) noexcept {
  RowWriter writer(view);
  const Color8 pixel = FromInterface(color);
  // One unit of pixels that ends on a byte, then copies of ever longer stretches of the row.
  const uint32_t unit = std::min(view.width, 8u);
  for (uint32_t x = 0; x < unit; ++x) writer.Write8(row, x, 1, &pixel, nullptr);
  uint64_t done = uint64_t{unit} * view.bits / 8;
  const uint64_t whole = uint64_t{view.bits} * view.width / 8;
  while (done != 0 && done < whole) {
    const uint64_t step = std::min(done, whole - done);
    std::memcpy(row + done, row, step);
    done += step;
  }
  for (uint32_t x = view.width - view.width % 8; view.width > 8 && x < view.width; ++x) {
    writer.Write8(row, x, 1, &pixel, nullptr);
  }
}

}  // namespace tavi::host

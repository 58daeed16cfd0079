#include "TaviKernel/RowPipe.h"

#include <algorithm>
#include <cstring>

#include "TaviKernel/BitCopy.h"

namespace tavi::host {
namespace {

constexpr uint32_t kChunk = 512;        // pixels on their way at a time
constexpr uint32_t kWidestSpan = 4096;  // source pixels read for one chunk; fewer are picked one by one

bool SamePalette(const PixelView& a, const PixelView& b) {
  return a.palette_count == b.palette_count &&
         std::equal(a.palette, a.palette + a.palette_count, b.palette,
                    [](const auto& left, const auto& right) {
                      return left.blue == right.blue && left.green == right.green && left.red == right.red;
                    });
}

bool IsKey(Color8 color, Color8 key) {
  return color == key;
}
bool IsKey(Color16 color, Color8 key) {
  return color == Widen(key);
}

}  // namespace

RowPipe::RowPipe(const PixelView& source, const PixelView& destination, const uint32_t* key) noexcept
    : source_(source),
      destination_(destination),
      reader_(source),
      writer_(destination),
      has_key_(key != nullptr),
      key_(key != nullptr ? FromInterface(*key) : 0),
      path_(ChoosePath()) {
  PrepareTables();
}

// Whether equal bytes mean equal colours.
bool RowPipe::SameBytes() const noexcept {
  if (source_.bits != destination_.bits || source_.significant_bits != destination_.significant_bits)
    return false;
  switch (source_.layout) {
    case Layout::kIndexed:
      return SamePalette(source_, destination_);
    case Layout::kGrey12:
      return source_.palette_count == 0;
    case Layout::kGrey16:
      return source_.palette_count == 0 && (reader_.sample_order() == SampleOrder::kBigEndian) ==
                                               (destination_.sample_order == SampleOrder::kBigEndian);
    default:
      return source_.red_first == destination_.red_first;
  }
}

RowPipe::Path RowPipe::ChoosePath() const noexcept {
  const Path by_color =
      reader_.deep() && (has_key_ || IsDeep(destination_.layout)) ? Path::kColors16 : Path::kColors8;
  if (has_key_) return by_color;
  if (SameBytes()) return Path::kCopy;
  const bool indexed = source_.layout == Layout::kIndexed;
  const bool grey = source_.layout == Layout::kGrey12 || source_.layout == Layout::kGrey16;
  const bool plain_grey = grey && source_.palette_count == 0 && source_.significant_bits == 16;
  const bool whole_bytes = destination_.layout == Layout::kColor24 ||
                           (destination_.layout == Layout::kIndexed && destination_.bits == 8);
  if (indexed && source_.bits == 1 && whole_bytes) return Path::kBits;
  if (destination_.layout == Layout::kColor24 && (indexed || plain_grey)) return Path::kExpand;
  if (destination_.layout == Layout::kIndexed && indexed) return Path::kTranslate;
  return by_color;
}

// A colour as the bytes of a pixel of 24 bits, the lowest first.
Color8 RowPipe::PixelOf(Color8 color) const noexcept {
  return destination_.red_first ? Exchanged(color) : color;
}

void RowPipe::PrepareTables() noexcept {
  const std::array<Color8, kPaletteEntries>& colors = reader_.colors();
  if ((path_ == Path::kTranslate || path_ == Path::kBits) && destination_.layout == Layout::kIndexed) {
    PaletteMatcher matcher(destination_.palette, destination_.palette_count, destination_.bits);
    for (uint32_t i = 0; i < source_.palette_count; ++i) translation_[i] = matcher.Match(colors[i]);
  }
  if (path_ == Path::kBits && destination_.layout == Layout::kIndexed) {
    bits_ = BitExpansion(translation_[0], translation_[1], 1);
  } else if (path_ == Path::kBits) {
    bits_ = BitExpansion(PixelOf(colors[0]), PixelOf(colors[1]), 3);
  } else if (path_ == Path::kExpand) {
    std::array<Color8, kPaletteEntries> pixels{};
    for (uint32_t i = 0; i < kPaletteEntries; ++i) {
      pixels[i] = PixelOf(source_.layout == Layout::kIndexed ? colors[i] : MakeColor8(i, i, i));
    }
    expansion_ = Expansion(pixels);
  }
}

void RowPipe::Copy(const uint8_t* source_row, uint8_t* destination_row, uint32_t source, uint32_t destination,
                   uint32_t count) const noexcept {
  const uint64_t bits = source_.bits;
  const BitOrder order = bits == 12 ? BitOrder::kLeastFirst : BitOrder::kMostFirst;
  CopyBits(order, destination_row, destination * bits, source_row, source * bits, count * bits);
}

// What a pixel is expanded by: its index, or the high byte of its grey.
void RowPipe::HighBytes(const uint8_t* source_row, uint32_t x, uint32_t count,
                        uint8_t* bytes) const noexcept {
  if (source_.layout == Layout::kIndexed) {
    UnpackIndices(source_row, source_.bits, x, count, bytes);
  } else if (source_.layout == Layout::kGrey16) {
    const bool big = reader_.sample_order() == SampleOrder::kBigEndian;
    const uint8_t* const high = source_row + uint64_t{x} * 2 + (big ? 0 : 1);
    for (size_t i = 0; i < count; ++i) bytes[i] = high[2 * i];
  } else {
    CopyHighBytes12(source_row, x, count, bytes);
  }
}

void RowPipe::Expand(const uint8_t* source_row, uint8_t* destination_row, uint32_t source,
                     uint32_t destination, uint32_t count) noexcept {
  uint8_t* const out = destination_row + uint64_t{destination} * 3;
  if (source_.bits == 8) {
    expansion_.Apply(source_row + source, count, out);
    return;
  }
  uint8_t bytes[kChunk];
  for (uint32_t done = 0; done < count; done += kChunk) {
    const uint32_t step = std::min(kChunk, count - done);
    HighBytes(source_row, source + done, step, bytes);
    expansion_.Apply(bytes, step, out + uint64_t{done} * 3);
  }
}

void RowPipe::Translate(const uint8_t* source_row, uint8_t* destination_row, uint32_t source,
                        uint32_t destination, uint32_t count) noexcept {
  uint8_t indices[kChunk];
  for (uint32_t done = 0; done < count; done += kChunk) {
    const uint32_t step = std::min(kChunk, count - done);
    UnpackIndices(source_row, source_.bits, source + done, step, indices);
    for (uint32_t i = 0; i < step; ++i) indices[i] = translation_[indices[i]];
    PackIndices(destination_row, destination_.bits, destination + done, step, indices, nullptr);
  }
}

void RowPipe::MoveRun(const uint8_t* source_row, uint8_t* destination_row, uint32_t source,
                      uint32_t destination, uint32_t count) noexcept {
  switch (path_) {
    case Path::kCopy:
      Copy(source_row, destination_row, source, destination, count);
      return;
    case Path::kBits:
      bits_.Apply(source_row, source, count, destination_row + uint64_t{destination} * destination_.bits / 8);
      return;
    case Path::kExpand:
      Expand(source_row, destination_row, source, destination, count);
      return;
    default:
      Translate(source_row, destination_row, source, destination, count);
      return;
  }
}

template <typename Color>
void RowPipe::Gather(const uint8_t* source_row, const uint32_t* map, uint32_t count, Color* colors) noexcept {
  const uint32_t first = std::min(map[0], map[count - 1]);
  const uint32_t span = std::max(map[0], map[count - 1]) - first + 1;
  if (span > kWidestSpan) {
    for (uint32_t i = 0; i < count; ++i) Read(source_row, map[i], 1, &colors[i]);
    return;
  }
  Color read[kWidestSpan];
  Read(source_row, first, span, read);
  for (uint32_t i = 0; i < count; ++i) colors[i] = read[map[i] - first];
}

template <typename Color>
void RowPipe::MoveColors(const uint8_t* source_row, uint8_t* destination_row,
                         const Columns& columns) noexcept {
  Color colors[kChunk];
  uint8_t keep[kChunk];
  for (uint32_t done = 0; done < columns.count; done += kChunk) {
    const uint32_t step = std::min(kChunk, columns.count - done);
    if (columns.map != nullptr) {
      Gather(source_row, columns.map + done, step, colors);
    } else {
      Read(source_row, columns.source + done, step, colors);
    }
    if (has_key_) {
      for (uint32_t i = 0; i < step; ++i) keep[i] = IsKey(colors[i], key_) ? 0 : 1;
    }
    Write(destination_row, columns.destination + done, step, colors, has_key_ ? keep : nullptr);
  }
}

void RowPipe::Move(const uint8_t* source_row, uint8_t* destination_row, const Columns& columns) noexcept {
  if (path_ == Path::kColors16) {
    MoveColors<Color16>(source_row, destination_row, columns);
  } else if (path_ == Path::kColors8) {
    MoveColors<Color8>(source_row, destination_row, columns);
  } else if (columns.map == nullptr) {
    MoveRun(source_row, destination_row, columns.source, columns.destination, columns.count);
  } else if (reader_.deep() && IsDeep(destination_.layout)) {
    MoveColors<Color16>(source_row, destination_row, columns);
  } else {
    MoveColors<Color8>(source_row, destination_row, columns);
  }
}

}  // namespace tavi::host

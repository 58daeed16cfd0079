// Moves rows from one bitmap to another by colour, each pair of layouts by the fastest way there is.
#pragma once

#include <array>
#include <cstdint>

#include "TaviKernel/ColorRows.h"
#include "TaviKernel/Expand.h"
#include "TaviKernel/PixelView.h"

namespace tavi::host {

// Which source pixels make up a run of destination pixels.
struct Columns {
  uint32_t destination;  // the first of the run
  uint32_t count;
  uint32_t source;      // the source pixel of the first, when `map` is null and the others follow it
  const uint32_t* map;  // otherwise the source pixel of each, rising or falling
};

class RowPipe {
 public:
  // With `key`, an interface colour, pixels of exactly that colour are left out. Deep pixels are compared in
  // full.
  RowPipe(const PixelView& source, const PixelView& destination, const uint32_t* key) noexcept;

  void Move(const uint8_t* source_row, uint8_t* destination_row, const Columns& columns) noexcept;

  // How pixels of a bit become those of the destination; null when that is no matter of bits.
  const BitExpansion* bits() const { return path_ == Path::kBits ? &bits_ : nullptr; }

 private:
  enum class Path : uint8_t { kCopy, kBits, kExpand, kTranslate, kColors8, kColors16 };

  Path ChoosePath() const noexcept;
  bool SameBytes() const noexcept;
  Color8 PixelOf(Color8 color) const noexcept;
  void PrepareTables() noexcept;
  void MoveRun(const uint8_t* source_row, uint8_t* destination_row, uint32_t source, uint32_t destination,
               uint32_t count) noexcept;
  void Copy(const uint8_t* source_row, uint8_t* destination_row, uint32_t source, uint32_t destination,
            uint32_t count) const noexcept;
  void HighBytes(const uint8_t* source_row, uint32_t x, uint32_t count, uint8_t* bytes) const noexcept;
  void Expand(const uint8_t* source_row, uint8_t* destination_row, uint32_t source, uint32_t destination,
              uint32_t count) noexcept;
  void Translate(const uint8_t* source_row, uint8_t* destination_row, uint32_t source, uint32_t destination,
                 uint32_t count) noexcept;
  template <typename Color>
  void MoveColors(const uint8_t* source_row, uint8_t* destination_row, const Columns& columns) noexcept;
  template <typename Color>
  void Gather(const uint8_t* source_row, const uint32_t* map, uint32_t count, Color* colors) noexcept;

  void Read(const uint8_t* row, uint32_t x, uint32_t count, Color8* colors) const noexcept {
    reader_.Read8(row, x, count, colors);
  }
  void Read(const uint8_t* row, uint32_t x, uint32_t count, Color16* colors) const noexcept {
    reader_.Read16(row, x, count, colors);
  }
  void Write(uint8_t* row, uint32_t x, uint32_t count, const Color8* colors, const uint8_t* keep) noexcept {
    writer_.Write8(row, x, count, colors, keep);
  }
  void Write(uint8_t* row, uint32_t x, uint32_t count, const Color16* colors, const uint8_t* keep) noexcept {
    writer_.Write16(row, x, count, colors, keep);
  }

  PixelView source_;
  PixelView destination_;
  RowReader reader_;
  RowWriter writer_;
  bool has_key_;
  Color8 key_;
  Path path_;
  BitExpansion bits_;    // of kBits
  Expansion expansion_;  // of kExpand
  // Of kTranslate and kBits: the destination's index for each index.
  std::array<uint8_t, kPaletteEntries> translation_{};
};

}  // namespace tavi::host

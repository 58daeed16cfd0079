// Rows of pixels of any layout, read and written as colours.
#pragma once

#include <array>
#include <cstdint>
#include <memory>

#include "TaviKernel/Color.h"
#include "TaviKernel/PaletteMatcher.h"
#include "TaviKernel/PixelView.h"

namespace tavi::host {

// Layouts of more than 8 bits a channel. They are carried as Color16, the others as Color8.
inline bool IsDeep(Layout layout) {
  return layout == Layout::kGrey12 || layout == Layout::kGrey16 || layout == Layout::kColor48 ||
         layout == Layout::kColor64;
}

// Palette indices of pixels of up to 8 bits.
void UnpackIndices(const uint8_t* row, uint32_t bits, uint32_t x, uint32_t count, uint8_t* indices) noexcept;
// With `keep`, only the pixels whose byte in it is not 0 are written.
void PackIndices(uint8_t* row, uint32_t bits, uint32_t x, uint32_t count, const uint8_t* indices,
                 const uint8_t* keep) noexcept;
// The upper eight bits of 12-bit samples.
void CopyHighBytes12(const uint8_t* row, uint32_t x, uint32_t count, uint8_t* bytes) noexcept;

class RowReader {
 public:
  // Looks at the samples of a 16-bit picture, to find their byte order.
  explicit RowReader(const PixelView& view) noexcept;

  // Whether the pixels have more than 8 bits a channel. A palette's colours have 8.
  bool deep() const { return deep_; }
  SampleOrder sample_order() const { return sample_order_; }
  // Of a picture of up to 8 bits: the colour of each index.
  const std::array<Color8, kPaletteEntries>& colors() const { return colors_; }

  // `count` pixels of the row from `x` on; Read8 takes the high byte of deeper channels.
  void Read8(const uint8_t* row, uint32_t x, uint32_t count, Color8* colors) const noexcept;
  void Read16(const uint8_t* row, uint32_t x, uint32_t count, Color16* colors) const noexcept;

 private:
  Color16 GreyOrEntry(uint32_t sample, uint32_t level) const;
  void ReadIndexed(const uint8_t* row, uint32_t x, uint32_t count, Color8* colors) const;
  void ReadShallow(const uint8_t* row, uint32_t x, uint32_t count, Color8* colors) const;
  void ReadGrey12(const uint8_t* row, uint32_t x, uint32_t count, Color16* colors) const;
  void ReadGrey16(const uint8_t* row, uint32_t x, uint32_t count, Color16* colors) const;
  void ReadDeepColor(const uint8_t* row, uint32_t x, uint32_t count, Color16* colors) const;

  PixelView view_;
  bool deep_;
  SampleOrder sample_order_ = SampleOrder::kNative;
  std::array<Color8, kPaletteEntries> colors_{};
};

class RowWriter {
 public:
  explicit RowWriter(const PixelView& view) noexcept;

  // Writes pixels from `x` on. With `keep`, only those whose byte in it is not 0.
  void Write8(uint8_t* row, uint32_t x, uint32_t count, const Color8* colors, const uint8_t* keep) noexcept;
  void Write16(uint8_t* row, uint32_t x, uint32_t count, const Color16* colors, const uint8_t* keep) noexcept;

 private:
  void WriteIndexed(uint8_t* row, uint32_t x, uint32_t count, const Color8* colors,
                    const uint8_t* keep) noexcept;
  void WriteShallow(uint8_t* row, uint32_t x, uint32_t count, const Color8* colors,
                    const uint8_t* keep) noexcept;
  void PutDeep(uint8_t* row, uint32_t x, Color16 color) const noexcept;

  PixelView view_;
  PaletteMatcher matcher_;
};

// Fills the pixels of one row with a colour of the interface, 0x00BBGGRR.
void FillRow(const PixelView& view, uint32_t color, uint8_t* row) noexcept;

}  // namespace tavi::host

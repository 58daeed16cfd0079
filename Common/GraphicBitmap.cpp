#include "GraphicBitmap.h"

#include <cstring>

namespace tavi {

TAVI_UNIT(L"Common/GraphicBitmap")

namespace {

constexpr uint32_t kPlain = 1;
constexpr uint32_t kAttached = 2;
constexpr uint32_t kTopDown = 1;
constexpr uint32_t kSourceCopy = 0xCC0020;

// The two colours of a bilevel symbol. Any other letter leaves both black.
struct LetterColours {
  char letter;
  HostPaletteEntry background;
  HostPaletteEntry symbol;
};
constexpr HostPaletteEntry kBlackEntry = {0, 0, 0, 0};
constexpr HostPaletteEntry kWhiteEntry = {255, 255, 255, 0};
constexpr LetterColours kLetterColours[] = {
    {'B', kBlackEntry, {255, 0, 0, 0}},  //
    {'K', kWhiteEntry, kBlackEntry},    {'N', kBlackEntry, kWhiteEntry},
    {'W', kBlackEntry, kWhiteEntry},    {'O', kBlackEntry, {0, 150, 255, 0}},
    {'R', kBlackEntry, {0, 0, 255, 0}}, {'Y', kBlackEntry, {0, 255, 255, 0}},
};

using Palette = HostArray<HostPaletteEntry>;

bool MakePalette(Palette& palette, char letter) {
  if (!palette.Allocate(2, Here())) return false;
  for (const LetterColours& colours : kLetterColours) {
    if (colours.letter != letter) continue;
    palette[0] = colours.background;
    palette[1] = colours.symbol;
  }
  return true;
}

// The background's colour, which painting leaves out. Deeper symbols have no such palette: black is left out of them.
uint32_t TransparentColour(const Palette& palette) {
  if (!palette.exists()) return 0;
  const HostPaletteEntry& entry = palette[0];
  return static_cast<uint32_t>(entry.blue) << 16 | static_cast<uint32_t>(entry.green) << 8 | entry.red;
}

// The eight bits from a bit position on; zeros behind the data.
uint8_t BitsAt(const uint8_t* data, uint64_t size, uint64_t position) {
  const uint64_t at = position / 8;
  const uint32_t high = data[at];
  const uint32_t low = at + 1 < size ? data[at + 1] : 0;
  return static_cast<uint8_t>((high << 8 | low) >> (8 - position % 8));
}

int32_t MakeBitmap(const GrSubHdr& graphic, HostArray<uint8_t>& data, const Palette& palette,
                   OwnedBitmap& bitmap) {
  const auto width = static_cast<uint32_t>(NumberOf(graphic.Text.NPIXPL));
  const auto height = static_cast<uint32_t>(NumberOf(graphic.Text.NLIPS));
  if (!palette.exists()) {
    return HostCreateBitmap(bitmap.get(), sizeof(HostBitmap), kAttached, width, height, graphic.SymbolBits, 0,
                            nullptr, kTopDown, data.data(), data.size());
  }
  const int32_t status = HostCreateBitmap(bitmap.get(), sizeof(HostBitmap), kPlain, width, height, 1, 0,
                                          palette.data(), kTopDown, nullptr, 0);
  if (status != SUCCESS) return status;
  return UnpackBilevelSymbol(data.data(), data.size(), bitmap.get(), bitmap->bytes_per_line);
}

}  // namespace

int32_t DrawBitmapSymbol(GrSubHdr& graphic, HostArray<uint8_t>& data, HostDrawingContext dc,
                         int32_t row_offset, int32_t column_offset) {
  const char letter = graphic.Text.SCOLOR[0];
  Palette palette;
  if (graphic.SymbolBits == 1 && !MakePalette(palette, letter)) return ERR_NO_MEMORY;
  OwnedBitmap bitmap;
  const int32_t status = MakeBitmap(graphic, data, palette, bitmap);
  if (status != SUCCESS) return status;
  // A colour table has its way over the letter, but what is left out stays the letter's background.
  if (graphic.Lut.exists()) HostPutBitmapColors(bitmap.get(), 0, graphic.LutEntries, graphic.Lut.data());

  const int32_t row = WrapAdd(row_offset, graphic.LocationRow);
  const int32_t column = WrapAdd(column_offset, graphic.LocationColumn);
  HostRect place;
  SetRect(&place, column, row, WrapAdd(column, NumberOf(graphic.Text.NPIXPL)),
          WrapAdd(row, NumberOf(graphic.Text.NLIPS)));
  const PaintPalette selected(dc, bitmap.get(), Here());
  if (letter == 'N') {
    return HostPaintBitmap(dc, bitmap.get(), nullptr, nullptr, &place, nullptr, kSourceCopy);
  }
  return HostPaintBitmapKeyed(dc, bitmap.get(), nullptr, nullptr, &place, nullptr, 1000, 1, 1, 1, 1, 1, 1, 1,
                              TransparentColour(palette), 0, 0, kSourceCopy);
}

int32_t UnpackBilevelSymbol(const uint8_t* data, uint64_t size, HostBitmap* bitmap, uint64_t line) {
  if (bitmap->height == 0) return SUCCESS;
  HostArray<uint8_t> row;
  if (!row.Allocate(line, Here())) return ERR_NO_MEMORY;
  const uint64_t width = bitmap->width;
  if ((width + 7) / 8 > line) return ERR_FILE_FORMAT;
  uint64_t position = 0;
  for (uint32_t y = 0; y < bitmap->height; ++y, position += width) {
    if ((position + width + 7) / 8 > size) return ERR_FILE_FORMAT;
    for (uint64_t x = 0; x < width; x += 8) row[x / 8] = BitsAt(data, size, position + x);
    if (const uint64_t rest = width % 8; rest != 0) {
      uint8_t& last = row[width / 8];
      last = static_cast<uint8_t>(last & (0xFF00U >> rest));
    }
    HostPutBitmapRow(bitmap, row.data(), y, line);
  }
  return SUCCESS;
}

}  // namespace tavi

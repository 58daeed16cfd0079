// Where the characters of a text stand.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "TaviVector/Fonts.h"

namespace tavi::host::vec {

struct PlacedGlyph {
  const Glyph* glyph = nullptr;
  uint32_t color = 0;
  Affine to_text;  // from units of the em
};

struct TextBox {
  Box box;
  uint32_t color = 0;
};

// Text space: x along the base vector, y along the up vector, in units of the drawing, the origin at the text's point.
struct LaidText {
  std::vector<TextBox> boxes;  // behind the glyphs
  std::vector<PlacedGlyph> glyphs;
  Box extent;  // of all character cells
  Affine to_drawing;
};

LaidText LayOut(const Drawing& drawing, const Text& text);

// The characters of UTF-8 text, without control characters. What is no UTF-8 becomes U+FFFD.
std::u32string CharactersOf(const std::string& text);

}  // namespace tavi::host::vec

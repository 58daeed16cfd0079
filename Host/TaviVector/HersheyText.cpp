// The Hershey faces, drawn as strokes.
// The library's header is one of plain C.
extern "C" {
#include <hersheyfont.h>
}

#include <array>

#include "TaviVector/FontFaces.h"

namespace tavi::host::vec {
namespace {

// Units of the font data: capitals are 21 high and a character's cell 32.
constexpr double kUnitsInEm = 32;
constexpr size_t kCharacters = 128;

// Cartographic faces are small simplex ones, which stand in for them.
const char* NameOf(HersheyFace face) {
  static constexpr std::array<const char*, 16> kNames{
      "rowmans", "greeks",   "rowmans", "greeks",  "scripts", "timesr",    "timesg",    "scriptc",
      "timesi",  "cyrilc_1", "rowmand", "rowmant", "timesib", "gothicger", "gothiceng", "gothicita"};
  const auto index = static_cast<size_t>(face);
  return index < kNames.size() ? kNames[index] : kNames[2];
}

class StrokeFace : public Face {
 public:
  explicit StrokeFace(hershey_font* font) {
    metrics_ = {25 / kUnitsInEm, 7 / kUnitsInEm, 21 / kUnitsInEm};
    for (size_t i = 0; i < kCharacters; ++i) {
      const hershey_glyph* const glyph = hershey_font_glyph(font, static_cast<unsigned char>(i));
      if (glyph != nullptr) Take(*glyph, &glyphs_[i]);
    }
  }

  const Glyph& At(char32_t character) const override {
    return glyphs_[character >= U' ' && character < kCharacters - 1 ? character : U'?'];
  }

 private:
  static void Take(const hershey_glyph& from, Glyph* glyph) {
    glyph->advance = from.width / kUnitsInEm;
    for (const hershey_path* path = from.paths; path != nullptr; path = path->next) {
      std::vector<Point> line;
      for (unsigned i = 0; i < path->nverts; ++i) {
        line.push_back({path->verts[i].x / kUnitsInEm, path->verts[i].y / kUnitsInEm});
        Include(glyph->box, line.back());
      }
      if (!line.empty()) glyph->strokes.push_back(std::move(line));
    }
    glyph->box = Grown(glyph->box, kHersheyLine);
  }

  std::array<Glyph, kCharacters> glyphs_;
};

struct FontCloser {
  void operator()(hershey_font* font) const { hershey_font_free(font); }
};

}  // namespace

std::unique_ptr<Face> OpenHersheyFace(HersheyFace face) {
  const std::unique_ptr<hershey_font, FontCloser> font(hershey_font_load(NameOf(face)));
  return font != nullptr ? std::make_unique<StrokeFace>(font.get()) : nullptr;
}

}  // namespace tavi::host::vec

// Faces from the fonts of the system, unhinted, so that a text has one shape at every scale.
#include <fontconfig/fontconfig.h>
#include <ft2build.h>

#include <array>
#include <mutex>
#include <new>
#include <stdexcept>
#include <unordered_map>
#include <utility>

#include "TaviVector/FontFaces.h"
#include FT_FREETYPE_H
#include FT_OUTLINE_H
#include FT_TRUETYPE_TABLES_H

namespace tavi::host::vec {
namespace {

// What the library calls back must not let an exception out: it is written in C.
template <class Work>
int Guarded(Work work) noexcept {
  try {
    work();
    return 0;
  } catch (const std::bad_alloc&) {
    return FT_Err_Out_Of_Memory;
  } catch (const std::length_error&) {
    return FT_Err_Out_Of_Memory;
  }
}

// Collects the curves of a glyph.
class OutlineReader {
 public:
  OutlineReader(double scale, Glyph* glyph) : scale_(scale), glyph_(glyph) {}

  bool Read(FT_Outline* outline) {
    static constexpr FT_Outline_Funcs kFunctions{&Move, &Line, &Conic, &Cubic, 0, 0};
    return FT_Outline_Decompose(outline, &kFunctions, this) != FT_Err_Out_Of_Memory;
  }

 private:
  static OutlineReader& Self(void* user) { return *static_cast<OutlineReader*>(user); }
  static int Move(const FT_Vector* to, void* user) {
    return Guarded([&] {
      OutlineReader& self = Self(user);
      self.at_ = self.Take(to);
      self.glyph_->outlines.push_back({self.at_, {}, true});
    });
  }
  static int Line(const FT_Vector* to, void* user) {
    return Guarded([&] {
      OutlineReader& self = Self(user);
      const Point end = self.Take(to);
      self.Add({self.at_, end, end});
    });
  }
  static int Conic(const FT_Vector* control, const FT_Vector* to, void* user) {
    return Guarded([&] {
      OutlineReader& self = Self(user);
      const Point middle = self.Take(control);
      const Point end = self.Take(to);
      self.Add({self.at_ + (2.0 / 3) * (middle - self.at_), end + (2.0 / 3) * (middle - end), end});
    });
  }
  static int Cubic(const FT_Vector* first, const FT_Vector* second, const FT_Vector* to, void* user) {
    return Guarded([&] {
      OutlineReader& self = Self(user);
      self.Add({self.Take(first), self.Take(second), self.Take(to)});
    });
  }

  Point Take(const FT_Vector* at) {
    const Point p{static_cast<double>(at->x) * scale_, static_cast<double>(at->y) * scale_};
    Include(glyph_->box, p);
    return p;
  }
  void Add(const std::array<Point, 3>& curve) {
    if (glyph_->outlines.empty()) return;
    glyph_->outlines.back().curves.push_back(curve);
    at_ = curve[2];
  }

  double scale_;
  Glyph* glyph_;
  Point at_;
};

struct FaceCloser {
  void operator()(FT_Face face) const { FT_Done_Face(face); }
};
using OwnedFace = std::unique_ptr<FT_FaceRec, FaceCloser>;

class OutlineFace : public Face {
 public:
  explicit OutlineFace(OwnedFace face) : face_(std::move(face)), scale_(1.0 / face_->units_per_EM) {
    metrics_.ascent = face_->ascender * scale_;
    metrics_.descent = -face_->descender * scale_;
    const auto* const os2 = static_cast<const TT_OS2*>(FT_Get_Sfnt_Table(face_.get(), FT_SFNT_OS2));
    if (os2 != nullptr && os2->version >= 2 && os2->version != 0xFFFF && os2->sCapHeight > 0) {
      metrics_.cap = os2->sCapHeight * scale_;
    } else {
      const Glyph& h = Find(U'H');
      metrics_.cap = h.box.IsEmpty() ? 0.8 * metrics_.ascent : h.box.high.y;
    }
  }

  const Glyph& At(char32_t character) const override { return Find(character); }

 private:
  const Glyph& Find(char32_t character) const {
    const std::lock_guard lock(mutex_);
    const FT_UInt index = FT_Get_Char_Index(face_.get(), character);
    const auto known = glyphs_.find(index);
    if (known != glyphs_.end()) return known->second;
    return glyphs_.emplace(index, Load(index)).first->second;
  }

  // A glyph that cannot be read is blank.
  Glyph Load(FT_UInt index) const {
    Glyph glyph;
    constexpr FT_Int32 kAsDesigned = FT_LOAD_NO_SCALE | FT_LOAD_NO_HINTING | FT_LOAD_NO_BITMAP;
    const FT_Error error = FT_Load_Glyph(face_.get(), index, kAsDesigned);
    if (error == FT_Err_Out_Of_Memory) throw std::bad_alloc();
    if (error != 0) return glyph;
    glyph.advance = static_cast<double>(face_->glyph->metrics.horiAdvance) * scale_;
    if (face_->glyph->format == FT_GLYPH_FORMAT_OUTLINE &&
        !OutlineReader(scale_, &glyph).Read(&face_->glyph->outline)) {
      throw std::bad_alloc();
    }
    return glyph;
  }

  OwnedFace face_;
  double scale_;
  mutable std::mutex mutex_;
  mutable std::unordered_map<FT_UInt, Glyph> glyphs_;  // their addresses stay
};

struct PatternCloser {
  void operator()(FcPattern* pattern) const { FcPatternDestroy(pattern); }
};
using OwnedPattern = std::unique_ptr<FcPattern, PatternCloser>;

const char* NameOf(FontFamily family) {
  if (family == FontFamily::kSerif) return "Liberation Serif";
  return family == FontFamily::kMono ? "Liberation Mono" : "Liberation Sans";
}

const char* GenericOf(FontFamily family) {
  if (family == FontFamily::kSerif) return "serif";
  return family == FontFamily::kMono ? "monospace" : "sans-serif";
}

void AddName(FcPattern* pattern, const char* name) {
  FcPatternAddString(pattern, FC_FAMILY, reinterpret_cast<const FcChar8*>(name));
}

// The installed font that suits best, null when there are none.
OwnedPattern FindFont(FontFamily family, bool bold, bool italic) {
  const OwnedPattern wish(FcPatternCreate());
  if (wish == nullptr) return nullptr;
  AddName(wish.get(), NameOf(family));
  AddName(wish.get(), GenericOf(family));
  FcPatternAddInteger(wish.get(), FC_WEIGHT, bold ? FC_WEIGHT_BOLD : FC_WEIGHT_REGULAR);
  FcPatternAddInteger(wish.get(), FC_SLANT, italic ? FC_SLANT_ITALIC : FC_SLANT_ROMAN);
  FcPatternAddBool(wish.get(), FC_OUTLINE, FcTrue);
  FcConfigSubstitute(nullptr, wish.get(), FcMatchPattern);
  FcDefaultSubstitute(wish.get());
  FcResult result = FcResultNoMatch;
  return OwnedPattern(FcFontMatch(nullptr, wish.get(), &result));
}

FT_Library Library() {
  static FT_Library library = nullptr;
  if (library == nullptr && FT_Init_FreeType(&library) != 0) library = nullptr;
  return library;
}

}  // namespace

std::unique_ptr<Face> OpenOutlineFace(FontFamily family, bool bold, bool italic) {
  if (Library() == nullptr || FcInit() == FcFalse) return nullptr;
  const OwnedPattern font = FindFont(family, bold, italic);
  FcChar8* file = nullptr;
  if (font == nullptr || FcPatternGetString(font.get(), FC_FILE, 0, &file) != FcResultMatch) return nullptr;
  int index = 0;
  if (FcPatternGetInteger(font.get(), FC_INDEX, 0, &index) != FcResultMatch) index = 0;
  FT_Face opened = nullptr;
  if (FT_New_Face(Library(), reinterpret_cast<const char*>(file), index, &opened) != 0) return nullptr;
  OwnedFace face(opened);
  if (!FT_IS_SCALABLE(opened) || opened->units_per_EM == 0) return nullptr;
  return std::make_unique<OutlineFace>(std::move(face));
}

}  // namespace tavi::host::vec

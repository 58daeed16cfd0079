#include "TaviVector/Fonts.h"

#include <array>
#include <mutex>

#include "TaviVector/FontFaces.h"

namespace tavi::host::vec {
namespace {

// Stands in where there are no fonts at all: a box for every character but the blank.
class BoxFace : public Face {
 public:
  BoxFace() {
    blank_.advance = box_.advance = 0.5;
    box_.strokes = {{{0.06, 0}, {0.44, 0}, {0.44, 0.7}, {0.06, 0.7}, {0.06, 0}}};
    box_.box = {{0.06, 0}, {0.44, 0.7}};
  }
  const Glyph& At(char32_t character) const override { return character == U' ' ? blank_ : box_; }

 private:
  Glyph blank_;
  Glyph box_;
};

constexpr size_t kHersheyFaces = 16;
constexpr size_t kOutlineFaces = 12;  // three families in four styles

class Faces {
 public:
  const Face& Of(const Font& font) {
    const std::lock_guard lock(mutex_);
    std::unique_ptr<Face>& place = faces_[PlaceOf(font)];
    if (place == nullptr) place = Open(font);
    return *place;
  }

 private:
  static size_t PlaceOf(const Font& font) {
    if (font.family == FontFamily::kHershey) {
      return kOutlineFaces + std::min(static_cast<size_t>(font.hershey), kHersheyFaces - 1);
    }
    return std::min(static_cast<size_t>(font.family), size_t{2}) * 4 + (font.bold ? 2 : 0) +
           (font.italic ? 1 : 0);
  }

  static std::unique_ptr<Face> Open(const Font& font) {
    const bool hershey = font.family == FontFamily::kHershey;
    std::unique_ptr<Face> face =
        hershey ? OpenHersheyFace(font.hershey) : OpenOutlineFace(font.family, font.bold, font.italic);
    if (face == nullptr) {
      face = hershey ? OpenOutlineFace(FontFamily::kSans, false, false)
                     : OpenHersheyFace(HersheyFace::kSimplexRoman);
    }
    if (face == nullptr) face = std::make_unique<BoxFace>();
    return face;
  }

  std::mutex mutex_;
  std::array<std::unique_ptr<Face>, kOutlineFaces + kHersheyFaces> faces_;
};

}  // namespace

const Face& FaceOf(const Font& font) {
  // Never destroyed: drawings may be painted until the process ends.
  static auto* const faces = new Faces;
  return faces->Of(font);
}

}  // namespace tavi::host::vec

// Typefaces: glyphs as outlines and strokes, in units of the em, y upward from the base line. Faces live as long as the
// process and may be used from any thread.
#pragma once

#include <vector>

#include "TaviVector/Drawing.h"
#include "TaviVector/Geometry.h"

namespace tavi::host::vec {

struct Glyph {
  double advance = 0;
  std::vector<Contour> outlines;            // filled, by the winding rule
  std::vector<std::vector<Point>> strokes;  // drawn as lines
  Box box;                                  // holds all of it
};

struct FontMetrics {
  double ascent = 0.8;
  double descent = 0.2;  // downward
  double cap = 0.7;
};

class Face {
 public:
  virtual ~Face() = default;
  // Characters that the face lacks get its sign for that.
  virtual const Glyph& At(char32_t character) const = 0;
  const FontMetrics& metrics() const { return metrics_; }

 protected:
  FontMetrics metrics_;
};

// The face of a font. A font that is not installed is replaced by the nearest that is, and in the end by the
// host's own boxes.
const Face& FaceOf(const Font& font);

// Stroke faces are drawn with lines of this width, times the em.
inline constexpr double kHersheyLine = 1.0 / 24;

}  // namespace tavi::host::vec

// Contours out of shapes, for figures and compound lines, which join primitives into one.
#pragma once

#include <vector>

#include "TaviVector/Drawing.h"

namespace tavi::host::cgm {

// The outline of a shape; of texts, markers and cells nothing.
std::vector<vec::Contour> ContoursOf(const vec::Shape& shape);

enum class PathKind : uint8_t { kFigure, kCompoundLine };

class PathBuilder {
 public:
  explicit PathBuilder(PathKind kind) : kind_(kind) {}

  PathKind kind() const { return kind_; }
  // In a figure an open line goes on where the last one ended, with a straight line between them, which belongs to the
  // outline whether or not CONNECTING EDGE asks for it; in a compound line only lines that meet are joined.
  void Add(const vec::Shape& shape);
  // Closes the outline that is being made.
  void NewRegion();
  std::vector<vec::Contour> Take();

 private:
  void Join(vec::Contour contour);

  PathKind kind_;
  bool open_ = false;  // the last contour can still grow
  std::vector<vec::Contour> contours_;
};

}  // namespace tavi::host::cgm

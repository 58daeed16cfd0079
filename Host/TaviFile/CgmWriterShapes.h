// The primitives of a metafile that is being written.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "TaviFile/CgmWriterAttributes.h"
#include "TaviFile/CgmWriterElements.h"
#include "TaviVector/Drawing.h"

namespace tavi::host::cgm {

// The text in Latin-1, with question marks for what that lacks.
std::string Latin1Of(const std::string& utf8);
// Whether it lacks nothing.
bool IsLatin1(const std::string& utf8);

class ShapeWriter {
 public:
  // Straight lines may stray by the tolerance from the curve that they stand for.
  ShapeWriter(const vec::Drawing& drawing, double tolerance, AttributeWriter* attributes, ElementWriter* out)
      : drawing_(drawing), tolerance_(tolerance), attributes_(*attributes), out_(*out) {}

  void Write(const vec::Shape& shape);

 private:
  // A part of a cell array: columns and rows from first to before last.
  struct CellPart {
    uint32_t first_column, last_column, first_row, last_row;
  };

  void Put(const vec::Polyline& line);
  void Put(const vec::Segments& segments);
  void Put(const vec::Polygon& polygon);
  void Put(const vec::Rectangle& rectangle);
  void Put(const vec::Ellipse& ellipse);
  void Put(const vec::Arc& arc);
  void Put(const vec::Figure& figure);
  void Put(const vec::Markers& markers);
  void Put(const vec::Text& text);
  void Put(const vec::CellArray& cells);

  const vec::Stroke* StrokeAt(uint32_t index) const;
  const vec::Fill* FillAt(uint32_t index) const;
  // False where there is nothing to draw with.
  bool SetLine(uint32_t stroke);
  // Writes the area, in two goes when its interior and its edge want gaps of different colours.
  template <class Primitive>
  void WriteArea(const vec::AreaStyle& style, Primitive primitive);
  template <class Primitive>
  void WriteAreaOnce(const vec::Fill* fill, const vec::Stroke* edge, const GapWish& gap, Primitive primitive);

  void WritePoints(ElementCode code, const std::vector<vec::Point>& points);
  void WriteRings(const std::vector<vec::Ring>& rings);
  void WriteRingSet(const std::vector<vec::Ring>& rings);
  void WriteEllipse(vec::Point centre, vec::Point a, vec::Point b);
  void WriteArc(const vec::Arc& arc);
  void WriteArcElement(const vec::Arc& arc);
  void WriteFlattened(const vec::Arc& arc);
  void WriteCells(const vec::CellArray& cells, const CellPart& part);
  void WriteSeenCells(const vec::CellArray& cells);

  const vec::Drawing& drawing_;
  double tolerance_;
  AttributeWriter& attributes_;
  ElementWriter& out_;
};

}  // namespace tavi::host::cgm

#include "TaviFile/CgmWriterShapes.h"

#include <algorithm>
#include <cmath>
#include <numbers>

#include "TaviFile/CgmTextMeasure.h"
#include "TaviVector/Geometry.h"

namespace tavi::host::cgm {
namespace {

using namespace vec;

enum EdgeOut : int64_t { kInvisible, kVisible, kCloseInvisible, kCloseVisible };

bool SamePlace(Point a, Point b) {
  return ToVdc(a.x) == ToVdc(b.x) && ToVdc(-a.y) == ToVdc(-b.y);
}

// Without the points that fall on the one before when they are rounded.
std::vector<Point> Thinned(const std::vector<Point>& points) {
  std::vector<Point> kept;
  for (const Point& point : points) {
    if (kept.empty() || !SamePlace(kept.back(), point)) kept.push_back(point);
  }
  return kept;
}

std::vector<Point> Flatten(const Contour& contour, double tolerance) {
  std::vector<Point> points{contour.start};
  for (const auto& curve : contour.curves) {
    const Point from = points.back();
    const bool straight = curve[0] == from && curve[1] == curve[2];
    if (straight) {
      points.push_back(curve[2]);
    } else {
      FlattenCurve(from, curve, tolerance, &points);
    }
  }
  return Thinned(points);
}

bool IsCircular(Point a, Point b) {
  constexpr double kPart = 1e-9;
  const double size = Dot(a, a) + Dot(b, b);
  return std::abs(Dot(a, b)) <= kPart * size && std::abs(Dot(a, a) - Dot(b, b)) <= kPart * size;
}

bool IsFullTurn(double sweep) {
  return std::abs(sweep) >= kFullTurn - 1e-9;
}

Point Rounded(Point p) {
  return {static_cast<double>(ToVdc(p.x)), -static_cast<double>(ToVdc(-p.y))};
}

// A direction as whole numbers, as long as 16 bits allow.
Point WholeRay(Point direction) {
  constexpr double kLength = 32000;
  const double largest = std::max(std::abs(direction.x), std::abs(direction.y));
  return largest > 0 ? Rounded(kLength / largest * direction) : Point{};
}

// What the elements of arcs hold: the axes from rounded points, and the rays of both ends. The parameter always grows.
struct ArcRays {
  explicit ArcRays(const Arc& arc)
      : turn(arc.sweep < 0 ? -1 : 1),
        centre(Rounded(arc.centre)),
        a(arc.a),
        b(turn * arc.b),
        // In a space with y downward positive angles run clockwise as the drawing sees it.
        circular(IsCircular(a, b) && Cross(a, b) < 0) {
    if (!circular) {
      a = Rounded(arc.centre + a) - centre;
      b = Rounded(arc.centre + b) - centre;
    }
    first = RayAt(turn * arc.start);
    last = RayAt(turn * (arc.start + arc.sweep));
  }
  Point RayAt(double t) const { return WholeRay(std::cos(t) * a + std::sin(t) * b); }
  bool IsFlat() const { return Cross(a, b) == 0; }

  double turn;  // of the parameter: 1 or -1
  Point centre, a, b;
  bool circular;
  Point first, last;
};

uint32_t Decode(const std::string& text, size_t* at) {
  const auto octet = [&text](size_t i) {
    return i < text.size() ? static_cast<uint32_t>(static_cast<uint8_t>(text[i])) : 0;
  };
  const uint32_t lead = octet((*at)++);
  if (lead < 0xC0) return lead;
  const size_t more = lead < 0xE0 ? 1 : lead < 0xF0 ? 2 : 3;
  uint32_t value = lead & (0x3Fu >> more);
  for (size_t i = 0; i < more && (octet(*at) & 0xC0) == 0x80; ++i)
    value = value << 6 | (octet((*at)++) & 0x3F);
  return value;
}

}  // namespace

std::string Latin1Of(const std::string& utf8) {
  std::string text;
  for (size_t at = 0; at < utf8.size();) {
    const uint32_t value = Decode(utf8, &at);
    text.push_back(value < 0x100 ? static_cast<char>(value) : '?');
  }
  return text;
}

bool IsLatin1(const std::string& utf8) {
  for (size_t at = 0; at < utf8.size();) {
    if (Decode(utf8, &at) >= 0x100) return false;
  }
  return true;
}

void ShapeWriter::Write(const Shape& shape) {
  std::visit([this](const auto& kind) { Put(kind); }, shape);
}

const Stroke* ShapeWriter::StrokeAt(uint32_t index) const {
  return index < drawing_.strokes.size() ? &drawing_.strokes[index] : nullptr;
}

const Fill* ShapeWriter::FillAt(uint32_t index) const {
  return index < drawing_.fills.size() ? &drawing_.fills[index] : nullptr;
}

bool ShapeWriter::SetLine(uint32_t stroke) {
  const Stroke* const style = StrokeAt(stroke);
  if (style == nullptr) return false;
  attributes_.SetGap(GapOf(style));
  attributes_.SetLine(*style);
  return true;
}

template <class Primitive>
void ShapeWriter::WriteAreaOnce(const Fill* fill, const Stroke* edge, const GapWish& gap,
                                Primitive primitive) {
  attributes_.SetGap(gap);
  attributes_.SetArea(fill, edge);
  primitive();
}

template <class Primitive>
void ShapeWriter::WriteArea(const AreaStyle& style, Primitive primitive) {
  const Fill* const fill = FillAt(style.fill);
  const Stroke* const edge = StrokeAt(style.edge);
  const GapWish inner = GapOf(fill);
  const GapWish outer = GapOf(edge);
  if (inner && outer && *inner != *outer) {
    WriteAreaOnce(fill, nullptr, inner, primitive);
    WriteAreaOnce(nullptr, edge, outer, primitive);
  } else {
    WriteAreaOnce(fill, edge, inner ? inner : outer, primitive);
  }
}

void ShapeWriter::WritePoints(ElementCode code, const std::vector<Point>& points) {
  out_.Begin(code);
  for (const Point& point : points) out_.PointOf(point);
  out_.End();
}

// A single point is a line to itself.
void ShapeWriter::Put(const Polyline& line) {
  if (line.points.empty() || !SetLine(line.stroke)) return;
  std::vector<Point> points = line.points;
  if (points.size() == 1) points.push_back(points[0]);
  WritePoints(code::kPolyline, points);
}

void ShapeWriter::Put(const Segments& segments) {
  if (segments.points.size() < 2 || !SetLine(segments.stroke)) return;
  std::vector<Point> points = segments.points;
  points.resize(points.size() / 2 * 2);
  WritePoints(code::kDisjointPolyline, points);
}

// Rings of fewer than three points repeat the last one: readers expect three.
void ShapeWriter::WriteRings(const std::vector<Ring>& rings) {
  std::vector<Ring> kept;
  bool all_visible = true;
  for (const Ring& ring : rings) {
    if (ring.points.empty()) continue;
    kept.push_back(ring);
    if (ring.points.size() < 3) kept.back().points.resize(3, ring.points.back());
    all_visible = all_visible && std::find(ring.visible.begin(), ring.visible.end(), 0) == ring.visible.end();
  }
  if (kept.size() == 1 && all_visible) {
    WritePoints(code::kPolygon, kept[0].points);
  } else if (!kept.empty()) {
    WriteRingSet(kept);
  }
}

void ShapeWriter::WriteRingSet(const std::vector<Ring>& rings) {
  out_.Begin(code::kPolygonSet);
  for (const Ring& ring : rings) {
    for (size_t i = 0; i < ring.points.size(); ++i) {
      const bool visible = i >= ring.visible.size() || ring.visible[i] != 0;
      const bool last = i + 1 == ring.points.size();
      out_.PointOf(ring.points[i]);
      if (last) {
        out_.Integer(visible ? kCloseVisible : kCloseInvisible);
      } else {
        out_.Integer(visible ? kVisible : kInvisible);
      }
    }
  }
  out_.End();
}

void ShapeWriter::Put(const Polygon& polygon) {
  const auto has_points = [](const Ring& ring) { return !ring.points.empty(); };
  if (std::none_of(polygon.rings.begin(), polygon.rings.end(), has_points)) return;
  WriteArea(polygon.style, [&] { WriteRings(polygon.rings); });
}

void ShapeWriter::Put(const Rectangle& rectangle) {
  WriteArea(rectangle.style, [&] { WritePoints(code::kRectangle, {rectangle.corner, rectangle.opposite}); });
}

void ShapeWriter::WriteEllipse(Point centre, Point a, Point b) {
  if (!IsCircular(a, b)) {
    WritePoints(code::kEllipse, {centre, centre + a, centre + b});
    return;
  }
  out_.Begin(code::kCircle);
  out_.PointOf(centre);
  out_.Vdc(ToVdc(Length(a)));
  out_.End();
}

void ShapeWriter::Put(const Ellipse& ellipse) {
  WriteArea(ellipse.style, [&] { WriteEllipse(ellipse.centre, ellipse.a, ellipse.b); });
}

void ShapeWriter::Put(const Arc& arc) {
  if (arc.closure != Closure::kOpen) {
    WriteArea(arc.style, [&] { WriteArc(arc); });
  } else if (SetLine(arc.stroke)) {
    WriteArc(arc);
  }
}

// Arcs whose ends meet are not written as such: whether they are nothing or all of the ellipse is open.
void ShapeWriter::WriteArc(const Arc& arc) {
  const bool full = IsFullTurn(arc.sweep);
  const ArcRays rays(arc);
  if (full && arc.closure == Closure::kChord) {
    WriteEllipse(arc.centre, arc.a, arc.b);
  } else if (full && arc.closure == Closure::kOpen && !rays.IsFlat()) {
    Arc half = arc;
    half.sweep = std::copysign(std::numbers::pi, arc.sweep);
    WriteArcElement(half);
    half.start += half.sweep;
    WriteArcElement(half);
  } else if (full || rays.IsFlat() || rays.first == rays.last) {
    WriteFlattened(arc);
  } else {
    WriteArcElement(arc);
  }
}

void ShapeWriter::WriteArcElement(const Arc& arc) {
  const ArcRays rays(arc);
  const bool open = arc.closure == Closure::kOpen;
  if (rays.circular) {
    out_.Begin(open ? code::kCircularArc : code::kCircularArcClose);
    out_.PointOf(rays.centre);
  } else {
    out_.Begin(open ? code::kEllipticalArc : code::kEllipticalArcClose);
    out_.PointOf(rays.centre);
    out_.PointOf(rays.centre + rays.a);
    out_.PointOf(rays.centre + rays.b);
  }
  out_.PointOf(rays.first);
  out_.PointOf(rays.last);
  if (rays.circular) out_.Vdc(ToVdc(Length(arc.a)));
  if (!open) out_.Integer(arc.closure == Closure::kChord);
  out_.End();
}

void ShapeWriter::WriteFlattened(const Arc& arc) {
  std::vector<Point> points =
      Thinned(FlattenArc(arc.centre, arc.a, arc.b, arc.start, TameSweep(arc.sweep), tolerance_));
  if (arc.closure == Closure::kPie) points.push_back(arc.centre);
  if (arc.closure != Closure::kOpen) {
    WriteRings({Ring{points, {}}});
    return;
  }
  if (points.size() == 1) points.push_back(points[0]);
  WritePoints(code::kPolyline, points);
}

void ShapeWriter::Put(const Figure& figure) {
  const bool lines = FillAt(figure.style.fill) == nullptr && StrokeAt(figure.style.edge) == nullptr;
  if (lines) {
    for (const Contour& contour : figure.contours) {
      Polyline line{Flatten(contour, tolerance_), figure.stroke};
      if (contour.closed) line.points.push_back(line.points[0]);
      Put(line);
    }
    return;
  }
  Polygon polygon;
  for (const Contour& contour : figure.contours) polygon.rings.push_back({Flatten(contour, tolerance_), {}});
  polygon.style = figure.style;
  Put(polygon);
}

void ShapeWriter::Put(const Markers& markers) {
  if (markers.points.empty() || markers.marker >= drawing_.markers.size()) return;
  attributes_.SetMarker(drawing_.markers[markers.marker]);
  WritePoints(code::kPolymarker, markers.points);
}

void ShapeWriter::Put(const Text& text) {
  for (size_t i = 0; i < text.spans.size(); ++i) {
    const TextSpan& span = text.spans[i];
    if (span.style < drawing_.texts.size())
      attributes_.SetText(drawing_.texts[span.style], text.fit.has_value(), i != 0);
    const bool latin = IsLatin1(span.text);
    attributes_.SetCharacters(!latin);
    if (i != 0) {
      out_.Begin(code::kAppendText);
    } else if (text.fit) {
      out_.Begin(code::kRestrictedText);
      out_.Vdc(ToVdc(text.fit->x));
      out_.Vdc(std::max(ToVdc(text.fit->y / kCharacterToCapitals), 1));
    } else {
      out_.Begin(code::kText);
    }
    if (i == 0) out_.PointOf(text.at);
    out_.Integer(i + 1 == text.spans.size());
    out_.String(latin ? Latin1Of(span.text) : span.text);
    out_.End();
  }
}

void ShapeWriter::Put(const CellArray& cells) {
  if (cells.columns == 0 || cells.rows == 0 || cells.colors.size() < uint64_t{cells.columns} * cells.rows) {
    return;
  }
  if (cells.transparent) {
    WriteSeenCells(cells);
  } else {
    WriteCells(cells, {0, cells.columns, 0, cells.rows});
  }
}

// Version 1 has no cells that are left out: runs of the others are arrays of their own.
void ShapeWriter::WriteSeenCells(const CellArray& cells) {
  for (uint32_t row = 0; row < cells.rows; ++row) {
    const uint32_t* const colors = cells.colors.data() + size_t{row} * cells.columns;
    for (uint32_t column = 0; column < cells.columns; ++column) {
      if (colors[column] == *cells.transparent) continue;
      const uint32_t first = column;
      while (column < cells.columns && colors[column] != *cells.transparent) ++column;
      WriteCells(cells, {first, column, row, row + 1});
    }
  }
}

// A side of more cells than an integer counts is cut in halves.
void ShapeWriter::WriteCells(const CellArray& cells, const CellPart& part) {
  constexpr uint32_t kMost = INT16_MAX;
  const uint32_t columns = part.last_column - part.first_column;
  const uint32_t rows = part.last_row - part.first_row;
  if (columns > kMost) {
    const uint32_t middle = part.first_column + columns / 2;
    WriteCells(cells, {part.first_column, middle, part.first_row, part.last_row});
    WriteCells(cells, {middle, part.last_column, part.first_row, part.last_row});
    return;
  }
  if (rows > kMost) {
    const uint32_t middle = part.first_row + rows / 2;
    WriteCells(cells, {part.first_column, part.last_column, part.first_row, middle});
    WriteCells(cells, {part.first_column, part.last_column, middle, part.last_row});
    return;
  }
  const Point along = 1.0 / cells.columns * (cells.row_end - cells.corner);
  const Point across = 1.0 / cells.rows * (cells.opposite - cells.row_end);
  const auto corner_of = [&](uint32_t column, uint32_t row) {
    return cells.corner + static_cast<double>(column) * along + static_cast<double>(row) * across;
  };
  out_.Begin(code::kCellArray);
  out_.PointOf(corner_of(part.first_column, part.first_row));
  out_.PointOf(corner_of(part.last_column, part.last_row));
  out_.PointOf(corner_of(part.last_column, part.first_row));
  out_.Integer(int64_t{columns});
  out_.Integer(int64_t{rows});
  out_.Integer(int64_t{8});  // bits of a component
  out_.Integer(int64_t{1});  // packed
  for (uint32_t row = part.first_row; row < part.last_row; ++row) {
    out_.Align();
    for (uint32_t column = part.first_column; column < part.last_column; ++column) {
      out_.Color(cells.colors[size_t{row} * cells.columns + column]);
    }
  }
  out_.End();
}

}  // namespace tavi::host::cgm

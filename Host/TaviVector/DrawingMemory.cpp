#include "TaviVector/DrawingMemory.h"

#include <atomic>
#include <utility>

#include "TaviKernel/Limits.h"

namespace tavi::host::vec {
namespace {

std::atomic<uint64_t> total{0};

template <class Element>
uint64_t Bytes(const std::vector<Element>& elements) {
  return elements.capacity() * sizeof(Element);
}

// What a shape holds beside the object itself.
uint64_t Content(const Polyline& line) {
  return Bytes(line.points);
}
uint64_t Content(const Segments& lines) {
  return Bytes(lines.points);
}
uint64_t Content(const Polygon& polygon) {
  uint64_t bytes = Bytes(polygon.rings);
  for (const Ring& ring : polygon.rings) bytes += Bytes(ring.points) + Bytes(ring.visible);
  return bytes;
}
uint64_t Content(const Figure& figure) {
  uint64_t bytes = Bytes(figure.contours);
  for (const Contour& contour : figure.contours) bytes += Bytes(contour.curves);
  return bytes;
}
uint64_t Content(const Markers& markers) {
  return Bytes(markers.points);
}
uint64_t Content(const Text& text) {
  uint64_t bytes = Bytes(text.spans);
  for (const TextSpan& span : text.spans) bytes += span.text.capacity();
  return bytes;
}
uint64_t Content(const CellArray& cells) {
  return Bytes(cells.colors);
}
template <class OtherShape>
uint64_t Content(const OtherShape&) {
  return 0;
}

// A visit that cannot throw.
template <size_t... kIndex>
uint64_t ContentOf(const Shape& shape, std::index_sequence<kIndex...>) {
  return (... + (shape.index() == kIndex ? Content(*std::get_if<kIndex>(&shape)) : 0));
}

}  // namespace

uint64_t BytesOf(const Drawing& drawing) noexcept {
  uint64_t bytes = Bytes(drawing.objects) + Bytes(drawing.strokes) + Bytes(drawing.fills) +
                   Bytes(drawing.patterns) + Bytes(drawing.markers) + Bytes(drawing.texts) +
                   Bytes(drawing.clips) + Bytes(drawing.layers);
  for (const Stroke& stroke : drawing.strokes) bytes += Bytes(stroke.dashes);
  for (const Pattern& pattern : drawing.patterns) bytes += Bytes(pattern.colors);
  for (const Object& object : drawing.objects) {
    bytes += ContentOf(object.shape, std::make_index_sequence<std::variant_size_v<Shape>>());
  }
  return bytes;
}

bool ChargeDrawing(uint64_t bytes) noexcept {
  if (IsWithin(HOST_LIMIT_DRAWINGS, total.fetch_add(bytes) + bytes)) return true;
  total -= bytes;
  return false;
}

void ReleaseDrawing(uint64_t bytes) noexcept {
  total -= bytes;
}

}  // namespace tavi::host::vec

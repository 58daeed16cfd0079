#include "TaviVector/BackColor.h"

#include <algorithm>

namespace tavi::host::vec {
namespace {

// Calls visit(color) for every colour of the drawing until one call returns true.
template <class SomeDrawing, class Visit>
bool AnyColor(SomeDrawing& drawing, Visit visit) {
  const auto maybe = [&](auto& color) { return color.has_value() && visit(*color); };
  const auto all = [&](auto& colors) { return std::any_of(colors.begin(), colors.end(), visit); };
  return std::any_of(drawing.strokes.begin(), drawing.strokes.end(),
                     [&](auto& s) { return visit(s.color) || maybe(s.gap_color); }) ||
         std::any_of(drawing.fills.begin(), drawing.fills.end(),
                     [&](auto& f) { return visit(f.color) || maybe(f.gap_color); }) ||
         std::any_of(drawing.patterns.begin(), drawing.patterns.end(),
                     [&](auto& p) { return all(p.colors); }) ||
         std::any_of(drawing.markers.begin(), drawing.markers.end(),
                     [&](auto& m) { return visit(m.color); }) ||
         std::any_of(drawing.texts.begin(), drawing.texts.end(),
                     [&](auto& t) { return visit(t.color) || maybe(t.box_color); }) ||
         std::any_of(drawing.objects.begin(), drawing.objects.end(), [&](auto& object) {
           auto* const cells = std::get_if<CellArray>(&object.shape);
           return cells != nullptr && (all(cells->colors) || maybe(cells->transparent));
         });
}

}  // namespace

const Drawing& WithBackColor(const Drawing& drawing, uint32_t back_color, std::optional<Drawing>& changed) {
  if (!AnyColor(drawing, [](const uint32_t& color) { return color == kBackColor; })) return drawing;
  changed = drawing;
  AnyColor(*changed, [&](uint32_t& color) {
    if (color == kBackColor) color = back_color;
    return false;
  });
  return *changed;
}

}  // namespace tavi::host::vec

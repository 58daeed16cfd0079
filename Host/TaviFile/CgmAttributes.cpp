// Attributes of lines, markers, text, areas and edges.
#include <array>
#include <cmath>

#include "TaviFile/CgmCells.h"
#include "TaviFile/CgmInterpreter.h"

namespace tavi::host::cgm {
namespace {

void SetIndex(Parameters& p, int64_t* index) {
  const int64_t value = p.Index();
  if (p.ok()) *index = value;
}

void SetColor(Parameters& p, ColorRef* color) {
  const ColorRef value = p.Color();
  if (p.ok()) *color = value;
}

void SetSize(Parameters& p, SizeMode mode, std::optional<Size>* size) {
  const Size value = p.SizeOf(mode);
  if (p.ok()) *size = value;
}

void SetReal(Parameters& p, double* real) {
  const double value = p.Real();
  if (p.ok()) *real = value;
}

template <class Enum>
void SetEnum(Parameters& p, int64_t last, Enum* target) {
  const int64_t value = p.Enumerated();
  if (p.ok() && value >= 0 && value <= last) *target = static_cast<Enum>(value);
}

// ---- Lines ----

void LineBundleIndex(Interpreter& in, Parameters& p) {
  SetIndex(p, &in.now.line_bundle);
}
void LineType(Interpreter& in, Parameters& p) {
  SetIndex(p, &in.now.line.type);
}
void LineWidth(Interpreter& in, Parameters& p) {
  SetSize(p, in.frame.line_width, &in.now.line.width);
}
void LineColor(Interpreter& in, Parameters& p) {
  SetColor(p, &in.now.line.color);
}

// A triangle at the end of a line is nearest to a round one.
void SetCap(Parameters& p, vec::LineCap* cap) {
  const int64_t value = p.Index();
  if (!p.ok()) return;
  *cap = value == 3 || value == 5 ? vec::LineCap::kRound
         : value == 4             ? vec::LineCap::kSquare
                                  : vec::LineCap::kButt;
}

void SetJoin(Parameters& p, vec::LineJoin* join) {
  const int64_t value = p.Index();
  if (!p.ok()) return;
  *join = value == 3 ? vec::LineJoin::kRound : value == 4 ? vec::LineJoin::kBevel : vec::LineJoin::kMitre;
}

void LineCap(Interpreter& in, Parameters& p) {
  SetCap(p, &in.now.line_ends.cap);
}
void LineJoin(Interpreter& in, Parameters& p) {
  SetJoin(p, &in.now.line_ends.join);
}

// ---- Markers ----

void MarkerBundleIndex(Interpreter& in, Parameters& p) {
  SetIndex(p, &in.now.marker_bundle);
}
void MarkerType(Interpreter& in, Parameters& p) {
  SetIndex(p, &in.now.marker.type);
}
void MarkerSize(Interpreter& in, Parameters& p) {
  SetSize(p, in.frame.marker_size, &in.now.marker.size);
}
void MarkerColor(Interpreter& in, Parameters& p) {
  SetColor(p, &in.now.marker.color);
}

// ---- Text ----

void TextBundleIndex(Interpreter& in, Parameters& p) {
  SetIndex(p, &in.now.text_bundle);
}
void TextFontIndex(Interpreter& in, Parameters& p) {
  SetIndex(p, &in.now.text.font);
}
void CharacterSpacing(Interpreter& in, Parameters& p) {
  SetReal(p, &in.now.text.spacing);
}
void TextColor(Interpreter& in, Parameters& p) {
  SetColor(p, &in.now.text.color);
}
void TextPath(Interpreter& in, Parameters& p) {
  SetEnum(p, 3, &in.now.path);
}
void CharacterSetIndex(Interpreter& in, Parameters& p) {
  SetIndex(p, &in.now.character_set);
}
void AlternateSetIndex(Interpreter& in, Parameters& p) {
  SetIndex(p, &in.now.alternate_set);
}

void CharacterExpansion(Interpreter& in, Parameters& p) {
  const double factor = p.Real();
  if (p.ok() && factor > 0) in.now.text.expansion = factor;
}

void CharacterHeight(Interpreter& in, Parameters& p) {
  const double height = p.Vdc();
  if (p.ok() && height > 0) in.now.character_height = height;
}

void CharacterOrientation(Interpreter& in, Parameters& p) {
  const Point up = p.At();
  const Point base = p.At();
  const double area = up.x * base.y - up.y * base.x;
  if (p.ok() && area != 0) in.now.orientation = {up, base};
}

void TextAlignment(Interpreter& in, Parameters& p) {
  const int64_t across = p.Enumerated();
  const int64_t upright = p.Enumerated();
  const double across_fraction = p.Real();
  const double upright_fraction = p.Real();
  if (!p.ok() || across < 0 || across > 4 || upright < 0 || upright > 6) return;
  in.now.across = static_cast<vec::TextAcross>(across);
  in.now.upright = static_cast<vec::TextUpright>(upright);
  in.now.across_fraction = across_fraction;
  in.now.upright_fraction = upright_fraction;
}

// The types whose boxes hold all of a character, below the base line too.
void RestrictedTextType(Interpreter& in, Parameters& p) {
  constexpr int64_t kBoxedAll = 3;
  constexpr int64_t kIsotropicAll = 5;
  const int64_t type = p.Index();
  if (p.ok()) in.now.boxes_capitals = type != kBoxedAll && type != kIsotropicAll;
}

// ---- Areas and edges ----

void FillBundleIndex(Interpreter& in, Parameters& p) {
  SetIndex(p, &in.now.fill_bundle);
}
void FillColor(Interpreter& in, Parameters& p) {
  SetColor(p, &in.now.fill.color);
}
void HatchIndex(Interpreter& in, Parameters& p) {
  SetIndex(p, &in.now.fill.hatch);
}
void PatternIndex(Interpreter& in, Parameters& p) {
  SetIndex(p, &in.now.fill.pattern);
}

void InteriorStyle(Interpreter& in, Parameters& p) {
  const int64_t style = p.Enumerated();
  if (p.ok() && style >= 0 && style <= 6) in.now.fill.interior = style;
}

void EdgeBundleIndex(Interpreter& in, Parameters& p) {
  SetIndex(p, &in.now.edge_bundle);
}
void EdgeType(Interpreter& in, Parameters& p) {
  SetIndex(p, &in.now.edge.type);
}
void EdgeWidth(Interpreter& in, Parameters& p) {
  SetSize(p, in.frame.edge_width, &in.now.edge.width);
}
void EdgeColor(Interpreter& in, Parameters& p) {
  SetColor(p, &in.now.edge.color);
}
void EdgeVisibility(Interpreter& in, Parameters& p) {
  SetEnum(p, 1, &in.now.edge_visible);
}
void EdgeCap(Interpreter& in, Parameters& p) {
  SetCap(p, &in.now.edge_ends.cap);
}
void EdgeJoin(Interpreter& in, Parameters& p) {
  SetJoin(p, &in.now.edge_ends.join);
}

void FillReferencePoint(Interpreter& in, Parameters& p) {
  const Point at = p.At();
  if (p.ok()) in.now.reference_point = at;
}

void PatternSize(Interpreter& in, Parameters& p) {
  const SizeMode mode = in.frame.pattern_size;
  std::array<double, 4> parts{};
  for (double& part : parts) part = p.SizeOf(mode).value;
  const double area = parts[0] * parts[3] - parts[1] * parts[2];
  if (!p.ok() || area == 0) return;
  in.now.pattern_size = {Point{parts[0], parts[1]}, Point{parts[2], parts[3]}};
  in.now.pattern_size_mode = mode;
}

// Interiors that run from colour to colour are filled with the first one. Before it stand a geometry, whose points go
// by the style, and the stages between the colours.
void InterpolatedInterior(Interpreter& in, Parameters& p) {
  constexpr int64_t kParallel = 1;
  const int64_t style = p.Index();
  const int sizes = style == kParallel ? 2 : 4;
  for (int i = 0; i < sizes; ++i) p.SizeOf(in.frame.pattern_size);
  const int64_t stages = p.Integer();
  if (!p.ok() || stages < 0 || static_cast<uint64_t>(stages) > p.left()) return;
  for (int64_t i = 0; i < stages; ++i) p.Real();
  const ColorRef first = p.Color();
  if (p.ok()) in.now.interpolated = first;
}

void PatternTable(Interpreter& in, Parameters& p) {
  const int64_t index = p.Index();
  CellLayout layout;
  layout.columns = p.Integer();
  layout.rows = p.Integer();
  layout.bits = p.Integer();
  std::vector<uint32_t> colors;
  if (!p.ok() || !ReadCells(in, p, layout, &colors)) return;
  in.DefinePattern(
      index, {static_cast<uint32_t>(layout.columns), static_cast<uint32_t>(layout.rows), std::move(colors)});
}

void ColorTableElement(Interpreter& in, Parameters& p) {
  uint32_t index = p.ColorIndex();
  const size_t bytes = p.coding().colors.components() * static_cast<size_t>(p.coding().color / 8);
  while (p.ok() && p.left() >= bytes) in.tables.colors.Set(index++, p.DirectColor());
}

void AspectSourceFlags(Interpreter& in, Parameters& p) {
  while (p.ok() && p.left() >= 4) {
    const int64_t aspect = p.Enumerated();
    const int64_t source = p.Enumerated();
    if (aspect >= 0 && aspect < static_cast<int64_t>(Aspect::kCount)) {
      in.now.bundled[static_cast<size_t>(aspect)] = source == 1;
    }
  }
}

constexpr auto kHandlers = std::to_array<Handler>({
    {5, 1, "LINE BUNDLE INDEX", LineBundleIndex},
    {5, 2, "LINE TYPE", LineType},
    {5, 3, "LINE WIDTH", LineWidth},
    {5, 4, "LINE COLOUR", LineColor},
    {5, 5, "MARKER BUNDLE INDEX", MarkerBundleIndex},
    {5, 6, "MARKER TYPE", MarkerType},
    {5, 7, "MARKER SIZE", MarkerSize},
    {5, 8, "MARKER COLOUR", MarkerColor},
    {5, 9, "TEXT BUNDLE INDEX", TextBundleIndex},
    {5, 10, "TEXT FONT INDEX", TextFontIndex},
    {5, 12, "CHARACTER EXPANSION FACTOR", CharacterExpansion},
    {5, 13, "CHARACTER SPACING", CharacterSpacing},
    {5, 14, "TEXT COLOUR", TextColor},
    {5, 15, "CHARACTER HEIGHT", CharacterHeight},
    {5, 16, "CHARACTER ORIENTATION", CharacterOrientation},
    {5, 17, "TEXT PATH", TextPath},
    {5, 18, "TEXT ALIGNMENT", TextAlignment},
    {5, 19, "CHARACTER SET INDEX", CharacterSetIndex},
    {5, 20, "ALTERNATE CHARACTER SET INDEX", AlternateSetIndex},
    {5, 21, "FILL BUNDLE INDEX", FillBundleIndex},
    {5, 22, "INTERIOR STYLE", InteriorStyle},
    {5, 23, "FILL COLOUR", FillColor},
    {5, 24, "HATCH INDEX", HatchIndex},
    {5, 25, "PATTERN INDEX", PatternIndex},
    {5, 26, "EDGE BUNDLE INDEX", EdgeBundleIndex},
    {5, 27, "EDGE TYPE", EdgeType},
    {5, 28, "EDGE WIDTH", EdgeWidth},
    {5, 29, "EDGE COLOUR", EdgeColor},
    {5, 30, "EDGE VISIBILITY", EdgeVisibility},
    {5, 31, "FILL REFERENCE POINT", FillReferencePoint},
    {5, 32, "PATTERN TABLE", PatternTable},
    {5, 33, "PATTERN SIZE", PatternSize},
    {5, 34, "COLOUR TABLE", ColorTableElement},
    {5, 35, "ASPECT SOURCE FLAGS", AspectSourceFlags},
    {5, 37, "LINE CAP", LineCap},
    {5, 38, "LINE JOIN", LineJoin},
    {5, 42, "RESTRICTED TEXT TYPE", RestrictedTextType},
    {5, 43, "INTERPOLATED INTERIOR", InterpolatedInterior},
    {5, 44, "EDGE CAP", EdgeCap},
    {5, 45, "EDGE JOIN", EdgeJoin},
});

}  // namespace

std::span<const Handler> AttributeHandlers() {
  return kHandlers;
}

}  // namespace tavi::host::cgm

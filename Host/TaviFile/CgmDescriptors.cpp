// Descriptors of the metafile and of the picture, and control elements: how parameters are coded, and the picture's
// frame.
#include <algorithm>
#include <array>
#include <cmath>
#include <numeric>

#include "TaviFile/CgmFonts.h"
#include "TaviFile/CgmInterpreter.h"
#include "TaviFile/CgmLimits.h"

namespace tavi::host::cgm {
namespace {

// ---- Precisions. One that is not known changes nothing. ----

void SetPrecision(Parameters& p, int* precision, bool bytes_too) {
  const int64_t bits = p.Integer();
  const bool known = bits == 16 || bits == 24 || bits == 32 || (bits == 8 && bytes_too);
  if (p.ok() && known) *precision = static_cast<int>(bits);
}

void IntegerPrecision(Interpreter& in, Parameters& p) {
  SetPrecision(p, &in.coding.integer, true);
}
void IndexPrecision(Interpreter& in, Parameters& p) {
  SetPrecision(p, &in.coding.index, true);
}
void NamePrecision(Interpreter& in, Parameters& p) {
  SetPrecision(p, &in.coding.name, true);
}
void ColorPrecision(Interpreter& in, Parameters& p) {
  SetPrecision(p, &in.coding.color, true);
}
void ColorIndexPrecision(Interpreter& in, Parameters& p) {
  SetPrecision(p, &in.coding.color_index, true);
}
void VdcIntegerPrecision(Interpreter& in, Parameters& p) {
  SetPrecision(p, &in.coding.vdc_integer, false);
}

std::optional<RealForm> ReadForm(Parameters& p) {
  const int64_t kind = p.Enumerated();
  const int64_t a = p.Integer();
  const int64_t b = p.Integer();
  return p.ok() ? RealFormOf(kind, a, b) : std::nullopt;
}

void RealPrecision(Interpreter& in, Parameters& p) {
  const std::optional<RealForm> form = ReadForm(p);
  if (!form) return;
  in.coding.real = *form;
  if (*form == RealForm::kFloat32 || *form == RealForm::kFloat64) in.coding.floating = *form;
}

void VdcRealPrecision(Interpreter& in, Parameters& p) {
  if (const std::optional<RealForm> form = ReadForm(p)) in.coding.vdc_real = *form;
}

// The value of an enumeration from 0 to `last`, if it is one.
std::optional<int64_t> Choice(Parameters& p, int64_t last) {
  const int64_t value = p.Enumerated();
  if (!p.ok() || value < 0 || value > last) return std::nullopt;
  return value;
}

void VdcType(Interpreter& in, Parameters& p) {
  if (const auto type = Choice(p, 1)) in.coding.vdc_is_real = *type == 1;
}

// ---- Colours ----

void ColorModelElement(Interpreter& in, Parameters& p) {
  const int64_t model = p.Index();
  if (p.ok() && model >= 1 && model <= 5) in.coding.colors.model = static_cast<ColorModel>(model);
}

// The other models have a scale and an offset for each component: what a component means is scale * value + offset, of
// the model's own range. The ends of that range are what is kept.
void ScaledColorExtent(Interpreter& in, Parameters& p) {
  ColorCoding changed = in.coding.colors;
  for (size_t i = 0; i < changed.components(); ++i) {
    const double scale = p.Real();
    const double offset = p.Real();
    if (!p.ok() || scale == 0) return;
    const auto [first, last] = changed.RangeOf(i);
    changed.low[i] = (first - offset) / scale;
    changed.high[i] = (last - offset) / scale;
  }
  in.coding.colors = changed;
}

void ColorValueExtent(Interpreter& in, Parameters& p) {
  const ColorModel model = in.coding.colors.model;
  if (model != ColorModel::kRgb && model != ColorModel::kCmyk) return ScaledColorExtent(in, p);
  const std::array<uint32_t, 4> low = p.Components();
  const std::array<uint32_t, 4> high = p.Components();
  if (!p.ok()) return;
  for (size_t i = 0; i < low.size(); ++i) {
    in.coding.colors.low[i] = low[i];
    in.coding.colors.high[i] = high[i];
  }
}

void ColorSelectionMode(Interpreter& in, Parameters& p) {
  if (const auto mode = Choice(p, 1)) in.coding.direct_color = *mode == 1;
}

void BackgroundColor(Interpreter& in, Parameters& p) {
  const uint32_t color = p.DirectColor();
  if (p.ok()) in.tables.colors.Set(0, color);
}

void AuxiliaryColor(Interpreter& in, Parameters& p) {
  const ColorRef color = p.Color();
  if (p.ok()) in.now.auxiliary = color;
}

void Transparency(Interpreter& in, Parameters& p) {
  if (const auto on = Choice(p, 1)) in.now.transparent = *on == 1;
}

void TransparentCellColor(Interpreter& in, Parameters& p) {
  const auto on = Choice(p, 1);
  const ColorRef color = p.Color();
  if (!on || !p.ok()) return;
  in.now.transparent_cell = *on == 1 ? std::optional(color) : std::nullopt;
}

// ---- Metafile ----

void DefaultsReplacement(Interpreter& in, Parameters& p) {
  in.RunDefaults(p.Rest());
}

void FontList(Interpreter& in, Parameters& p) {
  in.tables.fonts.clear();
  while (p.left() > 0 && p.ok()) in.tables.fonts.push_back(ListedFontOf(p.String()));
}

void CharacterSetList(Interpreter& in, Parameters& p) {
  in.tables.character_sets.clear();
  while (p.left() > 0) {
    const int64_t type = p.Enumerated();
    const std::string tail = p.String();
    if (!p.ok()) return;
    in.tables.character_sets.push_back(CharacterSetOf(type, tail));
  }
}

// ---- Picture ----

void ScalingMode(Interpreter& in, Parameters& p) {
  const auto mode = Choice(p, 1);
  const double millimetres = p.Floating();
  if (mode && p.ok()) in.frame.millimetres = *mode == 1 ? std::max(0.0, millimetres) : 0;
}

void VdcExtent(Interpreter& in, Parameters& p) {
  const Point first = p.At();
  const Point second = p.At();
  if (!p.ok()) return;
  in.frame.extent = {first, second};
  in.UpdateMapping();
}

void SetMode(Parameters& p, SizeMode* mode) {
  if (const auto value = Choice(p, 3)) *mode = static_cast<SizeMode>(*value);
}

void LineWidthMode(Interpreter& in, Parameters& p) {
  SetMode(p, &in.frame.line_width);
}
void MarkerSizeMode(Interpreter& in, Parameters& p) {
  SetMode(p, &in.frame.marker_size);
}
void EdgeWidthMode(Interpreter& in, Parameters& p) {
  SetMode(p, &in.frame.edge_width);
}
void InteriorStyleMode(Interpreter& in, Parameters& p) {
  SetMode(p, &in.frame.pattern_size);
}

// ---- Bundles ----

void SetLineBundle(Parameters& p, SizeMode mode, std::map<int64_t, LineAspects>* bundles) {
  const int64_t index = p.Index();
  LineAspects aspects;
  aspects.type = p.Index();
  aspects.width = p.SizeOf(mode);
  aspects.color = p.Color();
  if (p.ok()) (*bundles)[index] = aspects;
}

void LineRepresentation(Interpreter& in, Parameters& p) {
  SetLineBundle(p, in.frame.line_width, &in.tables.lines);
}

void EdgeRepresentation(Interpreter& in, Parameters& p) {
  SetLineBundle(p, in.frame.edge_width, &in.tables.edges);
}

void MarkerRepresentation(Interpreter& in, Parameters& p) {
  const int64_t index = p.Index();
  MarkerAspects aspects;
  aspects.type = p.Index();
  aspects.size = p.SizeOf(in.frame.marker_size);
  aspects.color = p.Color();
  if (p.ok()) in.tables.markers[index] = aspects;
}

void TextRepresentation(Interpreter& in, Parameters& p) {
  const int64_t index = p.Index();
  TextAspects aspects;
  aspects.font = p.Index();
  p.Enumerated();  // precision: all text is drawn as exactly as can be
  aspects.spacing = p.Real();
  aspects.expansion = p.Real();
  aspects.color = p.Color();
  if (p.ok()) in.tables.texts[index] = aspects;
}

void FillRepresentation(Interpreter& in, Parameters& p) {
  const int64_t index = p.Index();
  FillAspects aspects;
  aspects.interior = p.Enumerated();
  aspects.color = p.Color();
  aspects.hatch = p.Index();
  aspects.pattern = p.Index();
  if (p.ok()) in.tables.fills[index] = aspects;
}

// Lengths in proportion to each other; an odd list runs through twice, so that dashes and gaps alternate. Of a list that
// is too long the first lengths count, as long as they are within the whole of it.
void LineTypeDefinition(Interpreter& in, Parameters& p) {
  const int64_t type = p.Index();
  DashPattern dashes;
  dashes.cycle = p.SizeOf(in.frame.line_width);
  double sum = 0;
  while (p.ok() && p.left() >= static_cast<size_t>(p.coding().integer / 8)) {
    const auto part = static_cast<double>(p.Integer());
    if (part < 0) return;
    if (dashes.shares.size() < kDashLengths) dashes.shares.push_back(part);
    sum += part;
  }
  const double kept = std::accumulate(dashes.shares.begin(), dashes.shares.end(), 0.0);
  if (!p.ok() || type >= 0 || kept <= 0 || dashes.cycle.value <= 0) return;
  for (double& share : dashes.shares) share /= sum;
  if (dashes.shares.size() % 2 != 0) {
    const std::vector<double> once = dashes.shares;
    dashes.shares.insert(dashes.shares.end(), once.begin(), once.end());
    dashes.shares.resize(std::min(dashes.shares.size(), kDashLengths));
  }
  in.tables.dashes[type] = std::move(dashes);
}

// ---- Control ----

void ClipRectangle(Interpreter& in, Parameters& p) {
  const Point first = p.At();
  const Point second = p.At();
  if (p.ok()) in.now.clip = {first, second};
}

void ClipIndicator(Interpreter& in, Parameters& p) {
  if (const auto on = Choice(p, 1)) in.now.clipping = *on == 1;
}

void NewRegion(Interpreter& in, Parameters&) {
  if (in.path) in.path->NewRegion();
}

void SaveContext(Interpreter& in, Parameters& p) {
  const int64_t name = p.Name();
  if (p.ok() && (in.contexts.size() < kSavedContexts || in.contexts.contains(name)))
    in.contexts[name] = in.now;
}

void RestoreContext(Interpreter& in, Parameters& p) {
  const auto saved = in.contexts.find(p.Name());
  if (p.ok() && saved != in.contexts.end()) in.now = saved->second;
}

void MitreLimit(Interpreter& in, Parameters& p) {
  const double limit = p.Real();
  if (p.ok() && limit >= 1) in.now.mitre_limit = limit;
}

constexpr auto kHandlers = std::to_array<Handler>({
    {1, 3, "VDC TYPE", VdcType},
    {1, 4, "INTEGER PRECISION", IntegerPrecision},
    {1, 5, "REAL PRECISION", RealPrecision},
    {1, 6, "INDEX PRECISION", IndexPrecision},
    {1, 7, "COLOUR PRECISION", ColorPrecision},
    {1, 8, "COLOUR INDEX PRECISION", ColorIndexPrecision},
    {1, 10, "COLOUR VALUE EXTENT", ColorValueExtent},
    {1, 12, "METAFILE DEFAULTS REPLACEMENT", DefaultsReplacement},
    {1, 13, "FONT LIST", FontList},
    {1, 14, "CHARACTER SET LIST", CharacterSetList},
    {1, 16, "NAME PRECISION", NamePrecision},
    {1, 19, "COLOUR MODEL", ColorModelElement},
    {2, 1, "SCALING MODE", ScalingMode},
    {2, 2, "COLOUR SELECTION MODE", ColorSelectionMode},
    {2, 3, "LINE WIDTH SPECIFICATION MODE", LineWidthMode},
    {2, 4, "MARKER SIZE SPECIFICATION MODE", MarkerSizeMode},
    {2, 5, "EDGE WIDTH SPECIFICATION MODE", EdgeWidthMode},
    {2, 6, "VDC EXTENT", VdcExtent},
    {2, 7, "BACKGROUND COLOUR", BackgroundColor},
    {2, 11, "LINE REPRESENTATION", LineRepresentation},
    {2, 12, "MARKER REPRESENTATION", MarkerRepresentation},
    {2, 13, "TEXT REPRESENTATION", TextRepresentation},
    {2, 14, "FILL REPRESENTATION", FillRepresentation},
    {2, 15, "EDGE REPRESENTATION", EdgeRepresentation},
    {2, 16, "INTERIOR STYLE SPECIFICATION MODE", InteriorStyleMode},
    {2, 17, "LINE AND EDGE TYPE DEFINITION", LineTypeDefinition},
    {3, 1, "VDC INTEGER PRECISION", VdcIntegerPrecision},
    {3, 2, "VDC REAL PRECISION", VdcRealPrecision},
    {3, 3, "AUXILIARY COLOUR", AuxiliaryColor},
    {3, 4, "TRANSPARENCY", Transparency},
    {3, 5, "CLIP RECTANGLE", ClipRectangle},
    {3, 6, "CLIP INDICATOR", ClipIndicator},
    {3, 10, "NEW REGION", NewRegion},
    {3, 11, "SAVE PRIMITIVE CONTEXT", SaveContext},
    {3, 12, "RESTORE PRIMITIVE CONTEXT", RestoreContext},
    {3, 19, "MITRE LIMIT", MitreLimit},
    {3, 20, "TRANSPARENT CELL COLOUR", TransparentCellColor},
});

}  // namespace

std::span<const Handler> DescriptorHandlers() {
  return kHandlers;
}

}  // namespace tavi::host::cgm

#include "TaviFile/CgmWriterAttributes.h"

#include <algorithm>
#include <cmath>
#include <iterator>

#include "TaviFile/CgmTextMeasure.h"

namespace tavi::host::cgm {
namespace {

using namespace vec;

constexpr const char* kHersheyNames[] = {
    "CARTOGRAPHIC_ROMAN", "CARTOGRAPHIC_GREEK", "SIMPLEX_ROMAN",  "SIMPLEX_GREEK",
    "SIMPLEX_SCRIPT",     "COMPLEX_ROMAN",      "COMPLEX_GREEK",  "COMPLEX_SCRIPT",
    "COMPLEX_ITALIC",     "COMPLEX_CYRILLIC",   "DUPLEX_ROMAN",   "TRIPLEX_ROMAN",
    "TRIPLEX_ITALIC",     "GOTHIC_GERMAN",      "GOTHIC_ENGLISH", "GOTHIC_ITALIAN"};
static_assert(std::size(kHersheyNames) == static_cast<size_t>(HersheyFace::kGothicItalian) + 1);

// Of each family: upright, italic, bold, both.
constexpr const char* kSansNames[] = {"HELVETICA", "HELVETICA_OBLIQUE", "HELVETICA_BOLD",
                                      "HELVETICA_BOLD_OBLIQUE"};
constexpr const char* kSerifNames[] = {"TIMES_ROMAN", "TIMES_ITALIC", "TIMES_BOLD", "TIMES_BOLD_ITALIC"};
constexpr const char* kMonoNames[] = {"COURIER", "COURIER_ITALIC", "COURIER_BOLD", "COURIER_BOLD_ITALIC"};

// Version 1 knows five line types: the nearest to dashes of other lengths is the one with as many of them.
LineType KnownType(const Stroke& stroke) {
  if (stroke.type != LineType::kCustom) return stroke.type;
  if (stroke.dashes.empty()) return LineType::kSolid;
  if (stroke.dashes.size() <= 2) {
    return stroke.dashes[0] <= 2 * stroke.width ? LineType::kDot : LineType::kDash;
  }
  return stroke.dashes.size() <= 4 ? LineType::kDashDot : LineType::kDashDotDot;
}

// Whole numbers in the proportions of the vectors' components. Vectors that are whole stay as they are.
std::array<double, 4> WholeVectors(std::array<double, 4> components) {
  constexpr double kLongest = 32000;
  double largest = 0;
  bool whole = true;
  for (const double component : components) {
    largest = std::max(largest, std::abs(component));
    whole = whole && component == std::floor(component);
  }
  const double factor = (whole && largest <= kLongest) || largest == 0 ? 1 : kLongest / largest;
  for (double& component : components) component = ToVdc(component * factor);
  return components;
}

template <class Value>
bool Changes(std::optional<Value>* held, const Value& wanted) {
  if (*held == wanted) return false;
  *held = wanted;
  return true;
}

}  // namespace

std::string NameOf(const Font& font) {
  const size_t style = (font.bold ? 2u : 0u) + (font.italic ? 1u : 0u);
  switch (font.family) {
    case FontFamily::kSerif:
      return kSerifNames[style];
    case FontFamily::kMono:
      return kMonoNames[style];
    case FontFamily::kHershey:
      return std::string("HERSHEY/") + kHersheyNames[static_cast<size_t>(font.hershey)];
    default:
      return kSansNames[style];
  }
}

GapWish GapOf(const Stroke* stroke) {
  if (stroke == nullptr || KnownType(*stroke) == LineType::kSolid) return std::nullopt;
  return stroke->gap_color;
}

GapWish GapOf(const Fill* fill) {
  if (fill == nullptr || fill->interior != Interior::kHatch) return std::nullopt;
  return fill->gap_color;
}

void AttributeWriter::Put(ElementCode code, std::optional<uint32_t>* held, uint32_t color) {
  if (!Changes(held, color)) return;
  out_.Begin(code);
  out_.Color(color);
  out_.End();
}

void AttributeWriter::Put(ElementCode code, std::optional<int64_t>* held, int64_t value) {
  if (!Changes(held, value)) return;
  out_.Begin(code);
  out_.Integer(value);
  out_.End();
}

void AttributeWriter::PutVdc(ElementCode code, std::optional<int32_t>* held, double value) {
  const int32_t rounded = ToVdc(value);
  if (!Changes(held, rounded)) return;
  out_.Begin(code);
  out_.Vdc(rounded);
  out_.End();
}

void AttributeWriter::PutReal(ElementCode code, std::optional<double>* held, double value) {
  if (!Changes(held, value)) return;
  out_.Begin(code);
  out_.Real(value);
  out_.End();
}

template <size_t kCount>
void AttributeWriter::PutVdcs(ElementCode code, std::optional<std::array<int32_t, kCount>>* held,
                              const std::array<int32_t, kCount>& values) {
  if (!Changes(held, values)) return;
  out_.Begin(code);
  for (const int32_t value : values) out_.Vdc(value);
  out_.End();
}

// The clip rectangle at first is the VDC extent, which this profile does not clip to: an object without a clip needs an
// indicator only where another one had a clip before.
void AttributeWriter::SetClip(const Box* clip) {
  if (clip == nullptr) {
    if (clip_indicator_) Put(code::kClipIndicator, &clip_indicator_, 0);
    return;
  }
  PutVdcs(code::kClipRectangle, &clip_,
          {ToVdc(clip->low.x), ToVdc(-clip->low.y), ToVdc(clip->high.x), ToVdc(-clip->high.y)});
  Put(code::kClipIndicator, &clip_indicator_, 1);
}

void AttributeWriter::SetGap(const GapWish& gap) {
  if (!gap) return;
  Put(code::kTransparency, &transparency_, *gap ? 0 : 1);
  if (*gap) Put(code::kAuxiliaryColor, &auxiliary_, **gap);
}

int64_t AttributeWriter::LineTypeOf(const Stroke& stroke) const {
  return lists_.dashes.TypeOf(stroke).value_or(static_cast<int64_t>(KnownType(stroke)) + 1);
}

// Readers that do not know types of a metafile's own stay with the nearest fixed one.
void AttributeWriter::SetStroke(const Stroke& stroke, const StrokeCodes& codes, StrokeState* state) {
  PutVdc(codes.width, &state->width, drawing_.WidthOf(stroke));
  const int64_t type = LineTypeOf(stroke);
  if (type < 0 && state->type != type)
    Put(codes.type, &state->type, static_cast<int64_t>(KnownType(stroke)) + 1);
  Put(codes.type, &state->type, type);
  Put(codes.color, &state->color, stroke.color);
  SetEnds(stroke, codes, state);
}

// Metafiles without a word of it, as those of version 1, have butt ends and mitred corners. Limits that only corners
// sharper than any in practice come to are none.
void AttributeWriter::SetEnds(const Stroke& stroke, const StrokeCodes& codes, StrokeState* state) {
  constexpr double kSharp = 10;
  if (state->cap != stroke.cap) {
    constexpr int64_t kMatch = 3;  // dashes end as lines do
    out_.Begin(codes.cap);
    out_.Integer(static_cast<int64_t>(stroke.cap) + 2);
    out_.Integer(kMatch);
    out_.End();
    state->cap = stroke.cap;
  }
  if (state->join != stroke.join) {
    out_.Begin(codes.join);
    out_.Integer(static_cast<int64_t>(stroke.join) + 2);
    out_.End();
    state->join = stroke.join;
  }
  if (stroke.join != LineJoin::kMitre) return;
  PutReal(code::kMitreLimit, &mitre_limit_, stroke.mitre_limit < kSharp ? stroke.mitre_limit : kNoMitreLimit);
}

void AttributeWriter::SetArea(const Fill* fill, const Stroke* edge) {
  SetFill(fill);
  Put(code::kEdgeVisibility, &edge_visibility_, edge != nullptr ? 1 : 0);
  if (edge != nullptr) SetStroke(*edge, kEdgeCodes, &edge_);
}

void AttributeWriter::SetFill(const Fill* fill) {
  Interior interior = fill != nullptr ? fill->interior : Interior::kEmpty;
  if (interior != Interior::kEmpty) Put(code::kFillColor, &fill_color_, fill->color);
  if (interior == Interior::kPattern && !SetPattern(*fill)) interior = Interior::kSolid;
  Put(code::kInteriorStyle, &interior_, static_cast<int64_t>(interior));
  if (interior != Interior::kHatch) return;
  Put(code::kHatchIndex, &hatch_, static_cast<int64_t>(fill->hatch));
  // The profile knows no reference point. One so far away that it alone would make all coordinates wide is left out:
  // the hatch is the same then, and only begins elsewhere.
  if (out_.Fits(ToVdc(fill->origin.x)) && out_.Fits(ToVdc(-fill->origin.y))) SetReference(*fill);
}

// False for a pattern that version 1 cannot name or hold.
bool AttributeWriter::SetPattern(const Fill& fill) {
  constexpr uint32_t kMost = INT16_MAX;
  if (fill.pattern >= drawing_.patterns.size() || fill.pattern >= kMost) return false;
  const Pattern& pattern = drawing_.patterns[fill.pattern];
  if (pattern.columns == 0 || pattern.rows == 0 || pattern.columns > kMost || pattern.rows > kMost ||
      pattern.colors.size() < uint64_t{pattern.columns} * pattern.rows) {
    return false;
  }
  const int64_t index = int64_t{fill.pattern} + 1;
  if (patterns_.insert(fill.pattern).second) WritePattern(pattern, index);
  Put(code::kPatternIndex, &pattern_, index);
  PutVdcs(code::kPatternSize, &pattern_size_,
          {ToVdc(fill.pattern_up.x), ToVdc(-fill.pattern_up.y), ToVdc(fill.pattern_along.x),
           ToVdc(-fill.pattern_along.y)});
  SetReference(fill);
  return true;
}

void AttributeWriter::SetReference(const Fill& fill) {
  PutVdcs(code::kFillReferencePoint, &fill_reference_, {ToVdc(fill.origin.x), ToVdc(-fill.origin.y)});
}

// Readers differ in whether rows of a pattern begin at words: where those would need padding, components are written as
// words. Their values stay those of the extent, which reaches to 255.
void AttributeWriter::WritePattern(const Pattern& pattern, int64_t index) {
  const bool odd_rows = pattern.columns % 2 != 0;
  out_.Begin(code::kPatternTable);
  out_.Integer(index);
  out_.Integer(int64_t{pattern.columns});
  out_.Integer(int64_t{pattern.rows});
  out_.Integer(int64_t{odd_rows ? 16 : 8});
  const size_t cells = size_t{pattern.columns} * pattern.rows;
  for (size_t i = 0; i < cells; ++i) {
    if (odd_rows) {
      out_.WideColor(pattern.colors[i]);
    } else {
      out_.Color(pattern.colors[i]);
    }
  }
  out_.End();
}

void AttributeWriter::SetMarker(const MarkerStyle& style) {
  Put(code::kMarkerType, &marker_type_, static_cast<int64_t>(style.type));
  PutVdc(code::kMarkerSize, &marker_size_, drawing_.SizeOf(style));
  Put(code::kMarkerColor, &marker_color_, style.color);
}

void AttributeWriter::SetCharacters(bool unicode) {
  Put(code::kCharacterSetIndex, &character_set_, unicode ? kUnicodeSet : kLatinSet);
}

int64_t AttributeWriter::FontIndex(const Font& font) const {
  const auto found = std::find(lists_.fonts.begin(), lists_.fonts.end(), font);
  return found != lists_.fonts.end() ? found - lists_.fonts.begin() + 1 : 1;
}

void AttributeWriter::SetText(const TextStyle& style, bool fitted, bool goes_on) {
  const double height = fitted ? style.height * CapitalsOf(style.font.family) : style.height;
  SetGap(style.box_color);
  Put(code::kTextColor, &text_color_, style.color);
  PutVdc(code::kCharacterHeight, &height_, std::max(height, 1.0));
  Put(code::kTextFontIndex, &font_, FontIndex(style.font));
  if (!goes_on) SetDirections(style);
  PutReal(code::kCharacterExpansion, &expansion_, style.expansion);
  PutReal(code::kCharacterSpacing, &spacing_, style.spacing);
  if (!goes_on) SetPlacing(style);
}

void AttributeWriter::SetDirections(const TextStyle& style) {
  const std::array<double, 4> components{style.up.x, -style.up.y, style.base.x, -style.base.y};
  const std::array<double, 4> vectors = out_.is_real() ? components : WholeVectors(components);
  if (!Changes(&orientation_, vectors)) return;
  out_.Begin(code::kCharacterOrientation);
  for (const double component : vectors) out_.Direction(component);
  out_.End();
}

void AttributeWriter::SetPlacing(const TextStyle& style) {
  Put(code::kTextPath, &path_, static_cast<int64_t>(style.path));
  const Alignment alignment{static_cast<double>(style.across), static_cast<double>(style.upright),
                            style.across_fraction, style.upright_fraction};
  if (!Changes(&alignment_, alignment)) return;
  out_.Begin(code::kTextAlignment);
  out_.Integer(static_cast<int64_t>(style.across));
  out_.Integer(static_cast<int64_t>(style.upright));
  out_.Real(style.across_fraction);
  out_.Real(style.upright_fraction);
  out_.End();
}

}  // namespace tavi::host::cgm

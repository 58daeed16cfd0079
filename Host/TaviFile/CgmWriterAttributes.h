// The attributes of a metafile that is being written. They stay in force there: each is written where it changes.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "TaviFile/CgmWriterDashes.h"
#include "TaviFile/CgmWriterElements.h"
#include "TaviVector/Drawing.h"

namespace tavi::host::cgm {

// The name of a font in a font list.
std::string NameOf(const vec::Font& font);

// The colour between dashes, between hatch lines or behind characters. Unset: it makes no difference to what is drawn;
// set without a colour: what is beneath shows.
using GapWish = std::optional<std::optional<uint32_t>>;

GapWish GapOf(const vec::Stroke* stroke);
GapWish GapOf(const vec::Fill* fill);

// What a metafile lists before its picture, for what follows to refer to.
struct Lists {
  std::vector<vec::Font> fonts;
  DashTypes dashes;
  bool unicode = false;  // texts have characters that Latin-1 lacks
};

class AttributeWriter {
 public:
  // Hatches and patterns begin at the corner of the extent until a reference point is set.
  AttributeWriter(const vec::Drawing& drawing, const Lists& lists, std::array<int32_t, 2> corner,
                  ElementWriter* out)
      : drawing_(drawing), lists_(lists), out_(*out), fill_reference_(corner) {}

  void SetClip(const vec::Box* clip);
  void SetGap(const GapWish& gap);
  void SetLine(const vec::Stroke& stroke) { SetStroke(stroke, kLineCodes, &line_); }
  // A null fill leaves the area open, a null edge is not drawn.
  void SetArea(const vec::Fill* fill, const vec::Stroke* edge);
  void SetMarker(const vec::MarkerStyle& style);
  // Text that is fitted into a box states its height by its capitals; text that goes on after other text keeps its
  // place and direction.
  void SetText(const vec::TextStyle& style, bool fitted, bool goes_on);
  // Strings to come are UTF-8, or Latin-1.
  void SetCharacters(bool unicode);

 private:
  struct StrokeCodes {
    ElementCode width, type, color, cap, join;
  };
  static constexpr StrokeCodes kLineCodes{code::kLineWidth, code::kLineType, code::kLineColor, code::kLineCap,
                                          code::kLineJoin};
  static constexpr StrokeCodes kEdgeCodes{code::kEdgeWidth, code::kEdgeType, code::kEdgeColor, code::kEdgeCap,
                                          code::kEdgeJoin};

  // What is in force. Unset where the default depends on the device.
  struct StrokeState {
    std::optional<int32_t> width;
    std::optional<int64_t> type;
    std::optional<uint32_t> color;
    vec::LineCap cap = vec::LineCap::kButt;
    vec::LineJoin join = vec::LineJoin::kMitre;
  };
  static constexpr int64_t kLatinSet = 1;
  static constexpr int64_t kUnicodeSet = 2;
  static constexpr double kNoMitreLimit = INT16_MAX;
  using Alignment = std::array<double, 4>;  // the two kinds, then the two fractions

  void SetStroke(const vec::Stroke& stroke, const StrokeCodes& codes, StrokeState* state);
  void SetEnds(const vec::Stroke& stroke, const StrokeCodes& codes, StrokeState* state);
  void SetFill(const vec::Fill* fill);
  bool SetPattern(const vec::Fill& fill);
  void SetReference(const vec::Fill& fill);
  int64_t LineTypeOf(const vec::Stroke& stroke) const;
  void WritePattern(const vec::Pattern& pattern, int64_t index);
  void SetDirections(const vec::TextStyle& style);
  void SetPlacing(const vec::TextStyle& style);
  int64_t FontIndex(const vec::Font& font) const;

  void Put(ElementCode code, std::optional<uint32_t>* held, uint32_t color);
  void Put(ElementCode code, std::optional<int64_t>* held, int64_t value);
  void PutVdc(ElementCode code, std::optional<int32_t>* held, double value);
  void PutReal(ElementCode code, std::optional<double>* held, double value);
  template <size_t kCount>
  void PutVdcs(ElementCode code, std::optional<std::array<int32_t, kCount>>* held,
               const std::array<int32_t, kCount>& values);

  const vec::Drawing& drawing_;
  const Lists& lists_;
  ElementWriter& out_;

  std::optional<int64_t> transparency_ = 1;
  std::optional<uint32_t> auxiliary_;
  std::optional<int64_t> clip_indicator_;
  std::optional<std::array<int32_t, 4>> clip_;
  StrokeState line_;
  StrokeState edge_;
  std::optional<double> mitre_limit_ = kNoMitreLimit;
  std::optional<int64_t> edge_visibility_;
  std::optional<int64_t> interior_;
  std::optional<int64_t> hatch_;
  std::optional<int64_t> pattern_;
  std::optional<uint32_t> fill_color_;
  std::optional<std::array<int32_t, 4>> pattern_size_;
  std::optional<std::array<int32_t, 2>> fill_reference_;
  std::set<uint32_t> patterns_;  // whose tables are written
  std::optional<int64_t> marker_type_;
  std::optional<int32_t> marker_size_;
  std::optional<uint32_t> marker_color_;
  std::optional<uint32_t> text_color_;
  std::optional<int32_t> height_;
  std::optional<int64_t> font_;
  std::optional<std::array<double, 4>> orientation_;
  std::optional<double> expansion_ = 1;
  std::optional<double> spacing_ = 0;
  std::optional<int64_t> path_ = 0;
  std::optional<int64_t> character_set_ = kLatinSet;
  std::optional<Alignment> alignment_ = Alignment{0, 0, 0, 0};
};

}  // namespace tavi::host::cgm

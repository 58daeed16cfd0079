// The graphics state: attributes as elements set them, bundles, and the tables that they refer to.
#pragma once

#include <array>
#include <cstdint>
#include <map>
#include <optional>
#include <vector>

#include "TaviFile/CgmParameters.h"

namespace tavi::host::cgm {

// What of the attributes comes from a bundle, in the order of ASPECT SOURCE FLAGS.
enum class Aspect : uint8_t {
  kLineType,
  kLineWidth,
  kLineColor,
  kMarkerType,
  kMarkerSize,
  kMarkerColor,
  kFont,
  kTextPrecision,
  kExpansion,
  kSpacing,
  kTextColor,
  kInterior,
  kFillColor,
  kHatch,
  kPattern,
  kEdgeType,
  kEdgeWidth,
  kEdgeColor,
  kCount
};

struct LineAspects {
  int64_t type = 1;
  std::optional<Size> width;  // not set: one nominal width
  ColorRef color;
};

struct MarkerAspects {
  int64_t type = 3;
  std::optional<Size> size;
  ColorRef color;
};

struct TextAspects {
  int64_t font = 1;
  double expansion = 1;
  double spacing = 0;
  ColorRef color;
};

struct FillAspects {
  std::optional<int64_t> interior;  // not set: empty, see CgmState.cpp
  ColorRef color;
  int64_t hatch = 1;
  int64_t pattern = 1;
};

// Of lines and of edges: what version 3 adds.
struct Ends {
  vec::LineCap cap = vec::LineCap::kButt;
  vec::LineJoin join = vec::LineJoin::kMitre;
};

// All that BEGIN PICTURE resets and a saved context holds.
struct Attributes {
  LineAspects line;
  Ends line_ends;
  int64_t line_bundle = 1;
  MarkerAspects marker;
  int64_t marker_bundle = 1;
  TextAspects text;
  int64_t text_bundle = 1;
  std::optional<double> character_height;
  std::optional<std::pair<Point, Point>> orientation;  // up, base
  vec::TextPath path = vec::TextPath::kRight;
  vec::TextAcross across = vec::TextAcross::kNormal;
  vec::TextUpright upright = vec::TextUpright::kNormal;
  double across_fraction = 0;
  double upright_fraction = 0;
  bool boxes_capitals = true;  // boxes of restricted text reach from the base line to the top of capitals
  int64_t character_set = 1;
  int64_t alternate_set = 1;
  FillAspects fill;
  std::optional<ColorRef> interpolated;  // the first colour of an interior that runs from one to others
  int64_t fill_bundle = 1;
  std::optional<Point> reference_point;
  std::optional<std::pair<Point, Point>> pattern_size;  // height and width vectors, in their mode
  SizeMode pattern_size_mode = SizeMode::kAbsolute;
  LineAspects edge;
  Ends edge_ends;
  int64_t edge_bundle = 1;
  bool edge_visible = false;
  std::array<bool, static_cast<size_t>(Aspect::kCount)> bundled{};
  double mitre_limit = 32767;  // practically none
  bool transparent = true;
  ColorRef auxiliary{ColorRef::Kind::kBackground, 0};
  std::optional<std::pair<Point, Point>> clip;  // as CLIP RECTANGLE says
  bool clipping = true;
  std::optional<ColorRef> transparent_cell;

  bool IsBundled(Aspect aspect) const { return bundled[static_cast<size_t>(aspect)]; }
};

// Dashes of a line type that the metafile defines: on, off, … as shares of a cycle.
struct DashPattern {
  Size cycle;
  std::vector<double> shares;
};

// One pattern of the table, its colours resolved when it was defined.
using PatternTable = std::map<int64_t, vec::Pattern>;

// A font of the list, resolved when the list was read: names can be long, and every text asks.
struct ListedFont {
  vec::Font font;
  bool symbols = false;  // its octets are Greek letters and signs
};

struct CharacterSet {
  bool utf8 = false;
};

// What stays for the whole picture.
struct Tables {
  ColorTable colors;
  std::map<int64_t, LineAspects> lines;
  std::map<int64_t, MarkerAspects> markers;
  std::map<int64_t, TextAspects> texts;
  std::map<int64_t, FillAspects> fills;
  std::map<int64_t, LineAspects> edges;
  std::map<int64_t, DashPattern> dashes;
  PatternTable patterns;
  std::vector<ListedFont> fonts;
  std::vector<CharacterSet> character_sets;
};

// The picture's space and the modes of its descriptor.
struct Frame {
  std::optional<std::pair<Point, Point>> extent;
  double millimetres = 0;  // of a unit, where the picture is metric
  SizeMode line_width = SizeMode::kScaled;
  SizeMode marker_size = SizeMode::kScaled;
  SizeMode edge_width = SizeMode::kScaled;
  SizeMode pattern_size = SizeMode::kAbsolute;

  std::pair<Point, Point> Extent(bool real) const;
  double Side(bool real) const;
  // -1 where the axis runs leftwards or downward.
  double DirectionX() const;
  double DirectionY() const;
};

// Attributes in force, bundles taken into account.
LineAspects LineInForce(const Attributes& now, const Tables& tables);
LineAspects EdgeInForce(const Attributes& now, const Tables& tables);
MarkerAspects MarkerInForce(const Attributes& now, const Tables& tables);
TextAspects TextInForce(const Attributes& now, const Tables& tables);
FillAspects FillInForce(const Attributes& now, const Tables& tables);

}  // namespace tavi::host::cgm

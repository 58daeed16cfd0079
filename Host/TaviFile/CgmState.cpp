#include "TaviFile/CgmState.h"

#include <algorithm>
#include <cmath>

namespace tavi::host::cgm {
namespace {

constexpr double kIntegerExtent = 32767;

template <class Aspects>
Aspects BundleOf(const std::map<int64_t, Aspects>& bundles, int64_t index) {
  const auto found = bundles.find(index);
  return found == bundles.end() ? Aspects() : found->second;
}

struct LineFlags {
  Aspect type, width, color;
};

LineAspects Merge(const LineAspects& own, const LineAspects& bundle, const Attributes& now,
                  const LineFlags& flags) {
  return {now.IsBundled(flags.type) ? bundle.type : own.type,
          now.IsBundled(flags.width) ? bundle.width : own.width,
          now.IsBundled(flags.color) ? bundle.color : own.color};
}

}  // namespace

LineAspects LineInForce(const Attributes& now, const Tables& tables) {
  return Merge(now.line, BundleOf(tables.lines, now.line_bundle), now,
               {Aspect::kLineType, Aspect::kLineWidth, Aspect::kLineColor});
}

LineAspects EdgeInForce(const Attributes& now, const Tables& tables) {
  return Merge(now.edge, BundleOf(tables.edges, now.edge_bundle), now,
               {Aspect::kEdgeType, Aspect::kEdgeWidth, Aspect::kEdgeColor});
}

MarkerAspects MarkerInForce(const Attributes& now, const Tables& tables) {
  const MarkerAspects bundle = BundleOf(tables.markers, now.marker_bundle);
  const MarkerAspects& own = now.marker;
  return {now.IsBundled(Aspect::kMarkerType) ? bundle.type : own.type,
          now.IsBundled(Aspect::kMarkerSize) ? bundle.size : own.size,
          now.IsBundled(Aspect::kMarkerColor) ? bundle.color : own.color};
}

TextAspects TextInForce(const Attributes& now, const Tables& tables) {
  const TextAspects bundle = BundleOf(tables.texts, now.text_bundle);
  const TextAspects& own = now.text;
  return {now.IsBundled(Aspect::kFont) ? bundle.font : own.font,
          now.IsBundled(Aspect::kExpansion) ? bundle.expansion : own.expansion,
          now.IsBundled(Aspect::kSpacing) ? bundle.spacing : own.spacing,
          now.IsBundled(Aspect::kTextColor) ? bundle.color : own.color};
}

FillAspects FillInForce(const Attributes& now, const Tables& tables) {
  const FillAspects bundle = BundleOf(tables.fills, now.fill_bundle);
  const FillAspects& own = now.fill;
  return {now.IsBundled(Aspect::kInterior) ? bundle.interior : own.interior,
          now.IsBundled(Aspect::kFillColor) ? bundle.color : own.color,
          now.IsBundled(Aspect::kHatch) ? bundle.hatch : own.hatch,
          now.IsBundled(Aspect::kPattern) ? bundle.pattern : own.pattern};
}

std::pair<Point, Point> Frame::Extent(bool real) const {
  const double whole = real ? 1 : kIntegerExtent;
  return extent.value_or(std::pair(Point{0, 0}, Point{whole, whole}));
}

double Frame::Side(bool real) const {
  const auto [first, second] = Extent(real);
  return std::max(std::abs(second.x - first.x), std::abs(second.y - first.y));
}

double Frame::DirectionX() const {
  return extent && extent->second.x < extent->first.x ? -1 : 1;
}
double Frame::DirectionY() const {
  return extent && extent->second.y < extent->first.y ? -1 : 1;
}

}  // namespace tavi::host::cgm

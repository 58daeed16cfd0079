// The elements of a binary metafile as they are written: default precisions but for wide VDC, direct colours of 8 bits a
// component.
#pragma once

#include <cstdint>
#include <set>
#include <string_view>
#include <tuple>
#include <vector>

#include "TaviVector/Drawing.h"

namespace tavi::host::cgm {

struct ElementCode {
  uint8_t group;  // the class
  uint8_t id;
  friend bool operator==(const ElementCode&, const ElementCode&) = default;
  friend bool operator<(const ElementCode& a, const ElementCode& b) {
    return std::tie(a.group, a.id) < std::tie(b.group, b.id);
  }
};

namespace code {
inline constexpr ElementCode kBeginMetafile{0, 1}, kEndMetafile{0, 2}, kBeginPicture{0, 3},
    kBeginPictureBody{0, 4}, kEndPicture{0, 5};
inline constexpr ElementCode kMetafileVersion{1, 1}, kMetafileDescription{1, 2}, kVdcType{1, 3},
    kMetafileElementList{1, 11}, kDefaults{1, 12}, kFontList{1, 13}, kCharacterSetList{1, 14};
inline constexpr ElementCode kColorSelectionMode{2, 2}, kLineWidthMode{2, 3}, kMarkerSizeMode{2, 4},
    kEdgeWidthMode{2, 5}, kVdcExtent{2, 6}, kLineTypeDefinition{2, 17};
inline constexpr ElementCode kVdcIntegerPrecision{3, 1}, kVdcRealPrecision{3, 2}, kAuxiliaryColor{3, 3},
    kTransparency{3, 4}, kClipRectangle{3, 5}, kClipIndicator{3, 6}, kMitreLimit{3, 19};
inline constexpr ElementCode kPolyline{4, 1}, kDisjointPolyline{4, 2}, kPolymarker{4, 3}, kText{4, 4},
    kRestrictedText{4, 5}, kAppendText{4, 6}, kPolygon{4, 7}, kPolygonSet{4, 8}, kCellArray{4, 9},
    kRectangle{4, 11}, kCircle{4, 12}, kCircularArc{4, 15}, kCircularArcClose{4, 16}, kEllipse{4, 17},
    kEllipticalArc{4, 18}, kEllipticalArcClose{4, 19};
inline constexpr ElementCode kLineType{5, 2}, kLineWidth{5, 3}, kLineColor{5, 4}, kMarkerType{5, 6},
    kMarkerSize{5, 7}, kMarkerColor{5, 8}, kTextFontIndex{5, 10}, kCharacterExpansion{5, 12},
    kCharacterSpacing{5, 13}, kTextColor{5, 14}, kCharacterHeight{5, 15}, kCharacterOrientation{5, 16},
    kTextPath{5, 17}, kTextAlignment{5, 18}, kCharacterSetIndex{5, 19}, kInteriorStyle{5, 22},
    kFillColor{5, 23}, kHatchIndex{5, 24}, kPatternIndex{5, 25}, kEdgeType{5, 27}, kEdgeWidth{5, 28},
    kEdgeColor{5, 29}, kEdgeVisibility{5, 30}, kFillReferencePoint{5, 31}, kPatternTable{5, 32},
    kPatternSize{5, 33}, kLineCap{5, 37}, kLineJoin{5, 38}, kEdgeCap{5, 44}, kEdgeJoin{5, 45};
}  // namespace code

// What a metafile's coordinates are: integers of 16 or 32 bits, or floating point of 32.
enum class VdcKind : uint8_t { kNarrow, kWide, kReal };

// The whole unit nearest to a value, half a unit going up. Values out of range stop at its ends.
int32_t ToVdc(double value);

class ElementWriter {
 public:
  // VDC of 16 bits, or of 32 from the element on that says so.
  void UseWideVdc() { vdc_bytes_ = 4; }
  // Real VDC: what comes as whole numbers of parts of a unit is written in units.
  void UseRealVdc(double parts_of_unit) {
    vdc_bytes_ = 4;
    real_ = true;
    unit_ = parts_of_unit;
  }
  bool is_real() const { return real_; }
  // What a coordinate of 1 comes as.
  double unit() const { return unit_; }
  // Whether a VDC would fit, and whether one did not fit 16 bits.
  bool Fits(int32_t value) const { return value <= largest_vdc() && value >= -largest_vdc() - 1; }
  bool needs_wide_vdc() const { return needs_wide_vdc_; }
  int32_t largest_vdc() const { return vdc_bytes_ == 2 ? INT16_MAX : INT32_MAX; }
  // The elements so far that version 1 does not have.
  const std::set<ElementCode>& later_elements() const { return later_elements_; }
  const std::vector<uint8_t>& bytes() const { return bytes_; }

  void Begin(ElementCode code);
  void End();

  // Of the types I, IX and E.
  void Integer(int64_t value);
  void Integer(bool value) { Integer(int64_t{value ? 1 : 0}); }
  void Vdc(int32_t value);
  // A component of a direction: real ones may be as small or large as they are.
  void Direction(double value);
  // A point of the drawing: VDC run downward.
  void PointOf(vec::Point point);
  void Real(double value);
  void Color(uint32_t color);
  void WideColor(uint32_t color);  // 16 bits a component, the value the same
  void String(std::string_view text);
  // Whole elements.
  void Elements(const ElementWriter& other);
  // Up to the next even place of the list.
  void Align();

 private:
  void Octet(uint32_t value) { list_.push_back(static_cast<uint8_t>(value)); }
  void Word(uint32_t value);
  void Words(uint32_t value);
  void Float(double value);
  void PutWord(uint32_t value);
  void PutPartition(size_t first, size_t count);

  std::vector<uint8_t> bytes_;
  std::vector<uint8_t> list_;  // parameters of the element that is being written
  ElementCode code_{};
  int vdc_bytes_ = 2;
  bool real_ = false;
  double unit_ = 1;
  bool needs_wide_vdc_ = false;
  std::set<ElementCode> later_elements_;
};

}  // namespace tavi::host::cgm

#include "TaviFile/CgmWriter.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <new>
#include <set>
#include <stdexcept>
#include <string>
#include <utility>
#include <variant>

#include "Platform/GlobalMemory.h"
#include "TaviFile/CgmWriterAttributes.h"
#include "TaviFile/CgmWriterElements.h"
#include "TaviFile/CgmWriterShapes.h"
#include "TaviVector/BackColor.h"
#include "TaviVector/Geometry.h"
#include "TaviVector/VectorRecord.h"

namespace tavi::host::cgm {
namespace {

using namespace vec;

constexpr const char* kMetafileName = "TaviHost";
// By these names the profile is known: the earlier one, and that of NITF 2.1 with the writer. The date is that of this
// writer, not of the metafile: the same drawing gives the same bytes on any day.
constexpr const char* kDescription =
    "NITF/CGM-APP-2.0 NITF/CGM;ProfileEd:2301-2/Source:TaviNitf;Date:20261120";
constexpr int64_t kVersion = 1;
constexpr int64_t kDirectColors = 1;
constexpr int64_t kAbsoluteSizes = 0;
constexpr int64_t kWideVdcBits = 32;
constexpr int64_t kRealVdc = 1;
constexpr int32_t kPixelExtent = 32767;

// The corners of the extent that the picture's space reaches from and to, y downward.
struct Extent {
  std::array<int32_t, 2> first;
  std::array<int32_t, 2> second;
};

struct Needs {
  Lists lists;
  bool markers;
};

bool IsVisible(const Drawing& drawing, const Object& object) {
  if (object.layer < drawing.layers.size() && !drawing.layers[object.layer].visible) return false;
  return object.clip >= drawing.clips.size() || !drawing.clips[object.clip].IsEmpty();
}

Needs NeedsOf(const Drawing& drawing, const ElementWriter& out) {
  Needs needs{{{}, DashTypes(out), false}, false};
  std::vector<Font>& fonts = needs.lists.fonts;
  for (const Object& object : drawing.objects) {
    if (!IsVisible(drawing, object)) continue;
    const uint32_t stroke = StrokeOf(object.shape);
    if (stroke < drawing.strokes.size()) needs.lists.dashes.Add(drawing.strokes[stroke]);
    needs.markers = needs.markers || std::holds_alternative<Markers>(object.shape);
    const Text* const text = std::get_if<Text>(&object.shape);
    if (text == nullptr) continue;
    for (const TextSpan& span : text->spans) {
      needs.lists.unicode = needs.lists.unicode || !IsLatin1(span.text);
      if (span.style >= drawing.texts.size()) continue;
      const Font& font = drawing.texts[span.style].font;
      if (std::find(fonts.begin(), fonts.end(), font) == fonts.end()) fonts.push_back(font);
    }
  }
  return needs;
}

std::string PictureName(const Drawing& drawing) {
  std::string name;
  if (drawing.layers.empty()) return name;
  for (const char16_t unit : drawing.layers[0].name)
    name.push_back(unit < 0x100 ? static_cast<char>(unit) : '?');
  return name;
}

void WriteValue(ElementWriter& out, ElementCode code, int64_t value) {
  out.Begin(code);
  out.Integer(value);
  out.End();
}

void WriteText(ElementWriter& out, ElementCode code, const std::string& text) {
  out.Begin(code);
  out.String(text);
  out.End();
}

void WriteEmpty(ElementWriter& out, ElementCode code) {
  out.Begin(code);
  out.End();
}

// The drawing set and control elements are named as one, what is beyond them each by itself.
void WriteElementList(ElementWriter& out, const std::set<ElementCode>& later) {
  out.Begin(code::kMetafileElementList);
  for (const int64_t value : {static_cast<int64_t>(later.size()) + 1, int64_t{-1}, int64_t{1}})
    out.Integer(value);
  for (const ElementCode& code : later) {
    out.Integer(int64_t{code.group});
    out.Integer(int64_t{code.id});
  }
  out.End();
}

// The set that is in force without a list, and UTF-8.
void WriteCharacterSets(ElementWriter& out) {
  constexpr int64_t kSetOf94 = 0;
  constexpr int64_t kCompleteCode = 4;
  out.Begin(code::kCharacterSetList);
  out.Integer(kSetOf94);
  out.String("B");
  out.Integer(kCompleteCode);
  out.String("/I");
  out.End();
}

// Real VDC are in floating point: 9 bits of sign and exponent, 23 of the fraction. The precision belongs to pictures,
// and counts before their bodies where it is a default.
void WriteRealVdc(ElementWriter& out) {
  WriteValue(out, code::kVdcType, kRealVdc);
  ElementWriter precision;
  precision.Begin(code::kVdcRealPrecision);
  for (const int64_t value : {0, 9, 23}) precision.Integer(value);
  precision.End();
  out.Begin(code::kDefaults);
  out.Elements(precision);
  out.End();
}

void WriteDescriptor(ElementWriter& out, const Lists& lists, VdcKind kind,
                     const std::set<ElementCode>& later) {
  WriteText(out, code::kBeginMetafile, kMetafileName);
  WriteValue(out, code::kMetafileVersion, kVersion);
  WriteElementList(out, later);
  WriteText(out, code::kMetafileDescription, kDescription);
  if (kind == VdcKind::kReal) WriteRealVdc(out);
  if (!lists.fonts.empty()) {
    out.Begin(code::kFontList);
    for (const Font& font : lists.fonts) out.String(NameOf(font));
    out.End();
  }
  if (lists.unicode) WriteCharacterSets(out);
}

// Only the directions count where units are pixels: y runs downward. Of real-valued ones it is what they cover, and more
// than what rounding makes nothing of.
Extent ExtentOf(const Drawing& drawing, VdcKind kind) {
  constexpr int32_t kLeast = 1024;
  if (kind != VdcKind::kReal) return {{0, kPixelExtent}, {kPixelExtent, 0}};
  const Box box = BoundsOf(drawing);
  const std::array<int32_t, 2> low{ToVdc(box.low.x), ToVdc(-box.high.y)};
  return {{low[0], std::max(ToVdc(-box.low.y), low[1] + kLeast)},
          {std::max(ToVdc(box.high.x), low[0] + kLeast), low[1]}};
}

void WritePictureDescriptor(ElementWriter& out, const Needs& needs, const Drawing& drawing,
                            const Extent& extent) {
  WriteText(out, code::kBeginPicture, PictureName(drawing));
  WriteValue(out, code::kColorSelectionMode, kDirectColors);
  WriteValue(out, code::kEdgeWidthMode, kAbsoluteSizes);
  WriteValue(out, code::kLineWidthMode, kAbsoluteSizes);
  if (needs.markers) WriteValue(out, code::kMarkerSizeMode, kAbsoluteSizes);
  out.Begin(code::kVdcExtent);
  for (const std::array<int32_t, 2>& corner : {extent.first, extent.second}) {
    for (const int32_t value : corner) out.Vdc(value);
  }
  out.End();
  needs.lists.dashes.Write(&out);
}

// Of curves: a quarter of a pixel, or what that is to the largest pictures of 16 bits.
double ToleranceIn(const Extent& extent, VdcKind kind) {
  constexpr double kPixels = 0.25;
  if (kind != VdcKind::kReal) return kPixels;
  const double across = static_cast<double>(extent.second[0]) - extent.first[0];
  const double down = static_cast<double>(extent.first[1]) - extent.second[1];
  return std::max(kPixels, kPixels / kPixelExtent * std::max(across, down));
}

// False when 16 bits do not do.
bool WriteBody(ElementWriter& out, const Needs& needs, const Drawing& drawing, VdcKind kind,
               const Extent& extent) {
  WriteEmpty(out, code::kBeginPictureBody);
  if (kind == VdcKind::kWide) {
    WriteValue(out, code::kVdcIntegerPrecision, kWideVdcBits);
    out.UseWideVdc();
  }
  AttributeWriter attributes(drawing, needs.lists, extent.first, &out);
  ShapeWriter shapes(drawing, ToleranceIn(extent, kind), &attributes, &out);
  for (const Object& object : drawing.objects) {
    if (!IsVisible(drawing, object)) continue;
    attributes.SetClip(object.clip < drawing.clips.size() ? &drawing.clips[object.clip] : nullptr);
    shapes.Write(object.shape);
    if (kind == VdcKind::kNarrow && out.needs_wide_vdc()) return false;
  }
  return true;
}

// The metafile with VDC of the kind. False when 16 bits do not do.
bool WriteWith(VdcKind kind, const Drawing& drawing, std::vector<uint8_t>* bytes, double parts_of_unit = 1) {
  ElementWriter empty;
  if (kind == VdcKind::kReal) empty.UseRealVdc(parts_of_unit);
  const Needs needs = NeedsOf(drawing, empty);
  const Extent extent = ExtentOf(drawing, kind);
  ElementWriter picture = empty;
  WritePictureDescriptor(picture, needs, drawing, extent);
  if (!WriteBody(picture, needs, drawing, kind, extent)) return false;
  WriteEmpty(picture, code::kEndPicture);
  WriteEmpty(picture, code::kEndMetafile);
  // Only the picture tells what the metafile has to announce.
  ElementWriter metafile = empty;
  WriteDescriptor(metafile, needs.lists, kind, picture.later_elements());
  *bytes = metafile.bytes();
  bytes->insert(bytes->end(), picture.bytes().begin(), picture.bytes().end());
  return true;
}

// The largest coordinate that is written, whether it is seen or not: clips hide parts, arcs have their centre elsewhere.
double FarthestOf(Drawing& drawing) {
  double farthest = 0;
  const auto include = [&farthest](Point p) {
    farthest = std::max({farthest, std::abs(Tame(p.x)), std::abs(Tame(p.y))});
  };
  const auto include_box = [&include](const Box& box) {
    if (box.IsEmpty()) return;
    include(box.low);
    include(box.high);
  };
  const auto include_axes = [&include](const auto& shape) {
    if constexpr (requires { shape.centre; }) {
      include(shape.centre + shape.a);
      include(shape.centre - shape.a);
      include(shape.centre + shape.b);
      include(shape.centre - shape.b);
    }
  };
  for (const Object& object : drawing.objects) std::visit(include_axes, object.shape);
  for (const Box& clip : drawing.clips) include_box(clip);
  for (const Fill& fill : drawing.fills) {
    if (fill.interior == Interior::kHatch || fill.interior == Interior::kPattern) include(fill.origin);
  }
  const std::vector<Box> clips = std::exchange(drawing.clips, {});
  include_box(BoundsOf(drawing));
  drawing.clips = clips;
  return farthest;
}

// In how many parts of a unit real-valued drawings are written: as fine as their numbers hold, and a power of two, so
// that nothing is lost on the way. A billion do for the smallest.
double PartsOfUnit(double farthest) {
  constexpr double kMostParts = 1 << 30;
  return farthest > 1 ? std::exp2(std::floor(std::log2(kMostParts / farthest))) : kMostParts;
}

std::vector<uint8_t> WriteReal(Drawing drawing) {
  const double parts = PartsOfUnit(FarthestOf(drawing));
  Transform(drawing, {parts, 0, 0, 0, parts, 0});
  std::vector<uint8_t> bytes;
  WriteWith(VdcKind::kReal, drawing, &bytes, parts);
  return bytes;
}

// Maps the bounds to a rectangle in raster rows.
Affine MappingTo(const HostRect& rectangle, const Box& bounds) {
  const double left = rectangle.left;
  const double top = rectangle.top;
  const double width = rectangle.right - left;
  const double height = rectangle.bottom - top;
  if (width == 0 || height == 0) return {1, 0, left, 0, 1, -top};
  const double across = bounds.high.x - bounds.low.x;
  const double down = bounds.high.y - bounds.low.y;
  const double x_scale = across > 0 ? width / across : 1;
  const double y_scale = down > 0 ? height / down : 1;
  return {x_scale, 0, left - x_scale * bounds.low.x, 0, y_scale, -top - y_scale * bounds.high.y};
}

std::vector<uint8_t> WriteVector(const Drawing& drawing, const std::optional<HostRect>& viewport) {
  if (!viewport) return WriteMetafile(drawing);
  const Box bounds = BoundsOf(drawing);
  if (bounds.IsEmpty()) return WriteMetafile(drawing);
  Drawing mapped = drawing;
  Transform(mapped, MappingTo(*viewport, bounds));
  mapped.real_units = false;
  return WriteMetafile(mapped);
}

}  // namespace

std::vector<uint8_t> WriteMetafile(const Drawing& drawing) {
  if (drawing.real_units) return WriteReal(drawing);
  std::vector<uint8_t> bytes;
  if (!WriteWith(VdcKind::kNarrow, drawing, &bytes)) WriteWith(VdcKind::kWide, drawing, &bytes);
  return bytes;
}

}  // namespace tavi::host::cgm

using namespace tavi::host;

int32_t HostVecSaveMemory(HostGlobalMemory* block, const HostVector* vector, uint32_t format, uint64_t* size,
                          const HostSaveOptionsRecord*) {
  constexpr uint32_t kFormatCgm = 62;
  if (block != nullptr) *block = nullptr;
  if (size != nullptr) *size = 0;
  if (block == nullptr || vector == nullptr || size == nullptr) return ERR_NULL_ARGUMENT;
  const vec::Drawing* const drawing = vec::DrawingOf(vector);
  if (drawing == nullptr) return ERR_INVALID_VECTOR;
  if (format != kFormatCgm) return ERR_NOT_SUPPORTED;
  try {
    std::optional<vec::Drawing> changed;
    const vec::Drawing& shown = vec::WithBackColor(*drawing, vec::BackColorOf(vector), changed);
    return MakeGlobal(cgm::WriteVector(shown, vec::ViewportOf(vector)), block, size);
  } catch (const std::bad_alloc&) {
    return ERR_NO_MEMORY;
  } catch (const std::length_error&) {
    return ERR_NO_MEMORY;
  }
}

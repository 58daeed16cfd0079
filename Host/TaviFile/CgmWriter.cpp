#include "TaviFile/CgmWriter.h"

#include <algorithm>
#include <new>
#include <stdexcept>
#include <string>

#include "Platform/GlobalMemory.h"
#include "TaviFile/CgmWriterAttributes.h"
#include "TaviFile/CgmWriterElements.h"
#include "TaviFile/CgmWriterShapes.h"
#include "TaviVector/BackColor.h"
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
constexpr int32_t kExtent = 32767;

struct Needs {
  std::vector<Font> fonts;
  bool markers = false;
};

bool IsVisible(const Drawing& drawing, const Object& object) {
  if (object.layer < drawing.layers.size() && !drawing.layers[object.layer].visible) return false;
  return object.clip >= drawing.clips.size() || !drawing.clips[object.clip].IsEmpty();
}

Needs NeedsOf(const Drawing& drawing) {
  Needs needs;
  for (const Object& object : drawing.objects) {
    if (!IsVisible(drawing, object)) continue;
    needs.markers = needs.markers || std::holds_alternative<Markers>(object.shape);
    const Text* const text = std::get_if<Text>(&object.shape);
    if (text == nullptr) continue;
    for (const TextSpan& span : text->spans) {
      if (span.style >= drawing.texts.size()) continue;
      const Font& font = drawing.texts[span.style].font;
      if (std::find(needs.fonts.begin(), needs.fonts.end(), font) == needs.fonts.end()) {
        needs.fonts.push_back(font);
      }
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

void WriteDescriptor(ElementWriter& out, const Needs& needs) {
  WriteText(out, code::kBeginMetafile, kMetafileName);
  WriteValue(out, code::kMetafileVersion, kVersion);
  out.Begin(code::kMetafileElementList);
  for (const int64_t value : {1, -1, 1})
    out.Integer(value);  // one entry: the drawing set and control elements
  out.End();
  WriteText(out, code::kMetafileDescription, kDescription);
  if (needs.fonts.empty()) return;
  out.Begin(code::kFontList);
  for (const Font& font : needs.fonts) out.String(NameOf(font));
  out.End();
}

void WritePictureDescriptor(ElementWriter& out, const Needs& needs, const Drawing& drawing) {
  WriteText(out, code::kBeginPicture, PictureName(drawing));
  WriteValue(out, code::kColorSelectionMode, kDirectColors);
  WriteValue(out, code::kEdgeWidthMode, kAbsoluteSizes);
  WriteValue(out, code::kLineWidthMode, kAbsoluteSizes);
  if (needs.markers) WriteValue(out, code::kMarkerSizeMode, kAbsoluteSizes);
  // Only the directions count: y runs downward.
  out.Begin(code::kVdcExtent);
  for (const int32_t value : {0, kExtent, kExtent, 0}) out.Vdc(value);
  out.End();
}

// The metafile with VDC of 16 bits, or of 32. False when those do not do.
bool WriteWith(bool wide, const Drawing& drawing, std::vector<uint8_t>* bytes) {
  const Needs needs = NeedsOf(drawing);
  ElementWriter out;
  WriteDescriptor(out, needs);
  WritePictureDescriptor(out, needs, drawing);
  WriteEmpty(out, code::kBeginPictureBody);
  if (wide) {
    WriteValue(out, code::kVdcIntegerPrecision, kWideVdcBits);
    out.UseWideVdc();
  }
  AttributeWriter attributes(drawing, needs.fonts, &out);
  ShapeWriter shapes(drawing, &attributes, &out);
  for (const Object& object : drawing.objects) {
    if (!IsVisible(drawing, object)) continue;
    attributes.SetClip(object.clip < drawing.clips.size() ? &drawing.clips[object.clip] : nullptr);
    shapes.Write(object.shape);
    if (!wide && out.needs_wide_vdc()) return false;
  }
  WriteEmpty(out, code::kEndPicture);
  WriteEmpty(out, code::kEndMetafile);
  *bytes = out.bytes();
  return true;
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
  return WriteMetafile(mapped);
}

}  // namespace

std::vector<uint8_t> WriteMetafile(const Drawing& drawing) {
  std::vector<uint8_t> bytes;
  if (!WriteWith(false, drawing, &bytes)) WriteWith(true, drawing, &bytes);
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

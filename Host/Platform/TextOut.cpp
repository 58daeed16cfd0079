// Text written straight into a context's bitmap.
#include <new>
#include <string>

#include "TaviHost.h"
#include "TaviKernel/DrawingContext.h"
#include "TaviKernel/PixelView.h"
#include "TaviVector/Overlay.h"

namespace {

using namespace tavi::host;

constexpr double kHeight = 16;

std::string Utf8Of(const char* text, int32_t length) {
  std::string characters;
  for (int32_t i = 0; i < length; ++i) {
    const auto byte = static_cast<uint8_t>(text[i]);
    if (byte < 0x80) {
      characters.push_back(static_cast<char>(byte));
    } else {
      characters.push_back(static_cast<char>(0xC0 | byte >> 6));
      characters.push_back(static_cast<char>(0x80 | (byte & 0x3F)));
    }
  }
  return characters;
}

// Text in rows of the bitmap, which run downward.
vec::Drawing DrawingOf(const TextState& state, int32_t x, int32_t y, std::string characters) {
  vec::TextStyle style;
  style.color = state.color;
  style.height = kHeight;
  style.across = vec::TextAcross::kLeft;
  style.upright = vec::TextUpright::kTop;
  if (state.opaque) style.box_color = state.box_color;
  vec::Drawing drawing;
  drawing.texts.push_back(style);
  vec::Text text;
  text.at = {static_cast<double>(x), -static_cast<double>(y)};
  text.spans.push_back({std::move(characters), 0});
  drawing.objects.push_back({std::move(text), 0, vec::kNone});
  return drawing;
}

}  // namespace

int32_t TextOutA(HostDrawingContext context, int32_t x, int32_t y, const char* text, int32_t length) {
  PixelView target;
  if (!IsContext(context) || length < 0 || (text == nullptr && length != 0)) return 0;
  if (!ViewOf(context->bitmap, &target)) return 0;
  try {
    const vec::Drawing drawing = DrawingOf(context->text, x, y, Utf8Of(text, length));
    return vec::PaintOver(target, drawing, {1, 0, 0, 0, -1, 0}, context->painted) == SUCCESS ? 1 : 0;
  } catch (const std::bad_alloc&) {
    return 0;
  }
}

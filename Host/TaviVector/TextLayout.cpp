#include "TaviVector/TextLayout.h"

#include <algorithm>

#include "TaviVector/Scene.h"

namespace tavi::host::vec {
namespace {

constexpr char32_t kNoCharacter = 0xFFFD;
constexpr size_t kMostCharacters = 1'000'000;  // of one text

bool IsControl(char32_t c) {
  return c < 0x20 || (c >= 0x7F && c < 0xA0);
}

// Reads one character and moves on behind it.
char32_t NextCharacter(const std::string& text, size_t* at) {
  const auto byte = [&](size_t i) -> uint32_t { return i < text.size() ? static_cast<uint8_t>(text[i]) : 0; };
  const uint32_t first = byte((*at)++);
  if (first < 0x80) return first;
  const size_t more = first >= 0xF0 && first < 0xF5   ? 3
                      : first >= 0xE0 && first < 0xF0 ? 2
                      : first >= 0xC2 && first < 0xE0 ? 1
                                                      : 0;
  if (more == 0) return kNoCharacter;
  char32_t character = first & (0x3Fu >> more);
  for (size_t i = 0; i < more; ++i) {
    const uint32_t next = byte(*at);
    if ((next & 0xC0) != 0x80) return kNoCharacter;
    character = character << 6 | (next & 0x3F);
    ++*at;
  }
  constexpr char32_t kLeast[] = {0, 0x80, 0x800, 0x10000};
  const bool legal =
      character >= kLeast[more] && character <= 0x10FFFF && (character < 0xD800 || character > 0xDFFF);
  return legal ? character : kNoCharacter;
}

// A style with numbers that can be relied on.
struct Style {
  const TextStyle* attributes;
  const Face* face;
  double height;
  double width;    // of the em
  double spacing;  // between characters
  double Ascent() const { return face->metrics().ascent * height; }
  double Descent() const { return face->metrics().descent * height; }
  double Cap() const { return face->metrics().cap * height; }
};

Style StyleOf(const TextStyle& attributes) {
  Style style{&attributes, &FaceOf(attributes.font), 0, 0, 0};
  constexpr double kGreatest = 1e9;
  style.height = std::clamp(Tame(attributes.height), 0.0, kGreatest);
  style.width = style.height * std::clamp(Tame(attributes.expansion), 0.0, 1e3);
  style.spacing = style.height * std::clamp(Tame(attributes.spacing), -10.0, 1e3);
  return style;
}

// The frame of a style: text space to the drawing.
Affine FrameOf(const TextStyle& style, Point at) {
  const Point up = Tame(style.up);
  const Point base = Tame(style.base);
  const double length = Length(up);
  at = Tame(at);
  const bool usable =
      length > 0 && Length(base) > 0 && std::abs(Cross(base, up)) > 1e-9 * length * Length(base);
  if (!usable) return {1, 0, at.x, 0, 1, at.y};
  return {base.x / length, up.x / length, at.x, base.y / length, up.y / length, at.y};
}

// Places characters one behind the other; the first base line begins at the origin.
class Composer {
 public:
  Composer(TextPath path, LaidText* text) : path_(path), text_(text) {}

  void Add(const Style& style, char32_t character) {
    const Glyph& glyph = style.face->At(character);
    const double advance = glyph.advance * style.width;
    const Point origin = IsUpright() ? PlaceBelow(style, advance) : PlaceBeside(style, advance);
    text_->glyphs.push_back(
        {&glyph, style.attributes->color, {style.width, 0, origin.x, 0, style.height, origin.y}});
    const Box cell{{std::min(origin.x, origin.x + advance), origin.y - style.Descent()},
                   {std::max(origin.x, origin.x + advance), origin.y + style.Ascent()}};
    Include(text_->extent, cell);
    Include(span_, cell);
    last_base_ = origin.y;
    if (count_++ == 0) first_base_ = origin.y;
  }

  // Ends a span: its box goes behind its characters.
  void EndSpan(const TextStyle& style) {
    if (style.box_color && !span_.IsEmpty()) text_->boxes.push_back({span_, *style.box_color});
    span_ = {};
  }

  double first_base() const { return first_base_; }
  double last_base() const { return last_base_; }

 private:
  bool IsUpright() const { return path_ == TextPath::kUp || path_ == TextPath::kDown; }

  Point PlaceBeside(const Style& style, double advance) {
    if (path_ == TextPath::kLeft) {
      pen_ -= advance + (count_ != 0 ? spacing_ : 0);
      spacing_ = style.spacing;
      return {pen_, 0};
    }
    if (count_ != 0) pen_ += spacing_;
    spacing_ = style.spacing;
    const Point origin{pen_, 0};
    pen_ += advance;
    return origin;
  }

  Point PlaceBelow(const Style& style, double advance) {
    // From base line to base line: what the upper character has below and the lower one above.
    if (count_ != 0) {
      const bool down = path_ == TextPath::kDown;
      const double step = down ? descent_ + style.Ascent() : ascent_ + style.Descent();
      pen_ += (down ? -1 : 1) * (step + spacing_);
    }
    ascent_ = style.Ascent();
    descent_ = style.Descent();
    spacing_ = style.spacing;
    return {-advance / 2, pen_};
  }

  TextPath path_;
  LaidText* text_;
  Box span_;
  double pen_ = 0;
  double spacing_ = 0;  // behind the last character
  double ascent_ = 0;
  double descent_ = 0;
  double first_base_ = 0;
  double last_base_ = 0;
  size_t count_ = 0;
};

// The x in the text's extent that goes to its point.
double AnchorAcross(const TextStyle& style, const Box& extent) {
  const double left = extent.low.x;
  const double right = extent.high.x;
  switch (style.across) {
    case TextAcross::kLeft:
      return left;
    case TextAcross::kCentre:
      return (left + right) / 2;
    case TextAcross::kRight:
      return right;
    case TextAcross::kContinuous:
      return left + Tame(style.across_fraction) * (right - left);
    default:
      break;
  }
  if (style.path == TextPath::kRight) return left;
  return style.path == TextPath::kLeft ? right : (left + right) / 2;
}

// The same for y. `upper` and `lower` are the base lines of the top and the bottom character.
double AnchorUpright(const TextStyle& style, const Style& first, double upper, double lower,
                     const Box& extent) {
  switch (style.upright) {
    case TextUpright::kTop:
      return extent.high.y;
    case TextUpright::kCap:
      return upper + first.Cap();
    case TextUpright::kHalf:
      return (upper + first.Cap() + lower) / 2;
    case TextUpright::kBase:
      return lower;
    case TextUpright::kBottom:
      return extent.low.y;
    case TextUpright::kContinuous:
      return extent.low.y + Tame(style.upright_fraction) * (extent.high.y - extent.low.y);
    default:
      return style.path == TextPath::kDown ? extent.high.y : lower;
  }
}

// How much a side must shrink to fit.
double Shrink(double wanted, double actual) {
  wanted = std::abs(Tame(wanted));
  return wanted > 0 && actual > wanted ? wanted / actual : 1;
}

}  // namespace

std::u32string CharactersOf(const std::string& text) {
  std::u32string characters;
  for (size_t at = 0; at < text.size();) {
    const char32_t character = NextCharacter(text, &at);
    if (!IsControl(character)) characters.push_back(character);
  }
  return characters;
}

LaidText LayOut(const Drawing& drawing, const Text& text) {
  LaidText laid;
  const TextStyle* first = nullptr;
  for (const TextSpan& span : text.spans) {
    if (first == nullptr) first = Find(drawing.texts, span.style);
  }
  if (first == nullptr) return laid;
  Composer composer(first->path, &laid);
  for (const TextSpan& span : text.spans) {
    const TextStyle* const attributes = Find(drawing.texts, span.style);
    if (attributes == nullptr) continue;
    const Style style = StyleOf(*attributes);
    for (const char32_t character : CharactersOf(span.text)) {
      if (laid.glyphs.size() < kMostCharacters) composer.Add(style, character);
    }
    composer.EndSpan(*attributes);
  }
  const Box extent = laid.extent;
  if (extent.IsEmpty()) return laid;
  const double lower = std::min(composer.first_base(), composer.last_base());
  const double upper = std::max(composer.first_base(), composer.last_base());
  const Point anchor{AnchorAcross(*first, extent),
                     AnchorUpright(*first, StyleOf(*first), upper, lower, extent)};
  Affine place{1, 0, -anchor.x, 0, 1, -anchor.y};
  if (text.fit) {
    const double sx = Shrink(text.fit->x, extent.high.x - extent.low.x);
    const double sy = Shrink(text.fit->y, extent.high.y - extent.low.y);
    place = {sx, 0, -sx * anchor.x, 0, sy, -sy * anchor.y};
  }
  laid.to_drawing = Chained(place, FrameOf(*first, text.at));
  return laid;
}

}  // namespace tavi::host::vec

// Text: a string that is not final waits for the ones that continue it.
#include <array>

#include "TaviFile/CgmFonts.h"
#include "TaviFile/CgmInterpreter.h"
#include "TaviFile/CgmTextMeasure.h"

namespace tavi::host::cgm {
namespace {

void AppendSpan(Interpreter& in, const std::string& octets) {
  std::string characters = TextOf(octets, in.tables, in.now);
  if (characters.empty()) return;
  in.ChargeBytes(sizeof(vec::TextSpan) + characters.size());
  in.text->spans.push_back({std::move(characters), in.CurrentTextStyle(in.text->fit.has_value())});
}

// Text without a character is nothing to draw.
void EndIfFinal(Interpreter& in, bool final) {
  if (!final) return;
  if (in.text->spans.empty()) in.text.reset();
  in.FlushText();
}

void Begin(Interpreter& in, Parameters& p, std::optional<Point> fit) {
  const Point at = p.At();
  const bool final = p.Enumerated() != 0;
  const std::string octets = p.String();
  if (!p.ok()) return;
  in.FlushText();
  in.text = vec::Text{in.Map(at), {}, fit};
  AppendSpan(in, octets);
  EndIfFinal(in, final);
}

void Text(Interpreter& in, Parameters& p) {
  Begin(in, p, std::nullopt);
}

void RestrictedText(Interpreter& in, Parameters& p) {
  const double scale = in.LengthScale();
  const double width = std::abs(p.Vdc()) * scale;
  double height = std::abs(p.Vdc()) * scale;
  // The drawing's box holds whole characters.
  if (in.now.boxes_capitals) height *= kCharacterToCapitals;
  if (p.ok()) Begin(in, p, Point{width, height});
}

void AppendText(Interpreter& in, Parameters& p) {
  const bool final = p.Enumerated() != 0;
  const std::string octets = p.String();
  if (!p.ok() || !in.text) return;
  AppendSpan(in, octets);
  EndIfFinal(in, final);
}

constexpr auto kHandlers = std::to_array<Handler>({
    {4, 4, "TEXT", Text},
    {4, 5, "RESTRICTED TEXT", RestrictedText},
    {4, 6, "APPEND TEXT", AppendText},
});

}  // namespace

std::span<const Handler> TextHandlers() {
  return kHandlers;
}

}  // namespace tavi::host::cgm

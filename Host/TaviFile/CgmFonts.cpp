#include "TaviFile/CgmFonts.h"

#include <array>
#include <utility>

namespace tavi::host::cgm {
namespace {

using vec::FontFamily;
using vec::HersheyFace;

constexpr int64_t kCompleteCode = 4;

std::string Letters(std::string_view name) {
  std::string letters;
  for (const char c : name) {
    if (c >= 'a' && c <= 'z') letters.push_back(static_cast<char>(c - 'a' + 'A'));
    if (c >= 'A' && c <= 'Z') letters.push_back(c);
  }
  return letters;
}

constexpr std::array<std::pair<std::string_view, HersheyFace>, 16> kHersheyFaces = {{
    {"CARTOGRAPHICROMAN", HersheyFace::kCartographicRoman},
    {"CARTOGRAPHICGREEK", HersheyFace::kCartographicGreek},
    {"SIMPLEXROMAN", HersheyFace::kSimplexRoman},
    {"SIMPLEXGREEK", HersheyFace::kSimplexGreek},
    {"SIMPLEXSCRIPT", HersheyFace::kSimplexScript},
    {"COMPLEXROMAN", HersheyFace::kComplexRoman},
    {"COMPLEXGREEK", HersheyFace::kComplexGreek},
    {"COMPLEXSCRIPT", HersheyFace::kComplexScript},
    {"COMPLEXITALIC", HersheyFace::kComplexItalic},
    {"COMPLEXCYRILLIC", HersheyFace::kComplexCyrillic},
    {"DUPLEXROMAN", HersheyFace::kDuplexRoman},
    {"TRIPLEXROMAN", HersheyFace::kTriplexRoman},
    {"TRIPLEXITALIC", HersheyFace::kTriplexItalic},
    {"GOTHICGERMAN", HersheyFace::kGothicGerman},
    {"GOTHICENGLISH", HersheyFace::kGothicEnglish},
    {"GOTHICITALIAN", HersheyFace::kGothicItalian},
}};

constexpr std::array<std::pair<std::string_view, FontFamily>, 20> kFamilies = {{
    {"TIMES", FontFamily::kSerif},
    {"BOOKMAN", FontFamily::kSerif},
    {"PALATINO", FontFamily::kSerif},
    {"NEWCENTURY", FontFamily::kSerif},
    {"CENTURY", FontFamily::kSerif},
    {"GARAMOND", FontFamily::kSerif},
    {"GEORGIA", FontFamily::kSerif},
    {"CAMBRIA", FontFamily::kSerif},
    {"SERIF", FontFamily::kSerif},
    {"LIBERATIONSERIF", FontFamily::kSerif},
    {"ROMAN", FontFamily::kSerif},
    {"COURIER", FontFamily::kMono},
    {"MONO", FontFamily::kMono},
    {"CONSOLAS", FontFamily::kMono},
    {"OCR", FontFamily::kMono},
    {"LUCIDACONSOLE", FontFamily::kMono},
    {"LIBERATIONMONO", FontFamily::kMono},
    {"PIPMONO", FontFamily::kMono},
    {"TYPEWRITER", FontFamily::kMono},
    {"TERMINAL", FontFamily::kMono},
}};

bool Contains(std::string_view text, std::string_view word) {
  return text.find(word) != std::string_view::npos;
}

vec::Font HersheyFont(std::string_view letters) {
  vec::Font font;
  font.family = FontFamily::kHershey;
  for (const auto& [name, face] : kHersheyFaces) {
    if (Contains(letters, name)) font.hershey = face;
  }
  return font;
}

void AppendUtf8(std::string* text, uint32_t code) {
  if (code < 0x80) {
    text->push_back(static_cast<char>(code));
  } else if (code < 0x800) {
    text->push_back(static_cast<char>(0xC0 | code >> 6));
    text->push_back(static_cast<char>(0x80 | (code & 0x3F)));
  } else {
    text->push_back(static_cast<char>(0xE0 | code >> 12));
    text->push_back(static_cast<char>(0x80 | (code >> 6 & 0x3F)));
    text->push_back(static_cast<char>(0x80 | (code & 0x3F)));
  }
}

// The symbol font's characters from 0x40 on; the others are those of ASCII, or have no letter here.
constexpr std::u16string_view kSymbols40 =
    u"\u2245\u0391\u0392\u03A7\u2206\u0395\u03A6\u0393\u0397\u0399\u03D1\u039A\u039B\u039C\u039D\u039F"
    u"\u03A0\u0398\u03A1\u03A3\u03A4\u03A5\u03C2\u03A9\u039E\u03A8\u0396[\u2234]\u22A5_"
    u"\u203E\u03B1\u03B2\u03C7\u03B4\u03B5\u03C6\u03B3\u03B7\u03B9\u03D5\u03BA\u03BB\u03BC\u03BD\u03BF"
    u"\u03C0\u03B8\u03C1\u03C3\u03C4\u03C5\u03D6\u03C9\u03BE\u03C8\u03B6{|}\u223C";
constexpr std::u16string_view kSymbolsB0 =
    u"\u00B0\u00B1\u2033\u2265\u00D7\u221D\u2202\u2022\u00F7\u2260\u2261\u2248\u2026";

uint32_t SymbolOf(uint32_t octet) {
  if (octet >= 0x40 && octet - 0x40 < kSymbols40.size()) return kSymbols40[octet - 0x40];
  if (octet >= 0xB0 && octet - 0xB0 < kSymbolsB0.size()) return kSymbolsB0[octet - 0xB0];
  if (octet == 0xA3) return 0x2264;
  if (octet == 0xA5) return 0x221E;
  return octet;
}

vec::Font FontOf(std::string_view letters) {
  if (letters.starts_with("HERSHEY")) return HersheyFont(letters);
  vec::Font font;
  for (const auto& [prefix, family] : kFamilies) {
    if (letters.starts_with(prefix)) font.family = family;
  }
  font.bold = Contains(letters, "BOLD") || Contains(letters, "DEMI") || Contains(letters, "BLACK");
  font.italic = Contains(letters, "ITALIC") || Contains(letters, "OBLIQUE");
  return font;
}

// The entry of an index that counts from 1, a default one where there is none.
template <class Entry>
Entry EntryAt(const std::vector<Entry>& list, int64_t index) {
  if (index < 1 || static_cast<uint64_t>(index) > list.size()) return {};
  return list[static_cast<size_t>(index - 1)];
}

bool IsControl(uint32_t octet) {
  return octet < 0x20 || (octet >= 0x7F && octet < 0xA0);
}

// Length of the sequence of UTF-8 at the front, 0 where there is none.
size_t Utf8Length(std::string_view text) {
  const auto lead = static_cast<uint8_t>(text[0]);
  const size_t length = lead < 0x80   ? 1
                        : lead < 0xC2 ? 0
                        : lead < 0xE0 ? 2
                        : lead < 0xF0 ? 3
                        : lead < 0xF5 ? 4
                                      : 0;
  if (length == 0 || length > text.size()) return 0;
  for (size_t i = 1; i < length; ++i) {
    if ((static_cast<uint8_t>(text[i]) & 0xC0) != 0x80) return 0;
  }
  const auto second = length > 1 ? static_cast<uint8_t>(text[1]) : uint8_t{0};
  const bool overlong = (lead == 0xE0 && second < 0xA0) || (lead == 0xF0 && second < 0x90);
  const bool surrogate = lead == 0xED && second > 0x9F;
  const bool beyond = lead == 0xF4 && second > 0x8F;
  return overlong || surrogate || beyond ? 0 : length;
}

// Octets that are no UTF-8 count as Latin-1.
std::string CleanUtf8(std::string_view octets) {
  std::string text;
  while (!octets.empty()) {
    const size_t length = Utf8Length(octets);
    const auto lead = static_cast<uint8_t>(octets[0]);
    const bool control =
        length == 1 ? IsControl(lead) : length == 2 && lead == 0xC2 && static_cast<uint8_t>(octets[1]) < 0xA0;
    if (length == 0) {
      if (!IsControl(lead)) AppendUtf8(&text, lead);
    } else if (!control) {
      text.append(octets.substr(0, length));
    }
    octets.remove_prefix(std::max<size_t>(1, length));
  }
  return text;
}

}  // namespace

ListedFont ListedFontOf(std::string_view name) {
  const std::string letters = Letters(name);
  return {FontOf(letters), letters.starts_with("SYMBOL")};
}

// The final octet of a designation names the code; those of UTF-8 are G, and with a slash G to I by level.
CharacterSet CharacterSetOf(int64_t type, std::string_view tail) {
  if (type != kCompleteCode || tail.empty()) return {};
  const char last = tail.back();
  return {last == 'G' || (Contains(tail, "/") && (last == 'H' || last == 'I'))};
}

ListedFont FontAt(const Tables& tables, int64_t index) {
  return EntryAt(tables.fonts, index);
}

std::string TextOf(std::string_view octets, const Tables& tables, const Attributes& now) {
  const auto& sets = tables.character_sets;
  if (EntryAt(sets, now.character_set).utf8 || EntryAt(sets, now.alternate_set).utf8)
    return CleanUtf8(octets);
  const bool symbols = FontAt(tables, TextInForce(now, tables).font).symbols;
  std::string text;
  for (const char c : octets) {
    const auto octet = static_cast<uint8_t>(c);
    if (!IsControl(octet)) AppendUtf8(&text, symbols ? SymbolOf(octet) : octet);
  }
  return text;
}

}  // namespace tavi::host::cgm

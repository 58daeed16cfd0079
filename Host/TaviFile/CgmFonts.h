// Fonts and characters as metafiles name them.
#pragma once

#include <string>
#include <string_view>

#include "TaviFile/CgmState.h"
#include "TaviVector/Drawing.h"

namespace tavi::host::cgm {

// Family and style by the words in the name; case and what stands between the words do not matter. A name that says
// nothing gives the default font, which is sans-serif.
ListedFont ListedFontOf(std::string_view name);
// Of an entry in the list of character sets.
CharacterSet CharacterSetOf(int64_t type, std::string_view tail);
// The font of an index, the default one where the list has none.
ListedFont FontAt(const Tables& tables, int64_t index);
// The text of a string under the character sets in force, as UTF-8. Control characters are left out.
std::string TextOf(std::string_view octets, const Tables& tables, const Attributes& now);

}  // namespace tavi::host::cgm

// How texts that are fitted into a box measure their characters. Annotations of imagery give the em size as the height of
// their characters; fitted text is foreign to them, and follows the standard, which measures capitals.
#pragma once

#include "TaviVector/Drawing.h"

namespace tavi::host::cgm {

// From the base line to the top of the capitals, as a share of the em.
inline double CapitalsOf(vec::FontFamily family) {
  switch (family) {
    case vec::FontFamily::kSerif:
      return 0.66;
    case vec::FontFamily::kMono:
      return 0.56;
    default:
      return 0.72;
  }
}

// From the bottom to the top of a font's characters, to the height of its capitals, at most: the drawing's box holds
// whole characters, the metafile's their capitals.
inline constexpr double kCharacterToCapitals = 2.1;

}  // namespace tavi::host::cgm

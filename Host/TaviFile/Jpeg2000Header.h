// What the header of a JPEG 2000 stream says, read without a decoder.
#pragma once

#include "TaviFile/Codec.h"

namespace tavi::host {

// The picture's area on the reference grid, and the points of it that the finest component has.
struct Jpeg2000Grid {
  uint32_t left = 0;
  uint32_t top = 0;
  uint32_t right = 0;
  uint32_t bottom = 0;
  uint32_t step_across = 1;
  uint32_t step_down = 1;
};

struct Jpeg2000Stream {
  bool is_jp2 = false;
  Bytes codestream;
  Jpeg2000Grid grid;
  uint32_t width = 0;  // of the picture, in points of its finest component
  uint32_t height = 0;
  uint32_t components = 0;
  uint32_t palette_columns = 0;    // of a JP2 with a palette
  uint32_t precision = 0;          // the deepest component's, or the palette's
  uint64_t coded_samples = 0;      // of all components, subsampling counted
  uint64_t largest_component = 0;  // samples of it
  uint64_t tiles = 0;
  uint32_t layers = 1;
  uint32_t levels = 0;         // most decompositions
  uint32_t precinct_log = 30;  // sum of both exponents of the smallest precinct
  uint32_t block_log = 12;     // the same of the smallest code-block
  bool has_component_transform = false;
  // Components of the decoded picture.
  uint32_t channels() const { return palette_columns != 0 ? palette_columns : components; }
};

// As ReadJpegHeader.
int32_t ReadJpeg2000Header(Bytes stream, Jpeg2000Stream* picture) noexcept;

// SUCCESS, or why a picture of such a claim is not decoded: see Plausible.h. `samples` are those that the
// decoder is going to hold.
int32_t CheckJpeg2000Claim(const Jpeg2000Stream& picture, uint64_t samples) noexcept;

}  // namespace tavi::host

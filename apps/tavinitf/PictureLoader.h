// Loads a file as one picture through the library's filter entry points.
#pragma once

#include <cstdint>
#include <functional>
#include <string>

namespace tavinitf {

struct LoadOptions {
  bool fixed_canvas = false;
  bool stretch_dark = false;
  bool paint_each = false;
  uint32_t bits = 24;  // of the rows: 24 blue, green, red; 8 grey
};

struct PictureSize {
  uint32_t width = 0;
  uint32_t height = 0;
};

// The status of fltInfo.
int32_t QueryPictureSize(const std::wstring& path, const LoadOptions& options, PictureSize& size);

// Takes one row of the picture, from top to bottom; false ends the load.
using RowSink = std::function<bool(const uint8_t* row)>;

// The status of fltLoad; 0 when the sink ended it.
int32_t LoadPicture(const std::wstring& path, const LoadOptions& options, const RowSink& sink);

}  // namespace tavinitf

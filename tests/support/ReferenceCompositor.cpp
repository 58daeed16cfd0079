#include "ReferenceCompositor.h"

#include <algorithm>
#include <cstdlib>
#include <numeric>
#include <set>
#include <sstream>
#include <stdexcept>

#include "ReferenceDecoder.h"

namespace tavi_test {
namespace {

constexpr uint32_t kCanvasOfNothing = 2048;

struct Place {
  int64_t left;
  int64_t top;
};

Place PlaceOf(const std::vector<ImageSpec>& images, size_t index) {
  const Offset parents = ReferenceAttachment(images, index);
  return {int64_t{images[index].column} + parents.column, int64_t{images[index].row} + parents.row};
}

// The colour that keyed painting leaves out: the palette entry named by the pad code, or black.
Rgb TransparentColour(const SegmentBitmap& segment, const Bytes& pad_code) {
  return segment.palette.empty() ? Rgb{} : segment.palette.at(pad_code[0]);
}

void Paint(const SegmentBitmap& segment, const Bytes& pad_code, Place place, Composite& canvas) {
  for (uint32_t y = 0; y < segment.rows.height; ++y) {
    for (uint32_t x = 0; x < segment.rows.width; ++x) {
      const int64_t column = place.left + x;
      const int64_t row = place.top + y;
      if (column < 0 || row < 0 || column >= canvas.width || row >= canvas.height) continue;
      const Rgb colour = segment.ColourAt(x, y);
      if (!pad_code.empty() && colour == TransparentColour(segment, pad_code)) continue;
      canvas.pixels[static_cast<size_t>(row) * canvas.width + static_cast<size_t>(column)] = colour;
    }
  }
}

}  // namespace

std::vector<size_t> ReferenceDrawingOrder(const std::vector<ImageSpec>& images) {
  std::vector<size_t> order(images.size());
  std::iota(order.begin(), order.end(), size_t{0});
  for (size_t i = 0; i + 1 < order.size(); ++i) {
    for (size_t j = i + 1; j < order.size(); ++j) {
      if (images[order[i]].idlvl > images[order[j]].idlvl) std::swap(order[i], order[j]);
    }
  }
  return order;
}

Offset ReferenceAttachment(const std::vector<ImageSpec>& images, size_t index) {
  Offset sum;
  std::set<size_t> visited;
  uint32_t level = images[index].ialvl;
  for (;;) {
    const auto parent = std::find_if(images.begin(), images.end(),
                                     [&](const ImageSpec& image) { return image.idlvl == level; });
    if (parent == images.end()) return sum;
    if (!visited.insert(static_cast<size_t>(parent - images.begin())).second) return sum;
    sum.row += parent->row;
    sum.column += parent->column;
    level = parent->ialvl;
  }
}

Composite ReferenceSize(const NtfBuilder& file) {
  if (!file.graphics.empty() || !file.labels.empty()) throw std::logic_error("only images have a reference");
  Composite size;
  if (file.images.empty() && !file.texts.empty()) {
    size.width = size.height = 2;
    return size;
  }
  for (size_t i = 0; i < file.images.size(); ++i) {
    const ImageSpec& image = file.images[i];
    const Place place = PlaceOf(file.images, i);
    size.width = std::max(size.width, static_cast<uint32_t>(int64_t{image.nppbh} * image.nbpr + place.left));
    size.height = std::max(size.height, static_cast<uint32_t>(int64_t{image.nppbv} * image.nbpc + place.top));
  }
  if (size.width == 0 && size.height == 0) size.width = size.height = kCanvasOfNothing;
  return size;
}

Composite ReferenceCompose(const NtfBuilder& file, const BuiltFile& built) {
  Composite canvas = ReferenceSize(file);
  const Rgb background = {file.background.at(0), file.background.at(1), file.background.at(2)};
  canvas.pixels.assign(size_t{canvas.width} * canvas.height, background);
  for (const size_t index : ReferenceDrawingOrder(file.images)) {
    const ImageSpec& image = file.images[index];
    const size_t offset = built.At("image[" + std::to_string(index) + "].data").offset;
    const std::string length = built.Text("LI[" + std::to_string(index) + "]");
    const SegmentSource source(built.bytes, offset, static_cast<uint32_t>(std::atoll(length.c_str())));
    const SegmentBitmap segment = DecodeSegment(image, source);
    if (segment.status != SUCCESS) {
      canvas.status = segment.status;
      return canvas;
    }
    Paint(segment, ReadMaskTable(image, source).pad_code, PlaceOf(file.images, index), canvas);
  }
  return canvas;
}

std::string Differences(const LoadedPicture& picture, const Composite& expected, int tolerance) {
  std::ostringstream text;
  if (picture.status != expected.status) {
    text << "status " << picture.status << ", expected " << expected.status;
    return text.str();
  }
  if (picture.status != SUCCESS) return "";
  if (picture.width != expected.width || picture.height != expected.height) {
    text << "size " << picture.width << " x " << picture.height << ", expected " << expected.width << " x "
         << expected.height;
    return text.str();
  }
  const auto far = [&](uint8_t a, uint8_t b) { return std::abs(int{a} - int{b}) > tolerance; };
  for (uint32_t y = 0; y < expected.height; ++y) {
    for (uint32_t x = 0; x < expected.width; ++x) {
      const Rgb is = picture.At(x, y);
      const Rgb due = expected.At(x, y);
      if (!far(is.red, due.red) && !far(is.green, due.green) && !far(is.blue, due.blue)) continue;
      text << "at column " << x << ", row " << y << ": " << int{is.red} << ' ' << int{is.green} << ' '
           << int{is.blue} << ", expected " << int{due.red} << ' ' << int{due.green} << ' ' << int{due.blue};
      return text.str();
    }
  }
  return "";
}

}  // namespace tavi_test

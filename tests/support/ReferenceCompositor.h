// An independent composition of a document's images on the common coordinate system: what fltLoad is to
// deliver.
#ifndef TAVI_TESTS_SUPPORT_REFERENCE_COMPOSITOR_H
#define TAVI_TESTS_SUPPORT_REFERENCE_COMPOSITOR_H

#include <cstdint>
#include <string>
#include <vector>

#include "LoadPicture.h"
#include "NtfBuilder.h"

namespace tavi_test {

struct Composite {
  int32_t status = 1;
  uint32_t width = 0;
  uint32_t height = 0;
  std::vector<Rgb> pixels;  // top to bottom

  [[nodiscard]] Rgb At(uint32_t x, uint32_t y) const { return pixels.at(size_t{y} * width + x); }
};

struct Offset {
  int32_t row = 0;
  int32_t column = 0;
};

// The images' indices in the order in which they are drawn.
std::vector<size_t> ReferenceDrawingOrder(const std::vector<ImageSpec>& images);
// The sum of the locations of the images that this one hangs from. A chain that comes back on itself ends
// there.
Offset ReferenceAttachment(const std::vector<ImageSpec>& images, size_t index);
// The size of the composite of images alone.
Composite ReferenceSize(const NtfBuilder& file);
// Size and pixels. The file may hold images and texts, no graphics or labels.
Composite ReferenceCompose(const NtfBuilder& file, const BuiltFile& built);

// Empty when the picture is the composite, with every channel at most `tolerance` away; else the first
// difference in words.
std::string Differences(const LoadedPicture& picture, const Composite& expected, int tolerance = 0);

}  // namespace tavi_test

#endif  // TAVI_TESTS_SUPPORT_REFERENCE_COMPOSITOR_H

// Drawings put together style by style, and the elements that they are written as.
#pragma once

#include <optional>
#include <utility>
#include <vector>

#include "CgmElementList.h"
#include "TaviFile/CgmWriter.h"
#include "VectorTest.h"

namespace tavi::test::sketch {

using namespace host::vec;

inline constexpr uint32_t kRed = 0x0000FF;
inline constexpr uint32_t kGreen = 0x00FF00;
inline constexpr uint32_t kBlue = 0xFF0000;

// A drawing to which objects are added with their styles.
struct CgmSketch {
  uint32_t Stroke(uint32_t color, double width = 1, LineType type = LineType::kSolid,
                  std::optional<uint32_t> gap = {}) {
    host::vec::Stroke stroke;
    stroke.color = color;
    stroke.width = width;
    stroke.type = type;
    stroke.gap_color = gap;
    return Intern(drawing.strokes, stroke);
  }
  uint32_t Fill(Interior interior, uint32_t color, Hatch hatch = Hatch::kHorizontal,
                std::optional<uint32_t> gap = {}) {
    host::vec::Fill fill;
    fill.interior = interior;
    fill.color = color;
    fill.hatch = hatch;
    fill.gap_color = gap;
    fill.origin = {0, -32767};
    return Intern(drawing.fills, fill);
  }
  CgmSketch& Add(Shape shape, uint32_t clip = kNone) {
    drawing.objects.push_back({std::move(shape), 0, clip});
    return *this;
  }
  std::vector<CgmElement> Elements() const { return ListElements(host::cgm::WriteMetafile(drawing)); }

  Drawing drawing;
};

// What stands between BEGIN PICTURE BODY and END PICTURE.
inline std::vector<CgmElement> Body(const std::vector<CgmElement>& elements) {
  size_t first = 0;
  while (first < elements.size() && !(elements[first].group == 0 && elements[first].id == 4)) ++first;
  EXPECT_GE(elements.size(), first + 3);
  return {elements.begin() + static_cast<std::ptrdiff_t>(first) + 1, elements.end() - 2};
}

inline std::vector<int> ListOf(const std::vector<CgmElement>& elements, uint32_t group, uint32_t id) {
  const CgmElement& element = Find(elements, group, id);
  return {element.list.begin(), element.list.end()};
}

}  // namespace tavi::test::sketch

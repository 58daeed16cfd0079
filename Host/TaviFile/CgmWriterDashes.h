// Dashes that no fixed line type has, as a metafile defines them.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <tuple>
#include <vector>

#include "TaviFile/CgmWriterElements.h"
#include "TaviVector/Drawing.h"

namespace tavi::host::cgm {

// The line types -1, -2, … of a metafile.
class DashTypes {
 public:
  // Definitions are in the coordinates of the writer that they will go to.
  explicit DashTypes(const ElementWriter& out) : unit_(out.unit()), longest_(out.largest_vdc()) {}

  bool empty() const { return types_.empty(); }
  // Takes the dashes of the stroke in, if it has any of its own.
  void Add(const vec::Stroke& stroke);
  // None where there are no such dashes, or none that a definition can hold.
  std::optional<int64_t> TypeOf(const vec::Stroke& stroke) const;
  void Write(ElementWriter* out) const;

 private:
  // The length of a cycle in VDC, and the dashes and gaps that it consists of in whole numbers of equal parts.
  struct Cycle {
    int32_t length = 0;
    std::vector<int64_t> parts;
    friend bool operator<(const Cycle& a, const Cycle& b) {
      return std::tie(a.length, a.parts) < std::tie(b.length, b.parts);
    }
  };
  std::optional<Cycle> CycleOf(const vec::Stroke& stroke) const;

  double unit_;
  double longest_;
  std::map<Cycle, int64_t> types_;
};

// The stroke of lines or edges that the shape is drawn with.
uint32_t StrokeOf(const vec::Shape& shape);

}  // namespace tavi::host::cgm

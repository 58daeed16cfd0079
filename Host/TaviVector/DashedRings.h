// Where the dashes of a ring end and begin again.
#pragma once

#include <optional>
#include <span>
#include <vector>

#include "TaviVector/Geometry.h"

namespace tavi::host::vec {

// Which of the lengths holds a place along the dashes, and how far it is from the ends of that.
struct DashPlace {
  bool drawn = true;  // else a gap
  double from_start = 0;
  double to_end = 0;
};

// Not for lengths that are all 0.
DashPlace PlaceIn(std::span<const double> dashes, double along);

// A ring that ends in the middle of a dash: what is drawn through its first point, up to the first gap, and the rest.
struct SplitRing {
  std::vector<Point> seam;
  std::vector<Point> rest;
  double along = 0;  // of the rest's first point
};

// None for a ring that ends in a gap, or that is no longer than those two dashes.
std::optional<SplitRing> SplitDashedRing(std::span<const Point> ring, std::span<const double> dashes);

}  // namespace tavi::host::vec

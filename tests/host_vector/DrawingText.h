// A drawing as lines of text, one for each object with its styles spelled out: drawings whose pools are in another
// order, or that describe the same shape in another way, read alike.
#pragma once

#include <string>
#include <vector>

#include "TaviVector/Drawing.h"

namespace tavi::test {

struct ObjectText {
  std::string exact;
  // Numbers that need not agree to the last bit.
  struct Near {
    double value;
    double tolerance;
  };
  std::vector<Near> near;

  bool Matches(const ObjectText& other) const;
};

// What version 1 of metafiles cannot say is left out: layers, ends and joins of lines, the origin of hatches. Figures
// of straight lines are given as the polylines or the polygon that they are.
std::vector<ObjectText> Describe(const host::vec::Drawing& drawing);

}  // namespace tavi::test

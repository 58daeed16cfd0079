// What drawings have taken of a bitmap's means so far: see PaintBudget.h.
#pragma once

namespace tavi::host::vec {

struct PaintAccount {
  double pixels = 0;  // covered beyond what the objects earn
  double lines = 0;   // length of smooth lines, likewise
};

}  // namespace tavi::host::vec

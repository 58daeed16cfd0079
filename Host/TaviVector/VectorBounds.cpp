// What a vector covers.
#include <algorithm>
#include <cmath>
#include <limits>
#include <new>
#include <stdexcept>

#include "TaviHost.h"
#include "TaviVector/VectorRecord.h"

namespace tavi::host::vec {
namespace {

int32_t Saturate(double value) {
  constexpr double kLowest = std::numeric_limits<int32_t>::min();
  constexpr double kHighest = std::numeric_limits<int32_t>::max();
  return static_cast<int32_t>(std::clamp(value, kLowest, kHighest));
}

// Empty for a vector without visible objects.
Box BoxOf(const HostVector* vector) {
  const Drawing* const drawing = DrawingOf(vector);
  return drawing != nullptr ? BoundsOf(*drawing) : Box();
}

template <class Question>
int32_t Ask(Question question) noexcept {
  try {
    question();
    return SUCCESS;
  } catch (const std::bad_alloc&) {
    return ERR_NO_MEMORY;
  } catch (const std::length_error&) {
    return ERR_NO_MEMORY;
  }
}

}  // namespace
}  // namespace tavi::host::vec

using namespace tavi::host::vec;

int32_t HostVecGetBounds(const HostVector* vector, uint32_t, HostRect* bounds, uint32_t) {
  if (vector == nullptr || bounds == nullptr) return ERR_NULL_ARGUMENT;
  *bounds = {};
  return Ask([&] {
    const Box box = BoxOf(vector);
    if (box.IsEmpty()) return;
    *bounds = {Saturate(std::floor(box.low.x)), Saturate(std::floor(-box.high.y)),
               Saturate(std::ceil(box.high.x)), Saturate(std::ceil(-box.low.y))};
  });
}

int32_t HostVecGetExtents(const HostVector* vector, double smallest[3], double largest[3]) {
  if (vector == nullptr || smallest == nullptr || largest == nullptr) return ERR_NULL_ARGUMENT;
  std::fill_n(smallest, 3, 0.0);
  std::fill_n(largest, 3, 0.0);
  return Ask([&] {
    const Box box = BoxOf(vector);
    if (box.IsEmpty()) return;
    smallest[0] = box.low.x;
    smallest[1] = box.low.y;
    largest[0] = box.high.x;
    largest[1] = box.high.y;
  });
}

// What the drawings of the whole process may hold together. A file names up to 999 of them, and keeps them all.
#pragma once

#include <cstdint>

#include "TaviVector/Drawing.h"

namespace tavi::host::vec {

// About what the drawing takes.
uint64_t BytesOf(const Drawing& drawing) noexcept;
// Counts a drawing that is going to be held: false when that would exceed the limit, and then it is not counted.
bool ChargeDrawing(uint64_t bytes) noexcept;
void ReleaseDrawing(uint64_t bytes) noexcept;

}  // namespace tavi::host::vec

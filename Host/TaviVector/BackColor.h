// Where a drawing asks for the back colour of its vector.
#pragma once

#include <optional>

#include "TaviVector/Drawing.h"

namespace tavi::host::vec {

// The drawing with its back colour in place: itself when it never asks for one, else a changed copy, which stands in
// `changed`. May throw std::bad_alloc.
const Drawing& WithBackColor(const Drawing& drawing, uint32_t back_color, std::optional<Drawing>& changed);

}  // namespace tavi::host::vec

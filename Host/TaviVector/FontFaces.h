// The kinds of faces. Internal to Fonts.cpp and its neighbours.
#pragma once

#include <memory>

#include "TaviVector/Fonts.h"

namespace tavi::host::vec {

// Null when nothing of the kind is installed. Called by one thread at a time.
std::unique_ptr<Face> OpenOutlineFace(FontFamily family, bool bold, bool italic);
std::unique_ptr<Face> OpenHersheyFace(HersheyFace face);

}  // namespace tavi::host::vec

// Small files of coded images, one for each way of finding and decoding their data.
#pragma once

#include <vector>

#include "RichFiles.h"

namespace tavi::faults {

std::vector<NamedFile> CodedFiles();

}  // namespace tavi::faults

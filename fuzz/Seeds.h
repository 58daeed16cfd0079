// Files that fuzzing starts from, and frames around inputs that are only a part of a file. All are made by the tests'
// independent builder.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

namespace tavi_fuzz {

// A file up to where a streaming file header begins: its own header says that the true lengths stand there.
std::vector<uint8_t> StreamedHead();
// A file of one vector quantised image of 2 x 2 blocks of 8 x 8 pixels with these data.
std::vector<uint8_t> WrapVqData(std::span<const uint8_t> data);

}  // namespace tavi_fuzz

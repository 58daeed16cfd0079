// Blocks of global memory: what the operations that save into memory hand out.
#pragma once

#include <cstdint>
#include <span>

#include "TaviHost.h"

namespace tavi::host {

// A block with a copy of the bytes; `size`, unless null, is given their number. Status: ERR_NULL_ARGUMENT,
// ERR_NO_MEMORY; the block is null then and the size 0.
int32_t MakeGlobal(std::span<const uint8_t> bytes, HostGlobalMemory* block, uint64_t* size) noexcept;

}  // namespace tavi::host

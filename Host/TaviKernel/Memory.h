// The host's own blocks, for its other units.
#pragma once

#include <cstdint>

#include "TaviKernel/Tracking.h"

namespace tavi::host {

// As HostAllocMem; internal callers do not go through the exported name, which an executable may interpose.
void* AllocateBlock(uint64_t count, uint64_t size, LiveKind kind, Origin origin) noexcept;

}  // namespace tavi::host

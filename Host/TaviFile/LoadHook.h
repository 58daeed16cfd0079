// The hook that describes raw data to a load. Each thread has its own.
#pragma once

#include "TaviFile/Codec.h"

namespace tavi::host {

bool HasLoadHook() noexcept;
// Asks the hook in force. Its own failure, or ERR_NOT_SUPPORTED when it describes no fax data.
int32_t AskLoadHook(FaxLayout* layout) noexcept;

}  // namespace tavi::host

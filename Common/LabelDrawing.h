// The characters of a label segment, written onto the composite.
#pragma once

#include <cstdint>

#include "NitfFile.h"

namespace tavi {

// Writes the label's lines at its place in the context's own font; the offsets are the sums of what it is attached
// to. ERR_NO_MEMORY and ERR_FILE_READ come before anything is written.
int32_t DrawLabelSegment(HostDrawingContext dc, NitfFile& document, uint32_t index, int32_t row_offset,
                         int32_t column_offset);

}  // namespace tavi

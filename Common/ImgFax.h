// Fax data: one stream for the whole image.
#pragma once

#include "ImgBlocks.h"
#include "TaviNitf.h"

namespace tavi {

// Decodes a fax segment into the job's bitmap. Blocks and masks play no part.
int32_t DecodeFaxSegment(FilterLoadContext* context, SegmentJob& job);

}  // namespace tavi

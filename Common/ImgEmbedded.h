// Images whose data are complete compressed streams: one for the whole image, for each block, or for each
// block and band.
#pragma once

#include "ImgStreams.h"
#include "TaviNitf.h"

namespace tavi {

// Decodes a segment of embedded streams into the job's bitmap.
int32_t DecodeEmbedded(FilterLoadContext* context, SegmentJob& job);

// One stream for each block, and for each band of it.
int32_t DecodeStreamTiles(FilterLoadContext* context, SegmentJob& job);
int32_t DecodeBandStreams(FilterLoadContext* context, SegmentJob& job);

// ---- What the three ways share ----

// Options of the load of a stream.
inline constexpr uint32_t kComponentsAreRgb = 0x4000;
inline constexpr uint32_t kTakeChosenBands = 0x8000;

// The host's load, or the one that the filter context brings.
int32_t LoadStream(FilterLoadContext* context, const uint8_t* stream, uint64_t size, HostBitmap* bitmap,
                   HostLoadFlagsRecord* options);
// SUCCESS for a stream of one of the formats that an image may hold, else ERR_UNSUPPORTED_COMPRESSION.
int32_t IdentifyStream(const StreamBytes& stream);
// Sets the three band indices and asks for them.
void RequestBands(SegmentJob& job, HostLoadFlagsRecord& options);

}  // namespace tavi

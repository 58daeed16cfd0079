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

// Calls `decoder.Decode(block, run_status)` for each block. A result but SUCCESS ends the decoding; what a block leaves in
// the run's status ends it after the run, unless a later block of the same run has succeeded.
template <class Decoder>
int32_t DecodeRuns(const SegmentJob& job, Decoder& decoder) {
  int32_t run_status = SUCCESS;
  for (uint64_t run = 0; run < job.image.BlocksPerRow; ++run) {
    for (uint64_t i = 0; i < job.image.BlocksPerColumn; ++i) {
      const int32_t status = decoder.Decode(run * job.image.BlocksPerColumn + i, run_status);
      if (status != SUCCESS) return status;
    }
    if (run_status != SUCCESS) return run_status;
  }
  return SUCCESS;
}

// The host's load, or the one that the filter context brings.
int32_t LoadStream(FilterLoadContext* context, const uint8_t* stream, uint64_t size, HostBitmap* bitmap,
                   HostLoadFlagsRecord* options);
// Tells streams apart, and adds up what they claim to hold.
class StreamIdentifier {
 public:
  // `copies`: how often the segment's area may be coded, once for each band.
  StreamIdentifier(const SegmentJob& job, uint32_t copies);
  // SUCCESS for a stream of one of the formats that an image may hold, else ERR_UNSUPPORTED_COMPRESSION.
  int32_t Identify(const StreamBytes& stream);
  // Adds pixels that no stream of its own stands for. False when that is too much.
  bool Claim(uint64_t pixels) {
    Count(pixels);
    return !claims_too_much();
  }
  // Whether the streams so far claim far more pixels than the segment has: many small ones can cost as much
  // as a huge one, which a decoder would refuse.
  bool claims_too_much() const { return HostWithinLimit(HOST_LIMIT_STREAMS, claimed_, earned_) == 0; }

 private:
  void Count(uint64_t pixels) {
    constexpr uint64_t kLeast = 1024;  // the smallest tile costs its time as well
    claimed_ += pixels > kLeast ? pixels : kLeast;
  }

  uint64_t earned_;
  uint64_t claimed_ = 0;
};
// Sets the three band indices and asks for them.
void RequestBands(SegmentJob& job, HostLoadFlagsRecord& options);

}  // namespace tavi

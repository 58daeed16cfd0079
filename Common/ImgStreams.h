// Finds the compressed streams inside a segment's data by their start marker, without parsing them.
#pragma once

#include <cstdint>

#include "ImgBlocks.h"

namespace tavi {

// A stream read into memory.
struct StreamBytes {
  HostArray<uint8_t> bytes;
  uint32_t size = 0;
};

// The walk from one stream to the next.
struct StreamWalk {
  uint32_t remaining = 0;  // starts at the data length
  uint32_t size = 0;       // of the last stream found
  uint32_t consumed = 0;   // bytes taken from the start of the data
};

// Searches one segment's data.
class StreamFinder {
 public:
  explicit StreamFinder(SegmentJob& job) : job_(job) {}

  // The distance from `start` to the next stream that begins behind it. The search looks at stretches of 1024
  // bytes, 1021 apart, that must lie in the file whole; a marker counts from place 1 of a stretch to the
  // place before the last, and only while place + 1 is below the limit. ERR_FILE_READ when the file ends
  // first; ERR_NO_MEMORY.
  int32_t FindNextStream(uint32_t limit, uint32_t& size, uint32_t start);
  // The distance from the last stream to the end of the data, searched backward in stretches of 1024 bytes
  // that do not overlap. The stretch at the start of the data is not looked at. ERR_FILE_READ, with a size of
  // 0.
  int32_t FindLastStream(uint32_t& size);
  // Takes the next stream. Without `fall_back` the last block takes the last stream and a search that fails
  // ends it; with it, the last stream is taken when there is no next one. A null `stream` only moves the walk
  // on.
  int32_t NextStream(StreamBytes* stream, bool last_block, bool fall_back, StreamWalk& walk);
  // Reads `size` bytes from `offset`. No memory is asked for that the file cannot fill.
  int32_t ReadStreamBytes(StreamBytes& stream, int64_t offset, uint32_t size);

 private:
  int32_t TakeLast(StreamBytes* stream, StreamWalk& walk);
  // The place of the first marker behind `position`, or -1. Places are remembered, so that no byte is
  // searched twice.
  int64_t NextMarker(int64_t position);
  bool ScanOn();
  int64_t FindInStretches(const uint8_t* bytes, int64_t count) const;

  SegmentJob& job_;
  HostArray<int64_t> markers_;  // offsets in the data, ascending
  uint64_t marker_count_ = 0;
  int64_t scanned_ = 0;  // markers that begin before this offset are known
  int32_t scan_status_ = SUCCESS;
  bool last_known_ = false;
  uint32_t last_size_ = 0;
};

// The entry of the next present block behind `block`; false when none follows.
bool NextPresentEntry(const ImSubHdr& image, uint64_t block, uint32_t& entry);

}  // namespace tavi

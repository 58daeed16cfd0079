// What all block paths share: reading a segment's data, walking its blocks, and placing decoded rows.
#pragma once

#include <cstdint>

#include "ImgColour.h"
#include "NitfFile.h"

namespace tavi {

// One image segment being decoded into its bitmap.
struct SegmentJob {
  NitfFile& document;
  ImSubHdr& image;
  uint32_t index;
  HostBitmap* bitmap;
  uint32_t data_length;  // as the header says
  int64_t data_start;    // of the segment's data in the file
  uint32_t bands;

  SegmentJob(NitfFile& d, ImSubHdr& i, uint32_t n, HostBitmap* b)
      : document(d),
        image(i),
        index(n),
        bitmap(b),
        data_length(ImageDataLength(d, n)),
        data_start(ImageDataPosition(d, n)),
        bands(KnownBandCount(i)) {}

  // Reads a stretch of the segment's data. False when the file ends inside it, or for an offset before the
  // data.
  bool Read(int64_t offset, void* to, uint64_t size) const;
  // Whether the file holds the stretch: no memory is asked for that it cannot fill.
  bool Holds(int64_t offset, uint64_t size) const;
};

// Where a block's data begin.
struct BlockPlace {
  bool absent = false;
  int64_t offset = 0;
};

// The rule of the interleaved paths: the block mask's entry, else the pad mask's, else `otherwise`, which
// also stands for a pad mask entry of all ones. An entry above the data length counts as absent.
BlockPlace PlaceBlock(const SegmentJob& job, uint64_t block, int64_t otherwise);
// The block mask as a statement of presence only.
bool IsAbsent(const SegmentJob& job, uint64_t block);

// Blocks run in NBPR runs of NBPC by one index. What a failing block ends: the whole walk, or its run.
enum class OnFailure { kStop, kStopRun };

// What became of a block, beside the statuses.
inline constexpr int32_t kBlockSkipped = 2;

// Calls `decode(block, ordinal)` for each block. The result is the status of the last block that was decoded.
template <class Decode>
int32_t WalkBlocks(const SegmentJob& job, OnFailure on_failure, Decode decode) {
  int32_t status = SUCCESS;
  uint64_t ordinal = 0;
  for (uint64_t run = 0; run < job.image.BlocksPerRow; ++run) {
    for (uint64_t i = 0; i < job.image.BlocksPerColumn; ++i) {
      const int32_t result = decode(run * job.image.BlocksPerColumn + i, ordinal);
      if (result == kBlockSkipped) continue;
      status = result;
      if (status == SUCCESS) {
        ++ordinal;
      } else if (on_failure == OnFailure::kStop) {
        return status;
      } else {
        break;
      }
    }
  }
  return status;
}

// Puts the rows of one block after another into the segment bitmap, through a tile bitmap that holds a strip
// of rows. A strip at a time stays in the cache, and no block is ever held whole.
class BlockTile {
 public:
  explicit BlockTile(const SegmentJob& job) : job_(job) {}

  // Makes the tile, of the blocks' width, `bits` per pixel and a colour order. ERR_INVALID_PARAMETER for blocks without
  // an area, ERR_NO_MEMORY, the status of HostCreateBitmap or HostAttachBitmapData.
  int32_t Create(uint32_t bits, uint32_t order = 1);
  // Rows in a strip.
  uint32_t strip_rows() const { return strip_rows_; }
  uint32_t bytes_per_line() { return tile_->bytes_per_line; }

  // Starts a block: its index gives its place.
  void Begin(uint64_t block);
  // The block's next row; a full strip is combined. `bytes` may exceed the tile's line: its own row is
  // written, no more.
  int32_t PutRow(const uint8_t* row, uint64_t bytes);
  // The same without a copy: where the next row's pixels are to be written, and that they are.
  uint8_t* NextRow();
  int32_t RowDone();
  // Combines what is left.
  int32_t Finish();
  // A block that fails leaves its place as the bitmap was created.
  void Discard();

 private:
  int32_t Combine(HostBitmap* source, uint32_t rows) const;

  const SegmentJob& job_;
  HostArray<uint8_t> pixels_;
  OwnedBitmap tile_;  // of these pixels
  uint32_t strip_rows_ = 0;
  uint32_t rows_in_strip_ = 0;
  uint32_t rows_done_ = 0;
  int32_t x_ = 0;
  int32_t y_ = 0;
};

// The paths of bilevel and of one- and two-band images.
int32_t DecodeBilevelBlocks(SegmentJob& job);
int32_t DecodeSingleBlock(SegmentJob& job);
int32_t DecodeBlocks(SegmentJob& job);

// The paths of three and more bands, by interleave order.
int32_t DecodeBandBlocks(SegmentJob& job);
int32_t DecodePixelBlocks(SegmentJob& job);
int32_t DecodeRowBlocks(SegmentJob& job);
int32_t DecodeSequentialBlocks(SegmentJob& job);

}  // namespace tavi

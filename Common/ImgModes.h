// What the four interleave orders share: gathering three chosen bands into rows of three bytes per pixel.
#pragma once

#include <cstdint>

#include "ImgBlocks.h"

namespace tavi {

// The chosen bands of some rows: sample x of channel c stands at channel[c] + row * row_stride + x *
// sample_stride.
struct BandRows {
  const uint8_t* channel[3];  // blue, green, red: the order of the bytes of an output pixel
  uint64_t row_stride;
  uint64_t sample_stride;
};

// Assembles output rows for a tile and puts them into it.
class RowAssembler {
 public:
  RowAssembler(const SegmentJob& job, BlockTile& tile) : job_(job), tile_(tile) {}
  // `bits` of the tile's pixels; `bytes` is the length that a row is written with. False without memory.
  bool Prepare(uint32_t bits, uint64_t bytes);
  // Assembles and puts `count` rows.
  int32_t Put(const BandRows& rows, uint32_t count);
  // Puts the last row once more.
  int32_t PutAgain() { return tile_.PutRow(last_, bytes_); }

 private:
  const SegmentJob& job_;
  BlockTile& tile_;
  uint32_t bits_ = 0;
  uint64_t bytes_ = 0;
  HostArray<uint8_t> row_;
  const uint8_t* last_ = nullptr;  // the row that was put last
};

// The chosen bands in the order in which an output pixel holds them.
struct ChannelBands {
  uint32_t band[3];
  uint32_t lowest() const;
  uint32_t highest() const;
};
ChannelBands ChooseChannels(const SegmentJob& job, uint32_t red, uint32_t green, uint32_t blue);

// Decodes the block strip by strip: `fetch(first_row, rows, band_rows)` reads a strip and says where its
// samples are; false when the data end. Whatever fails leaves the block's place untouched.
template <class Fetch>
int32_t DecodeStrips(const SegmentJob& job, uint64_t block, uint32_t rows, BlockTile& tile,
                     RowAssembler& assembler, Fetch fetch) {
  tile.Begin(block);
  int32_t status = SUCCESS;
  for (uint32_t first = 0; first < rows && status == SUCCESS; first += tile.strip_rows()) {
    const uint32_t count = rows - first < tile.strip_rows() ? rows - first : tile.strip_rows();
    BandRows strip{};
    status = fetch(first, count, strip) ? assembler.Put(strip, count) : ERR_FILE_READ;
  }
  // Where the order repeats its last row, the block has more rows than are read.
  for (uint32_t row = rows; row < job.image.BlockHeight && status == SUCCESS; ++row)
    status = assembler.PutAgain();
  if (status == SUCCESS) status = tile.Finish();
  if (status != SUCCESS) tile.Discard();
  return status;
}

// Bands that lie as separate planes of a block: reads the same rows of each chosen plane.
class PlaneReader {
 public:
  // False without memory.
  bool Prepare(const BlockTile& tile, uint64_t row_bytes);
  // `plane_distance` is what lies between the starts of two bands.
  bool Fetch(SegmentJob& job, int64_t block_offset, int64_t plane_distance, const ChannelBands& channels,
             uint32_t first, uint32_t count, BandRows& rows);
  uint8_t* plane(uint32_t channel) { return planes_.data() + channel * plane_bytes_; }

 private:
  uint64_t row_bytes_ = 0;
  uint64_t plane_bytes_ = 0;
  HostArray<uint8_t> planes_;
};

}  // namespace tavi

#include "ImgBlocks.h"

#include <algorithm>
#include <cstring>

namespace tavi {

TAVI_UNIT(L"Common/ImgBlocks")

bool SegmentJob::Read(int64_t offset, void* to, uint64_t size) const {
  if (offset < 0) return false;
  SeekSource(document, data_start + offset, kFromStart);
  return ReadSource(document, to, size) == size;
}

bool SegmentJob::Holds(int64_t offset, uint64_t size) const {
  const int64_t left = document.SourceSize - data_start - offset;
  return offset >= 0 && left >= 0 && size <= static_cast<uint64_t>(left);
}

BlockPlace PlaceBlock(const SegmentJob& job, uint64_t block, int64_t otherwise) {
  const ImSubHdr& image = job.image;
  const int64_t pixels = image.DataOffset;
  if (image.BlockMaskLength != 0) {
    const uint32_t entry = image.BlockMask.At(block);
    return {IsAbsent(job, block), entry + pixels};
  }
  if (image.PadMaskLength != 0) {
    const uint32_t entry = image.PadMask.At(block);
    if (entry == MaskTable::kAbsentBlock) return {false, otherwise};
    return {entry > job.data_length, entry + pixels};
  }
  return {false, otherwise};
}

bool IsAbsent(const SegmentJob& job, uint64_t block) {
  if (job.image.BlockMaskLength == 0) return false;
  const uint32_t entry = job.image.BlockMask.At(block);
  return entry == MaskTable::kAbsentBlock || entry > job.data_length;
}

int32_t BlockTile::Create(uint32_t bits, uint32_t order) {
  constexpr uint64_t kStripBytes = 131072;
  const uint64_t line = (static_cast<uint64_t>(bits) * job_.image.BlockWidth + 31) / 32 * 4;
  const uint64_t rows = std::max<uint64_t>(kStripBytes / std::max<uint64_t>(line, 1), 1);
  strip_rows_ = static_cast<uint32_t>(std::min<uint64_t>(rows, job_.image.BlockHeight));
  constexpr uint32_t kPixelsAttached = 2;
  if (line == 0 || strip_rows_ == 0) return ERR_INVALID_PARAMETER;
  if (const int32_t status =
          HostCreateBitmap(tile_.get(), sizeof(HostBitmap), kPixelsAttached, job_.image.BlockWidth,
                           strip_rows_, bits, order, nullptr, 1, nullptr, 0);
      status != SUCCESS) {
    return status;
  }
  if (!pixels_.Allocate(line * strip_rows_, Here())) return ERR_NO_MEMORY;
  return HostAttachBitmapData(tile_.get(), pixels_.data(), pixels_.size());
}

void BlockTile::Begin(uint64_t block) {
  x_ = static_cast<int32_t>(block % job_.image.BlocksPerRow * job_.image.BlockWidth);
  y_ = static_cast<int32_t>(block / job_.image.BlocksPerRow * job_.image.BlockHeight);
  rows_in_strip_ = rows_done_ = 0;
}

int32_t BlockTile::PutRow(const uint8_t* row, uint64_t bytes) {
  std::memmove(NextRow(), row, std::min<uint64_t>(bytes, tile_->bytes_per_line));
  return RowDone();
}

uint8_t* BlockTile::NextRow() {
  return pixels_.data() + uint64_t{rows_in_strip_} * tile_->bytes_per_line;
}

int32_t BlockTile::RowDone() {
  return ++rows_in_strip_ == strip_rows_ ? Finish() : SUCCESS;
}

int32_t BlockTile::Finish() {
  if (rows_in_strip_ == 0) return SUCCESS;
  const int32_t status = Combine(tile_.get(), rows_in_strip_);
  rows_done_ += rows_in_strip_;
  rows_in_strip_ = 0;
  return status;
}

void BlockTile::Discard() {
  // A blank of the segment's own depth goes in byte for byte; the tile's black could be another palette
  // entry.
  OwnedBitmap blank;
  if (HostCreateBitmap(blank.get(), sizeof(HostBitmap), 1, job_.image.BlockWidth, strip_rows_,
                       job_.bitmap->bits, 1, nullptr, 1, nullptr, 0) != SUCCESS) {
    return;
  }
  const uint32_t written = rows_done_;
  for (rows_done_ = 0; rows_done_ < written; rows_done_ += strip_rows_) {
    if (Combine(blank.get(), std::min(strip_rows_, written - rows_done_)) != SUCCESS) return;
  }
}

int32_t BlockTile::Combine(HostBitmap* source, uint32_t rows) const {
  constexpr uint32_t kReplace = 800;
  source->order = job_.bitmap->order;
  return HostCombineBitmap(job_.bitmap, x_, y_ + static_cast<int32_t>(rows_done_), job_.image.BlockWidth,
                           rows, source, 0, 0, kReplace);
}

}  // namespace tavi

// IMODE "R": in each block one row of every band behind the other.
#include <algorithm>

#include "ImgModes.h"

namespace tavi {

TAVI_UNIT(L"Common/ImgModeRow")

namespace {

// Reads the chosen bands' rows of a strip. With few bands the whole stretch is read at once; with many, row
// by row.
class RowBandReader {
 public:
  RowBandReader(SegmentJob& job, const ChannelBands& channels)
      : job_(job), channels_(channels), row_bytes_(job.image.BlockWidth), stride_(row_bytes_ * job.bands) {}

  bool Prepare(uint32_t strip_rows) {
    constexpr uint64_t kFewBands = 8;
    at_once_ = job_.bands <= kFewBands;
    return strip_.Allocate((at_once_ ? stride_ : 3 * row_bytes_) * strip_rows, Here());
  }

  bool Fetch(int64_t block_offset, uint32_t first, uint32_t count, BandRows& rows) {
    const int64_t offset = block_offset + static_cast<int64_t>(first * stride_);
    rows.sample_stride = 1;
    rows.row_stride = at_once_ ? stride_ : 3 * row_bytes_;
    if (!at_once_) return FetchEach(offset, count, rows);
    const uint64_t lowest = channels_.lowest() * row_bytes_;
    const uint64_t bytes = (count - 1) * stride_ + (channels_.highest() + 1) * row_bytes_ - lowest;
    if (!job_.Read(offset + static_cast<int64_t>(lowest), strip_.data(), bytes)) return false;
    for (uint32_t c = 0; c < 3; ++c)
      rows.channel[c] = strip_.data() + channels_.band[c] * row_bytes_ - lowest;
    return true;
  }

 private:
  bool FetchEach(int64_t offset, uint32_t count, BandRows& rows) {
    for (uint32_t y = 0; y < count; ++y) {
      for (uint32_t c = 0; c < 3; ++c) {
        const auto at = offset + static_cast<int64_t>(y * stride_ + channels_.band[c] * row_bytes_);
        if (!job_.Read(at, strip_.data() + (y * 3 + c) * row_bytes_, row_bytes_)) return false;
      }
    }
    for (uint32_t c = 0; c < 3; ++c) rows.channel[c] = strip_.data() + c * row_bytes_;
    return true;
  }

  SegmentJob& job_;
  const ChannelBands& channels_;
  uint64_t row_bytes_;
  uint64_t stride_;  // one row of every band
  bool at_once_ = true;
  HostArray<uint8_t> strip_;
};

}  // namespace

// Masks are not looked at: every block is taken, absent ones from where they would have been.
int32_t DecodeRowBlocks(SegmentJob& job) {
  constexpr uint32_t kTileBits = 24;
  const ImSubHdr& image = job.image;
  const ChannelBands channels = ChooseChannels(job, 0, 1, 2);
  BlockTile tile(job);
  if (const int32_t status = tile.Create(kTileBits); status != SUCCESS) return status;
  // Blocks follow one another at the size of the tile in memory, whose lines are padded to four bytes.
  const uint64_t tile_bytes = static_cast<uint64_t>(tile.bytes_per_line()) * image.BlockHeight;
  const uint64_t band_bytes = static_cast<uint64_t>(job.bands) * image.BlockWidth * image.BlockHeight;
  const bool counts_bands =
      image.PadMaskLength == 0 && image.BlockMaskLength == 0 && image.Representation == kMulti;
  RowAssembler assembler(job, tile);
  RowBandReader reader(job, channels);
  const uint64_t written = (static_cast<uint64_t>(image.BlockWidth) * job.bitmap->bits + 7) / 8;
  if (!assembler.Prepare(kTileBits, written) || !reader.Prepare(tile.strip_rows())) return ERR_NO_MEMORY;
  return WalkBlocks(job, OnFailure::kStop, [&](uint64_t block, uint64_t ordinal) {
    const auto offset =
        static_cast<int64_t>(counts_bands ? band_bytes * ordinal : image.DataOffset + tile_bytes * ordinal);
    return DecodeStrips(job, block, image.BlockHeight, tile, assembler,
                        [&](uint32_t first, uint32_t count, BandRows& rows) {
                          return reader.Fetch(offset, first, count, rows);
                        });
  });
}

}  // namespace tavi

// IMODE "P": all bands of a pixel side by side.
#include <algorithm>

#include "ImgModes.h"

namespace tavi {

TAVI_UNIT(L"Common/ImgModePixel")

int32_t DecodePixelBlocks(SegmentJob& job) {
  constexpr uint32_t kTopDown = 1;
  const ImSubHdr& image = job.image;
  job.bitmap->view_perspective = kTopDown;
  const uint64_t row_bytes = static_cast<uint64_t>(job.bands) * image.BlockWidth;
  const uint64_t block_bytes = row_bytes * image.BlockHeight;
  const ChannelBands channels = ChooseChannels(job, 0, 1, 2);
  BlockTile tile(job);
  if (const int32_t status = tile.Create(job.bitmap->bits); status != SUCCESS) return status;
  RowAssembler assembler(job, tile);
  // The last row of a block is not read, since its shifted reading could pass the end of the data: it repeats
  // the row before. A block of one row shows nothing, which is what its place holds already.
  const uint32_t rows_read = image.BlockHeight - 1;
  // Each channel is read as the row shifted by its band, so a strip takes as many bytes more as the last
  // band's index. A strip that the whole file cannot fill is not made room for: no block can be read then.
  const uint64_t shift = channels.highest();
  const uint64_t strip_bytes = row_bytes * std::min(tile.strip_rows(), rows_read) + shift;
  HostArray<uint8_t> strip;
  if (!assembler.Prepare(job.bitmap->bits, tile.bytes_per_line()) ||
      (job.Holds(0, strip_bytes) && !strip.Allocate(strip_bytes, Here()))) {
    return ERR_NO_MEMORY;
  }
  return WalkBlocks(job, OnFailure::kStopRun, [&](uint64_t block, uint64_t ordinal) -> int32_t {
    const auto in_order = static_cast<int64_t>(image.DataOffset + ordinal * block_bytes);
    const BlockPlace place = PlaceBlock(job, block, in_order);
    if (place.absent) return kBlockSkipped;
    if (rows_read == 0) return SUCCESS;
    return DecodeStrips(job, block, rows_read, tile, assembler,
                        [&](uint32_t first, uint32_t count, BandRows& rows) {
                          const auto offset = place.offset + static_cast<int64_t>(first * row_bytes);
                          if (!strip.exists() || !job.Read(offset, strip.data(), count * row_bytes + shift))
                            return false;
                          for (uint32_t c = 0; c < 3; ++c) rows.channel[c] = strip.data() + channels.band[c];
                          rows.row_stride = row_bytes;
                          rows.sample_stride = job.bands;
                          return true;
                        });
  });
}

}  // namespace tavi

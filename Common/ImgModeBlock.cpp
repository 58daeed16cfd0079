// IMODE "B": in each block one band behind the other.
#include "ImgModes.h"
#include "ImgSamples.h"

namespace tavi {

namespace {

// Real-valued samples; no reader or setter gives that pixel type, so this is reserved.
void ConvertRealRows(const ImSubHdr& image, uint8_t* rows, uint64_t row_bytes, uint32_t count) {
  for (uint32_t y = 0; y < count; ++y, rows += row_bytes) {
    if (image.SampleBits == 32) ConvertFloatRow(rows, row_bytes / 4, 32, -1.0F, -1.0F);
    if (image.SampleBits == 64) ConvertDoubleRow(rows, row_bytes / 8, 64, -1.0, -1.0);
  }
}

}  // namespace

int32_t DecodeBandBlocks(SegmentJob& job) {
  const ImSubHdr& image = job.image;
  const uint64_t row_bytes = image.BlockWidth;
  const auto plane = static_cast<int64_t>(row_bytes * image.BlockHeight);
  // Only several-band representations count their bands; all others count the bits of the bitmap, which
  // misplaces the blocks after the first when there are more than three bands. That is kept.
  const int64_t block_bytes =
      image.Representation == kMulti
          ? job.bands * plane
          : static_cast<int64_t>((row_bytes * job.bitmap->bits + 7) / 8 * image.BlockHeight);
  const ChannelBands channels = ChooseChannels(job, 0, 0, 0);
  BlockTile tile(job);
  if (const int32_t status = tile.Create(job.bitmap->bits); status != SUCCESS) return status;
  RowAssembler assembler(job, tile);
  PlaneReader planes;
  if (!assembler.Prepare(job.bitmap->bits, tile.bytes_per_line()) || !planes.Prepare(tile, row_bytes)) {
    return ERR_NO_MEMORY;
  }
  return WalkBlocks(job, OnFailure::kStopRun, [&](uint64_t block, uint64_t) {
    const auto in_order = static_cast<int64_t>(block) * block_bytes + image.DataOffset;
    const BlockPlace place = PlaceBlock(job, block, in_order);
    if (place.absent) return kBlockSkipped;
    return DecodeStrips(job, block, image.BlockHeight, tile, assembler,
                        [&](uint32_t first, uint32_t count, BandRows& rows) {
                          if (!planes.Fetch(job, place.offset, plane, channels, first, count, rows))
                            return false;
                          for (uint32_t c = 0; image.PixelType == kPixelReal && c < 3; ++c) {
                            ConvertRealRows(image, planes.plane(c), row_bytes, count);
                          }
                          return true;
                        });
  });
}

}  // namespace tavi

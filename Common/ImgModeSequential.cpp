// IMODE "S": one band of the whole image behind the other, each in blocks.
#include "ImgModes.h"

namespace tavi {

namespace {

// The distance between two bands: the plane of a whole band over the image. With a block mask it is the plane
// over the blocks from the first present one to the last.
int64_t BandDistance(const ImSubHdr& image) {
  auto across = static_cast<int64_t>(image.BlocksPerColumn);
  auto down = static_cast<int64_t>(image.BlocksPerRow);
  if (image.BlockMaskLength != 0) {
    bool seen = false;
    int64_t first_outer = 0, first_inner = 0, last_outer = 0, last_inner = 0;
    for (int64_t outer = 0; outer < image.BlocksPerRow; ++outer) {
      for (int64_t inner = 0; inner < image.BlocksPerColumn; ++inner) {
        const auto block = static_cast<uint64_t>(outer * image.BlocksPerColumn + inner);
        if (image.BlockMask.At(block) == MaskTable::kAbsentBlock) continue;
        if (!seen) first_outer = outer, first_inner = inner;
        seen = true;
        last_outer = outer;
        last_inner = inner;
      }
    }
    across = last_inner - first_inner + 1;
    down = last_outer - first_outer + 1;
  }
  return image.BlockWidth * across * image.BlockHeight * down;
}

}  // namespace

int32_t DecodeSequentialBlocks(SegmentJob& job) {
  constexpr uint32_t kTopDown = 1;
  constexpr uint32_t kTileBits = 24;
  const ImSubHdr& image = job.image;
  job.bitmap->view_perspective = kTopDown;
  const uint64_t row_bytes = image.BlockWidth;
  const uint64_t block_bytes = row_bytes * image.BlockHeight;
  const int64_t distance = BandDistance(image);
  const ChannelBands channels = ChooseChannels(job, 0, 1, 2);
  BlockTile tile(job);
  if (const int32_t status = tile.Create(kTileBits); status != SUCCESS) return status;
  RowAssembler assembler(job, tile);
  PlaneReader planes;
  if (!assembler.Prepare(kTileBits, tile.bytes_per_line()) || !planes.Prepare(tile, row_bytes))
    return ERR_NO_MEMORY;
  return WalkBlocks(job, OnFailure::kStopRun, [&](uint64_t block, uint64_t ordinal) {
    const auto in_order = static_cast<int64_t>(image.DataOffset + ordinal * block_bytes);
    const BlockPlace place = PlaceBlock(job, block, in_order);
    if (place.absent) return kBlockSkipped;
    return DecodeStrips(job, block, image.BlockHeight, tile, assembler,
                        [&](uint32_t first, uint32_t count, BandRows& rows) {
                          return planes.Fetch(job, place.offset, distance, channels, first, count, rows);
                        });
  });
}

}  // namespace tavi

#include "ImgModes.h"

#include <algorithm>

#include "Vectorise.h"

namespace tavi {

TAVI_UNIT(L"Common/ImgModes")

namespace {

// Samples one behind the other in each channel.
TAVI_WIDE_VECTORS
void MergePlanes(uint8_t* __restrict out, const uint8_t* __restrict blue, const uint8_t* __restrict green,
                 const uint8_t* __restrict red, uint64_t pixels) {
  for (uint64_t x = 0; x < pixels; ++x) {
    out[3 * x] = blue[x];
    out[3 * x + 1] = green[x];
    out[3 * x + 2] = red[x];
  }
}

#if TAVI_HAS_SHUFFLE
// Five pixels at a time. Stores overlap by the byte that the next one sets. Returns the pixels it has dealt with.
__attribute__((target("ssse3"))) uint64_t ReverseShuffled(uint8_t* out, const uint8_t* rgb, uint64_t pixels) {
  const __m128i reversed = _mm_setr_epi8(2, 1, 0, 5, 4, 3, 8, 7, 6, 11, 10, 9, 14, 13, 12, 15);
  uint64_t x = 0;
  for (; x + 6 <= pixels; x += 5) {
    const __m128i in = _mm_loadu_si128(reinterpret_cast<const __m128i*>(rgb + 3 * x));
    _mm_storeu_si128(reinterpret_cast<__m128i*>(out + 3 * x), _mm_shuffle_epi8(in, reversed));
  }
  return x;
}
#endif

// The commonest interleaving: three bands that are red, green and blue.
void ReverseTriples(uint8_t* __restrict out, const uint8_t* __restrict rgb, uint64_t pixels) {
  uint64_t x = 0;
#if TAVI_HAS_SHUFFLE
  static const bool has_shuffle = __builtin_cpu_supports("ssse3") != 0;
  if (has_shuffle) x = ReverseShuffled(out, rgb, pixels);
#endif
  for (; x < pixels; ++x) {
    out[3 * x] = rgb[3 * x + 2];
    out[3 * x + 1] = rgb[3 * x + 1];
    out[3 * x + 2] = rgb[3 * x];
  }
}

// Any stride, and any depth of the tile: the place of the next pixel moves on by whole bytes of a pixel, so
// in depths below 24 bits pixels overwrite each other.
void MergeSamples(uint8_t* out, const uint8_t* const (&channel)[3], uint64_t sample_stride, uint64_t pixels,
                  uint32_t bits) {
  const uint64_t step = bits / 8;
  for (uint64_t x = 0; x < pixels; ++x, out += step) {
    for (uint32_t c = 0; c < 3; ++c) out[c] = channel[c][x * sample_stride];
  }
}

}  // namespace

bool RowAssembler::Prepare(uint32_t bits, uint64_t bytes) {
  constexpr uint64_t kSlack = 3;  // the last pixel writes three bytes at any depth
  bits_ = bits;
  bytes_ = bytes;
  if (!row_.Allocate(tile_.bytes_per_line() + kSlack, Here())) return false;
  last_ = row_.data();
  return true;
}

int32_t RowAssembler::Put(const BandRows& rows, uint32_t count) {
  const uint64_t pixels = job_.image.BlockWidth;
  const uint8_t* channel[3] = {rows.channel[0], rows.channel[1], rows.channel[2]};
  // Whole rows of this depth are written where the tile has them.
  const bool in_place = bits_ == 24 && bytes_ >= tile_.bytes_per_line();
  for (uint32_t y = 0; y < count; ++y) {
    uint8_t* const row = in_place ? tile_.NextRow() : row_.data();
    if (bits_ != 24) {
      MergeSamples(row, channel, rows.sample_stride, pixels, bits_);
    } else if (rows.sample_stride == 1) {
      MergePlanes(row, channel[0], channel[1], channel[2], pixels);
    } else if (rows.sample_stride == 3 && channel[1] == channel[2] + 1 && channel[0] == channel[2] + 2) {
      ReverseTriples(row, channel[2], pixels);
    } else {
      MergeSamples(row, channel, rows.sample_stride, pixels, bits_);
    }
    last_ = row;
    const int32_t status = in_place ? tile_.RowDone() : tile_.PutRow(row, bytes_);
    if (status != SUCCESS) return status;
    for (const uint8_t*& c : channel) c += rows.row_stride;
  }
  return SUCCESS;
}

uint32_t ChannelBands::lowest() const {
  return std::min({band[0], band[1], band[2]});
}
uint32_t ChannelBands::highest() const {
  return std::max({band[0], band[1], band[2]});
}

ChannelBands ChooseChannels(const SegmentJob& job, uint32_t red, uint32_t green, uint32_t blue) {
  BlockGeometry geometry;
  geometry.red = red;
  geometry.green = green;
  geometry.blue = blue;
  ChooseBands(job.image, geometry, job.bands);
  return {{geometry.blue, geometry.green, geometry.red}};
}

bool PlaneReader::Prepare(const BlockTile& tile, uint64_t row_bytes) {
  row_bytes_ = row_bytes;
  plane_bytes_ = row_bytes * tile.strip_rows();
  return planes_.Allocate(3 * plane_bytes_, Here());
}

bool PlaneReader::Fetch(SegmentJob& job, int64_t block_offset, int64_t plane_distance,
                        const ChannelBands& channels, uint32_t first, uint32_t count, BandRows& rows) {
  for (uint32_t c = 0; c < 3; ++c) {
    const int64_t offset =
        block_offset + channels.band[c] * plane_distance + static_cast<int64_t>(first * row_bytes_);
    if (!job.Read(offset, plane(c), count * row_bytes_)) return false;
    rows.channel[c] = plane(c);
  }
  rows.row_stride = row_bytes_;
  rows.sample_stride = 1;
  return true;
}

}  // namespace tavi

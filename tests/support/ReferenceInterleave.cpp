// Three and more bands, in the four interleave orders.
#include <algorithm>
#include <string>

#include "ReferenceParts.h"

namespace tavi_test {
namespace {

using Triple = std::array<uint32_t, 3>;  // red, green, blue

bool HasRole(const BandSpec& band, const std::string& role) {
  return role.size() == 1 ? band.irepband.starts_with(role) : band.irepband == role;
}

// The first band with the role; nothing when there is none.
std::optional<uint32_t> FindRole(const std::vector<BandSpec>& bands, const std::string& role) {
  for (uint32_t i = 0; i < bands.size(); ++i) {
    if (HasRole(bands[i], role)) return i;
  }
  return std::nullopt;
}

// Searches one role for each channel. A search without a find leaves the channel as it was, or sends it to
// the last band.
bool SelectRoles(const std::vector<BandSpec>& bands, const std::array<std::string, 3>& roles, bool keep,
                 Triple& chosen) {
  const auto last = static_cast<uint32_t>(bands.size()) - 1;
  bool found = false;
  for (size_t channel = 0; channel < 3; ++channel) {
    const std::optional<uint32_t> band = FindRole(bands, roles[channel]);
    found = found || band.has_value();
    chosen[channel] = std::min(band.value_or(keep ? chosen[channel] : last), last);
  }
  return found;
}

}  // namespace

std::array<uint32_t, 3> ReferenceBands(const std::vector<BandSpec>& bands, std::array<uint32_t, 3> start) {
  Triple chosen = start;
  if (SelectRoles(bands, {"R", "G", "B"}, true, chosen)) return chosen;
  if (SelectRoles(bands, {"Y", "Cb", "Cr"}, false, chosen)) return chosen;
  if (SelectRoles(bands, {"LU", "LU", "LU"}, false, chosen)) return chosen;
  if (SelectRoles(bands, {"M", "M", "M"}, false, chosen)) return chosen;
  return {0, 1, 2};
}

namespace {

// One interleave order: where blocks stand and how the rows of a band are found in them.
struct Order {
  const BlockWork& work;
  uint32_t tile_bits;
  Triple bands;
  uint64_t block_bytes;    // distance of blocks when no mask says otherwise
  uint64_t band_distance;  // of a band's rows from the band before
  uint64_t row_distance;

  [[nodiscard]] uint32_t width() const { return work.image.nppbh; }
  [[nodiscard]] uint32_t height() const { return work.image.nppbv; }
};

// The block's samples of the three channels, row by row, into the tile's bytes. False: the file ended.
bool ReadTile(const Order& order, uint64_t block, PackedRows& tile) {
  const bool by_pixel = order.work.image.imode == 'P';
  const size_t step = by_pixel ? order.work.image.bands.size() : 1;
  std::array<Bytes, 3> rows;
  for (Bytes& row : rows) row.resize(order.width() * step);
  for (uint32_t y = 0; y < order.height(); ++y) {
    const bool repeat = by_pixel && y == order.height() - 1;
    for (size_t channel = 0; channel < 3 && !repeat; ++channel) {
      const uint64_t at = block + y * order.row_distance + order.bands[channel] * order.band_distance;
      if (!order.work.source.Read(at, rows[channel].size(), rows[channel].data())) return false;
    }
    Bytes out(tile.bytes_per_line + 3);
    size_t at = 0;
    for (uint32_t x = 0; x < order.width(); ++x, at += order.tile_bits / 8) {
      for (size_t k = 0; k < 3; ++k) {  // blue, green, red
        if (at + k < out.size()) out[at + k] = rows[2 - k][x * step];
      }
    }
    tile.PutRow(y, out);
  }
  return true;
}

// Where block `index` begins; nothing when it is not there.
std::optional<uint64_t> BlockOffset(const Order& order, uint32_t index, uint64_t ordinal) {
  const ImageSpec& image = order.work.image;
  const MaskTable& masks = order.work.masks;
  if (image.imode == 'R') {
    if (!masks.block && !masks.pad && image.irep.starts_with("MULTI")) {
      return image.bands.size() * image.nppbh * image.nppbv * ordinal;
    }
    return masks.imdatoff + ordinal * order.block_bytes;
  }
  const auto& entries = masks.block ? masks.block : masks.pad;
  if (entries && entries->at(index) != kAbsentBlock) {
    if (entries->at(index) > order.work.source.length()) return std::nullopt;
    return uint64_t{entries->at(index)} + masks.imdatoff;
  }
  if (masks.block) return std::nullopt;
  return masks.imdatoff + (image.imode == 'B' ? index : ordinal) * order.block_bytes;
}

// The distance of whole bands in sequential data: the rectangle of blocks between the first that is present
// and the last, counted in the file's two loops.
uint64_t SequentialBandDistance(const BlockWork& work) {
  const ImageSpec& image = work.image;
  int64_t across = image.nbpc;
  int64_t down = image.nbpr;
  if (work.masks.block) {
    across = down = 1;
    std::optional<uint32_t> first;
    for (uint32_t index = 0; index < image.BlockCount(); ++index) {
      if (work.masks.block->at(index) == kAbsentBlock) continue;
      if (!first) first = index;
      across = int64_t{index % image.nbpc} - *first % image.nbpc + 1;
      down = int64_t{index / image.nbpc} - *first / image.nbpc + 1;
    }
  }
  if (across < 0) throw std::logic_error("blocks that run backwards have no reference");
  return static_cast<uint64_t>(image.nppbh * across * image.nppbv * down);
}

Order MakeOrder(const BlockWork& work, uint32_t segment_bits) {
  const ImageSpec& image = work.image;
  const uint64_t bands = image.bands.size();
  const uint64_t width = image.nppbh;
  const uint64_t plane = width * image.nppbv;
  const bool multi = image.irep.starts_with("MULTI");
  switch (image.imode) {
    case 'B':
      return {work,
              segment_bits,
              ReferenceBands(image.bands, {0, 0, 0}),
              multi ? bands * plane : (width * segment_bits + 7) / 8 * image.nppbv,
              plane,
              width};
    case 'P':
      return {work, segment_bits, ReferenceBands(image.bands, {0, 1, 2}), bands * plane, 1, bands * width};
    case 'R':
      return {work,
              24,
              ReferenceBands(image.bands, {0, 1, 2}),
              (24 * width + 31) / 32 * 4 * image.nppbv,
              width,
              bands * width};
    default:
      return {work, 24, ReferenceBands(image.bands, {0, 1, 2}), plane, SequentialBandDistance(work), width};
  }
}

}  // namespace

void DecodeInterleaved(const BlockWork& work, SegmentBitmap& segment) {
  const ImageSpec& image = work.image;
  const Order order = MakeOrder(work, segment.rows.bits);
  uint64_t ordinal = 0;
  for (uint32_t outer = 0; outer < image.nbpr; ++outer) {
    for (uint32_t inner = 0; inner < image.nbpc; ++inner) {
      const uint32_t index = outer * image.nbpc + inner;
      const std::optional<uint64_t> offset = BlockOffset(order, index, ordinal);
      if (!offset) continue;
      PackedRows tile(image.nppbh, image.nppbv, order.tile_bits);
      const bool complete = ReadTile(order, *offset, tile);
      segment.status = complete ? SUCCESS : ERR_FILE_READ;
      if (!complete && image.imode == 'R') return;
      if (!complete) break;  // the rest of this run is not tried; the next one is
      ++ordinal;
      PlaceBlock(image, index, tile, segment);
    }
  }
}

}  // namespace tavi_test

// One and two bands, and bilevel pixels.
#include <algorithm>
#include <stdexcept>

#include "ReferenceParts.h"

namespace tavi_test {

void PlaceBlock(const ImageSpec& image, uint32_t index, const PackedRows& tile, SegmentBitmap& segment) {
  if (tile.bits != segment.rows.bits) throw std::logic_error("combining two depths is the host's matter");
  const uint32_t left = index % image.nbpr * image.nppbh;
  const uint32_t top = index / image.nbpr * image.nppbv;
  for (uint32_t y = 0; y < tile.height; ++y) {
    for (uint32_t x = 0; x < tile.width; ++x) segment.rows.Set(left + x, top + y, tile.Get(x, y));
  }
}

namespace {

// Bits of one block, taken from `offset` on and counted in bytes.
struct BitSource {
  const Bytes& buffer;
  uint64_t offset;
  uint64_t taken = 0;
  uint32_t bits_left = 0;
  bool exhausted = false;

  bool Next() {
    if (bits_left == 0) {
      ++taken;
      bits_left = 8;
      exhausted = exhausted || offset + taken > buffer.size();
    }
    --bits_left;
    return !exhausted && (buffer[offset + taken - 1] >> bits_left & 1U) != 0;
  }
};

}  // namespace

void DecodeBilevel(const BlockWork& work, SegmentBitmap& segment) {
  const ImageSpec& image = work.image;
  const uint32_t length = work.source.length();
  Bytes buffer(length);
  if (work.masks.imdatoff > length ||
      !work.source.Read(work.masks.imdatoff, length - work.masks.imdatoff, buffer.data())) {
    segment.status = ERR_FILE_READ;
    return;
  }
  uint64_t next = 0;  // where the block before ended
  for (uint32_t index = 0; index < image.BlockCount(); ++index) {
    uint64_t offset = next;
    if (work.masks.block) {
      offset = work.masks.block->at(index);
      if (offset == kAbsentBlock) continue;
    } else if (work.masks.pad && work.masks.pad->at(index) != kAbsentBlock) {
      offset = work.masks.pad->at(index);
    }
    if ((work.masks.block || work.masks.pad) && offset > length) continue;
    PackedRows tile(image.nppbh, image.nppbv, segment.rows.bits);
    BitSource bits{buffer, offset};
    for (uint32_t y = 0; y < image.nppbv; ++y) {
      Bytes row(segment.rows.bytes_per_line);
      for (uint32_t x = 0; x < image.nppbh; ++x) {
        if (bits.Next()) row.at(x / 8) = static_cast<uint8_t>(row[x / 8] | 0x80U >> (x % 8));
      }
      tile.PutRow(y, row);
    }
    if (bits.exhausted) {
      segment.status = ERR_FILE_FORMAT;
      return;
    }
    next = offset + bits.taken;
    PlaceBlock(image, index, tile, segment);
  }
}

void DecodeOneBlock(const BlockWork& work, bool mono, SegmentBitmap& segment) {
  const ImageSpec& image = work.image;
  const size_t sample_bytes = mono ? std::max<size_t>(1, image.nbpp / 8) : 1;
  const SampleRange range = ScanRange(work.source);
  const size_t line = segment.rows.bytes_per_line;
  const size_t taken = std::min<size_t>(line, segment.rows.width) * sample_bytes;
  // One buffer for all rows: what a row does not fill shows what stood there before. It is long enough for a
  // conversion that walks four bytes to a sample.
  Bytes buffer(line * std::max<size_t>(sample_bytes, 4));
  for (uint32_t y = 0; y < segment.rows.height; ++y) {
    if (!work.source.Read(work.masks.imdatoff + y * taken, taken, buffer.data())) {
      segment.status = ERR_FILE_READ;
      return;
    }
    if (image.nbpp != image.abpp) {
      ReferenceConvert(buffer, image.nbpp, image.abpp, line, range.minimum, range.maximum);
    }
    segment.rows.PutRow(y, buffer);
  }
  segment.native_words = image.nbpp != image.abpp && image.abpp >= 9 && image.abpp <= 16;
}

void DecodeManyBlocks(const BlockWork& work, SegmentBitmap& segment) {
  const ImageSpec& image = work.image;
  const size_t row_bytes = (size_t{segment.rows.bits} * image.nppbh + 7) / 8;
  uint64_t ordinal = 0;
  for (uint32_t outer = 0; outer < image.nbpr; ++outer) {
    for (uint32_t inner = 0; inner < image.nbpc; ++inner) {
      const uint32_t index = outer * image.nbpc + inner;
      if (work.masks.block) {
        const uint32_t entry = work.masks.block->at(index);
        if (entry == kAbsentBlock || entry > work.source.length()) continue;
      }
      PackedRows tile(image.nppbh, image.nppbv, segment.rows.bits);
      segment.status = SUCCESS;
      for (uint32_t y = 0; y < image.nppbv && segment.status == SUCCESS; ++y) {
        Bytes row(4 * row_bytes + 4);
        const uint64_t at = work.masks.imdatoff + (ordinal * image.nppbv + y) * row_bytes;
        if (!work.source.Read(at, row_bytes, row.data())) segment.status = ERR_FILE_READ;
        ReferenceConvert(row, image.nbpp, image.abpp, row_bytes, 0, 0);
        row.resize(row_bytes);
        tile.PutRow(y, row);
      }
      if (segment.status != SUCCESS) break;
      ++ordinal;
      PlaceBlock(image, index, tile, segment);
    }
  }
  segment.native_words = image.nbpp != image.abpp && image.abpp >= 9 && image.abpp <= 16;
}

}  // namespace tavi_test

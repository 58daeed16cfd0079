// Bilevel images and uncompressed images of one and two bands.
#include <algorithm>
#include <cstring>

#include "ImgBlocks.h"
#include "ImgSamples.h"

namespace tavi {

TAVI_UNIT(L"Common/ImgSimple")

namespace {

// Copies `width` bits from bit position `from` of the source to the start of a row, the most significant bit
// first. The source has a readable byte behind the last one that holds bits of the row.
void CopyBits(uint8_t* row, const uint8_t* source, uint64_t from, uint32_t width) {
  const uint8_t* byte = source + from / 8;
  const auto shift = static_cast<uint32_t>(from % 8);
  const uint32_t whole = width / 8;
  if (shift == 0) {
    std::memcpy(row, byte, whole);
  } else {
    for (uint32_t i = 0; i < whole; ++i)
      row[i] = static_cast<uint8_t>(byte[i] << shift | byte[i + 1] >> (8 - shift));
  }
  if (const uint32_t rest = width % 8; rest != 0) {
    const uint32_t bits = static_cast<uint32_t>(byte[whole]) << 8 | byte[whole + 1];
    row[whole] = static_cast<uint8_t>((bits << shift >> 8) & (0xFF00U >> rest));
  }
}

// Unpacks one block that starts on a byte; its rows run on across byte limits. Reports the bytes that it
// took.
int32_t UnpackBilevelBlock(const SegmentJob& job, const HostArray<uint8_t>& data, uint64_t offset,
                           BlockTile& tile, HostArray<uint8_t>& row, uint64_t& consumed) {
  const uint32_t width = job.image.BlockWidth;
  const uint64_t needed = (static_cast<uint64_t>(width) * job.image.BlockHeight + 7) / 8;
  // A block whose bits end beyond the data fails, also where a mask entry sends it there.
  if (offset > job.data_length || needed > job.data_length - offset) return ERR_FILE_FORMAT;
  if ((width + 7ULL) / 8 > row.size()) return ERR_FILE_FORMAT;
  for (uint64_t y = 0; y < job.image.BlockHeight; ++y) {
    CopyBits(row.data(), data.data() + offset, y * width, width);
    if (const int32_t status = tile.PutRow(row.data(), row.size()); status != SUCCESS) return status;
  }
  consumed = needed;
  return tile.Finish();
}

// The offset of a bilevel block from IMDATOFF: its mask entry, or where the block before it ended.
BlockPlace PlaceBilevelBlock(const SegmentJob& job, uint64_t block, uint64_t running) {
  const ImSubHdr& image = job.image;
  if (image.BlockMaskLength != 0) return {IsAbsent(job, block), image.BlockMask.At(block)};
  if (image.PadMaskLength != 0) {
    const uint32_t entry = image.PadMask.At(block);
    if (entry != MaskTable::kAbsentBlock) return {entry > job.data_length, entry};
  }
  return {false, static_cast<int64_t>(running)};
}

// The rows of a one- or two-band block: converted one by one in a buffer of their own.
class RowConverter {
 public:
  RowConverter(const ImSubHdr& image, uint64_t length, int32_t minimum, int32_t maximum)
      : image_(image), length_(length), minimum_(minimum), maximum_(maximum) {}

  // `bytes` is what a row takes in the file. False without memory.
  bool Prepare(uint64_t bytes) {
    bytes_ = bytes;
    const uint64_t extent = ConversionExtent(image_.SampleBits, image_.ActualBits, length_);
    return row_.Allocate(std::max({extent, bytes, length_}), Here());
  }

  const uint8_t* Convert(const uint8_t* source) {
    HostMemCopy(row_.data(), source, bytes_);
    ConvertSamples(row_.data(), image_.SampleBits, image_.ActualBits, length_, minimum_, maximum_);
    return row_.data();
  }

 private:
  const ImSubHdr& image_;
  uint64_t length_;
  int32_t minimum_;
  int32_t maximum_;
  uint64_t bytes_ = 0;
  HostArray<uint8_t> row_;
};

// Reads consecutive rows in large pieces and hands each to `take(row)`.
template <class Take>
int32_t ReadRowsInPieces(SegmentJob& job, int64_t offset, uint64_t row_bytes, uint32_t rows,
                         HostArray<uint8_t>& piece, Take take) {
  const auto rows_in_piece = static_cast<uint32_t>(row_bytes != 0 ? piece.size() / row_bytes : rows);
  for (uint32_t first = 0; first < rows; first += rows_in_piece) {
    const uint32_t count = std::min(rows_in_piece, rows - first);
    if (!job.Read(offset + static_cast<int64_t>(first * row_bytes), piece.data(), count * row_bytes)) {
      return ERR_FILE_READ;
    }
    for (uint32_t i = 0; i < count; ++i) {
      if (const int32_t status = take(first + i, piece.data() + i * row_bytes); status != SUCCESS)
        return status;
    }
  }
  return SUCCESS;
}

// A piece of whole rows, at least one.
uint64_t PieceSize(uint64_t row_bytes, uint32_t rows) {
  constexpr uint64_t kPiece = 131072;
  const uint64_t fitting = std::max<uint64_t>(kPiece / std::max<uint64_t>(row_bytes, 1), 1);
  return std::min<uint64_t>(fitting, rows) * row_bytes;
}

}  // namespace

int32_t DecodeBilevelBlocks(SegmentJob& job) {
  const uint64_t length = job.data_length;
  if (job.image.DataOffset > length || !job.Holds(job.image.DataOffset, length - job.image.DataOffset)) {
    return ERR_FILE_READ;
  }
  HostArray<uint8_t> data;  // one byte more than the data, for the last row's shift
  HostArray<uint8_t> row;
  if (!data.Allocate(length + 1, Here()) || !row.Allocate(job.bitmap->bytes_per_line, Here()))
    return ERR_NO_MEMORY;
  if (!job.Read(job.image.DataOffset, data.data(), length - job.image.DataOffset)) return ERR_FILE_READ;
  BlockTile tile(job);
  if (const int32_t status = tile.Create(job.bitmap->bits); status != SUCCESS) return status;
  uint64_t running = 0;
  return WalkBlocks(job, OnFailure::kStop, [&](uint64_t block, uint64_t) {
    const BlockPlace place = PlaceBilevelBlock(job, block, running);
    if (place.absent) return kBlockSkipped;
    tile.Begin(block);
    uint64_t consumed = 0;
    const auto offset = static_cast<uint64_t>(place.offset);
    const int32_t status = UnpackBilevelBlock(job, data, offset, tile, row, consumed);
    running = offset + consumed;
    return status;
  });
}

// With equal depths the bytes of the file go into the bitmap as they are: 16-bit samples stay big-endian,
// 12-bit ones unpacked. Rows are consecutive in the file whatever the bitmap's line length is.
int32_t DecodeSingleBlock(SegmentJob& job) {
  const ImSubHdr& image = job.image;
  const uint64_t line = job.bitmap->bytes_per_line;
  const uint64_t sample_bytes = image.Representation == kMono ? std::max(image.SampleBits / 8, 1U) : 1;
  const uint64_t row_bytes = std::min<uint64_t>(line, job.bitmap->width) * sample_bytes;
  const bool converts =
      image.SampleBits != image.ActualBits && NeedsConversion(image.SampleBits, image.ActualBits);
  int32_t minimum = -1;
  int32_t maximum = -1;
  if (converts && ConversionExtent(image.SampleBits, image.ActualBits, line) > line) {
    // Only normalisation to 8 bits looks at the range. A scan that fails leaves what it has found so far.
    ScanSampleRange(minimum, maximum, job.data_length, job.document, job.index);
  }
  if (!job.Holds(image.DataOffset, row_bytes * job.bitmap->height)) return ERR_FILE_READ;
  RowConverter converter(image, line, minimum, maximum);
  HostArray<uint8_t> piece;
  if (!converter.Prepare(row_bytes) || !piece.Allocate(PieceSize(row_bytes, job.bitmap->height), Here())) {
    return ERR_NO_MEMORY;
  }
  return ReadRowsInPieces(job, image.DataOffset, row_bytes, job.bitmap->height, piece,
                          [&](uint32_t y, const uint8_t* row) {
                            HostPutBitmapRow(job.bitmap, converts ? converter.Convert(row) : row, y,
                                             converts ? line : std::min(line, row_bytes));
                            return int32_t{SUCCESS};
                          });
}

int32_t DecodeBlocks(SegmentJob& job) {
  const ImSubHdr& image = job.image;
  const uint64_t row_bytes = (static_cast<uint64_t>(job.bitmap->bits) * image.BlockWidth + 7) / 8;
  const bool converts = NeedsConversion(image.SampleBits, image.ActualBits);
  BlockTile tile(job);
  if (const int32_t status = tile.Create(job.bitmap->bits, image.Representation > kMono ? 1 : 2);
      status != SUCCESS)
    return status;
  RowConverter converter(image, row_bytes, 0, 0);
  HostArray<uint8_t> piece;
  if (!converter.Prepare(row_bytes) || !piece.Allocate(PieceSize(row_bytes, image.BlockHeight), Here())) {
    return ERR_NO_MEMORY;
  }
  return WalkBlocks(job, OnFailure::kStopRun, [&](uint64_t block, uint64_t ordinal) {
    if (IsAbsent(job, block)) return kBlockSkipped;
    tile.Begin(block);
    // The entry of a mask tells presence only: blocks lie one behind the other.
    const auto offset = static_cast<int64_t>(image.DataOffset + ordinal * image.BlockHeight * row_bytes);
    int32_t status =
        ReadRowsInPieces(job, offset, row_bytes, image.BlockHeight, piece, [&](uint32_t, const uint8_t* row) {
          return tile.PutRow(converts ? converter.Convert(row) : row, row_bytes);
        });
    if (status == SUCCESS) status = tile.Finish();
    if (status != SUCCESS) tile.Discard();
    return status;
  });
}

}  // namespace tavi

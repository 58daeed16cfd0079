#include "ImgVq.h"

#include <algorithm>
#include <cstring>
#include <mutex>
#include <optional>

#include "ImgSamples.h"
#include "Vectorise.h"

namespace tavi {

TAVI_UNIT(L"Common/ImgVq")

namespace {

constexpr uint64_t kUsualSide = 4;  // kernels of nearly all files are 4 x 4
constexpr uint64_t kUsualKernel = kUsualSide * kUsualSide;

// Puts usual kernels side by side, a line of the block behind the other.
void StoreUsualKernels(const uint8_t* kernels, const uint16_t* codes, uint64_t count, uint8_t* to,
                       uint64_t line) {
  uint64_t i = 0;
#if TAVI_HAS_SHUFFLE
  // Four kernels are a square of four times four words: turned round, each line is stored at once.
  const auto kernel = [&](uint64_t n) {
    return _mm_loadu_si128(reinterpret_cast<const __m128i*>(kernels + codes[n] * kUsualKernel));
  };
  const auto store = [&](uint64_t row, __m128i words) {
    _mm_storeu_si128(reinterpret_cast<__m128i*>(to + row * line + i * kUsualSide), words);
  };
  for (; i + 4 <= count; i += 4) {
    const __m128i a = kernel(i);
    const __m128i b = kernel(i + 1);
    const __m128i c = kernel(i + 2);
    const __m128i d = kernel(i + 3);
    const __m128i ab_low = _mm_unpacklo_epi32(a, b);
    const __m128i ab_high = _mm_unpackhi_epi32(a, b);
    const __m128i cd_low = _mm_unpacklo_epi32(c, d);
    const __m128i cd_high = _mm_unpackhi_epi32(c, d);
    store(0, _mm_unpacklo_epi64(ab_low, cd_low));
    store(1, _mm_unpackhi_epi64(ab_low, cd_low));
    store(2, _mm_unpacklo_epi64(ab_high, cd_high));
    store(3, _mm_unpackhi_epi64(ab_high, cd_high));
  }
#endif
  for (; i < count; ++i) {
    const uint8_t* const from = kernels + codes[i] * kUsualKernel;
    for (uint64_t row = 0; row < kUsualSide; ++row)
      std::memcpy(to + row * line + i * kUsualSide, from + row * kUsualSide, kUsualSide);
  }
}

// The bits not yet used, of the whole process: what one block or image leaves is where the next one begins.
struct BitReservoir {
  std::mutex guard;
  uint32_t bits = 0;
  uint32_t count = 0;
};
BitReservoir reservoir;

// The codes of a segment, read from the file in large pieces.
class CodeReader {
 public:
  CodeReader(NitfFile& document, uint32_t code_bits) : document_(document), code_bits_(code_bits) {}
  bool Prepare() { return piece_.Allocate(kPiece, Here()); }

  // The codes of one row. False when the file ends inside one of them.
  bool ReadRow(HostArray<uint16_t>& codes) {
    const uint32_t mask = (1U << code_bits_) - 1;
    uint32_t bits = reservoir.bits;
    uint32_t count = reservoir.count;
    uint64_t read = 0;
    // Pairs of codes of the usual length are three bytes.
    for (; code_bits_ == 12 && count == 0 && read + 2 <= codes.size() && filled_ - used_ >= 3;
         read += 2, used_ += 3) {
      const uint8_t* bytes = piece_.data() + used_;
      codes[read] = static_cast<uint16_t>(bytes[0] << 4 | bytes[1] >> 4);
      codes[read + 1] = static_cast<uint16_t>((bytes[1] & 0x0F) << 8 | bytes[2]);
    }
    for (; read < codes.size(); ++read) {
      for (; count < code_bits_ && (used_ != filled_ || Fill()); count += 8)
        bits = bits << 8 | piece_[used_++];
      if (count < code_bits_) break;
      count -= code_bits_;
      codes[read] = static_cast<uint16_t>(bits >> count & mask);
    }
    reservoir.bits = bits;
    reservoir.count = count;
    return read == codes.size();
  }

 private:
  static constexpr uint64_t kPiece = 65536;

  bool Fill() {
    used_ = 0;
    filled_ = ReadSource(document_, piece_.data(), kPiece);
    return filled_ != 0;
  }

  NitfFile& document_;
  uint32_t code_bits_;
  HostArray<uint8_t> piece_;
  uint64_t used_ = 0;
  uint64_t filled_ = 0;
};

// The look-up tables as the file holds them: table t has one line of `height` bytes for each entry. Entry e's
// kernel is the lines of all tables; where there are more tables than a kernel has lines, the later ones
// reach into the entries behind.
class Codebook {
 public:
  Codebook(uint32_t tables, uint32_t entries, uint32_t width, uint32_t height)
      : tables_(tables), entries_(entries), width_(width), height_(height) {}

  int32_t Read(NitfFile& document) {
    const uint64_t size = static_cast<uint64_t>(entries_) * height_ * tables_;
    const int64_t left = document.SourceSize - SeekSource(document, 0, kFromHere);
    if (left < 0 || (entries_ != 0 && size / entries_ / height_ != tables_) ||
        size > static_cast<uint64_t>(left)) {
      return ERR_FILE_READ;
    }
    if (!lines_.Allocate(size, Here()) || !kernel_.Allocate(kernel_size(), Here())) return ERR_NO_MEMORY;
    if (ReadSource(document, lines_.data(), size) != size) return ERR_FILE_READ;
    return tables_ == width_ ? GatherAll() : SUCCESS;
  }

  // All kernels one behind the other, when each of the codes has one; null otherwise.
  const uint8_t* KernelsOf(const HostArray<uint16_t>& codes) const {
    if (!kernels_.exists()) return nullptr;
    uint32_t highest = 0;
    for (uint64_t i = 0; i < codes.size(); ++i) highest = std::max<uint32_t>(highest, codes[i]);
    return highest < entries_ ? kernels_.data() : nullptr;
  }

  // The kernel of a code, as bytes row after row; one beyond the table is all zeros.
  const uint8_t* Kernel(uint32_t code) {
    if (kernels_.exists() && code < entries_) return kernels_.data() + code * kernel_size();
    Gather(code, kernel_.data());
    return kernel_.data();
  }

 private:
  uint64_t kernel_size() const { return static_cast<uint64_t>(width_) * height_; }

  // As many tables as lines: all kernels take no more memory than the tables do.
  int32_t GatherAll() {
    if (!kernels_.Allocate(entries_ * kernel_size(), Here())) return ERR_NO_MEMORY;
    for (uint32_t code = 0; code < entries_; ++code) Gather(code, kernels_.data() + code * kernel_size());
    lines_.Release();
    return SUCCESS;
  }

  void Gather(uint32_t code, uint8_t* kernel) const {
    for (uint32_t line = 0; line < width_; ++line, kernel += height_) {
      if (code >= entries_ || line >= tables_) {
        std::memset(kernel, 0, height_);
        continue;
      }
      const uint32_t shift = std::min(code, (tables_ - 1 - line) / width_);
      const uint64_t table = line + static_cast<uint64_t>(shift) * width_;
      std::memcpy(kernel, lines_.data() + (table * entries_ + code - shift) * height_, height_);
    }
  }

  uint32_t tables_;
  uint32_t entries_;
  uint32_t width_;
  uint32_t height_;
  HostArray<uint8_t> lines_;
  HostArray<uint8_t> kernels_;
  HostArray<uint8_t> kernel_;
};

// The pixels of one block, as the tile gets them. What would fall outside is not stored.
class BlockPixels {
 public:
  BlockPixels(const ImSubHdr& image, uint32_t bits, uint32_t kernel_width, uint32_t kernel_size)
      : block_width_(image.BlockWidth), bits_(bits), kernel_width_(kernel_width), kernel_size_(kernel_size) {}

  bool Prepare(const HostBitmap* tile) {
    const uint64_t bytes_per_pixel = bits_ == 8 ? 1 : (bits_ == 12 || bits_ == 16 ? 2 : 3);
    line_ = tile->bytes_per_line;
    const uint64_t block = static_cast<uint64_t>(block_width_) * tile->height * bytes_per_pixel;
    return pixels_.Allocate(std::max(block, attached_bytes(tile)), Here());
  }
  uint64_t attached_bytes(const HostBitmap* tile) const {
    return static_cast<uint64_t>(tile->height) * line_;
  }
  uint8_t* data() { return pixels_.data(); }

  // Stores a row of kernels at once. False for kernels, pixels or places that are not the usual ones.
  bool StoreRow(const uint8_t* kernels, const HostArray<uint16_t>& codes, uint64_t r) {
    const uint64_t start = r * line_;
    const uint64_t last = (kUsualSide - 1) * block_width_;
    if (bits_ != 8 || kernel_width_ != kUsualSide || kernel_size_ != kUsualKernel) return false;
    if (codes.size() * kUsualSide > block_width_ || start + last + block_width_ > pixels_.size())
      return false;
    StoreUsualKernels(kernels, codes.data(), codes.size(), pixels_.data() + start, block_width_);
    return true;
  }

  void Store(const uint8_t* kernel, uint64_t r, uint64_t c) {
    const uint64_t start = r * line_ + c;
    switch (bits_) {
      case 8:
        StoreBytes(kernel, start, 1);
        break;
      case 12:
        StoreWords(kernel, start);
        break;
      case 24:
        StoreBytes(kernel, start, 3);
        break;
      default:
        break;  // nothing is stored
    }
  }

 private:
  void Put(uint64_t at, uint8_t value) {
    if (at < pixels_.size()) pixels_[at] = value;
  }

  // The kernel's width serves for both directions; words beyond the kernel are not stored.
  void StoreBytes(const uint8_t* kernel, uint64_t start, uint64_t bytes_per_pixel) {
    const uint64_t row_bytes = kernel_width_ * bytes_per_pixel;
    const uint64_t line = block_width_ * bytes_per_pixel;
    if (row_bytes == kUsualSide && kernel_size_ >= kUsualSide * kUsualSide &&
        start + (kUsualSide - 1) * line + kUsualSide <= pixels_.size()) {
      uint8_t* to = pixels_.data() + start;
      for (uint64_t row = 0; row < kUsualSide; ++row)
        std::memcpy(to + row * line, kernel + row * kUsualSide, kUsualSide);
      return;
    }
    uint64_t at = start;
    for (uint64_t word = 0; word < kernel_size_ && word < row_bytes * kernel_width_; word += row_bytes) {
      const uint64_t stored = std::min<uint64_t>(row_bytes, kernel_size_ - word);
      if (at >= pixels_.size()) return;
      std::memcpy(pixels_.data() + at, kernel + word, std::min(stored, pixels_.size() - at));
      at += line;
    }
  }

  // Rows of 16-bit values whose distance depends on where the kernel stands; the packing that follows begins
  // where a last row would.
  void StoreWords(const uint8_t* kernel, uint64_t start) {
    for (uint64_t word = 0; word < kernel_size_ && word < kernel_width_ * kernel_width_; ++word) {
      const uint64_t at = start + word / kernel_width_ * 2 * start + word % kernel_width_ * 2;
      Put(at, kernel[word]);
      Put(at + 1, 0);
    }
    const uint64_t end = start + kernel_width_ * 2 * start;
    const uint64_t pairs = kernel_size_ / 2;
    const uint64_t groups = pairs >= 1 ? (pairs - 1) / 3 + 1 : 0;
    for (uint64_t group = 0; group < groups; ++group) {
      const uint64_t at = end + group * 6;
      if (at + 3 > pixels_.size()) return;
      ConvertSamples(pixels_.data() + at, 12, 12, 3, 0, 0);
    }
  }

  uint64_t block_width_;
  uint32_t bits_;
  uint64_t kernel_width_;
  uint64_t kernel_size_;
  uint64_t line_ = 0;
  HostArray<uint8_t> pixels_;
};

bool IsPresent(const ImSubHdr& image, uint64_t block) {
  return image.BlockMaskLength == 0 || image.BlockMask.At(block) != MaskTable::kAbsentBlock;
}

// Makes the segment bitmap anew, as large as the present blocks reach.
int32_t RecreateBitmap(SegmentJob& job) {
  const ImSubHdr& image = job.image;
  const uint64_t blocks = static_cast<uint64_t>(image.BlocksPerRow) * image.BlocksPerColumn;
  const bool masked = image.BlockMaskLength != 0;
  uint64_t x = masked ? 0 : image.BlocksPerRow - 1U;
  uint64_t y = masked ? 0 : image.BlocksPerColumn - 1U;
  for (uint64_t block = 0; masked && block < blocks; ++block) {
    if (!IsPresent(image, block)) continue;
    x = std::max(x, block % image.BlocksPerRow);
    y = std::max(y, block / image.BlocksPerRow);
  }
  const uint32_t bits = job.bitmap->bits;
  const uint32_t order = job.bitmap->order;
  if ((job.bitmap->flags & 1) != 0) HostFreeBitmap(job.bitmap);
  return HostCreateBitmap(job.bitmap, sizeof(HostBitmap), 1, static_cast<uint32_t>(x + 1) * image.BlockWidth,
                          static_cast<uint32_t>(y + 1) * image.BlockHeight, bits, order, image.Lut.data(), 1,
                          nullptr, 0);
}

// The numbers that nothing can be decoded with.
bool IsUsable(const ImSubHdr& image, const VqHeader& header) {
  constexpr uint32_t kMostCodeBits = 16;
  return header.image_rows != 0 && header.codes_per_row != 0 && header.lookup_records != 0 &&
         header.code_bits != 0 && header.code_bits <= kMostCodeBits &&
         image.BlockHeight / header.image_rows != 0 && image.BlockWidth / header.codes_per_row != 0;
}

void GiveDefaultPalettes(HostBitmap* tile, HostBitmap* segment) {
  constexpr uint32_t kCopied = 255;
  HostPaletteEntry* palette = HostDefaultPalette(8);
  if (palette == nullptr) return;
  HostPutBitmapColors(tile, 0, kCopied, palette);
  HostPutBitmapColors(segment, 0, kCopied, palette);
  HostFreeMem(palette, Here().line, Here().unit);
}

// Decodes the blocks once the tables are read. The reservoir is held.
class VqDecoder {
 public:
  VqDecoder(SegmentJob& job, const VqHeader& header)
      : job_(job),
        header_(header),
        height_(job.image.BlockHeight / header.image_rows),
        width_(job.image.BlockWidth / header.codes_per_row),
        pixels_(job.image, job.bitmap->bits, width_, width_ * height_),
        codes_(job.document, header.code_bits) {}

  int32_t Prepare(uint32_t entries) {
    codebook_.emplace(header_.lookup_records, entries, width_, height_);
    int32_t status = codebook_->Read(job_.document);
    if (status != SUCCESS) return status;
    constexpr uint32_t kPixelsAttached = 2;
    status =
        HostCreateBitmap(tile_.get(), sizeof(HostBitmap), kPixelsAttached, job_.image.BlockWidth,
                         job_.image.BlockHeight, job_.bitmap->bits, 1, job_.image.Lut.data(), 1, nullptr, 0);
    if (status != SUCCESS) return status;
    if (!pixels_.Prepare(tile_.get()) || !codes_.Prepare() || !row_.Allocate(header_.codes_per_row, Here())) {
      return ERR_NO_MEMORY;
    }
    if (job_.bitmap->bits == 8 && !job_.image.Lut.exists()) GiveDefaultPalettes(tile_.get(), job_.bitmap);
    return SUCCESS;
  }

  int32_t DecodeBlock(uint64_t block) {
    constexpr uint32_t kReplace = 800;
    for (uint64_t r = 0; r < job_.image.BlockHeight; r += height_) {
      if (!codes_.ReadRow(row_)) return ERR_FILE_READ;
      const uint8_t* const kernels = codebook_->KernelsOf(row_);
      if (kernels != nullptr && pixels_.StoreRow(kernels, row_, r)) continue;
      for (uint64_t i = 0; i < row_.size(); ++i) {
        pixels_.Store(codebook_->Kernel(row_[i]), r, i * height_);
      }
    }
    int32_t status = HostAttachBitmapData(tile_.get(), pixels_.data(), pixels_.attached_bytes(tile_.get()));
    if (status != SUCCESS) return status;
    const auto x = static_cast<int32_t>(block % job_.image.BlocksPerRow * job_.image.BlockWidth);
    const auto y = static_cast<int32_t>(block / job_.image.BlocksPerRow * job_.image.BlockHeight);
    status = HostCombineBitmap(job_.bitmap, x, y, tile_->width, tile_->height, tile_.get(), 0, 0, kReplace);
    HostClearBitmap(tile_.get());
    return status;
  }

 private:
  SegmentJob& job_;
  const VqHeader& header_;
  uint32_t height_;  // of a kernel
  uint32_t width_;
  BlockPixels pixels_;
  CodeReader codes_;
  HostArray<uint16_t> row_;
  std::optional<Codebook> codebook_;
  OwnedBitmap tile_;
};

}  // namespace

VqHeader ParseVqHeader(const uint8_t* bytes) {
  constexpr uint32_t kRecordCountAt = 11;  // behind rows 4, codes 4, bits 1, algorithm 2
  return {ReadBig32(bytes), ReadBig32(bytes + 4), bytes[8], ReadBig16(bytes + kRecordCountAt)};
}

int32_t SkipMaskTable(NitfFile& document, const ImSubHdr& image) {
  switch (image.Compression) {
    case kNM:
    case kM0:
    case kM1:
    case kM3:
    case kM4:
    case kM5:
      break;
    default:
      return SUCCESS;
  }
  uint8_t head[10];  // IMDATOFF 4, BMRLNTH 2, TMRLNTH 2, TPXCDLNTH 2
  if (ReadSource(document, head, sizeof head) != sizeof head) return ERR_FILE_READ;
  // A negative number of blocks comes out huge; no table of that size is in any file.
  const double blocks = static_cast<double>(image.BlocksPerRow) * image.BlocksPerColumn * image.BandField;
  constexpr double kMostBlocks = 1e12;
  const bool has_block_mask = ReadBig16(head + 4) != 0;
  const bool has_pad_mask = ReadBig16(head + 6) != 0;
  if ((has_block_mask || has_pad_mask) && blocks > kMostBlocks) return ERR_FILE_READ;
  const int64_t table = blocks > kMostBlocks ? 0 : static_cast<int64_t>(blocks) * 4;
  const int64_t tables = (has_block_mask ? table : 0) + (has_pad_mask ? table : 0);
  const int64_t skipped = (ReadBig16(head + 8) + 7) / 8 + tables;
  const int64_t position = SeekSource(document, skipped, kFromHere);
  return position >= 0 && position <= document.SourceSize ? SUCCESS : ERR_FILE_READ;
}

int32_t ReadCompressionLookupRecords(NitfFile& document, const VqHeader& header, VqLookupRecord* records) {
  for (uint32_t i = 0; i < header.lookup_records; ++i) {
    uint8_t bytes[VqLookupRecord::kSize];
    if (ReadSource(document, bytes, sizeof bytes) != sizeof bytes) return ERR_FILE_READ;
    records[i] = {ReadBig16(bytes), ReadBig32(bytes + 2), ReadBig16(bytes + 6), ReadBig16(bytes + 8),
                  ReadBig32(bytes + 10)};
  }
  return SUCCESS;
}

int32_t DecodeVectorQuantised(SegmentJob& job) {
  const ImSubHdr& image = job.image;
  SeekImageData(job.document, job.index);
  if (image.Compression == kM4) {
    if (const int32_t status = SkipMaskTable(job.document, image); status != SUCCESS) return status;
  }
  if (const int32_t status = RecreateBitmap(job); status != SUCCESS) return status;
  uint8_t bytes[VqHeader::kSize];
  if (ReadSource(job.document, bytes, sizeof bytes) != sizeof bytes) return ERR_FILE_READ;
  const VqHeader header = ParseVqHeader(bytes);
  if (!IsUsable(image, header)) return ERR_FILE_FORMAT;
  HostArray<VqLookupRecord> records;
  if (!records.Allocate(header.lookup_records, Here())) return ERR_NO_MEMORY;
  int32_t status = ReadCompressionLookupRecords(job.document, header, records.data());
  if (status != SUCCESS) return status;
  const std::lock_guard<std::mutex> one_at_a_time(reservoir.guard);
  VqDecoder decoder(job, header);
  status = decoder.Prepare(records[0].record_count);
  if (status != SUCCESS) return status;
  return WalkBlocks(job, OnFailure::kStop, [&](uint64_t block, uint64_t) {
    return IsPresent(image, block) ? decoder.DecodeBlock(block) : kBlockSkipped;
  });
}

}  // namespace tavi

// CCITT fax by libtiff: the raw data are shown to it as the one strip of a TIFF file in memory.
#include <tiffio.h>

#include <algorithm>
#include <bit>
#include <cstring>
#include <memory>

#include "TaviFile/Codec.h"
#include "TaviFile/FaxStream.h"
#include "TaviKernel/BitmapRecord.h"
#include "TaviKernel/Limits.h"
#include "TaviKernel/PixelView.h"

namespace tavi::host {
namespace {

// A blank line takes a bit at least.
constexpr uint64_t kRowsPerByte = 8;
// The decoder's tables for each pixel of a line.
constexpr uint64_t kTableBytes = 32;

// ---- The file in memory

constexpr uint32_t kFields = 11;
constexpr uint32_t kHeaderBytes = 8 + 2 + 12 * kFields + 4;
constexpr uint32_t kLeadBytes = 2;
constexpr uint64_t kMostData = UINT32_MAX - kHeaderBytes - kLeadBytes;

class TiffHeader {
 public:
  TiffHeader(const FaxLayout& layout, const FaxVariant& variant, uint32_t data_bytes) {
    bytes_[0] = bytes_[1] = std::endian::native == std::endian::little ? 'I' : 'M';
    Put16(42);
    Put32(8);
    Put16(kFields);
    Field(TIFFTAG_IMAGEWIDTH, layout.width);
    Field(TIFFTAG_IMAGELENGTH, layout.height);
    Field(TIFFTAG_BITSPERSAMPLE, 1);
    Field(TIFFTAG_COMPRESSION, Compression(variant));
    Field(TIFFTAG_PHOTOMETRIC, PHOTOMETRIC_MINISWHITE);
    Field(TIFFTAG_FILLORDER, variant.least_bit_first ? FILLORDER_LSB2MSB : FILLORDER_MSB2LSB);
    Field(TIFFTAG_STRIPOFFSETS, kHeaderBytes);
    Field(TIFFTAG_SAMPLESPERPIXEL, 1);
    Field(TIFFTAG_ROWSPERSTRIP, layout.height);
    Field(TIFFTAG_STRIPBYTECOUNTS, data_bytes);
    // Group 3 and 4 have the same number for different fields; both are 0 but for two dimensions.
    const bool group4 = variant.coding == FaxCoding::kGroup4;
    const bool two = variant.coding == FaxCoding::kTwoDimensions;
    Field(group4 ? TIFFTAG_GROUP4OPTIONS : TIFFTAG_GROUP3OPTIONS, two ? GROUP3OPT_2DENCODING : 0u);
    Put32(0);
  }

  Bytes bytes() const { return bytes_; }

 private:
  static uint32_t Compression(const FaxVariant& variant) {
    if (variant.coding == FaxCoding::kGroup4) return COMPRESSION_CCITTFAX4;
    return variant.has_line_ends ? COMPRESSION_CCITTFAX3 : COMPRESSION_CCITTRLE;
  }
  void Put16(uint32_t value) {
    const auto stored = static_cast<uint16_t>(value);
    std::memcpy(&bytes_[at_], &stored, sizeof stored);
    at_ += sizeof stored;
  }
  void Put32(uint32_t value) {
    std::memcpy(&bytes_[at_], &value, sizeof value);
    at_ += sizeof value;
  }
  void Field(uint32_t tag, uint32_t value) {
    constexpr uint32_t kLong = 4;
    Put16(tag);
    Put16(kLong);
    Put32(1);
    Put32(value);
  }

  std::array<uint8_t, kHeaderBytes> bytes_{};
  uint64_t at_ = 2;  // behind the mark of the byte order
};

// The file: header, perhaps an end-of-line code, data.
struct MemoryFile {
  std::array<Bytes, 3> parts;
  uint64_t at = 0;
  uint64_t complaints = 0;  // of the decoder

  uint64_t size() const { return parts[0].size() + parts[1].size() + parts[2].size(); }
};

tmsize_t ReadFile(thandle_t handle, void* buffer, tmsize_t size) {
  auto* const file = static_cast<MemoryFile*>(handle);
  auto* out = static_cast<uint8_t*>(buffer);
  auto wanted = static_cast<uint64_t>(size);
  uint64_t start = 0;
  for (const Bytes part : file->parts) {
    if (wanted != 0 && file->at >= start && file->at < start + part.size()) {
      const uint64_t offset = file->at - start;
      const uint64_t count = std::min<uint64_t>(wanted, part.size() - offset);
      std::memcpy(out, part.data() + offset, count);
      out += count;
      wanted -= count;
      file->at += count;
    }
    start += part.size();
  }
  return size - static_cast<tmsize_t>(wanted);
}

tmsize_t WriteFile(thandle_t, void*, tmsize_t) {
  return 0;
}

toff_t SeekFile(thandle_t handle, toff_t offset, int origin) {
  auto* const file = static_cast<MemoryFile*>(handle);
  uint64_t base = 0;
  if (origin == SEEK_CUR) base = file->at;
  if (origin == SEEK_END) base = file->size();
  file->at = base + offset;
  return file->at;
}

int CloseFile(thandle_t) {
  return 0;
}

toff_t SizeOfFile(thandle_t handle) {
  return static_cast<MemoryFile*>(handle)->size();
}

int Complain(TIFF*, void* user, const char*, const char*, va_list) {
  ++static_cast<MemoryFile*>(user)->complaints;
  return 1;
}

struct TiffDeleter {
  void operator()(TIFF* tiff) const { TIFFClose(tiff); }
};
struct OptionsDeleter {
  void operator()(TIFFOpenOptions* options) const { TIFFOpenOptionsFree(options); }
};
using TiffOwner = std::unique_ptr<TIFF, TiffDeleter>;

TiffOwner OpenTiff(MemoryFile* file, const FaxVariant& variant) {
  const std::unique_ptr<TIFFOpenOptions, OptionsDeleter> options(TIFFOpenOptionsAlloc());
  if (options == nullptr) return nullptr;
  // Both kinds come from damaged lines; what they are called differs from line to line.
  TIFFOpenOptionsSetErrorHandlerExtR(options.get(), Complain, file);
  TIFFOpenOptionsSetWarningHandlerExtR(options.get(), Complain, file);
  TiffOwner tiff(TIFFClientOpenExt("", "rm", file, ReadFile, WriteFile, SeekFile, CloseFile, SizeOfFile,
                                   nullptr, nullptr, options.get()));
  if (tiff != nullptr && variant.coding == FaxCoding::kOneDimension && !variant.has_line_ends) {
    const int aligned = variant.byte_aligned ? FAXMODE_BYTEALIGN : 0;
    TIFFSetField(tiff.get(), TIFFTAG_FAXMODE, FAXMODE_NORTC | FAXMODE_NOEOL | aligned);
  }
  return tiff;
}

// ---- Rows

struct Outcome {
  uint32_t decoded = 0;   // rows
  uint32_t doubtful = 0;  // of them, those that the decoder complained of
  int32_t status = SUCCESS;

  bool IsClean(uint32_t height) const { return decoded == height && doubtful == 0; }
  // Whether more of its rows are sound. Data read the wrong way yield many rows, few of them by chance sound.
  bool IsSounderThan(const Outcome& other) const {
    return uint64_t{decoded - doubtful} * (uint64_t{other.decoded} + 1) >
           uint64_t{other.decoded - other.doubtful} * (uint64_t{decoded} + 1);
  }
};

void InvertRow(uint8_t* row, uint64_t bytes, uint32_t width) {
  for (uint64_t i = 0; i < bytes; ++i) row[i] = static_cast<uint8_t>(~row[i]);
  if (width % 8 != 0) row[bytes - 1] = static_cast<uint8_t>(row[bytes - 1] & 0xFF00 >> width % 8);
}

// Elements come out of the decoder with black as 1.
Outcome DecodeRows(Bytes data, const FaxLayout& layout, const FaxVariant& variant, const PixelView& view) {
  const bool two = variant.coding == FaxCoding::kTwoDimensions;
  // An end of line for data that lack the first one; in two dimensions it says that the line has one.
  uint8_t lead[kLeadBytes] = {0, static_cast<uint8_t>(two ? 0x03 : 0x01)};
  if (variant.least_bit_first) lead[1] = two ? 0xC0 : 0x80;
  const bool leads = variant.has_line_ends && !variant.begins_with_line_end;
  const uint64_t size = std::min<uint64_t>(data.size(), kMostData);
  const Bytes lead_bytes = leads ? Bytes(lead) : Bytes();
  const TiffHeader header(layout, variant, static_cast<uint32_t>(size + lead_bytes.size()));
  MemoryFile file{{header.bytes(), lead_bytes, data.first(size)}};
  Outcome outcome;
  const TiffOwner tiff = OpenTiff(&file, variant);
  if (tiff == nullptr) {
    outcome.status = ERR_NO_MEMORY;
    return outcome;
  }
  const uint64_t row_bytes = view.UsedBytes();
  if (static_cast<uint64_t>(TIFFScanlineSize64(tiff.get())) != row_bytes) {
    outcome.status = ERR_FILE_FORMAT;
    return outcome;
  }
  // Behind the data's end some kinds go on yielding faulty rows: what follows the last sound row is no
  // picture.
  uint32_t doubtful = 0;
  for (uint32_t y = 0; y < view.height; ++y) {
    const uint64_t before = file.complaints;
    uint8_t* const row = view.ReplaceRow(view.StorageRow(y));
    if (TIFFReadScanline(tiff.get(), row, y, 0) != 1) break;
    InvertRow(row, row_bytes, view.width);
    if (file.complaints != before) {
      ++doubtful;
    } else {
      outcome.decoded = y + 1;
      outcome.doubtful = doubtful;
    }
  }
  for (uint32_t y = outcome.decoded; y < view.height; ++y) {
    uint8_t* const row = view.ReplaceRow(view.StorageRow(y));
    std::memset(row, 0, row_bytes);
    InvertRow(row, row_bytes, view.width);
  }
  return outcome;
}

Outcome DecodeBest(Bytes data, const FaxLayout& layout, const PixelView& view) {
  FaxVariant variants[kMostFaxVariants];
  const uint32_t count = FindFaxVariants(data, layout, variants);
  Outcome best;
  uint32_t best_at = 0;
  for (uint32_t i = 0; i < count; ++i) {
    const Outcome outcome = DecodeRows(data, layout, variants[i], view);
    if (outcome.status != SUCCESS || outcome.IsClean(view.height)) return outcome;
    if (i != 0 && !outcome.IsSounderThan(best)) continue;
    best = outcome;
    best_at = i;
  }
  return best_at + 1 == count ? best : DecodeRows(data, layout, variants[best_at], view);
}

int32_t CheckClaim(const FaxLayout& layout, uint64_t bytes) {
  if (layout.width == 0 || layout.height == 0) return ERR_INVALID_PARAMETER;
  const uint64_t tables = layout.width * kTableBytes;
  const uint64_t rows = BytesPerLine(1, layout.width) * layout.height;
  if (!IsWithin(HOST_LIMIT_PICTURE, std::max(tables, rows))) return ERR_NO_MEMORY;
  // Each row costs time, however narrow, and a decoder goes on behind the end of the data.
  return IsWithin(HOST_LIMIT_FAX, layout.height, kRowsPerByte * bytes) ? SUCCESS : ERR_FILE_FORMAT;
}

// A bitmap of the right shape is decoded into as it is, palette and all; otherwise a new one is made.
int32_t NeedBitmap(HostBitmap* bitmap, const FaxLayout& layout, uint32_t order, PixelView* view) {
  const bool fits = ViewOf(bitmap, view) && view->memory != nullptr && view->width == layout.width &&
                    view->height == layout.height && view->bits == 1;
  if (fits) {
    bitmap->order = order;
    return SUCCESS;
  }
  HostFreeBitmap(bitmap);
  const int32_t status = HostCreateBitmap(bitmap, sizeof *bitmap, 1, layout.width, layout.height, 1, order,
                                          nullptr, 1, nullptr, 0);
  if (status != SUCCESS) return status;
  return ViewOf(bitmap, view) ? SUCCESS : ERR_NO_BITMAP;
}

}  // namespace

int32_t DecodeFax(Bytes data, const FaxLayout& layout, HostBitmap* bitmap, uint32_t order) noexcept {
  int32_t status = CheckClaim(layout, data.size());
  PixelView view;
  if (status == SUCCESS) status = NeedBitmap(bitmap, layout, order, &view);
  if (status == SUCCESS) {
    const Outcome outcome = DecodeBest(data, layout, view);
    status = outcome.status;
    if (status == SUCCESS && outcome.decoded == 0) status = data.empty() ? ERR_FILE_READ : ERR_FILE_FORMAT;
    // Lines with a fault here and there are what fax is like; data of which most are faulty are no fax. In
    // group 4 a fault spoils all lines behind it.
    const uint32_t tolerated = layout.format == kFormatFaxG3OneD ? outcome.decoded / 2 : outcome.decoded / 8;
    if (status == SUCCESS && outcome.doubtful > tolerated) status = ERR_FILE_FORMAT;
  }
  if (status != SUCCESS) HostFreeBitmap(bitmap);
  return status;
}

const char* FaxVersion() noexcept {
  static constexpr char kBehind[] = "LIBTIFF, Version ";
  static char text[32];
  static const bool written = [] {
    std::strcpy(text, "libtiff ");
    const char* const full = TIFFGetVersion();
    if (std::strncmp(full, kBehind, sizeof kBehind - 1) == 0) {
      const char* const number = full + sizeof kBehind - 1;
      std::strncat(text, number, std::min<size_t>(std::strcspn(number, "\n"), 16));
    }
    return true;
  }();
  return written ? text : nullptr;
}

}  // namespace tavi::host

#include "FaxEncoder.h"

#include <tiffio.h>

#include <algorithm>
#include <cstring>

namespace tavi_test {
namespace {

struct File {
  Stream bytes;
  size_t at = 0;
};

tmsize_t Read(thandle_t handle, void* buffer, tmsize_t size) {
  auto* const file = static_cast<File*>(handle);
  const size_t left = file->at < file->bytes.size() ? file->bytes.size() - file->at : 0;
  const size_t count = std::min(static_cast<size_t>(size), left);
  if (count != 0) std::memcpy(buffer, file->bytes.data() + file->at, count);
  file->at += count;
  return static_cast<tmsize_t>(count);
}

tmsize_t Write(thandle_t handle, void* buffer, tmsize_t size) {
  auto* const file = static_cast<File*>(handle);
  const size_t end = file->at + static_cast<size_t>(size);
  if (file->bytes.size() < end) file->bytes.resize(end);
  if (size != 0) std::memcpy(file->bytes.data() + file->at, buffer, static_cast<size_t>(size));
  file->at = end;
  return size;
}

toff_t Seek(thandle_t handle, toff_t offset, int origin) {
  auto* const file = static_cast<File*>(handle);
  const size_t base = origin == SEEK_SET ? 0 : origin == SEEK_CUR ? file->at : file->bytes.size();
  file->at = base + offset;
  return file->at;
}

int Close(thandle_t) {
  return 0;
}

toff_t Size(thandle_t handle) {
  return static_cast<File*>(handle)->bytes.size();
}

TIFF* Open(File* file, const char* mode) {
  return TIFFClientOpen("page", mode, file, Read, Write, Seek, Close, Size, nullptr, nullptr);
}

void SetKind(TIFF* tiff, const FaxSettings& settings) {
  const int control = settings.return_to_control ? 0 : FAXMODE_NORTC;
  switch (settings.kind) {
    case FaxKind::kG4:
      TIFFSetField(tiff, TIFFTAG_COMPRESSION, COMPRESSION_CCITTFAX4);
      return;
    case FaxKind::kG3OneDNoLineEnds:
      TIFFSetField(tiff, TIFFTAG_COMPRESSION, COMPRESSION_CCITTRLE);
      TIFFSetField(tiff, TIFFTAG_FAXMODE, FAXMODE_NORTC | FAXMODE_NOEOL);
      return;
    case FaxKind::kG3OneDByteAligned:
      TIFFSetField(tiff, TIFFTAG_COMPRESSION, COMPRESSION_CCITTRLE);
      return;
    default:
      TIFFSetField(tiff, TIFFTAG_COMPRESSION, COMPRESSION_CCITTFAX3);
      TIFFSetField(tiff, TIFFTAG_FAXMODE, control);
      TIFFSetField(tiff, TIFFTAG_GROUP3OPTIONS,
                   (settings.kind == FaxKind::kG3TwoD ? GROUP3OPT_2DENCODING : 0) |
                       (settings.fill_bits ? GROUP3OPT_FILLBITS : 0));
  }
}

}  // namespace

Pixels MakePage(uint32_t width, uint32_t height) {
  Pixels page = MakeScene(width, height, 1, 8);
  const Pixels noise = MakeNoise(width, height, 1, 3);
  for (uint32_t y = 0; y < height; ++y) {
    for (uint32_t x = 0; x < width; ++x) {
      const bool letters = x / 8 % 7 == 3 && noise.At(x, y) < 3;
      page.At(x, y) = page.At(x, y) > 110 && !letters ? 1 : 0;
      if (y % 16 == 5) page.At(x, y) = 1;   // blank lines
      if (y % 32 == 17) page.At(x, y) = 0;  // ruled lines
    }
  }
  return page;
}

Stream EncodeFax(const Pixels& page, const FaxSettings& settings) {
  File file;
  TIFF* const writer = Open(&file, "w");
  TIFFSetField(writer, TIFFTAG_IMAGEWIDTH, page.width);
  TIFFSetField(writer, TIFFTAG_IMAGELENGTH, page.height);
  TIFFSetField(writer, TIFFTAG_BITSPERSAMPLE, 1);
  TIFFSetField(writer, TIFFTAG_SAMPLESPERPIXEL, 1);
  TIFFSetField(writer, TIFFTAG_PHOTOMETRIC, PHOTOMETRIC_MINISWHITE);
  TIFFSetField(writer, TIFFTAG_ROWSPERSTRIP, page.height);
  TIFFSetField(writer, TIFFTAG_FILLORDER, settings.least_bit_first ? FILLORDER_LSB2MSB : FILLORDER_MSB2LSB);
  SetKind(writer, settings);
  std::vector<uint8_t> row((page.width + 7) / 8);
  for (uint32_t y = 0; y < page.height; ++y) {
    std::fill(row.begin(), row.end(), uint8_t{0});
    for (uint32_t x = 0; x < page.width; ++x) {
      if (page.At(x, y) == 0) row[x / 8] = static_cast<uint8_t>(row[x / 8] | 0x80 >> x % 8);
    }
    TIFFWriteScanline(writer, row.data(), y, 0);
  }
  TIFFClose(writer);
  file.at = 0;
  TIFF* const reader = Open(&file, "rm");
  Stream data(TIFFRawStripSize64(reader, 0));
  TIFFReadRawStrip(reader, 0, data.data(), static_cast<tmsize_t>(data.size()));
  TIFFClose(reader);
  return data;
}

int32_t DescribeFax(void* information, void* user) {
  auto* const description = static_cast<FaxDescription*>(user);
  auto* const places = static_cast<uint32_t*>(information);
  for (int i = 0; i < 64; ++i) description->found_zeros &= places[i] == 0;
  ++description->asked;
  places[1] = description->format;
  places[2] = description->width;
  places[3] = description->height;
  places[4] = 1;
  places[7] = 0;
  places[9] = 1;
  return description->status;
}

int32_t LoadFax(const Stream& data, FaxDescription* description, Bitmap* bitmap, uint32_t order) {
  const HostLoadHook before = HostSetLoadHook(DescribeFax, description);
  const int32_t status = HostLoadMemory(BytesOf(data), bitmap->get(), sizeof(HostBitmap), 1, order,
                                        data.size(), nullptr, nullptr);
  HostSetLoadHook(before, nullptr);
  return status;
}

}  // namespace tavi_test

#include "HandlImg.h"

#include "ImgBlocks.h"
#include "ImgEmbedded.h"
#include "ImgFax.h"
#include "ImgVq.h"

namespace tavi {

TAVI_UNIT(L"Common/HandlImg")

namespace {

constexpr uint32_t kSourceCopy = 0xCC0020;

int32_t DecodeUncompressed(SegmentJob& job) {
  const ImSubHdr& image = job.image;
  if (job.bands < 3) {
    return image.BlocksPerRow < 2 && image.BlocksPerColumn < 2 ? DecodeSingleBlock(job) : DecodeBlocks(job);
  }
  switch (image.Mode) {
    case kByBlock:
      return DecodeBandBlocks(job);
    case kByPixel:
      return DecodePixelBlocks(job);
    case kByRow:
      return DecodeRowBlocks(job);
    case kSequential:
      return DecodeSequentialBlocks(job);
    default:
      return 0;
  }
}

int32_t DecodeByCompression(FilterLoadContext* context, SegmentJob& job) {
  switch (job.image.Compression) {
    case kNC:
    case kNM:
      return job.image.PixelType == kPixelBilevel ? DecodeBilevelBlocks(job) : DecodeUncompressed(job);
    case kC1:
    case kM1:
      return DecodeFaxSegment(context, job);
    case kC3:
    case kC5:
    case kC6:
    case kC8:
    case kI1:
    case kM3:
    case kM5:
    case kM6:
    case kM8:
      return DecodeEmbedded(context, job);
    case kC4:
    case kM4:
      return DecodeVectorQuantised(job);
    default:  // C0, C2, M0, M2
      return ERR_NOT_SUPPORTED;
  }
}

// A picture with something below level 20 and nothing from there on is brightened.
void StretchIfDark(HostBitmap* bitmap) {
  constexpr uint32_t kLevels = 256;
  constexpr uint32_t kDarkLevels = 20;
  constexpr int32_t kBrighten = 350;
  uint32_t counters[kLevels] = {};
  if (HostHistogram(bitmap, counters, kLevels, 0) != SUCCESS) return;
  bool dark = false;
  for (uint32_t level = 0; level < kDarkLevels; ++level) dark |= counters[level] != 0;
  for (uint32_t level = kDarkLevels; level < kLevels; ++level) {
    if (counters[level] != 0) return;
  }
  if (dark) HostAdjustBitmap(bitmap, kBrighten);
}

// The colour of the palette entry that the pad code's first byte indexes; 0 for a bitmap without a palette.
uint32_t TransparentColour(const HostBitmap* bitmap, const ImSubHdr& image) {
  constexpr uint32_t kEntries = 256;
  if (bitmap->color_count == 0) return 0;
  HostPaletteEntry palette[kEntries] = {};
  const uint32_t count = bitmap->color_count < kEntries ? bitmap->color_count : kEntries;
  HostGetBitmapColors(bitmap, 0, count, palette);
  const HostPaletteEntry& entry = palette[image.PadCode[0]];
  return static_cast<uint32_t>(entry.blue) << 16 | static_cast<uint32_t>(entry.green) << 8 | entry.red;
}

}  // namespace

int32_t DrawImageSegment(FilterLoadContext* context, HostDrawingContext dc, NitfFile& document,
                         uint32_t index, int32_t row_offset, int32_t column_offset) {
  const ImSubHdr* image = SubheaderAt(document.Images, index, document.ImageCount);
  if (image == nullptr) return ERR_INVALID_PARAMETER;
  OwnedBitmap bitmap;
  const int32_t status = DecodeImageSegment(context, document, index, bitmap.get());
  if (status != SUCCESS) return status;
  if (document.StretchDarkImages != 0) StretchIfDark(bitmap.get());
  return PaintSegmentBitmap(dc, bitmap.get(), *image, row_offset, column_offset);
}

int32_t DecodeImageSegment(FilterLoadContext* context, NitfFile& document, uint32_t index,
                           HostBitmap* bitmap) {
  ImSubHdr* image = SubheaderAt(document.Images, index, document.ImageCount);
  if (image == nullptr) return ERR_INVALID_PARAMETER;
  int32_t status = CreateSegmentBitmap(bitmap, *image);
  if (status != SUCCESS) return status;
  SegmentJob job(document, *image, index, bitmap);
  status = DecodeByCompression(context, job);
  if (status != SUCCESS && (bitmap->flags & 1) != 0) HostFreeBitmap(bitmap);
  return status;
}

int32_t PaintSegmentBitmap(HostDrawingContext dc, HostBitmap* bitmap, const ImSubHdr& image,
                           int32_t row_offset, int32_t column_offset) {
  // Vector quantised data may come out smaller than the header's grid; all else is painted at the grid's
  // size.
  const bool own_size = image.Compression == kC4 || image.Compression == kM4;
  const auto width = static_cast<int32_t>(own_size ? bitmap->width : image.BlockWidth * image.BlocksPerRow);
  const auto height =
      static_cast<int32_t>(own_size ? bitmap->height : image.BlockHeight * image.BlocksPerColumn);
  const int32_t left = WrapAdd(image.LocationColumn, column_offset);
  const int32_t top = WrapAdd(image.LocationRow, row_offset);
  HostRect place;
  SetRect(&place, left, top, WrapAdd(left, width), WrapAdd(top, height));

  const PaintPalette selected(dc, bitmap, Here());
  if (!image.PadCode.exists())
    return HostPaintBitmap(dc, bitmap, nullptr, nullptr, &place, nullptr, kSourceCopy);
  return HostPaintBitmapKeyed(dc, bitmap, nullptr, nullptr, &place, nullptr, 1000, 1, 1, 1, 1, 1, 1, 1,
                              TransparentColour(bitmap, image), 0, 0, kSourceCopy);
}

}  // namespace tavi

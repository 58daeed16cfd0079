#include "Append.h"
#include "DisplayList.h"
#include "HeaderSetter.h"
#include "ImageEditing.h"

namespace tavi {

TAVI_UNIT(L"Common/AppendImage")

namespace {

constexpr int32_t kYcbcrFormat = 10;
constexpr int32_t kRgbFormat = 182;
constexpr int32_t kGreyBits = 8;
constexpr int32_t kColourBits = 24;

int32_t CheckArguments(const NitfFile& document, const HostBitmap* bitmap, int32_t format, int32_t bits,
                       int32_t quality_factor) {
  constexpr int32_t kBestQuality = 2;
  constexpr int32_t kCoarsestQuality = 255;
  if (bitmap == nullptr || (bitmap->flags & 1) == 0) return ERR_NO_BITMAP;
  if (document.ImageCount >= kMostSegmentsOfAKind) return kNoRoomForSegment;
  if (bits != kGreyBits && bits != kColourBits) return ERR_INVALID_BPP;
  if (quality_factor < kBestQuality || quality_factor > kCoarsestQuality) return ERR_INVALID_QFACTOR;
  if (format != kYcbcrFormat && format != kRgbFormat) return ERR_FILE_FORMAT;
  return SUCCESS;
}

// The coded picture, kept in the record until a save.
int32_t EncodeImageData(ImSubHdr& record, const HostBitmap* bitmap, int32_t format, int32_t bits,
                        int32_t quality_factor) {
  HostSaveOptionsRecord options{};
  options.size = sizeof options;
  options.flags1905 |= 1;
  GlobalBlock block(Here());
  const int32_t status =
      HostSaveMemory(block.out(), bitmap, static_cast<uint32_t>(format), static_cast<uint32_t>(bits),
                     quality_factor, block.size_out(), &options);
  block.Announce();
  if (status != SUCCESS) return status;
  const void* bytes = block.Lock();
  if (bytes == nullptr || block.size() > UINT32_MAX) return ERR_NO_MEMORY;
  if (!record.PendingData.Allocate(block.size(), Here())) return ERR_NO_MEMORY;
  if (block.size() != 0) HostMemCopy(record.PendingData.data(), bytes, block.size());
  record.HasPendingData = 1;
  return SUCCESS;
}

void SetFieldText(ImSubHdr& record, const char* field, const char* text) {
  SetText(record, *FindRow<ImSubHdr>(ImageRows(), field), text);
}
void SetFieldNumber(ImSubHdr& record, const char* field, uint32_t number) {
  SetNumber(record, *FindRow<ImSubHdr>(ImageRows(), field), number);
}

// IC is set without its setter: the length of a new subheader counts COMRAT from the start, so that FL must not
// follow.
void SetJpegCompression(ImSubHdr& record) {
  record.Compression = kC3;
  SetFixedText(record.Text.IC, sizeof record.Text.IC - 1, "C3");
}

// The whole picture is one block. A side above 9999 does not fit its fields; nothing looks at that.
void DescribePicture(ImSubHdr& record, const HostBitmap& bitmap) {
  SetFieldNumber(record, "ABPP", kGreyBits);
  SetFieldNumber(record, "NBPP", kGreyBits);
  SetFieldNumber(record, "NBPR", 1);
  SetFieldNumber(record, "NBPC", 1);
  SetFieldNumber(record, "NROWS", bitmap.height);
  SetFieldNumber(record, "NCOLS", bitmap.width);
  SetFieldNumber(record, "NPPBH", bitmap.width);
  SetFieldNumber(record, "NPPBV", bitmap.height);
  SetFieldText(record, "PJUST", "R");
  SetFieldText(record, "PVTYPE", "INT");
  SetJpegCompression(record);
}

int32_t DescribeBands(ImSubHdr& record, int32_t format, int32_t bits) {
  struct Kind {
    const char* representation;
    const char* roles[3];
  };
  static constexpr Kind kGrey = {"MONO", {"M", nullptr, nullptr}};
  static constexpr Kind kYcbcr = {"YCbCr601", {"Y", "Cb", "Cr"}};
  static constexpr Kind kRgbPicture = {"RGB", {"R", "G", "B"}};
  const bool grey = bits == kGreyBits;
  const Kind& kind = grey ? kGrey : format == kYcbcrFormat ? kYcbcr : kRgbPicture;
  const uint32_t bands = grey ? 1 : 3;
  const int32_t status = SetNumber(record, *FindRow<ImSubHdr>(ImageRows(), "NBANDS"), bands);
  if (status != SUCCESS) return status;
  SetFieldText(record, "IREP", kind.representation);
  for (uint32_t band = 0; band < bands; ++band) SetBandRole(record, band, kind.roles[band]);
  if (grey) SetFieldText(record, "IMODE", "B");
  return SUCCESS;
}

}  // namespace

int32_t AppendImageSegment(NitfFile& document, const HostBitmap* bitmap, int32_t format, int32_t bits,
                           int32_t quality_factor) {
  int32_t status = CheckArguments(document, bitmap, format, bits, quality_factor);
  if (status != SUCCESS) return status;
  NewSegment<ImSubHdr> segment(document, document.ImageCount, Here());
  if (!segment.made()) return ERR_NO_MEMORY;
  ImSubHdr& record = segment.record();
  status = EncodeImageData(record, bitmap, format, bits, quality_factor);
  if (status != SUCCESS) return status;
  DeriveDate(record.Text.IDATIM, document.Header, DateFrom::kSeconds);
  DescribePicture(record, *bitmap);
  status = DescribeBands(record, format, bits);
  if (status != SUCCESS) return status;
  SetFieldNumber(record, "IDLVL", static_cast<uint32_t>(NextDisplayLevel(document)));

  constexpr uint32_t kFixedFields = 430;  // of a subheader with COMRAT, without IGEOLO, comments and bands
  constexpr uint32_t kBandRecord = 13;
  constexpr uint32_t kTableEntry = 16;
  const uint32_t subheader = kFixedFields + static_cast<uint32_t>(bits / 8) * kBandRecord;
  const uint64_t data = record.PendingData.size();
  NtfHdr& header = document.Header;
  if (!MakeRoomForImage(header)) return ERR_NO_MEMORY;
  // Nothing fails from here on.
  AddImageSubheaderLength(header, subheader);
  AddImageDataLength(header, static_cast<uint32_t>(data));
  if (document.IsNitf20 != 0) SetFieldText(record, "ICORDS", "N");
  segment.Join(document.Images);
  ++document.ImageCount;
  ++header.NumImages;
  AddToTotals(header, kTableEntry, subheader, data);
  return SUCCESS;
}

}  // namespace tavi

// The operations that write coded data into memory.
#include <cstring>

#include "Platform/GlobalMemory.h"
#include "TaviFile/JpegEncoder.h"
#include "TaviHost.h"
#include "TaviKernel/PixelView.h"

namespace tavi::host {
namespace {

constexpr uint32_t kFormatYcc = 10;
constexpr uint32_t kFormatRgb = 182;

int32_t CheckRequest(const PixelView& view, uint32_t format, uint32_t bits, int32_t quality) {
  if (format != kFormatYcc && format != kFormatRgb) return ERR_NOT_SUPPORTED;
  if (view.width > kJpegSide || view.height > kJpegSide) return ERR_NOT_SUPPORTED;
  if (bits != 8 && bits != 24) return ERR_INVALID_BPP;
  if (quality < kBestQuality || quality > kCoarsestQuality) return ERR_INVALID_QFACTOR;
  return SUCCESS;
}

JpegColors ColorsOf(uint32_t format, uint32_t bits) {
  if (bits == 8) return JpegColors::kGrey;
  return format == kFormatRgb ? JpegColors::kRgb : JpegColors::kYcc;
}

}  // namespace
}  // namespace tavi::host

using namespace tavi::host;

void HostSaveOptions(HostSaveOptionsRecord* record, uint64_t record_size) {
  if (record == nullptr || record_size != sizeof *record) return;
  std::memset(record, 0, sizeof *record);
  record->size = sizeof *record;
}

int32_t HostSaveMemory(HostGlobalMemory* block, const HostBitmap* bitmap, uint32_t format, uint32_t bits,
                       int32_t quality_factor, uint64_t* size, const HostSaveOptionsRecord*) {
  HostForgetLimitHit();
  if (block != nullptr) *block = nullptr;
  if (size != nullptr) *size = 0;
  if (block == nullptr || bitmap == nullptr || size == nullptr) return ERR_NULL_ARGUMENT;
  PixelView view;
  if (!ViewOf(bitmap, &view)) return ERR_NO_BITMAP;
  int32_t status = CheckRequest(view, format, bits, quality_factor);
  if (status != SUCCESS) return status;
  CodedBytes coded;
  status = EncodeJpeg(view, ColorsOf(format, bits), quality_factor, &coded);
  return status == SUCCESS ? MakeGlobal(coded.View(), block, size) : status;
}

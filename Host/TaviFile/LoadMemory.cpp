#include <algorithm>
#include <cstring>

#include "TaviFile/Codec.h"
#include "TaviFile/LoadHook.h"
#include "TaviFile/Picture.h"
#include "TaviHost.h"
#include "TaviKernel/BitmapRecord.h"

namespace tavi::host {
namespace {

constexpr uint32_t kGreyOrBlueFirst = 4;

void FillInfo(const StreamInfo& stream, HostFileInfo* information) {
  std::memset(information, 0, sizeof *information);
  information->format = stream.format;
  information->width = stream.width;
  information->height = stream.height;
  information->bits = stream.bits;
  information->memory_size = BytesPerLine(stream.bits, stream.width) * stream.height;
  information->host1100 = 1;
  information->host1104 = 1;
}

// Gives the picture another depth. The decoded one is freed either way.
int32_t ConvertDepth(HostBitmap* bitmap, uint32_t bits) {
  HostBitmap decoded = *bitmap;
  HostInitBitmap(bitmap, sizeof *bitmap, 0, 0, 0);
  int32_t status = HostCreateBitmap(bitmap, sizeof *bitmap, 1, decoded.width, decoded.height, bits,
                                    decoded.order, nullptr, decoded.view_perspective, nullptr, 0);
  if (status == SUCCESS) {
    status = HostCombineBitmap(bitmap, 0, 0, decoded.width, decoded.height, &decoded, 0, 0, 800);
    if (status != SUCCESS) HostFreeBitmap(bitmap);
  }
  HostFreeBitmap(&decoded);
  return status;
}

DecodeRequest MakeRequest(HostBitmap* bitmap, uint32_t order, const HostLoadFlagsRecord* options) {
  DecodeRequest request;
  request.bitmap = bitmap;
  request.order = order;
  if (options != nullptr) {
    request.flags = options->flags;
    request.bands = {options->red_band, options->green_band, options->blue_band};
  }
  return request;
}

int32_t LoadIdentified(Bytes stream, const DecodeRequest& request, StreamInfo* info) {
  int32_t status = SUCCESS;
  const Codec* const codec = Identify(stream, info, &status);
  HostFreeBitmap(request.bitmap);
  HostInitBitmap(request.bitmap, sizeof(HostBitmap), 0, 0, 0);
  if (codec == nullptr) return status;
  return codec->decode != nullptr ? codec->decode(stream, request) : ERR_NOT_SUPPORTED;
}

int32_t LoadRaw(Bytes stream, const DecodeRequest& request, StreamInfo* info) {
  FaxLayout layout;
  const int32_t status = AskLoadHook(&layout);
  if (status != SUCCESS) {
    HostFreeBitmap(request.bitmap);
    return status;
  }
  *info = {layout.format, layout.width, layout.height, 1};
  const uint32_t order = request.order == kGreyOrBlueFirst ? 2 : request.order;
  return DecodeFax(stream, layout, request.bitmap, order);
}

}  // namespace
}  // namespace tavi::host

using namespace tavi::host;

void HostLoadOptions(HostLoadFlagsRecord* record, uint64_t record_size) {
  if (record == nullptr || record_size != sizeof *record) return;
  std::memset(record, 0, sizeof *record);
  record->green_band = 1;
  record->blue_band = 2;
}

int32_t HostLoadMemory(const void* buffer, HostBitmap* bitmap, uint64_t record_size, uint32_t bits,
                       uint32_t order, uint64_t size, HostLoadFlagsRecord* options,
                       HostFileInfo* information) {
  HostForgetLimitHit();
  if (buffer == nullptr || bitmap == nullptr) return ERR_NULL_ARGUMENT;
  if (record_size != sizeof *bitmap || order == 3 || order > kGreyOrBlueFirst) return ERR_INVALID_PARAMETER;
  if (bits != 0 && !IsDepth(bits)) return ERR_INVALID_BPP;
  const Bytes stream(static_cast<const uint8_t*>(buffer), size);
  const DecodeRequest request = MakeRequest(bitmap, order, options);
  StreamInfo info;
  int32_t status = HasLoadHook() ? LoadRaw(stream, request, &info) : LoadIdentified(stream, request, &info);
  if (status == SUCCESS && bits != 0 && bits != bitmap->bits) status = ConvertDepth(bitmap, bits);
  if (status == SUCCESS && information != nullptr) FillInfo(info, information);
  return status;
}

int32_t HostFileInfoMemory(const void* buffer, HostFileInfo* information, uint64_t record_size, uint64_t size,
                           uint32_t, uint32_t) {
  if (buffer == nullptr || information == nullptr) return ERR_NULL_ARGUMENT;
  if (record_size != sizeof *information) return ERR_INVALID_PARAMETER;
  StreamInfo info;
  int32_t status = SUCCESS;
  if (Identify(Bytes(static_cast<const uint8_t*>(buffer), size), &info, &status) == nullptr) return status;
  FillInfo(info, information);
  return SUCCESS;
}

const char* HostCodecVersion(uint32_t index) {
  switch (index) {
    case 0:
      return kJpegCodec.version();
    case 1:
      return kDeepJpegCodec.version();
    case 2:
      return kJpeg2000Codec.version();
    case 3:
      return FaxVersion();
    default:
      return nullptr;
  }
}

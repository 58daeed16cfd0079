#include "ImgFax.h"

namespace tavi {

TAVI_UNIT(L"Common/ImgFax")

namespace {

// The host's codes of raw fax data.
constexpr uint32_t kFaxOneDimensional = 66;
constexpr uint32_t kFaxTwoDimensional = 67;

// What the hook is told when the loader asks for the layout of the raw data.
struct RawFaxRecord {
  uint32_t width;
  uint32_t height;
  uint32_t unused[3];
  uint32_t format;
};

// Answers the loader's question, in places of 32 bits.
int32_t DescribeRawFax(void* information, void* user) {
  const auto* raw = static_cast<const RawFaxRecord*>(user);
  auto* places = static_cast<uint32_t*>(information);
  places[1] = raw->format;
  places[2] = raw->width;
  places[3] = raw->height;
  places[4] = 1;
  places[7] = 0;
  places[9] = 1;
  return SUCCESS;
}

int32_t LoadRawFax(FilterLoadContext* context, const uint8_t* data, uint64_t size, HostBitmap* bitmap,
                   uint32_t format) {
  constexpr uint32_t kBgr = 1;
  const HostLoadMemoryEntry load = context != nullptr ? context->load_memory : HostLoadMemory;
  const HostSetLoadHookEntry set_hook = context != nullptr ? context->set_load_hook : HostSetLoadHook;
  RawFaxRecord raw{bitmap->width, bitmap->height, {}, format};
  const HostLoadHook before = set_hook(DescribeRawFax, &raw);
  const int32_t status = load(data, bitmap, sizeof *bitmap, bitmap->bits, kBgr, size, nullptr, nullptr);
  set_hook(before, nullptr);
  return status;
}

// Two entries are read, one is changed, two are written.
void ReplacePaletteEntry(HostBitmap* bitmap, uint32_t index, const HostPaletteEntry& entry) {
  HostPaletteEntry entries[2] = {};
  HostGetBitmapColors(bitmap, 0, 2, entries);
  entries[index] = entry;
  HostPutBitmapColors(bitmap, 0, 2, entries);
}

}  // namespace

int32_t DecodeFaxSegment(FilterLoadContext* context, SegmentJob& job) {
  ImSubHdr& image = job.image;
  const bool two_dimensional = image.ComratMode == kComrat2DS || image.ComratMode == kComrat2DH;
  // All the data are read, the mask table in front of the stream as well.
  if (image.DataOffset > job.data_length || !job.Holds(0, job.data_length)) return ERR_FILE_READ;
  HostArray<uint8_t> data;
  if (!data.Allocate(job.data_length, Here())) return ERR_NO_MEMORY;
  if (!job.Read(0, data.data(), job.data_length)) return ERR_FILE_READ;
  const int32_t status =
      LoadRawFax(context, data.data() + image.DataOffset, job.data_length - image.DataOffset, job.bitmap,
                 two_dimensional ? kFaxTwoDimensional : kFaxOneDimensional);
  if (status == SUCCESS && image.Lut.exists()) {
    ReplacePaletteEntry(job.bitmap, 1, image.Lut[0]);
    ReplacePaletteEntry(job.bitmap, 0, image.Lut[1]);
  }
  // The pad code changes sides with the palette, at each draw and whether there is a table or not.
  if (image.PadCode.exists()) {
    const int32_t replaced = SetPadPixelCode(image, image.PadCode[0] == 0 ? "\1" : "");
    if (status == SUCCESS && replaced != SUCCESS) return replaced;
  }
  return status;
}

}  // namespace tavi

// Coded pictures: JPEG of all kinds and JPEG 2000 as they are, fax data under each of the host's formats.
#include "Document.h"

namespace {

constexpr uint32_t kG31D = 66;

struct Page {
  uint32_t width, height, format;
};

int32_t Describe(void* information, void* user) {
  auto* const places = static_cast<uint32_t*>(information);
  const auto& page = *static_cast<const Page*>(user);
  places[1] = page.format;
  places[2] = page.width;
  places[3] = page.height;
  places[4] = places[9] = 1;
  return SUCCESS;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  HostSetBitmapLimit(tavi_fuzz::kBitmapLimit);
  // The last byte chooses: a picture by itself, or a page of fax.
  const uint8_t choice = size != 0 ? data[size - 1] : uint8_t{0};
  HostBitmap bitmap = {};
  HostLoadFlagsRecord options = {};
  HostLoadOptions(&options, sizeof options);
  options.flags = (choice & 0x30U) << 10;
  if ((choice & 0xC0) == 0xC0) {
    Page page{37, 29, kG31D + (choice & 3U) % 3};
    const HostLoadHook former = HostSetLoadHook(Describe, &page);
    HostLoadMemory(data, &bitmap, sizeof bitmap, 0, 0, size, &options, nullptr);
    HostSetLoadHook(former, nullptr);
  } else {
    HostLoadMemory(data, &bitmap, sizeof bitmap, (choice & 1) != 0 ? 24 : 0, 4, size, &options, nullptr);
  }
  HostFreeBitmap(&bitmap);
  tavi_fuzz::ExpectNothingAlive();
  return 0;
}

#include "LoadPicture.h"

#include <algorithm>

namespace tavi_test {
namespace {

// What the row callback works on. The context's words are checked by giving it values that no default would
// have.
struct Delivery {
  const LoadRequest* request;
  LoadedPicture* picture;
  HostBitmap* bitmap;
};

constexpr uint64_t kCallbackWord = 0x1122334455667788U;

// Bytes of a row of the composite: whole 32-bit words.
size_t BytesPerLine(uint32_t width, uint32_t bits) {
  return (size_t{bits} * width + 31) / 32 * 4;
}

int32_t CollectRow(uint64_t first, HostBitmap* bitmap, uint8_t* row, uint32_t row_flags, int32_t row_index,
                   int32_t rows, void* user) {
  auto& delivery = *static_cast<Delivery*>(user);
  if (first != kCallbackWord || bitmap != delivery.bitmap) return -9999;
  LoadedPicture& picture = *delivery.picture;
  const size_t length = BytesPerLine(picture.width, picture.bits);
  picture.rows.push_back({Bytes(row, row + length), row_flags, row_index, rows});
  ++picture.height;
  return delivery.request->answer ? delivery.request->answer(row_index) : 1;
}

int32_t RefuseLoad(const void*, HostBitmap*, uint64_t, uint32_t, uint32_t, uint64_t, HostLoadFlagsRecord*,
                   HostFileInfo*) {
  return ERR_NOT_SUPPORTED;
}

HostLoadHook KeepHook(HostLoadHook, void*) {
  return nullptr;
}

void NeverCalled() {}

}  // namespace

Rgb LoadedPicture::At(uint32_t x, uint32_t y) const {
  const Bytes& pixels = rows.at(y).pixels;
  return {pixels.at(3 * x + 2), pixels.at(3 * x + 1), pixels.at(3 * x)};
}

LoadedPicture LoadFile(const std::wstring& path, const LoadRequest& request) {
  LoadedPicture picture;
  picture.bits = request.bits;
  picture.width = Info(path, request.flags).info.width;
  HostBitmap destination = {};
  destination.bits = request.bits;
  HostLoadFlagsRecord flags = {};
  flags.flags = request.flags;
  Delivery delivery{&request, &picture, &destination};
  FilterLoadContext context = {};
  context.file_name = path.c_str();
  context.bitmap = &destination;
  context.row_callback = CollectRow;
  context.user = &delivery;
  context.callback_word = kCallbackWord;
  context.load_flags = &flags;
  if (request.load_memory)
    context.load_memory = request.load_entry != nullptr ? request.load_entry : RefuseLoad;
  if (request.set_load_hook)
    context.set_load_hook = request.hook_entry != nullptr ? request.hook_entry : KeepHook;
  if (request.third_entry) context.third_entry = NeverCalled;
  picture.status = fltLoad(&context);
  picture.load_flags = flags.flags;
  return picture;
}

FileInformation Info(const std::wstring& path, uint32_t flags) {
  FileInformation result;
  HostLoadFlagsRecord record = {};
  record.flags = flags;
  FilterInfoContext context = {};
  context.file_name = path.c_str();
  context.file = -1;
  context.info = &result.info;
  context.load_flags = &record;
  result.status = fltInfo(&context);
  result.load_flags = record.flags;
  return result;
}

}  // namespace tavi_test

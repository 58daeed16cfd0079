#include "Document.h"

#include <algorithm>
#include <cstdlib>
#include <vector>

namespace tavi_fuzz {
namespace {

template <class Record>
void ReadAll(NitfHandle handle, int32_t count, int32_t (*get)(NitfHandle, uint32_t, Record*),
             int32_t (*free_record)(Record*)) {
  for (uint32_t i = 0; i <= static_cast<uint32_t>(count); ++i) {
    Record record = {};
    get(handle, i, &record);
    free_record(&record);
  }
}

void ReadText(NitfHandle handle, uint32_t index) {
  constexpr uint32_t kLongest = 99999;  // five digits
  uint32_t size = 0;
  if (Tavi_NITFGetTextSegment(handle, index, nullptr, &size) != SUCCESS || size > kLongest) return;
  std::vector<uint8_t> text(size_t{size} + 1);
  Tavi_NITFGetTextSegment(handle, index, text.data(), nullptr);
}

struct Delivery {
  int32_t rows;
};

int32_t TakeRow(uint64_t, HostBitmap*, uint8_t*, uint32_t, int32_t index, int32_t, void* user) {
  return index + 1 < static_cast<Delivery*>(user)->rows ? 1 : 0;
}

void ThirdEntry() {}

}  // namespace

void ReadEverything(NitfHandle handle) {
  NitfHeaderInfo header = {};
  Tavi_NITFGetNITFHeader(handle, &header);
  Tavi_NITFFreeNITFHeader(&header);
  ReadAll(handle, Tavi_NITFGetImageHeaderCount(handle), Tavi_NITFGetImageHeader, Tavi_NITFFreeImageHeader);
  ReadAll(handle, Tavi_NITFGetGraphicHeaderCount(handle), Tavi_NITFGetGraphicHeader,
          Tavi_NITFFreeGraphicHeader);
  const int32_t texts = Tavi_NITFGetTextHeaderCount(handle);
  ReadAll(handle, texts, Tavi_NITFGetTextHeader, Tavi_NITFFreeTextHeader);
  for (uint32_t i = 0; i <= static_cast<uint32_t>(texts); ++i) ReadText(handle, i);
}

int32_t LoadInput(uint32_t bits, int32_t rows, uint32_t flags) {
  HostSetBitmapLimit(kBitmapLimit);
  HostBitmap destination = {};
  destination.bits = bits;
  HostLoadFlagsRecord load_flags = {};
  load_flags.flags = flags;
  Delivery delivery{rows};
  FilterLoadContext context = {};
  context.file_name = kInput;
  context.bitmap = &destination;
  context.row_callback = TakeRow;
  context.user = &delivery;
  context.load_flags = &load_flags;
  context.load_memory = HostLoadMemory;
  context.set_load_hook = HostSetLoadHook;
  context.third_entry = ThirdEntry;
  return fltLoad(&context);
}

void ExpectNothingAlive() {
  if (HostLiveObjects() == 0) return;
  HostReportLeaks(nullptr, nullptr);
  std::abort();
}

}  // namespace tavi_fuzz

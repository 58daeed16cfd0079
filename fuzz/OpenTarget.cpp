// Opens a file, reads every header of it, and closes it.
#include "Document.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  tavi_fuzz::SetInput(data, size);
  {
    const tavi_fuzz::Document document(tavi_fuzz::kInput);
    if (document) {
      uint32_t width = 0;
      uint32_t height = 0;
      tavi_fuzz::ReadEverything(document.get());
      GetActual_Width_Height(document.get(), &width, &height);
    }
  }
  tavi_fuzz::ExpectNothingAlive();
  return 0;
}

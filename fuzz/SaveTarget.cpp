// Saves whatever opened, and opens what was saved.
#include "Document.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  tavi_fuzz::SetInput(data, size);
  {
    const tavi_fuzz::Document document(tavi_fuzz::kInput);
    if (document) {
      Tavi_NITFSaveFile(document.get(), tavi_fuzz::kOutput);
      const tavi_fuzz::Document saved(tavi_fuzz::kOutput);
      if (saved) tavi_fuzz::ReadEverything(saved.get());
    }
  }
  tavi_fuzz::ExpectNothingAlive();
  return 0;
}

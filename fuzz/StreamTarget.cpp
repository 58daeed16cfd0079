// A streaming file header: the input stands behind a file header whose lengths say that the true ones are in it.
#include "Document.h"
#include "Seeds.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  static const std::vector<uint8_t> kHead = tavi_fuzz::StreamedHead();
  std::vector<uint8_t> file = kHead;
  file.insert(file.end(), data, data + size);
  tavi_fuzz::SetInput(file.data(), file.size());
  {
    const tavi_fuzz::Document document(tavi_fuzz::kInput);
    if (document) tavi_fuzz::ReadEverything(document.get());
  }
  tavi_fuzz::ExpectNothingAlive();
  return 0;
}

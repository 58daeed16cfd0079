// Sets headers by what the input says, appends, saves and reads back. The first half of the input is a file, unless the
// document is to be a new one; the second half chooses.
#include "Document.h"
#include "Edits.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const size_t choices = size < 256 ? size / 2 : 128;
  tavi_fuzz::SetInput(data, size - choices);
  tavi_fuzz::Choices choose(data + (size - choices), choices);
  {
    const tavi_fuzz::Document document(choose.Number(4) == 0 ? nullptr : tavi_fuzz::kInput);
    if (document) {
      for (int i = 0; i < 8; ++i) tavi_fuzz::EditOnce(document.get(), choose);
      Tavi_NITFSaveFile(document.get(), tavi_fuzz::kOutput);
      const tavi_fuzz::Document saved(tavi_fuzz::kOutput);
      if (saved) tavi_fuzz::ReadEverything(saved.get());
    }
  }
  tavi_fuzz::ExpectNothingAlive();
  return 0;
}

// Loads a file as a picture. The last byte chooses depth and flags.
#include "Document.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  constexpr int32_t kRows = 16;
  const uint8_t choice = size != 0 ? data[size - 1] : uint8_t{0};
  tavi_fuzz::SetInput(data, size);
  tavi_fuzz::LoadInput((choice & 1) != 0 ? 8 : 24, kRows,
                       (choice & 2) != 0 ? TAVI_LOAD_STRETCH_DARK | TAVI_LOAD_PAINT_EACH_OBJECT : 0);
  tavi_fuzz::ExpectNothingAlive();
  return 0;
}

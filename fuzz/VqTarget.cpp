// Vector quantised data: the input is what stands behind the subheader of an image of 2 x 2 blocks of 8 x 8.
#include "Document.h"
#include "Seeds.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  constexpr int32_t kRows = 16;
  const std::vector<uint8_t> file = tavi_fuzz::WrapVqData({data, size});
  tavi_fuzz::SetInput(file.data(), file.size());
  tavi_fuzz::LoadInput(24, kRows, 0);
  tavi_fuzz::ExpectNothingAlive();
  return 0;
}

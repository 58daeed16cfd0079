#include "Seeds.h"

#include "NtfBuilder.h"

namespace tavi_fuzz {

std::vector<uint8_t> StreamedHead() {
  tavi_test::NtfBuilder file({tavi_test::GreyImage(2, 3), tavi_test::GreyImage(4, 5)});
  file.header["FL"] = "999999999999";
  file.images[1].fields["NROWS"] = "99999999";
  return file.Build().bytes;
}

std::vector<uint8_t> WrapVqData(std::span<const uint8_t> data) {
  tavi_test::ImageSpec image = tavi_test::GreyImage(1, 1);
  image.Blocks(2, 2, 8, 8);
  image.ic = "C4";
  image.pixels.assign(data.begin(), data.end());
  return tavi_test::NtfBuilder{image}.Build().bytes;
}

}  // namespace tavi_fuzz

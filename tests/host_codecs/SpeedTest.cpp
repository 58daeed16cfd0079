// What a load costs above the codec library alone, measured side by side in one run.
#include <algorithm>
#include <chrono>
#include <cstdio>  // jpeglib.h needs its types

#include <jpeglib.h>

#include "JpegEncoder.h"

namespace tavi_test {
namespace {

class SpeedTest : public CodecTest {};

template <typename Run>
double BestOf(int rounds, Run&& run) {
  double best = 1e9;
  for (int i = 0; i < rounds; ++i) {
    const auto start = std::chrono::steady_clock::now();
    run();
    best = std::min(best, std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count());
  }
  return best;
}

void DecodePlainly(const Stream& stream, std::vector<uint8_t>* pixels) {
  jpeg_decompress_struct decoder{};
  jpeg_error_mgr error{};
  decoder.err = jpeg_std_error(&error);
  jpeg_create_decompress(&decoder);
  jpeg_mem_src(&decoder, stream.data(), static_cast<unsigned long>(stream.size()));
  jpeg_read_header(&decoder, TRUE);
  decoder.out_color_space = JCS_EXT_BGR;
  jpeg_start_decompress(&decoder);
  while (decoder.output_scanline < decoder.output_height) {
    JSAMPROW row = pixels->data() + size_t{decoder.output_scanline} * decoder.output_width * 3;
    jpeg_read_scanlines(&decoder, &row, 1);
  }
  jpeg_finish_decompress(&decoder);
  jpeg_destroy_decompress(&decoder);
}

// About 1.0 is expected and measured elsewhere. The bound is wide, for builds with sanitizers and machines
// with other things to do: it finds a picture that is decoded twice and copied about.
TEST_F(SpeedTest, AColourJpegCostsLittleMoreThanItsLibrary) {
  const Stream stream = EncodeJpeg(MakeScene(2048, 2048, 3, 8), {.across = 2, .down = 2});
  std::vector<uint8_t> pixels(size_t{2048} * 2048 * 3);
  const double plain = BestOf(5, [&] { DecodePlainly(stream, &pixels); });
  const double hosted = BestOf(5, [&] {
    Bitmap bitmap;
    ASSERT_EQ(Load(stream, &bitmap), SUCCESS);
  });
  RecordProperty("ratio_percent", static_cast<int>(100 * hosted / plain));
  EXPECT_LT(hosted, plain * 3 + 0.02);
}

}  // namespace
}  // namespace tavi_test

// Pictures that are coded, put into files, loaded through the filter's entries with the real host's decoders,
// and compared with what another decoder makes of their streams.
#ifndef TAVI_TESTS_CODED_PICTURE_TEST_H
#define TAVI_TESTS_CODED_PICTURE_TEST_H

#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "../host_codecs/CodecTest.h"
#include "CodedTest.h"

namespace tavi_test {

// How the blocks' streams stand in the data.
enum class Placement { kSingle, kMasked, kScanned };
const char* NameOf(Placement placement);

// A part of a picture.
Pixels Crop(const Pixels& from, uint32_t x0, uint32_t y0, uint32_t width, uint32_t height);
// Samples of `bits` as they show: their 8 most significant bits.
Pixels Shown(const Pixels& from, uint32_t bits);

struct Coding {
  std::string name;
  std::function<Stream(const Pixels&)> encode;
  std::function<Pixels(const Stream&)> restore;  // what the stream decodes to
};

class PictureTest : public CodedTest {
 protected:
  static constexpr uint32_t kWidth = 64;
  static constexpr uint32_t kHeight = 48;

  // An image of the scene's tiles, in the placement.
  struct Coded {
    ImageSpec image;
    Pixels expected;
  };
  static Coded Make(const std::string& ic, const std::string& irep, uint32_t bits, const Pixels& scene,
                    Placement placement, const Coding& coding);
  // Three bands of 2 x 2 blocks, a stream for each band of each block.
  static Coded MakeBands(const std::string& ic, const Pixels& scene, const Coding& coding);
  // One band's streams under a mask, said to be band-sequential of three: every band takes the same one.
  static Coded MakeMaskedBands(const std::string& ic, const Pixels& scene, const Coding& coding);
  // A page of one bit.
  static ImageSpec FaxImage(const std::string& ic, const std::string& comrat, uint32_t width, uint32_t height,
                            const Stream& stream);

  void ExpectShown(const ImageSpec& image, const Pixels& expected, int tolerance, const std::string& layout,
                   const std::string& codec);
  // Codes a scene and expects what the coding restores.
  void Expect(const std::string& ic, const std::string& irep, uint32_t bits, uint32_t channels,
              Placement placement, const Coding& coding, int tolerance);

  static std::vector<std::pair<std::string, Placement>> JpegCodes();
  static std::vector<std::pair<std::string, Placement>> LosslessCodes();
};

}  // namespace tavi_test

#endif  // TAVI_TESTS_CODED_PICTURE_TEST_H

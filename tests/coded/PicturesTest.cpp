// Real pictures of every code, decoded by the host's own decoders through the filter's entries, against the
// codec libraries' decoders or the very samples that were coded.
#include "../host_codecs/DeepJpegEncoder.h"
#include "../host_codecs/FaxEncoder.h"
#include "../host_codecs/Jpeg2000Encoder.h"
#include "../host_codecs/JpegEncoder.h"
#include "PictureTest.h"

namespace tavi_test {
namespace {

Coding Jpeg(JpegColor color, int across = 1, int down = 1, bool progressive = false, int restart = 0) {
  const JpegSettings settings{.color = color,
                              .quality = 92,
                              .across = across,
                              .down = down,
                              .progressive = progressive,
                              .restart_rows = restart};
  return {"JPEG 8-bit", [=](const Pixels& p) { return EncodeJpeg(p, settings); },
          [](const Stream& s) { return DecodeJpeg(s); }};
}

Coding Jpeg2000(uint32_t bits, double ratio = 0) {
  return {"JPEG 2000", [=](const Pixels& p) { return EncodeJpeg2000(p, {.bits = bits, .ratio = ratio}); },
          [](const Stream& s) { return DecodeJpeg2000(s); }};
}

using Pictures = PictureTest;

TEST_F(Pictures, GreyJpeg) {
  for (const auto& [ic, placement] : JpegCodes()) {
    Expect(ic, "MONO", 8, 1, placement, Jpeg(JpegColor::kGrey), 2);
    Expect(ic, "MONO", 8, 1, placement, Jpeg(JpegColor::kGrey, 1, 1, true), 2);
    Expect(ic, "MONO", 8, 1, placement, Jpeg(JpegColor::kGrey, 1, 1, false, 1), 2);
  }
}

TEST_F(Pictures, YcbcrJpegOfEverySubsampling) {
  for (const auto& [ic, placement] : JpegCodes()) {
    for (const auto& [across, down] : {std::pair{1, 1}, {2, 1}, {2, 2}, {1, 2}})
      Expect(ic, "YCbCr601", 8, 3, placement, Jpeg(JpegColor::kYcc, across, down), 2);
  }
}

// A stream that says that it is YCbCr is converted even where the image is said to be RGB.
TEST_F(Pictures, RgbImagesOfEitherColourSpace) {
  for (const auto& [ic, placement] : JpegCodes()) {
    Expect(ic, "RGB", 8, 3, placement, Jpeg(JpegColor::kRgb), 2);
    Expect(ic, "RGB", 8, 3, placement, Jpeg(JpegColor::kYcc), 2);
  }
}

// Without a marker that says what they are, three components of an RGB image are its colours.
TEST_F(Pictures, RgbImagesWithoutMarkersAreTakenAsTheyAre) {
  const JpegSettings settings{.color = JpegColor::kRgb, .quality = 95, .markers = false};
  const Coding coding{"JPEG 8-bit", [=](const Pixels& p) { return EncodeJpeg(p, settings); },
                      [](const Stream& s) { return DecodeJpeg(s, true); }};
  for (const auto& [ic, placement] : JpegCodes()) Expect(ic, "RGB", 8, 3, placement, coding, 2);
}

TEST_F(Pictures, BandsOfAMultiImageAreChosenFromTheStream) {
  // Components as they are coded: 3, 2, 1 become red, green and blue.
  const JpegSettings settings{.color = JpegColor::kRgb, .quality = 95, .markers = false};
  const Pixels scene = MakeScene(kWidth, kHeight, 3, 8);
  const Stream stream = EncodeJpeg(scene, settings);
  ImageSpec image = CodedImage("C3", "MULTI", 3, 1, 1, kWidth, kHeight);
  image.Roles({"B ", "G ", "R "});
  image.pixels = stream;
  Pixels expected = DecodeJpeg(stream, true);
  for (uint32_t y = 0; y < kHeight; ++y)
    for (uint32_t x = 0; x < kWidth; ++x) std::swap(expected.At(x, y, 0), expected.At(x, y, 2));
  ExpectShown(image, expected, 2, "one stream", "JPEG 8-bit");
}

TEST_F(Pictures, TilesOfAMultiImageAreDecodedBehindTheirFreshStart) {
  const JpegSettings settings{.color = JpegColor::kRgb, .quality = 95, .markers = false};
  const Coding coding{"JPEG 8-bit", [=](const Pixels& p) { return EncodeJpeg(p, settings); },
                      [](const Stream& s) { return DecodeJpeg(s, true); }};
  Expect("C3", "MULTI", 8, 3, Placement::kScanned, coding, 2);
}

TEST_F(Pictures, TwelveBitJpeg) {
  for (const DeepProcess process : {DeepProcess::kSequential, DeepProcess::kSpectralSelection}) {
    const Coding coding{"JPEG 12-bit", [=](const Pixels& p) { return EncodeJpeg12(p, process); },
                        [](const Stream& s) { return LoadPixels(s); }};
    for (const auto& [ic, placement] : JpegCodes()) {
      // Against the very samples: coding itself costs a little.
      const Pixels scene = MakeScene(kWidth, kHeight, 1, 12);
      const Coded coded = Make(ic, "MONO", 12, scene, placement, coding);
      ExpectShown(coded.image, Shown(scene, 12), 6, NameOf(placement), coding.name);
    }
  }
}

TEST_F(Pictures, LosslessJpeg) {
  for (const auto& [ic, placement] : LosslessCodes()) {
    for (const uint32_t bits : {8U, 12U, 16U}) {
      for (const int predictor : {1, 4, 7}) {
        const Pixels scene = MakeScene(kWidth, kHeight, 1, bits);
        const Coding coding{
            "lossless JPEG",
            [=](const Pixels& p) { return EncodeLossless(p, {.bits = bits, .predictor = predictor}); },
            [](const Stream& s) { return LoadPixels(s); }};
        const Coded coded = Make(ic, "MONO", bits, scene, placement, coding);
        EXPECT_EQ(MaxDifference(coded.expected, scene), 0);
        ExpectShown(coded.image, Shown(scene, bits), bits == 8 ? 0 : 1, NameOf(placement), coding.name);
      }
    }
    const Pixels scene = MakeScene(kWidth, kHeight, 3, 8);
    const Coding coding{"lossless JPEG", [](const Pixels& p) { return EncodeLossless(p, {.bits = 8}); },
                        [](const Stream& s) { return LoadPixels(s, {.flags = kAsRgb}); }};
    ExpectShown(Make(ic, "RGB", 8, scene, placement, coding).image, scene, 0, NameOf(placement), coding.name);
  }
}

// JPEG 2000 is one stream under C8 and M8, which holds the tiles itself.
TEST_F(Pictures, Jpeg2000OfEveryDepth) {
  for (const char* ic : {"C8", "M8"}) {
    for (const uint32_t bits : {8U, 12U, 16U})
      Expect(ic, "MONO", bits, 1, Placement::kSingle, Jpeg2000(bits), bits == 8 ? 0 : 1);
    Expect(ic, "RGB", 8, 3, Placement::kSingle, Jpeg2000(8), 0);
    Expect(ic, "RGB", 8, 3, Placement::kSingle, Jpeg2000(8, 8), 1);
    Expect(ic, "MULTI", 8, 3, Placement::kSingle, Jpeg2000(8), 0);
  }
}

TEST_F(Pictures, TilesWithinOneJpeg2000Stream) {
  const Pixels scene = MakeScene(96, 64, 3, 8);
  for (const char* ic : {"C8", "M8"}) {
    ImageSpec image = CodedImage(ic, "RGB", 3, 3, 2, 32, 32);
    image.pixels = EncodeJpeg2000(scene, {.tile = 32});
    ExpectShown(image, scene, 0, "blocks in one stream", "JPEG 2000");
  }
}

TEST_F(Pictures, FourBandsOfJpeg2000ShowTheChosenThree) {
  const Pixels scene = MakeScene(kWidth, kHeight, 4, 8);
  ImageSpec image = CodedImage("C8", "MULTI", 4, 1, 1, kWidth, kHeight);
  image.Roles({"  ", "B ", "G ", "R "});
  image.pixels = EncodeJpeg2000(scene, {});
  Pixels expected(kWidth, kHeight, 3);
  for (uint32_t y = 0; y < kHeight; ++y)
    for (uint32_t x = 0; x < kWidth; ++x)
      for (uint32_t c = 0; c < 3; ++c) expected.At(x, y, c) = scene.At(x, y, 3 - c);
  ExpectShown(image, expected, 0, "one stream", "JPEG 2000");
}

// Codes that carry no stream of their own kind are decoded all the same.
TEST_F(Pictures, C6AndM6HoldAnyStream) {
  for (const char* ic : {"C6", "M6"}) {
    Expect(ic, "MONO", 8, 1, Placement::kSingle, Jpeg(JpegColor::kGrey), 2);
    Expect(ic, "MONO", 8, 1, Placement::kScanned, Jpeg(JpegColor::kGrey), 2);
    Expect(ic, "MONO", 8, 1, Placement::kSingle, Jpeg2000(8), 0);
  }
}

// I1 is a picture of a lower resolution: it is stretched to the header's size.
TEST_F(Pictures, ADownsampledPictureIsStretched) {
  Pixels plain(16, 12, 1);
  for (uint16_t& sample : plain.samples) sample = 123;
  ImageSpec image = CodedImage("I1", "MONO", 1, 1, 1, 64, 48);
  image.pixels = EncodeJpeg(plain, {.color = JpegColor::kGrey, .quality = 100});
  const LoadedPicture picture = Decode(image);
  ASSERT_EQ(picture.status, SUCCESS);
  EXPECT_EQ(picture.width, 64U);
  EXPECT_EQ(picture.height, 48U);
  for (uint32_t y = 0; y < 48; ++y)
    for (uint32_t x = 0; x < 64; ++x) ASSERT_EQ(picture.At(x, y), (Rgb{123, 123, 123})) << x << ", " << y;
}

TEST_F(Pictures, BandSequentialStreams) {
  const Coded coded = MakeBands("C3", MakeScene(kWidth, kHeight, 3, 8), Jpeg(JpegColor::kGrey));
  ExpectShown(coded.image, coded.expected, 2, "a stream for each band", "JPEG 8-bit");
}

TEST_F(Pictures, BandSequentialStreamsUnderAMaskAreGrey) {
  const Coded coded = MakeMaskedBands("M3", MakeScene(kWidth, kHeight, 1, 8), Jpeg(JpegColor::kGrey));
  ExpectShown(coded.image, coded.expected, 2, "a stream for each band", "JPEG 8-bit");
}

TEST_F(Pictures, Fax) {
  const Pixels page = MakePage(200, 120);
  Pixels shown = page;
  for (uint16_t& sample : shown.samples) sample = sample != 0 ? 255 : 0;
  const std::vector<std::tuple<std::string, FaxKind, bool, std::string>> kinds = {
      {"1D", FaxKind::kG3OneD, false, "fax group 3, one dimension"},
      {"1D", FaxKind::kG3OneD, true, "fax group 3, one dimension"},
      {"1D", FaxKind::kG3OneDNoLineEnds, false, "fax group 3, one dimension, no line ends"},
      {"2DS", FaxKind::kG3TwoD, false, "fax group 3, two dimensions"},
      {"2DH", FaxKind::kG3TwoD, true, "fax group 3, two dimensions"},
  };
  for (const char* ic : {"C1", "M1"}) {
    for (const auto& [comrat, kind, fill, name] : kinds) {
      ImageSpec image = FaxImage(ic, comrat, 200, 120, EncodeFax(page, {.kind = kind, .fill_bits = fill}));
      ExpectShown(image, shown, 0, "one stream", name);
      // Blocks play no part: the stream is the whole grid.
      image.Blocks(4, 3, 50, 40);
      ExpectShown(image, shown, 0, "blocks in one stream", name);
    }
  }
}

TEST_F(Pictures, AFaxPictureWithATableShowsItsColours) {
  const Pixels page = MakePage(64, 40);
  ImageSpec image = FaxImage("C1", "1D", 64, 40, EncodeFax(page, {}));
  image.bands[0].luts = {{200, 10}, {201, 20}, {202, 30}};
  const LoadedPicture picture = Decode(image);
  ASSERT_EQ(picture.status, SUCCESS);
  for (uint32_t y = 0; y < 40; ++y)
    for (uint32_t x = 0; x < 64; ++x)
      ASSERT_EQ(picture.At(x, y), page.At(x, y) != 0 ? (Rgb{200, 201, 202}) : (Rgb{10, 20, 30}))
          << x << ", " << y;
}

// Three levels of composition: coded and plain images over one another.
TEST_F(Pictures, CodedImagesTakeTheirPlaceAmongOthers) {
  ImageSpec below = GreyImage(100, 80, Bytes(8000, 40));
  Pixels plain(32, 32, 1);
  for (uint16_t& sample : plain.samples) sample = 90;
  ImageSpec above = CodedImage("C8", "MONO", 1, 1, 1, 32, 32).At(10, 20).Level(2);
  above.pixels = EncodeJpeg2000(plain, {});
  const LoadedPicture picture = Decode(NtfBuilder{below, above});
  ASSERT_EQ(picture.status, SUCCESS);
  EXPECT_EQ(picture.At(19, 10).red, 40);
  EXPECT_EQ(picture.At(20, 10).red, 90);
  EXPECT_EQ(picture.At(51, 41).red, 90);
  EXPECT_EQ(picture.At(52, 41).red, 40);
}

}  // namespace
}  // namespace tavi_test

// Real pictures of every code, decoded by the host's own decoders through the filter's entries, against the
// codec libraries' decoders or the very samples that were coded.
#include <algorithm>
#include <cstdlib>

#include "../host_codecs/DeepJpegEncoder.h"
#include "../host_codecs/FaxEncoder.h"
#include "../host_codecs/Jpeg2000Encoder.h"
#include "../host_codecs/JpegEncoder.h"
#include "CodedTest.h"
#include "Coverage.h"
#include "Streams.h"

namespace tavi_test {
namespace {

enum class Layout { kSingle, kMasked, kScanned };

const char* NameOf(Layout layout) {
  return layout == Layout::kSingle   ? "one stream"
         : layout == Layout::kMasked ? "tiles by mask"
                                     : "tiles by scan";
}

// A part of a picture.
Pixels Crop(const Pixels& from, uint32_t x0, uint32_t y0, uint32_t width, uint32_t height) {
  Pixels part(width, height, from.channels);
  for (uint32_t y = 0; y < height; ++y)
    for (uint32_t x = 0; x < width; ++x)
      for (uint32_t c = 0; c < from.channels; ++c) part.At(x, y, c) = from.At(x0 + x, y0 + y, c);
  return part;
}

// The 8 most significant bits.
Pixels Shown(const Pixels& from, uint32_t bits) {
  Pixels shown = from;
  const uint32_t full = (1U << bits) - 1;
  for (uint16_t& sample : shown.samples) sample = static_cast<uint16_t>((sample * 255U + full / 2) / full);
  return shown;
}

using Encode = std::function<Stream(const Pixels&)>;
using Restore = std::function<Pixels(const Stream&)>;

struct Coding {
  std::string name;
  Encode encode;
  Restore restore;  // what the stream decodes to
};

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

class Pictures : public CodedTest {
 protected:
  static constexpr uint32_t kWidth = 64;
  static constexpr uint32_t kHeight = 48;

  // An image of the scene's tiles, in the layout.
  struct Coded {
    ImageSpec image;
    Pixels expected;
  };
  Coded Make(const std::string& ic, const std::string& irep, uint32_t bits, const Pixels& scene,
             Layout layout, const Coding& coding) {
    const bool single = layout == Layout::kSingle;
    const uint32_t across = single ? 1 : 2;
    const uint32_t down = single ? 1 : 3;
    Coded coded{CodedImage(ic, irep, scene.channels, across, down, scene.width / across, scene.height / down),
                Pixels(scene.width, scene.height, scene.channels)};
    coded.image.abpp = bits;
    coded.image.nbpp = bits <= 8 ? 8 : bits == 12 ? 12 : 16;
    std::vector<uint32_t> offsets;
    for (uint32_t block = 0; block < across * down; ++block) {
      const uint32_t x = block % across * coded.image.nppbh;
      const uint32_t y = block / across * coded.image.nppbv;
      Stream stream = coding.encode(Crop(scene, x, y, coded.image.nppbh, coded.image.nppbv));
      const Pixels restored = coding.restore(stream);
      for (uint32_t v = 0; v < restored.height; ++v)
        for (uint32_t u = 0; u < restored.width; ++u)
          for (uint32_t c = 0; c < restored.channels; ++c)
            coded.expected.At(x + u, y + v, c) = restored.At(u, v, c);
      // The backward search wants the last stream within its last stretch, or at least not at a seam.
      if (!single && stream.size() < 900) stream.resize(900);
      if (block + 1 == across * down)
        while (stream.size() % 1024 < 3) stream.push_back(0);
      offsets.push_back(static_cast<uint32_t>(coded.image.pixels.size()));
      coded.image.pixels.insert(coded.image.pixels.end(), stream.begin(), stream.end());
    }
    if (layout == Layout::kMasked) coded.image.mask.block_offsets = offsets;
    return coded;
  }

  static int Worst(const LoadedPicture& picture, const Pixels& expected) {
    int worst = 0;
    for (uint32_t y = 0; y < expected.height; ++y) {
      for (uint32_t x = 0; x < expected.width; ++x) {
        const Rgb is = picture.At(x, y);
        const auto due = [&](uint32_t c) { return int{expected.At(x, y, expected.channels == 1 ? 0 : c)}; };
        worst = std::max(
            {worst, std::abs(is.red - due(0)), std::abs(is.green - due(1)), std::abs(is.blue - due(2))});
      }
    }
    return worst;
  }

  void ExpectShown(const ImageSpec& image, const Pixels& expected, int tolerance, const std::string& layout,
                   const std::string& codec) {
    SCOPED_TRACE(image.ic + ", " + image.irep + ", " + layout + ", " + codec);
    const LoadedPicture picture = Decode(image);
    ASSERT_EQ(picture.status, SUCCESS);
    ASSERT_EQ(picture.width, expected.width);
    ASSERT_EQ(picture.height, expected.height);
    EXPECT_LE(Worst(picture, expected), tolerance);
    if (!HasFailure()) RecordDecoded(image, layout, codec);
  }

  void Expect(const std::string& ic, const std::string& irep, uint32_t bits, uint32_t channels, Layout layout,
              const Coding& coding, int tolerance) {
    const Pixels scene = MakeScene(kWidth, kHeight, channels, bits);
    const Coded coded = Make(ic, irep, bits, scene, layout, coding);
    ExpectShown(coded.image, bits == 8 ? coded.expected : Shown(coded.expected, bits), tolerance,
                NameOf(layout), coding.name);
  }

  static std::vector<std::pair<std::string, Layout>> JpegCodes() {
    return {{"C3", Layout::kSingle},
            {"C3", Layout::kScanned},
            {"M3", Layout::kMasked},
            {"M3", Layout::kSingle},
            {"I1", Layout::kSingle}};
  }
};

TEST_F(Pictures, GreyJpeg) {
  for (const auto& [ic, layout] : JpegCodes()) {
    Expect(ic, "MONO", 8, 1, layout, Jpeg(JpegColor::kGrey), 2);
    Expect(ic, "MONO", 8, 1, layout, Jpeg(JpegColor::kGrey, 1, 1, true), 2);
    Expect(ic, "MONO", 8, 1, layout, Jpeg(JpegColor::kGrey, 1, 1, false, 1), 2);
  }
}

TEST_F(Pictures, YcbcrJpegOfEverySubsampling) {
  for (const auto& [ic, layout] : JpegCodes()) {
    for (const auto& [across, down] : {std::pair{1, 1}, {2, 1}, {2, 2}, {1, 2}})
      Expect(ic, "YCbCr601", 8, 3, layout, Jpeg(JpegColor::kYcc, across, down), 2);
  }
}

// A stream that says that it is YCbCr is converted even where the image is said to be RGB.
TEST_F(Pictures, RgbImagesOfEitherColourSpace) {
  for (const auto& [ic, layout] : JpegCodes()) {
    Expect(ic, "RGB", 8, 3, layout, Jpeg(JpegColor::kRgb), 2);
    Expect(ic, "RGB", 8, 3, layout, Jpeg(JpegColor::kYcc), 2);
  }
}

// Without a marker that says what they are, three components of an RGB image are its colours.
TEST_F(Pictures, RgbImagesWithoutMarkersAreTakenAsTheyAre) {
  const JpegSettings settings{.color = JpegColor::kRgb, .quality = 95, .markers = false};
  const Coding coding{"JPEG 8-bit", [=](const Pixels& p) { return EncodeJpeg(p, settings); },
                      [](const Stream& s) { return DecodeJpeg(s, true); }};
  for (const auto& [ic, layout] : JpegCodes()) Expect(ic, "RGB", 8, 3, layout, coding, 2);
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
  Expect("C3", "MULTI", 8, 3, Layout::kScanned, coding, 2);
}

TEST_F(Pictures, TwelveBitJpeg) {
  for (const DeepProcess process : {DeepProcess::kSequential, DeepProcess::kSpectralSelection}) {
    const Coding coding{"JPEG 12-bit", [=](const Pixels& p) { return EncodeJpeg12(p, process); },
                        [](const Stream& s) { return LoadPixels(s); }};
    for (const auto& [ic, layout] : JpegCodes()) {
      // Against the very samples: coding itself costs a little.
      const Pixels scene = MakeScene(kWidth, kHeight, 1, 12);
      const Coded coded = Make(ic, "MONO", 12, scene, layout, coding);
      ExpectShown(coded.image, Shown(scene, 12), 6, NameOf(layout), coding.name);
    }
  }
}

TEST_F(Pictures, LosslessJpeg) {
  for (const auto& [ic, layout] : std::vector<std::pair<std::string, Layout>>{{"C5", Layout::kSingle},
                                                                              {"C5", Layout::kScanned},
                                                                              {"M5", Layout::kMasked},
                                                                              {"M5", Layout::kSingle}}) {
    for (const uint32_t bits : {8U, 12U, 16U}) {
      for (const int predictor : {1, 4, 7}) {
        const Pixels scene = MakeScene(kWidth, kHeight, 1, bits);
        const Coding coding{
            "lossless JPEG",
            [=](const Pixels& p) { return EncodeLossless(p, {.bits = bits, .predictor = predictor}); },
            [](const Stream& s) { return LoadPixels(s); }};
        const Coded coded = Make(ic, "MONO", bits, scene, layout, coding);
        EXPECT_EQ(MaxDifference(coded.expected, scene), 0);
        ExpectShown(coded.image, Shown(scene, bits), bits == 8 ? 0 : 1, NameOf(layout), coding.name);
      }
    }
    const Pixels scene = MakeScene(kWidth, kHeight, 3, 8);
    const Coding coding{"lossless JPEG", [](const Pixels& p) { return EncodeLossless(p, {.bits = 8}); },
                        [](const Stream& s) { return LoadPixels(s, {.flags = kAsRgb}); }};
    ExpectShown(Make(ic, "RGB", 8, scene, layout, coding).image, scene, 0, NameOf(layout), coding.name);
  }
}

// JPEG 2000 is one stream under C8 and M8, which holds the tiles itself.
TEST_F(Pictures, Jpeg2000OfEveryDepth) {
  for (const char* ic : {"C8", "M8"}) {
    for (const uint32_t bits : {8U, 12U, 16U})
      Expect(ic, "MONO", bits, 1, Layout::kSingle, Jpeg2000(bits), bits == 8 ? 0 : 1);
    Expect(ic, "RGB", 8, 3, Layout::kSingle, Jpeg2000(8), 0);
    Expect(ic, "RGB", 8, 3, Layout::kSingle, Jpeg2000(8, 8), 1);
    Expect(ic, "MULTI", 8, 3, Layout::kSingle, Jpeg2000(8), 0);
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
    Expect(ic, "MONO", 8, 1, Layout::kSingle, Jpeg(JpegColor::kGrey), 2);
    Expect(ic, "MONO", 8, 1, Layout::kScanned, Jpeg(JpegColor::kGrey), 2);
    Expect(ic, "MONO", 8, 1, Layout::kSingle, Jpeg2000(8), 0);
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

// One stream for each band, in the order in which they are looked for: with three bands, band 1 of a block
// stands four streams behind band 0, and band 2 another four. Four blocks fill that exactly.
TEST_F(Pictures, BandSequentialStreams) {
  const Pixels scene = MakeScene(kWidth, kHeight, 3, 8);
  constexpr uint32_t kBlocks = 4;
  ImageSpec image = CodedImage("C3", "RGB", 3, 2, 2, kWidth / 2, kHeight / 2).Mode('S');
  Pixels expected(kWidth, kHeight, 3);
  for (uint32_t band = 0; band < 3; ++band) {
    for (uint32_t block = 0; block < kBlocks; ++block) {
      const uint32_t x = block % 2 * kWidth / 2;
      const uint32_t y = block / 2 * kHeight / 2;
      Stream stream = EncodeJpeg(ChannelOf(Crop(scene, x, y, kWidth / 2, kHeight / 2), band),
                                 {.color = JpegColor::kGrey});
      const Pixels restored = DecodeJpeg(stream);
      for (uint32_t v = 0; v < restored.height; ++v)
        for (uint32_t u = 0; u < restored.width; ++u) expected.At(x + u, y + v, band) = restored.At(u, v);
      stream.resize(std::max<size_t>(stream.size(), 900));
      if (stream.size() % 1024 < 3) stream.resize(stream.size() + 3);
      image.pixels.insert(image.pixels.end(), stream.begin(), stream.end());
    }
  }
  ExpectShown(image, expected, 2, "a stream for each band", "JPEG 8-bit");
}

TEST_F(Pictures, BandSequentialStreamsUnderAMaskAreGrey) {
  const Pixels scene = MakeScene(kWidth, kHeight, 1, 8);
  const Coded coded = Make("M3", "MONO", 8, scene, Layout::kMasked, Jpeg(JpegColor::kGrey));
  ImageSpec image = coded.image;
  image.irep = "RGB";
  image.Mode('S').Roles({"R ", "G ", "B "});
  // The last entry counts from the start of the data.
  auto& entries = *image.mask.block_offsets;
  entries.back() += static_cast<uint32_t>(image.MaskTable().size());
  ExpectShown(image, coded.expected, 2, "a stream for each band", "JPEG 8-bit");
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
      ImageSpec image = CodedImage(ic, "MONO", 1, 1, 1, 200, 120);
      image.pvtype = "B";
      image.nbpp = image.abpp = 1;
      image.comrat = comrat;
      image.pixels = EncodeFax(page, {.kind = kind, .fill_bits = fill});
      ExpectShown(image, shown, 0, "one stream", name);
      // Blocks play no part: the stream is the whole grid.
      image.Blocks(4, 3, 50, 40);
      ExpectShown(image, shown, 0, "blocks in one stream", name);
    }
  }
}

TEST_F(Pictures, AFaxPictureWithATableShowsItsColours) {
  const Pixels page = MakePage(64, 40);
  ImageSpec image = CodedImage("C1", "MONO", 1, 1, 1, 64, 40);
  image.pvtype = "B";
  image.nbpp = image.abpp = 1;
  image.comrat = "1D";
  image.bands[0].luts = {{200, 10}, {201, 20}, {202, 30}};
  image.pixels = EncodeFax(page, {});
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

#include "PictureTest.h"

#include <algorithm>
#include <cstdlib>

#include "Coverage.h"

namespace tavi_test {
namespace {

void Place(const Pixels& part, uint32_t x0, uint32_t y0, Pixels* whole) {
  for (uint32_t y = 0; y < part.height; ++y)
    for (uint32_t x = 0; x < part.width; ++x)
      for (uint32_t c = 0; c < part.channels; ++c) whole->At(x0 + x, y0 + y, c) = part.At(x, y, c);
}

int Worst(const LoadedPicture& picture, const Pixels& expected) {
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

}  // namespace

const char* NameOf(Placement placement) {
  return placement == Placement::kSingle   ? "one stream"
         : placement == Placement::kMasked ? "tiles by mask"
                                           : "tiles by scan";
}

Pixels Crop(const Pixels& from, uint32_t x0, uint32_t y0, uint32_t width, uint32_t height) {
  Pixels part(width, height, from.channels);
  for (uint32_t y = 0; y < height; ++y)
    for (uint32_t x = 0; x < width; ++x)
      for (uint32_t c = 0; c < from.channels; ++c) part.At(x, y, c) = from.At(x0 + x, y0 + y, c);
  return part;
}

Pixels Shown(const Pixels& from, uint32_t bits) {
  Pixels shown = from;
  const uint32_t full = (1U << bits) - 1;
  for (uint16_t& sample : shown.samples) sample = static_cast<uint16_t>((sample * 255U + full / 2) / full);
  return shown;
}

PictureTest::Coded PictureTest::Make(const std::string& ic, const std::string& irep, uint32_t bits,
                                     const Pixels& scene, Placement placement, const Coding& coding) {
  const bool single = placement == Placement::kSingle;
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
    Place(coding.restore(stream), x, y, &coded.expected);
    // The backward search wants the last stream within its last stretch, or at least not at a seam.
    if (!single && stream.size() < 900) stream.resize(900);
    if (block + 1 == across * down)
      while (stream.size() % 1024 < 3) stream.push_back(0);
    offsets.push_back(static_cast<uint32_t>(coded.image.pixels.size()));
    coded.image.pixels.insert(coded.image.pixels.end(), stream.begin(), stream.end());
  }
  if (placement == Placement::kMasked) coded.image.mask.block_offsets = offsets;
  return coded;
}

// The streams stand in the order in which they are looked for: with three bands, band 1 of a block stands four
// streams behind band 0, and band 2 another four. Four blocks fill that exactly.
PictureTest::Coded PictureTest::MakeBands(const std::string& ic, const Pixels& scene, const Coding& coding) {
  const uint32_t width = scene.width / 2;
  const uint32_t height = scene.height / 2;
  Coded coded{CodedImage(ic, "RGB", 3, 2, 2, width, height).Mode('S'), Pixels(scene.width, scene.height, 3)};
  for (uint32_t band = 0; band < 3; ++band) {
    for (uint32_t block = 0; block < 4; ++block) {
      const uint32_t x = block % 2 * width;
      const uint32_t y = block / 2 * height;
      Stream stream = coding.encode(ChannelOf(Crop(scene, x, y, width, height), band));
      const Pixels restored = coding.restore(stream);
      for (uint32_t v = 0; v < restored.height; ++v)
        for (uint32_t u = 0; u < restored.width; ++u)
          coded.expected.At(x + u, y + v, band) = restored.At(u, v);
      stream.resize(std::max<size_t>(stream.size(), 900));
      if (stream.size() % 1024 < 3) stream.resize(stream.size() + 3);
      coded.image.pixels.insert(coded.image.pixels.end(), stream.begin(), stream.end());
    }
  }
  return coded;
}

PictureTest::Coded PictureTest::MakeMaskedBands(const std::string& ic, const Pixels& scene,
                                                const Coding& coding) {
  Coded coded = Make(ic, "MONO", 8, scene, Placement::kMasked, coding);
  coded.image.irep = "RGB";
  coded.image.Mode('S').Roles({"R ", "G ", "B "});
  // The last entry counts from the start of the data.
  coded.image.mask.block_offsets->back() += static_cast<uint32_t>(coded.image.MaskTable().size());
  return coded;
}

ImageSpec PictureTest::FaxImage(const std::string& ic, const std::string& comrat, uint32_t width,
                                uint32_t height, const Stream& stream) {
  ImageSpec image = CodedImage(ic, "MONO", 1, 1, 1, width, height);
  image.pvtype = "B";
  image.nbpp = image.abpp = 1;
  image.comrat = comrat;
  image.pixels = stream;
  return image;
}

void PictureTest::ExpectShown(const ImageSpec& image, const Pixels& expected, int tolerance,
                              const std::string& layout, const std::string& codec) {
  SCOPED_TRACE(image.ic + ", " + image.irep + ", " + layout + ", " + codec);
  const LoadedPicture picture = Decode(image);
  ASSERT_EQ(picture.status, SUCCESS);
  ASSERT_EQ(picture.width, expected.width);
  ASSERT_EQ(picture.height, expected.height);
  EXPECT_LE(Worst(picture, expected), tolerance);
  if (!HasFailure()) RecordDecoded(image, layout, codec);
}

void PictureTest::Expect(const std::string& ic, const std::string& irep, uint32_t bits, uint32_t channels,
                         Placement placement, const Coding& coding, int tolerance) {
  const Pixels scene = MakeScene(kWidth, kHeight, channels, bits);
  const Coded coded = Make(ic, irep, bits, scene, placement, coding);
  ExpectShown(coded.image, bits == 8 ? coded.expected : Shown(coded.expected, bits), tolerance,
              NameOf(placement), coding.name);
}

std::vector<std::pair<std::string, Placement>> PictureTest::JpegCodes() {
  return {{"C3", Placement::kSingle},
          {"C3", Placement::kScanned},
          {"M3", Placement::kMasked},
          {"M3", Placement::kSingle},
          {"I1", Placement::kSingle}};
}

std::vector<std::pair<std::string, Placement>> PictureTest::LosslessCodes() {
  return {{"C5", Placement::kSingle},
          {"C5", Placement::kScanned},
          {"M5", Placement::kMasked},
          {"M5", Placement::kSingle}};
}

}  // namespace tavi_test

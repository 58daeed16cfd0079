// Vector quantised pictures, from an encoder of their own, against what they were made from and against a
// decoder that follows the format word by word.
#include <algorithm>
#include <cstdlib>

#include "Coverage.h"
#include "Random.h"
#include "VqFile.h"

namespace tavi_test {
namespace {

class Vq : public CodedTest {
 protected:
  static ImageSpec Image(uint32_t bands, uint32_t bits, uint32_t across, uint32_t down, uint32_t width,
                         uint32_t height, const std::string& ic = "C4") {
    ImageSpec image = CodedImage(ic, bands == 1 ? "MONO" : "RGB", bands, across, down, width, height);
    image.nbpp = image.abpp = bits;
    return image;
  }

  // Takes what earlier decodes have left over.
  void Drain() {
    const uint32_t left = Reservoir().count;
    if (left == 0) return;
    ImageSpec image = Image(1, 8, 1, 1, 1, 1);
    VqStream stream{.code_bits = static_cast<uint8_t>(left), .tables = {{7}}, .entries = 1};
    image.pixels = stream.Build();
    const BuiltFile built = NtfBuilder{image}.Build();
    EXPECT_EQ(LoadFile(Write(built)).status, SUCCESS);
    DecodeVq(image, built);
    EXPECT_EQ(Reservoir().count, 0U);
  }

  // Decodes with the library and with the reference.
  int32_t Expect(const ImageSpec& image, const std::string& about = "") {
    SCOPED_TRACE(about);
    NtfBuilder file{image};
    return Expect(image, file.Build());
  }
  int32_t Expect(const ImageSpec& image, const BuiltFile& built) {
    const LoadedPicture picture = LoadFile(Write(built));
    const SegmentBitmap segment = DecodeVq(image, built);
    EXPECT_EQ(picture.status, segment.status);
    if (picture.status != SUCCESS || segment.status != SUCCESS) return picture.status;
    EXPECT_EQ(picture.width, image.nbpr * image.nppbh);
    EXPECT_EQ(picture.height, image.nbpc * image.nppbv);
    size_t differences = 0;
    for (uint32_t y = 0; y < picture.height; ++y) {
      for (uint32_t x = 0; x < picture.width; ++x) {
        const bool inside = x < segment.rows.width && y < segment.rows.height;
        const Rgb due = inside ? segment.ColourAt(x, y) : Rgb{255, 255, 255};
        const Rgb is = picture.At(x, y);
        // Deeper samples may be a level away, since each way to 8 bits rounds.
        const int tolerance = image.nbpp == 12 ? 1 : 0;
        const bool far = std::abs(is.red - due.red) > tolerance ||
                         std::abs(is.green - due.green) > tolerance ||
                         std::abs(is.blue - due.blue) > tolerance;
        if (far && differences++ == 0) {
          ADD_FAILURE() << "at " << x << ", " << y << ": " << int{is.red} << ' ' << int{is.green} << ' '
                        << int{is.blue} << ", expected " << int{due.red} << ' ' << int{due.green} << ' '
                        << int{due.blue};
        }
      }
    }
    EXPECT_EQ(differences, 0U);
    const std::string layout = image.BlockCount() == 1 ? "one stream"
                               : image.HasMaskTable()  ? "blocks in one stream, masked"
                                                       : "blocks in one stream";
    if (differences == 0 && image.nbpp != 1 && image.nbpp != 16)
      RecordDecoded(image, layout, "vector quantisation");
    return SUCCESS;
  }

  // Tables of random lines and random codes for the image's present blocks.
  static VqStream RandomStream(Random& random, const ImageSpec& image, uint32_t rows, uint32_t across,
                               uint32_t tables, uint32_t entries, uint8_t code_bits, uint32_t blocks) {
    VqStream stream{.image_rows = rows, .codes_per_row = across, .code_bits = code_bits};
    stream.entries = entries;
    const uint32_t height = image.nppbv / rows;
    for (uint32_t t = 0; t < tables; ++t) {
      Bytes table(size_t{entries} * height);
      for (uint8_t& byte : table) byte = random.Byte();
      stream.tables.push_back(table);
    }
    const uint32_t code_rows = (image.nppbv + height - 1) / height;
    for (uint32_t i = 0; i < blocks * code_rows * across; ++i)
      stream.codes.push_back(random.Below(1U << code_bits));
    return stream;
  }

  static Bytes Scene(uint32_t width, uint32_t height) {
    Bytes picture;
    for (uint32_t y = 0; y < height; ++y)
      for (uint32_t x = 0; x < width; ++x)
        picture.push_back(static_cast<uint8_t>((x * 5 + y * 3) ^ (x / 8 * 16) ^ (y / 4 * 7)));
    return picture;
  }
};

TEST_F(Vq, AnEncodedPictureIsShownExactly) {
  for (const uint32_t side : {1U, 2U, 4U, 8U}) {
    for (const auto& [across, down] : {std::pair{1U, 1U}, {3U, 2U}, {2U, 3U}}) {
      ImageSpec image = Image(1, 8, across, down, 32, 16);
      const Bytes scene = Scene(32 * across, 16 * down);
      image.pixels = EncodeExactly(image, scene, side).Build();
      Drain();
      const BuiltFile built = NtfBuilder{image}.Build();
      const LoadedPicture picture = LoadFile(Write(built));
      DecodeVq(image, built);
      ASSERT_EQ(picture.status, SUCCESS) << side;
      size_t differences = 0;
      for (uint32_t y = 0; y < picture.height; ++y)
        for (uint32_t x = 0; x < picture.width; ++x)
          differences += picture.At(x, y).red != scene[size_t{y} * picture.width + x] ? 1 : 0;
      EXPECT_EQ(differences, 0U) << side << ": " << across << " x " << down;
    }
  }
}

TEST_F(Vq, TheReferenceShowsAnEncodedPictureExactly) {
  ImageSpec image = Image(1, 8, 3, 2, 32, 16);
  const Bytes scene = Scene(96, 32);
  image.pixels = EncodeExactly(image, scene, 4).Build();
  Drain();
  const VqReservoir before = Reservoir();
  const SegmentBitmap segment = DecodeVq(image, NtfBuilder{image}.Build());
  for (uint32_t y = 0; y < 32; ++y)
    for (uint32_t x = 0; x < 96; ++x) ASSERT_EQ(segment.rows.Get(x, y), scene[size_t{y} * 96 + x]);
  Reservoir() = before;  // the library has not seen this one
}

TEST_F(Vq, ATableIsTheDecodedPicturesPalette) {
  ImageSpec image = Image(1, 8, 2, 1, 16, 16);
  const Bytes scene = Scene(32, 16);
  image.pixels = EncodeExactly(image, scene, 4).Build();
  Bytes red;
  Bytes green;
  Bytes blue;
  for (int i = 0; i < 256; ++i) {
    red.push_back(static_cast<uint8_t>(255 - i));
    green.push_back(static_cast<uint8_t>(i ^ 0x55));
    blue.push_back(static_cast<uint8_t>(i * 7));
  }
  for (const std::vector<Bytes>& luts : {std::vector<Bytes>{red, green, blue}, std::vector<Bytes>{green}}) {
    image.bands[0].luts = luts;
    EXPECT_EQ(Expect(image), SUCCESS);
  }
}

TEST_F(Vq, AShortTableIsBlackBeyondItsEnd) {
  ImageSpec image = Image(1, 8, 1, 1, 16, 16);
  image.pixels = EncodeExactly(image, Scene(16, 16), 4).Build();
  image.bands[0].luts = {Bytes(40, 99)};
  EXPECT_EQ(Expect(image), SUCCESS);
}

// Every code length, so that codes straddle bytes, blocks and images.
TEST_F(Vq, BitsLeftOverCarryOn) {
  Random random(1);
  size_t carried = 0;
  for (uint8_t bits = 1; bits <= 16; ++bits) {
    ImageSpec image = Image(1, 8, 3, 1, 12, 4);
    const VqStream stream = RandomStream(random, image, 1, 3, 4, 1U << std::min<uint8_t>(bits, 6), bits, 3);
    image.pixels = stream.Build();
    EXPECT_EQ(Expect(image, std::to_string(bits)), SUCCESS);
    carried += Reservoir().count != 0 ? 1 : 0;
  }
  EXPECT_GT(carried, 5U);
}

// Twelve bits and three codes: four bits are left, and the next image begins with them.
TEST_F(Vq, TheNextImageBeginsWithTheBitsLeftOver) {
  Drain();
  ImageSpec first = Image(1, 8, 1, 1, 6, 2);
  VqStream stream{.image_rows = 1,
                  .codes_per_row = 3,
                  .code_bits = 12,
                  .tables = {{1, 1, 2, 2}, {3, 3, 4, 4}},
                  .entries = 2};
  stream.codes = {0, 1, 0};
  first.pixels = stream.Build();
  first.pixels.back() |= 0x0F;  // the padding: four ones
  const BuiltFile built = NtfBuilder{first}.Build();
  ASSERT_EQ(Expect(first, built), SUCCESS);
  EXPECT_EQ(Reservoir().count, 4U);
  ImageSpec second = Image(1, 8, 1, 1, 6, 2);
  stream.code_bits = 4;
  stream.entries = 16;
  stream.tables = {Bytes(32), Bytes(32)};
  for (uint8_t i = 0; i < 16; ++i)
    for (size_t k = 0; k < 2; ++k)
      stream.tables[0][2 * i + k] = stream.tables[1][2 * i + k] = static_cast<uint8_t>(10 * i);
  stream.codes = {2, 3};
  second.pixels = stream.Build();
  const BuiltFile next = NtfBuilder{second}.Build();
  const LoadedPicture picture = LoadFile(Write(next));
  DecodeVq(second, next);
  ASSERT_EQ(picture.status, SUCCESS);
  EXPECT_EQ(picture.At(0, 0).red, 150);
  EXPECT_EQ(picture.At(2, 0).red, 20);
  EXPECT_EQ(picture.At(4, 0).red, 30);
}

TEST_F(Vq, KernelsOfUnequalSidesAreStoredByTheirWidth) {
  Random random(2);
  for (const auto& [rows, across] :
       {std::pair{8U, 4U}, {4U, 8U}, {2U, 8U}, {16U, 2U}, {1U, 16U}, {16U, 1U}}) {
    ImageSpec image = Image(1, 8, 2, 2, 16, 16);
    const uint32_t width = 16 / across;
    image.pixels = RandomStream(random, image, rows, across, width, 20, 5, 4).Build();
    EXPECT_EQ(Expect(image, std::to_string(rows) + " x " + std::to_string(across)), SUCCESS);
  }
}

TEST_F(Vq, AnyNumberOfTablesIsTaken) {
  Random random(3);
  for (const uint32_t tables : {1U, 2U, 3U, 4U, 5U, 7U, 8U, 9U, 13U, 40U}) {
    for (const uint32_t entries : {1U, 2U, 3U, 30U}) {
      ImageSpec image = Image(1, 8, 2, 1, 16, 16);
      image.pixels = RandomStream(random, image, 4, 4, tables, entries, 5, 2).Build();
      EXPECT_EQ(Expect(image, std::to_string(tables) + " tables of " + std::to_string(entries)), SUCCESS);
    }
  }
}

// Lines of a kernel for which there is no table are zeros: the file need not hold a whole kernel.
TEST_F(Vq, FewTablesNeedNoWholeKernel) {
  ImageSpec image = Image(1, 8, 1, 1, 16, 16);
  VqStream stream{.code_bits = 8, .tables = {Bytes(16, 77)}, .entries = 1};
  stream.codes = {0};
  image.pixels = stream.Build();
  EXPECT_EQ(Expect(image), SUCCESS);
}

TEST_F(Vq, CodesBeyondTheTableShowZeros) {
  ImageSpec image = Image(1, 8, 1, 1, 8, 4);
  Drain();
  VqStream stream{.image_rows = 1,
                  .codes_per_row = 2,
                  .code_bits = 16,
                  .tables = std::vector<Bytes>(4, Bytes(4, 99)),
                  .entries = 1};
  stream.codes = {0, 1};
  for (const uint32_t code : {1U, 2U, 255U, 0xFFFFU}) {
    stream.codes[1] = code;
    image.pixels = stream.Build();
    const BuiltFile built = NtfBuilder{image}.Build();
    const LoadedPicture picture = LoadFile(Write(built));
    DecodeVq(image, built);
    ASSERT_EQ(picture.status, SUCCESS);
    EXPECT_EQ(picture.At(3, 3).red, 99);
    EXPECT_EQ(picture.At(4, 0).red, 0) << code;
    EXPECT_EQ(picture.At(7, 3).red, 0) << code;
  }
}

// Heights and widths that the kernels do not divide.
TEST_F(Vq, BlocksThatKernelsDoNotDivide) {
  Random random(4);
  for (uint32_t width = 5; width <= 12; ++width) {
    for (uint32_t height = 5; height <= 12; ++height) {
      ImageSpec image = Image(1, 8, 2, 2, width, height);
      const uint32_t rows = 2 + random.Below(3);
      const uint32_t across = 2 + random.Below(3);
      image.pixels = RandomStream(random, image, rows, across, width / across, 9, 4, 4).Build();
      EXPECT_EQ(Expect(image, std::to_string(width) + " x " + std::to_string(height)), SUCCESS);
    }
  }
}

TEST_F(Vq, ThreeBandsTakeThreeBytesAPixel) {
  Random random(5);
  for (const auto& [rows, across] : {std::pair{4U, 4U}, {8U, 4U}, {4U, 8U}, {2U, 2U}, {5U, 3U}}) {
    ImageSpec image = Image(3, 8, 2, 2, 16, 16);
    image.pixels = RandomStream(random, image, rows, across, 16 / across, 33, 6, 4).Build();
    EXPECT_EQ(Expect(image, std::to_string(rows) + " x " + std::to_string(across)), SUCCESS);
  }
}

TEST_F(Vq, TwelveBitPixels) {
  Random random(6);
  for (const auto& [rows, across] : {std::pair{4U, 4U}, {8U, 4U}, {4U, 8U}, {2U, 2U}, {16U, 16U}}) {
    ImageSpec image = Image(1, 12, 2, 2, 16, 16);
    image.pixels = RandomStream(random, image, rows, across, 16 / across, 33, 6, 4).Build();
    EXPECT_EQ(Expect(image, std::to_string(rows) + " x " + std::to_string(across)), SUCCESS);
  }
}

// Nothing is stored at other depths, but the codes are read.
TEST_F(Vq, OtherDepthsStayBlack) {
  Random random(7);
  for (const uint32_t bits : {1U, 16U}) {
    ImageSpec image = Image(1, bits, 2, 1, 8, 8);
    image.pixels = RandomStream(random, image, 2, 2, 4, 5, 3, 2).Build();
    if (bits == 1) image.pvtype = "B";
    EXPECT_EQ(Expect(image, std::to_string(bits)), SUCCESS);
  }
}

TEST_F(Vq, ThirtyTwoBitsOfMonoAreShownAsEight) {
  Random random(8);
  ImageSpec image = Image(1, 32, 2, 1, 8, 8);
  image.pixels = RandomStream(random, image, 2, 2, 4, 5, 3, 2).Build();
  EXPECT_EQ(Expect(image), SUCCESS);
}

// Absent blocks have no codes; at the right and at the bottom they make the picture smaller.
TEST_F(Vq, AbsentBlocksHaveNoCodes) {
  Random random(9);
  struct Case {
    uint32_t across, down;
    std::vector<uint32_t> entries;
  };
  constexpr uint32_t kNo = kAbsentBlock;
  const std::vector<Case> cases = {
      {2, 2, {0, 1, 2, 3}},
      {2, 2, {0, kNo, 2, 3}},
      {2, 2, {0, 1, kNo, kNo}},
      {2, 2, {0, kNo, 2, kNo}},
      {2, 2, {kNo, kNo, kNo, 3}},
      {2, 2, {0, kNo, kNo, kNo}},
      {3, 2, {kNo, 1, kNo, kNo, kNo, kNo}},
      {1, 3, {kNo, 0, kNo}},
      {2, 2, {0xFFFFFFFE, 7, 7, 0}},
      {2, 2, {kNo, kNo, kNo, kNo}},
  };
  for (size_t i = 0; i < cases.size(); ++i) {
    const Case& one = cases[i];
    ImageSpec image = Image(1, 8, one.across, one.down, 8, 8, "M4");
    image.mask.block_offsets = one.entries;
    const auto present = static_cast<uint32_t>(
        std::count_if(one.entries.begin(), one.entries.end(), [](uint32_t e) { return e != kNo; }));
    image.pixels = RandomStream(random, image, 2, 2, 4, 30, 5, present).Build();
    EXPECT_EQ(Expect(image, std::to_string(i)), SUCCESS);
  }
}

// What the picture does not reach keeps the background, and the picture is not stretched.
TEST_F(Vq, ASmallerPictureIsPaintedAtItsOwnSize) {
  ImageSpec image = Image(1, 8, 2, 2, 8, 8, "M4");
  image.mask.block_offsets = {{0, kAbsentBlock, kAbsentBlock, kAbsentBlock}};
  VqStream stream{.image_rows = 2,
                  .codes_per_row = 2,
                  .code_bits = 8,
                  .tables = std::vector<Bytes>(4, Bytes(4, 50)),
                  .entries = 1};
  stream.codes = {0, 0, 0, 0};
  Drain();
  image.pixels = stream.Build();
  const BuiltFile built = NtfBuilder{image}.Build();
  const LoadedPicture picture = LoadFile(Write(built));
  DecodeVq(image, built);
  ASSERT_EQ(picture.status, SUCCESS);
  EXPECT_EQ(picture.width, 16U);
  EXPECT_EQ(picture.At(7, 7).red, 50);
  EXPECT_EQ(picture.At(8, 7).red, 255);
  EXPECT_EQ(picture.At(7, 8).red, 255);
}

// The mask table is passed over by its own numbers and NBANDS; IMDATOFF and offsets are not looked at.
TEST_F(Vq, TheMaskTableIsPassedOver) {
  Random random(10);
  for (int kind = 0; kind < 6; ++kind) {
    ImageSpec image = Image(kind == 4 ? 3 : 1, 8, 2, 2, 8, 8, "M4");
    if (kind != 1) image.mask.block_offsets = {{3, 2, 1, 0}};
    if (kind >= 1 && kind <= 4) image.mask.pad_offsets = {{3, 2, 1, kAbsentBlock}};
    if (kind == 3) image.mask.imdatoff = 77777;
    image.pixels = RandomStream(random, image, 2, 2, 4, 30, 5, 4).Build();
    EXPECT_EQ(Expect(image, std::to_string(kind)), SUCCESS);
  }
}

TEST_F(Vq, ThePadCodeIsTransparent) {
  ImageSpec image = Image(1, 8, 1, 1, 8, 4, "M4");
  image.mask.pad_code = {33};
  VqStream stream{.image_rows = 1, .codes_per_row = 2, .code_bits = 8, .entries = 2};
  stream.tables.assign(4, Bytes{33, 33, 33, 33, 44, 44, 44, 44});
  stream.codes = {0, 1};
  Drain();
  image.pixels = stream.Build();
  const BuiltFile built = NtfBuilder{image}.Build();
  const LoadedPicture picture = LoadFile(Write(built));
  DecodeVq(image, built);
  ASSERT_EQ(picture.status, SUCCESS);
  EXPECT_EQ(picture.At(0, 0).red, 255);
  EXPECT_EQ(picture.At(4, 0).red, 44);
}

// With XBANDS the digit of NBANDS is 0 and the mask tables count for nothing, so that their bytes are read as
// the header.
TEST_F(Vq, UnderXbandsTheMaskTablesAreNotPassedOver) {
  Random random(11);
  ImageSpec image = Image(3, 8, 1, 1, 8, 8, "M4");
  image.use_xbands = true;
  image.mask.block_offsets = {{0}};
  const VqStream stream = RandomStream(random, image, 2, 2, 4, 3, 2, 1);
  image.pixels = stream.Build();
  const LoadedPicture picture = LoadFile(Write(NtfBuilder{image}));
  // Block entries 0, absent, absent are taken for the numbers of the stream.
  EXPECT_EQ(picture.status, ERR_FILE_FORMAT);
}

// Two images in one file, decoded in their order.
TEST_F(Vq, TwoImagesFollowOneAnother) {
  Drain();
  ImageSpec first = Image(1, 8, 1, 1, 16, 8);
  const Bytes scene = Scene(16, 8);
  first.pixels = EncodeExactly(first, scene, 4).Build();
  const VqReservoir before = Reservoir();
  DecodeVq(first, NtfBuilder{first}.Build());
  // Make the second one go on where the first one ends: its codes begin with the bits left over.
  const uint32_t left = Reservoir().count;
  ImageSpec second = Image(1, 8, 1, 1, 16, 8);
  second.At(8, 0).Level(2);
  second.pixels = first.pixels;
  Reservoir() = before;
  const NtfBuilder both{first, second};
  const BuiltFile built = both.Build();
  const LoadedPicture picture = LoadFile(Write(built));
  DecodeVq(first, built);
  NtfBuilder alone{second};
  const SegmentBitmap expected = DecodeVq(second, alone.Build());
  ASSERT_EQ(picture.status, SUCCESS);
  for (uint32_t y = 0; y < 8; ++y) {
    for (uint32_t x = 0; x < 16; ++x) {
      EXPECT_EQ(picture.At(x, y).red, scene[16 * y + x]);
      ASSERT_EQ(picture.At(x, y + 8), expected.ColourAt(x, y)) << left << ": " << x << ", " << y;
    }
  }
}

TEST_F(Vq, RandomFilesAgreeWithTheReference) {
  Random random(12);
  for (int round = 0; round < 300; ++round) {
    const uint32_t kind = random.Below(4);
    const uint32_t across = 1 + random.Below(3);
    const uint32_t down = 1 + random.Below(3);
    ImageSpec image = Image(kind == 1 ? 3 : 1, kind == 2 ? 12 : 8, across, down, 4 + random.Below(20),
                            4 + random.Below(20), random.Below(2) == 0 ? "C4" : "M4");
    if (kind == 3) image.irep = "RGB/LUT";
    if (kind == 3) image.bands[0].luts = {Bytes{9, 8, 7}, Bytes{1, 2, 3}, Bytes{4, 5, 6}};
    uint32_t present = across * down;
    if (image.ic == "M4" && random.Below(3) != 0) {
      std::vector<uint32_t> entries;
      for (uint32_t i = 0; i < across * down; ++i) entries.push_back(random.Below(3) == 0 ? kAbsentBlock : i);
      present -= static_cast<uint32_t>(std::count(entries.begin(), entries.end(), kAbsentBlock));
      image.mask.block_offsets = entries;
    }
    const uint32_t rows = 1 + random.Below(image.nppbv);
    const uint32_t codes = 1 + random.Below(image.nppbh);
    const VqStream stream =
        RandomStream(random, image, rows, codes, 1 + random.Below(9), 1 + random.Below(40),
                     static_cast<uint8_t>(1 + random.Below(16)), present);
    image.pixels = stream.Build();
    EXPECT_EQ(Expect(image, std::to_string(round)), SUCCESS);
    if (HasFailure()) return;
  }
}

}  // namespace
}  // namespace tavi_test

// Fax images: what the load is told about the raw data, and what becomes of palette and pad code.
#include "CodedTest.h"

namespace tavi_test {
namespace {

// A bitmap of one row of ones above one of zeros, as a fax decoder would leave it: with its palette.
int32_t FillHalf(HostBitmap* bitmap) {
  const Bytes ones(bitmap->bytes_per_line, 0xFF);
  for (uint32_t y = 0; y < bitmap->height / 2; ++y) HostPutBitmapRow(bitmap, ones.data(), y, ones.size());
  return SUCCESS;
}

class FaxHook : public CodedTest {
 protected:
  static ImageSpec Fax(const std::string& ic, const std::string& comrat) {
    ImageSpec image = CodedImage(ic, "MONO", 1, 1, 1, 24, 4);
    image.pvtype = "B";
    image.nbpp = image.abpp = 1;
    image.comrat = comrat;
    image.pixels = {1, 2, 3, 4, 5, 6, 7};
    return image;
  }
};

TEST_F(FaxHook, TheLoadIsGivenTheSegmentBitmap) {
  for (const char* ic : {"C1", "M1"}) {
    const ImageSpec image = Fax(ic, "1D");
    RecordingHost host;
    host.answer = FillHalf;
    ASSERT_EQ(Load(image, host).status, SUCCESS) << ic;
    ASSERT_EQ(host.loads.size(), 1U);
    const RecordedLoad& load = host.loads[0];
    EXPECT_EQ(load.bytes, image.pixels) << ic;
    EXPECT_EQ(load.record_size, 212U);
    EXPECT_EQ(load.bits, 1U);
    EXPECT_EQ(load.order, 1U);
    EXPECT_FALSE(load.has_options);
    EXPECT_FALSE(load.has_information);
    EXPECT_TRUE(load.given_pixels);
    EXPECT_EQ(load.given_width, 24U);
    EXPECT_EQ(load.given_bits, 1U);
  }
}

TEST_F(FaxHook, TheHookDescribesTheWholeGrid) {
  ImageSpec image = Fax("C1", "2DS");
  image.Blocks(3, 2, 16, 5);
  RecordingHost host;
  host.answer = FillHalf;
  ASSERT_EQ(Load(image, host).status, SUCCESS);
  ASSERT_EQ(host.loads.size(), 1U);
  std::vector<uint32_t> expected(64);
  expected[1] = 67;
  expected[2] = 48;
  expected[3] = 10;
  expected[4] = 1;
  expected[9] = 1;
  EXPECT_EQ(host.loads[0].raw_layout, expected);
}

TEST_F(FaxHook, TheFormatFollowsTheRate) {
  for (const auto& [comrat, format] : std::vector<std::pair<std::string, uint32_t>>{{"1D", 66},
                                                                                    {"2DS", 67},
                                                                                    {"2DH", 67},
                                                                                    {"2DX", 66},
                                                                                    {"01.0", 66},
                                                                                    {"2D", 66},
                                                                                    {"1DX", 66},
                                                                                    {"", 66}}) {
    RecordingHost host;
    host.answer = FillHalf;
    ASSERT_EQ(Load(Fax("C1", comrat), host).status, SUCCESS) << comrat;
    ASSERT_EQ(host.loads.size(), 1U);
    EXPECT_EQ(host.loads[0].raw_layout.at(1), format) << comrat;
  }
}

TEST_F(FaxHook, TheEarlierHookIsPutBack) {
  for (const int32_t status : {SUCCESS, ERR_FILE_FORMAT}) {
    RecordingHost host;
    host.answer = [&](HostBitmap*) { return status; };
    EXPECT_EQ(Load(Fax("C1", "1D"), host).status, status);
    ASSERT_EQ(host.hooks.size(), 2U);
    EXPECT_NE(host.hooks[0].hook, nullptr);
    EXPECT_NE(host.hooks[0].hook, &RecordingHost::EarlierHook);
    EXPECT_TRUE(host.hooks[0].has_user);
    EXPECT_EQ(host.hooks[1].hook, &RecordingHost::EarlierHook);
  }
}

TEST_F(FaxHook, TheDataBeginBehindTheMaskTable) {
  ImageSpec image = Fax("M1", "1D");
  image.mask.block_offsets = {{kAbsentBlock}};  // masks play no part
  image.mask.gap = {8, 8, 8};
  RecordingHost host;
  host.answer = FillHalf;
  ASSERT_EQ(Load(image, host).status, SUCCESS);
  EXPECT_EQ(host.loads.at(0).bytes, image.pixels);
}

TEST_F(FaxHook, WithoutATableOneIsWhite) {
  RecordingHost host;
  host.answer = FillHalf;
  const LoadedPicture picture = Load(Fax("C1", "1D"), host);
  ASSERT_EQ(picture.status, SUCCESS);
  EXPECT_EQ(picture.At(5, 1), (Rgb{255, 255, 255}));
  EXPECT_EQ(picture.At(5, 2), (Rgb{0, 0, 0}));
}

// Entry 0 of the table shows where the decoded value is 1.
TEST_F(FaxHook, TheTablesEntriesAreExchanged) {
  ImageSpec image = Fax("C1", "1D");
  RecordingHost host;
  host.answer = FillHalf;
  image.bands[0].luts = {{10, 200}};
  const LoadedPicture grey = Load(image, host);
  ASSERT_EQ(grey.status, SUCCESS);
  EXPECT_EQ(grey.At(0, 0), (Rgb{10, 10, 10}));
  EXPECT_EQ(grey.At(0, 3), (Rgb{200, 200, 200}));
  image.bands[0].luts = {{1, 4}, {2, 5}, {3, 6}};
  const LoadedPicture colour = Load(image, host);
  ASSERT_EQ(colour.status, SUCCESS);
  EXPECT_EQ(colour.At(0, 0), (Rgb{1, 2, 3}));
  EXPECT_EQ(colour.At(0, 3), (Rgb{4, 5, 6}));
}

TEST_F(FaxHook, OfALongTableTwoEntriesCount) {
  ImageSpec image = Fax("C1", "1D");
  image.bands[0].luts = {{11, 22, 33, 44}};
  RecordingHost host;
  host.answer = FillHalf;
  const LoadedPicture picture = Load(image, host);
  ASSERT_EQ(picture.status, SUCCESS);
  EXPECT_EQ(picture.At(0, 0), (Rgb{11, 11, 11}));
  EXPECT_EQ(picture.At(0, 3), (Rgb{22, 22, 22}));
}

// The pad code changes sides with every draw of the same document, whether there is a table or not.
class FaxPadCode : public FaxHook {
 protected:
  struct Drawn {
    int32_t status = 0;
    Rgb one, zero;
  };
  // Draws the document once more on a fresh grey canvas.
  Drawn Draw(NitfHandle document, RecordingHost& host) {
    FilterLoadContext context = {};
    context.load_memory = RecordingHost::Load;
    context.set_load_hook = RecordingHost::SetHook;
    (void)host;
    HostBitmap canvas = {};
    EXPECT_EQ(HostCreateBitmap(&canvas, sizeof canvas, 1, 24, 4, 24, 1, nullptr, 4, nullptr, 0), SUCCESS);
    HostFillBitmap(&canvas, 0x777777);
    const HostDrawingContext dc = HostCreateBitmapDC(&canvas);
    Drawn drawn;
    drawn.status = Tavi_NitfDrawObjects(&context, dc, &canvas, document);
    HostDeleteBitmapDC(dc);
    Bytes row(canvas.bytes_per_line);
    HostGetBitmapRow(&canvas, row.data(), 3, row.size());  // the top row, of ones
    drawn.one = {row[2], row[1], row[0]};
    HostGetBitmapRow(&canvas, row.data(), 0, row.size());
    drawn.zero = {row[2], row[1], row[0]};
    HostFreeBitmap(&canvas);
    return drawn;
  }
  NitfHandle Open(const ImageSpec& image) {
    NitfHandle document = nullptr;
    EXPECT_EQ(Tavi_NITFCreate(&document, Write(NtfBuilder{image}).c_str()), SUCCESS);
    return document;
  }
};

TEST_F(FaxPadCode, ChangesSidesAtEachDraw) {
  constexpr Rgb kCanvas{0x77, 0x77, 0x77};
  ImageSpec image = Fax("M1", "1D");
  for (const uint8_t code : {uint8_t{0}, uint8_t{1}, uint8_t{7}}) {
    image.mask.pad_code = {code};
    RecordingHost host;
    host.answer = FillHalf;
    NitfHandle document = Open(image);
    ASSERT_NE(document, nullptr);
    // 0 becomes 1 and leaves out the ones; anything else becomes 0.
    bool leaves_out_ones = code == 0;
    for (int draw = 0; draw < 4; ++draw, leaves_out_ones = !leaves_out_ones) {
      const Drawn drawn = Draw(document, host);
      EXPECT_EQ(drawn.status, SUCCESS);
      EXPECT_EQ(drawn.one, leaves_out_ones ? kCanvas : (Rgb{255, 255, 255})) << int{code} << " " << draw;
      EXPECT_EQ(drawn.zero, leaves_out_ones ? (Rgb{0, 0, 0}) : kCanvas) << int{code} << " " << draw;
    }
    EXPECT_EQ(Tavi_NITFDestroy(&document), SUCCESS);
  }
}

TEST_F(FaxPadCode, ChangesSidesWithATableToo) {
  constexpr Rgb kCanvas{0x77, 0x77, 0x77};
  ImageSpec image = Fax("M1", "1D");
  image.mask.pad_code = {0};
  image.bands[0].luts = {{10, 200}};
  RecordingHost host;
  host.answer = FillHalf;
  NitfHandle document = Open(image);
  ASSERT_NE(document, nullptr);
  const Drawn first = Draw(document, host);  // ones show entry 0, which the pad code named
  EXPECT_EQ(first.one, kCanvas);
  EXPECT_EQ(first.zero, (Rgb{200, 200, 200}));
  const Drawn second = Draw(document, host);
  EXPECT_EQ(second.one, (Rgb{10, 10, 10}));
  EXPECT_EQ(second.zero, kCanvas);
  EXPECT_EQ(Tavi_NITFDestroy(&document), SUCCESS);
}

TEST_F(FaxPadCode, ChangesSidesAlsoWhenTheLoadFails) {
  constexpr Rgb kCanvas{0x77, 0x77, 0x77};
  ImageSpec image = Fax("M1", "1D");
  image.mask.pad_code = {0};
  RecordingHost host;
  NitfHandle document = Open(image);
  ASSERT_NE(document, nullptr);
  host.answer = [](HostBitmap*) { return ERR_FILE_FORMAT; };
  EXPECT_EQ(Draw(document, host).status, ERR_FILE_FORMAT);
  host.answer = FillHalf;
  const Drawn drawn = Draw(document, host);
  EXPECT_EQ(drawn.zero, kCanvas);
  EXPECT_EQ(drawn.one, (Rgb{255, 255, 255}));
  EXPECT_EQ(Tavi_NITFDestroy(&document), SUCCESS);
}

TEST_F(FaxHook, ShortFilesAreNotLoaded) {
  for (const char* ic : {"C1", "M1"}) {
    BuiltFile built = NtfBuilder{Fax(ic, "1D")}.Build();
    built.bytes.pop_back();
    RecordingHost host;
    EXPECT_EQ(LoadFile(Write(built), host.Request()).status, ERR_FILE_READ);
    EXPECT_TRUE(host.loads.empty());
  }
  ImageSpec image = Fax("M1", "1D");
  image.mask.imdatoff = 1000;
  RecordingHost host;
  EXPECT_EQ(Load(image, host).status, ERR_FILE_READ);
  EXPECT_TRUE(host.loads.empty());
}

}  // namespace
}  // namespace tavi_test

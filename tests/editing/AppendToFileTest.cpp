// Graphics appended to an opened file: what is looked for in the source file is looked for at other places from then on.
#include "AppendTest.h"

namespace editing {
namespace {

constexpr HostRect kPlace = {10, 20, 30, 35};
constexpr uint32_t kRed = 0x0000FF;
constexpr uint32_t kBlue = 0xFF0000;
constexpr size_t kSubheader = 258;  // of a graphic

class AppendToFile : public AppendTest {
 protected:
  // Appends a filled rectangle and returns the size of its data.
  static size_t Append(NitfHandle document, uint32_t color = kRed) {
    const uint32_t before = FileLength(document);
    Drawing drawing(0, -10, 10, -1, color);
    EXPECT_EQ(Tavi_NITFAppendGraphicSegment(document, drawing.get(), &kPlace), SUCCESS);
    return FileLength(document) - before - kSubheader - 10;
  }
  // The data of such a graphic.
  [[nodiscard]] Bytes DrawingData(uint32_t color) const {
    const NewDocument document;
    const size_t size = Append(document.handle, color);
    const Bytes saved = Saved(document.handle);
    return {saved.end() - static_cast<std::ptrdiff_t>(size), saved.end()};
  }
  static Bytes Counting(size_t size) {
    Bytes bytes(size);
    for (size_t i = 0; i < size; ++i) bytes[i] = static_cast<uint8_t>(i * 37 + (i >> 8) * 11 + 1);
    return bytes;
  }
  static Bytes Part(const Bytes& file, size_t from, size_t size) {
    const auto at = file.begin() + static_cast<std::ptrdiff_t>(from);
    return {at, at + static_cast<std::ptrdiff_t>(size)};
  }
};

NtfBuilder TextAndExtension() {
  NtfBuilder file{tavi_test::GreyImage(8, 6)};
  file.texts.resize(1);
  file.texts[0].data = Bytes(17, 't');
  file.data_extensions.resize(1);
  file.data_extensions[0].data = Bytes(13, 'd');
  return file;
}

// While the file is long enough behind them, a save takes what stands further on by the new graphic's lengths.
TEST_F(AppendToFile, TextsAndExtensionsAreOtherBytesOfTheFile) {
  NtfBuilder file = TextAndExtension();
  file.trailer = Counting(2000);
  const BuiltFile built = file.Build();
  const Document document(Write(built));
  const size_t shift = kSubheader + Append(document.handle);
  const Bytes text = Part(built.bytes, built.At("text[0].data").offset + shift, 17);
  const Bytes extension = Part(built.bytes, built.At("des[0].data").offset + shift, 13);
  ASSERT_NE(text, Bytes(17, 't'));

  uint8_t shown[18] = {};
  ASSERT_EQ(Tavi_NITFGetTextSegment(document.handle, 0, shown, nullptr), SUCCESS);
  EXPECT_EQ(Bytes(shown, shown + 17), text);

  // The saved file has the header's ten bytes and the graphic more, and these bytes in the old ones' place.
  const Bytes saved = Saved(document.handle);
  EXPECT_EQ(saved.size(), built.bytes.size() - 2000 + 10 + shift);
  EXPECT_EQ(Part(saved, built.At("text[0].data").offset + 10 + shift, 17), text);
  EXPECT_EQ(Part(saved, built.At("des[0].data").offset + 10 + shift, 13), extension);
  EXPECT_EQ(Part(saved, built.At("des[0].subheader").offset + 10 + shift, 2), (Bytes{'D', 'E'}));
}

TEST_F(AppendToFile, ExtensionsBeyondTheEndFailTheSave) {
  NtfBuilder file = TextAndExtension();
  file.texts.clear();
  const BuiltFile built = file.Build();
  const Document document(Write(built));
  const size_t shift = kSubheader + Append(document.handle);
  EXPECT_EQ(Tavi_NITFSaveFile(document.handle, Output().wstring().c_str()), ERR_FILE_READ);
  EXPECT_EQ(ReadBytes(Output()).size(), built.At("des[0].data").offset + 10 + shift);
}

TEST_F(AppendToFile, NewImagesAndTextsLeaveTheFilesOwnWhereTheyAre) {
  const BuiltFile built = TextAndExtension().Build();
  const Document document(Write(built));
  Picture picture(5, 4);
  ASSERT_EQ(Tavi_NITFAppendImageSegment(document.handle, picture.get(), 10, 24, 5), SUCCESS);
  ASSERT_EQ(Tavi_NITFAppendTextSegment(document.handle, TextFile("more").c_str()), SUCCESS);
  const Bytes saved = Saved(document.handle);
  EXPECT_EQ(Part(saved, saved.size() - 13, 13), Bytes(13, 'd'));
  uint8_t shown[18] = {};
  ASSERT_EQ(Tavi_NITFGetTextSegment(document.handle, 0, shown, nullptr), SUCCESS);
  EXPECT_EQ(Bytes(shown, shown + 17), Bytes(17, 't'));
}

// ---- Drawing ----

// The new graphic is looked for behind the file's images. Here stands the drawing of another one.
TEST_F(AppendToFile, ANewGraphicIsDrawnFromTheFilesBytes) {
  NtfBuilder file{tavi_test::GreyImage(50, 50, Bytes(2500, 128))};
  file.trailer = Bytes(kSubheader, 'x');
  const Bytes blue = DrawingData(kBlue);
  file.trailer.insert(file.trailer.end(), blue.begin(), blue.end());
  const Document document(Write(file));
  ASSERT_EQ(Append(document.handle, kRed), blue.size());
  const Composite composite = Render(document.handle);
  ASSERT_EQ(composite.status, SUCCESS);
  const uint8_t* bgr = composite.At(20, 28);
  EXPECT_NEAR(bgr[0], 255, 2) << "the file's drawing is blue, the new one red";
  EXPECT_NEAR(bgr[2], 0, 2);
  // A composition leaves what it has drawn in the graphic, and so does asking for it.
  HostVector* drawn = Tavi_NITFGetVectorHandle(document.handle, 0);
  ASSERT_NE(drawn, nullptr);
  EXPECT_EQ(HostVecIsEmpty(drawn), 0);

  // What is saved is the new drawing.
  Saved(document.handle);
  const Document again(Output().wstring());
  const Composite saved = Render(again.handle);
  ASSERT_EQ(saved.status, SUCCESS);
  EXPECT_NEAR(saved.At(20, 28)[2], 255, 2);
  EXPECT_NEAR(saved.At(20, 28)[0], 0, 2);
}

TEST_F(AppendToFile, ANewGraphicThatTheFileHasNoBytesForFailsDrawingAndMeasuring) {
  const NtfBuilder file{tavi_test::GreyImage(50, 50)};
  const Document document(Write(file));
  Append(document.handle);
  uint32_t width = 0;
  uint32_t height = 0;
  EXPECT_EQ(GetActual_Width_Height(document.handle, &width, &height), ERR_FILE_READ);
  EXPECT_EQ(Render(document.handle).status, ERR_FILE_READ);
  EXPECT_EQ(Tavi_NITFGetVectorHandle(document.handle, 0), nullptr);
}

TEST_F(AppendToFile, BytesThatAreNoDrawingAreRefusedByTheHost) {
  NtfBuilder file{tavi_test::GreyImage(50, 50)};
  file.trailer = Bytes(4000, 'x');
  const Document document(Write(file));
  Append(document.handle);
  uint32_t width = 0;
  uint32_t height = 0;
  EXPECT_EQ(GetActual_Width_Height(document.handle, &width, &height), ERR_FILE_FORMAT);
  EXPECT_EQ(Render(document.handle).status, ERR_FILE_FORMAT);
  EXPECT_EQ(Tavi_NITFGetVectorHandle(document.handle, 0), nullptr);
}

// A drawing put in a graphic's place is the segment's until the file's own is loaded again.
TEST_F(AppendToFile, AnExchangedDrawingIsDrawnFromTheFile) {
  std::wstring path;
  {
    NtfBuilder file{tavi_test::GreyImage(50, 50, Bytes(2500, 128))};
    const Document document(Write(file));
    Append(document.handle, kRed);
    Saved(document.handle);
    std::filesystem::copy_file(Output(), directory() / "one.ntf");
    path = (directory() / "one.ntf").wstring();
  }
  const Document document(path);
  Drawing blue(0, -10, 10, -1, kBlue);
  ASSERT_EQ(Tavi_NITFSetVectorHandle(document.handle, 0, blue.get()), SUCCESS);
  const Composite composite = Render(document.handle);
  ASSERT_EQ(composite.status, SUCCESS);
  EXPECT_NEAR(composite.At(20, 28)[2], 255, 2);
  Saved(document.handle);
  const Document again(Output().wstring());
  EXPECT_NEAR(Render(again.handle).At(20, 28)[0], 255, 2);
}

}  // namespace
}  // namespace editing

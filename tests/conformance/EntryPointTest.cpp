// fltInfo, fltLoad and fltSave as a host calls them.
#include <cstring>

#include "ConformanceTest.h"

namespace tavi_test {
namespace {

class EntryPoint : public ConformanceTest {};

// By value: the member stands unaligned, and a comparison would bind a reference to it.
uint64_t MemorySize(const FileInformation& information) {
  return information.info.memory_size;
}

TEST_F(EntryPoint, InfoFillsWhatIsKnownOfTheFile) {
  const FileInformation information = Info(Write(NtfBuilder{GreyImage(5, 3)}));
  ASSERT_EQ(information.status, SUCCESS);
  EXPECT_EQ(information.info.format, 248U);
  EXPECT_EQ(information.info.width, 5U);
  EXPECT_EQ(information.info.height, 3U);
  EXPECT_EQ(information.info.bits, 24U);
  EXPECT_EQ(MemorySize(information), 16U * 3U);
  EXPECT_EQ(information.info.host1100, 1U);
  EXPECT_EQ(information.info.host1104, 1U);
}

TEST_F(EntryPoint, MemorySizeIsCountedIn64Bits) {
  ImageSpec image = GreyImage(1, 1);
  image.Blocks(9998, 9998, 6, 9);  // 9999 would say that the count stands elsewhere
  const FileInformation information = Info(Write(NtfBuilder{image}));
  ASSERT_EQ(information.status, SUCCESS);
  EXPECT_EQ(information.info.width, 59988U);
  EXPECT_EQ(MemorySize(information), uint64_t{179964} * 89982);
}

TEST_F(EntryPoint, InfoFillsNothingWhenTheFileIsRefused) {
  const BuiltFile built = NtfBuilder{GreyImage(5, 3)}.Build().Patch("CLEVEL", "05");
  const FileInformation information = Info(Write(built));
  EXPECT_EQ(information.status, ERR_UNSUPPORTED_CLEVEL);
  const HostFileInfo untouched = {};
  EXPECT_EQ(std::memcmp(&information.info, &untouched, sizeof(untouched)), 0);
}

TEST_F(EntryPoint, InfoRewindsTheHostsHandle) {
  const std::wstring path = Write(NtfBuilder{GreyImage(5, 3)});
  const int64_t file = HostFileOpen(path.c_str(), 0x8000, 0x100);
  ASSERT_NE(file, -1);
  HostFileSeek(file, 77, 0);
  HostFileInfo info = {};
  HostLoadFlagsRecord flags = {};
  FilterInfoContext context = {};
  context.file_name = path.c_str();
  context.file = file;
  context.info = &info;
  context.load_flags = &flags;
  EXPECT_EQ(fltInfo(&context), SUCCESS);
  EXPECT_EQ(HostFileSeek(file, 0, 1), 0);
  HostFileClose(file);
}

TEST_F(EntryPoint, TwoBitsStaySetInTheLoadFlags) {
  const std::wstring path = Write(NtfBuilder{GreyImage(5, 3)});
  EXPECT_EQ(Info(path).load_flags, 0x80000001U);
  EXPECT_EQ(Info(path, 0x00100010U).load_flags, 0x80100011U);
  EXPECT_EQ(LoadFile(path).load_flags, 0x80000001U);
  EXPECT_EQ(Info(path + L".missing").load_flags, 0x80000001U);
}

TEST_F(EntryPoint, FileThatIsNotThereIsAShortRead) {
  const std::wstring path = (directory() / "missing.ntf").wstring();
  EXPECT_EQ(Info(path).status, ERR_FILE_READ);
  EXPECT_EQ(LoadFile(path).status, ERR_FILE_READ);
  EXPECT_EQ(Info(directory().wstring()).status, ERR_FILE_READ);
}

TEST_F(EntryPoint, NullRecordsAreRefused) {
  EXPECT_EQ(fltInfo(nullptr), ERR_NULL_ARGUMENT);
  EXPECT_EQ(fltLoad(nullptr), ERR_NULL_ARGUMENT);
  const std::wstring path = Write(NtfBuilder{GreyImage(1, 1)});
  HostFileInfo info = {};
  HostLoadFlagsRecord flags = {};
  FilterInfoContext context = {};
  context.file = -1;
  context.info = &info;
  context.load_flags = &flags;
  EXPECT_EQ(fltInfo(&context), ERR_NULL_ARGUMENT);
  context.file_name = path.c_str();
  context.info = nullptr;
  EXPECT_EQ(fltInfo(&context), ERR_NULL_ARGUMENT);
  context.info = &info;
  context.load_flags = nullptr;
  EXPECT_EQ(fltInfo(&context), ERR_NULL_ARGUMENT);
}

TEST_F(EntryPoint, FixedCanvasIsDrawnInto) {
  const std::wstring path = Write(NtfBuilder{GreyImage(2, 1, {3, 4})});
  const FileInformation information = Info(path, TAVI_LOAD_FIXED_CANVAS);
  EXPECT_EQ(information.info.width, 2048U);
  EXPECT_EQ(information.info.height, 2048U);
  LoadRequest request;
  request.flags = TAVI_LOAD_FIXED_CANVAS;
  const LoadedPicture picture = LoadFile(path, request);
  ASSERT_EQ(picture.height, 2048U);
  EXPECT_EQ(picture.At(1, 0), (Rgb{4, 4, 4}));
  EXPECT_EQ(picture.At(2, 0), (Rgb{255, 255, 255}));
  EXPECT_EQ(picture.At(2047, 2047), (Rgb{255, 255, 255}));
}

TEST_F(EntryPoint, LoadHonoursTheDestinationsDepthWhileInfoSays24) {
  const std::wstring path = Write(NtfBuilder{GreyImage(3, 2, {0, 50, 100, 150, 200, 255})});
  EXPECT_EQ(Info(path).info.bits, 24U);
  LoadRequest request;
  request.bits = 8;
  const LoadedPicture picture = LoadFile(path, request);
  ASSERT_EQ(picture.status, SUCCESS);
  ASSERT_EQ(picture.rows.size(), 2U);
  EXPECT_EQ(Bytes(picture.rows[0].pixels.begin(), picture.rows[0].pixels.begin() + 3), (Bytes{0, 50, 100}));
  EXPECT_EQ(Bytes(picture.rows[1].pixels.begin(), picture.rows[1].pixels.begin() + 3),
            (Bytes{150, 200, 255}));
}

TEST_F(EntryPoint, DepthThatNoBitmapHasIsRefused) {
  LoadRequest request;
  request.bits = 23;
  EXPECT_EQ(LoadFile(Write(NtfBuilder{GreyImage(3, 2)}), request).status, ERR_INVALID_BPP);
}

TEST_F(EntryPoint, MissingHostEntryIsAFormatErrorBeforeTheFileIsOpened) {
  const std::wstring missing = (directory() / "missing.ntf").wstring();
  for (int entry = 0; entry < 3; ++entry) {
    SCOPED_TRACE(entry);
    LoadRequest request;
    request.load_memory = entry != 0;
    request.set_load_hook = entry != 1;
    request.third_entry = entry != 2;
    request.flags = TAVI_LOAD_FIXED_CANVAS;
    const LoadedPicture picture = LoadFile(missing, request);
    EXPECT_EQ(picture.status, ERR_FILE_FORMAT);
    EXPECT_EQ(picture.load_flags, static_cast<uint32_t>(TAVI_LOAD_FIXED_CANVAS));
  }
}

TEST_F(EntryPoint, ThirdHostEntryIsNeverCalledAndStillNeeded) {
  LoadRequest request;
  request.third_entry = false;
  EXPECT_EQ(LoadFile(Write(NtfBuilder{GreyImage(3, 2)}), request).status, ERR_FILE_FORMAT);
}

TEST_F(EntryPoint, CompositeOfOneRowIsFirstAndLast) {
  const LoadedPicture picture = Load(GreyImage(4, 1));
  ASSERT_EQ(picture.rows.size(), 1U);
  EXPECT_EQ(picture.rows[0].flags, 15U);
  EXPECT_EQ(picture.rows[0].index, 0);
}

TEST_F(EntryPoint, RowsAreDeliveredFromTopToBottomWithTheirFlags) {
  const LoadedPicture picture = Load(GreyImage(1, 4, {10, 20, 30, 40}));
  ASSERT_EQ(picture.rows.size(), 4U);
  const std::vector<uint32_t> flags = {7, 3, 3, 11};
  for (size_t i = 0; i < 4; ++i) {
    EXPECT_EQ(picture.rows[i].flags, flags[i]);
    EXPECT_EQ(picture.rows[i].index, static_cast<int32_t>(i));
    EXPECT_EQ(picture.rows[i].count, 1);
    EXPECT_EQ(picture.rows[i].pixels[0], 10 * (i + 1));
  }
}

TEST_F(EntryPoint, RowCallbackThatDoesNotReturnOneEndsTheDelivery) {
  const std::wstring path = Write(NtfBuilder{GreyImage(1, 4)});
  for (const int32_t answer : {0, 2, -100}) {
    LoadRequest request;
    request.answer = [&](int32_t) { return answer; };
    LoadedPicture picture = LoadFile(path, request);
    EXPECT_EQ(picture.status, answer);
    EXPECT_EQ(picture.rows.size(), 1U);
    request.answer = [&](int32_t row) { return row == 2 ? answer : 1; };
    picture = LoadFile(path, request);
    EXPECT_EQ(picture.status, answer);
    EXPECT_EQ(picture.rows.size(), 3U);
  }
}

TEST_F(EntryPoint, SaveRefusesAnyRecord) {
  EXPECT_EQ(fltSave(nullptr), ERR_NOT_SUPPORTED);
  Bytes record(4096, 0xFF);
  EXPECT_EQ(fltSave(record.data()), ERR_NOT_SUPPORTED);
  EXPECT_EQ(record, Bytes(4096, 0xFF));
}

TEST_F(EntryPoint, OpeningAndReleasingAreAnnouncedAsDebugStrings) {
  Info(Write(NtfBuilder{GreyImage(1, 1)}));
  EXPECT_EQ(host().debug(), (std::vector<std::string>{"\nAllocateObjects\n", "\nFreeObjects\n"}));
}

TEST_F(EntryPoint, CompositeBeyondTheHostsLimitIsRefusedWithoutMemory) {
  ImageSpec image = GreyImage(1, 1);
  image.Blocks(9998, 9998, 9998, 9998);
  EXPECT_EQ(Info(Write(NtfBuilder{image})).status, SUCCESS);
  EXPECT_EQ(Load(image).status, ERR_NO_MEMORY);
}

TEST_F(EntryPoint, LargeBlockGridWithoutDataIsRefused) {
  // The composite would fit, the data are not there.
  ImageSpec image = GreyImage(1, 1);
  image.Blocks(1, 1, 4000, 4000);
  EXPECT_EQ(Load(image).status, ERR_FILE_READ);
}

// ---- Dark images ----

TEST_F(EntryPoint, DarkImagesAreBrightenedWhenAsked) {
  NtfBuilder file{GreyImage(20, 1, {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16, 17, 18, 19})};
  const std::vector<int> plain = Greys(Load(file));
  const std::vector<int> bright = Greys(Load(file, TAVI_LOAD_STRETCH_DARK));
  for (size_t i = 1; i < plain.size(); ++i) EXPECT_GT(bright[i], plain[i]) << i;
}

TEST_F(EntryPoint, ImagesWithAnythingAboveLevel19AreLeftAlone) {
  NtfBuilder file{GreyImage(3, 1, {0, 19, 20})};
  EXPECT_EQ(Greys(Load(file, TAVI_LOAD_STRETCH_DARK)), (std::vector<int>{0, 19, 20}));
  file.images[0].pixels = {20, 100, 255};
  EXPECT_EQ(Greys(Load(file, TAVI_LOAD_STRETCH_DARK)), (std::vector<int>{20, 100, 255}));
}

TEST_F(EntryPoint, EachImageIsJudgedAlone) {
  NtfBuilder file{GreyImage(1, 1, {10}), GreyImage(1, 1, {200}).At(0, 1)};
  const LoadedPicture picture = Load(file, TAVI_LOAD_STRETCH_DARK);
  EXPECT_GT(picture.At(0, 0).red, 10);
  EXPECT_EQ(picture.At(1, 0).red, 200);
}

}  // namespace
}  // namespace tavi_test

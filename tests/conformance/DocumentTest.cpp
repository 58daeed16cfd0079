// Documents held by an application: their life, their size, their picture.
#include "ConformanceTest.h"

namespace tavi_test {
namespace {

class Document : public ConformanceTest {
 protected:
  // An open document, ended with the object.
  class Handle {
   public:
    explicit Handle(const std::wstring& path) { status = Tavi_NITFCreate(&handle, path.c_str()); }
    ~Handle() {
      if (handle != nullptr) Tavi_NITFDestroy(&handle);
    }
    Handle(const Handle&) = delete;
    Handle& operator=(const Handle&) = delete;
    NitfHandle handle = nullptr;
    int32_t status = 0;
  };
};

constexpr int32_t kValid = TAVI_DOCUMENT_VALID;
constexpr int32_t kValidEmpty = TAVI_DOCUMENT_VALID | TAVI_DOCUMENT_EMPTY;

TEST_F(Document, CreatedWithoutAFileIsValidAndEmpty) {
  NitfHandle handle = nullptr;
  ASSERT_EQ(Tavi_NITFCreate(&handle, nullptr), SUCCESS);
  EXPECT_EQ(Tavi_NITFGetStatus(handle), kValidEmpty);
  uint32_t width = 0;
  uint32_t height = 0;
  EXPECT_EQ(GetActual_Width_Height(handle, &width, &height), SUCCESS);
  EXPECT_EQ(width, 2048U);
  EXPECT_EQ(height, 2048U);
  HostBitmap bitmap = {};
  ASSERT_EQ(Tavi_NtfRenderBitmap(&bitmap, handle), SUCCESS);
  Bytes row(bitmap.bytes_per_line);
  HostGetBitmapRow(&bitmap, row.data(), 2047, row.size());
  EXPECT_EQ(row, Bytes(2048 * 3, 255));
  HostFreeBitmap(&bitmap);
  EXPECT_EQ(Tavi_NITFDestroy(&handle), SUCCESS);
}

TEST_F(Document, DestroyedTwiceIsANullHandle) {
  NitfHandle handle = nullptr;
  ASSERT_EQ(Tavi_NITFCreate(&handle, nullptr), SUCCESS);
  EXPECT_EQ(Tavi_NITFDestroy(&handle), SUCCESS);
  EXPECT_EQ(handle, nullptr);
  EXPECT_EQ(Tavi_NITFDestroy(&handle), ERR_NULL_HANDLE);
  EXPECT_EQ(Tavi_NITFDestroy(nullptr), ERR_NULL_ARGUMENT);
  EXPECT_EQ(Tavi_NITFGetStatus(nullptr), ERR_NULL_HANDLE);
}

TEST_F(Document, FileThatIsNotThereIsNotFound) {
  Handle document((directory() / "missing.ntf").wstring());
  EXPECT_EQ(document.status, ERR_FILE_NOT_FOUND);
  EXPECT_EQ(document.handle, nullptr);
}

TEST_F(Document, RefusedFileLeavesNoHandle) {
  Handle document(Write(NtfBuilder{GreyImage(1, 1)}.Build().Patch("FVER", "02.00")));
  EXPECT_EQ(document.status, ERR_NOT_NITF);
  EXPECT_EQ(document.handle, nullptr);
}

TEST_F(Document, StatusTellsWhetherThereAreSegments) {
  EXPECT_EQ(Tavi_NITFGetStatus(Handle(Write(NtfBuilder{GreyImage(1, 1)})).handle), kValid);
  EXPECT_EQ(Tavi_NITFGetStatus(Handle(Write(NtfBuilder{})).handle), kValidEmpty);
  NtfBuilder extensions;
  extensions.data_extensions.emplace_back();
  EXPECT_EQ(Tavi_NITFGetStatus(Handle(Write(extensions)).handle), kValidEmpty);
  NtfBuilder texts;
  texts.texts.emplace_back();
  EXPECT_EQ(Tavi_NITFGetStatus(Handle(Write(texts)).handle), kValid);
  NtfBuilder graphics;
  graphics.graphics.emplace_back();
  EXPECT_EQ(Tavi_NITFGetStatus(Handle(Write(graphics)).handle), kValid);
}

TEST_F(Document, SizeAndPictureOfAnOpenFile) {
  Handle document(Write(NtfBuilder{GreyImage(5, 2, {1, 2, 3, 4, 5, 6, 7, 8, 9, 10}).At(1, 0)}));
  ASSERT_EQ(document.status, SUCCESS);
  uint32_t width = 0;
  uint32_t height = 0;
  EXPECT_EQ(GetActual_Width_Height(document.handle, &width, &height), SUCCESS);
  EXPECT_EQ(width, 5U);
  EXPECT_EQ(height, 3U);
  HostBitmap bitmap = {};
  ASSERT_EQ(Tavi_NtfRenderBitmap(&bitmap, document.handle), SUCCESS);
  EXPECT_EQ(bitmap.bits, 24U);
  EXPECT_EQ(bitmap.view_perspective, 4U);
  EXPECT_EQ(bitmap.flags & 1, 1);
  // The bitmap's last row is the top of the picture.
  Bytes row(bitmap.bytes_per_line);
  HostGetBitmapRow(&bitmap, row.data(), 2, row.size());
  EXPECT_EQ(row[0], 255);
  HostGetBitmapRow(&bitmap, row.data(), 1, row.size());
  EXPECT_EQ(row, (Bytes{1, 1, 1, 2, 2, 2, 3, 3, 3, 4, 4, 4, 5, 5, 5, 0}));
  HostGetBitmapRow(&bitmap, row.data(), 0, row.size());
  EXPECT_EQ(row[0], 6);
  HostFreeBitmap(&bitmap);
}

TEST_F(Document, SizeNeedsItsArguments) {
  Handle document(Write(NtfBuilder{GreyImage(1, 1)}));
  uint32_t side = 0;
  EXPECT_EQ(GetActual_Width_Height(nullptr, &side, &side), ERR_NULL_ARGUMENT);
  EXPECT_EQ(GetActual_Width_Height(document.handle, nullptr, &side), ERR_NULL_ARGUMENT);
  EXPECT_EQ(GetActual_Width_Height(document.handle, &side, nullptr), ERR_NULL_ARGUMENT);
}

HostBitmap FullBitmap() {
  HostBitmap bitmap = {};
  EXPECT_EQ(HostCreateBitmap(&bitmap, sizeof(bitmap), 1, 100, 100, 24, 1, nullptr, 1, nullptr, 0), SUCCESS);
  return bitmap;
}

TEST_F(Document, RenderingFreesThePixelsThatTheBitmapHeld) {
  Handle document(Write(NtfBuilder{GreyImage(5, 2)}));
  HostBitmap bitmap = FullBitmap();
  ASSERT_EQ(Tavi_NtfRenderBitmap(&bitmap, document.handle), SUCCESS);
  EXPECT_EQ(bitmap.width, 5U);
  HostFreeBitmap(&bitmap);  // what was there before shows as a leak at the test's end, if it is still alive
}

TEST_F(Document, RenderingFreesThePixelsAlsoWhenTheDocumentCannotBeSized) {
  // The graphic's data end before the length that the header gives.
  NtfBuilder file;
  file.graphics.push_back({.data = {1, 2, 3}});
  file.header["LS[0]"] = "009999";
  Handle document(Write(file));
  ASSERT_EQ(document.status, SUCCESS);
  HostBitmap bitmap = FullBitmap();
  EXPECT_LT(Tavi_NtfRenderBitmap(&bitmap, document.handle), SUCCESS);
  EXPECT_EQ(bitmap.flags & 1, 0);
  bitmap = FullBitmap();
  EXPECT_EQ(Tavi_NtfRenderBitmap(&bitmap, nullptr), ERR_NULL_HANDLE);
  EXPECT_EQ(bitmap.flags & 1, 0);
  EXPECT_EQ(Tavi_NtfRenderBitmap(nullptr, document.handle), ERR_INVALID_PARAMETER);
}

TEST_F(Document, RenderingThatFailsLeavesNoHalfDrawnPicture) {
  ImageSpec refused = GreyImage(2, 2).Level(2);
  refused.ic = "C2";
  Handle document(Write(NtfBuilder{GreyImage(5, 2), refused}));
  HostBitmap bitmap = {};
  EXPECT_EQ(Tavi_NtfRenderBitmap(&bitmap, document.handle), ERR_NOT_SUPPORTED);
  EXPECT_EQ(bitmap.flags & 1, 0);
}

TEST_F(Document, DrawingOnTheCallersOwnBitmap) {
  Handle document(Write(NtfBuilder{GreyImage(2, 1, {50, 60}).At(1, 1)}));
  HostBitmap bitmap = {};
  ASSERT_EQ(HostCreateBitmap(&bitmap, sizeof(bitmap), 1, 4, 3, 24, 1, nullptr, 1, nullptr, 0), SUCCESS);
  HostDrawingContext context = HostCreateBitmapDC(&bitmap);
  ASSERT_NE(context, nullptr);
  EXPECT_EQ(Tavi_NitfDrawObjects(nullptr, context, &bitmap, document.handle), SUCCESS);
  EXPECT_EQ(Tavi_NitfDrawObjects(nullptr, context, nullptr, document.handle), SUCCESS);
  HostDeleteBitmapDC(context);
  Bytes row(bitmap.bytes_per_line);
  HostGetBitmapRow(&bitmap, row.data(), 1, row.size());
  EXPECT_EQ(row, (Bytes{0, 0, 0, 50, 50, 50, 60, 60, 60, 0, 0, 0}));
  EXPECT_EQ(Tavi_NitfDrawObjects(nullptr, nullptr, &bitmap, document.handle), ERR_NULL_ARGUMENT);
  HostFreeBitmap(&bitmap);
}

TEST_F(Document, TextsOnlyDrawNothingAndSucceed) {
  NtfBuilder file;
  file.texts.push_back({.data = {'x'}});
  Handle document(Write(file));
  HostBitmap bitmap = {};
  EXPECT_EQ(Tavi_NtfRenderBitmap(&bitmap, document.handle), SUCCESS);
  EXPECT_EQ(bitmap.width, 2U);
  EXPECT_EQ(bitmap.height, 2U);
  HostFreeBitmap(&bitmap);
}

TEST_F(Document, TwoDocumentsOfOneFile) {
  const std::wstring path = Write(NtfBuilder{GreyImage(2, 2)});
  Handle first(path);
  Handle second(path);
  ASSERT_EQ(first.status, SUCCESS);
  ASSERT_EQ(second.status, SUCCESS);
  HostBitmap a = {};
  HostBitmap b = {};
  EXPECT_EQ(Tavi_NtfRenderBitmap(&a, first.handle), SUCCESS);
  EXPECT_EQ(Tavi_NtfRenderBitmap(&b, second.handle), SUCCESS);
  HostFreeBitmap(&a);
  HostFreeBitmap(&b);
}

}  // namespace
}  // namespace tavi_test

// Documents as handles: how they come about, what they say of themselves, how they end.
#if defined(__SANITIZE_ADDRESS__)
#include <sanitizer/lsan_interface.h>
#endif

#include <filesystem>
#include <fstream>
#include <optional>

#include "DocumentTest.h"
#include "FaultHost.h"

namespace tavi::documents {
namespace {

using tavi::faults::Watch;
using tavi_test::GreyImage;
using tavi_test::HostCapture;
using tavi_test::NtfBuilder;

// A handle that no document has.
NitfHandle Rubbish() {
  static int nothing = 0;
  return reinterpret_cast<NitfHandle>(&nothing);
}

class Handles : public DocumentTest {};

TEST_F(Handles, ANewDocumentIsValidAndEmpty) {
  NitfHandle handle = Rubbish();
  ASSERT_EQ(Tavi_NITFCreate(&handle, nullptr), SUCCESS);
  ASSERT_NE(handle, nullptr);
  EXPECT_EQ(Tavi_NITFGetStatus(handle), 3);
  EXPECT_EQ(Tavi_NITFDestroy(&handle), SUCCESS);
  EXPECT_EQ(handle, nullptr);
}

TEST_F(Handles, DestroyingTwiceIsRefusedTheSecondTime) {
  for (const bool from_file : {false, true}) {
    const std::wstring path = Write(NtfBuilder{GreyImage(2, 2)});
    NitfHandle handle = nullptr;
    ASSERT_EQ(Tavi_NITFCreate(&handle, from_file ? path.c_str() : nullptr), SUCCESS);
    EXPECT_EQ(Tavi_NITFDestroy(&handle), SUCCESS);
    EXPECT_EQ(Tavi_NITFDestroy(&handle), ERR_NULL_HANDLE);
    EXPECT_EQ(handle, nullptr);
  }
}

TEST_F(Handles, NullArgumentsAreRefused) {
  EXPECT_EQ(Tavi_NITFDestroy(nullptr), ERR_NULL_ARGUMENT);
  EXPECT_EQ(Tavi_NITFGetStatus(nullptr), ERR_NULL_HANDLE);
}

TEST_F(Handles, ADocumentWithSegmentsIsNotEmpty) {
  EXPECT_EQ(DocumentStatus(NtfBuilder{GreyImage(2, 2)}), TAVI_DOCUMENT_VALID);
  NtfBuilder text;
  text.texts.resize(1);
  EXPECT_EQ(DocumentStatus(text), TAVI_DOCUMENT_VALID);
  NtfBuilder graphic;
  graphic.graphics.resize(1);
  EXPECT_EQ(DocumentStatus(graphic), TAVI_DOCUMENT_VALID);
}

TEST_F(Handles, ExtensionsDoNotCountAsSegments) {
  NtfBuilder extensions;
  extensions.data_extensions.resize(2);
  extensions.reserved.resize(3);
  extensions.reserved[1] = {{'R', 'E'}, {1, 2, 3}};
  EXPECT_EQ(DocumentStatus(extensions), TAVI_DOCUMENT_VALID | TAVI_DOCUMENT_EMPTY);
}

TEST_F(Handles, AFileWithoutSegmentsOpens) {
  EXPECT_EQ(DocumentStatus(NtfBuilder()), TAVI_DOCUMENT_VALID | TAVI_DOCUMENT_EMPTY);
}

TEST_F(Handles, AMissingFileIsReportedAndLeavesNoHandle) {
  NitfHandle handle = Rubbish();
  EXPECT_EQ(Tavi_NITFCreate(&handle, (directory() / "missing.ntf").wstring().c_str()), ERR_FILE_NOT_FOUND);
  EXPECT_EQ(handle, nullptr);
  handle = Rubbish();
  EXPECT_EQ(Tavi_NITFCreate(&handle, (directory() / "no" / "folder.ntf").wstring().c_str()),
            ERR_FILE_NOT_FOUND);
  EXPECT_EQ(handle, nullptr);
  handle = Rubbish();
  EXPECT_EQ(Tavi_NITFCreate(&handle, L""), ERR_FILE_NOT_FOUND);
  EXPECT_EQ(handle, nullptr);
}

// A folder exists, so it is found; it cannot be opened, which shows at the first read.
TEST_F(Handles, AFolderIsReportedByTheFirstRead) {
  NitfHandle handle = Rubbish();
  EXPECT_EQ(Tavi_NITFCreate(&handle, directory().wstring().c_str()), ERR_FILE_READ);
  EXPECT_EQ(handle, nullptr);
}

// The filter entry points open without looking for the file first.
TEST_F(Handles, TheFilterReportsAMissingFileByTheFirstRead) {
  const std::wstring path = (directory() / "missing.ntf").wstring();
  EXPECT_EQ(tavi_test::Info(path).status, ERR_FILE_READ);
  EXPECT_EQ(tavi_test::LoadFile(path).status, ERR_FILE_READ);
}

TEST_F(Handles, ARefusedFileLeavesNoHandle) {
  NtfBuilder file;
  file.header["FHDR"] = "NOPE";
  NitfHandle handle = Rubbish();
  EXPECT_EQ(Tavi_NITFCreate(&handle, Write(file).c_str()), ERR_FILE_FORMAT);
  EXPECT_EQ(handle, nullptr);
}

// Wide names go to the file system as UTF-8, whatever the locale.
TEST_F(Handles, NamesOutsideAsciiOpen) {
  const std::filesystem::path folder = directory() / u8"Stra\u00DFe \u6771\u4EAC";
  std::filesystem::create_directory(folder);
  const tavi_test::Bytes bytes = NtfBuilder{GreyImage(3, 2)}.Build().bytes;
  std::ofstream(folder / "file.ntf", std::ios::binary)
      .write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
  const std::wstring path = directory().wstring() + L"/Stra\u00DFe \u6771\u4EAC/file.ntf";
  const Document document(path.c_str());
  EXPECT_EQ(document.open, SUCCESS);
  EXPECT_EQ(tavi_test::Info(path).info.width, 3U);
}

// The file stays open as long as its document; an empty document has none to close.
TEST_F(Handles, OnlyADocumentWithAFileClosesOne) {
  NitfHandle handle = nullptr;
  {
    const Watch watch;
    ASSERT_EQ(Tavi_NITFCreate(&handle, nullptr), SUCCESS);
    ASSERT_EQ(Tavi_NITFDestroy(&handle), SUCCESS);
    EXPECT_EQ(watch.demand().files_closed, 0U);
  }
  const std::wstring path = Write(NtfBuilder{GreyImage(2, 2)});
  {
    const Watch watch;
    ASSERT_EQ(Tavi_NITFCreate(&handle, path.c_str()), SUCCESS);
    EXPECT_EQ(watch.demand().files_closed, 0U);
    ASSERT_EQ(Tavi_NITFDestroy(&handle), SUCCESS);
    EXPECT_EQ(watch.demand().files_closed, 1U);
  }
}

TEST_F(Handles, TheListsAreAnnouncedInTheDebugOutput) {
  NitfHandle handle = nullptr;
  ASSERT_EQ(Tavi_NITFCreate(&handle, Write(NtfBuilder()).c_str()), SUCCESS);
  EXPECT_EQ(host().debug(), std::vector<std::string>{"\nAllocateObjects\n"});
  ASSERT_EQ(Tavi_NITFDestroy(&handle), SUCCESS);
  EXPECT_EQ(host().debug().size(), 2U);
  EXPECT_EQ(host().debug().back(), "\nFreeObjects\n");
}

// Two documents of one file at a time do not disturb each other.
TEST_F(Handles, DocumentsAreIndependent) {
  const std::wstring path = Write(NtfBuilder{GreyImage(5, 4)});
  const Document first(path.c_str());
  std::optional<Document> second(std::in_place, path.c_str());
  ASSERT_EQ(first.open, SUCCESS);
  ASSERT_EQ(second->open, SUCCESS);
  EXPECT_NE(first.handle, second->handle);
  second.reset();
  uint32_t width = 0;
  uint32_t height = 0;
  EXPECT_EQ(GetActual_Width_Height(first.handle, &width, &height), SUCCESS);
  EXPECT_EQ(width, 5U);
  EXPECT_EQ(height, 4U);
}

// A missing place for the handle is an argument error that leaves one document behind, by design; so this
// test keeps no account of live objects.
TEST(HandlesWithoutAnOwner, ANullPlaceForTheHandleIsReportedAsNoMemory) {
#if defined(__SANITIZE_ADDRESS__)
  const __lsan::ScopedDisabler expected_leak;
#endif
  const HostCapture capture;
  const uint64_t alive = HostLiveObjects();
  EXPECT_EQ(Tavi_NITFCreate(nullptr, nullptr), ERR_NO_MEMORY);
  EXPECT_GT(HostLiveObjects(), alive);
  EXPECT_EQ(Tavi_NITFCreate(nullptr, L"/no/such/file.ntf"), ERR_NO_MEMORY) << "the file is not looked for";
}

}  // namespace
}  // namespace tavi::documents

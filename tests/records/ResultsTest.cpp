// What the getters return for arguments that lead nowhere; such a call changes nothing.
#include <cstring>

#include "RecordsTest.h"

namespace tavi::records {
namespace {

class GetterResults : public RecordsTest {
 protected:
  // Runs the getter on a record of rubbish, which has to stay as it is.
  template <class Record>
  int32_t Untouched(NitfHandle handle, uint32_t index) const {
    Record record;
    std::memset(&record, kGuardByte, sizeof record);
    const int32_t result = Get(handle, index, &record);
    EXPECT_EQ(BytesOf(&record, 0, sizeof record), std::string(sizeof record, static_cast<char>(kGuardByte)));
    return result;
  }
};

TEST_F(GetterResults, ANullHandleGivesZero) {
  EXPECT_EQ(Untouched<NitfHeaderInfo>(nullptr, 0), 0);
  EXPECT_EQ(Untouched<NitfImageHeaderInfo>(nullptr, 0), 0);
  EXPECT_EQ(Untouched<NitfGraphicHeaderInfo>(nullptr, 0), 0);
  EXPECT_EQ(Untouched<NitfTextHeaderInfo>(nullptr, 0), 0);
}

TEST_F(GetterResults, ANullHandleIsTestedBeforeTheRecord) {
  EXPECT_EQ(Tavi_NITFGetNITFHeader(nullptr, nullptr), 0);
  EXPECT_EQ(Tavi_NITFGetImageHeader(nullptr, 0, nullptr), 0);
  EXPECT_EQ(Tavi_NITFGetGraphicHeader(nullptr, 0, nullptr), 0);
  EXPECT_EQ(Tavi_NITFGetTextHeader(nullptr, 0, nullptr), 0);
}

TEST_F(GetterResults, CountsOfANullHandleAreZero) {
  EXPECT_EQ(Tavi_NITFGetImageHeaderCount(nullptr), 0);
  EXPECT_EQ(Tavi_NITFGetGraphicHeaderCount(nullptr), 0);
  EXPECT_EQ(Tavi_NITFGetTextHeaderCount(nullptr), 0);
}

TEST_F(GetterResults, ANullRecordIsABadIndexButForImages) {
  const Document file(Write(DistinctFile()));
  const Document empty(nullptr);
  for (NitfHandle handle : {file.handle, empty.handle}) {
    for (const uint32_t index : {0U, 1000U}) {
      EXPECT_EQ(Tavi_NITFGetNITFHeader(handle, nullptr), 87);
      EXPECT_EQ(Tavi_NITFGetImageHeader(handle, index, nullptr), ERR_INVALID_PARAMETER);
      EXPECT_EQ(Tavi_NITFGetGraphicHeader(handle, index, nullptr), 87);
      EXPECT_EQ(Tavi_NITFGetTextHeader(handle, index, nullptr), 87);
    }
  }
}

TEST_F(GetterResults, AnIndexBeyondTheListIsReported) {
  const Document document(Write(DistinctFile()));  // 2 images, 3 graphics, 4 texts
  for (const uint32_t beyond : {0U, 1U, 995U, 0x7FFFFFFFU - 4, 0x80000000U - 4, 0xFFFFFFFFU - 4}) {
    EXPECT_EQ(Untouched<NitfImageHeaderInfo>(document.handle, 2 + beyond), 87);
    EXPECT_EQ(Untouched<NitfGraphicHeaderInfo>(document.handle, 3 + beyond), 87);
    EXPECT_EQ(Untouched<NitfTextHeaderInfo>(document.handle, 4 + beyond), 87);
  }
}

TEST_F(GetterResults, AnEmptyListHasNoIndex) {
  const Document empty(nullptr);
  EXPECT_EQ(Untouched<NitfImageHeaderInfo>(empty.handle, 0), 87);
  EXPECT_EQ(Untouched<NitfGraphicHeaderInfo>(empty.handle, 0), 87);
  EXPECT_EQ(Untouched<NitfTextHeaderInfo>(empty.handle, 0), 87);
}

// Reserved and data extensions have neither a count nor a record.
TEST_F(GetterResults, ExtensionsAreNotCounted) {
  tavi_test::NtfBuilder file;
  file.data_extensions.resize(2);
  file.reserved.resize(2);
  const Document document(Write(file));
  ASSERT_EQ(document.open, SUCCESS);
  EXPECT_EQ(Tavi_NITFGetImageHeaderCount(document.handle), 0);
  EXPECT_EQ(Tavi_NITFGetGraphicHeaderCount(document.handle), 0);
  EXPECT_EQ(Tavi_NITFGetTextHeaderCount(document.handle), 0);
}

}  // namespace
}  // namespace tavi::records

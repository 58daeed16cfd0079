// The free operations: each owned pointer of a record is freed and set to null, once, and nothing else of it
// changes.
#include <cstring>
#include <vector>

#include "RecordsTest.h"

namespace tavi::records {
namespace {

uint8_t* Block(uint64_t size = 5) {
  return static_cast<uint8_t*>(HostAllocMem(size, 1, __LINE__, nullptr));
}

// A list of `count` texts; those whose number is in `missing` are null.
char** Texts(uint32_t count, uint32_t missing = UINT32_MAX) {
  auto** list = static_cast<char**>(HostAllocMem(count, sizeof(char*), __LINE__, nullptr));
  for (uint32_t i = 0; i < count; ++i) {
    list[i] = i == missing ? nullptr : reinterpret_cast<char*>(Block());
  }
  return list;
}

template <class Value>
void Set(void* record, size_t offset, Value value) {
  std::memcpy(static_cast<uint8_t*>(record) + offset, &value, sizeof value);
}

class FreeOperations : public RecordsTest {
 protected:
  // A record whose numbers and dates are rubbish and whose owned pointers each have a block: freed, the
  // blocks are gone and the pointers null, and all else is as before.
  template <class Record>
  void ExpectAllFreed(const std::vector<size_t>& owned, const std::vector<size_t>& counts) const {
    const uint64_t alive = HostLiveObjects();
    Guarded<Record> record;
    std::memset(record.get(), 0x5A, sizeof(Record));
    for (const size_t count : counts) {
      Set(record.get(), count, uint32_t{0});
    }
    std::string expected = BytesOf(record.get(), 0, sizeof(Record));
    for (const size_t offset : owned) {
      Set(record.get(), offset, Block());
      expected.replace(offset, 8, std::string(8, '\0'));
    }
    EXPECT_EQ(HostLiveObjects(), alive + owned.size());
    for (int round = 0; round < 2; ++round) {
      EXPECT_EQ(Free(record.get()), SUCCESS);
      EXPECT_EQ(HostLiveObjects(), alive);
      EXPECT_EQ(BytesOf(record.get(), 0, sizeof(Record)), expected);
    }
    std::memset(record.get(), 0, sizeof(Record));
  }

  template <class Record>
  void ExpectNothingFreed() const {
    const uint64_t alive = HostLiveObjects();
    Guarded<Record> record;
    EXPECT_EQ(Free(record.get()), SUCCESS);
    EXPECT_EQ(HostLiveObjects(), alive);
    EXPECT_EQ(BytesOf(record.get(), 0, sizeof(Record)), std::string(sizeof(Record), '\0'));
  }

  // Frees a filled record twice; it owned something before the first time only.
  template <class Record>
  void ExpectFreedOnce(NitfHandle handle) const {
    const uint64_t alive = HostLiveObjects();
    Guarded<Record> record;
    ASSERT_EQ(Get(handle, 0, record.get()), SUCCESS);
    EXPECT_GT(HostLiveObjects(), alive);
    for (int round = 0; round < 2; ++round) {
      EXPECT_EQ(Free(record.get()), SUCCESS);
      EXPECT_EQ(HostLiveObjects(), alive);
    }
  }
};

TEST_F(FreeOperations, AZeroedRecordFreesNothing) {
  ExpectNothingFreed<NitfHeaderInfo>();
  ExpectNothingFreed<NitfImageHeaderInfo>();
  ExpectNothingFreed<NitfGraphicHeaderInfo>();
  ExpectNothingFreed<NitfTextHeaderInfo>();
}

TEST_F(FreeOperations, ANullRecordIsReported) {
  EXPECT_EQ(Tavi_NITFFreeNITFHeader(nullptr), ERR_NULL_ARGUMENT);
  EXPECT_EQ(Tavi_NITFFreeImageHeader(nullptr), ERR_NULL_ARGUMENT);
  EXPECT_EQ(Tavi_NITFFreeGraphicHeader(nullptr), ERR_NULL_ARGUMENT);
  EXPECT_EQ(Tavi_NITFFreeTextHeader(nullptr), ERR_NULL_ARGUMENT);
}

// Also the pointers that no getter fills.
TEST_F(FreeOperations, EveryPointerOfAFileHeaderIsFreed) {
#define AT(NAME) offsetof(NitfHeaderInfo, NAME)
  ExpectAllFreed<NitfHeaderInfo>(
      {AT(FHDR),   AT(STYPE),  AT(OSTAID), AT(FTITLE), AT(FSCLAS), AT(FSCLSY), AT(FSCODE), AT(FSCTLH),
       AT(FSREL),  AT(FSDCTP), AT(FSDCXM), AT(FSDG),   AT(FSCLTX), AT(FSCATP), AT(FSCAUT), AT(FSCRSN),
       AT(FSCTLN), AT(ONAME),  AT(OPHONE), AT(LISH),   AT(LI),     AT(LSSH),   AT(LS),     AT(LTSH),
       AT(LT),     AT(LDSH),   AT(LD),     AT(LRESH),  AT(LRE),    AT(UDHD),   AT(XHD)},
      {});
#undef AT
}

// Without comments and bands their lists are pointers like others: the list of comments is freed, the band
// lists are not looked at.
TEST_F(FreeOperations, EveryPointerOfAnImageIsFreed) {
#define AT(NAME) offsetof(NitfImageHeaderInfo, NAME)
  ExpectAllFreed<NitfImageHeaderInfo>(
      {AT(IM),     AT(IID1),   AT(TGTID),  AT(IID2),  AT(ISCLAS), AT(ISCLSY), AT(ISCODE), AT(ISCTLH),
       AT(ISREL),  AT(ISDCTP), AT(ISDCXM), AT(ISDG),  AT(ISCLTX), AT(ISCATP), AT(ISCAUT), AT(ISCRSN),
       AT(ISCTLN), AT(ISORCE), AT(PVTYPE), AT(IREP),  AT(ICAT),   AT(PJUST),  AT(ICORDS), AT(IGEOLO),
       AT(ICOM),   AT(IC),     AT(COMRAT), AT(IMODE), AT(IMAG),   AT(UDID),   AT(IXSHD),  AT(TPXCD)},
      {AT(NICOM), AT(NBANDS)});
#undef AT
}

TEST_F(FreeOperations, EveryPointerOfAGraphicIsFreed) {
#define AT(NAME) offsetof(NitfGraphicHeaderInfo, NAME)
  ExpectAllFreed<NitfGraphicHeaderInfo>(
      {AT(SY), AT(SID), AT(SNAME), AT(SSCLAS), AT(SSCLSY), AT(SSCODE), AT(SSCTLH), AT(SSREL), AT(SSDCTP),
       AT(SSDCXM), AT(SSDG), AT(SSCLTX), AT(SSCATP), AT(SSCAUT), AT(SSCRSN), AT(SSCTLN), AT(SFMT), AT(SCOLOR),
       AT(SXSHD)},
      {});
#undef AT
}

TEST_F(FreeOperations, EveryPointerOfATextIsFreed) {
#define AT(NAME) offsetof(NitfTextHeaderInfo, NAME)
  ExpectAllFreed<NitfTextHeaderInfo>({AT(TE), AT(TEXTID), AT(TXTITL), AT(TSCLAS), AT(TSCLSY), AT(TSCODE),
                                      AT(TSCTLH), AT(TSREL), AT(TSDCTP), AT(TSDCXM), AT(TSDG), AT(TSCLTX),
                                      AT(TSCATP), AT(TSCAUT), AT(TSCRSN), AT(TSCTLN), AT(TXTFMT), AT(TXSHD)},
                                     {});
#undef AT
}

// Entries of the length lists are numbers, whatever they look like.
TEST_F(FreeOperations, EntriesOfLengthListsAreNotVisited) {
  const uint64_t alive = HostLiveObjects();
  Guarded<NitfHeaderInfo> record;
  const size_t lists[] = {offsetof(NitfHeaderInfo, LISH),  offsetof(NitfHeaderInfo, LI),
                          offsetof(NitfHeaderInfo, LSSH),  offsetof(NitfHeaderInfo, LS),
                          offsetof(NitfHeaderInfo, LTSH),  offsetof(NitfHeaderInfo, LT),
                          offsetof(NitfHeaderInfo, LDSH),  offsetof(NitfHeaderInfo, LD),
                          offsetof(NitfHeaderInfo, LRESH), offsetof(NitfHeaderInfo, LRE)};
  for (const size_t list : lists) {
    uint8_t* numbers = Block(3 * sizeof(uint32_t));
    std::memset(numbers, 0xF1, 3 * sizeof(uint32_t));
    Set(record.get(), list, numbers);
  }
  record->NUMI = record->NUMS = record->NUMT = record->NUMDES = record->NUMRES = 3;
  EXPECT_EQ(Free(record.get()), SUCCESS);
  EXPECT_EQ(HostLiveObjects(), alive);
  EXPECT_EQ(+record->NUMDES, 3U);
}

TEST_F(FreeOperations, CommentsAreFreedWithTheirList) {
  const uint64_t alive = HostLiveObjects();
  Guarded<NitfImageHeaderInfo> record;
  record->NICOM = 3;
  record->ICOM = Texts(3, 1);
  EXPECT_EQ(Free(record.get()), SUCCESS);
  EXPECT_EQ(HostLiveObjects(), alive);
  EXPECT_EQ(+record->ICOM, nullptr);
  EXPECT_EQ(+record->NICOM, 3U);
  EXPECT_EQ(Free(record.get()), SUCCESS) << "without a list the number of comments does not matter";
}

TEST_F(FreeOperations, WithoutCommentsOnlyTheirListIsFreed) {
  const uint64_t alive = HostLiveObjects();
  Guarded<NitfImageHeaderInfo> record;
  record->ICOM = Texts(1);
  char* const text = record->ICOM[0];
  EXPECT_EQ(Free(record.get()), SUCCESS);
  EXPECT_EQ(+record->ICOM, nullptr);
  EXPECT_EQ(HostLiveObjects(), alive + 1);
  HostFreeMem(text, __LINE__, nullptr);
}

TEST_F(FreeOperations, BandListsAreFreedWithTheirTexts) {
  const uint64_t alive = HostLiveObjects();
  Guarded<NitfImageHeaderInfo> record;
  record->NBANDS = 4;
  record->IREPBAND = Texts(4, 0);
  record->ISUBCAT = Texts(4, 1);
  record->IFC = Texts(4, 2);
  record->IMFLT = Texts(4, 3);
  for (int round = 0; round < 2; ++round) {
    EXPECT_EQ(Free(record.get()), SUCCESS);
    EXPECT_EQ(HostLiveObjects(), alive);
    for (char** list : {+record->IREPBAND, +record->ISUBCAT, +record->IFC, +record->IMFLT}) {
      EXPECT_EQ(list, nullptr);
    }
  }
}

TEST_F(FreeOperations, MissingBandListsAreSteppedOver) {
  const uint64_t alive = HostLiveObjects();
  Guarded<NitfImageHeaderInfo> record;
  record->NBANDS = 2;
  record->IREPBAND = Texts(2);
  record->IMFLT = Texts(2);
  EXPECT_EQ(Free(record.get()), SUCCESS);
  EXPECT_EQ(HostLiveObjects(), alive);
}

TEST_F(FreeOperations, WithoutIrepbandTheOtherListsGoAndTheirTextsStay) {
  const uint64_t alive = HostLiveObjects();
  Guarded<NitfImageHeaderInfo> record;
  record->NBANDS = 1;
  record->ISUBCAT = Texts(1);
  record->IFC = Texts(1);
  record->IMFLT = Texts(1);
  char* const texts[] = {record->ISUBCAT[0], record->IFC[0], record->IMFLT[0]};
  EXPECT_EQ(Free(record.get()), SUCCESS);
  EXPECT_EQ(HostLiveObjects(), alive + 3);
  for (char** list : {+record->ISUBCAT, +record->IFC, +record->IMFLT}) {
    EXPECT_EQ(list, nullptr);
  }
  for (char* text : texts) {
    HostFreeMem(text, __LINE__, nullptr);
  }
}

TEST_F(FreeOperations, WithoutBandsTheirListsAreNotLookedAt) {
  const uint64_t alive = HostLiveObjects();
  Guarded<NitfImageHeaderInfo> record;
  char** const list = Texts(1);
  record->IREPBAND = list;
  record->IMFLT = list;
  EXPECT_EQ(Free(record.get()), SUCCESS);
  EXPECT_EQ(+record->IREPBAND, list);
  EXPECT_EQ(+record->IMFLT, list);
  EXPECT_EQ(HostLiveObjects(), alive + 2);
  record->IMFLT = nullptr;
  record->NBANDS = 1;
  EXPECT_EQ(Free(record.get()), SUCCESS);
  EXPECT_EQ(HostLiveObjects(), alive);
}

// What a getter fills has bands and no lists of them: the walk over the bands finds nothing.
TEST_F(FreeOperations, AFilledImageRecordHasNoBandLists) {
  const Document document(Write(DistinctFile()));
  Guarded<NitfImageHeaderInfo> record;
  ASSERT_EQ(Get(document.handle, 1, record.get()), SUCCESS);
  EXPECT_EQ(+record->NBANDS, 3U);
  for (char** list : {+record->IREPBAND, +record->ISUBCAT, +record->IFC, +record->IMFLT}) {
    EXPECT_EQ(list, nullptr);
  }
  EXPECT_EQ(Free(record.get()), SUCCESS);
}

TEST_F(FreeOperations, AFilledRecordIsFreedOnce) {
  tavi_test::NtfBuilder file = DistinctFile();
  std::swap(file.images[0], file.images[1]);
  std::swap(file.graphics[0], file.graphics[2]);
  std::swap(file.texts[0], file.texts[3]);
  const Document document(Write(file));
  ASSERT_EQ(document.open, SUCCESS);
  ExpectFreedOnce<NitfHeaderInfo>(document.handle);
  ExpectFreedOnce<NitfImageHeaderInfo>(document.handle);
  ExpectFreedOnce<NitfGraphicHeaderInfo>(document.handle);
  ExpectFreedOnce<NitfTextHeaderInfo>(document.handle);
}

TEST_F(FreeOperations, NumbersAndDatesStay) {
  const Document document(Write(DistinctFile()));
  Guarded<NitfTextHeaderInfo> record;
  ASSERT_EQ(Get(document.handle, 3, record.get()), SUCCESS);
  EXPECT_EQ(Free(record.get()), SUCCESS);
  EXPECT_EQ(+record->TE, nullptr);
  EXPECT_EQ(+record->TXTALVL, 31U);
  EXPECT_EQ(Chars(record->TXTDT), "20230506070809");
  EXPECT_EQ(+record->TXSHDL, 28U);
}

// A record holds copies: it outlives its document.
TEST_F(FreeOperations, ARecordOutlivesItsDocument) {
  Document document(Write(DistinctFile()));
  Guarded<NitfHeaderInfo> header;
  Guarded<NitfImageHeaderInfo> image;
  Guarded<NitfGraphicHeaderInfo> graphic;
  Guarded<NitfTextHeaderInfo> text;
  ASSERT_EQ(Get(document.handle, 0, header.get()), SUCCESS);
  ASSERT_EQ(Get(document.handle, 1, image.get()), SUCCESS);
  ASSERT_EQ(Get(document.handle, 2, graphic.get()), SUCCESS);
  ASSERT_EQ(Get(document.handle, 3, text.get()), SUCCESS);
  document.Close();
  EXPECT_EQ(Text(header->FTITLE), Fill("FTITLE", 80));
  EXPECT_EQ(header->LT[3], 41U);
  EXPECT_EQ(Text(image->ICOM[1]), Fill("ICOM1", 80));
  EXPECT_EQ(BytesAt(image->TPXCD, 3), "\xC1\xC2\xC3");
  EXPECT_EQ(BytesAt(graphic->SXSHD, 6), "SXSTRE");
  EXPECT_EQ(BytesAt(text->TXSHD, 6), "TXSTRE");
  EXPECT_EQ(Free(header.get()), SUCCESS);
  EXPECT_EQ(Free(image.get()), SUCCESS);
  EXPECT_EQ(Free(graphic.get()), SUCCESS);
  EXPECT_EQ(Free(text.get()), SUCCESS);
}

}  // namespace
}  // namespace tavi::records

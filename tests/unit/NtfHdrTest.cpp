// The file header's table, the state of a new header, its setters and the growth of its length lists.
#include "NtfHdr.h"

#include <gtest/gtest.h>

#include <new>

#include "NtfHdrFacts.h"
#include "UnitTest.h"

namespace {

using tavi::Layout;
using tavi::LengthList;
using tavi::NtfHdr;
using namespace unit;

class NtfHdrTest : public UnitTest {};

TEST_F(NtfHdrTest, FieldsStandInFileOrderWithTheirWidthsIn21) {
  EXPECT_EQ(Sequence(tavi::FileHeaderRows(), Layout::kNitf21), Sequence(kFileHeaderFacts, Layout::kNitf21));
}

TEST_F(NtfHdrTest, FieldsStandInFileOrderWithTheirWidthsIn20) {
  EXPECT_EQ(Sequence(tavi::FileHeaderRows(), Layout::kNitf20), Sequence(kFileHeaderFacts, Layout::kNitf20));
}

TEST_F(NtfHdrTest, BuffersHoldTheLargerWidthAndOneByte) {
  ExpectBufferSizes(kFileHeaderFacts);
  ExpectNoOtherBuffers(kFileHeaderFacts, sizeof(NtfHdr::Texts));
}

// A text of the security block runs on into the next buffer, so that their order can be seen from outside.
TEST_F(NtfHdrTest, BuffersLieOneBehindTheOther) {
  const char* const kOrder[] = {
      "FHDR",   "FVER",   "CLEVEL", "STYPE",  "OSTAID", "FDT",    "FTITLE", "FSCLAS", "FSCLSY",
      "FSCODE", "FSCTLH", "FSREL",  "FSDCTP", "FSDCDT", "FSDCXM", "FSDG",   "FSDGDT", "FSCLTX",
      "FSCATP", "FSCAUT", "FSCRSN", "FSSRDT", "FSDWNG", "FSDEVT", "FSCTLN", "FSCOP",  "FSCPYS",
      "ENCRYP", "FBKGC",  "ONAME",  "OPHONE", "FL",     "HL",     "NUMI",   "NUMS",   "NUMDES",
      "NUMX",   "NUMT",   "NUML",   "NUMRES", "UDHDL",  "UDHOFL", "XHDL",   "XHDLOFL"};
  size_t offset = 0;
  for (const char* name : kOrder) {
    for (const FieldFact& fact : kFileHeaderFacts) {
      if (std::string_view(fact.name) != name) continue;
      EXPECT_EQ(fact.offset, offset) << name;
      offset += fact.buffer;
    }
  }
  EXPECT_EQ(offset, sizeof(NtfHdr::Texts));
}

// Made in rubbish, so that a byte that the constructor forgets shows.
template <class Check>
void WithNewHeader(Check check) {
  alignas(NtfHdr) unsigned char memory[sizeof(NtfHdr)];
  std::memset(memory, 0x5A, sizeof memory);
  auto* header = new (memory) NtfHdr;
  check(*header);
  header->~NtfHdr();
}

TEST_F(NtfHdrTest, NewHeaderHoldsTheDefaultTextsByteByByte) {
  WithNewHeader([](const NtfHdr& header) {
    EXPECT_EQ(Differences(kFileHeaderFacts, DefaultTexts(kFileHeaderFacts, sizeof header.Text),
                          BytesOf(header.Text)),
              "");
  });
}

TEST_F(NtfHdrTest, SecurityTextsAreBlankToTheLastByte) {
  WithNewHeader([](const NtfHdr& header) {
    // From FSCLSY to FSCTLN there is no NUL; the first one stands at FSCOP.
    const std::string texts = BytesOf(header.Text);
    const size_t first = offsetof(NtfHdr::Texts, FSCLSY);
    EXPECT_EQ(texts.find('\0', first), offsetof(NtfHdr::Texts, FSCOP));
    EXPECT_EQ(texts.find_first_not_of(' ', first), offsetof(NtfHdr::Texts, FSCOP));
  });
}

TEST_F(NtfHdrTest, NewHeaderHasNoNumbersAndNoLists) {
  WithNewHeader([](const NtfHdr& h) {
    EXPECT_EQ(h.ClevelValue, 3U);
    for (const uint32_t number :
         {h.Valid, h.BackgroundValue, h.FlValue, h.HlRead, h.NumImages, h.NumGraphics, h.NumLabels,
          h.NumTexts, h.NumDes, h.NumRes, h.UserTreCount, h.ExtendedTreCount}) {
      EXPECT_EQ(number, 0U);
    }
    for (const LengthList* list : {&h.LishRead, &h.LishWork, &h.LiRead, &h.LiWork, &h.LsshRead, &h.LsshWork,
                                   &h.LsRead, &h.LsWork, &h.LlshList, &h.LlRead, &h.LlWork, &h.LtshList,
                                   &h.LtRead, &h.LtWork, &h.LdshList, &h.LdList, &h.LreshList, &h.LreList}) {
      EXPECT_FALSE(list->exists());
    }
    EXPECT_FALSE(h.UDHD.exists());
    EXPECT_FALSE(h.XHD.exists());
    EXPECT_EQ(h.UserTreCursor, nullptr);
    EXPECT_EQ(h.ExtendedTreCursor, nullptr);
  });
}

TEST_F(NtfHdrTest, SettersTakeTheWholeBufferAndNoMore) {
  NtfHdr header;
  ExpectSetters(kFileHeaderFacts, header, tavi::FileHeaderRows());
}

TEST_F(NtfHdrTest, NineteenFieldsHaveASetter) {
  const std::set<std::string> fields = FieldsWithASetter(kFileHeaderFacts);
  EXPECT_EQ(fields.size(), 19U);
  EXPECT_EQ(PublicTexts(tavi::file_header::kMembers), fields);
}

// ---- Growth ----

struct Growth {
  const char* name;
  bool (*add)(NtfHdr&, uint32_t);
  uint32_t NtfHdr::*count;
  LengthList NtfHdr::*read;
  LengthList NtfHdr::*work;
};

const Growth kGrowths[] = {
    {"image subheader", tavi::AddImageSubheaderLength, &NtfHdr::NumImages, &NtfHdr::LishRead,
     &NtfHdr::LishWork},
    {"image data", tavi::AddImageDataLength, &NtfHdr::NumImages, &NtfHdr::LiRead, &NtfHdr::LiWork},
    {"graphic subheader", tavi::AddGraphicSubheaderLength, &NtfHdr::NumGraphics, &NtfHdr::LsshRead,
     &NtfHdr::LsshWork},
    {"graphic data", tavi::AddGraphicDataLength, &NtfHdr::NumGraphics, &NtfHdr::LsRead, &NtfHdr::LsWork},
    {"text data", tavi::AddTextDataLength, &NtfHdr::NumTexts, &NtfHdr::LtRead, &NtfHdr::LtWork},
};

TEST_F(NtfHdrTest, GrowthAddsAnEntryToBothListsAndLeavesTheCount) {
  for (const Growth& growth : kGrowths) {
    SCOPED_TRACE(growth.name);
    const bool fixed = growth.add == tavi::AddGraphicSubheaderLength;
    NtfHdr header;
    for (uint32_t i = 0; i < 5; ++i) {
      header.*growth.count = i;
      ASSERT_TRUE(growth.add(header, 1000 + i));
      EXPECT_EQ(header.*growth.count, i);
      ASSERT_EQ((header.*growth.read).size(), i + 1);
      ASSERT_EQ((header.*growth.work).size(), i + 1);
      for (uint32_t j = 0; j <= i; ++j) {
        EXPECT_EQ((header.*growth.read)[j], fixed ? 258U : 1000 + j);
        EXPECT_EQ((header.*growth.work)[j], fixed ? 258U : 1000 + j);
      }
    }
  }
}

TEST_F(NtfHdrTest, GrowthTouchesNoOtherList) {
  NtfHdr header;
  ASSERT_TRUE(tavi::AddTextDataLength(header, 7));
  EXPECT_TRUE(header.LtRead.exists());
  EXPECT_FALSE(header.LtshList.exists());
  EXPECT_FALSE(header.LishRead.exists());
  EXPECT_FALSE(header.LsRead.exists());
}

TEST_F(NtfHdrTest, GraphicSubheaderLengthIs258WhateverItIsGiven) {
  NtfHdr header;
  for (const uint32_t given : {0U, 1U, 258U, 0xFFFFFFFFU}) {
    ASSERT_TRUE(tavi::AddGraphicSubheaderLength(header, given));
    EXPECT_EQ(header.LsshRead[0], 258U);
    EXPECT_EQ(header.LsshWork[0], 258U);
  }
}

// What has been read stands in both lists; a changed working value must survive the growth.
TEST_F(NtfHdrTest, GrowthKeepsValuesThatDiffer) {
  NtfHdr header;
  ASSERT_TRUE(tavi::AddImageDataLength(header, 10));
  header.LiWork[0] = 99;
  header.NumImages = 1;
  ASSERT_TRUE(tavi::AddImageDataLength(header, 20));
  EXPECT_EQ(header.LiRead[0], 10U);
  EXPECT_EQ(header.LiWork[0], 99U);
  EXPECT_EQ(header.LiRead[1], 20U);
  EXPECT_EQ(header.LiWork[1], 20U);
}

TEST_F(NtfHdrTest, ReleaseFreesAllAndRunsTwice) {
  const uint64_t before = HostLiveObjects();
  NtfHdr header;
  for (const Growth& growth : kGrowths) ASSERT_TRUE(growth.add(header, 1));
  for (LengthList* list : {&header.LlshList, &header.LlRead, &header.LlWork, &header.LtshList,
                           &header.LdshList, &header.LdList, &header.LreshList, &header.LreList}) {
    ASSERT_TRUE(list->Allocate(3, {}));
  }
  ASSERT_TRUE(header.UDHD.Allocate(5, {}));
  ASSERT_TRUE(header.XHD.Allocate(5, {}));
  EXPECT_EQ(HostLiveObjects(), before + 20);
  header.Release();
  EXPECT_EQ(HostLiveObjects(), before);
  header.Release();
  EXPECT_EQ(HostLiveObjects(), before);
  EXPECT_FALSE(header.LishRead.exists());
  EXPECT_FALSE(header.UDHD.exists());
}

TEST_F(NtfHdrTest, LengthListReadsAsZeroWhenMissingOrTooShort) {
  LengthList list;
  EXPECT_EQ(list.At(0), 0U);
  ASSERT_TRUE(list.Allocate(2, {}));
  list[0] = 5;
  list[1] = 6;
  EXPECT_EQ(list.At(1), 6U);
  EXPECT_EQ(list.At(2), 0U);
  EXPECT_EQ(list.At(0xFFFFFFFF), 0U);
}

}  // namespace

// What the getters of graphic and text subheaders give beside plain copies.
#include <cstring>

#include "FaultHost.h"
#include "RecordsTest.h"

namespace tavi::records {
namespace {

using tavi_test::Bytes;
using tavi_test::GraphicSpec;
using tavi_test::NtfBuilder;
using tavi_test::TextSpec;

class GraphicRecord : public RecordsTest {
 protected:
  void Fill(const GraphicSpec& graphic, NitfGraphicHeaderInfo* record) const {
    NtfBuilder file;
    file.graphics = {graphic};
    const Document document(Write(file));
    ASSERT_EQ(document.open, SUCCESS);
    ASSERT_EQ(Tavi_NITFGetGraphicHeader(document.handle, 0, record), SUCCESS);
  }
};

// The halves of the location change places, those of the bounds do not.
TEST_F(GraphicRecord, TheFirstHalfOfTheLocationIsTheRow) {
  GraphicSpec graphic;
  graphic.fields = {{"SLOC", "-0012-0034"}, {"SBND1", "0005600078"}, {"SBND2", "-0910-1112"}};
  Guarded<NitfGraphicHeaderInfo> record;
  Fill(graphic, record.get());
  EXPECT_EQ(static_cast<int32_t>(record->SLOC_ROW), -12);
  EXPECT_EQ(static_cast<int32_t>(record->SLOC_COLUMN), -34);
  EXPECT_EQ(+record->SBND1_FIRST, 56U);
  EXPECT_EQ(+record->SBND1_SECOND, 78U);
  EXPECT_EQ(static_cast<int32_t>(record->SBND2_FIRST), -910);
  EXPECT_EQ(static_cast<int32_t>(record->SBND2_SECOND), -1112);
  int32_t halves[2];
  std::memcpy(halves,
              reinterpret_cast<const uint8_t*>(record.get()) + offsetof(NitfGraphicHeaderInfo, SLOC_COLUMN),
              sizeof halves);
  EXPECT_EQ(halves[0], -34) << "the column stands first";
  EXPECT_EQ(halves[1], -12);
}

TEST_F(GraphicRecord, AMinusSignInsideAHalfEndsItsNumber) {
  GraphicSpec graphic;
  graphic.fields["SBND1"] = "00-1212-34";
  Guarded<NitfGraphicHeaderInfo> record;
  Fill(graphic, record.get());
  EXPECT_EQ(+record->SBND1_FIRST, 0U);
  EXPECT_EQ(+record->SBND1_SECOND, 12U);
}

TEST_F(GraphicRecord, ExtendedDataAreZeroFilledToTheirLength) {
  for (const size_t size : {0U, 1U, 20U, 5000U}) {
    GraphicSpec graphic;
    graphic.sxshd = Bytes(size, 0xE1);
    Guarded<NitfGraphicHeaderInfo> record;
    Fill(graphic, record.get());
    ASSERT_EQ(+record->SXSHDL, size + 3);
    EXPECT_EQ(BytesAt(record->SXSHD, size + 3), std::string(size, '\xE1') + std::string(3, '\0'));
  }
}

TEST_F(GraphicRecord, WithoutExtendedDataThereIsNoBlock) {
  Guarded<NitfGraphicHeaderInfo> record;
  Fill(GraphicSpec(), record.get());
  EXPECT_EQ(+record->SXSHDL, 0U);
  EXPECT_EQ(+record->SXSOFL, 0U);
  EXPECT_EQ(+record->SXSHD, nullptr);
}

TEST_F(GraphicRecord, TextsEndAtTheirField) {
  Guarded<NitfGraphicHeaderInfo> record;
  Fill(GraphicSpec(), record.get());
  EXPECT_EQ(Text(record->SSCLSY).size(), 2U);
  EXPECT_EQ(Text(record->SSCODE).size(), 11U);
  EXPECT_EQ(Text(record->SSCTLH).size(), 2U);
  EXPECT_EQ(Text(record->SSREL).size(), 20U);
  EXPECT_EQ(Text(record->SSCAUT).size(), 40U);
  EXPECT_EQ(Text(record->SSCTLN).size(), 15U);
}

TEST_F(GraphicRecord, EachGraphicFormatComesBack) {
  for (const char format : {'C', 'B', 'O'}) {
    GraphicSpec graphic;
    graphic.sfmt = format;
    Guarded<NitfGraphicHeaderInfo> record;
    Fill(graphic, record.get());
    EXPECT_EQ(Text(record->SFMT), std::string(1, format));
  }
}

// Every field is filled, so that nothing of what the owner left remains; a block that the file lacks is not
// looked at.
TEST_F(GraphicRecord, OnlyABlockThatTheFileLacksStaysAsItWas) {
  constexpr uint8_t kPoison = 0x5A;
  Guarded<NitfGraphicHeaderInfo> record;
  std::memset(record.get(), kPoison, sizeof(NitfGraphicHeaderInfo));
  Fill(GraphicSpec(), record.get());
  constexpr size_t kBlock = offsetof(NitfGraphicHeaderInfo, SXSHD);
  EXPECT_EQ(BytesOf(record.get(), kBlock, 8), std::string(8, static_cast<char>(kPoison)));
  EXPECT_EQ(BytesOf(record.get(), 0, kBlock).find(std::string(4, static_cast<char>(kPoison))),
            std::string::npos);
  record->SXSHD = nullptr;
}

class TextRecord : public RecordsTest {
 protected:
  void Fill(const TextSpec& text, NitfTextHeaderInfo* record) const {
    NtfBuilder file;
    file.texts = {text};
    const Document document(Write(file));
    ASSERT_EQ(document.open, SUCCESS);
    ASSERT_EQ(Tavi_NITFGetTextHeader(document.handle, 0, record), SUCCESS);
  }
};

// The one block that is copied at the length of its data.
TEST_F(TextRecord, ExtendedDataHaveTheirExactLength) {
  for (const size_t size : {1U, 2U, 20U, 5000U}) {
    TextSpec text;
    text.txshd = Bytes(size, 0xE2);
    Guarded<NitfTextHeaderInfo> record;
    Fill(text, record.get());
    ASSERT_EQ(+record->TXSHDL, size + 3);
    EXPECT_EQ(BytesAt(record->TXSHD, size), std::string(size, '\xE2'));
  }
}

TEST_F(TextRecord, ExtendedDataOfNoBytesAreNoBlock) {
  TextSpec text;
  text.txshd = Bytes();
  text.fields["TXSOFL"] = "123";
  Guarded<NitfTextHeaderInfo> record;
  Fill(text, record.get());
  EXPECT_EQ(+record->TXSHDL, 3U);
  EXPECT_EQ(+record->TXSOFL, 123);
  EXPECT_EQ(+record->TXSHD, nullptr);
}

// A pointer that an earlier call left is freed in every case.
TEST_F(TextRecord, AStalePointerToExtendedDataIsFreedAndCleared) {
  TextSpec without;
  TextSpec empty;
  empty.txshd = Bytes();
  TextSpec with;
  with.txshd = Bytes(4, 'n');
  for (const TextSpec& text : {without, empty, with}) {
    const uint64_t before = HostLiveObjects();
    Guarded<NitfTextHeaderInfo> record;
    auto* stale = static_cast<uint8_t*>(HostAllocMem(7, 1, __LINE__, nullptr));
    record->TXSHD = stale;
    Fill(text, record.get());
    if (+record->TXSHDL == 7) {
      EXPECT_EQ(BytesAt(record->TXSHD, 4), "nnnn");
    } else {
      EXPECT_EQ(+record->TXSHD, nullptr);
    }
    Free(record.get());
    EXPECT_EQ(HostLiveObjects(), before);
  }
}

TEST_F(TextRecord, ClassAndFormatComeBackWhateverTheyAre) {
  TextSpec text;
  text.txtfmt = "?? ";
  text.fields = {{"TSCLAS", "Q"}};
  Guarded<NitfTextHeaderInfo> record;
  Fill(text, record.get());
  EXPECT_STREQ(record->TSCLAS, "Q");
  EXPECT_STREQ(record->TXTFMT, "?? ");
}

TEST_F(TextRecord, TextsEndAtTheirField) {
  Guarded<NitfTextHeaderInfo> record;
  Fill(TextSpec(), record.get());
  EXPECT_EQ(Text(record->TEXTID).size(), 7U);
  EXPECT_EQ(Text(record->TSCLSY).size(), 2U);
  EXPECT_EQ(Text(record->TSCODE).size(), 11U);
  EXPECT_EQ(Text(record->TSCTLH).size(), 2U);
  EXPECT_EQ(Text(record->TSREL).size(), 20U);
  EXPECT_EQ(Text(record->TSCAUT).size(), 40U);
  EXPECT_EQ(Text(record->TSCTLN).size(), 15U);
}

TEST_F(TextRecord, EveryFieldIsFilled) {
  constexpr uint8_t kPoison = 0x5A;
  Guarded<NitfTextHeaderInfo> record;
  std::memset(record.get(), kPoison, sizeof(NitfTextHeaderInfo));
  record->TXSHD = nullptr;
  TextSpec text;
  text.txshd = Bytes(1, 'x');
  Fill(text, record.get());
  EXPECT_EQ(
      BytesOf(record.get(), 0, sizeof(NitfTextHeaderInfo)).find(std::string(4, static_cast<char>(kPoison))),
      std::string::npos);
}

// What a record costs beyond one without a block is the block: of a text its data alone, of a graphic three
// bytes more.
class BlockSizes : public RecordsTest {
 protected:
  template <class Record>
  static uint64_t Cost(NitfHandle handle, uint32_t index) {
    Guarded<Record> record;
    const faults::Watch watch;
    EXPECT_EQ(Get(handle, index, record.get()), SUCCESS);
    return watch.demand().total;
  }
};

TEST_F(BlockSizes, NoByteMoreIsTakenThanDocumented) {
  for (const size_t size : {1U, 2U, 100U}) {
    NtfBuilder file;
    file.graphics.resize(2);
    file.graphics[1].sxshd = Bytes(size, 'g');
    file.texts.resize(2);
    file.texts[1].txshd = Bytes(size, 't');
    const Document document(Write(file));
    ASSERT_EQ(document.open, SUCCESS);
    EXPECT_EQ(Cost<NitfTextHeaderInfo>(document.handle, 1),
              Cost<NitfTextHeaderInfo>(document.handle, 0) + size);
    EXPECT_EQ(Cost<NitfGraphicHeaderInfo>(document.handle, 1),
              Cost<NitfGraphicHeaderInfo>(document.handle, 0) + size + 3);
  }
}

}  // namespace
}  // namespace tavi::records

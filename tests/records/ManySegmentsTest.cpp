// As many segments of a kind as three digits can count.
#include "RecordsTest.h"

namespace tavi::records {
namespace {

using tavi_test::Bytes;
using tavi_test::Digits;
using tavi_test::GreyImage;
using tavi_test::NtfBuilder;

constexpr uint32_t kMost = 999;

class ManySegments : public RecordsTest {
 protected:
  static void AddImages(NtfBuilder& file) {
    for (uint32_t i = 0; i < kMost; ++i) {
      file.images.push_back(GreyImage(i % 7 + 1, 1).Level(i + 1));
      file.images.back().fields["IID1"] = "image " + Digits(i, 4);
    }
  }
  static void AddGraphics(NtfBuilder& file) {
    for (uint32_t i = 0; i < kMost; ++i) {
      file.graphics.emplace_back().fields["SID"] = "graph " + Digits(i, 4);
      file.graphics.back().data = Bytes(i % 5, 'g');
      if (i % 3 == 0) {
        file.graphics.back().sxshd = Bytes(i % 11, 's');
      }
    }
  }
  static void AddTexts(NtfBuilder& file) {
    for (uint32_t i = 0; i < kMost; ++i) {
      const std::string text = "text " + std::to_string(i * i);
      file.texts.emplace_back().fields["TEXTID"] = "txt" + Digits(i, 4);
      file.texts.back().data = {text.begin(), text.end()};
    }
  }
  static void AddExtensions(NtfBuilder& file) {
    for (uint32_t i = 0; i < kMost; ++i) {
      file.data_extensions.emplace_back().desshf = Bytes(i % 13, 'u');
      file.data_extensions.back().data = Bytes(i % 17, 'd');
      file.reserved.push_back({Bytes(i % 3, 'R'), Bytes(i % 2, 'E')});
    }
  }

  static void ExpectImages(NitfHandle handle) {
    ASSERT_EQ(Tavi_NITFGetImageHeaderCount(handle), 999);
    for (uint32_t i = 0; i < kMost; ++i) {
      Guarded<NitfImageHeaderInfo> record;
      ASSERT_EQ(Tavi_NITFGetImageHeader(handle, i, record.get()), SUCCESS) << i;
      ASSERT_EQ(Text(record->IID1), "image " + Digits(i, 4));
      ASSERT_EQ(+record->IDLVL, i + 1);
      ASSERT_EQ(static_cast<uint32_t>(record->NCOLS), i % 7 + 1);
    }
    NitfImageHeaderInfo none = {};
    EXPECT_EQ(Tavi_NITFGetImageHeader(handle, kMost, &none), 87);
  }
  static void ExpectGraphics(NitfHandle handle) {
    ASSERT_EQ(Tavi_NITFGetGraphicHeaderCount(handle), 999);
    for (uint32_t i = 0; i < kMost; ++i) {
      Guarded<NitfGraphicHeaderInfo> record;
      ASSERT_EQ(Tavi_NITFGetGraphicHeader(handle, i, record.get()), SUCCESS) << i;
      ASSERT_EQ(Text(record->SID), "graph " + Digits(i, 4));
      ASSERT_EQ(+record->SXSHDL, i % 3 == 0 ? i % 11 + 3 : 0);
    }
    NitfGraphicHeaderInfo none = {};
    EXPECT_EQ(Tavi_NITFGetGraphicHeader(handle, kMost, &none), 87);
  }
  static void ExpectTexts(NitfHandle handle) {
    ASSERT_EQ(Tavi_NITFGetTextHeaderCount(handle), 999);
    for (uint32_t i = 0; i < kMost; ++i) {
      Guarded<NitfTextHeaderInfo> record;
      ASSERT_EQ(Tavi_NITFGetTextHeader(handle, i, record.get()), SUCCESS) << i;
      ASSERT_EQ(Text(record->TEXTID), "txt" + Digits(i, 4));
      uint8_t buffer[32];
      ASSERT_EQ(Tavi_NITFGetTextSegment(handle, i, buffer, nullptr), SUCCESS) << i;
      ASSERT_EQ(reinterpret_cast<const char*>(buffer), "text " + std::to_string(i * i));
    }
    NitfTextHeaderInfo none = {};
    EXPECT_EQ(Tavi_NITFGetTextHeader(handle, kMost, &none), 87);
  }
};

TEST_F(ManySegments, Images) {
  NtfBuilder file;
  AddImages(file);
  const Document document(Write(file));
  ASSERT_EQ(document.open, SUCCESS);
  ExpectImages(document.handle);
  Guarded<NitfHeaderInfo> header;
  ASSERT_EQ(Tavi_NITFGetNITFHeader(document.handle, header.get()), SUCCESS);
  ASSERT_EQ(+header->NUMI, kMost);
  for (uint32_t i = 0; i < kMost; ++i) {
    ASSERT_EQ(header->LISH[i], 439U);
    ASSERT_EQ(header->LI[i], i % 7 + 1);
  }
}

TEST_F(ManySegments, Graphics) {
  NtfBuilder file;
  AddGraphics(file);
  const Document document(Write(file));
  ASSERT_EQ(document.open, SUCCESS);
  ExpectGraphics(document.handle);
  Guarded<NitfHeaderInfo> header;
  ASSERT_EQ(Tavi_NITFGetNITFHeader(document.handle, header.get()), SUCCESS);
  ASSERT_EQ(+header->NUMS, kMost);
  for (uint32_t i = 0; i < kMost; ++i) {
    ASSERT_EQ(header->LSSH[i], 258U + (i % 3 == 0 ? i % 11 + 3 : 0));
    ASSERT_EQ(header->LS[i], i % 5);
  }
}

TEST_F(ManySegments, Texts) {
  NtfBuilder file;
  AddTexts(file);
  const Document document(Write(file));
  ASSERT_EQ(document.open, SUCCESS);
  ExpectTexts(document.handle);
  Guarded<NitfHeaderInfo> header;
  ASSERT_EQ(Tavi_NITFGetNITFHeader(document.handle, header.get()), SUCCESS);
  ASSERT_EQ(+header->NUMT, kMost);
  for (uint32_t i = 0; i < kMost; ++i) {
    ASSERT_EQ(header->LTSH[i], 282U);
    ASSERT_EQ(header->LT[i], 5 + std::to_string(i * i).size());
  }
}

TEST_F(ManySegments, DataAndReservedExtensions) {
  NtfBuilder file;
  AddExtensions(file);
  const Document document(Write(file));
  ASSERT_EQ(document.open, SUCCESS);
  EXPECT_EQ(Tavi_NITFGetStatus(document.handle), TAVI_DOCUMENT_EMPTY | TAVI_DOCUMENT_VALID);
}

// The last data extension's subheader is the last that is read: a fault in it shows that all were.
TEST_F(ManySegments, TheLastExtensionIsReadAsWell) {
  NtfBuilder file;
  AddExtensions(file);
  file.data_extensions.back().fields["DE"] = "ED";
  EXPECT_EQ(Document(Write(file)).open, ERR_FILE_FORMAT);
}

TEST_F(ManySegments, OfAllKindsAtOnce) {
  NtfBuilder file;
  AddImages(file);
  AddGraphics(file);
  AddTexts(file);
  AddExtensions(file);
  const Document document(Write(file));
  ASSERT_EQ(document.open, SUCCESS);
  ExpectImages(document.handle);
  ExpectGraphics(document.handle);
  ExpectTexts(document.handle);
}

}  // namespace
}  // namespace tavi::records

// What no export reaches: the 2.0 layout, the roles of bands, and single operations.
#include <algorithm>
#include <cstring>
#include <string_view>

#include "Append.h"
#include "HeaderSetter.h"
#include "HostFixture.h"
#include "ImageEditing.h"
#include "NitfFile.h"

namespace editing {
namespace {

class EditingInternals : public tavi_test::HostTest {};

TEST_F(EditingInternals, RolesOfBands) {
  tavi::ImSubHdr image(nullptr);
  const auto& rows = tavi::ImageRows();
  const auto row = std::find_if(rows.begin(), rows.end(), [](const auto& r) {
    return r.name != nullptr && std::string_view(r.name) == "NBANDS";
  });
  ASSERT_EQ(tavi::SetBandCount(image, *row, 3), SUCCESS);
  struct Case {
    const char* text;
    uint32_t role;
  };
  const Case cases[] = {{"LU", 1}, {"R", 2},  {"R ", 2}, {"Rx", 2}, {"G", 3},    {"B ", 4},
                        {"M", 5},  {"Y ", 6}, {"Cb", 7}, {"Cr", 8}, {"Cbxyz", 7}};
  for (const Case& one : cases) {
    for (uint32_t band = 0; band < 3; ++band) {
      ASSERT_EQ(tavi::SetBandRole(image, band, one.text), SUCCESS) << one.text;
      EXPECT_EQ(tavi::BandRole(image, band), one.role) << one.text;
    }
  }
  for (const char* text : {"", " ", "L", "C", "cb", "X"}) {
    EXPECT_EQ(tavi::SetBandRole(image, 0, text), ERR_INVALID_PARAMETER) << text;
    EXPECT_EQ(tavi::BandRole(image, 0), 7U) << "the role stays";
  }
  EXPECT_EQ(tavi::SetBandRole(image, 3, "R"), ERR_INVALID_PARAMETER);
  EXPECT_EQ(tavi::SetBandRole(image, 0xFFFFFFFF, "R"), ERR_INVALID_PARAMETER);
  // More bands are counted than the tables have.
  std::strcpy(image.Text.XBANDS, "00005");
  ASSERT_EQ(tavi::SetBandCount(image, *row, 2), SUCCESS);
  EXPECT_EQ(image.BandCount, 5U);
  EXPECT_EQ(image.BandField, 2U);
  EXPECT_EQ(tavi::SetBandRole(image, 1, "R"), SUCCESS);
  EXPECT_EQ(tavi::SetBandRole(image, 2, "R"), ERR_INVALID_PARAMETER);
  ASSERT_EQ(tavi::SetBandCount(image, *row, 5), SUCCESS);
  EXPECT_EQ(image.BandCount, 5U);
  ASSERT_EQ(tavi::SetBandCount(image, *row, 6), SUCCESS);
  EXPECT_EQ(image.BandCount, 6U);
  EXPECT_EQ(image.BandSubcategories.size(), 6U);
  EXPECT_STREQ(image.BandSubcategories.At(5), "");
  EXPECT_STREQ(image.BandFilterConditions.At(5), "N");
  EXPECT_STREQ(image.BandFilterCodes.At(5), "   ");
  EXPECT_EQ(image.BandLutCounts.At(5), 0U);
}

// In the 2.0 layout a new image has ICORDS N. Its setter adds the corners' length to FL, which are not there.
TEST_F(EditingInternals, AnImageOfThe20Layout) {
  NitfFile document;
  tavi::MakeEmptyDocument(document);
  document.IsNitf20 = 1;
  HostBitmap bitmap{};
  ASSERT_EQ(HostCreateBitmap(&bitmap, sizeof bitmap, 1, 4, 4, 24, 1, nullptr, 1, nullptr, 0), SUCCESS);
  ASSERT_EQ(tavi::AppendImageSegment(document, &bitmap, 182, 24, 9), SUCCESS);
  const tavi::ImSubHdr& image = *document.Images->Subheader;
  EXPECT_STREQ(image.Text.ICORDS, "N");
  EXPECT_EQ(document.Header.FlValue, 388 + 60 + 469 + 16 + image.PendingData.size());
  EXPECT_EQ(document.Header.FlMirror, document.Header.FlValue);
  EXPECT_EQ(tavi::NumberOf(document.Header.Text.FL), static_cast<int32_t>(document.Header.FlValue));
  EXPECT_EQ(document.Header.LishWork.At(0), 469U) << "not in its own entry";
  EXPECT_EQ(document.Header.HlWork, 404U);
  EXPECT_EQ(document.ImagesInFile, 0U);
  HostFreeBitmap(&bitmap);
}

// Every document that an export hands out has a header. Without one, the fields alone change.
TEST_F(EditingInternals, LengthsWithoutAHeader) {
  const auto set = [](tavi::ImSubHdr& image, const char* field, const char* text) {
    return tavi::SetText(image, *tavi::FindRow<tavi::ImSubHdr>(tavi::ImageRows(), field), text);
  };
  NitfFile document;
  tavi::MakeEmptyDocument(document);
  tavi::NtfHdr& header = document.Header;
  ASSERT_TRUE(tavi::AddImageSubheaderLength(header, 500));
  header.NumImages = 1;
  for (const bool owned : {true, false}) {
    tavi::ImSubHdr image(owned ? &document : nullptr);
    document.HeaderValid = 0;
    ASSERT_EQ(set(image, "ICORDS", "U"), SUCCESS);
    ASSERT_EQ(set(image, "IC", "C3"), SUCCESS);
    EXPECT_STREQ(image.Text.ICORDS, "U");
    EXPECT_STREQ(image.Text.IC, "C3");
    EXPECT_STREQ(header.Text.FL, "000000000388");
    EXPECT_EQ(header.FlValue, 388U);
    EXPECT_EQ(header.FlMirror, 388U);
    EXPECT_EQ(header.LishWork[0], 500U);
    document.HeaderValid = 1;
    ASSERT_EQ(set(image, "ICORDS", " "), SUCCESS);
    ASSERT_EQ(set(image, "IC", "NC"), SUCCESS);
    EXPECT_STREQ(header.Text.FL, owned ? "000000000324" : "000000000388");
    EXPECT_EQ(header.FlValue, owned ? 324U : 388U);
    EXPECT_EQ(header.FlMirror, header.FlValue);
    EXPECT_EQ(header.LishWork[0], owned ? 436U : 500U);
    EXPECT_EQ(header.LishRead[0], 500U);
    ASSERT_EQ(set(image, "ICORDS", "U"), SUCCESS);
    ASSERT_EQ(set(image, "IC", "C3"), SUCCESS);
  }
}

TEST_F(EditingInternals, DataInMemory) {
  tavi::TxSubHdr text(nullptr);
  EXPECT_EQ(tavi::SetTextData(text, nullptr, 3), ERR_NULL_ARGUMENT);
  EXPECT_EQ(text.TextDataInMemory, 0U);
  ASSERT_EQ(tavi::SetTextData(text, "abc", 3), SUCCESS);
  ASSERT_EQ(tavi::SetTextData(text, "xy", 2), SUCCESS);
  EXPECT_EQ(text.TextDataInMemory, 1U);
  EXPECT_EQ(text.TextDataBuffer.size(), 3U);
  EXPECT_STREQ(reinterpret_cast<char*>(text.TextDataBuffer.data()), "xy");
  tavi::GrSubHdr graphic(nullptr);
  ASSERT_EQ(tavi::SetGraphicData(graphic, "abc", 3), SUCCESS);
  ASSERT_EQ(tavi::SetGraphicData(graphic, "xy", 2), SUCCESS);
  EXPECT_EQ(graphic.GraphicDataInMemory, 1U);
  EXPECT_EQ(graphic.GraphicDataBuffer.size(), 2U);
}

}  // namespace
}  // namespace editing

// Images appended from bitmaps.
#include <algorithm>
#include <cstdlib>
#include <fstream>

#include "AppendTest.h"

namespace editing {
namespace {

constexpr int32_t kYcbcr = 10;
constexpr int32_t kRgb = 182;

class AppendImage : public AppendTest {
 protected:
  // The coded picture of the saved file's first image.
  static Bytes Coded(const Bytes& saved) {
    const size_t start = NumberAt(saved, kHlPlace, 6) + NumberAt(saved, kNumiPlace + 3, 6);
    const size_t size = NumberAt(saved, kNumiPlace + 9, 10);
    return {saved.begin() + static_cast<std::ptrdiff_t>(start),
            saved.begin() + static_cast<std::ptrdiff_t>(start + size)};
  }
};

// Far apart on no pixel: `channels` values, the last of them red, or grey.
void ExpectLike(const Composite& composite, uint32_t width, uint32_t height, bool grey) {
  ASSERT_EQ(composite.status, SUCCESS);
  ASSERT_EQ(composite.width, width);
  ASSERT_EQ(composite.height, height);
  int worst = 0;
  for (uint32_t y = 0; y < height; ++y) {
    for (uint32_t x = 0; x < width; ++x) {
      uint8_t bgr[3];
      Picture::Pixel(x, y, width, height, bgr);
      if (grey) bgr[0] = bgr[2] = bgr[1];
      for (int c = 0; c < 3; ++c) worst = std::max(worst, std::abs(bgr[c] - composite.At(x, y)[c]));
    }
  }
  EXPECT_LE(worst, 12);
}

struct KindCase {
  uint32_t bitmap_bits;
  int32_t format;
  int32_t bits;
  const char* irep;
  std::vector<const char*> roles;
  const char* imode;
};
const KindCase kKinds[] = {{24, kYcbcr, 24, "YCbCr601", {"Y ", "Cb", "Cr"}, "P"},
                           {24, kRgb, 24, "RGB     ", {"R ", "G ", "B "}, "P"},
                           {8, kYcbcr, 8, "MONO    ", {"M "}, "B"},
                           {8, kRgb, 8, "MONO    ", {"M "}, "B"},
                           {8, kRgb, 24, "RGB     ", {"R ", "G ", "B "}, "P"}};

TEST_F(AppendImage, KindsOfPictures) {
  for (const KindCase& kind : kKinds) {
    SCOPED_TRACE(std::string(kind.irep) + std::to_string(kind.bitmap_bits) + std::to_string(kind.format));
    const NewDocument document;
    Picture picture(70, 45, kind.bitmap_bits);
    ASSERT_EQ(Tavi_NITFAppendImageSegment(document.handle, picture.get(), kind.format, kind.bits, 2),
              SUCCESS);
    ImageRecord record(document.handle, 0);
#define SHOWN(NAME) record.Text(offsetof(NitfImageHeaderInfo, NAME))
    EXPECT_EQ(SHOWN(IM), "IM");
    EXPECT_EQ(SHOWN(IID1), "Missing ID");
    EXPECT_EQ(SHOWN(ICAT), "VIS");
    EXPECT_EQ(SHOWN(PVTYPE), "INT");
    EXPECT_EQ(SHOWN(IREP), kind.irep);
    EXPECT_EQ(SHOWN(PJUST), "R");
    EXPECT_EQ(SHOWN(ICORDS), " ");
    EXPECT_EQ(SHOWN(IC), "C3");
    EXPECT_EQ(SHOWN(IMODE), kind.imode);
    EXPECT_EQ(record.Chars(offsetof(NitfImageHeaderInfo, IDATIM), 14), "20040101010101");
    EXPECT_EQ(+record->NROWS, 45);
    EXPECT_EQ(+record->NCOLS, 70);
    EXPECT_EQ(+record->ABPP, 8);
    EXPECT_EQ(+record->NBPP, 8U);
    EXPECT_EQ(+record->NBANDS, kind.roles.size());
    EXPECT_EQ(+record->NBPR, 1);
    EXPECT_EQ(+record->NBPC, 1U);
    EXPECT_EQ(+record->NPPBH, 70U);
    EXPECT_EQ(+record->NPPBV, 45U);
    EXPECT_EQ(+record->IDLVL, 1U);
    EXPECT_EQ(+record->IALVL, 0U);

    const size_t subheader = 430 + 13 * kind.roles.size();
    const Bytes saved = Saved(document.handle);
    EXPECT_EQ(saved.size(), FileLength(document.handle));
    EXPECT_EQ(NumberAt(saved, kFlPlace, 12), saved.size());
    EXPECT_EQ(FieldAt(saved, kHlPlace, 6), "000404");
    EXPECT_EQ(FieldAt(saved, kNumiPlace, 3), "001");
    EXPECT_EQ(NumberAt(saved, kNumiPlace + 3, 6), subheader);
    EXPECT_EQ(NumberAt(saved, kNumiPlace + 9, 10), saved.size() - 404 - subheader);
    constexpr size_t kBands = 380;  // COMRAT and NBANDS lie before
    for (size_t band = 0; band < kind.roles.size(); ++band) {
      EXPECT_EQ(FieldAt(saved, 404 + kBands + 13 * band, 13), kind.roles[band] + std::string("      N   0"));
    }
    const Document again(Output().wstring());
    ASSERT_EQ(again.open, SUCCESS);
    ExpectLike(Render(again.handle), 70, 45, kind.bits == 8 || kind.bitmap_bits == 8);
    EXPECT_EQ(Saved(again.handle), saved);
  }
}

// A file decoder of its own sees the picture, and is told by the stream whether it is RGB.
TEST_F(AppendImage, CodedPicturesAreJpegFiles) {
  if (std::system("command -v djpeg >/dev/null 2>&1") != 0)
    FAIL() << "djpeg is not installed: package libjpeg-turbo-progs";
  for (const int32_t format : {kYcbcr, kRgb}) {
    const NewDocument document;
    Picture picture(70, 45);
    ASSERT_EQ(Tavi_NITFAppendImageSegment(document.handle, picture.get(), format, 24, 2), SUCCESS);
    const Bytes coded = Coded(Saved(document.handle));
    ASSERT_EQ(coded.front(), 0xFF);
    const std::string adobe = "Adobe";
    const auto marker = std::search(coded.begin(), coded.end(), adobe.begin(), adobe.end());
    const bool is_rgb = marker != coded.end() && *(marker + 11) == 0;
    EXPECT_EQ(is_rgb, format == kRgb);
    {
      std::ofstream out(directory() / "coded.jpg", std::ios::binary);
      out.write(reinterpret_cast<const char*>(coded.data()), static_cast<std::streamsize>(coded.size()));
    }
    const std::string command = "djpeg -pnm -outfile '" + (directory() / "coded.ppm").string() + "' '" +
                                (directory() / "coded.jpg").string() + "'";
    ASSERT_EQ(std::system(command.c_str()), 0);
    const Bytes ppm = ReadBytes(directory() / "coded.ppm");
    const std::string head = "P6\n70 45\n255\n";
    ASSERT_EQ(FieldAt(ppm, 0, head.size()), head);
    Composite decoded{SUCCESS, 70, 45, {}};
    for (size_t at = head.size(); at + 2 < ppm.size(); at += 3) {
      decoded.pixels.insert(decoded.pixels.end(), {ppm[at + 2], ppm[at + 1], ppm[at]});
    }
    ExpectLike(decoded, 70, 45, false);
  }
}

TEST_F(AppendImage, BottomUpBitmapsKeepTheirSense) {
  const NewDocument document;
  Picture picture(40, 30, 24, 4);
  ASSERT_EQ(Tavi_NITFAppendImageSegment(document.handle, picture.get(), kYcbcr, 24, 2), SUCCESS);
  Saved(document.handle);
  const Document again(Output().wstring());
  ExpectLike(Render(again.handle), 40, 30, false);
}

TEST_F(AppendImage, BehindTheImagesOfAFile) {
  NtfBuilder file = EditableFile();
  file.graphics.clear();
  file.images[1].Level(17);
  const BuiltFile built = file.Build();
  const Document document(Write(built));
  const uint32_t length = FileLength(document.handle);
  Picture picture(30, 20);
  ASSERT_EQ(Tavi_NITFAppendImageSegment(document.handle, picture.get(), kRgb, 24, 10), SUCCESS);
  ASSERT_EQ(Tavi_NITFAppendImageSegment(document.handle, picture.get(), kYcbcr, 8, 10), SUCCESS);
  EXPECT_EQ(+ImageRecord(document.handle, 2)->IDLVL, 18U);
  EXPECT_EQ(+ImageRecord(document.handle, 3)->IDLVL, 19U);
  {
    const HeaderRecord header(document.handle, 0);
    EXPECT_EQ(+header->NUMI, 2U) << "the text of NUMI stays";
    EXPECT_GT(+header->FL, length + 2 * 446);
  }
  const Bytes saved = Saved(document.handle);
  EXPECT_EQ(saved.size(), FileLength(document.handle));
  const Document again(Output().wstring());
  ASSERT_EQ(again.open, SUCCESS);
  EXPECT_EQ(Tavi_NITFGetImageHeaderCount(again.handle), 4);
  uint8_t text[18];
  EXPECT_EQ(Tavi_NITFGetTextSegment(again.handle, 0, text, nullptr), SUCCESS);
  EXPECT_EQ(std::string(reinterpret_cast<char*>(text)), std::string(17, 't'))
      << "what lies behind moved along";
  const Composite composite = Render(again.handle);
  EXPECT_EQ(composite.width, 30U);
  EXPECT_EQ(composite.height, 20U);
}

TEST_F(AppendImage, WhatCannotBeAppended) {
  const Document document(Write(EditableFile()));
  const State before = StateOf(document.handle);
  Picture picture(8, 8);
  HostBitmap empty{};
  const auto append = [&](HostBitmap* bitmap, int32_t format, int32_t bits, int32_t quality) {
    return Tavi_NITFAppendImageSegment(document.handle, bitmap, format, bits, quality);
  };
  EXPECT_EQ(Tavi_NITFAppendImageSegment(nullptr, picture.get(), kRgb, 24, 2), ERR_NULL_HANDLE);
  EXPECT_EQ(Tavi_NITFAppendImageSegment(nullptr, nullptr, 0, 0, 0), ERR_NULL_HANDLE);
  EXPECT_EQ(append(nullptr, kRgb, 24, 2), ERR_NO_BITMAP);
  EXPECT_EQ(append(&empty, kRgb, 24, 2), ERR_NO_BITMAP);
  for (const int32_t bits : {0, 1, 7, 9, 16, 23, 32, -8, INT32_MAX}) {
    EXPECT_EQ(append(picture.get(), kRgb, bits, 2), ERR_INVALID_BPP) << bits;
  }
  for (const int32_t quality : {1, 0, -1, 256, INT32_MIN, INT32_MAX}) {
    EXPECT_EQ(append(picture.get(), kRgb, 24, quality), ERR_INVALID_QFACTOR) << quality;
  }
  for (const int32_t format : {0, 9, 11, 26, 181, 183, -1}) {
    EXPECT_EQ(append(picture.get(), format, 24, 2), ERR_FILE_FORMAT) << format;
  }
  // In this order.
  EXPECT_EQ(append(nullptr, 0, 0, 0), ERR_NO_BITMAP);
  EXPECT_EQ(append(picture.get(), 0, 0, 0), ERR_INVALID_BPP);
  EXPECT_EQ(append(picture.get(), 0, 8, 0), ERR_INVALID_QFACTOR);
  EXPECT_EQ(append(picture.get(), 0, 8, 2), ERR_FILE_FORMAT);
  EXPECT_EQ(StateOf(document.handle), before);
}

TEST_F(AppendImage, QualityFactorsAtTheLimits) {
  const NewDocument document;
  Picture picture(64, 64);
  uint32_t length = FileLength(document.handle);
  uint32_t last = UINT32_MAX;
  for (const int32_t quality : {2, 30, 255}) {
    ASSERT_EQ(Tavi_NITFAppendImageSegment(document.handle, picture.get(), kYcbcr, 24, quality), SUCCESS);
    const uint32_t added = FileLength(document.handle) - length;
    EXPECT_LT(added, last) << "coarser is smaller";
    last = added;
    length = FileLength(document.handle);
  }
}

// The numbers go into digits that they do not fit; nothing looks at that.
TEST_F(AppendImage, ASideThatDoesNotFitItsField) {
  const NewDocument document;
  Picture picture(10001, 1, 8);
  ASSERT_EQ(Tavi_NITFAppendImageSegment(document.handle, picture.get(), kRgb, 8, 50), SUCCESS);
  const ImageRecord record(document.handle, 0);
  EXPECT_EQ(+record->NCOLS, 10001);
  EXPECT_EQ(+record->NPPBH, 1000U) << "the first four digits";
}

TEST_F(AppendImage, NineHundredAndNinetyNine) {
  const NewDocument document;
  Picture picture(1, 1, 8);
  for (int i = 1; i <= 999; ++i) {
    ASSERT_EQ(Tavi_NITFAppendImageSegment(document.handle, picture.get(), kRgb, 8, 100), SUCCESS);
  }
  const State full = StateOf(document.handle);
  EXPECT_EQ(full.images, 999);
  EXPECT_EQ(full.saved.size(), full.file_length);
  EXPECT_EQ(Tavi_NITFAppendImageSegment(document.handle, picture.get(), kRgb, 8, 100), 0);
  EXPECT_EQ(Tavi_NITFAppendImageSegment(document.handle, picture.get(), 0, 0, 0), 0)
      << "before all but the bitmap";
  EXPECT_EQ(Tavi_NITFAppendImageSegment(document.handle, nullptr, 0, 0, 0), ERR_NO_BITMAP);
  EXPECT_EQ(StateOf(document.handle), full);
  EXPECT_EQ(+ImageRecord(document.handle, 998)->IDLVL, 999U);
  const Document again(Output().wstring());
  ASSERT_EQ(again.open, SUCCESS);
  EXPECT_EQ(Tavi_NITFGetImageHeaderCount(again.handle), 999);
  EXPECT_EQ(Saved(again.handle), full.saved);
}

// Lists that do not go with a count that a caller made up: the new entry comes behind that count.
TEST_F(AppendImage, AfterACountThatLies) {
  for (const uint32_t count : {0U, 1U, 7U, 0xFFFFFFFEU, 0xFFFFFFFFU}) {
    SCOPED_TRACE(count);
    const Document document(Write(EditableFile()));
    HeaderRecord header(document.handle, 0);
    for (const size_t place :
         {offsetof(NitfHeaderInfo, LISH), offsetof(NitfHeaderInfo, LI), offsetof(NitfHeaderInfo, LSSH),
          offsetof(NitfHeaderInfo, LS), offsetof(NitfHeaderInfo, LTSH), offsetof(NitfHeaderInfo, LT)}) {
      header.PutNull(place);
    }
    header->NUMI = header->NUMS = header->NUMT = count;
    ASSERT_EQ(Set(document.handle, 0, header.get()), SUCCESS);
    Picture picture(4, 4);
    const int32_t image = Tavi_NITFAppendImageSegment(document.handle, picture.get(), kRgb, 24, 2);
    const int32_t text = Tavi_NITFAppendTextSegment(document.handle, TextFile("x").c_str());
    EXPECT_EQ(image, count < 1000 ? SUCCESS : ERR_NO_MEMORY);
    EXPECT_EQ(text, count < 1000 ? SUCCESS : ERR_NO_MEMORY);
    EXPECT_EQ(Tavi_NITFGetImageHeaderCount(document.handle), count < 1000 ? 3 : 2);
  }
}

struct DateCase {
  const char* fdt;
  const char* image;
  const char* text;
};

TEST_F(AppendImage, DatesOfNewSegments) {
  const DateCase cases[] = {
      {"20050101010101", "20040101010101", "20040101010101"},
      {"20240315120000", "20240315110000", "20240315110000"},
      {"20240315120530", "20240315120529", "20240315120430"},
      {"01010101010101", "01010101010101", "01010101010101"},
      {"00000000000000", "00000000000000", "00000000000000"},
      {"20240315120001", "20240315110001", "20240315110001"},
      {"20240301010101", "20240201010101", "20240201010101"},
      {"20020101010101", "20010101010101", "20010101010101"},
      {"20010101010101", "19010101010101", "19010101010101"},
      {"02010101010102", "02010101010101", "01010101010102"},
      {"20241231235910", "20241231235909", "20241231235810"},
      {"ab240315--00xx", "ab240314--00xx", "ab240314--00xx"},
      {" 9240101010101", " 9230101010101", " 9230101010101"},
  };
  const tavi_test::TempDir folder;
  std::ofstream(folder.path() / "in.txt") << "x";
  for (const DateCase& one : cases) {
    const Document document(DatedFile(one.fdt).Write(folder.path()));
    Picture picture(2, 2, 8);
    ASSERT_EQ(Tavi_NITFAppendImageSegment(document.handle, picture.get(), kRgb, 8, 2), SUCCESS);
    ASSERT_EQ(Tavi_NITFAppendTextSegment(document.handle, (folder.path() / "in.txt").wstring().c_str()),
              SUCCESS);
    EXPECT_EQ(ImageRecord(document.handle, 0).Chars(offsetof(NitfImageHeaderInfo, IDATIM), 14), one.image);
    EXPECT_EQ(TextRecord(document.handle, 0).Chars(offsetof(NitfTextHeaderInfo, TXTDT), 14), one.text);
  }
  // A file without a date.
  const Document document(DatedFile(std::string(14, '\0')).Write(folder.path()));
  Picture picture(2, 2, 8);
  ASSERT_EQ(Tavi_NITFAppendImageSegment(document.handle, picture.get(), kRgb, 8, 2), SUCCESS);
  EXPECT_EQ(ImageRecord(document.handle, 0).Chars(offsetof(NitfImageHeaderInfo, IDATIM), 14),
            "50020530010101");
  ASSERT_EQ(Tavi_NITFAppendTextSegment(document.handle, (folder.path() / "in.txt").wstring().c_str()),
            SUCCESS);
  EXPECT_EQ(TextRecord(document.handle, 0).Chars(offsetof(NitfTextHeaderInfo, TXTDT), 14), "50020530010101");
}

}  // namespace
}  // namespace editing

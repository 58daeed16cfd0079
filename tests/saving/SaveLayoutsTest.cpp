// What only the inside reaches: the 2.0 layouts, records that no file has filled, codes that no reader gives, and
// the lengths that an edited document carries.
#include <cstring>

#include "NitfFile.h"
#include "RichFiles.h"
#include "SaveNitf.h"
#include "SavingTest.h"
#include "VqBytes.h"

namespace saving {
namespace {

using tavi_test::BuiltFile;
using tavi_test::GreyImage;
using tavi_test::ImageSpec;
using tavi_test::NtfBuilder;

class SaveLayouts : public SavingTest {
 protected:
  // Opens the file in the layout.
  void Open(NitfFile& document, const BuiltFile& file, bool is20 = false) const {
    WriteFile(SourcePath(), file.bytes);
    document.IsNitf20 = is20 ? 1 : 0;
    ASSERT_EQ(tavi::OpenNitfFile(document, SourcePath().wstring().c_str()), SUCCESS);
  }
  int32_t Save(NitfFile& document) const {
    return tavi::SaveDocument(document, OutputPath().wstring().c_str());
  }
  Bytes SavedBytes(NitfFile& document) const {
    EXPECT_EQ(Save(document), SUCCESS);
    return ReadFile(OutputPath());
  }
  // A part of the saved file.
  std::string Part(NitfFile& document, size_t at, size_t size) const {
    const Bytes saved = SavedBytes(document);
    if (at + size > saved.size()) return "beyond the end";
    return {saved.begin() + static_cast<std::ptrdiff_t>(at),
            saved.begin() + static_cast<std::ptrdiff_t>(at + size)};
  }
  // A new document with new segments, which hold no data.
  void MakeNew(NitfFile& document, uint32_t images, uint32_t graphics, uint32_t labels,
               uint32_t texts) const {
    tavi::MakeEmptyDocument(document);
    document.ImageCount = images;
    document.GraphicCount = graphics;
    document.LabelCount = labels;
    document.TextCount = texts;
    ASSERT_EQ(tavi::AllocateObjects(document), SUCCESS);
  }
  void Expect20(const NtfBuilder& file) const {
    const BuiltFile built = file.Build();
    NitfFile document;
    Open(document, built, true);
    const Prediction predicted = PredictSave(built.bytes, tavi_test::Layout::kNitf20);
    EXPECT_EQ(predicted.status, SUCCESS);
    EXPECT_EQ(FirstDifference(predicted.bytes, SavedBytes(document)), "");
  }
};

NtfBuilder File20() {
  NtfBuilder file = tavi::faults::FileOfEverything();
  file.layout = tavi_test::Layout::kNitf20;
  file.header["FVER"] = "02.10";  // the version that is accepted, whatever the layout
  std::erase_if(file.images, [](const ImageSpec& image) { return image.bands.size() > 9; });
  for (ImageSpec& image : file.images) {
    if (image.ialvl == 7) image.ialvl = 0;
  }
  file.graphics.resize(4);
  for (auto& graphic : file.graphics) graphic.data = {'c', 'g', 'm'};
  file.graphics[1].lut_planes = {{200}};
  file.graphics[2].lut_planes = {{1, 2, 3}, {4, 5, 6}, {7, 8, 9}};
  file.graphics[2].fields = {{"SCOLOR", "G"}};
  file.labels.resize(2);
  file.labels[0].data = {'l', 'a', 'b', 'e', 'l'};
  file.labels[0].ltc = {1, 2, 3};
  file.labels[0].lbc = {4, 5, 6};
  file.labels[0].lxshd = tavi_test::Tre("LXSTRE", "about the label");
  return file;
}

TEST_F(SaveLayouts, FilesOfTheOlderLayout) {
  Expect20(File20());
}

TEST_F(SaveLayouts, DowngradingEventsOfTheOlderLayout) {
  NtfBuilder file = File20();
  file.header["FSDWNG"] = "999998";
  file.images[0].fields["ISDWNG"] = "999998";
  file.graphics[0].fields["SSDWNG"] = "999998";
  file.labels[0].fields["LSDWNG"] = "999998";
  file.texts[0].fields["TSDWNG"] = "999998";
  file.data_extensions[0].fields["DESDWNG"] = "999998";
  // The builder writes the event by the same rule.
  Expect20(file);
}

// Texts that end at a NUL, of every field that has one.
TEST_F(SaveLayouts, ShortTextsOfTheOlderLayoutAreCompleted) {
  NtfBuilder file = File20();
  const auto cut = [](tavi_test::FieldTexts& texts,
                      const std::vector<std::pair<std::string, size_t>>& fields) {
    for (const auto& [name, width] : fields) {
      texts[name] = std::string(width, 'x');
      texts[name][width > 1 ? 1 : 0] = '\0';
    }
  };
  const auto cut_security = [&](tavi_test::FieldTexts& texts, const std::string& p) {
    cut(texts, {{p + "CODE", 40},
                {p + "CTLH", 40},
                {p + "REL", 40},
                {p + "CAUT", 20},
                {p + "CTLN", 20},
                {p + "DWNG", 6},
                {"ENCRYP", 1}});
  };
  cut_security(file.header, "FS");
  cut(file.header, {{"ONAME", 27}});
  cut_security(file.images[0].fields, "IS");
  cut_security(file.graphics[0].fields, "SS");
  cut(file.graphics[0].fields,
      {{"NLIPS", 4}, {"NPIXPL", 4}, {"NWDTH", 4}, {"NBPP", 1}, {"SCOLOR", 1}, {"SNUM", 6}, {"SROT", 3}});
  cut_security(file.labels[0].fields, "LS");
  cut(file.labels[0].fields, {{"LID", 10},
                              {"LFS", 1},
                              {"LCW", 2},
                              {"LCH", 2},
                              {"LDLVL", 3},
                              {"LALVL", 3},
                              {"LLOC", 10},
                              {"LXSOFL", 3}});
  cut_security(file.texts[0].fields, "TS");
  cut(file.texts[0].fields, {{"TEXTID", 10}});
  cut_security(file.data_extensions[0].fields, "DES");
  file.data_extensions[0].fields.erase("ENCRYP");
  cut(file.data_extensions[0].fields, {{"DESDEVT", 40}});
  Expect20(file);
}

TEST_F(SaveLayouts, CornersOfTheOlderLayoutHangOnAnotherLetter) {
  NtfBuilder file = File20();
  file.images[0].igeolo.reset();
  file.images[0].fields["ICORDS"] = "N";
  Expect20(file);
}

// A table of two entries is read with three planes and written with two.
TEST_F(SaveLayouts, AColourTableOfTwoLosesItsBlue) {
  NtfBuilder file;
  file.layout = tavi_test::Layout::kNitf20;
  file.header["FVER"] = "02.10";  // the version that is accepted, whatever the layout
  file.graphics.resize(1);
  file.graphics[0].lut_planes = {{1, 2}, {3, 4}, {5, 6}};
  const BuiltFile built = file.Build();
  NitfFile document;
  Open(document, built, true);
  EXPECT_EQ(SavedBytes(document).size(), built.bytes.size() - 2);
  EXPECT_EQ(Part(document, built.At("graphic[0].NELUT").offset, 3 + 4), std::string("002\1\2\3\4", 7));
}

// In the 2.1 layout symbols have none of the 2.0 fields, and a downgrading text has no meaning.
TEST_F(SaveLayouts, SymbolsOfTheNewerLayoutHaveNoFieldsOfTheOlder) {
  for (const char sfmt : {'B', 'O'}) {
    NtfBuilder file;
    file.graphics.resize(1);
    file.graphics[0].sfmt = sfmt;
    file.graphics[0].data = {1, 2, 3};
    const BuiltFile built = file.Build();
    NitfFile document;
    Open(document, built);
    auto& text = document.Graphics->Subheader->Text;
    for (const char* field : {text.NLIPS, text.NPIXPL, text.NWDTH, text.SNUM, text.SROT})
      EXPECT_STREQ(field, "");
    EXPECT_EQ(document.Graphics->Subheader->SymbolBits, 0U);
    EXPECT_EQ(document.Graphics->Subheader->LutEntries, 0U);
    std::memcpy(text.SSDWNG, "999998", 7);
    std::memset(text.SSDEVT, 'e', sizeof text.SSDEVT - 1);
    EXPECT_EQ(FirstDifference(built.bytes, SavedBytes(document)), "");
  }
}

// ---- New records ----

TEST_F(SaveLayouts, NewSegmentsHaveTheirFixedLengths) {
  NitfFile document;
  MakeNew(document, 0, 1, 0, 1);
  const Bytes saved = SavedBytes(document);
  const size_t header = 388 + 10 + 9;
  ASSERT_EQ(saved.size(), header + 258 + 282);
  const std::string text(saved.begin(), saved.end());
  EXPECT_EQ(text.substr(header, 2 + 10 + 20 + 1), "SYID        " + std::string(20, ' ') + "U");
  EXPECT_EQ(text.substr(header + 199, 59), "0C" + std::string(13, '0') + "000000" + std::string(20, '0') +
                                               "C" + std::string(10, '0') + "00" + "00000");
  EXPECT_EQ(text.substr(header + 258, 2 + 7 + 3), "TEID     000");
  EXPECT_EQ(text.substr(header + 258 + 273, 9), "0STA00000");
}

TEST_F(SaveLayouts, NewLabelsAreWrittenFromTheirNumbers) {
  NitfFile document;
  document.IsNitf20 = 1;
  MakeNew(document, 0, 0, 1, 0);
  const Bytes saved = SavedBytes(document);
  const std::string text(saved.begin(), saved.end());
  EXPECT_EQ(text.substr(text.size() - 11), std::string("\0\0\0\xFF\xFF\xFF"
                                                       "00000",
                                                       11));
  EXPECT_EQ(text.substr(text.find("LA0"), 12), "LA0000000000");
  EXPECT_EQ(text.substr(text.size() - 11 - 22, 22), "0 " + std::string(20, '0'));
}

TEST_F(SaveLayouts, ATextsDowngradeIsBlankInANewRecord) {
  NitfFile document;
  document.IsNitf20 = 1;
  MakeNew(document, 0, 0, 0, 1);
  const Bytes saved = SavedBytes(document);
  const std::string text(saved.begin(), saved.end());
  EXPECT_EQ(text.substr(text.size() - 15), "      0STA00000");
}

TEST_F(SaveLayouts, ANewImageHasNoBands) {
  NitfFile document;
  MakeNew(document, 1, 0, 0, 0);
  const Bytes saved = SavedBytes(document);
  const std::string text(saved.begin(), saved.end());
  const size_t start = 388 + 16;
  EXPECT_EQ(text.substr(start, 12), "IMMissing ID");
  EXPECT_EQ(text.substr(start + 333),
            "0000000000000000INTRGB     VIS     01R 0NC0"
            "00000"
            "0P" +
                std::string(16, '0') +
                "01"
                "001"
                "000"
                "0000000000"
                "1.0 "
                "00000"
                "00000");
}

// ---- Codes and counts that no reader gives ----

TEST_F(SaveLayouts, PixelTypesOfOtherKindsAreRefused) {
  NitfFile document;
  Open(document, NtfBuilder{GreyImage(3, 2)}.Build());
  document.Images->Subheader->PixelType = tavi::kPixelReal;
  EXPECT_EQ(Save(document), ERR_UNSUPPORTED_PVTYPE);
  ASSERT_EQ(host().messages().size(), 1U);
  EXPECT_EQ(host().messages()[0].text, "Unsupported PVTYPE");
  EXPECT_EQ(host().messages()[0].caption, "Error");
  // What stands before it has been written.
  EXPECT_EQ(ReadFile(OutputPath()).size(), NtfBuilder{GreyImage(3, 2)}.Build().At("image[0].PVTYPE").offset);
}

TEST_F(SaveLayouts, CodesWithoutATextRepeatTheTextBeforeThem) {
  const BuiltFile built = NtfBuilder{GreyImage(3, 2)}.Build();
  NitfFile document;
  Open(document, built);
  tavi::ImSubHdr& image = *document.Images->Subheader;
  image.Representation = 99;
  image.Compression = tavi::kC1;
  image.ComratMode = 99;
  EXPECT_EQ(Part(document, built.At("image[0].IREP").offset, 8), "INT     ");
  EXPECT_EQ(Part(document, built.At("image[0].IC").offset, 6), "C1C1  ");
}

TEST_F(SaveLayouts, BandsWithoutRecordsAreBlank) {
  const BuiltFile built = NtfBuilder{GreyImage(3, 2)}.Build();
  NitfFile document;
  Open(document, built);
  tavi::ImSubHdr& image = *document.Images->Subheader;
  image.BandField = 0;
  image.BandCount = 0;
  image.BandRoles.Release();
  image.BandSubcategories.Release();
  image.BandFilterConditions.Release();
  image.BandFilterCodes.Release();
  image.BandLutCounts.Release();
  std::memcpy(image.Text.XBANDS, "00002", 6);
  EXPECT_EQ(Part(document, built.At("image[0].NBANDS").offset, 6 + 26),
            "000002"
            "        N   0"
            "        N   0");
  // Numbers of bands that five digits do not have are none.
  image.BandField = 0xFFFFFFF0;
  EXPECT_EQ(Part(document, built.At("image[0].NBANDS").offset, 2), "-0");
  std::memcpy(image.Text.XBANDS, "-0002", 6);
  image.BandField = 0;
  EXPECT_EQ(Part(document, built.At("image[0].NBANDS").offset, 7), "0-00020");
}

TEST_F(SaveLayouts, CommentsAreThoseOfTheCountsText) {
  NtfBuilder file{GreyImage(3, 2)};
  file.images[0].comments = {"one", "two"};
  const BuiltFile built = file.Build();
  NitfFile document;
  Open(document, built);
  document.Images->Subheader->Text.NICOM[0] = '3';
  document.Images->Subheader->HasPendingData = 1;  // no copy that would be misplaced
  const size_t at = built.At("image[0].NICOM").offset;
  const std::string one = "one" + std::string(77, ' ');
  const std::string two = "two" + std::string(77, ' ');
  EXPECT_EQ(Part(document, at, 1 + 240 + 2), "3" + one + two + std::string(80, ' ') + "NC");
  document.Images->Subheader->Text.NICOM[0] = '1';
  EXPECT_EQ(Part(document, at, 1 + 80 + 2), "1" + one + "NC");
}

TEST_F(SaveLayouts, BlocksShorterThanTheirLengthAreCompletedWithZeros) {
  NtfBuilder file{GreyImage(3, 2)};
  file.images[0].udid = tavi_test::Tre("UDITRE", "abc");
  const BuiltFile built = file.Build();
  NitfFile document;
  Open(document, built);
  std::memcpy(document.Images->Subheader->Text.UDIDL, "00020", 6);
  EXPECT_EQ(Part(document, built.At("image[0].UDIDL").offset, 5 + 3 + 17),
            std::string("00020000UDITRE00003abc\0\0\0", 25));
  document.Images->Subheader->UserTre.Release();
  EXPECT_EQ(Part(document, built.At("image[0].UDIDL").offset, 8 + 17), "00020000" + std::string(17, '\0'));
  std::memcpy(document.Images->Subheader->Text.UDIDL, "00001", 6);
  EXPECT_EQ(Part(document, built.At("image[0].UDIDL").offset, 8 + 5), "0000100000000");
}

TEST_F(SaveLayouts, MasksAreWrittenByTheirLengthsAlone) {
  NtfBuilder file{GreyImage(4, 2, Bytes(24, 3))};
  file.images[0].Blocks(2, 2, 4, 2);
  file.images[0].ic = "NM";
  file.images[0].mask.block_offsets = {1, 2, 3, 4};
  const BuiltFile built = file.Build();
  NitfFile document;
  Open(document, built);
  tavi::ImSubHdr& image = *document.Images->Subheader;
  image.Compression = tavi::kNC;
  image.HasPendingData = 1;
  const std::string reversed("\1\0\0\0\2\0\0\0\3\0\0\0\4\0\0\0", 16);
  const size_t at = built.At("image[0].data").offset;
  EXPECT_EQ(Part(document, at, 16), reversed);
  // More blocks than entries: those that there are.
  image.BlocksPerRow = image.BlocksPerColumn = 0xFFFFFFFF;
  EXPECT_EQ(Part(document, at, 16), reversed);
  image.BlockMask.bytes.Release();
  EXPECT_EQ(SavedBytes(document).size(), at);
}

// ---- Lengths of an edited document ----

TEST_F(SaveLayouts, WhatAHeaderTakesFromWhere) {
  NtfBuilder file{GreyImage(3, 2)};
  file.graphics.resize(1);
  file.texts.resize(1);
  file.texts[0].data = {'t'};
  const BuiltFile built = file.Build();
  NitfFile document;
  Open(document, built);
  tavi::NtfHdr& header = document.Header;
  header.HlWork = 999;
  header.HlRead = static_cast<uint32_t>(built.At("image[0].subheader").offset);
  header.LiWork[0] = 5;
  header.LsshWork[0] = 1234;
  header.LsWork[0] = 77;
  std::memcpy(header.Text.FL, "000000004711", 13);
  header.FlMirror = 0;
  EXPECT_EQ(Part(document, built.At("HL").offset, 6), "000999");
  EXPECT_EQ(Part(document, built.At("LI[0]").offset, 10), "0000000006") << "the source's length";
  EXPECT_EQ(header.LiWork[0], 6U);
  EXPECT_EQ(Part(document, built.At("LSSH[0]").offset, 10), "1234000077");
  EXPECT_EQ(Part(document, built.At("FL").offset, 12), "000000004711");
  EXPECT_EQ(header.FlMirror, 4711U);
  std::memcpy(header.Text.FL, "999999999999", 13);
  EXPECT_EQ(Part(document, built.At("FL").offset, 12), "002147483647");
  EXPECT_EQ(header.FlMirror, 2147483647U);
  header.LishWork[0] = 123456;
  EXPECT_EQ(Part(document, built.At("LISH[0]").offset, 6), "123456");
}

TEST_F(SaveLayouts, TablesAreAsLongAsTheLargerOfBothCounts) {
  NtfBuilder file;
  file.graphics.resize(2);
  const BuiltFile built = file.Build();
  NitfFile document;
  Open(document, built);
  document.GraphicCount = 1;  // of two in the table
  EXPECT_EQ(Part(document, built.At("NUMS").offset, 3 + 20),
            "001"
            "0258000000"
            "0258000000");
  document.Header.NumGraphics = 1;
  document.GraphicCount = 2;  // the second one's lengths are beyond the header's count
  EXPECT_EQ(Part(document, built.At("NUMS").offset, 3 + 20),
            "002"
            "0258000000"
            "0000000000");
}

TEST_F(SaveLayouts, AnUnusableClassIsSavedAndRefusedByTheReader) {
  NitfFile document;
  tavi::MakeEmptyDocument(document);
  document.Header.Text.FSCLAS[0] = ' ';
  ASSERT_EQ(Save(document), SUCCESS);
  EXPECT_EQ(Document(OutputPath()).open, ERR_FILE_FORMAT);
  document.Header.Text.FSCLAS[0] = 'U';
  std::memcpy(document.Header.Text.CLEVEL, "05", 3);
  ASSERT_EQ(Save(document), SUCCESS);
  EXPECT_EQ(Document(OutputPath()).open, ERR_UNSUPPORTED_CLEVEL);
}

// Raw copies trust the working lengths: one that is wrong misplaces the data.
TEST_F(SaveLayouts, AWrongWorkingLengthMisplacesTheData) {
  const BuiltFile built = NtfBuilder{GreyImage(3, 2, {1, 2, 3, 4, 5, 6})}.Build();
  const size_t data = built.At("image[0].data").offset;
  NitfFile document;
  Open(document, built);
  document.Header.LishWork[0] += 4;
  EXPECT_EQ(Part(document, data, 10), std::string("\0\0\0\0\1\2\3\4\5\6", 10));
  document.Header.LishWork[0] -= 6;
  EXPECT_EQ(Part(document, data - 2, 6), "\1\2\3\4\5\6");
  EXPECT_EQ(SavedBytes(document).size(), data + 4);
}

template <class Array>
void Hold(Array& array, const std::string& text) {
  ASSERT_TRUE(array.Allocate(text.size(), {}));
  std::memcpy(array.data(), text.data(), text.size());
}

TEST_F(SaveLayouts, DataInMemoryNeedNoSource) {
  NtfBuilder file{GreyImage(3, 1, {1, 2, 3})};
  file.graphics.resize(1);
  file.graphics[0].data = {'c', 'g', 'm'};
  file.texts.resize(1);
  file.texts[0].data = {'t', 'e', 'x', 't'};
  const BuiltFile built = file.Build();
  NitfFile document;
  Open(document, built);
  Hold(document.Images->Subheader->PendingData, "IMA");
  document.Images->Subheader->HasPendingData = 1;
  Hold(document.Graphics->Subheader->GraphicDataBuffer, "CGMx");
  document.Graphics->Subheader->GraphicDataInMemory = 1;
  Hold(document.Texts->Subheader->TextDataBuffer, "TE");
  document.Texts->Subheader->TextDataInMemory = 1;
  HostFileClose(document.File);
  document.File = tavi::kNoFile;
  EXPECT_EQ(Part(document, built.At("image[0].data").offset, 3), "IMA");
  EXPECT_EQ(Part(document, built.At("graphic[0].data").offset, 3), "CGM");
  // Of a buffer shorter than its length what there is.
  EXPECT_EQ(Part(document, built.At("text[0].data").offset, 2), "TE");
  EXPECT_EQ(SavedBytes(document).size(), built.bytes.size() - 2);
}

TEST_F(SaveLayouts, LabelDataInMemory) {
  NtfBuilder file;
  file.layout = tavi_test::Layout::kNitf20;
  file.header["FVER"] = "02.10";  // the version that is accepted, whatever the layout
  file.labels.resize(1);
  file.labels[0].data = {'l', 'a', 'b'};
  const BuiltFile built = file.Build();
  NitfFile document;
  Open(document, built, true);
  Hold(document.Labels->Subheader->LabelDataBuffer, "LABEL");
  document.Labels->Subheader->LabelDataInMemory = 1;
  EXPECT_EQ(Part(document, built.At("label[0].data").offset, 3), "LAB");
  EXPECT_EQ(SavedBytes(document).size(), built.bytes.size());
}

// A corrected LISH stays in the document, so that the next save starts with it.
TEST_F(SaveLayouts, ACorrectedLengthStays) {
  const VqBytes stream{
      .image_rows = 2, .codes_per_row = 2, .code_bits = 8, .codes = Bytes(4, 1), .tail = {9}};
  ImageSpec image = GreyImage(4, 4);
  image.ic = "M4";
  image.comrat = "00.0";
  image.nppbh = image.nppbv = 4;
  image.pixels = stream.Build();
  image.mask.pad_code = {0};
  const BuiltFile built = NtfBuilder{image}.Build();
  NitfFile document;
  Open(document, built);
  // An edit has made the subheader longer by a block of user data.
  tavi::ImSubHdr& record = *document.Images->Subheader;
  std::memcpy(record.Text.UDIDL, "00010", 6);
  const uint32_t length = document.Header.LishRead[0] + 10;
  for (int again = 0; again < 2; ++again) {
    EXPECT_EQ(Part(document, built.At("LISH[0]").offset, 16),
              tavi_test::Digits(length, 6) + tavi_test::Digits(built.At("image[0].data").length - 1, 10));
    EXPECT_EQ(document.Header.LishWork[0], length);
    EXPECT_EQ(document.Header.LiWork[0], built.At("image[0].data").length - 1);
    EXPECT_EQ(document.Header.LiRead[0], built.At("image[0].data").length);
  }
}

// After an appended graphic, texts and extensions are looked for too far on: wrong bytes, or none.
TEST_F(SaveLayouts, AnAppendedGraphicMisplacesTheTexts) {
  NtfBuilder file;
  file.graphics.resize(1);
  file.graphics[0].data = {'c', 'g', 'm'};
  file.texts.resize(1);
  file.texts[0].data = {'t', 'e', 'x', 't'};
  NitfFile document;
  Open(document, file.Build());
  tavi::AddGraphicSubheaderLength(document.Header, 258);
  tavi::AddGraphicDataLength(document.Header, 3);
  document.Header.NumGraphics = document.GraphicCount = 2;
  EXPECT_EQ(Save(document), ERR_FILE_READ);
}

// ---- The output ----

TEST_F(SaveLayouts, AnOutputTakesWhatIsPutOverIt) {
  constexpr size_t kSize = size_t{3} << 20;
  Bytes expected(kSize + 5, 0);
  {
    tavi::SaveOutput output;
    ASSERT_TRUE(output.Prepare());
    output.Open(OutputPath().wstring().c_str());
    const auto put = [&](size_t at, const Bytes& bytes) {
      output.SeekTo(static_cast<int64_t>(at));
      EXPECT_EQ(output.Write(bytes.data(), bytes.size()), SUCCESS);
      std::copy(bytes.begin(), bytes.end(), expected.begin() + static_cast<std::ptrdiff_t>(at));
    };
    put(0, Bytes(kSize, 1));
    put(10, {2, 3});
    put((1 << 20) - 1, {4, 5, 6});
    put(kSize - 2, {7, 8, 9});
    EXPECT_EQ(output.end(), static_cast<int64_t>(kSize + 1));
    put(kSize + 4, {10});  // behind the end: zeros between
    put(5, Bytes((1 << 20) + 3, 11));
    put(6, {12});
    output.SeekTo(-1);
    EXPECT_EQ(output.position(), 7);
    output.SeekToEnd();
    EXPECT_EQ(output.position(), static_cast<int64_t>(kSize + 5));
    EXPECT_EQ(output.Close(), SUCCESS);
    EXPECT_EQ(output.Close(), SUCCESS);
  }
  EXPECT_EQ(FirstDifference(expected, ReadFile(OutputPath())), "");
}

TEST_F(SaveLayouts, AnOutputThatDoesNotOpenFailsAtTheFlush) {
  tavi::SaveOutput output;
  ASSERT_TRUE(output.Prepare());
  output.Open(directory().wstring().c_str());
  EXPECT_EQ(output.Write("x", 1), SUCCESS);
  EXPECT_EQ(output.Flush(), ERR_FILE_WRITE);
  EXPECT_EQ(output.Write("x", 1), ERR_FILE_WRITE);
  EXPECT_EQ(output.WriteRepeated('x', 1), ERR_FILE_WRITE);
  NitfFile none;
  EXPECT_EQ(output.Copy(none, 1), ERR_FILE_WRITE);
  EXPECT_EQ(output.Close(), ERR_FILE_WRITE);
}

}  // namespace
}  // namespace saving

// Records with values that fit nothing: whatever is set, drawing, reading, appending and saving come back.
#include <random>

#include "AppendTest.h"

namespace editing {
namespace {

constexpr uint32_t kNumbers[] = {0,    1,    2,     3,     4,      8,          12,         16,
                                 48,   255,  256,   999,   9999,   65535,      99999,      100000,
                                 1000, 4096, 46341, 65536, 500000, 0x7FFFFFFF, 0x80000000, 0xFFFFFFFF};
constexpr const char* kTexts[] = {"",   "B",  "INT", "MONO", "RGB", "RGB/LUT", "MULTI", "YCbCr601", "NC",
                                  "NM", "C3", "C4",  "C5",   "C8",  "I1",      "M1",    "M3",       "M4",
                                  "M5", "C1", "1D",  "2DS",  "P",   "R",       "S",     "L",        " ",
                                  "G",  "N",  "/0",  "1e9",  "-1",  "nan",     "1.0 "};

#define NUMBER(RECORD, NAME) offsetof(RECORD, NAME)
constexpr size_t kImageNumbers[] = {
    NUMBER(NitfImageHeaderInfo, NROWS),       NUMBER(NitfImageHeaderInfo, NCOLS),
    NUMBER(NitfImageHeaderInfo, ABPP),        NUMBER(NitfImageHeaderInfo, NBANDS),
    NUMBER(NitfImageHeaderInfo, XBANDS),      NUMBER(NitfImageHeaderInfo, NBPR),
    NUMBER(NitfImageHeaderInfo, NBPC),        NUMBER(NitfImageHeaderInfo, NPPBH),
    NUMBER(NitfImageHeaderInfo, NPPBV),       NUMBER(NitfImageHeaderInfo, NBPP),
    NUMBER(NitfImageHeaderInfo, IDLVL),       NUMBER(NitfImageHeaderInfo, IALVL),
    NUMBER(NitfImageHeaderInfo, ILOC_COLUMN), NUMBER(NitfImageHeaderInfo, ILOC_ROW),
    NUMBER(NitfImageHeaderInfo, ISYNC),       NUMBER(NitfImageHeaderInfo, IMDATOFF)};
constexpr size_t kImageTexts[] = {NUMBER(NitfImageHeaderInfo, PVTYPE), NUMBER(NitfImageHeaderInfo, IREP),
                                  NUMBER(NitfImageHeaderInfo, PJUST),  NUMBER(NitfImageHeaderInfo, ICORDS),
                                  NUMBER(NitfImageHeaderInfo, IC),     NUMBER(NitfImageHeaderInfo, COMRAT),
                                  NUMBER(NitfImageHeaderInfo, IMODE),  NUMBER(NitfImageHeaderInfo, IMAG)};
constexpr size_t kGraphicNumbers[] = {
    NUMBER(NitfGraphicHeaderInfo, SDLVL),       NUMBER(NitfGraphicHeaderInfo, SALVL),
    NUMBER(NitfGraphicHeaderInfo, SLOC_COLUMN), NUMBER(NitfGraphicHeaderInfo, SLOC_ROW),
    NUMBER(NitfGraphicHeaderInfo, SBND1_FIRST), NUMBER(NitfGraphicHeaderInfo, SBND1_SECOND),
    NUMBER(NitfGraphicHeaderInfo, SBND2_FIRST), NUMBER(NitfGraphicHeaderInfo, SBND2_SECOND)};

class HostileRecords : public AppendTest {
 protected:
  void SetUp() override {
    AppendTest::SetUp();
    limit_ = HostGetBitmapLimit();
    HostSetBitmapLimit(4 << 20);
  }
  void TearDown() override {
    HostSetBitmapLimit(limit_);
    AppendTest::TearDown();
  }

  template <class Value, size_t kCount>
  const Value& Any(const Value (&values)[kCount]) {
    return values[random_() % kCount];
  }
  bool Chance(uint32_t percent) { return random_() % 100 < percent; }

  void DisturbImage(NitfHandle document, uint32_t index) {
    ImageRecord record(document, index);
    const uint32_t bands = record->NBANDS;  // what its lists are freed by
    for (const size_t place : kImageNumbers) {
      if (Chance(15)) record.PutNumber(place, Any(kNumbers));
    }
    for (const size_t place : kImageTexts) {
      if (Chance(20)) record.Put(place, Any(kTexts));
    }
    if (Chance(20)) record->BMRLNTH = static_cast<uint16_t>(Any(kNumbers));
    if (Chance(20)) record->TMRLNTH = static_cast<uint16_t>(Any(kNumbers));
    if (Chance(20)) {
      const Bytes code(8192, 7);
      record.PutBlock(offsetof(NitfImageHeaderInfo, TPXCD), code.data(), code.size());
      record->TPXCDLNTH = static_cast<uint16_t>(Any(kNumbers));
    }
    if (Chance(20)) {
      const Bytes block(100000, 'b');
      record.PutBlock(offsetof(NitfImageHeaderInfo, UDID), block.data(), block.size());
      record->UDIDL = Any(kNumbers);
    }
    Set(document, index, record.get());
    record->NBANDS = bands;
  }

  void DisturbGraphic(NitfHandle document) {
    GraphicRecord record(document, 0);
    for (const size_t place : kGraphicNumbers) {
      if (Chance(30)) record.PutNumber(place, Any(kNumbers));
    }
    if (Chance(30)) record.Put(offsetof(NitfGraphicHeaderInfo, SFMT), Chance(50) ? "B" : "O");
    Set(document, 0, record.get());
  }

  void DisturbHeader(NitfHandle document) {
    HeaderRecord record(document, 0);
    uint32_t lengths[8];
    for (uint32_t& length : lengths) length = Any(kNumbers);
    for (const size_t place :
         {offsetof(NitfHeaderInfo, LISH), offsetof(NitfHeaderInfo, LI), offsetof(NitfHeaderInfo, LSSH),
          offsetof(NitfHeaderInfo, LS), offsetof(NitfHeaderInfo, LTSH), offsetof(NitfHeaderInfo, LT),
          offsetof(NitfHeaderInfo, LDSH), offsetof(NitfHeaderInfo, LD)}) {
      if (Chance(30)) record.PutBlock(place, lengths, sizeof lengths);
    }
    if (Chance(30)) record->HL = Any(kNumbers);
    if (Chance(30)) record->FL = Any(kNumbers);
    // Counts of more digits than the format has are another test's.
    for (const size_t place : {offsetof(NitfHeaderInfo, NUMI), offsetof(NitfHeaderInfo, NUMS),
                               offsetof(NitfHeaderInfo, NUMT), offsetof(NitfHeaderInfo, NUMDES)}) {
      if (Chance(30)) record.PutNumber(place, Any(kNumbers) % 1000);
    }
    Set(document, 0, record.get());
  }

  void UseAll(NitfHandle document) {
    Render(document);
    Tavi_NITFSaveFile(document, Output().wstring().c_str());
    Tavi_NITFGetVectorHandle(document, 0);
    Picture picture(3, 3);
    Tavi_NITFAppendImageSegment(document, picture.get(), 10, 24, 100);
    Tavi_NITFAppendTextSegment(document, text_.c_str());
    for (int32_t i = 0; i < Tavi_NITFGetImageHeaderCount(document); ++i) {
      ImageRecord record(document, static_cast<uint32_t>(i));
    }
    HeaderRecord header(document, 0);
    Render(document);
    Tavi_NITFSaveFile(document, Output().wstring().c_str());
  }

  std::mt19937 random_{20240315};
  uint64_t limit_ = 0;
  std::wstring text_;
};

TEST_F(HostileRecords, NothingIsHurt) {
  text_ = TextFile("text");
  NtfBuilder file = EditableFile();
  file.images.push_back(tavi_test::RgbImage(6, 4, 'P', Bytes(72, 100)));
  file.images.push_back(tavi_test::GreyImage(8, 8));
  file.images.back().ic = "NM";
  file.images.back().mask.block_offsets = {0};
  file.images.back().mask.pad_code = {7};
  file.images.push_back(tavi_test::GreyImage(4, 4));
  file.images.back().irep = "RGB/LUT";
  file.images.back().bands[0].irepband = "LU";
  file.images.back().bands[0].luts = {Bytes(256, 1), Bytes(256, 2), Bytes(256, 3)};
  const std::wstring path = Write(file);
  for (int round = 0; round < 300; ++round) {
    const Document document(path);
    ASSERT_EQ(document.open, SUCCESS);
    for (uint32_t image = 0; image < file.images.size(); ++image) {
      if (Chance(60)) DisturbImage(document.handle, image);
    }
    if (Chance(30)) DisturbGraphic(document.handle);
    if (Chance(30)) DisturbHeader(document.handle);
    UseAll(document.handle);
  }
}

}  // namespace
}  // namespace editing

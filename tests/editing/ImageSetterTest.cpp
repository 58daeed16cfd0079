// The image record setter: the order of the fields, where it stops, and what each field takes, seen through the
// getter and in saved bytes.
#include "EditingTest.h"

namespace editing {
namespace {

#define IMAGE(NAME) #NAME, offsetof(NitfImageHeaderInfo, NAME)

// In the order in which they are set.
const MemberCase kMembers[] = {
    {IMAGE(IM), Kind::kText, 2, 2},
    {IMAGE(IID1), Kind::kText, 10, 10},
    {IMAGE(TGTID), Kind::kText, 17, 17},
    {IMAGE(IID2), Kind::kText, 80, 80},
    {IMAGE(ISCLAS), Kind::kText, 1, 1},
    {IMAGE(ISCLSY), Kind::kText, 2, 2},
    {IMAGE(ISCODE), Kind::kText, 11, 40},
    {IMAGE(ISCTLH), Kind::kText, 2, 40},
    {IMAGE(ISREL), Kind::kText, 20, 40},
    {IMAGE(ISDCTP), Kind::kText, 2, 2},
    {IMAGE(ISDCXM), Kind::kText, 4, 4},
    {IMAGE(ISDG), Kind::kText, 1, 1},
    {IMAGE(ISCLTX), Kind::kText, 43, 43},
    {IMAGE(ISCATP), Kind::kText, 1, 1},
    {IMAGE(ISCAUT), Kind::kText, 40, 40},
    {IMAGE(ISCRSN), Kind::kText, 1, 1},
    {IMAGE(ISCTLN), Kind::kText, 15, 20},
    {IMAGE(ISORCE), Kind::kText, 42, 42},
    {IMAGE(PVTYPE), Kind::kText, 3, 3, "B"},
    {IMAGE(IREP), Kind::kText, 8, 8, "MULTI"},
    {IMAGE(ICAT), Kind::kText, 8, 8},
    {IMAGE(PJUST), Kind::kText, 1, 1, "L"},
    {IMAGE(ICORDS), Kind::kText, 1, 1, "U"},
    {IMAGE(IC), Kind::kText, 2, 2, "NM"},
    {IMAGE(COMRAT), Kind::kText, 4, 4, "1D"},
    {IMAGE(IDATIM), Kind::kChars, 14, 14, "20310102030405"},
    {IMAGE(ISDCDT), Kind::kChars, 8, 8, "20320102"},
    {IMAGE(ISDGDT), Kind::kChars, 8, 8, "20330102"},
    {IMAGE(ISSRDT), Kind::kChars, 8, 8, "20340102"},
    {IMAGE(ENCRYP), Kind::kNumber, 1, 1, "", 3},
    {IMAGE(NROWS), Kind::kNumber, 8, 8, "", 12345678},
    {IMAGE(NCOLS), Kind::kNumber, 8, 8, "", 23456789},
    {IMAGE(ABPP), Kind::kNumber, 2, 2, "", 17},
    {IMAGE(NICOM), Kind::kNumber, 1, 1, "", 1},
    {IMAGE(NBANDS), Kind::kNumber, 1, 1, "", 2},
    {IMAGE(XBANDS), Kind::kNumber, 5, 5, "", 4},
    {IMAGE(ISYNC), Kind::kNumber, 1, 1, "", 7},
    {IMAGE(IMODE), Kind::kText, 1, 1, "R"},
    {IMAGE(NBPR), Kind::kNumber, 4, 4, "", 1234},
    {IMAGE(NBPC), Kind::kNumber, 4, 4, "", 2345},
    {IMAGE(NPPBH), Kind::kNumber, 4, 4, "", 3456},
    {IMAGE(NPPBV), Kind::kNumber, 4, 4, "", 4567},
    {IMAGE(NBPP), Kind::kNumber, 2, 2, "", 16},
    {IMAGE(IDLVL), Kind::kNumber, 3, 3, "", 123},
    {IMAGE(IALVL), Kind::kNumber, 3, 3, "", 234},
    {IMAGE(IMAG), Kind::kText, 4, 4, "2.5"},
    {IMAGE(UDOFL), Kind::kNumber, 3, 3, "", 345},
    {IMAGE(IXSOFL), Kind::kNumber, 3, 3, "", 456},
};

// Those that no other field of the file depends on.
bool StandsAlone(const std::string& name) {
  for (const char* other :
       {"PVTYPE", "IREP", "PJUST", "ICORDS", "IC", "COMRAT", "NICOM", "NBANDS", "XBANDS", "IMODE", "IMAG"}) {
    if (name == other) return false;
  }
  return true;
}

std::string InFile(const MemberCase& member) {
  return member.kind == Kind::kNumber ? tavi_test::Digits(member.number, member.width)
                                      : Fixed(member.NewText(), member.width);
}

class ImageSetter : public EditingTest {
 protected:
  void SetUp() override {
    EditingTest::SetUp();
    built_ = EditableFile().Build();
    path_ = Write(built_);
  }

  // The document saved after a plain get and set, with the places of its fields.
  [[nodiscard]] BuiltFile Baseline() const {
    const Document document(path_);
    ImageRecord record(document.handle, 0);
    EXPECT_EQ(Set(document.handle, 0, record.get()), SUCCESS);
    return SavedLike(document.handle, built_);
  }

  BuiltFile built_;
  std::wstring path_;
};

TEST_F(ImageSetter, EachFieldGoesToItsPlaceAndNowhereElse) {
  const BuiltFile baseline = Baseline();
  for (const MemberCase& member : kMembers) {
    if (!StandsAlone(member.name)) continue;
    SCOPED_TRACE(member.name);
    const Document document(path_);
    ImageRecord record(document.handle, 0);
    PutNew(record, member);
    ASSERT_EQ(Set(document.handle, 0, record.get()), SUCCESS);
    ImageRecord again(document.handle, 0);
    EXPECT_EQ(Shown(again, member), Shown(record, member));
    BuiltFile expected = baseline;
    expected.Patch(std::string("image[0].") + member.name, InFile(member));
    EXPECT_EQ(Saved(document.handle), expected.bytes);
  }
}

TEST_F(ImageSetter, AShortTextIsCompletedWithBlanksAndALongOneRefused) {
  const BuiltFile baseline = Baseline();
  for (const MemberCase& member : kMembers) {
    if (member.kind != Kind::kText || !StandsAlone(member.name)) continue;
    SCOPED_TRACE(member.name);
    const Document document(path_);
    ImageRecord record(document.handle, 0);
    record.Put(member.place, "");
    ASSERT_EQ(Set(document.handle, 0, record.get()), SUCCESS);
    ImageRecord blank(document.handle, 0);
    EXPECT_EQ(blank.Text(member.place), std::string(member.limit, ' '));
    BuiltFile expected = baseline;
    expected.Patch(std::string("image[0].") + member.name, std::string(member.width, ' '));
    EXPECT_EQ(Saved(document.handle), expected.bytes);

    record.Put(member.place, std::string(member.limit + 1, 'x'));
    EXPECT_EQ(Set(document.handle, 0, record.get()), ERR_INVALID_PARAMETER);
    EXPECT_EQ(Saved(document.handle), expected.bytes) << "the field is unchanged";
  }
}

// With one text too long, the fields before it are new, itself and those behind it are old.
TEST_F(ImageSetter, TheOrderAndTheStop) {
  size_t broken_texts = 0;
  for (const MemberCase& broken : kMembers) {
    if (broken.kind != Kind::kText) continue;
    SCOPED_TRACE(broken.name);
    ++broken_texts;
    const Document document(path_);
    const ImageRecord before(document.handle, 0);
    ImageRecord record(document.handle, 0);
    for (const MemberCase& member : kMembers) PutNew(record, member);
    record.Put(broken.place, std::string(broken.limit + 1, '!'));
    ASSERT_EQ(Set(document.handle, 0, record.get()), ERR_INVALID_PARAMETER);
    record->NICOM = 2;  // as many as the record owns
    const ImageRecord after(document.handle, 0);
    bool reached = true;
    for (const MemberCase& member : kMembers) {
      reached = reached && &member != &broken;
      const std::string expected =
          !reached ? Shown(before, member)
          : member.kind == Kind::kText
              ? Fixed(member.NewText(), member.limit)
              : (member.kind == Kind::kNumber ? std::to_string(member.number) : Shown(record, member));
      EXPECT_EQ(Shown(after, member), expected) << member.name;
    }
  }
  EXPECT_EQ(broken_texts, 27U);
}

TEST_F(ImageSetter, ARecordWithoutTextsIsRefused) {
  const Document document(path_);
  const Bytes before = Saved(document.handle);
  NitfImageHeaderInfo record{};
  EXPECT_EQ(Tavi_NITFSetImageHeader(document.handle, 0, &record), ERR_INVALID_PARAMETER);
  EXPECT_EQ(Saved(document.handle), before);
  for (const MemberCase& member : kMembers) {
    if (member.kind != Kind::kText) continue;
    ImageRecord partly(document.handle, 0);
    partly.PutNull(member.place);
    EXPECT_EQ(Set(document.handle, 0, partly.get()), ERR_INVALID_PARAMETER) << member.name;
  }
}

TEST_F(ImageSetter, ResultsWithoutASubheader) {
  const Document document(path_);
  NitfImageHeaderInfo record{};
  EXPECT_EQ(Tavi_NITFSetImageHeader(document.handle, 0, nullptr), 87);
  EXPECT_EQ(Tavi_NITFSetImageHeader(nullptr, 0, nullptr), 87);
  EXPECT_EQ(Tavi_NITFSetImageHeader(nullptr, 0, &record), 0);
  for (const uint32_t index : {2U, 3U, 999U, 0xFFFFFFFFU}) {
    EXPECT_EQ(Tavi_NITFSetImageHeader(document.handle, index, &record), 87) << index;
  }
}

// ---- Texts with codes ----

struct CodedCase {
  size_t place;
  const char* field;
  const char* first;  // set before
  const char* text;
  int32_t status;
  const char* shown;  // the stored text afterwards
  const char* saved;  // what a save writes: the code's text
};

#define CODED(NAME) offsetof(NitfImageHeaderInfo, NAME), #NAME

const CodedCase kCoded[] = {
    {CODED(PVTYPE), "INT", "B", SUCCESS, "B  ", "B  "},
    {CODED(PVTYPE), "INT", "BIN", SUCCESS, "BIN", "B  "},
    {CODED(PVTYPE), "B", "I", SUCCESS, "I  ", "INT"},
    {CODED(PVTYPE), "B", "INTX", -13, "B  ", "INT"},  // begins well: the code changes
    {CODED(PVTYPE), "INT", "BBBB", -13, "INT", "B  "},
    {CODED(PVTYPE), "B", "SI", -13, "B  ", "B  "},
    {CODED(PVTYPE), "B", "", -13, "B  ", "B  "},
    {CODED(PVTYPE), "B", "i", -13, "B  ", "B  "},
    {CODED(PVTYPE), "B", " ", -13, "B  ", "B  "},
    {CODED(IREP), "MULTI", "MONO", SUCCESS, "MONO    ", "MONO    "},
    {CODED(IREP), "MONO", "RGB/LUT", SUCCESS, "RGB/LUT ", "RGB/LUT "},
    {CODED(IREP), "MONO", "RGB", SUCCESS, "RGB     ", "RGB     "},
    {CODED(IREP), "MONO", "RGB/LU", SUCCESS, "RGB/LU  ", "RGB     "},
    {CODED(IREP), "MONO", "MULTIple", SUCCESS, "MULTIple", "MULTI   "},
    {CODED(IREP), "MONO", "NODISPLY", SUCCESS, "NODISPLY", "NODISPLY"},
    {CODED(IREP), "MONO", "NVECTOR", SUCCESS, "NVECTOR ", "NVECTOR "},
    {CODED(IREP), "MONO", "POLAR", SUCCESS, "POLAR   ", "POLAR   "},
    {CODED(IREP), "MONO", "VPH", SUCCESS, "VPH     ", "VPH     "},
    {CODED(IREP), "MONO", "YCbCr601", SUCCESS, "YCbCr601", "YCbCr601"},
    {CODED(IREP), "MONO", "YCbCr601x", -13, "MONO    ", "YCbCr601"},
    {CODED(IREP), "MULTI", "MONOCHROM", -13, "MULTI   ", "MONO    "},
    {CODED(IREP), "MULTI", "MON", -13, "MULTI   ", "MULTI   "},
    {CODED(IREP), "MULTI", "mono", -13, "MULTI   ", "MULTI   "},
    {CODED(IREP), "MULTI", "", -13, "MULTI   ", "MULTI   "},
    {CODED(IREP), "MULTI", " ", -13, "MULTI   ", "MULTI   "},
    {CODED(PJUST), "R", "L", SUCCESS, "L", "L"},
    {CODED(PJUST), "L", "R", SUCCESS, "R", "R"},
    {CODED(PJUST), "R", "LR", -13, "R", "L"},
    {CODED(PJUST), "L", "RL", -13, "L", "R"},
    {CODED(PJUST), "L", "X", -13, "L", "L"},
    {CODED(PJUST), "L", "", -13, "L", "L"},
    {CODED(PJUST), "L", " ", -13, "L", "L"},  // a file's blank counts as right
    {CODED(IMODE), "P", "B", SUCCESS, "B", "B"},
    {CODED(IMODE), "B", "P", SUCCESS, "P", "P"},
    {CODED(IMODE), "B", "R", SUCCESS, "R", "R"},
    {CODED(IMODE), "B", "S", SUCCESS, "S", "S"},
    {CODED(IMODE), "B", "RR", -13, "B", "R"},
    {CODED(IMODE), "B", "Q", -13, "B", "B"},
    {CODED(IMODE), "B", "", -13, "B", "B"},
    {CODED(IMODE), "B", " ", -13, "B", "B"},
    {CODED(IMAG), "1.0", "/2", SUCCESS, "/2  ", "0.5 "},
    {CODED(IMAG), "1.0", "2.5", SUCCESS, "2.5 ", "2.5 "},
    {CODED(IMAG), "1.0", "/2.9", SUCCESS, "/2.9", "0.5 "},  // the divisor is an integer
    {CODED(IMAG), "1.0", "12345", -13, "1.0 ", "123 "},
    {CODED(IMAG), "1.0", "", SUCCESS, "    ", "0.0 "},
};

TEST_F(ImageSetter, TextsWithCodes) {
  for (const CodedCase& one : kCoded) {
    SCOPED_TRACE(std::string(one.field) + " " + one.first + " to " + one.text);
    const Document document(path_);
    ImageRecord record(document.handle, 0);
    record.Put(one.place, one.first);
    ASSERT_EQ(Set(document.handle, 0, record.get()), SUCCESS);
    record.Put(one.place, one.text);
    EXPECT_EQ(Set(document.handle, 0, record.get()), one.status);
    const ImageRecord after(document.handle, 0);
    EXPECT_EQ(after.Text(one.place), one.shown);
    EXPECT_EQ(SavedLike(document.handle, built_).Text(std::string("image[0].") + one.field), one.saved);
  }
}

// ---- Fields that lengthen the subheader ----

struct LengthCase {
  const char* icords;
  const char* ic;
  int32_t change;  // from a G and NC
};

TEST_F(ImageSetter, LengthsFollowCornersAndRates) {
  const LengthCase cases[] = {{"G", "NC", 0},   {"U", "NC", 0}, {" ", "NC", -60}, {"", "NC", -60},
                              {"N", "NC", 0},   {"G", "C3", 4}, {"G", "NM", 0},   {"G", "M3", 4},
                              {" ", "C3", -56}, {"D", "I1", 4}};
  for (const LengthCase& one : cases) {
    SCOPED_TRACE(std::string(one.icords) + " " + one.ic);
    const Document document(path_);
    const uint32_t before = FileLength(document.handle);
    ImageRecord record(document.handle, 0);
    const auto place = [](const char* name) {
      return name[1] == 'C' && name[2] == '\0' ? offsetof(NitfImageHeaderInfo, IC)
                                               : offsetof(NitfImageHeaderInfo, ICORDS);
    };
    record.Put(place("ICORDS"), one.icords);
    record.Put(place("IC"), one.ic);
    ASSERT_EQ(Set(document.handle, 0, record.get()), SUCCESS);
    EXPECT_EQ(FileLength(document.handle), before + static_cast<uint32_t>(one.change));
    const BuiltFile saved{Saved(document.handle), built_.places, built_.order};
    const auto number = [](const std::string& text) { return std::stol(text); };
    EXPECT_EQ(number(saved.Text("LISH[0]")), number(built_.Text("LISH[0]")) + one.change);
    EXPECT_EQ(saved.Text("LISH[1]"), built_.Text("LISH[1]"));
    EXPECT_EQ(number(saved.Text("FL")), static_cast<int32_t>(before) + one.change);
    // Back again, and all is as it was.
    record.Put(place("ICORDS"), "G");
    record.Put(place("IC"), "NC");
    ASSERT_EQ(Set(document.handle, 0, record.get()), SUCCESS);
    EXPECT_EQ(SavedLike(document.handle, built_).bytes, Baseline().bytes);
  }
}

TEST_F(ImageSetter, NeitherOfTheEqualKindsChangesALength) {
  const Document document(path_);
  ImageRecord record(document.handle, 0);
  record.Put(offsetof(NitfImageHeaderInfo, IC), "C3");
  ASSERT_EQ(Set(document.handle, 0, record.get()), SUCCESS);
  const uint32_t length = FileLength(document.handle);
  for (const char* ic : {"C0", "C1", "C2", "C3", "C4", "C5", "C6", "C8", "I1", "M0", "M1", "M2", "M3", "M4",
                         "M5", "M6", "M8"}) {
    record.Put(offsetof(NitfImageHeaderInfo, IC), ic);
    EXPECT_EQ(Set(document.handle, 0, record.get()), SUCCESS) << ic;
    EXPECT_EQ(FileLength(document.handle), length) << ic;
    EXPECT_EQ(ImageRecord(document.handle, 0).Text(offsetof(NitfImageHeaderInfo, IC)), ic);
  }
  for (const char* ic : {"C7", "C", "", "C33", "nc", "NC "}) {
    record.Put(offsetof(NitfImageHeaderInfo, IC), ic);
    EXPECT_EQ(Set(document.handle, 0, record.get()), ERR_INVALID_PARAMETER) << ic;
    EXPECT_EQ(ImageRecord(document.handle, 0).Text(offsetof(NitfImageHeaderInfo, IC)), "M8") << ic;
    EXPECT_EQ(FileLength(document.handle), length) << ic;
  }
  record.Put(offsetof(NitfImageHeaderInfo, IC), "NM");
  ASSERT_EQ(Set(document.handle, 0, record.get()), SUCCESS);
  EXPECT_EQ(FileLength(document.handle), length - 4);
}

TEST_F(ImageSetter, AnOverlongIcordsChangesNoLength) {
  const Document document(path_);
  const uint32_t length = FileLength(document.handle);
  ImageRecord record(document.handle, 0);
  record.Put(offsetof(NitfImageHeaderInfo, ICORDS), "  ");
  EXPECT_EQ(Set(document.handle, 0, record.get()), ERR_INVALID_PARAMETER);
  EXPECT_EQ(FileLength(document.handle), length);
  EXPECT_EQ(ImageRecord(document.handle, 0).Text(offsetof(NitfImageHeaderInfo, ICORDS)), "G");
}

TEST_F(ImageSetter, Rates) {
  struct Case {
    const char* text;
    int32_t status;
    const char* shown;
    const char* saved;
  };
  // 1D is compared over two characters, the others over three.
  const Case cases[] = {{"1D", SUCCESS, "1D  ", "1D  "},   {"1Dxx", SUCCESS, "1Dxx", "1D  "},
                        {"2DS", SUCCESS, "2DS ", "2DS "},  {"2DSx", SUCCESS, "2DSx", "2DS "},
                        {"2DH", SUCCESS, "2DH ", "2DH "},  {"2D", SUCCESS, "2D  ", "00.0"},
                        {"00.0", SUCCESS, "00.0", "00.0"}, {"", SUCCESS, "    ", "00.0"},
                        {"2DS  ", -13, "1D  ", "1D  "},    {"12345678", -13, "1D  ", "1D  "}};
  const BuiltFile built = [] {
    NtfBuilder file;
    file.images = {tavi_test::GreyImage(2, 2)};
    file.images[0].ic = "C3";
    return file.Build();
  }();
  const std::wstring path = Write(built);
  for (const Case& one : cases) {
    SCOPED_TRACE(one.text);
    const Document document(path);
    ImageRecord record(document.handle, 0);
    record.Put(offsetof(NitfImageHeaderInfo, COMRAT), "1D");
    ASSERT_EQ(Set(document.handle, 0, record.get()), SUCCESS);
    record.Put(offsetof(NitfImageHeaderInfo, COMRAT), one.text);
    EXPECT_EQ(Set(document.handle, 0, record.get()), one.status);
    EXPECT_EQ(ImageRecord(document.handle, 0).Text(offsetof(NitfImageHeaderInfo, COMRAT)), one.shown);
    EXPECT_EQ(SavedLike(document.handle, built).Text("image[0].COMRAT"), one.saved);
  }
}

// ---- Locations ----

TEST_F(ImageSetter, AGetAndASetExchangeRowAndColumn) {
  const Document document(path_);
  const std::string stored = built_.Text("image[1].ILOC");
  EXPECT_EQ(stored, "00003-0002");
  ImageRecord record(document.handle, 1);
  EXPECT_EQ(+record->ILOC_ROW, 3);
  EXPECT_EQ(+record->ILOC_COLUMN, -2);
  ASSERT_EQ(Set(document.handle, 1, record.get()), SUCCESS);
  EXPECT_EQ(SavedLike(document.handle, built_).Text("image[1].ILOC"), "-000200003");
  ImageRecord again(document.handle, 1);
  EXPECT_EQ(+again->ILOC_ROW, -2);
  EXPECT_EQ(+again->ILOC_COLUMN, 3);
  ASSERT_EQ(Set(document.handle, 1, again.get()), SUCCESS);
  EXPECT_EQ(SavedLike(document.handle, built_).Text("image[1].ILOC"), stored);
}

TEST_F(ImageSetter, Locations) {
  struct Case {
    int32_t first;
    int32_t second;
    const char* text;
  };
  const Case cases[] = {{0, 0, "0000000000"},
                        {-5, 7, "-000500007"},
                        {99999, -9999, "99999-9999"},
                        {12, -12345, "00012-2345"},      // the sign comes last
                        {123456, 1, "2345600001"},       // what runs out of the field is lost
                        {7, 123456, "0000123456"},       // the column runs into the row's half
                        {-7, 1234567890, "1234567890"},  // and over its sign
                        {INT32_MIN, INT32_MAX, "2147483647"}};
  for (const Case& one : cases) {
    SCOPED_TRACE(one.text);
    const Document document(path_);
    ImageRecord record(document.handle, 0);
    record->ILOC_COLUMN = one.first;
    record->ILOC_ROW = one.second;
    ASSERT_EQ(Set(document.handle, 0, record.get()), SUCCESS);
    EXPECT_EQ(SavedLike(document.handle, built_).Text("image[0].ILOC"), one.text);
  }
}

TEST_F(ImageSetter, ANegativeLocationIsReadBack) {
  const Document document(path_);
  ImageRecord record(document.handle, 0);
  record->ILOC_COLUMN = -5;
  record->ILOC_ROW = 7;
  ASSERT_EQ(Set(document.handle, 0, record.get()), SUCCESS);
  EXPECT_EQ(SavedLike(document.handle, built_).Text("image[0].ILOC"), "-000500007");
  const Document again(Output().wstring());
  ASSERT_EQ(again.open, SUCCESS);
  const ImageRecord read(again.handle, 0);
  EXPECT_EQ(+read->ILOC_ROW, -5);
  EXPECT_EQ(+read->ILOC_COLUMN, 7);
}

// The composite takes the new place, level and attachment at once.
TEST_F(ImageSetter, CompositionFollows) {
  NtfBuilder file;
  file.images = {tavi_test::GreyImage(8, 6)};
  const Document document(Write(file));
  ImageRecord record(document.handle, 0);
  record->ILOC_COLUMN = 10;  // first half: the row
  record->ILOC_ROW = 20;
  ASSERT_EQ(Set(document.handle, 0, record.get()), SUCCESS);
  uint32_t width = 0;
  uint32_t height = 0;
  ASSERT_EQ(GetActual_Width_Height(document.handle, &width, &height), SUCCESS);
  EXPECT_EQ(width, 28U);
  EXPECT_EQ(height, 16U);
}

// ---- Comments ----

TEST_F(ImageSetter, CommentsGoIntoTheSlotsThatThereAre) {
  const BuiltFile baseline = Baseline();
  const Document document(path_);
  ImageRecord record(document.handle, 0);
  std::memcpy(record->ICOM[1], "changed", 8);
  ASSERT_EQ(Set(document.handle, 0, record.get()), SUCCESS);
  BuiltFile expected = baseline;
  expected.Patch("image[0].ICOM[1]", Fixed("changed", 80));
  EXPECT_EQ(Saved(document.handle), expected.bytes);
}

TEST_F(ImageSetter, MoreCommentsThanThereAreAreRefusedWithNicomChanged) {
  const Document document(path_);
  ImageRecord record(document.handle, 0);
  const std::string imode = record.Text(offsetof(NitfImageHeaderInfo, IMODE));
  record.Put(offsetof(NitfImageHeaderInfo, IMODE), "R");
  record->NICOM = 3;
  char* const comments[3] = {record->ICOM[0], record->ICOM[1], record->ICOM[0]};
  char** const own = record->ICOM;
  record->ICOM = const_cast<char**>(comments);
  EXPECT_EQ(Set(document.handle, 0, record.get()), ERR_INVALID_PARAMETER);
  record->ICOM = own;
  record->NICOM = 2;
  const ImageRecord after(document.handle, 0);
  EXPECT_EQ(after.Number(offsetof(NitfImageHeaderInfo, NICOM)), 3U);
  EXPECT_EQ(after.Text(offsetof(NitfImageHeaderInfo, IMODE)), imode) << "it stopped there";
}

TEST_F(ImageSetter, ALongCommentAndAMissingListAreRefused) {
  const Document document(path_);
  ImageRecord record(document.handle, 0);
  char long_comment[82] = {};
  std::memset(long_comment, 'c', 81);
  char* const comments[2] = {record->ICOM[0], long_comment};
  char** const own = record->ICOM;
  for (char** list : {const_cast<char**>(comments), static_cast<char**>(nullptr)}) {
    record->ICOM = list;
    EXPECT_EQ(Set(document.handle, 0, record.get()), ERR_INVALID_PARAMETER);
  }
  record->ICOM = own;
  EXPECT_EQ(SavedLike(document.handle, built_).Text("image[0].ICOM[1]"), Fill("ICOM1", 80));
}

TEST_F(ImageSetter, FewerCommentsChangeTheTextOnly) {
  const Document document(path_);
  ImageRecord record(document.handle, 0);
  record->NICOM = 0;
  ASSERT_EQ(Set(document.handle, 0, record.get()), SUCCESS);
  record->NICOM = 2;
  ASSERT_EQ(Set(document.handle, 0, record.get()), SUCCESS) << "the slots are still there";
  EXPECT_EQ(SavedLike(document.handle, built_).bytes, Baseline().bytes);
}

// ---- Bands ----

TEST_F(ImageSetter, ANewBandCountMakesNewTables) {
  NtfBuilder file;
  file.images = {tavi_test::RgbImage(2, 2, 'P', Bytes(12, 9))};
  file.images[0].bands[1].isubcat = "SUBCAT";
  file.images[0].bands[1].ifc = "X";
  file.images[0].bands[1].imflt = "FLT";
  const BuiltFile built = file.Build();
  const Document document(Write(built));
  ImageRecord record(document.handle, 0);
  ASSERT_EQ(Set(document.handle, 0, record.get()), SUCCESS);
  const BuiltFile same = SavedLike(document.handle, built);
  for (const std::string band : {"[0]", "[1]", "[2]"}) {
    EXPECT_EQ(same.Text("image[0].IREPBAND" + band), "  ");
    EXPECT_EQ(same.Text("image[0].ISUBCAT" + band), "      ");
    EXPECT_EQ(same.Text("image[0].IFC" + band), "N");
    EXPECT_EQ(same.Text("image[0].IMFLT" + band), "   ");
    EXPECT_EQ(same.Text("image[0].NLUTS" + band), "0");
  }
  // ISYNC and IMODE stand where the third band was; the data are looked for by the old length.
  record->NBANDS = 2;
  ASSERT_EQ(Set(document.handle, 0, record.get()), SUCCESS);
  const BuiltFile fewer = SavedLike(document.handle, built);
  EXPECT_EQ(fewer.Text("image[0].NBANDS"), "2");
  EXPECT_EQ(fewer.Text("image[0].IREPBAND[2]"), "0P");
}

TEST_F(ImageSetter, BandCountsThatDoNotFit) {
  const Document document(path_);
  ImageRecord record(document.handle, 0);
  for (const uint32_t count : {100000U, 0x7FFFFFFFU, 0x80000000U, 0xFFFFFFFFU}) {
    record->NBANDS = count;
    EXPECT_EQ(Set(document.handle, 0, record.get()), ERR_NO_MEMORY) << count;
    EXPECT_EQ(+ImageRecord(document.handle, 0)->NBANDS, 1U) << "the text is written last";
    HostBitmap bitmap{};
    EXPECT_NE(Tavi_NtfRenderBitmap(&bitmap, document.handle), 0);
    if ((bitmap.flags & 1) != 0) HostFreeBitmap(&bitmap);
  }
  record->NBANDS = 1;
  EXPECT_EQ(Set(document.handle, 0, record.get()), SUCCESS);
}

// The tables have fewer bands than the count then says: nothing may look behind them.
TEST_F(ImageSetter, ExtraBandsOutrunTheTables) {
  const Document document(path_);
  ImageRecord record(document.handle, 0);
  record->NBANDS = 0;
  record->XBANDS = 5;
  ASSERT_EQ(Set(document.handle, 0, record.get()), SUCCESS);
  for (const uint32_t count : {5U, 3U, 0U}) {
    record->NBANDS = count;
    ASSERT_EQ(Set(document.handle, 0, record.get()), SUCCESS) << count;
    HostBitmap bitmap{};
    Tavi_NtfRenderBitmap(&bitmap, document.handle);
    if ((bitmap.flags & 1) != 0) HostFreeBitmap(&bitmap);
    Tavi_NITFSaveFile(document.handle, Output().wstring().c_str());
  }
}

// ---- Blocks ----

TEST_F(ImageSetter, BlocksTakeTheLengthOfTheirField) {
  const BuiltFile baseline = Baseline();
  const Document document(path_);
  ImageRecord record(document.handle, 0);
  Bytes block(record->UDIDL - 3, 'u');
  record.PutBlock(offsetof(NitfImageHeaderInfo, UDID), block.data(), block.size());
  Bytes extended(record->IXSHDL, 'x');
  record.PutBlock(offsetof(NitfImageHeaderInfo, IXSHD), extended.data(), extended.size());
  ASSERT_EQ(Set(document.handle, 0, record.get()), SUCCESS);
  BuiltFile expected = baseline;
  expected.Patch("image[0].UDID", std::string(block.size(), 'u'));
  expected.Patch("image[0].IXSHD", std::string(extended.size() - 3, 'x'));
  EXPECT_EQ(Saved(document.handle), expected.bytes);

  record.PutNull(offsetof(NitfImageHeaderInfo, UDID));
  record.PutNull(offsetof(NitfImageHeaderInfo, IXSHD));
  ASSERT_EQ(Set(document.handle, 0, record.get()), SUCCESS);
  EXPECT_EQ(Saved(document.handle), expected.bytes) << "none keeps the old ones";
}

TEST_F(ImageSetter, ALengthBelowThreeDropsTheBlock) {
  for (const uint32_t length : {0U, 1U, 2U}) {
    SCOPED_TRACE(length);
    const Document document(path_);
    ImageRecord record(document.handle, 0);
    record->UDIDL = length;
    record->UDOFL = 7;
    EXPECT_EQ(Set(document.handle, 0, record.get()), ERR_NO_MEMORY);
    ImageRecord after(document.handle, 0);
    EXPECT_EQ(+after->UDIDL, length);
    EXPECT_EQ(+after->UDOFL, 7) << "set before the block";
    EXPECT_EQ(Tavi_NITFSaveFile(document.handle, Output().wstring().c_str()), SUCCESS);
  }
}

TEST_F(ImageSetter, ABlockOfLengthThreeIsEmpty) {
  const Document document(path_);
  ImageRecord record(document.handle, 0);
  record->UDIDL = 3;
  record->IXSHDL = 3;
  ASSERT_EQ(Set(document.handle, 0, record.get()), SUCCESS);
  BuiltFile saved = built_;
  saved.bytes = Saved(document.handle);
  EXPECT_EQ(saved.Text("image[0].UDIDL"), "00003");
  EXPECT_EQ(saved.Text("image[0].UDID").substr(0, 8), "00003002") << "IXSHDL and IXSOFL follow at once";
}

TEST_F(ImageSetter, MaskNumbersAndPadCode) {
  NtfBuilder file;
  file.images = {tavi_test::GreyImage(2, 2)};
  file.images[0].ic = "NM";
  file.images[0].mask.pad_code = {1, 2};
  const BuiltFile built = file.Build();
  const Document document(Write(built));
  ImageRecord record(document.handle, 0);
  EXPECT_EQ(+record->TPXCDLNTH, 16U);
  record->TPXCDLNTH = 9;  // two bytes
  record->TPXCD[0] = 0xAB;
  record->TPXCD[1] = 0xCD;
  record->IMDATOFF = 77;
  ASSERT_EQ(Set(document.handle, 0, record.get()), SUCCESS);
  ImageRecord after(document.handle, 0);
  EXPECT_EQ(+after->TPXCDLNTH, 9U);
  EXPECT_EQ(+after->IMDATOFF, 77U);
  EXPECT_EQ(after->TPXCD[0], 0xAB);
  EXPECT_EQ(after->TPXCD[1], 0xCD);
  after->TPXCDLNTH = 0;
  after->BMRLNTH = 4;
  after->TMRLNTH = 65535;
  ASSERT_EQ(Set(document.handle, 0, after.get()), SUCCESS);
  ImageRecord last(document.handle, 0);
  EXPECT_EQ(+last->TPXCDLNTH, 0U);
  EXPECT_EQ(+last->BMRLNTH, 4U);
  EXPECT_EQ(+last->TMRLNTH, 65535U);
  // Masks that the numbers announce and nobody made.
  HostBitmap bitmap{};
  Tavi_NtfRenderBitmap(&bitmap, document.handle);
  if ((bitmap.flags & 1) != 0) HostFreeBitmap(&bitmap);
  Tavi_NITFSaveFile(document.handle, Output().wstring().c_str());
}

TEST_F(ImageSetter, CornersAndBandTextsAreNotTaken) {
  const Document document(path_);
  ImageRecord record(document.handle, 0);
  record.Put(offsetof(NitfImageHeaderInfo, IGEOLO), std::string(60, '9'));
  ASSERT_EQ(Set(document.handle, 0, record.get()), SUCCESS);
  EXPECT_EQ(SavedLike(document.handle, built_).bytes, Baseline().bytes);
}

TEST_F(ImageSetter, NumbersThatDoNotFitKeepTheirWidth) {
  const Document document(path_);
  ImageRecord record(document.handle, 0);
  record->ENCRYP = 12;
  record->ISYNC = -1;
  record->UDOFL = 12345;
  ASSERT_EQ(Set(document.handle, 0, record.get()), SUCCESS);
  const BuiltFile saved = SavedLike(document.handle, built_);
  EXPECT_EQ(saved.Text("image[0].ENCRYP"), "1");
  EXPECT_EQ(saved.Text("image[0].ISYNC"), "-");
  EXPECT_EQ(saved.Text("image[0].UDOFL"), "123");
}

}  // namespace
}  // namespace editing

// The graphic record setter, seen through the getter and in saved bytes.
#include "EditingTest.h"

namespace editing {
namespace {

#define GRAPHIC(NAME) #NAME, offsetof(NitfGraphicHeaderInfo, NAME)

// In the order in which they are set. SCOLOR is stored and never written.
const MemberCase kMembers[] = {
    {GRAPHIC(SY), Kind::kText, 2, 2},
    {GRAPHIC(SID), Kind::kText, 10, 10},
    {GRAPHIC(SNAME), Kind::kText, 20, 20},
    {GRAPHIC(SSCLAS), Kind::kText, 1, 1},
    {GRAPHIC(SSCLSY), Kind::kText, 2, 2},
    {GRAPHIC(SSCODE), Kind::kText, 11, 40},
    {GRAPHIC(SSCTLH), Kind::kText, 2, 40},
    {GRAPHIC(SSREL), Kind::kText, 20, 40},
    {GRAPHIC(SSDCTP), Kind::kText, 2, 2},
    {GRAPHIC(SSDCXM), Kind::kText, 4, 4},
    {GRAPHIC(SSDG), Kind::kText, 1, 1},
    {GRAPHIC(SSCLTX), Kind::kText, 43, 43},
    {GRAPHIC(SSCATP), Kind::kText, 1, 1},
    {GRAPHIC(SSCAUT), Kind::kText, 40, 40},
    {GRAPHIC(SSCRSN), Kind::kText, 1, 1},
    {GRAPHIC(SSCTLN), Kind::kText, 15, 20},
    {GRAPHIC(ENCRYP), Kind::kNumber, 1, 1, "", 6},
    {GRAPHIC(SFMT), Kind::kText, 1, 1},
    {GRAPHIC(SSTRUCT), Kind::kNumber, 13, 13, "", 1234567890},
    {GRAPHIC(SDLVL), Kind::kNumber, 3, 3, "", 123},
    {GRAPHIC(SALVL), Kind::kNumber, 3, 3, "", 45},
    {GRAPHIC(SCOLOR), Kind::kText, 0, 1},
    {GRAPHIC(SRES2), Kind::kNumber, 2, 2, "", 78},
    {GRAPHIC(SXSOFL), Kind::kNumber, 3, 3, "", 901},
    {GRAPHIC(SSDCDT), Kind::kChars, 8, 8, "20510203"},
    {GRAPHIC(SSDGDT), Kind::kChars, 8, 8, "20520203"},
    {GRAPHIC(SSSRDT), Kind::kChars, 8, 8, "20530203"},
};

class GraphicSetter : public EditingTest {
 protected:
  void SetUp() override {
    EditingTest::SetUp();
    built_ = EditableFile().Build();
    path_ = Write(built_);
  }
  [[nodiscard]] BuiltFile Baseline() const {
    const Document document(path_);
    GraphicRecord record(document.handle, 0);
    EXPECT_EQ(Set(document.handle, 0, record.get()), SUCCESS);
    return SavedLike(document.handle, built_);
  }
  BuiltFile built_;
  std::wstring path_;
};

TEST_F(GraphicSetter, EachFieldGoesToItsPlaceAndNowhereElse) {
  const BuiltFile baseline = Baseline();
  for (const MemberCase& member : kMembers) {
    SCOPED_TRACE(member.name);
    const Document document(path_);
    GraphicRecord record(document.handle, 0);
    PutNew(record, member);
    ASSERT_EQ(Set(document.handle, 0, record.get()), SUCCESS);
    const GraphicRecord again(document.handle, 0);
    EXPECT_EQ(Shown(again, member), Shown(record, member));
    BuiltFile expected = baseline;
    if (member.width != 0) {
      expected.Patch(std::string("graphic[0].") + member.name,
                     member.kind == Kind::kNumber ? tavi_test::Digits(member.number, member.width)
                                                  : Fixed(member.NewText(), member.width));
    }
    EXPECT_EQ(Saved(document.handle), expected.bytes);
  }
}

TEST_F(GraphicSetter, TheOrderAndTheStop) {
  for (const MemberCase& broken : kMembers) {
    if (broken.kind != Kind::kText) continue;
    for (const bool missing : {false, true}) {
      SCOPED_TRACE(broken.name);
      const Document document(path_);
      const GraphicRecord before(document.handle, 0);
      GraphicRecord record(document.handle, 0);
      for (const MemberCase& member : kMembers) PutNew(record, member);
      if (missing) {
        record.PutNull(broken.place);
      } else {
        record.Put(broken.place, std::string(broken.limit + 1, '!'));
      }
      ASSERT_EQ(Set(document.handle, 0, record.get()), ERR_INVALID_PARAMETER);
      const GraphicRecord after(document.handle, 0);
      bool reached = true;
      for (const MemberCase& member : kMembers) {
        reached = reached && &member != &broken;
        EXPECT_EQ(Shown(after, member), Shown(reached ? record : before, member)) << member.name;
      }
    }
  }
}

// The location's members exchange; those of the bounds do not, and a bound's sign stays among its zeros.
TEST_F(GraphicSetter, LocationsAndBounds) {
  struct Case {
    int32_t first;
    int32_t second;
    const char* location;
    const char* bound;
  };
  const Case cases[] = {{0, 0, "0000000000", "0000000000"},
                        {-12, 34, "-001200034", "00-1200034"},
                        {34, -12, "00034-0012", "0003400-12"},
                        {99999, -9999, "99999-9999", "99999-9999"},
                        {-1, -1, "-0001-0001", "000-1000-1"},
                        {123456, 1, "1234500001", "1234500001"},
                        {INT32_MIN, INT32_MAX, "-214721474", "-214721474"}};
  for (const Case& one : cases) {
    SCOPED_TRACE(one.location);
    const Document document(path_);
    GraphicRecord record(document.handle, 0);
    record->SLOC_COLUMN = static_cast<uint32_t>(one.first);
    record->SLOC_ROW = static_cast<uint32_t>(one.second);
    record->SBND1_FIRST = record->SBND2_FIRST = static_cast<uint32_t>(one.first);
    record->SBND1_SECOND = record->SBND2_SECOND = static_cast<uint32_t>(one.second);
    ASSERT_EQ(Set(document.handle, 0, record.get()), SUCCESS);
    const BuiltFile saved = SavedLike(document.handle, built_);
    EXPECT_EQ(saved.Text("graphic[0].SLOC"), one.location);
    EXPECT_EQ(saved.Text("graphic[0].SBND1"), one.bound);
    EXPECT_EQ(saved.Text("graphic[0].SBND2"), one.bound);
  }
}

TEST_F(GraphicSetter, AGetAndASetExchangeRowAndColumn) {
  NtfBuilder file = EditableFile();
  file.graphics[0].row = -12;
  file.graphics[0].column = 34;
  const BuiltFile built = file.Build();
  const Document document(Write(built));
  GraphicRecord record(document.handle, 0);
  ASSERT_EQ(Set(document.handle, 0, record.get()), SUCCESS);
  GraphicRecord exchanged(document.handle, 0);
  EXPECT_EQ(static_cast<int32_t>(+exchanged->SLOC_ROW), 34);
  EXPECT_EQ(static_cast<int32_t>(+exchanged->SLOC_COLUMN), -12);
  ASSERT_EQ(Set(document.handle, 0, exchanged.get()), SUCCESS);
  EXPECT_EQ(SavedLike(document.handle, built).Text("graphic[0].SLOC"), built.Text("graphic[0].SLOC"));
}

TEST_F(GraphicSetter, TheBlockTakesTheLengthOfItsField) {
  const Document document(path_);
  GraphicRecord record(document.handle, 0);
  const Bytes block(record->SXSHDL - 3, 'b');
  record.PutBlock(offsetof(NitfGraphicHeaderInfo, SXSHD), block.data(), block.size());
  ASSERT_EQ(Set(document.handle, 0, record.get()), SUCCESS);
  BuiltFile expected = Baseline();
  expected.Patch("graphic[0].SXSHD", std::string(block.size(), 'b'));
  EXPECT_EQ(Saved(document.handle), expected.bytes);
  record.PutNull(offsetof(NitfGraphicHeaderInfo, SXSHD));
  ASSERT_EQ(Set(document.handle, 0, record.get()), SUCCESS);
  EXPECT_EQ(Saved(document.handle), expected.bytes);

  GraphicRecord last(document.handle, 0);
  last->SXSHDL = 2;
  last.PutChars(offsetof(NitfGraphicHeaderInfo, SSDCDT), "20610203");
  EXPECT_EQ(Set(document.handle, 0, last.get()), ERR_NO_MEMORY);
  EXPECT_NE(GraphicRecord(document.handle, 0).Chars(offsetof(NitfGraphicHeaderInfo, SSDCDT), 8), "20610203")
      << "the dates come behind it";
  EXPECT_EQ(Tavi_NITFSaveFile(document.handle, Output().wstring().c_str()), SUCCESS);
}

TEST_F(GraphicSetter, ResultsWithoutASubheader) {
  const Document document(path_);
  NitfGraphicHeaderInfo record{};
  EXPECT_EQ(Tavi_NITFSetGraphicHeader(document.handle, 0, nullptr), 87);
  EXPECT_EQ(Tavi_NITFSetGraphicHeader(nullptr, 0, nullptr), 87);
  EXPECT_EQ(Tavi_NITFSetGraphicHeader(nullptr, 0, &record), 0);
  EXPECT_EQ(Tavi_NITFSetGraphicHeader(document.handle, 1, &record), 87);
  EXPECT_EQ(Tavi_NITFSetGraphicHeader(document.handle, 0xFFFFFFFF, &record), 87);
  EXPECT_EQ(Tavi_NITFSetGraphicHeader(document.handle, 0, &record), ERR_INVALID_PARAMETER);
}

}  // namespace
}  // namespace editing

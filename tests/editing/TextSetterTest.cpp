// The text record setter, seen through the getter and in saved bytes.
#include "EditingTest.h"

namespace editing {
namespace {

#define TEXT_MEMBER(NAME) #NAME, offsetof(NitfTextHeaderInfo, NAME)

// In the order in which they are set. TSDCDT comes a second time behind TSDG.
const MemberCase kMembers[] = {
    {TEXT_MEMBER(TE), Kind::kText, 2, 2},
    {TEXT_MEMBER(TEXTID), Kind::kText, 7, 10},
    {TEXT_MEMBER(TXTALVL), Kind::kNumber, 3, 3, "", 123},
    {TEXT_MEMBER(TXTDT), Kind::kChars, 14, 14, "20610203040506"},
    {TEXT_MEMBER(TXTITL), Kind::kText, 80, 80},
    {TEXT_MEMBER(TSCLAS), Kind::kText, 1, 1},
    {TEXT_MEMBER(TSCLSY), Kind::kText, 2, 2},
    {TEXT_MEMBER(TSCODE), Kind::kText, 11, 40},
    {TEXT_MEMBER(TSCTLH), Kind::kText, 2, 40},
    {TEXT_MEMBER(TSREL), Kind::kText, 20, 40},
    {TEXT_MEMBER(TSDCTP), Kind::kText, 2, 2},
    {TEXT_MEMBER(TSDCDT), Kind::kChars, 8, 8, "20620203"},
    {TEXT_MEMBER(TSDCXM), Kind::kText, 4, 4},
    {TEXT_MEMBER(TSDG), Kind::kText, 1, 1},
    {TEXT_MEMBER(TSCLTX), Kind::kText, 43, 43},
    {TEXT_MEMBER(TSCATP), Kind::kText, 1, 1},
    {TEXT_MEMBER(TSCAUT), Kind::kText, 40, 40},
    {TEXT_MEMBER(TSCRSN), Kind::kText, 1, 1},
    {TEXT_MEMBER(TSSRDT), Kind::kChars, 8, 8, "20630203"},
    {TEXT_MEMBER(TSCTLN), Kind::kText, 15, 20},
    {TEXT_MEMBER(ENCRYP), Kind::kNumber, 1, 1, "", 4},
    {TEXT_MEMBER(TXTFMT), Kind::kText, 3, 3},
    {TEXT_MEMBER(TXSOFL), Kind::kNumber, 3, 3, "", 567},
};

class TextSetter : public EditingTest {
 protected:
  void SetUp() override {
    EditingTest::SetUp();
    built_ = EditableFile().Build();
    path_ = Write(built_);
  }
  [[nodiscard]] BuiltFile Baseline() const {
    const Document document(path_);
    TextRecord record(document.handle, 0);
    EXPECT_EQ(Set(document.handle, 0, record.get()), SUCCESS);
    return SavedLike(document.handle, built_);
  }
  BuiltFile built_;
  std::wstring path_;
};

TEST_F(TextSetter, EachFieldGoesToItsPlaceAndNowhereElse) {
  const BuiltFile baseline = Baseline();
  for (const MemberCase& member : kMembers) {
    SCOPED_TRACE(member.name);
    const Document document(path_);
    TextRecord record(document.handle, 0);
    PutNew(record, member);
    ASSERT_EQ(Set(document.handle, 0, record.get()), SUCCESS);
    const TextRecord again(document.handle, 0);
    EXPECT_EQ(Shown(again, member), Shown(record, member));
    BuiltFile expected = baseline;
    expected.Patch(std::string("text[0].") + member.name, member.kind == Kind::kNumber
                                                              ? tavi_test::Digits(member.number, member.width)
                                                              : Fixed(member.NewText(), member.width));
    EXPECT_EQ(Saved(document.handle), expected.bytes);
  }
}

TEST_F(TextSetter, TheOrderAndTheStop) {
  for (const MemberCase& broken : kMembers) {
    if (broken.kind != Kind::kText) continue;
    for (const bool missing : {false, true}) {
      SCOPED_TRACE(broken.name);
      const Document document(path_);
      const TextRecord before(document.handle, 0);
      TextRecord record(document.handle, 0);
      for (const MemberCase& member : kMembers) PutNew(record, member);
      if (missing) {
        record.PutNull(broken.place);
      } else {
        record.Put(broken.place, std::string(broken.limit + 1, '!'));
      }
      ASSERT_EQ(Set(document.handle, 0, record.get()), ERR_INVALID_PARAMETER);
      const TextRecord after(document.handle, 0);
      bool reached = true;
      for (const MemberCase& member : kMembers) {
        reached = reached && &member != &broken;
        EXPECT_EQ(Shown(after, member), Shown(reached ? record : before, member)) << member.name;
      }
    }
  }
}

TEST_F(TextSetter, TheDowngradingDateStays) {
  NtfBuilder file = EditableFile();
  file.texts[0].fields = {{"TSDGDT", "20010203"}};
  const BuiltFile built = file.Build();
  const Document document(Write(built));
  TextRecord record(document.handle, 0);
  record.PutChars(offsetof(NitfTextHeaderInfo, TSDGDT), "20990203");
  ASSERT_EQ(Set(document.handle, 0, record.get()), SUCCESS);
  EXPECT_EQ(TextRecord(document.handle, 0).Chars(offsetof(NitfTextHeaderInfo, TSDGDT), 8), "20010203");
  EXPECT_EQ(SavedLike(document.handle, built).Text("text[0].TSDGDT"), "20010203");
}

TEST_F(TextSetter, TheBlockTakesTheLengthOfItsField) {
  const Document document(path_);
  TextRecord record(document.handle, 0);
  const Bytes block(record->TXSHDL - 3, 'b');
  record.PutBlock(offsetof(NitfTextHeaderInfo, TXSHD), block.data(), block.size());
  ASSERT_EQ(Set(document.handle, 0, record.get()), SUCCESS);
  BuiltFile expected = Baseline();
  expected.Patch("text[0].TXSHD", std::string(block.size(), 'b'));
  EXPECT_EQ(Saved(document.handle), expected.bytes);

  record.PutNull(offsetof(NitfTextHeaderInfo, TXSHD));
  ASSERT_EQ(Set(document.handle, 0, record.get()), SUCCESS);
  EXPECT_EQ(Saved(document.handle), expected.bytes);

  TextRecord last(document.handle, 0);
  for (const uint32_t length : {0U, 1U, 2U}) {
    last->TXSHDL = length;
    last.PutBlock(offsetof(NitfTextHeaderInfo, TXSHD), block.data(), block.size());
    EXPECT_EQ(Set(document.handle, 0, last.get()), ERR_NO_MEMORY) << length;
    EXPECT_EQ(Tavi_NITFSaveFile(document.handle, Output().wstring().c_str()), SUCCESS);
  }
}

TEST_F(TextSetter, ResultsWithoutASubheader) {
  const Document document(path_);
  NitfTextHeaderInfo record{};
  EXPECT_EQ(Tavi_NITFSetTextHeader(document.handle, 0, nullptr), 87);
  EXPECT_EQ(Tavi_NITFSetTextHeader(nullptr, 0, nullptr), 87);
  EXPECT_EQ(Tavi_NITFSetTextHeader(nullptr, 0, &record), 0);
  EXPECT_EQ(Tavi_NITFSetTextHeader(document.handle, 1, &record), 87);
  EXPECT_EQ(Tavi_NITFSetTextHeader(document.handle, 0xFFFFFFFF, &record), 87);
  EXPECT_EQ(Tavi_NITFSetTextHeader(document.handle, 0, &record), ERR_INVALID_PARAMETER);
}

}  // namespace
}  // namespace editing

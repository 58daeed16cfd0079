// Texts appended from files.
#include "AppendTest.h"

namespace editing {
namespace {

class AppendText : public AppendTest {};

std::string ContentOf(NitfHandle document, uint32_t index) {
  uint32_t size = 0;
  EXPECT_EQ(Tavi_NITFGetTextSegment(document, index, nullptr, &size), SUCCESS);
  std::string text(size + 1, '!');
  EXPECT_EQ(Tavi_NITFGetTextSegment(document, index, reinterpret_cast<uint8_t*>(text.data()), nullptr),
            SUCCESS);
  EXPECT_EQ(text.back(), '\0');
  text.pop_back();
  return text;
}

TEST_F(AppendText, ATextOfANewDocument) {
  const NewDocument document;
  ASSERT_EQ(Tavi_NITFAppendTextSegment(document.handle, TextFile("hello, world\n").c_str()), SUCCESS);
  EXPECT_EQ(Tavi_NITFGetTextHeaderCount(document.handle), 1);
  EXPECT_EQ(Tavi_NITFGetStatus(document.handle), TAVI_DOCUMENT_VALID);
  EXPECT_EQ(FileLength(document.handle), 388U + 291 + 13);
  EXPECT_EQ(ContentOf(document.handle, 0), "hello, world\n");

  const TextRecord record(document.handle, 0);
  EXPECT_EQ(record.Text(offsetof(NitfTextHeaderInfo, TE)), "TE");
  EXPECT_EQ(record.Text(offsetof(NitfTextHeaderInfo, TEXTID)), "ID        ");
  EXPECT_EQ(record.Text(offsetof(NitfTextHeaderInfo, TXTFMT)), "STA");
  EXPECT_EQ(record.Text(offsetof(NitfTextHeaderInfo, TSCLAS)), "U");
  EXPECT_EQ(record.Chars(offsetof(NitfTextHeaderInfo, TXTDT), 14), "20040101010101");
  EXPECT_EQ(+record->TXTALVL, 0U);

  const Bytes saved = Saved(document.handle);
  ASSERT_EQ(saved.size(), 388U + 291 + 13);
  EXPECT_EQ(FieldAt(saved, kFlPlace, 12), "000000000692");
  EXPECT_EQ(FieldAt(saved, kHlPlace, 6), "000397");
  // NUMI, NUMS and NUMX are 0; NUMT, LTSH, LT.
  EXPECT_EQ(FieldAt(saved, kNumiPlace, 21), "000000000001028200013");
  EXPECT_EQ(FieldAt(saved, 397, 9), "TEID     ") << "cut to the field";
  EXPECT_EQ(FieldAt(saved, 397 + 282, 13), "hello, world\n");

  const Document again(Output().wstring());
  ASSERT_EQ(again.open, SUCCESS);
  EXPECT_EQ(ContentOf(again.handle, 0), "hello, world\n");
  EXPECT_EQ(Saved(again.handle), saved);
}

TEST_F(AppendText, AnEmptyFile) {
  const NewDocument document;
  ASSERT_EQ(Tavi_NITFAppendTextSegment(document.handle, TextFile("").c_str()), SUCCESS);
  EXPECT_EQ(FileLength(document.handle), 388U + 291);
  EXPECT_EQ(ContentOf(document.handle, 0), "");
  EXPECT_EQ(FieldAt(Saved(document.handle), kNumiPlace, 21), "000000000001028200000");
}

// From memory a text is cut at its first NUL; the file that is saved has all of it.
TEST_F(AppendText, ANulInTheText) {
  const NewDocument document;
  const std::string content("before\0after", 12);
  ASSERT_EQ(Tavi_NITFAppendTextSegment(document.handle, TextFile(content).c_str()), SUCCESS);
  uint32_t size = 0;
  uint8_t buffer[13];
  std::memset(buffer, 0x55, sizeof buffer);
  ASSERT_EQ(Tavi_NITFGetTextSegment(document.handle, 0, buffer, &size), SUCCESS);
  EXPECT_EQ(size, 12U);
  EXPECT_STREQ(reinterpret_cast<char*>(buffer), "before");
  EXPECT_EQ(buffer[7], 0x55);
  Saved(document.handle);
  const Document again(Output().wstring());
  EXPECT_EQ(ContentOf(again.handle, 0), content);
}

TEST_F(AppendText, BehindTheTextsOfAFile) {
  const BuiltFile built = EditableFile().Build();
  const Document document(Write(built));
  const uint32_t length = FileLength(document.handle);
  ASSERT_EQ(Tavi_NITFAppendTextSegment(document.handle, TextFile("second").c_str()), SUCCESS);
  ASSERT_EQ(Tavi_NITFAppendTextSegment(document.handle, TextFile("third one").c_str()), SUCCESS);
  EXPECT_EQ(FileLength(document.handle), length + 2 * 291 + 15);
  EXPECT_EQ(Tavi_NITFGetTextHeaderCount(document.handle), 3);
  EXPECT_EQ(ContentOf(document.handle, 0), std::string(17, 't'));
  EXPECT_EQ(ContentOf(document.handle, 1), "second");
  EXPECT_EQ(ContentOf(document.handle, 2), "third one");
  EXPECT_EQ(+TextRecord(document.handle, 2)->TXTALVL, 1U) << "the lowest level of all images and graphics";
  {
    const HeaderRecord header(document.handle, 0);
    EXPECT_EQ(+header->NUMT, 1U) << "the text of NUMT stays";
    EXPECT_EQ(+header->HL, static_cast<uint32_t>(built.At("image[0].IM").offset));
  }
  const Bytes saved = Saved(document.handle);
  EXPECT_EQ(saved.size(), FileLength(document.handle));
  const Document again(Output().wstring());
  ASSERT_EQ(again.open, SUCCESS);
  EXPECT_EQ(ContentOf(again.handle, 0), std::string(17, 't'));
  EXPECT_EQ(ContentOf(again.handle, 1), "second");
  EXPECT_EQ(ContentOf(again.handle, 2), "third one");
  EXPECT_EQ(+HeaderRecord(again.handle, 0)->NUMT, 3U);
}

TEST_F(AppendText, WhatCannotBeAppended) {
  const Document document(Write(EditableFile()));
  const State before = StateOf(document.handle);
  EXPECT_EQ(Tavi_NITFAppendTextSegment(nullptr, TextFile("x").c_str()), ERR_NULL_HANDLE);
  EXPECT_EQ(Tavi_NITFAppendTextSegment(nullptr, nullptr), ERR_NULL_HANDLE);
  EXPECT_EQ(Tavi_NITFAppendTextSegment(document.handle, nullptr), ERR_FILE_OPEN);
  EXPECT_EQ(Tavi_NITFAppendTextSegment(document.handle, L""), ERR_FILE_OPEN);
  EXPECT_EQ(Tavi_NITFAppendTextSegment(document.handle, (directory() / "missing").wstring().c_str()),
            ERR_FILE_OPEN);
  EXPECT_EQ(Tavi_NITFAppendTextSegment(document.handle, directory().wstring().c_str()), ERR_FILE_OPEN);
  EXPECT_EQ(StateOf(document.handle), before);
}

// More bytes than LT has digits for: nothing looks at that, and LT keeps its first five.
TEST_F(AppendText, ATextThatItsLengthDoesNotFit) {
  const NewDocument document;
  ASSERT_EQ(Tavi_NITFAppendTextSegment(document.handle, TextFile(std::string(123456, 'x')).c_str()), SUCCESS);
  EXPECT_EQ(FileLength(document.handle), 388U + 291 + 123456);
  const Bytes saved = Saved(document.handle);
  EXPECT_EQ(saved.size(), 388U + 291 + 123456);
  EXPECT_EQ(FieldAt(saved, kNumiPlace, 21), "000000000001028212345");
}

TEST_F(AppendText, NineHundredAndNinetyNine) {
  const NewDocument document;
  const std::wstring path = TextFile("x");
  for (int i = 1; i <= 999; ++i)
    ASSERT_EQ(Tavi_NITFAppendTextSegment(document.handle, path.c_str()), SUCCESS);
  const State full = StateOf(document.handle);
  EXPECT_EQ(full.texts, 999);
  EXPECT_EQ(full.file_length, 388U + 999 * 292);
  EXPECT_EQ(Tavi_NITFAppendTextSegment(document.handle, path.c_str()), 0);
  EXPECT_EQ(Tavi_NITFAppendTextSegment(document.handle, nullptr), 0) << "the limit comes first";
  EXPECT_EQ(StateOf(document.handle), full);
  const Document again(Output().wstring());
  ASSERT_EQ(again.open, SUCCESS);
  EXPECT_EQ(Tavi_NITFGetTextHeaderCount(again.handle), 999);
  EXPECT_EQ(ContentOf(again.handle, 998), "x");
}

// A record of an appended text can be changed like any other.
TEST_F(AppendText, AnAppendedTextCanBeEdited) {
  const NewDocument document;
  ASSERT_EQ(Tavi_NITFAppendTextSegment(document.handle, TextFile("x").c_str()), SUCCESS);
  TextRecord record(document.handle, 0);
  record.Put(offsetof(NitfTextHeaderInfo, TXTITL), "A title");
  ASSERT_EQ(Set(document.handle, 0, record.get()), SUCCESS);
  Saved(document.handle);
  const Document again(Output().wstring());
  EXPECT_EQ(TextRecord(again.handle, 0).Text(offsetof(NitfTextHeaderInfo, TXTITL)), Fixed("A title", 80));
}

}  // namespace
}  // namespace editing

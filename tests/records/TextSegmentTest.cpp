// The texts of text segments.
#include <vector>

#include "RecordsTest.h"

namespace tavi::records {
namespace {

using tavi_test::Bytes;
using tavi_test::GreyImage;
using tavi_test::NtfBuilder;

Bytes ToBytes(const std::string& text) {
  return {text.begin(), text.end()};
}

// A buffer of a text, its terminator and guard bytes.
struct Buffer {
  explicit Buffer(size_t size) : bytes(size + 1 + kGuards, kGuardByte) {}
  static constexpr size_t kGuards = 32;
  std::vector<uint8_t> bytes;

  std::string Text() const { return {bytes.begin(), bytes.end() - kGuards - 1}; }
  uint8_t terminator() const { return *(bytes.end() - kGuards - 1); }
  bool Intact() const {
    return std::string(bytes.end() - kGuards, bytes.end()) ==
           std::string(kGuards, static_cast<char>(kGuardByte));
  }
};

class TextSegment : public RecordsTest {
 protected:
  // The text comes back whole, terminated, and nothing is written behind it.
  void ExpectText(NitfHandle handle, uint32_t index, const std::string& expected) const {
    uint32_t size = 12345;
    EXPECT_EQ(Tavi_NITFGetTextSegment(handle, index, nullptr, &size), SUCCESS);
    ASSERT_EQ(size, expected.size());
    for (const bool asks_for_size : {true, false}) {
      Buffer buffer(size);
      size = 12345;
      EXPECT_EQ(Tavi_NITFGetTextSegment(handle, index, buffer.bytes.data(), asks_for_size ? &size : nullptr),
                SUCCESS);
      EXPECT_EQ(buffer.Text(), expected);
      EXPECT_EQ(buffer.terminator(), 0);
      EXPECT_TRUE(buffer.Intact());
      size = static_cast<uint32_t>(expected.size());
    }
  }

  static NtfBuilder FileWith(const std::vector<std::string>& texts) {
    NtfBuilder file;
    for (const std::string& text : texts) {
      file.texts.emplace_back().data = ToBytes(text);
    }
    return file;
  }
};

TEST_F(TextSegment, ATextComesBackTerminated) {
  const Document document(Write(FileWith({"hello"})));
  ExpectText(document.handle, 0, "hello");
}

TEST_F(TextSegment, NeitherBufferNorSizeIsNeeded) {
  const Document document(Write(FileWith({"hello"})));
  EXPECT_EQ(Tavi_NITFGetTextSegment(document.handle, 0, nullptr, nullptr), SUCCESS);
}

TEST_F(TextSegment, AnEmbeddedNulIsKept) {
  const std::string text("be\0tween\0", 9);
  const Document document(Write(FileWith({text})));
  ExpectText(document.handle, 0, text);
}

TEST_F(TextSegment, AnEmptyTextIsATerminator) {
  const Document document(Write(FileWith({""})));
  ExpectText(document.handle, 0, "");
}

// In a file with segments of every kind before and behind, and extended data between.
TEST_F(TextSegment, EachOfSeveralTextsIsFound) {
  const std::vector<std::string> texts = {"first", "", "third, somewhat longer", std::string(3000, 'w')};
  NtfBuilder file = FileWith(texts);
  file.images = {GreyImage(5, 4), GreyImage(2, 2)};
  file.graphics.resize(2);
  file.graphics[1].sxshd = Bytes(30, 'x');
  file.graphics[1].data = Bytes(40, 'g');
  file.texts[0].txshd = Bytes(20, 'y');
  file.texts[2].txshd = Bytes(99, 'z');
  file.data_extensions.resize(2);
  file.reserved.resize(1);
  const Document document(Write(file));
  ASSERT_EQ(document.open, SUCCESS);
  for (const uint32_t index : {0U, 1U, 2U, 3U, 2U, 0U, 3U}) {
    ExpectText(document.handle, index, texts[index]);
  }
}

TEST_F(TextSegment, AnIndexBeyondTheTextsIsReported) {
  const Document document(Write(FileWith({"one", "two"})));
  const Document empty(nullptr);
  uint32_t size = 12345;
  Buffer buffer(10);
  for (const uint32_t index : {2U, 3U, 999U, 0x80000000U, 0xFFFFFFFFU}) {
    EXPECT_EQ(Tavi_NITFGetTextSegment(document.handle, index, buffer.bytes.data(), &size), 87);
    EXPECT_EQ(Tavi_NITFGetTextSegment(document.handle, index, nullptr, nullptr), 87);
  }
  EXPECT_EQ(Tavi_NITFGetTextSegment(empty.handle, 0, buffer.bytes.data(), &size), 87);
  EXPECT_EQ(size, 12345U);
  EXPECT_EQ(buffer.bytes, Buffer(10).bytes);
}

TEST_F(TextSegment, ANullHandleIsReported) {
  uint32_t size = 12345;
  Buffer buffer(10);
  EXPECT_EQ(Tavi_NITFGetTextSegment(nullptr, 0, buffer.bytes.data(), &size), 87);
  EXPECT_EQ(size, 12345U);
  EXPECT_EQ(buffer.bytes, Buffer(10).bytes);
}

TEST_F(TextSegment, ATextThatTheFileCutsIsAShortRead) {
  for (const size_t keep : {0U, 1U, 4U}) {
    auto built = FileWith({"hello"}).Build();
    built.Truncate("text[0].data", keep);
    const Document document(Write(built));
    ASSERT_EQ(document.open, SUCCESS) << "the subheader is whole";
    uint32_t size = 0;
    EXPECT_EQ(Tavi_NITFGetTextSegment(document.handle, 0, nullptr, &size), SUCCESS);
    EXPECT_EQ(size, 5U);
    Buffer buffer(5);
    EXPECT_EQ(Tavi_NITFGetTextSegment(document.handle, 0, buffer.bytes.data(), &size), ERR_FILE_READ);
    EXPECT_EQ(size, 5U);
    EXPECT_TRUE(buffer.Intact());
  }
}

// The length is that of the header's list, right or wrong.
TEST_F(TextSegment, TheLengthIsThatOfTheHeader) {
  NtfBuilder file = FileWith({"hello world"});
  file.header["LT[0]"] = "00005";
  const Document document(Write(file));
  ExpectText(document.handle, 0, "hello");
}

TEST_F(TextSegment, ALengthBeyondTheFileIsAShortRead) {
  NtfBuilder file = FileWith({"hello"});
  file.header["LT[0]"] = "99999";
  const Document document(Write(file));
  uint32_t size = 0;
  EXPECT_EQ(Tavi_NITFGetTextSegment(document.handle, 0, nullptr, &size), SUCCESS);
  EXPECT_EQ(size, 99999U);
  Buffer buffer(size);
  EXPECT_EQ(Tavi_NITFGetTextSegment(document.handle, 0, buffer.bytes.data(), nullptr), ERR_FILE_READ);
  EXPECT_TRUE(buffer.Intact());
}

// Fetching a text moves the position in the file; nothing else of the document does.
TEST_F(TextSegment, TheDocumentIsUsableAfterAShortRead) {
  NtfBuilder file = FileWith({"first", "cut off"});
  auto built = file.Build();
  built.Truncate("text[1].data", 3);
  const Document document(Write(built));
  Buffer buffer(7);
  EXPECT_EQ(Tavi_NITFGetTextSegment(document.handle, 1, buffer.bytes.data(), nullptr), ERR_FILE_READ);
  ExpectText(document.handle, 0, "first");
  Guarded<NitfTextHeaderInfo> record;
  EXPECT_EQ(Get(document.handle, 1, record.get()), SUCCESS);
}

}  // namespace
}  // namespace tavi::records

// Files whose graphics, texts and data extensions lie: opening them, reading every record and freeing it end
// with a documented result, in memory that the file can back, and leave nothing behind.
#include <algorithm>
#include <filesystem>

#include "FaultHost.h"
#include "ReadAll.h"

namespace tavi::records {
namespace {

using tavi::faults::Watch;
using tavi_test::BuiltFile;
using tavi_test::Bytes;
using tavi_test::FieldPlace;
using tavi_test::NtfBuilder;

class RecordsBadInput : public RecordsTest {
 protected:
  RecordsBadInput() : path_((directory() / "bad.ntf").wstring()) {}

  void Put(const BuiltFile& file) {
    file.Write(directory(), "bad.ntf");
    size_ = file.bytes.size();
  }
  void Put(const NtfBuilder& file) { Put(file.Build()); }
  void Cut(size_t size) {
    std::filesystem::resize_file(directory() / "bad.ntf", size);
    size_ = size;
  }

  // Opens the file and reads all of it; the status of opening it.
  int32_t OpenAndRead() const {
    const uint64_t alive = HostLiveObjects();
    const Watch watch;
    int32_t opened = 0;
    {
      const Document document(path_);
      opened = document.open;
      EXPECT_TRUE(IsDocumented(opened)) << "status " << opened;
      EXPECT_EQ(document.handle != nullptr, opened == SUCCESS);
      if (document.handle != nullptr) {
        EXPECT_EQ(ReadAll(document.handle).worst, SUCCESS);
      }
    }
    // A pad code's copy has a byte for each of its bits; everything else takes less than four for one of the
    // file. A record of a header is of a fixed size.
    constexpr uint64_t kLargestRecord = 8192;
    EXPECT_LE(watch.demand().largest_block, std::max<uint64_t>(8 * size_, kLargestRecord))
        << "of a file of " << size_ << " bytes";
    EXPECT_EQ(watch.demand().blocks_left, 0);
    EXPECT_EQ(HostLiveObjects(), alive);
    return opened;
  }

  const std::wstring& path() const { return path_; }

 private:
  static bool IsDocumented(int32_t status) {
    static constexpr int32_t kStatuses[] = {SUCCESS,
                                            ERR_NO_MEMORY,
                                            ERR_FILE_READ,
                                            ERR_FILE_FORMAT,
                                            ERR_NOT_NITF,
                                            ERR_INVALID_PARAMETER,
                                            ERR_UNSUPPORTED_CLEVEL,
                                            ERR_UNSUPPORTED_PVTYPE,
                                            ERR_UNSUPPORTED_BPP};
    return std::find(std::begin(kStatuses), std::end(kStatuses), status) != std::end(kStatuses);
  }

  std::wstring path_;
  size_t size_ = 0;
};

TEST_F(RecordsBadInput, TheFileIsGoodAsItStands) {
  Put(FileOfAllRecords());
  EXPECT_EQ(OpenAndRead(), SUCCESS);
  const Document document(path());
  EXPECT_EQ(ReadAll(document.handle).records, 1U + 2 + 2 + 2);
}

TEST_F(RecordsBadInput, EveryPrefixGivesADocumentedResult) {
  const BuiltFile file = FileOfAllRecords().Build();
  const FieldPlace last = file.At("des[1].subheader");
  Put(file);
  for (size_t size = file.bytes.size(); size-- > 0;) {
    Cut(size);
    const int32_t status = OpenAndRead();
    ASSERT_EQ(status, size < last.offset + last.length ? ERR_FILE_READ : SUCCESS) << "cut to " << size;
    ASSERT_FALSE(HasFailure()) << "cut to " << size;
  }
}

// The texts that stand in for a number of that width.
std::vector<std::string> Replacements(size_t width) {
  std::vector<std::string> texts;
  for (const char fill : {'0', '1', '9', ' ', 'A', 'z', '\0', '\xFF'}) {
    texts.emplace_back(width, fill);
  }
  if (width >= 2) {
    const std::string zeros(width - 1, '0');
    for (const char digit : {'1', '2', '3', '4'}) {
      texts.push_back(zeros + digit);
    }
    texts.push_back(std::string(width - 2, ' ') + "-1");
    texts.push_back("-" + std::string(width - 1, '9'));
    texts.push_back("-" + zeros);
    texts.push_back("+" + zeros.substr(1) + "3");
    texts.push_back(std::string(width - 1, '9') + "8");
    texts.push_back("1" + std::string(width - 1, 'x'));
  }
  return texts;
}

// The fields of graphics, texts and data extensions, and their counts and lengths in the file header.
bool BelongsToTheNewReaders(const std::string& name) {
  constexpr std::string_view kBegins[] = {"graphic[", "text[",  "des[",   "NUMS", "LSSH[",  "LS[",
                                          "NUMX",     "NUMT",   "LTSH[",  "LT[",  "NUMDES", "LDSH[",
                                          "LD[",      "NUMRES", "LRESH[", "LRE["};
  return std::any_of(std::begin(kBegins), std::end(kBegins),
                     [&](std::string_view begin) { return name.starts_with(begin); });
}

TEST_F(RecordsBadInput, EveryNumberReplacedGivesADocumentedResult) {
  constexpr size_t kWidestNumber = 13;
  const BuiltFile good = FileOfAllRecords().Build();
  size_t tried = 0;
  for (const std::string& name : good.order) {
    const FieldPlace place = good.At(name);
    if (place.length == 0 || place.length > kWidestNumber || !BelongsToTheNewReaders(name)) {
      continue;
    }
    for (const std::string& text : Replacements(place.length)) {
      BuiltFile bad = good;
      bad.Patch(name, text);
      Put(bad);
      OpenAndRead();
      ++tried;
      ASSERT_FALSE(HasFailure()) << name << " as \"" << text << "\"";
    }
  }
  EXPECT_GT(tried, 1500U);
}

// What a length in a header says, and what its block is then: up to the last byte of the file it is data,
// whatever the header's own length says; one byte more is refused.
struct LengthCase {
  const char* field;     // the length
  const char* block;     // where its block begins
  size_t beside;         // what the length counts beside the block
  NtfBuilder (*file)();  // a file whose last segment has it
};

NtfBuilder GraphicLast() {
  NtfBuilder file;
  file.graphics.resize(2);
  file.graphics[1].sxshd = Bytes(4, 's');
  file.graphics[1].data = Bytes(30, 'g');
  return file;
}
NtfBuilder TextLast() {
  NtfBuilder file;
  file.texts.resize(2);
  file.texts[1].txshd = Bytes(4, 's');
  file.texts[1].data = Bytes(30, 't');
  return file;
}
NtfBuilder ExtensionLast() {
  NtfBuilder file;
  file.data_extensions.resize(2);
  file.data_extensions[1].desshf = Bytes(4, 's');
  file.data_extensions[1].data = Bytes(30, 'd');
  return file;
}

constexpr LengthCase kLengthCases[] = {{"graphic[1].SXSHDL", "graphic[1].SXSHD", 3, GraphicLast},
                                       {"text[1].TXSHDL", "text[1].TXSHD", 3, TextLast},
                                       {"des[1].DESSHL", "des[1].DESSHF", 0, ExtensionLast}};

TEST_F(RecordsBadInput, ALengthMayReachTheEndOfTheFileAndNoFurther) {
  for (const LengthCase& tested : kLengthCases) {
    const BuiltFile good = tested.file().Build();
    const size_t rest = good.bytes.size() - good.At(tested.block).offset;
    const size_t width = good.At(tested.field).length;
    for (const size_t beyond : {0U, 1U, 2U, 100U}) {
      BuiltFile bad = good;
      bad.Patch(tested.field, tavi_test::Digits(rest + tested.beside + beyond, width));
      Put(bad);
      EXPECT_EQ(OpenAndRead(), beyond == 0 ? SUCCESS : ERR_FILE_READ) << tested.field << " +" << beyond;
    }
  }
}

// The record then shows the segment's data as part of the block.
TEST_F(RecordsBadInput, ABlockThatReachesIntoTheDataShowsThem) {
  BuiltFile graphic = GraphicLast().Build();
  graphic.Patch("graphic[1].SXSHDL", "00037");
  Put(graphic);
  {
    const Document document(path());
    Guarded<NitfGraphicHeaderInfo> record;
    ASSERT_EQ(Get(document.handle, 1, record.get()), SUCCESS);
    EXPECT_EQ(BytesAt(record->SXSHD, 37), "ssss" + std::string(30, 'g') + std::string(3, '\0'));
  }
  BuiltFile text = TextLast().Build();
  text.Patch("text[1].TXSHDL", "00037");
  Put(text);
  {
    const Document document(path());
    Guarded<NitfTextHeaderInfo> record;
    ASSERT_EQ(Get(document.handle, 1, record.get()), SUCCESS);
    EXPECT_EQ(BytesAt(record->TXSHD, 34), "ssss" + std::string(30, 't'));
  }
}

TEST_F(RecordsBadInput, LengthsOfOneAndTwoAndNegativeOnesAreRefused) {
  for (const LengthCase& tested : kLengthCases) {
    if (tested.beside == 0) {
      continue;
    }
    for (const char* text : {"00001", "00002", "-0001", "   -3", "-9999"}) {
      BuiltFile bad = tested.file().Build();
      bad.Patch(tested.field, text);
      Put(bad);
      EXPECT_EQ(OpenAndRead(), ERR_FILE_READ) << tested.field << " " << text;
    }
  }
  BuiltFile bad = ExtensionLast().Build();
  bad.Patch("des[1].DESSHL", "-001");
  Put(bad);
  EXPECT_EQ(OpenAndRead(), ERR_FILE_READ);
}

// A length without digits is 0: the block is not read and what follows is not looked at.
TEST_F(RecordsBadInput, ALengthWithoutDigitsIsNone) {
  for (const LengthCase& tested : kLengthCases) {
    for (const char letter : {' ', 'x', '\0', '-', '.'}) {
      BuiltFile bad = tested.file().Build();
      bad.Patch(tested.field, std::string(bad.At(tested.field).length, letter));
      Put(bad);
      EXPECT_EQ(OpenAndRead(), SUCCESS) << tested.field;
    }
  }
}

// Tagged records are counted and not followed: whatever their lengths say, the block comes back as it stands.
TEST_F(RecordsBadInput, TagLengthsThatAreNoDigitsHurtNothing) {
  std::vector<Bytes> blocks;
  for (const std::string_view length :
       {"00000", "99999", "-0001", "-9999", "-0011", "     ", "xxxxx", "0001x", "\0\0\0\0\0", "1", "+0003"}) {
    const std::string text = "ABCDEF" + std::string(length) + "abcGHIJKL" + std::string(length);
    blocks.emplace_back(text.begin(), text.end());
  }
  for (size_t size = 1; size <= 12; ++size) {
    blocks.emplace_back(size, '9');
  }
  for (const Bytes& block : blocks) {
    NtfBuilder file;
    file.udhd = file.xhd = block;
    file.images = {tavi_test::GreyImage(1, 1)};
    file.images[0].udid = file.images[0].ixshd = block;
    file.graphics.emplace_back().sxshd = block;
    file.texts.emplace_back().txshd = block;
    file.data_extensions.emplace_back().data = block;
    Put(file);
    ASSERT_EQ(OpenAndRead(), SUCCESS);
    const Document document(path());
    Guarded<NitfGraphicHeaderInfo> graphic;
    Guarded<NitfTextHeaderInfo> text;
    ASSERT_EQ(Get(document.handle, 0, graphic.get()), SUCCESS);
    ASSERT_EQ(Get(document.handle, 0, text.get()), SUCCESS);
    const std::string expected(block.begin(), block.end());
    EXPECT_EQ(BytesAt(graphic->SXSHD, block.size()), expected);
    EXPECT_EQ(BytesAt(text->TXSHD, block.size()), expected);
  }
}

// Counts that a few hundred bytes cannot back are refused before room is made for them.
TEST_F(RecordsBadInput, CountsBeyondTheFileCostNoMemory) {
  for (const char* count : {"NUMS", "NUMT", "NUMDES", "NUMRES"}) {
    for (const char* text : {"999", "-01", "-99", "003"}) {
      for (const NtfBuilder& file : {NtfBuilder(), FileOfAllRecords()}) {
        BuiltFile bad = file.Build();
        bad.Patch(count, text);
        Put(bad);
        OpenAndRead();
        ASSERT_FALSE(HasFailure()) << count << " " << text;
      }
    }
  }
}

// A text's length that lies is the caller's to judge; with a buffer of that size the file ends the read.
TEST_F(RecordsBadInput, ATextLengthThatLiesIsHandedOutAsItStands) {
  BuiltFile bad = TextLast().Build();
  bad.Patch("LT[1]", "99999");
  Put(bad);
  EXPECT_EQ(OpenAndRead(), SUCCESS);
  const Document document(path());
  uint32_t size = 0;
  EXPECT_EQ(Tavi_NITFGetTextSegment(document.handle, 1, nullptr, &size), SUCCESS);
  EXPECT_EQ(size, 99999U);
}

// Wrong lengths in the file header lead the search for the next segment anywhere, also before the file.
TEST_F(RecordsBadInput, LengthsThatLeadElsewhereEndInAStatus) {
  for (const char* list : {"LSSH[0]", "LS[0]", "LTSH[0]", "LT[0]", "LDSH[0]", "LD[0]"}) {
    const BuiltFile good = FileOfAllRecords().Build();
    for (const bool forward : {true, false}) {
      BuiltFile bad = good;
      bad.Patch(list, std::string(forward ? "" : "-") + std::string(bad.At(list).length - !forward, '9'));
      Put(bad);
      const int32_t status = OpenAndRead();
      EXPECT_TRUE(status == ERR_FILE_READ || status == ERR_FILE_FORMAT || status == ERR_INVALID_PARAMETER)
          << list << (forward ? " too far: " : " back: ") << status;
    }
  }
}

}  // namespace
}  // namespace tavi::records

// Saves onto the document's own source: the new file is what a save elsewhere writes, and the document goes on with
// the bytes that it was opened from.
#include "RichFiles.h"
#include "SavingTest.h"

namespace saving {
namespace {

namespace fs = std::filesystem;

tavi_test::NtfBuilder ManyKinds() {
  tavi_test::NtfBuilder file = tavi::faults::FileOfEverything();
  file.header["FSDCDT"] = "20200101";  // the saved file differs from its source
  tavi_test::ImageSpec large = tavi_test::GreyImage(1500, 1000);
  for (size_t i = 0; i < large.pixels.size(); ++i)
    large.pixels[i] = static_cast<uint8_t>(i * 2654435761U >> 11);
  file.images.push_back(large);
  return file;
}

std::string TextOf(NitfHandle document, uint32_t index) {
  uint32_t size = 0;
  EXPECT_EQ(Tavi_NITFGetTextSegment(document, index, nullptr, &size), SUCCESS);
  std::string text(size + 1, '\0');
  EXPECT_EQ(Tavi_NITFGetTextSegment(document, index, reinterpret_cast<uint8_t*>(text.data()), &size),
            SUCCESS);
  text.resize(size);
  return text;
}

class OntoSource : public SavingTest {
 protected:
  void SetUp() override {
    SavingTest::SetUp();
    source_ = ManyKinds().Build().bytes;
    WriteFile(SourcePath(), source_);
    Document document(SourcePath());
    ASSERT_EQ(document.Save(OutputPath()), SUCCESS);
    elsewhere_ = ReadFile(OutputPath());
    picture_ = Render(document.handle);
    ASSERT_EQ(picture_.status, SUCCESS);
    ASSERT_NE(elsewhere_, source_);
    fs::remove(OutputPath());
  }

  // What holds after any save onto the source by the name of `path`.
  void Check(const fs::path& path) {
    Document document(SourcePath());
    ASSERT_EQ(document.open, SUCCESS);
    for (int again = 0; again < 2; ++again) {
      ASSERT_EQ(document.Save(path), SUCCESS);
      EXPECT_EQ(FirstDifference(elsewhere_, ReadFile(SourcePath())), "");
      EXPECT_EQ(FirstDifference(elsewhere_, ReadFile(path)), "");
      EXPECT_TRUE(Render(document.handle) == picture_);
      EXPECT_EQ(TextOf(document.handle, 0), "text");
    }
    ASSERT_EQ(document.Save(OutputPath()), SUCCESS);
    EXPECT_EQ(FirstDifference(elsewhere_, ReadFile(OutputPath())), "") << "and then elsewhere";
    ASSERT_EQ(document.Save(path), SUCCESS);
    EXPECT_EQ(FirstDifference(elsewhere_, ReadFile(SourcePath())), "") << "and back";
    EXPECT_TRUE(Render(document.handle) == picture_);
  }

  Bytes source_;
  Bytes elsewhere_;
  Picture picture_;
};

TEST_F(OntoSource, ByItsOwnPath) {
  Check(SourcePath());
}

TEST_F(OntoSource, ByAnotherSpelling) {
  fs::create_directory(directory() / "folder");
  Check(directory() / "folder" / ".." / "." / "source.ntf");
}

TEST_F(OntoSource, ThroughASymbolicLink) {
  fs::create_symlink(SourcePath(), directory() / "link.ntf");
  Check(directory() / "link.ntf");
}

TEST_F(OntoSource, ThroughAHardLink) {
  fs::create_hard_link(SourcePath(), directory() / "link.ntf");
  Check(directory() / "link.ntf");
}

TEST_F(OntoSource, ReopenedTheFileIsTheSavedOne) {
  Document document(SourcePath());
  ASSERT_EQ(document.Save(SourcePath()), SUCCESS);
  Document saved(SourcePath());
  ASSERT_EQ(saved.open, SUCCESS);
  EXPECT_TRUE(Render(saved.handle) == picture_);
}

// Another file with the same bytes is not the source: it is replaced, and the source stays.
TEST_F(OntoSource, ACopyOfTheSourceIsAnotherFile) {
  WriteFile(OutputPath(), source_);
  Document document(SourcePath());
  ASSERT_EQ(document.Save(OutputPath()), SUCCESS);
  EXPECT_EQ(FirstDifference(elsewhere_, ReadFile(OutputPath())), "");
  EXPECT_EQ(FirstDifference(source_, ReadFile(SourcePath())), "");
  // The document reads the file, not a copy in memory.
  fs::resize_file(SourcePath(), 0);
  EXPECT_NE(Render(document.handle).status, SUCCESS);
}

// Files of the same size and other contents, of another size, and none at all.
TEST_F(OntoSource, OtherFilesAreReplaced) {
  Bytes other = source_;
  other.back() ^= 1;
  for (const Bytes& bytes : {other, Bytes(10, 'x'), Bytes(source_.size() * 2, 'y')}) {
    WriteFile(OutputPath(), bytes);
    Document document(SourcePath());
    ASSERT_EQ(document.Save(OutputPath()), SUCCESS);
    EXPECT_EQ(FirstDifference(elsewhere_, ReadFile(OutputPath())), "");
    EXPECT_EQ(FirstDifference(source_, ReadFile(SourcePath())), "");
  }
}

// A source that cannot be written stays, and so does the document.
TEST_F(OntoSource, ASourceThatCannotBeWrittenStays) {
  Document document(SourcePath());
  const fs::path nowhere = directory() / "no folder" / "file.ntf";
  EXPECT_EQ(document.Save(nowhere), ERR_FILE_WRITE);
  EXPECT_EQ(document.Save(directory()), ERR_FILE_WRITE);
  EXPECT_EQ(FirstDifference(source_, ReadFile(SourcePath())), "");
  EXPECT_TRUE(Render(document.handle) == picture_);
}

TEST_F(OntoSource, AnEmptyDocumentHasNoSource) {
  Document document;
  ASSERT_EQ(document.Save(OutputPath()), SUCCESS);
  const Bytes first = ReadFile(OutputPath());
  ASSERT_EQ(document.Save(OutputPath()), SUCCESS);
  EXPECT_EQ(ReadFile(OutputPath()), first);
}

}  // namespace
}  // namespace saving

// A save that is interrupted at any of its calls: the source and the document stay as they were, what is called
// saved is whole, and the next save is right.
#include <filesystem>

#include "FaultHost.h"
#include "RichFiles.h"
#include "SavingTest.h"
#include "VqBytes.h"

namespace tavi::faults {
namespace {

using saving::Bytes;
using saving::Document;
using saving::FirstDifference;
using saving::ReadFile;
using saving::WriteFile;
using tavi_test::GreyImage;
using tavi_test::ImageSpec;
using tavi_test::NtfBuilder;

// All kinds of segments, vector quantised images, and more than one buffer of a save holds.
NtfBuilder RichFile() {
  NtfBuilder file = FileOfEverything();
  const saving::VqBytes stream{.image_rows = 2,
                               .codes_per_row = 2,
                               .code_bits = 12,
                               .tables = 2,
                               .entries = 4,
                               .line = 2,
                               .codes = Bytes(18, 0)};
  ImageSpec quantised = GreyImage(4, 4);
  quantised.Blocks(2, 2, 4, 4);
  quantised.ic = "M4";
  quantised.comrat = "00.0";
  quantised.mask.block_offsets = {0, tavi_test::kAbsentBlock, 1, 2};
  quantised.pixels = stream.Build();
  file.images.push_back(GreyImage(1100, 1000).Level(20));
  file.images.push_back(quantised.Level(21));
  file.images.push_back(GreyImage(5, 4).Level(22));
  file.graphics.resize(1);
  file.graphics[0].data = {'c', 'g', 'm'};
  return file;
}

class SaveFaults : public saving::SavingTest, public ::testing::WithParamInterface<Kind> {
 protected:
  void SetUp() override {
    HostSetMessageSink([](const char*, const char*, void*) {}, nullptr);
    HostSetDebugSink([](const char*, void*) {}, nullptr);
    source_ = RichFile().Build().bytes;
    expected_ = saving::PredictSave(source_).bytes;
    WriteFile(SourcePath(), source_);
    // What the host keeps for good exists after the first use.
    ASSERT_EQ(Document(SourcePath()).Save(OutputPath()), SUCCESS);
    SavingTest::SetUp();
  }

  // One save with the fault. Whatever came of it, the document saves right afterwards. False when the save never
  // came to the fault.
  bool InterruptOnce(const Fault& fault, const std::filesystem::path& target,
                     const std::filesystem::path& next) {
    // File systems bring a file that is emptied and written anew to the disk at once, which takes its time.
    std::filesystem::remove(OutputPath());
    if (target == SourcePath()) {
      std::filesystem::remove(SourcePath());
      WriteFile(SourcePath(), source_);
    }
    Document document(SourcePath());
    EXPECT_EQ(document.open, SUCCESS);
    const std::wstring path = target.wstring();
    bool happened = false;
    int32_t status = 0;
    {
      const Injection injection(fault);
      status = Tavi_NITFSaveFile(document.handle, path.c_str());
      happened = injection.happened();
    }
    EXPECT_TRUE(status == SUCCESS || status == ERR_FILE_WRITE || status == ERR_FILE_READ ||
                status == ERR_NO_MEMORY)
        << status;
    if (!happened) {
      EXPECT_EQ(status, SUCCESS);
    }
    if (status == SUCCESS) {
      EXPECT_EQ(FirstDifference(expected_, ReadFile(target)), "");
    }
    if (target != SourcePath()) {
      EXPECT_EQ(FirstDifference(source_, ReadFile(SourcePath())), "");
    }
    std::filesystem::remove(OutputPath());
    EXPECT_EQ(document.Save(next), SUCCESS);
    EXPECT_EQ(FirstDifference(expected_, ReadFile(next)), "");
    return happened;
  }

  void Walk(const std::filesystem::path& target, const std::filesystem::path& next, bool lasting) {
    for (uint64_t nth = 1; nth < 2000; ++nth) {
      SCOPED_TRACE(std::string(Name(GetParam())) + " fails at call " + std::to_string(nth) +
                   (lasting ? " and on" : ""));
      if (!InterruptOnce({GetParam(), nth, lasting}, target, next) || HasFailure()) {
        return;
      }
    }
    FAIL() << "the save does not end";
  }

 private:
  Bytes source_;
  Bytes expected_;
};

TEST_P(SaveFaults, ElsewhereTheDocumentAndItsSourceStay) {
  for (const bool lasting : {false, true}) {
    Walk(OutputPath(), OutputPath(), lasting);
  }
}

TEST_P(SaveFaults, OntoTheSourceTheDocumentStays) {
  for (const bool lasting : {false, true}) {
    Walk(SourcePath(), lasting ? OutputPath() : SourcePath(), lasting);
  }
}

INSTANTIATE_TEST_SUITE_P(All, SaveFaults,
                         ::testing::Values(Kind::kAlloc, Kind::kNew, Kind::kHostNew, Kind::kOpen,
                                           Kind::kReadShort, Kind::kReadNothing, Kind::kWrite,
                                           Kind::kWriteNothing, Kind::kSeek, Kind::kAccess),
                         [](const auto& tested) { return std::string(Name(tested.param)); });

class SaveDemand : public saving::SavingTest {};

// A handful of large writes, and little memory however large the file is.
TEST_F(SaveDemand, IsSmall) {
  NtfBuilder file{GreyImage(4000, 4000)};
  file.texts.resize(900);
  WriteFile(SourcePath(), file.Build().bytes);
  const uint64_t size = std::filesystem::file_size(SourcePath());
  Document document(SourcePath());
  Demand demand;
  {
    const Watch watch;
    EXPECT_EQ(document.Save(OutputPath()), SUCCESS);
    demand = watch.demand();
  }
  EXPECT_EQ(FirstDifference(saving::PredictSave(ReadFile(SourcePath())).bytes, ReadFile(OutputPath())), "");
  constexpr uint64_t kMegabyte = 1 << 20;
  EXPECT_LE(demand.writes, size / kMegabyte + 4);
  EXPECT_LE(demand.total, 4 * kMegabyte);
}

// What a stream says of itself decides no allocation beyond its look-up records.
TEST_F(SaveDemand, IsSmallForStreamsThatPromiseMuch) {
  for (const uint32_t number : {0x7FFFFFFFU, 0xFFFFFFFFU}) {
    saving::VqBytes stream{.image_rows = 1,
                           .codes_per_row = number,
                           .code_bits = 255,
                           .tables = 2,
                           .entries = number,
                           .line = 0};
    stream.tail = Bytes(100, 1);
    ImageSpec image = GreyImage(4, 4);
    image.ic = "C4";
    image.comrat = "00.0";
    image.pixels = stream.Build();
    WriteFile(SourcePath(), NtfBuilder{image}.Build().bytes);
    Document document(SourcePath());
    const Watch watch;
    EXPECT_EQ(document.Save(OutputPath()), ERR_FILE_READ);
    EXPECT_LE(watch.demand().total, uint64_t{4} << 20);
  }
}

}  // namespace
}  // namespace tavi::faults

// Every call that reading a document makes is made to fail in turn: once, and from then on. Nothing crashes
// or leaks, each result is a documented one, and all works again when the fault is gone.
#include <algorithm>
#include <optional>

#include "FaultHost.h"
#include "ReadAll.h"

namespace tavi::records {
namespace {

using tavi::faults::Fault;
using tavi::faults::Injection;
using tavi::faults::Kind;
using tavi::faults::Watch;

struct Outcome {
  int32_t open = 0;
  int32_t worst = SUCCESS;  // the least result of a getter
  bool happened = false;
};

class RecordsFaults : public RecordsTest {
 protected:
  void SetUp() override {
    // Nothing that the test adds takes memory inside the host's operations.
    HostSetMessageSink([](const char*, const char*, void*) {}, nullptr);
    HostSetDebugSink([](const char*, void*) {}, nullptr);
    path_ = Write(FileOfAllRecords());
    // What the host keeps for good exists after the first use.
    ASSERT_EQ(OpenAndRead(nullptr).open, SUCCESS);
    RecordsTest::SetUp();
  }

  // Opens the document and reads all of it, with the fault in either.
  Outcome OpenAndRead(const Fault* fault) const {
    std::optional<Injection> injection;
    if (fault != nullptr) {
      injection.emplace(*fault);
    }
    Outcome outcome;
    NitfHandle handle = nullptr;
    outcome.open = Tavi_NITFCreate(&handle, path_.c_str());
    EXPECT_EQ(handle != nullptr, outcome.open == SUCCESS);
    if (handle != nullptr) {
      outcome.worst = ReadAll(handle).worst;
      EXPECT_EQ(Tavi_NITFDestroy(&handle), SUCCESS);
    }
    outcome.happened = injection && injection->happened();
    return outcome;
  }

  // One run; false when it never came to the fault.
  bool RunOnce(const Fault& fault) const {
    const uint64_t alive = HostLiveObjects();
    Outcome outcome;
    int64_t blocks_left = 0;
    {
      const Watch watch;
      outcome = OpenAndRead(&fault);
      blocks_left = watch.demand().blocks_left;
    }
    EXPECT_EQ(HostLiveObjects(), alive) << "the host counts a leak";
    EXPECT_EQ(blocks_left, 0) << "memory of the language's own allocation is left";
    EXPECT_TRUE(outcome.worst == SUCCESS || outcome.worst == ERR_NO_MEMORY) << "a getter: " << outcome.worst;
    ExpectReported(fault.kind, outcome);
    return outcome.happened;
  }

  // Short memory is reported as what it is, by the call that it hits.
  static void ExpectReported(Kind kind, const Outcome& outcome) {
    if (!outcome.happened) {
      EXPECT_EQ(outcome.open, SUCCESS);
      EXPECT_EQ(outcome.worst, SUCCESS);
    } else if (kind == Kind::kAlloc || kind == Kind::kNew) {
      EXPECT_EQ(std::min(outcome.open, outcome.worst), ERR_NO_MEMORY);
    } else {
      EXPECT_EQ(outcome.worst, SUCCESS) << "getters neither read nor seek";
    }
  }

  void Walk(Kind kind, bool lasting) {
    constexpr uint64_t kFarTooMany = 20000;
    for (uint64_t nth = 1; nth < kFarTooMany; ++nth) {
      SCOPED_TRACE(std::string(faults::Name(kind)) + " fails at call " + std::to_string(nth) +
                   (lasting ? " and on" : ""));
      const bool happened = RunOnce({kind, nth, lasting});
      if (!happened || HasFailure()) {
        calls_ = nth - 1;
        return;
      }
      ASSERT_EQ(OpenAndRead(nullptr).worst, SUCCESS) << "without the fault it works again";
    }
    FAIL() << "reading does not end";
  }

  // How many calls the last walk made fail.
  uint64_t calls() const { return calls_; }

 private:
  std::wstring path_;
  uint64_t calls_ = 0;
};

// A hundred and more of these are the getters'.
TEST_F(RecordsFaults, EachAllocationOfTheHost) {
  Walk(Kind::kAlloc, false);
  EXPECT_GT(calls(), 150U);
  Walk(Kind::kAlloc, true);
}

TEST_F(RecordsFaults, EachAllocationOfTheLanguage) {
  Walk(Kind::kNew, false);
  EXPECT_GT(calls(), 5U);
  Walk(Kind::kNew, true);
}

TEST_F(RecordsFaults, EachAllocationInsideTheHost) {
  for (const bool lasting : {false, true}) {
    Walk(Kind::kHostNew, lasting);
  }
}

TEST_F(RecordsFaults, EachReadComingBackShort) {
  Walk(Kind::kReadShort, false);
  EXPECT_GT(calls(), 200U);
  Walk(Kind::kReadShort, true);
}

TEST_F(RecordsFaults, EachReadMovingNothing) {
  for (const bool lasting : {false, true}) {
    Walk(Kind::kReadNothing, lasting);
  }
}

TEST_F(RecordsFaults, EachSeek) {
  Walk(Kind::kSeek, false);
  EXPECT_GT(calls(), 5U);
  Walk(Kind::kSeek, true);
}

TEST_F(RecordsFaults, OpeningTheFile) {
  for (const Kind kind : {Kind::kOpen, Kind::kAccess}) {
    Walk(kind, false);
    EXPECT_EQ(calls(), 1U);
    Walk(kind, true);
  }
}

// A getter that runs out of memory leaves a record that frees what it holds, and nothing in it is rubbish.
TEST_F(RecordsFaults, ARecordFilledInPartIsWhole) {
  const Document document(Write(FileOfAllRecords()));
  ASSERT_EQ(document.open, SUCCESS);
  for (uint64_t nth = 1;; ++nth) {
    Guarded<NitfImageHeaderInfo> record;
    const Fault fault{Kind::kAlloc, nth, true};
    int32_t status = 0;
    bool happened = false;
    {
      const Injection injection(fault);
      status = Get(document.handle, 0, record.get());
      happened = injection.happened();
    }
    ASSERT_EQ(status, happened ? ERR_NO_MEMORY : SUCCESS) << nth;
    if (!happened) {
      EXPECT_GT(nth, 30U);
      break;
    }
    EXPECT_TRUE(record.Intact());
    EXPECT_EQ(nth == 1, record->IM == nullptr) << "what comes first is filled first";
    EXPECT_EQ(+record->TPXCD, nullptr);
  }
}

// A text that cannot be read is a short read, and the next call finds it.
TEST_F(RecordsFaults, ReadingAText) {
  const Document document(Write(FileOfAllRecords()));
  uint8_t buffer[64];
  for (const Kind kind : {Kind::kReadShort, Kind::kReadNothing}) {
    {
      const Injection injection({kind, 1, false});
      EXPECT_EQ(Tavi_NITFGetTextSegment(document.handle, 1, buffer, nullptr), ERR_FILE_READ);
      EXPECT_TRUE(injection.happened());
    }
    EXPECT_EQ(Tavi_NITFGetTextSegment(document.handle, 1, buffer, nullptr), SUCCESS);
    EXPECT_STREQ(reinterpret_cast<const char*>(buffer), "tttttttt");
  }
}

}  // namespace
}  // namespace tavi::records

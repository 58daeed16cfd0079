// Every allocation, read, write, seek and host call that opening, drawing or saving a file makes is made to fail in turn:
// once, and from then on. The library then neither crashes nor leaks, reports a documented status, and works
// again when the fault is gone.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <map>
#include <optional>

#include "CodedFiles.h"
#include "FaultHost.h"
#include "HostFixture.h"
#include "RichFiles.h"
#include "TaviNitf.h"

namespace tavi::faults {
namespace {

using tavi_test::HostTest;

// Made once: to encode a picture takes longer than to draw it.
const std::vector<NamedFile>& AllFiles() {
  static const std::vector<NamedFile> files = [] {
    std::vector<NamedFile> all = FilesOfEveryKind();
    const std::vector<NamedFile> coded = CodedFiles();
    all.insert(all.end(), coded.begin(), coded.end());
    return all;
  }();
  return files;
}

struct Outcome {
  int32_t status = 0;
  bool happened = false;
};

// Runs `work` with the fault, or without one.
template <class Work>
Outcome RunWith(const Fault* fault, Work work) {
  Outcome outcome;
  std::optional<Injection> injection;
  if (fault != nullptr) {
    injection.emplace(*fault);
  }
  outcome.status = work();
  outcome.happened = injection && injection->happened();
  return outcome;
}

Outcome Open(const wchar_t* path, const Fault* fault) {
  NitfHandle handle = nullptr;
  const Outcome outcome = RunWith(fault, [&] { return Tavi_NITFCreate(&handle, path); });
  EXPECT_EQ(handle != nullptr, outcome.status == SUCCESS);
  if (handle != nullptr) {
    EXPECT_EQ(Tavi_NITFDestroy(&handle), SUCCESS);
  }
  return outcome;
}

Outcome Size(const wchar_t* path, const Fault* fault) {
  NitfHandle handle = nullptr;
  EXPECT_EQ(Tavi_NITFCreate(&handle, path), SUCCESS);
  uint32_t width = 0;
  uint32_t height = 0;
  const Outcome outcome = RunWith(fault, [&] { return GetActual_Width_Height(handle, &width, &height); });
  Tavi_NITFDestroy(&handle);
  return outcome;
}

Outcome Inform(const wchar_t* path, const Fault* fault) {
  HostFileInfo info = {};
  HostLoadFlagsRecord flags = {};
  FilterInfoContext context = {};
  context.file_name = path;
  context.file = -1;
  context.info = &info;
  context.load_flags = &flags;
  return RunWith(fault, [&] { return fltInfo(&context); });
}

int32_t CountRow(uint64_t, HostBitmap*, uint8_t*, uint32_t, int32_t, int32_t, void* user) {
  ++*static_cast<int*>(user);
  return 1;
}

void NeverCalled() {}

Outcome Load(const wchar_t* path, const Fault* fault) {
  int rows = 0;
  HostBitmap destination = {};
  destination.bits = 24;
  HostLoadFlagsRecord flags = {};
  flags.flags = TAVI_LOAD_STRETCH_DARK;
  FilterLoadContext context = {};
  context.file_name = path;
  context.bitmap = &destination;
  context.row_callback = CountRow;
  context.user = &rows;
  context.load_flags = &flags;
  context.load_memory = HostLoadMemory;
  context.set_load_hook = HostSetLoadHook;
  context.third_entry = NeverCalled;
  const Outcome outcome = RunWith(fault, [&] { return fltLoad(&context); });
  EXPECT_EQ(rows > 0, outcome.status == SUCCESS) << "rows are delivered when all is drawn, or not at all";
  return outcome;
}

Outcome Render(const wchar_t* path, const Fault* fault) {
  NitfHandle handle = nullptr;
  EXPECT_EQ(Tavi_NITFCreate(&handle, path), SUCCESS);
  HostBitmap bitmap = {};
  const Outcome outcome = RunWith(fault, [&] { return Tavi_NtfRenderBitmap(&bitmap, handle); });
  EXPECT_EQ((bitmap.flags & 1) != 0, outcome.status == SUCCESS) << "a failure leaves no pixels";
  if ((bitmap.flags & 1) != 0) {
    HostFreeBitmap(&bitmap);
  }
  Tavi_NITFDestroy(&handle);
  return outcome;
}

// Onto a surface of 8 bits, for which images are painted through palettes.
Outcome Draw8Bits(const wchar_t* path, const Fault* fault) {
  NitfHandle handle = nullptr;
  EXPECT_EQ(Tavi_NITFCreate(&handle, path), SUCCESS);
  HostBitmap bitmap = {};
  EXPECT_EQ(HostCreateBitmap(&bitmap, sizeof bitmap, 1, 20, 20, 8, 0, nullptr, 1, nullptr, 0), SUCCESS);
  HostDrawingContext context = HostCreateBitmapDC(&bitmap);
  const Outcome outcome =
      RunWith(fault, [&] { return Tavi_NitfDrawObjects(nullptr, context, &bitmap, handle); });
  HostDeleteBitmapDC(context);
  HostFreeBitmap(&bitmap);
  Tavi_NITFDestroy(&handle);
  return outcome;
}

// The output stands beside the file, and is another one.
Outcome Save(const wchar_t* path, const Fault* fault) {
  NitfHandle handle = nullptr;
  EXPECT_EQ(Tavi_NITFCreate(&handle, path), SUCCESS);
  const std::wstring output = std::wstring(path) + L".saved";
  const Outcome outcome = RunWith(fault, [&] { return Tavi_NITFSaveFile(handle, output.c_str()); });
  Tavi_NITFDestroy(&handle);
  return outcome;
}

// A drawing of one line, made before any fault.
class LineDrawing {
 public:
  LineDrawing() {
    HostVecInit(&vector_);
    VectorObjectRecord line;
    HostVecInitObject(&line);
    line.line.size = sizeof line.line;
    line.line.kind = VECTOR_LINE;
    line.line.second.x = 5;
    line.line.second.y = -5;
    EXPECT_EQ(HostVecAddObject(&vector_, 0, VECTOR_LINE, &line, 0), SUCCESS);
  }
  ~LineDrawing() { HostVecFree(&vector_); }
  LineDrawing(const LineDrawing&) = delete;
  LineDrawing& operator=(const LineDrawing&) = delete;
  HostVector* get() { return &vector_; }

 private:
  HostVector vector_ = {};
};

// An image and a graphic more, and another drawing for the first graphic.
Outcome Append(const wchar_t* path, const Fault* fault) {
  NitfHandle handle = nullptr;
  EXPECT_EQ(Tavi_NITFCreate(&handle, path), SUCCESS);
  HostBitmap bitmap = {};
  EXPECT_EQ(HostCreateBitmap(&bitmap, sizeof bitmap, 1, 9, 7, 24, 1, nullptr, 1, nullptr, 0), SUCCESS);
  LineDrawing drawing;
  const HostRect place = {0, 0, 5, 5};
  const Outcome outcome = RunWith(fault, [&] {
    int32_t status = Tavi_NITFAppendImageSegment(handle, &bitmap, 10, 24, 20);
    if (status == SUCCESS) status = Tavi_NITFAppendGraphicSegment(handle, drawing.get(), &place);
    if (status == SUCCESS) status = Tavi_NITFSetVectorHandle(handle, 0, drawing.get());
    return status;
  });
  HostFreeBitmap(&bitmap);
  Tavi_NITFDestroy(&handle);
  return outcome;
}

struct Operation {
  const char* name;
  Outcome (*run)(const wchar_t* path, const Fault* fault);
};

constexpr Operation kOperations[] = {{"Open", Open}, {"Size", Size},     {"Inform", Inform},
                                     {"Load", Load}, {"Render", Render}, {"Draw8Bits", Draw8Bits},
                                     {"Save", Save}, {"Append", Append}};

bool IsDocumented(int32_t status) {
  static constexpr int32_t kStatuses[] = {SUCCESS,
                                          ERR_NO_MEMORY,
                                          ERR_NO_BITMAP,
                                          ERR_FILE_WRITE,
                                          ERR_FILE_READ,
                                          ERR_FILE_FORMAT,
                                          ERR_FILE_NOT_FOUND,
                                          ERR_NOT_SUPPORTED,
                                          ERR_INVALID_BPP,
                                          ERR_INVALID_PARAMETER,
                                          ERR_NOT_NITF,
                                          ERR_UNSUPPORTED_PVTYPE,
                                          ERR_UNSUPPORTED_CLEVEL,
                                          ERR_UNSUPPORTED_BPP,
                                          ERR_UNSUPPORTED_COMPRESSION};
  return std::find(std::begin(kStatuses), std::end(kStatuses), status) != std::end(kStatuses);
}

struct Case {
  NamedFile file;
  Operation operation;
};

std::vector<Case> AllCases() {
  std::vector<Case> cases;
  for (const NamedFile& file : AllFiles()) {
    for (const Operation& operation : kOperations) {
      // Palettes come in with painting alone, whatever the images are coded in.
      const bool paints = file.name == "Everything" || file.name == "Graphics" || file.name == "C8Rgb";
      if (operation.run != Draw8Bits || paints) cases.push_back({file, operation});
    }
  }
  return cases;
}

void PrintTo(const Case& tested, std::ostream* out) {
  *out << tested.operation.name << " " << tested.file.name;
}

class Faults : public HostTest, public ::testing::WithParamInterface<Case> {
 protected:
  void SetUp() override {
    // Nothing that the test adds takes memory inside the host's operations.
    HostSetMessageSink([](const char*, const char*, void*) {}, nullptr);
    HostSetDebugSink([](const char*, void*) {}, nullptr);
    path_ = GetParam().file.file.Build().Write(directory());
    // What the host keeps for good, such as a look-up of names, exists after the first use.
    ASSERT_EQ(Run(nullptr).status, SUCCESS);
    HostTest::SetUp();
  }

  Outcome Run(const Fault* fault) const { return GetParam().operation.run(path_.c_str(), fault); }

  // One run with the fault; false when the operation never came to it.
  bool RunOnce(const Fault& fault) {
    const uint64_t alive = HostLiveObjects();
    Outcome outcome;
    int64_t blocks_left = 0;
    {
      const Watch watch;
      outcome = Run(&fault);
      blocks_left = watch.demand().blocks_left;
    }
    EXPECT_EQ(HostLiveObjects(), alive) << "the host counts a leak";
    EXPECT_EQ(blocks_left, 0) << "memory of the language's own allocation is left";
    EXPECT_TRUE(IsDocumented(outcome.status)) << "status " << outcome.status;
    if (!outcome.happened) {
      EXPECT_EQ(outcome.status, SUCCESS);
    }
    return outcome.happened;
  }

  void Walk(Kind kind, bool lasting) {
    constexpr uint64_t kFarTooMany = 20000;
    for (uint64_t nth = 1; nth < kFarTooMany; ++nth) {
      SCOPED_TRACE(std::string(Name(kind)) + " fails at call " + std::to_string(nth) +
                   (lasting ? " and on" : ""));
      if (!RunOnce({kind, nth, lasting})) {
        return;
      }
      if (HasFailure()) {
        return;
      }
      if (!lasting) {
        ASSERT_EQ(Run(nullptr).status, SUCCESS) << "without the fault it works again";
      }
    }
    FAIL() << "the operation does not end";
  }

 private:
  std::wstring path_;
};

TEST_P(Faults, EachCallFailingLeavesNothingBehind) {
  for (const Kind kind : kAllKinds) {
    Walk(kind, false);
    Walk(kind, true);
  }
}

INSTANTIATE_TEST_SUITE_P(All, Faults, ::testing::ValuesIn(AllCases()), [](const auto& tested) {
  return std::string(tested.param.operation.name) + "_" + tested.param.file.name;
});

// Every kind of fault is met by some file: the walks above are not idle.
class Reached : public HostTest {};

TEST_F(Reached, EveryKindOfFaultIsMet) {
  for (const Kind kind : kAllKinds) {
    if (kind == Kind::kTextOut) {
      continue;  // labels alone, of the 2.0 layout, which the tests of graphics draw
    }
    bool met = false;
    for (const NamedFile& named : AllFiles()) {
      const std::wstring path = named.file.Build().Write(directory());
      for (const Operation& operation : kOperations) {
        const Fault first{kind, 1, false};
        met = met || operation.run(path.c_str(), &first).happened;
      }
    }
    EXPECT_TRUE(met) << Name(kind);
  }
}

// The walks let each call of each such operation fail in turn: it is enough to see that there are such calls.
TEST_F(Reached, EveryOperationThatCanFailIsMet) {
  for (const NamedFile& named : AllFiles()) {
    const std::wstring path = named.file.Build().Write(directory());
    for (const Operation& operation : kOperations) {
      operation.run(path.c_str(), nullptr);
    }
  }
  const std::vector<std::string> operations = ListedOperations("fails");
  EXPECT_GT(operations.size(), 20U);
  for (const std::string& operation : operations) {
    EXPECT_TRUE(HasMet(operation)) << operation;
  }
}

// What a fault while opening is reported as, whichever call it hits.
class OpeningFaults : public HostTest {
 protected:
  void Expect(Kind kind, int32_t status) {
    const std::wstring path = FileOfEverything().Build().Write(directory());
    uint64_t calls = 0;
    for (Outcome outcome{0, true}; outcome.happened;) {
      const Fault fault{kind, ++calls, false};
      outcome = Open(path.c_str(), &fault);
      ASSERT_EQ(outcome.status, outcome.happened ? status : SUCCESS) << Name(kind) << " at call " << calls;
    }
    EXPECT_GT(calls, 1U) << "opening makes no such call";
  }
};

TEST_F(OpeningFaults, ShortMemoryOfTheHostIsReported) {
  Expect(Kind::kAlloc, ERR_NO_MEMORY);
}
TEST_F(OpeningFaults, ShortMemoryOfTheLanguageIsReported) {
  Expect(Kind::kNew, ERR_NO_MEMORY);
}
TEST_F(OpeningFaults, AFileThatDoesNotOpenIsReportedByTheFirstRead) {
  Expect(Kind::kOpen, ERR_FILE_READ);
}
TEST_F(OpeningFaults, AShortReadIsReported) {
  Expect(Kind::kReadShort, ERR_FILE_READ);
}
TEST_F(OpeningFaults, AReadOfNothingIsReported) {
  Expect(Kind::kReadNothing, ERR_FILE_READ);
}
TEST_F(OpeningFaults, AFileThatIsNotThereIsReported) {
  Expect(Kind::kAccess, ERR_FILE_NOT_FOUND);
}

// What a fault while drawing is reported as. One failure may pass: the look for the range of samples is not
// needed, and of a run of blocks the last one's status counts. A failure that lasts is always reported. A read
// that fails in the search for a masked image's last stream leaves an empty stream, which is of no kind.
class DrawingFaults : public HostTest {
 protected:
  void Expect(Kind kind, int32_t status, bool once_may_pass) {
    bool met = false;
    for (const NamedFile& named : AllFiles()) {
      const std::wstring path = named.file.Build().Write(directory());
      for (const bool lasting : {false, true}) {
        uint64_t calls = 0;
        for (Outcome outcome{0, true}; outcome.happened;) {
          const Fault fault{kind, ++calls, lasting};
          outcome = Render(path.c_str(), &fault);
          met = met || outcome.happened;
          if (outcome.happened && !(once_may_pass && !lasting && outcome.status == SUCCESS) &&
              !IsEmptyLastStream(named, kind, outcome.status)) {
            ASSERT_EQ(outcome.status, status) << named.name << ": " << Name(kind) << " at call " << calls;
          }
        }
      }
    }
    EXPECT_TRUE(met);
  }

 private:
  static bool IsEmptyLastStream(const NamedFile& named, Kind kind, int32_t status) {
    return named.name.starts_with("M3Mask") && (kind == Kind::kReadShort || kind == Kind::kReadNothing) &&
           status == ERR_UNSUPPORTED_COMPRESSION;
  }
};

TEST_F(DrawingFaults, ShortMemoryIsReported) {
  Expect(Kind::kAlloc, ERR_NO_MEMORY, true);
}
TEST_F(DrawingFaults, ABitmapThatIsNotMadeIsReported) {
  Expect(Kind::kCreateBitmap, ERR_NO_MEMORY, false);
}
TEST_F(DrawingFaults, ADrawingContextThatIsNotMadeIsReported) {
  Expect(Kind::kCreateDc, ERR_NO_MEMORY, false);
}
TEST_F(DrawingFaults, AShortReadIsReported) {
  Expect(Kind::kReadShort, ERR_FILE_READ, true);
}
TEST_F(DrawingFaults, AReadOfNothingIsReported) {
  Expect(Kind::kReadNothing, ERR_FILE_READ, true);
}
TEST_F(DrawingFaults, ATileThatIsNotCombinedIsReported) {
  Expect(Kind::kCombine, ERR_NO_BITMAP, true);
}
TEST_F(DrawingFaults, AnImageThatIsNotPaintedIsReported) {
  Expect(Kind::kPaint, ERR_INVALID_PARAMETER, false);
}

TEST_F(DrawingFaults, AStreamThatIsNotDecodedIsReported) {
  Expect(Kind::kLoadMemory, ERR_FILE_FORMAT, false);
}
// A stream of unknown kind is left out; the status of its run of blocks is that of the last one.
TEST_F(DrawingFaults, AStreamThatIsNotIdentifiedIsReported) {
  Expect(Kind::kIdentify, ERR_UNSUPPORTED_COMPRESSION, true);
}
TEST_F(DrawingFaults, BandsThatAreNotMergedAreReported) {
  Expect(Kind::kMerge, ERR_NO_MEMORY, false);
}
TEST_F(DrawingFaults, PixelsThatAreNotAttachedAreReported) {
  Expect(Kind::kAttach, ERR_NO_BITMAP, false);
}

// Palettes are a nicety: one that cannot be had leaves the picture without it.
TEST_F(DrawingFaults, AMissingDefaultPaletteIsNoError) {
  Expect(Kind::kDefaultPalette, SUCCESS, false);
}
TEST_F(DrawingFaults, AMissingPaletteIsNoError) {
  Expect(Kind::kCreatePalette, SUCCESS, false);
}

// Sizing takes memory for the display list alone.
TEST_F(DrawingFaults, ADisplayListWithoutMemory) {
  const std::wstring path = FileOfEverything().Build().Write(directory());
  const Fault first{Kind::kAlloc, 1, false};
  EXPECT_EQ(Size(path.c_str(), &first).status, ERR_NO_MEMORY);
}

// Stretching is a nicety: a histogram or a brightening that fails leaves the picture as it is.
TEST_F(DrawingFaults, ADarkImageThatIsNotStretched) {
  for (const NamedFile& named : AllFiles()) {
    if (named.name == "Dark") {
      const std::wstring path = named.file.Build().Write(directory());
      for (const Kind kind : {Kind::kHistogram, Kind::kAdjust}) {
        const Fault first{kind, 1, false};
        const Outcome outcome = Load(path.c_str(), &first);
        EXPECT_TRUE(outcome.happened) << Name(kind);
        EXPECT_EQ(outcome.status, SUCCESS) << Name(kind);
      }
    }
  }
}

// Making an empty document takes memory as well.
TEST_F(OpeningFaults, AnEmptyDocumentWithoutMemoryIsRefused) {
  for (const Kind kind : {Kind::kAlloc, Kind::kNew}) {
    uint64_t calls = 0;
    for (Outcome outcome{0, true}; outcome.happened;) {
      const Fault fault{kind, ++calls, false};
      outcome = Open(nullptr, &fault);
      ASSERT_EQ(outcome.status, outcome.happened ? ERR_NO_MEMORY : SUCCESS)
          << Name(kind) << " at call " << calls;
    }
  }
}

// A row callback may end the delivery at any row; its answer is the result.
int32_t StopAtRow(uint64_t, HostBitmap*, uint8_t*, uint32_t, int32_t row_index, int32_t, void* user) {
  return row_index == *static_cast<int32_t*>(user) ? -4321 : 1;
}

TEST_F(OpeningFaults, ACallbackThatStopsReleasesEverything) {
  const std::wstring path = FileOfEverything().Build().Write(directory());
  for (int32_t stop = 0; stop < 3; ++stop) {
    HostBitmap destination = {};
    destination.bits = 24;
    HostLoadFlagsRecord flags = {};
    FilterLoadContext context = {};
    context.file_name = path.c_str();
    context.bitmap = &destination;
    context.row_callback = StopAtRow;
    context.user = &stop;
    context.load_flags = &flags;
    context.load_memory = HostLoadMemory;
    context.set_load_hook = HostSetLoadHook;
    context.third_entry = NeverCalled;
    const uint64_t alive = HostLiveObjects();
    EXPECT_EQ(fltLoad(&context), -4321);
    EXPECT_EQ(HostLiveObjects(), alive);
  }
}

}  // namespace
}  // namespace tavi::faults

// Every call that an append, an exchange of drawings or a setter makes is made to fail in turn. An append that
// fails leaves no trace, in what an application sees and in what a save writes; nothing leaks.
#include <algorithm>

#include "AppendTest.h"
#include "FaultHost.h"

namespace editing {
namespace {

using tavi::faults::Fault;
using tavi::faults::Injection;
using tavi::faults::Kind;

constexpr HostRect kPlace = {1, 2, 11, 12};

class EditingFaults : public AppendTest {
 protected:
  using Edit = std::function<int32_t(NitfHandle)>;

  void SetUp() override {
    HostSetMessageSink([](const char*, const char*, void*) {}, nullptr);
    HostSetDebugSink([](const char*, void*) {}, nullptr);
    path_ = Write(EditableFile());
    text_ = TextFile("a text to append");
    AppendTest::SetUp();
  }

  // Makes each call of each kind fail in `edit`, on a new document and on an opened one.
  void Walk(const Edit& edit, bool leaves_no_trace) {
    for (const bool opened : {false, true}) {
      const State untouched = StateOf(*Open(opened));
      State edited;
      {
        const auto document = Open(opened);
        ASSERT_EQ(edit(document->handle), SUCCESS);
        edited = StateOf(document->handle);
      }
      for (const Kind kind : tavi::faults::kAllKinds) {
        for (const bool lasting : {false, true})
          Walk(edit, leaves_no_trace, kind, lasting, opened, untouched, edited);
      }
    }
  }

  // How many calls have been made to fail, and how many of them failed the edit.
  uint64_t faults_ = 0;
  uint64_t failures_ = 0;
  std::wstring path_;
  std::wstring text_;

 private:
  [[nodiscard]] std::unique_ptr<Document> Open(bool opened) const {
    return std::make_unique<Document>(opened ? path_.c_str() : nullptr);
  }
  [[nodiscard]] State StateOf(const Document& document) const { return AppendTest::StateOf(document.handle); }
  [[nodiscard]] State StateOf(NitfHandle document) const { return AppendTest::StateOf(document); }

  void Walk(const Edit& edit, bool leaves_no_trace, Kind kind, bool lasting, bool opened,
            const State& untouched, const State& edited) {
    constexpr uint64_t kFarTooMany = 5000;
    for (uint64_t nth = 1; nth < kFarTooMany; ++nth) {
      SCOPED_TRACE(std::string(tavi::faults::Name(kind)) + " fails at call " + std::to_string(nth) +
                   (lasting ? " and on" : "") + (opened ? " in a file" : " in a new document"));
      const uint64_t alive = HostLiveObjects();
      const auto document = Open(opened);
      int32_t status = 0;
      bool happened = false;
      {
        const Injection injection({kind, nth, lasting});
        status = edit(document->handle);
        happened = injection.happened();
      }
      if (!happened) {
        EXPECT_EQ(status, SUCCESS);
        return;
      }
      ++faults_;
      failures_ += status != SUCCESS;
      if (status != SUCCESS && leaves_no_trace) {
        EXPECT_LT(status, 0);
        const State after = StateOf(document->handle);
        EXPECT_TRUE(after == untouched) << status;
        EXPECT_EQ(edit(document->handle), SUCCESS) << "it works when the fault is gone";
        EXPECT_TRUE(StateOf(document->handle) == edited);
      }
      document->Close();
      EXPECT_EQ(HostLiveObjects(), alive) << "the host counts a leak";
      if (HasFailure()) return;
    }
    FAIL() << "the edit does not end";
  }
};

TEST_F(EditingFaults, AppendingAnImage) {
  Picture picture(20, 20);
  Walk([&](NitfHandle document) { return Tavi_NITFAppendImageSegment(document, picture.get(), 10, 24, 5); },
       true);
  EXPECT_GT(faults_, 40U);
  EXPECT_GT(failures_, 30U);
}

TEST_F(EditingFaults, AppendingAGraphic) {
  Drawing drawing(0, -10, 10, -1);  // no move to make twice
  Walk([&](NitfHandle document) { return Tavi_NITFAppendGraphicSegment(document, drawing.get(), &kPlace); },
       true);
  EXPECT_GT(faults_, 30U);
  EXPECT_GT(failures_, 25U);
}

TEST_F(EditingFaults, AppendingAText) {
  Walk([&](NitfHandle document) { return Tavi_NITFAppendTextSegment(document, text_.c_str()); }, true);
  EXPECT_GT(faults_, 30U);
  EXPECT_GT(failures_, 20U);
}

// A new segment behind others, so that all lists grow.
TEST_F(EditingFaults, AppendingASecondOfEachKind) {
  Picture picture(20, 20, 8);
  Drawing drawing(0, -10, 10, -1);
  const auto all = [&](NitfHandle document) {
    for (int i = 0; i < 2; ++i) {
      int32_t status = Tavi_NITFAppendImageSegment(document, picture.get(), 182, 8, 5);
      if (status == SUCCESS) status = Tavi_NITFAppendGraphicSegment(document, drawing.get(), &kPlace);
      if (status == SUCCESS) status = Tavi_NITFAppendTextSegment(document, text_.c_str());
      if (status != SUCCESS) return status;
    }
    return int32_t{SUCCESS};
  };
  Walk(all, false);
  EXPECT_GT(failures_, 100U);
}

TEST_F(EditingFaults, ExchangingADrawing) {
  Drawing drawing(0, -10, 10, -1);
  const auto exchange = [&](NitfHandle document) {
    int32_t status = Tavi_NITFAppendGraphicSegment(document, drawing.get(), &kPlace);
    const auto last = static_cast<uint32_t>(Tavi_NITFGetGraphicHeaderCount(document)) - 1;
    if (status == SUCCESS) status = Tavi_NITFSetVectorHandle(document, last, drawing.get());
    if (status == SUCCESS) status = Tavi_NITFSetVectorHandle(document, last, drawing.get());
    return status;
  };
  Walk(exchange, false);
  EXPECT_GT(failures_, 40U);
}

// The field that lacks memory is set a second time. When there is some by then, the setter ends there all the same,
// and says SUCCESS.
TEST_F(EditingFaults, TheSecondCallsResultCounts) {
  struct Case {
    uint64_t nth;
    const char* what;
  };
  // The tables of bands, then the two blocks.
  const Case cases[] = {{1, "band roles"}, {3, "filters"}, {5, "tables"}, {6, "UDID"}, {7, "IXSHD"}};
  for (const Case& one : cases) {
    for (const bool lasting : {false, true}) {
      SCOPED_TRACE(one.what);
      const Document document(path_);
      ImageRecord record(document.handle, 0);
      record->ISYNC = 7;
      record->IXSOFL = 9;
      record->IMDATOFF = 77;
      int32_t status = 0;
      {
        const Injection injection({Kind::kAlloc, one.nth, lasting});
        status = Set(document.handle, 0, record.get());
        EXPECT_TRUE(injection.happened());
      }
      EXPECT_EQ(status, lasting ? ERR_NO_MEMORY : SUCCESS);
      const ImageRecord after(document.handle, 0);
      EXPECT_EQ(+after->ISYNC == 7, one.nth >= 6) << "behind NBANDS";
      EXPECT_EQ(+after->IXSOFL == 9, one.nth >= 7) << "behind UDID";
      EXPECT_NE(+after->IMDATOFF, 77U) << "behind IXSHD";
      EXPECT_EQ(Tavi_NITFSaveFile(document.handle, Output().wstring().c_str()), SUCCESS);
    }
  }
}

TEST_F(EditingFaults, TheFileHeaderSetterGoesOn) {
  const Document document(path_);
  HeaderRecord record(document.handle, 0);
  const uint8_t block[4] = {'a', 'b', 'c', 'd'};
  record.PutBlock(offsetof(NitfHeaderInfo, UDHD), block, sizeof block);
  record.PutBlock(offsetof(NitfHeaderInfo, XHD), block, sizeof block);
  record->UDHDL = record->XHDL = 7;
  record.PutChars(offsetof(NitfHeaderInfo, FDT), "20310203040506");
  {
    const Injection injection({Kind::kAlloc, 1, true});
    EXPECT_EQ(Set(document.handle, 0, record.get()), SUCCESS);
    EXPECT_TRUE(injection.happened());
  }
  EXPECT_EQ(HeaderRecord(document.handle, 0).Chars(offsetof(NitfHeaderInfo, FDT), 14), "20310203040506");
  EXPECT_EQ(Tavi_NITFSaveFile(document.handle, Output().wstring().c_str()), SUCCESS)
      << "the blocks are empty";
}

}  // namespace
}  // namespace editing

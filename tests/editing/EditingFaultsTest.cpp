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

  // What a failed edit has left behind the ends of the lists would show when an application raises the numbers.
  [[nodiscard]] bool HidesNoLengths(const Edit& edit, const tavi::faults::Fault& fault, bool opened) const {
    const auto document = Open(opened);
    {
      const Injection injection(fault);
      edit(document->handle);
    }
    NitfHeaderInfo header = {};
    Tavi_NITFGetNITFHeader(document->handle, &header);
    NitfHeaderInfo raised = header;
    ++raised.NUMI, ++raised.NUMS, ++raised.NUMT;
    raised.LISH = raised.LI = raised.LSSH = raised.LS = raised.LTSH = raised.LT = nullptr;
    Tavi_NITFSetNITFHeader(document->handle, &raised);
    Tavi_NITFFreeNITFHeader(&header);
    NitfHeaderInfo shown = {};
    Tavi_NITFGetNITFHeader(document->handle, &shown);
    const bool hidden = shown.NUMI != raised.NUMI || shown.LISH[raised.NUMI - 1] != 0 ||
                        shown.LI[raised.NUMI - 1] != 0 || shown.LSSH[raised.NUMS - 1] != 0 ||
                        shown.LS[raised.NUMS - 1] != 0 || shown.LTSH[raised.NUMT - 1] != 0 ||
                        shown.LT[raised.NUMT - 1] != 0;
    Tavi_NITFFreeNITFHeader(&shown);
    return !hidden;
  }

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
        EXPECT_TRUE(HidesNoLengths(edit, {kind, nth, lasting}, opened));
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

// The drawing as CGM, written by the host with the settings that its vector has by now.
Bytes CgmOf(const HostVector* vector) {
  HostGlobalMemory block = nullptr;
  uint64_t size = 0;
  HostSaveOptionsRecord options{};
  HostSaveOptions(&options, sizeof options);
  EXPECT_EQ(HostVecSaveMemory(&block, vector, 62, &size, &options), SUCCESS);
  const auto* bytes = static_cast<const uint8_t*>(GlobalLock(block));
  Bytes cgm(bytes, bytes + size);
  GlobalUnlock(block);
  HostGlobalFree(block, __LINE__, nullptr);
  return cgm;
}

// Where a saved file has the data of its only graphic.
struct GraphicData {
  size_t place;
  size_t length;
};
GraphicData OnlyGraphicOf(const Bytes& saved) {
  size_t place = NumberAt(saved, kHlPlace, 6);
  const size_t images = NumberAt(saved, kNumiPlace, 3);
  for (size_t i = 0; i < images; ++i) {
    const size_t entry = kNumiPlace + 3 + 16 * i;
    place += NumberAt(saved, entry, 6) + NumberAt(saved, entry + 6, 10);
  }
  const size_t entry = kNumiPlace + 3 + 16 * images + 3;
  EXPECT_EQ(NumberAt(saved, entry - 3, 3), 1U);
  return {place + NumberAt(saved, entry, 4), NumberAt(saved, entry + 4, 6)};
}

// The document has no trace of a drawing that cannot be written; the caller's vector stays where it was moved to,
// with the viewport that it was given.
TEST_F(EditingFaults, ADrawingThatCannotBeWrittenStaysMoved) {
  constexpr int32_t kRefused = -77;
  Drawing unmoved(2, -17, 12, -1);
  for (const bool opened : {false, true}) {
    const Document document(opened ? path_.c_str() : nullptr);
    const State before = AppendTest::StateOf(document.handle);
    Drawing drawing(2, -6, 12, 10);
    {
      const Injection injection({Kind::kSaveMemory, 1, false, kRefused});
      EXPECT_EQ(Tavi_NITFAppendGraphicSegment(document.handle, drawing.get(), &kPlace), kRefused);
      EXPECT_TRUE(injection.happened());
    }
    EXPECT_TRUE(AppendTest::StateOf(document.handle) == before);
    const Drawing::Extents reach = drawing.Reach();
    EXPECT_DOUBLE_EQ(reach.largest[1], -1);
    EXPECT_DOUBLE_EQ(reach.smallest[1], -17);
    EXPECT_DOUBLE_EQ(reach.smallest[0], 2);
    EXPECT_DOUBLE_EQ(reach.largest[0], 12);
    const Bytes left = CgmOf(drawing.get());
    EXPECT_NE(left, CgmOf(unmoved.get()));

    // It is not moved again.
    const NewDocument other;
    ASSERT_EQ(Tavi_NITFAppendGraphicSegment(other.handle, drawing.get(), &kPlace), SUCCESS);
    EXPECT_DOUBLE_EQ(drawing.Reach().largest[1], -1);
    const Bytes saved = Saved(other.handle);
    const GraphicData data = OnlyGraphicOf(saved);
    EXPECT_EQ(FieldAt(saved, data.place, data.length), std::string(left.begin(), left.end()));
  }
}

// Without memory for the list of levels a new segment is as if it were the first: level 1, attached to nothing.
TEST_F(EditingFaults, LevelsThatCannotBeLookedUp) {
  NtfBuilder file;
  file.images = {tavi_test::GreyImage(4, 4)};
  const std::wstring path = Write(file);
  Picture picture(4, 4, 8);
  Drawing drawing(0, -10, 10, -1);
  struct Levels {
    uint32_t display;
    uint32_t attachment;
    bool operator==(const Levels&) const = default;
  };
  struct Case {
    Edit append;
    std::function<Levels(NitfHandle)> shown;
    std::vector<Levels> levels;  // of the appends that succeed, each with one allocation missing
  };
  const Case cases[] = {
      {[&](NitfHandle d) { return Tavi_NITFAppendImageSegment(d, picture.get(), 182, 8, 5); },
       [](NitfHandle d) {
         const ImageRecord record(d, 1);
         return Levels{record->IDLVL, record->IALVL};
       },
       {{1, 0}}},
      {[&](NitfHandle d) { return Tavi_NITFAppendGraphicSegment(d, drawing.get(), &kPlace); },
       [](NitfHandle d) {
         const GraphicRecord record(d, 0);
         return Levels{record->SDLVL, record->SALVL};
       },
       {{1, 1}, {2, 0}}},
      {[&](NitfHandle d) { return Tavi_NITFAppendTextSegment(d, text_.c_str()); },
       [](NitfHandle d) {
         return Levels{0, TextRecord(d, 0)->TXTALVL};
       },
       {{0, 0}}},
  };
  for (const Case& one : cases) {
    SCOPED_TRACE(&one - cases);
    std::vector<Levels> found;
    bool happened = true;
    for (uint64_t nth = 1; happened && nth < 100; ++nth) {
      const Document document(path);
      int32_t status = 0;
      {
        const Injection injection({Kind::kAlloc, nth, false});
        status = one.append(document.handle);
        happened = injection.happened();
      }
      EXPECT_EQ(status == SUCCESS || status == ERR_NO_MEMORY, true) << status;
      if (!happened || status != SUCCESS) continue;
      found.push_back(one.shown(document.handle));
      Saved(document.handle);
      const Document again(Output().wstring());
      ASSERT_EQ(again.open, SUCCESS);
      EXPECT_EQ(one.shown(again.handle), found.back());
    }
    EXPECT_EQ(found, one.levels);
  }
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

// What works on a document that edits stand in: appended segments and a changed record.
class EditedFaults : public EditingFaults {
 protected:
  using Work = std::function<int32_t(NitfHandle)>;

  // A file with an image and a text more and another title of the first text, or a new document with one segment of
  // each kind. Behind an appended graphic a file's own texts are looked for in the wrong place, so the file gets none.
  [[nodiscard]] std::unique_ptr<Document> OpenEdited() {
    auto document = std::make_unique<Document>(opened_ ? path_.c_str() : nullptr);
    EXPECT_EQ(Tavi_NITFAppendImageSegment(document->handle, picture_.get(), 10, 24, 5), SUCCESS);
    if (!opened_) {
      EXPECT_EQ(Tavi_NITFAppendGraphicSegment(document->handle, drawing_.get(), &kPlace), SUCCESS);
    }
    EXPECT_EQ(Tavi_NITFAppendTextSegment(document->handle, text_.c_str()), SUCCESS);
    TextRecord record(document->handle, 0);
    record.Put(offsetof(NitfTextHeaderInfo, TXTITL), "changed");
    EXPECT_EQ(Set(document->handle, 0, record.get()), SUCCESS);
    return document;
  }

  // Makes each call of `work` fail. It may succeed all the same; whatever came of it, the document is what it was, it
  // saves and `work` succeeds when the fault is gone. `check` sees the status of the work that met a fault.
  void Walk(const Work& work, const std::function<void(int32_t status)>& check) {
    const State before = AppendTest::StateOf(OpenEdited()->handle);
    ASSERT_EQ(before.save_status, SUCCESS);
    for (const Kind kind : tavi::faults::kAllKinds) {
      for (const bool lasting : {false, true}) {
        bool happened = true;
        for (uint64_t nth = 1; happened && !HasFailure(); ++nth) {
          SCOPED_TRACE(std::string(tavi::faults::Name(kind)) + " fails at call " + std::to_string(nth));
          const uint64_t alive = HostLiveObjects();
          const auto document = OpenEdited();
          int32_t status = 0;
          {
            const Injection injection({kind, nth, lasting});
            status = work(document->handle);
            happened = injection.happened();
          }
          check(status);
          EXPECT_TRUE(happened || status == SUCCESS) << status;
          faults_ += happened ? 1 : 0;
          failures_ += status != SUCCESS ? 1 : 0;
          EXPECT_TRUE(AppendTest::StateOf(document->handle) == before);
          EXPECT_EQ(work(document->handle), SUCCESS) << "it works when the fault is gone";
          document->Close();
          EXPECT_EQ(HostLiveObjects(), alive) << "the host counts a leak";
        }
      }
    }
  }

  // The file under edit becomes a saved one with a drawing in it.
  void OpenDrawable() {
    opened_ = false;
    const Bytes file = Saved(OpenEdited()->handle);
    opened_ = true;
    path_ = TextFile({file.begin(), file.end()}, "drawable.ntf");
  }

  bool opened_ = true;

 private:
  Picture picture_{20, 20};
  Drawing drawing_{0, -10, 10, -1};
};

// A save that is called successful is whole.
TEST_F(EditedFaults, Saving) {
  const std::filesystem::path path = directory() / "walked.ntf";
  const std::wstring name = path.wstring();
  const auto save = [&](NitfHandle document) { return Tavi_NITFSaveFile(document, name.c_str()); };
  for (const bool opened : {true, false}) {
    opened_ = opened;
    failures_ = 0;
    const Bytes expected = Saved(OpenEdited()->handle);
    Walk(save, [&](int32_t status) {
      EXPECT_TRUE(status != SUCCESS || ReadBytes(path) == expected);
      std::filesystem::remove(path);
    });
    EXPECT_GE(failures_, 10U);
  }
}

template <class Record>
int32_t GetAndFree(NitfHandle document, uint32_t index) {
  Record record{};
  const int32_t status = Get(document, index, &record);
  tavi::records::Free(&record);
  return status;
}

TEST_F(EditedFaults, GettingRecords) {
  const Work gets[] = {
      [](NitfHandle document) { return GetAndFree<NitfHeaderInfo>(document, 0); },
      [](NitfHandle document) { return GetAndFree<NitfImageHeaderInfo>(document, 0); },
      [](NitfHandle document) { return GetAndFree<NitfGraphicHeaderInfo>(document, 0); },
      [](NitfHandle document) { return GetAndFree<NitfTextHeaderInfo>(document, 0); },
  };
  for (const Work& get : gets) {
    failures_ = 0;
    Walk(get, [](int32_t status) { EXPECT_TRUE(status == SUCCESS || status == ERR_NO_MEMORY) << status; });
    EXPECT_GE(failures_, 2U);
  }
}

// The first text is the file's, the second one was appended and takes no call of the host to get.
TEST_F(EditedFaults, GettingTexts) {
  uint8_t text[100];
  const auto get = [&](NitfHandle document) {
    const int32_t status = Tavi_NITFGetTextSegment(document, 0, text, nullptr);
    return status != SUCCESS ? status : Tavi_NITFGetTextSegment(document, 1, text, nullptr);
  };
  Walk(get, [](int32_t status) { EXPECT_TRUE(status == SUCCESS || status == ERR_FILE_READ) << status; });
  EXPECT_GE(failures_, 4U);
}

// The drawing of the file's graphic, whatever is asked for.
TEST_F(EditedFaults, GettingADrawing) {
  OpenDrawable();
  const auto get = [](NitfHandle document) {
    return Tavi_NITFGetVectorHandle(document, 0) != nullptr ? SUCCESS : ERR_NO_MEMORY;
  };
  Walk(get, [](int32_t) {});
  EXPECT_GE(faults_, 4U);
}

// The new data are taken and the segment's drawing is gone; the length that the file header gives stays, and a save
// cuts the data there.
TEST_F(EditedFaults, ADrawingThatCannotBeCopied) {
  constexpr int32_t kRefused = -77;
  OpenDrawable();
  Drawing drawing(0, -100, 50, -1);
  VectorObjectRecord object;
  HostVecInitObject(&object);
  object.rectangle.size = sizeof object.rectangle;
  object.rectangle.kind = VECTOR_RECTANGLE;
  object.rectangle.corner = {60, -300, 0, 0};
  object.rectangle.opposite = {90, -20, 0, 0};
  object.rectangle.pen.size = sizeof object.rectangle.pen;
  object.rectangle.brush.size = sizeof object.rectangle.brush;
  ASSERT_EQ(HostVecAddObject(drawing.get(), 0, VECTOR_RECTANGLE, &object, 0), SUCCESS);
  Bytes exchanged;
  {
    const Document document(path_);
    ASSERT_EQ(Tavi_NITFSetVectorHandle(document.handle, 0, drawing.get()), SUCCESS);
    exchanged = Saved(document.handle);
  }

  const Document document(path_);
  const Bytes before = Saved(document.handle);
  const uint32_t length = FileLength(document.handle);
  HostVector* own = Tavi_NITFGetVectorHandle(document.handle, 0);
  ASSERT_NE(own, nullptr);
  ASSERT_EQ(HostVecIsEmpty(own), 0);
  {
    const Injection injection({Kind::kVecCopy, 1, false, kRefused});
    EXPECT_EQ(Tavi_NITFSetVectorHandle(document.handle, 0, drawing.get()), kRefused);
    EXPECT_TRUE(injection.happened());
  }
  EXPECT_NE(HostVecIsEmpty(own), 0);
  EXPECT_EQ(HostVecIsEmpty(drawing.get()), 0);
  EXPECT_EQ(FileLength(document.handle), length);
  const GraphicData old_data = OnlyGraphicOf(before);
  const GraphicData new_data = OnlyGraphicOf(exchanged);
  ASSERT_LT(old_data.length, new_data.length);
  Bytes expected = before;
  std::copy_n(exchanged.begin() + static_cast<std::ptrdiff_t>(new_data.place), old_data.length,
              expected.begin() + static_cast<std::ptrdiff_t>(old_data.place));
  EXPECT_NE(expected, before);
  EXPECT_EQ(Saved(document.handle), expected);

  ASSERT_EQ(Tavi_NITFSetVectorHandle(document.handle, 0, drawing.get()), SUCCESS) << "when it can be copied";
  EXPECT_EQ(HostVecIsEmpty(own), 0);
  EXPECT_EQ(Saved(document.handle), exchanged);
}

// Setters are not undone when memory is short: they go on or end there. The document remains one that saves, and the
// same record sets everything when the fault is gone.
template <class Record>
std::function<int32_t(NitfHandle)> SetterOf(Record* record, uint32_t index) {
  return [=](NitfHandle document) { return Set(document, index, record); };
}

TEST_F(EditingFaults, SettingRecords) {
  const Document source(path_);
  HeaderRecord header(source.handle, 0);
  ImageRecord image(source.handle, 0);
  GraphicRecord graphic(source.handle, 0);
  TextRecord text(source.handle, 0);
  header.Put(offsetof(NitfHeaderInfo, FTITLE), "another title");
  image.Put(offsetof(NitfImageHeaderInfo, IID2), "another name");
  graphic.Put(offsetof(NitfGraphicHeaderInfo, SNAME), "another name");
  text.Put(offsetof(NitfTextHeaderInfo, TXTITL), "another title");
  const Edit setters[] = {SetterOf(header.get(), 0), SetterOf(image.get(), 0), SetterOf(graphic.get(), 0),
                          SetterOf(text.get(), 0)};
  for (const Edit& set : setters) {
    State expected;
    {
      const Document document(path_);
      ASSERT_EQ(set(document.handle), SUCCESS);
      expected = AppendTest::StateOf(document.handle);
    }
    for (const Kind kind : tavi::faults::kAllKinds) {
      for (const bool lasting : {false, true}) {
        bool happened = true;
        for (uint64_t nth = 1; happened && !HasFailure(); ++nth) {
          SCOPED_TRACE("setter " + std::to_string(&set - setters) + ": " + tavi::faults::Name(kind) +
                       " fails at call " + std::to_string(nth) + (lasting ? " and on" : ""));
          const uint64_t alive = HostLiveObjects();
          Document document(path_);
          int32_t status = 0;
          {
            const Injection injection({kind, nth, lasting});
            status = set(document.handle);
            happened = injection.happened();
          }
          EXPECT_TRUE(status == SUCCESS || (happened && status == ERR_NO_MEMORY)) << status;
          faults_ += happened ? 1 : 0;
          EXPECT_EQ(AppendTest::StateOf(document.handle).save_status, SUCCESS);
          EXPECT_EQ(set(document.handle), SUCCESS) << "it works when the fault is gone";
          EXPECT_TRUE(AppendTest::StateOf(document.handle) == expected);
          document.Close();
          EXPECT_EQ(HostLiveObjects(), alive) << "the host counts a leak";
        }
      }
    }
  }
  EXPECT_GT(faults_, 10U);
}

}  // namespace
}  // namespace editing

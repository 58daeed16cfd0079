// Every host call that the drawing of graphics and labels of the 2.0 layout makes is made to fail in turn, once and from
// then on: a documented status, nothing left alive, and the drawing works again when the fault is gone. Files of the 2.1
// layout are put to the same test through the exports.
#include <gtest/gtest.h>

#include <algorithm>
#include <new>
#include <optional>

#include "CgmPicture.h"
#include "DisplayList.h"
#include "FaultHost.h"
#include "UnitTest.h"

namespace tavi::faults {
namespace {

using tavi_test::Bytes;
using tavi_test::GraphicSpec;
using tavi_test::NtfBuilder;

struct Case {
  const char* name;
  NtfBuilder file;
};

NtfBuilder With(const GraphicSpec& graphic) {
  NtfBuilder file{tavi_test::GreyImage(8, 8)};
  file.layout = tavi_test::Layout::kNitf20;
  file.header["FVER"] = "02.10";
  file.graphics = {graphic};
  file.graphics[0].sdlvl = 2;
  return file;
}

NtfBuilder Symbol(char sfmt, const tavi_test::FieldTexts& fields, Bytes data = {}) {
  GraphicSpec graphic;
  graphic.sfmt = sfmt;
  graphic.fields = {{"NPIXPL", "0008"}, {"NLIPS", "0004"}, {"NWDTH", "0002"}, {"SCOLOR", "R"}};
  for (const auto& [name, text] : fields) graphic.fields[name] = text;
  graphic.data = std::move(data);
  return With(graphic);
}

NtfBuilder Label() {
  NtfBuilder file = With({.sfmt = 'O'});
  file.labels = {{.ldlvl = 3, .data = {'o', 'n', 'e', '\n', 't', 'w', 'o'}}};
  return file;
}

NtfBuilder Coloured() {
  NtfBuilder file = Symbol('B', {{"NBPP", "1"}}, Bytes(4, 0x5A));
  file.graphics[0].lut_planes = {{1, 2}, {3, 4}, {5, 6}};
  return file;
}

std::vector<Case> Cases() {
  return {{"Drawing", With({.data = tavi_test::CgmPicture().Rectangle(0, 0, 9, 9, {1, 2, 3}).Build()})},
          {"Bilevel", Symbol('B', {{"NBPP", "1"}}, Bytes(4, 0x5A))},
          {"BilevelPlain", Symbol('B', {{"NBPP", "1"}, {"SCOLOR", "N"}}, Bytes(4, 0x5A))},
          {"Coloured", Coloured()},
          {"Deep", Symbol('B', {{"NBPP", "8"}, {"SCOLOR", "N"}}, Bytes(32, 0x5A))},
          {"Line", Symbol('O', {{"SNUM", "000001"}})},
          {"Triangle", Symbol('O', {{"SNUM", "000010"}})},
          {"Rectangle", Symbol('O', {{"SNUM", "000011"}})},
          {"Ellipse", Symbol('O', {{"SNUM", "000013"}})},
          {"Hexagon", Symbol('O', {{"SNUM", "000017"}})},
          {"Label", Label()}};
}

void PrintTo(const Case& tested, std::ostream* out) {
  *out << tested.name;
}

class GraphicFaults : public unit::UnitTest, public testing::WithParamInterface<Case> {
 protected:
  // Both what is asked for the size and what is drawn, on a document that is open.
  int32_t Run(NitfFile& document, HostDrawingContext dc, const Fault* fault, bool& happened) {
    std::optional<Injection> injection;
    if (fault != nullptr) injection.emplace(*fault);
    uint32_t width = 0;
    uint32_t height = 0;
    int32_t status = tavi::CompositeSize(document, width, height);
    if (status == SUCCESS) status = tavi::DrawObjects(nullptr, dc, document);
    happened = injection && injection->happened();
    return status;
  }
};
INSTANTIATE_TEST_SUITE_P(Of, GraphicFaults, testing::ValuesIn(Cases()),
                         [](const auto& tested) { return tested.param.name; });

bool IsDocumented(int32_t status) {
  constexpr int32_t kStatuses[] = {SUCCESS,       ERR_NO_MEMORY,   ERR_NO_BITMAP,
                                   ERR_FILE_READ, ERR_FILE_FORMAT, ERR_INVALID_PARAMETER};
  return std::find(std::begin(kStatuses), std::end(kStatuses), status) != std::end(kStatuses);
}

TEST_P(GraphicFaults, LeaveNothingAliveAndPass) {
  tavi::OwnedBitmap canvas;
  ASSERT_EQ(HostCreateBitmap(canvas.get(), sizeof(HostBitmap), 1, 20, 20, 24, 1, nullptr, 1, nullptr, 0),
            SUCCESS);
  const tavi::BitmapContext context(canvas.get());
  NitfFile document;
  ASSERT_EQ(Open20(document, GetParam().file.Build().Write(directory())), SUCCESS);
  document.PaintEachObject = 1;
  bool happened = false;
  ASSERT_EQ(Run(document, context.get(), nullptr, happened), SUCCESS);
  const uint64_t alive = HostLiveObjects();
  uint64_t faults = 0;
  for (const Kind kind : kAllKinds) {
    for (const bool lasting : {false, true}) {
      constexpr uint64_t kMost = 400;
      for (uint64_t nth = 1; nth <= kMost; ++nth) {
        const Fault fault{kind, nth, lasting};
        const int32_t status = Run(document, context.get(), &fault, happened);
        if (!happened) break;
        ++faults;
        ASSERT_TRUE(IsDocumented(status)) << Name(kind) << " " << nth << ": " << status;
        // Nothing but the drawings that the records hold, which the next draw replaces.
        bool again = false;
        ASSERT_EQ(Run(document, context.get(), nullptr, again), SUCCESS) << Name(kind) << " " << nth;
        ASSERT_EQ(HostLiveObjects(), alive) << Name(kind) << " " << nth;
      }
    }
  }
  EXPECT_GT(faults, 3U);
}

// The walks above let each call fail: it is enough to see that there are such calls.
using GraphicOperations = unit::UnitTest;
TEST_F(GraphicOperations, AllThatCanFailAreMet) {
  tavi::OwnedBitmap canvas;
  ASSERT_EQ(HostCreateBitmap(canvas.get(), sizeof(HostBitmap), 1, 20, 20, 24, 1, nullptr, 1, nullptr, 0),
            SUCCESS);
  const tavi::BitmapContext context(canvas.get());
  for (const Case& one : Cases()) {
    NitfFile document;
    ASSERT_EQ(Open20(document, one.file.Build().Write(directory())), SUCCESS);
    EXPECT_EQ(tavi::DrawObjects(nullptr, context.get(), document), SUCCESS);
  }
  const std::vector<std::string> operations = ListedOperations("symbols");
  EXPECT_GE(operations.size(), 5U);
  for (const std::string& operation : operations) EXPECT_TRUE(HasMet(operation)) << operation;
}

// Opening a file of the 2.0 layout: a documented status, nothing alive, and it opens when the fault is gone.
TEST_P(GraphicFaults, OpeningLeavesNothingAlive) {
  const std::wstring path = GetParam().file.Build().Write(directory());
  const uint64_t alive = HostLiveObjects();
  uint64_t faults = 0;
  for (const Kind kind : kAllKinds) {
    for (const bool lasting : {false, true}) {
      bool happened = true;
      for (uint64_t nth = 1; happened; ++nth) {
        SCOPED_TRACE(std::string(Name(kind)) + " fails at call " + std::to_string(nth));
        {
          NitfFile document;
          const Injection injection({kind, nth, lasting});
          const int32_t status = [&] {
            try {
              return Open20(document, path);
            } catch (const std::bad_alloc&) {
              return int32_t{ERR_NO_MEMORY};  // as the exports say to it
            }
          }();
          happened = injection.happened();
          ASSERT_TRUE(IsDocumented(status) || status == ERR_FILE_NOT_FOUND) << status;
          ASSERT_TRUE(happened || status == SUCCESS);
        }
        ASSERT_EQ(HostLiveObjects(), alive);
        faults += happened ? 1 : 0;
      }
    }
  }
  EXPECT_GT(faults, 20U);
}

// A data length that the file cannot hold is refused before memory is asked for.
using GraphicLengths = unit::UnitTest;
TEST_F(GraphicLengths, HugeLengthsTakeNoMemory) {
  for (const char* field : {"LS[0]", "LL[0]"}) {
    NtfBuilder file = Label();
    file.graphics[0].data = {1, 2, 3};
    file.header[field] = field[1] == 'S' ? "999999" : "999";
    if (field[1] == 'S') file.labels.clear();  // nothing is to be looked for behind the graphic
    NitfFile document;
    ASSERT_EQ(Open20(document, file.Build().Write(directory())), SUCCESS) << field;
    tavi::OwnedBitmap canvas;
    ASSERT_EQ(HostCreateBitmap(canvas.get(), sizeof(HostBitmap), 1, 20, 20, 24, 1, nullptr, 1, nullptr, 0),
              SUCCESS);
    const tavi::BitmapContext context(canvas.get());
    const Watch watch;
    EXPECT_EQ(tavi::DrawObjects(nullptr, context.get(), document), ERR_FILE_READ) << field;
    EXPECT_LT(watch.demand().largest_block, 900U);
  }
}

}  // namespace
}  // namespace tavi::faults

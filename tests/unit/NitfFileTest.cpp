// The document: where the source file has what, how the lists are built and torn down, opening.
#include "NitfFile.h"

#include <gtest/gtest.h>

#include "UnitTest.h"

namespace {

using tavi::Layout;
using tavi_test::BuiltFile;
using tavi_test::Bytes;
using tavi_test::NtfBuilder;
using namespace unit;

// Segments of every kind, no two of one length.
NtfBuilder AllKinds(Layout layout) {
  NtfBuilder builder;
  builder.layout = layout == Layout::kNitf20 ? tavi_test::Layout::kNitf20 : tavi_test::Layout::kNitf21;
  builder.header["FVER"] = "02.10";
  builder.images = {tavi_test::GreyImage(3, 2), tavi_test::GreyImage(5, 5), tavi_test::GreyImage(1, 1)};
  builder.images[1].comments = {"one", "two"};
  builder.images[2].udid = Bytes(9, 'x');
  builder.graphics.resize(2);
  builder.graphics[0].data = Bytes(7, 'g');
  builder.graphics[1].data = Bytes(11, 'h');
  builder.graphics[1].sxshd = Bytes(2, 'x');
  if (layout == Layout::kNitf20) {
    builder.labels.resize(2);
    builder.labels[0].data = Bytes(4, 'l');
    builder.labels[0].lxshd = Bytes(6, 'x');
    builder.labels[1].data = Bytes(9, 'm');
  }
  builder.texts.resize(3);
  builder.texts[0].data = Bytes(13, 't');
  builder.texts[1].txshd = Bytes(5, 'x');
  builder.texts[1].data = Bytes(17, 'u');
  builder.data_extensions.resize(2);
  builder.data_extensions[0].data = Bytes(5, 'd');
  builder.data_extensions[1].desshf = Bytes(3, 'x');
  builder.reserved = {{Bytes(8, 'r'), Bytes(6, 's')}};
  return builder;
}

class NitfFileTest : public UnitTest, public testing::WithParamInterface<Layout> {
 protected:
  static bool Is20() { return GetParam() == Layout::kNitf20; }
  void Open(NitfFile& document, const BuiltFile& file) {
    document.IsNitf20 = Is20();
    ASSERT_EQ(tavi::OpenNitfFile(document, file.Write(directory()).c_str()), SUCCESS);
  }
  static int64_t Begin(const BuiltFile& file, const std::string& name) {
    return static_cast<int64_t>(file.At(name).offset);
  }
};
INSTANTIATE_TEST_SUITE_P(Both, NitfFileTest, testing::Values(Layout::kNitf21, Layout::kNitf20),
                         [](const auto& layout) {
                           return layout.param == Layout::kNitf20 ? "Nitf20" : "Nitf21";
                         });

// ---- Positions ----

TEST_P(NitfFileTest, EverySegmentIsFoundWhereTheFileHasIt) {
  const BuiltFile file = AllKinds(GetParam()).Build();
  NitfFile d;
  Open(d, file);
  struct {
    const char* kind;
    uint32_t count;
    int64_t (*subheader)(const NitfFile&, uint32_t);
    int64_t (*data)(const NitfFile&, uint32_t);
  } const kKinds[] = {{"image", 3, tavi::ImageSubHeaderPosition, tavi::ImageDataPosition},
                      {"graphic", 2, tavi::GraphicSubHeaderPosition, nullptr},
                      {"label", Is20() ? 2U : 0U, tavi::LabelSubHeaderPosition, tavi::LabelDataPosition},
                      {"text", 3, tavi::TextSubHeaderPosition, tavi::TextDataPosition},
                      {"des", 2, tavi::DesSubHeaderPosition, nullptr}};
  for (const auto& kind : kKinds) {
    for (uint32_t i = 0; i < kind.count; ++i) {
      const std::string name = std::string(kind.kind) + "[" + std::to_string(i) + "].";
      EXPECT_EQ(kind.subheader(d, i), Begin(file, name + "subheader")) << name;
      if (kind.data != nullptr) {
        EXPECT_EQ(kind.data(d, i), Begin(file, name + "data")) << name;
      }
    }
  }
  EXPECT_EQ(tavi::PositionPastGraphics(d), Begin(file, Is20() ? "label[0].subheader" : "text[0].subheader"));
  EXPECT_EQ(tavi::PositionPastLabels(d), Begin(file, "text[0].subheader"));
}

TEST_P(NitfFileTest, SeeksMoveTheSourceThere) {
  const BuiltFile file = AllKinds(GetParam()).Build();
  NitfFile d;
  Open(d, file);
  const auto expect = [&](const std::string& name) { EXPECT_EQ(Position(d), Begin(file, name)) << name; };
  tavi::SeekDesSubHeader(d, 1);
  expect("des[1].subheader");
  tavi::SeekTextData(d, 2);
  expect("text[2].data");
  tavi::SeekTextData(d, 0);
  expect("text[0].data");
  tavi::SeekPastLabels(d);
  expect("text[0].subheader");
  tavi::SeekPastGraphics(d);
  expect(Is20() ? "label[0].subheader" : "text[0].subheader");
  if (Is20()) {
    tavi::SeekLabelData(d, 1);
    expect("label[1].data");
  }
  tavi::SeekGraphicSubHeader(d, 1);
  expect("graphic[1].subheader");
  tavi::SeekGraphicSubHeader(d, 0);
  expect("graphic[0].subheader");
  tavi::SeekImageData(d, 2);
  expect("image[2].data");
  tavi::SeekImageData(d, 0);
  expect("image[0].data");
}

TEST_P(NitfFileTest, PositionsBeginAtTheHeaderLengthThatTheFileSays) {
  NtfBuilder builder = AllKinds(GetParam());
  const int64_t shift = 1000 - static_cast<int64_t>(builder.Build().At("image[0].subheader").offset);
  NitfFile d;
  const BuiltFile file = builder.Build();
  Open(d, file);
  d.Header.HlRead = 1000;
  d.Header.HlWork = 5;
  EXPECT_EQ(tavi::ImageSubHeaderPosition(d, 0), 1000);
  EXPECT_EQ(tavi::TextDataPosition(d, 1), Begin(file, "text[1].data") + shift);
}

// The tables named Work describe the file to be written and move nothing in the source.
TEST_P(NitfFileTest, WorkingLengthsMoveNothing) {
  const BuiltFile file = AllKinds(GetParam()).Build();
  NitfFile d;
  Open(d, file);
  for (tavi::LengthList* list : {&d.Header.LishWork, &d.Header.LiWork, &d.Header.LsshWork, &d.Header.LsWork,
                                 &d.Header.LtWork, &d.Header.LlWork}) {
    for (uint64_t i = 0; i < list->size(); ++i) (*list)[i] += 100;
  }
  EXPECT_EQ(tavi::ImageDataPosition(d, 2), Begin(file, "image[2].data"));
  EXPECT_EQ(tavi::DesSubHeaderPosition(d, 1), Begin(file, "des[1].subheader"));
}

// ---- Lists ----

class ListTest : public UnitTest {};

TEST_F(ListTest, AllocateBuildsOneNodeForEachSegment) {
  NitfFile d;
  d.ImageCount = 3;
  d.GraphicCount = 2;
  d.LabelCount = 1;
  d.TextCount = 4;
  d.DesCount = 2;
  ASSERT_EQ(tavi::AllocateObjects(d), SUCCESS);
  EXPECT_EQ(host().debug(), std::vector<std::string>{"\nAllocateObjects\n"});
  const auto expect_list = [&](const auto* head, uint32_t count) {
    uint32_t nodes = 0;
    for (const auto* node = head; node != nullptr; node = node->Next, ++nodes) {
      ASSERT_NE(node->Subheader, nullptr);
      if constexpr (requires { node->Subheader->Owner; }) {
        EXPECT_EQ(node->Subheader->SegmentIndex, nodes);
        EXPECT_EQ(node->Subheader->Owner, &d);
      }
      EXPECT_EQ(tavi::SubheaderAt(head, nodes, count), node->Subheader);
    }
    EXPECT_EQ(nodes, count);
    EXPECT_EQ(tavi::SubheaderAt(head, count, count), nullptr);
    EXPECT_EQ(tavi::SubheaderAt(head, 0xFFFFFFFF, count), nullptr);
    EXPECT_EQ(tavi::SubheaderAt(head, 0, 0), nullptr) << "the count bounds the walk";
    EXPECT_EQ(tavi::SubheaderAt(head, count, count + 5), nullptr);
  };
  expect_list(d.Images, 3);
  expect_list(d.Graphics, 2);
  expect_list(d.Labels, 1);
  expect_list(d.Texts, 4);
  expect_list(d.DataExtensions, 2);
  EXPECT_EQ(tavi::CountImageHeaders(d), 3);
  EXPECT_EQ(tavi::CountGraphicHeaders(d), 2);
  EXPECT_EQ(tavi::CountLabelHeaders(d), 1);
  EXPECT_EQ(tavi::CountTextHeaders(d), 4);
}

TEST_F(ListTest, CountsOfZeroMakeEmptyLists) {
  NitfFile d;
  ASSERT_EQ(tavi::AllocateObjects(d), SUCCESS);
  EXPECT_EQ(d.Images, nullptr);
  EXPECT_EQ(d.Graphics, nullptr);
  EXPECT_EQ(d.Labels, nullptr);
  EXPECT_EQ(d.Texts, nullptr);
  EXPECT_EQ(d.DataExtensions, nullptr);
  EXPECT_EQ(tavi::CountImageHeaders(d), 0);
}

TEST_F(ListTest, HeadersAreCountedUpToTheCurrentCountAndOnlyWhenThere) {
  NitfFile d;
  d.TextCount = 4;
  ASSERT_EQ(tavi::AllocateObjects(d), SUCCESS);
  tavi::TxSubHdr* taken = d.Texts->Next->Subheader;
  d.Texts->Next->Subheader = nullptr;
  EXPECT_EQ(tavi::CountTextHeaders(d), 3);
  d.TextCount = 2;
  EXPECT_EQ(tavi::CountTextHeaders(d), 1);
  d.TextCount = 9;
  EXPECT_EQ(tavi::CountTextHeaders(d), 3) << "the list ends before the count";
  d.Texts->Next->Subheader = taken;
}

TEST_F(ListTest, FreeReleasesAllAndRunsTwice) {
  const uint64_t before = HostLiveObjects();
  NitfFile d;
  const BuiltFile file = AllKinds(Layout::kNitf21).Build();
  ASSERT_EQ(tavi::OpenNitfFile(d, file.Write(directory()).c_str()), SUCCESS);
  EXPECT_GT(HostLiveObjects(), before + 10);
  EXPECT_EQ(tavi::FreeObjects(d), SUCCESS);
  EXPECT_EQ(HostLiveObjects(), before);
  EXPECT_EQ(d.File, -1);
  EXPECT_EQ(d.Images, nullptr);
  EXPECT_EQ(d.Graphics, nullptr);
  EXPECT_EQ(d.Texts, nullptr);
  EXPECT_EQ(d.DataExtensions, nullptr);
  EXPECT_EQ(d.ImageCount, 3U) << "the counts are left as they are";
  EXPECT_EQ(tavi::FreeObjects(d), SUCCESS);
  d.Header.Release();
  EXPECT_EQ(HostLiveObjects(), before);
  EXPECT_EQ(host().debug(),
            (std::vector<std::string>{"\nAllocateObjects\n", "\nFreeObjects\n", "\nFreeObjects\n"}));
}

// What is in memory of appended segments goes with the records.
TEST_F(ListTest, FreeReleasesWhatTheRecordsOwn) {
  const uint64_t before = HostLiveObjects();
  NitfFile d;
  d.ImageCount = d.GraphicCount = d.LabelCount = d.TextCount = d.DesCount = 1;
  ASSERT_EQ(tavi::AllocateObjects(d), SUCCESS);
  ASSERT_TRUE(d.Images->Subheader->PendingData.Allocate(3, {}));
  ASSERT_TRUE(d.Images->Subheader->Lut.Allocate(3, {}));
  ASSERT_TRUE(d.Graphics->Subheader->GraphicDataBuffer.Allocate(3, {}));
  ASSERT_TRUE(d.Labels->Subheader->LabelDataBuffer.Allocate(3, {}));
  ASSERT_TRUE(d.Texts->Subheader->TextDataBuffer.Allocate(3, {}));
  ASSERT_TRUE(d.DataExtensions->Subheader->UserSubheader.Allocate(3, {}));
  tavi::FreeObjects(d);
  EXPECT_EQ(HostLiveObjects(), before);
}

// ---- States ----

class DocumentStateTest : public UnitTest {};

void ExpectNoSegments(const NitfFile& d) {
  for (const uint32_t count : {d.ImageCount, d.GraphicCount, d.ImagesInFile, d.GraphicsInFile, d.LabelCount,
                               d.TextCount, d.LabelsInFile, d.TextsInFile, d.DesCount, d.ResCount}) {
    EXPECT_EQ(count, 0U);
  }
  EXPECT_EQ(d.Images, nullptr);
  EXPECT_EQ(d.Graphics, nullptr);
  EXPECT_EQ(d.Labels, nullptr);
  EXPECT_EQ(d.Texts, nullptr);
  EXPECT_EQ(d.DataExtensions, nullptr);
}

TEST_F(DocumentStateTest, NewDocument) {
  NitfFile d;
  ExpectNoSegments(d);
  EXPECT_EQ(d.File, -1);
  EXPECT_EQ(d.Background, 0xFFFFFFU);
  for (const uint32_t zero : {d.PaintEachObject, d.StretchDarkImages, d.FixedCanvas, d.IsNitf20,
                              d.StreamConsumed, d.StreamLoaded, d.StreamTail, d.HeaderValid}) {
    EXPECT_EQ(zero, 0U);
  }
  EXPECT_EQ(tavi::GetHeader(d), nullptr);
}

TEST_F(DocumentStateTest, CreatedEmpty) {
  NitfFile d;
  tavi::MakeEmptyDocument(d);
  ExpectNoSegments(d);
  EXPECT_EQ(d.File, -1);
  EXPECT_EQ(d.HeaderValid, 1U);
  EXPECT_EQ(d.Header.Valid, 0U);
  EXPECT_EQ(d.Header.FlValue, 388U);
  EXPECT_EQ(d.Header.FlMirror, 388U);
  EXPECT_EQ(d.Header.HlRead, 0U);
  EXPECT_EQ(d.Header.HlWork, 388U);
  EXPECT_STREQ(d.Header.Text.FL, "000000000388");
  EXPECT_EQ(std::string(d.Header.Text.HL, 7), std::string(7, '\0'));
  EXPECT_EQ(std::string(d.Header.Text.NUMI, 4), std::string(4, '\0'));
  EXPECT_STREQ(d.Header.Text.FDT, "20050101010101");
  EXPECT_EQ(d.Background, 0xFFFFFFU);
  EXPECT_EQ(tavi::GetHeader(d), &d.Header);
  EXPECT_EQ(tavi::FreeObjects(d), SUCCESS);
}

TEST_P(NitfFileTest, OpenedDocumentHasTheCountsTwice) {
  NtfBuilder builder = AllKinds(GetParam());
  builder.background = {0x10, 0x20, 0x30};
  NitfFile d;
  const BuiltFile file = builder.Build();
  Open(d, file);
  EXPECT_NE(d.File, -1);
  EXPECT_EQ(d.HeaderValid, 1U);
  EXPECT_EQ(d.Header.Valid, 1U);
  EXPECT_EQ(tavi::GetHeader(d), &d.Header);
  EXPECT_EQ(d.ImageCount, 3U);
  EXPECT_EQ(d.ImagesInFile, 3U);
  EXPECT_EQ(d.GraphicCount, 2U);
  EXPECT_EQ(d.GraphicsInFile, 2U);
  EXPECT_EQ(d.LabelCount, Is20() ? 2U : 0U);
  EXPECT_EQ(d.LabelsInFile, Is20() ? 2U : 0U);
  EXPECT_EQ(d.TextCount, 3U);
  EXPECT_EQ(d.TextsInFile, 3U);
  EXPECT_EQ(d.DesCount, 2U);
  EXPECT_EQ(d.ResCount, 1U) << "counted, and no list exists";
  EXPECT_EQ(d.Background, Is20() ? 0U : 0x302010U) << "black where the layout has no background";
  EXPECT_EQ(d.Header.FlValue, file.bytes.size());
}

TEST_P(NitfFileTest, EverySubheaderIsReadAtItsOwnPlace) {
  NtfBuilder builder = AllKinds(GetParam());
  for (size_t i = 0; i < 3; ++i) builder.images[i].fields["IID1"] = "image " + std::to_string(i);
  for (size_t i = 0; i < 2; ++i) builder.graphics[i].fields["SID"] = "graphic " + std::to_string(i);
  for (size_t i = 0; i < builder.labels.size(); ++i)
    builder.labels[i].fields["LID"] = "label " + std::to_string(i);
  for (size_t i = 0; i < 3; ++i) builder.texts[i].fields["TEXTID"] = "text " + std::to_string(i);
  for (size_t i = 0; i < 2; ++i) builder.data_extensions[i].fields["DESITEM"] = "00" + std::to_string(i);
  NitfFile d;
  Open(d, builder.Build());
  for (uint32_t i = 0; i < 3; ++i) {
    EXPECT_EQ(tavi::SubheaderAt(d.Images, i, 3)->Text.IID1, "image " + std::to_string(i) + "   ");
    EXPECT_EQ(std::string(tavi::SubheaderAt(d.Texts, i, 3)->Text.TEXTID, 6), "text " + std::to_string(i));
  }
  for (uint32_t i = 0; i < 2; ++i) {
    EXPECT_EQ(tavi::SubheaderAt(d.Graphics, i, 2)->Text.SID, "graphic " + std::to_string(i) + " ");
    EXPECT_EQ(tavi::SubheaderAt(d.DataExtensions, i, 2)->Text.DESITEM, "00" + std::to_string(i));
    if (Is20()) {
      EXPECT_EQ(tavi::SubheaderAt(d.Labels, i, 2)->Text.LID, "label " + std::to_string(i) + "   ");
    }
  }
}

TEST_P(NitfFileTest, FileWithoutSegmentsOpens) {
  NtfBuilder builder;
  builder.layout = Is20() ? tavi_test::Layout::kNitf20 : tavi_test::Layout::kNitf21;
  builder.header["FVER"] = "02.10";
  NitfFile d;
  Open(d, builder.Build());
  ExpectNoSegments(d);
  EXPECT_EQ(d.HeaderValid, 1U);
}

TEST_P(NitfFileTest, ReservedExtensionsAreCountedAndNeverRead) {
  NtfBuilder builder;
  builder.layout = Is20() ? tavi_test::Layout::kNitf20 : tavi_test::Layout::kNitf21;
  builder.header["FVER"] = "02.10";
  builder.reserved = {{Bytes(3, '?'), Bytes(4, '!')}, {{}, {}}};
  builder.header["LRESH[1]"] = "9998";  // beyond the file
  NitfFile d;
  Open(d, builder.Build());
  EXPECT_EQ(d.ResCount, 2U);
}

// ---- Opening that fails ----

class OpenFailureTest : public UnitTest {};

TEST_F(OpenFailureTest, NoSuchFileIsAShortRead) {
  NitfFile d;
  EXPECT_EQ(tavi::OpenNitfFile(d, (directory() / "nothing.ntf").wstring().c_str()), ERR_FILE_READ);
  EXPECT_EQ(d.File, -1);
  EXPECT_EQ(d.HeaderValid, 0U);
}

TEST_F(OpenFailureTest, EmptyFileIsAShortRead) {
  NitfFile d;
  EXPECT_EQ(tavi::OpenNitfFile(d, BuiltFile().Write(directory()).c_str()), ERR_FILE_READ);
}

TEST_F(OpenFailureTest, FirstBadSubheaderEndsTheOpen) {
  struct {
    const char* patched;
    const char* text;
    int32_t status;
    bool texts_read;  // in file order: what stands behind the bad one has not been read
  } const kCases[] = {{"image[1].IM", "XX", ERR_FILE_FORMAT, false},
                      {"image[2].PVTYPE", "R", ERR_UNSUPPORTED_PVTYPE, false},
                      {"graphic[1].SY", "XX", ERR_FILE_FORMAT, false},
                      {"label[0].LA", "XX", ERR_FILE_FORMAT, false},
                      {"text[2].TE", "XX", ERR_FILE_FORMAT, true},
                      {"des[1].DE", "XX", ERR_FILE_FORMAT, true}};
  for (const auto& c : kCases) {
    NitfFile d;
    const std::wstring path = AllKinds(Layout::kNitf20).Build().Patch(c.patched, c.text).Write(directory());
    EXPECT_EQ(Open20(d, path), c.status) << c.patched;
    EXPECT_NE(d.File, -1) << "the caller tears down what was built";
    EXPECT_EQ(d.ImageCount, 3U);
    EXPECT_NE(d.DataExtensions, nullptr);
    EXPECT_EQ(d.Texts->Subheader->SignatureSeen, c.texts_read ? 1U : 0U) << c.patched;
  }
}

TEST_F(OpenFailureTest, HeaderThatFailsLeavesNoLists) {
  NitfFile d;
  const std::wstring path = AllKinds(Layout::kNitf21).Build().Patch("NUMX", "001").Write(directory());
  EXPECT_EQ(tavi::OpenNitfFile(d, path.c_str()), ERR_FILE_FORMAT);
  EXPECT_EQ(d.Images, nullptr);
  EXPECT_EQ(d.ImageCount, 0U);
  EXPECT_EQ(d.HeaderValid, 0U);
  EXPECT_TRUE(d.Header.LishRead.exists()) << "lists made before the failure remain for the release";
}

TEST_F(OpenFailureTest, LengthThatPointsBeyondTheFileIsAShortRead) {
  NitfFile d;
  const std::wstring path = AllKinds(Layout::kNitf21).Build().Patch("LI[0]", "0000099999").Write(directory());
  EXPECT_EQ(tavi::OpenNitfFile(d, path.c_str()), ERR_FILE_READ);
}

// ---- What an observer sees ----

TEST_F(DocumentStateTest, InspectionReportsEveryFieldInFileOrder) {
  NtfBuilder builder = AllKinds(Layout::kNitf21);
  builder.images[0].bands[0].luts = {{1, 2}, {3, 4}, {5, 6}};
  builder.images[1].ic = "C8";
  builder.images[1].igeolo = std::string(60, '0');
  builder.udhd = tavi_test::Tre("T", "1");
  const BuiltFile file = builder.Build();
  struct Seen {
    std::vector<std::string> names;
    const BuiltFile* file;
  } seen = {{}, &file};
  const auto observe = [](void* user, const tavi::SeenField& field) {
    static const char* const kPrefixes[] = {"", "image", "graphic", "label", "text", "des"};
    auto& s = *static_cast<Seen*>(user);
    std::string name;
    if (field.segment != tavi::SegmentKind::kFileHeader) {
      name = std::string(kPrefixes[static_cast<size_t>(field.segment)]) + "[" +
             std::to_string(field.segment_index) + "].";
    }
    name += field.name;
    if (field.index >= 0) name += "[" + std::to_string(field.index) + "]";
    if (field.sub_index >= 0) name += "[" + std::to_string(field.sub_index) + "]";
    s.names.push_back(name);
    const tavi_test::FieldPlace place = s.file->At(name);
    EXPECT_EQ(field.offset, place.offset) << name;
    EXPECT_EQ(std::string(reinterpret_cast<const char*>(field.bytes), field.size), s.file->Text(name))
        << name;
  };
  ASSERT_EQ(tavi::InspectFile(file.Write(directory()).c_str(), observe, &seen), SUCCESS);
  std::vector<std::string> expected;
  for (const std::string& name : file.order) {
    if (!name.ends_with(".pixels") && !name.ends_with(".content") && !name.starts_with("res["))
      expected.push_back(name);
  }
  EXPECT_EQ(seen.names, expected);
}

TEST_F(OpenFailureTest, LastFieldInspectedIsTheOneRefused) {
  std::string last;
  const auto observe = [](void* user, const tavi::SeenField& field) {
    *static_cast<std::string*>(user) = field.name;
  };
  const std::wstring path = AllKinds(Layout::kNitf21).Build().Patch("image[1].IMODE", "X").Write(directory());
  EXPECT_EQ(tavi::InspectFile(path.c_str(), observe, &last), ERR_FILE_FORMAT);
  EXPECT_EQ(last, "IMODE");
}

}  // namespace

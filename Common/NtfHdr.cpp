#include "NtfHdr.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <initializer_list>
#include <utility>

#include "HeaderReader.h"
#include "NitfFile.h"
#include "SaveFields.h"
#include "StrmFHdr.h"

namespace tavi {

TAVI_UNIT(L"Common/NtfHdr")

namespace {

using R = NtfHdr;
using Field = FieldRow<R>::Field;

bool DowngradesByEvent(const R& header, Layout) {
  return std::memcmp(header.Text.FSDWNG, kDowngradeByEvent, sizeof header.Text.FSDWNG - 1) == 0;
}
bool HasUserData(const R& header, Layout) {
  return NumberOf(header.Text.UDHDL) != 0;
}
bool HasExtendedData(const R& header, Layout) {
  return NumberOf(header.Text.XHDL) != 0;
}
int64_t UserDataLength(const R& header) {
  return NumberOf(header.Text.UDHDL) - kOverflowWidth;
}
int64_t ExtendedDataLength(const R& header) {
  return NumberOf(header.Text.XHDL) - kOverflowWidth;
}

int32_t MarkValid(R& header, const Field&) {
  header.Valid = 1;
  return SUCCESS;
}

int32_t SetComplexity(R& header, const Field&) {
  header.ClevelValue = 3;
  return SUCCESS;
}

int32_t PackBackground(R& header, const Field& field) {
  const auto byte = [&](uint32_t i) { return static_cast<uint32_t>(static_cast<uint8_t>(field.chars[i])); };
  header.BackgroundValue = byte(0) | byte(1) << 8 | byte(2) << 16;
  return SUCCESS;
}

// ---- What is set otherwise than its kind says ----

// Levels that no file can have are left out without a word.
int32_t SetComplexityLevel(R& header, const FieldRow<R>& row, uint32_t level) {
  constexpr uint32_t kHighest = 7;
  constexpr uint32_t kBeyondAll = 99;
  if ((level < 1 || level > kHighest) && level != kBeyondAll) return SUCCESS;
  header.ClevelValue = level;
  return FormatNumericField(row.Text(header, 0), row.SetterLimit(), static_cast<int32_t>(level));
}

// Three bytes that are no text.
int32_t SetBackground(R& header, const FieldRow<R>& row, const char* bytes) {
  HostMemCopy(row.Text(header, 0), bytes, row.SetterLimit());
  return PackBackground(header, {bytes, row.SetterLimit(), 0, Layout::kNitf21});
}

// ---- What is written otherwise than it was read ----

// The declassification exemption goes out as the first characters of the declassification date.
const char* DeclassificationDate(const R& header, FieldWriter&, uint32_t) {
  return header.Text.FSDCDT;
}

// The number itself, red first; the 2.0 layout has none.
int32_t WriteBackground(const R& header, FieldWriter& writer, uint32_t, uint32_t width) {
  const uint32_t colour = header.BackgroundValue;
  const uint8_t bytes[] = {static_cast<uint8_t>(colour), static_cast<uint8_t>(colour >> 8),
                           static_cast<uint8_t>(colour >> 16)};
  return writer.WriteBytes(bytes, width);
}

// The text's number: twelve digits that exceed 32 bits do not survive.
const char* FileLength(const R& header, FieldWriter& writer, uint32_t) {
  return writer.Print(NumberOf(header.Text.FL));
}
const char* WorkingHeaderLength(const R& header, FieldWriter& writer, uint32_t) {
  return writer.Print(static_cast<int32_t>(header.HlWork));
}

// Four kinds of segments are counted as the document has them; extensions are what the stored text says.
const char* CountOfImages(const R&, FieldWriter& writer, uint32_t) {
  return writer.Print(CountImageHeaders(writer.document()));
}
const char* CountOfGraphics(const R&, FieldWriter& writer, uint32_t) {
  return writer.Print(CountGraphicHeaders(writer.document()));
}
const char* CountOfLabels(const R&, FieldWriter& writer, uint32_t) {
  return writer.Print(CountLabelHeaders(writer.document()));
}
const char* CountOfTexts(const R&, FieldWriter& writer, uint32_t) {
  return writer.Print(CountTextHeaders(writer.document()));
}

// The table of images is as long as their count; the others are as long as the header's own number at least.
uint32_t ImageEntries(const R&, const NitfFile& document) {
  return static_cast<uint32_t>(CountImageHeaders(document));
}
uint32_t GraphicEntries(const R& header, const NitfFile& document) {
  return std::max(static_cast<uint32_t>(CountGraphicHeaders(document)), header.NumGraphics);
}
uint32_t LabelEntries(const R& header, const NitfFile& document) {
  return LayoutOf(document) == Layout::kNitf20
             ? std::max(static_cast<uint32_t>(CountLabelHeaders(document)), header.NumLabels)
             : 0;
}
uint32_t TextEntries(const R& header, const NitfFile& document) {
  return std::max(static_cast<uint32_t>(CountTextHeaders(document)), header.NumTexts);
}

// The length of a reserved extension's subheader goes out as that of its data, cut to the field.
const char* ReservedDataLength(const R& header, FieldWriter& writer, uint32_t index) {
  return writer.Print(static_cast<int32_t>(header.LreList.At(index)));
}

// Makes room in lists of one length each, keeping earlier values, which a streaming pass may not replace
// wholly.
template <class... Lists>
int32_t MakeRoom(uint32_t count, Lists&... lists) {
  return (lists.Resize(count, Here()) && ...) ? SUCCESS : ERR_NO_MEMORY;
}

constexpr FieldRow<R> kImageLengths[] = {
    FIELD_IN_FILE("LISH", 6).Length(&R::LishRead, &R::LishWork).Streamed("999999"),
    FIELD_IN_FILE("LI", 10).Length(&R::LiRead, &R::LiWork).Streamed("9999999999"),
};
constexpr FieldRow<R> kGraphicLengths[] = {
    FIELD_IN_FILE("LSSH", 4).Length(&R::LsshRead, &R::LsshWork).Streamed("9999"),
    FIELD_IN_FILE("LS", 6).SetsFirstListOnly().Length(&R::LsRead, &R::LsWork),
};
constexpr FieldRow<R> kLabelLengths[] = {
    FIELD_IN_FILE("LLSH", 4).Length(&R::LlshList),
    FIELD_IN_FILE("LL", 3).Length(&R::LlRead, &R::LlWork),
};
constexpr FieldRow<R> kTextLengths[] = {
    FIELD_IN_FILE("LTSH", 4).Length(&R::LtshList).Streamed("9999"),
    FIELD_IN_FILE("LT", 5).Length(&R::LtRead, &R::LtWork),
};
constexpr FieldRow<R> kDataExtensionLengths[] = {
    FIELD_IN_FILE("LDSH", 4).Length(&R::LdshList).Streamed("9999"),
    FIELD_IN_FILE("LD", 9).Length(&R::LdList).Streamed("999999999"),
};
constexpr FieldRow<R> kReservedExtensionLengths[] = {
    FIELD_IN_FILE("LRESH", 4).Length(&R::LreshList).WrittenAs(ReservedDataLength),
    FIELD_IN_FILE("LRE", 7).Length(&R::LreList),
};

constexpr FieldRow<R> ImageTable() {
  return FieldRow<R>::Repeat(
             kImageLengths, [](const R& h) { return h.NumImages; },
             [](R& h, uint32_t n) { return MakeRoom(n, h.LishRead, h.LishWork, h.LiRead, h.LiWork); })
      .WrittenTimes(ImageEntries);
}
constexpr FieldRow<R> GraphicTable() {
  return FieldRow<R>::Repeat(
             kGraphicLengths, [](const R& h) { return h.NumGraphics; },
             [](R& h, uint32_t n) { return MakeRoom(n, h.LsshRead, h.LsshWork, h.LsRead, h.LsWork); })
      .WrittenTimes(GraphicEntries);
}
constexpr FieldRow<R> LabelTable() {
  return FieldRow<R>::Repeat(
             kLabelLengths, [](const R& h) { return h.NumLabels; },
             [](R& h, uint32_t n) { return MakeRoom(n, h.LlshList, h.LlRead, h.LlWork); })
      .WrittenTimes(LabelEntries);
}
constexpr FieldRow<R> TextTable() {
  return FieldRow<R>::Repeat(
             kTextLengths, [](const R& h) { return h.NumTexts; },
             [](R& h, uint32_t n) { return MakeRoom(n, h.LtshList, h.LtRead, h.LtWork); })
      .WrittenTimes(TextEntries);
}
constexpr FieldRow<R> DataExtensionTable() {
  return FieldRow<R>::Repeat(
      kDataExtensionLengths, [](const R& h) { return h.NumDes; },
      [](R& h, uint32_t n) { return MakeRoom(n, h.LdshList, h.LdList); });
}
constexpr FieldRow<R> ReservedExtensionTable() {
  return FieldRow<R>::Repeat(
      kReservedExtensionLengths, [](const R& h) { return h.NumRes; },
      [](R& h, uint32_t n) { return MakeRoom(n, h.LreshList, h.LreList); });
}

// HL has six digits, so this never stands in it: an HL of all nines starts no streaming pass, and that is
// kept.
constexpr char kHlSentinel[] = "9999";

constexpr FieldRow<R> kRows[] = {
    TEXT(FHDR, 4).Must("NITF|NSIF", ERR_FILE_FORMAT).Then(MarkValid).Terminated().Starts("NITF"),
    TEXT(FVER, 5).Must("02.10", ERR_NOT_NITF).Starts("02.10"),
    TEXT(CLEVEL, 2)
        .SetBy(SetComplexityLevel)
        .Must("03", ERR_UNSUPPORTED_CLEVEL, "Unsupported CLEVEL")
        .Then(SetComplexity)
        .Starts("03"),
    TEXT(STYPE, 4).Starts("BF01"),
    TEXT(OSTAID, 10),
    TEXT(FDT, 14).Starts("20050101010101"),
    TEXT(FTITLE, 80).Blank(),
    TEXT(FSCLAS, 1).Must(kSecurityClasses, ERR_FILE_FORMAT).Starts("U"),
    SECURITY_ROWS(FS, DowngradesByEvent, .WrittenAs(DeclassificationDate)),
    TEXT(FSCOP, 5),
    TEXT(FSCPYS, 5),
    TEXT(ENCRYP, 1),
    TEXT(FBKGC, 3, kAbsent).SetBy(SetBackground).Then(PackBackground).Terminated().WrittenBy(WriteBackground),
    TEXT(ONAME, 24, 27).Blank(),
    TEXT(OPHONE, 18).Blank(),
    TEXT(FL, 12).Number(&R::FlValue, &R::FlMirror).Streamed("999999999999").WrittenAs(FileLength),
    TEXT(HL, 6)
        .Number(&R::HlRead, &R::HlWork)
        .Streamed(kHlSentinel)
        .Terminated()
        .WrittenAs(WorkingHeaderLength),
    TEXT(NUMI, 3).Number(&R::NumImages).Terminated().WrittenAs(CountOfImages),
    ImageTable(),
    TEXT(NUMS, 3).Number(&R::NumGraphics).Terminated().WrittenAs(CountOfGraphics),
    GraphicTable(),
    TEXT(NUMX, 3, kAbsent).Must("000", ERR_FILE_FORMAT).Terminated(),
    TEXT(NUML, kAbsent, 3).Number(&R::NumLabels).Terminated().WrittenAs(CountOfLabels),
    LabelTable(),
    TEXT(NUMT, 3).Number(&R::NumTexts).Terminated().WrittenAs(CountOfTexts),
    TextTable(),
    TEXT(NUMDES, 3).Number(&R::NumDes).Terminated(),
    DataExtensionTable(),
    TEXT(NUMRES, 3).Number(&R::NumRes).Terminated(),
    ReservedExtensionTable(),
    TEXT(UDHDL, 5).Terminated(),
    TEXT(UDHOFL, 3).When(HasUserData).Terminated(),
    FieldRow<R>::Block("UDHD", &R::UDHD, UserDataLength).When(HasUserData),
    TEXT(XHDL, 5).Terminated(),
    TEXT(XHDLOFL, 3).When(HasExtendedData).Terminated(),
    FieldRow<R>::Block("XHD", &R::XHD, ExtendedDataLength).When(HasExtendedData),
};

uint32_t CountBlockTres(const HostArray<uint8_t>& block) {
  return static_cast<uint32_t>(CountTres(block.data(), static_cast<uint32_t>(block.size() - 1)));
}

bool MakeRoom(uint32_t count, std::initializer_list<LengthList*> lists) {
  constexpr size_t kMostLists = 4;
  if (count > kMostLengths) return false;
  std::array<LengthList, kMostLists> longer;
  size_t at = 0;
  for (const LengthList* list : lists) {
    LengthList& copy = longer[at++];
    if (list->size() > count) continue;
    if (!copy.Allocate(count + 1ULL, Here())) return false;
    if (list->exists()) HostMemCopy(copy.data(), list->data(), list->size() * sizeof(uint32_t));
  }
  at = 0;
  for (LengthList* list : lists) {
    if (longer[at].exists()) *list = std::move(longer[at]);
    ++at;
  }
  return true;
}

bool AddEntry(uint32_t count, uint32_t value, LengthList& read, LengthList& work) {
  if (!MakeRoom(count, {&read, &work})) return false;
  read[count] = work[count] = value;
  return true;
}

}  // namespace

std::span<const FieldRow<NtfHdr>> FileHeaderRows() {
  return kRows;
}
std::span<const FieldRow<NtfHdr>> ImageLengthColumns() {
  return kImageLengths;
}

NtfHdr::NtfHdr() {
  SetDefaults<NtfHdr>(*this, kRows);
}

void NtfHdr::Release() {
  for (LengthList* list :
       {&LishRead, &LishWork, &LiRead, &LiWork, &LsshRead, &LsshWork, &LsRead, &LsWork, &LlshList, &LlRead,
        &LlWork, &LtshList, &LtRead, &LtWork, &LdshList, &LdList, &LreshList, &LreList}) {
    list->Release();
  }
  UDHD.Release();
  XHD.Release();
}

int32_t ReadFileHeader(NtfHdr& header, NitfFile& document, StrmFHdr& stream, uint32_t streaming) {
  FieldReader reader(document, SegmentKind::kFileHeader, 0, StreamLimit(document, stream, streaming));
  const int32_t status = ReadRows<NtfHdr>(header, kRows, reader);
  if (header.UDHD.exists()) {
    header.UserTreCount = CountBlockTres(header.UDHD);
    header.UserTreCursor = header.UDHD.data();
  }
  if (header.XHD.exists()) {
    header.ExtendedTreCount = CountBlockTres(header.XHD);
    header.ExtendedTreCursor = header.XHD.data();
  }
  if (status != SUCCESS) return status == kBudgetSpent ? SUCCESS : status;
  if (streaming != 0) {
    NoteStreamConsumed(document, reader.consumed());
    return SUCCESS;
  }
  if (!reader.sentinel_seen()) return SUCCESS;
  const int32_t located = SeekReplacementData(document, stream);
  return located == SUCCESS ? ReadFileHeader(header, document, stream, 1) : located;
}

bool MakeRoomForImage(NtfHdr& h) {
  return MakeRoom(h.NumImages, {&h.LishRead, &h.LishWork, &h.LiRead, &h.LiWork});
}
bool MakeRoomForGraphic(NtfHdr& h) {
  return MakeRoom(h.NumGraphics, {&h.LsshRead, &h.LsshWork, &h.LsRead, &h.LsWork});
}
bool MakeRoomForText(NtfHdr& h) {
  return MakeRoom(h.NumTexts, {&h.LtshList, &h.LtRead, &h.LtWork});
}

bool AddImageSubheaderLength(NtfHdr& h, uint32_t length) {
  return AddEntry(h.NumImages, length, h.LishRead, h.LishWork);
}
bool AddImageDataLength(NtfHdr& h, uint32_t length) {
  return AddEntry(h.NumImages, length, h.LiRead, h.LiWork);
}
bool AddGraphicSubheaderLength(NtfHdr& h, uint32_t) {
  constexpr uint32_t kGraphicSubheaderLength = 258;  // up to and including SXSHDL, in both layouts
  return AddEntry(h.NumGraphics, kGraphicSubheaderLength, h.LsshRead, h.LsshWork);
}
bool AddGraphicDataLength(NtfHdr& h, uint32_t length) {
  return AddEntry(h.NumGraphics, length, h.LsRead, h.LsWork);
}
bool AddTextDataLength(NtfHdr& h, uint32_t length) {
  return AddEntry(h.NumTexts, length, h.LtRead, h.LtWork);
}

}  // namespace tavi

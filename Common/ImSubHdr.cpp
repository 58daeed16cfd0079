#include "ImSubHdr.h"

#include <algorithm>
#include <charconv>
#include <cstring>

#include "HeaderReader.h"
#include "ImageEditing.h"
#include "NitfFile.h"
#include "SaveFields.h"
#include "StrmFHdr.h"

namespace tavi {

TAVI_UNIT(L"Common/ImSubHdr")

namespace {

using R = ImSubHdr;
using Field = FieldRow<R>::Field;

// ---- Codes of texts. The order matters where one text begins another. ----

constexpr CodeText kPixelTypes[] = {{kPixelBilevel, "B", 1}, {kPixelInteger, "I", 1}};
constexpr CodeText kRepresentations[] = {{kMono, "MONO", 4},   {kRgbLut, "RGB/LUT", 7}, {kRgb, "RGB", 3},
                                         {kMulti, "MULTI", 5}, {4, "NODISPLY", 8},      {5, "NVECTOR", 7},
                                         {6, "POLAR", 5},      {7, "VPH", 3},           {8, "YCbCr601", 8}};
constexpr CodeText kCompressions[] = {{kNC, "NC", 2}, {kNM, "NM", 2}, {kC0, "C0", 2}, {kC1, "C1", 2},
                                      {kC2, "C2", 2}, {kC3, "C3", 2}, {kC4, "C4", 2}, {kC5, "C5", 2},
                                      {kC6, "C6", 2}, {kC8, "C8", 2}, {kI1, "I1", 2}, {kM0, "M0", 2},
                                      {kM1, "M1", 2}, {kM2, "M2", 2}, {kM3, "M3", 2}, {kM4, "M4", 2},
                                      {kM5, "M5", 2}, {kM6, "M6", 2}, {kM8, "M8", 2}};
constexpr CodeText kRates[] = {{kComrat1D, "1D", 2}, {kComrat2DS, "2DS", 3}, {kComrat2DH, "2DH", 3}};
constexpr CodeText kModes[] = {
    {kByBlock, "B", 1}, {kByPixel, "P", 1}, {kByRow, "R", 1}, {kSequential, "S", 1}};
constexpr CodeText kBandRoles[] = {{kRoleLookup, "LU", 2}, {kRoleRed, "R", 1},  {kRoleGreen, "G", 1},
                                   {kRoleBlue, "B", 1},    {kRoleMono, "M", 1}, {kRoleLuma, "Y", 1},
                                   {kRoleCb, "Cb", 2},     {kRoleCr, "Cr", 2}};

// ---- Presence ----

bool DowngradesByEvent(const R& r, Layout) {
  return std::strcmp(r.Text.ISDWNG, kDowngradeByEvent) == 0;
}
bool HasCorners(const R& r, Layout layout) {
  return r.Text.ICORDS[0] != (layout == Layout::kNitf20 ? 'N' : ' ');
}
bool HasRate(const R& r, Layout) {
  return r.Compression != kNC && r.Compression != kNM;
}
bool HasExtraBands(const R& r, Layout) {
  return r.BandField == 0;
}
bool HasUserData(const R& r, Layout) {
  return NumberOf(r.Text.UDIDL) != 0;
}
bool HasExtendedData(const R& r, Layout) {
  return NumberOf(r.Text.IXSHDL) != 0;
}
// A length of exactly the overflow field brings no block here, although it does in every other area.
bool HasExtendedBlock(const R& r, Layout) {
  const int64_t length = NumberOf(r.Text.IXSHDL);
  return length != 0 && length != kOverflowWidth;
}
bool HasMaskTable(const R& r, Layout) {
  switch (r.Compression) {
    case kNM:
    case kM0:
    case kM1:
    case kM3:
    case kM4:
    case kM5:
      return true;
    default:
      return false;
  }
}

int64_t UserDataLength(const R& r) {
  return NumberOf(r.Text.UDIDL) - kOverflowWidth;
}
int64_t ExtendedDataLength(const R& r) {
  return NumberOf(r.Text.IXSHDL) - kOverflowWidth;
}
int64_t PadCodeLength(const R& r) {
  return (r.PadCodeBits + 7) / 8;
}

// ---- What is special ----

int32_t MarkSignature(R& r, const Field&) {
  r.SignatureSeen = 1;
  return SUCCESS;
}

int32_t SetJustification(R& r, const Field& field) {
  r.RightJustified = field.chars[0] == 'L' ? 0 : 1;
  return SUCCESS;
}

int32_t SetBands(R& r, const Field& field) {
  r.BandCount = r.BandField;
  const bool refused = field.layout == Layout::kNitf20 && (r.BandField == 0 || r.BandField > 9);
  return refused ? ERR_FILE_FORMAT : SUCCESS;
}

int32_t RefuseDeepBands(R& r, const Field&) {
  constexpr uint32_t kTooDeep = 16;
  const bool refused = r.SampleBits == kTooDeep && r.BandCount >= 2;
  return refused ? Refuse(ERR_UNSUPPORTED_BPP, "Unsupported BPP") : SUCCESS;
}

int32_t SetMagnification(R& r, const Field&) {
  const char* text = r.Text.IMAG;
  r.Magnification =
      text[0] == '/' ? 1.0 / ParseInteger(text + 1, 3) : ParseReal(text, sizeof r.Text.IMAG - 1);
  return SUCCESS;
}

int32_t SetBandRole(R& r, const Field& field) {
  const CodeText* role = FindCode(kBandRoles, field.chars, field.width);
  r.BandRoles[field.index] = role != nullptr ? role->code : kRoleNone;
  return SUCCESS;
}

int32_t PrepareBands(R& r, uint32_t count) {
  const bool made = r.BandRoles.Resize(count, Here()) && r.BandSubcategories.Resize(count, Here()) &&
                    r.BandFilterConditions.Resize(count, Here()) && r.BandFilterCodes.Resize(count, Here()) &&
                    r.BandLutCounts.Resize(count, Here());
  return made ? SUCCESS : ERR_NO_MEMORY;
}

constexpr uint32_t kLookupLengthWidth = 5;  // of NELUT

// NELUT and the tables. One table serves all three colours; any other number of tables is read as three. Only
// the last band's table survives: an image has one palette.
int32_t ReadLookupTables(R& r, FieldReader& reader, uint32_t band) {
  const uint32_t tables = r.BandLutCounts[band];
  if (tables == 0) return SUCCESS;
  const auto shown = static_cast<int32_t>(band);
  if (!r.BandLutEntries.exists() || r.BandLutEntries.size() < r.BandCount) {
    if (!r.BandLutEntries.Resize(r.BandCount, Here())) return ERR_NO_MEMORY;
  }
  char digits[kLookupLengthWidth];
  int32_t status = reader.Read("NELUT", shown, -1, digits, sizeof digits);
  if (status != SUCCESS) return status;
  const auto entries = static_cast<uint32_t>(ParseInteger(digits, sizeof digits));
  r.BandLutEntries[band] = entries;
  if (entries == 0) return SUCCESS;
  HostArray<uint8_t> table;
  if (!reader.CanHoldGroup(entries, 1)) return ERR_FILE_READ;
  // Hosts take a palette without a count and read 256 entries of it. What a streaming pass ends before keeps
  // its value.
  constexpr uint32_t kLeastEntries = 256;
  HostArray<HostPaletteEntry> lut;
  if (!lut.Allocate(std::max(entries, kLeastEntries), Here()) || !table.Allocate(entries, Here()))
    return ERR_NO_MEMORY;
  if (r.Lut.exists() && reader.is_streaming()) {
    HostMemCopy(lut.data(), r.Lut.data(), std::min(lut.size(), r.Lut.size()) * sizeof(HostPaletteEntry));
  }
  uint8_t HostPaletteEntry::*const colours[] = {&HostPaletteEntry::red, &HostPaletteEntry::green,
                                                &HostPaletteEntry::blue};
  for (int32_t c = 0; c < 3 && status == SUCCESS; ++c) {
    if (c == 0 || tables != 1) status = reader.Read("LUTD", shown, c, table.data(), entries);
    if (status != SUCCESS) break;
    for (uint32_t i = 0; i < entries; ++i) lut[i].*colours[c] = table[i];
  }
  r.Lut = std::move(lut);
  return status;
}

// The data mask table's binary head, most significant byte first.
int32_t ReadMaskHead(R& r, FieldReader& reader, uint32_t) {
  struct {
    const char* name;
    uint32_t width;
    uint32_t R::*number;
  } constexpr kHead[] = {{"IMDATOFF", 4, &R::DataOffset},
                         {"BMRLNTH", 2, &R::BlockMaskLength},
                         {"TMRLNTH", 2, &R::PadMaskLength},
                         {"TPXCDLNTH", 2, &R::PadCodeBits}};
  for (const auto& field : kHead) {
    uint8_t bytes[4];
    const int32_t status = reader.Read(field.name, bytes, field.width);
    if (status != SUCCESS) return status;
    r.*field.number = field.width == 4 ? ReadBig32(bytes) : ReadBig16(bytes);
  }
  return SUCCESS;
}

// The length fields decide presence only: entries are always of four bytes, one for each block and band
// whatever IMODE is. The zero entry behind the last is memory only.
int32_t ReadMask(const R& r, FieldReader& reader, const char* name, MaskTable& mask) {
  constexpr uint64_t kMost = UINT32_MAX;
  const uint64_t blocks = static_cast<uint64_t>(r.BlocksPerRow) * r.BlocksPerColumn;
  const bool countable = blocks <= kMost && blocks * r.BandCount <= kMost;
  const uint64_t size = countable ? blocks * r.BandCount * 4 : 0;
  if (!countable || !reader.CanHold(size)) return ERR_FILE_READ;
  HostArray<uint8_t> bytes;
  if (!bytes.Allocate(size + 4, Here())) return ERR_NO_MEMORY;
  const int32_t status = reader.Read(name, bytes.data(), size);
  if (status == SUCCESS) mask.bytes = std::move(bytes);
  return status;
}

int32_t ReadBlockMask(R& r, FieldReader& reader, uint32_t) {
  return ReadMask(r, reader, "BMRnBNDm", r.BlockMask);
}
int32_t ReadPadMask(R& r, FieldReader& reader, uint32_t) {
  return ReadMask(r, reader, "TMRnBNDm", r.PadMask);
}
bool HasBlockMask(const R& r, Layout layout) {
  return HasMaskTable(r, layout) && r.BlockMaskLength != 0;
}
bool HasPadMask(const R& r, Layout layout) {
  return HasMaskTable(r, layout) && r.PadMaskLength != 0;
}
bool HasPadCode(const R& r, Layout layout) {
  return HasMaskTable(r, layout) && r.PadCodeBits != 0;
}

// ---- What is written otherwise than it was read ----

constexpr CodeText kWrittenPixelTypes[] = {{kPixelInteger, "INT", 3}, {kPixelBilevel, "B", 1}};
constexpr CodeText kWrittenRates[] = {
    {kComrat1D, "1D", 2}, {kComrat2DS, "2DS", 3}, {kComrat2DH, "2DH", 3}, {kComratOther, "00.0", 4}};

int32_t WritePixelType(const R& r, FieldWriter& writer, uint32_t, uint32_t width) {
  const char* text = TextOf(kWrittenPixelTypes, r.PixelType);
  if (text == nullptr) return Refuse(ERR_UNSUPPORTED_PVTYPE, "Unsupported PVTYPE");
  return writer.Write(writer.Keep(text), width, Fill::kBlank);
}
// A text that the reader did not know has left the code of a new record: it goes out as RGB.
const char* RepresentationText(const R& r, FieldWriter& writer, uint32_t) {
  return writer.Keep(TextOf(kRepresentations, r.Representation));
}
const char* JustificationText(const R& r, FieldWriter&, uint32_t) {
  return r.RightJustified != 0 ? "R" : "L";
}
// C0 has no text of its own.
const char* CompressionText(const R& r, FieldWriter& writer, uint32_t) {
  return writer.Keep(TextOf(kCompressions, r.Compression == kC0 ? kNM : r.Compression));
}
// A rate of another kind is not kept: it goes out as 00.0.
const char* RateText(const R& r, FieldWriter& writer, uint32_t) {
  return writer.Keep(TextOf(kWrittenRates, r.ComratMode));
}
const char* ModeText(const R& r, FieldWriter& writer, uint32_t) {
  return writer.Keep(TextOf(kModes, r.Mode));
}
// The first three characters of the number: 1.0, 0.2, 10.
const char* MagnificationText(const R& r, FieldWriter& writer, uint32_t) {
  char digits[400];
  constexpr int kDecimals = 6;
  const auto printed =
      std::to_chars(digits, digits + sizeof digits, r.Magnification, std::chars_format::fixed, kDecimals);
  digits[std::min<ptrdiff_t>(printed.ptr - digits, 3)] = '\0';
  return writer.Keep(digits);
}

// NICOM's text decides, whatever comments there are; one that is missing is blank.
uint32_t WrittenComments(const R& r, const NitfFile&) {
  return static_cast<uint32_t>(std::max(NumberOf(r.Text.NICOM), 0));
}
const char* CommentText(const R& r, FieldWriter&, uint32_t i) {
  return i < r.Comments.size() ? r.Comments.At(i) : "";
}

// As many bands as NBANDS says, or XBANDS where that is 0 and the layout has it. Bands that have no records
// are blank, without filter and tables.
uint32_t WrittenBands(const R& r, const NitfFile& document) {
  constexpr uint32_t kMostBands = 99999;  // in five digits
  if (r.BandField != 0) return r.BandField <= kMostBands ? r.BandField : 0;
  if (LayoutOf(document) == Layout::kNitf20) return 0;
  return static_cast<uint32_t>(std::max(NumberOf(r.Text.XBANDS), 0));
}
const char* BandRoleText(const R& r, FieldWriter& writer, uint32_t band) {
  const char* text = TextOf(kBandRoles, r.BandRoles.At(band));
  return writer.Keep(text != nullptr ? text : "");
}
const char* SubcategoryText(const R& r, FieldWriter&, uint32_t band) {
  return band < r.BandSubcategories.size() ? r.BandSubcategories.At(band) : "";
}
const char* FilterConditionText(const R& r, FieldWriter&, uint32_t band) {
  return band < r.BandFilterConditions.size() ? r.BandFilterConditions.At(band) : "N";
}
const char* FilterCodeText(const R& r, FieldWriter&, uint32_t band) {
  return band < r.BandFilterCodes.size() ? r.BandFilterCodes.At(band) : "";
}

// NELUT and the tables as they are read: one, or three for any other number of them. All bands write the
// image's one palette; entries that it lacks are 0.
int32_t WriteLookupTables(const R& r, FieldWriter& writer, uint32_t band, uint32_t) {
  const uint32_t tables = r.BandLutCounts.At(band);
  if (tables == 0) return SUCCESS;
  const uint32_t entries = r.BandLutEntries.At(band);
  int32_t status = writer.Write(writer.Print(static_cast<int32_t>(entries)), kLookupLengthWidth, Fill::kZero);
  uint8_t HostPaletteEntry::*const colours[] = {&HostPaletteEntry::red, &HostPaletteEntry::green,
                                                &HostPaletteEntry::blue};
  for (uint32_t c = 0; c < (tables == 1 ? 1U : 3U); ++c) {
    for (uint32_t i = 0; i < entries && status == SUCCESS; ++i) {
      const uint8_t value = i < r.Lut.size() ? r.Lut[i].*colours[c] : 0;
      status = writer.WriteBytes(&value, 1);
    }
  }
  return status;
}

int32_t WriteMaskHead(const R& r, FieldWriter& writer, uint32_t, uint32_t) {
  writer.BeginMaskTable();
  uint8_t head[10];
  WriteBig32(head, r.DataOffset);
  WriteBig16(head + 4, r.BlockMaskLength);
  WriteBig16(head + 6, r.PadMaskLength);
  WriteBig16(head + 8, r.PadCodeBits);
  return writer.WriteBytes(head, sizeof head);
}

// The entries go out with their bytes reversed: a raw copy of the data replaces them, data of vector quantised
// images do not. No more than there are.
int32_t WriteMask(const R& r, FieldWriter& writer, const MaskTable& mask) {
  writer.BeginMaskTable();
  const uint64_t stored = mask.exists() ? mask.bytes.size() / 4 - 1 : 0;
  const uint64_t blocks = static_cast<uint64_t>(r.BlocksPerRow) * r.BlocksPerColumn;
  const uint64_t bands = WrittenBands(r, writer.document());
  const uint64_t entries = bands == 0 ? 0 : blocks <= stored ? std::min(blocks * bands, stored) : stored;
  int32_t status = SUCCESS;
  for (uint64_t i = 0; i < entries && status == SUCCESS; ++i) {
    const uint8_t* entry = mask.bytes.data() + i * 4;
    const uint8_t reversed[] = {entry[3], entry[2], entry[1], entry[0]};
    status = writer.WriteBytes(reversed, sizeof reversed);
  }
  return status;
}
int32_t WriteBlockMask(const R& r, FieldWriter& writer, uint32_t, uint32_t) {
  return WriteMask(r, writer, r.BlockMask);
}
int32_t WritePadMask(const R& r, FieldWriter& writer, uint32_t, uint32_t) {
  return WriteMask(r, writer, r.PadMask);
}
// Their lengths alone decide, whatever the compression has become.
bool WritesBlockMask(const R& r, Layout) {
  return r.BlockMaskLength != 0;
}
bool WritesPadMask(const R& r, Layout) {
  return r.PadMaskLength != 0;
}

// ---- The layout ----

constexpr Fill kZeros = Fill::kZero;
constexpr char kSizeSentinel[] = "99999999";
constexpr char kBlockSentinel[] = "9999";

constexpr FieldRow<R> kCommentColumns[] = {
    FIELD_IN_FILE("ICOM", 80).In([](R& r, uint32_t i) { return r.Comments.At(i); }).WrittenAs(CommentText),
};

constexpr FieldRow<R> kBandColumns[] = {
    FIELD_IN_FILE("IREPBAND", 2).Then(SetBandRole).WrittenAs(BandRoleText),
    FIELD_IN_FILE("ISUBCAT", 6)
        .In([](R& r, uint32_t i) { return r.BandSubcategories.At(i); })
        .WrittenAs(SubcategoryText),
    FIELD_IN_FILE("IFC", 1)
        .In([](R& r, uint32_t i) { return r.BandFilterConditions.At(i); })
        .WrittenAs(FilterConditionText)
        .Filled(kZeros),
    FIELD_IN_FILE("IMFLT", 3)
        .In([](R& r, uint32_t i) { return r.BandFilterCodes.At(i); })
        .WrittenAs(FilterCodeText),
    FIELD_IN_FILE("NLUTS", 1).Length(&R::BandLutCounts).Filled(kZeros),
    FieldRow<R>::Own(ReadLookupTables).WrittenBy(WriteLookupTables),
};

constexpr FieldRow<R> CommentTable() {
  return FieldRow<R>::Repeat(
             kCommentColumns, [](const R& r) { return r.CommentCount; },
             [](R& r, uint32_t n) -> int32_t {
               return r.Comments.Resize(n, Here()) ? SUCCESS : ERR_NO_MEMORY;
             })
      .WrittenTimes(WrittenComments);
}
constexpr FieldRow<R> BandTable() {
  return FieldRow<R>::Repeat(
             kBandColumns, [](const R& r) { return r.BandCount; }, PrepareBands)
      .WrittenTimes(WrittenBands);
}

constexpr FieldRow<R> kRows[] = {
    TEXT(IM, 2).Must("IM", ERR_FILE_FORMAT).Then(MarkSignature).Starts("IM"),
    TEXT(IID1, 10).Starts("Missing ID"),
    TEXT(IDATIM, 14).Blank().Filled(kZeros),
    TEXT(TGTID, 17).Blank(),
    TEXT(IID2, 80).Blank(),
    TEXT(ISCLAS, 1).Must(kSecurityClasses, ERR_FILE_FORMAT).Starts("U"),
    SECURITY_ROWS(IS, DowngradesByEvent),
    TEXT(ENCRYP, 1).Filled(kZeros),
    TEXT(ISORCE, 42).Blank(),
    TEXT(NROWS, 8).Number(&R::Rows).Streamed(kSizeSentinel).WrittenFromNumber(),
    TEXT(NCOLS, 8).Number(&R::Cols).Streamed(kSizeSentinel).WrittenFromNumber(),
    TEXT(PVTYPE, 3)
        .CodeOrRefuse(&R::PixelType, kPixelTypes, ERR_UNSUPPORTED_PVTYPE, "Unsupported PVTYPE")
        .Blank()
        .WrittenBy(WritePixelType),
    TEXT(IREP, 8).Code(&R::Representation, kRepresentations).Blank().WrittenAs(RepresentationText),
    TEXT(ICAT, 8).Starts("VIS"),
    TEXT(ABPP, 2).Number(&R::ActualBits).WrittenFromNumber(),
    TEXT(PJUST, 1).SetBy(SetPjust).Then(SetJustification).Blank().WrittenAs(JustificationText),
    TEXT(ICORDS, 1).SetBy(SetIcords).Blank(),
    TEXT(IGEOLO, 60).When(HasCorners).Blank().Filled(kZeros),
    TEXT(NICOM, 1).SetsDigitsOnly().Number(&R::CommentCount).Filled(kZeros),
    CommentTable(),
    TEXT(IC, 2).SetBy(SetIc).Code(&R::Compression, kCompressions).Blank().WrittenAs(CompressionText),
    TEXT(COMRAT, 4).SetBy(SetComrat).When(HasRate).Code(&R::ComratMode, kRates).Blank().WrittenAs(RateText),
    TEXT(NBANDS, 1).SetBy(SetBandCount).Number(&R::BandField).Then(SetBands).WrittenFromNumber(),
    TEXT(XBANDS, 5, kAbsent).SetsDigitsOnly().When(HasExtraBands).Number(&R::BandCount).Filled(kZeros),
    BandTable(),
    TEXT(ISYNC, 1).Filled(kZeros),
    TEXT(IMODE, 1)
        .CodeOrRefuse(&R::Mode, kModes, ERR_FILE_FORMAT)
        .Blank()
        .Starts("P")
        .WrittenAs(ModeText)
        .Filled(kZeros),
    TEXT(NBPR, 4).Number(&R::BlocksPerRow).Streamed(kBlockSentinel).WrittenFromNumber(),
    TEXT(NBPC, 4).Number(&R::BlocksPerColumn).Streamed(kBlockSentinel).WrittenFromNumber(),
    TEXT(NPPBH, 4).Number(&R::BlockWidth).Streamed(kBlockSentinel).WrittenFromNumber(),
    TEXT(NPPBV, 4).Number(&R::BlockHeight).Streamed(kBlockSentinel).WrittenFromNumber(),
    TEXT(NBPP, 2).Number(&R::SampleBits).Then(RefuseDeepBands).WrittenFromNumber(),
    TEXT(IDLVL, 3).Number(&R::DisplayLevel).WrittenFromNumber(),
    TEXT(IALVL, 3).Number(&R::AttachmentLevel).WrittenFromNumber(),
    TEXT(ILOC, 10).SetBy(SetIloc).Pair(&R::LocationRow, &R::LocationColumn).Filled(kZeros),
    TEXT(IMAG, 4).SetBy(SetImag).Then(SetMagnification).Blank().WrittenAs(MagnificationText),
    TEXT(UDIDL, 5).Filled(kZeros),
    TEXT(UDOFL, 3).When(HasUserData).Filled(kZeros),
    FieldRow<R>::Block("UDID", &R::UserTre, UserDataLength).When(HasUserData),
    TEXT(IXSHDL, 5).Filled(kZeros),
    TEXT(IXSOFL, 3).When(HasExtendedData).Filled(kZeros),
    FieldRow<R>::Block("IXSHD", &R::ExtendedTre, ExtendedDataLength).When(HasExtendedBlock),
    // The mask table stands at the first bytes of the image data.
    FieldRow<R>::Own(ReadMaskHead).When(HasMaskTable).WrittenBy(WriteMaskHead),
    FieldRow<R>::Block("TPXCD", &R::PadCode, PadCodeLength).When(HasPadCode),
    FieldRow<R>::Own(ReadBlockMask).When(HasBlockMask).WrittenBy(WriteBlockMask).WrittenWhen(WritesBlockMask),
    FieldRow<R>::Own(ReadPadMask).When(HasPadMask).WrittenBy(WritePadMask).WrittenWhen(WritesPadMask),
};

void CountBlock(const HostArray<uint8_t>& block, uint32_t& count, const uint8_t*& view) {
  if (!block.exists()) return;
  count = static_cast<uint32_t>(CountTres(block.data(), static_cast<uint32_t>(block.size() - 1)));
  view = block.data();
}

}  // namespace

std::span<const FieldRow<ImSubHdr>> ImageRows() {
  return kRows;
}

std::span<const CodeText> BandRoleTexts() {
  return kBandRoles;
}

ImSubHdr::ImSubHdr(NitfFile* document) : Owner(document) {
  SetDefaults<ImSubHdr>(*this, kRows);
}

int32_t ReadImageSubHeader(ImSubHdr& record, NitfFile& document, StrmFHdr& stream, uint32_t streaming) {
  const int64_t start = HostFileSeek(document.File, 0, kFromHere);
  FieldReader reader(document, SegmentKind::kImage, record.SegmentIndex,
                     StreamLimit(document, stream, streaming));
  const int32_t status = ReadRows<ImSubHdr>(record, kRows, reader);
  CountBlock(record.UserTre, record.UserTreCount, record.UserTreView);
  CountBlock(record.ExtendedTre, record.ExtendedTreCount, record.ExtendedTreView);
  if (status != SUCCESS) return status == kBudgetSpent ? SUCCESS : status;
  if (streaming != 0) {
    NoteStreamConsumed(document, reader.consumed());
  } else if (reader.sentinel_seen()) {
    const int32_t located = SeekReplacementData(document, stream);
    if (located != SUCCESS) return located;
    ReadImageSubHeader(record, document, stream, 1);  // what it could not read keeps its first value
  }
  HostFileSeek(document.File, start, kFromStart);
  return SUCCESS;
}

uint32_t EffectiveBandCount(const ImSubHdr& record) {
  return record.BandField != 0 ? record.BandField : static_cast<uint32_t>(NumberOf(record.Text.XBANDS));
}

uint32_t KnownBandCount(const ImSubHdr& record) {
  return static_cast<uint32_t>(std::min<uint64_t>(EffectiveBandCount(record), record.BandRoles.size()));
}

uint32_t BandRole(const ImSubHdr& record, uint32_t band) {
  return band < EffectiveBandCount(record) ? record.BandRoles.At(band) : kRoleNone;
}

int32_t SetPadPixelCode(ImSubHdr& record, const char* text) {
  const size_t length = std::strlen(text);
  if (!record.PadCode.Allocate(length + 1, Here())) return ERR_NO_MEMORY;
  HostMemCopy(record.PadCode.data(), text, length);
  return SUCCESS;
}

}  // namespace tavi

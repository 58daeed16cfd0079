#include "ImSubHdr.h"

#include <algorithm>
#include <cstring>

#include "HeaderReader.h"
#include "NitfFile.h"
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

// NELUT and the tables. One table serves all three colours; any other number of tables is read as three. Only
// the last band's table survives: an image has one palette.
int32_t ReadLookupTables(R& r, FieldReader& reader, uint32_t band) {
  const uint32_t tables = r.BandLutCounts[band];
  if (tables == 0) return SUCCESS;
  const auto shown = static_cast<int32_t>(band);
  if (!r.BandLutEntries.exists() || r.BandLutEntries.size() < r.BandCount) {
    if (!r.BandLutEntries.Resize(r.BandCount, Here())) return ERR_NO_MEMORY;
  }
  char digits[5];
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

// ---- The layout ----

constexpr char kSizeSentinel[] = "99999999";
constexpr char kBlockSentinel[] = "9999";

constexpr FieldRow<R> kCommentColumns[] = {
    FIELD_IN_FILE("ICOM", 80).In([](R& r, uint32_t i) { return r.Comments.At(i); }),
};

constexpr FieldRow<R> kBandColumns[] = {
    FIELD_IN_FILE("IREPBAND", 2).Then(SetBandRole),
    FIELD_IN_FILE("ISUBCAT", 6).In([](R& r, uint32_t i) { return r.BandSubcategories.At(i); }),
    FIELD_IN_FILE("IFC", 1).In([](R& r, uint32_t i) { return r.BandFilterConditions.At(i); }),
    FIELD_IN_FILE("IMFLT", 3).In([](R& r, uint32_t i) { return r.BandFilterCodes.At(i); }),
    FIELD_IN_FILE("NLUTS", 1).Length(&R::BandLutCounts),
    FieldRow<R>::Own(ReadLookupTables),
};

constexpr FieldRow<R> CommentTable() {
  return FieldRow<R>::Repeat(
      kCommentColumns, [](const R& r) { return r.CommentCount; },
      [](R& r, uint32_t n) -> int32_t { return r.Comments.Resize(n, Here()) ? SUCCESS : ERR_NO_MEMORY; });
}
constexpr FieldRow<R> BandTable() {
  return FieldRow<R>::Repeat(
      kBandColumns, [](const R& r) { return r.BandCount; }, PrepareBands);
}

constexpr FieldRow<R> kRows[] = {
    TEXT(IM, 2).Must("IM", ERR_FILE_FORMAT).Then(MarkSignature).Starts("IM").Settable(),
    TEXT(IID1, 10).Starts("Missing ID").Settable(),
    TEXT(IDATIM, 14).Blank(),
    TEXT(TGTID, 17).Blank().Settable(),
    TEXT(IID2, 80).Blank().Settable(),
    TEXT(ISCLAS, 1).Must(kSecurityClasses, ERR_FILE_FORMAT).Starts("U").Settable(),
    SECURITY_ROWS(IS, DowngradesByEvent),
    TEXT(ENCRYP, 1),
    TEXT(ISORCE, 42).Blank().Settable(),
    TEXT(NROWS, 8).Number(&R::Rows).Streamed(kSizeSentinel),
    TEXT(NCOLS, 8).Number(&R::Cols).Streamed(kSizeSentinel),
    TEXT(PVTYPE, 3)
        .CodeOrRefuse(&R::PixelType, kPixelTypes, ERR_UNSUPPORTED_PVTYPE, "Unsupported PVTYPE")
        .Blank(),
    TEXT(IREP, 8).Code(&R::Representation, kRepresentations).Blank(),
    TEXT(ICAT, 8).Starts("VIS").Settable(),
    TEXT(ABPP, 2).Number(&R::ActualBits),
    TEXT(PJUST, 1).Then(SetJustification).Blank(),
    TEXT(ICORDS, 1).Blank(),
    TEXT(IGEOLO, 60).When(HasCorners).Blank(),
    TEXT(NICOM, 1).Number(&R::CommentCount),
    CommentTable(),
    TEXT(IC, 2).Code(&R::Compression, kCompressions).Blank(),
    TEXT(COMRAT, 4).When(HasRate).Code(&R::ComratMode, kRates).Blank(),
    TEXT(NBANDS, 1).Number(&R::BandField).Then(SetBands),
    TEXT(XBANDS, 5, kAbsent).When(HasExtraBands).Number(&R::BandCount),
    BandTable(),
    TEXT(ISYNC, 1),
    TEXT(IMODE, 1).CodeOrRefuse(&R::Mode, kModes, ERR_FILE_FORMAT).Blank().Starts("P"),
    TEXT(NBPR, 4).Number(&R::BlocksPerRow).Streamed(kBlockSentinel),
    TEXT(NBPC, 4).Number(&R::BlocksPerColumn).Streamed(kBlockSentinel),
    TEXT(NPPBH, 4).Number(&R::BlockWidth).Streamed(kBlockSentinel),
    TEXT(NPPBV, 4).Number(&R::BlockHeight).Streamed(kBlockSentinel),
    TEXT(NBPP, 2).Number(&R::SampleBits).Then(RefuseDeepBands),
    TEXT(IDLVL, 3).Number(&R::DisplayLevel),
    TEXT(IALVL, 3).Number(&R::AttachmentLevel),
    TEXT(ILOC, 10).Pair(&R::LocationRow, &R::LocationColumn),
    TEXT(IMAG, 4).Then(SetMagnification).Blank(),
    TEXT(UDIDL, 5),
    TEXT(UDOFL, 3).When(HasUserData),
    FieldRow<R>::Block("UDID", &R::UserTre, UserDataLength).When(HasUserData),
    TEXT(IXSHDL, 5),
    TEXT(IXSOFL, 3).When(HasExtendedData),
    FieldRow<R>::Block("IXSHD", &R::ExtendedTre, ExtendedDataLength).When(HasExtendedBlock),
    // The mask table stands at the first bytes of the image data.
    FieldRow<R>::Own(ReadMaskHead).When(HasMaskTable),
    FieldRow<R>::Block("TPXCD", &R::PadCode, PadCodeLength).When(HasPadCode),
    FieldRow<R>::Own(ReadBlockMask).When(HasBlockMask),
    FieldRow<R>::Own(ReadPadMask).When(HasPadMask),
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

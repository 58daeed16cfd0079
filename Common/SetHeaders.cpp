// The setters of the public header records: each takes the record's fields in an order of its own and puts them
// into the document's header by the header's table.
#include <algorithm>
#include <charconv>

#include "HeaderSetter.h"
#include "NitfFile.h"
#include "PublicMembers.h"

namespace tavi {

namespace {

constexpr int32_t kNoHandle = 0;  // what a setter returns for a null handle

// One field of the record, or what a function does in its place.
template <class R>
struct Step {
  // A name alone is a whole step in the lists below. NOLINTNEXTLINE(google-explicit-constructor)
  constexpr Step(const char* name, int32_t (*what)(R&, const void* record, const char* field) = nullptr)
      : field(name), own(what) {}
  const char* field;
  int32_t (*own)(R&, const void*, const char*);
};

const Member* FindMember(std::span<const Member> members, std::string_view field) {
  return std::find_if(members.data(), members.data() + members.size(),
                      [&](const Member& m) { return field == m.field; });
}

// Sets a field from the member that shows it. A location has two members: what stands first in the record goes to
// the first half, although a getter may have filled it from the second.
template <class R>
int32_t SetFromMember(R& header, std::span<const FieldRow<R>> rows, const Member* member,
                      const void* record) {
  const FieldRow<R>& row = *FindRow<R>(rows, member->field);
  switch (member->kind) {
    case MemberKind::kText:
      return SetText(header, row, GetMember<const char*>(record, member->offset));
    case MemberKind::kChars:
      return SetCharacters(header, row, static_cast<const char*>(record) + member->offset);
    case MemberKind::kNumber:
      return SetNumber(header, row, GetMember<uint32_t>(record, member->offset));
    case MemberKind::kHalf:
      return row.set_pair(header, row, GetMember<int32_t>(record, member[0].offset),
                          GetMember<int32_t>(record, member[1].offset));
    case MemberKind::kOwned: {
      const auto* bytes = GetMember<const uint8_t*>(record, member->offset);
      return bytes != nullptr ? SetBlock(header, row, bytes) : SUCCESS;  // none: the old one stays
    }
    default:
      return SUCCESS;
  }
}

template <class R>
int32_t Take(R& header, std::span<const FieldRow<R>> rows, std::span<const Member> members,
             const void* record, const Step<R>& step) {
  if (step.own != nullptr) return step.own(header, record, step.field);
  return SetFromMember(header, rows, FindMember(members, step.field), record);
}

// Ends at the first field that is not set. That one is set a second time, and the second result counts: a field
// that only lacked memory the first time ends the walk with SUCCESS. That is kept.
template <class R>
int32_t TakeUntilFailure(R& header, std::span<const FieldRow<R>> rows, std::span<const Member> members,
                         const void* record, std::span<const Step<R>> steps) {
  for (const Step<R>& step : steps) {
    if (Take(header, rows, members, record, step) != SUCCESS) {
      return Take(header, rows, members, record, step);
    }
  }
  return SUCCESS;
}

// ---- The file header ----

template <uint16_t kCountOffset>
int32_t SetList(NtfHdr& header, const void* record, const char* field) {
  const FieldRow<NtfHdr>* group = nullptr;
  const FieldRow<NtfHdr>* column = FindRow<NtfHdr>(FileHeaderRows(), field, &group);
  const Member* member = FindMember(file_header::kMembers, field);
  // A getter lists nothing for a count below 0.
  const int32_t count = std::max(GetMember<int32_t>(record, kCountOffset), 0);
  return SetLengths(header, *group, *column, GetMember<const uint32_t*>(record, member->offset),
                    static_cast<uint32_t>(count));
}

// The number with six decimals, its last character at the field's last. Nothing stops it at the field's left end:
// it runs on over the terminator and the characters of FHDR before it, and is lost before those only.
int32_t SetVersion(NtfHdr& header, const void* record, const char*) {
  constexpr int kDecimals = 6;
  char digits[64];
  const double version = static_cast<const NitfHeaderInfo*>(record)->FVER;
  const char* digit =
      std::to_chars(digits, digits + sizeof digits, version, std::chars_format::fixed, kDecimals).ptr;
  auto* const texts = reinterpret_cast<char*>(&header.Text);
  static_assert(offsetof(NtfHdr::Texts, FHDR) == 0 &&
                offsetof(NtfHdr::Texts, FVER) == sizeof header.Text.FHDR);
  constexpr uint32_t kWidth = sizeof header.Text.FVER - 1;
  FormatNumericField(texts + offsetof(NtfHdr::Texts, FVER), kWidth, 0);
  for (char* at = texts + offsetof(NtfHdr::Texts, FVER) + kWidth; digit != digits && at != texts;) {
    *--at = *--digit;
  }
  return SUCCESS;
}

constexpr auto kByImages = SetList<offsetof(NitfHeaderInfo, NUMI)>;
constexpr auto kByGraphics = SetList<offsetof(NitfHeaderInfo, NUMS)>;
constexpr auto kByTexts = SetList<offsetof(NitfHeaderInfo, NUMT)>;
// Reserved extensions too: those beyond the number of data extensions stay as they are.
constexpr auto kByExtensions = SetList<offsetof(NitfHeaderInfo, NUMDES)>;

constexpr Step<NtfHdr> kFileHeaderSteps[] = {
    "FHDR",
    "CLEVEL",
    "STYPE",
    "OSTAID",
    "FTITLE",
    "FSCLAS",
    "FSCLSY",
    "FSCODE",
    "FSCTLH",
    "FSREL",
    "FSDCTP",
    "FSDCXM",
    "FSDG",
    "FSCLTX",
    "FSCATP",
    "FSCAUT",
    "FSCRSN",
    "FSCTLN",
    "ONAME",
    "OPHONE",
    "HL",
    "FL",
    "FSCOP",
    "FSCPYS",
    "ENCRYP",
    "NUMI",
    {"LISH", kByImages},
    {"LI", kByImages},
    "NUMS",
    {"LSSH", kByGraphics},
    {"LS", kByGraphics},
    "NUMX",
    "NUMT",
    {"LTSH", kByTexts},
    {"LT", kByTexts},
    "NUMDES",
    {"LDSH", kByExtensions},
    {"LD", kByExtensions},
    "NUMRES",
    {"LRESH", kByExtensions},
    {"LRE", kByExtensions},
    "UDHDL",
    "UDHOFL",
    "UDHD",
    "XHDL",
    "XHDLOFL",
    "XHD",
    "FBKGC",
    "FSSRDT",
    "FSDGDT",
    "FSDCDT",
    "FDT",
    {"FVER", SetVersion},
};

// ---- Images ----

// Comments go into the slots that there are; none is added.
int32_t SetComments(ImSubHdr& header, const void* record, const char*) {
  const auto* info = static_cast<const NitfImageHeaderInfo*>(record);
  const uint32_t stored = std::min(header.CommentCount, header.Comments.size());
  for (uint32_t i = 0; i < info->NICOM; ++i) {
    if (i >= stored || info->ICOM == nullptr) return ERR_INVALID_PARAMETER;
    char* const slot = header.Comments.At(i);
    const auto* list = reinterpret_cast<const char*>(info->ICOM);
    const char* text = nullptr;
    std::memcpy(&text, list + i * sizeof text, sizeof text);
    constexpr uint32_t kWidth = 80;
    const int32_t status = SetFixedText(slot, kWidth, text);
    if (status != SUCCESS) return status;
  }
  return SUCCESS;
}

int32_t SetMaskNumbers(ImSubHdr& header, const void* record, const char*) {
  const auto* info = static_cast<const NitfImageHeaderInfo*>(record);
  header.DataOffset = info->IMDATOFF;
  header.BlockMaskLength = info->BMRLNTH;
  header.PadMaskLength = info->TMRLNTH;
  header.PadCodeBits = info->TPXCDLNTH;
  return SUCCESS;
}

constexpr Step<ImSubHdr> kImageSteps[] = {
    "IM",     "IID1",   "TGTID",  "IID2",   "ISCLAS",
    "ISCLSY", "ISCODE", "ISCTLH", "ISREL",  "ISDCTP",
    "ISDCXM", "ISDG",   "ISCLTX", "ISCATP", "ISCAUT",
    "ISCRSN", "ISCTLN", "ISORCE", "PVTYPE", "IREP",
    "ICAT",   "PJUST",  "ICORDS", "IC",     "COMRAT",
    "IDATIM", "ISDCDT", "ISDGDT", "ISSRDT", "ENCRYP",
    "NROWS",  "NCOLS",  "ABPP",   "NICOM",  {"ICOM", SetComments},
    "NBANDS", "XBANDS", "ISYNC",  "IMODE",  "NBPR",
    "NBPC",   "NPPBH",  "NPPBV",  "NBPP",   "IDLVL",
    "IALVL",  "ILOC",   "IMAG",   "UDIDL",  "UDOFL",
    "UDID",   "IXSHDL", "IXSOFL", "IXSHD",  {"IMDATOFF", SetMaskNumbers},
    "TPXCD",
};

// ---- Graphics and texts ----

constexpr Step<GrSubHdr> kGraphicSteps[] = {
    "SY",     "SID",    "SNAME",   "SSCLAS", "SSCLSY", "SSCODE", "SSCTLH", "SSREL",
    "SSDCTP", "SSDCXM", "SSDG",    "SSCLTX", "SSCATP", "SSCAUT", "SSCRSN", "SSCTLN",
    "ENCRYP", "SFMT",   "SSTRUCT", "SDLVL",  "SALVL",  "SLOC",   "SBND1",  "SBND2",
    "SCOLOR", "SRES2",  "SXSHDL",  "SXSOFL", "SXSHD",  "SSDCDT", "SSDGDT", "SSSRDT",
};

// TSDCDT comes twice and TSDGDT never: nothing changes that field.
constexpr Step<TxSubHdr> kTextSteps[] = {
    "TE",     "TEXTID", "TXTALVL", "TXTDT",  "TXTITL", "TSCLAS", "TSCLSY", "TSCODE", "TSCTLH",
    "TSREL",  "TSDCTP", "TSDCDT",  "TSDCXM", "TSDG",   "TSDCDT", "TSCLTX", "TSCATP", "TSCAUT",
    "TSCRSN", "TSSRDT", "TSCTLN",  "ENCRYP", "TXTFMT", "TXSHDL", "TXSOFL", "TXSHD",
};

// A subheader's setter: the record, the handle and the index are looked at in this order.
template <class R, class Record>
int32_t SetSubheader(NitfHandle handle, R* header, std::span<const FieldRow<R>> rows,
                     std::span<const Member> members, const Record* record, std::span<const Step<R>> steps) {
  if (record == nullptr) return TAVI_BAD_INDEX;
  if (handle == nullptr) return kNoHandle;
  if (header == nullptr) return TAVI_BAD_INDEX;
  return TakeUntilFailure<R>(*header, rows, members, record, steps);
}

}  // namespace

}  // namespace tavi

int32_t Tavi_NITFSetNITFHeader(NitfHandle handle, NitfHeaderInfo* record) {
  if (handle == nullptr) return tavi::kNoHandle;
  if (record == nullptr) return TAVI_BAD_INDEX;
  // A field that cannot be set stays as it is, and the next one is taken.
  for (const auto& step : tavi::kFileHeaderSteps) {
    tavi::Take<tavi::NtfHdr>(handle->Header, tavi::FileHeaderRows(), tavi::file_header::kMembers, record,
                             step);
  }
  return SUCCESS;
}

int32_t Tavi_NITFSetImageHeader(NitfHandle handle, uint32_t index, NitfImageHeaderInfo* record) {
  auto* header = handle != nullptr ? tavi::SubheaderAt(handle->Images, index, handle->ImageCount) : nullptr;
  return tavi::SetSubheader<tavi::ImSubHdr>(handle, header, tavi::ImageRows(), tavi::image::kMembers, record,
                                            tavi::kImageSteps);
}

int32_t Tavi_NITFSetGraphicHeader(NitfHandle handle, uint32_t index, NitfGraphicHeaderInfo* record) {
  auto* header =
      handle != nullptr ? tavi::SubheaderAt(handle->Graphics, index, handle->GraphicCount) : nullptr;
  return tavi::SetSubheader<tavi::GrSubHdr>(handle, header, tavi::GraphicRows(), tavi::graphic::kMembers,
                                            record, tavi::kGraphicSteps);
}

int32_t Tavi_NITFSetTextHeader(NitfHandle handle, uint32_t index, NitfTextHeaderInfo* record) {
  auto* header = handle != nullptr ? tavi::SubheaderAt(handle->Texts, index, handle->TextCount) : nullptr;
  return tavi::SetSubheader<tavi::TxSubHdr>(handle, header, tavi::TextRows(), tavi::text::kMembers, record,
                                            tavi::kTextSteps);
}

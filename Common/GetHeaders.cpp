// The getters of the public header records, and the operations that free what they hand out.
#include <algorithm>

#include "NitfFile.h"
#include "PublicMembers.h"

namespace tavi {

TAVI_UNIT(L"Common/GetHeaders")

namespace {

constexpr int32_t kNoHandle = 0;  // what a getter returns for a null handle

// ---- What is filled by a rule of its own ----

template <class Value>
Value* Allocate(uint64_t count) {
  return static_cast<Value*>(HostAllocMem(count, sizeof(Value), Here().line, Here().unit));
}

// Puts a block of `size` bytes into the record: as many stored bytes as there are, zeros behind.
// ERR_NO_MEMORY.
int32_t CopyBlock(uint8_t*& out, const HostArray<uint8_t>& stored, uint64_t size) {
  out = Allocate<uint8_t>(size);
  if (out == nullptr) return ERR_NO_MEMORY;
  if (stored.exists()) std::memcpy(out, stored.data(), std::min(size, stored.size() - 1));
  return SUCCESS;
}

// A list of the record, as long as the count's text says; entries past the header's number are 0. Lengths
// that exceed a signed number come out as the largest one.
int32_t CopyLengths(uint32_t*& out, const LengthList& list, uint32_t in_header, int32_t count) {
  const auto entries = static_cast<uint32_t>(std::max(count, 0));
  uint32_t* copy = Allocate<uint32_t>(entries);
  out = copy;
  if (copy == nullptr) return ERR_NO_MEMORY;
  for (uint32_t i = 0; i < entries && i < in_header; ++i) copy[i] = std::min<uint32_t>(list.At(i), INT32_MAX);
  return SUCCESS;
}

// Fields of a byte-packed record have no address to bind to: a value is made beside it and stored.
template <class Pointer, class Make>
int32_t FillPointer(void* record, uint16_t offset, Make make) {
  Pointer made = nullptr;
  const int32_t status = make(made);
  SetMember(record, offset, made);
  return status;
}

#define FILL(NAME, ...) \
  FillPointer<decltype(Record::NAME)>(record, offsetof(Record, NAME), [&](auto& made) { return __VA_ARGS__; })

int32_t FillLengthLists(NitfHeaderInfo* record, const NtfHdr& h) {
  using Record = NitfHeaderInfo;
  const int32_t images = NumberOf(h.Text.NUMI);
  const int32_t graphics = NumberOf(h.Text.NUMS);
  const int32_t texts = NumberOf(h.Text.NUMT);
  const int32_t results[] = {
      FILL(LISH, CopyLengths(made, h.LishRead, h.NumImages, images)),
      FILL(LI, CopyLengths(made, h.LiRead, h.NumImages, images)),
      FILL(LSSH, CopyLengths(made, h.LsshRead, h.NumGraphics, graphics)),
      FILL(LS, CopyLengths(made, h.LsRead, h.NumGraphics, graphics)),
      FILL(LTSH, CopyLengths(made, h.LtshList, h.NumTexts, texts)),
      FILL(LT, CopyLengths(made, h.LtRead, h.NumTexts, texts)),
  };
  return *std::min_element(std::begin(results), std::end(results));
}

// Comments past the stored ones are copied as empty texts.
int32_t CopyComments(char**& out, const ImSubHdr& source) {
  const auto count = static_cast<uint32_t>(NumberOf(source.Text.NICOM));
  char** list = Allocate<char*>(count);
  out = list;
  if (list == nullptr) return ERR_NO_MEMORY;
  for (uint32_t i = 0; i < count; ++i) {
    list[i] =
        i < source.Comments.size() ? CopyFieldString(source.Comments.At(i), 80) : CopyFieldString("", 1);
    if (list[i] == nullptr) return ERR_NO_MEMORY;
  }
  return SUCCESS;
}

// The text ends at its first NUL; behind it are zeros up to UDIDL bytes, as many as the setter may read of it.
int32_t CopyUserData(char*& out, const ImSubHdr& source) {
  const auto* stored = reinterpret_cast<const char*>(source.UserTre.data());
  const uint64_t length = stored != nullptr ? strnlen(stored, source.UserTre.size()) : 0;
  const auto told = static_cast<uint64_t>(std::max(NumberOf(source.Text.UDIDL), 0));
  out = Allocate<char>(std::max(length + 1, told));
  if (out == nullptr) return ERR_NO_MEMORY;
  if (length != 0) std::memcpy(out, stored, length);
  return SUCCESS;
}

int32_t FillImageBlocks(NitfImageHeaderInfo* record, const ImSubHdr& source) {
  using Record = NitfImageHeaderInfo;
  int32_t status = SUCCESS;
  if (NumberOf(source.Text.NICOM) > 0) status = FILL(ICOM, CopyComments(made, source));
  if (status == SUCCESS && NumberOf(source.Text.UDIDL) != 0) status = FILL(UDID, CopyUserData(made, source));
  const int32_t extended = NumberOf(source.Text.IXSHDL);
  if (status == SUCCESS && extended > 0) {
    FreeMember(record, offsetof(Record, IXSHD));
    status = FILL(IXSHD, CopyBlock(made, source.ExtendedTre, static_cast<uint64_t>(extended)));
  }
  record->IMDATOFF = std::min<uint32_t>(source.DataOffset, INT32_MAX);
  record->BMRLNTH = static_cast<uint16_t>(source.BlockMaskLength);
  record->TMRLNTH = static_cast<uint16_t>(source.PadMaskLength);
  record->TPXCDLNTH = static_cast<uint16_t>(source.PadCodeBits);
  if (status == SUCCESS && source.PadCodeBits != 0) {
    status = FILL(TPXCD, CopyBlock(made, source.PadCode, source.PadCodeBits));
  }
  return status;
}

int32_t FillGraphicBlock(NitfGraphicHeaderInfo* record, const GrSubHdr& source) {
  using Record = NitfGraphicHeaderInfo;
  const int32_t length = NumberOf(source.Text.SXSHDL);
  return length > 0 ? FILL(SXSHD, CopyBlock(made, source.ExtendedTre, static_cast<uint64_t>(length)))
                    : SUCCESS;
}

int32_t FillTextBlock(NitfTextHeaderInfo* record, const TxSubHdr& source) {
  using Record = NitfTextHeaderInfo;
  FreeMember(record, offsetof(Record, TXSHD));
  const int64_t length = NumberOf(source.Text.TXSHDL) - kOverflowWidth;
  return length > 0 ? FILL(TXSHD, CopyBlock(made, source.ExtendedTre, static_cast<uint64_t>(length)))
                    : SUCCESS;
}

// Frees entry `i` of a list of texts.
void FreeEntry(void* record, uint16_t list_offset, uint32_t i) {
  char** list = GetMember<char**>(record, list_offset);
  if (list == nullptr) return;
  if (list[i] != nullptr) HostFreeMem(list[i], Here().line, Here().unit);
  list[i] = nullptr;
}

void FreeComments(NitfImageHeaderInfo* record) {
  constexpr uint16_t kComments = offsetof(NitfImageHeaderInfo, ICOM);
  for (uint32_t i = 0; record->ICOM != nullptr && i < record->NICOM; ++i) FreeEntry(record, kComments, i);
  FreeMember(record, kComments);
}

// The entries of the band lists are looked at only while there is a list of IREPBAND, and nothing at all
// without bands.
void FreeBandLists(NitfImageHeaderInfo* record) {
  using Record = NitfImageHeaderInfo;
  constexpr uint16_t kLists[] = {offsetof(Record, IREPBAND), offsetof(Record, ISUBCAT), offsetof(Record, IFC),
                                 offsetof(Record, IMFLT)};
  if (record->NBANDS == 0) return;
  for (uint32_t band = 0; record->IREPBAND != nullptr && band < record->NBANDS; ++band) {
    for (const uint16_t list : kLists) FreeEntry(record, list, band);
  }
  for (const uint16_t list : kLists) FreeMember(record, list);
}

}  // namespace

}  // namespace tavi

using tavi::FillMembers;
using tavi::FreeMembers;

int32_t Tavi_NITFGetImageHeaderCount(NitfHandle handle) {
  return handle != nullptr ? tavi::CountImageHeaders(*handle) : 0;
}
int32_t Tavi_NITFGetGraphicHeaderCount(NitfHandle handle) {
  return handle != nullptr ? tavi::CountGraphicHeaders(*handle) : 0;
}
int32_t Tavi_NITFGetTextHeaderCount(NitfHandle handle) {
  return handle != nullptr ? tavi::CountTextHeaders(*handle) : 0;
}

int32_t Tavi_NITFGetNITFHeader(NitfHandle handle, NitfHeaderInfo* record) {
  if (handle == nullptr) return tavi::kNoHandle;
  if (record == nullptr) return TAVI_BAD_INDEX;
  const tavi::NtfHdr& header = handle->Header;
  const int32_t status =
      FillMembers<tavi::NtfHdr>(record, tavi::file_header::kMembers, header, tavi::FileHeaderRows());
  if (status != SUCCESS) return status;
  record->FVER = static_cast<float>(tavi::ParseReal(header.Text.FVER, sizeof header.Text.FVER - 1));
  return tavi::FillLengthLists(record, header);
}

int32_t Tavi_NITFGetImageHeader(NitfHandle handle, uint32_t index, NitfImageHeaderInfo* record) {
  if (handle == nullptr) return tavi::kNoHandle;
  if (record == nullptr) return ERR_INVALID_PARAMETER;
  const tavi::ImSubHdr* source = tavi::SubheaderAt(handle->Images, index, handle->ImageCount);
  if (source == nullptr) return TAVI_BAD_INDEX;
  const int32_t status =
      FillMembers<tavi::ImSubHdr>(record, tavi::image::kMembers, *source, tavi::ImageRows());
  return status == SUCCESS ? tavi::FillImageBlocks(record, *source) : status;
}

int32_t Tavi_NITFGetGraphicHeader(NitfHandle handle, uint32_t index, NitfGraphicHeaderInfo* record) {
  if (handle == nullptr) return tavi::kNoHandle;
  if (record == nullptr) return TAVI_BAD_INDEX;
  const tavi::GrSubHdr* source = tavi::SubheaderAt(handle->Graphics, index, handle->GraphicCount);
  if (source == nullptr) return TAVI_BAD_INDEX;
  const int32_t status =
      FillMembers<tavi::GrSubHdr>(record, tavi::graphic::kMembers, *source, tavi::GraphicRows());
  return status == SUCCESS ? tavi::FillGraphicBlock(record, *source) : status;
}

int32_t Tavi_NITFGetTextHeader(NitfHandle handle, uint32_t index, NitfTextHeaderInfo* record) {
  if (handle == nullptr) return tavi::kNoHandle;
  if (record == nullptr) return TAVI_BAD_INDEX;
  const tavi::TxSubHdr* source = tavi::SubheaderAt(handle->Texts, index, handle->TextCount);
  if (source == nullptr) return TAVI_BAD_INDEX;
  const int32_t status = FillMembers<tavi::TxSubHdr>(record, tavi::text::kMembers, *source, tavi::TextRows());
  return status == SUCCESS ? tavi::FillTextBlock(record, *source) : status;
}

int32_t Tavi_NITFFreeNITFHeader(NitfHeaderInfo* record) {
  if (record == nullptr) return ERR_NULL_ARGUMENT;
  FreeMembers(record, tavi::file_header::kMembers);
  return SUCCESS;
}

int32_t Tavi_NITFFreeImageHeader(NitfImageHeaderInfo* record) {
  if (record == nullptr) return ERR_NULL_ARGUMENT;
  // In record order: what lies between is freed as it stands.
  const std::span<const tavi::Member> members = tavi::image::kMembers;
  const auto place = [&](std::string_view field) {
    return static_cast<size_t>(
        std::find_if(members.begin(), members.end(), [&](const auto& m) { return field == m.field; }) -
        members.begin());
  };
  const size_t comments = place("ICOM");
  const size_t bands = place("IREPBAND");
  FreeMembers(record, members.first(comments));
  tavi::FreeComments(record);
  FreeMembers(record, members.subspan(comments + 1, bands - comments - 1));
  tavi::FreeBandLists(record);
  FreeMembers(record, members.subspan(bands));
  return SUCCESS;
}

int32_t Tavi_NITFFreeGraphicHeader(NitfGraphicHeaderInfo* record) {
  if (record == nullptr) return ERR_NULL_ARGUMENT;
  FreeMembers(record, tavi::graphic::kMembers);
  return SUCCESS;
}

int32_t Tavi_NITFFreeTextHeader(NitfTextHeaderInfo* record) {
  if (record == nullptr) return ERR_NULL_ARGUMENT;
  FreeMembers(record, tavi::text::kMembers);
  return SUCCESS;
}

int32_t Tavi_NITFGetTextSegment(NitfHandle handle, uint32_t index, uint8_t* buffer, uint32_t* size) {
  if (handle == nullptr || index >= handle->TextCount) return TAVI_BAD_INDEX;
  const tavi::TxSubHdr* source = tavi::SubheaderAt(handle->Texts, index, handle->TextCount);
  const tavi::NtfHdr& header = handle->Header;
  const uint32_t length = source != nullptr && index < header.NumTexts ? header.LtRead.At(index) : 0;
  if (size != nullptr) *size = length;
  if (buffer == nullptr) return SUCCESS;
  if (source == nullptr) return 0;
  if (source->TextDataInMemory != 0) {
    const auto* text = reinterpret_cast<const char*>(source->TextDataBuffer.data());
    // The buffer is as large as the size that was told, and a record may have made that another one.
    const size_t kept = strnlen(text, std::min<uint64_t>(length, source->TextDataBuffer.size()));
    if (kept != 0) std::memcpy(buffer, text, kept);
    buffer[kept] = 0;
    return SUCCESS;
  }
  // A length that the file cannot hold is not read at all: the caller's buffer may be as small as its sum was
  // wrong.
  const int64_t left = handle->SourceSize - tavi::TextDataPosition(*handle, index);
  if (left < 0 || length > static_cast<uint64_t>(left)) return ERR_FILE_READ;
  tavi::SeekTextData(*handle, index);
  if (tavi::ReadSource(*handle, buffer, length) != length) return ERR_FILE_READ;
  buffer[length] = 0;
  return SUCCESS;
}

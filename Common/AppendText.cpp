#include <utility>

#include "Append.h"
#include "HeaderSetter.h"

namespace tavi {

TAVI_UNIT(L"Common/AppendText")

namespace {

// A file to be read, closed at the end.
class SourceText {
 public:
  explicit SourceText(const wchar_t* path)
      : file_(path != nullptr ? HostFileOpen(path, kRawBytesReadOnly, kOwnerReads) : kNoFile) {}
  SourceText(const SourceText&) = delete;
  SourceText& operator=(const SourceText&) = delete;
  ~SourceText() {
    if (file_ != kNoFile) HostFileClose(file_);
  }
  bool is_open() const { return file_ != kNoFile; }
  // Its size; negative when it cannot be told. Leaves the file at its start.
  int64_t Measure() const {
    const int64_t size = HostFileSeek(file_, 0, kFromEnd);
    HostFileSeek(file_, 0, kFromStart);
    return size;
  }
  // A file that has become shorter leaves zeros.
  void Read(HostArray<uint8_t>& to, uint64_t size) const { HostFileRead(file_, to.data(), size); }

 private:
  static constexpr uint32_t kRawBytesReadOnly = 0x8000;
  static constexpr uint32_t kOwnerReads = 0x100;
  int64_t file_;
};

void TakeText(TxSubHdr& record, HostArray<uint8_t>&& bytes) {
  record.TextDataBuffer = std::move(bytes);
  record.TextDataInMemory = 1;
}

int32_t ReadText(TxSubHdr& record, const wchar_t* path) {
  SourceText file(path);
  const int64_t size = file.is_open() ? file.Measure() : -1;
  if (size < 0) return ERR_FILE_OPEN;
  HostArray<uint8_t> bytes;
  if (size > UINT32_MAX || !bytes.Allocate(static_cast<uint64_t>(size) + 1, Here())) return ERR_NO_MEMORY;
  file.Read(bytes, static_cast<uint64_t>(size));
  TakeText(record, std::move(bytes));
  return SUCCESS;
}

}  // namespace

int32_t SetTextData(TxSubHdr& record, const void* bytes, uint64_t size) {
  if (bytes == nullptr) return ERR_NULL_ARGUMENT;
  HostArray<uint8_t> made;
  if (!made.Allocate(size + 1, Here())) return ERR_NO_MEMORY;
  if (size != 0) HostMemCopy(made.data(), bytes, size);
  TakeText(record, std::move(made));
  return SUCCESS;
}

int32_t AppendTextSegment(NitfFile& document, const wchar_t* path) {
  if (document.TextCount >= kMostSegmentsOfAKind) return kNoRoomForSegment;
  NewSegment<TxSubHdr> segment(document, document.TextCount, Here());
  if (!segment.made()) return ERR_NO_MEMORY;
  TxSubHdr& record = segment.record();
  const int32_t status = ReadText(record, path);
  if (status != SUCCESS) return status;
  DeriveDate(record.Text.TXTDT, document.Header, DateFrom::kMinutes);
  uint32_t lowest = 0;
  if (LowestDisplayLevel(document, lowest)) {
    SetNumber(record, *FindRow<TxSubHdr>(TextRows(), "TXTALVL"), lowest);
  }

  constexpr uint32_t kSubheader = 282;
  constexpr uint32_t kTableEntry = 9;
  const uint64_t data = record.TextDataBuffer.size() - 1;
  NtfHdr& header = document.Header;
  if (!MakeRoomForText(header)) return ERR_NO_MEMORY;
  // Nothing fails from here on.
  header.LtshList[header.NumTexts] = kSubheader;
  AddTextDataLength(header, static_cast<uint32_t>(data));
  segment.Join(document.Texts);
  ++document.TextCount;
  ++header.NumTexts;
  AddToTotals(header, kTableEntry, kSubheader, data);
  return SUCCESS;
}

}  // namespace tavi

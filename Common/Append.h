// New segments, and new contents of old ones. An append touches no file: the segment's data stay in memory until
// a save, and the lengths of the file header follow at once. One that fails leaves the document as it was.
#pragma once

#include <cstdint>
#include <span>

#include "NitfFile.h"
#include "SegmentNodes.h"

namespace tavi {

inline constexpr uint32_t kMostSegmentsOfAKind = 999;
inline constexpr int32_t kNoRoomForSegment = 0;  // what an append returns then; no status

// See the exports of the same names, which test the handle.
int32_t AppendImageSegment(NitfFile& document, const HostBitmap* bitmap, int32_t format, int32_t bits,
                           int32_t quality_factor);
int32_t AppendGraphicSegment(NitfFile& document, HostVector* vector, const HostRect& rectangle);
int32_t AppendTextSegment(NitfFile& document, const wchar_t* path);
int32_t SetVectorHandle(NitfFile& document, uint32_t index, const HostVector* vector);
HostVector* GetVectorHandle(NitfFile& document, uint32_t index);

// Puts the drawing's or the text's bytes into the record, in place of those of the source file. ERR_NO_MEMORY
// leaves what there was; ERR_NULL_ARGUMENT for a text that is null.
int32_t SetGraphicData(GrSubHdr& record, const void* bytes, uint64_t size);
int32_t SetTextData(TxSubHdr& record, const void* bytes, uint64_t size);

// The date of a new segment: the file's own, with its first field that is above 1 lowered by 1, seen from the
// end. There is no borrowing; a text's date keeps its seconds. `date` takes 14 characters and a NUL.
enum class DateFrom : uint8_t { kSeconds, kMinutes };
void DeriveDate(char* date, const NtfHdr& header, DateFrom from);

// The lowest display level in use, which a new graphic or text is attached to; false when nothing is drawn.
bool LowestDisplayLevel(NitfFile& document, uint32_t& level);

// What a new segment adds to the header: the two growths of the length lists have been done.
void AddToTotals(NtfHdr& header, uint32_t table_entry, uint32_t subheader, uint64_t data);

// A node that joins its list at last, or is destroyed.
template <class Record>
class NewSegment {
 public:
  NewSegment(NitfFile& document, uint32_t index, Place place)
      : node_(MakeNode<Record>(document, index, place)), place_(place) {}
  NewSegment(const NewSegment&) = delete;
  NewSegment& operator=(const NewSegment&) = delete;
  ~NewSegment() { DestroyNode(node_, place_); }

  bool made() const { return node_ != nullptr; }
  Record& record() { return *node_->Subheader; }

  // Links it as the node `index`, behind those that the document counts.
  void Join(SegmentNode<Record>*& head) {
    SegmentNode<Record>** link = &head;
    while (*link != nullptr) link = &(*link)->Next;
    *link = node_;
    node_ = nullptr;
  }

 private:
  SegmentNode<Record>* node_;
  Place place_;
};

// A block of the host's global memory, with its bytes locked when it is asked for them.
class GlobalBlock {
 public:
  explicit GlobalBlock(Place place) : place_(place) {}
  GlobalBlock(const GlobalBlock&) = delete;
  GlobalBlock& operator=(const GlobalBlock&) = delete;
  ~GlobalBlock();

  HostGlobalMemory* out() { return &block_; }
  uint64_t* size_out() { return &size_; }
  uint64_t size() const { return size_; }
  // Comes right behind the operation that fills it, whatever that returned.
  void Announce() const { HostTrackAdd(kTrackedBlock, block_, place_.line, place_.unit); }
  // Null when it cannot be locked.
  const void* Lock();

 private:
  static constexpr int32_t kTrackedBlock = 3;
  HostGlobalMemory block_ = nullptr;
  uint64_t size_ = 0;
  bool locked_ = false;
  Place place_;
};

}  // namespace tavi

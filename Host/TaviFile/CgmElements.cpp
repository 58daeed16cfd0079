#include "TaviFile/CgmElements.h"

namespace tavi::host::cgm {
namespace {

constexpr uint32_t kLongForm = 31;
constexpr uint32_t kMoreFollows = 0x8000;

}  // namespace

bool ElementWalker::Word(uint32_t* word) {
  if (stream_.size() - at_ < 2) return false;
  *word = uint32_t{stream_[at_]} << 8 | stream_[at_ + 1];
  at_ += 2;
  return true;
}

bool ElementWalker::Take(size_t bytes, Bytes* part) {
  if (stream_.size() - at_ < bytes) return false;
  *part = stream_.subspan(at_, bytes);
  at_ += bytes;
  return true;
}

// Only the end of an element is padded, not its inner partitions. One partition is not copied.
bool ElementWalker::LongForm(Element* element) {
  uint32_t length = 0;
  if (!Word(&length) || !Take(length & ~kMoreFollows, &element->list)) return false;
  if ((length & kMoreFollows) == 0) return true;
  joined_.assign(element->list.begin(), element->list.end());
  while ((length & kMoreFollows) != 0) {
    Bytes part;
    if (!Word(&length) || !Take(length & ~kMoreFollows, &part)) return false;
    joined_.insert(joined_.end(), part.begin(), part.end());
  }
  element->list = joined_;
  return true;
}

bool ElementWalker::Next(Element* element) {
  start_ = at_;
  uint32_t head = 0;
  if (!Word(&head)) return false;
  element->group = head >> 12;
  element->id = head >> 5 & 0x7F;
  const uint32_t length = head & 0x1F;
  if (length == kLongForm ? !LongForm(element) : !Take(length, &element->list)) return false;
  // Elements begin at even offsets. The last one may lack its padding.
  if (at_ % 2 != 0 && at_ < stream_.size()) ++at_;
  return true;
}

}  // namespace tavi::host::cgm

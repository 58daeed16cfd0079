// Binary CGM metafiles are identified here; what they draw is no picture element.
#include "TaviFile/Codec.h"

namespace tavi::host {
namespace {

constexpr uint32_t kBeginMetafile = 0x0020;  // class 0, element 1; the lower five bits are the length
constexpr uint32_t kLongForm = 31;
constexpr uint32_t kMetafileDescriptor = 1;  // the class of what follows

uint32_t Word(Bytes stream, uint64_t at) {
  return at + 2 <= stream.size() ? uint32_t{stream[at]} << 8 | stream[at + 1] : 0;
}

// BEGIN METAFILE and behind its name an element of the metafile descriptor.
int32_t IdentifyStream(Bytes stream, StreamInfo* info) noexcept {
  if (stream.size() < 4 || (Word(stream, 0) & 0xFFE0) != kBeginMetafile) return ERR_NOT_SUPPORTED;
  uint64_t length = Word(stream, 0) & 0x1F;
  uint64_t at = 2;
  if (length == kLongForm) {
    length = Word(stream, 2);
    at = 4;
    if ((length & 0x8000) != 0) return ERR_NOT_SUPPORTED;  // a name in several parts
  }
  if (length != 0 && (at >= stream.size() || (stream[at] != 255 && stream[at] >= length))) {
    return ERR_NOT_SUPPORTED;  // the name is longer than its element
  }
  at += length + length % 2;
  if (Word(stream, at) >> 12 != kMetafileDescriptor) return ERR_NOT_SUPPORTED;
  *info = {kFormatCgm, 0, 0, 0};
  return SUCCESS;
}

}  // namespace

const Codec kCgmCodec{nullptr, IdentifyStream, nullptr};

}  // namespace tavi::host

// HostVecLoadMemory: a metafile's first picture becomes the drawing of a vector.
#include <new>
#include <stdexcept>
#include <utility>

#include "TaviFile/CgmInterpreter.h"
#include "TaviVector/VectorRecord.h"

namespace tavi::host::cgm {
namespace {

constexpr uint32_t kBeginMetafile = 0x0020;  // class 0, element 1; the lower five bits are the length

// A metafile that ends within its picture gives what was drawn. One without a picture's body gives nothing: there is
// no drawing to speak of.
int32_t Load(Bytes metafile, HostVector* vector) {
  const bool begins = metafile.size() >= 2 && ((metafile[0] << 8 | metafile[1]) & 0xFFE0) == kBeginMetafile;
  if (!begins) return ERR_FILE_FORMAT;
  Interpreter interpreter(metafile);
  if (!interpreter.Run()) return ERR_FILE_FORMAT;
  return vec::TakeDrawing(vector, interpreter.TakeDrawing());
}

}  // namespace
}  // namespace tavi::host::cgm

extern "C" int32_t HostVecLoadMemory(const void* data, HostVector* vector, uint64_t size,
                                     HostLoadFlagsRecord*, uint32_t) {
  HostForgetLimitHit();
  if (vector == nullptr) return ERR_NULL_ARGUMENT;
  if (data == nullptr || size == 0) return ERR_FILE_FORMAT;
  try {
    return tavi::host::cgm::Load({static_cast<const uint8_t*>(data), size}, vector);
  } catch (const tavi::host::cgm::LimitExceeded&) {
    return ERR_NO_MEMORY;
  } catch (const std::bad_alloc&) {
    return ERR_NO_MEMORY;
  } catch (const std::length_error&) {
    return ERR_NO_MEMORY;
  }
}

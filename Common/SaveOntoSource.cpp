#include "SaveOntoSource.h"

#include <algorithm>
#include <cstring>

namespace tavi {

TAVI_UNIT(L"Common/SaveOntoSource")

namespace {

constexpr uint32_t kRawBytesReadOnly = 0x8000;
constexpr uint32_t kOwnerReads = 0x100;

// Whether both files hold the same bytes, as far as can be found out: a difference has to be seen.
bool HoldsTheSame(int64_t source, int64_t target, uint64_t size, HostArray<uint8_t>& pieces) {
  const uint64_t piece = pieces.size() / 2;
  uint8_t* ours = pieces.data();
  uint8_t* theirs = ours + piece;
  if (HostFileSeek(source, 0, kFromStart) != 0 || HostFileSeek(target, 0, kFromStart) != 0) return true;
  for (uint64_t left = size; left != 0;) {
    const uint64_t wanted = std::min(left, piece);
    const bool read =
        HostFileRead(source, ours, wanted) == wanted && HostFileRead(target, theirs, wanted) == wanted;
    if (!read) return true;
    if (std::memcmp(ours, theirs, wanted) != 0) return false;
    left -= wanted;
  }
  return true;
}

// Whether opening `path` for writing might empty the source, which has `size` bytes.
bool MayBeSource(int64_t source, int64_t size, const wchar_t* path, HostArray<uint8_t>& pieces) {
  const int64_t target = HostFileOpen(path, kRawBytesReadOnly, kOwnerReads);
  if (target == kNoFile) return _waccess(path, 0) == 0;
  const int64_t target_size = HostFileSeek(target, 0, kFromEnd);
  const bool differs = target_size >= 0 && target_size != size;
  const bool same = !differs && HoldsTheSame(source, target, static_cast<uint64_t>(size), pieces);
  HostFileClose(target);
  return same;
}

}  // namespace

int32_t KeepSourceReadable(NitfFile& document, const wchar_t* path) {
  if (path == nullptr || document.File == kNoFile || document.SourceCopy.exists()) return SUCCESS;
  constexpr uint64_t kPiece = uint64_t{256} << 10;
  HostArray<uint8_t> pieces;
  if (!pieces.Allocate(2 * kPiece, Here())) return ERR_NO_MEMORY;
  // As large as it is now: somebody else may have changed it since it was opened.
  const int64_t now = HostFileSeek(document.File, 0, kFromEnd);
  if (now < 0) return ERR_FILE_READ;
  if (!MayBeSource(document.File, now, path, pieces)) return SUCCESS;
  const auto size = static_cast<uint64_t>(now);
  HostArray<uint8_t> copy;
  if (!copy.Allocate(size, Here())) return ERR_NO_MEMORY;
  if (HostFileSeek(document.File, 0, kFromStart) != 0) return ERR_FILE_READ;
  if (HostFileRead(document.File, copy.data(), size) != size) return ERR_FILE_READ;
  document.SourceCopy = std::move(copy);
  document.SourcePosition = 0;
  return SUCCESS;
}

void DropNeedlessCopy(NitfFile& document) {
  if (!document.SourceCopy.exists()) return;
  const auto size = static_cast<int64_t>(document.SourceCopy.size());
  if (HostFileSeek(document.File, 0, kFromEnd) == size) document.SourceCopy.Release();
}

}  // namespace tavi

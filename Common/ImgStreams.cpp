#include "ImgStreams.h"

#include <algorithm>
#include <cstring>

namespace tavi {

TAVI_UNIT(L"Common/ImgStreams")

namespace {

constexpr int64_t kStretch = 1024;
constexpr int64_t kStride = 1021;
constexpr int64_t kLastPlace = 1022;  // in a stretch, of a marker that counts
constexpr int64_t kMarkerLength = 3;
constexpr int64_t kScanPiece = 64 * 1024;

bool IsStreamStart(const uint8_t* p) {
  return p[0] == 0xFF && p[1] == 0xD8 && p[2] == 0xFF;
}

}  // namespace

bool StreamFinder::ScanOn() {
  const int64_t left = job_.document.SourceSize - job_.data_start - scanned_;
  const int64_t size = std::min(left, kScanPiece);
  if (scan_status_ != SUCCESS || size < kMarkerLength) return false;
  HostArray<uint8_t> piece;
  if (!piece.Allocate(static_cast<uint64_t>(size), Here())) {
    scan_status_ = ERR_NO_MEMORY;
    return false;
  }
  if (!job_.Read(scanned_, piece.data(), static_cast<uint64_t>(size))) {
    scan_status_ = ERR_FILE_READ;
    return false;
  }
  const uint8_t* end = piece.data() + size - (kMarkerLength - 1);
  for (const uint8_t* p = piece.data(); p < end; ++p) {
    p = static_cast<const uint8_t*>(std::memchr(p, 0xFF, static_cast<size_t>(end - p)));
    if (p == nullptr) break;
    if (!IsStreamStart(p)) continue;
    if (marker_count_ == markers_.size() &&
        !markers_.Resize(std::max<uint64_t>(marker_count_ * 2, 64), Here())) {
      scan_status_ = ERR_NO_MEMORY;
      return false;
    }
    markers_[marker_count_++] = scanned_ + (p - piece.data());
  }
  scanned_ += size - (kMarkerLength - 1);
  return true;
}

int64_t StreamFinder::NextMarker(int64_t position) {
  while (marker_count_ == 0 || markers_[marker_count_ - 1] <= position) {
    if (!ScanOn()) return -1;
  }
  return *std::upper_bound(markers_.data(), markers_.data() + marker_count_, position);
}

int32_t StreamFinder::FindNextStream(uint32_t limit, uint32_t& size, uint32_t start) {
  const int64_t in_file = job_.document.SourceSize - job_.data_start - start;
  for (int64_t marker = NextMarker(start); marker >= 0; marker = NextMarker(marker)) {
    const int64_t distance = marker - start;
    // The first stretch that shows the marker, and the one behind it where the two overlap.
    int64_t k = distance <= kLastPlace ? 0 : (distance - kLastPlace + kStride - 1) / kStride;
    for (int64_t place = distance - k * kStride; place >= 1; ++k, place -= kStride) {
      if (k * kStride + kStretch > in_file) return ERR_FILE_READ;
      if (place + 1 >= static_cast<int64_t>(limit)) continue;
      size = static_cast<uint32_t>(distance);
      return SUCCESS;
    }
  }
  return scan_status_ != SUCCESS ? scan_status_ : ERR_FILE_READ;
}

int32_t StreamFinder::FindLastStream(uint32_t& size) {
  if (!last_known_) {
    last_known_ = true;
    HostArray<uint8_t> stretch;
    if (!stretch.Allocate(kStretch, Here())) return ERR_NO_MEMORY;
    const int64_t length = job_.data_length;
    // An offset that passes 0 without meeting it can be read no more.
    for (int64_t k = 0, offset = length - kStretch; offset > 0 && last_size_ == 0; ++k, offset -= kStretch) {
      if (!job_.Read(offset, stretch.data(), kStretch)) break;
      for (int64_t p = kStretch - 1; p >= kMarkerLength; --p) {
        if (p - 1 >= length || !IsStreamStart(stretch.data() + p - 2)) continue;
        last_size_ = static_cast<uint32_t>(k * kStretch + kStretch + 2 - p);
        break;
      }
    }
  }
  size = last_size_;
  return size != 0 ? SUCCESS : ERR_FILE_READ;
}

int32_t StreamFinder::ReadStreamBytes(StreamBytes& stream, int64_t offset, uint32_t size) {
  if (!job_.Holds(offset, size)) return ERR_FILE_READ;
  if (!stream.bytes.Allocate(size, Here())) return ERR_NO_MEMORY;
  stream.size = size;
  return job_.Read(offset, stream.bytes.data(), size) ? SUCCESS : ERR_FILE_READ;
}

int32_t StreamFinder::TakeLast(StreamBytes* stream, StreamWalk& walk) {
  int32_t status = FindLastStream(walk.size);
  if (status != SUCCESS) return status;
  walk.consumed = job_.data_length - walk.size;
  if (stream != nullptr) {
    status = ReadStreamBytes(*stream, static_cast<int64_t>(job_.image.DataOffset) + walk.consumed, walk.size);
  }
  walk.consumed += walk.size;
  return status;
}

int32_t StreamFinder::NextStream(StreamBytes* stream, bool last_block, bool fall_back, StreamWalk& walk) {
  if (!fall_back && last_block) return TakeLast(stream, walk);
  const uint32_t start = job_.image.DataOffset + walk.consumed;
  int32_t status = FindNextStream(walk.remaining, walk.size, start);
  if (status != SUCCESS) return fall_back ? TakeLast(stream, walk) : status;
  if (stream != nullptr) status = ReadStreamBytes(*stream, start, walk.size);
  walk.remaining -= walk.size;
  walk.consumed += walk.size;
  return status;
}

bool NextPresentEntry(const ImSubHdr& image, uint64_t block, uint32_t& entry) {
  const uint64_t blocks = static_cast<uint64_t>(image.BlocksPerRow) * image.BlocksPerColumn;
  while (++block < blocks) {
    entry = image.BlockMask.At(block);
    if (entry != MaskTable::kAbsentBlock) return true;
  }
  return false;
}

}  // namespace tavi

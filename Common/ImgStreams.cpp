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
constexpr int64_t kScanPiece = 65536;

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

// Searches `count` stretches that end at `end`, the last one first. A hit gives its distance from `end`.
int64_t StreamFinder::FindInStretches(const uint8_t* bytes, int64_t count) const {
  for (int64_t k = 1; k <= count; ++k) {
    const uint8_t* stretch = bytes + (count - k) * kStretch;
    for (int64_t p = kStretch - 1; p >= kMarkerLength; --p) {
      if (p - 1 < static_cast<int64_t>(job_.data_length) && IsStreamStart(stretch + p - 2)) {
        return k * kStretch + 2 - p;
      }
    }
  }
  return 0;
}

int32_t StreamFinder::FindLastStream(uint32_t& size) {
  constexpr int64_t kMostAtOnce = 64;
  size = 0;
  if (!last_known_) {
    HostArray<uint8_t> stretches;
    if (!stretches.Allocate(kMostAtOnce * kStretch, Here())) return ERR_NO_MEMORY;
    last_known_ = true;
    // The stretch at the start is not looked at, and an offset that passes it without meeting it can be read
    // no more.
    for (int64_t end = job_.data_length; end > kStretch && last_size_ == 0;) {
      int64_t count = std::min((end - 1) / kStretch, kMostAtOnce);
      if (!job_.Holds(end - count * kStretch, static_cast<uint64_t>(count * kStretch))) count = 1;
      if (!job_.Read(end - count * kStretch, stretches.data(), static_cast<uint64_t>(count * kStretch)))
        break;
      if (const int64_t distance = FindInStretches(stretches.data(), count); distance != 0) {
        last_size_ = static_cast<uint32_t>(job_.data_length - end + distance);
      }
      end -= count * kStretch;
    }
  }
  size = last_size_;
  return size != 0 ? SUCCESS : ERR_FILE_READ;
}

int32_t StreamFinder::ReadStreamBytes(StreamBytes& stream, int64_t offset, uint32_t size) {
  if (size != 0 && !job_.Holds(offset, size)) return ERR_FILE_READ;
  if (!stream.bytes.Allocate(size, Here())) return ERR_NO_MEMORY;
  stream.size = size;
  if (size == 0) return SUCCESS;  // nothing to read is not too short
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

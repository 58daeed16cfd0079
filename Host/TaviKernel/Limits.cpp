#include "TaviKernel/Limits.h"

#include <array>
#include <atomic>
#include <cstddef>
#include <utility>

namespace tavi::host {
namespace {

constexpr uint64_t kMiB = uint64_t{1} << 20;

// Each of these keeps a small file from costing minutes or all memory; none is reached by a file that somebody made to
// be looked at. What a byte of data earns beside a limit stands with the code that counts it.
constexpr std::array<HostLimitRecord, HOST_LIMIT_COUNT> kLimits = {{
    {"picture", "bytes",
     "pixels of one bitmap, and what a decoder holds for it: a few bytes can claim any size", 2048 * kMiB,
     ERR_NO_MEMORY},
    {"drawings", "bytes", "all drawings that the process holds: a file names up to 999, and they are kept",
     256 * kMiB, ERR_NO_MEMORY},
    // A canvas of 2048 x 2048 some 128 times over, about half a second.
    {"paint", "pixels",
     "what drawings cover, lines several times: a megabyte can ask for the same pixels a hundred thousand "
     "times",
     512 * kMiB, ERR_NO_MEMORY},
    {"cells", "cells",
     "cell arrays, patterns and tiles of a metafile: run lengths name more than their bytes", kMiB,
     ERR_NO_MEMORY},
    {"copies", "bytes", "segments of a metafile read again as copies: copies of copies double at every level",
     65'536, ERR_NO_MEMORY},
    {"curves", "steps", "work for the splines of a metafile: it grows with the square of their order",
     20'000'000, ERR_NO_MEMORY},
    {"shapes", "bytes", "shapes drawn by one metafile: copies grow into many times the size of their segment",
     32 * kMiB, ERR_NO_MEMORY},
    {"jpeg", "samples", "size of a JPEG stream: a few bytes could keep the decoder busy for minutes",
     32 * kMiB, ERR_FILE_FORMAT},
    // A picture of 16 million samples may have some sixty scans of next to no data.
    {"scans", "samples", "repeated scans of a JPEG stream: each goes over the whole picture", 1024 * kMiB,
     ERR_FILE_FORMAT},
    {"jpeg2000", "bytes",
     "memory for decoding a JPEG 2000 stream: tiles and precincts take theirs without data", 224 * kMiB,
     ERR_FILE_FORMAT},
    {"fax", "rows", "height of a fax picture: rows cost time behind the end of the data as well", 65'536,
     ERR_FILE_FORMAT},
    // One large picture more than the segment needs.
    {"streams", "pixels", "streams of one image together: many small ones can cost as much as a huge one",
     64 * kMiB, ERR_FILE_FORMAT},
    // A canvas of 32,768 x 32,768.
    {"images", "pixels", "images of one file together: blocks that a mask leaves out are drawn without data",
     1024 * kMiB, ERR_FILE_FORMAT},
}};

using Values = std::array<std::atomic<uint64_t>, kLimits.size()>;

template <size_t... kIndex>
constexpr Values Presets(std::index_sequence<kIndex...>) {
  return {kLimits[kIndex].preset...};
}

constinit Values g_values = Presets(std::make_index_sequence<kLimits.size()>());
constinit thread_local uint32_t t_hit = HOST_LIMIT_NONE;

bool IsLimit(uint32_t limit) {
  return limit - 1 < kLimits.size();
}

std::atomic<uint64_t>& ValueOf(uint32_t limit) {
  return g_values[limit - 1];
}

}  // namespace
}  // namespace tavi::host

using namespace tavi::host;

void HostSetLimit(uint32_t limit, uint64_t value) {
  if (IsLimit(limit)) ValueOf(limit).store(value, std::memory_order_relaxed);
}

uint64_t HostGetLimit(uint32_t limit) {
  return IsLimit(limit) ? ValueOf(limit).load(std::memory_order_relaxed) : 0;
}

const HostLimitRecord* HostDescribeLimit(uint32_t limit) {
  return IsLimit(limit) ? &kLimits[limit - 1] : nullptr;
}

int32_t HostWithinLimit(uint32_t limit, uint64_t asked, uint64_t earned) {
  if (!IsLimit(limit)) return 0;
  if (asked <= Plus(HostGetLimit(limit), earned)) return 1;
  t_hit = limit;
  return 0;
}

uint32_t HostLimitHit(void) {
  return t_hit;
}

void HostForgetLimitHit(void) {
  t_hit = HOST_LIMIT_NONE;
}

void HostSetBitmapLimit(uint64_t bytes) {
  HostSetLimit(HOST_LIMIT_PICTURE, bytes);
}

uint64_t HostGetBitmapLimit(void) {
  return HostGetLimit(HOST_LIMIT_PICTURE);
}

void HostSetVectorLimit(uint64_t bytes) {
  HostSetLimit(HOST_LIMIT_DRAWINGS, bytes);
}

uint64_t HostGetVectorLimit(void) {
  return HostGetLimit(HOST_LIMIT_DRAWINGS);
}

#include "TaviFile/JpegMarkers.h"

#include <cstring>

#include "TaviFile/Picture.h"
#include "TaviFile/Plausible.h"

namespace tavi::host {
namespace {

constexpr uint8_t kStart = 0xD8;
constexpr uint8_t kEnd = 0xD9;
constexpr uint8_t kScan = 0xDA;
constexpr uint8_t kApp0 = 0xE0;
constexpr uint8_t kApp14 = 0xEE;

// Decoding goes over the picture once for each scan: samples gone over that a byte of the data pays for.
constexpr uint64_t kVisitsPerByte = 4096;

uint32_t Big16(const uint8_t* at) {
  return uint32_t{at[0]} << 8 | at[1];
}

bool IsAlone(uint8_t marker) {  // no segment follows
  return marker == 0x01 || (marker >= 0xD0 && marker <= kEnd);
}

bool IsFrame(uint8_t marker) {
  return marker >= 0xC0 && marker <= 0xCF && marker != 0xC4 && marker != 0xC8 && marker != 0xCC;
}

// Walks from marker to marker. Bytes between them are passed over, as decoders do.
class MarkerWalk {
 public:
  explicit MarkerWalk(Bytes bytes) : bytes_(bytes) {}

  // False at the end of the bytes.
  bool Next(uint8_t* marker) {
    while (at_ < bytes_.size()) {
      const void* const found = std::memchr(bytes_.data() + at_, 0xFF, bytes_.size() - at_);
      if (found == nullptr) break;
      at_ = static_cast<uint64_t>(static_cast<const uint8_t*>(found) - bytes_.data());
      while (at_ < bytes_.size() && bytes_[at_] == 0xFF) ++at_;
      if (at_ == bytes_.size()) break;
      *marker = bytes_[at_++];
      if (*marker != 0) return true;
    }
    at_ = bytes_.size();
    return false;
  }

  // The segment behind the marker, without its length. False when it is not all there.
  bool Segment(Bytes* segment) {
    if (bytes_.size() - at_ < 2) return false;
    const uint32_t length = Big16(bytes_.data() + at_);
    if (length < 2 || bytes_.size() - at_ < length) return false;
    *segment = bytes_.subspan(at_ + 2, length - 2);
    at_ += length;
    return true;
  }

  uint64_t at() const { return at_; }

 private:
  Bytes bytes_;
  uint64_t at_ = 0;
};

bool BeginsWith(Bytes segment, const char* text, uint64_t size) {
  return segment.size() >= size && std::memcmp(segment.data(), text, size) == 0;
}

void ReadApplicationSegment(uint8_t marker, Bytes segment, JpegStream* jpeg) {
  if (marker == kApp0 && BeginsWith(segment, "JFIF", 5)) jpeg->has_jfif = true;
  if (marker == kApp14 && segment.size() >= 12 && BeginsWith(segment, "Adobe", 5)) {
    jpeg->has_adobe = true;
    jpeg->adobe_transform = segment[11];
  }
}

JpegProcess ProcessOf(uint8_t marker) {
  switch (marker & 0x03) {
    case 0:
    case 1:
      return marker < 0xC4 || marker > 0xC7 ? JpegProcess::kSequential : JpegProcess::kOther;
    case 2:
      return JpegProcess::kProgressive;
    default:
      return JpegProcess::kLossless;
  }
}

// Samples of all components, each padded to whole blocks; 0 for sampling factors that are not allowed.
uint64_t CodedSamples(const JpegStream& jpeg, Bytes components) {
  uint32_t widest = 1;
  uint32_t highest = 1;
  for (uint32_t i = 0; i < jpeg.components; ++i) {
    const uint32_t h = components[3 * i + 1] >> 4;
    const uint32_t v = components[3 * i + 1] & 0x0F;
    if (h == 0 || h > 4 || v == 0 || v > 4) return 0;
    widest = std::max(widest, h);
    highest = std::max(highest, v);
  }
  uint64_t samples = 0;
  for (uint32_t i = 0; i < jpeg.components; ++i) {
    const uint64_t across = (uint64_t{jpeg.width} * (components[3 * i + 1] >> 4) + widest - 1) / widest;
    const uint64_t down = (uint64_t{jpeg.height} * (components[3 * i + 1] & 0x0F) + highest - 1) / highest;
    samples += (across + 7) / 8 * 8 * ((down + 7) / 8 * 8);
  }
  return samples;
}

int32_t ReadFrame(uint8_t marker, Bytes segment, JpegStream* jpeg) {
  if (segment.size() < 6) return ERR_FILE_FORMAT;
  jpeg->process =
      (marker & 0x0C) == 0x04 || (marker & 0x0C) == 0x0C ? JpegProcess::kOther : ProcessOf(marker);
  jpeg->arithmetic = marker >= 0xC9;
  jpeg->precision = segment[0];
  jpeg->height = Big16(segment.data() + 1);
  jpeg->width = Big16(segment.data() + 3);
  jpeg->components = segment[5];
  const Bytes components = segment.subspan(6);
  if (jpeg->width == 0 || jpeg->height == 0 || jpeg->components == 0 ||
      components.size() < uint64_t{3} * jpeg->components) {
    return ERR_FILE_FORMAT;
  }
  jpeg->coded_samples = CodedSamples(*jpeg, components);
  if (jpeg->coded_samples == 0) return ERR_FILE_FORMAT;
  jpeg->has_rgb_ids =
      jpeg->components == 3 && components[0] == 'R' && components[3] == 'G' && components[6] == 'B';
  return SUCCESS;
}

}  // namespace

int32_t ReadJpegHeader(Bytes stream, JpegStream* jpeg) noexcept {
  *jpeg = JpegStream();
  if (stream.size() < 3 || stream[0] != 0xFF || stream[1] != kStart || stream[2] != 0xFF) {
    return ERR_NOT_SUPPORTED;
  }
  jpeg->bytes = stream;
  MarkerWalk walk(stream);
  bool behind_end = true;
  uint8_t marker = 0;
  while (walk.Next(&marker)) {
    if (marker == kStart && !behind_end) {
      // A header was put in front of a whole stream, with a start marker of its own: the decoder begins at
      // the second one.
      jpeg->bytes = stream.subspan(walk.at() - 2);
    }
    // Behind an end marker there is a second datastream, which uses the tables of the first.
    behind_end = marker == kEnd;
    if (IsAlone(marker)) continue;
    if (marker == kScan) return ERR_FILE_FORMAT;
    Bytes segment;
    if (!walk.Segment(&segment)) return ERR_FILE_READ;
    if (IsFrame(marker)) return ReadFrame(marker, segment, jpeg);
    ReadApplicationSegment(marker, segment, jpeg);
  }
  return ERR_FILE_READ;
}

uint64_t CountJpegScans(Bytes stream) noexcept {
  MarkerWalk walk(stream);
  uint64_t scans = 0;
  uint8_t marker = 0;
  Bytes segment;
  while (walk.Next(&marker)) {
    if (marker == kEnd && scans != 0) break;
    if (IsAlone(marker)) continue;
    if (marker == kScan) ++scans;
    if (!walk.Segment(&segment)) break;
  }
  return scans;
}

int32_t CheckJpegClaim(const JpegStream& jpeg) noexcept {
  const uint64_t sample_bytes = SampleBits(jpeg.precision) / 8;
  const int32_t status = CheckClaim(jpeg.width, jpeg.height, jpeg.components, sample_bytes);
  if (status != SUCCESS) return status;
  const uint64_t samples = uint64_t{jpeg.width} * jpeg.height * jpeg.components;
  const uint64_t size = jpeg.bytes.size();
  if (!IsWithin(HOST_LIMIT_JPEG, samples, kJpegSamplesPerByte * size)) return ERR_FILE_FORMAT;
  const uint64_t scans = CountJpegScans(jpeg.bytes);
  // Coefficients of two bytes are kept for the whole picture when it comes in several scans.
  if (scans > 1 && !IsWithin(HOST_LIMIT_PICTURE, Times(jpeg.coded_samples, 2))) return ERR_NO_MEMORY;
  const uint64_t repeated = scans > 1 ? Times(scans - 1, jpeg.coded_samples) : 0;
  return IsWithin(HOST_LIMIT_SCANS, repeated, kVisitsPerByte * size) ? SUCCESS : ERR_FILE_FORMAT;
}

}  // namespace tavi::host

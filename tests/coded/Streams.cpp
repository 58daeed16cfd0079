#include "Streams.h"

#include <algorithm>
#include <stdexcept>

#include "../host_codecs/JpegEncoder.h"

namespace tavi_test {
namespace {

constexpr int64_t kStretch = 1024;
constexpr int64_t kStep = 1021;

bool IsAccepted(const Bytes& stream) {
  return stream.size() > 2 && stream[0] == 0xFF && stream[1] == 0xD8 && stream[2] == 0xFF;
}

}  // namespace

Bytes TinyJpeg(uint32_t tag, size_t size) {
  static const Bytes plain = EncodeJpeg(MakeScene(8, 8, 1, 8), {.color = JpegColor::kGrey});
  Bytes stream = plain;
  const Bytes comment = {0xFF,
                         0xFE,
                         0,
                         6,
                         static_cast<uint8_t>(tag >> 24),
                         static_cast<uint8_t>(tag >> 16),
                         static_cast<uint8_t>(tag >> 8),
                         static_cast<uint8_t>(tag)};
  stream.insert(stream.begin() + 2, comment.begin(), comment.end());
  if (stream.size() > size) throw std::invalid_argument("a tiny JPEG needs more bytes");
  stream.resize(size);
  return stream;
}

Bytes RefusedStream(size_t size) {
  Bytes stream = {0xFF, 0xD8, 0xFF, 0xD9};  // it ends without a picture
  stream.resize(size);
  return stream;
}

StreamReference::StreamReference(const ImageSpec& image, const BuiltFile& built)
    : image_(image), length_(std::stoul(built.Text("LI[0]"))) {
  const size_t offset = built.At("image[0].data").offset;
  bytes_.assign(built.bytes.begin() + static_cast<std::ptrdiff_t>(offset), built.bytes.end());
  pixels_ = image.HasMaskTable()
                ? image.mask.imdatoff.value_or(static_cast<uint32_t>(image.MaskTable().size()))
                : 0;
}

std::optional<uint32_t> StreamReference::FindNext(uint64_t limit, uint64_t start) const {
  const auto at = [&](uint64_t i) { return i < bytes_.size() ? bytes_[i] : uint8_t{0}; };
  for (uint64_t k = 0;; ++k) {
    const uint64_t stretch = start + k * kStep;
    if (stretch + kStretch > bytes_.size()) return std::nullopt;
    for (uint64_t p = 0; p <= 1022; ++p) {
      const uint64_t i = stretch + p;
      if (at(i) == 0xFF && at(i + 1) == 0xD8 && at(i + 2) == 0xFF && p + 1 < limit && p != 0)
        return static_cast<uint32_t>(k * kStep + p);
    }
  }
}

std::optional<uint32_t> StreamReference::FindLast() const {
  int64_t offset = static_cast<int64_t>(length_) - kStretch;
  for (int64_t k = 0; offset > 0; ++k, offset -= kStretch) {
    if (offset + kStretch > static_cast<int64_t>(bytes_.size())) return std::nullopt;
    for (int64_t p = 1023; p >= 3; --p) {
      const auto byte = [&](int64_t back) { return bytes_[static_cast<size_t>(offset + p - back)]; };
      if (byte(0) == 0xFF && p - 1 < static_cast<int64_t>(length_) && byte(1) == 0xD8 && byte(2) == 0xFF)
        return static_cast<uint32_t>(k * kStretch + 1026 - p);
    }
  }
  return std::nullopt;
}

std::optional<Bytes> StreamReference::Read(int64_t offset, size_t size) const {
  if (offset < 0 || static_cast<uint64_t>(offset) + size > bytes_.size()) return std::nullopt;
  const auto begin = bytes_.begin() + offset;
  return Bytes(begin, begin + static_cast<std::ptrdiff_t>(size));
}

std::optional<Bytes> StreamReference::Next(Walk& walk, bool last_block, bool fall_back) const {
  if (fall_back || !last_block) {
    const auto found = FindNext(walk.remaining, pixels_ + walk.consumed);
    if (found) {
      const auto stream = Read(static_cast<int64_t>(pixels_ + walk.consumed), *found);
      walk.size = *found;
      walk.remaining -= *found;
      walk.consumed += *found;
      return stream;
    }
    if (!fall_back) return std::nullopt;
  }
  const auto last = FindLast();
  if (!last) return std::nullopt;
  walk.size = *last;
  walk.consumed = length_ - *last;
  const auto stream = Read(static_cast<int64_t>(pixels_ + walk.consumed), *last);
  walk.consumed += *last;
  return stream;
}

Expected StreamReference::Tiles() const {
  Expected expected;
  Walk walk{.remaining = length_};
  for (uint32_t block = 0; block < image_.BlockCount(); ++block) {
    const auto stream = Next(walk, block + 1 == image_.BlockCount(), false);
    if (!stream) return {ERR_FILE_READ, expected.streams};
    expected.status = IsAccepted(*stream) ? SUCCESS : ERR_UNSUPPORTED_COMPRESSION;
    if (IsAccepted(*stream)) expected.streams.push_back(*stream);
    if (expected.status != SUCCESS && (block + 1) % image_.nbpc == 0) return expected;
  }
  return expected;
}

Expected StreamReference::Bands() const {
  Expected expected;
  Walk saved{.remaining = length_};
  const size_t bands = image_.bands.size();
  for (uint32_t block = 0; block < image_.BlockCount(); ++block) {
    Walk walk = saved;
    expected.status = SUCCESS;
    for (size_t band = 0; band < bands; ++band) {
      const auto stream = Next(walk, false, true);
      if (band == 0) saved = walk;
      if (!stream) return {ERR_FILE_READ, expected.streams};
      if (!IsAccepted(*stream)) {
        expected.status = ERR_UNSUPPORTED_COMPRESSION;
        continue;
      }
      expected.streams.push_back(*stream);
      for (size_t i = 0; i < bands; ++i) Next(walk, false, true);
    }
    if (expected.status != SUCCESS && (block + 1) % image_.nbpc == 0) return expected;
  }
  return expected;
}

}  // namespace tavi_test

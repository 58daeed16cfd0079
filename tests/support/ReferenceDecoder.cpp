#include "ReferenceDecoder.h"

#include <algorithm>
#include <limits>
#include <stdexcept>

#include "ReferenceParts.h"

namespace tavi_test {

PackedRows::PackedRows(uint32_t pixel_width, uint32_t pixel_height, uint32_t pixel_bits)
    : width(pixel_width),
      height(pixel_height),
      bits(pixel_bits),
      bytes_per_line((size_t{pixel_bits} * pixel_width + 31) / 32 * 4),
      bytes(bytes_per_line * pixel_height) {}

uint64_t PackedRows::Get(uint32_t x, uint32_t y) const {
  const uint8_t* row = bytes.data() + y * bytes_per_line;
  uint64_t value = 0;
  if (bits == 12) {
    for (uint32_t nibble = 0; nibble < 3; ++nibble) {
      const uint32_t at = 3 * x + nibble;
      value |= uint64_t{at % 2 == 0 ? row[at / 2] & 0x0FU : uint32_t{row[at / 2]} >> 4} << (4 * nibble);
    }
  } else if (bits < 8) {
    for (uint32_t bit = bits * x; bit < bits * (x + 1); ++bit) {
      value = value << 1 | ((row[bit / 8] >> (7 - bit % 8)) & 1U);
    }
  } else {
    for (uint32_t byte = 0; byte < bits / 8; ++byte)
      value |= uint64_t{row[x * (bits / 8) + byte]} << (8 * byte);
  }
  return value;
}

void PackedRows::Set(uint32_t x, uint32_t y, uint64_t value) {
  uint8_t* row = bytes.data() + y * bytes_per_line;
  if (bits == 12) {
    for (uint32_t nibble = 0; nibble < 3; ++nibble) {
      const uint32_t at = 3 * x + nibble;
      const uint32_t shift = at % 2 == 0 ? 0 : 4;
      const auto digit = static_cast<uint32_t>(value >> (4 * nibble)) & 0x0FU;
      row[at / 2] = static_cast<uint8_t>((row[at / 2] & ~(0x0FU << shift)) | digit << shift);
    }
  } else if (bits < 8) {
    for (uint32_t i = 0; i < bits; ++i) {
      const uint32_t bit = bits * x + i;
      const uint32_t mask = 0x80U >> (bit % 8);
      const bool on = (value >> (bits - 1 - i) & 1U) != 0;
      row[bit / 8] = static_cast<uint8_t>(on ? row[bit / 8] | mask : row[bit / 8] & ~mask);
    }
  } else {
    for (uint32_t byte = 0; byte < bits / 8; ++byte) {
      row[x * (bits / 8) + byte] = static_cast<uint8_t>(value >> (8 * byte));
    }
  }
}

void PackedRows::PutRow(uint32_t y, const Bytes& row) {
  const size_t length = std::min(row.size(), bytes_per_line);
  std::copy_n(row.begin(), length, bytes.begin() + static_cast<std::ptrdiff_t>(y * bytes_per_line));
}

bool SegmentSource::Read(uint64_t at, size_t count, uint8_t* out) const {
  const uint64_t begin = std::min<uint64_t>(offset_ + at, file_.size());
  const uint64_t there = std::min<uint64_t>(count, file_.size() - begin);
  std::copy_n(file_.begin() + static_cast<std::ptrdiff_t>(begin), there, out);
  return there == count;
}

// ---- Sample conversion ----

namespace {

// Two 12-bit samples, big-endian in three bytes, into the low-nibble-first packing.
void RepackTwelve(Bytes& row, size_t length) {
  for (size_t group = 0; length >= 1 && group <= (length - 1) / 3; ++group) {
    const size_t at = 3 * group;
    const auto byte = [&](size_t i) { return at + i < row.size() ? uint32_t{row[at + i]} : 0U; };
    const uint32_t a = byte(0);
    const uint32_t b = byte(1);
    const uint32_t c = byte(2);
    const std::array<uint32_t, 3> packed = {a << 4 | b >> 4, c << 4 | a >> 4, b << 4 | c >> 4};
    for (size_t i = 0; i < 3 && at + i < row.size(); ++i) row[at + i] = static_cast<uint8_t>(packed[i]);
  }
}

// 32-bit samples to 8 bits between a minimum and a maximum; nothing clamps.
void NormaliseToBytes(Bytes& row, size_t length, int32_t minimum, int32_t maximum) {
  const auto difference =
      static_cast<int32_t>(static_cast<uint32_t>(maximum) - static_cast<uint32_t>(minimum));
  Bytes result(length);
  for (size_t i = 0; i < length; ++i) {
    uint32_t value = 0;
    for (size_t k = 0; k < 4; ++k) value = value << 8 | (4 * i + k < row.size() ? row[4 * i + k] : 0U);
    if (difference == 0) continue;
    const double scaled = (value * 255.0 - minimum * 255.0) / difference;
    result[i] = static_cast<uint8_t>(static_cast<uint64_t>(static_cast<int64_t>(scaled)));
  }
  std::copy_n(result.begin(), std::min(length, row.size()), row.begin());
}

// 16-bit words from `abpp` significant bits to the full range of `nbpp`, stored low byte first.
void StretchWords(Bytes& row, uint32_t nbpp, uint32_t abpp, size_t length) {
  const auto full = static_cast<uint16_t>((uint64_t{1} << nbpp) - 1);
  const auto significant = static_cast<uint16_t>((uint64_t{1} << abpp) - 1);
  for (size_t word = 0; word < length / 2; ++word) {
    const uint32_t value = uint32_t{row[2 * word]} << 8 | row[2 * word + 1];
    const auto product = static_cast<int32_t>(value * uint32_t{full});
    const int32_t stretched = product / int32_t{significant};
    row[2 * word] = static_cast<uint8_t>(stretched & 0xFF);
    row[2 * word + 1] = static_cast<uint8_t>((stretched >> 8) & 0xFF);
  }
}

}  // namespace

void ReferenceConvert(Bytes& row, uint32_t nbpp, uint32_t abpp, size_t length, int32_t minimum,
                      int32_t maximum) {
  if (abpp == nbpp) {
    if (nbpp == 12) RepackTwelve(row, length);
  } else if (nbpp >= 17 && nbpp <= 32) {
    NormaliseToBytes(row, length, minimum, maximum);
  } else if (abpp >= 9 && abpp <= 16 && nbpp <= 32) {
    StretchWords(row, nbpp, abpp, length);
  }
}

SampleRange ScanRange(const SegmentSource& source) {
  SampleRange range{-1, -1};
  for (uint64_t at = 0; at < source.length();) {
    const auto chunk = static_cast<size_t>(std::min<uint64_t>(50000, source.length() - at));
    Bytes bytes(chunk);
    if (!source.Read(at, chunk, bytes.data())) return range;
    for (size_t i = 0; i < chunk / 4; ++i) {
      const auto value = static_cast<int32_t>(BigEndian32(bytes.data() + 4 * i));
      if (i == 0 && range.minimum == -1 && range.maximum == -1) range = {value, value};
      range.minimum = std::min(range.minimum, value);
      range.maximum = std::max(range.maximum, value);
    }
    at += chunk;
  }
  return range;
}

// ---- Mask table ----

uint32_t BigEndian32(const uint8_t* bytes) {
  return uint32_t{bytes[0]} << 24 | uint32_t{bytes[1]} << 16 | uint32_t{bytes[2]} << 8 | bytes[3];
}

MaskTable ReadMaskTable(const ImageSpec& image, const SegmentSource& source) {
  MaskTable table;
  if (!image.HasMaskTable()) return table;
  std::array<uint8_t, 10> head = {};
  source.Read(0, head.size(), head.data());
  table.imdatoff = BigEndian32(head.data());
  const auto half = [&](size_t at) { return uint32_t{head[at]} << 8 | head[at + 1]; };
  table.pad_code.resize((half(8) + 7) / 8);
  uint64_t at = head.size();
  source.Read(at, table.pad_code.size(), table.pad_code.data());
  at += table.pad_code.size();
  const auto entries = [&](uint32_t record_length) -> std::optional<std::vector<uint32_t>> {
    if (record_length == 0) return std::nullopt;
    std::vector<uint32_t> list(image.BlockCount() * image.bands.size());
    for (uint32_t& entry : list) {
      std::array<uint8_t, 4> bytes = {};
      source.Read(at, bytes.size(), bytes.data());
      entry = BigEndian32(bytes.data());
      at += bytes.size();
    }
    return list;
  };
  table.block = entries(half(4));
  table.pad = entries(half(6));
  return table;
}

// ---- Colour ----

namespace {

bool IsMono(const ImageSpec& image) {
  return image.irep.starts_with("MONO");
}

std::vector<Rgb> GreyRamp(uint32_t bits) {
  const uint32_t top = (1U << bits) - 1;
  std::vector<Rgb> ramp;
  for (uint32_t i = 0; i <= top; ++i) {
    const auto grey = static_cast<uint8_t>((i * 255 + top / 2) / top);
    ramp.push_back({grey, grey, grey});
  }
  return ramp;
}

// A bitmap's own ramp, over which the first 255 entries of the fixed palette of the sample depth are put: its
// ramp, and white behind it.
std::vector<Rgb> FixedPalette(uint32_t depth, uint32_t sample_bits) {
  std::vector<Rgb> palette = GreyRamp(depth);
  const std::vector<Rgb> ramp = GreyRamp(sample_bits);
  for (size_t i = 0; i < std::min<size_t>(255, palette.size()); ++i) {
    palette[i] = i < ramp.size() ? ramp[i] : Rgb{255, 255, 255};
  }
  return palette;
}

// The look-up table of the last band that has one; a second table and a third are its green and blue.
std::vector<Rgb> LookupPalette(const ImageSpec& image) {
  std::vector<Rgb> palette;
  for (const BandSpec& band : image.bands) {
    if (band.luts.empty() || band.luts[0].empty()) continue;
    const size_t green = band.luts.size() > 1 ? 1 : 0;
    const size_t blue = band.luts.size() > 1 ? 2 : 0;
    palette.clear();
    for (size_t i = 0; i < band.luts[0].size(); ++i) {
      palette.push_back({band.luts[0][i], band.luts[green].at(i), band.luts[blue].at(i)});
    }
  }
  return palette;
}

uint8_t FullScaleToByte(uint64_t value, uint64_t top) {
  return static_cast<uint8_t>((value * 255 + top / 2) / top);
}

}  // namespace

SegmentBitmap CreateSegment(const ImageSpec& image) {
  uint32_t depth = (image.bands.size() > 1 ? 3 : 1) * image.nbpp;
  if (IsMono(image) && (depth == 32 || depth == 64)) depth = 8;
  SegmentBitmap segment;
  const bool known = (depth >= 1 && depth <= 8) || depth == 12 || depth == 16 || depth == 24 || depth == 32 ||
                     depth == 48 || depth == 64;
  if (!known) {
    segment.status = ERR_INVALID_BPP;
    return segment;
  }
  segment.rows = PackedRows(image.nppbh * image.nbpr, image.nppbv * image.nbpc, depth);
  if (depth <= 8) segment.palette = FixedPalette(depth, std::min(8U, image.nbpp));
  const std::vector<Rgb> lookup = depth <= 16 ? LookupPalette(image) : std::vector<Rgb>();
  if (lookup.size() > 256) throw std::logic_error("a palette beyond 256 entries is the host's matter");
  // Up to 8 bits the entries behind the table stay; deeper samples have the table's entries and are grey
  // beyond.
  if (segment.palette.size() < lookup.size() && depth > 8) segment.palette.resize(lookup.size());
  std::copy_n(lookup.begin(), std::min(lookup.size(), segment.palette.size()), segment.palette.begin());
  return segment;
}

Rgb SegmentBitmap::ColourAt(uint32_t x, uint32_t y) const {
  const uint64_t value = rows.Get(x, y);
  if (rows.bits <= 8) return palette.at(value);
  if (rows.bits == 12 || rows.bits == 16) {
    const uint64_t sample = rows.bits == 16 && !native_words ? (value >> 8 | (value & 0xFF) << 8) : value;
    if (sample < palette.size()) return palette[sample];
    const uint8_t grey = FullScaleToByte(sample, (uint64_t{1} << rows.bits) - 1);
    return {grey, grey, grey};
  }
  if (rows.bits == 24 || rows.bits == 32) {
    return {static_cast<uint8_t>(value >> 16), static_cast<uint8_t>(value >> 8), static_cast<uint8_t>(value)};
  }
  throw std::logic_error("no reference colour at this depth");
}

// ---- Choice of the path ----

SegmentBitmap DecodeSegment(const ImageSpec& image, const SegmentSource& source) {
  SegmentBitmap segment = CreateSegment(image);
  if (segment.status != SUCCESS) return segment;
  const MaskTable masks = ReadMaskTable(image, source);
  const BlockWork work{image, source, masks};
  if (image.ic == "C0" || image.ic == "C2" || image.ic == "M0" || image.ic == "M2") {
    segment.status = ERR_NOT_SUPPORTED;
  } else if (image.ic != "NC" && image.ic != "NM") {
    throw std::logic_error("coded data have no reference");
  } else if (image.pvtype.starts_with('B')) {
    DecodeBilevel(work, segment);
  } else if (image.bands.size() >= 3) {
    DecodeInterleaved(work, segment);
  } else if (image.nbpr < 2 && image.nbpc < 2) {
    DecodeOneBlock(work, IsMono(image), segment);
  } else {
    DecodeManyBlocks(work, segment);
  }
  return segment;
}

}  // namespace tavi_test

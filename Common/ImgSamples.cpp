#include "ImgSamples.h"

#include <algorithm>
#include <cmath>
#include <cstring>

#include "NitfFile.h"

namespace tavi {

TAVI_UNIT(L"Common/ImgSamples")

namespace {

enum class Conversion { kNone, kRepack12, kNormalise, kStretch };

Conversion ConversionFor(uint32_t sample_bits, uint32_t actual_bits) {
  if (actual_bits == sample_bits) return sample_bits == 12 ? Conversion::kRepack12 : Conversion::kNone;
  if (sample_bits >= 17 && sample_bits <= 32) return Conversion::kNormalise;
  // Containers above 32 bits have no place in the range of values, so nothing is stretched there.
  if (actual_bits >= 9 && actual_bits <= 16 && sample_bits <= 16) return Conversion::kStretch;
  return Conversion::kNone;
}

// Two big-endian packed samples become the low-nibble-first packing of a 12-bit bitmap.
void Repack12(uint8_t* row, uint64_t length) {
  if (length == 0) return;
  for (uint64_t group = 0; group <= (length - 1) / 3; ++group, row += 3) {
    const uint32_t a = row[0];
    const uint32_t b = row[1];
    const uint32_t c = row[2];
    row[0] = static_cast<uint8_t>(a << 4 | b >> 4);
    row[1] = static_cast<uint8_t>(c << 4 | a >> 4);
    row[2] = static_cast<uint8_t>(b << 4 | c >> 4);
  }
}

// The low byte of a real number truncated toward zero; infinities and undefined values give 0.
uint8_t LowByte(double value) {
  constexpr double kLimit = 9.2e18;
  if (!(std::fabs(value) < kLimit)) return 0;
  return static_cast<uint8_t>(static_cast<int64_t>(value));
}

// The writes of the bytes trail the reads of the four-byte values, so the row can be worked in place.
void Normalise(uint8_t* row, uint64_t length, int32_t minimum, int32_t maximum) {
  const auto d = static_cast<int32_t>(static_cast<uint32_t>(maximum) - static_cast<uint32_t>(minimum));
  const double base = minimum * 255.0;
  for (uint64_t i = 0; i < length; ++i) {
    const uint32_t value = ReadBig32(row + 4 * i);
    std::memcpy(row + 4 * i, &value, sizeof value);
    row[i] = d == 0 ? uint8_t{0} : LowByte((value * 255.0 - base) / d);
  }
}

constexpr uint32_t FullScale(uint32_t bits) {
  return (1U << bits) - 1;
}

void Stretch(uint8_t* row, uint64_t length, uint32_t sample_bits, uint32_t actual_bits) {
  const auto full = static_cast<int32_t>(FullScale(sample_bits));
  const double actual = FullScale(actual_bits);
  for (uint64_t i = 0; i + 1 < length; i += 2) {
    const auto sample = static_cast<int32_t>(ReadBig16(row + i));
    // A quotient of 32-bit whole numbers truncates exactly in double precision, and the loop vectorises.
    const auto scaled = static_cast<int32_t>(WrapMultiply(sample, full) / actual);
    row[i] = static_cast<uint8_t>(scaled);
    row[i + 1] = static_cast<uint8_t>(scaled >> 8);
  }
}

}  // namespace

uint64_t ConversionExtent(uint32_t sample_bits, uint32_t actual_bits, uint64_t length) {
  switch (ConversionFor(sample_bits, actual_bits)) {
    case Conversion::kNormalise:
      return length * 4;
    case Conversion::kRepack12:
      return (length + 2) / 3 * 3;
    default:
      return length;
  }
}

bool NeedsConversion(uint32_t sample_bits, uint32_t actual_bits) {
  return ConversionFor(sample_bits, actual_bits) != Conversion::kNone;
}

int32_t ConvertSamples(uint8_t* row, uint32_t sample_bits, uint32_t actual_bits, uint64_t length,
                       int32_t minimum, int32_t maximum) {
  switch (ConversionFor(sample_bits, actual_bits)) {
    case Conversion::kRepack12:
      Repack12(row, length);
      break;
    case Conversion::kNormalise:
      Normalise(row, length, minimum, maximum);
      break;
    case Conversion::kStretch:
      Stretch(row, length, sample_bits, actual_bits);
      break;
    case Conversion::kNone:
      break;
  }
  return SUCCESS;
}

int32_t ScanSampleRange(int32_t& minimum, int32_t& maximum, uint32_t data_length, NitfFile& document,
                        uint32_t index) {
  constexpr uint32_t kChunk = 50000;  // a multiple of four, so that values stay aligned
  const int64_t start = ImageDataPosition(document, index);
  if (document.SourceSize - start < static_cast<int64_t>(std::min(data_length, kChunk))) return ERR_FILE_READ;
  HostArray<uint8_t> chunk;
  if (!chunk.Allocate(std::max<uint64_t>(std::min(data_length, kChunk), sizeof(uint32_t)), Here())) {
    return ERR_NO_MEMORY;
  }
  for (uint32_t offset = 0; offset < data_length;) {
    const uint32_t length = std::min(data_length - offset, kChunk);
    SeekSource(document, start + offset, kFromStart);
    if (ReadSource(document, chunk.data(), length) != length) return ERR_FILE_READ;
    if (minimum == -1 && maximum == -1) minimum = maximum = static_cast<int32_t>(ReadBig32(chunk.data()));
    for (uint32_t i = 0; i + 4 <= length; i += 4) {
      const auto value = static_cast<int32_t>(ReadBig32(chunk.data() + i));
      minimum = std::min(minimum, value);
      maximum = std::max(maximum, value);
    }
    offset += length;
  }
  return SUCCESS;
}

void ConvertFloatRow(uint8_t* row, uint64_t samples, uint32_t, float minimum, float maximum) {
  const float base = minimum * 255.0F;
  const float d = maximum - minimum;
  for (uint64_t i = 0; i < samples; ++i) {
    // The integer's value counts, not its bit pattern.
    const auto sample = static_cast<float>(static_cast<int32_t>(ReadBig32(row + 4 * i)));
    std::memcpy(row + 4 * i, &sample, sizeof sample);
    row[i] = LowByte(static_cast<double>((sample * 255.0F - base) / d));
  }
}

void ConvertDoubleRow(uint8_t* row, uint64_t samples, uint32_t, double minimum, double maximum) {
  const double base = minimum * 255.0;
  const double d = maximum - minimum;
  for (uint64_t i = 0; i < samples; ++i) {
    const uint64_t bits =
        ReadBig32(row + 8 * i + 4);  // the low half of the eight bytes, the high half cleared
    double wide;
    std::memcpy(&wide, &bits, sizeof wide);
    const auto sample = static_cast<double>(static_cast<float>(wide));
    std::memcpy(row + 8 * i, &sample, sizeof sample);
    row[i] = LowByte((sample * 255.0 - base) / d);
  }
}

}  // namespace tavi

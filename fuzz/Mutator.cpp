// Changes whole files so that half of them stay files: one segment is changed by itself, and the lengths in the file
// header are put in step with it. Without this nearly every change of length ends at the first table.
#include <algorithm>
#include <cstring>
#include <random>
#include <span>
#include <vector>

#include <cstddef>
#include <cstdint>

extern "C" size_t LLVMFuzzerMutate(uint8_t* data, size_t size, size_t max_size);

namespace {

using Bytes = std::vector<uint8_t>;

// A length field of the file header and the bytes that it counts.
struct Part {
  size_t field;
  size_t digits;
  size_t length;
};

uint64_t Number(std::span<const uint8_t> digits) {
  uint64_t value = 0;
  for (const uint8_t c : digits) {
    if (c < '0' || c > '9') return 0;
    value = value * 10 + (c - '0');
  }
  return value;
}

void PutNumber(uint8_t* field, size_t digits, uint64_t value) {
  for (size_t i = digits; i > 0; --i, value /= 10) field[i - 1] = static_cast<uint8_t>('0' + value % 10);
}

// The parts of a 2.1 file in their order; empty when the header does not hold together.
std::vector<Part> PartsOf(std::span<const uint8_t> file) {
  constexpr size_t kFirstCount = 360;
  constexpr size_t kGap = 0;
  const struct {
    size_t subheader, data;
  } kTables[] = {{6, 10}, {4, 6}, {kGap, kGap}, {4, 5}, {4, 9}, {4, 7}};
  std::vector<Part> parts;
  size_t at = kFirstCount;
  for (const auto& table : kTables) {
    if (at + 3 > file.size()) return {};
    const uint64_t count = Number(file.subspan(at, 3));
    at += 3;
    if (table.data == kGap) continue;
    for (uint64_t i = 0; i < count; ++i) {
      for (const size_t digits : {table.subheader, table.data}) {
        if (at + digits > file.size()) return {};
        parts.push_back({at, digits, static_cast<size_t>(Number(file.subspan(at, digits)))});
        at += digits;
      }
    }
  }
  return parts;
}

size_t ChangePart(uint8_t* data, size_t size, size_t max_size, unsigned int seed) {
  constexpr size_t kLengthField = 354;
  constexpr size_t kFileLengthField = 342;
  const std::span<const uint8_t> file(data, size);
  if (size < 400) return 0;
  const std::vector<Part> parts = PartsOf(file);
  const size_t header = static_cast<size_t>(Number(file.subspan(kLengthField, 6)));
  if (parts.empty() || header > size) return 0;
  std::minstd_rand random(seed);
  const size_t chosen = random() % parts.size();
  size_t start = header;
  for (size_t i = 0; i < chosen; ++i) start += parts[i].length;
  const Part& part = parts[chosen];
  if (start > size || part.length > size - start) return 0;
  // Room to grow by some.
  const size_t room = std::min(part.length + 64 + part.length / 2, max_size - size + part.length);
  if (room == 0) return 0;
  Bytes piece(room);
  std::copy_n(data + start, part.length, piece.begin());
  const size_t changed = LLVMFuzzerMutate(piece.data(), part.length, room);
  const size_t rest = size - start - part.length;
  std::memmove(data + start + changed, data + start + part.length, rest);
  std::copy_n(piece.begin(), changed, data + start);
  PutNumber(data + part.field, part.digits, changed);
  PutNumber(data + kFileLengthField, 12, start + changed + rest);
  return start + changed + rest;
}

}  // namespace

extern "C" size_t LLVMFuzzerCustomMutator(uint8_t* data, size_t size, size_t max_size, unsigned int seed) {
  if (seed % 2 == 0) {
    const size_t changed = ChangePart(data, size, max_size, seed / 2);
    if (changed != 0) return changed;
  }
  return LLVMFuzzerMutate(data, size, max_size);
}

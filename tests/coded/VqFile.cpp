#include "VqFile.h"

#include <algorithm>
#include <map>

namespace tavi_test {
namespace {

void Put(Bytes& to, uint64_t value, int bytes) {
  for (int i = bytes - 1; i >= 0; --i) to.push_back(static_cast<uint8_t>(value >> (8 * i)));
}

// Reads the file onward from a place.
class Reader {
 public:
  Reader(const Bytes& bytes, size_t at) : bytes_(bytes), at_(at) {}

  std::optional<uint32_t> Number(int width) {
    uint32_t value = 0;
    for (int i = 0; i < width; ++i) {
      if (at_ >= bytes_.size()) return std::nullopt;
      value = value << 8 | bytes_[at_++];
    }
    return value;
  }
  void Skip(size_t count) { at_ += count; }

 private:
  const Bytes& bytes_;
  size_t at_;
};

struct Kernels {
  uint32_t width = 0;
  uint32_t height = 0;
  uint32_t size = 0;
  uint32_t entries = 0;
  Bytes codebook;

  [[nodiscard]] std::vector<uint32_t> Words(uint32_t code) const {
    std::vector<uint32_t> words(size);
    if (code >= entries) return words;
    for (size_t i = 0; i < size; ++i) words[i] = codebook[size_t{code} * size + i];
    return words;
  }
};

// A block's pixels in the making. `line` is the tile's bytes per line.
struct Block {
  Bytes bytes;
  size_t line = 0;
  uint32_t width = 0;

  void Store(int64_t at, uint32_t value) {
    if (at >= 0 && static_cast<uint64_t>(at) < bytes.size())
      bytes[static_cast<size_t>(at)] = static_cast<uint8_t>(value);
  }

  void StoreBytes(const Kernels& k, const std::vector<uint32_t>& words, int64_t start, uint32_t step) {
    int64_t cursor = start;
    size_t word = 0;
    for (uint32_t row = 0; row < k.width; ++row) {
      for (uint32_t x = 0; x < k.width * step; ++x, ++word, ++cursor) {
        if (word < words.size()) Store(cursor, words[word]);
      }
      cursor += int64_t{step} * (int64_t{width} - k.width);
    }
  }

  void StoreWords(const Kernels& k, const std::vector<uint32_t>& words, int64_t start) {
    int64_t cursor = start;
    size_t word = 0;
    for (uint32_t row = 0; row < k.width; ++row) {
      for (uint32_t x = 0; x < k.width; ++x, ++word, cursor += 2) {
        if (word >= words.size()) continue;
        Store(cursor, words[word] & 0xFF);
        Store(cursor + 1, words[word] >> 8);
      }
      cursor += 2 * (start - int64_t{k.width});
    }
    const uint32_t half = k.size / 2;
    const uint32_t groups = half >= 1 ? (half - 1) / 3 + 1 : 0;
    for (uint32_t group = 0; group < groups; ++group, cursor += 6) {
      if (cursor < 0 || static_cast<uint64_t>(cursor) + 3 > bytes.size()) continue;
      const auto at = static_cast<size_t>(cursor);
      Bytes three(bytes.begin() + static_cast<std::ptrdiff_t>(at),
                  bytes.begin() + static_cast<std::ptrdiff_t>(at + 3));
      ReferenceConvert(three, 12, 12, 3, 0, 0);
      std::copy(three.begin(), three.end(), bytes.begin() + static_cast<std::ptrdiff_t>(at));
    }
  }
};

bool TakeCode(Reader& in, uint32_t bits, uint32_t& code) {
  VqReservoir& reservoir = Reservoir();
  while (reservoir.count < bits) {
    const auto byte = in.Number(1);
    if (!byte) return false;
    reservoir.bits = reservoir.bits << 8 | *byte;
    reservoir.count += 8;
  }
  reservoir.count -= bits;
  code = (reservoir.bits >> reservoir.count) & static_cast<uint16_t>((1U << bits) - 1);
  return true;
}

std::vector<Rgb> PaletteOf(const ImageSpec& image, uint32_t bits) {
  std::vector<Rgb> palette;
  if (bits > 8) return palette;
  const std::vector<Bytes>& luts = image.bands.back().luts;
  for (uint32_t i = 0; i < 1U << bits; ++i) {
    const auto grey = static_cast<uint8_t>(bits == 8 ? i : i * 255 / ((1U << bits) - 1));
    Rgb entry{grey, grey, grey};
    if (!luts.empty()) {
      const auto value = [&](size_t table) {
        const Bytes& lut = luts[luts.size() == 3 ? table : 0];
        return i < lut.size() ? lut[i] : uint8_t{0};
      };
      entry = {value(0), value(1), value(2)};
    }
    palette.push_back(entry);
  }
  return palette;
}

int32_t ReadKernels(Reader& in, uint32_t tables, Kernels& k) {
  for (uint32_t record = 0; record < tables; ++record) {
    in.Skip(2);
    const auto count = in.Number(4);
    in.Skip(7);
    if (!count || !in.Number(1)) return ERR_FILE_READ;
    if (record == 0) k.entries = *count;
  }
  // Room for what the later tables of the last entry would run into.
  k.codebook.resize(size_t{k.entries} * k.size + size_t{tables} * k.height);
  for (uint32_t table = 0; table < tables; ++table) {
    for (uint32_t entry = 0; entry < k.entries; ++entry) {
      for (uint32_t i = 0; i < k.height; ++i) {
        const auto byte = in.Number(1);
        if (!byte) return ERR_FILE_READ;
        k.codebook[size_t{entry} * k.size + size_t{table} * k.height + i] = static_cast<uint8_t>(*byte);
      }
    }
  }
  return SUCCESS;
}

}  // namespace

Bytes VqStream::Head() const {
  Bytes head;
  const uint16_t records = record_count.value_or(static_cast<uint16_t>(tables.size()));
  Put(head, image_rows, 4);
  Put(head, codes_per_row, 4);
  Put(head, code_bits, 1);
  Put(head, 1, 2);  // algorithm
  Put(head, records, 2);
  Put(head, 0, 2);  // parameter records
  Put(head, 0x1234, 4);
  Put(head, 14, 2);
  for (size_t i = 0; i < records; ++i) {
    Put(head, i + 1, 2);
    Put(head, i == 0 ? entries : 7, 4);  // only the first one's count is used
    Put(head, 4, 2);
    Put(head, 8, 2);
    Put(head, 0xABCDEF01, 4);
  }
  return head;
}

Bytes VqStream::Build() const {
  Bytes bytes = Head();
  for (const Bytes& table : tables) bytes.insert(bytes.end(), table.begin(), table.end());
  uint64_t pending = 0;
  uint32_t count = 0;
  for (const uint32_t code : codes) {
    pending = pending << code_bits | code;
    count += code_bits;
    for (; count >= 8; count -= 8) bytes.push_back(static_cast<uint8_t>(pending >> (count - 8)));
  }
  if (count > 0) bytes.push_back(static_cast<uint8_t>(pending << (8 - count)));
  bytes.insert(bytes.end(), tail.begin(), tail.end());
  return bytes;
}

VqStream EncodeExactly(const ImageSpec& image, const Bytes& picture, uint32_t side) {
  VqStream stream;
  stream.image_rows = image.nppbv / side;
  stream.codes_per_row = image.nppbh / side;
  stream.tables.resize(side);
  std::map<Bytes, uint32_t> known;
  const size_t width = size_t{image.nppbh} * image.nbpr;
  for (uint32_t block = 0; block < image.BlockCount(); ++block) {
    const size_t x0 = size_t{block % image.nbpr} * image.nppbh;
    const size_t y0 = size_t{block / image.nbpr} * image.nppbv;
    for (size_t y = y0; y < y0 + image.nppbv; y += side) {
      for (size_t x = x0; x < x0 + image.nppbh; x += side) {
        Bytes kernel;
        for (size_t line = 0; line < side; ++line) {
          const auto row = picture.begin() + static_cast<std::ptrdiff_t>((y + line) * width + x);
          kernel.insert(kernel.end(), row, row + side);
        }
        const auto [place, fresh] = known.try_emplace(kernel, stream.entries);
        if (fresh) {
          ++stream.entries;
          for (size_t line = 0; line < side; ++line) {
            const auto row = kernel.begin() + static_cast<std::ptrdiff_t>(line * side);
            stream.tables[line].insert(stream.tables[line].end(), row, row + side);
          }
        }
        stream.codes.push_back(place->second);
      }
    }
  }
  stream.code_bits = 1;
  while (1U << stream.code_bits < stream.entries) ++stream.code_bits;
  return stream;
}

VqReservoir& Reservoir() {
  static VqReservoir reservoir;
  return reservoir;
}

SegmentBitmap DecodeVq(const ImageSpec& image, const BuiltFile& built) {
  const size_t data = built.At("image[0].data").offset;
  const SegmentSource source(built.bytes, data, 0);
  const MaskTable mask = image.HasMaskTable() ? ReadMaskTable(image, source) : MaskTable{};
  const auto present = [&](uint32_t block) { return !mask.block || (*mask.block)[block] != kAbsentBlock; };
  uint32_t x = 0;
  uint32_t y = 0;
  for (uint32_t block = 0; block < image.BlockCount(); ++block) {
    if (!present(block)) continue;
    x = std::max(x, block % image.nbpr * image.nppbh);
    y = std::max(y, block / image.nbpr * image.nppbv);
  }
  const uint32_t bits =
      image.irep == "MONO" && image.nbpp == 32 ? 8 : (image.bands.size() > 1 ? 3 : 1) * image.nbpp;
  SegmentBitmap segment;
  segment.rows = PackedRows(x + image.nppbh, y + image.nppbv, bits);
  segment.palette = PaletteOf(image, bits);
  const auto fail = [&](int32_t status) {
    segment.status = status;
    return segment;
  };

  Reader in(built.bytes, data);
  if (image.HasMaskTable()) in.Skip(image.MaskTable().size() - image.mask.gap.size());
  const auto rows = in.Number(4);
  const auto across = in.Number(4);
  const auto code_bits = in.Number(1);
  in.Skip(2);
  const auto tables = in.Number(2);
  in.Skip(7);
  if (!rows || !across || !code_bits || !tables || !in.Number(1)) return fail(ERR_FILE_READ);
  if (*rows == 0 || *across == 0 || *tables == 0 || *code_bits == 0 || *code_bits > 16)
    return fail(ERR_FILE_FORMAT);
  Kernels k;
  k.height = image.nppbv / *rows;
  k.width = image.nppbh / *across;
  k.size = k.width * k.height;
  if (k.size == 0) return fail(ERR_FILE_FORMAT);
  const int32_t status = ReadKernels(in, *tables, k);
  if (status != SUCCESS) return fail(status);

  const PackedRows tile(image.nppbh, image.nppbv, bits);
  const size_t per_pixel = bits == 8 ? 1 : (bits == 12 || bits == 16 ? 2 : 3);
  Block block{Bytes(std::max(size_t{image.nppbh} * image.nppbv * per_pixel, tile.bytes.size())),
              tile.bytes_per_line, image.nppbh};
  for (uint32_t index = 0; index < image.BlockCount(); ++index) {
    if (!present(index)) continue;
    for (uint32_t r = 0; r < image.nppbv; r += k.height) {
      for (uint32_t i = 0; i < *across; ++i) {
        uint32_t code = 0;
        if (!TakeCode(in, *code_bits, code)) return fail(ERR_FILE_READ);
        const auto start = static_cast<int64_t>(r * block.line + i * k.height);
        if (bits == 8) block.StoreBytes(k, k.Words(code), start, 1);
        if (bits == 24) block.StoreBytes(k, k.Words(code), start, 3);
        if (bits == 12) block.StoreWords(k, k.Words(code), start);
      }
    }
    PackedRows pixels = tile;
    std::copy_n(block.bytes.begin(), pixels.bytes.size(), pixels.bytes.begin());
    std::fill_n(block.bytes.begin(), pixels.bytes.size(), uint8_t{0});
    for (uint32_t row = 0; row < image.nppbv; ++row) {
      for (uint32_t column = 0; column < image.nppbh; ++column) {
        segment.rows.Set(index % image.nbpr * image.nppbh + column, index / image.nbpr * image.nppbv + row,
                         pixels.Get(column, row));
      }
    }
  }
  return segment;
}

}  // namespace tavi_test

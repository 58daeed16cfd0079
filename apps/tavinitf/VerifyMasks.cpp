// The mask table before the data of a masked image: its own lengths, and where its entries point.
#include <algorithm>
#include <string>

#include "FieldBytes.h"
#include "Verify.h"
#include "VerifyImage.h"

namespace tavinitf {
namespace {

constexpr uint64_t kHeadWidth = 10;  // IMDATOFF, BMRLNTH, TMRLNTH, TPXCDLNTH
constexpr uint64_t kEntryWidth = 4;
constexpr uint32_t kAbsent = 0xFFFFFFFF;

std::string ShownEntry(uint32_t entry) {
  return entry == kAbsent ? "absent (FFFFFFFF)" : std::to_string(entry);
}

class MaskCheck {
 public:
  MaskCheck(const Subject& subject, const Segment& image)
      : subject_(subject), image_(image), shape_(ShapeOf(image)) {}

  void Run() {
    if (!TakeHead()) return;
    const uint64_t pad_bytes = DivideUp(pad_bits_, 8);
    const uint64_t entries = shape_.MaskEntries();
    const uint64_t table = Times(entries, kEntryWidth);
    const uint64_t tables = Times(table, (block_length_ != 0 ? 1U : 0U) + (pad_length_ != 0 ? 1U : 0U));
    CheckHead(kHeadWidth + pad_bytes, tables);
    const uint64_t start = image_.Find("IMDATOFF")->offset + kHeadWidth + pad_bytes;
    // What the file or the segment has no room for has been told of, and is not looked at.
    if (tables == 0 || tables > image_.data.length || start + tables > subject_.contents.file_size) return;
    CheckEntries(start, table, entries);
  }

 private:
  struct Table {
    const char* name;
    uint64_t start;
    bool exists;
  };

  bool TakeHead() {
    if (image_.Find("IMDATOFF") == nullptr || image_.Find("TPXCDLNTH") == nullptr) return false;
    const auto number = [&](const char* name) {
      const Field& field = *image_.Find(name);
      return uint64_t{NumberAt(field.bytes, 0, static_cast<uint32_t>(field.size))};
    };
    data_offset_ = number("IMDATOFF");
    block_length_ = number("BMRLNTH");
    pad_length_ = number("TMRLNTH");
    pad_bits_ = number("TPXCDLNTH");
    return true;
  }

  void AddNumber(const char* name, uint64_t found, const std::string& expected) {
    const Field& field = *image_.Find(name);
    subject_.findings.Add(image_, field, field.offset, std::to_string(found), expected);
  }

  void CheckHead(uint64_t head, uint64_t tables) {
    const uint64_t length = image_.data.length;
    if (tables > length || data_offset_ < head + tables) {
      AddNumber("IMDATOFF", data_offset_,
                "at least " + std::to_string(head + std::min(tables, UINT64_MAX - head)) +
                    ", the length of the mask table");
    } else if (data_offset_ > length) {
      AddNumber("IMDATOFF", data_offset_, "at most " + std::to_string(length) + ", the length of the data");
    }
    if (block_length_ != 0 && block_length_ != kEntryWidth) AddNumber("BMRLNTH", block_length_, "0 or 4");
    if (pad_length_ != 0 && pad_length_ != kEntryWidth) AddNumber("TMRLNTH", pad_length_, "0 or 4");
    constexpr uint64_t kDeepest = 64;
    if (pad_bits_ > kDeepest) AddNumber("TPXCDLNTH", pad_bits_, "at most 64 bits");
    if (pad_length_ != 0 && pad_bits_ == 0)
      AddNumber("TPXCDLNTH", pad_bits_, "the bits of a pad pixel's code");
  }

  // A piece of each table at a time: they can be as long as the file.
  void CheckEntries(uint64_t start, uint64_t table, uint64_t entries) {
    constexpr uint64_t kPiece = 16384;
    const Table blocks{"BMRnBNDm", start, block_length_ != 0};
    const Table pads{"TMRnBNDm", start + (blocks.exists ? table : 0), pad_length_ != 0};
    for (uint64_t first = 0; first < entries; first += kPiece) {
      const uint64_t count = std::min(kPiece, entries - first);
      const std::string block_piece = PieceOfTable(blocks, first, count);
      const std::string pad_piece = PieceOfTable(pads, first, count);
      for (uint64_t i = 0; i < count; ++i) CheckEntry(blocks, pads, block_piece, pad_piece, first, i);
    }
  }

  std::string PieceOfTable(const Table& table, uint64_t first, uint64_t count) {
    if (!table.exists) return {};
    const Field field{table.name, -1, -1, table.start, (first + count) * kEntryWidth, {}};
    return PieceOf(subject_.file, field, first * kEntryWidth, count * kEntryWidth);
  }

  void CheckEntry(const Table& blocks, const Table& pads, const std::string& block_piece,
                  const std::string& pad_piece, uint64_t first, uint64_t i) {
    const size_t at = i * kEntryWidth;
    const bool has_block = at + kEntryWidth <= block_piece.size();
    const bool has_pad = at + kEntryWidth <= pad_piece.size();
    const uint32_t block = has_block ? NumberAt(block_piece, at, kEntryWidth) : kAbsent;
    const uint32_t pad = has_pad ? NumberAt(pad_piece, at, kEntryWidth) : kAbsent;
    if (block != kAbsent) CheckOffset(blocks, first + i, block);
    if (pad == kAbsent) return;
    if (!has_block) {
      CheckOffset(pads, first + i, pad);
    } else if (pad != block) {
      AddEntry(pads, first + i, pad, "absent or the block's own offset, which is " + ShownEntry(block));
    }
  }

  void CheckOffset(const Table& table, uint64_t index, uint32_t entry) {
    const uint64_t length = image_.data.length;
    const uint64_t size = shape_.IsUncompressed() ? shape_.StoredBlockBytes() : 1;
    const uint64_t room = length > data_offset_ ? length - data_offset_ : 0;
    if (size <= room && entry <= room - size) return;
    AddEntry(
        table, index, entry,
        size <= room
            ? "absent or at most " + std::to_string(room - size) + ", so that the block ends within the data"
            : "absent: the data have " + std::to_string(room) + " bytes, a block " + std::to_string(size));
  }

  void AddEntry(const Table& table, uint64_t index, uint32_t found, const std::string& expected) {
    const auto place = static_cast<int32_t>(std::min<uint64_t>(index, INT32_MAX));
    subject_.findings.Add({image_.kind, image_.index, table.name, place, -1,
                           table.start + index * kEntryWidth, ShownEntry(found), expected});
  }

  const Subject& subject_;
  const Segment& image_;
  ImageShape shape_;
  uint64_t data_offset_ = 0;
  uint64_t block_length_ = 0;
  uint64_t pad_length_ = 0;
  uint64_t pad_bits_ = 0;
};

}  // namespace

void VerifyMasks(const Subject& subject) {
  for (const Segment& segment : subject.contents.segments) {
    if (segment.kind == SegmentKind::kImage) MaskCheck(subject, segment).Run();
  }
}

}  // namespace tavinitf

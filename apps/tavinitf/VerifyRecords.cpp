// The extended data areas: the tagged records fill them, and an overflow into a data extension is told of on both
// sides.
#include <algorithm>
#include <array>

#include "FieldBytes.h"
#include "TaggedRecords.h"
#include "Verify.h"

namespace tavinitf {
namespace {

struct Area {
  SegmentKind kind;
  const char* length;
  const char* overflow;
  const char* block;
};
constexpr std::array<Area, 7> kAreas = {{{SegmentKind::kFileHeader, "UDHDL", "UDHOFL", "UDHD"},
                                         {SegmentKind::kFileHeader, "XHDL", "XHDLOFL", "XHD"},
                                         {SegmentKind::kImage, "UDIDL", "UDOFL", "UDID"},
                                         {SegmentKind::kImage, "IXSHDL", "IXSOFL", "IXSHD"},
                                         {SegmentKind::kGraphic, "SXSHDL", "SXSOFL", "SXSHD"},
                                         {SegmentKind::kLabel, "LXSHDL", "LXSOFL", "LXSHD"},
                                         {SegmentKind::kText, "TXSHDL", "TXSOFL", "TXSHD"}}};
constexpr uint64_t kTagWidth = 6;
constexpr uint64_t kRecordHead = 11;
constexpr char kOverflowId[] = "TRE_OVERFLOW";

bool IsOverflow(const Segment& segment) {
  return segment.kind == SegmentKind::kDataExtension && segment.Text("DESID").substr(0, 12) == kOverflowId;
}

// The records of one area, one after another, each from the file: an overflow can be as long as that.
class RecordWalk {
 public:
  RecordWalk(const Subject& subject, const Segment& segment, const Field& block)
      : subject_(subject), segment_(segment), block_(block) {}

  void Run() {
    for (uint64_t at = 0; at < block_.size;) {
      const std::string head = PieceOf(subject_.file, block_, at, kRecordHead);
      if (head.size() < kRecordHead) {
        Add(at, head, "a record's tag and length, or the area's end");
        return;
      }
      const Field digits{"", -1, -1, 0, kRecordHead - kTagWidth, head.substr(kTagWidth)};
      const std::optional<uint64_t> length = DigitsOf(digits);
      if (!length || !IsTag(head)) {
        Add(at, head, "a record: a tag of six printable characters and a length of five digits");
        return;
      }
      at += kRecordHead;
      if (*length > block_.size - at) {
        Add(at - kRecordHead, head,
            "a record that ends within the area, with at most " + std::to_string(block_.size - at) +
                " bytes");
        return;
      }
      at += *length;
    }
  }

 private:
  static bool IsTag(const std::string& head) {
    return head[0] != ' ' &&
           std::all_of(head.begin(), head.begin() + kTagWidth, [](char c) { return c >= ' ' && c <= '~'; });
  }

  void Add(uint64_t at, const std::string& found, const std::string& expected) {
    subject_.findings.Add(segment_, block_, block_.offset + at, found, expected);
  }

  const Subject& subject_;
  const Segment& segment_;
  const Field& block_;
};

// DESITEM counts the segments of a kind from 1; the file header is 0.
uint64_t ItemOf(const Segment& segment) {
  return segment.kind == SegmentKind::kFileHeader ? 0 : uint64_t{segment.index} + 1;
}

void VerifyOverflowNumber(const Subject& subject, const Segment& segment, const Area& area) {
  const auto number = TakeNumber(subject, segment, area.overflow);
  if (!number || *number == 0) return;
  const Segment* extension =
      subject.contents.Find(SegmentKind::kDataExtension, static_cast<uint32_t>(*number - 1));
  const Field& field = *segment.Find(area.overflow);
  if (extension == nullptr) {
    subject.findings.Add(segment, field, "000 or the number of a data extension: the file has no such one");
  } else if (!IsOverflow(*extension) || extension->Text("DESOFLW") != area.block ||
             extension->Number("DESITEM") != ItemOf(segment)) {
    subject.findings.Add(segment, field,
                         std::string("the number of a TRE_OVERFLOW that names ") + area.block + " " +
                             std::to_string(ItemOf(segment)));
  }
}

void VerifyArea(const Subject& subject, const Segment& segment, const Area& area) {
  const Field* length_field = segment.Find(area.length);
  if (length_field == nullptr) return;
  const auto length = TakeNumber(subject, segment, area.length);
  constexpr uint64_t kOverflowWidth = 3;
  if (length && *length != 0 && *length < kOverflowWidth)
    subject.findings.Add(segment, *length_field, "0 or at least 3");
  if (segment.Find(area.overflow) != nullptr) VerifyOverflowNumber(subject, segment, area);
  if (const Field* block = segment.Find(area.block)) RecordWalk(subject, segment, *block).Run();
}

// The area that an overflow continues points back to it.
void VerifyOverflow(const Subject& subject, const Segment& extension) {
  const Field* named = extension.Find("DESOFLW");
  if (named == nullptr) return;
  const auto* area = std::find_if(kAreas.begin(), kAreas.end(),
                                  [&](const Area& a) { return extension.Text("DESOFLW") == a.block; });
  if (area == kAreas.end()) {
    subject.findings.Add(extension, *named, "UDHD, XHD, UDID, IXSHD, SXSHD or TXSHD");
    return;
  }
  const auto item = TakeNumber(subject, extension, "DESITEM");
  if (!item) return;
  const bool of_header = area->kind == SegmentKind::kFileHeader;
  const Segment* owner = nullptr;
  if (of_header == (*item == 0))
    owner = subject.contents.Find(area->kind, of_header ? 0 : static_cast<uint32_t>(*item - 1));
  const Field& field = *extension.Find("DESITEM");
  if (owner == nullptr) {
    subject.findings.Add(extension, field,
                         of_header ? "000, the file header"
                                   : std::string("the number of a segment of kind ") + KindName(area->kind));
  } else if (owner->Number(area->overflow) != uint64_t{extension.index} + 1) {
    subject.findings.Add(extension, field,
                         std::string("the number of a segment with ") + area->overflow + " " +
                             std::to_string(extension.index + 1));
  }
}

void VerifySegment(const Subject& subject, const Segment& segment) {
  for (const Area& area : kAreas) {
    if (area.kind == segment.kind) VerifyArea(subject, segment, area);
  }
  if (!IsOverflow(segment)) return;
  VerifyOverflow(subject, segment);
  const uint64_t size = subject.contents.file_size;
  const uint64_t left = segment.data.offset < size ? size - segment.data.offset : 0;
  const Field data{"data", -1, -1, segment.data.offset, std::min(segment.data.length, left), {}};
  RecordWalk(subject, segment, data).Run();
}

}  // namespace

void VerifyRecords(const Subject& subject) {
  VerifySegment(subject, subject.contents.header);
  for (const Segment& segment : subject.contents.segments) VerifySegment(subject, segment);
}

}  // namespace tavinitf

#include "Comparison.h"

#include <algorithm>
#include <array>
#include <fstream>
#include <map>
#include <string_view>
#include <tuple>

#include "FieldBytes.h"

namespace tavinitf {
namespace {

constexpr uint64_t kPiece = 1 << 20;
constexpr size_t kShown = 80;

using Key = std::tuple<std::string, int32_t, int32_t>;

std::map<Key, const Field*> FieldsByName(const Segment& segment) {
  std::map<Key, const Field*> fields;
  // Of a field that a streamed file gives twice the later one holds.
  for (const Field& field : segment.fields) fields[{field.name, field.index, field.sub_index}] = &field;
  return fields;
}

std::string Shown(const Field& field) {
  if (FindBinaryForm(field) != nullptr || field.size > kShown) {
    return std::to_string(field.size) + " bytes";
  }
  return "\"" + Printable(field.bytes) + "\"";
}

class Comparer {
 public:
  Comparer(const ComparedFile& before, const ComparedFile& after)
      : before_(before),
        after_(after),
        file_before_(before.path, std::ios::binary),
        file_after_(after.path, std::ios::binary) {}

  std::vector<Change> Run() {
    CompareSegments(before_.contents.header, after_.contents.header);
    for (const Segment& segment : before_.contents.segments) {
      const Segment* other = after_.contents.Find(segment.kind, segment.index);
      CompareSegments(segment, other != nullptr ? *other : Segment{});
      if (other != nullptr) CompareData(segment, *other);
    }
    for (const Segment& segment : after_.contents.segments) {
      if (before_.contents.Find(segment.kind, segment.index) == nullptr) AddNew(segment, {});
    }
    return std::move(changes_);
  }

 private:
  void CompareSegments(const Segment& before, const Segment& after) {
    const std::map<Key, const Field*> others = FieldsByName(after);
    const std::map<Key, const Field*> own = FieldsByName(before);
    for (const Field& field : before.fields) {
      const Key key{field.name, field.index, field.sub_index};
      if (own.at(key) != &field) continue;
      const auto other = others.find(key);
      if (other == others.end()) {
        changes_.push_back({before.kind, before.index, field.name, field.index, field.sub_index, Shown(field),
                            "", true, false});
      } else if (!SameBytes(field, *other->second)) {
        std::string now = Shown(*other->second);
        if (now == Shown(field)) now = "others";
        changes_.push_back({before.kind, before.index, field.name, field.index, field.sub_index, Shown(field),
                            now, false, false});
      }
    }
    AddNew(after, own);
  }

  void AddNew(const Segment& segment, const std::map<Key, const Field*>& known) {
    for (const Field& field : segment.fields) {
      if (known.contains({field.name, field.index, field.sub_index})) continue;
      changes_.push_back({segment.kind, segment.index, field.name, field.index, field.sub_index, "",
                          Shown(field), false, true});
    }
  }

  bool SameBytes(const Field& a, const Field& b) {
    if (a.size != b.size || a.bytes != b.bytes) return false;
    for (uint64_t at = a.bytes.size(); at < a.size; at += kPiece) {
      if (PieceOf(file_before_, a, at, kPiece) != PieceOf(file_after_, b, at, kPiece)) return false;
    }
    return true;
  }

  // A mask table is a part of the data whose fields are compared one by one.
  static Field DataField(const Segment& segment) {
    uint64_t start = segment.data.offset;
    for (const Field& field : segment.fields) start = std::max(start, field.offset + field.size);
    start = std::min(start, segment.data.end());
    return {"data", -1, -1, start, segment.data.end() - start, {}};
  }

  void CompareData(const Segment& before, const Segment& after) {
    const Field a = DataField(before);
    const Field b = DataField(after);
    if (SameBytes(a, b)) return;
    const std::string now = a.size == b.size ? "others" : std::to_string(b.size) + " bytes";
    changes_.push_back(
        {before.kind, before.index, "data", -1, -1, std::to_string(a.size) + " bytes", now, false, false});
  }

  const ComparedFile& before_;
  const ComparedFile& after_;
  std::ifstream file_before_;
  std::ifstream file_after_;
  std::vector<Change> changes_;
};

// The same number in digits, where one has blanks or a sign as well.
bool SameNumber(const std::string& before, const std::string& after) {
  const auto digits = [](const std::string& shown) {
    std::string text = shown;
    std::erase_if(text, [](char c) { return c == '"' || c == ' ' || c == '+'; });
    const bool number = !text.empty() && text.find_first_not_of("0123456789") == std::string::npos;
    text.erase(0, std::min(text.find_first_not_of('0'), text.size()));
    return number ? text : std::string("-");
  };
  return digits(before) != "-" && digits(before) == digits(after);
}

}  // namespace

std::string Change::Line() const {
  std::string text = KindName(kind);
  if (kind != SegmentKind::kFileHeader) text += " " + std::to_string(index);
  text += ": " + IndexedName(field, field_index, sub_index) + " ";
  if (only_before) return text + before + " is left out";
  if (only_after) return text + after + " is new";
  return text + before + " becomes " + after;
}

std::vector<Change> Compare(const ComparedFile& before, const ComparedFile& after) {
  return Comparer(before, after).Run();
}

bool IsWritersOwn(const Change& change) {
  constexpr std::array<std::string_view, 9> kFields = {"FSDCXM", "SCOLOR", "IMAG",     "COMRAT",  "IREP",
                                                       "PVTYPE", "PJUST",  "BMRnBNDm", "TMRnBNDm"};
  if (change.only_before || change.only_after) return false;
  if (std::find(kFields.begin(), kFields.end(), change.field) != kFields.end()) return true;
  if (change.field == "LRESH") return true;
  if (change.field == "FL" && change.after == "\"000002147483647\"") return true;
  return SameNumber(change.before, change.after);
}

uint64_t EndOfSegments(const NitfContents& contents) {
  uint64_t end = contents.header.Number("HL");
  if (!contents.segments.empty()) end = contents.segments.back().data.end();
  for (const Field& field : contents.header.fields) {
    if (field.name == "LRESH" || field.name == "LRE") end += contents.header.Number(field.name, field.index);
  }
  return end;
}

}  // namespace tavinitf

#include "RecordFields.h"

#include <algorithm>
#include <cstdlib>
#include <span>

#include "PublicMembers.h"

namespace tavinitf {
namespace {

using tavi::Member;
using tavi::MemberKind;

std::span<const Member> MembersOf(SegmentKind kind) {
  switch (kind) {
    case SegmentKind::kFileHeader:
      return tavi::file_header::kMembers;
    case SegmentKind::kImage:
      return tavi::image::kMembers;
    case SegmentKind::kGraphic:
      return tavi::graphic::kMembers;
    case SegmentKind::kText:
      return tavi::text::kMembers;
    default:
      return {};
  }
}

int32_t NumberIn(const std::string& digits) {
  return static_cast<int32_t>(std::strtol(digits.c_str(), nullptr, 10));
}

// Puts the bytes into the members that show the field. A text points to the bytes, so they outlive its use.
void PutBytes(void* record, const Member& member, const std::string& bytes) {
  constexpr size_t kHalf = 5;
  switch (member.kind) {
    case MemberKind::kText:
      tavi::SetMember(record, member.offset, bytes.c_str());
      break;
    case MemberKind::kChars:
      std::memcpy(static_cast<char*>(record) + member.offset, bytes.data(),
                  std::min<size_t>(member.extra, bytes.size()));
      break;
    case MemberKind::kNumber:
      tavi::SetMember(record, member.offset, NumberIn(bytes));
      break;
    case MemberKind::kHalf:
      tavi::SetMember(record, member.offset, NumberIn(bytes.substr(member.extra, kHalf)));
      break;
    default:
      break;
  }
}

// The setter takes the first member of a location for the first half, where the getter shows the second.
template <class Record>
void ExchangeHalves(Record& record) {
  if constexpr (requires { record.ILOC_ROW; }) {
    const int32_t row = record.ILOC_ROW;
    record.ILOC_ROW = record.ILOC_COLUMN;
    record.ILOC_COLUMN = row;
  } else if constexpr (requires { record.SLOC_ROW; }) {
    const uint32_t row = record.SLOC_ROW;
    record.SLOC_ROW = record.SLOC_COLUMN;
    record.SLOC_COLUMN = row;
  }
}

// The operations on one kind of record, with the index bound.
template <class Record, class Get, class Set, class Free>
bool Takes(std::span<const Member> members, const std::string& field, const std::string& bytes, Get get,
           Set set, Free free) {
  Record record{};
  bool taken = true;
  if (get(&record) == SUCCESS) {
    const Record kept = record;
    ExchangeHalves(record);
    const bool takes_old = set(&record) == SUCCESS;
    record = kept;
    for (const Member& member : members) {
      if (field == member.field) PutBytes(&record, member, bytes);
    }
    ExchangeHalves(record);
    taken = set(&record) == SUCCESS || !takes_old;
    record = kept;
  }
  free(&record);
  return taken;
}

}  // namespace

FieldForm FormOf(SegmentKind kind, const std::string& field) {
  const std::span<const Member> members = MembersOf(kind);
  const auto found =
      std::find_if(members.begin(), members.end(), [&](const Member& m) { return field == m.field; });
  if (found == members.end()) return FieldForm::kText;
  switch (found->kind) {
    case MemberKind::kNumber:
      return FieldForm::kNumber;
    case MemberKind::kChars:
      return FieldForm::kDate;
    case MemberKind::kHalf:
      return FieldForm::kPair;
    default:
      return FieldForm::kText;
  }
}

bool SetterTakes(const Document& document, const Selector& segment, const std::string& field,
                 const std::string& bytes) {
  NitfHandle handle = document.handle();
  const uint32_t index = segment.index;
  const std::span<const Member> members = MembersOf(segment.kind);
  switch (segment.kind) {
    case SegmentKind::kImage:
      return Takes<NitfImageHeaderInfo>(
          members, field, bytes, [&](auto* r) { return Tavi_NITFGetImageHeader(handle, index, r); },
          [&](auto* r) { return Tavi_NITFSetImageHeader(handle, index, r); }, Tavi_NITFFreeImageHeader);
    case SegmentKind::kGraphic:
      return Takes<NitfGraphicHeaderInfo>(
          members, field, bytes, [&](auto* r) { return Tavi_NITFGetGraphicHeader(handle, index, r); },
          [&](auto* r) { return Tavi_NITFSetGraphicHeader(handle, index, r); }, Tavi_NITFFreeGraphicHeader);
    case SegmentKind::kText:
      return Takes<NitfTextHeaderInfo>(
          members, field, bytes, [&](auto* r) { return Tavi_NITFGetTextHeader(handle, index, r); },
          [&](auto* r) { return Tavi_NITFSetTextHeader(handle, index, r); }, Tavi_NITFFreeTextHeader);
    default:
      return true;  // the file header's setter refuses nothing
  }
}

}  // namespace tavinitf

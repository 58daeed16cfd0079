// The public header records: one table for each says which field of the header each member of the record
// shows. Getters, setters and free operations walk it.
#pragma once

#include <cstdint>
#include <cstring>
#include <span>
#include <string_view>

#include "HeaderLayout.h"
#include "TaviNitf.h"

namespace tavi {

enum class MemberKind : uint8_t {
  kText,      // char*: a copy of the field's text
  kChars,     // char[n]: the field's first n characters
  kNumber,    // 32 bits: the number that the text begins with
  kHalf,      // 32 bits: the number in one half of a ten-character location; `extra` is the half's first
              // character
  kOwned,     // a pointer that a getter fills by a rule of its own
  kBandList,  // a list of NBANDS texts, filled by no getter
};

struct Member {
  MemberKind kind = MemberKind::kText;
  uint16_t offset = 0;  // in the record
  uint16_t extra = 0;   // characters of a date, or the first character of a half
  const char* field = nullptr;
  bool filled = true;  // false: the getter leaves it alone, only the setter looks at it
};

// Members of `Record` that show the field of the same name.
#define MEMBER_TEXT(NAME)                               \
  Member {                                              \
    MemberKind::kText, offsetof(Record, NAME), 0, #NAME \
  }
#define MEMBER_CHARS(NAME)                                                  \
  Member {                                                                  \
    MemberKind::kChars, offsetof(Record, NAME), sizeof(Record::NAME), #NAME \
  }
#define MEMBER_NUMBER(NAME)                               \
  Member {                                                \
    MemberKind::kNumber, offsetof(Record, NAME), 0, #NAME \
  }
#define MEMBER_OWNED(NAME)                               \
  Member {                                               \
    MemberKind::kOwned, offsetof(Record, NAME), 0, #NAME \
  }
#define MEMBER_BAND_LIST(NAME)                              \
  Member {                                                  \
    MemberKind::kBandList, offsetof(Record, NAME), 0, #NAME \
  }
#define MEMBER_TAKEN_NUMBER(NAME)                                \
  Member {                                                       \
    MemberKind::kNumber, offsetof(Record, NAME), 0, #NAME, false \
  }
#define MEMBER_TAKEN_CHARS(NAME)                                                   \
  Member {                                                                         \
    MemberKind::kChars, offsetof(Record, NAME), sizeof(Record::NAME), #NAME, false \
  }
// A member that shows half of the field FIELD.
#define MEMBER_HALF(NAME, FIELD, FIRST)                      \
  Member {                                                   \
    MemberKind::kHalf, offsetof(Record, NAME), FIRST, #FIELD \
  }

// A caller's copy of a stored text, which ends at its first NUL or at `limit`. Null without memory.
char* CopyFieldString(const char* text, uint64_t limit);

// Where a member stands in a caller's record; the records are byte-packed, so values go in and out by copy.
template <class Value>
Value GetMember(const void* record, uint16_t offset) {
  Value value;
  std::memcpy(&value, static_cast<const char*>(record) + offset, sizeof value);
  return value;
}
template <class Value>
void SetMember(void* record, uint16_t offset, Value value) {
  std::memcpy(static_cast<char*>(record) + offset, &value, sizeof value);
}

// The characters of a field of a header, and how far they may run on.
struct StoredText {
  const char* chars;
  uint64_t limit;
};
template <class R>
StoredText FindText(const R& source, std::span<const FieldRow<R>> rows, std::string_view field) {
  for (const FieldRow<R>& row : rows) {
    if (row.slot_size == 0 || field != row.name) continue;
    return {reinterpret_cast<const char*>(&source.Text) + row.slot, sizeof source.Text - row.slot};
  }
  return {"", 1};
}

// Fills one member from the text of its field. ERR_NO_MEMORY.
int32_t FillMember(void* record, const Member& member, StoredText text);

// Fills all members that show a field's text.
template <class R>
int32_t FillMembers(void* record, std::span<const Member> members, const R& source,
                    std::span<const FieldRow<R>> rows) {
  for (const Member& member : members) {
    if (!member.filled || member.kind == MemberKind::kOwned || member.kind == MemberKind::kBandList) continue;
    const int32_t status = FillMember(record, member, FindText(source, rows, member.field));
    if (status != SUCCESS) return status;
  }
  return SUCCESS;
}

// Frees the pointer at `offset` and sets it to null.
void FreeMember(void* record, uint16_t offset);
// Frees every pointer of the record, band lists excepted.
void FreeMembers(void* record, std::span<const Member> members);

}  // namespace tavi

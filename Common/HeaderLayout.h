// The one statement of every header's layout.
//
// A header of the format is a constexpr table of rows in file order: NtfHdr.cpp, ImSubHdr.cpp, GrSubHdr.cpp,
// TxSubHdr.cpp, LbSubHdr.cpp and DExSbHdr.cpp hold one each. A table is the only place where a field's name,
// width and order stand. The reader (HeaderReader.h), the constructors, the setters and the listing of fields
// all walk it.
//
// To add a field: give the record's `Texts` a buffer of its largest width plus one byte, and put a row at its
// place:
//
//     TEXT(NICOM, 1).Number(&R::CommentCount)     text of one byte, with the number beside it
//     TEXT(ISCODE, 11, 40).Blank()                11 bytes in a 2.1 file, 40 in a 2.0 file; starts as blanks
//     TEXT(ISDWNG, kAbsent, 6)                    in the 2.0 layout only
//     TEXT(IGEOLO, 60).When(HasCorners)           present by a rule that looks at the fields before it
//
// The writer (SaveFields.h) walks the same rows: it completes a text with what its record's kFill says and takes
// it from the buffer, or from the working list of a table of lengths. What it takes from elsewhere, or leaves out
// or adds, is a named rule of the row as well:
//
//     TEXT(NROWS, 8).Number(&R::Rows).WrittenFromNumber()
//     TEXT(HL, 6)….WrittenAs(WorkingHeaderLength)      the text by a rule; null repeats the text before it
//     TEXT(FBKGC, 3)….WrittenBy(WriteBackground)       bytes that are no text
//
// The setters (HeaderSetter.h) walk them too. A text takes the whole buffer, a number goes into the digits and into
// the numbers beside them, a text with codes is taken only if it has one. What a field's setter does otherwise is
// named in its row:
//
//     TEXT(NICOM, 1).Number(&R::CommentCount).SetsDigitsOnly()
//     TEXT(IC, 2)….SetBy(SetIc)
//
// To add a repeated group: state its columns in a table of their own and name it with Repeat(…). To add a
// block of bytes whose length stands in a field: Block(…). What no column expresses is a named function in
// the row (Then, Own), never a branch in the walk. The mistake to avoid: a presence rule can only rely on
// rows above its own.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

#include "HostObjects.h"
#include "TaviStatus.h"
#include "Utility.h"

struct NitfFile;

namespace tavi {

enum class Layout : uint8_t { kNitf21, kNitf20 };

// A field's width in the file by layout; kAbsent where a layout lacks it.
inline constexpr uint16_t kAbsent = 0;
struct Widths {
  constexpr explicit Widths(uint16_t both) : nitf21(both), nitf20(both) {}
  constexpr Widths(uint16_t in21, uint16_t in20) : nitf21(in21), nitf20(in20) {}
  constexpr uint16_t In(Layout layout) const { return layout == Layout::kNitf20 ? nitf20 : nitf21; }
  uint16_t nitf21;
  uint16_t nitf20;
};

// A text of the file and the code that stands for it; `compared` characters of the field decide, the first
// match wins.
struct CodeText {
  uint32_t code;
  const char* text;
  uint8_t compared;
};

// What a field's buffer holds in a new record.
enum class Start : uint8_t {
  kNul,        // all bytes zero
  kBlank,      // blanks and a NUL behind the widest layout
  kOpenBlank,  // blanks to the last byte
};

// What completes a text that is shorter than its field: zeros before it, or blanks behind it.
enum class Fill : uint8_t { kZero, kBlank };

class FieldReader;
class FieldWriter;

template <class Record>
struct FieldRow {
  using R = Record;

  // A field just read: its characters (not terminated), its width, its place in the repeated group.
  struct Field {
    const char* chars;
    uint32_t width;
    uint32_t index;
    Layout layout;
  };

  const char* name = nullptr;
  Widths width{kAbsent};
  bool (*present)(const R&, Layout) = nullptr;  // null: present wherever the layout has it

  // Where the text is kept: a buffer of R::Texts, a slot of a repeated group, or nowhere.
  uint16_t slot = 0;
  uint16_t slot_size = 0;
  char* (*place)(R&, uint32_t index) = nullptr;
  bool terminated = R::kTerminatesTexts;
  Start start = Start::kNul;
  const char* start_text = nullptr;

  // What must stand in the file: one of `accepted`, texts of the field's width divided by "|".
  const char* accepted = nullptr;
  int32_t refusal = SUCCESS;
  const char* message = nullptr;  // shown in a message box when refused

  // What is computed from it.
  uint32_t R::*number = nullptr;
  uint32_t R::*second_number = nullptr;
  int32_t R::*signed_number = nullptr;
  std::span<const CodeText> codes{};
  uint32_t R::*code = nullptr;
  bool code_required = false;
  int32_t R::*pair_first = nullptr;
  int32_t R::*pair_second = nullptr;
  LengthList R::*list = nullptr;
  LengthList R::*second_list = nullptr;
  const char* sentinel = nullptr;  // says that the true value stands in a streaming file header
  int32_t (*then)(R&, const Field&) = nullptr;

  // A repeated group: `columns` once for each of `count` entries, after `prepare` has made room for them.
  std::span<const FieldRow> columns{};
  uint32_t (*count)(const R&) = nullptr;
  int32_t (*prepare)(R&, uint32_t count) = nullptr;

  // A block of bytes with a NUL behind it; a negative length cannot be read.
  HostArray<uint8_t> R::*block = nullptr;
  int64_t (*block_length)(const R&) = nullptr;

  // Reads itself.
  int32_t (*own)(R&, FieldReader&, uint32_t index) = nullptr;

  // How it is written, where that is not the stored text.
  Fill fill = R::kFill;
  bool from_number = false;
  const char* (*text_rule)(const R&, FieldWriter&, uint32_t index) = nullptr;
  int32_t (*write)(const R&, FieldWriter&, uint32_t index, uint32_t width) = nullptr;
  bool (*written)(const R&, Layout) = nullptr;  // null: as `present`
  uint32_t (*written_count)(const R&, const NitfFile&) = nullptr;

  // How it is set, where the kind of its value does not say all.
  int32_t (*set_text)(R&, const FieldRow&, const char* text) = nullptr;
  int32_t (*set_number)(R&, const FieldRow&, uint32_t value) = nullptr;
  int32_t (*set_pair)(R&, const FieldRow&, int32_t first, int32_t second) = nullptr;
  bool set_digits_only = false;  // the numbers stay as they are
  bool set_first_only = false;   // of two lists

  // ---- How rows are written. Each of these returns the row with one column filled. ----

  constexpr FieldRow When(bool (*rule)(const R&, Layout)) const {
    return With([&](FieldRow& row) { row.present = rule; });
  }
  constexpr FieldRow In(char* (*where)(R&, uint32_t)) const {
    return With([&](FieldRow& row) { row.place = where; });
  }
  constexpr FieldRow Terminated() const {
    return With([](FieldRow& row) { row.terminated = true; });
  }
  constexpr FieldRow Blank() const {
    return With([](FieldRow& row) { row.start = Start::kBlank; });
  }
  constexpr FieldRow OpenBlank() const {
    return With([](FieldRow& row) { row.start = Start::kOpenBlank; });
  }
  constexpr FieldRow SecurityText() const {
    return With([](FieldRow& row) { row.start = R::kSecurityStart; });
  }
  constexpr FieldRow DowngradeText() const {
    return With([](FieldRow& row) { row.start = R::kDowngradeStart; });
  }
  constexpr FieldRow Starts(const char* text) const {
    return With([&](FieldRow& row) { row.start_text = text; });
  }
  constexpr FieldRow Must(const char* texts, int32_t status, const char* shown = nullptr) const {
    return With([&](FieldRow& row) {
      row.accepted = texts;
      row.refusal = status;
      row.message = shown;
    });
  }
  constexpr FieldRow Number(uint32_t R::*to, uint32_t R::*also = nullptr) const {
    return With([&](FieldRow& row) {
      row.number = to;
      row.second_number = also;
    });
  }
  constexpr FieldRow Number(int32_t R::*to) const {
    return With([&](FieldRow& row) { row.signed_number = to; });
  }
  constexpr FieldRow Code(uint32_t R::*to, std::span<const CodeText> table) const {
    return With([&](FieldRow& row) {
      row.code = to;
      row.codes = table;
    });
  }
  constexpr FieldRow CodeOrRefuse(uint32_t R::*to, std::span<const CodeText> table, int32_t status,
                                  const char* shown = nullptr) const {
    return Code(to, table).With([&](FieldRow& row) {
      row.code_required = true;
      row.refusal = status;
      row.message = shown;
    });
  }
  constexpr FieldRow Pair(int32_t R::*first, int32_t R::*second) const {
    return With([&](FieldRow& row) {
      row.pair_first = first;
      row.pair_second = second;
    });
  }
  constexpr FieldRow Length(LengthList R::*to, LengthList R::*also = nullptr) const {
    return With([&](FieldRow& row) {
      row.list = to;
      row.second_list = also;
    });
  }
  constexpr FieldRow Streamed(const char* text) const {
    return With([&](FieldRow& row) { row.sentinel = text; });
  }
  constexpr FieldRow Then(int32_t (*what)(R&, const Field&)) const {
    return With([&](FieldRow& row) { row.then = what; });
  }
  constexpr FieldRow SetBy(int32_t (*rule)(R&, const FieldRow&, const char*)) const {
    return With([&](FieldRow& row) { row.set_text = rule; });
  }
  constexpr FieldRow SetBy(int32_t (*rule)(R&, const FieldRow&, uint32_t)) const {
    return With([&](FieldRow& row) { row.set_number = rule; });
  }
  constexpr FieldRow SetBy(int32_t (*rule)(R&, const FieldRow&, int32_t, int32_t)) const {
    return With([&](FieldRow& row) { row.set_pair = rule; });
  }
  constexpr FieldRow SetsDigitsOnly() const {
    return With([](FieldRow& row) { row.set_digits_only = true; });
  }
  constexpr FieldRow SetsFirstListOnly() const {
    return With([](FieldRow& row) { row.set_first_only = true; });
  }
  constexpr FieldRow Filled(Fill with) const {
    return With([&](FieldRow& row) { row.fill = with; });
  }
  constexpr FieldRow WrittenFromNumber() const {
    return Filled(Fill::kZero).With([](FieldRow& row) { row.from_number = true; });
  }
  constexpr FieldRow WrittenAs(const char* (*rule)(const R&, FieldWriter&, uint32_t)) const {
    return With([&](FieldRow& row) { row.text_rule = rule; });
  }
  constexpr FieldRow WrittenBy(int32_t (*rule)(const R&, FieldWriter&, uint32_t, uint32_t)) const {
    return With([&](FieldRow& row) { row.write = rule; });
  }
  constexpr FieldRow WrittenWhen(bool (*rule)(const R&, Layout)) const {
    return With([&](FieldRow& row) { row.written = rule; });
  }
  constexpr FieldRow WrittenTimes(uint32_t (*rule)(const R&, const NitfFile&)) const {
    return With([&](FieldRow& row) { row.written_count = rule; });
  }

  template <size_t kColumns>
  static constexpr FieldRow Repeat(const FieldRow (&columns)[kColumns], uint32_t (*count)(const R&),
                                   int32_t (*prepare)(R&, uint32_t)) {
    FieldRow row;
    row.columns = columns;
    row.count = count;
    row.prepare = prepare;
    return row;
  }
  static constexpr FieldRow Block(const char* name, HostArray<uint8_t> R::*to, int64_t (*length)(const R&)) {
    FieldRow row;
    row.name = name;
    row.block = to;
    row.block_length = length;
    return row;
  }
  static constexpr FieldRow Own(int32_t (*read)(R&, FieldReader&, uint32_t)) {
    FieldRow row;
    row.own = read;
    return row;
  }

  // The most characters that a setter accepts: the whole buffer, also where the file field is narrower.
  constexpr uint32_t SetterLimit() const { return slot_size - 1U; }
  char* Text(R& record, uint32_t index) const {
    if (place != nullptr) return place(record, index);
    return slot_size != 0 ? reinterpret_cast<char*>(&record.Text) + slot : nullptr;
  }

 private:
  template <class Change>
  constexpr FieldRow With(Change change) const {
    FieldRow row = *this;
    change(row);
    return row;
  }
};

// A row kept in the buffer of the same name; a row that is kept elsewhere or nowhere.
#define TEXT(FIELD, ...)                                                             \
  FieldRow<R> {                                                                      \
    .name = #FIELD, .width = Widths(__VA_ARGS__), .slot = offsetof(R::Texts, FIELD), \
    .slot_size = sizeof(R::Texts::FIELD)                                             \
  }
#define FIELD_IN_FILE(NAME, ...)               \
  FieldRow<R> {                                \
    .name = NAME, .width = Widths(__VA_ARGS__) \
  }

// The security fields behind the class are the same in every header but for the prefix of their names.
// EVENT_RULE tells when the downgrading event of the 2.0 layout is present. Further columns of the
// declassification exemption may follow.
#define SECURITY_ROWS(PREFIX, EVENT_RULE, ...)                                                       \
  TEXT(PREFIX##CLSY, 2, kAbsent).SecurityText(), TEXT(PREFIX##CODE, 11, 40).SecurityText(),          \
      TEXT(PREFIX##CTLH, 2, 40).SecurityText(), TEXT(PREFIX##REL, 20, 40).SecurityText(),            \
      TEXT(PREFIX##DCTP, 2, kAbsent).SecurityText(), TEXT(PREFIX##DCDT, 8, kAbsent).SecurityText(),  \
      TEXT(PREFIX##DCXM, 4, kAbsent).SecurityText() __VA_ARGS__,                                     \
      TEXT(PREFIX##DG, 1, kAbsent).SecurityText(), TEXT(PREFIX##DGDT, 8, kAbsent).SecurityText(),    \
      TEXT(PREFIX##CLTX, 43, kAbsent).SecurityText(), TEXT(PREFIX##CATP, 1, kAbsent).SecurityText(), \
      TEXT(PREFIX##CAUT, 40, 20).SecurityText(), TEXT(PREFIX##CRSN, 1, kAbsent).SecurityText(),      \
      TEXT(PREFIX##SRDT, 8, kAbsent).SecurityText(), TEXT(PREFIX##CTLN, 15, 20).SecurityText(),      \
      TEXT(PREFIX##DWNG, kAbsent, 6).DowngradeText().Filled(R::kDowngradeFill),                      \
      TEXT(PREFIX##DEVT, kAbsent, 40).DowngradeText().When(EVENT_RULE)

// Their buffers in R::Texts. The order matters in the file header, whose texts run on into each other.
#define SECURITY_BUFFERS(PREFIX)                                                                           \
  char PREFIX##CLSY[3], PREFIX##CODE[41], PREFIX##CTLH[41], PREFIX##REL[41], PREFIX##DCTP[3],              \
      PREFIX##DCDT[9], PREFIX##DCXM[5], PREFIX##DG[2], PREFIX##DGDT[9], PREFIX##CLTX[44], PREFIX##CATP[2], \
      PREFIX##CAUT[41], PREFIX##CRSN[2], PREFIX##SRDT[9], PREFIX##DWNG[7], PREFIX##DEVT[41],               \
      PREFIX##CTLN[21]

// The downgrade text that brings a downgrading event.
inline constexpr char kDowngradeByEvent[] = "999998";
// The classes that a header accepts.
inline constexpr char kSecurityClasses[] = "C|R|S|T|U";

// The bytes of an extended data block whose length field counts the three of its overflow field as well.
inline constexpr int64_t kOverflowWidth = 3;

// Fills the buffers of a new record.
template <class R>
void SetDefaults(R& record, std::span<const FieldRow<R>> rows) {
  for (const FieldRow<R>& row : rows) {
    if (row.slot_size == 0) continue;
    char* text = row.Text(record, 0);
    const bool open = row.start == Start::kOpenBlank;
    if (row.start != Start::kNul) HostMemSet(text, ' ', row.slot_size - (open ? 0U : 1U));
    if (row.start_text != nullptr)
      HostMemCopy(text, row.start_text, std::char_traits<char>::length(row.start_text));
  }
}

}  // namespace tavi

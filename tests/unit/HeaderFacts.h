// A second statement of the headers' fields, which the tests compare with the library's tables. It is typed
// from the format's own tables and not from the code: a width changed by mistake must be changed here as
// well.
#ifndef TAVI_TESTS_UNIT_HEADER_FACTS_H
#define TAVI_TESTS_UNIT_HEADER_FACTS_H

#include <gtest/gtest.h>

#include <cstring>
#include <set>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "HeaderSetter.h"
#include "NtfBuilder.h"
#include "PublicMembers.h"

namespace unit {

// What a new record holds behind a field's start text: zero bytes; blanks and a NUL; blanks to the last byte.
enum class Fill { kZero, kBlank, kOpenBlank };

inline constexpr uint32_t kNone = 0;               // a layout without the field
inline constexpr uint32_t kByLength = 0xFFFFFFFF;  // a block whose length stands in another field

struct FieldFact {
  const char* name;
  size_t offset;  // of the buffer in the record's texts
  size_t buffer;  // its size; 0 for a field that has none
  uint32_t width21;
  uint32_t width20;
  Fill fill = Fill::kZero;
  std::string_view start = "";
  uint32_t setter = 0;  // the most characters that the field's setter takes; 0: no setter

  [[nodiscard]] uint32_t Width(tavi::Layout layout) const {
    return layout == tavi::Layout::kNitf20 ? width20 : width21;
  }
};
using Facts = std::span<const FieldFact>;

#define FACT(TEXTS, NAME, WIDTH21, WIDTH20, ...) \
  { #NAME, offsetof(TEXTS, NAME), sizeof(TEXTS::NAME), WIDTH21, WIDTH20, __VA_ARGS__ }
#define FACT_WITHOUT_BUFFER(NAME, WIDTH21, WIDTH20) \
  { NAME, 0, 0, WIDTH21, WIDTH20 }

// "NAME:width" for each field of a layout, in file order.
inline std::vector<std::string> Sequence(Facts facts, tavi::Layout layout) {
  std::vector<std::string> sequence;
  for (const FieldFact& fact : facts) {
    const uint32_t width = fact.Width(layout);
    if (width == kNone) continue;
    sequence.push_back(std::string(fact.name) + ":" + (width == kByLength ? "*" : std::to_string(width)));
  }
  return sequence;
}

template <class R>
void AddSequence(std::span<const tavi::FieldRow<R>> rows, tavi::Layout layout,
                 std::vector<std::string>& sequence) {
  for (const tavi::FieldRow<R>& row : rows) {
    if (!row.columns.empty()) {
      AddSequence(row.columns, layout, sequence);
    } else if (row.block != nullptr) {
      sequence.push_back(std::string(row.name) + ":*");
    } else if (row.own == nullptr && row.width.In(layout) != tavi::kAbsent) {
      sequence.push_back(std::string(row.name) + ":" + std::to_string(row.width.In(layout)));
    }
  }
}

// The library's table in the same form. What reads itself has no column and is left to the reading tests.
template <class R>
std::vector<std::string> Sequence(std::span<const tavi::FieldRow<R>> rows, tavi::Layout layout) {
  std::vector<std::string> sequence;
  AddSequence(rows, layout, sequence);
  return sequence;
}

// ---- The bytes of a record's texts ----

template <class Texts>
std::string BytesOf(const Texts& texts) {
  return {reinterpret_cast<const char*>(&texts), sizeof texts};
}

inline std::string DefaultTexts(Facts facts, size_t size) {
  std::string texts(size, '\0');
  for (const FieldFact& fact : facts) {
    if (fact.buffer == 0) continue;
    std::string buffer(fact.buffer, fact.fill == Fill::kZero ? '\0' : ' ');
    if (fact.fill == Fill::kBlank) buffer.back() = '\0';
    buffer.replace(0, fact.start.size(), fact.start);
    texts.replace(fact.offset, fact.buffer, buffer);
  }
  return texts;
}

// What reading a file makes of a record's texts: each field of the layout at the start of its buffer, a NUL
// behind those named in `terminated` (all of them when it is empty), and nothing else touched.
inline std::string TextsAfterReading(std::string before, Facts facts, tavi::Layout layout,
                                     const tavi_test::BuiltFile& file, const std::string& prefix,
                                     const std::set<std::string>& terminated = {}) {
  for (const FieldFact& fact : facts) {
    const std::string name = prefix + fact.name;
    if (fact.buffer == 0 || fact.Width(layout) == kNone || !file.places.contains(name)) continue;
    std::string text = file.Text(name);
    EXPECT_EQ(text.size(), fact.Width(layout)) << fact.name;
    if (terminated.empty() || terminated.contains(fact.name)) text += '\0';
    before.replace(fact.offset, text.size(), text);
  }
  return before;
}

// One line for each field whose buffer differs; "" when all agree.
inline std::string Differences(Facts facts, const std::string& expected, const std::string& actual) {
  std::string lines;
  for (const FieldFact& fact : facts) {
    if (fact.buffer == 0) continue;
    const std::string wanted = expected.substr(fact.offset, fact.buffer);
    const std::string found = actual.substr(fact.offset, fact.buffer);
    if (wanted == found) continue;
    lines += std::string(fact.name) + ": wanted " + testing::PrintToString(wanted) + ", found " +
             testing::PrintToString(found) + "\n";
  }
  return lines;
}

// ---- Checks that all headers share ----

// Every buffer holds the larger of its two widths and one byte more.
inline void ExpectBufferSizes(Facts facts) {
  std::set<std::string> names;
  for (const FieldFact& fact : facts) {
    if (fact.buffer == 0) continue;
    names.insert(fact.name);
    uint32_t widest = 0;
    for (const FieldFact& other : facts) {
      if (std::string_view(other.name) == fact.name) {
        widest = std::max({widest, other.width21, other.width20});
      }
    }
    EXPECT_EQ(fact.buffer, widest + 1) << fact.name;
  }
  EXPECT_FALSE(names.empty());
}

// The texts hold nothing but the buffers of the fields stated.
inline void ExpectNoOtherBuffers(Facts facts, size_t size) {
  std::set<size_t> covered;
  for (const FieldFact& fact : facts) {
    for (size_t i = 0; i < fact.buffer; ++i) covered.insert(fact.offset + i);
  }
  EXPECT_EQ(covered.size(), size);
}

// Sets texts one shorter than the limit, at it and one longer, as the exports do.
template <class R>
void ExpectSetters(Facts facts, R& record, std::span<const tavi::FieldRow<R>> rows) {
  for (const FieldFact& fact : facts) {
    if (fact.setter == 0) continue;
    SCOPED_TRACE(fact.name);
    const tavi::FieldRow<R>* const row = tavi::FindRow(rows, fact.name);
    ASSERT_NE(row, nullptr);
    char* buffer = reinterpret_cast<char*>(&record.Text) + fact.offset;
    const auto found = [&] { return std::string(buffer, fact.buffer); };
    const std::string rubbish(fact.buffer, '\x7E');
    std::memcpy(buffer, rubbish.data(), rubbish.size());
    ASSERT_EQ(fact.setter, fact.buffer - 1);
    const std::string full = std::string(fact.setter - 1, 'w') + 'e';
    EXPECT_EQ(tavi::SetText(record, *row, (full + "x").c_str()), ERR_INVALID_PARAMETER);
    EXPECT_EQ(tavi::SetText(record, *row, nullptr), ERR_INVALID_PARAMETER);
    EXPECT_EQ(found(), rubbish) << "after a text too long by one, and none";
    EXPECT_EQ(tavi::SetText(record, *row, full.c_str()), SUCCESS);
    EXPECT_EQ(found(), full + '\0') << "with a text of its width";
    EXPECT_EQ(tavi::SetText(record, *row, full.substr(1).c_str()), SUCCESS);
    EXPECT_EQ(found(), full.substr(1) + ' ' + '\0') << "with a text shorter by one";
  }
  EXPECT_EQ(tavi::FindRow(rows, "NOSUCHFIELD"), nullptr);
}

// The fields whose setter is that of a plain text.
inline std::set<std::string> FieldsWithASetter(Facts facts) {
  std::set<std::string> names;
  for (const FieldFact& fact : facts) {
    if (fact.setter != 0) names.insert(fact.name);
  }
  return names;
}

// The texts of a public record, which its setter takes.
inline std::set<std::string> PublicTexts(std::span<const tavi::Member> members) {
  std::set<std::string> names;
  for (const tavi::Member& member : members) {
    if (member.kind == tavi::MemberKind::kText) names.insert(member.field);
  }
  return names;
}

}  // namespace unit

#endif  // TAVI_TESTS_UNIT_HEADER_FACTS_H

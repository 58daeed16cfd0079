// Puts fields of fixed width one behind the other and remembers where each stands. A text given by name
// replaces what the caller would write.
#ifndef TAVI_TESTS_SUPPORT_FIELD_WRITER_H
#define TAVI_TESTS_SUPPORT_FIELD_WRITER_H

#include <set>
#include <string>
#include <vector>

#include "NtfBuilder.h"

namespace tavi_test {

struct WrittenField {
  std::string name;
  size_t offset;
  size_t length;
};

class FieldWriter {
 public:
  explicit FieldWriter(FieldTexts texts) : texts_(std::move(texts)) {}

  // Writes the text, or the one given for this name, completed with blanks; returns what was written.
  std::string Text(const std::string& name, size_t width, const std::string& text = "");
  // Writes right-justified digits, or the text given for this name.
  void Number(const std::string& name, size_t width, uint64_t value);
  // Writes bytes as they are, or the text given for this name when it has the same length.
  void Raw(const std::string& name, const Bytes& value);
  // Throws when a text was given for a field that has not been written.
  void Finish() const;

  [[nodiscard]] const Bytes& bytes() const { return bytes_; }
  [[nodiscard]] const std::vector<WrittenField>& fields() const { return fields_; }

 private:
  void Put(const std::string& name, const std::string& text);

  FieldTexts texts_;
  std::set<std::string> used_;
  Bytes bytes_;
  std::vector<WrittenField> fields_;
};

}  // namespace tavi_test

#endif  // TAVI_TESTS_SUPPORT_FIELD_WRITER_H

#include "FieldWriter.h"

#include <stdexcept>

namespace tavi_test {

std::string Digits(uint64_t value, size_t width) {
  const std::string digits = std::to_string(value);
  if (digits.size() > width)
    throw std::invalid_argument(digits + " needs more than " + std::to_string(width));
  return std::string(width - digits.size(), '0') + digits;
}

void FieldWriter::Put(const std::string& name, const std::string& text) {
  fields_.push_back({name, bytes_.size(), text.size()});
  bytes_.insert(bytes_.end(), text.begin(), text.end());
}

std::string FieldWriter::Text(const std::string& name, size_t width, const std::string& text) {
  const auto given = texts_.find(name);
  std::string value = given == texts_.end() ? text : given->second;
  if (given != texts_.end()) used_.insert(name);
  if (value.size() > width) throw std::invalid_argument("\"" + value + "\" is too long for " + name);
  value.resize(width, ' ');
  Put(name, value);
  return value;
}

void FieldWriter::Number(const std::string& name, size_t width, uint64_t value) {
  Text(name, width, texts_.contains(name) ? "" : Digits(value, width));
}

void FieldWriter::Raw(const std::string& name, const Bytes& value) {
  const auto given = texts_.find(name);
  if (given == texts_.end()) return Put(name, {value.begin(), value.end()});
  Text(name, value.size());
}

void FieldWriter::Finish() const {
  for (const auto& [name, text] : texts_) {
    if (!used_.contains(name)) throw std::invalid_argument("the layout has no field " + name);
  }
}

}  // namespace tavi_test

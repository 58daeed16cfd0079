#include "CgmElementList.h"

namespace tavi::test {
namespace {

uint32_t WordAt(const std::vector<uint8_t>& bytes, size_t at) {
  return at + 1 < bytes.size() ? uint32_t{bytes[at]} << 8 | bytes[at + 1] : 0;
}

// Returns where the list ends.
size_t ReadPartitions(const std::vector<uint8_t>& bytes, size_t at, CgmElement* element) {
  for (bool more = true; more;) {
    const uint32_t length = WordAt(bytes, at);
    at += 2;
    more = (length & 0x8000) != 0;
    const size_t count = length & 0x7FFF;
    EXPECT_TRUE(!more || count % 2 == 0) << "an odd partition";
    if (at + count > bytes.size()) {
      ADD_FAILURE() << "a partition beyond the end";
      return bytes.size();
    }
    const auto from = bytes.begin() + static_cast<std::ptrdiff_t>(at);
    element->list.insert(element->list.end(), from, from + static_cast<std::ptrdiff_t>(count));
    ++element->partitions;
    at += count;
  }
  return at;
}

}  // namespace

std::vector<CgmElement> ListElements(const std::vector<uint8_t>& metafile) {
  std::vector<CgmElement> elements;
  EXPECT_EQ(metafile.size() % 2, 0u);
  for (size_t at = 0; at + 1 < metafile.size();) {
    CgmElement element;
    element.word = WordAt(metafile, at);
    element.group = element.word >> 12;
    element.id = element.word >> 5 & 0x7F;
    const size_t length = element.word & 0x1F;
    at += 2;
    if (length == 31) {
      at = ReadPartitions(metafile, at, &element);
    } else {
      for (size_t i = 0; i < length && at < metafile.size(); ++i) element.list.push_back(metafile[at++]);
    }
    if (at % 2 != 0) {
      EXPECT_EQ(metafile.at(at), 0) << "padding";
      ++at;
    }
    elements.push_back(std::move(element));
  }
  return elements;
}

std::string CodesOf(const std::vector<CgmElement>& elements, int group) {
  std::string codes;
  for (const CgmElement& element : elements) {
    if (group >= 0 && element.group != static_cast<uint32_t>(group)) continue;
    if (!codes.empty()) codes += ' ';
    codes += std::to_string(element.group) + ',' + std::to_string(element.id);
  }
  return codes;
}

const CgmElement& Find(const std::vector<CgmElement>& elements, uint32_t group, uint32_t id) {
  static const CgmElement kNothing;
  for (const CgmElement& element : elements) {
    if (element.group == group && element.id == id) return element;
  }
  ADD_FAILURE() << "no element " << group << "," << id;
  return kNothing;
}

std::vector<int> Words(const CgmElement& element) {
  std::vector<int> words;
  for (size_t i = 0; i + 1 < element.list.size(); i += 2) {
    words.push_back(static_cast<int16_t>(element.list[i] << 8 | element.list[i + 1]));
  }
  return words;
}

}  // namespace tavi::test

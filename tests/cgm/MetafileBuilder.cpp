#include "MetafileBuilder.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstddef>

namespace tavi::test {

List& List::I(int64_t value, int bits) {
  for (int shift = bits - 8; shift >= 0; shift -= 8) octets_.push_back(static_cast<uint8_t>(value >> shift));
  return *this;
}

List& List::Points(const std::vector<int>& coordinates, int bits) {
  for (const int c : coordinates) I(c, bits);
  return *this;
}

List& List::Rgb(uint8_t red, uint8_t green, uint8_t blue) {
  return Add({red, green, blue});
}

List& List::Fixed(double value) {
  const double whole = std::floor(value);
  return I(static_cast<int64_t>(whole)).I(std::lround((value - whole) * 65536));
}

List& List::Fixed64(double value) {
  const double whole = std::floor(value);
  return I(static_cast<int64_t>(whole), 32).I(std::llround((value - whole) * 4294967296.0), 32);
}

List& List::Float(float value) {
  return I(std::bit_cast<uint32_t>(value), 32);
}
List& List::Double(double value) {
  return I(std::bit_cast<int64_t>(value), 64);
}

List& List::String(const std::string& text) {
  if (text.size() >= 255) return LongString(text, 32767);
  octets_.push_back(static_cast<uint8_t>(text.size()));
  octets_.insert(octets_.end(), text.begin(), text.end());
  return *this;
}

List& List::LongString(const std::string& text, size_t chunk) {
  octets_.push_back(255);
  size_t at = 0;
  do {
    const std::string part = text.substr(at, chunk);
    at += part.size();
    I(static_cast<int64_t>(part.size() | (at < text.size() ? 0x8000U : 0U)));
    octets_.insert(octets_.end(), part.begin(), part.end());
  } while (at < text.size());
  return *this;
}

List& List::Add(const Octets& octets) {
  octets_.insert(octets_.end(), octets.begin(), octets.end());
  return *this;
}

List& List::Align() {
  if (octets_.size() % 2 != 0) octets_.push_back(0);
  return *this;
}

Octets Element(int group, int id, const Octets& list, Form form, size_t partition) {
  const bool is_short = form == Form::kAuto && list.size() < 31;
  List out;
  out.I(group << 12 | id << 5 | (is_short ? static_cast<int>(list.size()) : 31));
  if (is_short) {
    out.Add(list);
  } else {
    const size_t most = form == Form::kPartitioned ? partition : 32766;
    size_t at = 0;
    do {
      const size_t length = std::min(most, list.size() - at);
      const bool more = at + length < list.size();
      out.I(static_cast<int64_t>(length | (more ? 0x8000U : 0U)));
      out.Add(Octets(list.begin() + static_cast<std::ptrdiff_t>(at),
                     list.begin() + static_cast<std::ptrdiff_t>(at + length)));
      at += length;
    } while (at < list.size());
  }
  return out.Align().octets();
}

Octets WithoutEnd(const Octets& octets, size_t count) {
  return {octets.begin(), octets.end() - static_cast<std::ptrdiff_t>(std::min(count, octets.size()))};
}

namespace {

void Append(Octets* to, const Octets& octets) {
  to->insert(to->end(), octets.begin(), octets.end());
}

}  // namespace

Metafile& Metafile::Head(int group, int id, const List& list) {
  Append(&head_, Element(group, id, list));
  return *this;
}

Metafile& Metafile::Picture(int group, int id, const List& list) {
  Append(&picture_, Element(group, id, list));
  return *this;
}

Metafile& Metafile::Body(int group, int id, const List& list) {
  return BodyOctets(Element(group, id, list));
}

Metafile& Metafile::BodyOctets(const Octets& octets) {
  Append(&body_, octets);
  return *this;
}

Metafile& Metafile::Bare() {
  bare_ = true;
  return *this;
}

Octets Metafile::Finish() const {
  Octets all = Element(0, 1, List().String("made"));
  Append(&all, Element(1, 1, List().I(1)));
  Append(&all, head_);
  Append(&all, Element(0, 3, List().String("one")));
  if (!bare_) {
    Append(&all, Element(2, 2, List().I(1)));  // direct colours
    Append(&all, Element(2, 3, List().I(0)));  // absolute widths of lines, markers and edges
    Append(&all, Element(2, 4, List().I(0)));
    Append(&all, Element(2, 5, List().I(0)));
    Append(&all, Element(2, 6, List().Points({0, 0, 1000, 1000})));
  }
  Append(&all, picture_);
  Append(&all, Element(0, 4));
  Append(&all, body_);
  Append(&all, Element(0, 5));
  Append(&all, Element(0, 2));
  return all;
}

}  // namespace tavi::test

// Makes binary metafiles, correct and broken ones, without any code of the reader.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace tavi::test {

using Octets = std::vector<uint8_t>;

// A parameter list. Integers, indices and enumerations are of 16 bits unless said otherwise.
class List {
 public:
  List& I(int64_t value, int bits = 16);
  List& Points(const std::vector<int>& coordinates, int bits = 16);
  List& Rgb(uint8_t red, uint8_t green, uint8_t blue);
  List& Fixed(double value);  // 16 bits whole, 16 bits fraction
  List& Fixed64(double value);
  List& Float(float value);
  List& Double(double value);
  List& String(const std::string& text);
  // Count octet 255 and chunks of this length.
  List& LongString(const std::string& text, size_t chunk);
  List& Add(const Octets& octets);
  List& Align();  // to the next word

  const Octets& octets() const { return octets_; }

 private:
  Octets octets_;
};

enum class Form { kAuto, kLong, kPartitioned };

Octets Element(int group, int id, const Octets& list, Form form = Form::kAuto, size_t partition = 2);
inline Octets Element(int group, int id, const List& list = {}) {
  return Element(group, id, list.octets());
}

// The octets but for the last ones.
Octets WithoutEnd(const Octets& octets, size_t count);

// A metafile of one picture with direct colours and absolute widths, y upward, to which elements are added.
class Metafile {
 public:
  Metafile() = default;

  // Before BEGIN PICTURE, before BEGIN PICTURE BODY, and in the body.
  Metafile& Head(int group, int id, const List& list = {});
  Metafile& Picture(int group, int id, const List& list = {});
  Metafile& Body(int group, int id, const List& list = {});
  Metafile& BodyOctets(const Octets& octets);
  // Leaves out what the picture descriptor says by default.
  Metafile& Bare();
  Octets Finish() const;

 private:
  bool bare_ = false;
  Octets head_;
  Octets picture_;
  Octets body_;
};

}  // namespace tavi::test

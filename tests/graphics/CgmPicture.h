// Small CGM pictures: filled rectangles and lines in direct colours, coordinates of 16 bits.
#ifndef TAVI_TESTS_GRAPHICS_CGM_PICTURE_H
#define TAVI_TESTS_GRAPHICS_CGM_PICTURE_H

#include <cstdint>
#include <initializer_list>
#include <stdexcept>
#include <string>
#include <vector>

namespace tavi_test {

struct CgmColour {
  uint8_t red, green, blue;
};

class CgmPicture {
 public:
  using Bytes = std::vector<uint8_t>;

  // The drawing's y grows downward, as in a raster, or upward.
  enum class Sense { kDown, kUp };

  explicit CgmPicture(Sense sense = Sense::kDown) {
    constexpr int kMost = 32767;
    Element(0, 1, String("a picture"));  // BEGIN METAFILE
    Element(1, 1, Words({1}));           // METAFILE VERSION
    Element(1, 11, Words({1, -1, 1}));   // METAFILE ELEMENT LIST: drawing plus control
    Element(0, 3, String("one"));        // BEGIN PICTURE
    Element(2, 2, Words({1}));           // COLOUR SELECTION MODE: direct
    Element(2, 3, Words({0}));           // LINE WIDTH SPECIFICATION MODE: absolute
    Element(2, 6, sense == Sense::kDown ? Words({0, kMost, kMost, 0}) : Words({0, 0, kMost, kMost}));
    Element(0, 4, {});           // BEGIN PICTURE BODY
    Element(5, 22, Words({1}));  // INTERIOR STYLE: solid
  }

  CgmPicture& Rectangle(int x1, int y1, int x2, int y2, const CgmColour& colour) {
    Element(5, 23, {colour.red, colour.green, colour.blue});
    Element(4, 11, Words({x1, y1, x2, y2}));
    return *this;
  }
  CgmPicture& Line(int x1, int y1, int x2, int y2, int width, const CgmColour& colour) {
    Element(5, 3, Words({width}));
    Element(5, 4, {colour.red, colour.green, colour.blue});
    Element(4, 1, Words({x1, y1, x2, y2}));
    return *this;
  }
  [[nodiscard]] Bytes Build() const {
    CgmPicture whole = *this;
    whole.Element(0, 5, {});  // END PICTURE
    whole.Element(0, 2, {});  // END METAFILE
    return whole.bytes_;
  }

  // An element by its class and number; runs of elements read as a list.
  CgmPicture& Add(unsigned element_class, unsigned id, const Bytes& parameters) {
    Element(element_class, id, parameters);
    return *this;
  }
  static Bytes Words(std::initializer_list<int> values) {
    Bytes bytes;
    for (const int value : values) {
      bytes.push_back(static_cast<uint8_t>(static_cast<unsigned>(value) >> 8));
      bytes.push_back(static_cast<uint8_t>(value));
    }
    return bytes;
  }
  static Bytes String(const std::string& text) {
    Bytes bytes = {static_cast<uint8_t>(text.size())};
    bytes.insert(bytes.end(), text.begin(), text.end());
    return bytes;
  }

 private:
  void Element(unsigned element_class, unsigned id, const Bytes& parameters) {
    if (parameters.size() > 30) throw std::length_error("an element of the short form takes 30 bytes");
    const auto head = element_class << 12 | id << 5 | static_cast<unsigned>(parameters.size());
    bytes_.push_back(static_cast<uint8_t>(head >> 8));
    bytes_.push_back(static_cast<uint8_t>(head));
    bytes_.insert(bytes_.end(), parameters.begin(), parameters.end());
    if (parameters.size() % 2 != 0) bytes_.push_back(0);
  }

  Bytes bytes_;
};

}  // namespace tavi_test

#endif  // TAVI_TESTS_GRAPHICS_CGM_PICTURE_H

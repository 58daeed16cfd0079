// The segments that create and append put behind those that are there: pictures, drawings and texts, in the order of
// the command line.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "Document.h"
#include "Saving.h"

namespace tavinitf {

struct Part {
  enum class Kind : uint8_t { kImage, kGraphic, kText };
  Kind kind;
  std::string file;
  int quality = 90;    // of an image: 1 to 100
  bool rgb = false;    // of an image: coded as red, green, blue in place of luma and chroma
  HostRect rectangle;  // of a graphic
};

// The values of the options, each list in its own order.
struct PartOptions {
  std::vector<std::string> images;
  std::vector<std::string> graphics;
  std::vector<std::string> texts;
  std::vector<int> qualities;
  // The options' names as they were given, one for each value and each --rgb.
  std::vector<std::string> order;
};
// The parts in the order of the options; what is wrong with them when they do not fit together.
std::optional<std::string> ListParts(const PartOptions& options, std::vector<Part>& parts);
// What is wrong with "PIC.cgm@L,T,R,B"; empty when nothing is.
std::string ComplainOfGraphic(const std::string& text);

// Puts a part at the end of the document.
Failure AppendPart(const Document& document, const Part& part);

// Opens the base, which messages call `shown_base`, appends the parts, writes the target. The target is left out when
// it would not open again, when anything that the base has would become different, or when the new segments do not fit
// the format's fields.
Failure BuildFrom(const std::string& base_path, const std::string& shown_base, const std::vector<Part>& parts,
                  const std::string& target);

}  // namespace tavinitf

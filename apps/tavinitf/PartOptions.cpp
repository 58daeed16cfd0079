// The options of create and append, and their order.
#include <cstdlib>

#include "Parts.h"

namespace tavinitf {
namespace {

constexpr int32_t kMostBound = 99999;  // five digits

// "L,T,R,B": four numbers of a half of SBND1 and SBND2.
std::optional<HostRect> ParseRectangle(const std::string& text) {
  int32_t numbers[4] = {};
  size_t at = 0;
  for (int i = 0; i < 4; ++i) {
    const size_t end = i < 3 ? text.find(',', at) : text.size();
    if (end == std::string::npos) return std::nullopt;
    const std::string digits = text.substr(at, end - at);
    if (digits.empty() || digits.size() > 5 || digits.find_first_not_of("0123456789") != std::string::npos)
      return std::nullopt;
    numbers[i] = std::stoi(digits);
    at = end + 1;
  }
  if (numbers[0] >= numbers[2] || numbers[1] >= numbers[3]) return std::nullopt;
  return HostRect{numbers[0], numbers[1], numbers[2], numbers[3]};
}

class PartLister {
 public:
  PartLister(const PartOptions& options, std::vector<Part>& parts) : options_(options), parts_(parts) {}

  std::optional<std::string> Run() {
    for (const std::string& name : options_.order) {
      if (name == "--image") {
        parts_.push_back({Part::Kind::kImage, options_.images[images_++], 90, false, {}});
      } else if (name == "--graphic") {
        AddGraphic(options_.graphics[graphics_++]);
      } else if (name == "--text") {
        parts_.push_back({Part::Kind::kText, options_.texts[texts_++], 0, false, {}});
      } else if (name == "--quality" || name == "--rgb") {
        if (parts_.empty() || parts_.back().kind != Part::Kind::kImage)
          return name + " belongs behind an --image";
        if (name == "--rgb") parts_.back().rgb = true;
        if (name == "--quality") parts_.back().quality = options_.qualities[qualities_++];
      }
    }
    return std::nullopt;
  }

 private:
  void AddGraphic(const std::string& text) {
    const size_t at = text.rfind('@');
    parts_.push_back(
        {Part::Kind::kGraphic, text.substr(0, at), 0, false, *ParseRectangle(text.substr(at + 1))});
  }

  const PartOptions& options_;
  std::vector<Part>& parts_;
  size_t images_ = 0;
  size_t graphics_ = 0;
  size_t texts_ = 0;
  size_t qualities_ = 0;
};

}  // namespace

// A name may hold "@" itself: the last one counts.
std::string ComplainOfGraphic(const std::string& text) {
  const size_t at = text.rfind('@');
  if (at != std::string::npos && at != 0 && ParseRectangle(text.substr(at + 1))) return {};
  return "\"" + text + "\" is no PIC.cgm@L,T,R,B with numbers of 0 to " + std::to_string(kMostBound) +
         ", L below R and T below B";
}

std::optional<std::string> ListParts(const PartOptions& options, std::vector<Part>& parts) {
  return PartLister(options, parts).Run();
}

}  // namespace tavinitf

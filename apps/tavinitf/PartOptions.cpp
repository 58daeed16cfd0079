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

// A name may hold "@" itself: the last one counts.
std::string ComplainOfGraphic(const std::string& text) {
  const size_t at = text.rfind('@');
  if (at != std::string::npos && at != 0 && ParseRectangle(text.substr(at + 1))) return {};
  return "\"" + text + "\" is no PIC.cgm@L,T,R,B with numbers of 0 to " + std::to_string(kMostBound) +
         ", L below R and T below B";
}

class PartLister {
 public:
  PartLister(const CLI::App& command, const PartOptions& options, std::vector<Part>& parts)
      : command_(command), options_(options), parts_(parts) {}

  std::optional<std::string> Run() {
    for (const CLI::Option* option : command_.parse_order()) {
      const std::string name = option->get_name();
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

  const CLI::App& command_;
  const PartOptions& options_;
  std::vector<Part>& parts_;
  size_t images_ = 0;
  size_t graphics_ = 0;
  size_t texts_ = 0;
  size_t qualities_ = 0;
};

}  // namespace

void AddPartOptions(CLI::App& command, PartOptions& options) {
  command
      .add_option("--image", options.images,
                  "A picture, PNG, JPEG, PGM, PPM or TIFF, coded as JPEG; repeatable")
      ->allow_extra_args(false)
      ->type_name("PICTURE");
  command
      .add_option("--quality", options.qualities,
                  "Of the image before it: 1, small, to 100, faithful (default 90)")
      ->allow_extra_args(false)
      ->check(CLI::Range(1, 100))
      ->type_name("N");
  command.add_flag("--rgb")->description(
      "Code the colours of the image before it as red, green, blue: sharper edges, more bytes");
  command
      .add_option("--graphic", options.graphics,
                  "A CGM drawing within columns L to R and rows T to B of the common coordinates; repeatable")
      ->allow_extra_args(false)
      ->check(ComplainOfGraphic)
      ->type_name("PIC.cgm@L,T,R,B");
  command.add_option("--text", options.texts, "A text of at most 99999 bytes; repeatable")
      ->allow_extra_args(false)
      ->type_name("FILE");
}

std::optional<std::string> ListParts(const CLI::App& command, const PartOptions& options,
                                     std::vector<Part>& parts) {
  return PartLister(command, options, parts).Run();
}

}  // namespace tavinitf

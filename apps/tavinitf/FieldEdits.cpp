#include "FieldEdits.h"

#include <algorithm>
#include <array>
#include <span>
#include <string_view>
#include <vector>

#include "FieldBytes.h"
#include "RecordFields.h"

namespace tavinitf {
namespace {

const std::vector<SegmentKind>& EditableKinds() {
  static const std::vector<SegmentKind> kinds = {SegmentKind::kImage, SegmentKind::kGraphic,
                                                 SegmentKind::kText};
  return kinds;
}

constexpr std::array<std::string_view, 29> kLayoutFields = {
    "FL",    "HL",     "NUMI",   "LISH",  "LI",    "NUMS",   "LSSH",   "LS",     "NUMX",  "NUMT",
    "LTSH",  "LT",     "NUMDES", "LDSH",  "LD",    "NUMRES", "LRESH",  "LRE",    "UDHDL", "XHDL",
    "NICOM", "NBANDS", "XBANDS", "NLUTS", "NELUT", "UDIDL",  "IXSHDL", "SXSHDL", "TXSHDL"};
constexpr std::array<std::string_view, 10> kBinaryFields = {
    "UDHD", "XHD", "UDID", "IXSHD", "SXSHD", "TXSHD", "TPXCD", "BMRLNTH", "TMRLNTH", "TPXCDLNTH"};

template <size_t kCount>
bool IsIn(const std::array<std::string_view, kCount>& names, const std::string& name) {
  return std::find(names.begin(), names.end(), name) != names.end();
}

bool HasMask(const std::string& coding) {
  constexpr std::array<std::string_view, 6> kMasked = {"NM", "M0", "M1", "M3", "M4", "M5"};
  return IsIn(kMasked, coding);
}
bool HasRate(const std::string& coding) {
  return coding != "NC" && coding != "NM";
}

// Why no other value, or not this one, can stand in the field.
std::string ComplainOfLayout(const Field& field, const std::string& value) {
  if (IsIn(kLayoutFields, field.name)) return "is a length or a number that the file's layout follows from";
  const bool background = field.name == "FBKGC";
  if (IsIn(kBinaryFields, field.name) || (FindBinaryForm(field) != nullptr && !background))
    return "is no text";
  if (field.name == "ICORDS" && (field.bytes == " ") != Trimmed(value).empty()) {
    return field.bytes == " " ? "can only be blank: IGEOLO would be missing"
                              : "can only be another letter: IGEOLO would be too much";
  }
  if (field.name == "IC" &&
      (HasMask(field.bytes) != HasMask(value) || HasRate(field.bytes) != HasRate(value))) {
    return "can only be a coding with the same fields: COMRAT or the mask table would be missing or too much";
  }
  return {};
}

std::string TooLong(const Field& field, const std::string& value) {
  return "takes " + std::to_string(field.size) + " characters, \"" + Printable(value) + "\" has " +
         std::to_string(value.size());
}

EditedBytes FormText(const Field& field, const std::string& value) {
  if (value.size() > field.size) return {{}, TooLong(field, value)};
  const bool printable = std::all_of(value.begin(), value.end(), [](char c) { return c >= ' ' && c <= '~'; });
  if (!printable) return {{}, "takes printable ASCII characters only, not \"" + Printable(value) + "\""};
  return {value + std::string(field.size - value.size(), ' '), {}};
}

EditedBytes FormDate(const Field& field, const std::string& value) {
  if (value.size() == field.size) return FormText(field, value);
  return {{},
          "takes exactly " + std::to_string(field.size) + " characters, \"" + Printable(value) + "\" has " +
              std::to_string(value.size())};
}

EditedBytes FormNumber(const Field& field, const std::string& value) {
  if (value.size() > field.size) return {{}, TooLong(field, value)};
  if (value.empty() || value.find_first_not_of("0123456789") != std::string::npos)
    return {{}, "takes digits only, not \"" + Printable(value) + "\""};
  return {std::string(field.size - value.size(), '0') + value, {}};
}

// Five characters, the sign first.
std::optional<std::string> FormHalf(const std::string& text) {
  constexpr size_t kHalf = 5;
  const bool negative = text.starts_with('-');
  const std::string digits = text.substr(negative ? 1 : 0);
  const size_t room = kHalf - (negative ? 1 : 0);
  if (digits.empty() || digits.size() > room || digits.find_first_not_of("0123456789") != std::string::npos)
    return std::nullopt;
  return (negative ? "-" : "") + std::string(room - digits.size(), '0') + digits;
}

// "row,column"; the bounds of a graphic in the order of the format as well.
EditedBytes FormPair(const Field& field, const std::string& value) {
  const size_t comma = value.find(',');
  if (comma != std::string::npos) {
    const auto first = FormHalf(value.substr(0, comma));
    const auto second = FormHalf(value.substr(comma + 1));
    if (first && second && field.size == first->size() + second->size()) return {*first + *second, {}};
  }
  return {{},
          "takes two numbers of -9999 to 99999 with a comma between them, not \"" + Printable(value) + "\""};
}

EditedBytes FormColor(const std::string& value) {
  std::string bytes;
  for (size_t at = 0; bytes.size() < 3 && at <= value.size();) {
    const size_t end = std::min(value.find(',', at), value.size());
    const std::string digits = value.substr(at, end - at);
    const bool number = !digits.empty() && digits.size() <= 3 &&
                        digits.find_first_not_of("0123456789") == std::string::npos &&
                        std::stoi(digits) <= 255;
    if (!number) break;
    bytes += static_cast<char>(std::stoi(digits));
    at = end + 1;
    if (bytes.size() == 3 && end == value.size()) return {bytes, {}};
  }
  return {{},
          "takes red, green, blue of 0 to 255 with commas between them, not \"" + Printable(value) + "\""};
}

}  // namespace

std::string Edit::Name() const {
  std::string text = KindName(segment.kind);
  if (segment.kind != SegmentKind::kFileHeader) text += " " + std::to_string(segment.index);
  return text + ": " + IndexedName(field, place, -1);
}

std::optional<Edit> ParseEdit(const std::string& text) {
  const size_t equals = text.find('=');
  if (equals == std::string::npos) return std::nullopt;
  const std::string target = text.substr(0, equals);
  constexpr std::string_view kHeader = "header:";
  Edit edit{{SegmentKind::kFileHeader, 0}, {}, -1, text.substr(equals + 1)};
  if (target.starts_with(kHeader)) {
    edit.field = target.substr(kHeader.size());
  } else {
    const size_t dot = target.find('.');
    if (dot == std::string::npos) return std::nullopt;
    const auto selector = ParseSelector(target.substr(0, dot), EditableKinds());
    if (!selector) return std::nullopt;
    edit.segment = *selector;
    edit.field = target.substr(dot + 1);
  }
  const size_t bracket = edit.field.find('[');
  if (bracket != std::string::npos) {
    const std::string digits = edit.field.substr(bracket + 1, edit.field.size() - bracket - 2);
    const bool number = edit.field.ends_with(']') && !digits.empty() && digits.size() <= 5 &&
                        digits.find_first_not_of("0123456789") == std::string::npos;
    if (!number) return std::nullopt;
    edit.place = std::stoi(digits);
    edit.field.resize(bracket);
  }
  const bool named = !edit.field.empty() && std::all_of(edit.field.begin(), edit.field.end(), [](char c) {
    return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9');
  });
  return named ? std::optional<Edit>(edit) : std::nullopt;
}

std::string ComplainOfEdit(const std::string& text) {
  if (ParseEdit(text)) return {};
  return "\"" + Printable(text) +
         "\" is none of header:FIELD=VALUE, image:N.FIELD=VALUE, graphic:N.FIELD=VALUE, "
         "text:N.FIELD=VALUE";
}

EditedBytes FormBytes(const Segment& segment, const Field& field, const Edit& edit) {
  if (std::string complaint = ComplainOfLayout(field, edit.value); !complaint.empty()) return {{}, complaint};
  if (field.name == "FBKGC") return FormColor(edit.value);
  switch (FormOf(segment.kind, field.name)) {
    case FieldForm::kNumber:
      return FormNumber(field, edit.value);
    case FieldForm::kDate:
      return FormDate(field, edit.value);
    case FieldForm::kPair:
      return FormPair(field, edit.value);
    case FieldForm::kText:
      break;
  }
  return FormText(field, edit.value);
}

}  // namespace tavinitf

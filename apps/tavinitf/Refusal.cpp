#include "Refusal.h"

#include <algorithm>
#include <array>
#include <filesystem>
#include <fstream>
#include <optional>
#include <string_view>
#include <system_error>

#include "Drawing.h"
#include "Limits.h"
#include "TaviNitf.h"

namespace tavinitf {
namespace {

struct StatusText {
  int32_t status;
  const char* name;
  const char* meaning;
};

constexpr std::array<StatusText, 20> kStatuses = {{
    {SUCCESS, "SUCCESS", "done"},
    {ERR_NO_MEMORY, "ERR_NO_MEMORY", "more memory is needed than there is or than one picture can have"},
    {ERR_NO_BITMAP, "ERR_NO_BITMAP", "there is no valid bitmap"},
    {ERR_FILE_WRITE, "ERR_FILE_WRITE", "the file cannot be written"},
    {ERR_FILE_READ, "ERR_FILE_READ", "the file ends before the data that it announces"},
    {ERR_FILE_FORMAT, "ERR_FILE_FORMAT", "a signature or a required value is wrong"},
    {ERR_FILE_NOT_FOUND, "ERR_FILE_NOT_FOUND", "there is no such file"},
    {ERR_INVALID_PARAMETER, "ERR_INVALID_PARAMETER", "a value is too long for its field or outside its set"},
    {ERR_FILE_OPEN, "ERR_FILE_OPEN", "the file exists and cannot be opened"},
    {ERR_NOT_SUPPORTED, "ERR_NOT_SUPPORTED", "the operation or the compression of an image is not supported"},
    {ERR_INVALID_QFACTOR, "ERR_INVALID_QFACTOR", "a JPEG quality factor lies outside 2 to 255"},
    {ERR_INVALID_BPP, "ERR_INVALID_BPP", "a number of bits per pixel is not allowed"},
    {ERR_NOT_NITF, "ERR_NOT_NITF", "the version is not \"02.10\""},
    {ERR_NULL_HANDLE, "ERR_NULL_HANDLE", "a handle or a record is null"},
    {ERR_INVALID_VECTOR, "ERR_INVALID_VECTOR", "the vector holds no drawing"},
    {ERR_NULL_ARGUMENT, "ERR_NULL_ARGUMENT", "an argument is null"},
    {ERR_UNSUPPORTED_PVTYPE, "ERR_UNSUPPORTED_PVTYPE", "the pixel value type of an image is not accepted"},
    {ERR_UNSUPPORTED_CLEVEL, "ERR_UNSUPPORTED_CLEVEL", "the complexity level is not \"03\""},
    {ERR_UNSUPPORTED_BPP, "ERR_UNSUPPORTED_BPP", "an image has several bands of 16 bits"},
    {ERR_UNSUPPORTED_COMPRESSION, "ERR_UNSUPPORTED_COMPRESSION",
     "a coded image is of a format that is not accepted"},
}};

const StatusText* FindStatus(int32_t status) {
  const auto* found = std::find_if(kStatuses.begin(), kStatuses.end(),
                                   [&](const StatusText& text) { return text.status == status; });
  return found == kStatuses.end() ? nullptr : found;
}

// A field that opening a file tests: its name in words, and what passes.
struct TestedField {
  const char* name;
  const char* words;
  const char* accepted;
};
constexpr const char* kClasses = R"(only "C", "R", "S", "T" and "U" are accepted)";
constexpr std::array<TestedField, 16> kTestedFields = {{
    {"FHDR", "signature", R"(only "NITF" and "NSIF" are accepted)"},
    {"FVER", "version", R"(only "02.10" is accepted)"},
    {"CLEVEL", "complexity level", R"(only "03" is accepted)"},
    {"FSCLAS", "security classification", kClasses},
    {"NUMX", "number of reserved segments", R"(only "000" is accepted)"},
    {"IM", "signature", R"(only "IM" is accepted)"},
    {"ISCLAS", "security classification", kClasses},
    {"PVTYPE", "pixel value type", R"(only "INT" and "B" are accepted)"},
    {"IMODE", "image mode", R"(only "B", "P", "R" and "S" are accepted)"},
    {"SY", "signature", R"(only "SY" is accepted)"},
    {"SSCLAS", "security classification", kClasses},
    {"SFMT", "graphic type", R"(only "C", "O" and "B" are accepted)"},
    {"TE", "signature", R"(only "TE" is accepted)"},
    {"DE", "signature", R"(only "DE" is accepted)"},
    {"DESVER", "version", R"(only "00" to "99" are accepted)"},
    {"DESCLAS", "security classification", kClasses},
}};

std::string Quoted(const Field& field) {
  std::string text = field.bytes;
  text.erase(text.find_last_not_of(' ') + 1);
  return "\"" + Printable(text) + "\"";
}

std::string SegmentWords(SegmentKind kind, uint32_t index) {
  if (kind == SegmentKind::kFileHeader) return "the file header";
  return KindName(kind) + (" " + std::to_string(index));
}

std::string FieldWords(const Field& field) {
  return field.index < 0 ? field.name : field.name + "[" + std::to_string(field.index) + "]";
}

// `image 0's NROWS field`
std::string FieldOf(const NitfContents& contents, const Field& field) {
  return SegmentWords(contents.last_kind, contents.last_index) + "'s " + FieldWords(field) + " field";
}

// `image 2: ` where the fault is not in the file header.
std::string Whose(const NitfContents& contents) {
  if (contents.last_kind == SegmentKind::kFileHeader) return {};
  return SegmentWords(contents.last_kind, contents.last_index) + ": ";
}

std::string ExplainWrongValue(const NitfContents& contents) {
  const Field& field = *contents.last;
  const auto* tested = std::find_if(kTestedFields.begin(), kTestedFields.end(),
                                    [&](const TestedField& t) { return field.name == t.name; });
  if (tested == kTestedFields.end())
    return Whose(contents) + field.name + " " + Quoted(field) + " is not accepted";
  return Whose(contents) + tested->words + " " + Quoted(field) + " (" + tested->accepted + ")";
}

std::string ExplainDeepBands(const NitfContents& contents) {
  const Segment* image = contents.Find(contents.last_kind, contents.last_index);
  const std::string bands = image == nullptr ? "several" : std::to_string(image->BandCount());
  return Whose(contents) + "bits per pixel " + Quoted(*contents.last) + " in " + bands +
         " bands (16 bits are accepted in one band only)";
}

bool IsCount(const Field& field) {
  return field.name.starts_with("NUM") && field.size == 3;
}

// The length field of an extended data area, when reading stopped at that area or at the overflow number
// before it.
const Field* ExtendedLength(const NitfContents& contents) {
  constexpr std::array<std::string_view, 6> kLengths = {"UDHDL",  "XHDL",   "UDIDL",
                                                        "IXSHDL", "SXSHDL", "TXSHDL"};
  for (const auto* field : {&contents.last, &contents.before_last}) {
    if (field->has_value() && std::find(kLengths.begin(), kLengths.end(), (*field)->name) != kLengths.end()) {
      return &**field;
    }
  }
  return nullptr;
}

// Whether the file has no more bytes for the field itself, so that no length is to blame.
bool EndsAtField(const NitfContents& contents) {
  const Field& field = *contents.last;
  return field.offset >= contents.file_size ||
         (field.offset + field.size >= contents.file_size && !IsCount(field));
}

std::string ExplainEarlyEnd(const NitfContents& contents) {
  const Field& field = *contents.last;
  const std::string end = std::to_string(contents.file_size);
  if (field.offset > contents.file_size) {
    return "ends at byte " + end + ", before " + FieldOf(contents, field) + " at byte " +
           std::to_string(field.offset);
  }
  if (field.offset == contents.file_size)
    return "ends before " + FieldOf(contents, field) + " at byte " + end;
  if (field.offset + field.size >= contents.file_size && !IsCount(field)) {
    return "ends inside " + FieldOf(contents, field) + " at byte " + end;
  }
  if (const Field* length = ExtendedLength(contents)) {
    const std::string text = Quoted(*length);
    const bool too_small = text.find_first_not_of("\"0") == text.find_last_not_of('"') &&
                           text.find_first_of("12") != std::string::npos;
    if (too_small) {
      return Whose(contents) + FieldWords(*length) + " " + text +
             " (only 0 and lengths of at least 3 are accepted)";
    }
    return Whose(contents) + FieldWords(*length) + " " + text + " announces more than the file's " + end +
           " bytes";
  }
  return Whose(contents) + FieldWords(field) + " " + Quoted(field) + " announces more than the file's " +
         end + " bytes";
}

// Why nothing at all could be read, or an empty text when the file system sees no reason.
std::string ExplainUnreadable(const std::string& path) {
  std::error_code error;
  const auto status = std::filesystem::status(path, error);
  if (status.type() == std::filesystem::file_type::not_found) return "no such file";
  if (error) return error.message();
  if (std::filesystem::is_directory(status)) return "is a directory (only a regular file is accepted)";
  if (!std::filesystem::is_regular_file(status))
    return "is no regular file (only a regular file is accepted)";
  if (!std::ifstream(path)) return "cannot be opened for reading";
  return {};
}

// Why the drawing came to something that is not supported: images in the codings below are not drawn, the others
// unless the host cannot decode their data.
std::string ExplainNotDrawn(int32_t status, const NitfContents& contents) {
  constexpr std::array<std::string_view, 4> kRefusedCodings = {"C0", "C2", "M0", "M2"};
  const Segment* coded = nullptr;
  for (const Segment& segment : contents.segments) {
    const std::string whose = SegmentWords(segment.kind, segment.index);
    if (segment.kind != SegmentKind::kImage) continue;
    const std::string coding = segment.Text("IC");
    if (std::find(kRefusedCodings.begin(), kRefusedCodings.end(), coding) != kRefusedCodings.end()) {
      return whose + ": compression \"" + coding + R"(" ("C0", "C2", "M0" and "M2" are not drawn))";
    }
    if (coding != "NC" && coding != "NM" && coded == nullptr) coded = &segment;
  }
  if (coded == nullptr) return StatusMeaning(status);
  return SegmentWords(coded->kind, coded->index) + ": its data, compression \"" + coded->Text("IC") +
         "\", are of no kind that can be decoded";
}

// The first graphic whose data are no drawing, when there is one.
std::string ExplainWrongData(const std::string& path, int32_t status, const NitfContents& contents) {
  for (const Segment& segment : contents.segments) {
    if (segment.kind != SegmentKind::kGraphic || segment.Text("SFMT") != "C") continue;
    if (Drawing().Load(path, segment.data) == status) return ExplainNoDrawing(status, segment);
  }
  return StatusMeaning(status);
}

std::string ExplainMissingData(const NitfContents& contents) {
  for (const Segment& segment : contents.segments) {
    if (segment.data.end() > contents.file_size) {
      return SegmentWords(segment.kind, segment.index) + ": its data end at byte " +
             std::to_string(segment.data.end()) + ", the file at byte " + std::to_string(contents.file_size);
    }
  }
  return StatusMeaning(ERR_FILE_READ);
}

}  // namespace

std::string StatusName(int32_t status) {
  const StatusText* text = FindStatus(status);
  return text == nullptr ? "status " + std::to_string(status) : text->name;
}

std::string StatusMeaning(int32_t status) {
  if (const std::optional<std::string> limit = WordsOfLimitHit(status)) return *limit;
  const StatusText* text = FindStatus(status);
  return text == nullptr ? "a status of no known meaning" : text->meaning;
}

std::string ExplainOpenFailure(const std::string& path, const NitfContents& contents) {
  if (!contents.last || contents.last->size == 0) {
    std::string reason = ExplainUnreadable(path);
    if (!reason.empty()) return reason;
  }
  if (!contents.last) return StatusMeaning(contents.status);
  switch (contents.status) {
    case ERR_FILE_READ:
      return ExplainEarlyEnd(contents);
    case ERR_FILE_FORMAT:
    case ERR_NOT_NITF:
    case ERR_UNSUPPORTED_CLEVEL:
    case ERR_UNSUPPORTED_PVTYPE:
      return ExplainWrongValue(contents);
    case ERR_UNSUPPORTED_BPP:
      return ExplainDeepBands(contents);
    case ERR_INVALID_PARAMETER:
      return "a length says that its true value stands in a streaming file header, and there is none";
    default:
      return StatusMeaning(contents.status);
  }
}

const Field* FieldToBlame(const NitfContents& contents) {
  if (!contents.last) return nullptr;
  if (contents.status == ERR_FILE_READ && !EndsAtField(contents)) {
    if (const Field* length = ExtendedLength(contents)) return length;
  }
  const Segment* segment = contents.Find(contents.last_kind, contents.last_index);
  if (contents.status == ERR_INVALID_PARAMETER && segment != nullptr) {
    for (const Field& field : segment->fields) {
      const bool nines = field.bytes.size() >= 4 && field.bytes.find_first_not_of('9') == std::string::npos;
      if (nines) return &field;
    }
  }
  return &*contents.last;
}

std::string ExplainNoDrawing(int32_t status, const Segment& graphic) {
  return SegmentWords(graphic.kind, graphic.index) + ": its " + std::to_string(graphic.data.length) +
         " bytes of data " +
         (status == ERR_FILE_FORMAT ? "are no CGM drawing" : "cannot be loaded: " + StatusMeaning(status));
}

std::string ExplainDrawFailure(const std::string& path, int32_t status, const NitfContents& contents) {
  if (const std::optional<std::string> limit = WordsOfLimitHit(status)) return *limit;
  switch (status) {
    case ERR_NOT_SUPPORTED:
    case ERR_UNSUPPORTED_COMPRESSION:
      return ExplainNotDrawn(status, contents);
    case ERR_FILE_READ:
      return ExplainMissingData(contents);
    case ERR_FILE_FORMAT:
      return ExplainWrongData(path, status, contents);
    default:
      return StatusMeaning(status);
  }
}

std::string FailureLine(const std::string& path, const std::string& what, const std::string& explanation,
                        int32_t status) {
  const bool known = FindStatus(status) != nullptr;
  return path + ": " + what + ": " + explanation + " [" + StatusName(status) +
         (known ? " " + std::to_string(status) : std::string()) + "]";
}

}  // namespace tavinitf

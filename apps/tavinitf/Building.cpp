// Saves a base with new segments, and makes sure that the result holds the base as it was.
#include <algorithm>
#include <array>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <string_view>
#include <system_error>
#include <tuple>

#include "Comparison.h"
#include "Parts.h"
#include "PathNames.h"
#include "Progress.h"
#include "Refusal.h"
#include "Verify.h"

namespace tavinitf {
namespace {

// The library looks for texts and data extensions of the base behind the graphics that were appended, which the base
// has not: it copies other bytes, or none. So the base is given room behind its end, and what was copied wrongly is put
// right afterwards.
class Base {
 public:
  Base(const std::string& path, const std::vector<Part>& parts, const NitfContents& contents)
      : path_(path), contents_(contents) {
    for (const Part& part : parts) graphics_ += part.kind == Part::Kind::kGraphic ? 1U : 0U;
    const bool has_later = std::any_of(contents.segments.begin(), contents.segments.end(), IsBehindGraphics);
    needs_room_ = graphics_ != 0 && has_later;
  }

  bool Prepare(const std::string& output) {
    if (!needs_room_) return true;
    if (!copy_.Open(output)) return false;
    std::error_code error;
    std::filesystem::copy_file(path_, copy_.part(), std::filesystem::copy_options::overwrite_existing, error);
    // More than a graphic's subheader and data can take; a hole in the file, no bytes on the disk.
    constexpr uint64_t kRoomForGraphic = 1100000;
    if (!error)
      std::filesystem::resize_file(copy_.part(), contents_.file_size + graphics_ * kRoomForGraphic, error);
    return !error || copy_.Fail(error.message());
  }

  [[nodiscard]] const std::string& path() const { return needs_room_ ? copy_.part() : path_; }
  [[nodiscard]] const std::string& error() const { return copy_.error(); }

  bool PutRight(OutputFile& output, const NitfContents& result) const {
    if (!needs_room_) return true;
    std::ifstream file(path_, std::ios::binary);
    for (const Segment& segment : contents_.segments) {
      const Segment* written = result.Find(segment.kind, segment.index);
      if (!IsBehindGraphics(segment) || written == nullptr || written->data.length != segment.data.length)
        continue;
      if (!CopyData(file, segment.data, output, written->data.offset)) return false;
    }
    return true;
  }

 private:
  static bool IsBehindGraphics(const Segment& segment) {
    return segment.kind == SegmentKind::kText || segment.kind == SegmentKind::kDataExtension;
  }

  static bool CopyData(std::ifstream& file, const Extent& from, OutputFile& output, uint64_t to) {
    constexpr uint64_t kPiece = 1 << 20;
    std::vector<char> piece(std::min(kPiece, from.length));
    file.seekg(static_cast<std::streamoff>(from.offset));
    if (!output.Seek(static_cast<int64_t>(to), SEEK_SET)) return false;
    for (uint64_t left = from.length; left != 0;) {
      const uint64_t size = std::min<uint64_t>(left, piece.size());
      if (!file.read(piece.data(), static_cast<std::streamsize>(size)))
        return output.Fail("its source cannot be read");
      if (!output.Write(piece.data(), size)) return false;
      left -= size;
    }
    return output.Seek(0, SEEK_SET);
  }

  std::string path_;
  const NitfContents& contents_;
  uint64_t graphics_ = 0;
  bool needs_room_ = false;
  OutputFile copy_;
};

// What the new segments change in the file header.
bool IsCounted(const Change& change) {
  constexpr std::array<std::string_view, 5> kCounted = {"FL", "HL", "NUMI", "NUMS", "NUMT"};
  return change.kind == SegmentKind::kFileHeader &&
         std::find(kCounted.begin(), kCounted.end(), change.field) != kCounted.end();
}

bool IsExpected(const Change& change) {
  return change.only_after || IsWritersOwn(change) || (IsCounted(change) && !change.only_before);
}

Findings FindingsOf(const NitfContents& contents, const std::string& path) {
  Findings findings;
  std::ifstream file(path, std::ios::binary);
  const Subject subject{contents, file, findings};
  for (const auto check : {VerifyLengths, VerifyImages, VerifyLevels}) check(subject);
  return findings;
}

// A finding of the result that the base does not have. What is not carried over is missing from the file's length, and
// that is told.
const Finding* FindNew(const Findings& result, const Findings& base, bool is_shorter) {
  for (const Finding& finding : result.list()) {
    const bool known = std::any_of(base.list().begin(), base.list().end(), [&](const Finding& other) {
      return std::tie(finding.kind, finding.index, finding.field) ==
             std::tie(other.kind, other.index, other.field);
    });
    const bool expected = is_shorter && (finding.field == "FL" || finding.field == "LRE");
    if (!known && !expected) return &finding;
  }
  return nullptr;
}

// Fills the lines that tell what the writer set itself or left out.
Failure CheckResult(const ComparedFile& base, const ComparedFile& result, const std::string& output,
                    std::vector<std::string>& lines) {
  for (const Change& change : Compare(base, result)) {
    if (!IsExpected(change)) {
      return FailureLine(output, "not written", "saving would change what was there: " + change.Line(),
                         ERR_NOT_SUPPORTED);
    }
    if (!change.only_after && !IsCounted(change)) lines.push_back(change.Line());
  }
  const std::vector<std::string> lost = ListNotCarried(base.contents);
  lines.insert(lines.end(), lost.begin(), lost.end());
  const Findings before = FindingsOf(base.contents, base.path);
  const Findings after = FindingsOf(result.contents, result.path);
  if (const Finding* finding = FindNew(after, before, !lost.empty())) {
    return FailureLine(output, "not written",
                       "the new segments do not fit: " + std::string(KindName(finding->kind)) + " " +
                           std::to_string(finding->index) + ": " + finding->field + " \"" +
                           Printable(finding->found) + "\", expected " + finding->expected,
                       ERR_INVALID_PARAMETER);
  }
  return std::nullopt;
}

// The library does not tell that it could read less of a text than there is: zeros stand for the rest.
Failure CheckTexts(const std::vector<Part>& parts, const NitfContents& base, const ComparedFile& result) {
  auto index = static_cast<uint32_t>(base.header.Number("NUMT"));
  std::ifstream saved(result.path, std::ios::binary);
  for (const Part& part : parts) {
    if (part.kind != Part::Kind::kText) continue;
    const Segment* text = result.contents.Find(SegmentKind::kText, index++);
    std::ifstream file(part.file, std::ios::binary);
    std::vector<char> expected(text == nullptr ? 0 : text->data.length);
    std::vector<char> found(expected.size());
    const auto size = static_cast<std::streamsize>(expected.size());
    const bool is_read = file.read(expected.data(), size) && file.peek() == std::ifstream::traits_type::eof();
    saved.seekg(static_cast<std::streamoff>(text == nullptr ? 0 : text->data.offset));
    if (!is_read || !saved.read(found.data(), size) || expected != found)
      return FailureLine(part.file, "not appended", "cannot be read in full", ERR_FILE_READ);
  }
  return std::nullopt;
}

}  // namespace

Failure BuildFrom(const std::string& base_path, const std::string& shown_base, const std::vector<Part>& parts,
                  const std::string& target) {
  const Reading reading = Read(base_path);
  if (reading.refusal) return reading.RefusalLine(shown_base);
  Base base(base_path, parts, reading.contents);
  if (!base.Prepare(target)) return NotWritten(target, base.error());
  Document document;
  const int32_t opened = document.Open(WideFromUtf8(base.path()).value_or(L"").c_str());
  if (opened != SUCCESS) return FailureLine(shown_base, "not opened", StatusMeaning(opened), opened);
  Progress progress(parts.size() + 1);  // the last step is the save
  for (const Part& part : parts) {
    if (Failure failure = AppendPart(document, part)) return failure;
    progress.Advance();
  }
  OutputFile output;
  if (!output.Open(target)) return NotWritten(target, output.error());
  if (Failure failure = SaveTo(document, output, {shown_base, target, "not saved"}, reading.contents))
    return failure;
  const Reading result = Read(output.part());
  if (result.refusal) return NotReopened(target, result);
  if (!base.PutRight(output, result.contents)) return NotWritten(target, output.error());
  if (Failure failure = CheckTexts(parts, reading.contents, {output.part(), result.contents})) return failure;
  std::vector<std::string> lines;
  if (Failure failure =
          CheckResult({base_path, reading.contents}, {output.part(), result.contents}, target, lines))
    return failure;
  if (!output.Commit()) return NotWritten(target, output.error());
  for (const std::string& line : lines) std::printf("%s: %s\n", target.c_str(), line.c_str());
  return std::nullopt;
}

}  // namespace tavinitf

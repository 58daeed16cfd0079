// tavinitf set: a file with other values in some of its fields, and nothing else changed.
//
// A record's setter takes all fields of its header at once and does not leave the others as they were: halves of
// locations change places, the tables of an image's bands are emptied, the file header's signature is spoiled. So the
// setters are asked whether they take a value, on a document that is thrown away; the file itself is saved from a
// document that nobody has changed, and the new bytes are put into their fields of it. What came of that is compared
// with the source, field by field, before it takes the target's place.
#include <algorithm>
#include <cstdio>

#include "Commands.h"
#include "Comparison.h"
#include "FieldEdits.h"
#include "RecordFields.h"
#include "Refusal.h"
#include "Saving.h"

namespace tavinitf {
namespace {

class SetRun {
 public:
  explicit SetRun(const SetOptions& options) : options_(options) {}

  Failure Run() {
    if (reading_ = Read(options_.file); reading_.refusal) return reading_.RefusalLine(options_.file);
    for (const std::string& text : options_.edits) {
      if (Failure failure = Plan(*ParseEdit(text))) return failure;
    }
    OutputFile output;
    if (!output.Open(options_.output)) return NotWritten(options_.output, output.error());
    if (Failure failure = Save(output)) return failure;
    if (Failure failure = PutBytes(output)) return failure;
    if (Failure failure = Check(output)) return failure;
    if (!output.Commit()) return NotWritten(options_.output, output.error());
    for (const std::string& line : lines_) std::printf("%s: %s\n", options_.output.c_str(), line.c_str());
    return std::nullopt;
  }

 private:
  struct Planned {
    Edit edit;
    std::string bytes;
  };

  Failure NotSet(const Edit& edit, const std::string& reason) {
    return FailureLine(options_.file, "not set", edit.Name() + " " + reason, ERR_INVALID_PARAMETER);
  }

  // Forms the new bytes and asks the library's setter.
  Failure Plan(const Edit& edit) {
    const Segment* segment = reading_.contents.Find(edit.segment.kind, edit.segment.index);
    if (segment == nullptr) {
      return FailureLine(options_.file, "not set", ExplainNoSegment(edit.segment, reading_.contents),
                         ERR_INVALID_PARAMETER);
    }
    const Field* field = FieldOf(*segment, edit);
    if (field == nullptr) return NotSet(edit, "is no field that this header has");
    if (field->index >= 0 && edit.place < 0)
      return NotSet(edit, "is repeated: say which, as " + edit.field + "[0]");
    EditedBytes edited = FormBytes(*segment, *field, edit);
    if (!edited.complaint.empty()) return NotSet(edit, edited.complaint);
    Document scratch;
    if (scratch.Open(reading_.wide_path.c_str()) == SUCCESS &&
        !SetterTakes(scratch, edit.segment, edit.field, Unpadded(edited.bytes))) {
      return NotSet(edit, "cannot be \"" + Printable(edit.value) +
                              "\": it is none of the values that the field may have");
    }
    planned_.push_back({edit, edited.bytes});
    return std::nullopt;
  }

  static const Field* FieldOf(const Segment& segment, const Edit& edit) {
    return segment.Find(edit.field, edit.place);
  }

  static std::string Unpadded(const std::string& bytes) {
    return bytes.substr(0, bytes.find_last_not_of(' ') + 1);
  }

  Failure Save(OutputFile& output) {
    Document document;
    const int32_t opened = document.Open(reading_.wide_path.c_str());
    if (opened != SUCCESS) return FailureLine(options_.file, "not opened", StatusMeaning(opened), opened);
    return SaveTo(document, output, {options_.file, options_.output, "not set"}, reading_.contents);
  }

  Failure PutBytes(OutputFile& output) {
    const Reading saved = Read(output.part());
    if (saved.refusal) return NotReopened(options_.output, saved);
    for (const Planned& planned : planned_) {
      const Segment* segment = saved.contents.Find(planned.edit.segment.kind, planned.edit.segment.index);
      const Field* field = segment == nullptr ? nullptr : FieldOf(*segment, planned.edit);
      if (field == nullptr || field->size != planned.bytes.size())
        return NotSet(planned.edit, "does not stand in the saved file as in this one");
      if (!output.Seek(static_cast<int64_t>(field->offset), SEEK_SET) ||
          !output.Write(planned.bytes.data(), planned.bytes.size())) {
        return NotWritten(options_.output, output.error());
      }
    }
    return output.Seek(0, SEEK_SET) ? std::nullopt : NotWritten(options_.output, output.error());
  }

  bool IsAskedFor(const Change& change) const {
    return std::any_of(planned_.begin(), planned_.end(), [&](const Planned& planned) {
      const Edit& edit = planned.edit;
      return edit.segment.kind == change.kind && edit.segment.index == change.index &&
             edit.field == change.field && (edit.place < 0 || edit.place == change.field_index) &&
             !change.only_before && !change.only_after;
    });
  }

  // Seeking in the output has put all bytes into the file.
  Failure Check(OutputFile& output) {
    const Reading result = Read(output.part());
    if (result.refusal) return NotReopened(options_.output, result);
    for (const Change& change :
         Compare({options_.file, reading_.contents}, {output.part(), result.contents})) {
      if (IsAskedFor(change)) continue;
      if (!IsWritersOwn(change)) {
        return FailureLine(options_.output, "not written",
                           "more than was asked for would change: " + change.Line(), ERR_NOT_SUPPORTED);
      }
      lines_.push_back(change.Line());
    }
    for (const std::string& line : ListNotCarried(reading_.contents)) lines_.push_back(line);
    return std::nullopt;
  }

  const SetOptions& options_;
  Reading reading_;
  std::vector<Planned> planned_;
  std::vector<std::string> lines_;
};

}  // namespace

int RunSet(const SetOptions& options) {
  return ReportFailure(SetRun(options).Run());
}

}  // namespace tavinitf

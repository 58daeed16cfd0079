// tavinitf copy: reads a file and saves it, and says what did not come through as it was.
#include <cstdio>
#include <optional>
#include <vector>

#include "Commands.h"
#include "Comparison.h"
#include "Document.h"
#include "Reading.h"
#include "Refusal.h"
#include "Saving.h"

namespace tavinitf {
namespace {

void PrintChanges(const CopyOptions& options, const std::vector<Change>& changes,
                  const NitfContents& source) {
  for (const Change& change : changes) std::printf("%s: %s\n", options.output.c_str(), change.Line().c_str());
  for (const std::string& line : ListNotCarried(source))
    std::printf("%s: %s\n", options.output.c_str(), line.c_str());
}

Failure Copy(const CopyOptions& options) {
  const Reading reading = Read(options.file);
  if (reading.refusal) return reading.RefusalLine(options.file);
  Document document;
  const int32_t opened = document.Open(reading.wide_path.c_str());
  if (opened != SUCCESS) return FailureLine(options.file, "not opened", StatusMeaning(opened), opened);
  OutputFile output;
  if (!output.Open(options.output)) return NotWritten(options.output, output.error());
  if (Failure failure =
          SaveTo(document, output, {options.file, options.output, "not copied"}, reading.contents))
    return failure;
  const Reading result = Read(output.part());
  if (result.refusal) return NotReopened(options.output, result);
  const std::vector<Change> changes =
      Compare({options.file, reading.contents}, {output.part(), result.contents});
  if (!output.Commit()) return NotWritten(options.output, output.error());
  PrintChanges(options, changes, reading.contents);
  return std::nullopt;
}

}  // namespace

int RunCopy(const CopyOptions& options) {
  return ReportFailure(Copy(options));
}

}  // namespace tavinitf

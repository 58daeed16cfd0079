#include "Saving.h"

#include <cstdio>

#include "Commands.h"
#include "Comparison.h"
#include "Refusal.h"

namespace tavinitf {

Failure NotWritten(const std::string& path, const std::string& reason) {
  return FailureLine(path, "not written", reason, ERR_FILE_WRITE);
}

Failure NotReopened(const std::string& path, const Reading& result) {
  return FailureLine(path, "not written", "it would not open again: " + result.refusal.value_or(""),
                     result.refusal_status);
}

int ReportFailure(const Failure& failure) {
  if (failure) std::fprintf(stderr, "%s\n", failure->c_str());
  return failure ? kFailed : kDone;
}

Failure SaveTo(const Document& document, OutputFile& output, const SaveNames& names,
               const NitfContents& source) {
  const int32_t status = document.Save(output);
  if (!output.error().empty()) return NotWritten(names.output, output.error());
  if (status == SUCCESS) return std::nullopt;
  const std::string reason =
      status == ERR_FILE_READ ? ExplainDrawFailure(names.source, status, source) : StatusMeaning(status);
  return FailureLine(names.source, names.what, reason, status);
}

std::vector<std::string> ListNotCarried(const NitfContents& source) {
  std::vector<std::string> lines;
  if (source.reserved_count != 0) {
    lines.push_back("not carried over: " + std::to_string(source.reserved_count) +
                    " reserved extension segment" + (source.reserved_count == 1 ? "" : "s") +
                    ", which the file header still lists");
  }
  const uint64_t end = EndOfSegments(source);
  if (end < source.file_size) {
    lines.push_back("not carried over: " + std::to_string(source.file_size - end) +
                    " bytes behind the last segment");
  }
  return lines;
}

}  // namespace tavinitf

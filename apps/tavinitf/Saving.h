// Saving documents: failures in one line, and what a save does not carry over.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "Document.h"
#include "OutputFile.h"
#include "Reading.h"
#include "Segments.h"

namespace tavinitf {

// The line that tells of a failure; nothing when all went well.
using Failure = std::optional<std::string>;

Failure NotWritten(const std::string& path, const std::string& reason);
// The library has saved a file that it does not open again.
Failure NotReopened(const std::string& path, const Reading& result);
// Prints the line, if there is one, on standard error; the exit status.
int ReportFailure(const Failure& failure);

struct SaveNames {
  std::string source;  // the file that segment data come from
  std::string output;
  std::string what;  // "not copied"
};
Failure SaveTo(const Document& document, OutputFile& output, const SaveNames& names,
               const NitfContents& source);

// What stands in the source and not in a file saved from it: reserved segments, bytes that no length accounts for.
std::vector<std::string> ListNotCarried(const NitfContents& source);

}  // namespace tavinitf

// tavinitf append: a file with new segments behind those it has.
#include <cstdio>

#include "Commands.h"
#include "Parts.h"

namespace tavinitf {

int RunAppend(const AppendOptions& options) {
  std::vector<Part> parts;
  std::optional<std::string> misuse = ListParts(options.parts, parts);
  if (!misuse && parts.empty()) misuse = "at least one of --image, --graphic and --text is needed";
  if (misuse) {
    std::fprintf(stderr, "tavinitf append: %s\nRun with --help for more information.\n", misuse->c_str());
    return kWrongUsage;
  }
  return ReportFailure(BuildFrom(options.file, options.file, parts, options.output));
}

}  // namespace tavinitf

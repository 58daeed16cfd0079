// tavinitf append: a file with new segments behind those it has.
#include <cstdio>
#include <memory>

#include "Commands.h"
#include "Parts.h"

namespace tavinitf {
namespace {

struct AppendOptions {
  std::string file;
  std::string output;
  PartOptions parts;
};

int RunAppend(const CLI::App& command, const AppendOptions& options) {
  std::vector<Part> parts;
  std::optional<std::string> misuse = ListParts(command, options.parts, parts);
  if (!misuse && parts.empty()) misuse = "at least one of --image, --graphic and --text is needed";
  if (misuse) {
    std::fprintf(stderr, "tavinitf append: %s\nRun with --help for more information.\n", misuse->c_str());
    return kWrongUsage;
  }
  return ReportFailure(BuildFrom(options.file, options.file, parts, options.output));
}

}  // namespace

void AddAppendCommand(CLI::App& app, int& exit_status) {
  auto options = std::make_shared<AppendOptions>();
  CLI::App* command =
      app.add_subcommand("append", "Save a file with new images, graphics and texts behind its own");
  command->add_option("FILE", options->file, "NITF file")->required();
  command->add_option("OUT", options->output, "The file to make; it may be FILE itself")->required();
  AddPartOptions(*command, options->parts);
  command->callback([command, options, &exit_status] { exit_status = RunAppend(*command, *options); });
}

}  // namespace tavinitf

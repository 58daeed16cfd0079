// tavinitf: looks into NITF files, draws them, makes and changes them.
#include <csignal>
#include <cstdio>
#include <exception>
#include <string>

#include "CommandLine.h"
#include "Commands.h"
#include "HostEntries.h"
#include "OutputFile.h"
#include "TaviHost.h"

namespace {

// The tool's own version, then a line for each library that decodes pictures.
std::string Version() {
  std::string text = "tavinitf " TAVINITF_VERSION;
  for (uint32_t i = 0; const char* codec = HostCodecVersion(i); ++i) text += std::string("\n") + codec;
  return text;
}

int Run(int argc, char** argv) {
  CLI::App app{"Looks into NITF files, draws them, makes and changes them.", "tavinitf"};
  app.set_version_flag("--version", Version);
  app.require_subcommand(1);
  tavinitf::AddLimitOption(app);
  app.footer("Exit status: 0 done, 1 a file or the operation failed, 2 wrong usage.");
  int exit_status = tavinitf::kDone;
  tavinitf::AddCommands(app, exit_status);
  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& error) {
    return app.exit(error) == 0 ? tavinitf::kDone : tavinitf::kWrongUsage;
  }
  if (std::fflush(stdout) != 0 || std::ferror(stdout) != 0) {
    std::fputs("tavinitf: standard output cannot be written\n", stderr);
    return tavinitf::kFailed;
  }
  return exit_status;
}

}  // namespace

int main(int argc, char** argv) {
  tavinitf::SilenceHostMessages();
  tavinitf::RemovePartsOnSignals();
  try {
    return Run(argc, argv);
  } catch (const std::exception& error) {
    std::fprintf(stderr, "tavinitf: %s\n", error.what());
    return tavinitf::kFailed;
  }
}

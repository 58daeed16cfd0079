// The subcommands. Each registers itself with its options and, when it is the one that was called, runs and
// leaves its exit status in `exit_status`: 0 done, 1 a file or the operation failed, 2 wrong usage.
#pragma once

#include <CLI/CLI.hpp>

namespace tavinitf {

inline constexpr int kDone = 0;
inline constexpr int kFailed = 1;
inline constexpr int kWrongUsage = 2;

void AddAppendCommand(CLI::App& app, int& exit_status);
void AddCopyCommand(CLI::App& app, int& exit_status);
void AddCreateCommand(CLI::App& app, int& exit_status);
void AddExtractCommand(CLI::App& app, int& exit_status);
void AddHeadersCommand(CLI::App& app, int& exit_status);
void AddInfoCommand(CLI::App& app, int& exit_status);
void AddRenderCommand(CLI::App& app, int& exit_status);
void AddSetCommand(CLI::App& app, int& exit_status);
void AddVerifyCommand(CLI::App& app, int& exit_status);

}  // namespace tavinitf

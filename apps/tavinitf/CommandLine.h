// What a user may write behind "tavinitf": the subcommands with their options.
#pragma once

#include <CLI/CLI.hpp>

namespace tavinitf {

// Each subcommand, when it is the one that was called, leaves its exit status in `exit_status`.
void AddCommands(CLI::App& app, int& exit_status);
// Takes effect before the subcommand runs, wherever it stands before it; of several for one limit the last counts.
void AddLimitOption(CLI::App& app);

}  // namespace tavinitf

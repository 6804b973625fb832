#pragma once

// The subcommands. Each add function registers its subcommand and its options on the
// application and returns the function that runs it once the command line is parsed;
// that function returns the exit status or throws ToolError.

#include <CLI/CLI.hpp>

#include <functional>
#include <string>
#include <vector>

namespace matgraph {

using CommandRun = std::function<int()>;

struct Command {
  CLI::App* app;
  CommandRun run;
};

Command addInfoCommand(CLI::App& app);
Command addCheckCommand(CLI::App& app);
Command addFormatCommand(CLI::App& app);
Command addDotCommand(CLI::App& app);
Command addResolveCommand(CLI::App& app);
Command addDiffCommand(CLI::App& app);

// The option every subcommand takes: --parent FILE, repeatable, base first.
void addParentOption(CLI::App& command, std::vector<std::string>& parents);

}  // namespace matgraph

// matgraph: inspect, check, format, draw, resolve and compare library files.
//
// Exit status: 0 clean, 1 findings (errors; warnings with --strict; files that --check
// would change; incompatible changes for diff), 2 bad arguments or a file that cannot be
// read or written. docs/diagnostics.md lists every code that the command prints.
#include <CLI/CLI.hpp>

#include <exception>
#include <iostream>
#include <new>
#include <vector>

#include "Commands.h"
#include "Inputs.h"

namespace matgraph {

void addParentOption(CLI::App& command, std::vector<std::string>& parents) {
  command
      .add_option("--parent", parents,
                  "A parent library; repeat for a chain, base first. Each is loaded under "
                  "the one before it, the file under the last")
      ->type_name("FILE")
      ->take_all()
      ->expected(1)
      ->allow_extra_args(false);
}

namespace {

int run(int argc, char** argv) {
  CLI::App app("Inspect, check, format, draw, resolve and compare matgraph library files.",
               "matgraph");
  app.set_version_flag("--version", MATGRAPH_TOOL_VERSION);
  app.require_subcommand(1);
  const std::vector<Command> commands = {
      addInfoCommand(app), addCheckCommand(app),   addFormatCommand(app),
      addDotCommand(app),  addResolveCommand(app), addDiffCommand(app),
  };
  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& error) {
    if (error.get_exit_code() == static_cast<int>(CLI::ExitCodes::Success)) {
      return app.exit(error);  // --help, --version
    }
    printError("MG301", "", std::string(error.what()) + " (run with --help for the usage)");
    return exitUsage;
  }
  for (const Command& command : commands) {
    if (command.app->parsed()) return command.run();
  }
  return exitUsage;
}

}  // namespace
}  // namespace matgraph

int main(int argc, char** argv) {
  try {
    return matgraph::run(argc, argv);
  } catch (const matgraph::ToolError& error) {
    matgraph::printError(error.Code(), error.File(), error.what());
    return error.ExitStatus();
  } catch (const std::bad_alloc&) {
    matgraph::printError("MG307", "", "out of memory");
    return matgraph::exitUsage;
  } catch (const std::exception& error) {
    matgraph::printError("MG307", "", std::string("unexpected failure: ") + error.what());
    return matgraph::exitUsage;
  }
}

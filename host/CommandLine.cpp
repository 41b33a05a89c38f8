#include "host/CommandLine.h"

#include <string>
#include <vector>

#include <CLI/CLI.hpp>

#include "foundation/registry/SystemSettings.h"
#include "host/Console.h"

namespace vrx::host {
namespace {

struct Command {
  const CLI::App* app;
  CommandRun run;
};

int RunParsed(const std::vector<Command>& commands) {
  for (const Command& command : commands) {
    if (command.app->parsed()) return command.run();
  }
  return kWrongUse;
}

}  // namespace

int RunCommandLine(std::span<const CommandRow> rows, int argc, char** argv) {
  CLI::App app("Renders project documents to movies.", "vrx");
  app.set_version_flag("--version", std::string("vrx ") + VRX_VERSION);
  app.require_subcommand(1);
  std::vector<Command> commands;
  for (const CommandRow& row : rows) {
    CLI::App* command = app.add_subcommand(row.name, row.summary);
    commands.push_back({command, row.add(*command)});
  }
  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& error) {
    if (app.exit(error) != 0) return kWrongUse;
    return FlushOutput() ? kDone : kFailed;
  }
  registry::ApplySystemSettings();
  const int status = RunParsed(commands);
  if (FlushOutput()) return status;
  Say("the output cannot be written");
  return status == kDone ? kFailed : status;
}

}  // namespace vrx::host

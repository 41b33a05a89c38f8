#include "host/CommandLine.h"

#include <algorithm>
#include <string>
#include <vector>

#include <CLI/CLI.hpp>

#include "foundation/registry/SystemSettings.h"
#include "host/ArgumentChecks.h"
#include "host/Console.h"

namespace vrx::host {
namespace {

struct Command {
  const CLI::App* app;
  CommandRun run;
};

const CLI::App* FindCommand(const CLI::App& app, const std::string& name) {
  const auto commands = app.get_subcommands(nullptr);
  const auto found = std::ranges::find(commands, name, &CLI::App::get_name);
  return found == commands.end() ? nullptr : *found;
}

/// The command that the arguments name, as deep as they do, and what it is called.
struct NamedCommand {
  const CLI::App* app;
  std::string name;
  std::string unknown;  // what stands where a command of it is needed; empty when there is none
};

NamedCommand FindNamed(const CLI::App& program, std::span<char*> arguments) {
  NamedCommand named{&program, "vrx", ""};
  for (const std::string argument : arguments) {
    if (named.app->get_require_subcommand_min() == 0 || argument.starts_with('-')) break;
    const CLI::App* command = FindCommand(*named.app, argument);
    if (command == nullptr) {
      named.unknown = argument;
      break;
    }
    named.app = command;
    named.name += " " + argument;
  }
  return named;
}

std::vector<std::string> CommandNames(const CLI::App& app) {
  std::vector<std::string> names;
  for (const CLI::App* command : app.get_subcommands(nullptr)) names.push_back(command->get_name());
  return names;
}

/// " did you mean --json?" for the first argument that is no option of the command.
std::string SuggestedOption(const CLI::App& app, std::span<char*> arguments) {
  std::vector<std::string> names;
  for (const CLI::Option* option : app.get_options()) {
    for (const std::string& name : option->get_lnames()) names.push_back("--" + name);
  }
  for (const std::string argument : arguments) {
    const std::string name = argument.substr(0, argument.find('='));
    if (name.starts_with("--") && std::ranges::find(names, name) == names.end())
      return Suggestion(name, names);
  }
  return {};
}

/// One line, with the way to more. Gives the exit status.
int SayWrongUse(const NamedCommand& named, const std::string& line) {
  Say(line + (line.ends_with('?') ? " " : "; ") + named.name + " --help shows the use");
  return kWrongUse;
}

int SayUnknown(const NamedCommand& named) {
  return SayWrongUse(
      named, "there is no command " + named.unknown + Suggestion(named.unknown, CommandNames(*named.app)));
}

int SayWrongUse(const NamedCommand& named, std::span<char*> arguments, const CLI::ParseError& error) {
  if (named.app->get_require_subcommand_min() > 0) return SayWrongUse(named, named.name + " needs a command");
  std::string line = error.what();
  line = line.substr(0, line.find('\n'));
  const bool isUnknown = dynamic_cast<const CLI::ExtrasError*>(&error) != nullptr;
  return SayWrongUse(named, isUnknown ? line + SuggestedOption(*named.app, arguments) : line);
}

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
  const std::span<char*> arguments(argv + 1, static_cast<std::size_t>(std::max(argc - 1, 0)));
  const NamedCommand named = FindNamed(app, arguments);
  if (!named.unknown.empty()) return SayUnknown(named);
  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& error) {
    if (error.get_exit_code() != 0) {
      return SayWrongUse(named, arguments, error);
    }
    app.exit(error);
    return FlushOutput() ? kDone : kFailed;
  }
  registry::ApplySystemSettings();
  const int status = RunParsed(commands);
  if (FlushOutput()) return status;
  Say("the output cannot be written");
  return status == kDone ? kFailed : status;
}

}  // namespace vrx::host

#include "host/Commands.h"

#include <cstdio>
#include <memory>
#include <string>
#include <vector>

#include <CLI/CLI.hpp>

#include "host/ArgumentChecks.h"
#include "host/Console.h"

namespace vrx::host {
namespace {

int RunHelp(const CLI::App& app, const std::string& topic) {
  if (topic.empty()) {
    // The program's own help; App::help would give that of the command `help`.
    std::fputs(app.get_formatter()->make_help(&app, "vrx", CLI::AppFormatMode::Normal).c_str(), stdout);
    return kDone;
  }
  std::vector<std::string> names;
  for (const CLI::App* command : app.get_subcommands(nullptr)) {
    names.push_back(command->get_name());
    if (command->get_name() != topic) continue;
    std::fputs(command->help("vrx").c_str(), stdout);
    return kDone;
  }
  Say("there is no command " + topic + Suggestion(topic, names));
  return kWrongUse;
}

}  // namespace

CommandRun AddHelp(CLI::App& command) {
  const auto topic = std::make_shared<std::string>();
  command.add_option("COMMAND", *topic, "The command");
  return [topic, app = command.get_parent()] { return RunHelp(*app, *topic); };
}

}  // namespace vrx::host

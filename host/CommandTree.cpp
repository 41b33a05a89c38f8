#include "host/CommandTree.h"

#include <CLI/CLI.hpp>

namespace vrx::host {
namespace {

CommandOption OptionOf(const CLI::Option& option) {
  CommandOption row;
  if (!option.get_lnames().empty()) row.longName = "--" + option.get_lnames().front();
  if (!option.get_snames().empty()) row.shortName = "-" + option.get_snames().front();
  const std::string& help = option.get_description();
  row.summary = help.substr(0, help.find('\n'));
  row.takesValue = option.get_expected_max() > 0;
  return row;
}

void Add(const CLI::App& app, const std::string& place, std::vector<CommandNode>& nodes) {
  CommandNode node{place, {}, {}};
  for (const CLI::Option* option : app.get_options()) {
    if (!option->get_positional()) node.options.push_back(OptionOf(*option));
  }
  const auto commands = app.get_subcommands(nullptr);
  for (const CLI::App* command : commands) {
    node.commands.push_back({command->get_name(), command->get_description()});
  }
  nodes.push_back(std::move(node));
  for (const CLI::App* command : commands) Add(*command, place + " " + command->get_name(), nodes);
}

}  // namespace

std::vector<CommandNode> ListCommands(const CLI::App& program) {
  std::vector<CommandNode> nodes;
  Add(program, "vrx", nodes);
  return nodes;
}

}  // namespace vrx::host

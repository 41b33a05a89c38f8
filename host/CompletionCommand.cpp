#include "host/Commands.h"

#include <cstdio>
#include <map>
#include <memory>
#include <string>

#include <CLI/CLI.hpp>

#include "host/CompletionScripts.h"
#include "host/Console.h"

namespace vrx::host {

CommandRun AddCompletion(CLI::App& command) {
  using Writer = std::string (*)(std::span<const CommandNode>);
  static const std::map<std::string, Writer> kWriters{
      {"bash", &BashCompletion}, {"zsh", &ZshCompletion}, {"fish", &FishCompletion}};
  const auto shell = std::make_shared<std::string>();
  command.add_option("SHELL", *shell, "bash, zsh or fish")->required()->check(CLI::IsMember(kWriters));
  command.footer(
      "Prints a script for the shell to read, as in: source <(vrx completion bash)\n"
      "Exit status: 0 done, 2 wrong use.");
  return [shell, app = command.get_parent()] {
    std::fputs(kWriters.at(*shell)(ListCommands(*app)).c_str(), stdout);
    return kDone;
  };
}

}  // namespace vrx::host

// The commands of the program with their options, as one flat list. The scripts for shells are written from
// it.
#pragma once

#include <string>
#include <vector>

namespace CLI {
class App;
}

namespace vrx::host {

struct CommandOption {
  std::string longName;   // "--output"; empty for one that has only a short name
  std::string shortName;  // "-o"; may be empty
  std::string summary;    // the first line of its help
  bool takesValue = false;
};

struct CommandName {
  std::string name;     // "import"
  std::string summary;  // a line of the help
};

struct CommandNode {
  std::string place;                  // "vrx gps import"
  std::vector<CommandName> commands;  // those below it
  std::vector<CommandOption> options;
};

/// The program first, and each command before its own.
std::vector<CommandNode> ListCommands(const CLI::App& program);

}  // namespace vrx::host

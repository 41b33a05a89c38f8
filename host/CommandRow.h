// What a program has to know of a command: the command line is made of rows of these.
#pragma once

#include <functional>

namespace CLI {
class App;
}

namespace vrx::host {

/// Runs the command as it was asked for and gives the exit status.
using CommandRun = std::function<int()>;

struct CommandRow {
  const char* name;
  const char* summary;  // a line of the help
  /// Gives the command its options. What it returns holds what they are set to.
  CommandRun (*add)(CLI::App& command);
};

}  // namespace vrx::host

// From the arguments of the program to the command that they ask for. The program and its module of commands
// each run the commands of their own rows with it.
#pragma once

#include <span>

#include "host/CommandRow.h"

namespace vrx::host {

/// Runs the command that the arguments name and gives the exit status. Help, and what is wrong with the
/// arguments, are printed.
int RunCommandLine(std::span<const CommandRow> rows, int argc, char** argv);

}  // namespace vrx::host

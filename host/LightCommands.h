// The commands that the program has in itself, so that they start at once.
#pragma once

#include <span>

#include "host/CommandRow.h"

namespace vrx::host {

/// Those that need neither XML nor the drawing of text nor render control: a test fails when the program
/// links Xerces, Pango or Cairo. They go here with the order of the help. The other commands are in the
/// module.
std::span<const CommandRow> LightCommands();

}  // namespace vrx::host

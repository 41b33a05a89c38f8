// The commands that the program has in itself, so that they start at once.
#pragma once

#include <span>

#include "host/CommandRow.h"

namespace vrx::host {

/// Those that need neither XML nor the drawing of text nor render control: a test fails when the program
/// loads Xerces, Pango or Cairo. They come in the order of the help. The module has them too, with all
/// others.
std::span<const CommandRow> LightCommands();

}  // namespace vrx::host

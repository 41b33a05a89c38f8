// What the command line asks about the terminal that it writes to.
#pragma once

namespace vrx::platform {

enum class Stream { Output, Error };

bool IsTerminal(Stream stream);
/// Columns of the terminal; 80 when there is none.
int TerminalWidth(Stream stream);

}  // namespace vrx::platform

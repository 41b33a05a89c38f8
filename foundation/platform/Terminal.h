// Properties of the terminal that the command line writes to.
#pragma once

namespace vrx::platform {

enum class Stream { Output, Error };

bool IsTerminal(Stream stream);
/// Columns of the terminal; 80 when there is none.
int TerminalWidth(Stream stream);

}  // namespace vrx::platform

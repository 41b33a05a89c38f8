// The standard streams of the command line, and properties of the terminal that it writes to.
#pragma once

namespace vrx::platform {

enum class Stream { Output, Error };

/// To be called first in main(). A standard stream that was closed when the program started is opened so that
/// its number is taken; the next file opened would get it otherwise, and messages would go into that file.
/// Writing to an output that was closed fails, as it should; messages to a closed error stream are dropped.
void ReserveStandardStreams();

bool IsTerminal(Stream stream);
/// Columns of the terminal; 80 when there is none.
int TerminalWidth(Stream stream);

}  // namespace vrx::platform

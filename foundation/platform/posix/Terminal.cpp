#include "foundation/platform/Terminal.h"

#include <sys/ioctl.h>
#include <unistd.h>

namespace vrx::platform {
namespace {

int Descriptor(Stream stream) { return stream == Stream::Output ? STDOUT_FILENO : STDERR_FILENO; }

}  // namespace

bool IsTerminal(Stream stream) { return isatty(Descriptor(stream)) != 0; }

int TerminalWidth(Stream stream) {
  constexpr int kUsual = 80;
  winsize size{};
  return ioctl(Descriptor(stream), TIOCGWINSZ, &size) == 0 && size.ws_col > 0 ? size.ws_col : kUsual;
}

}  // namespace vrx::platform

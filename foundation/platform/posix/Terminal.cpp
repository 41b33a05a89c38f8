#include "foundation/platform/Terminal.h"

#include <fcntl.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <initializer_list>

namespace vrx::platform {
namespace {

int Descriptor(Stream stream) { return stream == Stream::Output ? STDOUT_FILENO : STDERR_FILENO; }

}  // namespace

void ReserveStandardStreams() {
  // The lowest free number is given, so they are taken in this order.
  for (const int descriptor : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
    if (fcntl(descriptor, F_GETFD) != -1) continue;
    const int access = descriptor == STDERR_FILENO ? O_WRONLY : O_RDONLY;
    if (open("/dev/null", access) != descriptor) return;  // nothing better can be done
  }
}

bool IsTerminal(Stream stream) { return isatty(Descriptor(stream)) != 0; }

int TerminalWidth(Stream stream) {
  constexpr int kUsual = 80;
  winsize size{};
  return ioctl(Descriptor(stream), TIOCGWINSZ, &size) == 0 && size.ws_col > 0 ? size.ws_col : kUsual;
}

}  // namespace vrx::platform

#include <CLI/CLI.hpp>

#include "host/Commands.h"
#include "host/GpsCommands.h"

namespace vrx::host {

CommandRun AddGps(CLI::App& gps) {
  gps.require_subcommand(1);
  const CommandRun runImport = AddGpsImport(gps);
  const CommandRun runShow = AddGpsShow(gps);
  gps.footer("Exit status: 0 done, 1 there is no position or a file cannot be read or written, 2 wrong use.");
  return [=, &gps] { return gps.got_subcommand("import") ? runImport() : runShow(); };
}

}  // namespace vrx::host

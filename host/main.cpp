// The command line program `vrx`: renders projects through the library and inspects them. What a command does
// not need is not loaded: light commands are in the program, the others in a module beside it.
#include <algorithm>
#include <exception>
#include <string_view>

#include "foundation/platform/Signals.h"
#include "foundation/platform/Terminal.h"
#include "host/CommandLine.h"
#include "host/CommandModule.h"
#include "host/Console.h"
#include "host/LightCommands.h"

namespace {

using namespace vrx::host;

/// Whether the program can answer by itself. The help shows all commands, so that the module gives it, and
/// says as well what is wrong with other arguments.
bool IsLight(int argc, char** argv) {
  if (argc < 2) return false;
  const std::string_view first = argv[1];
  if (first == "--version") return argc == 2;
  return std::ranges::any_of(LightCommands(), [=](const CommandRow& row) { return first == row.name; });
}

}  // namespace

int main(int argc, char** argv) try {
  vrx::platform::ReserveStandardStreams();
  vrx::platform::SurviveFileSizeLimit();
  return IsLight(argc, argv) ? RunCommandLine(LightCommands(), argc, argv) : RunModuleCommand(argc, argv);
} catch (const std::exception& error) {
  return FailForResources(error);
}

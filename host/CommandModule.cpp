#include "host/CommandModule.h"

#include <string>

#include "foundation/platform/Module.h"
#include "foundation/text/XpPath.h"
#include "host/Console.h"

namespace vrx::host {

int RunModuleCommand(int argc, char** argv) {
  const XpString path = XpPathJoin(XpPathDirectory(platform::ExecutablePath()), u"VRXCommands.so");
  std::string cause;
  // Never unloaded, since the program ends with the command.
  const platform::ModuleHandle module = platform::LoadModule(path, &cause);
  if (module == nullptr) return Fail(Utf8(path) + " cannot be loaded: " + cause);
  const auto run = reinterpret_cast<RunVrxCommandFunction>(platform::FindSymbol(module, "RunVrxCommand"));
  if (run == nullptr) return Fail(Utf8(path) + " lacks the function RunVrxCommand");
  return run(argc, argv);
}

}  // namespace vrx::host

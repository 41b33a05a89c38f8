// The module VRXCommands beside the program: all commands, with the libraries that only some of them need.
#pragma once

namespace vrx::host {

using RunVrxCommandFunction = int (*)(int argc, char** argv);

/// Loads the module and runs the command that the arguments name, or prints help. Gives the exit status. A
/// module that cannot be loaded is said, with its path and the cause.
int RunModuleCommand(int argc, char** argv);

}  // namespace vrx::host

/// What the module exports. Settings, drive letters and logs are the module's own, apart from the program's.
extern "C" __attribute__((visibility("default"))) int RunVrxCommand(int argc, char** argv);

// Loading a library at run time, and the path of the running program.
#pragma once

#include <string>

#include "vrx/XpString.h"

namespace vrx::platform {

using ModuleHandle = void*;

/// Loads the module of this path; an ending ".dll" stands for ".so". Null when it cannot be loaded, with the
/// system's error message in `cause` (may be null).
ModuleHandle LoadModule(const XpString& path, std::string* cause = nullptr);
void UnloadModule(ModuleHandle module);
/// Null when there is no such symbol.
void* FindSymbol(ModuleHandle module, const char* name);

/// Path of the running executable; empty when it cannot be found out.
XpString ExecutablePath();

/// The calling thread's last system error number.
int LastError();

}  // namespace vrx::platform

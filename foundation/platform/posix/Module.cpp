#include "foundation/platform/Module.h"

#include <dlfcn.h>

#include <cerrno>
#include <filesystem>
#include <string>
#include <string_view>

#include "foundation/platform/Paths.h"

namespace vrx::platform {

ModuleHandle LoadModule(const XpString& path) {
  constexpr std::string_view kForeignEnding = ".dll";
  std::string native = NativePath(path);
  if (native.ends_with(kForeignEnding)) native.replace(native.size() - kForeignEnding.size(), native.npos, ".so");
  return native.empty() ? nullptr : dlopen(native.c_str(), RTLD_NOW | RTLD_LOCAL);
}

void UnloadModule(ModuleHandle module) {
  if (module != nullptr) dlclose(module);
}

void* FindSymbol(ModuleHandle module, const char* name) {
  return module == nullptr ? nullptr : dlsym(module, name);
}

XpString ExecutablePath() {
  std::error_code error;
  const std::filesystem::path path = std::filesystem::read_symlink("/proc/self/exe", error);
  return error ? XpString() : PathFromNative(path.native());
}

int LastError() { return errno; }

}  // namespace vrx::platform
